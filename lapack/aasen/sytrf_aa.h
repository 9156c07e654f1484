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
#include "lapack/packed/sptrf.h"
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

// The stored triangle seen as the lower triangle of a matrix M (M = A for
// 'L', M = A^H or A^T for 'U'): ref(i, j), i >= j, is the storage of
// M(i, j), whose value is cjh(ref) for 'U'.
template <class T, bool herm> struct LowerView {
  bool up;
  T *a;
  idx lda;
  T &ref(idx i, idx j) const { return up ? a[j + i * lda] : a[i + j * lda]; }
  T get(idx i, idx j) const { return up ? cjh<herm>(ref(i, j)) : ref(i, j); }
  void put(idx i, idx j, T v) const { ref(i, j) = up ? cjh<herm>(v) : v; }
};

// Unblocked: factors the n x n matrix (only the stored triangle is
// referenced); work holds 2n entries. T's off-diagonal entries that are
// zero leave the matching column of L zero.
template <class T, bool herm> void aasen_unblocked(bool up, idx n, T *a, idx lda, idx *ipiv, T *work) {
  LowerView<T, herm> m{up, a, lda};
  T *h = work, *v = work + n;
  if (n == 0) return;
  ipiv[0] = 1;
  // L(i, k) for k >= 1, i >= k + 1; L(j, j) = 1, L(i, 0) = 0 for i >= 1.
  auto l = [&](idx i, idx k) -> T { return k == i ? T(1) : (k == 0 ? T(0) : m.get(i, k - 1)); };
  auto beta = [&](idx k) { return m.get(k + 1, k); };  // T(k+1, k)
  for (idx j = 0; j < n; ++j) {
    // H(k, j) = sum_r T(k, r) cjh(L(j, r)) for k < j.
    for (idx k = 0; k < j; ++k) {
      T s = diag_of<herm>(m.get(k, k)) * cjh<herm>(l(j, k));
      if (k > 0) s += beta(k - 1) * cjh<herm>(l(j, k - 1));
      s += cjh<herm>(beta(k)) * cjh<herm>(l(j, k + 1));
      h[k] = s;
    }
    // A(j, j) = sum_k L(j, k) H(k, j) gives H(j, j), then T(j, j).
    // (A Hermitian diagonal contributes its real part only; T(j, j) is
    // real, and H(j, j) is taken consistent with it.)
    T hjj = diag_of<herm>(m.get(j, j));
    for (idx k = 1; k < j; ++k) hjj -= l(j, k) * h[k];
    T tjj = j > 0 ? hjj - beta(j - 1) * cjh<herm>(l(j, j - 1)) : hjj;
    m.put(j, j, diag_of<herm>(tjj));
    h[j] = hjj - (tjj - diag_of<herm>(tjj));
    idx r = n - j - 1;
    if (r == 0) break;
    // v = A(j+1.., j) - L(j+1.., 1..j) H(1..j, j).
    for (idx i = 0; i < r; ++i) v[i] = m.get(j + 1 + i, j);
    if (j > 0) {
      if (!up) {
        blas::gemv('N', r, j, T(-1), a + j + 1, lda, h + 1, 1, T(1), v, 1);
      } else {
        // Rows of U are columns of the storage: conj(v) = A(j, j+1..) - U^T conj(h).
        for (idx k = 1; k <= j; ++k) h[k] = cjh<herm>(h[k]);
        for (idx i = 0; i < r; ++i) v[i] = cjh<herm>(v[i]);
        blas::gemv('T', j, r, T(-1), a + (j + 1) * lda, lda, h + 1, 1, T(1), v, 1);
        for (idx i = 0; i < r; ++i) v[i] = cjh<herm>(v[i]);
      }
    }
    // Pivot: the first entry of largest |re| + |im| goes to row j + 1.
    idx p = blas::iamax(r, v, 1) - 1;
    if (p > 0) {
      idx jp = j + 1, pp = j + 1 + p;
      std::swap(v[0], v[p]);
      for (idx k = 0; k < j; ++k) std::swap(m.ref(jp, k), m.ref(pp, k));
      sym_interchange<herm, T>(false, n, jp, pp, [&](idx i, idx k) -> T & { return m.ref(i, k); });
    }
    ipiv[j + 1] = j + 2 + p;
    // T(j+1, j) and column j+1 of L.
    m.put(j + 1, j, v[0]);
    T inv = v[0] != T(0) ? recip(v[0]) : T(0);
    for (idx i = 1; i < r; ++i) m.put(j + 1 + i, j, v[i] * inv);
  }
}

