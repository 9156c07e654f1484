// Hermitian (symmetric) positive definite matrices in packed and band
// storage: factor residuals on both sides of the packed-to-full and
// unblocked-to-blocked crossovers, solves, inverses, condition estimates
// against the exact value, refinement and the expert drivers with
// equilibration, the split Cholesky factorization, non-positive-definite
// input, quick returns and argument checks.
#include "sym_util.h"
#include "lapack/band/pbsvx.h"
#include "lapack/packed/pptrf.h"

using ft::C;
using ft::Dense;
using lt::idx;
namespace lp = nxl::lapack;

namespace {
template <class T> using R_ = lt::real_t<T>;

// Dense Hermitian image of a packed or band triangle (U^H U or L L^H when
// `factor`, the triangle itself otherwise).
template <class T, class At> Dense cholesky_product(idx n, bool up, At at) {
  Dense f(static_cast<size_t>(n * n), C(0));
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < n; ++i)
      if (up ? i <= j : i >= j) f[i + j * n] = ft::wide(at(i, j));
  Dense fh = st::adjoint(f, n, true);
  return up ? st::mul(fh, f, n) : st::mul(f, fh, n);
}
}  // namespace

template <class T> class PpTyped : public ::testing::Test {};
using Types = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(PpTyped, Types);

TYPED_TEST(PpTyped, PackedFactorSolveInverse) {
  using T = TypeParam;
  for (idx n : {1, 7, 40, 95, 96, 130}) {
    for (bool up : {true, false}) {
      Dense a = st::sym_dense<T>(n, true, static_cast<unsigned>(n + up), 1.0, double(n));
      auto ap = st::pack<T>(a, n, up);
      idx info = -1;
      lp::pptrf<T>(up ? "U" : "l", &n, ap.data(), &info);
      ASSERT_EQ(info, 0);
      lp::Packed pk{up, n};
      Dense prod = cholesky_product<T>(n, up, [&](idx i, idx j) { return ap[pk(i, j)]; });
      EXPECT_LT(st::rel_diff<T>(a, prod, n), 20.0) << n << up;
      idx nrhs = 3, ldb = n + 2;
      auto b = lt::random_matrix<T>(n, nrhs, ldb, 5u), x = b;
      lp::pptrs<T>(up ? "U" : "L", &n, &nrhs, ap.data(), x.data(), &ldb, &info);
      ASSERT_EQ(info, 0);
      EXPECT_LT(ft::solve_residual('N', n, nrhs, a, b.data(), ldb, x.data(), ldb), 20.0);
      lp::pptri<T>(up ? "U" : "L", &n, ap.data(), &info);
      ASSERT_EQ(info, 0);
      Dense inv(static_cast<size_t>(n * n));
      for (idx j = 0; j < n; ++j)
        for (idx i = 0; i < n; ++i)
          inv[i + j * n] = (up ? i <= j : i >= j) ? ft::wide(ap[pk(i, j)]) : std::conj(ft::wide(ap[pk(j, i)]));
      EXPECT_LT(st::inverse_residual(a, inv, n, lt::eps<T>()), 20.0);
    }
  }
}

TYPED_TEST(PpTyped, BandFactorAcrossBlockedCrossover) {
  using T = TypeParam;
  const idx shapes[][2] = {{1, 0}, {12, 0}, {12, 3}, {30, 29}, {40, 60}, {200, 64}, {150, 100}, {97, 70}};
  for (auto &s : shapes) {
    idx n = s[0], kd = s[1], ldab = kd + 3;
    Dense a = st::hpd_band<T>(n, kd, static_cast<unsigned>(n + kd));
    for (bool up : {true, false}) {
      auto ab = st::band<T>(a, n, kd, ldab, up);
      auto at = [&](idx i, idx j) { return up ? ab[kd + i - j + j * ldab] : ab[i - j + j * ldab]; };
      auto f = ab;
      idx info = -1;
      lp::pbtrf<T>(up ? "U" : "L", &n, &kd, f.data(), &ldab, &info);
      ASSERT_EQ(info, 0);
      auto fat = [&](idx i, idx j) {
        if (std::abs(i - j) > kd) return T(0);
        return up ? f[kd + i - j + j * ldab] : f[i - j + j * ldab];
      };
      EXPECT_LT(st::rel_diff<T>(a, cholesky_product<T>(n, up, fat), n), 20.0) << n << " " << kd << up;
      // The unblocked form gives the same factor.
      auto g = ab;
      lp::pbtf2<T>(up ? "U" : "L", &n, &kd, g.data(), &ldab, &info);
      ASSERT_EQ(info, 0);
      double diff = 0;
      for (size_t i = 0; i < g.size(); ++i) diff = std::max(diff, std::abs(ft::wide(g[i]) - ft::wide(f[i])));
      EXPECT_LT(diff, 1e3 * lt::eps<T>());
      idx nrhs = 2, ldb = n;
      auto b = lt::random_matrix<T>(n, nrhs, ldb, 3u), x = b;
      lp::pbtrs<T>(up ? "U" : "L", &n, &kd, &nrhs, f.data(), &ldab, x.data(), &ldb, &info);
      EXPECT_LT(ft::solve_residual('N', n, nrhs, a, b.data(), ldb, x.data(), ldb), 20.0);
      (void)at;
    }
  }
}

