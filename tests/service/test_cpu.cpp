// Processor detection inside one process: the feature word against the
// kernel's view of the processor, the vendor and family tests, the level
// tables, the instruction cap and the spin lock.
#include <gtest/gtest.h>
#include <string.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "service/cpu.h"
#include "test_cpu_state.h"

using namespace cpu_test;

using CpuState = FreshDetection;

// Every bit of the feature word must agree with the flags the kernel reports
// (the kernel also hides features whose register state it does not save).
TEST(CpuFeatures, WordAgreesWithKernelFlags) {
  const CpuInfo info = read_cpuinfo();
  ASSERT_FALSE(info.flags.empty());
  const unsigned long long w = nxl_serv_cpu_features();
  EXPECT_NE(w & NXL_FEAT_INITIALIZED, 0ULL);
  EXPECT_EQ(w, __ortex_nxl_feature_indicator_x);
  struct { const char *flag; unsigned long long bit; } rows[] = {
      {"sse2", NXL_FEAT_SSE2},          {"pni", NXL_FEAT_SSE3},
      {"ssse3", NXL_FEAT_SSSE3},        {"sse4_1", NXL_FEAT_SSE4_1},
      {"sse4_2", NXL_FEAT_SSE4_2},      {"popcnt", NXL_FEAT_POPCNT},
      {"pclmulqdq", NXL_FEAT_PCLMULQDQ}, {"fma", NXL_FEAT_FMA},
      {"movbe", NXL_FEAT_MOVBE},        {"aes", NXL_FEAT_AES},
      {"avx", NXL_FEAT_AVX},            {"avx2", NXL_FEAT_AVX2},
      {"bmi1", NXL_FEAT_BMI1},          {"bmi2", NXL_FEAT_BMI2},
      {"adx", NXL_FEAT_ADX},
      {"f16c", NXL_FEAT_F16C},          {"avx512dq", NXL_FEAT_AVX512DQ},
      {"avx512bw", NXL_FEAT_AVX512BW},  {"avx512vl", NXL_FEAT_AVX512VL},
      {"avx512ifma", NXL_FEAT_AVX512IFMA}, {"avx512vbmi", NXL_FEAT_AVX512VBMI},
      {"avx512_vbmi2", NXL_FEAT_AVX512VBMI2}, {"gfni", NXL_FEAT_GFNI},
      {"vaes", NXL_FEAT_VAES},          {"vpclmulqdq", NXL_FEAT_VPCLMULQDQ},
      {"avx512_vnni", NXL_FEAT_AVX512VNNI}, {"avx512_bf16", NXL_FEAT_AVX512BF16},
      {"avx512_bitalg", NXL_FEAT_AVX512BITALG},
      {"avx512_vpopcntdq", NXL_FEAT_AVX512VPOPCNTDQ},
      {"avx512er", NXL_FEAT_AVX512ER},  {"avx512pf", NXL_FEAT_AVX512PF},
      {"avx512_fp16", NXL_FEAT_AVX512FP16}, {"amx_tile", NXL_FEAT_AMX_TILE},
      {"sha_ni", NXL_FEAT_SHA},         {"clwb", NXL_FEAT_CLWB},
      {"rdseed", NXL_FEAT_RDSEED},      {"avx_vnni", NXL_FEAT_AVXVNNI},
  };
  for (const auto &r : rows)
    EXPECT_EQ((w & r.bit) != 0, info.has(r.flag)) << r.flag;
  EXPECT_EQ((w & NXL_FEAT_AVX512F) != 0, info.has("avx512f") && info.has("avx512cd"));
  // The groups of the levels mean what their names say.
  EXPECT_EQ(nxl_serv_cpu_has(NXL_FEATS_AVX2_GROUP) != 0,
            info.has("avx2") && info.has("fma") && info.has("bmi1") && info.has("bmi2") &&
                info.has("f16c"));
  EXPECT_EQ(nxl_serv_cpu_has(NXL_FEATS_AVX512) != 0,
            info.has("avx512f") && info.has("avx512cd") && info.has("avx512dq") &&
                info.has("avx512bw") && info.has("avx512vl"));
  EXPECT_EQ(nxl_serv_bf16_probe() != 0, info.has("avx512_bf16"));
  EXPECT_EQ(nxl_serv_amx_probe() != 0,
            info.has("amx_tile") && (info.has("amx_int8") || info.has("amx_bf16")));
}

