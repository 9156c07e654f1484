// Error reporting and messages: the default report's exact text, the handler
// installation rules, the exit hook, progress, the message table and
// printing.
#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "service/serv_core.h"
#include "service/core_spawn.h"

namespace {

std::string report(const char *name, nxl_int info, int len) {
  testing::internal::CaptureStdout();
  nxl_serv_default_xerbla(name, &info, len);
  return testing::internal::GetCapturedStdout();
}

// A handler that records what it receives.
std::string seen_name;
nxl_int seen_info;
int seen_len;
int seen_calls;
void recording_handler(const char *name, const nxl_int *info, int len) {
  seen_name.assign(name, static_cast<size_t>(len));
  seen_info = *info;
  seen_len = len;
  ++seen_calls;
}

}  // namespace

TEST(ErrorReport, DefaultTextsByInfoValue) {
  EXPECT_EQ(report("DGEMM ", 8, 6), "\nOrtex NXL ERROR: Parameter 8 was incorrect on entry to DGEMM .\n");
  EXPECT_EQ(report("dgetrf", 0, 6), "\nOrtex NXL INTERNAL ERROR: Condition 0 detected in function dgetrf.\n");
  EXPECT_EQ(report("ZPOTRF", -5, 6), "\nOrtex NXL INTERNAL ERROR: Condition 5 detected in function ZPOTRF.\n");
  EXPECT_EQ(report("DGESV", 1000, 5),
            "\nOrtex NXL INTERNAL ERROR: Insufficient workspace available in function DGESV.\n");
  EXPECT_EQ(report("DGESV", 1001, 5),
            "\nOrtex NXL ERROR: Incompatible optional parameters on entry to DGESV.\n");
  EXPECT_EQ(report("DGESV", 1089, 5),
            "\nOrtex NXL INTERNAL ERROR: Not enough work memory in function DGESV\n");
  EXPECT_EQ(report("DGESV", 1212, 5), "\nOrtex NXL INTERNAL ERROR: Issue accessing coprocessor DGESV.\n");
  EXPECT_EQ(report("DGESV", 1002, 5), "\nOrtex NXL ERROR: Parameter 1002 was incorrect on entry to DGESV.\n");
}

