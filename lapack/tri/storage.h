// Views of a triangular matrix in full (tr), packed (tp) or band (tb)
// storage, so that one template serves the three: each view gives the
// diagonal entry of column j, the off-diagonal part of column j as a
// contiguous run of rows [lo, hi), and the plain level-2 solve and product
// with op(A) on a unit-stride vector.
#ifndef NXL_LAPACK_TRI_STORAGE_H
#define NXL_LAPACK_TRI_STORAGE_H

#include "lapack/common.h"

// Level-2 packed and band triangular kernels of the BLAS dispatch layer.
#define NXL_LT_TP(T) (const char *, const char *, const char *, const nxl_int *, const T *, T *, \
  const nxl_int *, int, int, int)
#define NXL_LT_TB(T) (const char *, const char *, const char *, const nxl_int *, const nxl_int *, \
  const T *, const nxl_int *, T *, const nxl_int *, int, int, int)
#define NXL_LT_DECL(stem, params)                    \
  extern "C" void nxl_blas_s##stem params(float);    \
  extern "C" void nxl_blas_d##stem params(double);   \
  extern "C" void nxl_blas_c##stem params(nxl_c8);   \
  extern "C" void nxl_blas_z##stem params(nxl_c16);
NXL_LT_DECL(tpsv, NXL_LT_TP)
NXL_LT_DECL(tpmv, NXL_LT_TP)
NXL_LT_DECL(tbsv, NXL_LT_TB)
NXL_LT_DECL(tbmv, NXL_LT_TB)
#undef NXL_LT_DECL

