// Aasen's factorization, one- and two-stage: P A P^T = L T L^H rebuilt from
// the stored factors (both triangles, real, complex symmetric and
// Hermitian, with NaN in the triangle that must not be read and garbage in
// the imaginary part of a Hermitian diagonal), solves through each stage,
// the drivers, workspace queries and minimum sizes, singular T, and
// argument checks.
#include "sym_util.h"
#include "lapack/aasen/sytrf_aa_2stage.h"

using ft::C;
using ft::Dense;
using lt::idx;
namespace lp = nxl::lapack;

namespace {
template <class T> using R_ = lt::real_t<T>;

// P1 ... P_{n-1} L T L^H P_{n-1} ... P1 from the storage of sytrf_aa.
template <class T>
Dense aa_rebuild(idx n, bool up, bool herm, const std::vector<T> &f, idx lda, const std::vector<idx> &ipiv) {
  auto lo = [&](idx i, idx j) {  // entry (i, j), i >= j, of the lower form
    C v = ft::wide(up ? f[j + i * lda] : f[i + j * lda]);
    return up ? st::cjh(herm, v) : v;
  };
  Dense l(static_cast<size_t>(n * n), C(0)), t(static_cast<size_t>(n * n), C(0));
  for (idx i = 0; i < n; ++i) {
    l[i + i * n] = 1;
    t[i + i * n] = herm ? C(lo(i, i).real()) : lo(i, i);
    if (i + 1 < n) {
      t[i + 1 + i * n] = lo(i + 1, i);
      t[i + (i + 1) * n] = st::cjh(herm, lo(i + 1, i));
    }
  }
  for (idx k = 1; k < n; ++k)
    for (idx i = k + 1; i < n; ++i) l[i + k * n] = lo(i, k - 1);
  Dense m = st::mul(st::mul(l, t, n), st::adjoint(l, n, herm), n);
  for (idx j = n - 1; j >= 0; --j) st::swap_sym(m, n, j, ipiv[static_cast<size_t>(j)] - 1);
  return m;
}

template <class T, bool herm>
void factor(const char *u, idx n, T *a, idx lda, idx *ipiv, T *work, idx lwork, idx *info) {
  if constexpr (herm) lp::hetrf_aa<T>(u, &n, a, &lda, ipiv, work, &lwork, info);
  else lp::sytrf_aa<T>(u, &n, a, &lda, ipiv, work, &lwork, info);
}
}  // namespace

template <class T> class AaTyped : public ::testing::Test {};
using Types = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(AaTyped, Types);

TYPED_TEST(AaTyped, FactorsRebuildAndSolve) {
  using T = TypeParam;
  using R = R_<T>;
  for (bool herm : {false, true}) {
    if (herm && !lt::cplx<T>) continue;
    for (idx n : {1, 2, 3, 8, 33, 100, 150, 257}) {
      for (bool up : {true, false}) {
        idx lda = n + 3;
        Dense a = st::sym_dense<T>(n, herm, static_cast<unsigned>(5 * n + up + 2 * herm), 0.1);
        auto f = st::full<T>(a, n, lda, up);
        if constexpr (lt::cplx<T>)  // a Hermitian routine ignores the imaginary part of the diagonal
          if (herm)
            for (idx i = 0; i < n; ++i) f[i + i * lda] += T(R(0), R(1e30));
        std::vector<idx> ipiv(static_cast<size_t>(n));
        idx lwork = -1, info = -1;
        std::vector<T> work(1);
        const char *u = up ? "U" : "L";
        if (herm) factor<T, true>(u, n, f.data(), lda, ipiv.data(), work.data(), lwork, &info);
        else factor<T, false>(u, n, f.data(), lda, ipiv.data(), work.data(), lwork, &info);
        ASSERT_EQ(info, 0);
        lwork = static_cast<idx>(std::real(work[0]));
        ASSERT_GE(lwork, 2 * n);
        work.resize(static_cast<size_t>(lwork));
        if (herm) factor<T, true>(u, n, f.data(), lda, ipiv.data(), work.data(), lwork, &info);
        else factor<T, false>(u, n, f.data(), lda, ipiv.data(), work.data(), lwork, &info);
        ASSERT_EQ(info, 0);
        EXPECT_EQ(ipiv[0], 1);
        EXPECT_LT(st::rel_diff<T>(a, aa_rebuild<T>(n, up, herm, f, lda, ipiv), n), 30.0) << n << up << herm;
        // The untouched triangle keeps its NaNs.
        for (idx j = 0; j < n; ++j)
          for (idx i = 0; i < n; ++i)
            if (up ? i > j : i < j) EXPECT_TRUE(std::isnan(std::real(f[i + j * lda])));
        idx nrhs = 4, ldb = n + 1, lw = 3 * n;
        auto b = lt::random_matrix<T>(n, nrhs, ldb, 3u), x = b;
        std::vector<T> w(static_cast<size_t>(std::max<idx>(lw, 1)));
        if (herm) lp::hetrs_aa<T>(u, &n, &nrhs, f.data(), &lda, ipiv.data(), x.data(), &ldb, w.data(), &lw, &info);
        else lp::sytrs_aa<T>(u, &n, &nrhs, f.data(), &lda, ipiv.data(), x.data(), &ldb, w.data(), &lw, &info);
        ASSERT_EQ(info, 0);
        EXPECT_LT(ft::solve_residual('N', n, nrhs, a, b.data(), ldb, x.data(), ldb), 30.0) << n << up << herm;
      }
    }
  }
}