TEST(ErrorReport, NameIsCutNotTerminatedAndSuppressedWhenInvalid) {
  // 30 characters are cut to 20; the name need not be terminated.
  EXPECT_EQ(report("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123", 2, 30),
            "\nOrtex NXL ERROR: Parameter 2 was incorrect on entry to ABCDEFGHIJKLMNOPQRST.\n");
  EXPECT_EQ(report("DAXPYXXXX", 1, 5), "\nOrtex NXL ERROR: Parameter 1 was incorrect on entry to DAXPY.\n");
  EXPECT_EQ(report("DAXPY", 1, -1), "");
  nxl_int info = 1;
  testing::internal::CaptureStdout();
  nxl_serv_default_xerbla(nullptr, &info, 5);
  nxl_serv_default_xerbla("DAXPY", nullptr, 5);
  nxl_serv_xerbla(nullptr, &info, 5);
  nxl_serv_xerbla("DAXPY", nullptr, 5);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(ErrorReport, HandlerInstallationAndCblasPath) {
  // With no handler the funnel prints the default report.
  nxl_serv_set_xerbla(nullptr);
  nxl_int info = 3;
  testing::internal::CaptureStdout();
  nxl_serv_xerbla("DSCAL", &info, 5);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\nOrtex NXL ERROR: Parameter 3 was incorrect on entry to DSCAL.\n");

  // cblas_xerbla installs the adapter, which prints through xerbla.
  testing::internal::CaptureStdout();
  cblas_xerbla("cblas_dgemm", 3);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\nOrtex NXL ERROR: Parameter 3 was incorrect on entry to cblas_dgemm.\n");
  testing::internal::CaptureStdout();
  cblas_xerbla_malloc_error("cblas_zgemm");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\nOrtex NXL INTERNAL ERROR: Insufficient workspace available in function cblas_zgemm.\n");

  // The interface install does not replace an installed handler; the
  // explicit one does, and returns the previous handler.
  EXPECT_EQ(nxl_serv_set_xerbla(recording_handler), &cdecl_xerbla);
  nxl_set_xerbla_interface(cdecl_xerbla);
  seen_calls = 0;
  cblas_xerbla("cblas_sgemv", 7);
  EXPECT_EQ(seen_calls, 1);
  EXPECT_EQ(seen_name, "cblas_sgemv");
  EXPECT_EQ(seen_info, 7);
  EXPECT_EQ(seen_len, 11);

  EXPECT_EQ(nxl_serv_check_ptr(&info, "DGETRF"), 0);
  EXPECT_EQ(nxl_serv_check_ptr(nullptr, "DGETRF"), 1);
  EXPECT_EQ(seen_info, 1089);
  EXPECT_EQ(seen_name, "DGETRF");
  seen_calls = 0;
  EXPECT_EQ(nxl_serv_check_ptr_and_warn(nullptr, "DGETRF"), 1);
  EXPECT_EQ(nxl_serv_check_ptr_and_warn(&info, "DGETRF"), 0);
  EXPECT_EQ(seen_calls, 0);

  // Null reinstates the default; the previous one is returned.
  EXPECT_EQ(nxl_serv_set_xerbla(nullptr), &recording_handler);
  EXPECT_EQ(nxl_serv_set_xerbla(nullptr), &nxl_serv_default_xerbla);
}

TEST(ErrorReport, ConcurrentInterfaceInstallKeepsTheFirst) {
  nxl_serv_set_xerbla(nullptr);
  std::vector<std::thread> team;
  for (int t = 0; t < 8; ++t)
    team.emplace_back([t] { nxl_set_xerbla_interface(t % 2 ? recording_handler : cdecl_xerbla); });
  for (auto &th : team) th.join();
  nxl_xerbla_fn h = nxl_serv_set_xerbla(nullptr);
  EXPECT_TRUE(h == recording_handler || h == cdecl_xerbla);
}

namespace {
std::atomic<int> exit_code{-1};
void keep_alive(int code) { exit_code = code; }

nxl_int progress_stage_len;
int stopping_progress(const nxl_int *thread, const nxl_int *step, const char *stage, nxl_int len) {
  progress_stage_len = len;
  return *step >= 2 ? 1 : 0;
}
}  // namespace

TEST(ExitAndProgress, HookKeepsProcessAliveAndDefaultExits) {
  nxl_serv_set_exit_handler(keep_alive);
  nxl_serv_exit(7);
  EXPECT_EQ(exit_code.load(), 7);
  nxl_serv_set_exit_handler(nullptr);
  auto r = run_fresh(SVC_CORE_DRIVER, {"exit", "5"}, {});
  EXPECT_EQ(r.status, 5);
  EXPECT_EQ(r.out.find("returned"), std::string::npos);
}

TEST(ExitAndProgress, InstalledFunctionDecidesDefaultContinues) {
  nxl_int thread = 0, step = 1;
  EXPECT_EQ(nxl_serv_progress(&thread, &step, "DGETRF", 6), 0);
  EXPECT_EQ(nxl_serv_set_progress(stopping_progress), &nxl_serv_default_progress);
  nxl_serv_set_progress_interface(cdecl_progress);  // does not replace
  EXPECT_EQ(nxl_serv_progress(&thread, &step, "DGETRF", 6), 0);
  step = 2;
  EXPECT_EQ(nxl_serv_progress(&thread, &step, "DGETRF", 6), 1);
  EXPECT_EQ(progress_stage_len, 6);
  EXPECT_EQ(nxl_serv_set_progress(nullptr), &stopping_progress);
  nxl_serv_set_progress_interface(cdecl_progress);
  EXPECT_EQ(nxl_serv_progress(&thread, &step, "ZPOTRF", 6), 0);  // nxl_progress: go on
  nxl_serv_set_progress(nullptr);
}

TEST(Messages, TableRowsAndListedTexts) {
  std::set<std::string> texts;
  for (int i = 0; i < NXL_MSGTAB_ROWS; ++i) {
    ASSERT_EQ(nxl_msgtab[i].id, (uint64_t(4) << 32) | uint64_t(i)) << i;
    ASSERT_NE(nxl_msgtab[i].text, nullptr);
    ASSERT_GT(strlen(nxl_msgtab[i].text), 0u) << i;
    EXPECT_TRUE(texts.insert(nxl_msgtab[i].text).second) << "duplicate text in row " << i;
  }
  EXPECT_STREQ(nxl_msgtab[0].text, "\n");
  EXPECT_STREQ(nxl_msgtab[10].text, std::string(79, '-').c_str());
  EXPECT_STREQ(nxl_msgtab[2].text, "Ortex NXL FATAL ERROR: Cannot load %s or %s.");
  EXPECT_STREQ(nxl_msgtab[1209].text,
               "Ortex NXL WARNING: incorrect conditional numerical reproducibility mode, NXL_CBWR_AUTO is set");
  EXPECT_STREQ(nxl_msgtab[1210].text,
               "Ortex NXL FATAL ERROR: This system does not meet the minimum requirements for use of the Ortex(R) Nexlib.");
  EXPECT_STREQ(nxl_msgtab[1211].text,
               "The processor must support the Ortex(R) Streaming SIMD 2 Extensions (Ortex(R) SSE2) instructions.");
  EXPECT_STREQ(nxl_msgtab[1213].text, "Ortex NXL ERROR: CPU %d is not supported.");
  // Every other row is a message of some family with a severity word.
  for (int i = 11; i < NXL_MSGTAB_ROWS; ++i) {
    if (i >= 1207 && i <= 1211) continue;
    EXPECT_EQ(strncmp(nxl_msgtab[i].text, "Ortex NXL ", 10), 0) << i;
  }
}

TEST(Messages, LookupFormattingAndOverflow) {
  EXPECT_STREQ(nxl_serv_get_msg(0, 0), "");
  EXPECT_STREQ(nxl_serv_get_msg(1, 0), "Ortex NXL FATAL ERROR: Cannot load %s.");
  EXPECT_STREQ(nxl_serv_get_msg(1, 1, "libx.so"), "Ortex NXL FATAL ERROR: Cannot load libx.so.");
  EXPECT_STREQ(nxl_serv_get_msg(1213, 1, 42), "Ortex NXL ERROR: CPU 42 is not supported.");
  EXPECT_STREQ(nxl_serv_get_msg(5000, 0), "");

  testing::internal::CaptureStdout();
  nxl_serv_print(0, 3, 1, "dgemm");
  nxl_serv_print(0, 1207, 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Ortex NXL FATAL ERROR: Error on loading function dgemm.\n"
            "Conditional numerical reproducibility mode is turned ON\n");

  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  nxl_serv_print(1, 1212, 1, "mic0");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Ortex NXL INTERNAL ERROR: Issue accessing coprocessor mic0.\n");

  std::string long_arg(600, 'x');
  testing::internal::CaptureStdout();
  nxl_serv_print(0, 1, 1, long_arg.c_str());
  std::string expect_overflow =
      "\nNXL INTERNAL ERROR: message buffer overflow.\n       Lenght: " +
      std::to_string(strlen("Ortex NXL FATAL ERROR: Cannot load .") + 600) + "   Buffer size: 512\n";
  EXPECT_EQ(testing::internal::GetCapturedStdout(), expect_overflow);

  testing::internal::CaptureStdout();
  nxl_serv_format_print(0, "%s-%d", "a", 5);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "a-5\n");
}

