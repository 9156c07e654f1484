// Aasen's factorization of a symmetric or Hermitian matrix,
// P A P^T = L T L^H (uplo = 'L') or U^H T U (uplo = 'U'), T tridiagonal and
// L unit lower triangular with first column e_1, by the left-looking column
// method: with H = T L^H, column j of A = L H gives H(0..j, j) from T and row
// j of L, the diagonal T(j, j), and the vector whose largest entry (swapped
// into row j+1) is T(j+1, j) and whose rest, divided by it, is column j+1
// of L.
//
// Storage: T's diagonal and first sub-(super-)diagonal in those of A, the
// columns 1.. of L below the first subdiagonal (column k of L in column k-1
// of A), the rows of U likewise above the first superdiagonal. ipiv[0] = 1;
// ipiv[j] = p + 1 records the interchange of rows and columns j and p made
// before column j of L was formed. The upper form is the lower one of the
// conjugate transpose; one code path serves both through the transposed
// view of the stored triangle.
#ifndef NXL_LAPACK_AASEN_SYTRF_AA_H
#define NXL_LAPACK_AASEN_SYTRF_AA_H

#include "lapack/band/gbtrf.h"
#include "lapack/band/gbtrs.h"
#include "lapack/lu/laswp.h"
#include "lapack/aasen/lasyf_aa.h"
#include "lapack/tridiag/gtsv.h"

