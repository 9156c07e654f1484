// CBLAS level-3 entries. Checks in argument order with CBLAS positions (the
// layout, position 1, after the flags and dimensions, then the leading
// dimensions for the layout given); a row-major call computes the transposed
// problem in column-major terms: operands exchanged for gemm, side and uplo
// exchanged for the others.
#include "blas/interface/cblas_common.h"

using namespace nxl::cblas;
typedef nxl_int Int;
#define API extern "C" NXL_API

namespace {

template <class T> inline T value(const T &v) { return v; }
template <class T> inline T value_of(const void *p) { return *static_cast<const T *>(p); }

template <class T, class Fn>
void gemm(const char *name, Fn fortran, int layout, int ta, int tb, Int m, Int n, Int k, T alpha,
          const T *a, Int lda, const T *b, Int ldb, T beta, T *c, Int ldc) {
  checks ck{name};
  ck(trans_bad(ta), 2)(trans_bad(tb), 3)(m < 0, 4)(n < 0, 5)(k < 0, 6)(layout_bad(layout), 1);
  if (ck.failed) return;
  if (layout == ColMajor) {
    ck(lda < mx1(ta == NoTrans ? m : k), 9)(ldb < mx1(tb == NoTrans ? k : n), 11)(ldc < mx1(m), 14);
    if (!ck.failed)
      fortran(trans_char(ta), trans_char(tb), &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc);
  } else {
    ck(lda < mx1(ta == NoTrans ? k : m), 9)(ldb < mx1(tb == NoTrans ? n : k), 11)(ldc < mx1(n), 14);
    if (!ck.failed)
      fortran(trans_char(tb), trans_char(ta), &n, &m, &k, &alpha, b, &ldb, a, &lda, &beta, c, &ldc);
  }
}

// symm and hemm: the Hermitian matrix stored in a row-major triangle is the
// transpose of the one in the swapped column-major triangle, and it is
// Hermitian too, so exchanging side and uplo suffices.
template <class T, class Fn>
void symm(const char *name, Fn fortran, int layout, int side, int uplo, Int m, Int n, T alpha, const T *a,
          Int lda, const T *b, Int ldb, T beta, T *c, Int ldc) {
  checks ck{name};
  ck(side_bad(side), 2)(uplo_bad(uplo), 3)(m < 0, 4)(n < 0, 5)(layout_bad(layout), 1);
  if (ck.failed) return;
  const Int rows = layout == ColMajor ? m : n;
  ck(lda < mx1(side == Left ? m : n), 8)(ldb < mx1(rows), 10)(ldc < mx1(rows), 13);
  if (ck.failed) return;
  if (layout == ColMajor)
    fortran(side_char(side), uplo_char(uplo), &m, &n, &alpha, a, &lda, b, &ldb, &beta, c, &ldc);
  else
    fortran(side_swapped(side), uplo_swapped(uplo), &n, &m, &alpha, a, &lda, b, &ldb, &beta, c, &ldc);
}

// syrk, herk, syr2k, her2k. `herm` selects the Hermitian forms, whose
// transposed flag is C; a row-major her2k conjugates alpha.
template <class T, class A, class B, class Fn>
void rank(const char *name, Fn fortran, bool herm, bool two, int layout, int uplo, int trans, Int n, Int k,
          A alpha, const T *a, Int lda, const T *b, Int ldb, B beta, T *c, Int ldc) {
  const bool complex = nxl::is_complex_v<T>;
  bool bad = trans_bad(trans);
  if (complex && herm) bad |= trans == Trans;
  if (complex && !herm) bad |= trans == ConjTrans;
  checks ck{name};
  ck(uplo_bad(uplo), 2)(bad, 3)(n < 0, 4)(k < 0, 5)(layout_bad(layout), 1);
  if (ck.failed) return;
  const bool notrans = trans == NoTrans;
  const Int rows = (layout == ColMajor) == notrans ? n : k;
  ck(lda < mx1(rows), 8);
  if (two) ck(ldb < mx1(rows), 10);
  ck(ldc < mx1(n), two ? 13 : 11);
  if (ck.failed) return;
  if (layout == ColMajor) {
    fortran(uplo_char(uplo), trans_char(trans), &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc);
    return;
  }
  const char *t = notrans ? (herm ? "C" : "T") : "N";
  A al = alpha;
  if (herm && two) al = nxl::conj(alpha);
  fortran(uplo_swapped(uplo), t, &n, &k, &al, a, &lda, b, &ldb, &beta, c, &ldc);
}

// trmm, trsm: B := alpha op(A) B or alpha B op(A); row-major exchanges side
// and uplo and keeps the transposition flag.
template <class T, class Fn>
void trxm(const char *name, Fn fortran, int layout, int side, int uplo, int ta, int diag, Int m, Int n,
          T alpha, const T *a, Int lda, T *b, Int ldb) {
  checks ck{name};
  ck(side_bad(side), 2)(uplo_bad(uplo), 3)(trans_bad(ta), 4)(diag_bad(diag), 5)(m < 0, 6)(n < 0, 7);
  ck(layout_bad(layout), 1);
  if (ck.failed) return;
  ck(lda < mx1(side == Left ? m : n), 10)(ldb < mx1(layout == ColMajor ? m : n), 12);
  if (ck.failed) return;
  if (layout == ColMajor)
    fortran(side_char(side), uplo_char(uplo), trans_char(ta), diag_char(diag), &m, &n, &alpha, a, &lda, b, &ldb);
  else
    fortran(side_swapped(side), uplo_swapped(uplo), trans_char(ta), diag_char(diag), &n, &m, &alpha, a, &lda, b,
            &ldb);
}

}  // namespace

