// gesvx: expert driver for A X = B (or A^T, A^H): optional equilibration,
// LU factorization, condition estimate, solve, refinement with error bounds,
// reciprocal pivot growth in work[0] (real forms) or rwork[0] (complex).
#ifndef NXL_LAPACK_LU_GESVX_H
#define NXL_LAPACK_LU_GESVX_H

#include "lapack/aux/copy.h"
#include "lapack/aux/norms.h"
#include "lapack/aux/scale.h"
#include "lapack/lu/gecon.h"
#include "lapack/lu/geequ.h"
#include "lapack/lu/gerfs.h"
#include "lapack/lu/getrf.h"

namespace nxl {
namespace lapack {

template <class T>
void gesvx(const char *fact, const char *trans, const idx *pn, const idx *pnrhs, T *a, const idx *plda, T *af,
           const idx *pldaf, idx *ipiv, char *equed, real_t<T> *r, real_t<T> *c, T *b, const idx *pldb, T *x,
           const idx *pldx, real_t<T> *rcond, real_t<T> *ferr, real_t<T> *berr, T *work, void *iwork_or_rwork,
           idx *info) {
  using R = real_t<T>;
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ldaf = *pldaf, ldb = *pldb, ldx = *pldx;
  *info = 0;
  char fa = upper(fact), tr = upper(trans);
  bool nofact = fa == 'N', equil = fa == 'E', notran = tr == 'N';
  bool rowequ = false, colequ = false;
  R rowcnd = 1, colcnd = 1, amax = 0;
  R *rpv = is_complex_v<T> ? static_cast<R *>(iwork_or_rwork) : reinterpret_cast<R *>(work);
  if (nofact || equil) {
    *equed = 'N';
  } else {
    char e = upper(equed);
    rowequ = e == 'R' || e == 'B';
    colequ = e == 'C' || e == 'B';
  }
  if (!nofact && !equil && fa != 'F') return report<T>("GESVX", 1, info);
  if (tr != 'N' && tr != 'T' && tr != 'C') return report<T>("GESVX", 2, info);
  if (n < 0) return report<T>("GESVX", 3, info);
  if (nrhs < 0) return report<T>("GESVX", 4, info);
  if (lda < imax(1, n)) return report<T>("GESVX", 6, info);
  if (ldaf < imax(1, n)) return report<T>("GESVX", 8, info);
  if (fa == 'F') {
    char e = upper(equed);
    if (e != 'N' && !rowequ && !colequ) return report<T>("GESVX", 10, info);
  }
  if (rowequ && !scale_ratio<R>(n, r, &rowcnd)) return report<T>("GESVX", 11, info);
  if (colequ && !scale_ratio<R>(n, c, &colcnd)) return report<T>("GESVX", 12, info);
  if (ldb < imax(1, n)) return report<T>("GESVX", 14, info);
  if (ldx < imax(1, n)) return report<T>("GESVX", 16, info);
  if (!is_complex_v<T> && tr == 'C') tr = 'T';

  if (equil) {
    idx infequ = 0;
    geequ_work<T, false>("GEEQU", n, n, a, lda, r, c, &rowcnd, &colcnd, &amax, &infequ);
    if (infequ == 0) {
      laqge<T>(&n, &n, a, &lda, r, c, &rowcnd, &colcnd, &amax, equed);
      rowequ = *equed == 'R' || *equed == 'B';
      colequ = *equed == 'C' || *equed == 'B';
    }
  }
  if (notran) {
    if (rowequ)
      for (idx j = 0; j < nrhs; ++j)
        for (idx i = 0; i < n; ++i) b[i + j * ldb] *= r[i];
  } else if (colequ) {
    for (idx j = 0; j < nrhs; ++j)
      for (idx i = 0; i < n; ++i) b[i + j * ldb] *= c[i];
  }
  R rpvgrw = 1;
  if (nofact || equil) {
    lacpy<T>("Full", &n, &n, a, &lda, af, &ldaf);
    getrf<T>(&n, &n, af, &ldaf, ipiv, info);
    if (*info > 0) {
      idx k = *info;
      R u = lantr<T>("M", "U", "N", &k, &k, af, &ldaf, nullptr);
      rpvgrw = u == R(0) ? R(1) : lange<T>("M", &n, &k, a, &lda, nullptr) / u;
      rpv[0] = rpvgrw;
      *rcond = 0;
      return;
    }
  }
  char nm = notran ? '1' : 'I';
  char nms[2] = {nm, 0};
  Work<R> rowsum(n);
  R anorm = lange<T>(nms, &n, &n, a, &lda, rowsum.get());
  R u = lantr<T>("M", "U", "N", &n, &n, af, &ldaf, nullptr);
  rpvgrw = u == R(0) ? R(1) : lange<T>("M", &n, &n, a, &lda, nullptr) / u;
  Work<T> cw(2 * n);
  Work<idx> iw(n);
  if (n > 0 && (!cw || !iw)) return report<T>("GESVX", 1089, nullptr);
  gecon_work<T>(nm == '1' ? 'O' : 'I', n, af, ldaf, anorm, rcond, cw.get(), iw.get());
  lacpy<T>("Full", &n, &nrhs, b, &ldb, x, &ldx);
  getrs_work<T>(tr, n, nrhs, af, ldaf, ipiv, x, ldx);
  GeneralOps<T> ops{tr, n, a, af, lda, ldaf, ipiv};
  refine<T>(n, nrhs, b, ldb, x, ldx, ferr, berr, ops, "GESVX", info);
  if (notran) {
    if (colequ) {
      for (idx j = 0; j < nrhs; ++j)
        for (idx i = 0; i < n; ++i) x[i + j * ldx] *= c[i];
      for (idx j = 0; j < nrhs; ++j) ferr[j] /= colcnd;
    }
  } else if (rowequ) {
    for (idx j = 0; j < nrhs; ++j)
      for (idx i = 0; i < n; ++i) x[i + j * ldx] *= r[i];
    for (idx j = 0; j < nrhs; ++j) ferr[j] /= rowcnd;
  }
  if (*rcond < lamch<R>('E')) *info = n + 1;
  rpv[0] = rpvgrw;
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_LU_GESVX_H
