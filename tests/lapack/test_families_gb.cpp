// General band matrices: factor and solve residuals over band shapes,
// condition estimates against the exact value, equilibration, refinement,
// the expert driver, singular matrices, quick returns and argument checks.
#include "families_util.h"
#include "lapack/band/gbsv.h"
#include "lapack/band/gbsvx.h"
#include "lapack/lu/gesvx.h"
#include "nxl_lapack.h"

using ft::C;
using ft::Dense;
using lt::idx;
namespace lp = nxl::lapack;

namespace {

// A random m x n band matrix: band storage with `extra` rows on top (kl for
// the factorization, 0 otherwise) and its dense image. A diagonal boost
// keeps square ones well conditioned.
template <class T> struct Band {
  idx m, n, kl, ku, ld, off;
  std::vector<T> ab;
  Dense dense;
  Band(idx m_, idx n_, idx kl_, idx ku_, idx extra, unsigned seed, double boost = 2.0)
      : m(m_), n(n_), kl(kl_), ku(ku_), ld(kl_ + ku_ + 1 + extra + 1), off(extra) {
    auto r = lt::random_matrix<T>(ld, n, ld, seed);
    ab.assign(r.begin(), r.end());
    dense.assign(static_cast<size_t>(m * n), C(0));
    for (idx j = 0; j < n; ++j)
      for (idx i = std::max<idx>(0, j - ku); i <= std::min(m - 1, j + kl); ++i) {
        T &v = at(i, j);
        if (i == j) v += T(boost);
        dense[i + j * m] = ft::wide(v);
      }
  }
  T &at(idx i, idx j) { return ab[off + ku + i - j + j * ld]; }
};

// |A - P1 L1 ... U| / (n |A| eps), rebuilding the product from the factors
// of gbtrf in the order the steps were taken.
template <class T> double gb_lu_residual(const Band<T> &a0, const std::vector<T> &f, const std::vector<idx> &ipiv) {
  idx m = a0.m, n = a0.n, kv = a0.kl + a0.ku, k = std::min(m, n);
  Dense p(static_cast<size_t>(m * n), C(0));
  for (idx j = 0; j < n; ++j)
    for (idx i = std::max<idx>(0, j - kv); i <= std::min(j, k - 1); ++i) p[i + j * m] = ft::wide(f[kv + i - j + j * a0.ld]);
  for (idx j = k - 1; j >= 0; --j) {
    idx lm = std::min(a0.kl, m - 1 - j);
    for (idx r = 1; r <= lm; ++r) {
      C l = ft::wide(f[kv + r + j * a0.ld]);
      for (idx c = 0; c < n; ++c) p[j + r + c * m] += l * p[j + c * m];
    }
    idx q = ipiv[static_cast<size_t>(j)] - 1;
    if (q != j)
      for (idx c = 0; c < n; ++c) std::swap(p[j + c * m], p[q + c * m]);
  }
  double diff = 0, an = 0;
  for (idx j = 0; j < n; ++j) {
    double s = 0, t = 0;
    for (idx i = 0; i < m; ++i) { s += std::abs(p[i + j * m] - a0.dense[i + j * m]); t += std::abs(a0.dense[i + j * m]); }
    diff = std::max(diff, s);
    an = std::max(an, t);
  }
  return an == 0 ? 0 : diff / (double(std::max(m, n)) * an * lt::eps<T>());
}

}  // namespace

template <class T> class GbTyped : public ::testing::Test {};
using Types = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(GbTyped, Types);

