// Condition estimates against exact condition numbers, inverses, norms,
// scaling, equilibration, expert and mixed-precision drivers, pivoted
// Cholesky and the random generators.
#include <gtest/gtest.h>
#include "lapack/aux/elementary.h"
#include "lapack/aux/random.h"
#include "lapack/chol/posvx.h"
#include "lapack/chol/potri.h"
#include "lapack/chol/pstrf.h"
#include "lapack/lu/gesvx.h"
#include "lapack/lu/getri.h"
#include "lapack/mixed/mixed.h"
#include "util.h"

using lt::idx;
namespace lp = nxl::lapack;

template <class T> class AuxTyped : public ::testing::Test {};
using Types = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(AuxTyped, Types);

// |A inv(A) - I|_1 / (n |A| |inv(A)| eps)
template <class T> double inverse_residual(idx n, const T *a, const T *ai, idx lda) {
  double worst = 0;
  for (idx j = 0; j < n; ++j) {
    double s = 0;
    for (idx i = 0; i < n; ++i) {
      std::complex<double> v = i == j ? -1.0 : 0.0;
      for (idx k = 0; k < n; ++k)
        v += std::complex<double>(std::real(a[i + k * lda]), std::imag(a[i + k * lda])) *
             std::complex<double>(std::real(ai[k + j * lda]), std::imag(ai[k + j * lda]));
      s += std::abs(v);
    }
    worst = std::max(worst, s);
  }
  return worst / (n * lt::norm1(n, n, a, lda) * lt::norm1(n, n, ai, lda) * lt::eps<T>());
}

// The inverse from getri is a true inverse, the workspace query reports at
// least n, and the estimate of gecon is within a small factor of the exact
// reciprocal condition number (an estimate of |inv(A)| never exceeds it).
TYPED_TEST(AuxTyped, InverseAndConditionNumber) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  for (idx n : {1, 5, 30, 130}) {
    idx lda = n + 1;
    auto a0 = lt::random_matrix<T>(n, n, lda, static_cast<unsigned>(n));
    auto f = a0;
    std::vector<idx> ipiv(static_cast<size_t>(n));
    idx info = 0, lwork = -1;
    T wq;
    lp::getri<T>(&n, f.data(), &lda, ipiv.data(), &wq, &lwork, &info);
    ASSERT_EQ(info, 0);
    ASSERT_GE(static_cast<double>(std::real(wq)), static_cast<double>(n));
    lp::getrf<T>(&n, &n, f.data(), &lda, ipiv.data(), &info);
    ASSERT_EQ(info, 0);
    auto lu = f;
    for (char norm : {'1', 'I'}) {
      char nm[2] = {norm, 0};
      R anorm = lp::lange<T>(nm, &n, &n, a0.data(), &lda, std::vector<R>(n).data());
      R rcond = -1;
      std::vector<T> work(static_cast<size_t>(4 * n));
      std::vector<idx> iw(static_cast<size_t>(2 * n));
      lp::gecon<T>(nm, &n, lu.data(), &lda, &anorm, &rcond, work.data(), iw.data(), &info);
      ASSERT_EQ(info, 0);
      // Exact: 1 / (|A| |inv(A)|) with the inverse from getri.
      auto inv = lu;
      lwork = n * 64;
      std::vector<T> w(static_cast<size_t>(lwork));
      lp::getri<T>(&n, inv.data(), &lda, ipiv.data(), w.data(), &lwork, &info);
      ASSERT_EQ(info, 0);
      EXPECT_LT(inverse_residual(n, a0.data(), inv.data(), lda), 30.0);
      double ainv = norm == '1' ? lt::norm1(n, n, inv.data(), lda) : [&] {
        double m = 0;
        for (idx i = 0; i < n; ++i) {
          double s = 0;
          for (idx j = 0; j < n; ++j) s += lt::mag(inv[i + j * lda]);
          m = std::max(m, s);
        }
        return m;
      }();
      double exact = 1.0 / (double(anorm) * ainv);
      EXPECT_GE(double(rcond), exact * 0.999) << n << norm;
      EXPECT_LE(double(rcond), exact * 10.0) << n << norm;
    }
  }
}

