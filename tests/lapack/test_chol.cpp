// Cholesky: residuals of every tier and both triangles, failure positions,
// the progress stop and argument checks.
#include <gtest/gtest.h>
#include "lapack/chol/potrs.h"
#include "lapack/threads/team.h"
#include "service/nxl_serv.h"
#include "tier_util.h"
#include "util.h"

using lt::idx;
namespace lp = nxl::lapack;

template <class T> class CholTyped : public ::testing::Test {};
using Types = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(CholTyped, Types);

// |A - U^H U| (or L L^H) / (n |A| eps) on the stored triangle; the other
// triangle must be untouched.
template <class T> double chol_residual(bool up, idx n, const T *a0, const T *f, idx lda) {
  double worst = 0;
  for (idx j = 0; j < n; ++j) {
    double s = 0;
    for (idx i = 0; i < n; ++i) {
      std::complex<double> v = 0;
      for (idx k = 0; k <= std::min(i, j); ++k) {
        T x, y;
        if (up) { x = lt::cj(f[k + i * lda]); y = f[k + j * lda]; }
        else { x = f[i + k * lda]; y = lt::cj(f[j + k * lda]); }
        v += std::complex<double>(std::real(x), std::imag(x)) * std::complex<double>(std::real(y), std::imag(y));
      }
      T aij = (up ? i <= j : i >= j) ? a0[i + j * lda] : lt::cj(a0[j + i * lda]);
      s += std::abs(std::complex<double>(std::real(aij), std::imag(aij)) - v);
    }
    worst = std::max(worst, s);
  }
  return worst / (n * lt::norm1(n, n, a0, lda) * lt::eps<T>());
}

TYPED_TEST(CholTyped, FactorResidualAcrossTiers) {
  using T = TypeParam;
  for (idx n : {1, 2, 16, 17, 60, 127, 128, 129, 300, 520}) {
    for (char u : {'U', 'L', 'u', 'l'}) {
      idx lda = n + 2;
      auto a0 = lt::spd_matrix<T>(n, lda, static_cast<unsigned>(n));
      // Poison the unreferenced triangle and the padding.
      bool up = u == 'U' || u == 'u';
      for (idx j = 0; j < n; ++j)
        for (idx i = 0; i < lda; ++i)
          if (i >= n || (up ? i > j : i < j)) a0[i + j * lda] = T(-1e10);
      auto a = a0;
      idx info = -1;
      char s[2] = {u, 0};
      lp::potrf<T>(s, &n, a.data(), &lda, &info);
      ASSERT_EQ(info, 0) << n << u;
      EXPECT_LT(chol_residual<T>(up, n, a0.data(), a.data(), lda), 30.0) << n << u;
      for (idx j = 0; j < n; ++j)
        for (idx i = 0; i < lda; ++i)
          if (i >= n || (up ? i > j : i < j)) ASSERT_EQ(a[i + j * lda], a0[i + j * lda]);
    }
  }
}

TYPED_TEST(CholTyped, TiledAndBlockedAgree) {
  using T = TypeParam;
  idx n = 700, lda = 701;
  for (bool up : {true, false}) {
    auto a0 = lt::spd_matrix<T>(n, lda, 3);
    for (int threads : {1, 2, 3}) {
      auto a = a0;
      idx info = -1;
      int stop = threads == 1 ? lp::potrf_blocked<T>(up, n, a.data(), lda, &info)
                              : lp::potrf_tiled<T>(up, n, a.data(), lda, &info, 128, threads);
      ASSERT_EQ(stop, 0);
      ASSERT_EQ(info, 0);
      EXPECT_LT(chol_residual<T>(up, n, a0.data(), a.data(), lda), 30.0) << threads;
    }
  }
}

// A leading minor that is not positive definite stops the factorization at
// its order, in every tier.
TEST(Chol, NotPositiveDefiniteReportsOrder) {
  for (idx n : {5, 16, 40, 200, 700}) {
    for (idx k : {idx(3), n - 1}) {
      for (char u : {'U', 'L'}) {
        auto a = lt::spd_matrix<double>(n, n, 9);
        // Make the leading minor of order k singular: a(k,k) so that the
        // Schur complement is negative.
        a[(k - 1) + (k - 1) * n] = -1.0;
        idx info = 0;
        char s[2] = {u, 0};
        lp::potrf<double>(s, &n, a.data(), &n, &info);
        EXPECT_EQ(info, k) << n << " " << k << u;
      }
    }
  }
  idx n = 3, info = 0;
  double nanm[9] = {1, 0, 0, 0, NAN, 0, 0, 0, 1};
  lp::potrf<double>("L", &n, nanm, &n, &info);
  EXPECT_EQ(info, 2);
}