TYPED_TEST(PpTyped, SplitCholeskyRebuildsMatrix) {
  using T = TypeParam;
  const idx shapes[][2] = {{1, 0}, {9, 0}, {9, 2}, {10, 3}, {25, 24}, {40, 7}};
  for (auto &s : shapes) {
    idx n = s[0], kd = s[1], ldab = kd + 1;
    Dense a = st::hpd_band<T>(n, kd, static_cast<unsigned>(3 * n + kd));
    for (bool up : {true, false}) {
      auto ab = st::band<T>(a, n, kd, ldab, up);
      idx info = -1;
      lp::pbstf<T>(up ? "U" : "L", &n, &kd, ab.data(), &ldab, &info);
      ASSERT_EQ(info, 0);
      // S: rows 0..m-1 upper triangular, rows m.. lower triangular; S(i, j)
      // is the stored entry of row i (conjugated where the storage holds
      // the transpose).
      idx m = (n + kd) / 2;
      Dense sm(static_cast<size_t>(n * n), C(0));
      auto stored = [&](idx i, idx j) {
        return ft::wide(up ? ab[kd + i - j + j * ldab] : ab[i - j + j * ldab]);
      };
      for (idx i = 0; i < n; ++i)
        for (idx j = std::max<idx>(0, i - kd); j <= std::min(n - 1, i + kd); ++j) {
          if (i < m && j >= i && j < m) sm[i + j * n] = up ? stored(i, j) : std::conj(stored(j, i));
          if (i >= m && j <= i) sm[i + j * n] = up ? std::conj(stored(j, i)) : stored(i, j);
        }
      Dense prod = st::mul(st::adjoint(sm, n, true), sm, n);
      EXPECT_LT(st::rel_diff<T>(a, prod, n), 20.0) << n << " " << kd << up;
    }
  }
}

TYPED_TEST(PpTyped, ConditionAndExpertDrivers) {
  using T = TypeParam;
  using R = R_<T>;
  idx n = 24, kd = 5, nrhs = 2, ldb = n, ldab = kd + 1;
  Dense a = st::hpd_band<T>(n, kd, 11u);
  // Bad row and column scaling, which equilibration takes away.
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < n; ++i) a[i + j * n] *= std::pow(10.0, double(i % 5)) * std::pow(10.0, double(j % 5));
  double exact = ft::exact_condition(n, a, true);
  auto xt = lt::random_matrix<T>(n, nrhs, n, 4u);
  auto b = st::times<T>(a, n, xt, nrhs);
  for (bool up : {true, false}) {
    std::vector<R> s(static_cast<size_t>(n)), ferr(2), berr(2), rw(static_cast<size_t>(n));
    std::vector<T> work(static_cast<size_t>(3 * n)), x(static_cast<size_t>(n * nrhs));
    std::vector<idx> iw(static_cast<size_t>(n));
    char equed = '?';
    R rcond = -1;
    idx info = -1;
    auto ap = st::pack<T>(a, n, up), afp = ap;
    auto bb = b;
    lp::ppsvx<T>("E", up ? "U" : "L", &n, &nrhs, ap.data(), afp.data(), &equed, s.data(), bb.data(), &ldb,
                 x.data(), &ldb, &rcond, ferr.data(), berr.data(), work.data(), iw.data(), &info);
    ASSERT_EQ(info, 0);
    EXPECT_EQ(equed, 'Y');
    EXPECT_LT(ft::solve_residual('N', n, nrhs, a, b.data(), ldb, x.data(), ldb), 20.0);
    for (idx k = 0; k < nrhs; ++k) EXPECT_LE(berr[k], R(4) * lt::eps<T>());
    auto ab = st::band<T>(a, n, kd, ldab, up), afb = ab;
    bb = b;
    equed = '?';
    lp::pbsvx<T>("E", up ? "U" : "L", &n, &kd, &nrhs, ab.data(), &ldab, afb.data(), &ldab, &equed, s.data(),
                 bb.data(), &ldb, x.data(), &ldb, &rcond, ferr.data(), berr.data(), work.data(), iw.data(), &info);
    ASSERT_EQ(info, 0);
    EXPECT_EQ(equed, 'Y');
    EXPECT_LT(ft::solve_residual('N', n, nrhs, a, b.data(), ldb, x.data(), ldb), 20.0);
    for (idx k = 0; k < nrhs; ++k) {
      double err = 0, xm = 0;
      for (idx i = 0; i < n; ++i) {
        err = std::max(err, std::abs(ft::wide(x[i + k * n]) - ft::wide(xt[i + k * n])));
        xm = std::max(xm, std::abs(ft::wide(x[i + k * n])));
      }
      EXPECT_LE(err / xm, double(ferr[k]) * 1.01 + 1e-300);
    }
    // Condition of the unscaled matrix from its factors, within a factor 3.
    auto fp = st::pack<T>(a, n, up);
    lp::pptrf<T>(up ? "U" : "L", &n, fp.data(), &info);
    auto a0 = st::pack<T>(a, n, up);
    R anorm = lp::lan_sp<T, true>("1", up ? "U" : "L", &n, a0.data(), nullptr);
    lp::ppcon<T>(up ? "U" : "L", &n, fp.data(), &anorm, &rcond, work.data(), iw.data(), &info);
    ASSERT_EQ(info, 0);
    EXPECT_GT(double(rcond) * exact, 1.0 / 3.0);
    EXPECT_LT(double(rcond) * exact, 3.0);
    auto fb = st::band<T>(a, n, kd, ldab, up);
    lp::pbtrf<T>(up ? "U" : "L", &n, &kd, fb.data(), &ldab, &info);
    lp::pbcon<T>(up ? "U" : "L", &n, &kd, fb.data(), &ldab, &anorm, &rcond, work.data(), iw.data(), &info);
    EXPECT_GT(double(rcond) * exact, 1.0 / 3.0);
    EXPECT_LT(double(rcond) * exact, 3.0);
  }
}

