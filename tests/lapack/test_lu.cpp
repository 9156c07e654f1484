// LU factorization and solve: residuals over the tiers, pivoting rules,
// singular matrices, the progress stop and argument checks.
#include <gtest/gtest.h>
#include <omp.h>
#include "lapack/lu/gesv.h"
#include "service/nxl_serv.h"
#include "util.h"

using lt::idx;
namespace lp = nxl::lapack;

namespace {
struct Xerbla {
  static inline std::string name;
  static inline idx pos = 0;
  static inline int calls = 0;
  static void handler(const char *n, const nxl_int *info, int len) {
    name.assign(n, static_cast<size_t>(len));
    pos = *info;
    ++calls;
  }
  Xerbla() {
    calls = 0;
    pos = 0;
    name.clear();
    old = nxl_serv_set_xerbla(handler);
  }
  ~Xerbla() { nxl_serv_set_xerbla(old); }
  nxl_xerbla_fn old;
};
}  // namespace

template <class T> class LuTyped : public ::testing::Test {};
using Types = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(LuTyped, Types);

// Every tier (small kernel, recursive, team) on square, tall and wide shapes
// with padded leading dimensions.
TYPED_TEST(LuTyped, FactorResidualAcrossTiers) {
  using T = TypeParam;
  const idx shapes[][2] = {{1, 1}, {5, 3}, {3, 5}, {16, 16}, {17, 17}, {40, 25}, {25, 40}, {100, 100},
                           {160, 150}, {300, 310}, {333, 200}};
  for (auto &s : shapes) {
    idx m = s[0], n = s[1], lda = m + 3;
    auto a0 = lt::random_matrix<T>(m, n, lda, static_cast<unsigned>(m * 131 + n));
    auto a = a0;
    std::vector<idx> ipiv(static_cast<size_t>(std::min(m, n)) + 1, -7);
    idx info = -5;
    lp::getrf<T>(&m, &n, a.data(), &lda, ipiv.data(), &info);
    ASSERT_EQ(info, 0) << m << "x" << n;
    for (idx i = 0; i < std::min(m, n); ++i) ASSERT_TRUE(ipiv[i] >= i + 1 && ipiv[i] <= m);
    EXPECT_LT(lt::lu_residual(m, n, a0.data(), lda, a.data(), ipiv.data()), 30.0) << m << "x" << n;
    // Padding rows between columns are not written.
    for (idx j = 0; j < n; ++j)
      for (idx i = m; i < lda; ++i) ASSERT_EQ(a[i + j * lda], a0[i + j * lda]);
  }
}

TYPED_TEST(LuTyped, TeamFactorResidual) {
  using T = TypeParam;
  idx m = 520, n = 520, lda = 521;
  auto a0 = lt::random_matrix<T>(m, n, lda, 7);
  for (int threads : {1, 2, 3}) {
    auto a = a0;
    std::vector<idx> ipiv(static_cast<size_t>(n));
    idx info = -1;
    lp::getrf_threaded<T>(m, n, a.data(), lda, ipiv.data(), &info, threads);
    ASSERT_EQ(info, 0);
    EXPECT_LT(lt::lu_residual(m, n, a0.data(), lda, a.data(), ipiv.data()), 30.0) << threads;
  }
}

TYPED_TEST(LuTyped, SolveAllTransposesAndRhsCounts) {
  using T = TypeParam;
  for (idx n : {1, 4, 8, 9, 60, 200}) {
    for (idx nrhs : {1, 3, 8, 12}) {
      for (char tr : {'N', 'T', 'C'}) {
        idx lda = n + 1, ldb = n + 2;
        auto a0 = lt::random_matrix<T>(n, n, lda, static_cast<unsigned>(n + 7 * nrhs));
        auto b0 = lt::random_matrix<T>(n, nrhs, ldb, 99);
        auto a = a0;
        auto x = b0;
        std::vector<idx> ipiv(static_cast<size_t>(n));
        idx info = -1;
        lp::getrf<T>(&n, &n, a.data(), &lda, ipiv.data(), &info);
        ASSERT_EQ(info, 0);
        char t[2] = {tr, 0};
        lp::getrs<T>(t, &n, &nrhs, a.data(), &lda, ipiv.data(), x.data(), &ldb, &info);
        ASSERT_EQ(info, 0);
        double r = lt::solve_residual(tr, n, nrhs, a0.data(), lda, x.data(), ldb, b0.data(), ldb);
        EXPECT_LT(r, 30.0 * 1000) << n << " " << nrhs << " " << tr;
      }
    }
  }
}

