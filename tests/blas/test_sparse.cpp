// Sparse level 1 through the exported entries: compressed vectors (values
// and 1-based indices) against full vectors, in the four precisions.
#include <gtest/gtest.h>
#include <algorithm>
#include <numeric>
#include "blas_test_util.h"
#include "nxl_blas.h"

using namespace bt;
using cf = std::complex<float>;
using cd = std::complex<double>;
using I = nxl_int;

template <class T> struct sp;
#define SP_COMMON(T, p)                                                                     \
  static void axpyi(I nz, T a, const T *x, const I *ix, T *y) { p##axpyi_(&nz, &a, x, ix, y); } \
  static void gthr(I nz, const T *y, T *x, const I *ix) { p##gthr_(&nz, y, x, ix); }       \
  static void gthrz(I nz, T *y, T *x, const I *ix) { p##gthrz_(&nz, y, x, ix); }           \
  static void sctr(I nz, const T *x, const I *ix, T *y) { p##sctr_(&nz, x, ix, y); }
template <> struct sp<float> { SP_COMMON(float, s) static float doti(I nz, const float *x, const I *ix, const float *y) { return sdoti_(&nz, x, ix, y); } static float dotci(I nz, const float *x, const I *ix, const float *y) { return sdoti_(&nz, x, ix, y); } };
template <> struct sp<double> { SP_COMMON(double, d) static double doti(I nz, const double *x, const I *ix, const double *y) { return ddoti_(&nz, x, ix, y); } static double dotci(I nz, const double *x, const I *ix, const double *y) { return ddoti_(&nz, x, ix, y); } };
template <> struct sp<cf> { SP_COMMON(cf, c) static cf doti(I nz, const cf *x, const I *ix, const cf *y) { auto r = cdotui_(&nz, x, ix, y); return {r.real, r.imag}; } static cf dotci(I nz, const cf *x, const I *ix, const cf *y) { auto r = cdotci_(&nz, x, ix, y); return {r.real, r.imag}; } };
template <> struct sp<cd> { SP_COMMON(cd, z) static cd doti(I nz, const cd *x, const I *ix, const cd *y) { auto r = zdotui_(&nz, x, ix, y); return {r.real, r.imag}; } static cd dotci(I nz, const cd *x, const I *ix, const cd *y) { auto r = zdotci_(&nz, x, ix, y); return {r.real, r.imag}; } };

template <class T> class Sparse : public ::testing::Test {};
using Types = ::testing::Types<float, double, cf, cd>;
TYPED_TEST_SUITE(Sparse, Types);

TYPED_TEST(Sparse, GatherScatterUpdateDot) {
  using T = TypeParam;
  for (I nz : {0, 1, 5, 100}) {
    const I n = 3 * nz + 2;
    std::vector<I> idx(n);
    std::iota(idx.begin(), idx.end(), 1);
    std::shuffle(idx.begin(), idx.end(), rng());
    idx.resize(nz);
    auto x = vec<T>(nz, 1), y = vec<T>(n, 1), y0 = y;
    const T a = rnd<T>();
    sp<T>::axpyi(nz, a, x.data(), idx.data(), y.data());
    std::vector<bool> hit(n);
    for (I i = 0; i < nz; ++i) hit[idx[i] - 1] = true;
    for (I i = 0; i < nz; ++i) EXPECT_LE(std::abs(W(y[idx[i] - 1]) - (W(y0[idx[i] - 1]) + W(a) * W(x[i]))), 8 * eps<T>());
    for (I j = 0; j < n; ++j)
      if (!hit[j]) EXPECT_EQ(y[j], y0[j]);
    wide_t<T> u = 0, c = 0;
    for (I i = 0; i < nz; ++i) {
      u += W(x[i]) * W(y[idx[i] - 1]);
      if constexpr (cplx<T>) c += std::conj(W(x[i])) * W(y[idx[i] - 1]);
      else c += W(x[i]) * W(y[idx[i] - 1]);
    }
    EXPECT_LE(std::abs(W(sp<T>::doti(nz, x.data(), idx.data(), y.data())) - u), 8 * (nz + 1) * eps<T>());
    EXPECT_LE(std::abs(W(sp<T>::dotci(nz, x.data(), idx.data(), y.data())) - c), 8 * (nz + 1) * eps<T>());
    std::vector<T> g(nz);
    sp<T>::gthr(nz, y.data(), g.data(), idx.data());
    for (I i = 0; i < nz; ++i) EXPECT_EQ(g[i], y[idx[i] - 1]);
    auto yz = y;
    sp<T>::gthrz(nz, yz.data(), g.data(), idx.data());
    for (I j = 0; j < n; ++j) EXPECT_EQ(yz[j], hit[j] ? T(0) : y[j]);
    sp<T>::sctr(nz, x.data(), idx.data(), yz.data());
    for (I i = 0; i < nz; ++i) EXPECT_EQ(yz[idx[i] - 1], x[i]);
  }
}

TEST(SparseRot, RotiMatchesDenseRot) {
  const I nz = 50, n = 200;
  std::vector<I> idx(nz);
  for (I i = 0; i < nz; ++i) idx[i] = 4 * i + 2;
  auto x = vec<double>(nz, 1), y = vec<double>(n, 1);
  auto x0 = x, y0 = y;
  const double c = 0.28, s = 0.96;
  droti_(&nz, x.data(), idx.data(), y.data(), &c, &s);
  for (I i = 0; i < nz; ++i) {
    EXPECT_NEAR(x[i], c * x0[i] + s * y0[idx[i] - 1], 1e-15);
    EXPECT_NEAR(y[idx[i] - 1], c * y0[idx[i] - 1] - s * x0[i], 1e-15);
  }
}
