// Rectangular full packed storage: the layout against worked examples, the
// conversions, and every operation against the same operation on full
// storage, for both transr values, both triangles and odd and even orders.
#include "families_util.h"
#include "lapack/chol/potri.h"
#include "lapack/chol/potrs.h"
#include "lapack/rfp/pftrf.h"
#include "lapack/tri/tpsolve.h"

using ft::C;
using lt::idx;
namespace lp = nxl::lapack;

namespace {
template <class T> constexpr char tchar() { return lt::cplx<T> ? 'C' : 'T'; }

template <class T> std::vector<T> to_rfp(const char *tr, const char *uplo, idx n, const std::vector<T> &a, idx lda) {
  std::vector<T> arf(static_cast<size_t>(n * (n + 1) / 2 + 1), T(0));
  idx info = -1;
  lp::trttf<T>(tr, uplo, &n, a.data(), &lda, arf.data(), &info);
  EXPECT_EQ(info, 0);
  return arf;
}
template <class T> std::vector<T> from_rfp(const char *tr, const char *uplo, idx n, const std::vector<T> &arf) {
  idx lda = std::max<idx>(n, 1), info = -1;
  std::vector<T> a(static_cast<size_t>(lda * n), T(0));
  lp::tfttr<T>(tr, uplo, &n, arf.data(), a.data(), &lda, &info);
  EXPECT_EQ(info, 0);
  return a;
}
// Largest difference over the `uplo` triangle relative to the largest entry.
template <class T> double tri_diff(bool up, idx n, const std::vector<T> &x, const std::vector<T> &y) {
  double d = 0, m = 0;
  for (idx j = 0; j < n; ++j)
    for (idx i = up ? 0 : j; i < (up ? j + 1 : n); ++i) {
      d = std::max(d, lt::mag(x[i + j * n] - y[i + j * n]));
      m = std::max(m, lt::mag(y[i + j * n]));
    }
  return m > 0 ? d / m : d;
}

const idx kOrders[] = {1, 2, 3, 5, 6, 10, 11, 32, 47};
}  // namespace

template <class T> class RfpTyped : public ::testing::Test {};
using Types = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(RfpTyped, Types);

// Calls body(transr, uplo, n, up) for every layout and order.
template <class T, class F> void for_layouts(F body) {
  static const char tr_t[2] = {tchar<T>(), 0};
  for (const char *tr : {"N", static_cast<const char *>(tr_t)})
    for (const char *uplo : {"L", "U"})
      for (idx n : kOrders) body(tr, uplo, n, *uplo == 'U');
}

// Worked examples of the layout (entries coded 10 i + j + 1), normal form.
TYPED_TEST(RfpTyped, LayoutMatchesWorkedExamples) {
  using T = TypeParam;
  auto coded = [](idx n) {
    std::vector<T> a(static_cast<size_t>(n * n));
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < n; ++i) a[i + j * n] = T(double(10 * i + j + 1));
    return a;
  };
  // n = 5, upper: a 5 x 3 array; column 0 holds a02 a12 a22 a00 a01.
  auto u5 = to_rfp<T>("N", "U", 5, coded(5), 5);
  const double want_u5[] = {3, 13, 23, 1, 2, 4, 14, 24, 34, 12, 5, 15, 25, 35, 45};
  for (int k = 0; k < 15; ++k) EXPECT_EQ(std::real(u5[k]), want_u5[k]) << k;
  // n = 6, lower: a 7 x 3 array; column 0 holds a33 a00 a10 .. a50.
  auto l6 = to_rfp<T>("N", "L", 6, coded(6), 6);
  const double want_l6[] = {34, 1, 11, 21, 31, 41, 51, 44, 45, 12, 22, 32, 42, 52, 54, 55, 56, 23, 33, 43, 53};
  for (int k = 0; k < 21; ++k) EXPECT_EQ(std::real(l6[k]), want_l6[k]) << k;
}

TYPED_TEST(RfpTyped, ConversionsRoundTripAndAgree) {
  using T = TypeParam;
  for_layouts<T>([&](const char *tr, const char *uplo, idx n, bool up) {
    auto a = lt::random_matrix<T>(n, n, n, static_cast<unsigned>(n));
    auto arf = to_rfp<T>(tr, uplo, n, a, n);
    EXPECT_EQ(tri_diff<T>(up, n, from_rfp<T>(tr, uplo, n, arf), a), 0.0);
    std::vector<T> ap(static_cast<size_t>(n * (n + 1) / 2)), arf2(arf.size(), T(0)), ap2(ap.size());
    idx info = -1;
    lp::trttp<T>(uplo, &n, a.data(), &n, ap.data(), &info);
    lp::tpttf<T>(tr, uplo, &n, ap.data(), arf2.data(), &info);
    ASSERT_EQ(info, 0);
    EXPECT_EQ(arf2, arf) << tr << uplo << n;
    lp::tfttp<T>(tr, uplo, &n, arf.data(), ap2.data(), &info);
    ASSERT_EQ(info, 0);
    EXPECT_EQ(ap2, ap);
  });
}