TYPED_TEST(GbTyped, FactorResidualOverShapes) {
  using T = TypeParam;
  const idx shapes[][4] = {{1, 1, 0, 0}, {6, 6, 0, 0}, {9, 9, 2, 0}, {9, 9, 0, 3}, {20, 20, 3, 1},
                           {40, 40, 7, 7}, {30, 17, 4, 2}, {17, 30, 2, 5}, {12, 12, 11, 11}, {5, 8, 6, 1}};
  for (auto &s : shapes) {
    Band<T> a(s[0], s[1], s[2], s[3], s[2], static_cast<unsigned>(s[0] * 7 + s[2] * 3 + s[3]), 0.0);
    auto f = a.ab;
    std::vector<idx> ipiv(static_cast<size_t>(std::min(a.m, a.n)), 0);
    idx info = -3;
    lp::gbtrf<T>(&a.m, &a.n, &a.kl, &a.ku, f.data(), &a.ld, ipiv.data(), &info);
    ASSERT_EQ(info, 0) << s[0] << " " << s[1] << " " << s[2] << " " << s[3];
    for (idx j = 0; j < std::min(a.m, a.n); ++j)
      ASSERT_TRUE(ipiv[j] >= j + 1 && ipiv[j] <= std::min(a.m, j + a.kl + 1));
    EXPECT_LT(gb_lu_residual(a, f, ipiv), 20.0) << s[0] << " " << s[1] << " " << s[2] << " " << s[3];
    // The unblocked routine computes the same factors.
    auto g = a.ab;
    std::vector<idx> ipiv2(ipiv.size(), 0);
    lp::gbtf2<T>(&a.m, &a.n, &a.kl, &a.ku, g.data(), &a.ld, ipiv2.data(), &info);
    EXPECT_EQ(ipiv, ipiv2);
  }
}

TYPED_TEST(GbTyped, SolveAllTransposes) {
  using T = TypeParam;
  const idx shapes[][3] = {{1, 0, 0}, {7, 1, 1}, {25, 4, 2}, {25, 0, 6}, {60, 9, 3}};
  for (auto &s : shapes) {
    idx n = s[0], kl = s[1], ku = s[2], nrhs = 3, ldb = n + 2;
    Band<T> a(n, n, kl, ku, kl, static_cast<unsigned>(n + 11 * kl + ku));
    auto b = lt::random_matrix<T>(n, nrhs, ldb, 5u);
    auto f = a.ab;
    std::vector<idx> ipiv(static_cast<size_t>(n));
    idx info = -1;
    auto x = b;
    lp::gbsv<T>(&n, &kl, &ku, &nrhs, f.data(), &a.ld, ipiv.data(), x.data(), &ldb, &info);
    ASSERT_EQ(info, 0);
    EXPECT_LT(ft::solve_residual<T>('N', n, nrhs, a.dense, b.data(), ldb, x.data(), ldb), 10.0);
    for (char tr : {'T', 'C', 'n'}) {
      x = b;
      lp::gbtrs<T>(&tr, &n, &kl, &ku, &nrhs, f.data(), &a.ld, ipiv.data(), x.data(), &ldb, &info);
      ASSERT_EQ(info, 0);
      char t = tr == 'n' ? 'N' : tr;
      EXPECT_LT(ft::solve_residual<T>(t, n, nrhs, a.dense, b.data(), ldb, x.data(), ldb), 10.0) << tr << n;
      // Padding rows of b are left alone.
      for (idx k = 0; k < nrhs; ++k) EXPECT_EQ(x[n + k * ldb], b[n + k * ldb]);
    }
  }
}

TYPED_TEST(GbTyped, SingularColumnReported) {
  using T = TypeParam;
  idx n = 8, kl = 2, ku = 1, nrhs = 1, ldb = n;
  Band<T> a(n, n, kl, ku, kl, 3u);
  for (idx i = std::max<idx>(0, 4 - ku); i <= std::min(n - 1, 4 + kl); ++i) a.at(i, 4) = T(0);
  std::vector<idx> ipiv(static_cast<size_t>(n));
  std::vector<T> b(static_cast<size_t>(n), T(1)), b0 = b;
  idx info = 0;
  lp::gbsv<T>(&n, &kl, &ku, &nrhs, a.ab.data(), &a.ld, ipiv.data(), b.data(), &ldb, &info);
  EXPECT_EQ(info, 5);
  EXPECT_EQ(b, b0);  // no solve after a zero pivot
}

