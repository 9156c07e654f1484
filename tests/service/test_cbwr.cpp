// Reproducibility mode inside one process: the NXL_CBWR parser, the
// validation against the processor, the auto branch, nxl_serv_cbwr_set and
// the freeze at code-path selection.
#include <gtest/gtest.h>

#include <string>

#include "service/cpu.h"
#include "test_cpu_state.h"

using namespace cpu_test;

namespace {

class Cbwr : public FreshDetection {
 protected:
  // The whole mode NXL_CBWR (and optionally a cap) decide in a fresh state.
  static int mode_for(const char *text, const char *cap = nullptr) {
    reset_detection_state();
    steer(text, cap);
    return nxl_serv_cbwr_get(-1);
  }
};

constexpr int S = NXL_CBWR_STRICT;

}  // namespace

// Texts whose outcome does not depend on the processor.
TEST_F(Cbwr, ParsingIndependentOfProcessor) {
  struct { const char *text; int mode; } rows[] = {
      {nullptr, 1}, {"", 1}, {"AUTO", 2}, {"COMPATIBLE", 3}, {"BRANCH=COMPATIBLE", 3},
      {"AUTO,STRICT", 2 | S}, {"COMPATIBLE, STRICT", 3 | S}, {"COMPATIBLE,\tSTRICT", 3 | S},
      {"avx", 2}, {"auto", 2}, {"COMPATIBLE ", 2}, {" COMPATIBLE", 2},
      {"COMPATIBLE STRICT", 2}, {"STRICT", 2}, {",STRICT", 2}, {"COMPATIBLE,,STRICT", 2},
      {"COMPATIBLE,STRICT ", 2}, {"COMPATIBLE,strict", 2}, {"BRANCH=", 2},
      {"branch=COMPATIBLE", 2}, {"BRANCH=BRANCH=AUTO", 2}, {"OFF", 2},
      // Does not fit the 128-byte buffer: reads as absent.
      {"COMPATIBLE,                                                                        "
       "                                                                      STRICT", 1},
  };
  for (const auto &r : rows)
    EXPECT_EQ(mode_for(r.text), r.mode) << '"' << (r.text ? r.text : "(unset)") << '"';
}

// On an AVX-512 machine with DL Boost (auto branch AVX512_E1) every branch
// up to AVX512_E1 is valid except the many-core ones.
TEST_F(Cbwr, ParsingAndValidationOnLevel12) {
  if (!native_level12(read_cpuinfo())) GTEST_SKIP() << "needs a level-12 machine";
  EXPECT_EQ(nxl_serv_cbwr_get_auto_branch(), 14);
  struct { const char *text; const char *cap; int mode; } rows[] = {
      {"SSE2", nullptr, 4}, {"SSE3", nullptr, 4}, {"SSSE3", nullptr, 6},
      {"SSE4_1", nullptr, 7}, {"SSE4_2", nullptr, 8}, {"AVX", nullptr, 9},
      {"AVX2", nullptr, 10}, {"AVX512", nullptr, 12}, {"AVX512_E1", nullptr, 14},
      {"AVX512_MIC", nullptr, 2}, {"AVX512_MIC_E1", nullptr, 2},
      {"AVX512_MIC,STRICT", nullptr, 2 | S},
      {"AVX2,STRICT", nullptr, 10 | S}, {"AVX2, STRICT", nullptr, 10 | S},
      {"AVX2 STRICT", nullptr, 2}, {"BRANCH=AVX", nullptr, 9},
      {"BRANCH=AVX,STRICT", nullptr, 9 | S}, {"BRANCH=AVX512_E1 ,  STRICT", nullptr, 2},
      // The cap lowers the auto branch the request is validated against.
      {"AVX512", "AVX2", 2}, {"AVX2", "AVX2", 10}, {"AVX512_E1", "AVX512", 2},
      {"AVX512", "AVX512", 12}, {"AVX2", "SSE4_2", 2}, {"SSE4_2", "SSE4_2", 8},
  };
  for (const auto &r : rows)
    EXPECT_EQ(mode_for(r.text, r.cap), r.mode)
        << '"' << r.text << "\" cap " << (r.cap ? r.cap : "none");
}

// The auto branch follows the capped level.
TEST_F(Cbwr, AutoBranchPerLevel) {
  if (!native_level12(read_cpuinfo())) GTEST_SKIP() << "needs a level-12 machine";
  struct { int cap; int branch; } rows[] = {
      {0, 8}, {1, 9}, {2, 10}, {4, 12}, {6, 14}, {7, 14}, {8, 14},
  };
  for (const auto &r : rows) {
    reset_detection_state();
    ASSERT_EQ(nxl_serv_enable_instructions(r.cap), 1);
    EXPECT_EQ(nxl_serv_cbwr_get_auto_branch(), r.branch) << "cap " << r.cap;
  }
  // SSSE3 level: SSE4_1 when the processor has the SSE4.1 generation.
  reset_detection_state();
  _ENABLED_SSE4_2 = _ENABLED_AVX = _ENABLED_AVX2 = 0;
  _ENABLED_AVX512 = _ENABLED_AVX512_MIC = 0;
  mei_was_called = 1;
  EXPECT_EQ(nxl_serv_get_cpu_type(1), 2);
  EXPECT_EQ(nxl_serv_cbwr_get_auto_branch(), 7);
}