TYPED_TEST(AaTyped, DriversOneAndTwoStage) {
  using T = TypeParam;
  for (bool herm : {false, true}) {
    if (herm && !lt::cplx<T>) continue;
    for (idx n : {1, 6, 57}) {
      for (bool up : {true, false}) {
        const char *u = up ? "U" : "L";
        Dense a = st::sym_dense<T>(n, herm, static_cast<unsigned>(n + 11 * up + herm), 0.2);
        idx nrhs = 2, ldb = n, lda = n, info = -1;
        auto xt = lt::random_matrix<T>(n, nrhs, n, 8u);
        auto b = st::times<T>(a, n, xt, nrhs);
        // One stage.
        auto f = st::full<T>(a, n, lda, up);
        auto x = b;
        std::vector<idx> ipiv(static_cast<size_t>(n)), ipiv2(static_cast<size_t>(n));
        idx lwork = std::max<idx>(1, 3 * n);
        std::vector<T> work(static_cast<size_t>(lwork));
        if (herm) lp::hesv_aa<T>(u, &n, &nrhs, f.data(), &lda, ipiv.data(), x.data(), &ldb, work.data(), &lwork, &info);
        else lp::sysv_aa<T>(u, &n, &nrhs, f.data(), &lda, ipiv.data(), x.data(), &ldb, work.data(), &lwork, &info);
        ASSERT_EQ(info, 0);
        EXPECT_LT(ft::solve_residual('N', n, nrhs, a, b.data(), ldb, x.data(), ldb), 30.0);
        // Two stages, with the band array and work from the queries.
        f = st::full<T>(a, n, lda, up);
        x = b;
        idx ltb = -1, lw = -1;
        std::vector<T> tb(1);
        if (herm) lp::hesv_aa_2stage<T>(u, &n, &nrhs, f.data(), &lda, tb.data(), &ltb, ipiv.data(), ipiv2.data(),
                                        x.data(), &ldb, work.data(), &lw, &info);
        else lp::sysv_aa_2stage<T>(u, &n, &nrhs, f.data(), &lda, tb.data(), &ltb, ipiv.data(), ipiv2.data(),
                                   x.data(), &ldb, work.data(), &lw, &info);
        ASSERT_EQ(info, 0);
        ltb = static_cast<idx>(std::real(tb[0]));
        lw = static_cast<idx>(std::real(work[0]));
        EXPECT_GE(ltb, 4 * n);
        EXPECT_GE(lw, n);
        tb.assign(static_cast<size_t>(ltb), T(0));
        work.assign(static_cast<size_t>(std::max<idx>(lw, 1)), T(0));
        if (herm) lp::hesv_aa_2stage<T>(u, &n, &nrhs, f.data(), &lda, tb.data(), &ltb, ipiv.data(), ipiv2.data(),
                                        x.data(), &ldb, work.data(), &lw, &info);
        else lp::sysv_aa_2stage<T>(u, &n, &nrhs, f.data(), &lda, tb.data(), &ltb, ipiv.data(), ipiv2.data(),
                                   x.data(), &ldb, work.data(), &lw, &info);
        ASSERT_EQ(info, 0);
        EXPECT_LT(ft::solve_residual('N', n, nrhs, a, b.data(), ldb, x.data(), ldb), 30.0);
        // The factors of the driver solve again through sytrs_aa_2stage.
        auto y = b;
        if (herm) lp::hetrs_aa_2stage<T>(u, &n, &nrhs, f.data(), &lda, tb.data(), &ltb, ipiv.data(), ipiv2.data(),
                                         y.data(), &ldb, &info);
        else lp::sytrs_aa_2stage<T>(u, &n, &nrhs, f.data(), &lda, tb.data(), &ltb, ipiv.data(), ipiv2.data(),
                                    y.data(), &ldb, &info);
        ASSERT_EQ(info, 0);
        for (size_t i = 0; i < y.size(); ++i) EXPECT_EQ(y[i], x[i]);
      }
    }
  }
}

