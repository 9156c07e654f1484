// Triangular matrices in full, packed and band storage: one random band
// triangle is stored the three ways and every routine is checked on each
// against its dense image -- solve residuals for all transposes, the packed
// inverse, norms, condition estimates against the exact value, error
// bounds against the true error, the scaled solvers on inputs that overflow
// a plain solve, and the argument checks.
#include "families_util.h"
#include "lapack/tri/trcon.h"
#include "lapack/tri/tpsolve.h"
#include "lapack/tri/trtri.h"

using ft::C;
using ft::Dense;
using lt::idx;
namespace lp = nxl::lapack;

namespace {
template <class T> T from(C z) {
  if constexpr (lt::cplx<T>) return T(lt::real_t<T>(z.real()), lt::real_t<T>(z.imag()));
  else return T(z.real());
}

// A triangle of order n with kd off-diagonals, stored full (lda = n + 2),
// packed and as a band (ldab = kd + 2). With a unit diagonal the stored
// diagonal holds junk that must not be read.
template <class T> struct Tri {
  idx n, kd, lda, ldab;
  bool up, unit;
  std::vector<T> a, ap, ab;
  Dense dense;
  Tri(idx n_, idx kd_, bool up_, bool unit_, unsigned seed, double diag_boost = 3.0)
      : n(n_), kd(kd_), lda(n_ + 2), ldab(kd_ + 2), up(up_), unit(unit_) {
    auto r = lt::random_matrix<T>(n, n, n, seed);
    a.assign(static_cast<size_t>(lda * n), T(0));
    ab.assign(static_cast<size_t>(ldab * n), T(-7));
    dense.assign(static_cast<size_t>(n * n), C(0));
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < n; ++i) {
        bool in = up ? (i <= j && j - i <= kd) : (i >= j && i - j <= kd);
        if (!in) continue;
        T v = r[i + j * n];
        if (i == j) v = unit ? T(100) : v + T(std::real(v) >= 0 ? diag_boost : -diag_boost);
        a[i + j * lda] = v;
        ab[(up ? kd + i - j : i - j) + j * ldab] = v;
        dense[i + j * n] = (i == j && unit) ? C(1) : ft::wide(v);
      }
    for (idx j = 0; j < n; ++j)
      for (idx i = up ? 0 : j; i < (up ? j + 1 : n); ++i) ap.push_back(a[i + j * lda]);
  }
  const char *u() const { return up ? "U" : "L"; }
  const char *d() const { return unit ? "U" : "N"; }
  // b = op(dense) x.
  std::vector<T> times(char tr, idx nrhs, const std::vector<T> &x) const {
    std::vector<T> b(static_cast<size_t>(n * nrhs));
    for (idx k = 0; k < nrhs; ++k)
      for (idx i = 0; i < n; ++i) {
        C s = 0;
        for (idx j = 0; j < n; ++j) {
          C v = tr == 'N' ? dense[i + j * n] : dense[j + i * n];
          s += (tr == 'C' ? std::conj(v) : v) * ft::wide(x[j + k * n]);
        }
        b[i + k * n] = from<T>(s);
      }
    return b;
  }
};

template <class T> constexpr double tol() { return 30.0; }
}  // namespace

template <class T> class TriTyped : public ::testing::Test {};
using Types = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(TriTyped, Types);

TYPED_TEST(TriTyped, SolvesInThreeStoragesAllTransposes) {
  using T = TypeParam;
  for (idx n : {1, 2, 7, 40})
    for (idx kd : {idx(0), idx(2), n - 1})
      for (bool up : {true, false})
        for (bool unit : {false, true}) {
          Tri<T> m(n, kd, up, unit, static_cast<unsigned>(n * 31 + kd * 7 + up * 3 + unit));
          idx nrhs = 3, ldb = n, info = -1;
          auto b = lt::random_matrix<T>(n, nrhs, ldb, 5u);
          for (const char *tr : {"N", "T", "C"}) {
            auto x1 = b, x2 = b, x3 = b;
            lp::trtrs<T>(m.u(), tr, m.d(), &n, &nrhs, m.a.data(), &m.lda, x1.data(), &ldb, &info);
            ASSERT_EQ(info, 0);
            lp::tptrs<T>(m.u(), tr, m.d(), &n, &nrhs, m.ap.data(), x2.data(), &ldb, &info);
            ASSERT_EQ(info, 0);
            lp::tbtrs<T>(m.u(), tr, m.d(), &n, &kd, &nrhs, m.ab.data(), &m.ldab, x3.data(), &ldb, &info);
            ASSERT_EQ(info, 0);
            for (auto *x : {&x1, &x2, &x3})
              EXPECT_LT(ft::solve_residual<T>(*tr, n, nrhs, m.dense, b.data(), ldb, x->data(), ldb), tol<T>())
                  << n << kd << up << unit << *tr;
          }
        }
}