TEST_F(Cbwr, GetSelectsPart) {
  steer("AVX2,STRICT", nullptr);
  if (!nxl_serv_ortex_cpu_true()) steer("COMPATIBLE,STRICT", nullptr);
  const int whole = nxl_serv_cbwr_get(-1);
  EXPECT_NE(whole & S, 0);
  EXPECT_EQ(nxl_serv_cbwr_get(1), whole & 0xFFFF);
  EXPECT_EQ(nxl_serv_cbwr_get_nolock(1), whole & 0xFFFF);
  EXPECT_EQ(nxl_serv_cbwr_get_nolock(-1), whole);
  for (int what : {0, 2, -2, 100}) EXPECT_EQ(nxl_serv_cbwr_get(what), -2) << what;
  // Decided once: a changed variable is not read again.
  steer("AUTO", nullptr);
  EXPECT_EQ(nxl_serv_cbwr_get(-1), whole);
}

TEST_F(Cbwr, SetStatuses) {
  const bool maker = nxl_serv_ortex_cpu_true();
  const bool level12 = native_level12(read_cpuinfo());
  struct { int value; int status; int mode; bool needs_level12; } rows[] = {
      {1, 0, 1, false}, {0, 0, 1, false}, {-7, 0, 1, false}, {2, 0, 2, false},
      {3, 0, 3, false}, {3 | S, 0, 3 | S, false}, {2 | S, 0, 2 | S, false},
      {5, -2, -1, false}, {15, -2, -1, false}, {0x20003, -2, -1, false},
      {0x1000000 | 10, -2, -1, false}, {1 | S, -2, -1, false},
      {10, maker ? 0 : -3, maker ? 10 : -1, true}, {14 | S, 0, 14 | S, true},
      {11, -3, -1, true}, {13, -3, -1, true}, {4, 0, 4, true},
  };
  for (const auto &r : rows) {
    if (r.needs_level12 && !level12) continue;
    reset_detection_state();
    EXPECT_EQ(nxl_serv_cbwr_set(r.value), r.status) << r.value;
    EXPECT_EQ(nxl_cbwr, r.mode) << r.value;
  }
}

// Once the code path is selected the mode is frozen: only a set to the
// current value succeeds.
TEST_F(Cbwr, FrozenAfterSelection) {
  steer("COMPATIBLE", nullptr);
  EXPECT_EQ(nxl_serv_cpu_detect(), 0);
  EXPECT_EQ(nxl_serv_cbwr_get(1), 3);
  EXPECT_EQ(nxl_serv_cbwr_set(3), 0);
  EXPECT_EQ(nxl_serv_cbwr_set(2), -8);
  EXPECT_EQ(nxl_serv_cbwr_set(3 | S), -8);
  EXPECT_EQ(nxl_serv_cbwr_get(-1), 3);
}

// Branches map to fixed levels; a cap below a branch wins only when it is a
// cap of 3 to 9 that the processor can honour.
TEST_F(Cbwr, BranchSelection) {
  if (!native_level12(read_cpuinfo())) GTEST_SKIP() << "needs a level-12 machine";
  struct { const char *cbwr; const char *cap; int path; int level; } rows[] = {
      {"COMPATIBLE", nullptr, 0, 1}, {"SSE2", nullptr, 0, 0}, {"SSE3", nullptr, 0, 0},
      {"SSSE3", nullptr, 2, 2},     {"SSE4_1", nullptr, 2, 2}, {"SSE4_2", nullptr, 3, 3},
      {"AVX", nullptr, 4, 4},       {"AVX2", nullptr, 5, 5},   {"AVX512", nullptr, 7, 7},
      {"AVX512_E1", nullptr, 7, 9}, {"AVX512_MIC", nullptr, 7, 12},
      {"AVX", "AVX2", 4, 4},        // cap 2 < level 4: branch taken
      {"AVX2", "AVX", 4, 4},        // AVX2 above the capped auto branch: AUTO
      {"AVX512", "AVX512_E1", 7, 9},   // cap 6 < level 7, honoured by the probe
      {"AVX512_E1", "AVX512_E2", 7, 10},
      {"AVX512_E1", "AVX512_E3", 7, 12},
      {"AVX512", "AVX512_MIC", 7, 7},  // cap 3 lacks its features: branch taken
  };
  for (const auto &r : rows) {
    reset_detection_state();
    steer(r.cbwr, r.cap);
    EXPECT_EQ(nxl_serv_cpu_detect(), r.path) << r.cbwr << " cap " << (r.cap ? r.cap : "none");
    EXPECT_EQ(nxl_serv_selected_level(), r.level) << r.cbwr << " cap " << (r.cap ? r.cap : "none");
  }
  // A branch without a level (reachable only by a stray stored value)
  // falls back to free selection with the warning.
  reset_detection_state();
  nxl_cbwr = 15;
  testing::internal::CaptureStdout();
  EXPECT_EQ(nxl_serv_cpu_detect(), 7);
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out, "Ortex NXL WARNING: incorrect conditional numerical reproducibility mode, "
                 "NXL_CBWR_AUTO is set\n");
}