TYPED_TEST(GbTyped, ConditionWithinFactorThree) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  const idx shapes[][3] = {{1, 0, 0}, {5, 1, 1}, {9, 2, 3}, {12, 4, 0}, {10, 0, 5}};
  for (auto &s : shapes) {
    idx n = s[0], kl = s[1], ku = s[2];
    Band<T> a(n, n, kl, ku, kl, static_cast<unsigned>(77 + n), 0.5);
    auto f = a.ab;
    std::vector<idx> ipiv(static_cast<size_t>(n));
    idx info = 0;
    lp::gbtrf<T>(&n, &n, &kl, &ku, f.data(), &a.ld, ipiv.data(), &info);
    ASSERT_EQ(info, 0);
    for (char nm : {'1', 'O', 'I'}) {
      bool one = nm != 'I';
      char nms[2] = {nm, 0};
      idx ldband = a.ld;
      R anorm = lp::langb<T>(nms, &n, &kl, &ku, a.ab.data() + kl, &ldband, std::vector<R>(static_cast<size_t>(n)).data());
      R rcond = -1;
      std::vector<T> work(static_cast<size_t>(3 * n));
      std::vector<idx> iwork(static_cast<size_t>(n));
      std::vector<R> rwork(static_cast<size_t>(n));
      void *w2 = lt::cplx<T> ? static_cast<void *>(rwork.data()) : static_cast<void *>(iwork.data());
      lp::gbcon<T>(&nm, &n, &kl, &ku, f.data(), &a.ld, ipiv.data(), &anorm, &rcond, work.data(), w2, &info);
      ASSERT_EQ(info, 0);
      double exact = 1.0 / ft::exact_condition(n, a.dense, one);
      EXPECT_NEAR(double(anorm), [&] {
        double v = 0;
        for (idx j = 0; j < n; ++j) {
          double t = 0;
          for (idx i = 0; i < n; ++i) t += one ? std::abs(a.dense[i + j * n]) : std::abs(a.dense[j + i * n]);
          v = std::max(v, t);
        }
        return v;
      }(), 1e-4 * double(anorm));
      EXPECT_GE(double(rcond), exact * 0.999) << nm << n;
      EXPECT_LE(double(rcond), exact * 3.0) << nm << n;
    }
  }
}

TYPED_TEST(GbTyped, EquilibrationScalesRowsAndColumns) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  idx m = 9, n = 7, kl = 2, ku = 3;
  Band<T> a(m, n, kl, ku, 0, 19u);
  for (idx j = 0; j < n; ++j)
    for (idx i = std::max<idx>(0, j - ku); i <= std::min(m - 1, j + kl); ++i) a.at(i, j) *= T(R(std::pow(4.0, double(i) - 2 * j)));
  std::vector<R> r(static_cast<size_t>(m)), c(static_cast<size_t>(n));
  R rowcnd = 0, colcnd = 0, amax = 0;
  idx info = -1;
  lp::gbequ<T>(&m, &n, &kl, &ku, a.ab.data(), &a.ld, r.data(), c.data(), &rowcnd, &colcnd, &amax, &info);
  ASSERT_EQ(info, 0);
  EXPECT_LT(rowcnd, R(0.1));
  std::vector<double> rowmax(static_cast<size_t>(m), 0.0);
  for (idx j = 0; j < n; ++j) {
    double cm = 0;
    for (idx i = std::max<idx>(0, j - ku); i <= std::min(m - 1, j + kl); ++i) {
      double v = double(nxl::abs1(a.at(i, j))) * double(r[i]) * double(c[j]);
      cm = std::max(cm, v);
      rowmax[i] = std::max(rowmax[i], v);
    }
    EXPECT_NEAR(cm, 1.0, 1e-5);
  }
  for (idx i = 0; i < m; ++i) EXPECT_LE(rowmax[i], 1.0 + 1e-5);
  // gbequb: powers of two only, every column's largest scaled entry within a
  // factor of two of one, no row above it by more than that.
  std::vector<R> rb(r.size()), cb(c.size());
  lp::gbequb<T>(&m, &n, &kl, &ku, a.ab.data(), &a.ld, rb.data(), cb.data(), &rowcnd, &colcnd, &amax, &info);
  ASSERT_EQ(info, 0);
  for (R v : rb) EXPECT_EQ(std::log2(double(v)), std::round(std::log2(double(v))));
  for (R v : cb) EXPECT_EQ(std::log2(double(v)), std::round(std::log2(double(v))));
  for (idx j = 0; j < n; ++j) {
    double cm = 0;
    for (idx i = std::max<idx>(0, j - ku); i <= std::min(m - 1, j + kl); ++i)
      cm = std::max(cm, double(nxl::abs1(a.at(i, j))) * double(rb[i]) * double(cb[j]));
    EXPECT_GT(cm, 0.25);
    EXPECT_LE(cm, 4.0);
  }
  char equed = '?';
  lp::laqgb<T>(&m, &n, &kl, &ku, a.ab.data(), &a.ld, r.data(), c.data(), &rowcnd, &colcnd, &amax, &equed);
  EXPECT_TRUE(equed == 'R' || equed == 'B');
  // A zero row is reported by its index.
  for (idx j = 0; j < n; ++j)
    if (4 >= j - ku && 4 <= j + kl) a.at(4, j) = T(0);
  lp::gbequ<T>(&m, &n, &kl, &ku, a.ab.data(), &a.ld, r.data(), c.data(), &rowcnd, &colcnd, &amax, &info);
  EXPECT_EQ(info, 5);
}

