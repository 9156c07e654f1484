// Small Cholesky kernels (register-resident, blocked, both triangles):
// residuals at every order 1..70, the other triangle and padding untouched,
// the failing minor's order with the columns before it factored, NaN on the
// diagonal, and the solve.
#include <gtest/gtest.h>
#include <limits>
#include "lapack/chol/potrs.h"
#include "util.h"

using lt::idx;
namespace lp = nxl::lapack;

namespace {
template <class T> class SmallChol : public ::testing::Test {};
using Types = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(SmallChol, Types);

std::complex<double> cd(double x) { return x; }
template <class R> std::complex<double> cd(std::complex<R> x) { return {x.real(), x.imag()}; }

// One-norm of the leading k x k block of the Hermitian matrix stored in
// one triangle (the other one and the padding may hold anything).
template <class T> double herm_norm1(bool up, idx k, const T *a, idx lda) {
  double worst = 0;
  for (idx j = 0; j < k; ++j) {
    double s = 0;
    for (idx i = 0; i < k; ++i) s += std::abs(cd((up ? i <= j : i >= j) ? a[i + j * lda] : a[j + i * lda]));
    worst = std::max(worst, s);
  }
  return worst;
}

// |A - U^H U| (or L L^H) over the leading k x k block, / (k |A| eps).
template <class T> double residual(bool up, idx k, const T *a0, const T *f, idx lda) {
  double worst = 0;
  for (idx j = 0; j < k; ++j) {
    double s = 0;
    for (idx i = 0; i < k; ++i) {
      std::complex<double> v = 0;
      for (idx q = 0; q <= std::min(i, j); ++q)
        v += up ? std::conj(cd(f[q + i * lda])) * cd(f[q + j * lda]) : cd(f[i + q * lda]) * std::conj(cd(f[j + q * lda]));
      const std::complex<double> aij = (up ? i <= j : i >= j) ? cd(a0[i + j * lda]) : std::conj(cd(a0[j + i * lda]));
      s += std::abs(aij - v);
    }
    worst = std::max(worst, s);
  }
  return worst / (std::max<idx>(k, 1) * herm_norm1(up, k, a0, lda) * lt::eps<T>());
}

// Hermitian positive definite with the unreferenced triangle and the
// padding poisoned.
template <class T> std::vector<T> poisoned(bool up, idx n, idx lda, unsigned seed) {
  auto a = lt::spd_matrix<T>(n, lda, seed);
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < lda; ++i)
      if (i >= n || (up ? i > j : i < j)) a[i + j * lda] = T(-1e10);
  return a;
}
}  // namespace

TYPED_TEST(SmallChol, ResidualEveryOrderBothTriangles) {
  using T = TypeParam;
  for (idx n = 1; n <= 70; ++n)
    for (char u : {'U', 'L', 'l'}) {
      const bool up = u == 'U';
      const idx lda = n + (n % 3);
      auto a0 = poisoned<T>(up, n, lda, static_cast<unsigned>(n * 5 + u));
      auto a = a0;
      idx info = -1;
      const char s[2] = {u, 0};
      lp::potrf<T>(s, &n, a.data(), &lda, &info);
      ASSERT_EQ(info, 0) << n << u;
      EXPECT_LT(residual<T>(up, n, a0.data(), a.data(), lda), 30.0) << n << u;
      for (idx j = 0; j < n; ++j) {
        if constexpr (lt::cplx<T>) ASSERT_EQ(std::imag(a[j + j * lda]), 0) << n << u;
        for (idx i = 0; i < lda; ++i)
          if (i >= n || (up ? i > j : i < j)) ASSERT_EQ(a[i + j * lda], a0[i + j * lda]) << n << u;
      }
    }
}

