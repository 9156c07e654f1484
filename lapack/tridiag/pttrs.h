// Solves A X = B with the factors of pttrf: A = L D L^H (lower: e is the
// subdiagonal of L) or A = U^H D U (upper: e is the superdiagonal of U).
// The real forms have no uplo argument.
#ifndef NXL_LAPACK_TRIDIAG_PTTRS_H
#define NXL_LAPACK_TRIDIAG_PTTRS_H

#include "lapack/band/gbtrs.h"

namespace nxl {
namespace lapack {

template <class T> void pttrs_vec(bool up, idx n, const real_t<T> *d, const T *e, T *b) {
  // The lower factor has subdiagonal e (lower) or conj(e) (upper).
  for (idx i = 1; i < n; ++i) b[i] -= op_conj(e[i - 1], up) * b[i - 1];
  for (idx i = 0; i < n; ++i) b[i] /= d[i];
  for (idx i = n - 2; i >= 0; --i) b[i] -= op_conj(e[i], !up) * b[i + 1];
}

template <class T>
void pttrs_work(bool up, idx n, idx nrhs, const real_t<T> *d, const T *e, T *b, idx ldb) {
  for (idx k = 0; k < nrhs; ++k) pttrs_vec<T>(up, n, d, e, b + k * ldb);
}

template <class T>
void pttrs_checked(const char *uplo, idx pos, idx n, idx nrhs, const real_t<T> *d, const T *e, T *b, idx ldb,
                   idx *info) {
  *info = 0;
  bool up = uplo && same(uplo, 'U');
  if (uplo && !up && !same(uplo, 'L')) return report<T>("PTTRS", 1, info);
  if (n < 0) return report<T>("PTTRS", pos + 1, info);
  if (nrhs < 0) return report<T>("PTTRS", pos + 2, info);
  if (ldb < imax(1, n)) return report<T>("PTTRS", pos + 6, info);
  pttrs_work<T>(up, n, nrhs, d, e, b, ldb);
}

template <class T>
void pttrs(const idx *n, const idx *nrhs, const real_t<T> *d, const T *e, T *b, const idx *ldb, idx *info) {
  pttrs_checked<T>(nullptr, 0, *n, *nrhs, d, e, b, *ldb, info);
}
template <class T>
void pttrs_c(const char *uplo, const idx *n, const idx *nrhs, const real_t<T> *d, const T *e, T *b, const idx *ldb,
             idx *info) {
  pttrs_checked<T>(uplo, 1, *n, *nrhs, d, e, b, *ldb, info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRIDIAG_PTTRS_H
