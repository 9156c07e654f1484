// Small LU kernels (register-resident and blocked): residuals at every
// order and shape up to past the kernels' limits, the pivot tie rule, zero
// pivots, NaN and infinite entries, padded leading dimensions, and the
// small solve with its own argument checks.
#include <gtest/gtest.h>
#include <cmath>
#include <limits>
#include "lapack/lu/gesv.h"
#include "service/nxl_serv.h"
#include "util.h"

using lt::idx;
namespace lp = nxl::lapack;

namespace {
template <class T> class SmallLu : public ::testing::Test {};
using Types = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(SmallLu, Types);

template <class T> T sentinel() { return T(-77); }

// Factors a with lda = m + 3 (rows m.. hold a sentinel that must survive).
template <class T> void factor(idx m, idx n, std::vector<T> &a, idx lda, std::vector<idx> &ipiv, idx &info) {
  ipiv.assign(static_cast<size_t>(std::max<idx>(1, std::min(m, n))), -5);
  lp::getrf<T>(&m, &n, a.data(), &lda, ipiv.data(), &info);
}

template <class T> std::vector<T> padded(idx m, idx n, idx lda, unsigned seed) {
  auto a = lt::random_matrix<T>(m, n, lda, seed);
  for (idx j = 0; j < n; ++j)
    for (idx i = m; i < lda; ++i) a[i + j * lda] = sentinel<T>();
  return a;
}
}  // namespace

// Square, tall and wide matrices of every order 1..70: |PA - LU| small,
// pivots in range, the rows past m untouched.
TYPED_TEST(SmallLu, ResidualEveryOrderAndShape) {
  using T = TypeParam;
  for (idx n = 1; n <= 70; ++n)
    for (idx dm : {0, 3, -3}) {
      const idx m = n + dm;
      if (m < 1) continue;
      const idx lda = m + 3;
      auto a0 = padded<T>(m, n, lda, static_cast<unsigned>(n * 7 + dm + 11));
      auto a = a0;
      std::vector<idx> ipiv;
      idx info = -9;
      factor(m, n, a, lda, ipiv, info);
      ASSERT_EQ(info, 0) << m << "x" << n;
      for (idx i = 0; i < std::min(m, n); ++i) ASSERT_TRUE(ipiv[i] > i && ipiv[i] <= m) << m << "x" << n;
      EXPECT_LT(lt::lu_residual(m, n, a0.data(), lda, a.data(), ipiv.data()), 30.0) << m << "x" << n;
      for (idx j = 0; j < n; ++j)
        for (idx i = m; i < lda; ++i) ASSERT_EQ(a[i + j * lda], sentinel<T>()) << m << "x" << n;
    }
}