TYPED_TEST(RfpTyped, CholeskySolveAndInverseMatchFullStorage) {
  using T = TypeParam;
  for_layouts<T>([&](const char *tr, const char *uplo, idx n, bool up) {
    auto a = lt::spd_matrix<T>(n, n, static_cast<unsigned>(3 * n + up));
    auto arf = to_rfp<T>(tr, uplo, n, a, n);
    idx info = -1;
    lp::pftrf<T>(tr, uplo, &n, arf.data(), &info);
    ASSERT_EQ(info, 0);
    auto f = a;
    lp::potrf<T>(uplo, &n, f.data(), &n, &info);
    EXPECT_LT(tri_diff<T>(up, n, from_rfp<T>(tr, uplo, n, arf), f), 50 * lt::eps<T>()) << tr << uplo << n;
    idx nrhs = 3;
    auto b = lt::random_matrix<T>(n, nrhs, n, 2u), x = b;
    lp::pftrs<T>(tr, uplo, &n, &nrhs, arf.data(), x.data(), &n, &info);
    ASSERT_EQ(info, 0);
    EXPECT_LT(lt::solve_residual<T>('N', n, nrhs, a.data(), n, x.data(), n, b.data(), n), 10.0) << tr << uplo << n;
    lp::pftri<T>(tr, uplo, &n, arf.data(), &info);
    ASSERT_EQ(info, 0);
    lp::potri<T>(uplo, &n, f.data(), &n, &info);
    EXPECT_LT(tri_diff<T>(up, n, from_rfp<T>(tr, uplo, n, arf), f), 200 * n * lt::eps<T>()) << tr << uplo << n;
  });
}

TYPED_TEST(RfpTyped, NotPositiveDefiniteStopsAtTheMinor) {
  using T = TypeParam;
  for_layouts<T>([&](const char *tr, const char *uplo, idx n, bool up) {
    if (n < 3) return;
    auto a = lt::spd_matrix<T>(n, n, 9u);
    for (idx k : {idx(1), n / 2, n / 2 + 1, n}) {
      auto b = a;
      b[(k - 1) + (k - 1) * n] = T(-1);
      auto arf = to_rfp<T>(tr, uplo, n, b, n);
      idx info = -1;
      lp::pftrf<T>(tr, uplo, &n, arf.data(), &info);
      EXPECT_EQ(info, k) << tr << uplo << n;
    }
  });
}

TYPED_TEST(RfpTyped, TriangularInverseMatchesFullStorage) {
  using T = TypeParam;
  for_layouts<T>([&](const char *tr, const char *uplo, idx n, bool up) {
    for (const char *diag : {"N", "U"}) {
      auto a = lt::random_matrix<T>(n, n, n, static_cast<unsigned>(n + 40));
      for (idx i = 0; i < n; ++i) a[i + i * n] += T(4);
      auto arf = to_rfp<T>(tr, uplo, n, a, n);
      idx info = -1;
      lp::tftri<T>(tr, uplo, diag, &n, arf.data(), &info);
      ASSERT_EQ(info, 0);
      lp::trtri<T>(uplo, diag, &n, a.data(), &n, &info);
      auto got = from_rfp<T>(tr, uplo, n, arf);
      if (*diag == 'U')
        for (idx i = 0; i < n; ++i) got[i + i * n] = a[i + i * n];  // not referenced
      EXPECT_LT(tri_diff<T>(up, n, got, a), 100 * lt::eps<T>()) << tr << uplo << n << diag;
    }
  });
  // A zero on the diagonal in the second block is reported by its position.
  idx n = 7, info = -1;
  auto a = lt::random_matrix<T>(n, n, n, 4u);
  a[5 + 5 * n] = T(0);
  auto arf = to_rfp<T>("N", "L", n, a, n);
  lp::tftri<T>("N", "L", "N", &n, arf.data(), &info);
  EXPECT_EQ(info, 6);
}

TYPED_TEST(RfpTyped, TriangularSolveMatchesTrsm) {
  using T = TypeParam;
  const char tr_t[2] = {tchar<T>(), 0};
  T alpha = T(0.5);
  if constexpr (lt::cplx<T>) alpha = T(0.5, 0.25);
  for (const char *tr : {"N", tr_t})
    for (const char *uplo : {"L", "U"})
      for (idx na : {1, 4, 7, 30})
        for (const char *side : {"L", "R"})
          for (const char *trans : {"N", tr_t})
            for (const char *diag : {"N", "U"}) {
              auto a = lt::random_matrix<T>(na, na, na, static_cast<unsigned>(na * 3));
              for (idx i = 0; i < na; ++i) a[i + i * na] += T(3);
              auto arf = to_rfp<T>(tr, uplo, na, a, na);
              idx m = *side == 'L' ? na : 5, n = *side == 'L' ? 6 : na, ldb = m + 1;
              auto b = lt::random_matrix<T>(m, n, ldb, 7u), ref = b;
              lp::tfsm<T>(tr, side, uplo, trans, diag, &m, &n, &alpha, arf.data(), b.data(), &ldb);
              nxl::blas::trsm(*side, *uplo, *trans, *diag, m, n, alpha, a.data(), na, ref.data(), ldb);
              double d = 0, mx = 0;
              for (idx j = 0; j < n; ++j)
                for (idx i = 0; i < m; ++i) {
                  d = std::max(d, lt::mag(b[i + j * ldb] - ref[i + j * ldb]));
                  mx = std::max(mx, lt::mag(ref[i + j * ldb]));
                }
              EXPECT_LT(d / mx, 100 * lt::eps<T>()) << tr << side << uplo << trans << diag << na;
            }
  // alpha = 0 clears B without reading A.
  idx m = 3, n = 2;
  T zero = T(0);
  std::vector<T> b(6, T(std::numeric_limits<lt::real_t<T>>::quiet_NaN()));
  lp::tfsm<T>("N", "L", "L", "N", "N", &m, &n, &zero, nullptr, b.data(), &m);
  for (T v : b) EXPECT_EQ(v, T(0));
}

