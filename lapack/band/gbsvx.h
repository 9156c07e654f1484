// gbsvx: expert driver for op(A) X = B with a band matrix: optional
// equilibration, band LU, condition estimate, solve, refinement with error
// bounds, reciprocal pivot growth in work[0] (real forms) or rwork[0]
// (complex forms).
#ifndef NXL_LAPACK_BAND_GBSVX_H
#define NXL_LAPACK_BAND_GBSVX_H

#include "lapack/band/gbcon.h"
#include "lapack/band/gbequ.h"
#include "lapack/band/gbrfs.h"
#include "lapack/band/gbtrf.h"
#include "lapack/band/langb.h"

namespace nxl {
namespace lapack {

// max |A| over the first k columns of the band of A divided by max |U| over
// the same columns; 1 when U vanishes there.
template <class T>
real_t<T> band_pivot_growth(idx n, idx kl, idx ku, idx k, const T *ab, idx ldab, const T *afb, idx ldafb) {
  using R = real_t<T>;
  R amax = 0, umax = 0;
  for (idx j = 0; j < k; ++j) {
    for (idx i = imax(0, j - ku); i <= imin(n - 1, j + kl); ++i)
      amax = std::max(amax, absv(ab[ku + i - j + j * ldab]));
    for (idx i = imax(0, j - kl - ku); i <= j; ++i) umax = std::max(umax, absv(afb[kl + ku + i - j + j * ldafb]));
  }
  return umax == R(0) ? R(1) : amax / umax;
}

template <class T>
void gbsvx(const char *fact, const char *trans, const idx *pn, const idx *pkl, const idx *pku, const idx *pnrhs,
           T *ab, const idx *pldab, T *afb, const idx *pldafb, idx *ipiv, char *equed, real_t<T> *r, real_t<T> *c,
           T *b, const idx *pldb, T *x, const idx *pldx, real_t<T> *rcond, real_t<T> *ferr, real_t<T> *berr,
           T *work, void *iwork_or_rwork, idx *info) {
  using R = real_t<T>;
  idx n = *pn, kl = *pkl, ku = *pku, nrhs = *pnrhs, ldab = *pldab, ldafb = *pldafb, ldb = *pldb, ldx = *pldx;
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
  if (!nofact && !equil && fa != 'F') return report<T>("GBSVX", 1, info);
  if (tr != 'N' && tr != 'T' && tr != 'C') return report<T>("GBSVX", 2, info);
  if (n < 0) return report<T>("GBSVX", 3, info);
  if (kl < 0) return report<T>("GBSVX", 4, info);
  if (ku < 0) return report<T>("GBSVX", 5, info);
  if (nrhs < 0) return report<T>("GBSVX", 6, info);
  if (ldab < kl + ku + 1) return report<T>("GBSVX", 8, info);
  if (ldafb < 2 * kl + ku + 1) return report<T>("GBSVX", 10, info);
  if (fa == 'F') {
    char e = upper(equed);
    if (e != 'N' && !rowequ && !colequ) return report<T>("GBSVX", 12, info);
  }
  if (rowequ && !scale_ratio<R>(n, r, &rowcnd)) return report<T>("GBSVX", 13, info);
  if (colequ && !scale_ratio<R>(n, c, &colcnd)) return report<T>("GBSVX", 14, info);
  if (ldb < imax(1, n)) return report<T>("GBSVX", 16, info);
  if (ldx < imax(1, n)) return report<T>("GBSVX", 18, info);
  if (!is_complex_v<T> && tr == 'C') tr = 'T';

  if (equil) {
    idx infequ = 0;
    gbequ<T>(&n, &n, &kl, &ku, ab, &ldab, r, c, &rowcnd, &colcnd, &amax, &infequ);
    if (infequ == 0) {
      laqgb<T>(&n, &n, &kl, &ku, ab, &ldab, r, c, &rowcnd, &colcnd, &amax, equed);
      rowequ = *equed == 'R' || *equed == 'B';
      colequ = *equed == 'C' || *equed == 'B';
    }
  }
  const R *sb = notran ? (rowequ ? r : nullptr) : (colequ ? c : nullptr);
  if (sb)
    for (idx j = 0; j < nrhs; ++j)
      for (idx i = 0; i < n; ++i) b[i + j * ldb] *= sb[i];
  if (nofact || equil) {
    // Copy the band of A below the kl fill-in rows of afb and factor it.
    for (idx j = 0; j < n; ++j)
      for (idx i = imax(0, j - ku); i <= imin(n - 1, j + kl); ++i)
        afb[kl + ku + i - j + j * ldafb] = ab[ku + i - j + j * ldab];
    gbtf2_work<T>(n, n, kl, ku, afb, ldafb, ipiv, info);
    if (*info > 0) {
      rpv[0] = band_pivot_growth<T>(n, kl, ku, *info, ab, ldab, afb, ldafb);
      *rcond = 0;
      return;
    }
  }
  R rpvgrw = band_pivot_growth<T>(n, kl, ku, n, ab, ldab, afb, ldafb);
  char nm = notran ? 'O' : 'I';
  char nms[2] = {nm, 0};
  Work<R> rowsum(n);
  Work<T> cw(2 * n);
  Work<idx> iw(n);
  if (n > 0 && (!cw || !iw || !rowsum)) return report<T>("GBSVX", 1089, nullptr);
  R anorm = langb<T>(nms, &n, &kl, &ku, ab, &ldab, rowsum.get());
  gbcon_work<T>(nm, n, kl, ku, afb, ldafb, ipiv, anorm, rcond, cw.get(), iw.get());
  for (idx j = 0; j < nrhs; ++j)
    for (idx i = 0; i < n; ++i) x[i + j * ldx] = b[i + j * ldb];
  gbtrs_work<T>(tr, n, kl, ku, nrhs, afb, ldafb, ipiv, x, ldx);
  BandOps<T> ops{tr, n, kl, ku, ab, afb, ldab, ldafb, ipiv};
  refine<T>(n, nrhs, b, ldb, x, ldx, ferr, berr, ops, "GBSVX", info);
  const R *sx = notran ? (colequ ? c : nullptr) : (rowequ ? r : nullptr);
  if (sx) {
    R cnd = notran ? colcnd : rowcnd;
    for (idx j = 0; j < nrhs; ++j)
      for (idx i = 0; i < n; ++i) x[i + j * ldx] *= sx[i];
    for (idx j = 0; j < nrhs; ++j) ferr[j] /= cnd;
  }
  if (*rcond < lamch<R>('E')) *info = n + 1;
  rpv[0] = rpvgrw;
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_BAND_GBSVX_H
