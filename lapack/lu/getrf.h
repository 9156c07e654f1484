// LU factorization with partial pivoting, A = P L U, in three tiers:
//   - max(m, n) <= 16: the small kernel of the code path;
//   - the sequential recursive blocked algorithm (getrf_local): panels of the
//     oracle's width, each factored by a recursive call that picks its own
//     width for its shape, down to the unblocked column algorithm (getf2);
//   - the threaded algorithm (getrf_threaded, xgetrf): right-looking by the
//     panels of a width distribution (nb_dist), run by a thread team over a
//     one-dimensional task graph (cdag1d, lapack/threads/team.h) with
//     look-ahead: the next panel is factored by one member while the others
//     share the rest of the trailing update in column chunks.
// Up to 64 rows and columns the recursion's leaves are column ranges that the
// code path's kernel factors in place, one after the other (getrf_leaves).
// The progress function is asked after every unblocked leaf; a non-zero
// answer stops the factorization with info = -1002.
#ifndef NXL_LAPACK_LU_GETRF_H
#define NXL_LAPACK_LU_GETRF_H

#include <omp.h>
#include "lapack/common.h"
#include "lapack/lu/laswp.h"
#include "lapack/ps/ps.h"
#include "lapack/threads/team.h"
#include "lapack/tuning/tuning.h"

