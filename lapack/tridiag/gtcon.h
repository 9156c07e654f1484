// Reciprocal condition number of a tridiagonal matrix from its gttrf
// factors, in the one- or infinity-norm. The complex forms have no integer
// work array.
#ifndef NXL_LAPACK_TRIDIAG_GTCON_H
#define NXL_LAPACK_TRIDIAG_GTCON_H

#include "lapack/lu/gecon.h"
#include "lapack/tridiag/gttrs.h"

namespace nxl {
namespace lapack {

template <class T>
void gtcon_work(char norm, idx n, const T *dl, const T *d, const T *du, const T *du2, const idx *ipiv,
                real_t<T> anorm, real_t<T> *rcond, T *work, idx *isgn) {
  *rcond = 0;
  for (idx i = 0; i < n; ++i)
    if (d[i] == T(0)) return;
  bool one = norm == 'O' || norm == '1';
  char ct = is_complex_v<T> ? 'C' : 'T';
  rcond_by_solves<T>(n, anorm, rcond, work, isgn, [&](T *x, idx kase) {
    gttrs_vec<T>((kase == 1) == one ? 'N' : ct, n, dl, d, du, du2, ipiv, x);
  });
}

template <class T>
void gtcon_check(const char *norm, idx n, real_t<T> anorm, idx *info) {
  *info = 0;
  char nm = upper(norm);
  if (nm != 'O' && nm != '1' && nm != 'I') return report<T>("GTCON", 1, info);
  if (n < 0) return report<T>("GTCON", 2, info);
  if (anorm < 0) return report<T>("GTCON", 8, info);
}

// Real forms: (..., work, iwork, info).
template <class T>
void gtcon(const char *norm, const idx *pn, const T *dl, const T *d, const T *du, const T *du2, const idx *ipiv,
           const real_t<T> *anorm, real_t<T> *rcond, T *work, idx *iwork, idx *info) {
  gtcon_check<T>(norm, *pn, *anorm, info);
  if (*info == 0) gtcon_work<T>(upper(norm), *pn, dl, d, du, du2, ipiv, *anorm, rcond, work, iwork);
}

// Complex forms: (..., work, info).
template <class T>
void gtcon_c(const char *norm, const idx *pn, const T *dl, const T *d, const T *du, const T *du2, const idx *ipiv,
             const real_t<T> *anorm, real_t<T> *rcond, T *work, idx *info) {
  gtcon_check<T>(norm, *pn, *anorm, info);
  if (*info == 0) gtcon_work<T>(upper(norm), *pn, dl, d, du, du2, ipiv, *anorm, rcond, work, nullptr);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRIDIAG_GTCON_H