TYPED_TEST(CholTyped, SolveResidual) {
  using T = TypeParam;
  for (idx n : {3, 50, 200}) {
    for (idx nrhs : {1, 5}) {
      for (char u : {'U', 'L'}) {
        idx lda = n, ldb = n + 1;
        auto a0 = lt::spd_matrix<T>(n, lda, 4);
        // Full Hermitian copy for the residual.
        auto full = a0;
        auto b0 = lt::random_matrix<T>(n, nrhs, ldb, 5);
        auto a = a0;
        auto x = b0;
        idx info = -1;
        char s[2] = {u, 0};
        lp::posv<T>(s, &n, &nrhs, a.data(), &lda, x.data(), &ldb, &info);
        ASSERT_EQ(info, 0);
        EXPECT_LT(lt::solve_residual('N', n, nrhs, full.data(), lda, x.data(), ldb, b0.data(), ldb), 3000.0);
      }
    }
  }
}

namespace {
std::string g_stage;
int stop_chol(const nxl_int *, const nxl_int *, const char *stage, nxl_int len) {
  g_stage.assign(stage, static_cast<size_t>(len));
  return 1;
}
}  // namespace

TEST(Chol, ProgressStop) {
  nxl_progress_fn old = nxl_serv_set_progress(stop_chol);
  for (idx n : {17, 127, 300, 900}) {
    auto a = lt::spd_matrix<std::complex<double>>(n, n, 1);
    idx info = 0;
    lp::potrf<std::complex<double>>("U", &n, a.data(), &n, &info);
    EXPECT_EQ(info, -1002) << n;
    EXPECT_EQ(g_stage, "ZPOTRF");
  }
  nxl_serv_set_progress(old == nxl_serv_default_progress ? nullptr : old);
}

namespace {
std::vector<long long> g_chol_steps;
int record_chol(const nxl_int *, const nxl_int *step, const char *, nxl_int) {
  g_chol_steps.push_back(*step);
  return 0;
}
}  // namespace

// n <= 16: small kernel, silent; 17..127: the unblocked kernel of the
// triangle, one report with step n; from 128 on the blocked or tiled tiers.
TEST(Chol, TierThresholdsSeenThroughProgress) {
  nxl_progress_fn old = nxl_serv_set_progress(record_chol);
  for (idx n : {16, 17, 127, 128, 600}) {
    for (const char *u : {"U", "l"}) {
      g_chol_steps.clear();
      auto a = lt::spd_matrix<double>(n, n, 6);
      idx info = 0;
      lp::potrf<double>(u, &n, a.data(), &n, &info);
      ASSERT_EQ(info, 0);
      if (n == 16) {
        EXPECT_TRUE(g_chol_steps.empty());
      } else if (n < 128) {
        ASSERT_EQ(g_chol_steps.size(), 1u);
        EXPECT_EQ(g_chol_steps[0], n);
      } else {
        ASSERT_FALSE(g_chol_steps.empty());
        EXPECT_EQ(*std::max_element(g_chol_steps.begin(), g_chol_steps.end()), n);
      }
    }
  }
  nxl_serv_set_progress(old == nxl_serv_default_progress ? nullptr : old);
}

// ---------------------------------------------------------------------------
// The tiled tier and its tile graph.

// n = 127 | 128 switches from the unblocked kernel to the blocked (one
// thread) or tiled (a team) tier; the tiled tier alone holds a data area.
TEST(CholTiers, ThresholdsAndGraphArea) {
  struct Case { idx n; int threads; bool tiled; };
  for (const Case &c : {Case{127, 2, false}, Case{128, 1, false}, Case{128, 2, true}, Case{600, 1, false},
                        Case{600, 2, true}, Case{600, 4, true}}) {
    for (const char *u : {"U", "L"}) {
      lt::ScopedThreads th(c.threads);
      lt::HeldBlocks h;
      auto a = lt::spd_matrix<double>(c.n, c.n, 2);
      idx info = -1, n = c.n;
      lp::potrf<double>(u, &n, a.data(), &n, &info);
      ASSERT_EQ(info, 0);
      ASSERT_FALSE(h.blocks.empty());
      if (c.tiled) EXPECT_GE(h.extra(), 1) << c.n << " " << c.threads << u;
      else EXPECT_EQ(h.extra(), 0) << c.n << " " << c.threads << u;
      EXPECT_EQ(h.left(), 0);
    }
  }
}