TYPED_TEST(TriTyped, ZeroDiagonalReportedBeforeSolving) {
  using T = TypeParam;
  idx n = 6, kd = 2, nrhs = 1, info = 0;
  Tri<T> m(n, kd, true, false, 11u);
  m.a[3 + 3 * m.lda] = T(0);
  m.ab[kd + 3 * m.ldab] = T(0);
  m.ap[3 * 4 / 2 + 3] = T(0);
  std::vector<T> b(6, T(1)), keep = b;
  lp::trtrs<T>("U", "N", "N", &n, &nrhs, m.a.data(), &m.lda, b.data(), &n, &info);
  EXPECT_EQ(info, 4);
  lp::tptrs<T>("U", "N", "N", &n, &nrhs, m.ap.data(), b.data(), &n, &info);
  EXPECT_EQ(info, 4);
  lp::tbtrs<T>("U", "N", "N", &n, &kd, &nrhs, m.ab.data(), &m.ldab, b.data(), &n, &info);
  EXPECT_EQ(info, 4);
  EXPECT_EQ(b, keep);
  auto ap = m.ap;
  lp::tptri<T>("U", "N", &n, ap.data(), &info);
  EXPECT_EQ(info, 4);
  // A unit diagonal is not read.
  lp::tptri<T>("U", "U", &n, ap.data(), &info);
  EXPECT_EQ(info, 0);
}

TYPED_TEST(TriTyped, PackedInverseTimesMatrixIsIdentity) {
  using T = TypeParam;
  for (idx n : {1, 3, 16, 45})
    for (bool up : {true, false})
      for (bool unit : {false, true}) {
        Tri<T> m(n, n - 1, up, unit, static_cast<unsigned>(n + 100 * up + 10 * unit));
        auto ap = m.ap;
        idx info = -1;
        lp::tptri<T>(m.u(), m.d(), &n, ap.data(), &info);
        ASSERT_EQ(info, 0);
        // Full image of the inverse (unit diagonal implied).
        Dense inv(static_cast<size_t>(n * n), C(0));
        for (idx j = 0, k = 0; j < n; ++j)
          for (idx i = up ? 0 : j; i < (up ? j + 1 : n); ++i, ++k)
            inv[i + j * n] = (i == j && unit) ? C(1) : ft::wide(ap[static_cast<size_t>(k)]);
        // |inv(A) A - I|_1 / (n |A|_1 |inv(A)|_1 eps).
        double worst = 0, an = 0, in = 0;
        for (idx j = 0; j < n; ++j) {
          double col = 0, ca = 0, ci = 0;
          for (idx i = 0; i < n; ++i) {
            C s = 0;
            for (idx k = 0; k < n; ++k) s += inv[i + k * n] * m.dense[k + j * n];
            col += std::abs(s - C(i == j ? 1.0 : 0.0));
            ca += std::abs(m.dense[i + j * n]);
            ci += std::abs(inv[i + j * n]);
          }
          worst = std::max(worst, col);
          an = std::max(an, ca);
          in = std::max(in, ci);
        }
        EXPECT_LT(worst / (n * an * in * lt::eps<T>()), 10.0) << n << up << unit;
      }
}

