// Inverse of a general matrix from its LU factors: inv(A) = inv(U) inv(L) P,
// computed as inv(U) in place, then X L = inv(U) solved for X by block
// columns from the right, then the column interchanges in reverse order.
#ifndef NXL_LAPACK_LU_GETRI_H
#define NXL_LAPACK_LU_GETRI_H

#include "lapack/tri/trtri.h"

namespace nxl {
namespace lapack {

template <class T>
void getri(const idx *pn, T *a, const idx *plda, const idx *ipiv, T *work, const idx *plwork, idx *info) {
  idx n = *pn, lda = *plda, lwork = *plwork;
  *info = 0;
  idx nb = ilaenv_t<T>(1, "GETRI", " ", n, -1, -1, -1);
  if (nb < 1) nb = 1;
  bool query = lwork == -1;
  if (work) work[0] = work_size<T>(imax(1, n * nb));
  if (n < 0) return report<T>("GETRI", 1, info);
  if (lda < imax(1, n)) return report<T>("GETRI", 3, info);
  if (lwork < imax(1, n) && !query) return report<T>("GETRI", 6, info);
  if (query || n == 0) return;
  trtri_work<T>(true, false, n, a, lda, info);
  if (*info > 0) return;
  idx ldw = n;
  if (nb < n && lwork < n * nb) nb = imax(1, lwork / imax(1, n));
  if (nb < 2 || nb >= n) {
    for (idx j = n - 1; j >= 0; --j) {
      for (idx i = j + 1; i < n; ++i) {
        work[i] = a[i + j * lda];
        a[i + j * lda] = T(0);
      }
      if (j < n - 1)
        blas::gemv('N', n, n - j - 1, T(-1), a + (j + 1) * lda, lda, work + j + 1, 1, T(1), a + j * lda, 1);
    }
  } else {
    idx nn = ((n - 1) / nb) * nb;
    for (idx j = nn; j >= 0; j -= nb) {
      idx jb = imin(nb, n - j);
      for (idx jj = j; jj < j + jb; ++jj)
        for (idx i = jj + 1; i < n; ++i) {
          work[i + (jj - j) * ldw] = a[i + jj * lda];
          a[i + jj * lda] = T(0);
        }
      if (j + jb < n)
        blas::gemm('N', 'N', n, jb, n - j - jb, T(-1), a + (j + jb) * lda, lda, work + j + jb, ldw, T(1),
                   a + j * lda, lda);
      blas::trsm('R', 'L', 'N', 'U', n, jb, T(1), work + j, ldw, a + j * lda, lda);
    }
  }
  for (idx j = n - 2; j >= 0; --j) {
    idx jp = ipiv[j] - 1;
    if (jp != j) blas::swap(n, a + j * lda, 1, a + jp * lda, 1);
  }
  work[0] = work_size<T>(imax(1, n * nb));
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_LU_GETRI_H
