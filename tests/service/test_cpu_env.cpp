// Once-per-process decisions, each in a fresh process: the detection driver
// is started natively with chosen NXL_CBWR / NXL_ENABLE_INSTRUCTIONS values
// and pre-detection calls.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "test_cpu_run.h"
#include "test_cpu_info.h"

using namespace cpu_test;

namespace {

struct Case {
  std::vector<std::string> env;
  std::vector<std::string> args;
  std::vector<std::pair<std::string, int>> expect;
};

std::string describe(const Case &c) {
  std::string s;
  for (auto &e : c.env) s += e + " ";
  for (auto &a : c.args) s += a + " ";
  return s.empty() ? "(plain)" : s;
}

void run_cases(const std::vector<Case> &cases) {
  for (const Case &c : cases) {
    Report r = run_driver(c.env, c.args);
    ASSERT_EQ(r.status, 0) << describe(c) << "\n" << r.out;
    for (auto &[key, value] : c.expect)
      EXPECT_EQ(r.get(key), value) << key << " for " << describe(c) << "\n" << r.out;
  }
}

bool level12() { return native_level12(read_cpuinfo()); }

}  // namespace

// Outcomes that hold on every processor.
TEST(CpuFreshProcess, AnyProcessor) {
  run_cases({
      {{}, {"type0"}, {{"type0", -1}}},
      {{"NXL_CBWR=COMPATIBLE"}, {}, {{"path", 0}, {"selected", 1}, {"cbwr", 3}, {"vml", 1},
                                      {"ortex", 0}}},
      {{"NXL_CBWR=COMPATIBLE,STRICT"}, {}, {{"path", 0}, {"mode", 0x10003}}},
      {{"NXL_CBWR=avx"}, {}, {{"cbwr", 2}}},
      {{"NXL_CBWR=AVX2 STRICT"}, {}, {{"cbwr", 2}, {"mode", 2}}},
      {{}, {"enable=1536"}, {{"enable", 1}, {"cbwr", 3}, {"path", 0}, {"sngl", 1}}},
      {{}, {"detect", "enable=1536"}, {{"enable", 0}, {"cbwr", 1}, {"sngl", 1}}},
      {{}, {"cbwr_set=3", "cbwr_set=2"}, {{"cbwr_set", 0}, {"cbwr", 2}}},
      {{}, {"cbwr_set=5"}, {{"cbwr_set", -2}, {"cbwr", 1}}},
      {{}, {"detect", "cbwr_set=3"}, {{"cbwr_set", -8}, {"cbwr", 1}}},
      {{}, {"detect", "cbwr_set=1"}, {{"cbwr_set", 0}}},
      {{}, {"threads=8"}, {{"threads_agree", 1}}},
  });
}

// This development machine: AVX-512 with DL Boost and bfloat16 (level 12).
TEST(CpuFreshProcess, Level12Machine) {
  if (!level12()) GTEST_SKIP() << "needs a level-12 machine";
  run_cases({
      {{}, {}, {{"path", 7}, {"level", 12}, {"selected", 12}, {"cbwr", 1}, {"vml", 9},
                {"ortex_true", 1}, {"ortex", 1}, {"auto", 14}}},
      {{"NXL_ENABLE_INSTRUCTIONS=AVX2"}, {}, {{"path", 5}, {"level", 5}, {"mei", 2},
                                              {"avx512", 0}, {"avx2", 1}}},
      // Refused: no many-core group; the flags and the selection stay.
      {{"NXL_ENABLE_INSTRUCTIONS=AVX512_MIC"}, {}, {{"path", 7}, {"level", 12}, {"mei", 3},
                                                    {"avx512_mic", 1}, {"avx512", 1}}},
      {{"NXL_ENABLE_INSTRUCTIONS=AVX2"}, {"threads=8"}, {{"threads_agree", 1}, {"path", 5}}},
      {{"NXL_CBWR=AVX2"}, {}, {{"path", 5}, {"cbwr", 10}, {"ortex", 1}}},
      {{"NXL_CBWR=AVX512_E1"}, {}, {{"path", 7}, {"cbwr", 14}, {"selected", 9}}},
      {{"NXL_CBWR=AVX2, STRICT"}, {}, {{"path", 5}, {"mode", 0x1000a}}},
      // Calls before the first computation; a call, even a refused one,
      // stands in for the environment variable.
      {{}, {"enable=2"}, {{"enable", 1}, {"path", 5}}},
      {{"NXL_ENABLE_INSTRUCTIONS=AVX2"}, {"enable=4"}, {{"enable", 1}, {"path", 7},
                                                       {"selected", 7}, {"mei", -1}}},
      {{"NXL_ENABLE_INSTRUCTIONS=AVX2"}, {"enable=3"}, {{"enable", 0}, {"path", 7},
                                                       {"selected", 12}}},
      {{}, {"cbwr_set=10"}, {{"cbwr_set", 0}, {"path", 5}}},
      {{}, {"cbwr_set=11"}, {{"cbwr_set", -3}, {"path", 7}, {"cbwr", 1}}},
      {{"NXL_CBWR=AVX"}, {"cbwr_set=10"}, {{"cbwr_set", 0}, {"path", 5}}},
      // After the selection neither call moves the path.
      {{}, {"detect", "cbwr_set=10"}, {{"cbwr_set", -8}, {"path", 7}}},
      {{"NXL_ENABLE_INSTRUCTIONS=AVX2"}, {"detect", "enable=4"}, {{"enable", 1}, {"path", 5}}},
  });
}

TEST(CpuFreshProcess, DisplayNameOfRunningLevel) {
  if (!level12()) GTEST_SKIP() << "needs a level-12 machine";
  Report r = run_driver({"NXL_ENABLE_INSTRUCTIONS=AVX2"}, {});
  EXPECT_EQ(r.kv["name"],
            "Ortex(R) Advanced Vector Extensions 2 (Ortex(R) AVX2) enabled processors");
  r = run_driver({}, {});
  EXPECT_NE(r.kv["name"].find("bfloat16"), std::string::npos) << r.kv["name"];
  r = run_driver({"NXL_CBWR=COMPATIBLE"}, {});
  EXPECT_EQ(r.kv["name"],
            "Ortex(R) Streaming SIMD Extensions 2 (Ortex(R) SSE2) enabled processors");
}
