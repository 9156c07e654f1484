// LU factorization with partial pivoting, A = P L U, in three tiers:
//   - max(m, n) <= 16: the small kernel of the code path;
//   - the sequential recursive blocked algorithm (getrf_local): panels of the
//     oracle's width, each factored by a recursive call that picks its own
//     width for its shape, down to the unblocked column algorithm (getf2);
//   - the threaded algorithm (getrf_team): right-looking by panels with
//     look-ahead; one thread updates the next panel and factors it while the
//     team shares the rest of the trailing update in column chunks.
// The progress function is asked after every unblocked leaf; a non-zero
// answer stops the factorization with info = -1002.
#ifndef NXL_LAPACK_LU_GETRF_H
#define NXL_LAPACK_LU_GETRF_H

#include <atomic>
#include <omp.h>
#include "lapack/common.h"
#include "lapack/lu/laswp.h"
#include "lapack/ps/ps.h"

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

// Sequential recursive blocked LU. Returns non-zero when stopped.
template <class T>
int getrf_local(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info, idx pthread, idx poffset) {
  *info = 0;
  idx mn = imin(m, n);
  if (mn == 0) return 0;
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

// Panel widths of the threaded tier: wider panels on the 512-bit paths and
// for larger matrices, so that the trailing updates are rank-k products with
// k large enough for the matrix-product kernels.
inline idx team_panel_width(idx m, idx n, int threads, bool cplx) {
  idx mn = imin(m, n);
  int cp = nxl_serv_cpu_detect();
  idx nb = mn <= 400 ? 32 : mn <= 1200 ? 64 : mn <= 3000 ? 128 : 192;
  if (cp < 5 && nb > 64) nb = 64;
  if (cplx && nb > 96) nb = 96;
  (void)threads;
  return nb;
}

// Updates columns [c0, c1) with the factored panel of rows/columns k0..k0+jb.
template <class T>
void team_update(idx m, T *a, idx lda, const idx *ipiv, idx k0, idx jb, idx c0, idx c1) {
  if (c1 <= c0) return;
  idx w = c1 - c0;
  laswp_cols<T>(c0, c1, a, lda, k0 + 1, k0 + jb, ipiv, 1);
  T *akk = a + k0 + k0 * lda;
  T *b = a + k0 + c0 * lda;
  blas::trsm_seq('L', 'L', 'N', 'U', jb, w, T(1), akk, lda, b, lda);
  if (k0 + jb < m)
    blas::gemm_seq('N', 'N', m - k0 - jb, w, jb, T(-1), akk + jb, lda, b, lda, T(1), b + jb, lda);
}

// Factors the panel at column k0 (width jb) and turns its pivots global.
template <class T>
int team_panel(idx m, T *a, idx lda, idx *ipiv, idx k0, idx jb, idx *info, idx thread) {
  idx pinfo = 0;
  int stop = getrf_local<T>(m - k0, jb, a + k0 + k0 * lda, lda, ipiv + k0, &pinfo, thread, k0);
  if (*info == 0 && pinfo > 0) *info = pinfo + k0;
  for (idx i = k0; i < imin(m, k0 + jb); ++i) ipiv[i] += k0;
  return stop;
}

// The team's factorization (a team of one runs it on the calling thread).
template <class T>
int getrf_team(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info, int threads, idx nb) {
  idx mn = imin(m, n);
  idx np = (mn + nb - 1) / nb;
  const idx chunk = imax(nb, 256);
  std::atomic<int> stop{0};
  std::atomic<idx> next{0};
  *info = 0;
  if (team_panel<T>(m, a, lda, ipiv, 0, imin(nb, mn), info, 0)) return 1;

  auto step = [&](idx k, int tid, int nthr) {
    idx k0 = k * nb, jb = imin(nb, mn - k0);
    idx k1 = k0 + jb;
    idx rest0 = k1;
    if (tid == 0 && k + 1 < np) {
      idx jb1 = imin(nb, mn - k1);
      team_update<T>(m, a, lda, ipiv, k0, jb, k1, k1 + jb1);
      if (team_panel<T>(m, a, lda, ipiv, k1, jb1, info, 0)) stop.store(1);
    }
    if (k + 1 < np) rest0 = k1 + imin(nb, mn - k1);
    // Remaining columns in chunks, taken in turn by whichever thread is free.
    for (;;) {
      idx c = next.fetch_add(1);
      idx c0 = rest0 + c * chunk;
      if (c0 >= n) break;
      team_update<T>(m, a, lda, ipiv, k0, jb, c0, imin(n, c0 + chunk));
    }
    (void)nthr;
  };

  if (threads <= 1) {
    for (idx k = 0; k < np && !stop.load(); ++k) {
      next.store(0);
      step(k, 0, 1);
    }
  } else {
#pragma omp parallel num_threads(threads)
    {
      int tid = omp_get_thread_num(), nthr = omp_get_num_threads();
      for (idx k = 0; k < np; ++k) {
#pragma omp barrier
        if (stop.load()) break;
#pragma omp single
        next.store(0);
        step(k, tid, nthr);
      }
    }
  }
  if (stop.load()) return 1;
  for (idx k = 1; k < np; ++k) {
    idx k0 = k * nb, jb = imin(nb, mn - k0);
    swap_rows<T>(k0, a, lda, k0 + 1, k0 + jb, ipiv, 1);
  }
  return 0;
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
  if (threads < 1) threads = 1;
  idx nb = team_panel_width(m, n, threads, is_complex_v<T>);
  idx mn = imin(m, n);
  int team = threads;
  if (team > (mn + nb - 1) / nb) team = static_cast<int>((mn + nb - 1) / nb);
  if (omp_in_parallel()) team = 1;
  if (nb >= mn) {
    if (getrf_local<T>(m, n, a, lda, ipiv, info, 0, 0)) *info = -1002;
    return;
  }
  if (getrf_team<T>(m, n, a, lda, ipiv, info, team, nb)) *info = -1002;
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_LU_GETRF_H