TYPED_TEST(LuTyped, GesvSolves) {
  using T = TypeParam;
  idx n = 90, nrhs = 4, lda = 90, ldb = 91;
  auto a0 = lt::random_matrix<T>(n, n, lda, 3);
  auto b0 = lt::random_matrix<T>(n, nrhs, ldb, 4);
  auto a = a0;
  auto x = b0;
  std::vector<idx> ipiv(static_cast<size_t>(n));
  idx info = -1;
  lp::gesv<T>(&n, &nrhs, a.data(), &lda, ipiv.data(), x.data(), &ldb, &info);
  ASSERT_EQ(info, 0);
  EXPECT_LT(lt::solve_residual('N', n, nrhs, a0.data(), lda, x.data(), ldb, b0.data(), ldb), 3000.0);
}

// A zero column k gives info = k and the later columns are still factored;
// on equal magnitudes the upper row wins.
TEST(Lu, ZeroColumnAndTieRule) {
  for (idx n : {6, 16, 40, 400}) {
    idx lda = n;
    auto a0 = lt::random_matrix<double>(n, n, lda, 11);
    idx k = n / 2;
    for (idx i = 0; i < n; ++i) a0[i + (k - 1) * lda] = 0.0;
    auto a = a0;
    std::vector<idx> ipiv(static_cast<size_t>(n));
    idx info = 0;
    lp::getrf<double>(&n, &n, a.data(), &lda, ipiv.data(), &info);
    EXPECT_EQ(info, k) << n;
    EXPECT_LT(lt::lu_residual(n, n, a0.data(), lda, a.data(), ipiv.data()), 30.0);
  }
  for (idx n : {4, 20}) {
    std::vector<double> a(static_cast<size_t>(n * n), 1.0);
    for (idx i = 0; i < n; ++i) a[i] = (i % 2) ? -2.0 : 2.0;
    std::vector<idx> ipiv(static_cast<size_t>(n));
    idx info = 0;
    lp::getrf<double>(&n, &n, a.data(), &n, ipiv.data(), &info);
    EXPECT_EQ(ipiv[0], 1) << n;
  }
}

TEST(Lu, EmptyAndSmallBoundaries) {
  idx zero = 0, three = 3, one = 1, info = 9;
  double a[9] = {1, 2, 3, 4, 5, 6, 7, 8, 10};
  idx ipiv[3] = {-1, -1, -1};
  lp::getrf<double>(&zero, &three, a, &one, ipiv, &info);
  EXPECT_EQ(info, 0);
  EXPECT_EQ(ipiv[0], -1);
  EXPECT_EQ(a[0], 1.0);
}

TEST(Lu, GetrsSmallKernelChecksArguments) {
  Xerbla x;
  double a[4] = {1, 0, 0, 1}, b[2] = {1, 2};
  idx ipiv[2] = {1, 2}, n = 2, nrhs = 1, lda = 1, ldb = 2, info = 0;
  lp::getrs<double>("N", &n, &nrhs, a, &lda, ipiv, b, &ldb, &info);
  EXPECT_EQ(info, -5);
  EXPECT_EQ(x.name, "DGETRS");
  EXPECT_EQ(x.pos, 5);
  idx neg = -1;
  lp::getrs<double>("N", &neg, &nrhs, a, &lda, ipiv, b, &ldb, &info);
  EXPECT_EQ(info, -2);
  lp::getrs<double>("X", &n, &nrhs, a, &n, ipiv, b, &ldb, &info);
  EXPECT_EQ(info, -1);
  idx big = 20, ldb1 = 1;
  std::vector<double> aa(400, 1.0), bb(20, 1.0);
  std::vector<idx> pp(20, 1);
  lp::getrs<double>("T", &big, &nrhs, aa.data(), &big, pp.data(), bb.data(), &ldb1, &info);
  EXPECT_EQ(info, -8);
  EXPECT_EQ(x.pos, 8);
}

TEST(Lu, GesvChecksArgumentsWithPaddedName) {
  Xerbla x;
  idx n = 3, nrhs = 1, lda = 3, ldb = 2, info = 0;
  double a[9] = {}, b[3] = {};
  idx ipiv[3];
  lp::gesv<double>(&n, &nrhs, a, &lda, ipiv, b, &ldb, &info);
  EXPECT_EQ(info, -7);
  EXPECT_EQ(x.name, "DGESV ");
  EXPECT_EQ(x.pos, 7);
}

