// Detection on emulated processors: the driver runs under
// qemu-x86_64 -cpu MODEL, so CPUID and XGETBV report that model.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "test_cpu_run.h"

using namespace cpu_test;

namespace {

struct Case {
  const char *model;
  std::vector<std::string> env;
  std::vector<std::string> args;
  std::vector<std::pair<std::string, int>> expect;
};

void run_cases(const std::vector<Case> &cases) {
  if (find_qemu().empty()) GTEST_SKIP() << "qemu-x86_64 is not installed";
  for (const Case &c : cases) {
    std::string what = std::string(c.model);
    for (auto &e : c.env) what += " " + e;
    for (auto &a : c.args) what += " " + a;
    Report r = run_driver(c.env, c.args, c.model);
    ASSERT_EQ(r.status, 0) << what << "\n" << r.out;
    for (auto &[key, value] : c.expect)
      EXPECT_EQ(r.get(key), value) << key << " for " << what << "\n" << r.out;
  }
}

}  // namespace

TEST(CpuQemu, PlainDetection) {
  run_cases({
      {"core2duo", {}, {}, {{"path", 2}, {"level", 2}, {"auto", 6}, {"vml", 3}}},
      {"Nehalem", {}, {}, {{"path", 3}, {"level", 3}, {"auto", 8}, {"vml", 5}}},
      {"SandyBridge", {}, {}, {{"path", 4}, {"level", 4}, {"auto", 9}}},
      {"Haswell", {}, {}, {{"path", 5}, {"level", 5}, {"auto", 10}, {"ortex_true", 1}}},
      {"EPYC", {}, {}, {{"path", 0}, {"level", 0}, {"auto", 2}, {"ortex_true", 0},
                        {"ortex", 0}}},
  });
}

// AVX needs the operating system to save the YMM state; the AVX2 level
// needs its whole group; SSE4.1 moves an SSSE3-level processor's auto branch.
TEST(CpuQemu, StateAndGroupChecks) {
  run_cases({
      {"Haswell,-xsave", {}, {}, {{"path", 3}, {"level", 3}}},
      {"SandyBridge,-xsave", {}, {}, {{"path", 3}}},
      {"Haswell,-fma", {}, {}, {{"path", 4}}},
      {"Haswell,-bmi2", {}, {}, {{"path", 4}}},
      {"Haswell,-f16c", {}, {}, {{"path", 4}}},
      {"Penryn", {}, {}, {{"path", 2}, {"auto", 7}}},
      {"Penryn", {"NXL_CBWR=SSE4_1"}, {}, {{"path", 2}, {"cbwr", 7}}},
      {"Penryn", {"NXL_CBWR=SSE4_2"}, {}, {{"path", 2}, {"cbwr", 2}}},
      // A cap whose group is incomplete is refused: the flags stay on.
      {"Haswell,-fma", {"NXL_ENABLE_INSTRUCTIONS=AVX2"}, {}, {{"path", 4}, {"avx512", 1}}},
  });
}

// Without the operating system saving YMM state no 256-bit feature counts,
// whatever CPUID says; SSE features stay.
TEST(CpuQemu, FeatureWordWithoutYmmState) {
  if (find_qemu().empty()) GTEST_SKIP() << "qemu-x86_64 is not installed";
  const unsigned long long ymm_features = 0x10000ULL | 0x2000ULL | 0x40000ULL | 0x800000ULL;
  Report with = run_driver({}, {}, "Haswell");
  Report without = run_driver({}, {}, "Haswell,-xsave");
  ASSERT_EQ(with.status, 0) << with.out;
  ASSERT_EQ(without.status, 0) << without.out;
  EXPECT_EQ(with.features() & ymm_features, ymm_features) << with.out;
  EXPECT_EQ(without.features() & ymm_features, 0ULL) << without.out;
  EXPECT_EQ(without.features() & 0x740ULL, 0x740ULL) << without.out;   // SSE2..SSE4.2
  // The general-purpose BMI instructions need no register state.
  EXPECT_EQ(without.features() & 0x180000ULL, 0x180000ULL) << without.out;
}

TEST(CpuQemu, InstructionCap) {
  run_cases({
      {"Haswell", {"NXL_ENABLE_INSTRUCTIONS=AVX"}, {}, {{"path", 4}, {"avx2", 0}}},
      {"Haswell", {"NXL_ENABLE_INSTRUCTIONS=SSE4_2"}, {}, {{"path", 3}}},
      // Refused: the processor lacks the features; flags stay as they were.
      {"Haswell", {"NXL_ENABLE_INSTRUCTIONS=AVX512"}, {}, {{"path", 5}, {"avx512", 1}}},
      {"SandyBridge", {"NXL_ENABLE_INSTRUCTIONS=AVX2"}, {}, {{"path", 4}, {"mei", 2}}},
      {"SandyBridge", {"NXL_ENABLE_INSTRUCTIONS=SSE4_2"}, {}, {{"path", 3}}},
      {"Nehalem", {"NXL_ENABLE_INSTRUCTIONS=AVX"}, {}, {{"path", 3}}},
      {"core2duo", {"NXL_ENABLE_INSTRUCTIONS=SSE4_2"}, {}, {{"path", 2}}},
      // Another vendor: every cap is refused.
      {"EPYC", {"NXL_ENABLE_INSTRUCTIONS=AVX2"}, {}, {{"path", 0}}},
      {"EPYC", {}, {"enable=2"}, {{"enable", 0}, {"path", 0}}},
  });
}

