// Symmetric and Hermitian indefinite matrices in packed storage (Bunch-
// Kaufman): the block factors rebuild the matrix (1x1 and 2x2 pivots, both
// triangles, real, complex symmetric and Hermitian), solves, inverses,
// condition estimates against the exact value, refinement and the expert
// driver, exactly singular input, the complex symmetric packed product and
// rank-1 update, and argument checks.
#include "sym_util.h"
#include "lapack/packed/sptrf.h"

using ft::C;
using ft::Dense;
using lt::idx;
namespace lp = nxl::lapack;

namespace {
template <class T> using R_ = lt::real_t<T>;

// Rebuilds U D U^H (L D L^H) from the packed block factors, applying the
// steps in the order the factorization recorded them.
template <class T>
Dense bk_rebuild(idx n, bool up, bool herm, const std::vector<T> &ap, const std::vector<idx> &ipiv) {
  lp::Packed pk{up, n};
  auto f = [&](idx i, idx j) { return ft::wide(ap[pk(i, j)]); };
  // Start from D, then for each step (innermost first) M := P_k U_k M U_k^H P_k.
  Dense m(static_cast<size_t>(n * n), C(0));
  std::vector<idx> starts, sizes;
  for (idx k = 0; k < n;) {
    idx s = ipiv[static_cast<size_t>(k)] > 0 ? 1 : 2;
    starts.push_back(k);
    sizes.push_back(s);
    k += s;
  }
  for (size_t b = 0; b < starts.size(); ++b) {
    idx k = starts[b], s = sizes[b];
    for (idx c = k; c < k + s; ++c)
      for (idx r = k; r < k + s; ++r) {
        bool stored = up ? r <= c : r >= c;
        C v = stored ? f(r, c) : st::cjh(herm, f(c, r));
        if (r == c && herm) v = v.real();
        m[r + c * n] = v;
      }
  }
  // Steps in application order: for 'U' the last step (k = 0 side) is the
  // innermost; for 'L' the step at the bottom is.
  std::vector<size_t> order(starts.size());
  for (size_t b = 0; b < order.size(); ++b) order[b] = up ? b : order.size() - 1 - b;
  for (size_t b : order) {
    idx k = starts[b], s = sizes[b];
    Dense u(static_cast<size_t>(n * n), C(0));
    for (idx i = 0; i < n; ++i) u[i + i * n] = 1;
    for (idx c = k; c < k + s; ++c)
      for (idx r = up ? 0 : k + s; r < (up ? k : n); ++r) u[r + c * n] = f(r, c);
    m = st::mul(st::mul(u, m, n), st::adjoint(u, n, herm), n);
    idx p = std::abs(ipiv[static_cast<size_t>(k)]) - 1;
    idx row = s == 1 ? k : (up ? k : k + 1);
    st::swap_sym(m, n, row, p);
  }
  return m;
}
}  // namespace

template <class T> class SpTyped : public ::testing::Test {};
using Types = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(SpTyped, Types);

TYPED_TEST(SpTyped, FactorsRebuildSolveInvert) {
  using T = TypeParam;
  for (bool herm : {false, true}) {
    if (herm && !lt::cplx<T>) continue;
    for (idx n : {1, 2, 5, 16, 41}) {
      for (bool up : {true, false}) {
        // A small diagonal forces 2x2 pivots and interchanges.
        Dense a = st::sym_dense<T>(n, herm, static_cast<unsigned>(7 * n + up + 2 * herm), 0.05);
        auto ap = st::pack<T>(a, n, up);
        std::vector<idx> ipiv(static_cast<size_t>(n));
        idx info = -1;
        const char *u = up ? "U" : "L";
        if (herm) lp::hptrf<T>(u, &n, ap.data(), ipiv.data(), &info);
        else lp::sptrf<T>(u, &n, ap.data(), ipiv.data(), &info);
        ASSERT_EQ(info, 0);
        EXPECT_LT(st::rel_diff<T>(a, bk_rebuild<T>(n, up, herm, ap, ipiv), n), 30.0) << n << up << herm;
        idx nrhs = 3, ldb = n + 1;
        auto b = lt::random_matrix<T>(n, nrhs, ldb, 9u), x = b;
        if (herm) lp::hptrs<T>(u, &n, &nrhs, ap.data(), ipiv.data(), x.data(), &ldb, &info);
        else lp::sptrs<T>(u, &n, &nrhs, ap.data(), ipiv.data(), x.data(), &ldb, &info);
        EXPECT_LT(ft::solve_residual('N', n, nrhs, a, b.data(), ldb, x.data(), ldb), 30.0);
        std::vector<T> work(static_cast<size_t>(n));
        if (herm) lp::hptri<T>(u, &n, ap.data(), ipiv.data(), work.data(), &info);
        else lp::sptri<T>(u, &n, ap.data(), ipiv.data(), work.data(), &info);
        ASSERT_EQ(info, 0);
        lp::Packed pk{up, n};
        Dense inv(static_cast<size_t>(n * n));
        for (idx j = 0; j < n; ++j)
          for (idx i = 0; i < n; ++i)
            inv[i + j * n] =
                (up ? i <= j : i >= j) ? ft::wide(ap[pk(i, j)]) : st::cjh(herm, ft::wide(ap[pk(j, i)]));
        EXPECT_LT(st::inverse_residual(a, inv, n, lt::eps<T>()), 30.0) << n << up << herm;
        bool two = false;
        for (idx k : ipiv) two |= k < 0;
        if (n >= 16) EXPECT_TRUE(two);
      }
    }
  }
}

