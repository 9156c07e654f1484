// Algorithms on RFP storage, each a few level-3 calls on the three blocks
// (see layout.h):
//   tfsm   solve op(A) X = alpha B or X op(A) = alpha B, A triangular;
//   tftri  inverse of a triangular matrix in place;
//   pftrf  Cholesky factorization A = L L^H ('L') or U^H U ('U');
//   pftrs  solve with that factor;
//   pftri  inverse of A from its factor;
//   sfrk / hfrk  C := alpha op(A) op(A)^H + beta C with C in RFP storage.
#ifndef NXL_LAPACK_RFP_PFTRF_H
#define NXL_LAPACK_RFP_PFTRF_H

#include "lapack/chol/potrf.h"
#include "lapack/rfp/convert.h"
#include "lapack/tri/trtri.h"

namespace nxl {
namespace lapack {

// B := alpha inv(op(A)) B (left) or alpha B inv(op(A)) (right) for a
// triangular block A given by its logical view.
template <class T>
void rfp_trsm(char side, char tr, char diag, idx m, idx n, T alpha, const RfpTri<T> &a, T *b, idx ldb) {
  blas::trsm(side, a.uplo, eff_trans<T>(tr, a.h), diag, m, n, alpha, a.p, a.ld, b, ldb);
}

// The same two operations on the off-diagonal block S (logical m x n),
// which may be stored conjugate-transposed: then the side flips, the
// operator is conjugate-transposed and so is alpha.
template <class T, bool solve>
void rfp_off_op(char side, char tr, char diag, idx m, idx n, T alpha, const RfpTri<T> &a, T *s, idx lds, bool sh) {
  if (sh) {
    side = side == 'L' ? 'R' : 'L';
    tr = flip_trans<T>(tr);
    alpha = nxl::conj(alpha);
    idx t = m;
    m = n;
    n = t;
  }
  char t = eff_trans<T>(tr, a.h);
  if (solve) blas::trsm(side, a.uplo, t, diag, m, n, alpha, a.p, a.ld, s, lds);
  else blas::trmm(side, a.uplo, t, diag, m, n, alpha, a.p, a.ld, s, lds);
}

template <class T>
void tfsm_work(const Rfp<T> &f, bool left, char tr, char diag, idx m, idx n, T alpha, T *b, idx ldb) {
  if (alpha == T(0)) {
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < m; ++i) b[i + j * ldb] = T(0);
    return;
  }
  const RfpTri<T> t1 = f.t1(), t2 = f.t2();
  const idx n1 = f.n1, n2 = f.n2;
  // op(A) is lower triangular when exactly one of (lower, transposed) holds;
  // a left solve then runs block 1 first, a right solve block 2 first.
  const bool op_lower = f.lower != (tr != 'N');
  const bool first1 = left == op_lower;
  const char ts = eff_trans<T>(tr, f.s_h());
  T *s = f.s();
  if (left) {
    T *b1 = b, *b2 = b + n1;
    if (first1) {
      rfp_trsm('L', tr, diag, n1, n, alpha, t1, b1, ldb);
      blas::gemm(ts, 'N', n2, n, n1, T(-1), s, f.ld, b1, ldb, alpha, b2, ldb);
      rfp_trsm('L', tr, diag, n2, n, T(1), t2, b2, ldb);
    } else {
      rfp_trsm('L', tr, diag, n2, n, alpha, t2, b2, ldb);
      blas::gemm(ts, 'N', n1, n, n2, T(-1), s, f.ld, b2, ldb, alpha, b1, ldb);
      rfp_trsm('L', tr, diag, n1, n, T(1), t1, b1, ldb);
    }
  } else {
    T *b1 = b, *b2 = b + n1 * ldb;
    if (first1) {
      rfp_trsm('R', tr, diag, m, n1, alpha, t1, b1, ldb);
      blas::gemm('N', ts, m, n2, n1, T(-1), b1, ldb, s, f.ld, alpha, b2, ldb);
      rfp_trsm('R', tr, diag, m, n2, T(1), t2, b2, ldb);
    } else {
      rfp_trsm('R', tr, diag, m, n2, alpha, t2, b2, ldb);
      blas::gemm('N', ts, m, n1, n2, T(-1), b2, ldb, s, f.ld, alpha, b1, ldb);
      rfp_trsm('R', tr, diag, m, n1, T(1), t1, b1, ldb);
    }
  }
}

template <class T> inline bool trans_ok(const char *trans) {
  return same(trans, 'N') || same(trans, is_complex_v<T> ? 'C' : 'T');
}

template <class T>
void tfsm(const char *transr, const char *side, const char *uplo, const char *trans, const char *diag,
          const idx *pm, const idx *pn, const T *palpha, const T *a, T *b, const idx *pldb) {
  idx m = *pm, n = *pn, ldb = *pldb;
  idx pos = 0;
  if (!rfp_transr_ok<T>(transr)) pos = 1;
  else if (!same(side, 'L') && !same(side, 'R')) pos = 2;
  else if (!same(uplo, 'U') && !same(uplo, 'L')) pos = 3;
  else if (!trans_ok<T>(trans)) pos = 4;
  else if (!same(diag, 'N') && !same(diag, 'U')) pos = 5;
  else if (m < 0) pos = 6;
  else if (n < 0) pos = 7;
  else if (ldb < imax(1, m)) pos = 11;
  if (pos) return report<T>("TFSM", pos, nullptr);
  if (m == 0 || n == 0) return;
  const bool left = same(side, 'L');
  Rfp<T> f(left ? m : n, same(uplo, 'L'), same(transr, 'N'), const_cast<T *>(a));
  tfsm_work<T>(f, left, upper(trans), upper(diag), m, n, *palpha, b, ldb);
}

// Inverse of the triangular matrix in place: for 'L'
//   inv([L11 0; L21 L22]) = [inv(L11) 0; -inv(L22) L21 inv(L11), inv(L22)],
// for 'U' the transposed pattern.
template <class T> void tftri_work(const Rfp<T> &f, bool unit, idx *info) {
  *info = 0;
  const RfpTri<T> t1 = f.t1(), t2 = f.t2();
  const char d = unit ? 'U' : 'N';
  if (!unit) {
    if ((*info = first_zero_diag(f.n1, t1.p, t1.ld)) != 0) return;
    if ((*info = first_zero_diag(f.n2, t2.p, t2.ld)) != 0) {
      *info += f.n1;
      return;
    }
  }
  idx k;
  trtri_work<T>(t1.uplo == 'U', unit, f.n1, t1.p, t1.ld, &k);
  if (f.lower) {
    rfp_off_op<T, false>('R', 'N', d, f.n2, f.n1, T(-1), t1, f.s(), f.ld, f.s_h());
    rfp_off_op<T, true>('L', 'N', d, f.n2, f.n1, T(1), t2, f.s(), f.ld, f.s_h());
  } else {
    rfp_off_op<T, false>('L', 'N', d, f.n1, f.n2, T(-1), t1, f.s(), f.ld, f.s_h());
    rfp_off_op<T, true>('R', 'N', d, f.n1, f.n2, T(1), t2, f.s(), f.ld, f.s_h());
  }
  trtri_work<T>(t2.uplo == 'U', unit, f.n2, t2.p, t2.ld, &k);
}

template <class T> void tftri(const char *transr, const char *uplo, const char *diag, const idx *pn, T *a, idx *info) {
  idx n = *pn;
  *info = 0;
  idx pos = 0;
  if (!rfp_transr_ok<T>(transr)) pos = 1;
  else if (!same(uplo, 'U') && !same(uplo, 'L')) pos = 2;
  else if (!same(diag, 'N') && !same(diag, 'U')) pos = 3;
  else if (n < 0) pos = 4;
  if (pos) return report<T>("TFTRI", pos, info);
  if (n == 0) return;
  Rfp<T> f(n, same(uplo, 'L'), same(transr, 'N'), a);
  tftri_work<T>(f, same(diag, 'U'), info);
}

// Hermitian update of a diagonal block by the off-diagonal block X (A21
// for 'L', A12 for 'U'): T += alpha X X^H or alpha X^H X, whichever has the
// order of T (block 2 of 'L' and block 1 of 'U' take X X^H).
template <class T>
void rfp_herk_diag(const Rfp<T> &f, const RfpTri<T> &t, bool second, real_t<T> alpha) {
  const idx k = second ? f.n1 : f.n2;
  const bool x_xh = second == f.lower;
  const char tr = eff_trans<T>(x_xh ? 'N' : flip_trans<T>('N'), f.s_h());
  blas::herk(t.uplo, tr, t.n, k, alpha, f.s(), f.ld, real_t<T>(1), t.p, t.ld);
}

// Cholesky factorization: A11 = F11 F11^H, the off-diagonal block solved
// against F11, A22 updated by a rank-n1 product and factored.
template <class T> void pftrf_work(const Rfp<T> &f, idx *info) {
  using R = real_t<T>;
  const RfpTri<T> t1 = f.t1(), t2 = f.t2();
  const char u1[2] = {t1.uplo, 0}, u2[2] = {t2.uplo, 0};
  potrf<T>(u1, &f.n1, t1.p, &t1.ld, info);
  if (*info != 0) return;
  if (f.lower) rfp_off_op<T, true>('R', flip_trans<T>('N'), 'N', f.n2, f.n1, T(1), t1, f.s(), f.ld, f.s_h());
  else rfp_off_op<T, true>('L', flip_trans<T>('N'), 'N', f.n1, f.n2, T(1), t1, f.s(), f.ld, f.s_h());
  // A22 -= L21 L21^H ('L') or U12^H U12 ('U').
  rfp_herk_diag<T>(f, t2, true, R(-1));
  potrf<T>(u2, &f.n2, t2.p, &t2.ld, info);
  if (*info > 0) *info += f.n1;
}

// Entry of the routines of (transr, uplo, n, a, info): checks, then
// work(layout, info) when n > 0.
template <class T, class Work>
void rfp_entry(const char *stem, const char *transr, const char *uplo, const idx *pn, T *a, idx *info, Work work) {
  idx n = *pn;
  *info = 0;
  idx pos = rfp_check<T>(transr, uplo, n);
  if (pos) return report<T>(stem, pos, info);
  if (n == 0) return;
  work(Rfp<T>(n, same(uplo, 'L'), same(transr, 'N'), a), info);
}

template <class T> void pftrf(const char *transr, const char *uplo, const idx *pn, T *a, idx *info) {
  rfp_entry<T>("PFTRF", transr, uplo, pn, a, info, pftrf_work<T>);
}

template <class T>
void pftrs(const char *transr, const char *uplo, const idx *pn, const idx *pnrhs, const T *a, T *b, const idx *pldb,
           idx *info) {
  idx n = *pn, nrhs = *pnrhs, ldb = *pldb;
  *info = 0;
  idx pos = rfp_check<T>(transr, uplo, n);
  if (!pos && nrhs < 0) pos = 4;
  if (!pos && ldb < imax(1, n)) pos = 7;
  if (pos) return report<T>("PFTRS", pos, info);
  if (n == 0 || nrhs == 0) return;
  Rfp<T> f(n, same(uplo, 'L'), same(transr, 'N'), const_cast<T *>(a));
  // A = L L^H: solve with L, then L^H; A = U^H U: with U^H, then U.
  const char c = flip_trans<T>('N');
  tfsm_work<T>(f, true, f.lower ? 'N' : c, 'N', n, nrhs, T(1), b, ldb);
  tfsm_work<T>(f, true, f.lower ? c : 'N', 'N', n, nrhs, T(1), b, ldb);
}

// inv(A) = inv(L)^H inv(L) ('L') or inv(U) inv(U)^H ('U'), block by block
// on the inverted factor W: the diagonal blocks by the in-place products
// of lauum plus the off-diagonal contribution, the off-diagonal block
// multiplied by W22^H.
template <class T> void pftri_work(const Rfp<T> &f, idx *info) {
  using R = real_t<T>;
  tftri_work<T>(f, false, info);
  if (*info != 0) return;
  const RfpTri<T> t1 = f.t1(), t2 = f.t2();
  const char c = flip_trans<T>('N');
  lauum_work<T>(t1.uplo == 'U', f.n1, t1.p, t1.ld);
  rfp_herk_diag<T>(f, t1, false, R(1));
  if (f.lower) rfp_off_op<T, false>('L', c, 'N', f.n2, f.n1, T(1), t2, f.s(), f.ld, f.s_h());
  else rfp_off_op<T, false>('R', c, 'N', f.n1, f.n2, T(1), t2, f.s(), f.ld, f.s_h());
  lauum_work<T>(t2.uplo == 'U', f.n2, t2.p, t2.ld);
}

template <class T> void pftri(const char *transr, const char *uplo, const idx *pn, T *a, idx *info) {
  rfp_entry<T>("PFTRI", transr, uplo, pn, a, info, pftri_work<T>);
}

// C := alpha op(A) op(A)^H + beta C: two Hermitian rank-k updates of the
// diagonal blocks and one product for the off-diagonal block.
template <class T>
void sfrk(const char *transr, const char *uplo, const char *trans, const idx *pn, const idx *pk,
          const real_t<T> *palpha, const T *a, const idx *plda, const real_t<T> *pbeta, T *c) {
  using R = real_t<T>;
  idx n = *pn, k = *pk, lda = *plda;
  const char *stem = is_complex_v<T> ? "HFRK" : "SFRK";
  const bool notrans = same(trans, 'N');
  idx pos = 0;
  if (!rfp_transr_ok<T>(transr)) pos = 1;
  else if (!same(uplo, 'U') && !same(uplo, 'L')) pos = 2;
  else if (!trans_ok<T>(trans)) pos = 3;
  else if (n < 0) pos = 4;
  else if (k < 0) pos = 5;
  else if (lda < imax(1, notrans ? n : k)) pos = 8;
  if (pos) return report<T>(stem, pos, nullptr);
  const R alpha = *palpha, beta = *pbeta;
  if (n == 0 || ((alpha == R(0) || k == 0) && beta == R(1))) return;
  if (alpha == R(0) && beta == R(0)) {
    for (idx i = 0; i < n * (n + 1) / 2; ++i) c[i] = T(0);
    return;
  }
  Rfp<T> f(n, same(uplo, 'L'), same(transr, 'N'), c);
  const RfpTri<T> t1 = f.t1(), t2 = f.t2();
  const char tr = notrans ? 'N' : flip_trans<T>('N');
  // Rows (or columns, transposed) of A that make the two halves of op(A).
  const T *a1 = a, *a2 = notrans ? a + f.n1 : a + f.n1 * lda;
  blas::herk(t1.uplo, tr, f.n1, k, alpha, a1, lda, beta, t1.p, t1.ld);
  blas::herk(t2.uplo, tr, f.n2, k, alpha, a2, lda, beta, t2.p, t2.ld);
  // S holds C21 = op(A)2 op(A)1^H when the layout stores A21, else C12.
  const bool c21 = f.lower == f.normal;
  const T *x = c21 ? a2 : a1, *y = c21 ? a1 : a2;
  const idx mx = c21 ? f.n2 : f.n1, my = c21 ? f.n1 : f.n2;
  const char ta = notrans ? 'N' : tr, tb = notrans ? flip_trans<T>('N') : 'N';
  blas::gemm(ta, tb, mx, my, k, T(alpha), x, lda, y, lda, T(beta), f.s(), f.ld);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_RFP_PFTRF_H