TEST(CpuQemu, ReproducibilityBranches) {
  run_cases({
      {"Haswell", {"NXL_CBWR=AVX2"}, {}, {{"path", 5}, {"cbwr", 10}}},
      {"Haswell", {"NXL_CBWR=AVX"}, {}, {{"path", 4}, {"cbwr", 9}}},
      {"Haswell", {"NXL_CBWR=AVX512"}, {}, {{"path", 5}, {"cbwr", 2}}},
      {"Haswell", {"NXL_CBWR=SSE4_1"}, {}, {{"path", 2}, {"cbwr", 7}}},
      {"Haswell", {"NXL_CBWR=COMPATIBLE"}, {}, {{"path", 0}, {"cbwr", 3}, {"ortex", 0}}},
      {"Haswell", {}, {"cbwr_set=12"}, {{"cbwr_set", -3}, {"path", 5}}},
      {"SandyBridge", {"NXL_CBWR=AVX2"}, {}, {{"path", 4}, {"cbwr", 2}}},
      {"SandyBridge", {"NXL_CBWR=SSE2"}, {}, {{"path", 0}, {"cbwr", 4}, {"ortex", 1}}},
      {"Nehalem", {"NXL_CBWR=AVX"}, {}, {{"path", 3}, {"cbwr", 2}}},
      {"Nehalem", {"NXL_CBWR=SSE4_2,STRICT"}, {}, {{"path", 3}, {"mode", 0x10008}}},
      // core2duo lacks SSE4.1: its auto branch is SSSE3.
      {"core2duo", {"NXL_CBWR=SSE4_1"}, {}, {{"path", 2}, {"cbwr", 2}}},
      {"core2duo", {"NXL_CBWR=SSSE3"}, {}, {{"path", 2}, {"cbwr", 6}}},
      // Another vendor: only AUTO and COMPATIBLE.
      {"EPYC", {"NXL_CBWR=COMPATIBLE"}, {}, {{"path", 0}, {"cbwr", 3}, {"vml", 1}}},
      {"EPYC", {"NXL_CBWR=AVX2"}, {}, {{"path", 0}, {"cbwr", 2}}},
      {"EPYC", {"NXL_CBWR=SSE2"}, {}, {{"path", 0}, {"cbwr", 2}}},
      {"EPYC", {}, {"cbwr_set=10"}, {{"cbwr_set", -3}, {"cbwr", 1}}},
      {"EPYC", {}, {"cbwr_set=3"}, {{"cbwr_set", 0}, {"cbwr", 3}}},
  });
}

// The family tests and the microarchitecture from the vendor, family and model
// the emulated processors report (bits: 1 bulldozer, 2 zen, 4 barcelona,
// 8 low-power SSE4.2, 16 low-power SSSE3, 32 older generation, 64 first
// AVX-512 server generation, 128 its successor, 1024 many-core).
TEST(CpuQemu, FamilyTests) {
  run_cases({
      {"core2duo", {}, {}, {{"uarch", 3}, {"families", 32}}},
      {"Penryn", {}, {}, {{"uarch", 3}, {"families", 32}}},
      {"Nehalem", {}, {}, {{"uarch", 4}, {"families", 0}}},
      {"Westmere", {}, {}, {{"uarch", 4}, {"families", 0}}},
      {"SandyBridge", {}, {}, {{"uarch", 5}, {"families", 0}}},
      {"IvyBridge", {}, {}, {{"uarch", 5}, {"families", 0}}},
      {"Haswell", {}, {}, {{"uarch", 6}, {"families", 0}}},
      {"Broadwell", {}, {}, {{"uarch", 6}, {"families", 0}}},
      {"Skylake-Client", {}, {}, {{"uarch", 7}, {"families", 0}}},
      {"Skylake-Server", {}, {}, {{"uarch", 9}, {"families", 64}}},
      {"Cascadelake-Server", {}, {}, {{"uarch", 10}, {"families", 128}}},
      {"KnightsMill", {}, {}, {{"uarch", 8}, {"families", 1024}}},
      {"Denverton", {}, {}, {{"uarch", 2}, {"families", 8}, {"path", 3}}},
      {"EPYC", {}, {}, {{"uarch", 22}, {"families", 2}}},
      {"EPYC-Milan", {}, {}, {{"uarch", 22}, {"families", 2}, {"path", 0}}},
      {"Opteron_G4", {}, {}, {{"uarch", 21}, {"families", 1}, {"path", 0}}},
      {"Opteron_G3", {}, {}, {{"uarch", 20}, {"families", 4}, {"path", 0}}},
  });
}
