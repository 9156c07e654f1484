// Cholesky factorization A = U^H U or A = L L^H of a Hermitian (symmetric)
// positive definite matrix, in tiers:
//   - n <= 16: the code path's small kernel;
//   - n below the crossover (128): the code path's unblocked kernel for the
//     triangle, then one progress report;
//   - one thread: right-looking blocked (potrf_blocked): diagonal block,
//     triangular solve for the panel, rank-k update of the trailing matrix;
//   - a team: tiles with a task graph (potrf_tiled): each tile task waits for
//     the tiles it reads, so factorization, solves and updates of different
//     steps overlap.
#ifndef NXL_LAPACK_CHOL_POTRF_H
#define NXL_LAPACK_CHOL_POTRF_H

#include <atomic>
#include <omp.h>
#include <vector>
#include "lapack/common.h"
#include "lapack/ps/ps.h"
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

// Tiled algorithm on a team; tiles of order t (the last ones smaller).
template <class T> int potrf_tiled(bool up, idx n, T *a, idx lda, idx *info, idx t, int threads) {
  using R = real_t<T>;
  idx nt = (n + t - 1) / t;
  std::vector<char> tok(static_cast<size_t>(nt * nt));
  char *tk = tok.data();
  std::atomic<int> halt{0};
  std::atomic<idx> fail{0};
  std::atomic<int> stopped{0};
  auto tile = [&](idx i, idx j) { return a + i * t + j * t * lda; };
  auto size = [&](idx i) { return imin(t, n - i * t); };
#pragma omp parallel num_threads(threads)
#pragma omp single
  for (idx k = 0; k < nt; ++k) {
    idx tkk = size(k);
#pragma omp task depend(inout : tk[k * nt + k]) firstprivate(k, tkk)
    {
      if (!halt.load(std::memory_order_relaxed)) {
        idx r = potrf_tile<T>(up, tkk, tile(k, k), lda);
        if (r) {
          fail.store(r + k * t);
          halt.store(1);
        } else if (potrf_progress<T>(omp_get_thread_num(), k * t + tkk)) {
          stopped.store(1);
          halt.store(1);
        }
      }
    }
    for (idx i = k + 1; i < nt; ++i) {
      idx ti = size(i);
      // Off-diagonal tile of the factor: row k (upper) or column k (lower).
      char *dep = up ? &tk[i * nt + k] : &tk[k * nt + i];
#pragma omp task depend(in : tk[k * nt + k]) depend(inout : dep[0]) firstprivate(i, k, ti, tkk)
      {
        if (!halt.load(std::memory_order_relaxed)) {
          if (up) blas::trsm_seq('L', 'U', 'C', 'N', tkk, ti, T(1), tile(k, k), lda, tile(k, i), lda);
          else blas::trsm_seq('R', 'L', 'C', 'N', ti, tkk, T(1), tile(k, k), lda, tile(i, k), lda);
        }
      }
    }
    for (idx j = k + 1; j < nt; ++j) {
      idx tj = size(j);
      char *dj = up ? &tk[j * nt + k] : &tk[k * nt + j];
#pragma omp task depend(in : dj[0]) depend(inout : tk[j * nt + j]) firstprivate(j, k, tj, tkk)
      {
        if (!halt.load(std::memory_order_relaxed)) {
          if (up) blas::herk_seq('U', 'C', tj, tkk, R(-1), tile(k, j), lda, R(1), tile(j, j), lda);
          else blas::herk_seq('L', 'N', tj, tkk, R(-1), tile(j, k), lda, R(1), tile(j, j), lda);
        }
      }
      for (idx i = j + 1; i < nt; ++i) {
        idx ti = size(i);
        char *di = up ? &tk[i * nt + k] : &tk[k * nt + i];
        // Tile (j, i) of the upper triangle or (i, j) of the lower one.
        char *dij = up ? &tk[i * nt + j] : &tk[j * nt + i];
#pragma omp task depend(in : dj[0], di[0]) depend(inout : dij[0]) firstprivate(i, j, k, ti, tj, tkk)
        {
          if (!halt.load(std::memory_order_relaxed)) {
            if (up)
              blas::gemm_seq('C', 'N', tj, ti, tkk, T(-1), tile(k, j), lda, tile(k, i), lda, T(1), tile(j, i),
                             lda);
            else
              blas::gemm_seq('N', 'C', ti, tj, tkk, T(-1), tile(i, k), lda, tile(j, k), lda, T(1), tile(i, j),
                             lda);
          }
        }
      }
    }
  }
  if (stopped.load()) return 1;
  *info = fail.load();
  return 0;
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
