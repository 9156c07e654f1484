// Solve A X = B by LU factorization with partial pivoting.
#ifndef NXL_LAPACK_LU_GESV_H
#define NXL_LAPACK_LU_GESV_H

#include "lapack/lu/getrf.h"
#include "lapack/lu/getrs.h"

namespace nxl {
namespace lapack {

template <class T>
void gesv(const idx *pn, const idx *pnrhs, T *a, const idx *plda, idx *ipiv, T *b, const idx *pldb, idx *info) {
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ldb = *pldb;
  *info = 0;
  if (n < 0) return report<T>("GESV", 1, info);
  if (nrhs < 0) return report<T>("GESV", 2, info);
  if (lda < imax(1, n)) return report<T>("GESV", 4, info);
  if (ldb < imax(1, n)) return report<T>("GESV", 7, info);
  getrf<T>(pn, pn, a, plda, ipiv, info);
  if (*info == 0) getrs<T>("No transpose", pn, pnrhs, a, plda, ipiv, b, pldb, info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_LU_GESV_H
