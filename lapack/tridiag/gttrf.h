// LU factorization with partial pivoting of a tridiagonal matrix: L has unit
// diagonal and one subdiagonal (the multipliers, in dl), U has the diagonal
// d and two superdiagonals (du and du2, the second one from interchanges).
#ifndef NXL_LAPACK_TRIDIAG_GTTRF_H
#define NXL_LAPACK_TRIDIAG_GTTRF_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

template <class T> void gttrf_work(idx n, T *dl, T *d, T *du, T *du2, idx *ipiv, idx *info) {
  *info = 0;
  if (n == 0) return;
  for (idx i = 0; i + 2 < n; ++i) du2[i] = T(0);
  for (idx i = 0; i + 1 < n; ++i) {
    if (abs1(d[i]) >= abs1(dl[i])) {
      ipiv[i] = i + 1;
      if (d[i] != T(0)) {
        T f = div(dl[i], d[i]);
        dl[i] = f;
        d[i + 1] -= f * du[i];
      }
    } else {
      // Rows i and i + 1 change places before the elimination.
      ipiv[i] = i + 2;
      T f = div(d[i], dl[i]);
      d[i] = dl[i];
      dl[i] = f;
      T t = du[i];
      du[i] = d[i + 1];
      d[i + 1] = t - f * d[i + 1];
      if (i + 2 < n) {
        du2[i] = du[i + 1];
        du[i + 1] = -f * du[i + 1];
      }
    }
  }
  ipiv[n - 1] = n;
  for (idx i = 0; i < n; ++i)
    if (d[i] == T(0)) {
      *info = i + 1;
      return;
    }
}

template <class T> void gttrf(const idx *pn, T *dl, T *d, T *du, T *du2, idx *ipiv, idx *info) {
  idx n = *pn;
  *info = 0;
  if (n < 0) return report<T>("GTTRF", 1, info);
  gttrf_work<T>(n, dl, d, du, du2, ipiv, info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRIDIAG_GTTRF_H
