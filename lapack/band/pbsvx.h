// Hermitian (symmetric) positive definite band matrices after pbtrf:
// solves (pbtrs, pbsv), condition estimate (pbcon), equilibration (pbequ,
// laqsb), refinement (pbrfs), the expert driver (pbsvx) and the band norms
// of symmetric and Hermitian matrices (lansb, lanhb).
#ifndef NXL_LAPACK_BAND_PBSVX_H
#define NXL_LAPACK_BAND_PBSVX_H

#include "lapack/band/pbtrf.h"
#include "lapack/lu/refine.h"

namespace nxl {
namespace lapack {

// Entry (i, j) of the stored triangle of a symmetric band matrix.
template <class T> struct BandAt {
  bool up;
  idx kd, ldab;
  T *ab;
  T &operator()(idx i, idx j) const { return up ? ab[kd + i - j + j * ldab] : ab[i - j + j * ldab]; }
};
template <class T> BandAt<T> band_at(bool up, idx kd, const T *ab, idx ldab) {
  return BandAt<T>{up, kd, ldab, const_cast<T *>(ab)};
}

template <class T, bool herm>
real_t<T> lan_sb(const char *norm, const char *uplo, const idx *pn, const idx *pk, const T *ab, const idx *ldab,
                 real_t<T> *work) {
  idx n = *pn, k = *pk;
  if (n <= 0) return 0;
  bool up = same(uplo, 'U');
  auto at = band_at<T>(up, k, ab, *ldab);
  auto get = [&](idx i, idx j) { return sym_entry<herm, T>(up, i, j, at); };
  auto rows = [&](idx j, idx &lo, idx &hi) { lo = imax(0, j - k); hi = imin(n, j + k + 1); };
  char nm = upper(norm);
  if (nm == 'I') nm = 'O';
  return norm_by_columns<T>(nm, n, n, get, rows, work);
}
template <class T>
real_t<T> lansb(const char *norm, const char *uplo, const idx *n, const idx *k, const T *ab, const idx *ldab,
                real_t<T> *work) {
  return lan_sb<T, false>(norm, uplo, n, k, ab, ldab, work);
}
template <class T>
real_t<T> lanhb(const char *norm, const char *uplo, const idx *n, const idx *k, const T *ab, const idx *ldab,
                real_t<T> *work) {
  return lan_sb<T, true>(norm, uplo, n, k, ab, ldab, work);
}

template <class T> void pbtrs_work(bool up, idx n, idx kd, idx nrhs, const T *ab, idx ldab, T *b, idx ldb) {
  for (idx j = 0; j < nrhs; ++j) {
    T *x = b + j * ldb;
    if (up) {
      blas::tbsv('U', 'C', 'N', n, kd, ab, ldab, x, 1);
      blas::tbsv('U', 'N', 'N', n, kd, ab, ldab, x, 1);
    } else {
      blas::tbsv('L', 'N', 'N', n, kd, ab, ldab, x, 1);
      blas::tbsv('L', 'C', 'N', n, kd, ab, ldab, x, 1);
    }
  }
}

// Checks of uplo, n, kd, nrhs, ldab (position pab) and ldb (position pb).
template <class T>
bool pb_solve_check(const char *stem, const char *uplo, idx n, idx kd, idx nrhs, idx ldab, idx pab, idx ldb,
                    idx pb, idx *info) {
  *info = 0;
  if (!same(uplo, 'U') && !same(uplo, 'L')) report<T>(stem, 1, info);
  else if (n < 0) report<T>(stem, 2, info);
  else if (kd < 0) report<T>(stem, 3, info);
  else if (nrhs < 0) report<T>(stem, 4, info);
  else if (ldab < kd + 1) report<T>(stem, pab, info);
  else if (ldb < imax(1, n)) report<T>(stem, pb, info);
  return *info != 0;
}

template <class T>
void pbtrs(const char *uplo, const idx *n, const idx *kd, const idx *nrhs, const T *ab, const idx *ldab, T *b,
           const idx *ldb, idx *info) {
  if (pb_solve_check<T>("PBTRS", uplo, *n, *kd, *nrhs, *ldab, 6, *ldb, 8, info)) return;
  pbtrs_work<T>(same(uplo, 'U'), *n, *kd, *nrhs, ab, *ldab, b, *ldb);
}

template <class T>
void pbsv(const char *uplo, const idx *n, const idx *kd, const idx *nrhs, T *ab, const idx *ldab, T *b,
          const idx *ldb, idx *info) {
  if (pb_solve_check<T>("PBSV", uplo, *n, *kd, *nrhs, *ldab, 6, *ldb, 8, info)) return;
  bool up = same(uplo, 'U');
  *info = pbtrf_work<T>(up, *n, *kd, ab, *ldab);
  if (*info == 0) pbtrs_work<T>(up, *n, *kd, *nrhs, ab, *ldab, b, *ldb);
}

template <class T>
void pbcon(const char *uplo, const idx *pn, const idx *pkd, const T *ab, const idx *pldab, const real_t<T> *anorm,
           real_t<T> *rcond, T *work, void *, idx *info) {
  idx n = *pn, kd = *pkd, ldab = *pldab;
  if (pb_check<T>("PBCON", uplo, n, kd, ldab, info)) return;
  if (*anorm < 0) return report<T>("PBCON", 6, info);
  bool up = same(uplo, 'U');
  sym_rcond<T, true>("PBCON", n, *anorm, rcond, work, [&](T *x) { pbtrs_work<T>(up, n, kd, 1, ab, ldab, x, n); });
}

template <class T>
void pbequ(const char *uplo, const idx *pn, const idx *pkd, const T *ab, const idx *pldab, real_t<T> *s,
           real_t<T> *scond, real_t<T> *amax, idx *info) {
  idx n = *pn, kd = *pkd, ldab = *pldab;
  if (pb_check<T>("PBEQU", uplo, n, kd, ldab, info)) return;
  auto at = band_at<T>(same(uplo, 'U'), kd, ab, ldab);
  diag_equ<T>(n, [&](idx i) { return at(i, i); }, s, scond, amax, info);
}

template <class T, bool herm>
void laq_sb(const char *uplo, const idx *n, const idx *kd, T *ab, const idx *ldab, const real_t<T> *s,
            const real_t<T> *scond, const real_t<T> *amax, char *equed) {
  bool up = same(uplo, 'U');
  auto at = band_at<T>(up, *kd, ab, *ldab);
  sym_scale<T, herm>(*n, *kd, up, at, s, *scond, *amax, equed);
}
template <class T>
void laqsb(const char *uplo, const idx *n, const idx *kd, T *ab, const idx *ldab, const real_t<T> *s,
           const real_t<T> *scond, const real_t<T> *amax, char *equed) {
  laq_sb<T, false>(uplo, n, kd, ab, ldab, s, scond, amax, equed);
}
template <class T>
void laqhb(const char *uplo, const idx *n, const idx *kd, T *ab, const idx *ldab, const real_t<T> *s,
           const real_t<T> *scond, const real_t<T> *amax, char *equed) {
  laq_sb<T, true>(uplo, n, kd, ab, ldab, s, scond, amax, equed);
}

template <class T>
void pbrfs_work(bool up, idx n, idx kd, idx nrhs, const T *ab, idx ldab, const T *afb, idx ldafb, const T *b,
                idx ldb, T *x, idx ldx, real_t<T> *ferr, real_t<T> *berr, const char *stem, idx *info) {
  auto at = band_at<T>(up, kd, ab, ldab);
  auto ops = sym_refine_ops<T, true>(up, n, kd, at, [&](T *v) { pbtrs_work<T>(up, n, kd, 1, afb, ldafb, v, n); });
  refine<T>(n, nrhs, b, ldb, x, ldx, ferr, berr, ops, stem, info);
}

template <class T>
void pbrfs(const char *uplo, const idx *pn, const idx *pkd, const idx *pnrhs, const T *ab, const idx *pldab,
           const T *afb, const idx *pldafb, const T *b, const idx *pldb, T *x, const idx *pldx, real_t<T> *ferr,
           real_t<T> *berr, T *, void *, idx *info) {
  idx n = *pn, kd = *pkd, nrhs = *pnrhs;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("PBRFS", 1, info);
  if (n < 0) return report<T>("PBRFS", 2, info);
  if (kd < 0) return report<T>("PBRFS", 3, info);
  if (nrhs < 0) return report<T>("PBRFS", 4, info);
  if (*pldab < kd + 1) return report<T>("PBRFS", 6, info);
  if (*pldafb < kd + 1) return report<T>("PBRFS", 8, info);
  if (*pldb < imax(1, n)) return report<T>("PBRFS", 10, info);
  if (*pldx < imax(1, n)) return report<T>("PBRFS", 12, info);
  pbrfs_work<T>(up, n, kd, nrhs, ab, *pldab, afb, *pldafb, b, *pldb, x, *pldx, ferr, berr, "PBRFS", info);
}

template <class T>
void pbsvx(const char *fact, const char *uplo, const idx *pn, const idx *pkd, const idx *pnrhs, T *ab,
           const idx *pldab, T *afb, const idx *pldafb, char *equed, real_t<T> *s, T *b, const idx *pldb, T *x,
           const idx *pldx, real_t<T> *rcond, real_t<T> *ferr, real_t<T> *berr, T *work, void *, idx *info) {
  using R = real_t<T>;
  idx n = *pn, kd = *pkd, nrhs = *pnrhs, ldab = *pldab, ldafb = *pldafb, ldb = *pldb, ldx = *pldx;
  *info = 0;
  PdFact fa(fact, equed);
  bool up = same(uplo, 'U'), rcequ = fa.rcequ;
  R scond = 1;
  if (!fa.nofact && !fa.equil && !fa.given) return report<T>("PBSVX", 1, info);
  if (!up && !same(uplo, 'L')) return report<T>("PBSVX", 2, info);
  if (n < 0) return report<T>("PBSVX", 3, info);
  if (kd < 0) return report<T>("PBSVX", 4, info);
  if (nrhs < 0) return report<T>("PBSVX", 5, info);
  if (ldab < kd + 1) return report<T>("PBSVX", 7, info);
  if (ldafb < kd + 1) return report<T>("PBSVX", 9, info);
  if (!fa.equed_ok(equed)) return report<T>("PBSVX", 10, info);
  if (rcequ && !scale_ratio<R>(n, s, &scond)) return report<T>("PBSVX", 11, info);
  if (ldb < imax(1, n)) return report<T>("PBSVX", 13, info);
  if (ldx < imax(1, n)) return report<T>("PBSVX", 15, info);
  auto at = band_at<T>(up, kd, ab, ldab);
  pd_equilibrate<T>(
      fa.equil, n, nrhs, [&](idx i) { return at(i, i); },
      [&](const R *sc, const R *cnd, const R *mx, char *eq) {
        laq_sb<T, true>(uplo, &n, &kd, ab, &ldab, sc, cnd, mx, eq);
      },
      s, &scond, equed, &rcequ, b, ldb);
  if (fa.nofact || fa.equil) {
    auto af = band_at<T>(up, kd, afb, ldafb);
    for (idx j = 0; j < n; ++j) {
      idx lo = up ? imax(0, j - kd) : j, hi = up ? j + 1 : imin(n, j + kd + 1);
      for (idx i = lo; i < hi; ++i) af(i, j) = at(i, j);
    }
    *info = pbtrf_work<T>(up, n, kd, afb, ldafb);
    if (*info > 0) {
      *rcond = 0;
      return;
    }
  }
  R anorm = lan_sb<T, true>("1", uplo, &n, &kd, ab, &ldab, nullptr);
  sym_rcond<T, true>("PBSVX", n, anorm, rcond, work,
                     [&](T *v) { pbtrs_work<T>(up, n, kd, 1, afb, ldafb, v, n); });
  pd_finish<T>(
      n, nrhs, b, ldb, x, ldx, rcequ, s, scond, *rcond, ferr, info,
      [&](T *v, idx ldv, idx k) { pbtrs_work<T>(up, n, kd, k, afb, ldafb, v, ldv); },
      [&]() { pbrfs_work<T>(up, n, kd, nrhs, ab, ldab, afb, ldafb, b, ldb, x, ldx, ferr, berr, "PBSVX", info); });
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_BAND_PBSVX_H
