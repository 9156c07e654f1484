// posvx: expert driver for A X = B, A Hermitian positive definite: optional
// equilibration, Cholesky factorization, condition estimate, solve and
// refinement with error bounds.
#ifndef NXL_LAPACK_CHOL_POSVX_H
#define NXL_LAPACK_CHOL_POSVX_H

#include "lapack/aux/copy.h"
#include "lapack/aux/norms.h"
#include "lapack/aux/scale.h"
#include "lapack/chol/porfs.h"
#include "lapack/lu/gecon.h"
#include "lapack/lu/geequ.h"

namespace nxl {
namespace lapack {

template <class T>
void posvx(const char *fact, const char *uplo, const idx *pn, const idx *pnrhs, T *a, const idx *plda, T *af,
           const idx *pldaf, char *equed, real_t<T> *s, T *b, const idx *pldb, T *x, const idx *pldx,
           real_t<T> *rcond, real_t<T> *ferr, real_t<T> *berr, T *work, void *, idx *info) {
  using R = real_t<T>;
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ldaf = *pldaf, ldb = *pldb, ldx = *pldx;
  *info = 0;
  char fa = upper(fact);
  bool nofact = fa == 'N', equil = fa == 'E', up = same(uplo, 'U');
  bool rcequ = false;
  const R smlnum = lamch<R>('S'), bignum = R(1) / smlnum;
  R scond = 1, amax = 0;
  if (nofact || equil) *equed = 'N';
  else rcequ = upper(equed) == 'Y';
  if (!nofact && !equil && fa != 'F') return report<T>("POSVX", 1, info);
  if (!up && !same(uplo, 'L')) return report<T>("POSVX", 2, info);
  if (n < 0) return report<T>("POSVX", 3, info);
  if (nrhs < 0) return report<T>("POSVX", 4, info);
  if (lda < imax(1, n)) return report<T>("POSVX", 6, info);
  if (ldaf < imax(1, n)) return report<T>("POSVX", 8, info);
  if (fa == 'F' && !rcequ && upper(equed) != 'N') return report<T>("POSVX", 9, info);
  if (rcequ) {
    R mn = bignum, mx = 0;
    for (idx j = 0; j < n; ++j) { mn = std::min(mn, s[j]); mx = std::max(mx, s[j]); }
    if (mn <= R(0)) return report<T>("POSVX", 10, info);
    scond = n > 0 ? std::max(mn, smlnum) / std::min(mx, bignum) : R(1);
  }
  if (ldb < imax(1, n)) return report<T>("POSVX", 12, info);
  if (ldx < imax(1, n)) return report<T>("POSVX", 14, info);

  if (equil) {
    idx infequ = 0;
    poequ_work<T, false>("POEQU", n, a, lda, s, &scond, &amax, &infequ);
    if (infequ == 0) {
      if constexpr (is_complex_v<T>) laqhe<T>(uplo, &n, a, &lda, s, &scond, &amax, equed);
      else laqsy<T>(uplo, &n, a, &lda, s, &scond, &amax, equed);
      rcequ = *equed == 'Y';
    }
  }
  if (rcequ)
    for (idx j = 0; j < nrhs; ++j)
      for (idx i = 0; i < n; ++i) b[i + j * ldb] *= s[i];
  if (nofact || equil) {
    lacpy<T>(uplo, &n, &n, a, &lda, af, &ldaf);
    potrf<T>(uplo, &n, af, &ldaf, info);
    if (*info > 0) {
      *rcond = 0;
      return;
    }
  }
  R anorm = lan_sym<T, is_complex_v<T>>("1", uplo, n, a, lda, nullptr);
  Work<T> cw(2 * n);
  if (n > 0 && !cw) return report<T>("POSVX", 1089, nullptr);
  idx linfo = 0;
  pocon<T>(uplo, &n, af, &ldaf, &anorm, rcond, cw.get(), nullptr, &linfo);
  lacpy<T>("Full", &n, &nrhs, b, &ldb, x, &ldx);
  potrs_work<T>(up, n, nrhs, af, ldaf, x, ldx);
  HermitianOps<T> ops{up, n, a, af, lda, ldaf};
  refine<T>(n, nrhs, b, ldb, x, ldx, ferr, berr, ops, "POSVX", info);
  if (rcequ) {
    for (idx j = 0; j < nrhs; ++j)
      for (idx i = 0; i < n; ++i) x[i + j * ldx] *= s[i];
    for (idx j = 0; j < nrhs; ++j) ferr[j] /= scond;
  }
  if (*rcond < lamch<R>('E')) *info = n + 1;
  (void)work;
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_CHOL_POSVX_H