namespace nxl {
namespace blas {

#define NXL_LT_OVL(T, p)                                                                              \
  inline void tpsv(char u, char t, char d, idx n, const T *ap, T *x) {                              \
    idx one = 1;                                                                                    \
    nxl_blas_##p##tpsv(&u, &t, &d, &n, ap, x, &one, 1, 1, 1);                                       \
  }                                                                                                 \
  inline void tpmv(char u, char t, char d, idx n, const T *ap, T *x) {                              \
    idx one = 1;                                                                                    \
    nxl_blas_##p##tpmv(&u, &t, &d, &n, ap, x, &one, 1, 1, 1);                                       \
  }                                                                                                 \
  inline void tbsv(char u, char t, char d, idx n, idx k, const T *ab, idx ldab, T *x) {             \
    idx one = 1;                                                                                    \
    nxl_blas_##p##tbsv(&u, &t, &d, &n, &k, ab, &ldab, x, &one, 1, 1, 1);                            \
  }                                                                                                 \
  inline void tbmv(char u, char t, char d, idx n, idx k, const T *ab, idx ldab, T *x) {             \
    idx one = 1;                                                                                    \
    nxl_blas_##p##tbmv(&u, &t, &d, &n, &k, ab, &ldab, x, &one, 1, 1, 1);                            \
  }
NXL_LT_OVL(float, s)
NXL_LT_OVL(double, d)
NXL_LT_OVL(nxl_c8, c)
NXL_LT_OVL(nxl_c16, z)
#undef NXL_LT_OVL

}  // namespace blas

namespace lapack {

// Offset of column j of a packed triangle of order n (its first stored row
// is 0 for upper, j for lower).
inline idx packed_col(bool up, idx n, idx j) { return up ? j * (j + 1) / 2 : j * (2 * n - j + 1) / 2; }

template <class T> struct FullTri {
  bool up, unit;
  idx n;
  const T *a;
  idx lda;
  T diag(idx j) const { return a[j + j * lda]; }
  // One more than the most nonzeros a row can have.
  idx row_bound() const { return n + 1; }
  const T *col(idx j, idx &lo, idx &hi) const {
    if (up) { lo = 0; hi = j; }
    else { lo = j + 1; hi = n; }
    return a + lo + j * lda;
  }
  void solve(char tr, T *x) const { blas::trsv(up ? 'U' : 'L', tr, unit ? 'U' : 'N', n, a, lda, x, 1); }
  void mult(char tr, T *x) const { blas::trmv(up ? 'U' : 'L', tr, unit ? 'U' : 'N', n, a, lda, x, 1); }
  // Several right-hand sides at once (columns of b).
  void solve_many(char tr, idx nrhs, T *b, idx ldb) const {
    blas::trsm('L', up ? 'U' : 'L', tr, unit ? 'U' : 'N', n, nrhs, T(1), a, lda, b, ldb);
  }
};

template <class T> struct PackedTri {
  bool up, unit;
  idx n;
  const T *ap;
  T diag(idx j) const { return ap[packed_col(up, n, j) + (up ? j : 0)]; }
  idx row_bound() const { return n + 1; }
  const T *col(idx j, idx &lo, idx &hi) const {
    idx c = packed_col(up, n, j);
    if (up) { lo = 0; hi = j; return ap + c; }
    lo = j + 1;
    hi = n;
    return ap + c + 1;
  }
  void solve(char tr, T *x) const { blas::tpsv(up ? 'U' : 'L', tr, unit ? 'U' : 'N', n, ap, x); }
  void mult(char tr, T *x) const { blas::tpmv(up ? 'U' : 'L', tr, unit ? 'U' : 'N', n, ap, x); }
  void solve_many(char tr, idx nrhs, T *b, idx ldb) const {
    for (idx k = 0; k < nrhs; ++k) solve(tr, b + k * ldb);
  }
};

template <class T> struct BandTri {
  bool up, unit;
  idx n, kd;
  const T *ab;
  idx ldab;
  T diag(idx j) const { return ab[(up ? kd : 0) + j * ldab]; }
  idx row_bound() const { return kd + 2; }
  const T *col(idx j, idx &lo, idx &hi) const {
    if (up) {
      lo = imax(0, j - kd);
      hi = j;
      return ab + (kd + lo - j) + j * ldab;
    }
    lo = j + 1;
    hi = imin(n, j + kd + 1);
    return ab + 1 + j * ldab;
  }
  void solve(char tr, T *x) const { blas::tbsv(up ? 'U' : 'L', tr, unit ? 'U' : 'N', n, kd, ab, ldab, x); }
  void mult(char tr, T *x) const { blas::tbmv(up ? 'U' : 'L', tr, unit ? 'U' : 'N', n, kd, ab, ldab, x); }
  void solve_many(char tr, idx nrhs, T *b, idx ldb) const {
    for (idx k = 0; k < nrhs; ++k) solve(tr, b + k * ldb);
  }
};

// First zero on the diagonal (1-based), 0 when there is none.
template <class T, class S> idx first_zero_on_diag(const S &s) {
  for (idx j = 0; j < s.n; ++j)
    if (s.diag(j) == T(0)) return j + 1;
  return 0;
}

// Checks of the flags shared by the triangular routines; returns the
// 1-based position of the first bad one among uplo, trans (when given) and
// diag, or 0.
inline idx check_uplo_trans_diag(const char *uplo, const char *trans, const char *diag) {
  idx pos = 1;
  if (!same(uplo, 'U') && !same(uplo, 'L')) return pos;
  if (trans) {
    ++pos;
    char t = upper(trans);
    if (t != 'N' && t != 'T' && t != 'C') return pos;
  }
  ++pos;
  if (!same(diag, 'N') && !same(diag, 'U')) return pos;
  return 0;
}

// Checks of a band solve's arguments (uplo, trans, diag, n, kd, nrhs, ab,
// ldab, b, ldb): the 1-based position of the first bad one, or 0.
inline idx check_band_solve(const char *uplo, const char *trans, const char *diag, idx n, idx kd, idx nrhs,
                            idx ldab, idx ldb) {
  idx pos = check_uplo_trans_diag(uplo, trans, diag);
  if (!pos && n < 0) pos = 4;
  if (!pos && kd < 0) pos = 5;
  if (!pos && nrhs < 0) pos = 6;
  if (!pos && ldab < kd + 1) pos = 8;
  if (!pos && ldb < imax(1, n)) pos = 10;
  return pos;
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRI_STORAGE_H