TYPED_TEST(TriTyped, NormsAgreeAcrossStorages) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  for (idx n : {1, 5, 23})
    for (idx kd : {idx(0), idx(3), n - 1})
      for (bool up : {true, false})
        for (bool unit : {false, true}) {
          Tri<T> m(n, kd, up, unit, static_cast<unsigned>(7 * n + kd + up + 2 * unit));
          std::vector<R> work(static_cast<size_t>(n));
          for (const char *nm : {"M", "1", "O", "I", "F", "E"}) {
            R full = lp::lantr<T>(nm, m.u(), m.d(), &n, &n, m.a.data(), &m.lda, work.data());
            R pk = lp::lantp<T>(nm, m.u(), m.d(), &n, m.ap.data(), work.data());
            R bd = lp::lantb<T>(nm, m.u(), m.d(), &n, &kd, m.ab.data(), &m.ldab, work.data());
            EXPECT_NEAR(pk, full, full * 8 * lt::eps<T>()) << *nm;
            EXPECT_NEAR(bd, full, full * 8 * lt::eps<T>()) << *nm << n << kd;
          }
        }
  idx zero = 0;
  EXPECT_EQ(lp::lantp<T>("M", "U", "N", &zero, nullptr, nullptr), R(0));
}

TYPED_TEST(TriTyped, ConditionEstimatesWithinFactorThree) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  for (idx n : {1, 4, 12, 30})
    for (bool up : {true, false})
      for (bool unit : {false, true}) {
        idx kd = n > 4 ? 3 : n - 1;
        Tri<T> m(n, kd, up, unit, static_cast<unsigned>(3 * n + up + 5 * unit), 1.0);
        std::vector<T> work(static_cast<size_t>(3 * n));
        std::vector<idx> iwork(static_cast<size_t>(n));
        std::vector<R> rwork(static_cast<size_t>(n));
        void *iw = lt::cplx<T> ? static_cast<void *>(rwork.data()) : static_cast<void *>(iwork.data());
        for (const char *nm : {"O", "I"}) {
          double exact = 1.0 / ft::exact_condition(n, m.dense, *nm == 'O');
          R r1 = -1, r2 = -1, r3 = -1;
          idx info = -1;
          lp::trcon<T>(nm, m.u(), m.d(), &n, m.a.data(), &m.lda, &r1, work.data(), iw, &info);
          ASSERT_EQ(info, 0);
          lp::tpcon<T>(nm, m.u(), m.d(), &n, m.ap.data(), &r2, work.data(), iw, &info);
          ASSERT_EQ(info, 0);
          lp::tbcon<T>(nm, m.u(), m.d(), &n, &kd, m.ab.data(), &m.ldab, &r3, work.data(), iw, &info);
          ASSERT_EQ(info, 0);
          for (R r : {r1, r2, r3}) {
            EXPECT_GE(double(r), exact * 0.99) << nm << n << up << unit;
            EXPECT_LE(double(r), exact * 3.0) << nm << n << up << unit;
          }
        }
      }
}

TYPED_TEST(TriTyped, ErrorBoundsCoverTheTrueError) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  idx n = 25, kd = 4, nrhs = 2, ldb = n, info = -1;
  for (bool up : {true, false}) {
    Tri<T> m(n, kd, up, false, up ? 21u : 22u, 0.5);
    auto xt = lt::random_matrix<T>(n, nrhs, n, 9u);
    for (const char *tr : {"N", "T", "C"}) {
      auto b = m.times(*tr, nrhs, xt);
      auto x = b;
      lp::tbtrs<T>(m.u(), tr, "N", &n, &kd, &nrhs, m.ab.data(), &m.ldab, x.data(), &ldb, &info);
      ASSERT_EQ(info, 0);
      std::vector<T> work(static_cast<size_t>(3 * n));
      std::vector<idx> iwork(static_cast<size_t>(n));
      std::vector<R> rwork(static_cast<size_t>(n));
      void *iw = lt::cplx<T> ? static_cast<void *>(rwork.data()) : static_cast<void *>(iwork.data());
      for (int s = 0; s < 3; ++s) {
        std::vector<R> ferr(2, -1), berr(2, -1);
        if (s == 0)
          lp::trrfs<T>(m.u(), tr, "N", &n, &nrhs, m.a.data(), &m.lda, b.data(), &ldb, x.data(), &ldb, ferr.data(),
                       berr.data(), work.data(), iw, &info);
        else if (s == 1)
          lp::tprfs<T>(m.u(), tr, "N", &n, &nrhs, m.ap.data(), b.data(), &ldb, x.data(), &ldb, ferr.data(),
                       berr.data(), work.data(), iw, &info);
        else
          lp::tbrfs<T>(m.u(), tr, "N", &n, &kd, &nrhs, m.ab.data(), &m.ldab, b.data(), &ldb, x.data(), &ldb,
                       ferr.data(), berr.data(), work.data(), iw, &info);
        ASSERT_EQ(info, 0);
        for (idx k = 0; k < nrhs; ++k) {
          double err = 0, xn = 0;
          for (idx i = 0; i < n; ++i) {
            err = std::max(err, std::abs(ft::wide(x[i + k * n]) - ft::wide(xt[i + k * n])));
            xn = std::max(xn, std::abs(ft::wide(xt[i + k * n])));
          }
          EXPECT_LE(berr[k], R(n + 1) * 2 * lt::eps<T>()) << s << *tr;
          EXPECT_GE(double(ferr[k]) * 1.01, err / xn) << s << *tr;
          EXPECT_LT(double(ferr[k]), 1e4 * double(n) * lt::eps<T>()) << s << *tr;
        }
      }
    }
  }
}

