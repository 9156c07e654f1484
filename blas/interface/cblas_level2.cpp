// CBLAS level-2 entries. Checks in argument order with CBLAS positions (the
// layout, position 1, is checked after the flags and dimensions); column-major
// calls go straight to the Fortran layer, row-major ones call it on the
// transposed problem: a row-major matrix is the column-major view of its
// transpose. Where that transpose brings in a conjugate (ConjTrans products,
// Hermitian matrices, gerc), the call runs on conjugated vectors.
#include "blas/interface/cblas_common.h"

using namespace nxl::cblas;
typedef nxl_int Int;
typedef const nxl_int *IP;
#define API extern "C" NXL_API

namespace {

template <class T> inline T value(const T &v) { return v; }
template <class T> inline T value_of(const void *p) { return *static_cast<const T *>(p); }

// y = alpha op(A) x + beta y, general (band when Band) matrix.
template <class T, class Fn>
void gemv(const char *name, Fn fortran, bool band, int layout, int trans, Int m, Int n, Int kl, Int ku, T alpha,
          const T *a, Int lda, const T *x, Int incx, T beta, T *y, Int incy) {
  const int o = band ? 2 : 0;  // kl and ku shift the later positions
  checks c{name};
  c(trans_bad(trans), 2)(m < 0, 3)(n < 0, 4);
  if (band) c(kl < 0, 5)(ku < 0, 6);
  c(layout_bad(layout), 1);
  if (band) c(lda < kl + ku + 1, 7 + o);
  else c(lda < mx1(layout == ColMajor ? m : n), 7);
  c(incx == 0, 9 + o)(incy == 0, 12 + o);
  if (c.failed) return;
  if (layout == ColMajor) {
    fortran(trans_char(trans), &m, &n, &kl, &ku, &alpha, a, &lda, x, &incx, &beta, y, &incy);
    return;
  }
  if (trans != ConjTrans || !nxl::is_complex_v<T>) {
    fortran(trans == NoTrans ? "T" : "N", &n, &m, &ku, &kl, &alpha, a, &lda, x, &incx, &beta, y, &incy);
    return;
  }
  // conj(y) = conj(alpha) At conj(x) + conj(beta) conj(y), At the column-major view.
  T *xc = conj_copy(name, m, x, incx);
  if (!xc) return;
  const Int one = 1;
  const T ac = nxl::conj(alpha), bc = nxl::conj(beta);
  conj_inplace(n, y, incy);
  fortran("N", &n, &m, &ku, &kl, &ac, a, &lda, xc, &one, &bc, y, &incy);
  conj_inplace(n, y, incy);
  nxl_serv_deallocate(xc);
}

// Triangular multiply or solve, full (kind 0), band (1) or packed (2).
template <class T, class Fn>
void trxv(const char *name, Fn fortran, int kind, int layout, int uplo, int trans, int diag, Int n, Int k,
          const T *a, Int lda, T *x, Int incx) {
  checks c{name};
  c(uplo_bad(uplo), 2)(trans_bad(trans), 3)(diag_bad(diag), 4)(n < 0, 5);
  if (kind == 1) c(k < 0, 6);
  c(layout_bad(layout), 1);
  if (kind == 0) c(lda < mx1(n), 7)(incx == 0, 9);
  if (kind == 1) c(lda < k + 1, 8)(incx == 0, 10);
  if (kind == 2) c(incx == 0, 8);
  if (c.failed) return;
  if (layout == ColMajor) {
    fortran(uplo_char(uplo), trans_char(trans), diag_char(diag), &n, &k, a, &lda, x, &incx);
    return;
  }
  if (trans != ConjTrans || !nxl::is_complex_v<T>) {
    fortran(uplo_swapped(uplo), trans == NoTrans ? "T" : "N", diag_char(diag), &n, &k, a, &lda, x, &incx);
    return;
  }
  conj_inplace(n, x, incx);
  fortran(uplo_swapped(uplo), "N", diag_char(diag), &n, &k, a, &lda, x, &incx);
  conj_inplace(n, x, incx);
}

// Symmetric or Hermitian matrix-vector product, full (0), band (1), packed (2).
template <class T, class Fn>
void symv(const char *name, Fn fortran, bool herm, int kind, int layout, int uplo, Int n, Int k, T alpha,
          const T *a, Int lda, const T *x, Int incx, T beta, T *y, Int incy) {
  checks c{name};
  c(uplo_bad(uplo), 2)(n < 0, 3);
  if (kind == 1) c(k < 0, 4);
  c(layout_bad(layout), 1);
  if (kind == 0) c(lda < mx1(n), 6)(incx == 0, 8)(incy == 0, 11);
  if (kind == 1) c(lda < k + 1, 7)(incx == 0, 9)(incy == 0, 12);
  if (kind == 2) c(incx == 0, 7)(incy == 0, 10);
  if (c.failed) return;
  if (layout == ColMajor) {
    fortran(uplo_char(uplo), &n, &k, &alpha, a, &lda, x, &incx, &beta, y, &incy);
    return;
  }
  if (!herm) {
    fortran(uplo_swapped(uplo), &n, &k, &alpha, a, &lda, x, &incx, &beta, y, &incy);
    return;
  }
  // The swapped triangle holds conj(A): conj(y) = conj(alpha) conj(A) conj(x) + conj(beta) conj(y).
  T *xc = conj_copy(name, n, x, incx);
  if (!xc) return;
  const Int one = 1;
  const T ac = nxl::conj(alpha), bc = nxl::conj(beta);
  conj_inplace(n, y, incy);
  fortran(uplo_swapped(uplo), &n, &k, &ac, a, &lda, xc, &one, &bc, y, &incy);
  conj_inplace(n, y, incy);
  nxl_serv_deallocate(xc);
}

// A += alpha x y^T (ger, geru) or alpha x y^H (gerc).
template <class T, class Fn>
void ger(const char *name, Fn fortran, bool conjugate, int layout, Int m, Int n, T alpha, const T *x, Int incx,
         const T *y, Int incy, T *a, Int lda) {
  checks c{name};
  c(m < 0, 2)(n < 0, 3)(layout_bad(layout), 1)(incx == 0, 6)(incy == 0, 8);
  c(lda < mx1(layout == ColMajor ? m : n), 10);
  if (c.failed) return;
  if (layout == ColMajor) {
    fortran(&m, &n, &alpha, x, &incx, y, &incy, a, &lda, conjugate);
    return;
  }
  if (!conjugate) {
    fortran(&n, &m, &alpha, y, &incy, x, &incx, a, &lda, false);
    return;
  }
  // At += alpha conj(y) x^T.
  T *yc = conj_copy(name, n, y, incy);
  if (!yc) return;
  const Int one = 1;
  fortran(&n, &m, &alpha, yc, &one, x, &incx, a, &lda, false);
  nxl_serv_deallocate(yc);
}

// Symmetric or Hermitian rank-1 (Two = false) or rank-2 update, full or packed.
template <class T, class S, class Fn>
void syr(const char *name, Fn fortran, bool herm, bool two, bool packed, int layout, int uplo, Int n, S alpha,
         const T *x, Int incx, const T *y, Int incy, T *a, Int lda) {
  checks c{name};
  c(uplo_bad(uplo), 2)(n < 0, 3)(layout_bad(layout), 1)(incx == 0, 6);
  if (two) c(incy == 0, 8);
  if (!packed) c(lda < mx1(n), two ? 10 : 8);
  if (c.failed) return;
  if (layout == ColMajor) {
    fortran(uplo_char(uplo), &n, &alpha, x, &incx, y, &incy, a, &lda);
    return;
  }
  if (!herm) {
    fortran(uplo_swapped(uplo), &n, &alpha, x, &incx, y, &incy, a, &lda);
    return;
  }
  // The swapped triangle holds conj(A): conj(A) += alpha conj(x) conj(x)^H (rank 1),
  // or alpha conj(y) conj(x)^H + conj(alpha) conj(x) conj(y)^H (rank 2).
  const Int one = 1;
  T *xc = conj_copy(name, n, x, incx);
  if (!xc) return;
  if (!two) {
    fortran(uplo_swapped(uplo), &n, &alpha, xc, &one, xc, &one, a, &lda);
  } else {
    T *yc = conj_copy(name, n, y, incy);
    if (yc) {
      fortran(uplo_swapped(uplo), &n, &alpha, yc, &one, xc, &one, a, &lda);
      nxl_serv_deallocate(yc);
    }
  }
  nxl_serv_deallocate(xc);
}

}  // namespace