TYPED_TEST(AuxTyped, CholeskyInverseAndCondition) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  for (idx n : {4, 40, 150}) {
    for (char u : {'U', 'L'}) {
      idx lda = n;
      char s[2] = {u, 0};
      auto a0 = lt::spd_matrix<T>(n, lda, 2);
      auto f = a0;
      idx info = 0;
      lp::potrf<T>(s, &n, f.data(), &lda, &info);
      ASSERT_EQ(info, 0);
      R anorm = lp::lanhe<T>("1", s, &n, a0.data(), &lda, nullptr);
      R rcond = 0;
      std::vector<T> work(static_cast<size_t>(3 * n));
      lp::pocon<T>(s, &n, f.data(), &lda, &anorm, &rcond, work.data(), nullptr, &info);
      lp::potri<T>(s, &n, f.data(), &lda, &info);
      ASSERT_EQ(info, 0);
      // Complete the Hermitian inverse from its stored triangle.
      for (idx j = 0; j < n; ++j)
        for (idx i = 0; i < n; ++i)
          if (u == 'U' ? i > j : i < j) f[i + j * lda] = lt::cj(f[j + i * lda]);
      EXPECT_LT(inverse_residual(n, a0.data(), f.data(), lda), 30.0) << n << u;
      double exact = 1.0 / (double(anorm) * lt::norm1(n, n, f.data(), lda));
      EXPECT_GE(double(rcond), exact * 0.999);
      EXPECT_LE(double(rcond), exact * 10.0);
    }
  }
}

TYPED_TEST(AuxTyped, TriangularInverseBlockedMatchesUnblocked) {
  using T = TypeParam;
  idx n = 150, lda = 152, info = 0;
  for (const char *u : {"U", "L"})
    for (const char *d : {"N", "U"}) {
      auto a = lt::random_matrix<T>(n, n, lda, 8);
      for (idx i = 0; i < n; ++i) a[i + i * lda] += T(4);
      auto b = a;
      lp::trtri<T>(u, d, &n, a.data(), &lda, &info);
      ASSERT_EQ(info, 0);
      lp::trti2<T>(u, d, &n, b.data(), &lda, &info);
      double diff = 0, ref = 0;
      for (idx j = 0; j < n; ++j)
        for (idx i = 0; i < n; ++i) {
          if (u[0] == 'U' ? i > j : i < j) {
            ASSERT_EQ(a[i + j * lda], b[i + j * lda]);  // other triangle untouched
            continue;
          }
          diff = std::max(diff, lt::mag(a[i + j * lda] - b[i + j * lda]));
          ref = std::max(ref, lt::mag(b[i + j * lda]));
        }
      EXPECT_LT(diff / ref, 1000 * lt::eps<T>()) << u << d;
    }
  auto z = lt::random_matrix<T>(n, n, lda, 1);
  z[7 + 7 * lda] = T(0);
  lp::trtri<T>("L", "N", &n, z.data(), &lda, &info);
  EXPECT_EQ(info, 8);
}

TYPED_TEST(AuxTyped, NormsAgainstDefinitions) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  idx m = 7, n = 5, lda = 9;
  auto a = lt::random_matrix<T>(m, n, lda, 3);
  std::vector<R> w(static_cast<size_t>(m));
  double mx = 0, one = 0, inf = 0, fro = 0;
  for (idx j = 0; j < n; ++j) {
    double s = 0;
    for (idx i = 0; i < m; ++i) {
      mx = std::max(mx, lt::mag(a[i + j * lda]));
      s += lt::mag(a[i + j * lda]);
      fro += lt::mag(a[i + j * lda]) * lt::mag(a[i + j * lda]);
    }
    one = std::max(one, s);
  }
  for (idx i = 0; i < m; ++i) {
    double s = 0;
    for (idx j = 0; j < n; ++j) s += lt::mag(a[i + j * lda]);
    inf = std::max(inf, s);
  }
  const double tol = 10 * lt::eps<T>();
  EXPECT_NEAR(lp::lange<T>("M", &m, &n, a.data(), &lda, w.data()), mx, mx * tol);
  EXPECT_NEAR(lp::lange<T>("o", &m, &n, a.data(), &lda, w.data()), one, one * tol);
  EXPECT_NEAR(lp::lange<T>("I", &m, &n, a.data(), &lda, w.data()), inf, inf * tol);
  EXPECT_NEAR(lp::lange<T>("F", &m, &n, a.data(), &lda, w.data()), std::sqrt(fro), std::sqrt(fro) * tol);
  a[3 + 2 * lda] = T(NAN);
  EXPECT_TRUE(std::isnan(lp::lange<T>("M", &m, &n, a.data(), &lda, w.data())));
  EXPECT_TRUE(std::isnan(lp::lange<T>("1", &m, &n, a.data(), &lda, w.data())));
  idx zero = 0;
  EXPECT_EQ(lp::lange<T>("M", &zero, &n, a.data(), &lda, w.data()), R(0));
  // Frobenius norm without overflow.
  idx two = 2;
  std::vector<T> big = {T(R(1e30)), T(R(1e30)), T(R(1e30)), T(R(1e30))};
  double fb = lp::lange<T>("F", &two, &two, big.data(), &two, w.data());
  EXPECT_NEAR(fb / 2e30, 1.0, 1e-5);
  // Triangular with unit diagonal.
  idx k = 4;
  auto t = lt::random_matrix<T>(k, k, k, 4);
  double tmax = 1.0;
  for (idx j = 0; j < k; ++j)
    for (idx i = 0; i < j; ++i) tmax = std::max(tmax, lt::mag(t[i + j * k]));
  EXPECT_NEAR(lp::lantr<T>("M", "U", "U", &k, &k, t.data(), &k, w.data()), tmax, tmax * tol);
}

