// Reciprocal condition number of a band matrix from its gbtrf factors, in
// the one- or infinity-norm; |inv(A)| comes from the one-norm estimator, each
// of its products being a band solve.
#ifndef NXL_LAPACK_BAND_GBCON_H
#define NXL_LAPACK_BAND_GBCON_H

#include "lapack/band/gbtrs.h"
#include "lapack/lu/gecon.h"

namespace nxl {
namespace lapack {

template <class T>
void gbcon_work(char norm, idx n, idx kl, idx ku, const T *ab, idx ldab, const idx *ipiv, real_t<T> anorm,
                real_t<T> *rcond, T *work, idx *isgn) {
  // An exactly singular U: no solve (complex division by zero gives NaNs
  // the estimator cannot rank).
  *rcond = 0;
  for (idx j = 0; j < n; ++j)
    if (ab[kl + ku + j * ldab] == T(0)) return;
  bool one = norm == 'O' || norm == '1';
  char ct = is_complex_v<T> ? 'C' : 'T';
  rcond_by_solves<T>(n, anorm, rcond, work, isgn, [&](T *x, idx kase) {
    gbtrs_vec<T>((kase == 1) == one ? 'N' : ct, n, kl, ku, ab, ldab, ipiv, x);
  });
}

// The real forms take an integer work array, the complex ones a real one.
template <class T>
void gbcon(const char *norm, const idx *pn, const idx *pkl, const idx *pku, const T *ab, const idx *pldab,
           const idx *ipiv, const real_t<T> *panorm, real_t<T> *rcond, T *work, void *iwork_or_rwork, idx *info) {
  idx n = *pn, kl = *pkl, ku = *pku, ldab = *pldab;
  *info = 0;
  char nm = upper(norm);
  if (nm != 'O' && nm != '1' && nm != 'I') return report<T>("GBCON", 1, info);
  if (n < 0) return report<T>("GBCON", 2, info);
  if (kl < 0) return report<T>("GBCON", 3, info);
  if (ku < 0) return report<T>("GBCON", 4, info);
  if (ldab < 2 * kl + ku + 1) return report<T>("GBCON", 6, info);
  if (*panorm < 0) return report<T>("GBCON", 8, info);
  idx *isgn = is_complex_v<T> ? nullptr : static_cast<idx *>(iwork_or_rwork);
  gbcon_work<T>(nm, n, kl, ku, ab, ldab, ipiv, *panorm, rcond, work, isgn);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_BAND_GBCON_H