TYPED_TEST(GbTyped, ExpertDriverAndRefinement) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  idx n = 30, kl = 3, ku = 2, nrhs = 2, ldb = n, ldafb = 2 * kl + ku + 1;
  Band<T> a(n, n, kl, ku, 0, 23u);
  // Badly scaled rows so that equilibration has something to do.
  for (idx j = 0; j < n; ++j)
    for (idx i = std::max<idx>(0, j - ku); i <= std::min(n - 1, j + kl); ++i) {
      a.at(i, j) *= T(R(i % 3 == 0 ? 1e3 : 1));
      a.dense[i + j * n] = ft::wide(a.at(i, j));
    }
  auto xt = lt::random_matrix<T>(n, nrhs, ldb, 8u);
  std::vector<T> b(static_cast<size_t>(n * nrhs));
  for (char tr : {'N', 'T', 'C'}) {
    for (idx k = 0; k < nrhs; ++k)
      for (idx i = 0; i < n; ++i) {
        C s = 0;
        for (idx j = 0; j < n; ++j) {
          C v = tr == 'N' ? a.dense[i + j * n] : a.dense[j + i * n];
          if (tr == 'C') v = std::conj(v);
          s += v * ft::wide(xt[j + k * ldb]);
        }
        if constexpr (lt::cplx<T>) b[i + k * ldb] = T(R(s.real()), R(s.imag()));
        else b[i + k * ldb] = T(s.real());
      }
    for (char fact : {'N', 'E'}) {
      auto ab = a.ab, bb = b;
      std::vector<T> afb(static_cast<size_t>(ldafb * n)), x(static_cast<size_t>(n * nrhs)), work(static_cast<size_t>(3 * n));
      std::vector<idx> ipiv(static_cast<size_t>(n)), iwork(static_cast<size_t>(n));
      std::vector<R> r(static_cast<size_t>(n)), c(static_cast<size_t>(n)), ferr(2), berr(2), rwork(static_cast<size_t>(n));
      void *w2 = lt::cplx<T> ? static_cast<void *>(rwork.data()) : static_cast<void *>(iwork.data());
      char equed = 'x';
      R rcond = -1;
      idx info = -1;
      lp::gbsvx<T>(&fact, &tr, &n, &kl, &ku, &nrhs, ab.data(), &a.ld, afb.data(), &ldafb, ipiv.data(), &equed,
                   r.data(), c.data(), bb.data(), &ldb, x.data(), &ldb, &rcond, ferr.data(), berr.data(),
                   work.data(), w2, &info);
      ASSERT_EQ(info, 0) << fact << tr;
      if (fact == 'E') EXPECT_NE(equed, 'N');
      else EXPECT_EQ(equed, 'N');
      EXPECT_GT(rcond, R(0));
      R growth = lt::cplx<T> ? rwork[0] : lt::real_t<T>(std::real(work[0]));
      EXPECT_GT(growth, R(0));
      EXPECT_LT(ft::solve_residual<T>(tr, n, nrhs, a.dense, b.data(), ldb, x.data(), ldb), 10.0);
      for (idx k = 0; k < nrhs; ++k) {
        EXPECT_LE(berr[k], R(4) * lt::eps<T>()) << fact << tr;
        double err = 0, xm = 0;
        for (idx i = 0; i < n; ++i) {
          err = std::max(err, std::abs(ft::wide(x[i + k * ldb]) - ft::wide(xt[i + k * ldb])));
          xm = std::max(xm, std::abs(ft::wide(x[i + k * ldb])));
        }
        EXPECT_LE(err / xm, double(ferr[k]) * 1.01 + 1e-300) << fact << tr;
        EXPECT_LT(double(ferr[k]), 1e5 * double(lt::eps<T>()) / double(rcond));
      }
      // Refinement from a perturbed solution brings the backward error down.
      if (fact == 'N') {
        for (auto &v : x) v *= T(R(1) + R(100) * lt::eps<T>());
        lp::gbrfs<T>(&tr, &n, &kl, &ku, &nrhs, a.ab.data(), &a.ld, afb.data(), &ldafb, ipiv.data(), b.data(),
                     &ldb, x.data(), &ldb, ferr.data(), berr.data(), work.data(), w2, &info);
        ASSERT_EQ(info, 0);
        for (idx k = 0; k < nrhs; ++k) EXPECT_LE(berr[k], R(4) * lt::eps<T>());
      }
    }
  }
}

