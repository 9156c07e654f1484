// LU factorization and solve: residuals over the tiers, pivoting rules,
// singular matrices, the progress stop and argument checks.
#include <gtest/gtest.h>
#include <omp.h>
#include "lapack/lu/gesv.h"
#include "lapack/threads/team.h"
#include "service/nxl_serv.h"
#include "families_util.h"
#include "tier_util.h"
#include "util.h"

using lt::idx;
namespace lp = nxl::lapack;

using ft::Xerbla;

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

// The threaded tier called directly with a padded leading dimension.
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
    for (idx j = 0; j < n; ++j) ASSERT_EQ(a[m + j * lda], a0[m + j * lda]);
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

// ---------------------------------------------------------------------------
// The threaded tier and its team layer.

namespace {

template <class T> idx factor(idx m, idx n, std::vector<T> &a, std::vector<idx> &ipiv) {
  idx info = -7, lda = m;
  ipiv.assign(static_cast<size_t>(std::min(m, n)), 0);
  lp::getrf<T>(&m, &n, a.data(), &lda, ipiv.data(), &info);
  return info;
}
}  // namespace

// Tier switches: max(m, n) = 16 | 17 (small kernel | sequential), m + n =
// 299 | 300 and n = 63 | 64 (sequential | threaded); in the threaded tier a
// team of one holds only the distribution, a larger team also its work area
// (at least: members may hold product buffers when another one reports).
TEST(LuTiers, ThresholdsAndTeamSetUp) {
  struct Case { idx m, n; int threads; int extra; size_t reports; };
  const Case cases[] = {{16, 16, 2, 0, 0},   {17, 17, 2, 0, 1},  {150, 149, 2, 0, 0}, {150, 150, 1, 1, 0},
                        {150, 150, 2, 2, 0}, {400, 63, 2, 0, 0}, {400, 64, 1, 1, 0},  {600, 600, 2, 2, 0},
                        {600, 600, 1, 1, 0}};
  for (const Case &c : cases) {
    lt::ScopedThreads th(c.threads);
    lt::HeldBlocks h;
    auto a = lt::random_matrix<double>(c.m, c.n, c.m, 3);
    std::vector<idx> ipiv;
    ASSERT_EQ(factor(c.m, c.n, a, ipiv), 0);
    if (c.reports) EXPECT_EQ(h.blocks.size(), c.reports) << c.m << "x" << c.n;
    // Other members may hold their product's packing buffers meanwhile.
    if (c.extra == 2) EXPECT_GE(h.extra(), 2) << c.m << "x" << c.n << " threads " << c.threads;
    else EXPECT_EQ(h.extra(), c.extra) << c.m << "x" << c.n << " threads " << c.threads;
    EXPECT_EQ(h.left(), 0);
  }
}

// Square, tall and wide matrices with 1 to 4 threads in all precisions;
// the pivots are the same whatever the team (each panel is factored by one
// member with the same arithmetic).
TYPED_TEST(LuTyped, ThreadedTierResidualForTeamSizes) {
  using T = TypeParam;
  const idx shapes[][2] = {{300, 300}, {420, 250}, {250, 420}, {513, 513}};
  for (auto &s : shapes) {
    idx m = s[0], n = s[1];
    auto a0 = lt::random_matrix<T>(m, n, m, static_cast<unsigned>(m + n));
    std::vector<idx> first;
    for (int threads = 1; threads <= 4; ++threads) {
      lt::ScopedThreads th(threads);
      auto a = a0;
      std::vector<idx> ipiv;
      ASSERT_EQ(factor(m, n, a, ipiv), 0);
      EXPECT_LT(lt::lu_residual(m, n, a0.data(), m, a.data(), ipiv.data()), 30.0)
          << m << "x" << n << " threads " << threads;
      if (threads == 1) first = ipiv;
      else EXPECT_EQ(ipiv, first) << m << "x" << n << " threads " << threads;
    }
  }
}

// Exactly zero columns (first, inside a late panel, last) give info = the
// first of them with every team size, and the factorization is completed.
TYPED_TEST(LuTyped, ThreadedTierSingular) {
  using T = TypeParam;
  idx n = 400;
  for (idx k : {idx(1), idx(333), n}) {
    auto a0 = lt::random_matrix<T>(n, n, n, 8);
    for (idx i = 0; i < n; ++i) a0[i + (k - 1) * n] = T(0);
    if (k == 1) for (idx i = 0; i < n; ++i) a0[i + 350 * n] = T(0);
    for (int threads : {1, 2, 3}) {
      lt::ScopedThreads th(threads);
      auto a = a0;
      std::vector<idx> ipiv;
      EXPECT_EQ(factor(n, n, a, ipiv), k) << k << " threads " << threads;
      EXPECT_LT(lt::lu_residual(n, n, a0.data(), n, a.data(), ipiv.data()), 30.0);
    }
  }
}