TYPED_TEST(AaTyped, SingularTridiagonal) {
  using T = TypeParam;
  idx n = 5, lda = 5, nrhs = 1, lwork = 15, ltb = 20, info = 0;
  Dense a = st::sym_dense<T>(n, false, 2u);
  for (idx k = 0; k < n; ++k) a[k] = a[k * n] = 0;  // zero first row and column
  auto f = st::full<T>(a, n, lda, false);
  std::vector<idx> ipiv(5), ipiv2(5);
  std::vector<T> work(15), b(5, T(1)), tb(20);
  lp::sytrf_aa<T>("L", &n, f.data(), &lda, ipiv.data(), work.data(), &lwork, &info);
  EXPECT_EQ(info, 0);
  lp::sytrs_aa<T>("L", &n, &nrhs, f.data(), &lda, ipiv.data(), b.data(), &n, work.data(), &lwork, &info);
  EXPECT_EQ(info, 1);
  f = st::full<T>(a, n, lda, false);
  lp::sytrf_aa_2stage<T>("L", &n, f.data(), &lda, tb.data(), &ltb, ipiv.data(), ipiv2.data(), work.data(), &n,
                         &info);
  EXPECT_GT(info, 0);
}

TYPED_TEST(AaTyped, ArgumentChecksAndQueries) {
  using T = TypeParam;
  const char p = lp::prefix<T>();
  auto nm = [&](const char *stem) { return std::string(1, p) + stem; };
  std::vector<T> a(16, T(1)), w(16), tb(16);
  std::vector<idx> ip(4), ip2(4);
  idx zero = 0, one = 1, two = 2, m1 = -1, m2 = -2, four = 4, eight = 8, info = 0;
  ft::Xerbla cap;
  lp::sytrf_aa<T>("U", &zero, a.data(), &one, ip.data(), w.data(), &zero, &info);
  EXPECT_EQ(cap.name, nm("SYTRF_AA"));
  EXPECT_EQ(info, -7);
  lp::sytrf_aa<T>("U", &two, a.data(), &one, ip.data(), w.data(), &four, &info);
  EXPECT_EQ(info, -4);
  lp::sytrs_aa<T>("U", &zero, &one, a.data(), &one, ip.data(), w.data(), &one, w.data(), &m2, &info);
  EXPECT_EQ(cap.name, nm("SYTRS_AA"));
  EXPECT_EQ(info, -10);
  idx three = 3;
  lp::sysv_aa<T>("U", &two, &one, a.data(), &two, ip.data(), w.data(), &two, w.data(), &three, &info);
  EXPECT_EQ(info, -10);
  lp::sytrf_aa_2stage<T>("U", &two, a.data(), &two, tb.data(), &one, ip.data(), ip2.data(), w.data(), &two, &info);
  EXPECT_EQ(cap.name, nm("SYTRF_AA_2STAGE"));
  EXPECT_EQ(info, -6);
  lp::sytrf_aa_2stage<T>("U", &two, a.data(), &two, tb.data(), &eight, ip.data(), ip2.data(), w.data(), &zero,
                         &info);
  EXPECT_EQ(info, -10);
  lp::sytrs_aa_2stage<T>("U", &two, &one, a.data(), &two, tb.data(), &eight, ip.data(), ip2.data(), w.data(), &one,
                         &info);
  EXPECT_EQ(cap.name, nm("SYTRS_AA_2STAGE"));
  EXPECT_EQ(info, -11);
  lp::sysv_aa_2stage<T>("U", &two, &one, a.data(), &two, tb.data(), &eight, ip.data(), ip2.data(), w.data(), &two,
                        w.data(), &one, &info);
  EXPECT_EQ(info, -13);
  if constexpr (lt::cplx<T>) {
    lp::hetrf_aa<T>("/", &zero, a.data(), &one, ip.data(), w.data(), &one, &info);
    EXPECT_EQ(cap.name, nm("HETRF_AA"));
    EXPECT_EQ(info, -1);
    lp::hesv_aa_2stage<T>("U", &m1, &one, a.data(), &two, tb.data(), &eight, ip.data(), ip2.data(), w.data(), &two,
                          w.data(), &one, &info);
    EXPECT_EQ(cap.name, nm("HESV_AA_2STAGE"));
    EXPECT_EQ(info, -2);
  }
  // Queries: no factorization, sizes in work(1) and tb(1).
  idx q = -1, n = 10;
  lp::sysv_aa<T>("L", &n, &one, a.data(), &n, ip.data(), w.data(), &n, w.data(), &q, &info);
  EXPECT_EQ(info, 0);
  EXPECT_GE(std::real(w[0]), 28.0);
}