#define NXL_CBLAS_L3(P, p, T, VT, VAL, GET)                                                      \
  API void cblas_##p##gemm(int layout, int ta, int tb, Int m, Int n, Int k, VAL alpha,           \
                           const VT *a, Int lda, const VT *b, Int ldb, VAL beta, VT *c, Int ldc) { \
    gemm<T>("cblas_" #p "gemm", P##GEMM, layout, ta, tb, m, n, k, GET(alpha), cp<T>(a), lda,     \
            cp<T>(b), ldb, GET(beta), mp<T>(c), ldc);                                            \
  }                                                                                              \
  API void cblas_##p##symm(int layout, int side, int uplo, Int m, Int n, VAL alpha, const VT *a, \
                           Int lda, const VT *b, Int ldb, VAL beta, VT *c, Int ldc) {            \
    symm<T>("cblas_" #p "symm", P##SYMM, layout, side, uplo, m, n, GET(alpha), cp<T>(a), lda,    \
            cp<T>(b), ldb, GET(beta), mp<T>(c), ldc);                                            \
  }                                                                                              \
  API void cblas_##p##syrk(int layout, int uplo, int trans, Int n, Int k, VAL alpha,             \
                           const VT *a, Int lda, VAL beta, VT *c, Int ldc) {                     \
    auto f = [](F u, F t, I n, I k, const T *al, const T *a, I lda, const T *, I,                \
                const T *be, T *c, I ldc) { P##SYRK(u, t, n, k, al, a, lda, be, c, ldc); };      \
    rank<T, T, T>("cblas_" #p "syrk", f, false, false, layout, uplo, trans, n, k, GET(alpha),    \
                  cp<T>(a), lda, nullptr, 1, GET(beta), mp<T>(c), ldc);                          \
  }                                                                                              \
  API void cblas_##p##syr2k(int layout, int uplo, int trans, Int n, Int k, VAL alpha,            \
                            const VT *a, Int lda, const VT *b, Int ldb, VAL beta, VT *c,         \
                            Int ldc) {                                                           \
    rank<T, T, T>("cblas_" #p "syr2k", P##SYR2K, false, true, layout, uplo, trans, n, k,         \
                  GET(alpha), cp<T>(a), lda, cp<T>(b), ldb, GET(beta), mp<T>(c), ldc);           \
  }                                                                                              \
  API void cblas_##p##trmm(int layout, int side, int uplo, int ta, int diag, Int m, Int n,       \
                           VAL alpha, const VT *a, Int lda, VT *b, Int ldb) {                    \
    trxm<T>("cblas_" #p "trmm", P##TRMM, layout, side, uplo, ta, diag, m, n, GET(alpha),         \
            cp<T>(a), lda, mp<T>(b), ldb);                                                       \
  }                                                                                              \
  API void cblas_##p##trsm(int layout, int side, int uplo, int ta, int diag, Int m, Int n,       \
                           VAL alpha, const VT *a, Int lda, VT *b, Int ldb) {                    \
    trxm<T>("cblas_" #p "trsm", P##TRSM, layout, side, uplo, ta, diag, m, n, GET(alpha),         \
            cp<T>(a), lda, mp<T>(b), ldb);                                                       \
  }

#define NXL_CBLAS_L3_HERM(P, p, T, R, GET)                                                       \
  API void cblas_##p##hemm(int layout, int side, int uplo, Int m, Int n, const void *alpha,      \
                           const void *a, Int lda, const void *b, Int ldb, const void *beta,     \
                           void *c, Int ldc) {                                                   \
    symm<T>("cblas_" #p "hemm", P##HEMM, layout, side, uplo, m, n, GET(alpha), cp<T>(a), lda,    \
            cp<T>(b), ldb, GET(beta), mp<T>(c), ldc);                                            \
  }                                                                                              \
  API void cblas_##p##herk(int layout, int uplo, int trans, Int n, Int k, const R alpha,         \
                           const void *a, Int lda, const R beta, void *c, Int ldc) {             \
    auto f = [](F u, F t, I n, I k, const R *al, const T *a, I lda, const T *, I, const R *be,   \
                T *c, I ldc) { P##HERK(u, t, n, k, al, a, lda, be, c, ldc); };                   \
    rank<T, R, R>("cblas_" #p "herk", f, true, false, layout, uplo, trans, n, k, alpha,          \
                  cp<T>(a), lda, nullptr, 1, beta, mp<T>(c), ldc);                               \
  }                                                                                              \
  API void cblas_##p##her2k(int layout, int uplo, int trans, Int n, Int k, const void *alpha,    \
                            const void *a, Int lda, const void *b, Int ldb, const R beta,        \
                            void *c, Int ldc) {                                                  \
    rank<T, T, R>("cblas_" #p "her2k", P##HER2K, true, true, layout, uplo, trans, n, k,          \
                  GET(alpha), cp<T>(a), lda, cp<T>(b), ldb, beta, mp<T>(c), ldc);                \
  }

#define NXL_REAL_VAL(v) value(v)
#define NXL_CPLX_VAL_F(v) value_of<cfloat>(v)
#define NXL_CPLX_VAL_D(v) value_of<cdouble>(v)

NXL_CBLAS_L3(S, s, float, float, const float, NXL_REAL_VAL)
NXL_CBLAS_L3(D, d, double, double, const double, NXL_REAL_VAL)
NXL_CBLAS_L3(C, c, cfloat, void, const void *, NXL_CPLX_VAL_F)
NXL_CBLAS_L3(Z, z, cdouble, void, const void *, NXL_CPLX_VAL_D)
NXL_CBLAS_L3_HERM(C, c, cfloat, float, NXL_CPLX_VAL_F)
NXL_CBLAS_L3_HERM(Z, z, cdouble, double, NXL_CPLX_VAL_D)
