// Call tracing: the switch, the output file, the header and the call line.
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "service/core_spawn.h"
#include "service/serv_core.h"

namespace {

std::string line_for(double seconds) {
  testing::internal::CaptureStdout();
  nxl_serv_print_verbose_info(0, "X", seconds);
  std::string out = testing::internal::GetCapturedStdout();
  // The last line only: the first call also prints the header.
  size_t end = out.rfind('\n');
  size_t start = out.rfind('\n', end - 1);
  return out.substr(start == std::string::npos ? 0 : start + 1, end - (start == std::string::npos ? 0 : start + 1));
}

std::string duration_of(double seconds) {
  std::string l = line_for(seconds);
  size_t a = l.find("X ") + 2;
  return l.substr(a, l.find(' ', a) - a);
}

const char kHeader[] =
    "NXL_VERBOSE Ortex\\(R\\) NXL 1\\.0 Update 0 Release build 20261122 for x86-64 Linux, "
    "Lnx [0-9]+\\.[0-9]{2}GHz ilp64 iface3 cdecl omp_thread";
const char kSuffix[] =
    " CNR:[A-Z0-9_?a-f]+(,STRICT)? Dyn:[01] FastMM:[01] TID:[0-9 ]{2} NThr:[0-9]+,BLAS:[0-9]+,"
    "FFT:[0-9]+,VML:[0-9]+,PARDISO:[0-9]+";

std::string slurp(const std::string &path) {
  std::ifstream f(path);
  std::stringstream s;
  s << f.rdbuf();
  return s.str();
}

}  // namespace

TEST(Verbose, SwitchValues) {
  EXPECT_EQ(field(run_fresh(SVC_CORE_DRIVER, {"verbose", "0"}, {}).out, "mode"), 0);
  EXPECT_EQ(field(run_fresh(SVC_CORE_DRIVER, {"verbose", "0"}, {"NXL_VERBOSE=1"}).out, "mode"), 1);
  EXPECT_EQ(field(run_fresh(SVC_CORE_DRIVER, {"verbose", "0"}, {"NXL_VERBOSE=0x1"}).out, "mode"), 1);
  EXPECT_EQ(field(run_fresh(SVC_CORE_DRIVER, {"verbose", "0"}, {"NXL_VERBOSE=2"}).out, "mode"), 0);
  EXPECT_EQ(field(run_fresh(SVC_CORE_DRIVER, {"verbose", "0"}, {"NXL_VERBOSE=1a"}).out, "mode"), 0);
  EXPECT_EQ(field(run_fresh(SVC_CORE_DRIVER, {"verbose", "0"}, {"NXL_VERBOSE="}).out, "mode"), 0);

  EXPECT_EQ(nxl_serv_verbose(2), -1);
  EXPECT_EQ(nxl_serv_verbose(1), 1);
  EXPECT_EQ(*nxl_serv_iface_verbose_mode(), 1);
  EXPECT_EQ(nxl_serv_verbose(0), 0);
  EXPECT_EQ(nxl_serv_verbose_mode(), 0);
}

TEST(Verbose, HeaderOnceThenCallLines) {
  auto r = run_fresh(SVC_CORE_DRIVER, {"verbose", "0.0005"}, {"NXL_VERBOSE=1"});
  std::regex expect(std::string("mode=1 file=\\[\\]\n") + kHeader + "\n" +
                    "NXL_VERBOSE DDOT\\(3,0x1,1,0x2,1\\) 500\\.00us" + kSuffix + "\n" +
                    "NXL_VERBOSE DDOT\\(4,0x1,1,0x2,1\\) 500\\.00us" + kSuffix + "\n");
  EXPECT_TRUE(std::regex_match(r.out, expect)) << r.out;
  // Settings reach the line.
  r = run_fresh(SVC_CORE_DRIVER, {"verbose", "2.5"},
                {"NXL_VERBOSE=1", "NXL_DYNAMIC=false", "NXL_NUM_THREADS=3",
                 "NXL_DOMAIN_NUM_THREADS=NXL_DOMAIN_FFT=2", "NXL_DISABLE_FAST_MM=1"});
  EXPECT_NE(r.out.find(" 2.50s CNR:OFF Dyn:0 FastMM:0 TID:0  NThr:3,BLAS:3,FFT:2,VML:3,PARDISO:3\n"),
            std::string::npos)
      << r.out;
}

TEST(Verbose, DurationUnits) {
  EXPECT_EQ(duration_of(0.0), "0.00s");
  EXPECT_EQ(duration_of(-1.0), "0.00s");
  EXPECT_EQ(duration_of(2.5), "2.50s");
  EXPECT_EQ(duration_of(1.0), "1000.00ms");
  EXPECT_EQ(duration_of(0.0025), "2.50ms");
  EXPECT_EQ(duration_of(0.0005), "500.00us");
  EXPECT_EQ(duration_of(3e-8), "30ns");
  std::regex suffix(std::string("NXL_VERBOSE X 1\\.00us") + kSuffix);
  EXPECT_TRUE(std::regex_match(line_for(1.0001e-6), suffix)) << line_for(1.0001e-6);
}