TYPED_TEST(SpTyped, ConditionRefinementDriver) {
  using T = TypeParam;
  using R = R_<T>;
  idx n = 20, nrhs = 2, ldb = n;
  for (bool herm : {false, true}) {
    if (herm && !lt::cplx<T>) continue;
    Dense a = st::sym_dense<T>(n, herm, 21u, 0.3);
    double exact = ft::exact_condition(n, a, true);
    auto xt = lt::random_matrix<T>(n, nrhs, n, 6u);
    auto b = st::times<T>(a, n, xt, nrhs);
    for (bool up : {true, false}) {
      const char *u = up ? "U" : "L";
      auto ap = st::pack<T>(a, n, up), afp = ap;
      std::vector<idx> ipiv(static_cast<size_t>(n)), iw(static_cast<size_t>(n));
      std::vector<T> work(static_cast<size_t>(2 * n)), x(static_cast<size_t>(n * nrhs));
      std::vector<R> ferr(2), berr(2), rw(static_cast<size_t>(n));
      R rcond = -1;
      idx info = -1;
      if (herm) lp::hpsvx<T>("N", u, &n, &nrhs, ap.data(), afp.data(), ipiv.data(), b.data(), &ldb, x.data(),
                             &ldb, &rcond, ferr.data(), berr.data(), work.data(), rw.data(), &info);
      else lp::spsvx<T>("N", u, &n, &nrhs, ap.data(), afp.data(), ipiv.data(), b.data(), &ldb, x.data(), &ldb,
                        &rcond, ferr.data(), berr.data(), work.data(), iw.data(), &info);
      ASSERT_EQ(info, 0);
      EXPECT_GT(double(rcond) * exact, 1.0 / 3.0);
      EXPECT_LT(double(rcond) * exact, 3.0);
      for (idx k = 0; k < nrhs; ++k) {
        EXPECT_LE(berr[k], R(4) * lt::eps<T>());
        double err = 0, xm = 0;
        for (idx i = 0; i < n; ++i) {
          err = std::max(err, std::abs(ft::wide(x[i + k * n]) - ft::wide(xt[i + k * n])));
          xm = std::max(xm, std::abs(ft::wide(x[i + k * n])));
        }
        EXPECT_LE(err / xm, double(ferr[k]) * 1.01);
      }
      // spcon on the same factors agrees with the driver.
      R anorm = herm ? lp::lanhp<T>("1", u, &n, ap.data(), rw.data()) : lp::lansp<T>("1", u, &n, ap.data(), rw.data());
      R rc2 = -1;
      if (herm) lp::hpcon<T>(u, &n, afp.data(), ipiv.data(), &anorm, &rc2, work.data(), &info);
      else lp::spcon_c<T>(u, &n, afp.data(), ipiv.data(), &anorm, &rc2, work.data(), &info);
      EXPECT_EQ(rc2, rcond);
    }
  }
}

TYPED_TEST(SpTyped, SingularBlockReported) {
  using T = TypeParam;
  using R = R_<T>;
  idx n = 6;
  Dense a = st::sym_dense<T>(n, true, 3u);
  for (idx k = 0; k < n; ++k) a[2 + k * n] = a[k + 2 * n] = 0;  // zero row and column 3
  for (bool up : {true, false}) {
    auto ap = st::pack<T>(a, n, up);
    std::vector<idx> ipiv(static_cast<size_t>(n));
    std::vector<T> work(static_cast<size_t>(2 * n));
    idx info = 0;
    lp::sptrf<T>(up ? "U" : "L", &n, ap.data(), ipiv.data(), &info);
    EXPECT_GT(info, 0);
    R anorm = 1, rcond = -1;
    idx info2 = -1;
    lp::spcon_c<T>(up ? "U" : "L", &n, ap.data(), ipiv.data(), &anorm, &rcond, work.data(), &info2);
    EXPECT_EQ(rcond, R(0));
    lp::sptri<T>(up ? "U" : "L", &n, ap.data(), ipiv.data(), work.data(), &info2);
    EXPECT_EQ(info2, info);
  }
}