namespace nxl {
namespace lapack {

// Names longer than six characters (xSYTRF_AA_2STAGE) for the error reports.
template <class T> inline void report_long(const char *stem, idx pos, idx *info) {
  if (info) *info = -pos;
  char s[24];
  s[0] = prefix<T>();
  int i = 1;
  for (; stem[i - 1] && i < 23; ++i) s[i] = stem[i - 1];
  for (; i < 6; ++i) s[i] = ' ';
  s[i] = 0;
  idx p = pos;
  nxl_serv_xerbla(s, &p, i);
}

// Blocked, right-looking over panels of nb columns (lasyf_aa.h): each panel
// leaves H = W for its columns; the trailing matrix then loses
//   sum_k H(:, k) L(:, k)^H + L(:, c1-1) T(c1-1, c1) L(:, c1)^H
// over the panel's columns k (c1 the first column after the panel), the
// cross term entering as one more column of H paired with L(:, c1). The
// update runs by column blocks: a matrix product for the diagonal block
// (its stored triangle kept) when the work holds one, matrix-vector
// products otherwise, and one matrix product below it. Work: H of
// n x (nb + 1), nb from the caller's lwork (at least 2n, that is nb = 1),
// then the diagonal block; the panel's vectors are on the stack.
constexpr idx kAasenNb = 64;
inline idx aasen_nb(idx n) { return imax(1, imin(kAasenNb, n)); }
inline idx aasen_block(idx nb) { return imax(nb, 32); }
// Work size for the widest panel and a diagonal block (what the queries
// answer).
inline idx aasen_best_work(idx n) {
  idx nb = aasen_nb(n), bs = aasen_block(nb);
  return n * (nb + 1) + bs * bs;
}

template <class T, bool herm>
void aasen_trailing(bool up, idx n, idx j, idx jb, T *a, idx lda, T *h, idx ldh, T *y, T *d) {
  LowerView<T, herm> v(up, a, lda);
  const idx jn = j + jb, kf = j > 0 ? 0 : 1, q = jb + 1 - kf, lc = j + kf - 1;
  const char ct = herm ? 'C' : 'T';
  if (kf == 1 && jb == 1) return;  // one-column first panel: L(:, 0) = e_0 meets nothing below
  // Cross-term column: L(:, jn-2) conj(T(jn, jn-1)) against L(:, jn-1), whose
  // unit diagonal sits where T(jn, jn-1) is stored while the update runs.
  T *hx = h + jb * ldh, tb = v.ref(jn, jn - 1), tcb = cjh<herm>(tb);
  for (idx i = jn; i < n; ++i) hx[i - j] = v.ref(i, jn - 2) * tcb;
  v.ref(jn, jn - 1) = T(1);
  auto hb = [&](idx i) { return h + (i - j) + kf * ldh; };
  const idx bs = aasen_block(jb);
  for (idx c0 = jn; c0 < n; c0 += bs) {
    idx cb = imin(bs, n - c0), rb = n - c0 - cb;
    if (d) {
      // Diagonal block by one product into d, its stored triangle taken.
      if (!up) {
        blas::gemm('N', ct, cb, cb, q, T(1), hb(c0), ldh, v.at(c0, lc), lda, T(0), d, cb);
        for (idx c = 0; c < cb; ++c)
          for (idx i = c; i < cb; ++i) v.ref(c0 + i, c0 + c) -= d[i + c * cb];
      } else {
        blas::gemm(ct, 'T', cb, cb, q, T(1), v.at(c0, lc), lda, hb(c0), ldh, T(0), d, cb);
        for (idx i = 0; i < cb; ++i)
          for (idx c = 0; c <= i; ++c) v.ref(c0 + i, c0 + c) -= d[c + i * cb];
      }
    } else {
      for (idx c = c0; c < c0 + cb; ++c) {
        for (idx t = 0; t < q; ++t) y[t] = cjh<herm>(v.ref(c, lc + t));
        blas::gemv('N', c0 + cb - c, q, T(-1), hb(c), ldh, y, 1, T(1), v.at(c, c), v.rs);
      }
    }
    if (rb <= 0) continue;
    if (!up)
      blas::gemm('N', ct, rb, cb, q, T(-1), hb(c0 + cb), ldh, v.at(c0, lc), lda, T(1), v.at(c0 + cb, c0), lda);
    else
      blas::gemm(ct, 'T', cb, rb, q, T(-1), v.at(c0, lc), lda, hb(c0 + cb), ldh, T(1), v.at(c0 + cb, c0), lda);
  }
  v.ref(jn, jn - 1) = tb;
}

template <class T, bool herm> void aasen_factor(bool up, idx n, T *a, idx lda, idx *ipiv, T *work, idx lwork) {
  if (n <= 0) return;
  // The widest panel the work holds, narrowed by at most half when that
  // makes room for a diagonal block beside H (the update's diagonal blocks
  // then go by matrix products, else by matrix-vector products).
  idx nb = imax(1, imin(aasen_nb(n), lwork / n - 1)), nbd = nb;
  while (nbd > 1 && n * (nbd + 1) + aasen_block(nbd) * aasen_block(nbd) > lwork) --nbd;
  bool room = n * (nbd + 1) + aasen_block(nbd) * aasen_block(nbd) <= lwork && 2 * nbd >= nb;
  if (room) nb = nbd;
  T *d = room ? work + n * (nb + 1) : nullptr;
  T x[kAasenNb + 1];
  LowerView<T, herm> v(up, a, lda);
  for (idx j = 0; j < n;) {
    const idx jb = imin(nb, n - j), off = j > 0 ? 1 : 0;
    aasen_panel<T, herm>(up, off, n - j, jb, v.at(j, j - off), lda, ipiv + j, work, n, x);
    // Local pivots to global ones, applied to the columns of L left of the panel's view.
    for (idx k = j + 1; k < imin(n, j + jb + 1); ++k) {
      ipiv[k] += j;
      if (ipiv[k] - 1 != k && j > off) blas::swap(j - off, v.at(k, 0), v.cs, v.at(ipiv[k] - 1, 0), v.cs);
    }
    if (j + jb < n) aasen_trailing<T, herm>(up, n, j, jb, a, lda, work, n, x, d);
    j += jb;
  }
}

// Solves A X = B from the factors: interchanges, L, T (by middle(b)), L^H,
// interchanges back.
template <class T, bool herm, class Middle>
void aasen_solve_with(bool up, idx n, idx nrhs, const T *a, idx lda, const idx *ipiv, T *b, idx ldb,
                      Middle middle) {
  if (n == 0 || nrhs == 0) return;
  for (idx k = 1; k < n; ++k)
    if (ipiv[k] - 1 != k) blas::swap(nrhs, b + k, ldb, b + ipiv[k] - 1, ldb);
  const char ct = herm ? 'C' : 'T';
  if (n > 1) {
    if (up) blas::trsm('L', 'U', ct, 'U', n - 1, nrhs, T(1), a + lda, lda, b + 1, ldb);
    else blas::trsm('L', 'L', 'N', 'U', n - 1, nrhs, T(1), a + 1, lda, b + 1, ldb);
  }
  middle(b);
  if (n > 1) {
    if (up) blas::trsm('L', 'U', 'N', 'U', n - 1, nrhs, T(1), a + lda, lda, b + 1, ldb);
    else blas::trsm('L', 'L', ct, 'U', n - 1, nrhs, T(1), a + 1, lda, b + 1, ldb);
  }
  for (idx k = n - 1; k >= 1; --k)
    if (ipiv[k] - 1 != k) blas::swap(nrhs, b + k, ldb, b + ipiv[k] - 1, ldb);
}

// The tridiagonal T solved by elimination with partial pivoting in work of
// 3n - 2 entries. Returns the index of the first zero pivot of T (the
// solution is then not formed), 0 on success.
template <class T, bool herm>
idx aasen_solve(bool up, idx n, idx nrhs, const T *a, idx lda, const idx *ipiv, T *b, idx ldb, T *work) {
  idx info = 0;
  aasen_solve_with<T, herm>(up, n, nrhs, a, lda, ipiv, b, ldb, [&](T *x) {
    LowerView<T, herm> m{up, const_cast<T *>(a), lda};
    T *dl = work, *d = work + n - 1, *du = work + 2 * n - 1;
    for (idx i = 0; i < n; ++i) d[i] = diag_of<herm>(m.get(i, i));
    for (idx i = 0; i + 1 < n; ++i) {
      dl[i] = m.get(i + 1, i);
      du[i] = cjh<herm>(dl[i]);
    }
    gtsv<T>(&n, &nrhs, dl, d, du, x, &ldb, &info);
  });
  return info;
}

// Checks of uplo (1), n (2), nrhs (3) and lda (5) of the solves and
// drivers; true when one failed (and was reported).
template <class T> bool aa_solve_check(const char *stem, const char *uplo, idx n, idx nrhs, idx lda, idx *info) {
  *info = 0;
  if (!same(uplo, 'U') && !same(uplo, 'L')) report_long<T>(stem, 1, info);
  else if (n < 0) report_long<T>(stem, 2, info);
  else if (nrhs < 0) report_long<T>(stem, 3, info);
  else if (lda < imax(1, n)) report_long<T>(stem, 5, info);
  return *info != 0;
}

template <class T, bool herm>
void sytrf_aa_t(const char *stem, const char *uplo, const idx *pn, T *a, const idx *plda, idx *ipiv, T *work,
                const idx *plwork, idx *info) {
  idx n = *pn, lda = *plda, lwork = *plwork;
  *info = 0;
  bool up = same(uplo, 'U');
  idx need = imax(1, 2 * n), best = imax(1, aasen_best_work(n));
  if (!up && !same(uplo, 'L')) return report_long<T>(stem, 1, info);
  if (n < 0) return report_long<T>(stem, 2, info);
  if (lda < imax(1, n)) return report_long<T>(stem, 4, info);
  if (lwork < need && lwork != -1) return report_long<T>(stem, 7, info);
  work[0] = work_size<T>(best);
  if (lwork == -1 || n == 0) return;
  aasen_factor<T, herm>(up, n, a, lda, ipiv, work, lwork);
  work[0] = work_size<T>(best);
}
template <class T>
void sytrf_aa(const char *uplo, const idx *n, T *a, const idx *lda, idx *ipiv, T *work, const idx *lwork,
              idx *info) {
  sytrf_aa_t<T, false>("SYTRF_AA", uplo, n, a, lda, ipiv, work, lwork, info);
}
template <class T>
void hetrf_aa(const char *uplo, const idx *n, T *a, const idx *lda, idx *ipiv, T *work, const idx *lwork,
              idx *info) {
  sytrf_aa_t<T, true>("HETRF_AA", uplo, n, a, lda, ipiv, work, lwork, info);
}

template <class T, bool herm>
void sytrs_aa_t(const char *stem, const char *uplo, const idx *pn, const idx *pnrhs, const T *a, const idx *plda,
                const idx *ipiv, T *b, const idx *pldb, T *work, const idx *plwork, idx *info) {
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ldb = *pldb, lwork = *plwork;
  if (aa_solve_check<T>(stem, uplo, n, nrhs, lda, info)) return;
  bool up = same(uplo, 'U');
  idx need = imax(1, 3 * n - 2);
  if (ldb < imax(1, n)) return report_long<T>(stem, 8, info);
  if (lwork < need && lwork != -1) return report_long<T>(stem, 10, info);
  if (lwork == -1) {
    work[0] = work_size<T>(need);
    return;
  }
  *info = aasen_solve<T, herm>(up, n, nrhs, a, lda, ipiv, b, ldb, work);
}
template <class T>
void sytrs_aa(const char *uplo, const idx *n, const idx *nrhs, const T *a, const idx *lda, const idx *ipiv, T *b,
              const idx *ldb, T *work, const idx *lwork, idx *info) {
  sytrs_aa_t<T, false>("SYTRS_AA", uplo, n, nrhs, a, lda, ipiv, b, ldb, work, lwork, info);
}
template <class T>
void hetrs_aa(const char *uplo, const idx *n, const idx *nrhs, const T *a, const idx *lda, const idx *ipiv, T *b,
              const idx *ldb, T *work, const idx *lwork, idx *info) {
  sytrs_aa_t<T, true>("HETRS_AA", uplo, n, nrhs, a, lda, ipiv, b, ldb, work, lwork, info);
}

template <class T, bool herm>
void sysv_aa_t(const char *stem, const char *uplo, const idx *pn, const idx *pnrhs, T *a, const idx *plda,
               idx *ipiv, T *b, const idx *pldb, T *work, const idx *plwork, idx *info) {
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ldb = *pldb, lwork = *plwork;
  if (aa_solve_check<T>(stem, uplo, n, nrhs, lda, info)) return;
  bool up = same(uplo, 'U');
  idx need = imax(1, imax(2 * n, 3 * n - 2)), best = imax(need, aasen_best_work(n));
  if (ldb < imax(1, n)) return report_long<T>(stem, 8, info);
  if (lwork < need && lwork != -1) return report_long<T>(stem, 10, info);
  work[0] = work_size<T>(best);
  if (lwork == -1 || n == 0) return;
  aasen_factor<T, herm>(up, n, a, lda, ipiv, work, lwork);
  *info = aasen_solve<T, herm>(up, n, nrhs, a, lda, ipiv, b, ldb, work);
  work[0] = work_size<T>(best);
}
template <class T>
void sysv_aa(const char *uplo, const idx *n, const idx *nrhs, T *a, const idx *lda, idx *ipiv, T *b, const idx *ldb,
             T *work, const idx *lwork, idx *info) {
  sysv_aa_t<T, false>("SYSV_AA", uplo, n, nrhs, a, lda, ipiv, b, ldb, work, lwork, info);
}
template <class T>
void hesv_aa(const char *uplo, const idx *n, const idx *nrhs, T *a, const idx *lda, idx *ipiv, T *b, const idx *ldb,
             T *work, const idx *lwork, idx *info) {
  sysv_aa_t<T, true>("HESV_AA", uplo, n, nrhs, a, lda, ipiv, b, ldb, work, lwork, info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_AASEN_SYTRF_AA_H
