// Panel of the blocked Aasen factorization P A P^T = L T L^H (T tridiagonal,
// L unit lower triangular with L(:, 0) = e_0), the upper form being the lower
// one of the conjugate (or plain, complex symmetric) transpose.
//
// Write W = L T, so A = sum_k W(:, k) L(:, k)^H with
//   W(:, k) = L(:, k-1) T(k-1, k) + L(:, k) T(k, k) + L(:, k+1) T(k+1, k).
// The driver hands the panel the m x m trailing matrix S from which the
// finished columns have been removed: after columns < c0 it has subtracted
// sum_{k<c0} W(:, k) L(:, k)^H and the cross term L(:, c0-1) T(c0-1, c0)
// L(:, c0)^H, which keeps what it removed Hermitian. Column j of S (local
// numbering) then equals sum_{k<=j} H(:, k) conj(L(j, k)) with H = W but for
// the panel's first column of a later panel, which lacks the cross term. So
// the panel finds, column after column,
//   H(j.., j) = S(j.., j) - H(j.., <j) conj(L(j, <j))^T,
//   T(j, j)   = H(j, j) - L(j, j-1) T(j-1, j),
//   v         = H(j+1.., j) - L(j+1.., j) T(j, j) - L(j+1.., j-1) T(j-1, j),
// pivots v's entry of largest |re| + |im| into row j+1 (rows and columns of
// S, rows of the stored L and of H), and keeps T(j+1, j) = v(j+1) and
// L(j+2.., j+1) = v(j+2..) / v(j+1).
//
// Storage (the standard's, for the panel at column c0 of the whole matrix):
// `a` points at entry (c0, c0 - 1) of the lower triangle, (c0 - 1, c0) of
// the upper one, when j1 = 2, and at (c0, c0) when j1 = 1 (the first panel,
// whose L(:, 0) = e_0 is not stored). Column k of L lies one column left of
// column k of S, below T(k, k-1); T's diagonal and subdiagonal take those of
// S; the upper form holds the rows of U = L^H likewise. ipiv(k + 1) (local,
// 1-based) is the row and column interchanged with local row k + 1 when
// column k was finished; the first panel also sets ipiv(1) = 1. On exit
// H(i, k) holds W(i, k) for rows i >= k (conjugated for 'U'), which the
// driver's trailing update uses. The panel reads S(:, 0) itself, so H needs
// no contents on entry.
//
// The algorithm runs on the raw stored entries seen through the transposed
// view for 'U': the conjugations of the upper form cancel, so one body
// serves both.
#ifndef NXL_LAPACK_AASEN_LASYF_AA_H
#define NXL_LAPACK_AASEN_LASYF_AA_H

#include "lapack/packed/sptrf.h"

namespace nxl {
namespace lapack {

// The stored triangle seen as the lower triangle of a matrix M (M = A for
// 'L', M = A^H or A^T for 'U'): ref(i, j), i >= j, is the storage of
// M(i, j), whose value is cjh(ref) for 'U'. rs and cs are the memory steps
// of i and j.
template <class T, bool herm> struct LowerView {
  bool up;
  T *a;
  idx rs, cs;
  LowerView(bool u, T *p, idx lda) : up(u), a(p), rs(u ? lda : 1), cs(u ? 1 : lda) {}
  T *at(idx i, idx j) const { return a + i * rs + j * cs; }
  T &ref(idx i, idx j) const { return *at(i, j); }
  T get(idx i, idx j) const { return up ? cjh<herm>(ref(i, j)) : ref(i, j); }
  void put(idx i, idx j, T v) const { ref(i, j) = up ? cjh<herm>(v) : v; }
};

// The panel: first nb columns of the m x m trailing matrix (see above).
// off = j1 - 1; x holds nb entries.
template <class T, bool herm>
void aasen_panel(bool up, idx off, idx m, idx nb, T *a, idx lda, idx *ipiv, T *h, idx ldh, T *x) {
  LowerView<T, herm> v(up, a, lda);
  auto s = [&](idx i, idx c) -> T & { return v.ref(i, c + off); };
  // L(i, k) for i > k, zero for the unstored L(:, 0) of the first panel.
  auto l = [&](idx i, idx k) -> T { return k + off >= 1 ? v.ref(i, k + off - 1) : T(0); };
  if (m <= 0 || nb <= 0) return;
  if (off == 0) ipiv[0] = 1;
  const idx k0 = 1 - off;  // first column of H that meets a stored L entry
  for (idx j = 0; j < imin(nb, m); ++j) {
    T *hj = h + j * ldh;
    for (idx i = j; i < m; ++i) hj[i] = s(i, j);
    if (j > k0) {
      for (idx k = k0; k < j; ++k) x[k] = cjh<herm>(l(j, k));
      blas::gemv('N', m - j, j - k0, T(-1), h + j + k0 * ldh, ldh, x + k0, 1, T(1), hj + j, 1);
    }
    // T(j-1, j) as the raw entries see it (the conjugate of the stored T(j, j-1)).
    T tc = j > 0 ? cjh<herm>(s(j, j - 1)) : T(0);
    T tjj = diag_of<herm>(j > 0 ? hj[j] - l(j, j - 1) * tc : hj[j]);
    s(j, j) = tjj;
    if (j + 1 == m) break;
    for (idx i = j + 1; i < m; ++i) {
      T vi = hj[i] - l(i, j) * tjj;
      if (j > 0) vi -= l(i, j - 1) * tc;
      s(i, j) = vi;
    }
    idx q = j + 1, p = j + blas::iamax(m - q, v.at(q, j + off), v.rs);
    if (p != q) {
      // Stored columns of L and the new column, the computed columns of H,
      // then the trailing matrix.
      blas::swap(j + off + 1, v.at(q, 0), v.cs, v.at(p, 0), v.cs);
      blas::swap(j + 1, h + q, ldh, h + p, ldh);
      sym_interchange<herm, T>(false, m, q, p, [&](idx i, idx k) -> T & { return s(i, k); });
    }
    ipiv[q] = p + 1;
    T piv = s(q, j);
    if (piv != T(0) && m - q > 1) blas::scal(m - q - 1, recip(piv), v.at(q + 1, j + off), v.rs);
  }
}

// The standard's lasyf_aa (symmetric) and lahef_aa (Hermitian) entries.
template <class T, bool herm>
void lasyf_aa_t(const char *uplo, const idx *j1, const idx *m, const idx *nb, T *a, const idx *lda, idx *ipiv,
                T *h, const idx *ldh, T *work) {
  aasen_panel<T, herm>(same(uplo, 'U'), *j1 >= 2 ? 1 : 0, *m, imin(*nb, *m), a, *lda, ipiv, h, *ldh, work);
}
template <class T>
void lasyf_aa(const char *uplo, const idx *j1, const idx *m, const idx *nb, T *a, const idx *lda, idx *ipiv, T *h,
              const idx *ldh, T *work) {
  lasyf_aa_t<T, false>(uplo, j1, m, nb, a, lda, ipiv, h, ldh, work);
}
template <class T>
void lahef_aa(const char *uplo, const idx *j1, const idx *m, const idx *nb, T *a, const idx *lda, idx *ipiv, T *h,
              const idx *ldh, T *work) {
  lasyf_aa_t<T, true>(uplo, j1, m, nb, a, lda, ipiv, h, ldh, work);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_AASEN_LASYF_AA_H