TEST(Aux, HermitianAndSymmetricNorms) {
  using Z = std::complex<double>;
  idx n = 3;
  // Upper triangle stored; the lower one holds rubbish that must be ignored.
  std::vector<Z> a = {Z(2, 9), Z(99, 99), Z(99, 99), Z(1, 1), Z(3, 9), Z(99, 99), Z(0, 2), Z(1, -1), Z(4, 9)};
  // Hermitian: diagonal 2, 3, 4 (imaginary parts ignored), column sums
  // 2+|1+i|+2, |1-i|+3+|1-i|, 2+|1+i|+4.
  double s2 = std::sqrt(2.0);
  EXPECT_NEAR(nxl::lapack::lanhe<Z>("1", "U", &n, a.data(), &n, nullptr), 6 + s2, 1e-14);
  EXPECT_NEAR(nxl::lapack::lanhe<Z>("M", "U", &n, a.data(), &n, nullptr), 4, 1e-14);
  // Complex symmetric: the diagonal keeps its imaginary part.
  EXPECT_NEAR(nxl::lapack::lansy<Z>("M", "U", &n, a.data(), &n, nullptr), std::abs(Z(4, 9)), 1e-14);
}

TEST(Aux, ScalingWithoutOverflow) {
  idx m = 3, n = 3, lda = 3, info = 0, zero = 0;
  std::vector<double> a(9, 1.0);
  double from = 1e-300, to = 1e300;
  nxl::lapack::lascl<double>("G", &zero, &zero, &from, &to, &m, &n, a.data(), &lda, &info);
  ASSERT_EQ(info, 0);
  EXPECT_TRUE(std::isinf(a[0]));  // 1e600 is not representable: overflows only at the end
  std::vector<double> b(9, 1e-200);
  from = 1e200;
  to = 1e-100;
  nxl::lapack::lascl<double>("U", &zero, &zero, &from, &to, &m, &n, b.data(), &lda, &info);
  EXPECT_EQ(b[1], 1e-200);          // below the diagonal: untouched
  EXPECT_EQ(b[0], 0.0);             // 1e-500 underflows only as the final value
  std::vector<double> c(9, 3.0);
  from = 3.0;
  to = 1e-310;                       // subnormal target reached through safe steps
  nxl::lapack::lascl<double>("L", &zero, &zero, &from, &to, &m, &n, c.data(), &lda, &info);
  EXPECT_NEAR(c[0] / 1e-310, 1.0, 1e-3);
  EXPECT_EQ(c[3], 3.0);
  from = 0.0;
  nxl::lapack::lascl<double>("G", &zero, &zero, &from, &to, &m, &n, c.data(), &lda, &info);
  EXPECT_EQ(info, -4);
}

