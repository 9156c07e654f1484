// General tridiagonal matrices: factor and solve residuals with and without
// row interchanges, the one-pass solver, condition estimates against the
// exact value, the expert driver, zero pivots, quick returns and argument
// checks.
#include "families_util.h"
#include "lapack/tridiag/gtsv.h"
#include "lapack/tridiag/gtsvx.h"

using ft::C;
using ft::Dense;
using lt::idx;
namespace lp = nxl::lapack;

namespace {
template <class T> struct Tri {
  idx n;
  std::vector<T> dl, d, du;
  Dense dense;
  Tri(idx n_, unsigned seed, double boost) : n(n_) {
    auto r = lt::random_matrix<T>(3, n + 1, 3, seed);
    for (idx i = 0; i < n; ++i) {
      d.push_back(r[3 * i] + T(boost));
      if (i + 1 < n) { dl.push_back(r[3 * i + 1]); du.push_back(r[3 * i + 2]); }
    }
    dl.push_back(T(0));
    du.push_back(T(0));
    dense.assign(static_cast<size_t>(n * n), C(0));
    for (idx i = 0; i < n; ++i) {
      dense[i + i * n] = ft::wide(d[i]);
      if (i + 1 < n) { dense[i + 1 + i * n] = ft::wide(dl[i]); dense[i + (i + 1) * n] = ft::wide(du[i]); }
    }
  }
};
}  // namespace

template <class T> class GtTyped : public ::testing::Test {};
using Types = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(GtTyped, Types);

TYPED_TEST(GtTyped, FactorSolveAllTransposes) {
  using T = TypeParam;
  for (idx n : {1, 2, 3, 10, 57}) {
    for (double boost : {0.0, 3.0}) {  // no boost: interchanges happen
      Tri<T> a(n, static_cast<unsigned>(n * 5 + int(boost)), boost);
      idx nrhs = 2, ldb = n + 1, info = -1;
      auto b = lt::random_matrix<T>(n, nrhs, ldb, 4u);
      auto dl = a.dl, d = a.d, du = a.du;
      std::vector<T> du2(static_cast<size_t>(n + 1));
      std::vector<idx> ipiv(static_cast<size_t>(n));
      lp::gttrf<T>(&n, dl.data(), d.data(), du.data(), du2.data(), ipiv.data(), &info);
      ASSERT_EQ(info, 0);
      for (char tr : {'N', 'T', 'C'}) {
        auto x = b;
        lp::gttrs<T>(&tr, &n, &nrhs, dl.data(), d.data(), du.data(), du2.data(), ipiv.data(), x.data(), &ldb, &info);
        ASSERT_EQ(info, 0);
        EXPECT_LT(ft::solve_residual<T>(tr, n, nrhs, a.dense, b.data(), ldb, x.data(), ldb), 10.0) << n << tr << boost;
      }
      auto x = b;
      auto dl2 = a.dl, d2 = a.d, du3 = a.du;
      lp::gtsv<T>(&n, &nrhs, dl2.data(), d2.data(), du3.data(), x.data(), &ldb, &info);
      ASSERT_EQ(info, 0);
      EXPECT_LT(ft::solve_residual<T>('N', n, nrhs, a.dense, b.data(), ldb, x.data(), ldb), 10.0) << n;
    }
  }
}

TYPED_TEST(GtTyped, ZeroPivotReported) {
  using T = TypeParam;
  idx n = 5, one = 1, info = 0;
  std::vector<T> dl(5, T(0)), d = {T(1), T(2), T(0), T(4), T(5)}, du(5, T(0)), du2(5), b(5, T(1));
  std::vector<idx> ipiv(5);
  auto d2 = d, dl2 = dl, du3 = du;
  lp::gttrf<T>(&n, dl.data(), d.data(), du.data(), du2.data(), ipiv.data(), &info);
  EXPECT_EQ(info, 3);
  lp::gtsv<T>(&n, &one, dl2.data(), d2.data(), du3.data(), b.data(), &n, &info);
  EXPECT_EQ(info, 3);
}

TYPED_TEST(GtTyped, ConditionWithinFactorThree) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  for (idx n : {1, 4, 9, 15}) {
    Tri<T> a(n, static_cast<unsigned>(31 + n), 0.3);
    auto dl = a.dl, d = a.d, du = a.du;
    std::vector<T> du2(static_cast<size_t>(n + 1)), work(static_cast<size_t>(2 * n));
    std::vector<idx> ipiv(static_cast<size_t>(n)), iwork(static_cast<size_t>(n));
    idx info = 0;
    lp::gttrf<T>(&n, dl.data(), d.data(), du.data(), du2.data(), ipiv.data(), &info);
    ASSERT_EQ(info, 0);
    for (char nm : {'O', 'I'}) {
      R anorm = lp::langt<T>(&nm, &n, a.dl.data(), a.d.data(), a.du.data()), rcond = -1;
      if constexpr (lt::cplx<T>)
        lp::gtcon_c<T>(&nm, &n, dl.data(), d.data(), du.data(), du2.data(), ipiv.data(), &anorm, &rcond, work.data(), &info);
      else
        lp::gtcon<T>(&nm, &n, dl.data(), d.data(), du.data(), du2.data(), ipiv.data(), &anorm, &rcond, work.data(),
                     iwork.data(), &info);
      ASSERT_EQ(info, 0);
      double exact = 1.0 / ft::exact_condition(n, a.dense, nm == 'O');
      EXPECT_GE(double(rcond), exact * 0.999) << nm << n;
      EXPECT_LE(double(rcond), exact * 3.0) << nm << n;
    }
  }
}

