// Cholesky factorization A = U^H U or A = L L^H of a Hermitian (symmetric)
// positive definite matrix, in tiers:
//   - n <= 16: the code path's small kernel;
//   - n below the crossover (128): the code path's unblocked kernel for the
//     triangle, then one progress report;
//   - one thread: right-looking blocked (potrf_blocked): diagonal block,
//     triangular solve for the panel, rank-k update of the trailing matrix;
//   - a team: tiles with a task graph (potrf_tiled, dag1st in
//     lapack/threads/team.h): each tile task waits for the tiles it reads, so
//     factorization, solves and updates of different steps overlap.
#ifndef NXL_LAPACK_CHOL_POTRF_H
#define NXL_LAPACK_CHOL_POTRF_H

#include <omp.h>
#include "lapack/common.h"
#include "lapack/ps/ps.h"
#include "lapack/threads/team.h"
#include "lapack/tuning/tuning.h"

namespace nxl {
namespace lapack {

template <class T> inline int potrf_progress(idx thread, idx step) {
  Name<T> nm("POTRF");
  return nxl_serv_progress(&thread, &step, nm.s, 6);
}

// Blocked factorization of one diagonal tile with one-thread BLAS. Returns
// the order of the first non-positive minor, 0 on success.
template <class T> idx potrf_tile(bool up, idx n, T *a, idx lda) {
  using R = real_t<T>;
  const idx nb = 48;
  idx info = 0;
  const char *u = up ? "U" : "L";
  if (n <= nb) {
    if (up) ps::potrf_u_small(u, n, a, lda, &info);
    else ps::potrf_l_small(u, n, a, lda, &info);
    return info;
  }
  for (idx j = 0; j < n; j += nb) {
    idx jb = imin(nb, n - j);
    T *d = a + j + j * lda;
    if (up) ps::potrf_u_small(u, jb, d, lda, &info);
    else ps::potrf_l_small(u, jb, d, lda, &info);
    if (info) return info + j;
    idx r = n - j - jb;
    if (r > 0) {
      if (up) {
        blas::trsm_seq('L', 'U', 'C', 'N', jb, r, T(1), d, lda, d + jb * lda, lda);
        blas::herk_seq('U', 'C', r, jb, R(-1), d + jb * lda, lda, R(1), d + jb + jb * lda, lda);
      } else {
        blas::trsm_seq('R', 'L', 'C', 'N', r, jb, T(1), d, lda, d + jb, lda);
        blas::herk_seq('L', 'N', r, jb, R(-1), d + jb, lda, R(1), d + jb + jb * lda, lda);
      }
    }
  }
  return 0;
}

// Sequential blocked algorithm; BLAS calls may thread. Returns 1 when stopped.
template <class T> int potrf_blocked(bool up, idx n, T *a, idx lda, idx *info) {
  using R = real_t<T>;
  const char *u = up ? "U" : "L";
  *info = 0;
  idx nb = ilaenv_t<T>(1, "POTRF", u, n, 1, -1, -1);
  if (nb < 2 || nb >= n) {
    *info = potrf_tile<T>(up, n, a, lda);
    return potrf_progress<T>(0, n) ? 1 : 0;
  }
  for (idx j = 0; j < n; j += nb) {
    idx jb = imin(nb, n - j);
    T *d = a + j + j * lda;
    idx k = jb <= 128 ? potrf_tile<T>(up, jb, d, lda) : 0;
    if (jb > 128) {
      if (potrf_blocked<T>(up, jb, d, lda, &k)) return 1;
    }
    if (k) {
      *info = k + j;
      return 0;
    }
    if (potrf_progress<T>(0, j + jb)) return 1;
    idx r = n - j - jb;
    if (r > 0) {
      if (up) {
        blas::trsm('L', 'U', 'C', 'N', jb, r, T(1), d, lda, d + jb * lda, lda);
        blas::herk('U', 'C', r, jb, R(-1), d + jb * lda, lda, R(1), d + jb + jb * lda, lda);
      } else {
        blas::trsm('R', 'L', 'C', 'N', r, jb, T(1), d, lda, d + jb, lda);
        blas::herk('L', 'N', r, jb, R(-1), d + jb, lda, R(1), d + jb + jb * lda, lda);
      }
    }
  }
  return 0;
}

// Runs the tile graph `g` on `team`. Tile (i, j), i >= j, of the lower
// triangle is the block at rows i t, columns j t; for the upper triangle its
// mirror at rows j t, columns i t. Each task waits for the tiles it reads and
// for the previous update of the tile it writes, then marks that tile.
template <class T> void potrf_dag(bool up, T *a, idx lda, thread_team_ctxt *team, dag1st *g) {
  using R = real_t<T>;
  const idx t = g->t, n = g->n;
  auto tile = [&](idx i, idx j) { return up ? a + j * t + i * t * lda : a + i * t + j * t * lda; };
  auto size = [&](idx i) { return imin(t, n - i * t); };
  auto final_of = [&](idx i, idx k) -> team_counter & { return g->done[dag1st_tile(g, i, k)]; };
  thread_team_run_tasks(team, g->next, g->tasks, g->ntasks, [&](int me, const team_task &tk) {
    const idx i = tk.a, j = tk.b, k = tk.c;
    team_counter &dst = g->done[dag1st_tile(g, i, j)];
    if (!thread_team_wait(team, dst, k)) return false;
    const idx tk_ = size(k);
    switch (tk.kind) {
      case kDagPotrf: {
        idx r = potrf_tile<T>(up, tk_, tile(k, k), lda);
        if (r) {
          thread_team_note_info(team, r + k * t);
          team->stop.store(1);
          return false;
        }
        if (potrf_progress<T>(me, k * t + tk_)) {
          team->stopped.store(1);
          team->stop.store(1);
          return false;
        }
        break;
      }
      case kDagTrsm:
        if (!thread_team_wait(team, final_of(k, k), k + 1)) return false;
        if (up) blas::trsm_seq('L', 'U', 'C', 'N', tk_, size(i), T(1), tile(k, k), lda, tile(i, k), lda);
        else blas::trsm_seq('R', 'L', 'C', 'N', size(i), tk_, T(1), tile(k, k), lda, tile(i, k), lda);
        break;
      case kDagSyrk:
        if (!thread_team_wait(team, final_of(j, k), k + 1)) return false;
        if (up) blas::herk_seq('U', 'C', size(j), tk_, R(-1), tile(j, k), lda, R(1), tile(j, j), lda);
        else blas::herk_seq('L', 'N', size(j), tk_, R(-1), tile(j, k), lda, R(1), tile(j, j), lda);
        break;
      default:
        if (!thread_team_wait(team, final_of(i, k), k + 1) || !thread_team_wait(team, final_of(j, k), k + 1))
          return false;
        if (up)
          blas::gemm_seq('C', 'N', size(j), size(i), tk_, T(-1), tile(j, k), lda, tile(i, k), lda, T(1),
                         tile(i, j), lda);
        else
          blas::gemm_seq('N', 'C', size(i), size(j), tk_, T(-1), tile(i, k), lda, tile(j, k), lda, T(1),
                         tile(i, j), lda);
        break;
    }
    dst.v.store(k + 1, std::memory_order_release);
    return true;
  });
}

// The tiled tier: the graph for tiles of order t (their number bounded for
// the team), its data area from the memory manager as the team's shared work
// area, the run, and the release. Returns 1 when the progress function
// stopped it; a graph that finds no memory falls back to the blocked tier.
template <class T> int potrf_tiled(bool up, idx n, T *a, idx lda, idx *info, idx t, int threads) {
  *info = 0;
  dag1st g;
  dag1st_init(&g, n, t);
  int size = threads;
  if (size > g.nt) size = static_cast<int>(g.nt);
  if (size < 1) size = 1;
  idx mt = dag1st_maxtiles(&g, size);
  if (size == 1) mt = dag1st_maxtilesreduce(&g, mt);
  if (g.nt > mt) dag1st_init(&g, n, (n + mt - 1) / mt);
  thread_team_ctxt team;
  if (thread_team_ctxt_init(&team, size, dag1st_dagdatasize(&g)) != 0)
    return potrf_blocked<T>(up, n, a, lda, info);
  dag1st_committiles(&g, team.work);
  potrf_dag<T>(up, a, lda, &team, &g);
  int stopped = team.stopped.load();
  *info = team.info.load();
  thread_team_ctxt_destroy(&team);
  return stopped;
}

template <class T> void potrf(const char *uplo, const idx *pn, T *a, const idx *plda, idx *info) {
  idx n = *pn, lda = *plda;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("POTRF", 1, info);
  if (n < 0) return report<T>("POTRF", 2, info);
  if (lda < imax(1, n)) return report<T>("POTRF", 4, info);
  if (n == 0) return;
  if (n <= 16) {
    ps::potrf_small(uplo, n, a, lda, info);
    return;
  }
  idx nx = ilaenv_t<T>(3, "POTRF", uplo, n, -1, -1, -1);
  if (nx > n) {
    if (up) ps::potrf_u_small(uplo, n, a, lda, info);
    else ps::potrf_l_small(uplo, n, a, lda, info);
    if (potrf_progress<T>(0, n)) *info = -1002;
    return;
  }
  int threads = nxl_serv_get_max_threads();
  if (threads < 1 || omp_in_parallel()) threads = 1;
  int stop = 0;
  if (threads == 1) {
    stop = potrf_blocked<T>(up, n, a, lda, info);
  } else {
    idx t = ilaenv_dt_f(prefix<T>(), n, threads);
    if (t > 1 && t < n) stop = potrf_tiled<T>(up, n, a, lda, info, t, threads);
    else stop = potrf_blocked<T>(up, n, a, lda, info);
  }
  if (stop) *info = -1002;
}

// Unblocked factorization (the standard's potf2), with its own checks.
template <class T> void potf2(const char *uplo, const idx *pn, T *a, const idx *plda, idx *info) {
  idx n = *pn, lda = *plda;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("POTF2", 1, info);
  if (n < 0) return report<T>("POTF2", 2, info);
  if (lda < imax(1, n)) return report<T>("POTF2", 4, info);
  if (n == 0) return;
  if (up) ps::potrf_u_small(uplo, n, a, lda, info);
  else ps::potrf_l_small(uplo, n, a, lda, info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_CHOL_POTRF_H
