// Resets the once-per-process detection state so in-process tests can run
// the selection again under different environments.
#ifndef NXL_TEST_CPU_STATE_H
#define NXL_TEST_CPU_STATE_H

#include <gtest/gtest.h>
#include <stdlib.h>

#include "service/cpu.h"
#include "test_cpu_info.h"

namespace cpu_test {

inline void reset_detection_state() {
  nxl_cpu_type = -1;
  nxl_vml_cpu_type = -1;
  nxl_cbwr = -1;
  cached_mei = -1;
  mei_was_called = 0;
  __sngl_was_called = 0;
  _ENABLED_SSE4_2 = _ENABLED_AVX = _ENABLED_AVX2 = _ENABLED_AVX512 = 1;
  _ENABLED_AVX512_E1 = _ENABLED_AVX512_E2 = _ENABLED_AVX512_E3 = 1;
  _ENABLED_AVX512_MIC_E1 = _ENABLED_AVX512_MIC = 1;
  _ENABLED_AVX512_E4 = 0;
}

// Sets (or, for a null value, removes) the two steering variables.
inline void steer(const char *cbwr, const char *cap) {
  if (cbwr) setenv("NXL_CBWR", cbwr, 1); else unsetenv("NXL_CBWR");
  if (cap) setenv("NXL_ENABLE_INSTRUCTIONS", cap, 1); else unsetenv("NXL_ENABLE_INSTRUCTIONS");
}

// A test that starts and ends with fresh detection state and neither
// steering variable set.
class FreshDetection : public ::testing::Test {
 protected:
  void SetUp() override {
    steer(nullptr, nullptr);
    reset_detection_state();
  }
  void TearDown() override {
    steer(nullptr, nullptr);
    reset_detection_state();
  }
};

}  // namespace cpu_test

#endif  // NXL_TEST_CPU_STATE_H
