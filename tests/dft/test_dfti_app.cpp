// The DFTI entries as an application sees them in libnxl.so: both Fortran
#include <string>
// spellings resolve to one body, and a transform runs end to end.
#include <gtest/gtest.h>
#include <dlfcn.h>

#include <cmath>
#include <complex>
#include <vector>

#include "nxl_dfti.h"

TEST(DftiApp, FortranSpellingsAreOneEntry) {
  void *self = dlopen(nullptr, RTLD_NOW);
  ASSERT_NE(self, nullptr);
  for (const char *name : {"dfti_commit_descriptor_external", "dfti_compute_forward_zz", "dfti_error_message_external",
                           "dfti_set_value_intvec", "dfti_compute_backward_cs"}) {
    void *a = dlsym(self, name);
    void *b = dlsym(self, (std::string(name) + "_").c_str());
    EXPECT_NE(a, nullptr) << name;
    EXPECT_EQ(a, b) << name;
  }
  EXPECT_EQ(dlsym(self, "nxl_dft_dfti_compute"), nullptr);   // internal names stay hidden
}

TEST(DftiApp, TwoDimensionalRealRoundTrip) {
  const nxl_int rows = 12, cols = 20;
  DFTI_DESCRIPTOR_HANDLE f = nullptr, b = nullptr;
  nxl_int lens[2] = {rows, cols};
  ASSERT_EQ(DftiCreateDescriptor(&f, DFTI_DOUBLE, DFTI_REAL, 2, lens), 0);
  ASSERT_EQ(DftiSetValue(f, DFTI_CONJUGATE_EVEN_STORAGE, DFTI_COMPLEX_COMPLEX), 0);
  nxl_int rs[3] = {0, 2 * (cols / 2 + 1), 1}, cs[3] = {0, cols / 2 + 1, 1};
  ASSERT_EQ(DftiSetValue(f, DFTI_INPUT_STRIDES, rs), 0);
  ASSERT_EQ(DftiSetValue(f, DFTI_OUTPUT_STRIDES, cs), 0);
  ASSERT_EQ(DftiCommitDescriptor(f), 0);
  ASSERT_EQ(DftiCopyDescriptor(f, &b), 0);
  ASSERT_EQ(DftiSetValue(b, DFTI_INPUT_STRIDES, cs), 0);
  ASSERT_EQ(DftiSetValue(b, DFTI_OUTPUT_STRIDES, rs), 0);
  ASSERT_EQ(DftiSetValue(b, DFTI_BACKWARD_SCALE, 1.0 / (rows * cols)), 0);
  ASSERT_EQ(DftiCommitDescriptor(b), 0);
  std::vector<double> x(rows * rs[1]), x0;
  for (nxl_int r = 0; r < rows; ++r)
    for (nxl_int c = 0; c < cols; ++c) x[r * rs[1] + c] = std::sin(0.3 * r + 0.7 * c * c);
  x0 = x;
  ASSERT_EQ(DftiComputeForward(f, x.data()), 0);
  // The mean value lands in X[0][0].
  double mean = 0;
  for (nxl_int r = 0; r < rows; ++r)
    for (nxl_int c = 0; c < cols; ++c) mean += x0[r * rs[1] + c];
  EXPECT_NEAR(x[0], mean, 1e-12);
  EXPECT_NEAR(x[1], 0.0, 1e-12);
  ASSERT_EQ(DftiComputeBackward(b, x.data()), 0);
  for (nxl_int r = 0; r < rows; ++r)
    for (nxl_int c = 0; c < cols; ++c) ASSERT_NEAR(x[r * rs[1] + c], x0[r * rs[1] + c], 1e-13);
  DftiFreeDescriptor(&f);
  DftiFreeDescriptor(&b);
}
