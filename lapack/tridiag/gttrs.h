// Solves A X = B, A^T X = B or A^H X = B with the tridiagonal LU factors of
// gttrf.
#ifndef NXL_LAPACK_TRIDIAG_GTTRS_H
#define NXL_LAPACK_TRIDIAG_GTTRS_H

#include "lapack/band/gbtrs.h"

namespace nxl {
namespace lapack {

template <class T>
void gttrs_vec(char tr, idx n, const T *dl, const T *d, const T *du, const T *du2, const idx *ipiv, T *b) {
  if (n == 0) return;
  if (tr == 'N') {
    for (idx i = 0; i + 1 < n; ++i) {
      if (ipiv[i] != i + 1) std::swap(b[i], b[i + 1]);
      b[i + 1] -= dl[i] * b[i];
    }
    b[n - 1] = div(b[n - 1], d[n - 1]);
    if (n > 1) b[n - 2] = div(b[n - 2] - du[n - 2] * b[n - 1], d[n - 2]);
    for (idx i = n - 3; i >= 0; --i) b[i] = div(b[i] - du[i] * b[i + 1] - du2[i] * b[i + 2], d[i]);
  } else {
    bool c = tr == 'C';
    b[0] = div(b[0], op_conj(d[0], c));
    if (n > 1) b[1] = div(b[1] - op_conj(du[0], c) * b[0], op_conj(d[1], c));
    for (idx i = 2; i < n; ++i)
      b[i] = div(b[i] - op_conj(du[i - 1], c) * b[i - 1] - op_conj(du2[i - 2], c) * b[i - 2], op_conj(d[i], c));
    for (idx i = n - 2; i >= 0; --i) {
      b[i] -= op_conj(dl[i], c) * b[i + 1];
      if (ipiv[i] != i + 1) std::swap(b[i], b[i + 1]);
    }
  }
}

template <class T>
void gttrs_work(char tr, idx n, idx nrhs, const T *dl, const T *d, const T *du, const T *du2, const idx *ipiv, T *b,
                idx ldb) {
  for (idx k = 0; k < nrhs; ++k) gttrs_vec<T>(tr, n, dl, d, du, du2, ipiv, b + k * ldb);
}

template <class T>
void gttrs(const char *trans, const idx *pn, const idx *pnrhs, const T *dl, const T *d, const T *du, const T *du2,
           const idx *ipiv, T *b, const idx *pldb, idx *info) {
  idx n = *pn, nrhs = *pnrhs, ldb = *pldb;
  *info = 0;
  char tr = upper(trans);
  if (tr != 'N' && tr != 'T' && tr != 'C') return report<T>("GTTRS", 1, info);
  if (n < 0) return report<T>("GTTRS", 2, info);
  if (nrhs < 0) return report<T>("GTTRS", 3, info);
  if (ldb < imax(1, n)) return report<T>("GTTRS", 10, info);
  if (!is_complex_v<T> && tr == 'C') tr = 'T';
  gttrs_work<T>(tr, n, nrhs, dl, d, du, du2, ipiv, b, ldb);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRIDIAG_GTTRS_H
