// Condition estimates and error bounds for triangular systems in full,
// packed or band storage, each written once over the storage views:
//   trcon/tpcon/tbcon: rcond = 1 / (|A| |inv(A)|) in the one- or
//     infinity-norm, |inv(A)| estimated by the one-norm estimator whose
//     products are scaled solves (latrs), so that an ill-conditioned
//     matrix gives a small rcond rather than an overflow;
//   trrfs/tprfs/tbrfs: componentwise backward error of a computed solution
//     and a bound on its forward error (the solution itself is not
//     changed: the triangular solve is already backward stable).
// Work arrays: real forms (work 3n, iwork n), complex forms (work 2n,
// rwork n).
#ifndef NXL_LAPACK_TRI_TRCON_H
#define NXL_LAPACK_TRI_TRCON_H

#include "lapack/lu/refine.h"
#include "lapack/tri/latrs.h"
#include "lapack/tri/tpsolve.h"

namespace nxl {
namespace lapack {

template <class T> constexpr char conj_trans() { return is_complex_v<T> ? 'C' : 'T'; }

template <class T, class S>
void tricon_work(const S &v, bool one, real_t<T> *rcond, T *work, void *iw) {
  using R = real_t<T>;
  const idx n = v.n;
  *rcond = 0;
  if (n == 0) {
    *rcond = 1;
    return;
  }
  T *x = work, *est_v = work + n;
  R *cnorm;
  idx *isgn = nullptr;
  if constexpr (is_complex_v<T>) {
    cnorm = static_cast<R *>(iw);
  } else {
    cnorm = reinterpret_cast<R *>(work + 2 * n);
    isgn = static_cast<idx *>(iw);
  }
  const R smlnum = lamch<R>('S') * R(imax(1, n));
  R anorm = tri_norm<T>(one ? 'O' : 'I', v, cnorm);
  if (!(anorm > R(0))) return;
  R ainvnm = 0;
  idx kase = 0, isave[3] = {0, 0, 0};
  bool normin = false;
  const idx kase1 = one ? 1 : 2;
  for (;;) {
    lacn2_core<T>(n, est_v, x, isgn, &ainvnm, &kase, isave);
    if (kase == 0) break;
    R sc;
    latrs_core<T>(v, kase == kase1 ? 'N' : conj_trans<T>(), normin, x, &sc, cnorm);
    normin = true;
    if (sc != R(1)) {
      R xnorm = max_abs1(n, x);
      if (sc < xnorm * smlnum || sc == R(0)) return;
      for (idx i = 0; i < n; ++i) x[i] /= sc;
    }
  }
  if (ainvnm != R(0)) *rcond = (R(1) / anorm) / ainvnm;
}

inline idx check_norm_flag(const char *norm) {
  char c = upper(norm);
  return (c == 'O' || c == '1' || c == 'I') ? 0 : 1;
}

template <class T>
void trcon(const char *norm, const char *uplo, const char *diag, const idx *pn, const T *a, const idx *plda,
           real_t<T> *rcond, T *work, void *iw, idx *info) {
  idx n = *pn, lda = *plda;
  *info = 0;
  idx pos = check_norm_flag(norm);
  if (!pos && (pos = check_uplo_trans_diag(uplo, nullptr, diag)) != 0) ++pos;
  if (!pos && n < 0) pos = 4;
  if (!pos && lda < imax(1, n)) pos = 6;
  if (pos) return report<T>("TRCON", pos, info);
  FullTri<T> v{same(uplo, 'U'), same(diag, 'U'), n, a, lda};
  tricon_work<T>(v, upper(norm) != 'I', rcond, work, iw);
}

template <class T>
void tpcon(const char *norm, const char *uplo, const char *diag, const idx *pn, const T *ap, real_t<T> *rcond,
           T *work, void *iw, idx *info) {
  idx n = *pn;
  *info = 0;
  idx pos = check_norm_flag(norm);
  if (!pos && (pos = check_uplo_trans_diag(uplo, nullptr, diag)) != 0) ++pos;
  if (!pos && n < 0) pos = 4;
  if (pos) return report<T>("TPCON", pos, info);
  PackedTri<T> v{same(uplo, 'U'), same(diag, 'U'), n, ap};
  tricon_work<T>(v, upper(norm) != 'I', rcond, work, iw);
}

template <class T>
void tbcon(const char *norm, const char *uplo, const char *diag, const idx *pn, const idx *pkd, const T *ab,
           const idx *pldab, real_t<T> *rcond, T *work, void *iw, idx *info) {
  idx n = *pn, kd = *pkd, ldab = *pldab;
  *info = 0;
  idx pos = check_norm_flag(norm);
  if (!pos && (pos = check_uplo_trans_diag(uplo, nullptr, diag)) != 0) ++pos;
  if (!pos && n < 0) pos = 4;
  if (!pos && kd < 0) pos = 5;
  if (!pos && ldab < kd + 1) pos = 7;
  if (pos) return report<T>("TBCON", pos, info);
  BandTri<T> v{same(uplo, 'U'), same(diag, 'U'), n, kd, ab, ldab};
  tricon_work<T>(v, upper(norm) != 'I', rcond, work, iw);
}

// Backward and forward error bounds of the solutions x_j of op(A) x = b_j.
template <class T, class S>
void trirfs_work(const S &v, char tr, idx nrhs, const T *b, idx ldb, const T *x, idx ldx, real_t<T> *ferr,
                 real_t<T> *berr, T *work, void *iw) {
  using R = real_t<T>;
  const idx n = v.n;
  if (n == 0 || nrhs == 0) {
    for (idx j = 0; j < nrhs; ++j) ferr[j] = berr[j] = 0;
    return;
  }
  if (!is_complex_v<T> && tr == 'C') tr = 'T';
  const char trh = tr == 'N' ? conj_trans<T>() : 'N';
  T *r, *est_v;
  R *w;
  idx *isgn = nullptr;
  if constexpr (is_complex_v<T>) {
    est_v = work;
    r = work + n;
    w = static_cast<R *>(iw);
  } else {
    w = reinterpret_cast<R *>(work);
    r = work + n;
    est_v = work + 2 * n;
    isgn = static_cast<idx *>(iw);
  }
  const idx nz = v.row_bound();
  const R eps = lamch<R>('E'), safmin = lamch<R>('S');
  const R safe1 = R(nz) * safmin, safe2 = safe1 / eps;
  for (idx j = 0; j < nrhs; ++j) {
    const T *bj = b + j * ldb;
    const T *xj = x + j * ldx;
    // r = op(A) x - b in working precision.
    for (idx i = 0; i < n; ++i) r[i] = xj[i];
    v.mult(tr, r);
    blas::axpy(n, T(-1), bj, 1, r, 1);
    // w = |b| + |op(A)| |x|.
    for (idx i = 0; i < n; ++i) w[i] = abs1(bj[i]);
    for (idx k = 0; k < n; ++k) {
      idx lo, hi;
      const T *p = v.col(k, lo, hi);
      R dk = v.unit ? R(1) : abs1(v.diag(k));
      if (tr == 'N') {
        R xk = abs1(xj[k]);
        for (idx i = 0; i < hi - lo; ++i) w[lo + i] += abs1(p[i]) * xk;
        w[k] += dk * xk;
      } else {
        R s = dk * abs1(xj[k]);
        for (idx i = 0; i < hi - lo; ++i) s += abs1(p[i]) * abs1(xj[lo + i]);
        w[k] += s;
      }
    }
    berr[j] = backward_error<T>(n, r, w, safe1, safe2);
    ferr[j] = forward_error<T>(n, xj, r, est_v, w, isgn, nz, [&](T *y, bool transposed) {
      v.solve(transposed ? trh : tr, y);
    });
  }
}

inline idx trirfs_check(const char *uplo, const char *trans, const char *diag, idx n, idx nrhs) {
  idx pos = check_uplo_trans_diag(uplo, trans, diag);
  if (!pos && n < 0) pos = 4;
  if (!pos && nrhs < 0) pos = 5;
  return pos;
}

template <class T>
void trrfs(const char *uplo, const char *trans, const char *diag, const idx *pn, const idx *pnrhs, const T *a,
           const idx *plda, const T *b, const idx *pldb, const T *x, const idx *pldx, real_t<T> *ferr,
           real_t<T> *berr, T *work, void *iw, idx *info) {
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ldb = *pldb, ldx = *pldx;
  *info = 0;
  idx pos = trirfs_check(uplo, trans, diag, n, nrhs);
  if (!pos && lda < imax(1, n)) pos = 7;
  if (!pos && ldb < imax(1, n)) pos = 9;
  if (!pos && ldx < imax(1, n)) pos = 11;
  if (pos) return report<T>("TRRFS", pos, info);
  FullTri<T> v{same(uplo, 'U'), same(diag, 'U'), n, a, lda};
  trirfs_work<T>(v, upper(trans), nrhs, b, ldb, x, ldx, ferr, berr, work, iw);
}

template <class T>
void tprfs(const char *uplo, const char *trans, const char *diag, const idx *pn, const idx *pnrhs, const T *ap,
           const T *b, const idx *pldb, const T *x, const idx *pldx, real_t<T> *ferr, real_t<T> *berr, T *work,
           void *iw, idx *info) {
  idx n = *pn, nrhs = *pnrhs, ldb = *pldb, ldx = *pldx;
  *info = 0;
  idx pos = trirfs_check(uplo, trans, diag, n, nrhs);
  if (!pos && ldb < imax(1, n)) pos = 8;
  if (!pos && ldx < imax(1, n)) pos = 10;
  if (pos) return report<T>("TPRFS", pos, info);
  PackedTri<T> v{same(uplo, 'U'), same(diag, 'U'), n, ap};
  trirfs_work<T>(v, upper(trans), nrhs, b, ldb, x, ldx, ferr, berr, work, iw);
}

template <class T>
void tbrfs(const char *uplo, const char *trans, const char *diag, const idx *pn, const idx *pkd, const idx *pnrhs,
           const T *ab, const idx *pldab, const T *b, const idx *pldb, const T *x, const idx *pldx, real_t<T> *ferr,
           real_t<T> *berr, T *work, void *iw, idx *info) {
  idx n = *pn, kd = *pkd, nrhs = *pnrhs, ldab = *pldab, ldb = *pldb, ldx = *pldx;
  *info = 0;
  idx pos = check_band_solve(uplo, trans, diag, n, kd, nrhs, ldab, ldb);
  if (!pos && ldx < imax(1, n)) pos = 12;
  if (pos) return report<T>("TBRFS", pos, info);
  BandTri<T> v{same(uplo, 'U'), same(diag, 'U'), n, kd, ab, ldab};
  trirfs_work<T>(v, upper(trans), nrhs, b, ldb, x, ldx, ferr, berr, work, iw);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRI_TRCON_H