// Of equal magnitudes the upper row is the pivot, at every step: a column
// of +-1 (and, complex, of |re| + |im| ties) pivots on its first candidate.
TYPED_TEST(SmallLu, TiesTakeTheUpperRow) {
  using T = TypeParam;
  for (idx n : {3, 4, 8, 9, 16, 33}) {
    const idx lda = n;
    std::vector<T> a(static_cast<size_t>(n * n));
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < n; ++i) {
        // Column 0: magnitudes 1 everywhere but 2 at rows 2 and n-1.
        T v = (i + j) % 2 ? T(-1) : T(1);
        if (j == 0 && (i == 2 || i == n - 1)) v = T(-2);
        if constexpr (lt::cplx<T>)
          if (j == 0 && i == n - 1) v = T(-1, 1);
        a[i + j * lda] = j == 0 ? v : T(static_cast<double>((i * 7 + j * 3) % 5) - 2.0);
      }
    std::vector<idx> ipiv;
    idx info = 0;
    factor(n, n, a, lda, ipiv, info);
    EXPECT_EQ(ipiv[0], n > 2 ? 3 : 1) << n;
  }
  // A column that is all ties: every step keeps its diagonal row.
  for (idx n : {4, 8, 16}) {
    std::vector<T> a(static_cast<size_t>(n * n), T(0));
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < n; ++i) a[i + j * n] = i >= j ? T(i == j ? 4 : 1) : T(0);
    for (idx i = 0; i < n; ++i) a[i] = T(1);  // column 0: all ones
    std::vector<idx> ipiv;
    idx info = 0;
    factor(n, n, a, n, ipiv, info);
    EXPECT_EQ(ipiv[0], 1);
  }
  // A tie between a row that an interchange moved and one that stayed: the
  // earlier in the interchanged order wins. Step 0 pivots on the last row
  // with zero multipliers; in column 1 rows 0 (moved to the last place) and
  // 1 then tie, and row 1 must be chosen.
  for (idx n : {4, 8, 12, 16, 20}) {
    std::vector<T> a(static_cast<size_t>(n * n));
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < n; ++i) a[i + j * n] = T(static_cast<double>((i * 3 + j * 5) % 7) - 3.0);
    for (idx i = 0; i < n; ++i) {
      a[i] = T(i == n - 1 ? 1 : 0);
      a[i + n] = T(i < 2 ? 5 : i == n - 1 ? 0 : 1);
    }
    std::vector<idx> ipiv;
    idx info = 0;
    factor(n, n, a, n, ipiv, info);
    EXPECT_EQ(ipiv[0], n) << n;
    EXPECT_EQ(ipiv[1], 2) << n;
  }
}

// An exactly zero column k: info = k + 1, the factorization completed (the
// residual still holds) and the column left unscaled.
TYPED_TEST(SmallLu, ZeroColumnReportsFirstZeroPivot) {
  using T = TypeParam;
  for (idx n : {1, 2, 4, 7, 8, 11, 16, 24, 32, 64})
    for (idx k : {idx(0), n / 2, n - 1}) {
      const idx lda = n + 1;
      auto a0 = padded<T>(n, n, lda, static_cast<unsigned>(n + 100 * k));
      for (idx i = 0; i < n; ++i) a0[i + k * lda] = T(0);
      if (k + 1 < n)  // a second zero column later must not overwrite info
        for (idx i = 0; i < n; ++i) a0[i + (n - 1) * lda] = T(0);
      auto a = a0;
      std::vector<idx> ipiv;
      idx info = 0;
      factor(n, n, a, lda, ipiv, info);
      EXPECT_EQ(info, k + 1) << n << " " << k;
      EXPECT_LT(lt::lu_residual(n, n, a0.data(), lda, a.data(), ipiv.data()), 30.0) << n << " " << k;
    }
}

// NaN is the pivot wherever it stands; an infinite entry of U spoils no
// column left of it and keeps its own value.
TYPED_TEST(SmallLu, NanAndInfinity) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  const R nan = std::numeric_limits<R>::quiet_NaN(), inf = std::numeric_limits<R>::infinity();
  for (idx n : {2, 5, 8, 13, 16, 40}) {
    for (idx r : {idx(0), n / 2, n - 1}) {
      auto a = padded<T>(n, n, n, static_cast<unsigned>(3 * n + r));
      a[r] = T(nan);
      std::vector<idx> ipiv;
      idx info = 0;
      factor(n, n, a, n, ipiv, info);
      EXPECT_EQ(ipiv[0], r + 1) << n << " " << r;
    }
    // Row 0 dominates column 0, so it stays the first pivot row; its entry in
    // the last column is infinite.
    auto a = padded<T>(n, n, n, static_cast<unsigned>(5 * n));
    a[0] = T(10);
    a[(n - 1) * n] = T(inf);
    std::vector<idx> ipiv;
    idx info = 0;
    factor(n, n, a, n, ipiv, info);
    EXPECT_EQ(ipiv[0], 1);
    EXPECT_EQ(std::real(a[(n - 1) * n]), inf) << n;
    for (idx j = 0; j + 1 < n; ++j)
      for (idx i = 0; i < n; ++i) ASSERT_TRUE(std::isfinite(lt::mag(a[i + j * n]))) << n << " " << i << " " << j;
  }
}