TYPED_TEST(GtTyped, ExpertDriverBounds) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  idx n = 40, nrhs = 2, ldb = n;
  Tri<T> a(n, 99u, 0.5);
  auto xt = lt::random_matrix<T>(n, nrhs, ldb, 3u);
  for (char tr : {'N', 'T', 'C'}) {
    std::vector<T> b(static_cast<size_t>(n * nrhs));
    for (idx k = 0; k < nrhs; ++k)
      for (idx i = 0; i < n; ++i) {
        C s = 0;
        for (idx j = 0; j < n; ++j) {
          C v = tr == 'N' ? a.dense[i + j * n] : a.dense[j + i * n];
          s += (tr == 'C' ? std::conj(v) : v) * ft::wide(xt[j + k * n]);
        }
        if constexpr (lt::cplx<T>) b[i + k * n] = T(R(s.real()), R(s.imag()));
        else b[i + k * n] = T(s.real());
      }
    std::vector<T> dlf(static_cast<size_t>(n)), df(static_cast<size_t>(n)), duf(static_cast<size_t>(n)),
        du2(static_cast<size_t>(n)), x(static_cast<size_t>(n * nrhs)), work(static_cast<size_t>(3 * n));
    std::vector<idx> ipiv(static_cast<size_t>(n)), iwork(static_cast<size_t>(n));
    std::vector<R> ferr(2), berr(2), rwork(static_cast<size_t>(n));
    void *w2 = lt::cplx<T> ? static_cast<void *>(rwork.data()) : static_cast<void *>(iwork.data());
    for (char fact : {'N', 'F'}) {
      R rcond = -1;
      idx info = -1;
      lp::gtsvx<T>(&fact, &tr, &n, &nrhs, a.dl.data(), a.d.data(), a.du.data(), dlf.data(), df.data(), duf.data(),
                   du2.data(), ipiv.data(), b.data(), &ldb, x.data(), &ldb, &rcond, ferr.data(), berr.data(),
                   work.data(), w2, &info);
      ASSERT_EQ(info, 0);
      EXPECT_GT(rcond, R(0));
      for (idx k = 0; k < nrhs; ++k) {
        EXPECT_LE(berr[k], R(4) * lt::eps<T>());
        double err = 0, xm = 0;
        for (idx i = 0; i < n; ++i) {
          err = std::max(err, std::abs(ft::wide(x[i + k * n]) - ft::wide(xt[i + k * n])));
          xm = std::max(xm, std::abs(ft::wide(x[i + k * n])));
        }
        EXPECT_LE(err / xm, double(ferr[k]) * 1.01) << tr << fact;
      }
    }
  }
}

TYPED_TEST(GtTyped, QuickReturnsAndArgumentChecks) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  const char p = lp::prefix<T>();
  auto nm = [&](const char *stem) { return std::string(1, p) + stem; };
  std::vector<T> v(8, T(1)), b(8, T(2));
  std::vector<idx> ipiv(8);
  idx zero = 0, n = 4, m1 = -1, one = 1, info = -1;
  lp::gtsv<T>(&zero, &one, v.data(), v.data(), v.data(), b.data(), &one, &info);
  EXPECT_EQ(info, 0);
  R anorm = 1, rcond = -1;
  lp::gtcon<T>("I", &zero, v.data(), v.data(), v.data(), v.data(), ipiv.data(), &anorm, &rcond, v.data(), ipiv.data(), &info);
  EXPECT_EQ(rcond, R(1));
  ft::Xerbla cap;
  lp::gttrf<T>(&m1, v.data(), v.data(), v.data(), v.data(), ipiv.data(), &info);
  EXPECT_EQ(cap.name, nm("GTTRF"));
  EXPECT_EQ(info, -1);
  lp::gttrs<T>("N", &n, &one, v.data(), v.data(), v.data(), v.data(), ipiv.data(), b.data(), &one, &info);
  EXPECT_EQ(cap.name, nm("GTTRS"));
  EXPECT_EQ(info, -10);
  lp::gtsv<T>(&n, &m1, v.data(), v.data(), v.data(), b.data(), &n, &info);
  EXPECT_EQ(cap.name, nm("GTSV "));
  EXPECT_EQ(info, -2);
  R neg = -1;
  lp::gtcon<T>("O", &n, v.data(), v.data(), v.data(), v.data(), ipiv.data(), &neg, &rcond, v.data(), ipiv.data(), &info);
  EXPECT_EQ(cap.name, nm("GTCON"));
  EXPECT_EQ(info, -8);
  std::vector<R> fe(1), be(1);
  lp::gtrfs<T>("N", &n, &one, v.data(), v.data(), v.data(), v.data(), v.data(), v.data(), v.data(), ipiv.data(),
               b.data(), &n, b.data(), &one, fe.data(), be.data(), v.data(), ipiv.data(), &info);
  EXPECT_EQ(cap.name, nm("GTRFS"));
  EXPECT_EQ(info, -15);
  lp::gtsvx<T>("X", "N", &n, &one, v.data(), v.data(), v.data(), v.data(), v.data(), v.data(), v.data(),
               ipiv.data(), b.data(), &n, b.data(), &n, &rcond, fe.data(), be.data(), v.data(), ipiv.data(), &info);
  EXPECT_EQ(cap.name, nm("GTSVX"));
  EXPECT_EQ(info, -1);
}