TEST(Aux, ElementaryFunctions) {
  double x = 3e300, y = 4e300;
  EXPECT_NEAR(nxl::lapack::lapy2<double>(&x, &y) / 5e300, 1.0, 1e-15);
  double z = 12e300, q = NAN;
  EXPECT_NEAR(nxl::lapack::lapy3<double>(&x, &y, &z) / 13e300, 1.0, 1e-15);
  EXPECT_TRUE(std::isnan(nxl::lapack::lapy2<double>(&x, &q)));
  for (auto fg : {std::pair<double, double>{3, 4}, {-3, 4}, {0, -2}, {5, 0}, {1e-300, 1e300}}) {
    double c, s, r;
    nxl::lapack::lartg<double>(&fg.first, &fg.second, &c, &s, &r);
    EXPECT_NEAR(c * fg.first + s * fg.second, r, 1e-15 * std::abs(r));
    EXPECT_NEAR(-s * fg.first + c * fg.second, 0, 1e-15 * std::abs(r));
    EXPECT_NEAR(c * c + s * s, 1, 1e-15);
  }
  using Z = std::complex<double>;
  Z f(1, 2), g(-3, 0.5), s, r;
  double c;
  nxl::lapack::lartg<Z>(&f, &g, &c, &s, &r);
  EXPECT_LT(std::abs(c * f + s * g - r), 1e-15 * std::abs(r));
  EXPECT_LT(std::abs(-std::conj(s) * f + c * g), 1e-15 * std::abs(r));
  EXPECT_EQ(nxl::lapack::lamch_entry<double>("e"), 0.5 * DBL_EPSILON);
  EXPECT_EQ(nxl::lapack::lamch_entry<float>("P"), FLT_EPSILON);
  EXPECT_EQ(nxl::lapack::lamch_entry<double>("O"), DBL_MAX);
  // Sum of squares from a given scale.
  double v[3] = {3e200, 4e200, 0}, scale = 1, sumsq = 0;
  idx three = 3, one = 1;
  nxl::lapack::lassq<double>(&three, v, &one, &scale, &sumsq);
  EXPECT_NEAR(scale * std::sqrt(sumsq) / 5e200, 1.0, 1e-14);
}

TYPED_TEST(AuxTyped, RandomGenerators) {
  using T = TypeParam;
  idx seed[4] = {1, 2, 3, 5};
  idx n = 1000;
  std::vector<T> x(static_cast<size_t>(n));
  for (idx dist : {1, 2, 3}) {
    lp::larnv<T>(&dist, seed, &n, x.data());
    double mean = 0;
    for (auto v : x) {
      ASSERT_TRUE(std::isfinite(std::real(v)) && std::isfinite(std::imag(v)));
      if (dist == 1) ASSERT_TRUE(std::real(v) > 0 && std::real(v) < 1);
      if (dist == 2) ASSERT_TRUE(std::real(v) > -1 && std::real(v) < 1);
      mean += std::real(v);
    }
    mean /= n;
    EXPECT_NEAR(mean, dist == 1 ? 0.5 : 0.0, 0.1) << dist;
  }
  if constexpr (lt::cplx<T>) {
    for (idx dist : {4, 5}) {
      lp::larnv<T>(&dist, seed, &n, x.data());
      for (auto v : x) ASSERT_LE(std::abs(std::complex<double>(v)), 1.0 + 1e-6);
    }
  }
  // The seed advances: two calls give different numbers.
  idx d1 = 1, s2[4] = {1, 2, 3, 5};
  std::vector<T> y1(4), y2(4);
  idx four = 4;
  lp::larnv<T>(&d1, s2, &four, y1.data());
  lp::larnv<T>(&d1, s2, &four, y2.data());
  EXPECT_NE(y1[0], y2[0]);
  EXPECT_EQ(s2[3] % 2, 1);
}

