// Reciprocal condition number (one-norm) of a Hermitian positive definite
// tridiagonal matrix from its pttrf factors. The work array of length n is
// real in every precision.
#ifndef NXL_LAPACK_TRIDIAG_PTCON_H
#define NXL_LAPACK_TRIDIAG_PTCON_H

#include "lapack/lu/gecon.h"
#include "lapack/tridiag/pttrs.h"

namespace nxl {
namespace lapack {

template <class T>
void ptcon_work(idx n, const real_t<T> *d, const T *e, real_t<T> anorm, real_t<T> *rcond, idx *info) {
  using R = real_t<T>;
  *rcond = 0;
  for (idx i = 0; i < n; ++i)
    if (!(d[i] > R(0))) return;
  Work<T> w(2 * n);
  Work<idx> isgn(n);
  if (n > 0 && (!w || !isgn)) return report<T>("PTCON", 1089, nullptr);
  rcond_by_solves<T>(n, anorm, rcond, w.get(), isgn.get(),
                     [&](T *x, idx) { pttrs_vec<T>(false, n, d, e, x); });
  (void)info;
}

template <class T>
void ptcon(const idx *pn, const real_t<T> *d, const T *e, const real_t<T> *anorm, real_t<T> *rcond, real_t<T> *,
           idx *info) {
  *info = 0;
  if (*pn < 0) return report<T>("PTCON", 1, info);
  if (*anorm < 0) return report<T>("PTCON", 4, info);
  ptcon_work<T>(*pn, d, e, *anorm, rcond, info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRIDIAG_PTCON_H