namespace {
int g_progress_calls = 0;
int stop_now(const nxl_int *, const nxl_int *, const char *stage, nxl_int len) {
  ++g_progress_calls;
  EXPECT_EQ(std::string(stage, static_cast<size_t>(len)), "DGETRF");
  return 1;
}
int count_only(const nxl_int *, const nxl_int *step, const char *, nxl_int) {
  ++g_progress_calls;
  return *step < 0;
}
}  // namespace

TEST(Lu, ProgressStopsEveryTier) {
  nxl_progress_fn old = nxl_serv_set_progress(stop_now);
  for (idx n : {40, 300, 700}) {
    g_progress_calls = 0;
    auto a = lt::random_matrix<double>(n, n, n, 5);
    std::vector<idx> ipiv(static_cast<size_t>(n));
    idx info = 0;
    lp::getrf<double>(&n, &n, a.data(), &n, ipiv.data(), &info);
    EXPECT_EQ(info, -1002) << n;
    EXPECT_GE(g_progress_calls, 1);
  }
  nxl_serv_set_progress(count_only);
  g_progress_calls = 0;
  idx n = 300;
  auto a = lt::random_matrix<double>(n, n, n, 5);
  std::vector<idx> ipiv(static_cast<size_t>(n));
  idx info = 0;
  lp::getrf<double>(&n, &n, a.data(), &n, ipiv.data(), &info);
  EXPECT_EQ(info, 0);
  EXPECT_GT(g_progress_calls, 1);
  // The small kernel does not report.
  g_progress_calls = 0;
  idx s = 16;
  lp::getrf<double>(&s, &s, a.data(), &s, ipiv.data(), &info);
  EXPECT_EQ(g_progress_calls, 0);
  nxl_serv_set_progress(old == nxl_serv_default_progress ? nullptr : old);
}

TEST(Lu, LaswpIncrements) {
  idx n = 3, lda = 4;
  std::vector<double> a(12);
  for (int i = 0; i < 12; ++i) a[static_cast<size_t>(i)] = i;
  idx ipiv[4] = {3, 3, 4, 4};
  auto b = a;
  idx k1 = 1, k2 = 3, inc = 1, incm = -1;
  lp::laswp<double>(&n, b.data(), &lda, &k1, &k2, ipiv, &inc);
  // rows: swap(1,3), swap(2,3), swap(3,4) applied in order: 0 1 2 3 -> 2 1 0 3 -> 2 0 1 3 -> 2 0 3 1
  EXPECT_EQ(b[0], 2);
  EXPECT_EQ(b[1], 0);
  EXPECT_EQ(b[2], 3);
  EXPECT_EQ(b[3], 1);
  lp::laswp<double>(&n, b.data(), &lda, &k1, &k2, ipiv, &incm);
  EXPECT_EQ(b, a);
}

namespace {
std::vector<long long> g_steps;
int record(const nxl_int *, const nxl_int *step, const char *, nxl_int) {
  g_steps.push_back(*step);
  return 0;
}
}  // namespace

// 16 x 16 goes to the small kernel (no progress report); 17 x 17 to the
// sequential tier, whose single unblocked leaf reports step 17; larger
// matrices report per panel and end at their column count.
TEST(Lu, TierThresholdsSeenThroughProgress) {
  nxl_progress_fn old = nxl_serv_set_progress(record);
  for (idx n : {16, 17, 100, 400}) {
    g_steps.clear();
    auto a = lt::random_matrix<double>(n, n, n, 2);
    std::vector<idx> ipiv(static_cast<size_t>(n));
    idx info = 0;
    lp::getrf<double>(&n, &n, a.data(), &n, ipiv.data(), &info);
    ASSERT_EQ(info, 0);
    if (n == 16) {
      EXPECT_TRUE(g_steps.empty());
    } else if (n == 17) {
      ASSERT_EQ(g_steps.size(), 1u);
      EXPECT_EQ(g_steps[0], 17);
    } else {
      ASSERT_FALSE(g_steps.empty());
      EXPECT_EQ(*std::max_element(g_steps.begin(), g_steps.end()), n);
    }
  }
  nxl_serv_set_progress(old == nxl_serv_default_progress ? nullptr : old);
}
