// Solves A X = B for a general band matrix: gbtrf, then gbtrs.
#ifndef NXL_LAPACK_BAND_GBSV_H
#define NXL_LAPACK_BAND_GBSV_H

#include "lapack/band/gbtrf.h"
#include "lapack/band/gbtrs.h"

namespace nxl {
namespace lapack {

template <class T>
void gbsv(const idx *pn, const idx *pkl, const idx *pku, const idx *pnrhs, T *ab, const idx *pldab, idx *ipiv, T *b,
          const idx *pldb, idx *info) {
  idx n = *pn, kl = *pkl, ku = *pku, nrhs = *pnrhs, ldab = *pldab, ldb = *pldb;
  *info = 0;
  if (n < 0) return report<T>("GBSV", 1, info);
  if (kl < 0) return report<T>("GBSV", 2, info);
  if (ku < 0) return report<T>("GBSV", 3, info);
  if (nrhs < 0) return report<T>("GBSV", 4, info);
  if (ldab < 2 * kl + ku + 1) return report<T>("GBSV", 6, info);
  if (ldb < imax(1, n)) return report<T>("GBSV", 9, info);
  gbtf2_work<T>(n, n, kl, ku, ab, ldab, ipiv, info);
  if (*info == 0) gbtrs_work<T>('N', n, kl, ku, nrhs, ab, ldab, ipiv, b, ldb);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_BAND_GBSV_H
