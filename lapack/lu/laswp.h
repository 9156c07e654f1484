// laswp: row interchanges k1..k2 (1-based, ipiv order given by incx) applied
// to n columns of A. Columns are taken in groups so that each group's rows
// stay in cache while all interchanges run over it; large calls split the
// groups among threads.
#ifndef NXL_LAPACK_LU_LASWP_H
#define NXL_LAPACK_LU_LASWP_H

#include <omp.h>
#include "lapack/common.h"

namespace nxl {
namespace lapack {

template <class T>
void laswp_cols(idx c0, idx c1, T *a, idx lda, idx k1, idx k2, const idx *ipiv, idx incx) {
  constexpr idx group = 32;
  for (idx g = c0; g < c1; g += group) {
    idx ge = imin(c1, g + group);
    if (incx > 0) {
      const idx *p = ipiv + (k1 - 1);
      for (idx i = k1; i <= k2; ++i, p += incx) {
        idx r = *p;
        if (r == i) continue;
        T *x = a + (i - 1), *y = a + (r - 1);
        for (idx c = g; c < ge; ++c) {
          T t = x[c * lda];
          x[c * lda] = y[c * lda];
          y[c * lda] = t;
        }
      }
    } else {
      const idx *p = ipiv + (1 - k2) * incx;
      for (idx i = k2; i >= k1; --i, p += incx) {
        idx r = *p;
        if (r == i) continue;
        T *x = a + (i - 1), *y = a + (r - 1);
        for (idx c = g; c < ge; ++c) {
          T t = x[c * lda];
          x[c * lda] = y[c * lda];
          y[c * lda] = t;
        }
      }
    }
  }
}

template <class T>
void laswp(const idx *pn, T *a, const idx *plda, const idx *pk1, const idx *pk2, const idx *ipiv,
           const idx *pincx) {
  idx n = *pn, lda = *plda, k1 = *pk1, k2 = *pk2, incx = *pincx;
  if (incx == 0 || n <= 0 || k2 < k1) return;
  idx work = n * (k2 - k1 + 1);
  int nt = 1;
  if (work >= 65536 && n >= 64 && !omp_in_parallel()) {
    nt = nxl_serv_get_max_threads();
    if (nt > n / 32) nt = static_cast<int>(n / 32);
    if (nt < 1) nt = 1;
  }
  if (nt <= 1) {
    laswp_cols(0, n, a, lda, k1, k2, ipiv, incx);
    return;
  }
#pragma omp parallel num_threads(nt)
  {
    idx t = omp_get_thread_num(), p = omp_get_num_threads();
    idx c0 = n * t / p, c1 = n * (t + 1) / p;
    laswp_cols(c0, c1, a, lda, k1, k2, ipiv, incx);
  }
}

// The same with by-value arguments for internal callers.
template <class T> inline void swap_rows(idx n, T *a, idx lda, idx k1, idx k2, const idx *ipiv, idx incx) {
  laswp<T>(&n, a, &lda, &k1, &k2, ipiv, &incx);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_LU_LASWP_H