TYPED_TEST(AuxTyped, ExpertDriversEquilibrateAndBound) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  idx n = 50, nrhs = 2, lda = n, info = 0;
  // Badly scaled rows and columns.
  auto a0 = lt::random_matrix<T>(n, n, lda, 21);
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < n; ++i) a0[i + j * lda] *= R(std::pow(10.0, (i % 5) - 2)) * R(std::pow(10.0, (j % 3)));
  auto b0 = lt::random_matrix<T>(n, nrhs, n, 22);
  for (const char *fact : {"N", "E"})
    for (const char *tr : {"N", "T", "C"}) {
      auto a = a0, af = a0, b = b0, x = b0;
      std::vector<idx> ipiv(static_cast<size_t>(n));
      std::vector<R> r(static_cast<size_t>(n)), c(static_cast<size_t>(n)), ferr(2), berr(2), rw(2 * n);
      std::vector<T> work(static_cast<size_t>(4 * n));
      std::vector<idx> iw(static_cast<size_t>(n));
      char equed = 'N';
      R rcond = 0;
      void *w2 = lt::cplx<T> ? static_cast<void *>(rw.data()) : static_cast<void *>(iw.data());
      lp::gesvx<T>(fact, tr, &n, &nrhs, a.data(), &lda, af.data(), &lda, ipiv.data(), &equed, r.data(), c.data(),
                   b.data(), &n, x.data(), &n, &rcond, ferr.data(), berr.data(), work.data(), w2, &info);
      ASSERT_TRUE(info == 0 || info == n + 1);
      if (fact[0] == 'E') EXPECT_NE(equed, 'N');
      EXPECT_GT(rcond, R(0));
      for (idx j = 0; j < nrhs; ++j) {
        EXPECT_LT(berr[j], 10 * lt::eps<T>());
        EXPECT_GT(ferr[j], R(0));
      }
      EXPECT_LT(lt::solve_residual(tr[0], n, nrhs, a0.data(), lda, x.data(), n, b0.data(), n), 1e4);
    }
  // Positive definite expert driver with equilibration.
  auto p0 = lt::spd_matrix<T>(n, n, 5);
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < n; ++i) p0[i + j * n] *= R(std::pow(10.0, (i % 4))) * R(std::pow(10.0, (j % 4)));
  for (const char *u : {"U", "L"}) {
    auto a = p0, af = p0, b = b0, x = b0;
    std::vector<R> s(static_cast<size_t>(n)), ferr(2), berr(2), rw(n);
    std::vector<T> work(static_cast<size_t>(3 * n));
    char equed = 'N';
    R rcond = 0;
    lp::posvx<T>("E", u, &n, &nrhs, a.data(), &lda, af.data(), &lda, &equed, s.data(), b.data(), &n, x.data(), &n,
                 &rcond, ferr.data(), berr.data(), work.data(), rw.data(), &info);
    ASSERT_EQ(info, 0);
    EXPECT_EQ(equed, 'Y');
    EXPECT_LT(berr[0], 10 * lt::eps<T>());
    EXPECT_LT(lt::solve_residual('N', n, nrhs, p0.data(), lda, x.data(), n, b0.data(), n), 1e4);
  }
}

TYPED_TEST(AuxTyped, PivotedCholeskyFindsRank) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  idx n = 30, r = 7;
  auto b = lt::random_matrix<T>(n, r, n, 31);
  for (const char *u : {"U", "L"}) {
    std::vector<T> a(static_cast<size_t>(n * n));
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < n; ++i) {
        std::complex<double> s = 0;
        for (idx k = 0; k < r; ++k)
          s += std::complex<double>(std::real(b[i + k * n]), std::imag(b[i + k * n])) *
               std::conj(std::complex<double>(std::real(b[j + k * n]), std::imag(b[j + k * n])));
        if constexpr (lt::cplx<T>) a[i + j * n] = T(R(s.real()), R(i == j ? 0 : s.imag()));
        else a[i + j * n] = T(s.real());
      }
    auto f = a;
    std::vector<idx> piv(static_cast<size_t>(n));
    std::vector<R> work(static_cast<size_t>(2 * n));
    idx rank = -1, info = 0;
    R tol = -1;
    lp::pstrf<T>(u, &n, f.data(), &n, piv.data(), &rank, &tol, work.data(), &info);
    EXPECT_EQ(info, 1);
    EXPECT_EQ(rank, r) << u;
    // The first `rank` steps reproduce P^T A P on the leading block.
    for (idx j = 0; j < rank; ++j)
      for (idx i = 0; i <= j; ++i) {
        std::complex<double> s = 0;
        for (idx k = 0; k <= i; ++k) {
          T x = u[0] == 'U' ? lt::cj(f[k + i * n]) : f[i + k * n];
          T y = u[0] == 'U' ? f[k + j * n] : lt::cj(f[j + k * n]);
          s += std::complex<double>(std::real(x), std::imag(x)) * std::complex<double>(std::real(y), std::imag(y));
        }
        T ref = a[(piv[i] - 1) + (piv[j] - 1) * n];
        EXPECT_LT(std::abs(s - std::complex<double>(std::real(ref), std::imag(ref))), 1e3 * lt::eps<T>() * n * 10);
      }
  }
}