TYPED_TEST(SpTyped, ComplexSymmetricProductAndUpdate) {
  using T = TypeParam;
  if constexpr (lt::cplx<T>) {
    idx n = 7, incx = -2, incy = 3;
    Dense a = st::sym_dense<T>(n, false, 4u);
    auto xv = lt::random_matrix<T>(1 + (n - 1) * 2, 1, 1 + (n - 1) * 2, 5u);
    auto yv = lt::random_matrix<T>(1 + (n - 1) * 3, 1, 1 + (n - 1) * 3, 6u);
    T alpha(0.5, -1), beta(2, 0.25);
    auto xi = [&](idx i) { return ft::wide(xv[(n - 1 - i) * 2]); };
    for (bool up : {true, false}) {
      auto ap = st::pack<T>(a, n, up);
      auto y = yv;
      lp::spmv<T>(up ? "U" : "L", &n, &alpha, ap.data(), xv.data(), &incx, &beta, y.data(), &incy);
      for (idx i = 0; i < n; ++i) {
        C s = 0;
        for (idx j = 0; j < n; ++j) s += a[i + j * n] * xi(j);
        C want = ft::wide(alpha) * s + ft::wide(beta) * ft::wide(yv[i * 3]);
        EXPECT_LT(std::abs(ft::wide(y[i * 3]) - want), 50 * lt::eps<T>());
      }
      lp::spr<T>(up ? "U" : "L", &n, &alpha, xv.data(), &incx, ap.data());
      lp::Packed pk{up, n};
      for (idx j = 0; j < n; ++j)
        for (idx i = up ? 0 : j; i < (up ? j + 1 : n); ++i) {
          C want = a[i + j * n] + ft::wide(alpha) * xi(i) * xi(j);
          EXPECT_LT(std::abs(ft::wide(ap[pk(i, j)]) - want), 20 * lt::eps<T>());
        }
    }
  }
}

TYPED_TEST(SpTyped, ArgumentChecks) {
  using T = TypeParam;
  using R = R_<T>;
  const char p = lp::prefix<T>();
  auto nm = [&](const char *stem) { return std::string(1, p) + stem; };
  std::vector<T> a(16, T(1)), w(16);
  std::vector<R> r(8);
  std::vector<idx> ip(8, 1);
  idx one = 1, two = 2, m1 = -1, info = 0;
  R rcond = 0, neg = -1;
  ft::Xerbla cap;
  lp::sptrf<T>("Q", &one, a.data(), ip.data(), &info);
  EXPECT_EQ(cap.name, nm("SPTRF"));
  EXPECT_EQ(info, -1);
  lp::sptrs<T>("U", &two, &one, a.data(), ip.data(), w.data(), &one, &info);
  EXPECT_EQ(info, -7);
  lp::sptri<T>("U", &m1, a.data(), ip.data(), w.data(), &info);
  EXPECT_EQ(info, -2);
  lp::spcon_c<T>("U", &one, a.data(), ip.data(), &neg, &rcond, w.data(), &info);
  EXPECT_EQ(cap.name, nm("SPCON"));
  EXPECT_EQ(info, -5);
  lp::sprfs<T>("U", &two, &one, a.data(), a.data(), ip.data(), w.data(), &two, w.data(), &one, r.data(), r.data(),
               w.data(), ip.data(), &info);
  EXPECT_EQ(info, -10);
  lp::spsvx<T>("X", "U", &one, &one, a.data(), a.data(), ip.data(), w.data(), &one, w.data(), &one, &rcond,
               r.data(), r.data(), w.data(), ip.data(), &info);
  EXPECT_EQ(cap.name, nm("SPSVX"));
  EXPECT_EQ(info, -1);
  if constexpr (lt::cplx<T>) {
    lp::hpsv<T>("U", &two, &m1, a.data(), ip.data(), w.data(), &two, &info);
    EXPECT_EQ(cap.name, nm("HPSV "));
    EXPECT_EQ(info, -3);
    idx zero = 0;
    T al(1);
    lp::spmv<T>("U", &one, &al, a.data(), w.data(), &zero, &al, w.data(), &one);
    EXPECT_EQ(cap.name, nm("SPMV "));
    EXPECT_EQ(cap.pos, 6);
    lp::spr<T>("U", &one, &al, w.data(), &zero, a.data());
    EXPECT_EQ(cap.name, nm("SPR  "));
    EXPECT_EQ(cap.pos, 5);
  }
}
