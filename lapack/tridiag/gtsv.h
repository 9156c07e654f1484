// Solves A X = B for a tridiagonal A by Gaussian elimination with partial
// pivoting, all right-hand sides at once. On exit d and du hold the diagonal
// and first superdiagonal of U and dl its second superdiagonal.
#ifndef NXL_LAPACK_TRIDIAG_GTSV_H
#define NXL_LAPACK_TRIDIAG_GTSV_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

template <class T>
void gtsv(const idx *pn, const idx *pnrhs, T *dl, T *d, T *du, T *b, const idx *pldb, idx *info) {
  idx n = *pn, nrhs = *pnrhs, ldb = *pldb;
  *info = 0;
  if (n < 0) return report<T>("GTSV", 1, info);
  if (nrhs < 0) return report<T>("GTSV", 2, info);
  if (ldb < imax(1, n)) return report<T>("GTSV", 7, info);
  if (n == 0) return;
  for (idx i = 0; i + 1 < n; ++i) {
    if (abs1(d[i]) >= abs1(dl[i])) {
      if (d[i] == T(0)) {
        *info = i + 1;
        return;
      }
      T f = div(dl[i], d[i]);
      d[i + 1] -= f * du[i];
      for (idx k = 0; k < nrhs; ++k) b[i + 1 + k * ldb] -= f * b[i + k * ldb];
      if (i + 2 < n) dl[i] = T(0);
    } else {
      T f = div(d[i], dl[i]);
      d[i] = dl[i];
      T t = d[i + 1];
      d[i + 1] = du[i] - f * t;
      if (i + 2 < n) {
        dl[i] = du[i + 1];
        du[i + 1] = -f * dl[i];
      }
      du[i] = t;
      for (idx k = 0; k < nrhs; ++k) {
        T *bk = b + k * ldb;
        T bi = bk[i];
        bk[i] = bk[i + 1];
        bk[i + 1] = bi - f * bk[i + 1];
      }
    }
  }
  if (d[n - 1] == T(0)) {
    *info = n;
    return;
  }
  for (idx k = 0; k < nrhs; ++k) {
    T *bk = b + k * ldb;
    bk[n - 1] = div(bk[n - 1], d[n - 1]);
    if (n > 1) bk[n - 2] = div(bk[n - 2] - du[n - 2] * bk[n - 1], d[n - 2]);
    for (idx i = n - 3; i >= 0; --i) bk[i] = div(bk[i] - du[i] * bk[i + 1] - dl[i] * bk[i + 2], d[i]);
  }
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRIDIAG_GTSV_H
