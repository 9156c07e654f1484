// Level-1 BLAS through the exported Fortran entries, against a long-double
// oracle over random lengths and increments (positive, negative, zero where
// the routine allows it), in the four precisions; special values of the
// norms, sums and index routines; the rotation setups.
#include <gtest/gtest.h>
#include <cstring>
#include "blas_test_util.h"
#include "nxl_blas.h"

using namespace bt;
using cf = std::complex<float>;
using cd = std::complex<double>;
using I = nxl_int;

// The exported entries of one precision.
template <class T> struct api;
#define REAL_API(T, p, a)                                                                        \
  template <> struct api<T> {                                                                    \
    static T dot(I n, const T *x, I ix, const T *y, I iy) { return p##dot_(&n, x, &ix, y, &iy); } \
    static T dotc(I n, const T *x, I ix, const T *y, I iy) { return dot(n, x, ix, y, iy); }       \
    static void axpy(I n, T a, const T *x, I ix, T *y, I iy) { p##axpy_(&n, &a, x, &ix, y, &iy); } \
    static void scal(I n, T a, T *x, I ix) { p##scal_(&n, &a, x, &ix); }                          \
    static void copy(I n, const T *x, I ix, T *y, I iy) { p##copy_(&n, x, &ix, y, &iy); }         \
    static void swap(I n, T *x, I ix, T *y, I iy) { p##swap_(&n, x, &ix, y, &iy); }              \
    static void rot(I n, T *x, I ix, T *y, I iy, real_t<T> c, T s) { p##rot_(&n, x, &ix, y, &iy, &c, &s); } \
    static real_t<T> nrm2(I n, const T *x, I ix) { return a##nrm2_(&n, x, &ix); }                 \
    static real_t<T> asum(I n, const T *x, I ix) { return a##asum_(&n, x, &ix); }                 \
    static I iamax(I n, const T *x, I ix) { return i##p##amax_(&n, x, &ix); }                     \
    static I iamin(I n, const T *x, I ix) { return i##p##amin_(&n, x, &ix); }                     \
  };
#define CPLX_API(T, R, p, a, CR)                                                                 \
  template <> struct api<T> {                                                                    \
    static T dot(I n, const T *x, I ix, const T *y, I iy) {                                      \
      CR r = p##dotu_(&n, x, &ix, y, &iy);                                                        \
      return T(r.real, r.imag);                                                                  \
    }                                                                                            \
    static T dotc(I n, const T *x, I ix, const T *y, I iy) {                                     \
      CR r = p##dotc_(&n, x, &ix, y, &iy);                                                        \
      return T(r.real, r.imag);                                                                  \
    }                                                                                            \
    static void axpy(I n, T a, const T *x, I ix, T *y, I iy) { p##axpy_(&n, &a, x, &ix, y, &iy); } \
    static void scal(I n, T a, T *x, I ix) { p##scal_(&n, &a, x, &ix); }                          \
    static void copy(I n, const T *x, I ix, T *y, I iy) { p##copy_(&n, x, &ix, y, &iy); }         \
    static void swap(I n, T *x, I ix, T *y, I iy) { p##swap_(&n, x, &ix, y, &iy); }              \
    static void rot(I n, T *x, I ix, T *y, I iy, R c, T s) { p##rot_(&n, x, &ix, y, &iy, &c, &s); } \
    static R nrm2(I n, const T *x, I ix) { return a##nrm2_(&n, x, &ix); }                         \
    static R asum(I n, const T *x, I ix) { return a##asum_(&n, x, &ix); }                         \
    static I iamax(I n, const T *x, I ix) { return i##p##amax_(&n, x, &ix); }                     \
    static I iamin(I n, const T *x, I ix) { return i##p##amin_(&n, x, &ix); }                     \
  };
REAL_API(float, s, s)
REAL_API(double, d, d)
CPLX_API(cf, float, c, sc, nxl_complex8)
CPLX_API(cd, double, z, dz, nxl_complex16)

template <class T> class Level1 : public ::testing::Test {};
using Types = ::testing::Types<float, double, cf, cd>;
TYPED_TEST_SUITE(Level1, Types);

static const I lengths[] = {0, 1, 2, 3, 7, 16, 33, 100, 1001, 4100, 9000, 20000};
static const I incs[] = {1, 2, -1, -3};

template <class T> wide_t<T> cj(wide_t<T> v) {
  if constexpr (cplx<T>) return std::conj(v);
  else return v;
}

TYPED_TEST(Level1, DotProductsMatchOracle) {
  using T = TypeParam;
  for (I n : lengths)
    for (I ix : incs)
      for (I iy : incs) {
        auto x = vec<T>(n, ix), y = vec<T>(n, iy);
        wide_t<T> u = 0, c = 0;
        long double scale = 0;
        for (I i = 0; i < n; ++i) {
          auto a = W(x[at(n, ix, i)]), b = W(y[at(n, iy, i)]);
          u += a * b;
          c += cj<T>(a) * b;
          scale += std::abs(a) * std::abs(b);
        }
        const long double tol = 4 * (n + 1) * eps<T>() * (scale + 1e-30L);
        EXPECT_LE(std::abs(W(api<T>::dot(n, x.data(), ix, y.data(), iy)) - u), tol) << n << " " << ix << " " << iy;
        EXPECT_LE(std::abs(W(api<T>::dotc(n, x.data(), ix, y.data(), iy)) - c), tol) << n << " " << ix << " " << iy;
      }
  // n <= 0 returns zero without reading the vectors.
  EXPECT_EQ(api<T>::dot(0, nullptr, 1, nullptr, 1), T(0));
  EXPECT_EQ(api<T>::dot(-4, nullptr, 1, nullptr, 1), T(0));
}

TYPED_TEST(Level1, UpdatesMatchOracle) {
  using T = TypeParam;
  using R = real_t<T>;
  for (I n : lengths)
    for (I ix : incs)
      for (I iy : incs) {
        const T a = rnd<T>();
        const R c = R(0.6), s0 = R(0.8);
        const T s = cplx<T> ? T(rnd<T>()) : T(s0);
        auto x = vec<T>(n, ix), y = vec<T>(n, iy);
        auto x0 = x, y0 = y;
        const long double tol = 8 * eps<T>();
        api<T>::axpy(n, a, x.data(), ix, y.data(), iy);
        for (I i = 0; i < n; ++i) {
          auto want = W(y0[at(n, iy, i)]) + W(a) * W(x0[at(n, ix, i)]);
          ASSERT_LE(std::abs(W(y[at(n, iy, i)]) - want), tol * 4) << "axpy " << n;
        }
        y = y0;
        api<T>::copy(n, x.data(), ix, y.data(), iy);
        for (I i = 0; i < n; ++i) ASSERT_EQ(y[at(n, iy, i)], x0[at(n, ix, i)]) << "copy " << n;
        y = y0;
        api<T>::swap(n, x.data(), ix, y.data(), iy);
        for (I i = 0; i < n; ++i) {
          ASSERT_EQ(y[at(n, iy, i)], x0[at(n, ix, i)]) << "swap " << n;
          ASSERT_EQ(x[at(n, ix, i)], y0[at(n, iy, i)]) << "swap " << n;
        }
        x = x0, y = y0;
        api<T>::rot(n, x.data(), ix, y.data(), iy, c, s);
        for (I i = 0; i < n; ++i) {
          auto xi = W(x0[at(n, ix, i)]), yi = W(y0[at(n, iy, i)]);
          auto wx = (long double)c * xi + W(s) * yi;
          auto wy = (long double)c * yi - cj<T>(W(s)) * xi;
          ASSERT_LE(std::abs(W(x[at(n, ix, i)]) - wx), tol * 8) << "rot " << n;
          ASSERT_LE(std::abs(W(y[at(n, iy, i)]) - wy), tol * 8) << "rot " << n;
        }
      }
  // scal: one vector; a non-positive increment leaves it alone.
  for (I n : lengths)
    for (I ix : {1, 3}) {
      const T a = rnd<T>();
      auto x = vec<T>(n, ix), x0 = x;
      api<T>::scal(n, a, x.data(), ix);
      for (I i = 0; i < n; ++i)
        ASSERT_LE(std::abs(W(x[at(n, ix, i)]) - W(a) * W(x0[at(n, ix, i)])), 4 * eps<T>()) << n;
    }
  auto x = vec<T>(5, 1), x0 = x;
  api<T>::scal(5, T(2), x.data(), -1);
  EXPECT_EQ(0, std::memcmp(x.data(), x0.data(), sizeof(T) * 5));
}

TYPED_TEST(Level1, AlphaZeroAndNaNSemantics) {
  using T = TypeParam;
  using R = real_t<T>;
  const R nan = std::numeric_limits<R>::quiet_NaN();
  for (I n : {I(5), I(5000), I(30000)}) {
    std::vector<T> x(n, T(nan)), y(n, T(1));
    api<T>::axpy(n, T(0), x.data(), 1, y.data(), 1);  // alpha = 0: y untouched
    for (auto &e : y) ASSERT_EQ(e, T(1));
    std::vector<T> one(n, T(1));
    api<T>::axpy(n, T(nan), one.data(), 1, y.data(), 1);  // alpha = NaN computes
    for (auto &e : y) ASSERT_TRUE(std::isnan(std::real(e)));
    std::vector<T> z(n, T(nan));
    api<T>::scal(n, T(0), z.data(), 1);  // 0 * NaN stays NaN
    for (auto &e : z) ASSERT_TRUE(std::isnan(std::real(e)));
  }
}

TYPED_TEST(Level1, NormsAndSums) {
  using T = TypeParam;
  using R = real_t<T>;
  for (I n : lengths)
    for (I ix : {1, 2, 5}) {
      auto x = vec<T>(n, ix);
      long double ss = 0, sa = 0;
      for (I i = 0; i < n; ++i) {
        auto v = W(x[at(n, ix, i)]);
        ss += std::norm(std::complex<long double>(v));
        if constexpr (cplx<T>) sa += std::fabs(v.real()) + std::fabs(v.imag());
        else sa += std::fabs(v);
      }
      EXPECT_LE(std::fabs(api<T>::nrm2(n, x.data(), ix) - std::sqrt(ss)), 4 * eps<T>() * (std::sqrt(ss) + 1e-30L)) << n;
      EXPECT_LE(std::fabs(api<T>::asum(n, x.data(), ix) - sa), 2 * (n + 1) * eps<T>() * sa + 1e-30L) << n;
    }
  // nrm2 never overflows or underflows on the way, and is exact on special values.
  const R big = std::numeric_limits<R>::max() / 4, tiny = std::numeric_limits<R>::denorm_min() * 8;
  const R inf = std::numeric_limits<R>::infinity(), nan = std::numeric_limits<R>::quiet_NaN();
  for (R v : {big, tiny, R(1), R(0)}) {
    std::vector<T> x(4, T(v));
    EXPECT_NEAR(api<T>::nrm2(4, x.data(), 1) / (v == 0 ? R(1) : v), v == 0 ? R(0) : R(2), 8 * eps<T>()) << v;
  }
  for (I n : {I(4), I(40000)}) {
    std::vector<T> x(n, T(1));
    x[n / 2] = T(inf);
    EXPECT_EQ(api<T>::nrm2(n, x.data(), 1), inf);
    x[n / 3] = T(nan);
    EXPECT_TRUE(std::isnan(api<T>::nrm2(n, x.data(), 1)));
    EXPECT_TRUE(std::isnan(api<T>::asum(n, x.data(), 1)));
  }
  EXPECT_EQ(api<T>::nrm2(0, nullptr, 1), R(0));
  EXPECT_EQ(api<T>::asum(3, nullptr, 0), R(0));
}

TYPED_TEST(Level1, IndexOfExtremeIsFirst) {
  using T = TypeParam;
  using R = real_t<T>;
  const R nan = std::numeric_limits<R>::quiet_NaN();
  for (I n : lengths) {
    if (n == 0) continue;
    for (I ix : {1, 3}) {
      auto x = vec<T>(n, ix);
      I want_max = 1, want_min = 1;
      auto v = [&](I i) { return cplx<T> ? std::fabs(std::real(x[at(n, ix, i)])) + std::fabs(std::imag(x[at(n, ix, i)])) : std::fabs(std::real(x[at(n, ix, i)])); };
      for (I i = 1; i < n; ++i) {
        if (v(i) > v(want_max - 1)) want_max = i + 1;
        if (v(i) < v(want_min - 1)) want_min = i + 1;
      }
      EXPECT_EQ(api<T>::iamax(n, x.data(), ix), want_max) << n;
      EXPECT_EQ(api<T>::iamin(n, x.data(), ix), want_min) << n;
    }
  }
  // Ties across the whole vector (and so across threads' chunks): the first wins.
  for (I n : {I(10), I(50000)}) {
    std::vector<T> x(n, T(1));
    x[n - 3] = x[n / 2] = x[7] = T(5);
    EXPECT_EQ(api<T>::iamax(n, x.data(), 1), std::min<I>(7, n / 2) + 1);
    x[n - 2] = x[n / 3] = T(0);
    EXPECT_EQ(api<T>::iamin(n, x.data(), 1), n / 3 + 1);
    // A NaN wins over any value; the first NaN.
    x[n - 1] = T(nan);
    x[n / 2 + 1] = T(nan);
    EXPECT_EQ(api<T>::iamax(n, x.data(), 1), n / 2 + 2);
    EXPECT_EQ(api<T>::iamin(n, x.data(), 1), n / 2 + 2);
  }
  EXPECT_EQ(api<T>::iamax(0, nullptr, 1), 0);
  EXPECT_EQ(api<T>::iamax(4, nullptr, -1), 0);
}

// Real rotation setups.
template <class R> void check_rotg(R a, R b) {
  R c, s, r = a, z = b;
  if constexpr (std::is_same_v<R, float>) srotg_(&r, &z, &c, &s);
  else drotg_(&r, &z, &c, &s);
  const R tol = 8 * std::numeric_limits<R>::epsilon();
  EXPECT_NEAR(c * c + s * s, 1, tol);
  EXPECT_NEAR((c * a + s * b) / (std::fabs(r) + 1e-300), r / (std::fabs(r) + 1e-300), tol);
  EXPECT_NEAR((-s * a + c * b) / (std::fabs(a) + std::fabs(b) + 1e-300), 0, tol);
  // z reconstructs (c, s).
  if (std::fabs(z) < 1) EXPECT_NEAR(s, z, tol);
  else if (z != 1) EXPECT_NEAR(c, 1 / z, tol);
}
TEST(Level1Setup, Rotg) {
  for (double a : {0.0, 3.0, -4.0, 1e-300, 1e300})
    for (double b : {0.0, 4.0, -3.0, 1e300, 2e-300}) {
      check_rotg<double>(a, b);
      check_rotg<float>(float(a == 1e300 ? 1e30 : a == 1e-300 ? 1e-30 : a), float(b == 1e300 ? 1e30 : b == 2e-300 ? 2e-30 : b));
    }
  double a = 0, b = 0, c, s;
  drotg_(&a, &b, &c, &s);
  EXPECT_EQ(c, 1);
  EXPECT_EQ(s, 0);
}
TEST(Level1Setup, ComplexRotg) {
  for (auto pr : {std::pair<cd, cd>{cd(3, 4), cd(1, -2)}, {cd(0, 0), cd(2, 1)}, {cd(1, 1), cd(0, 0)}, {cd(-1e200, 3e199), cd(2e200, -1e200)}}) {
    cd a = pr.first, b = pr.second, s;
    double c;
    zrotg_(&a, &b, &c, &s);
    const cd r = a, a0 = pr.first, b0 = pr.second;
    const double scale = std::abs(a0) + std::abs(b0);
    EXPECT_LE(std::abs(c * a0 + s * b0 - r) / scale, 1e-15);
    EXPECT_LE(std::abs(-std::conj(s) * a0 + c * b0) / scale, 1e-15);
    EXPECT_NEAR(c * c + std::norm(s), 1.0, 1e-15);
  }
}
TEST(Level1Setup, RotmgThenRotmAnnihilates) {
  const double cases[][4] = {{1, 1, 3, 4}, {2, 0.5, 1e-3, 7}, {1e-8, 1e8, 5, 1e-4}, {4, 1, 1e6, 1e-6}, {1, 3, 0, 2}};
  for (auto &k : cases) {
    double d1 = k[0], d2 = k[1], x1 = k[2], y1 = k[3], p[5] = {0, 0, 0, 0, 0};
    drotmg_(&d1, &d2, &x1, &y1, p);
    double x[1] = {k[2]}, y[1] = {k[3]};
    const nxl_int one = 1;
    drotm_(&one, x, &one, y, &one, p);
    EXPECT_NEAR(y[0] / (std::fabs(k[3]) + std::fabs(k[2])), 0, 1e-14);
    // The weighted square sum is preserved: d1' x1'^2 = d1 x1^2 + d2 y1^2.
    const double before = k[0] * k[2] * k[2] + k[1] * k[3] * k[3];
    EXPECT_NEAR(d1 * x1 * x1 / before, 1, 1e-12);
    EXPECT_NEAR(x[0], x1, 1e-12 * std::fabs(x1));
  }
  double d1 = -1, d2 = 1, x1 = 1, y1 = 1, p[5];
  drotmg_(&d1, &d2, &x1, &y1, p);
  EXPECT_EQ(p[0], -1);
  EXPECT_EQ(d1, 0);
}
TEST(Level1Setup, MixedPrecisionDots) {
  const nxl_int n = 1000, one = 1;
  std::vector<float> x(n), y(n);
  long double want = 0;
  for (int i = 0; i < n; ++i) x[i] = float(1 + 1e-4 * i), y[i] = float(1 - 1e-4 * i), want += (long double)x[i] * y[i];
  const float sb = 0.25f;
  EXPECT_NEAR(dsdot_(&n, x.data(), &one, y.data(), &one), double(want), 1e-10);
  EXPECT_EQ(sdsdot_(&n, &sb, x.data(), &one, y.data(), &one), float(double(want) + 0.25));
  const nxl_int zero = 0;
  EXPECT_EQ(sdsdot_(&zero, &sb, nullptr, &one, nullptr, &one), 0.25f);
}

TEST(Level1Setup, Lsame) {
  EXPECT_TRUE(lsame_("n", "N"));
  EXPECT_TRUE(lsame_("T", "T"));
  EXPECT_FALSE(lsame_("x", "N"));
}