// Vendor, maker rule and family tests against the kernel's vendor and family.
TEST(CpuFeatures, VendorAndFamilyTests) {
  const CpuInfo info = read_cpuinfo();
  const bool maker = info.vendor == "GenuineIntel";
  const bool amd = info.vendor == "AuthenticAMD";
  EXPECT_EQ(nxl_serv_is_maker_vendor() != 0, maker);
  EXPECT_EQ(nxl_serv_ortex_cpu_true() != 0, maker || nxl_serv_cpu_has(NXL_FEATS_AVX512));
  EXPECT_EQ(nxl_serv_cpuiszen() != 0,
            amd && (info.family == 0x17 || info.family == 0x19 || info.family == 0x1A));
  EXPECT_EQ(nxl_serv_cpuisbulldozer() != 0, amd && info.family == 0x15);
  EXPECT_EQ(nxl_serv_cpuisitbarcelona() != 0, amd && info.family == 0x10);
  const int maker_generations = nxl_serv_cpuislowpower_sse4_2() + nxl_serv_cpuislowpower_ssse3() +
                                nxl_serv_cpuisoldgen() + nxl_serv_cpuisskx() +
                                nxl_serv_cpuisclx() + nxl_serv_cpuisicx() + nxl_serv_cpuisspr() +
                                nxl_serv_cpuisknl();
  if (!maker) EXPECT_EQ(maker_generations, 0);
  EXPECT_LE(maker_generations, 1);
  EXPECT_EQ(nxl_serv_cpuhas_newgen_true() != 0,
            nxl_serv_ortex_cpu_true() && info.has("sse4_1"));
  EXPECT_EQ(nxl_serv_cpuhasamx(), nxl_serv_amx_probe());
  const int uarch = nxl_serv_get_microarchitecture();
  if (amd && info.family == 0x1A) EXPECT_EQ(uarch, NXL_UARCH_ZEN5);
  if (nxl_serv_cpuiszen()) EXPECT_GE(uarch, NXL_UARCH_ZEN);
  // Cached answers do not change.
  EXPECT_EQ(nxl_serv_get_microarchitecture(), uarch);
}

TEST(CpuFeatures, FrequencyIsPlausible) {
  const double ghz = nxl_serv_get_max_cpu_frequency();
  EXPECT_GT(ghz, 0.3);
  EXPECT_LT(ghz, 10.0);
  EXPECT_EQ(nxl_serv_get_max_cpu_frequency(), ghz);
}

// The table of modules, the collapse of levels to code paths and the names.
TEST(CpuLevels, TablesAndNames) {
  for (int level = 0; level < 15; ++level) {
    const bool absent = level == 11 || level == 13;
    EXPECT_EQ(dll_cfg_names[level].kernel == nullptr, absent) << level;
    EXPECT_EQ(dll_cfg_names[level].vml == nullptr, absent) << level;
    EXPECT_EQ(nxl_serv_level_carried(level) == 0, absent) << level;
  }
  EXPECT_FALSE(nxl_serv_level_carried(-1));
  EXPECT_FALSE(nxl_serv_level_carried(15));
  EXPECT_STREQ(dll_cfg_names[1].vml, "libnxl_vml_cmpt.so");
  EXPECT_STREQ(dll_cfg_names[8].kernel, "libnxl_avx512_mic.so");
  EXPECT_STREQ(dll_cfg_names[14].kernel, "libnxl_avx512.so");

  const int path_of[15] = {0, 0, 2, 3, 4, 5, 6, 7, 6, 7, 7, 7, 7, 7, 7};
  for (int level = 0; level < 15; ++level)
    EXPECT_EQ(nxl_serv_level_to_code_path(level), path_of[level]) << level;

  EXPECT_STREQ(nxl_serv_cpu_level_name(0),
               "Ortex(R) Streaming SIMD Extensions 2 (Ortex(R) SSE2) enabled processors");
  EXPECT_STREQ(nxl_serv_cpu_level_name(1), nxl_serv_cpu_level_name(0));
  EXPECT_STREQ(nxl_serv_cpu_level_name(2),
               "Ortex(R) Supplemental Streaming SIMD Extensions 3 (Ortex(R) SSSE3) enabled processors");
  EXPECT_STREQ(nxl_serv_cpu_level_name(3),
               "Ortex(R) Streaming SIMD Extensions 4.2 (Ortex(R) SSE4.2) enabled processors");
  EXPECT_STREQ(nxl_serv_cpu_level_name(4),
               "Ortex(R) Advanced Vector Extensions (Ortex(R) AVX) enabled processors");
  EXPECT_STREQ(nxl_serv_cpu_level_name(5),
               "Ortex(R) Advanced Vector Extensions 2 (Ortex(R) AVX2) enabled processors");
  EXPECT_STREQ(nxl_serv_cpu_level_name(7),
               "Ortex(R) Advanced Vector Extensions 512 (Ortex(R) AVX-512) enabled processors");
  const char *dl = "Ortex(R) Advanced Vector Extensions 512 (Ortex(R) AVX-512) with support of "
                   "Ortex(R) Deep Learning Boost";
  for (int level : {9, 10, 12})
    EXPECT_EQ(strncmp(nxl_serv_cpu_level_name(level), dl, strlen(dl)), 0) << level;
  EXPECT_STREQ(nxl_serv_cpu_level_name(14),
               "Ortex(R) AVX-512 with Ortex(R) DL Boost and bfloat16 support and Ortex(R) AMX "
               "with bfloat16 and 8-bit integer support");
  // Every carried level has its own name; others have none.
  for (int a = 2; a < 15; ++a)
    for (int b = a + 1; b < 15; ++b)
      if (nxl_serv_level_carried(a) && nxl_serv_level_carried(b))
        EXPECT_STRNE(nxl_serv_cpu_level_name(a), nxl_serv_cpu_level_name(b)) << a << " " << b;
  for (int level : {-1, 11, 13, 15}) EXPECT_STREQ(nxl_serv_cpu_level_name(level), "");
}

