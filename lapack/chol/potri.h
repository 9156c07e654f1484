// Inverse of a Hermitian positive definite matrix from its Cholesky factor:
// inv(A) = inv(U) inv(U)^H (or inv(L)^H inv(L)), in the same triangle.
#ifndef NXL_LAPACK_CHOL_POTRI_H
#define NXL_LAPACK_CHOL_POTRI_H

#include "lapack/tri/trtri.h"

namespace nxl {
namespace lapack {

template <class T> void potri(const char *uplo, const idx *pn, T *a, const idx *plda, idx *info) {
  idx n = *pn, lda = *plda;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("POTRI", 1, info);
  if (n < 0) return report<T>("POTRI", 2, info);
  if (lda < imax(1, n)) return report<T>("POTRI", 4, info);
  if (n == 0) return;
  trtri_work<T>(up, false, n, a, lda, info);
  if (*info > 0) return;
  lauum_work<T>(up, n, a, lda);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_CHOL_POTRI_H
