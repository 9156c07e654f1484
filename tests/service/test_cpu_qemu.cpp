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
    ASSERT_EQ(r.status, 0) << what << "\n" << r.out << r.err;
    for (auto &[key, value] : c.expect)
      EXPECT_EQ(r.get(key), value) << key << " for " << what << "\n" << r.out << r.err;
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
