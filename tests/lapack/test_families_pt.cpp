// Positive definite tridiagonal matrices: factor and solve residuals in
// both storage senses of the off-diagonal, condition estimates against the
// exact value, the expert driver, indefinite input, quick returns and
// argument checks.
#include "families_util.h"
#include "lapack/tridiag/ptsv.h"
#include "lapack/tridiag/ptsvx.h"

using ft::C;
using ft::Dense;
using lt::idx;
namespace lp = nxl::lapack;

namespace {
// d real and positive, e random; `up` places e above the diagonal.
template <class T> struct PosTri {
  using R = lt::real_t<T>;
  idx n;
  std::vector<R> d;
  std::vector<T> e;
  Dense dense;
  PosTri(idx n_, unsigned seed, bool up, double shift) : n(n_) {
    auto r = lt::random_matrix<T>(2, n + 1, 2, seed);
    for (idx i = 0; i < n; ++i) {
      d.push_back(R(shift + std::abs(std::real(r[2 * i]))));
      e.push_back(r[2 * i + 1]);
    }
    dense.assign(static_cast<size_t>(n * n), C(0));
    for (idx i = 0; i < n; ++i) {
      dense[i + i * n] = double(d[i]);
      if (i + 1 < n) {
        C v = ft::wide(e[i]);
        dense[(up ? i : i + 1) + (up ? i + 1 : i) * n] = v;
        dense[(up ? i + 1 : i) + (up ? i : i + 1) * n] = std::conj(v);
      }
    }
  }
};
}  // namespace

template <class T> class PtTyped : public ::testing::Test {};
using Types = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(PtTyped, Types);

TYPED_TEST(PtTyped, FactorSolveBothSenses) {
  using T = TypeParam;
  for (idx n : {1, 2, 9, 64}) {
    for (bool up : {false, true}) {
      if (!lt::cplx<T> && up) continue;
      PosTri<T> a(n, static_cast<unsigned>(n + 3 * up), up, 2.0);
      idx nrhs = 3, ldb = n + 1, info = -1;
      auto b = lt::random_matrix<T>(n, nrhs, ldb, 6u);
      auto d = a.d;
      auto e = a.e;
      lp::pttrf<T>(&n, d.data(), e.data(), &info);
      ASSERT_EQ(info, 0);
      auto x = b;
      if constexpr (lt::cplx<T>) {
        char u = up ? 'U' : 'l';
        lp::pttrs_c<T>(&u, &n, &nrhs, d.data(), e.data(), x.data(), &ldb, &info);
      } else {
        lp::pttrs<T>(&n, &nrhs, d.data(), e.data(), x.data(), &ldb, &info);
      }
      ASSERT_EQ(info, 0);
      EXPECT_LT(ft::solve_residual<T>('N', n, nrhs, a.dense, b.data(), ldb, x.data(), ldb), 10.0) << n << up;
      if (!up) {
        auto d2 = a.d;
        auto e2 = a.e;
        x = b;
        lp::ptsv<T>(&n, &nrhs, d2.data(), e2.data(), x.data(), &ldb, &info);
        ASSERT_EQ(info, 0);
        EXPECT_LT(ft::solve_residual<T>('N', n, nrhs, a.dense, b.data(), ldb, x.data(), ldb), 10.0) << n;
      }
    }
  }
}

TYPED_TEST(PtTyped, IndefiniteReported) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  idx n = 4, info = 0;
  std::vector<R> d = {R(1), R(1), R(1), R(1)};
  std::vector<T> e = {T(0.5), T(2), T(0.1), T(0)};
  lp::pttrf<T>(&n, d.data(), e.data(), &info);
  EXPECT_EQ(info, 3);  // 1 - 4 / 0.75 < 0 at the third pivot
}

TYPED_TEST(PtTyped, ConditionWithinFactorThree) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  for (idx n : {1, 5, 12}) {
    PosTri<T> a(n, static_cast<unsigned>(40 + n), false, 1.1);
    auto d = a.d;
    auto e = a.e;
    idx info = 0;
    lp::pttrf<T>(&n, d.data(), e.data(), &info);
    ASSERT_EQ(info, 0);
    double an = 0;
    for (idx j = 0; j < n; ++j) {
      double s = 0;
      for (idx i = 0; i < n; ++i) s += std::abs(a.dense[i + j * n]);
      an = std::max(an, s);
    }
    R anorm = R(an), rcond = -1;
    std::vector<R> work(static_cast<size_t>(n));
    lp::ptcon<T>(&n, d.data(), e.data(), &anorm, &rcond, work.data(), &info);
    ASSERT_EQ(info, 0);
    double exact = 1.0 / ft::exact_condition(n, a.dense, true);
    EXPECT_GE(double(rcond), exact * 0.999) << n;
    EXPECT_LE(double(rcond), exact * 3.0) << n;
  }
}

