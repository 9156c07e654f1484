// Max-abs, one, infinity or Frobenius norm of a tridiagonal matrix given by
// its subdiagonal dl, diagonal d and superdiagonal du.
#ifndef NXL_LAPACK_TRIDIAG_LANGT_H
#define NXL_LAPACK_TRIDIAG_LANGT_H

#include "lapack/aux/norms.h"

namespace nxl {
namespace lapack {

template <class T> real_t<T> langt(const char *norm, const idx *pn, const T *dl, const T *d, const T *du) {
  idx n = *pn;
  if (n <= 0) return 0;
  auto get = [&](idx i, idx j) { return i == j ? d[j] : i > j ? dl[j] : du[i]; };
  auto rows = [&](idx j, idx &lo, idx &hi) { lo = imax(0, j - 1); hi = imin(n, j + 2); };
  Work<real_t<T>> w(n);
  return norm_by_columns<T>(upper(norm), n, n, get, rows, w.get());
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRIDIAG_LANGT_H