TYPED_TEST(GbTyped, QuickReturns) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  idx zero = 0, one = 1, n = 4, kl = 1, ku = 1, ld = 4, nrhs = 0;
  std::vector<T> ab(16, T(1)), b(4, T(2));
  std::vector<idx> ipiv(4, 0);
  idx info = -1;
  lp::gbsv<T>(&zero, &kl, &ku, &one, ab.data(), &ld, ipiv.data(), b.data(), &one, &info);
  EXPECT_EQ(info, 0);
  lp::gbtrf<T>(&zero, &n, &kl, &ku, ab.data(), &ld, ipiv.data(), &info);
  EXPECT_EQ(info, 0);
  EXPECT_EQ(ab, std::vector<T>(16, T(1)));
  auto b0 = b;
  lp::gbtrs<T>("N", &n, &kl, &ku, &nrhs, ab.data(), &ld, ipiv.data(), b.data(), &ld, &info);
  EXPECT_EQ(info, 0);
  EXPECT_EQ(b, b0);
  R anorm = 1, rcond = -1;
  lp::gbcon<T>("1", &zero, &kl, &ku, ab.data(), &ld, ipiv.data(), &anorm, &rcond, b.data(), ipiv.data(), &info);
  EXPECT_EQ(rcond, R(1));
  EXPECT_EQ(lp::langb<T>("M", &zero, &kl, &ku, ab.data(), &ld, nullptr), R(0));
}