// Scaled solves: an ordinary system gives scale 1 and the plain solution;
// a tiny diagonal under large off-diagonal entries, which overflows a plain
// solve, gives a finite x and scale s with op(A) x = s b; a zero diagonal
// gives scale 0 and a null vector.
TYPED_TEST(TriTyped, ScaledSolvesNeverOverflow) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  const R tiny = std::numeric_limits<R>::min() * R(1e4);
  for (bool up : {true, false})
    for (const char *tr : {"N", "T", "C"}) {
      idx n = 30, kd = n - 1, info = -1;
      Tri<T> m(n, kd, up, false, up ? 41u : 42u);
      std::vector<R> cnorm(static_cast<size_t>(n));
      auto b = lt::random_matrix<T>(n, 1, n, 3u);
      auto x = b, ref = b;
      R scale = -1;
      lp::latrs<T>(m.u(), tr, "N", "N", &n, m.a.data(), &m.lda, x.data(), &scale, cnorm.data(), &info);
      ASSERT_EQ(info, 0);
      EXPECT_EQ(scale, R(1));
      idx one = 1;
      lp::trtrs<T>(m.u(), tr, "N", &n, &one, m.a.data(), &m.lda, ref.data(), &n, &info);
      for (idx i = 0; i < n; ++i) EXPECT_LE(lt::mag(x[i] - ref[i]), 1e3 * lt::eps<T>() * (1 + lt::mag(ref[i])));

      // The first diagonal entry of the solve near underflow: the plain
      // solve overflows at once.
      const idx j = (up != (*tr == 'N')) ? 0 : n - 1;
      m.a[j + j * m.lda] = T(tiny);
      m.ab[(up ? kd : 0) + j * m.ldab] = T(tiny);
      m.dense[j + j * n] = ft::wide(T(tiny));
      std::vector<T> ap;
      for (idx c = 0; c < n; ++c)
        for (idx i = up ? 0 : c; i < (up ? c + 1 : n); ++i) ap.push_back(m.a[i + c * m.lda]);
      for (int s = 0; s < 3; ++s) {
        x = b;
        scale = -1;
        if (s == 0) lp::latrs<T>(m.u(), tr, "N", "N", &n, m.a.data(), &m.lda, x.data(), &scale, cnorm.data(), &info);
        else if (s == 1) lp::latps<T>(m.u(), tr, "N", "N", &n, ap.data(), x.data(), &scale, cnorm.data(), &info);
        else lp::latbs<T>(m.u(), tr, "N", "N", &n, &kd, m.ab.data(), &m.ldab, x.data(), &scale, cnorm.data(), &info);
        ASSERT_EQ(info, 0);
        EXPECT_GT(scale, R(0));
        EXPECT_LT(scale, R(1));
        double xmax = 0;
        for (idx i = 0; i < n; ++i) {
          ASSERT_TRUE(std::isfinite(std::real(x[i])) && std::isfinite(std::imag(x[i]))) << s << *tr;
          xmax = std::max(xmax, lt::mag(x[i]));
        }
        // |op(A) x - s b| relative to |A| |x|, all in double.
        std::vector<C> ax(static_cast<size_t>(n), C(0));
        double anorm = 0, worst = 0;
        for (idx i = 0; i < n; ++i) {
          double rowsum = 0;
          for (idx j = 0; j < n; ++j) {
            C v = *tr == 'N' ? m.dense[i + j * n] : m.dense[j + i * n];
            if (*tr == 'C') v = std::conj(v);
            ax[i] += v * ft::wide(x[j]);
            rowsum += std::abs(v);
          }
          anorm = std::max(anorm, rowsum);
          worst = std::max(worst, std::abs(ax[i] - double(scale) * ft::wide(b[i])));
        }
        EXPECT_LT(worst / (anorm * xmax * n * lt::eps<T>()), 30.0) << s << *tr << up;
      }
    }
  // A zero on the diagonal: scale 0 and A x = 0 with x nonzero.
  idx n = 5, info = -1;
  Tri<T> z(n, n - 1, true, false, 77u);
  z.a[2 + 2 * z.lda] = T(0);
  std::vector<R> cnorm(5);
  std::vector<T> x(5, T(1));
  R scale = -1;
  lp::latrs<T>("U", "N", "N", "N", &n, z.a.data(), &z.lda, x.data(), &scale, cnorm.data(), &info);
  EXPECT_EQ(scale, R(0));
  EXPECT_EQ(x[2], T(1));
  EXPECT_EQ(x[3], T(0));
  EXPECT_EQ(x[4], T(0));
}