#define NXL_CBLAS_L2_ALL(P, p, T, VT, VAL, GET)                                                  \
  API void cblas_##p##gemv(int layout, int trans, Int m, Int n, VAL alpha, const VT *a, Int lda,       \
                           const VT *x, Int incx, VAL beta, VT *y, Int incy) {                       \
    auto f = [](const char *t, IP m, IP n, IP, IP, const T *al, const T *a, IP lda, const T *x,  \
                IP incx, const T *be, T *y, IP incy) {                                           \
      P##GEMV(t, m, n, al, a, lda, x, incx, be, y, incy);                                        \
    };                                                                                           \
    gemv<T>("cblas_" #p "gemv", f, false, layout, trans, m, n, 0, 0, GET(alpha), cp<T>(a), lda,  \
            cp<T>(x), incx, GET(beta), mp<T>(y), incy);                                          \
  }                                                                                              \
  API void cblas_##p##gbmv(int layout, int trans, Int m, Int n, Int kl, Int ku, VAL alpha, const VT *a,  \
                           Int lda, const VT *x, Int incx, VAL beta, VT *y, Int incy) {                \
    gemv<T>("cblas_" #p "gbmv", P##GBMV, true, layout, trans, m, n, kl, ku, GET(alpha),          \
            cp<T>(a), lda, cp<T>(x), incx, GET(beta), mp<T>(y), incy);                           \
  }                                                                                              \
  NXL_CBLAS_L2_TRI(P, p, T, VT, MV, mv)                                                          \
  NXL_CBLAS_L2_TRI(P, p, T, VT, SV, sv)