// Tall blocks of up to 64 columns go through the kernel in one call, panel
// by panel: residuals with padded leading dimensions, a zero column in a
// later panel (info, the other columns still factored) and a NaN that
// becomes the pivot of a later column.
TYPED_TEST(SmallLu, TallBlocksPanelByPanel) {
  using T = TypeParam;
  for (idx n : {17, 24, 40, 63, 64})
    for (idx m : {n, n + 1, 2 * n + 7, idx(300)}) {
      const idx lda = m + 5;
      auto a0 = padded<T>(m, n, lda, static_cast<unsigned>(m * 3 + n));
      auto a = a0;
      std::vector<idx> ipiv;
      idx info = -9;
      factor(m, n, a, lda, ipiv, info);
      ASSERT_EQ(info, 0) << m << "x" << n;
      EXPECT_LT(lt::lu_residual(m, n, a0.data(), lda, a.data(), ipiv.data()), 30.0) << m << "x" << n;
      for (idx j = 0; j < n; ++j)
        for (idx i = m; i < lda; ++i) ASSERT_EQ(a[i + j * lda], sentinel<T>()) << m << "x" << n;

      const idx k = n - 7;
      for (idx i = 0; i < m; ++i) a0[i + k * lda] = T(0);
      a = a0;
      factor(m, n, a, lda, ipiv, info);
      EXPECT_EQ(info, k + 1) << m << "x" << n;
      EXPECT_LT(lt::lu_residual(m, n, a0.data(), lda, a.data(), ipiv.data()), 30.0) << m << "x" << n;
    }
  using R = lt::real_t<T>;
  for (idx n : {20, 64}) {
    const idx m = n + 9;
    auto a = padded<T>(m, n, m, static_cast<unsigned>(n));
    // Row m-2 is zero left of column 9, so no earlier step takes it, and NaN
    // in column 9.
    for (idx j = 0; j < 9; ++j) a[m - 2 + j * m] = T(0);
    a[m - 2 + 9 * m] = T(std::numeric_limits<R>::quiet_NaN());
    a[0] = T(100);
    std::vector<idx> ipiv;
    idx info = 0;
    factor(m, n, a, m, ipiv, info);
    // The NaN row stays NaN under the updates and is column 9's pivot.
    EXPECT_EQ(ipiv[9], m - 1) << n;
  }
}

// A tiny pivot (below the safe minimum) divides instead of multiplying by a
// reciprocal that would overflow.
TYPED_TEST(SmallLu, TinyPivotDivides) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  const R tiny = std::numeric_limits<R>::denorm_min() * R(64);
  for (idx n : {3, 8, 16}) {
    std::vector<T> a(static_cast<size_t>(n * n), T(0));
    for (idx i = 0; i < n; ++i) a[i + i * n] = T(1);
    a[0] = T(tiny);
    a[1] = T(tiny / R(2));
    std::vector<idx> ipiv;
    idx info = 0;
    factor(n, n, a, n, ipiv, info);
    EXPECT_EQ(info, 0);
    EXPECT_EQ(ipiv[0], 1);
    EXPECT_NEAR(std::real(a[1]), 0.5, 1e-6) << n;
  }
}

// Entries far from 1 (pivots whose squared magnitude overflows or
// underflows, so a complex reciprocal needs scaling): the residual holds and
// no entry turns infinite or NaN.
TYPED_TEST(SmallLu, ScaledEntriesKeepTheResidual) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  const int e = sizeof(R) == 8 ? 600 : 70;
  for (int sign : {-1, 1})
    for (idx n : {3, 5, 6, 8, 12, 16, 33}) {
      const R scale = std::ldexp(R(1), sign * e);
      auto a0 = lt::random_matrix<T>(n, n, n, static_cast<unsigned>(n * 5 + sign + 2));
      for (auto &x : a0) x *= scale;
      auto a = a0;
      std::vector<idx> ipiv;
      idx info = -9;
      factor(n, n, a, n, ipiv, info);
      ASSERT_EQ(info, 0) << n << " " << sign;
      for (const auto &x : a) ASSERT_TRUE(std::isfinite(lt::mag(x))) << n << " " << sign;
      EXPECT_LT(lt::lu_residual(n, n, a0.data(), n, a.data(), ipiv.data()), 30.0) << n << " " << sign;
    }
}

