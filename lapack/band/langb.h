// Max-abs, one, infinity or Frobenius norm of an n x n band matrix with kl
// sub- and ku superdiagonals (entry (i, j) in row ku + i - j of column j).
#ifndef NXL_LAPACK_BAND_LANGB_H
#define NXL_LAPACK_BAND_LANGB_H

#include "lapack/aux/norms.h"

namespace nxl {
namespace lapack {

template <class T>
real_t<T> langb(const char *norm, const idx *pn, const idx *pkl, const idx *pku, const T *ab, const idx *pldab,
                real_t<T> *work) {
  idx n = *pn, kl = *pkl, ku = *pku, ldab = *pldab;
  if (n <= 0) return 0;
  auto get = [&](idx i, idx j) { return ab[ku + i - j + j * ldab]; };
  auto rows = [&](idx j, idx &lo, idx &hi) { lo = imax(0, j - ku); hi = imin(n, j + kl + 1); };
  return norm_by_columns<T>(upper(norm), n, n, get, rows, work);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_BAND_LANGB_H
