// Solves A X = B for a Hermitian positive definite tridiagonal A (d real
// diagonal, e subdiagonal): pttrf, then the solve with the lower factors.
#ifndef NXL_LAPACK_TRIDIAG_PTSV_H
#define NXL_LAPACK_TRIDIAG_PTSV_H

#include "lapack/tridiag/pttrf.h"
#include "lapack/tridiag/pttrs.h"

namespace nxl {
namespace lapack {

template <class T>
void ptsv(const idx *pn, const idx *pnrhs, real_t<T> *d, T *e, T *b, const idx *pldb, idx *info) {
  idx n = *pn, nrhs = *pnrhs, ldb = *pldb;
  *info = 0;
  if (n < 0) return report<T>("PTSV", 1, info);
  if (nrhs < 0) return report<T>("PTSV", 2, info);
  if (ldb < imax(1, n)) return report<T>("PTSV", 6, info);
  pttrf_work<T>(n, d, e, info);
  if (*info == 0) pttrs_work<T>(false, n, nrhs, d, e, b, ldb);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRIDIAG_PTSV_H