// The small solve (n, nrhs <= 8) for the three operators, and above it.
TYPED_TEST(SmallLu, SolveEveryOperator) {
  using T = TypeParam;
  for (idx n : {1, 2, 5, 8, 9, 16, 40, 61})
    for (idx nrhs : {1, 3, 8, 9})
      for (char tr : {'N', 'T', 'C'}) {
        const idx lda = n + 2, ldb = n + 1;
        auto a0 = padded<T>(n, n, lda, static_cast<unsigned>(n * 13 + nrhs));
        auto a = a0;
        std::vector<idx> ipiv;
        idx info = 0;
        factor(n, n, a, lda, ipiv, info);
        ASSERT_EQ(info, 0);
        auto b = lt::random_matrix<T>(n, nrhs, ldb, static_cast<unsigned>(n + nrhs));
        auto x = b;
        char t[2] = {tr, 0};
        lp::getrs<T>(t, &n, &nrhs, a.data(), &lda, ipiv.data(), x.data(), &ldb, &info);
        ASSERT_EQ(info, 0);
        EXPECT_LT(lt::solve_residual(tr, n, nrhs, a0.data(), lda, x.data(), ldb, b.data(), ldb), 50.0)
            << n << " " << nrhs << " " << tr;
      }
}

namespace {
struct Report {
  static inline std::string name;
  static inline idx pos = 0;
  static void handler(const char *n, const nxl_int *info, int len) {
    name.assign(n, static_cast<size_t>(len));
    pos = *info;
  }
};
}  // namespace

// The small solve checks its own arguments, in the standard's positions.
TEST(SmallLuChecks, SolveReportsBadArguments) {
  auto old = nxl_serv_set_xerbla(Report::handler);
  double a[4] = {1, 0, 0, 1}, b[2] = {1, 1};
  idx ipiv[2] = {1, 2};
  struct Case {
    const char *tr;
    idx n, nrhs, lda, ldb, pos;
  } cases[] = {{"X", 2, 1, 2, 2, 1}, {"N", -1, 1, 2, 2, 2}, {"N", 2, -1, 2, 2, 3},
               {"N", 2, 1, 1, 2, 5}, {"T", 2, 1, 2, 1, 8}};
  for (const auto &c : cases) {
    Report::pos = 0;
    idx info = 0;
    lp::getrs<double>(c.tr, &c.n, &c.nrhs, a, &c.lda, ipiv, b, &c.ldb, &info);
    EXPECT_EQ(info, -c.pos);
    EXPECT_EQ(Report::pos, c.pos);
    EXPECT_EQ(Report::name, "DGETRS");
  }
  nxl_serv_set_xerbla(old);
}