TYPED_TEST(TriTyped, SeveralRightHandSidesOneScaleEach) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  idx n = 20, nrhs = 3, info = -1, lwork = -1;
  Tri<T> m(n, n - 1, false, false, 61u);
  auto b = lt::random_matrix<T>(n, nrhs, n, 8u);
  // The second column is near overflow.
  const R big = std::numeric_limits<R>::max() / R(4);
  for (idx i = 0; i < n; ++i) b[i + n] = T(big) * (b[i + n] / T(lt::mag(b[i + n]) + 1));
  std::vector<R> scale(3, -1), cnorm(static_cast<size_t>(n)), work(1);
  lp::latrs3<T>("L", "T", "N", "N", &n, &nrhs, m.a.data(), &m.lda, b.data(), &n, scale.data(), cnorm.data(),
                work.data(), &lwork, &info);
  ASSERT_EQ(info, 0);
  lwork = static_cast<idx>(work[0]);
  ASSERT_GE(lwork, 1);
  work.resize(static_cast<size_t>(lwork));
  auto x = b;
  lp::latrs3<T>("L", "T", "N", "N", &n, &nrhs, m.a.data(), &m.lda, x.data(), &n, scale.data(), cnorm.data(),
                work.data(), &lwork, &info);
  ASSERT_EQ(info, 0);
  for (idx k = 0; k < nrhs; ++k) {
    auto y = std::vector<T>(b.begin() + k * n, b.begin() + (k + 1) * n);
    R s1 = -1;
    lp::latrs<T>("L", "T", "N", "Y", &n, m.a.data(), &m.lda, y.data(), &s1, cnorm.data(), &info);
    EXPECT_EQ(scale[k], s1) << k;
    for (idx i = 0; i < n; ++i) EXPECT_LE(lt::mag(x[i + k * n] - y[i]), 1e3 * lt::eps<T>() * (1 + lt::mag(y[i])));
  }
  EXPECT_LT(scale[1], R(1));
  idx small = lwork - 1;
  ft::Xerbla cap;
  lp::latrs3<T>("L", "T", "N", "N", &n, &nrhs, m.a.data(), &m.lda, x.data(), &n, scale.data(), cnorm.data(),
                work.data(), &small, &info);
  EXPECT_EQ(info, -14);
}