// The leading minor of order k is made indefinite (or NaN): info = k, and
// the first k - 1 columns are the factor of the leading block.
TYPED_TEST(SmallChol, FailingMinorStopsWithEarlierColumnsFactored) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  for (idx n : {1, 3, 4, 8, 9, 16, 17, 33, 64})
    for (idx k : {idx(1), (n + 1) / 2, n})
      for (bool nan : {false, true})
        for (bool up : {true, false}) {
          const idx lda = n + 1;
          auto a0 = poisoned<T>(up, n, lda, static_cast<unsigned>(n + 31 * k));
          a0[(k - 1) * (lda + 1)] = nan ? T(std::numeric_limits<R>::quiet_NaN()) : T(-1);
          auto a = a0;
          idx info = 0;
          const char *s = up ? "U" : "L";
          lp::potrf<T>(s, &n, a.data(), &lda, &info);
          ASSERT_EQ(info, k) << n << " " << k << nan << up;
          if (k > 1) EXPECT_LT(residual<T>(up, k - 1, a0.data(), a.data(), lda), 30.0) << n << " " << k;
          for (idx j = 0; j < n; ++j)
            for (idx i = 0; i < lda; ++i)
              if (i >= n || (up ? i > j : i < j)) ASSERT_EQ(a[i + j * lda], a0[i + j * lda]);
        }
}

TYPED_TEST(SmallChol, SolveWithFactor) {
  using T = TypeParam;
  // One right-hand side goes through the blocked vector solves up to the
  // orders that fit in L2, ragged last blocks included.
  for (idx n : {1, 4, 8, 16, 25, 32, 37, 40, 64, 130})
    for (idx nrhs : {1, 5, 100})
      for (bool up : {true, false}) {
        const idx lda = n + 1, ldb = n + 2;
        auto a0 = poisoned<T>(up, n, lda, static_cast<unsigned>(n));
        auto a = a0;
        idx info = 0;
        const char *s = up ? "U" : "L";
        lp::potrf<T>(s, &n, a.data(), &lda, &info);
        ASSERT_EQ(info, 0);
        auto b = lt::random_matrix<T>(n, nrhs, ldb, 9);
        auto x = b;
        lp::potrs<T>(s, &n, &nrhs, a.data(), &lda, x.data(), &ldb, &info);
        ASSERT_EQ(info, 0);
        // Full Hermitian matrix for the residual.
        std::vector<T> full(static_cast<size_t>(n * n));
        for (idx j = 0; j < n; ++j)
          for (idx i = 0; i < n; ++i)
            full[i + j * n] = (up ? i <= j : i >= j) ? a0[i + j * lda] : lt::cj(a0[j + i * lda]);
        EXPECT_LT(lt::solve_residual('N', n, nrhs, full.data(), n, x.data(), ldb, b.data(), ldb), 50.0)
            << n << " " << nrhs << up;
      }
}

// A failure at column k (also inside an eight-column block, and with the
// order past the register kernel) leaves the columns before it complete
// down to the last row (rows of U across to the last column): the panel
// below a block is solved for the columns done before its failing pivot.
TYPED_TEST(SmallChol, FailureKeepsEarlierColumnsWholeBelowTheBlock) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  for (idx n : {6, 20, 40, 70})
    for (idx k : {idx(2), idx(5), idx(11), idx(18), idx(35)}) {
      if (k > n) continue;
      for (bool up : {true, false}) {
        const idx lda = n + 3;
        auto a0 = poisoned<T>(up, n, lda, static_cast<unsigned>(7 * n + k));
        a0[(k - 1) * (lda + 1)] = T(R(-4));
        auto a = a0;
        idx info = 0;
        lp::potrf<T>(up ? "U" : "L", &n, a.data(), &lda, &info);
        ASSERT_EQ(info, k) << n << " " << k << up;
        // Entry (i, j) of A, i >= j, from the stored triangle and from the
        // factor's columns (rows) 0..j, for the columns j < k - 1.
        auto f = [&](idx i, idx q) { return up ? lt::cj(a[q + i * lda]) : a[i + q * lda]; };
        double worst = 0;
        for (idx j = 0; j + 1 < k; ++j)
          for (idx i = j; i < n; ++i) {
            std::complex<double> v = 0;
            for (idx q = 0; q <= j; ++q) v += cd(f(i, q)) * std::conj(cd(f(j, q)));
            const std::complex<double> aij = up ? std::conj(cd(a0[j + i * lda])) : cd(a0[i + j * lda]);
            worst = std::max(worst, std::abs(aij - v));
          }
        EXPECT_LT(worst / (n * herm_norm1(up, n, a0.data(), lda) * lt::eps<T>()), 30.0) << n << " " << k << up;
      }
    }
}
