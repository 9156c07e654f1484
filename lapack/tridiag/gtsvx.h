// gtsvx: expert driver for op(A) X = B with a tridiagonal matrix: LU
// factorization (unless given), condition estimate, solve and refinement
// with error bounds.
#ifndef NXL_LAPACK_TRIDIAG_GTSVX_H
#define NXL_LAPACK_TRIDIAG_GTSVX_H

#include "lapack/tridiag/gtcon.h"
#include "lapack/tridiag/gtrfs.h"
#include "lapack/tridiag/gttrf.h"
#include "lapack/tridiag/langt.h"

namespace nxl {
namespace lapack {

template <class T>
void gtsvx(const char *fact, const char *trans, const idx *pn, const idx *pnrhs, const T *dl, const T *d, const T *du,
           T *dlf, T *df, T *duf, T *du2, idx *ipiv, const T *b, const idx *pldb, T *x, const idx *pldx,
           real_t<T> *rcond, real_t<T> *ferr, real_t<T> *berr, T *work, void *, idx *info) {
  using R = real_t<T>;
  idx n = *pn, nrhs = *pnrhs, ldb = *pldb, ldx = *pldx;
  *info = 0;
  char fa = upper(fact), tr = upper(trans);
  if (fa != 'N' && fa != 'F') return report<T>("GTSVX", 1, info);
  if (tr != 'N' && tr != 'T' && tr != 'C') return report<T>("GTSVX", 2, info);
  if (n < 0) return report<T>("GTSVX", 3, info);
  if (nrhs < 0) return report<T>("GTSVX", 4, info);
  if (ldb < imax(1, n)) return report<T>("GTSVX", 14, info);
  if (ldx < imax(1, n)) return report<T>("GTSVX", 16, info);
  if (!is_complex_v<T> && tr == 'C') tr = 'T';
  if (fa == 'N') {
    for (idx i = 0; i < n; ++i) df[i] = d[i];
    for (idx i = 0; i + 1 < n; ++i) {
      dlf[i] = dl[i];
      duf[i] = du[i];
    }
    gttrf_work<T>(n, dlf, df, duf, du2, ipiv, info);
    if (*info > 0) {
      *rcond = 0;
      return;
    }
  }
  char nm[2] = {tr == 'N' ? 'O' : 'I', 0};
  R anorm = langt<T>(nm, &n, dl, d, du);
  Work<T> cw(2 * n);
  Work<idx> iw(n);
  if (n > 0 && (!cw || !iw)) return report<T>("GTSVX", 1089, nullptr);
  gtcon_work<T>(nm[0], n, dlf, df, duf, du2, ipiv, anorm, rcond, cw.get(), iw.get());
  for (idx j = 0; j < nrhs; ++j)
    for (idx i = 0; i < n; ++i) x[i + j * ldx] = b[i + j * ldb];
  gttrs_work<T>(tr, n, nrhs, dlf, df, duf, du2, ipiv, x, ldx);
  TridiagOps<T> ops{{}, tr, n, dl, d, du, dlf, df, duf, du2, ipiv};
  refine<T>(n, nrhs, b, ldb, x, ldx, ferr, berr, ops, "GTSVX", info);
  if (*rcond < lamch<R>('E')) *info = n + 1;
  (void)work;
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRIDIAG_GTSVX_H