TEST(Mixed, RefinesInDoubleAndFallsBack) {
  idx n = 60, nrhs = 3, info = 0, iter = 0;
  auto a0 = lt::random_matrix<double>(n, n, n, 41);
  auto b = lt::random_matrix<double>(n, nrhs, n, 42);
  std::vector<double> x(static_cast<size_t>(n * nrhs)), work(static_cast<size_t>(n * nrhs));
  std::vector<float> sw(static_cast<size_t>(n * (n + nrhs)));
  std::vector<idx> ipiv(static_cast<size_t>(n));
  auto a = a0;
  lp::mixed_gesv<double>(&n, &nrhs, a.data(), &n, ipiv.data(), b.data(), &n, x.data(), &n, work.data(), sw.data(),
                         &iter, &info);
  ASSERT_EQ(info, 0);
  EXPECT_GE(iter, 0);
  EXPECT_LT(lt::solve_residual('N', n, nrhs, a0.data(), n, x.data(), n, b.data(), n), 30.0);
  // Entries beyond single precision: solved in double, iter = -2.
  a = a0;
  a[3] = 1e300;
  auto a1 = a;
  lp::mixed_gesv<double>(&n, &nrhs, a.data(), &n, ipiv.data(), b.data(), &n, x.data(), &n, work.data(), sw.data(),
                         &iter, &info);
  EXPECT_EQ(iter, -2);
  EXPECT_EQ(info, 0);
  EXPECT_LT(lt::solve_residual('N', n, nrhs, a1.data(), n, x.data(), n, b.data(), n), 30.0);
  // Hermitian positive definite, complex.
  using Z = std::complex<double>;
  auto p = lt::spd_matrix<Z>(n, n, 43);
  auto zb = lt::random_matrix<Z>(n, nrhs, n, 44);
  std::vector<Z> zx(static_cast<size_t>(n * nrhs)), zw(static_cast<size_t>(n * nrhs));
  std::vector<std::complex<float>> zs(static_cast<size_t>(n * (n + nrhs)));
  std::vector<double> rw(static_cast<size_t>(n));
  for (const char *u : {"U", "L"}) {
    auto pa = p;
    lp::mixed_posv_c<Z>(u, &n, &nrhs, pa.data(), &n, zb.data(), &n, zx.data(), &n, zw.data(), zs.data(), rw.data(),
                        &iter, &info);
    ASSERT_EQ(info, 0);
    EXPECT_GE(iter, 0);
    EXPECT_LT(lt::solve_residual('N', n, nrhs, p.data(), n, zx.data(), n, zb.data(), n), 30.0);
  }
}

TEST(Aux, EquilibrationFactors) {
  idx m = 3, n = 2, info = 0;
  std::vector<double> a = {1e5, 0, 2, 4, 0, 8};
  std::vector<double> r(3), c(2);
  double rc, cc, amax;
  lp::geequ<double>(&m, &n, a.data(), &m, r.data(), c.data(), &rc, &cc, &amax, &info);
  EXPECT_EQ(info, 2);  // row 2 is zero
  a[1] = 3;
  lp::geequb<double>(&m, &n, a.data(), &m, r.data(), c.data(), &rc, &cc, &amax, &info);
  ASSERT_EQ(info, 0);
  EXPECT_EQ(amax, 65536.0);  // the row maxima are rounded to powers of the radix first
  for (double v : r) EXPECT_EQ(std::log2(v), std::round(std::log2(v)));  // powers of two
  std::vector<double> p = {4, 1, 1, -9};
  std::vector<double> s(2);
  idx two = 2;
  lp::poequ<double>(&two, p.data(), &two, s.data(), &rc, &amax, &info);
  EXPECT_EQ(info, 2);
  p[3] = 16;
  lp::poequ<double>(&two, p.data(), &two, s.data(), &rc, &amax, &info);
  EXPECT_EQ(s[0], 0.5);
  EXPECT_EQ(s[1], 0.25);
  EXPECT_EQ(rc, 0.5);
}