// Blocked, right-looking over panels of nb columns. With W = L T, A = W L^H.
// What a finished panel [j0, j1) takes from the trailing triangle must be
// Hermitian (symmetric), or the later interchanges of that triangle would
// not commute with it: it is Q(j1) - Q(j0), Q(K) = L(:, <K) T(<K, <K)
// L(:, <K)^H, that is
//   sum_{j0<=k<j1} W~(.., k) cjh(L(.., k)) + L(.., j0) T(j0, j0-1) cjh(L(.., j0-1)),
// W~ = W but for k = j1-1 without its L(.., j1) T(j1, j1-1) term. Column j
// of the next panel then finds, with Wx = [T(j0, j0-1) L(.., j0), W(.., j0..)],
//   T(j, j) = A(j, j) - Wx(j, ..) x - L(j, j-1) cjh(T(j, j-1)),
//   v       = A(j+1.., j) - Wx(j+1.., ..) x - L(j+1.., j-1) cjh(T(j, j-1))
//             - L(j+1.., j) T(j, j),
// x = cjh(L(j, j0-1..j-1)); v's largest entry (pivoted into row j+1) is
// T(j+1, j) and the rest times its inverse column j+1 of L. Column k of W,
//   W(.., k) = L(.., k-1) cjh(T(k, k-1)) + L(.., k) T(k, k) + L(.., k+1) T(k+1, k),
// is formed once L(.., k+1) is known. The trailing update runs column
// block by column block (matrix products, a work block per diagonal block).
// work: n (nb + 1) (Wx) + n (v) + nb + 1 (x) + nb nb (diagonal block).
inline idx aasen_blocked_work(idx n, idx nb) { return n * (nb + 1) + n + nb + 1 + nb * nb; }
constexpr idx kAasenNb = 96;