TYPED_TEST(TriTyped, PackedConversionsRoundTrip) {
  using T = TypeParam;
  for (bool up : {true, false}) {
    idx n = 9, info = -1;
    Tri<T> m(n, n - 1, up, false, 5u);
    std::vector<T> ap(static_cast<size_t>(n * (n + 1) / 2)), back(static_cast<size_t>(m.lda * n), T(-3));
    lp::trttp<T>(m.u(), &n, m.a.data(), &m.lda, ap.data(), &info);
    ASSERT_EQ(info, 0);
    EXPECT_EQ(ap, m.ap);
    lp::tpttr<T>(m.u(), &n, ap.data(), back.data(), &m.lda, &info);
    ASSERT_EQ(info, 0);
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < n; ++i) {
        bool in = up ? i <= j : i >= j;
        EXPECT_EQ(back[i + j * m.lda], in ? m.a[i + j * m.lda] : T(-3));
      }
  }
}

TYPED_TEST(TriTyped, QuickReturnsAndArgumentChecks) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  const char p = lp::prefix<T>();
  auto nm = [&](const char *stem) { return std::string(1, p) + stem; };
  idx zero = 0, one = 1, two = 2, m1 = -1, info = -1;
  std::vector<T> a(8, T(1)), work(8);
  std::vector<R> rw(8), ferr(2, -1), berr(2, -1);
  std::vector<idx> iw(8);
  void *w = lt::cplx<T> ? static_cast<void *>(rw.data()) : static_cast<void *>(iw.data());
  R rcond = -1, scale = -1;
  lp::trcon<T>("O", "U", "N", &zero, a.data(), &one, &rcond, work.data(), w, &info);
  EXPECT_EQ(rcond, R(1));
  lp::tbrfs<T>("U", "N", "N", &zero, &one, &two, a.data(), &two, a.data(), &one, a.data(), &one, ferr.data(),
               berr.data(), work.data(), w, &info);
  EXPECT_EQ(ferr[1], R(0));
  EXPECT_EQ(berr[1], R(0));
  lp::latrs<T>("U", "N", "N", "N", &zero, a.data(), &one, a.data(), &scale, rw.data(), &info);
  EXPECT_EQ(scale, R(1));

  ft::Xerbla cap;
  lp::tbtrs<T>("U", "N", "N", &two, &m1, &one, a.data(), &one, a.data(), &two, &info);
  EXPECT_EQ(cap.name, nm("TBTRS"));
  EXPECT_EQ(info, -5);
  lp::tbtrs<T>("U", "N", "N", &two, &one, &one, a.data(), &one, a.data(), &two, &info);
  EXPECT_EQ(info, -8);
  lp::tptrs<T>("U", "X", "N", &two, &one, a.data(), a.data(), &two, &info);
  EXPECT_EQ(info, -2);
  lp::latrs<T>("U", "N", "N", "X", &two, a.data(), &two, a.data(), &scale, rw.data(), &info);
  EXPECT_EQ(cap.name, nm("LATRS"));
  EXPECT_EQ(info, -4);
  lp::latbs<T>("L", "N", "N", "N", &two, &one, a.data(), &one, a.data(), &scale, rw.data(), &info);
  EXPECT_EQ(info, -8);
  lp::trcon<T>("X", "U", "N", &two, a.data(), &two, &rcond, work.data(), w, &info);
  EXPECT_EQ(cap.name, nm("TRCON"));
  EXPECT_EQ(info, -1);
  lp::tpcon<T>("I", "U", "X", &two, a.data(), &rcond, work.data(), w, &info);
  EXPECT_EQ(info, -3);
  lp::trrfs<T>("U", "N", "N", &two, &one, a.data(), &two, a.data(), &two, a.data(), &one, ferr.data(),
               berr.data(), work.data(), w, &info);
  EXPECT_EQ(cap.name, nm("TRRFS"));
  EXPECT_EQ(info, -11);
  lp::tptri<T>("U", "N", &m1, a.data(), &info);
  EXPECT_EQ(info, -3);
  lp::tpttr<T>("L", &two, a.data(), a.data(), &one, &info);
  EXPECT_EQ(cap.name, nm("TPTTR"));
  EXPECT_EQ(info, -5);
}