// A stop by the progress function, at the first report or in the middle,
// gives -1002 in each tier and releases every block the tier took.
TEST(LuTiers, ProgressStopReleasesEverything) {
  struct Case { idx n; int threads; };
  for (const Case &c : {Case{40, 2}, Case{300, 1}, Case{600, 1}, Case{600, 2}, Case{600, 3}, Case{900, 4}}) {
    for (int at : {0, 3}) {
      if (c.n == 40 && at > 0) continue;  // one unblocked leaf, one report
      lt::ScopedThreads th(c.threads);
      lt::HeldBlocks h;
      lt::HeldBlocks::stop_after = at;
      auto a = lt::random_matrix<std::complex<float>>(c.n, c.n, c.n, 4);
      std::vector<idx> ipiv;
      EXPECT_EQ(factor(c.n, c.n, a, ipiv), -1002) << c.n << " threads " << c.threads << " at " << at;
      EXPECT_EQ(h.left(), 0) << c.n << " threads " << c.threads;
    }
  }
}

// The distribution covers the columns once: factored panels exactly up to
// min(m, n), no panel wider than nb, update-only blocks beyond.
TEST(LuTeam, PanelDistributionCoversColumns) {
  for (idx m : {1, 64, 300, 1000}) {
    for (idx n : {1, 64, 300, 1001}) {
      for (idx nb : {1, 16, 48, 128}) {
        lp::nb_dist d;
        ASSERT_EQ(lp::nb_dist_init(&d, m, n, nb), 0);
        EXPECT_EQ(lp::nb_dist_get_nb(&d), nb);
        idx next = 0;
        for (idx k = 0; k < d.nblocks; ++k) {
          idx j0, jb;
          lp::nb_dist_get_panel(&d, k, &j0, &jb);
          ASSERT_EQ(j0, next);
          ASSERT_GE(jb, 1);
          ASSERT_LE(jb, nb);
          next = j0 + jb;
          if (k + 1 == d.npanels) EXPECT_EQ(next, std::min(m, n));
        }
        EXPECT_EQ(next, n);
        lp::nb_dist_destroy(&d);
        EXPECT_EQ(d.start, nullptr);
      }
    }
  }
}

// The graph's list is a topological order: replayed in list order, every
// task finds its inputs complete; every panel is factored once and every
// block updated once by every panel left of it.
TEST(LuTeam, TaskListIsTopological) {
  for (idx m : {300, 1000}) {
    for (idx n : {200, 1000, 1500}) {
      for (int threads : {1, 2, 4}) {
        lp::nb_dist d;
        ASSERT_EQ(lp::nb_dist_init(&d, m, n, 64), 0);
        std::vector<char> area(lp::cdag1d_datasize(&d, threads) + 64);
        void *p = reinterpret_cast<void *>((reinterpret_cast<uintptr_t>(area.data()) + 63) & ~uintptr_t(63));
        lp::cdag1d g;
        lp::cdag1d_team_init(&g, &d, threads, p);
        std::vector<idx> level(static_cast<size_t>(d.nblocks), 0);
        idx factored = 0;
        for (idx t = 0; t < g.ntasks; ++t) {
          const lp::team_task &tk = g.tasks[t];
          if (tk.kind == lp::kCdagFactor) {
            ASSERT_EQ(level[tk.a], tk.a) << "panel " << tk.a;
            level[tk.a] = tk.a + 1;
            ++factored;
          } else {
            ASSERT_EQ(level[tk.a], tk.a + 1) << "update by unfactored panel " << tk.a;
            ASSERT_LT(tk.a, tk.b);
            ASSERT_LT(tk.b, tk.c);
            for (idx b = tk.b; b < tk.c; ++b) {
              ASSERT_EQ(level[b], tk.a);
              level[b] = tk.a + 1;
            }
          }
        }
        EXPECT_EQ(factored, d.npanels);
        for (idx b = 0; b < d.nblocks; ++b) EXPECT_EQ(level[b], std::min(b + 1, d.npanels)) << b;
        lp::cdag1d_destroy(&g);
        lp::nb_dist_destroy(&d);
      }
    }
  }
}

// A member waiting on a counter returns as soon as the team is stopped.
TEST(LuTeam, WaitEndsOnStop) {
  lp::thread_team_ctxt c;
  ASSERT_EQ(lp::thread_team_ctxt_init(&c, 2, 1000), 0);
  ASSERT_NE(c.work, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(c.work) % 64, 0u);
  lp::team_counter k;
  k.v.store(3);
  EXPECT_TRUE(lp::thread_team_wait(&c, k, 3));
  c.stop.store(1);
  EXPECT_FALSE(lp::thread_team_wait(&c, k, 4));
  lp::thread_team_note_info(&c, 9);
  lp::thread_team_note_info(&c, 4);
  lp::thread_team_note_info(&c, 7);
  EXPECT_EQ(c.info.load(), 4);
  lp::thread_team_ctxt_destroy(&c);
  EXPECT_EQ(c.work, nullptr);
}