TYPED_TEST(RfpTyped, RankUpdateAndNormsMatchFullStorage) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  for_layouts<T>([&](const char *tr, const char *uplo, idx n, bool up) {
    idx k = 7;
    const char tt[2] = {tchar<T>(), 0};
    for (const char *trans : {"N", static_cast<const char *>(tt)}) {
      bool nt = *trans == 'N';
      idx lda = nt ? n + 1 : k + 1;
      auto a = lt::random_matrix<T>(lda, nt ? k : n, lda, 5u);
      auto c = lt::spd_matrix<T>(n, n, 6u);
      auto crf = to_rfp<T>(tr, uplo, n, c, n);
      R alpha = R(-0.75), beta = R(1.5);
      lp::sfrk<T>(tr, uplo, trans, &n, &k, &alpha, a.data(), &lda, &beta, crf.data());
      nxl::blas::herk(*uplo, *trans, n, k, alpha, a.data(), lda, beta, c.data(), n);
      EXPECT_LT(tri_diff<T>(up, n, from_rfp<T>(tr, uplo, n, crf), c), 50 * lt::eps<T>()) << tr << uplo << n << trans;
    }
    auto h = lt::spd_matrix<T>(n, n, 8u);
    h[n - 1] = T(-30);  // an off-diagonal entry dominates some norms
    if (!up) h[(n - 1) * n] = T(-30);
    auto hrf = to_rfp<T>(tr, uplo, n, h, n);
    std::vector<R> work(static_cast<size_t>(n));
    for (const char *nm : {"M", "1", "O", "I", "F", "E"}) {
      R want = lp::lanhe<T>(nm, uplo, &n, h.data(), &n, work.data());
      R got = lp::lanhf<T>(nm, tr, uplo, &n, hrf.data(), work.data());
      EXPECT_NEAR(got, want, want * 10 * lt::eps<T>()) << nm << tr << uplo << n;
    }
  });
}

TYPED_TEST(RfpTyped, QuickReturnsAndArgumentChecks) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  const char p = lp::prefix<T>();
  auto nm = [&](const char *stem) { return std::string(1, p) + stem; };
  const char *wrong_t = lt::cplx<T> ? "T" : "C";
  idx zero = 0, two = 2, m1 = -1, info = -1;
  std::vector<T> a(8, T(1));
  R one = 1;
  lp::pftrf<T>("N", "L", &zero, a.data(), &info);
  EXPECT_EQ(info, 0);
  EXPECT_EQ(lp::lanhf<T>("M", "N", "L", &zero, a.data(), nullptr), R(0));
  ft::Xerbla cap;
  lp::pftrf<T>(wrong_t, "L", &two, a.data(), &info);
  EXPECT_EQ(cap.name, nm("PFTRF"));
  EXPECT_EQ(info, -1);
  lp::pftri<T>("N", "X", &two, a.data(), &info);
  EXPECT_EQ(info, -2);
  lp::pftrs<T>("N", "U", &two, &two, a.data(), a.data(), &m1, &info);
  EXPECT_EQ(cap.name, nm("PFTRS"));
  EXPECT_EQ(info, -7);
  lp::tftri<T>("N", "U", "X", &two, a.data(), &info);
  EXPECT_EQ(info, -3);
  lp::tfsm<T>("N", "L", "U", "N", "N", &two, &two, a.data(), a.data(), a.data(), &zero);
  EXPECT_EQ(cap.name, nm("TFSM "));
  EXPECT_EQ(cap.pos, 11);
  lp::sfrk<T>("N", "U", "N", &two, &two, &one, a.data(), &zero, &one, a.data());
  EXPECT_EQ(cap.name, nm(lt::cplx<T> ? "HFRK " : "SFRK "));
  EXPECT_EQ(cap.pos, 8);
  lp::trttf<T>("N", "U", &two, a.data(), &zero, a.data(), &info);
  EXPECT_EQ(cap.name, nm("TRTTF"));
  EXPECT_EQ(info, -5);
  lp::tfttr<T>("N", "U", &two, a.data(), a.data(), &zero, &info);
  EXPECT_EQ(info, -6);
  lp::tpttf<T>("N", "U", &m1, a.data(), a.data(), &info);
  EXPECT_EQ(info, -3);
}