namespace nxl {
namespace lapack {

// Unblocked left-looking LU: each column is first brought up to date with the
// columns already factored (triangular solve, then matrix-vector product),
// then pivoted and scaled.
template <class T> void getf2_work(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info) {
  using R = real_t<T>;
  *info = 0;
  if (m == 0 || n == 0) return;
  // Narrow blocks: the code path's kernel updates the block in place
  // (right-looking, vectorized column updates) without a call per column.
  if (n <= 64 && m <= 4096) {
    ps::getrf_small(m, n, a, lda, ipiv, info);
    return;
  }
  const R sfmin = lamch<R>('S');
  idx k = imin(m, n);
  for (idx j = 0; j < k; ++j) {
    T *cj = a + j * lda;
    if (j > 0) {
      blas::trsv('L', 'N', 'U', j, a, lda, cj, 1);
      blas::gemv('N', m - j, j, T(-1), a + j, lda, cj, 1, T(1), cj + j, 1);
    }
    idx p = j + blas::iamax(m - j, cj + j, 1) - 1;
    if (p < j || p >= m) p = j;
    ipiv[j] = p + 1;
    if (cj[p] != T(0)) {
      if (p != j) blas::swap(n, a + j, lda, a + p, lda);
      T piv = cj[j];
      if (m - j - 1 > 0) {
        if (absv(piv) >= sfmin) blas::scal(m - j - 1, recip(piv), cj + j + 1, 1);
        else
          for (idx i = j + 1; i < m; ++i) cj[i] = div(cj[i], piv);
      }
    } else if (*info == 0) {
      *info = j + 1;
    }
  }
  // Columns right of a wide matrix: U12 = L11^{-1} A12.
  if (n > m) blas::trsm('L', 'L', 'N', 'U', m, n - m, T(1), a, lda, a + m * lda, lda);
}

template <class T> void getf2(const idx *m, const idx *n, T *a, const idx *lda, idx *ipiv, idx *info) {
  getf2_work<T>(*m, *n, a, *lda, ipiv, info);
}

template <class T> inline int progress(idx thread, idx step) {
  Name<T> nm("GETRF");
  return nxl_serv_progress(&thread, &step, nm.s, 6);
}

// The leaves of getrf_local's recursion over the panel of mm rows and nn
// columns at column `off`, factored in order by the code path's kernel as
// column ranges of the whole m x n matrix: right-looking over all of it, so
// no interchange, solve or product runs between the leaves. The progress
// function is asked after each leaf with the recursion's own steps.
template <class T>
int getrf_leaves(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info, idx pthread, idx poffset, idx mm, idx nn,
                 idx off) {
  const idx mn = imin(mm, nn);
  const idx nb = ilaenv_t<T>(1, "GETRF", "S", mm, nn, -1, -1);
  if (nb < 2 || nb >= mn) {
    ps::getrf_cols(m, n, a, lda, ipiv, info, off, off + mn);
    return progress<T>(pthread, nn + off + poffset);
  }
  for (idx j = 0; j < mn; j += nb)
    if (getrf_leaves<T>(m, n, a, lda, ipiv, info, pthread, poffset, mm - j, imin(mn - j, nb), off + j)) return 1;
  return 0;
}

// Sequential recursive blocked LU. Returns non-zero when stopped.
template <class T>
int getrf_local(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info, idx pthread, idx poffset) {
  *info = 0;
  idx mn = imin(m, n);
  if (mn == 0) return 0;
  // Up to 64 rows and columns the whole matrix stays in the small kernels.
  if (m <= 64 && n <= 64) return getrf_leaves<T>(m, n, a, lda, ipiv, info, pthread, poffset, m, n, 0);
  idx nb = ilaenv_t<T>(1, "GETRF", "S", m, n, -1, -1);
  if (nb < 2 || nb >= mn) {
    getf2_work<T>(m, n, a, lda, ipiv, info);
    return progress<T>(pthread, n + poffset);
  }
  for (idx j = 0; j < mn; j += nb) {
    idx jb = imin(mn - j, nb);
    idx pinfo = 0;
    T *ajj = a + j + j * lda;
    if (getrf_local<T>(m - j, jb, ajj, lda, ipiv + j, &pinfo, pthread, poffset + j)) return 1;
    if (*info == 0 && pinfo > 0) *info = pinfo + j;
    for (idx i = j; i < imin(m, j + jb); ++i) ipiv[i] += j;
    if (j + jb < n) {
      swap_rows<T>(n - j - jb, a + (j + jb) * lda, lda, j + 1, j + jb, ipiv, 1);
      blas::trsm('L', 'L', 'N', 'U', jb, n - j - jb, T(1), ajj, lda, ajj + jb * lda, lda);
      if (j + jb < m)
        blas::gemm('N', 'N', m - j - jb, n - j - jb, jb, T(-1), ajj + jb, lda, ajj + jb * lda, lda, T(1),
                   ajj + jb + jb * lda, lda);
    }
  }
  for (idx j = nb; j < mn; j += nb) {
    idx jb = imin(mn - j, nb);
    swap_rows<T>(j, a, lda, j + 1, j + jb, ipiv, 1);
  }
  return 0;
}

// The team's matrix product: the update of columns [c0, c1) by the factored
// panel at column k0 (width jb): its row interchanges, the solve with its unit
// lower triangle and the rank-jb product. The trailing update of each panel
// is cut into such column chunks; the members of the team that are not
// factoring the next panel claim them, so the product runs on the part of the
// team that is free. `seq` selects one-thread BLAS (inside a team) or the
// threaded dispatch (on the calling thread alone).
template <class T>
void xgemm_internal_team(idx m, T *a, idx lda, const idx *ipiv, idx k0, idx jb, idx c0, idx c1, bool seq) {
  if (c1 <= c0) return;
  idx w = c1 - c0;
  T *akk = a + k0 + k0 * lda;
  T *b = a + k0 + c0 * lda;
  if (seq) {
    laswp_cols<T>(c0, c1, a, lda, k0 + 1, k0 + jb, ipiv, 1);
    blas::trsm_seq('L', 'L', 'N', 'U', jb, w, T(1), akk, lda, b, lda);
    if (k0 + jb < m)
      blas::gemm_seq('N', 'N', m - k0 - jb, w, jb, T(-1), akk + jb, lda, b, lda, T(1), b + jb, lda);
  } else {
    swap_rows<T>(w, a + c0 * lda, lda, k0 + 1, k0 + jb, ipiv, 1);
    blas::trsm('L', 'L', 'N', 'U', jb, w, T(1), akk, lda, b, lda);
    if (k0 + jb < m)
      blas::gemm('N', 'N', m - k0 - jb, w, jb, T(-1), akk + jb, lda, b, lda, T(1), b + jb, lda);
  }
}

// Factors panel k of the distribution and turns its pivots global. Returns
// non-zero when the progress function stopped it; *pinfo gets the global
// position of its first zero pivot (0 if none).
template <class T>
int xgetrf_panel(const nb_dist *d, idx k, T *a, idx lda, idx *ipiv, idx *pinfo, idx thread) {
  idx k0, jb;
  nb_dist_get_panel(d, k, &k0, &jb);
  idx m = d->m, local = 0;
  int stop = getrf_local<T>(m - k0, jb, a + k0 + k0 * lda, lda, ipiv + k0, &local, thread, k0);
  *pinfo = local > 0 ? local + k0 : 0;
  for (idx i = k0; i < imin(m, k0 + jb); ++i) ipiv[i] += k0;
  return stop;
}

// The team's factorization over the panels of `d`. With a team and its graph
// the members run the graph's tasks (look-ahead: the panel k+1 is factored as
// soon as its columns are updated, while the rest of the update by panel k
// proceeds); without them the calling thread factors each panel and updates
// the whole trailing matrix in one product. Row interchanges of each panel
// reach the columns left of it at the end. Returns non-zero when stopped.
template <class T>
int xgetrf(const nb_dist *d, T *a, idx lda, idx *ipiv, idx *info, thread_team_ctxt *team, cdag1d *g) {
  idx m = d->m, n = d->n;
  *info = 0;
  if (team == nullptr) {
    for (idx k = 0; k < d->npanels; ++k) {
      idx pinfo = 0, k0, jb;
      if (xgetrf_panel<T>(d, k, a, lda, ipiv, &pinfo, 0)) return 1;
      if (*info == 0) *info = pinfo;
      nb_dist_get_panel(d, k, &k0, &jb);
      xgemm_internal_team<T>(m, a, lda, ipiv, k0, jb, k0 + jb, n, false);
    }
  } else {
    thread_team_run_tasks(team, g->next, g->tasks, g->ntasks, [&](int me, const team_task &tk) {
      idx k = tk.a;
      if (tk.kind == kCdagFactor) {
        if (!thread_team_wait(team, g->level[k], k)) return false;
        idx pinfo = 0;
        if (xgetrf_panel<T>(d, k, a, lda, ipiv, &pinfo, me)) {
          team->stopped.store(1);
          team->stop.store(1);
          return false;
        }
        thread_team_note_info(team, pinfo);
        g->level[k].v.store(k + 1, std::memory_order_release);
        return true;
      }
      if (!thread_team_wait(team, g->level[k], k + 1)) return false;
      for (idx b = tk.b; b < tk.c; ++b)
        if (!thread_team_wait(team, g->level[b], k)) return false;
      idx k0, jb;
      nb_dist_get_panel(d, k, &k0, &jb);
      xgemm_internal_team<T>(m, a, lda, ipiv, k0, jb, d->start[tk.b], d->start[tk.c], true);
      for (idx b = tk.b; b < tk.c; ++b) g->level[b].v.store(k + 1, std::memory_order_release);
      return true;
    });
    if (team->stopped.load()) return 1;
    *info = team->info.load();
  }
  for (idx k = 1; k < d->npanels; ++k) {
    idx k0, jb;
    nb_dist_get_panel(d, k, &k0, &jb);
    swap_rows<T>(k0, a, lda, k0 + 1, k0 + jb, ipiv, 1);
  }
  return 0;
}

// Team size for an m x n factorization with `threads` available: one member
// per two panels at most, so that each member has updates to share.
inline int getrf_team_size(const nb_dist *d, int threads) {
  idx p = d->npanels / 2;
  if (p > threads) p = threads;
  return p < 1 ? 1 : static_cast<int>(p);
}

// The threaded tier: panel distribution, team context, graph in the shared
// work area, the factorization, and the release of all of them in reverse
// order (also after a stop). A team of one, or one panel covering the whole
// matrix, runs the factorization on the calling thread without the team.
template <class T> void getrf_threaded(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info, int threads) {
  idx nb = getrf_team_nb(prefix<T>(), m, n, threads);
  nb_dist d;
  if (nb_dist_init(&d, m, n, nb) != 0) {
    // No memory for the distribution: the sequential tier needs none.
    if (getrf_local<T>(m, n, a, lda, ipiv, info, 0, 0)) *info = -1002;
    return;
  }
  int size = getrf_team_size(&d, threads);
  int stop = 0;
  if (size <= 1 || nb >= imin(m, n)) {
    stop = xgetrf<T>(&d, a, lda, ipiv, info, nullptr, nullptr);
  } else {
    thread_team_ctxt team;
    if (thread_team_ctxt_init(&team, size, cdag1d_datasize(&d, size)) != 0) {
      stop = xgetrf<T>(&d, a, lda, ipiv, info, nullptr, nullptr);
    } else {
      cdag1d g;
      cdag1d_team_init(&g, &d, size, team.work);
      stop = xgetrf<T>(&d, a, lda, ipiv, info, &team, &g);
      cdag1d_destroy(&g);
      thread_team_ctxt_destroy(&team);
    }
  }
  nb_dist_destroy(&d);
  if (stop) *info = -1002;
}

template <class T> void getrf(const idx *pm, const idx *pn, T *a, const idx *plda, idx *ipiv, idx *info) {
  idx m = *pm, n = *pn, lda = *plda;
  *info = 0;
  if (m == 0 || n == 0) return;
  if (imax(m, n) <= 16) {
    ps::getrf_small(m, n, a, lda, ipiv, info);
    return;
  }
  if (ilaenv_t<T>(3, "GETRF", " ", m, n, -1, -1) != 0) {
    if (getrf_local<T>(m, n, a, lda, ipiv, info, 0, 0)) *info = -1002;
    return;
  }
  int threads = nxl_serv_get_max_threads();
  if (threads < 1 || omp_in_parallel()) threads = 1;
  getrf_threaded<T>(m, n, a, lda, ipiv, info, threads);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_LU_GETRF_H