// Every tier with 1 to 4 threads, both triangles, all precisions.
TYPED_TEST(CholTyped, TeamSizesResidual) {
  using T = TypeParam;
  for (idx n : {200, 451}) {
    idx lda = n + 1;
    auto a0 = lt::spd_matrix<T>(n, lda, static_cast<unsigned>(n));
    for (int threads = 1; threads <= 4; ++threads) {
      for (bool up : {true, false}) {
        lt::ScopedThreads th(threads);
        auto a = a0;
        idx info = -1;
        lp::potrf<T>(up ? "U" : "L", &n, a.data(), &lda, &info);
        ASSERT_EQ(info, 0);
        EXPECT_LT(chol_residual<T>(up, n, a0.data(), a.data(), lda), 30.0) << n << " threads " << threads << up;
      }
    }
  }
}

// A minor that is not positive definite in the first tile, a middle tile or
// the last one is reported at its order by the tiled tier, whatever the team.
TYPED_TEST(CholTyped, TiledIndefinite) {
  using T = TypeParam;
  idx n = 400;
  auto a0 = lt::spd_matrix<T>(n, n, 5);
  for (idx k : {idx(2), idx(97), idx(250), n}) {
    for (int threads : {1, 2, 3}) {
      for (bool up : {true, false}) {
        auto a = a0;
        a[(k - 1) + (k - 1) * n] = T(-1);
        idx info = 0;
        ASSERT_EQ(lp::potrf_tiled<T>(up, n, a.data(), n, &info, 96, threads), 0);
        EXPECT_EQ(info, k) << k << " threads " << threads << up;
      }
    }
  }
}

// A stop at the first report or later gives -1002 in every tier and leaves
// no block of the memory manager behind.
TEST(CholTiers, ProgressStopReleasesEverything) {
  struct Case { idx n; int threads; };
  for (const Case &c : {Case{17, 2}, Case{300, 1}, Case{600, 1}, Case{600, 2}, Case{600, 3}}) {
    for (int at : {0, 2}) {
      if (c.n < 128 && at > 0) continue;  // one report only
      lt::ScopedThreads th(c.threads);
      lt::HeldBlocks h;
      lt::HeldBlocks::stop_after = at;
      auto a = lt::spd_matrix<float>(c.n, c.n, 7);
      idx info = 0, n = c.n;
      lp::potrf<float>("L", &n, a.data(), &n, &info);
      EXPECT_EQ(info, -1002) << c.n << " threads " << c.threads << " at " << at;
      EXPECT_EQ(h.left(), 0) << c.n << " threads " << c.threads;
    }
  }
}

// The task list replayed in order finds every input complete; each tile
// gets its j updates and its final operation exactly once; the tile bounds
// keep the graph small.
TEST(CholTeam, TileGraphIsTopological) {
  for (idx n : {100, 1000, 2001}) {
    for (idx t : {96, 128, 500}) {
      lp::dag1st g;
      lp::dag1st_init(&g, n, t);
      EXPECT_EQ(g.nt, (n + t - 1) / t);
      std::vector<char> area(lp::dag1st_dagdatasize(&g) + 64);
      void *p = reinterpret_cast<void *>((reinterpret_cast<uintptr_t>(area.data()) + 63) & ~uintptr_t(63));
      idx count = lp::dag1st_committiles(&g, p);
      EXPECT_EQ(count, g.ntasks);
      idx nt = g.nt;
      std::vector<idx> done(static_cast<size_t>(nt * nt), 0);
      auto at = [&](idx i, idx j) -> idx & { return done[static_cast<size_t>(i + j * nt)]; };
      for (idx q = 0; q < g.ntasks; ++q) {
        const lp::team_task &tk = g.tasks[q];
        idx i = tk.a, j = tk.b, k = tk.c;
        ASSERT_GE(i, j);
        ASSERT_EQ(at(i, j), k) << q;
        switch (tk.kind) {
          case lp::kDagPotrf: ASSERT_TRUE(i == k && j == k); break;
          case lp::kDagTrsm: ASSERT_EQ(j, k); ASSERT_EQ(at(k, k), k + 1); break;
          case lp::kDagSyrk: ASSERT_EQ(i, j); ASSERT_EQ(at(j, k), k + 1); break;
          default: ASSERT_GT(i, j); ASSERT_EQ(at(i, k), k + 1); ASSERT_EQ(at(j, k), k + 1); break;
        }
        at(i, j) = k + 1;
        EXPECT_EQ(lp::dag1st_tile(&g, i, j) < nt * (nt + 1) / 2, true);
      }
      for (idx j = 0; j < nt; ++j)
        for (idx i = j; i < nt; ++i) EXPECT_EQ(at(i, j), j + 1) << i << "," << j;
      idx mt = lp::dag1st_maxtiles(&g, 2);
      EXPECT_GE(mt, 2);
      EXPECT_LE(mt, 64);
      EXPECT_LE(lp::dag1st_maxtilesreduce(&g, mt), mt);
    }
  }
}