TYPED_TEST(PtTyped, ExpertDriverBounds) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  idx n = 30, nrhs = 2, ldb = n;
  PosTri<T> a(n, 7u, false, 2.5);
  auto xt = lt::random_matrix<T>(n, nrhs, ldb, 2u);
  std::vector<T> b(static_cast<size_t>(n * nrhs));
  for (idx k = 0; k < nrhs; ++k)
    for (idx i = 0; i < n; ++i) {
      C s = 0;
      for (idx j = 0; j < n; ++j) s += a.dense[i + j * n] * ft::wide(xt[j + k * n]);
      if constexpr (lt::cplx<T>) b[i + k * n] = T(R(s.real()), R(s.imag()));
      else b[i + k * n] = T(s.real());
    }
  std::vector<R> df(static_cast<size_t>(n)), ferr(2), berr(2), rwork(static_cast<size_t>(n));
  std::vector<T> ef(static_cast<size_t>(n)), x(static_cast<size_t>(n * nrhs)), work(static_cast<size_t>(2 * n));
  for (char fact : {'N', 'F'}) {
    R rcond = -1;
    idx info = -1;
    if constexpr (lt::cplx<T>)
      lp::ptsvx_c<T>(&fact, &n, &nrhs, a.d.data(), a.e.data(), df.data(), ef.data(), b.data(), &ldb, x.data(), &ldb,
                     &rcond, ferr.data(), berr.data(), work.data(), rwork.data(), &info);
    else
      lp::ptsvx<T>(&fact, &n, &nrhs, a.d.data(), a.e.data(), df.data(), ef.data(), b.data(), &ldb, x.data(), &ldb,
                   &rcond, ferr.data(), berr.data(), work.data(), &info);
    ASSERT_EQ(info, 0);
    EXPECT_GT(rcond, R(0));
    for (idx k = 0; k < nrhs; ++k) {
      EXPECT_LE(berr[k], R(4) * lt::eps<T>());
      double err = 0, xm = 0;
      for (idx i = 0; i < n; ++i) {
        err = std::max(err, std::abs(ft::wide(x[i + k * n]) - ft::wide(xt[i + k * n])));
        xm = std::max(xm, std::abs(ft::wide(x[i + k * n])));
      }
      EXPECT_LE(err / xm, double(ferr[k]) * 1.01) << fact;
    }
  }
}

TYPED_TEST(PtTyped, QuickReturnsAndArgumentChecks) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  const char p = lp::prefix<T>();
  auto nm = [&](const char *stem) { return std::string(1, p) + stem; };
  std::vector<R> d(4, R(2)), fe(1), be(1);
  std::vector<T> e(4, T(0)), b(8, T(1));
  idx zero = 0, n = 4, m1 = -1, one = 1, info = -1;
  R anorm = 1, rcond = -1;
  lp::ptcon<T>(&zero, d.data(), e.data(), &anorm, &rcond, d.data(), &info);
  EXPECT_EQ(rcond, R(1));
  lp::ptsv<T>(&zero, &one, d.data(), e.data(), b.data(), &one, &info);
  EXPECT_EQ(info, 0);
  ft::Xerbla cap;
  lp::pttrf<T>(&m1, d.data(), e.data(), &info);
  EXPECT_EQ(cap.name, nm("PTTRF"));
  EXPECT_EQ(info, -1);
  lp::ptsv<T>(&n, &one, d.data(), e.data(), b.data(), &one, &info);
  EXPECT_EQ(cap.name, nm("PTSV "));
  EXPECT_EQ(info, -6);
  R neg = -1;
  lp::ptcon<T>(&n, d.data(), e.data(), &neg, &rcond, d.data(), &info);
  EXPECT_EQ(info, -4);
  if constexpr (lt::cplx<T>) {
    lp::pttrs_c<T>("X", &n, &one, d.data(), e.data(), b.data(), &n, &info);
    EXPECT_EQ(cap.name, nm("PTTRS"));
    EXPECT_EQ(info, -1);
    lp::ptrfs_c<T>("U", &n, &one, d.data(), e.data(), d.data(), e.data(), b.data(), &n, b.data(), &one,
                   fe.data(), be.data(), b.data(), d.data(), &info);
    EXPECT_EQ(cap.name, nm("PTRFS"));
    EXPECT_EQ(info, -11);
  } else {
    lp::pttrs<T>(&n, &one, d.data(), e.data(), b.data(), &one, &info);
    EXPECT_EQ(cap.name, nm("PTTRS"));
    EXPECT_EQ(info, -6);
    lp::ptrfs<T>(&n, &one, d.data(), e.data(), d.data(), e.data(), b.data(), &n, b.data(), &one, fe.data(),
                 be.data(), b.data(), &info);
    EXPECT_EQ(cap.name, nm("PTRFS"));
    EXPECT_EQ(info, -10);
  }
  lp::ptsvx_work<T>("Q", n, one, d.data(), e.data(), d.data(), e.data(), b.data(), n, b.data(), n, &rcond,
                    fe.data(), be.data(), &info);
  EXPECT_EQ(cap.name, nm("PTSVX"));
  EXPECT_EQ(info, -1);
}