TEST(Verbose, OutputFileAndWarnings) {
  char path[] = "/tmp/nxl_verbose_XXXXXX";
  int fd = mkstemp(path);
  ASSERT_GE(fd, 0);
  close(fd);
  auto r = run_fresh(SVC_CORE_DRIVER, {"verbose", "0.5"},
                     {"NXL_VERBOSE=1", std::string("NXL_VERBOSE_OUTPUT_FILE=") + path});
  EXPECT_EQ(r.out, std::string("mode=1 file=[") + path + "]\n");
  std::string file = slurp(path);
  std::regex expect(std::string(kHeader) + "\nNXL_VERBOSE DDOT\\(3,0x1,1,0x2,1\\) 500\\.00ms" + kSuffix +
                    "\nNXL_VERBOSE DDOT\\(4,0x1,1,0x2,1\\) 500\\.00ms" + kSuffix + "\n");
  EXPECT_TRUE(std::regex_match(file, expect)) << file;
  unlink(path);

  r = run_fresh(SVC_CORE_DRIVER, {"verbose", "0"},
                {"NXL_VERBOSE=1", "NXL_VERBOSE_OUTPUT_FILE=/nonexistent/dir/trace.txt"});
  EXPECT_EQ(r.out.rfind("NXL_VERBOSE WARNING: Unable to open verbose output file.\nmode=1 file=[]\n", 0), 0u)
      << r.out;
  EXPECT_NE(r.out.find("NXL_VERBOSE DDOT(3"), std::string::npos);

  r = run_fresh(SVC_CORE_DRIVER, {"verbose", "0"},
                {"NXL_VERBOSE=1", "NXL_VERBOSE_OUTPUT_FILE=" + std::string(5000, 'f')});
  EXPECT_EQ(r.out.rfind("NXL_VERBOSE WARNING: incorrect output filename: too long or empty\n", 0), 0u)
      << r.out;

  EXPECT_EQ(nxl_serv_verbose_output_file(""), 1);
  EXPECT_EQ(nxl_serv_verbose_output_file("/nonexistent/dir/x"), 1);
  EXPECT_STREQ(nxl_serv_verbose_output_file_mode(), "");
  EXPECT_EQ(nxl_serv_verbose_output_file(path), 0);
  EXPECT_STREQ(nxl_serv_verbose_output_file_mode(), path);
  unlink(path);

  // A file that cannot be opened any more: the line goes to standard output.
  char dir[] = "/tmp/nxl_verbose_dir_XXXXXX";
  ASSERT_NE(mkdtemp(dir), nullptr);
  std::string gone = std::string(dir) + "/trace.txt";
  EXPECT_EQ(nxl_serv_verbose_output_file(gone.c_str()), 0);
  unlink(gone.c_str());
  rmdir(dir);
  testing::internal::CaptureStdout();
  nxl_serv_print_verbose_info(0, "DSWAP(1)", 0.0);
  std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out.rfind("NXL_VERBOSE WARNING: unable to open output file. Print to STDOUT\n", 0), 0u) << out;
  EXPECT_NE(out.find("NXL_VERBOSE DSWAP(1) 0.00s CNR:"), std::string::npos) << out;

  testing::internal::CaptureStdout();
  EXPECT_EQ(nxl_serv_verbose_output_file(""), 1);  // back to standard output
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "NXL_VERBOSE WARNING: incorrect output filename: too long or empty\n");
}

TEST(Verbose, ConcurrentLinesDoNotInterleave) {
  testing::internal::CaptureStdout();
  std::vector<std::thread> team;
  for (int t = 0; t < 4; ++t)
    team.emplace_back([t] {
      std::string text = "ZGEMM(" + std::string(200, char('a' + t)) + ")";
      for (int i = 0; i < 100; ++i) nxl_serv_print_verbose_info(0, text.c_str(), 1e-3 * (i % 3));
    });
  for (auto &th : team) th.join();
  std::stringstream out(testing::internal::GetCapturedStdout());
  std::regex line(std::string("NXL_VERBOSE ZGEMM\\((a{200}|b{200}|c{200}|d{200})\\) [0-9.]+(s|ms|us)") + kSuffix);
  std::string l;
  int lines = 0;
  while (std::getline(out, l)) {
    if (l.rfind("NXL_VERBOSE Ortex", 0) == 0) continue;  // the header, if first here
    EXPECT_TRUE(std::regex_match(l, line)) << l;
    ++lines;
  }
  EXPECT_EQ(lines, 400);
}

TEST(Verbose, ClockAdvances) {
  double a = nxl_serv_dsecnd();
  usleep(2000);
  double b = nxl_serv_iface_dsecnd();
  EXPECT_GT(b, a);
}