#define NXL_CBLAS_L2_TRI(P, p, T, VT, OP, op)                                                    \
  API void cblas_##p##tr##op(int layout, int uplo, int trans, int diag, Int n, const VT *a, Int lda, \
                             VT *x, Int incx) {                                                    \
    auto f = [](const char *u, const char *t, const char *d, IP n, IP, const T *a, IP lda, T *x, \
                IP incx) { P##TR##OP(u, t, d, n, a, lda, x, incx); };                            \
    trxv<T>("cblas_" #p "tr" #op, f, 0, layout, uplo, trans, diag, n, 0, cp<T>(a), lda,          \
            mp<T>(x), incx);                                                                     \
  }                                                                                              \
  API void cblas_##p##tb##op(int layout, int uplo, int trans, int diag, Int n, Int k, const VT *a,   \
                             Int lda, VT *x, Int incx) {                                             \
    trxv<T>("cblas_" #p "tb" #op, P##TB##OP, 1, layout, uplo, trans, diag, n, k, cp<T>(a), lda,  \
            mp<T>(x), incx);                                                                     \
  }                                                                                              \
  API void cblas_##p##tp##op(int layout, int uplo, int trans, int diag, Int n, const VT *ap,       \
                             VT *x, Int incx) {                                                    \
    auto f = [](const char *u, const char *t, const char *d, IP n, IP, const T *a, IP, T *x,     \
                IP incx) { P##TP##OP(u, t, d, n, a, x, incx); };                                 \
    trxv<T>("cblas_" #p "tp" #op, f, 2, layout, uplo, trans, diag, n, 0, cp<T>(ap), 1,           \
            mp<T>(x), incx);                                                                     \
  }

// Symmetric (real) or Hermitian (complex) families; S is the rank-1 scalar.
#define NXL_CBLAS_L2_SYM(P, p, T, VT, VAL, GET, S, HERM, SY, sy, SB, sb, SP, sp)                 \
  API void cblas_##p##sy##mv(int layout, int uplo, Int n, VAL alpha, const VT *a, Int lda,           \
                             const VT *x, Int incx, VAL beta, VT *y, Int incy) {                     \
    auto f = [](const char *u, IP n, IP, const T *al, const T *a, IP lda, const T *x, IP incx,   \
                const T *be, T *y, IP incy) { P##SY##MV(u, n, al, a, lda, x, incx, be, y, incy); }; \
    symv<T>("cblas_" #p #sy "mv", f, HERM, 0, layout, uplo, n, 0, GET(alpha), cp<T>(a), lda,     \
            cp<T>(x), incx, GET(beta), mp<T>(y), incy);                                          \
  }                                                                                              \
  API void cblas_##p##sb##mv(int layout, int uplo, Int n, Int k, VAL alpha, const VT *a, Int lda,      \
                             const VT *x, Int incx, VAL beta, VT *y, Int incy) {                     \
    symv<T>("cblas_" #p #sb "mv", P##SB##MV, HERM, 1, layout, uplo, n, k, GET(alpha), cp<T>(a),  \
            lda, cp<T>(x), incx, GET(beta), mp<T>(y), incy);                                     \
  }                                                                                              \
  API void cblas_##p##sp##mv(int layout, int uplo, Int n, VAL alpha, const VT *ap, const VT *x,    \
                             Int incx, VAL beta, VT *y, Int incy) {                                  \
    auto f = [](const char *u, IP n, IP, const T *al, const T *a, IP, const T *x, IP incx,       \
                const T *be, T *y, IP incy) { P##SP##MV(u, n, al, a, x, incx, be, y, incy); };   \
    symv<T>("cblas_" #p #sp "mv", f, HERM, 2, layout, uplo, n, 0, GET(alpha), cp<T>(ap), 1,      \
            cp<T>(x), incx, GET(beta), mp<T>(y), incy);                                          \
  }                                                                                              \
  API void cblas_##p##sy##r(int layout, int uplo, Int n, const S alpha, const VT *x, Int incx,       \
                            VT *a, Int lda) {                                                      \
    auto f = [](const char *u, IP n, const S *al, const T *x, IP incx, const T *, IP, T *a,      \
                IP lda) { P##SY##R(u, n, al, x, incx, a, lda); };                                \
    syr<T, S>("cblas_" #p #sy "r", f, HERM, false, false, layout, uplo, n, alpha, cp<T>(x),      \
              incx, nullptr, 1, mp<T>(a), lda);                                                  \
  }                                                                                              \
  API void cblas_##p##sp##r(int layout, int uplo, Int n, const S alpha, const VT *x, Int incx,       \
                            VT *ap) {                                                            \
    auto f = [](const char *u, IP n, const S *al, const T *x, IP incx, const T *, IP, T *a, IP) { \
      P##SP##R(u, n, al, x, incx, a);                                                            \
    };                                                                                           \
    syr<T, S>("cblas_" #p #sp "r", f, HERM, false, true, layout, uplo, n, alpha, cp<T>(x), incx, \
              nullptr, 1, mp<T>(ap), 1);                                                         \
  }                                                                                              \
  API void cblas_##p##sy##r2(int layout, int uplo, Int n, VAL alpha, const VT *x, Int incx,          \
                             const VT *y, Int incy, VT *a, Int lda) {                                \
    syr<T, T>("cblas_" #p #sy "r2", P##SY##R2, HERM, true, false, layout, uplo, n, GET(alpha),   \
              cp<T>(x), incx, cp<T>(y), incy, mp<T>(a), lda);                                    \
  }                                                                                              \
  API void cblas_##p##sp##r2(int layout, int uplo, Int n, VAL alpha, const VT *x, Int incx,          \
                             const VT *y, Int incy, VT *ap) {                                      \
    auto f = [](const char *u, IP n, const T *al, const T *x, IP incx, const T *y, IP incy,      \
                T *a, IP) { P##SP##R2(u, n, al, x, incx, y, incy, a); };                         \
    syr<T, T>("cblas_" #p #sp "r2", f, HERM, true, true, layout, uplo, n, GET(alpha), cp<T>(x),  \
              incx, cp<T>(y), incy, mp<T>(ap), 1);                                               \
  }

#define NXL_CBLAS_GER(p, name, T, VT, VAL, GET, F_PLAIN, F_CONJ, CONJ)                           \
  API void cblas_##p##name(int layout, Int m, Int n, VAL alpha, const VT *x, Int incx, const VT *y,    \
                           Int incy, VT *a, Int lda) {                                               \
    auto f = [](IP m, IP n, const T *al, const T *x, IP incx, const T *y, IP incy, T *a,         \
                IP lda, bool c) {                                                                \
      (c ? F_CONJ : F_PLAIN)(m, n, al, x, incx, y, incy, a, lda);                                \
    };                                                                                           \
    ger<T>("cblas_" #p #name, f, CONJ, layout, m, n, GET(alpha), cp<T>(x), incx, cp<T>(y), incy, \
           mp<T>(a), lda);                                                                       \
  }