namespace {
// P L U x = b by plain loops with divisions, in T: the order of operations
// of the column algorithm, so special values come out where it puts them.
template <class T>
void reference_solve(idx n, const T *a, idx lda, const idx *ipiv, T *x) {
  for (idx i = 0; i < n; ++i) std::swap(x[i], x[ipiv[i] - 1]);
  for (idx j = 0; j < n; ++j)
    for (idx i = j + 1; i < n; ++i) x[i] -= a[i + j * lda] * x[j];
  for (idx j = n - 1; j >= 0; --j) {
    x[j] /= a[j + j * lda];
    for (idx i = 0; i < j; ++i) x[i] -= a[i + j * lda] * x[j];
  }
}

// Entries agree to a few units of rounding relative to the column's size,
// and are NaN or infinite at the same places.
template <class T>
void expect_close(idx n, idx nrhs, const T *x, idx ldx, const T *y, const char *what, double units = 64) {
  for (idx r = 0; r < nrhs; ++r) {
    double scale = 0;
    for (idx i = 0; i < n; ++i)
      if (std::isfinite(lt::mag(y[i + r * ldx]))) scale = std::max(scale, lt::mag(y[i + r * ldx]));
    for (idx i = 0; i < n; ++i) {
      const T u = x[i + r * ldx], v = y[i + r * ldx];
      const bool fu = std::isfinite(lt::mag(u)), fv = std::isfinite(lt::mag(v));
      ASSERT_EQ(fu, fv) << what << " n=" << n << " row " << i << " col " << r;
      if (fu) ASSERT_LE(lt::mag(u - v), units * n * lt::eps<T>() * scale) << what << " n=" << n << " row " << i;
      else ASSERT_EQ(std::isnan(lt::mag(u)), std::isnan(lt::mag(v))) << what << " n=" << n << " row " << i;
    }
  }
}
}  // namespace

// Right-hand sides on small orders (the register solve of the real types,
// and their step solve for one right-hand side): against the column
// algorithm for every order up to 33, pivots that move rows, padded
// leading dimensions, right-hand sides with NaN and infinite entries, and a
// diagonal of U below the normal range (which must be divided by: its
// reciprocal overflows).
TYPED_TEST(SmallLu, SolveManyRightHandSides) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  for (idx n = 1; n <= 33; ++n)
    for (idx nrhs : {1, 2, 7, 100})
      for (int kind = 0; kind < 3; ++kind) {
        // (Complex products of infinities depend on the product's formula.)
        if (kind == 1 && lt::cplx<T>) continue;
        const idx lda = n + 3, ldb = n + 2;
        auto a = padded<T>(n, n, lda, static_cast<unsigned>(n * 5 + kind));
        std::vector<idx> ipiv;
        idx info = 0;
        factor(n, n, a, lda, ipiv, info);
        ASSERT_EQ(info, 0);
        auto b = lt::random_matrix<T>(n, nrhs, ldb, static_cast<unsigned>(n + nrhs + kind));
        for (idx r = 0; r < nrhs; ++r)
          for (idx i = n; i < ldb; ++i) b[i + r * ldb] = sentinel<T>();
        if (kind == 1) {
          b[n - 1] = T(std::numeric_limits<R>::infinity());
          b[nrhs > 1 ? ldb : 0] = T(std::numeric_limits<R>::quiet_NaN());
        } else if (kind == 2) {
          // A tiny last pivot of U and right-hand sides to match: finite
          // solutions only when the quotient is taken as a quotient.
          const idx k = n - 1;
          a[k + k * lda] = T(std::numeric_limits<R>::denorm_min() * 64);
          for (idx r = 0; r < nrhs; ++r)
            for (idx i = 0; i < n; ++i) b[i + r * ldb] *= T(std::numeric_limits<R>::min());
        }
        auto x = b, y = b;
        lp::getrs<T>("N", &n, &nrhs, a.data(), &lda, ipiv.data(), x.data(), &ldb, &info);
        ASSERT_EQ(info, 0);
        for (idx r = 0; r < nrhs; ++r) reference_solve(n, a.data(), lda, ipiv.data(), y.data() + r * ldb);
        // (The tiny pivot leaves a badly conditioned U: there only the
        // finite entries matter, and a loose agreement.)
        expect_close(n, nrhs, x.data(), ldb, y.data(), kind == 0 ? "plain" : kind == 1 ? "special" : "tiny pivot",
                     kind == 2 ? 1e5 : 64);
        for (idx r = 0; r < nrhs; ++r)
          for (idx i = n; i < ldb; ++i) ASSERT_EQ(x[i + r * ldb], sentinel<T>());
      }
}