TYPED_TEST(GbTyped, ArgumentChecks) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  const char p = lp::prefix<T>();
  auto nm = [&](const char *stem) { return std::string(1, p) + stem; };
  std::vector<T> ab(64, T(1)), b(16);
  std::vector<idx> ipiv(8);
  std::vector<R> r(8), c(8);
  R x1 = 0, x2 = 0, x3 = 0, rcond = 0;
  idx n = 4, m1 = -1, kl = 1, ku = 2, small = 4, ld = 5, one = 1, info = 0;
  ft::Xerbla cap;
  lp::gbtrf<T>(&n, &n, &kl, &ku, ab.data(), &small, ipiv.data(), &info);
  EXPECT_EQ(cap.name, nm("GBTRF"));
  EXPECT_EQ(cap.pos, 6);
  EXPECT_EQ(info, -6);
  lp::gbtf2<T>(&n, &n, &m1, &ku, ab.data(), &ld, ipiv.data(), &info);
  EXPECT_EQ(cap.name, nm("GBTF2"));
  EXPECT_EQ(info, -3);
  lp::gbtrs<T>("X", &n, &kl, &ku, &one, ab.data(), &ld, ipiv.data(), b.data(), &n, &info);
  EXPECT_EQ(cap.name, nm("GBTRS"));
  EXPECT_EQ(info, -1);
  lp::gbtrs<T>("N", &n, &kl, &ku, &one, ab.data(), &ld, ipiv.data(), b.data(), &one, &info);
  EXPECT_EQ(info, -10);
  lp::gbsv<T>(&n, &kl, &ku, &m1, ab.data(), &ld, ipiv.data(), b.data(), &n, &info);
  EXPECT_EQ(cap.name, nm("GBSV "));
  EXPECT_EQ(info, -4);
  lp::gbequ<T>(&n, &n, &kl, &ku, ab.data(), &ku, r.data(), c.data(), &x1, &x2, &x3, &info);
  EXPECT_EQ(cap.name, nm("GBEQU"));
  EXPECT_EQ(info, -6);
  R neg = -1;
  lp::gbcon<T>("O", &n, &kl, &ku, ab.data(), &ld, ipiv.data(), &neg, &rcond, b.data(), ipiv.data(), &info);
  EXPECT_EQ(cap.name, nm("GBCON"));
  EXPECT_EQ(info, -8);
  std::vector<R> fe(1), be(1);
  lp::gbrfs<T>("N", &n, &kl, &ku, &one, ab.data(), &ld, ab.data(), &small, ipiv.data(), b.data(), &n, b.data(),
               &n, fe.data(), be.data(), b.data(), ipiv.data(), &info);
  EXPECT_EQ(cap.name, nm("GBRFS"));
  EXPECT_EQ(info, -9);
  char equed = 'Q';
  lp::gbsvx<T>("F", "N", &n, &kl, &ku, &one, ab.data(), &ld, ab.data(), &ld, ipiv.data(), &equed, r.data(),
               c.data(), b.data(), &n, b.data(), &n, &rcond, fe.data(), be.data(), b.data(), ipiv.data(), &info);
  EXPECT_EQ(cap.name, nm("GBSVX"));
  EXPECT_EQ(info, -12);
  lp::gbsvx<T>("N", "N", &n, &kl, &ku, &one, ab.data(), &ld, ab.data(), &ld, ipiv.data(), &equed, r.data(),
               c.data(), b.data(), &n, b.data(), &one, &rcond, fe.data(), be.data(), b.data(), ipiv.data(), &info);
  EXPECT_EQ(info, -18);
}

