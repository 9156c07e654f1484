// ptsvx: expert driver for A X = B with a Hermitian positive definite
// tridiagonal matrix (e the subdiagonal): factorization unless given,
// condition estimate, solve and refinement with error bounds.
#ifndef NXL_LAPACK_TRIDIAG_PTSVX_H
#define NXL_LAPACK_TRIDIAG_PTSVX_H

#include "lapack/tridiag/ptcon.h"
#include "lapack/tridiag/ptrfs.h"
#include "lapack/tridiag/pttrf.h"

namespace nxl {
namespace lapack {

template <class T>
void ptsvx_work(const char *fact, idx n, idx nrhs, const real_t<T> *d, const T *e, real_t<T> *df, T *ef,
                const T *b, idx ldb, T *x, idx ldx, real_t<T> *rcond, real_t<T> *ferr, real_t<T> *berr, idx *info) {
  using R = real_t<T>;
  *info = 0;
  char fa = upper(fact);
  if (fa != 'N' && fa != 'F') return report<T>("PTSVX", 1, info);
  if (n < 0) return report<T>("PTSVX", 2, info);
  if (nrhs < 0) return report<T>("PTSVX", 3, info);
  if (ldb < imax(1, n)) return report<T>("PTSVX", 9, info);
  if (ldx < imax(1, n)) return report<T>("PTSVX", 11, info);
  if (fa == 'N') {
    for (idx i = 0; i < n; ++i) df[i] = d[i];
    for (idx i = 0; i + 1 < n; ++i) ef[i] = e[i];
    pttrf_work<T>(n, df, ef, info);
    if (*info > 0) {
      *rcond = 0;
      return;
    }
  }
  R anorm = 0;
  for (idx j = 0; j < n; ++j) {
    R s = std::fabs(d[j]);
    if (j > 0) s += absv(e[j - 1]);
    if (j + 1 < n) s += absv(e[j]);
    anorm = std::max(anorm, s);
  }
  ptcon_work<T>(n, df, ef, anorm, rcond, info);
  for (idx j = 0; j < nrhs; ++j)
    for (idx i = 0; i < n; ++i) x[i + j * ldx] = b[i + j * ldb];
  pttrs_work<T>(false, n, nrhs, df, ef, x, ldx);
  PosTridiagOps<T> ops{{}, false, n, d, df, e, ef};
  refine<T>(n, nrhs, b, ldb, x, ldx, ferr, berr, ops, "PTSVX", info);
  if (*rcond < lamch<R>('E')) *info = n + 1;
}

template <class T>
void ptsvx(const char *fact, const idx *n, const idx *nrhs, const real_t<T> *d, const T *e, real_t<T> *df, T *ef,
           const T *b, const idx *ldb, T *x, const idx *ldx, real_t<T> *rcond, real_t<T> *ferr, real_t<T> *berr, T *,
           idx *info) {
  ptsvx_work<T>(fact, *n, *nrhs, d, e, df, ef, b, *ldb, x, *ldx, rcond, ferr, berr, info);
}
template <class T>
void ptsvx_c(const char *fact, const idx *n, const idx *nrhs, const real_t<T> *d, const T *e, real_t<T> *df, T *ef,
             const T *b, const idx *ldb, T *x, const idx *ldx, real_t<T> *rcond, real_t<T> *ferr, real_t<T> *berr,
             T *, real_t<T> *, idx *info) {
  ptsvx_work<T>(fact, *n, *nrhs, d, e, df, ef, b, *ldb, x, *ldx, rcond, ferr, berr, info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRIDIAG_PTSVX_H