TEST(Messages, CatalogFallbackShortensLang) {
  auto r = run_fresh(SVC_CORE_DRIVER, {"message", "1208"}, {"LANG=xx_YY.UTF-8", "NLSPATH=/nonexistent/%N"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "Conditional numerical reproducibility mode is turned OFF\nLANG=xx_YY\n");
  r = run_fresh(SVC_CORE_DRIVER, {"message", "0"}, {"LANG=C"});
  EXPECT_EQ(r.out, "\nLANG=C\n");
}

TEST(Messages, CatalogTextsWinAndMissingOnesFallBack) {
  char dir[] = "/tmp/nxl_cat_XXXXXX";
  ASSERT_NE(mkdtemp(dir), nullptr);
  std::string src = std::string(dir) + "/nxl.msg", cat = std::string(dir) + "/nxl_msg.cat";
  FILE *f = fopen(src.c_str(), "w");
  ASSERT_NE(f, nullptr);
  fputs("$set 1\n1208 Reproducibility off (catalog)\n", f);
  fclose(f);
  ASSERT_EQ(system(("gencat " + cat + " " + src).c_str()), 0);
  std::string nlspath = std::string("NLSPATH=") + dir + "/%N";
  auto r = run_fresh(SVC_CORE_DRIVER, {"message", "1208"}, {nlspath, "LANG=C"});
  EXPECT_EQ(r.out, "Reproducibility off (catalog)\nLANG=C\n");
  r = run_fresh(SVC_CORE_DRIVER, {"message", "1207"}, {nlspath, "LANG=C"});
  EXPECT_EQ(r.out, "Conditional numerical reproducibility mode is turned ON\nLANG=C\n");
  unlink(src.c_str());
  unlink(cat.c_str());
  rmdir(dir);
}

TEST(Strings, BoundedHelpers) {
  EXPECT_EQ(nxl_serv_strnlen_s(nullptr, 10), 0u);
  EXPECT_EQ(nxl_serv_strnlen_s("abcdef", 4), 4u);
  EXPECT_EQ(nxl_serv_strnlen_s("abc", 4096), 3u);
  char buf[8];
  memset(buf, 'z', sizeof buf);
  EXPECT_EQ(nxl_serv_snprintf_s(buf, sizeof buf, 100, "%s", "0123456789"), 10);
  EXPECT_STREQ(buf, "0123456");
  EXPECT_EQ(nxl_serv_snprintf_s(buf, sizeof buf, 3, "%d", 12345), 5);
  EXPECT_STREQ(buf, "123");
  EXPECT_EQ(nxl_serv_snprintf_s(nullptr, 8, 8, "x"), -1);
  EXPECT_TRUE(nxl_serv_lsame("n", "N", 1, 1));
  EXPECT_TRUE(nxl_serv_lsame("U", "u", 1, 1));
  EXPECT_FALSE(nxl_serv_lsame("T", "C", 1, 1));
  EXPECT_FALSE(nxl_serv_lsame(nullptr, "C", 1, 1));
}
