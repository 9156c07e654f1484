// Reciprocal condition number estimates: gecon from the LU factors (one- or
// infinity-norm), pocon from the Cholesky factor. |inv(A)| is estimated by
// the one-norm estimator, each of its products being a solve with the
// factors.
#ifndef NXL_LAPACK_LU_GECON_H
#define NXL_LAPACK_LU_GECON_H

#include "lapack/aux/lacn2.h"
#include "lapack/lu/getrs.h"
#include "lapack/chol/potrs.h"

namespace nxl {
namespace lapack {

// Runs the estimator; apply(x, kase) replaces x by op(inv(A)) x.
template <class T, class Apply> real_t<T> estimate_inverse_norm(idx n, T *v, T *x, idx *isgn, Apply apply) {
  real_t<T> est = 0;
  idx kase = 0, isave[3] = {0, 0, 0};
  for (;;) {
    lacn2_core<T>(n, v, x, isgn, &est, &kase, isave);
    if (kase == 0) break;
    apply(x, kase);
  }
  return est;
}

// Common tail: rcond = (1/ainvnm)/anorm, 0 when the estimate is not finite.
template <class R> void finish_rcond(R anorm, R ainvnm, R *rcond) {
  *rcond = 0;
  if (ainvnm != R(0) && std::isfinite(ainvnm)) *rcond = (R(1) / ainvnm) / anorm;
  if (std::isnan(*rcond)) *rcond = 0;
}

// rcond of a factored matrix of one- or infinity-norm anorm; apply(x, kase)
// replaces x by op(inv(A)) x as the estimator asks.
template <class T, class Apply>
void rcond_by_solves(idx n, real_t<T> anorm, real_t<T> *rcond, T *work, idx *isgn, Apply apply) {
  using R = real_t<T>;
  *rcond = 0;
  if (n == 0) {
    *rcond = 1;
    return;
  }
  if (anorm == R(0) || std::isnan(anorm)) {
    if (std::isnan(anorm)) *rcond = anorm;
    return;
  }
  if (std::isinf(anorm)) return;
  R ainvnm = estimate_inverse_norm<T>(n, work + n, work, isgn, apply);
  finish_rcond(anorm, ainvnm, rcond);
}

template <class T>
void gecon_work(char norm, idx n, const T *a, idx lda, real_t<T> anorm, real_t<T> *rcond, T *work, idx *iwork) {
  bool one = norm == 'O' || norm == '1';
  char ct = is_complex_v<T> ? 'C' : 'T';
  rcond_by_solves<T>(n, anorm, rcond, work, iwork, [&](T *x, idx kase) {
    // kase 1 multiplies by inv(A) for the one-norm, by inv(A)^H otherwise.
    if ((kase == 1) == one) {
      blas::trsv('L', 'N', 'U', n, a, lda, x, 1);
      blas::trsv('U', 'N', 'N', n, a, lda, x, 1);
    } else {
      blas::trsv('U', ct, 'N', n, a, lda, x, 1);
      blas::trsv('L', ct, 'U', n, a, lda, x, 1);
    }
  });
}

// The real forms take an integer work array, the complex ones a real one.
template <class T>
void gecon(const char *norm, const idx *pn, const T *a, const idx *plda, const real_t<T> *panorm, real_t<T> *rcond,
           T *work, void *iwork_or_rwork, idx *info) {
  idx n = *pn, lda = *plda;
  *info = 0;
  char nm = upper(norm);
  if (nm != 'O' && nm != '1' && nm != 'I') return report<T>("GECON", 1, info);
  if (n < 0) return report<T>("GECON", 2, info);
  if (lda < imax(1, n)) return report<T>("GECON", 4, info);
  if (*panorm < 0) return report<T>("GECON", 5, info);
  gecon_work<T>(nm, n, a, lda, *panorm, rcond, work, static_cast<idx *>(iwork_or_rwork));
}

template <class T>
void pocon(const char *uplo, const idx *pn, const T *a, const idx *plda, const real_t<T> *panorm, real_t<T> *rcond,
           T *work, void *, idx *info) {
  using R = real_t<T>;
  idx n = *pn, lda = *plda;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("POCON", 1, info);
  if (n < 0) return report<T>("POCON", 2, info);
  if (lda < imax(1, n)) return report<T>("POCON", 4, info);
  if (*panorm < 0) return report<T>("POCON", 5, info);
  R anorm = *panorm;
  *rcond = 0;
  if (n == 0) {
    *rcond = 1;
    return;
  }
  if (anorm == R(0) || std::isnan(anorm) || std::isinf(anorm)) {
    if (std::isnan(anorm)) *rcond = anorm;
    return;
  }
  // The estimator's sign vector lives in the integer work of the real forms;
  // keep a private one so both forms behave alike.
  Work<idx> isgn(n);
  if (!isgn) return report_name(Name<T>("POCON").s, 1089, nullptr);
  R ainvnm = estimate_inverse_norm<T>(n, work + n, work, isgn.get(),
                                      [&](T *x, idx) { potrs_work<T>(up, n, 1, a, lda, x, n); });
  finish_rcond(anorm, ainvnm, rcond);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_LU_GECON_H
