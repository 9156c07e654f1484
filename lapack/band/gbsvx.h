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
#include "lapack/lu/gesvx.h"

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

// A band matrix (kl sub-, ku superdiagonals) and its band LU factors.
template <class T> struct GbStorage {
  using R = real_t<T>;
  idx n, kl, ku;
  T *ab;
  idx ldab;
  T *afb;
  idx ldafb;
  idx *ipiv;
  void equ(R *r, R *c, R *rowcnd, R *colcnd, R *amax, idx *info) {
    gbequ<T>(&n, &n, &kl, &ku, ab, &ldab, r, c, rowcnd, colcnd, amax, info);
  }
  void laq(const R *r, const R *c, R rowcnd, R colcnd, R amax, char *equed) {
    laqgb<T>(&n, &n, &kl, &ku, ab, &ldab, r, c, &rowcnd, &colcnd, &amax, equed);
  }
  // The band of A below the kl fill-in rows of afb, factored.
  idx factor() {
    idx info = 0;
    for (idx j = 0; j < n; ++j)
      for (idx i = imax(0, j - ku); i <= imin(n - 1, j + kl); ++i)
        afb[kl + ku + i - j + j * ldafb] = ab[ku + i - j + j * ldab];
    gbtf2_work<T>(n, n, kl, ku, afb, ldafb, ipiv, &info);
    return info;
  }
  R growth(idx k) { return band_pivot_growth<T>(n, kl, ku, k, ab, ldab, afb, ldafb); }
  R norm(char nm, R *work) {
    char s[2] = {nm, 0};
    return langb<T>(s, &n, &kl, &ku, ab, &ldab, work);
  }
  void con(char nm, R anorm, R *rcond, T *cw, idx *iw) {
    gbcon_work<T>(nm, n, kl, ku, afb, ldafb, ipiv, anorm, rcond, cw, iw);
  }
  void solve(char tr, idx nrhs, T *x, idx ldx) { gbtrs_work<T>(tr, n, kl, ku, nrhs, afb, ldafb, ipiv, x, ldx); }
  BandOps<T> ops(char tr) { return BandOps<T>{tr, n, kl, ku, ab, afb, ldab, ldafb, ipiv}; }
};

template <class T>
void gbsvx(const char *fact, const char *trans, const idx *pn, const idx *pkl, const idx *pku, const idx *pnrhs,
           T *ab, const idx *pldab, T *afb, const idx *pldafb, idx *ipiv, char *equed, real_t<T> *r, real_t<T> *c,
           T *b, const idx *pldb, T *x, const idx *pldx, real_t<T> *rcond, real_t<T> *ferr, real_t<T> *berr,
           T *work, void *iwork_or_rwork, idx *info) {
  idx n = *pn, kl = *pkl, ku = *pku, ldab = *pldab, ldafb = *pldafb;
  SvxFlags<real_t<T>> f;
  idx pre = kl < 0 ? 4 : (ku < 0 ? 5 : 0);
  idx ld = ldab < kl + ku + 1 ? 8 : (ldafb < 2 * kl + ku + 1 ? 10 : 0);
  if (!svx_check<T>("GBSVX", fact, trans, n, *pnrhs, 2, pre, ld, equed, r, c, *pldb, *pldx, f, info)) return;
  GbStorage<T> st{n, kl, ku, ab, ldab, afb, ldafb, ipiv};
  svx_solve<T>(st, "GBSVX", f, n, *pnrhs, equed, r, c, b, *pldb, x, *pldx, rcond, ferr, berr,
               svx_growth_slot<T>(work, iwork_or_rwork), info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_BAND_GBSVX_H