// The general and band expert drivers share their checks: every argument
// in turn made bad reports its own position (the band one two further on
// from nrhs), and a singular matrix gives info = the zero pivot, rcond = 0
// and the pivot growth of the columns before it, in both storages.
TYPED_TEST(GbTyped, ExpertDriversSharePositionsAndSingularity) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  const char p = lp::prefix<T>();
  idx n = 4, kl = 1, ku = 1, one = 1, four = 4, m1 = -1, ldab = 3, ldafb = 4, info = 0;
  std::vector<T> a(16, T(1)), af(16), ab(16, T(1)), afb(16), b(8, T(1)), x(8), work(16);
  std::vector<idx> ipiv(4), iw(4);
  std::vector<R> r(4, R(1)), c(4, R(1)), fe(2), be(2), rw(8);
  R rcond = 0;
  void *w2 = lt::cplx<T> ? static_cast<void *>(rw.data()) : static_cast<void *>(iw.data());
  struct Case {
    const char *fact, *trans, *equed;
    int bad;  // 0 none, 1 n, 2 nrhs, 3 lda, 4 ldaf, 5 r, 6 c, 7 ldb, 8 ldx
    idx ge, gb;
  };
  const Case cases[] = {{"X", "N", "N", 0, 1, 1},  {"N", "Q", "N", 0, 2, 2},  {"N", "N", "N", 1, 3, 3},
                        {"N", "N", "N", 2, 4, 6},  {"N", "N", "N", 3, 6, 8},  {"N", "N", "N", 4, 8, 10},
                        {"F", "N", "Z", 0, 10, 12}, {"F", "N", "R", 5, 11, 13}, {"F", "N", "C", 6, 12, 14},
                        {"N", "N", "N", 7, 14, 16}, {"N", "N", "N", 8, 16, 18}};
  ft::Xerbla cap;
  for (const Case &k : cases) {
    for (bool band : {false, true}) {
      std::vector<R> rr = r, cc = c;
      if (k.bad == 5) rr[2] = R(0);
      if (k.bad == 6) cc[1] = R(-1);
      char equed = k.equed[0];
      idx *pn = k.bad == 1 ? &m1 : &n, *pr = k.bad == 2 ? &m1 : &one, *pb = k.bad == 7 ? &one : &four,
          *px = k.bad == 8 ? &one : &four;
      idx lda = k.bad == 3 ? 1 : (band ? ldab : 4), ldf = k.bad == 4 ? 1 : (band ? ldafb : 4);
      info = 0;
      if (band)
        lp::gbsvx<T>(k.fact, k.trans, pn, &kl, &ku, pr, ab.data(), &lda, afb.data(), &ldf, ipiv.data(), &equed,
                     rr.data(), cc.data(), b.data(), pb, x.data(), px, &rcond, fe.data(), be.data(), work.data(), w2,
                     &info);
      else
        lp::gesvx<T>(k.fact, k.trans, pn, pr, a.data(), &lda, af.data(), &ldf, ipiv.data(), &equed, rr.data(),
                     cc.data(), b.data(), pb, x.data(), px, &rcond, fe.data(), be.data(), work.data(), w2, &info);
      EXPECT_EQ(info, -(band ? k.gb : k.ge)) << k.fact << k.trans << k.bad << band;
      EXPECT_EQ(cap.name, std::string(1, p) + (band ? "GBSVX" : "GESVX"));
    }
  }
  // Singular: the third column equals the first (general), the band's third
  // column is zero.
  for (idx i = 0; i < 4; ++i)
    for (idx j = 0; j < 4; ++j) a[i + j * 4] = T(R(i == j ? 4 : 1));
  for (idx i = 0; i < 4; ++i) a[i + 8] = a[i];
  std::fill(ab.begin(), ab.end(), T(R(1)));
  for (idx j = 0; j < 4; ++j) ab[1 + j * ldab] = T(R(4));
  for (idx i = 0; i < 3; ++i) ab[i + 2 * ldab] = T(0);
  for (bool band : {false, true}) {
    char equed = 'N';
    rcond = -1;
    if (band)
      lp::gbsvx<T>("N", "N", &n, &kl, &ku, &one, ab.data(), &ldab, afb.data(), &ldafb, ipiv.data(), &equed,
                   r.data(), c.data(), b.data(), &four, x.data(), &four, &rcond, fe.data(), be.data(), work.data(),
                   w2, &info);
    else
      lp::gesvx<T>("N", "N", &n, &one, a.data(), &four, af.data(), &four, ipiv.data(), &equed, r.data(), c.data(),
                   b.data(), &four, x.data(), &four, &rcond, fe.data(), be.data(), work.data(), w2, &info);
    EXPECT_EQ(info, 3) << band;
    EXPECT_EQ(rcond, R(0));
    R growth = lt::cplx<T> ? rw[0] : R(std::real(work[0]));
    EXPECT_GT(growth, R(0.1)) << band;
    EXPECT_LE(growth, R(1.01)) << band;
  }
}

// The exported entry reports through the installed handler with the
// blank-padded name and leaves info negative.
TEST(GbEntry, ExportedFactorAndSolve) {
  idx n = 3, kl = 1, ku = 1, ld = 4, one = 1, info = -9;
  std::vector<double> ab = {0, 0, 4, 1, 0, 1, 4, 1, 0, 1, 4, 0};
  std::vector<idx> ipiv(3);
  std::vector<double> b = {5, 6, 5};
  dgbsv_(&n, &kl, &ku, &one, ab.data(), &ld, ipiv.data(), b.data(), &n, &info);
  EXPECT_EQ(info, 0);
  for (double v : b) EXPECT_NEAR(v, 1.0, 1e-14);
  ft::Xerbla cap;
  idx bad = 2;
  dgbtrf(&n, &n, &kl, &ku, ab.data(), &bad, ipiv.data(), &info);
  EXPECT_EQ(cap.name, "DGBTRF");
  EXPECT_EQ(info, -6);
}
