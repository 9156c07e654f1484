// Solve A X = B, A^T X = B or A^H X = B with the LU factors of getrf.
#ifndef NXL_LAPACK_LU_GETRS_H
#define NXL_LAPACK_LU_GETRS_H

#include "lapack/common.h"
#include "lapack/lu/laswp.h"
#include "lapack/ps/ps.h"

namespace nxl {
namespace lapack {

// The solve after the argument checks.
template <class T>
void getrs_work(char tr, idx n, idx nrhs, const T *a, idx lda, const idx *ipiv, T *b, idx ldb) {
  if (n == 0 || nrhs == 0) return;
  if (tr == 'N') {
    swap_rows<T>(nrhs, b, ldb, 1, n, ipiv, 1);
    if (nrhs == 1) {
      blas::trsv('L', 'N', 'U', n, a, lda, b, 1);
      blas::trsv('U', 'N', 'N', n, a, lda, b, 1);
    } else {
      blas::trsm('L', 'L', 'N', 'U', n, nrhs, T(1), a, lda, b, ldb);
      blas::trsm('L', 'U', 'N', 'N', n, nrhs, T(1), a, lda, b, ldb);
    }
  } else {
    if (nrhs == 1) {
      blas::trsv('U', tr, 'N', n, a, lda, b, 1);
      blas::trsv('L', tr, 'U', n, a, lda, b, 1);
    } else {
      blas::trsm('L', 'U', tr, 'N', n, nrhs, T(1), a, lda, b, ldb);
      blas::trsm('L', 'L', tr, 'U', n, nrhs, T(1), a, lda, b, ldb);
    }
    swap_rows<T>(nrhs, b, ldb, 1, n, ipiv, -1);
  }
}

template <class T>
void getrs(const char *trans, const idx *pn, const idx *pnrhs, const T *a, const idx *plda, const idx *ipiv, T *b,
           const idx *pldb, idx *info) {
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ldb = *pldb;
  if (n <= 8 && nrhs <= 8) {
    ps::getrs_small(trans, n, nrhs, a, lda, ipiv, b, ldb, info);
    return;
  }
  *info = 0;
  char tr = upper(trans);
  if (tr != 'N' && tr != 'T' && tr != 'C') return report<T>("GETRS", 1, info);
  if (n < 0) return report<T>("GETRS", 2, info);
  if (nrhs < 0) return report<T>("GETRS", 3, info);
  if (lda < imax(1, n)) return report<T>("GETRS", 5, info);
  if (ldb < imax(1, n)) return report<T>("GETRS", 8, info);
  // One right-hand side while the factors fit in L2, or a real order of up
  // to two vectors of elements with any number of them: the code path's
  // kernel (it repeats the checks, which pass); the others go to the level-2
  // or blocked solves.
  if ((n <= 768 && nrhs == 1) || (!is_complex_v<T> && tr == 'N' && n * idx(sizeof(T)) <= 128)) {
    ps::getrs_small(trans, n, nrhs, a, lda, ipiv, b, ldb, info);
    return;
  }
  if (!is_complex_v<T> && tr == 'C') tr = 'T';
  getrs_work<T>(tr, n, nrhs, a, lda, ipiv, b, ldb);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_LU_GETRS_H