TYPED_TEST(PpTyped, NotPositiveDefiniteAndScalings) {
  using T = TypeParam;
  using R = R_<T>;
  idx n = 6, kd = 2, ldab = 3, info = 0;
  Dense a = st::hpd_band<T>(n, kd, 2u);
  a[3 + 3 * n] = -1.0;  // leading minor of order 4 not positive definite
  for (bool up : {true, false}) {
    auto ap = st::pack<T>(a, n, up);
    lp::pptrf<T>(up ? "U" : "L", &n, ap.data(), &info);
    EXPECT_EQ(info, 4);
    auto ab = st::band<T>(a, n, kd, ldab, up);
    lp::pbtrf<T>(up ? "U" : "L", &n, &kd, ab.data(), &ldab, &info);
    EXPECT_EQ(info, 4);
    std::vector<R> s(static_cast<size_t>(n));
    R scond = 0, amax = 0;
    ab = st::band<T>(a, n, kd, ldab, up);
    lp::pbequ<T>(up ? "U" : "L", &n, &kd, ab.data(), &ldab, s.data(), &scond, &amax, &info);
    EXPECT_EQ(info, 4);
  }
  // Scaling applies diag(s) A diag(s) to the stored entries only.
  Dense h = st::hpd_band<T>(n, kd, 5u);
  std::vector<R> s = {R(1), R(2), R(0.5), R(4), R(1), R(0.25)};
  R scond = R(0.01), amax = 1;
  for (bool up : {true, false}) {
    auto ap = st::pack<T>(h, n, up);
    char equed = '?';
    if constexpr (lt::cplx<T>) lp::laqhp<T>(up ? "U" : "L", &n, ap.data(), s.data(), &scond, &amax, &equed);
    else lp::laqsp<T>(up ? "U" : "L", &n, ap.data(), s.data(), &scond, &amax, &equed);
    EXPECT_EQ(equed, 'Y');
    lp::Packed pk{up, n};
    for (idx j = 0; j < n; ++j)
      for (idx i = up ? 0 : j; i < (up ? j + 1 : n); ++i)
        EXPECT_LT(std::abs(ft::wide(ap[pk(i, j)]) - h[i + j * n] * double(s[i] * s[j])), 1e2 * lt::eps<T>() * 16);
  }
}