// The cap texts: exact match only, into cached_mei; the flags each accepted
// cap leaves on (on a level-12 machine every cap it has features for).
TEST_F(CpuState, EnvironmentCapTexts) {
  struct { const char *text; int value; } rows[] = {
      {"SSE4_2", 0}, {"AVX", 1}, {"AVX2", 2}, {"AVX512_MIC", 3}, {"AVX512", 4},
      {"AVX512_MIC_E1", 5}, {"AVX512_E1", 6}, {"AVX512_E2", 7}, {"AVX512_E3", 8},
      {"AVX512_E4", 9}, {"avx2", -1}, {"AVX2 ", -1}, {" AVX2", -1}, {"AVX3", -1},
      {"AVX512_E", -1}, {"AVX512_E41", -1}, {"", -1},
      // Longer than the 30-byte buffer: reads as empty.
      {"AVX2__________________________________", -1},
  };
  for (const auto &r : rows) {
    reset_detection_state();
    steer(nullptr, r.text);
    nxl_serv_is_avx_enabled();
    EXPECT_EQ(cached_mei, r.value) << '"' << r.text << '"';
    EXPECT_EQ(mei_was_called, 1) << r.text;
  }
}

TEST_F(CpuState, EnableInstructionsFlagsAndLevels) {
  const CpuInfo info = read_cpuinfo();
  if (!native_level12(info)) GTEST_SKIP() << "needs an AVX-512 machine with DL Boost and bfloat16";
  // value, accepted, flags (sse4_2 avx avx2 avx512 avx512_mic), level after
  struct { int value; int ok; int f[5]; int level; } rows[] = {
      {0, 1, {1, 0, 0, 0, 0}, 3},  {1, 1, {1, 1, 0, 0, 0}, 4},
      {2, 1, {1, 1, 1, 0, 0}, 5},  {4, 1, {1, 1, 1, 1, 0}, 7},
      {6, 1, {1, 1, 1, 1, 0}, 9},  {7, 1, {1, 1, 1, 1, 0}, 10},
      {8, 1, {1, 1, 1, 1, 0}, 12},
      // Refused: no many-core group, no AMX, no such cap.
      {3, 0, {1, 1, 1, 1, 1}, 12}, {5, 0, {1, 1, 1, 1, 1}, 12}, {9, 0, {1, 1, 1, 1, 1}, 12},
      {10, 0, {1, 1, 1, 1, 1}, 12}, {12, 0, {1, 1, 1, 1, 1}, 12}, {-1, 0, {1, 1, 1, 1, 1}, 12},
  };
  for (const auto &r : rows) {
    reset_detection_state();
    EXPECT_EQ(nxl_serv_enable_instructions(r.value), r.ok) << r.value;
    EXPECT_EQ(mei_was_called, 1);
    const int f[5] = {nxl_serv_is_sse4_2_enabled(), nxl_serv_is_avx_enabled(),
                      nxl_serv_is_avx2_enabled(), nxl_serv_is_avx512_enabled(),
                      nxl_serv_is_avx512_mic_enabled()};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(f[i], r.f[i]) << "cap " << r.value << " flag " << i;
    EXPECT_EQ(nxl_serv_get_cpu_type(1), r.level) << r.value;
  }
  // E3 clears E2; E2 keeps E3 off; E4 is off unless asked for.
  reset_detection_state();
  nxl_serv_enable_instructions(8);
  EXPECT_EQ(_ENABLED_AVX512_E2, 0);
  EXPECT_EQ(_ENABLED_AVX512_E3, 1);
  EXPECT_EQ(_ENABLED_AVX512_E4, 0);
  nxl_serv_enable_instructions(7);
  EXPECT_EQ(_ENABLED_AVX512_E2, 1);
  EXPECT_EQ(_ENABLED_AVX512_E3, 0);
  // A later call overwrites the flags but not the selected code path.
  reset_detection_state();
  EXPECT_EQ(nxl_serv_cpu_detect(), 7);
  EXPECT_EQ(nxl_serv_enable_instructions(2), 1);
  EXPECT_EQ(nxl_serv_cpu_detect(), 7);
  EXPECT_EQ(nxl_serv_get_cpu_type(0), 7);
  EXPECT_EQ(nxl_serv_get_cpu_type(1), 5);
}

