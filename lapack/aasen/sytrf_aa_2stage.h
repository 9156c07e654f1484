// The two-stage form of Aasen's factorization: P A P^T = L T L^H as in
// sytrf_aa, followed by the LU factorization with partial pivoting of the
// band matrix T (bandwidth 1) in TB, leading dimension 4 (the band storage
// of gbtrf with one sub- and one superdiagonal), pivots in ipiv2. The solve
// runs the band solve between the two triangular ones. TB needs 4n entries.
#ifndef NXL_LAPACK_AASEN_SYTRF_AA_2STAGE_H
#define NXL_LAPACK_AASEN_SYTRF_AA_2STAGE_H

#include "lapack/aasen/sytrf_aa.h"

namespace nxl {
namespace lapack {

constexpr idx kTbRows = 4;

// Factors A in work when it is larger than the band array, else with the
// band array (not yet filled) as its 4n entries of work.
template <class T, bool herm>
idx aasen_2stage_factor(bool up, idx n, T *a, idx lda, T *tb, idx *ipiv, idx *ipiv2, T *work, idx lwork) {
  if (lwork > kTbRows * n) aasen_factor<T, herm>(up, n, a, lda, ipiv, work, lwork);
  else aasen_factor<T, herm>(up, n, a, lda, ipiv, tb, kTbRows * n);
  LowerView<T, herm> m{up, a, lda};
  for (idx i = 0; i < kTbRows * n; ++i) tb[i] = T(0);
  for (idx j = 0; j < n; ++j) {
    tb[2 + j * kTbRows] = diag_of<herm>(m.get(j, j));
    if (j + 1 < n) {
      T b = m.get(j + 1, j);
      tb[3 + j * kTbRows] = b;
      tb[1 + (j + 1) * kTbRows] = cjh<herm>(b);
    }
  }
  idx info = 0;
  gbtf2_work<T>(n, n, 1, 1, tb, kTbRows, ipiv2, &info);
  return info;
}

template <class T, bool herm>
void aasen_2stage_solve(bool up, idx n, idx nrhs, const T *a, idx lda, const T *tb, const idx *ipiv,
                        const idx *ipiv2, T *b, idx ldb) {
  aasen_solve_with<T, herm>(up, n, nrhs, a, lda, ipiv, b, ldb,
                            [&](T *x) { gbtrs_work<T>('N', n, 1, 1, nrhs, tb, kTbRows, ipiv2, x, ldb); });
}

template <class T, bool herm>
void sytrf_aa_2stage_t(const char *stem, const char *uplo, const idx *pn, T *a, const idx *plda, T *tb,
                       const idx *pltb, idx *ipiv, idx *ipiv2, T *work, const idx *plwork, idx *info) {
  idx n = *pn, lda = *plda, ltb = *pltb, lwork = *plwork;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report_long<T>(stem, 1, info);
  if (n < 0) return report_long<T>(stem, 2, info);
  if (lda < imax(1, n)) return report_long<T>(stem, 4, info);
  if (ltb < kTbRows * n && ltb != -1) return report_long<T>(stem, 6, info);
  if (lwork < n && lwork != -1) return report_long<T>(stem, 10, info);
  if (ltb == -1 || lwork == -1) {
    if (ltb == -1) tb[0] = work_size<T>(imax(1, kTbRows * n));
    if (lwork == -1) work[0] = work_size<T>(imax(imax(1, n), aasen_best_work(n)));
    return;
  }
  if (n == 0) return;
  *info = aasen_2stage_factor<T, herm>(up, n, a, lda, tb, ipiv, ipiv2, work, lwork);
  work[0] = work_size<T>(imax(imax(1, n), aasen_best_work(n)));
}
template <class T>
void sytrf_aa_2stage(const char *uplo, const idx *n, T *a, const idx *lda, T *tb, const idx *ltb, idx *ipiv,
                     idx *ipiv2, T *work, const idx *lwork, idx *info) {
  sytrf_aa_2stage_t<T, false>("SYTRF_AA_2STAGE", uplo, n, a, lda, tb, ltb, ipiv, ipiv2, work, lwork, info);
}
template <class T>
void hetrf_aa_2stage(const char *uplo, const idx *n, T *a, const idx *lda, T *tb, const idx *ltb, idx *ipiv,
                     idx *ipiv2, T *work, const idx *lwork, idx *info) {
  sytrf_aa_2stage_t<T, true>("HETRF_AA_2STAGE", uplo, n, a, lda, tb, ltb, ipiv, ipiv2, work, lwork, info);
}

template <class T, bool herm>
void sytrs_aa_2stage_t(const char *stem, const char *uplo, const idx *pn, const idx *pnrhs, const T *a,
                       const idx *plda, const T *tb, const idx *pltb, const idx *ipiv, const idx *ipiv2, T *b,
                       const idx *pldb, idx *info) {
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ltb = *pltb, ldb = *pldb;
  if (aa_solve_check<T>(stem, uplo, n, nrhs, lda, info)) return;
  bool up = same(uplo, 'U');
  if (ltb < kTbRows * n) return report_long<T>(stem, 7, info);
  if (ldb < imax(1, n)) return report_long<T>(stem, 11, info);
  aasen_2stage_solve<T, herm>(up, n, nrhs, a, lda, tb, ipiv, ipiv2, b, ldb);
}
template <class T>
void sytrs_aa_2stage(const char *uplo, const idx *n, const idx *nrhs, const T *a, const idx *lda, const T *tb,
                     const idx *ltb, const idx *ipiv, const idx *ipiv2, T *b, const idx *ldb, idx *info) {
  sytrs_aa_2stage_t<T, false>("SYTRS_AA_2STAGE", uplo, n, nrhs, a, lda, tb, ltb, ipiv, ipiv2, b, ldb, info);
}
template <class T>
void hetrs_aa_2stage(const char *uplo, const idx *n, const idx *nrhs, const T *a, const idx *lda, const T *tb,
                     const idx *ltb, const idx *ipiv, const idx *ipiv2, T *b, const idx *ldb, idx *info) {
  sytrs_aa_2stage_t<T, true>("HETRS_AA_2STAGE", uplo, n, nrhs, a, lda, tb, ltb, ipiv, ipiv2, b, ldb, info);
}

template <class T, bool herm>
void sysv_aa_2stage_t(const char *stem, const char *uplo, const idx *pn, const idx *pnrhs, T *a, const idx *plda,
                      T *tb, const idx *pltb, idx *ipiv, idx *ipiv2, T *b, const idx *pldb, T *work,
                      const idx *plwork, idx *info) {
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ltb = *pltb, ldb = *pldb, lwork = *plwork;
  if (aa_solve_check<T>(stem, uplo, n, nrhs, lda, info)) return;
  bool up = same(uplo, 'U');
  if (ltb < kTbRows * n && ltb != -1) return report_long<T>(stem, 7, info);
  if (ldb < imax(1, n)) return report_long<T>(stem, 11, info);
  if (lwork < n && lwork != -1) return report_long<T>(stem, 13, info);
  if (ltb == -1 || lwork == -1) {
    if (ltb == -1) tb[0] = work_size<T>(imax(1, kTbRows * n));
    if (lwork == -1) work[0] = work_size<T>(imax(imax(1, n), aasen_best_work(n)));
    return;
  }
  if (n == 0) return;
  *info = aasen_2stage_factor<T, herm>(up, n, a, lda, tb, ipiv, ipiv2, work, lwork);
  if (*info == 0) aasen_2stage_solve<T, herm>(up, n, nrhs, a, lda, tb, ipiv, ipiv2, b, ldb);
  work[0] = work_size<T>(imax(imax(1, n), aasen_best_work(n)));
}
template <class T>
void sysv_aa_2stage(const char *uplo, const idx *n, const idx *nrhs, T *a, const idx *lda, T *tb, const idx *ltb,
                    idx *ipiv, idx *ipiv2, T *b, const idx *ldb, T *work, const idx *lwork, idx *info) {
  sysv_aa_2stage_t<T, false>("SYSV_AA_2STAGE", uplo, n, nrhs, a, lda, tb, ltb, ipiv, ipiv2, b, ldb, work, lwork,
                             info);
}
template <class T>
void hesv_aa_2stage(const char *uplo, const idx *n, const idx *nrhs, T *a, const idx *lda, T *tb, const idx *ltb,
                    idx *ipiv, idx *ipiv2, T *b, const idx *ldb, T *work, const idx *lwork, idx *info) {
  sysv_aa_2stage_t<T, true>("HESV_AA_2STAGE", uplo, n, nrhs, a, lda, tb, ltb, ipiv, ipiv2, b, ldb, work, lwork,
                            info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_AASEN_SYTRF_AA_2STAGE_H