TYPED_TEST(PpTyped, NormsMatchDense) {
  using T = TypeParam;
  using R = R_<T>;
  idx n = 9, kd = 3, ldab = 5;
  for (bool herm : {true, false}) {
    if (!herm && !lt::cplx<T>) continue;
    Dense a = st::sym_dense<T>(n, herm, 8u);
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < n; ++i)
        if (std::abs(i - j) > kd) a[i + j * n] = 0;
    double one = st::norm1(a, n), mx = 0, fro = 0;
    for (auto v : a) {
      mx = std::max(mx, std::abs(v));
      fro += std::norm(v);
    }
    fro = std::sqrt(fro);
    for (bool up : {true, false}) {
      auto ap = st::pack<T>(a, n, up);
      auto ab = st::band<T>(a, n, kd, ldab, up);
      std::vector<R> w(static_cast<size_t>(n));
      const char *u = up ? "U" : "L";
      for (const char *nm : {"1", "I", "M", "F"}) {
        double want = nm[0] == 'M' ? mx : nm[0] == 'F' ? fro : one;
        R p = herm ? lp::lanhp<T>(nm, u, &n, ap.data(), w.data()) : lp::lansp<T>(nm, u, &n, ap.data(), w.data());
        R q = herm ? lp::lanhb<T>(nm, u, &n, &kd, ab.data(), &ldab, w.data())
                   : lp::lansb<T>(nm, u, &n, &kd, ab.data(), &ldab, w.data());
        EXPECT_NEAR(double(p), want, 1e2 * lt::eps<T>() * want) << nm;
        EXPECT_NEAR(double(q), want, 1e2 * lt::eps<T>() * want) << nm;
      }
    }
  }
}

TYPED_TEST(PpTyped, QuickReturnsAndArgumentChecks) {
  using T = TypeParam;
  using R = R_<T>;
  const char p = lp::prefix<T>();
  auto nm = [&](const char *stem) { return std::string(1, p) + stem; };
  std::vector<T> a(64, T(1)), w(64);
  std::vector<R> r(16);
  std::vector<idx> iw(16);
  idx zero = 0, one = 1, two = 2, m1 = -1, info = -1;
  R rcond = -1, anorm = 1, neg = -1;
  char equed = 'N';
  lp::ppcon<T>("U", &zero, a.data(), &anorm, &rcond, w.data(), iw.data(), &info);
  EXPECT_EQ(rcond, R(1));
  lp::pbtrf<T>("L", &zero, &one, a.data(), &two, &info);
  EXPECT_EQ(info, 0);
  ft::Xerbla cap;
  lp::pptrf<T>("X", &one, a.data(), &info);
  EXPECT_EQ(cap.name, nm("PPTRF"));
  EXPECT_EQ(info, -1);
  lp::pptrs<T>("U", &two, &one, a.data(), w.data(), &one, &info);
  EXPECT_EQ(info, -6);
  lp::ppcon<T>("U", &one, a.data(), &neg, &rcond, w.data(), iw.data(), &info);
  EXPECT_EQ(info, -4);
  lp::pprfs<T>("U", &two, &one, a.data(), a.data(), w.data(), &two, w.data(), &one, r.data(), r.data(), w.data(),
               iw.data(), &info);
  EXPECT_EQ(cap.name, nm("PPRFS"));
  EXPECT_EQ(info, -9);
  lp::ppsvx<T>("F", "U", &one, &one, a.data(), a.data(), &equed, r.data(), w.data(), &one, w.data(), &one,
               &rcond, r.data(), r.data(), w.data(), iw.data(), &info);
  EXPECT_EQ(info, 0);
  equed = 'X';
  lp::ppsvx<T>("F", "U", &one, &one, a.data(), a.data(), &equed, r.data(), w.data(), &one, w.data(), &one,
               &rcond, r.data(), r.data(), w.data(), iw.data(), &info);
  EXPECT_EQ(info, -7);
  lp::pbtrf<T>("U", &two, &m1, a.data(), &two, &info);
  EXPECT_EQ(cap.name, nm("PBTRF"));
  EXPECT_EQ(info, -3);
  lp::pbtrs<T>("U", &two, &one, &one, a.data(), &one, w.data(), &two, &info);
  EXPECT_EQ(info, -6);
  lp::pbstf<T>("U", &two, &one, a.data(), &one, &info);
  EXPECT_EQ(cap.name, nm("PBSTF"));
  EXPECT_EQ(info, -5);
  lp::pbrfs<T>("U", &two, &one, &one, a.data(), &two, a.data(), &two, w.data(), &two, w.data(), &one, r.data(),
               r.data(), w.data(), iw.data(), &info);
  EXPECT_EQ(info, -12);
  lp::pbsvx<T>("N", "U", &two, &one, &one, a.data(), &two, a.data(), &one, &equed, r.data(), w.data(), &two,
               w.data(), &two, &rcond, r.data(), r.data(), w.data(), iw.data(), &info);
  EXPECT_EQ(cap.name, nm("PBSVX"));
  EXPECT_EQ(info, -9);
}