TEST_F(CpuState, DetectionStoresPathVmlAndLevel) {
  const CpuInfo info = read_cpuinfo();
  if (!native_level12(info)) GTEST_SKIP() << "needs an AVX-512 machine with DL Boost and bfloat16";
  struct { const char *cap; int path; int vml; int level; } rows[] = {
      {nullptr, 7, 9, 12}, {"AVX512_E1", 7, 9, 9}, {"AVX512", 7, 9, 7}, {"AVX2", 5, 7, 5},
      {"AVX", 4, 6, 4},    {"SSE4_2", 3, 5, 3},
  };
  for (const auto &r : rows) {
    reset_detection_state();
    steer(nullptr, r.cap);
    EXPECT_EQ(nxl_serv_get_cpu_type(0), -1);
    EXPECT_EQ(nxl_serv_cpu_detect(), r.path) << (r.cap ? r.cap : "none");
    EXPECT_EQ(nxl_cpu_type, r.path);
    EXPECT_EQ(nxl_vml_cpu_type, r.vml);
    EXPECT_EQ(nxl_serv_selected_level(), r.level);
    // Later environment changes do not move the path.
    steer(nullptr, "SSE4_2");
    EXPECT_EQ(nxl_serv_cpu_detect(), r.path);
  }
}

namespace {

// Runs `threads` threads through `rounds` locked increments; returns the
// number of times a thread found another one inside.
int contend(long &total) {
  static nxl_serv_lock_t lock = 0;
  static long counter;
  static volatile int inside;
  static int overlap;
  static std::atomic<int> ready;
  counter = 0;
  inside = 0;
  overlap = 0;
  ready = 0;
  const int threads = 4, rounds = 100000;
  std::vector<std::thread> team;
  for (int t = 0; t < threads; ++t)
    team.emplace_back([] {
      // Start together, so that the threads really contend.
      ready.fetch_add(1);
      while (ready.load() < threads) {
      }
      for (int i = 0; i < rounds; ++i) {
        nxl_serv_lock(&lock);
        const int was = inside;
        inside = was + 1;
        if (was != 0) ++overlap;
        long c = counter;
        for (int spin = 0; spin < 20; ++spin) inside = inside;   // widen the window
        counter = c + 1;
        inside = inside - 1;
        nxl_serv_unlock(&lock);
      }
    });
  for (auto &t : team) t.join();
  total = counter;
  EXPECT_EQ(lock, 0);
  return overlap;
}

}  // namespace

// The lock must make a read-modify-write sequence atomic across threads. A
// lock whose test and set are not one atomic step lets two threads in now
// and then; a few contended runs give it the chance.
TEST(SpinLock, MutualExclusion) {
  for (int run = 0; run < 5; ++run) {
    long total = 0;
    ASSERT_EQ(contend(total), 0) << "run " << run;
    ASSERT_EQ(total, 4L * 100000) << "run " << run;
  }
}

namespace {
int exit_code_seen = -1;
void record_exit(int code) { exit_code_seen = code; }
}  // namespace

// A processor of the maker without SSE2: messages 1210 and 1211, then the exit
// hook with code 1; when the hook returns nothing is cached.
TEST_F(CpuState, BelowMinimumEndsThroughExitHook) {
  if (!nxl_serv_ortex_cpu_true()) GTEST_SKIP() << "the probe tests features on the maker's processors only";
  const unsigned long long real = nxl_serv_cpu_features();
  __ortex_nxl_feature_indicator_x = NXL_FEAT_INITIALIZED | NXL_FEAT_SSE;
  nxl_serv_set_exit_handler(record_exit);
  testing::internal::CaptureStdout();
  const int path = nxl_serv_cpu_detect();
  const std::string out = testing::internal::GetCapturedStdout();
  nxl_serv_set_exit_handler(nullptr);
  __ortex_nxl_feature_indicator_x = real;
  EXPECT_EQ(path, -1);
  EXPECT_EQ(exit_code_seen, 1);
  EXPECT_EQ(nxl_cpu_type, -1);
  EXPECT_EQ(out,
            "Ortex NXL FATAL ERROR: This system does not meet the minimum requirements for use "
            "of the Ortex(R) Nexlib.\nThe processor must support the Ortex(R) Streaming SIMD 2 "
            "Extensions (Ortex(R) SSE2) instructions.\n");
  // The lock was released: a later detection with the real word succeeds.
  EXPECT_GE(nxl_serv_cpu_detect(), 0);
}