#define NXL_REAL_VAL(v) value(v)
#define NXL_CPLX_VAL_F(v) value_of<cfloat>(v)
#define NXL_CPLX_VAL_D(v) value_of<cdouble>(v)

NXL_CBLAS_L2_ALL(S, s, float, float, const float, NXL_REAL_VAL)
NXL_CBLAS_L2_ALL(D, d, double, double, const double, NXL_REAL_VAL)
NXL_CBLAS_L2_ALL(C, c, cfloat, void, const void *, NXL_CPLX_VAL_F)
NXL_CBLAS_L2_ALL(Z, z, cdouble, void, const void *, NXL_CPLX_VAL_D)
NXL_CBLAS_L2_SYM(S, s, float, float, const float, NXL_REAL_VAL, float, false, SY, sy, SB, sb, SP, sp)
NXL_CBLAS_L2_SYM(D, d, double, double, const double, NXL_REAL_VAL, double, false, SY, sy, SB, sb, SP, sp)
NXL_CBLAS_L2_SYM(C, c, cfloat, void, const void *, NXL_CPLX_VAL_F, float, true, HE, he, HB, hb, HP, hp)
NXL_CBLAS_L2_SYM(Z, z, cdouble, void, const void *, NXL_CPLX_VAL_D, double, true, HE, he, HB, hb, HP, hp)

NXL_CBLAS_GER(s, ger, float, float, const float, NXL_REAL_VAL, SGER, SGER, false)
NXL_CBLAS_GER(d, ger, double, double, const double, NXL_REAL_VAL, DGER, DGER, false)
NXL_CBLAS_GER(c, geru, cfloat, void, const void *, NXL_CPLX_VAL_F, CGERU, CGERC, false)
NXL_CBLAS_GER(c, gerc, cfloat, void, const void *, NXL_CPLX_VAL_F, CGERU, CGERC, true)
NXL_CBLAS_GER(z, geru, cdouble, void, const void *, NXL_CPLX_VAL_D, ZGERU, ZGERC, false)
NXL_CBLAS_GER(z, gerc, cdouble, void, const void *, NXL_CPLX_VAL_D, ZGERU, ZGERC, true)