template <class T, bool herm> void aasen_blocked(bool up, idx n, T *a, idx lda, idx *ipiv, T *work, idx nb) {
  LowerView<T, herm> m{up, a, lda};
  const idx ldw = n;
  T *w = work, *v = w + n * (nb + 1), *x = v + n, *d = x + nb + 1;
  const char ct = herm ? 'C' : 'T';
  auto l = [&](idx i, idx k) -> T { return k == i ? T(1) : (k <= 0 || k > i ? T(0) : m.get(i, k - 1)); };
  auto beta = [&](idx k) { return m.get(k + 1, k); };
  ipiv[0] = 1;
  for (idx j0 = 0; j0 < n; j0 += nb) {
    idx j1 = imin(n, j0 + nb);
    // Wx column c holds k = j0 - 1 + c; column 0 only when j0 >= 2 (L(.., 0) = e_1).
    const idx c0 = j0 >= 2 ? 0 : 1;
    auto col = [&](idx k) { return w + (k - j0 + 1) * ldw; };
    auto form_w = [&](idx k, bool next) {
      T *wk = col(k);
      T tk = diag_of<herm>(m.get(k, k));
      T up1 = k > 0 ? cjh<herm>(beta(k - 1)) : T(0), dn1 = next && k + 1 < n ? beta(k) : T(0);
      for (idx i = k + 1; i < n; ++i) wk[i] = l(i, k - 1) * up1 + l(i, k) * tk + l(i, k + 1) * dn1;
    };
    if (c0 == 0) {
      T b = beta(j0 - 1);
      for (idx i = j0; i < n; ++i) w[i] = l(i, j0) * b;
    }
    for (idx j = j0; j < j1; ++j) {
      if (j > j0) form_w(j - 1, true);
      idx cnt = j - j0 + 1 - c0;  // Wx columns c0 .. j - j0
      for (idx c = c0; c <= j - j0; ++c) x[c] = cjh<herm>(l(j, j0 - 1 + c));
      T s = diag_of<herm>(m.get(j, j));
      for (idx c = c0; c <= j - j0; ++c) s -= w[j + c * ldw] * x[c];
      T bc = j > 0 ? cjh<herm>(beta(j - 1)) : T(0);
      if (j > 0) s -= l(j, j - 1) * bc;
      T tjj = diag_of<herm>(s);
      m.put(j, j, tjj);
      idx r = n - j - 1;
      if (r == 0) break;
      for (idx i = 0; i < r; ++i) v[i] = m.get(j + 1 + i, j);
      if (cnt > 0) blas::gemv('N', r, cnt, T(-1), w + c0 * ldw + j + 1, ldw, x + c0, 1, T(1), v, 1);
      if (j > 0)
        for (idx i = 0; i < r; ++i) v[i] -= l(j + 1 + i, j - 1) * bc + l(j + 1 + i, j) * tjj;
      idx p = blas::iamax(r, v, 1) - 1;
      if (p > 0) {
        idx jp = j + 1, pp = j + 1 + p;
        std::swap(v[0], v[p]);
        for (idx k = 0; k < j; ++k) std::swap(m.ref(jp, k), m.ref(pp, k));
        for (idx c = 0; c <= j - j0; ++c) std::swap(w[jp + c * ldw], w[pp + c * ldw]);
        sym_interchange<herm, T>(false, n, jp, pp, [&](idx i, idx k) -> T & { return m.ref(i, k); });
      }
      ipiv[j + 1] = j + 2 + p;
      m.put(j + 1, j, v[0]);
      T inv = v[0] != T(0) ? recip(v[0]) : T(0);
      for (idx i = 1; i < r; ++i) m.put(j + 1 + i, j, v[i] * inv);
    }
    if (j1 >= n) break;
    form_w(j1 - 1, false);
    // Trailing triangle: C(i, j) -= sum_k Wx(i, k) cjh(L(j, k)), i >= j >= j1,
    // k from j0 - 1 (or 1: L(j, 0) = 0) to j1 - 1.
    idx kf = j0 >= 2 ? j0 - 1 : imax(j0, 1), nk = j1 - kf;
    if (nk <= 0) continue;
    const T *wb = col(kf);
    for (idx c = j1; c < n; c += nb) {
      idx cb = imin(nb, n - c), rb = n - c - cb;
      if (!up) {
        const T *lb = a + c + (kf - 1) * lda;  // L(c.., kf..j1-1)
        blas::gemm('N', ct, cb, cb, nk, T(1), wb + c, ldw, lb, lda, T(0), d, nb);
        for (idx q = 0; q < cb; ++q)
          for (idx p = q; p < cb; ++p) a[c + p + (c + q) * lda] -= d[p + q * nb];
        if (rb > 0) blas::gemm('N', ct, rb, cb, nk, T(-1), wb + c + cb, ldw, lb, lda, T(1), a + c + cb + c * lda, lda);
      } else {
        const T *xb = a + (kf - 1) + c * lda;  // the rows of U: L(c.., k)^H
        blas::gemm('N', 'N', cb, cb, nk, T(1), wb + c, ldw, xb, lda, T(0), d, nb);
        for (idx q = 0; q < cb; ++q)
          for (idx p = q; p < cb; ++p) a[c + q + (c + p) * lda] -= cjh<herm>(d[p + q * nb]);
        if (rb > 0)
          blas::gemm(ct, ct, cb, rb, nk, T(-1), xb, lda, wb + c + cb, ldw, T(1), a + c + (c + cb) * lda, lda);
      }
    }
  }
}

// Blocked when the work holds the panel, unblocked otherwise (or for
// small n).
template <class T, bool herm> void aasen_factor(bool up, idx n, T *a, idx lda, idx *ipiv, T *work, idx lwork) {
  if (n >= 2 * kAasenNb && lwork >= aasen_blocked_work(n, kAasenNb))
    aasen_blocked<T, herm>(up, n, a, lda, ipiv, work, kAasenNb);
  else
    aasen_unblocked<T, herm>(up, n, a, lda, ipiv, work);
}
// Work size for the blocked form (what the queries answer).
inline idx aasen_best_work(idx n) { return n >= 2 * kAasenNb ? aasen_blocked_work(n, kAasenNb) : 2 * n; }

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
