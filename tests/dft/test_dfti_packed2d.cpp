// Two-dimensional real transforms in the CCS, PACK and PERM formats: every
// stored value against a direct evaluation in long double, the positions the
// format leaves unused, backward transforms back to the input, in and out of
// place, odd and even lengths along both dimensions.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <random>
#include <vector>

#include "nxl_dfti.h"

namespace {

using cld = std::complex<long double>;

// Real-unit position along one dimension of the real and imaginary part of
// the conjugate-even value k of a length-n sequence (-1: not stored).
void where1(int format, long n, long k, long *re, long *im) {
  if (format == DFTI_CCS_FORMAT) {
    *re = 2 * k;
    *im = 2 * k + 1;
  } else if (k == 0) {
    *re = 0;
    *im = -1;
  } else if (2 * k == n) {
    *re = format == DFTI_PACK_FORMAT ? n - 1 : 1;
    *im = -1;
  } else if (format == DFTI_PERM_FORMAT && n % 2 == 0) {
    *re = 2 * k;
    *im = 2 * k + 1;
  } else {
    *re = 2 * k - 1;
    *im = 2 * k;
  }
}

long extent(int format, long n) { return format == DFTI_CCS_FORMAT ? 2 * (n / 2 + 1) : n; }

// The expected 2-D array (e0 x e1 reals, dimension 0 fastest) holding the
// spectrum X of an n0 x n1 real array: dimension 0 in the 1-D format for
// every k1; the rows k0 = 0 and k0 = n0/2 (real along dimension 0) in the
// 1-D format along dimension 1; the other rows the parts of X[k0][k1] for
// every k1. Unused positions are zero.
std::vector<long double> expected(int format, long n0, long n1, const std::vector<cld> &X) {
  const long e0 = extent(format, n0), e1 = extent(format, n1);
  std::vector<long double> a(static_cast<size_t>(e0 * e1), 0.0L);
  for (long k0 = 0; k0 <= n0 / 2; ++k0) {
    long r, i;
    where1(format, n0, k0, &r, &i);
    const bool real_row = k0 == 0 || 2 * k0 == n0;
    for (long k1 = 0; k1 < n1; ++k1) {
      const cld v = X[static_cast<size_t>(k1 * n0 + k0)];
      if (!real_row) {
        a[static_cast<size_t>(r + k1 * e0)] = v.real();
        a[static_cast<size_t>(i + k1 * e0)] = v.imag();
      } else if (k1 <= n1 / 2) {
        long c, ci;
        where1(format, n1, k1, &c, &ci);
        a[static_cast<size_t>(r + c * e0)] = v.real();
        if (ci >= 0) a[static_cast<size_t>(r + ci * e0)] = v.imag();
      }
    }
  }
  return a;
}

std::vector<cld> direct2(const std::vector<double> &x, long n0, long n1) {
  std::vector<cld> X(static_cast<size_t>(n0 * n1));
  const long double tau = -2 * 3.141592653589793238462643383279502884L;
  for (long k1 = 0; k1 < n1; ++k1)
    for (long k0 = 0; k0 < n0; ++k0) {
      cld s = 0;
      for (long j1 = 0; j1 < n1; ++j1)
        for (long j0 = 0; j0 < n0; ++j0) {
          const long double ph = tau * (static_cast<long double>((j0 * k0) % n0) / n0 +
                                        static_cast<long double>((j1 * k1) % n1) / n1);
          s += static_cast<long double>(x[static_cast<size_t>(j1 * n0 + j0)]) * cld(cosl(ph), sinl(ph));
        }
      X[static_cast<size_t>(k1 * n0 + k0)] = s;
    }
  return X;
}

// Descriptor of an n0 x n1 real transform (dimension 0 fastest, C order
// lengths {n1, n0}) with the given format and strides of the format side.
DFTI_DESCRIPTOR_HANDLE make(int format, long n0, long n1, bool inplace, long fmt_s1, long real_s1) {
  DFTI_DESCRIPTOR_HANDLE h = nullptr;
  nxl_int len[2] = {n1, n0};
  EXPECT_EQ(DftiCreateDescriptor(&h, DFTI_DOUBLE, DFTI_REAL, 2, len), 0);
  EXPECT_EQ(DftiSetValue(h, DFTI_PACKED_FORMAT, format), 0);
  EXPECT_EQ(DftiSetValue(h, DFTI_PLACEMENT, inplace ? DFTI_INPLACE : DFTI_NOT_INPLACE), 0);
  nxl_int rs[3] = {0, real_s1, 1}, fs[3] = {0, fmt_s1, 1};
  EXPECT_EQ(DftiSetValue(h, DFTI_INPUT_STRIDES, rs), 0);
  EXPECT_EQ(DftiSetValue(h, DFTI_OUTPUT_STRIDES, fs), 0);
  EXPECT_EQ(DftiSetValue(h, DFTI_BACKWARD_SCALE, 1.0 / static_cast<double>(n0 * n1)), 0);
  return h;
}

TEST(DftiPacked2d, EveryFormatOddAndEvenLengths) {
  const long shapes[][2] = {{4, 6}, {5, 4}, {6, 5}, {7, 3}, {8, 8}, {1, 4}, {2, 2}, {9, 10}};
  std::mt19937_64 g(11);
  std::uniform_real_distribution<double> u(-0.5, 0.5);
  for (int format : {DFTI_CCS_FORMAT, DFTI_PACK_FORMAT, DFTI_PERM_FORMAT})
    for (const auto &sh : shapes) {
      const long n0 = sh[0], n1 = sh[1], e0 = extent(format, n0), e1 = extent(format, n1);
      std::vector<double> x(static_cast<size_t>(n0 * n1));
      for (auto &v : x) v = u(g);
      const auto want = expected(format, n0, n1, direct2(x, n0, n1));
      long double scale = 0;
      for (long double v : want) scale = std::max(scale, fabsl(v));
      const std::string tag = "format " + std::to_string(format) + " " + std::to_string(n0) + "x" + std::to_string(n1);

      // Out of place: forward into a sentinel-filled array, then back.
      DFTI_DESCRIPTOR_HANDLE h = make(format, n0, n1, false, e0, n0);
      ASSERT_EQ(DftiCommitDescriptor(h), 0) << tag;
      std::vector<double> y(static_cast<size_t>(e0 * e1), -7.0), xin = x;
      ASSERT_EQ(DftiComputeForward(h, xin.data(), y.data()), 0) << tag;
      EXPECT_EQ(xin, x) << tag << ": input changed";
      for (size_t i = 0; i < y.size(); ++i)
        EXPECT_LE(fabsl(y[i] - want[i]), 1e-14L * (1 + scale) * n0 * n1) << tag << " at " << i;
      DftiFreeDescriptor(&h);
      h = make(format, n0, n1, false, n0, e0);   // backward: format side in, real side out
      nxl_int fs[3] = {0, e0, 1}, rs[3] = {0, n0, 1};
      ASSERT_EQ(DftiSetValue(h, DFTI_INPUT_STRIDES, fs), 0);
      ASSERT_EQ(DftiSetValue(h, DFTI_OUTPUT_STRIDES, rs), 0);
      ASSERT_EQ(DftiCommitDescriptor(h), 0) << tag;
      std::vector<double> z(x.size(), 9.0);
      ASSERT_EQ(DftiComputeBackward(h, y.data(), z.data()), 0) << tag;
      for (size_t i = 0; i < x.size(); ++i) EXPECT_NEAR(z[i], x[i], 1e-14 * n0 * n1) << tag << " back at " << i;
      DftiFreeDescriptor(&h);

      // In place: the real array inside the format's array.
      h = make(format, n0, n1, true, e0, e0);
      ASSERT_EQ(DftiCommitDescriptor(h), 0) << tag;
      std::vector<double> a(static_cast<size_t>(e0 * e1), 0.0);
      for (long j1 = 0; j1 < n1; ++j1)
        for (long j0 = 0; j0 < n0; ++j0) a[static_cast<size_t>(j1 * e0 + j0)] = x[static_cast<size_t>(j1 * n0 + j0)];
      ASSERT_EQ(DftiComputeForward(h, a.data()), 0) << tag;
      for (size_t i = 0; i < a.size(); ++i)
        EXPECT_LE(fabsl(a[i] - want[i]), 1e-14L * (1 + scale) * n0 * n1) << tag << " in place at " << i;
      nxl_int fs2[3] = {0, e0, 1};
      ASSERT_EQ(DftiSetValue(h, DFTI_INPUT_STRIDES, fs2), 0);
      ASSERT_EQ(DftiCommitDescriptor(h), 0) << tag;
      ASSERT_EQ(DftiComputeBackward(h, a.data()), 0) << tag;
      for (long j1 = 0; j1 < n1; ++j1)
        for (long j0 = 0; j0 < n0; ++j0)
          EXPECT_NEAR(a[static_cast<size_t>(j1 * e0 + j0)], x[static_cast<size_t>(j1 * n0 + j0)], 1e-14 * n0 * n1)
              << tag << " in place back";
      DftiFreeDescriptor(&h);
    }
}

TEST(DftiPacked2d, ThreeDimensionsNeedComplexStorage) {
  DFTI_DESCRIPTOR_HANDLE h = nullptr;
  nxl_int len[3] = {4, 4, 4};
  ASSERT_EQ(DftiCreateDescriptor(&h, DFTI_DOUBLE, DFTI_REAL, 3, len), 0);
  ASSERT_EQ(DftiSetValue(h, DFTI_PACKED_FORMAT, DFTI_PACK_FORMAT), 0);
  EXPECT_NE(DftiCommitDescriptor(h), 0);
  DftiFreeDescriptor(&h);
}

}  // namespace
