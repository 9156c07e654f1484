// Typed facade over the BLAS dispatch layer for the LAPACK algorithms.
//
// The algorithms are templates over float, double, std::complex<float> and
// std::complex<double>; these overloads turn a typed call into the matching
// nxl_blas_<p><routine> dispatch function (quick returns, threading) or, for
// the `_seq` forms used inside a thread team, the code-path entry
// nxl_blas_x<p><routine> (one thread, no tracing, no error handler).
// Characters are passed by value here and by address below; the hidden
// lengths are always 1.
#ifndef NXL_LAPACK_BLAS_H
#define NXL_LAPACK_BLAS_H

#include <complex>
#include "nxl_types.h"

using nxl_c8 = std::complex<float>;
using nxl_c16 = std::complex<double>;

// Declarations of the dispatch layer (contract of the BLAS subsystem).
#define NXL_LB_DECL4(ret, stem, params)                  \
  extern "C" ret nxl_blas_s##stem params(float);         \
  extern "C" ret nxl_blas_d##stem params(double);        \
  extern "C" ret nxl_blas_c##stem params(nxl_c8);        \
  extern "C" ret nxl_blas_z##stem params(nxl_c16);       \
  extern "C" ret nxl_blas_xs##stem params(float);        \
  extern "C" ret nxl_blas_xd##stem params(double);       \
  extern "C" ret nxl_blas_xc##stem params(nxl_c8);       \
  extern "C" ret nxl_blas_xz##stem params(nxl_c16);

#define NXL_LB_GEMM(T) (const char *, const char *, const nxl_int *, const nxl_int *, const nxl_int *, \
  const T *, const T *, const nxl_int *, const T *, const nxl_int *, const T *, T *, const nxl_int *, int, int)
NXL_LB_DECL4(void, gemm, NXL_LB_GEMM)
#define NXL_LB_TRSM(T) (const char *, const char *, const char *, const char *, const nxl_int *, \
  const nxl_int *, const T *, const T *, const nxl_int *, T *, const nxl_int *, int, int, int, int)
NXL_LB_DECL4(void, trsm, NXL_LB_TRSM)
NXL_LB_DECL4(void, trmm, NXL_LB_TRSM)
#define NXL_LB_SYRK(T) (const char *, const char *, const nxl_int *, const nxl_int *, const T *, \
  const T *, const nxl_int *, const T *, T *, const nxl_int *, int, int)
NXL_LB_DECL4(void, syrk, NXL_LB_SYRK)
#define NXL_LB_GEMV(T) (const char *, const nxl_int *, const nxl_int *, const T *, const T *, \
  const nxl_int *, const T *, const nxl_int *, const T *, T *, const nxl_int *, int)
NXL_LB_DECL4(void, gemv, NXL_LB_GEMV)
#define NXL_LB_TRSV(T) (const char *, const char *, const char *, const nxl_int *, const T *, \
  const nxl_int *, T *, const nxl_int *, int, int, int)
NXL_LB_DECL4(void, trsv, NXL_LB_TRSV)
NXL_LB_DECL4(void, trmv, NXL_LB_TRSV)
#define NXL_LB_SCAL(T) (const nxl_int *, const T *, T *, const nxl_int *)
NXL_LB_DECL4(void, scal, NXL_LB_SCAL)
#define NXL_LB_SWAP(T) (const nxl_int *, T *, const nxl_int *, T *, const nxl_int *)
NXL_LB_DECL4(void, swap, NXL_LB_SWAP)
#define NXL_LB_COPY(T) (const nxl_int *, const T *, const nxl_int *, T *, const nxl_int *)
NXL_LB_DECL4(void, copy, NXL_LB_COPY)
#define NXL_LB_AXPY(T) (const nxl_int *, const T *, const T *, const nxl_int *, T *, const nxl_int *)
NXL_LB_DECL4(void, axpy, NXL_LB_AXPY)
#define NXL_LB_SYMM(T) (const char *, const char *, const nxl_int *, const nxl_int *, const T *, const T *, \
  const nxl_int *, const T *, const nxl_int *, const T *, T *, const nxl_int *, int, int)
extern "C" void nxl_blas_ssymm NXL_LB_SYMM(float);
extern "C" void nxl_blas_dsymm NXL_LB_SYMM(double);
extern "C" void nxl_blas_chemm NXL_LB_SYMM(nxl_c8);
extern "C" void nxl_blas_zhemm NXL_LB_SYMM(nxl_c16);
#define NXL_LB_SYMV(T) (const char *, const nxl_int *, const T *, const T *, const nxl_int *, \
  const T *, const nxl_int *, const T *, T *, const nxl_int *, int)
#undef NXL_LB_DECL4

#define NXL_LB_IAMAX(T) (const nxl_int *, const T *, const nxl_int *)
extern "C" nxl_int nxl_blas_isamax NXL_LB_IAMAX(float);
extern "C" nxl_int nxl_blas_idamax NXL_LB_IAMAX(double);
extern "C" nxl_int nxl_blas_icamax NXL_LB_IAMAX(nxl_c8);
extern "C" nxl_int nxl_blas_izamax NXL_LB_IAMAX(nxl_c16);
extern "C" float nxl_blas_snrm2 NXL_LB_IAMAX(float);
extern "C" double nxl_blas_dnrm2 NXL_LB_IAMAX(double);
extern "C" float nxl_blas_scnrm2 NXL_LB_IAMAX(nxl_c8);
extern "C" double nxl_blas_dznrm2 NXL_LB_IAMAX(nxl_c16);
extern "C" float nxl_blas_sasum NXL_LB_IAMAX(float);
extern "C" double nxl_blas_dasum NXL_LB_IAMAX(double);
extern "C" float nxl_blas_scasum NXL_LB_IAMAX(nxl_c8);
extern "C" double nxl_blas_dzasum NXL_LB_IAMAX(nxl_c16);
extern "C" void nxl_blas_csscal(const nxl_int *, const float *, nxl_c8 *, const nxl_int *);
extern "C" void nxl_blas_zdscal(const nxl_int *, const double *, nxl_c16 *, const nxl_int *);
#define NXL_LB_DOT(T) (const nxl_int *, const T *, const nxl_int *, const T *, const nxl_int *)
extern "C" float nxl_blas_sdot NXL_LB_DOT(float);
extern "C" double nxl_blas_ddot NXL_LB_DOT(double);
extern "C" void nxl_blas_cdotc(nxl_c8 *, const nxl_int *, const nxl_c8 *, const nxl_int *, const nxl_c8 *, const nxl_int *);
extern "C" void nxl_blas_zdotc(nxl_c16 *, const nxl_int *, const nxl_c16 *, const nxl_int *, const nxl_c16 *, const nxl_int *);
extern "C" void nxl_blas_cdotu(nxl_c8 *, const nxl_int *, const nxl_c8 *, const nxl_int *, const nxl_c8 *, const nxl_int *);
extern "C" void nxl_blas_zdotu(nxl_c16 *, const nxl_int *, const nxl_c16 *, const nxl_int *, const nxl_c16 *, const nxl_int *);
#define NXL_LB_GER(T) (const nxl_int *, const nxl_int *, const T *, const T *, const nxl_int *, \
  const T *, const nxl_int *, T *, const nxl_int *)
extern "C" void nxl_blas_sger NXL_LB_GER(float);
extern "C" void nxl_blas_dger NXL_LB_GER(double);
extern "C" void nxl_blas_cgeru NXL_LB_GER(nxl_c8);
extern "C" void nxl_blas_zgeru NXL_LB_GER(nxl_c16);
extern "C" void nxl_blas_cgerc NXL_LB_GER(nxl_c8);
extern "C" void nxl_blas_zgerc NXL_LB_GER(nxl_c16);
extern "C" void nxl_blas_ssymv NXL_LB_SYMV(float);
extern "C" void nxl_blas_dsymv NXL_LB_SYMV(double);
extern "C" void nxl_blas_chemv NXL_LB_SYMV(nxl_c8);
extern "C" void nxl_blas_zhemv NXL_LB_SYMV(nxl_c16);
extern "C" void nxl_blas_cherk(const char *, const char *, const nxl_int *, const nxl_int *, const float *,
                               const nxl_c8 *, const nxl_int *, const float *, nxl_c8 *, const nxl_int *, int, int);
extern "C" void nxl_blas_zherk(const char *, const char *, const nxl_int *, const nxl_int *, const double *,
                               const nxl_c16 *, const nxl_int *, const double *, nxl_c16 *, const nxl_int *, int, int);
extern "C" void nxl_blas_xcherk(const char *, const char *, const nxl_int *, const nxl_int *, const float *,
                                const nxl_c8 *, const nxl_int *, const float *, nxl_c8 *, const nxl_int *, int, int);
extern "C" void nxl_blas_xzherk(const char *, const char *, const nxl_int *, const nxl_int *, const double *,
                                const nxl_c16 *, const nxl_int *, const double *, nxl_c16 *, const nxl_int *, int, int);

namespace nxl {
namespace blas {

using idx = nxl_int;

// One overload per precision for each routine; `fn` names the dispatch
// function family, `xfn` the code-path entry family.
#define NXL_LB_OVERLOADS(ret, name, x, dfn, params, args)                              \
  inline ret name params(float) { return nxl_blas_##x##s##dfn args; }                 \
  inline ret name params(double) { return nxl_blas_##x##d##dfn args; }                \
  inline ret name params(nxl_c8) { return nxl_blas_##x##c##dfn args; }                \
  inline ret name params(nxl_c16) { return nxl_blas_##x##z##dfn args; }

#define P_GEMM(T) (char ta, char tb, idx m, idx n, idx k, T alpha, const T *a, idx lda, const T *b, \
                   idx ldb, T beta, T *c, idx ldc)
#define A_GEMM (&ta, &tb, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc, 1, 1)
NXL_LB_OVERLOADS(void, gemm, , gemm, P_GEMM, A_GEMM)
NXL_LB_OVERLOADS(void, gemm_seq, x, gemm, P_GEMM, A_GEMM)
#define P_TRSM(T) (char side, char uplo, char ta, char diag, idx m, idx n, T alpha, const T *a, idx lda, \
                   T *b, idx ldb)
#define A_TRSM (&side, &uplo, &ta, &diag, &m, &n, &alpha, a, &lda, b, &ldb, 1, 1, 1, 1)
NXL_LB_OVERLOADS(void, trsm, , trsm, P_TRSM, A_TRSM)
NXL_LB_OVERLOADS(void, trsm_seq, x, trsm, P_TRSM, A_TRSM)
NXL_LB_OVERLOADS(void, trmm, , trmm, P_TRSM, A_TRSM)
#define P_GEMV(T) (char tr, idx m, idx n, T alpha, const T *a, idx lda, const T *x, idx incx, T beta, \
                   T *y, idx incy)
#define A_GEMV (&tr, &m, &n, &alpha, a, &lda, x, &incx, &beta, y, &incy, 1)
NXL_LB_OVERLOADS(void, gemv, , gemv, P_GEMV, A_GEMV)
#define P_TRSV(T) (char uplo, char tr, char diag, idx n, const T *a, idx lda, T *x, idx incx)
#define A_TRSV (&uplo, &tr, &diag, &n, a, &lda, x, &incx, 1, 1, 1)
NXL_LB_OVERLOADS(void, trsv, , trsv, P_TRSV, A_TRSV)
NXL_LB_OVERLOADS(void, trmv, , trmv, P_TRSV, A_TRSV)
#define P_SCAL(T) (idx n, T alpha, T *x, idx incx)
#define A_SCAL (&n, &alpha, x, &incx)
NXL_LB_OVERLOADS(void, scal, , scal, P_SCAL, A_SCAL)
#define P_SWAP(T) (idx n, T *x, idx incx, T *y, idx incy)
#define A_SWAP (&n, x, &incx, y, &incy)
NXL_LB_OVERLOADS(void, swap, , swap, P_SWAP, A_SWAP)
#define P_COPY(T) (idx n, const T *x, idx incx, T *y, idx incy)
NXL_LB_OVERLOADS(void, copy, , copy, P_COPY, A_SWAP)
#define P_AXPY(T) (idx n, T alpha, const T *x, idx incx, T *y, idx incy)
#define A_AXPY (&n, &alpha, x, &incx, y, &incy)
NXL_LB_OVERLOADS(void, axpy, , axpy, P_AXPY, A_AXPY)
#undef NXL_LB_OVERLOADS

// Rank-k update of the `uplo` triangle: C := alpha op(A) op(A)^H + beta C
// (Hermitian for complex, symmetric for real; alpha and beta are real).
inline void herk_seq(char u, char t, idx n, idx k, float al, const float *a, idx lda, float be, float *c, idx ldc) {
  nxl_blas_xssyrk(&u, &t, &n, &k, &al, a, &lda, &be, c, &ldc, 1, 1);
}
inline void herk_seq(char u, char t, idx n, idx k, double al, const double *a, idx lda, double be, double *c, idx ldc) {
  nxl_blas_xdsyrk(&u, &t, &n, &k, &al, a, &lda, &be, c, &ldc, 1, 1);
}
inline void herk_seq(char u, char t, idx n, idx k, float al, const nxl_c8 *a, idx lda, float be, nxl_c8 *c, idx ldc) {
  char tt = (t == 'N' || t == 'n') ? 'N' : 'C';
  nxl_blas_xcherk(&u, &tt, &n, &k, &al, a, &lda, &be, c, &ldc, 1, 1);
}
inline void herk_seq(char u, char t, idx n, idx k, double al, const nxl_c16 *a, idx lda, double be, nxl_c16 *c, idx ldc) {
  char tt = (t == 'N' || t == 'n') ? 'N' : 'C';
  nxl_blas_xzherk(&u, &tt, &n, &k, &al, a, &lda, &be, c, &ldc, 1, 1);
}
inline void herk(char u, char t, idx n, idx k, float al, const float *a, idx lda, float be, float *c, idx ldc) {
  nxl_blas_ssyrk(&u, &t, &n, &k, &al, a, &lda, &be, c, &ldc, 1, 1);
}
inline void herk(char u, char t, idx n, idx k, double al, const double *a, idx lda, double be, double *c, idx ldc) {
  nxl_blas_dsyrk(&u, &t, &n, &k, &al, a, &lda, &be, c, &ldc, 1, 1);
}
inline void herk(char u, char t, idx n, idx k, float al, const nxl_c8 *a, idx lda, float be, nxl_c8 *c, idx ldc) {
  char tt = (t == 'N' || t == 'n') ? 'N' : 'C';
  nxl_blas_cherk(&u, &tt, &n, &k, &al, a, &lda, &be, c, &ldc, 1, 1);
}
inline void herk(char u, char t, idx n, idx k, double al, const nxl_c16 *a, idx lda, double be, nxl_c16 *c, idx ldc) {
  char tt = (t == 'N' || t == 'n') ? 'N' : 'C';
  nxl_blas_zherk(&u, &tt, &n, &k, &al, a, &lda, &be, c, &ldc, 1, 1);
}

// Symmetric (real) or Hermitian (complex) matrix-vector product.
#define NXL_LB_HEMV(T, f)                                                                           \
  inline void hemv(char u, idx n, T al, const T *a, idx lda, const T *x, idx incx, T be, T *y, idx incy) { \
    f(&u, &n, &al, a, &lda, x, &incx, &be, y, &incy, 1);                                           \
  }
NXL_LB_HEMV(float, nxl_blas_ssymv)
NXL_LB_HEMV(double, nxl_blas_dsymv)
NXL_LB_HEMV(nxl_c8, nxl_blas_chemv)
NXL_LB_HEMV(nxl_c16, nxl_blas_zhemv)
#undef NXL_LB_HEMV

// Symmetric (real) or Hermitian (complex) matrix product from one triangle.
#define NXL_LB_HEMM(T, f)                                                                           \
  inline void hemm(char side, char u, idx m, idx n, T al, const T *a, idx lda, const T *b, idx ldb, T be, \
                   T *c, idx ldc) {                                                                 \
    f(&side, &u, &m, &n, &al, a, &lda, b, &ldb, &be, c, &ldc, 1, 1);                               \
  }
NXL_LB_HEMM(float, nxl_blas_ssymm)
NXL_LB_HEMM(double, nxl_blas_dsymm)
NXL_LB_HEMM(nxl_c8, nxl_blas_chemm)
NXL_LB_HEMM(nxl_c16, nxl_blas_zhemm)
#undef NXL_LB_HEMM

// Index (1-based) of the first element of largest |re| + |im|.
inline idx iamax(idx n, const float *x, idx inc) { return nxl_blas_isamax(&n, x, &inc); }
inline idx iamax(idx n, const double *x, idx inc) { return nxl_blas_idamax(&n, x, &inc); }
inline idx iamax(idx n, const nxl_c8 *x, idx inc) { return nxl_blas_icamax(&n, x, &inc); }
inline idx iamax(idx n, const nxl_c16 *x, idx inc) { return nxl_blas_izamax(&n, x, &inc); }
inline float nrm2(idx n, const float *x, idx inc) { return nxl_blas_snrm2(&n, x, &inc); }
inline double nrm2(idx n, const double *x, idx inc) { return nxl_blas_dnrm2(&n, x, &inc); }
inline float nrm2(idx n, const nxl_c8 *x, idx inc) { return nxl_blas_scnrm2(&n, x, &inc); }
inline double nrm2(idx n, const nxl_c16 *x, idx inc) { return nxl_blas_dznrm2(&n, x, &inc); }
inline float asum(idx n, const float *x, idx inc) { return nxl_blas_sasum(&n, x, &inc); }
inline double asum(idx n, const double *x, idx inc) { return nxl_blas_dasum(&n, x, &inc); }
inline float asum(idx n, const nxl_c8 *x, idx inc) { return nxl_blas_scasum(&n, x, &inc); }
inline double asum(idx n, const nxl_c16 *x, idx inc) { return nxl_blas_dzasum(&n, x, &inc); }
// x := alpha x with a real alpha.
inline void rscal(idx n, float a, float *x, idx inc) { nxl_blas_sscal(&n, &a, x, &inc); }
inline void rscal(idx n, double a, double *x, idx inc) { nxl_blas_dscal(&n, &a, x, &inc); }
inline void rscal(idx n, float a, nxl_c8 *x, idx inc) { nxl_blas_csscal(&n, &a, x, &inc); }
inline void rscal(idx n, double a, nxl_c16 *x, idx inc) { nxl_blas_zdscal(&n, &a, x, &inc); }
// Conjugated dot product x^H y (plain for real types) and unconjugated x^T y.
inline float dotc(idx n, const float *x, idx ix, const float *y, idx iy) { return nxl_blas_sdot(&n, x, &ix, y, &iy); }
inline double dotc(idx n, const double *x, idx ix, const double *y, idx iy) { return nxl_blas_ddot(&n, x, &ix, y, &iy); }
inline nxl_c8 dotc(idx n, const nxl_c8 *x, idx ix, const nxl_c8 *y, idx iy) { nxl_c8 r; nxl_blas_cdotc(&r, &n, x, &ix, y, &iy); return r; }
inline nxl_c16 dotc(idx n, const nxl_c16 *x, idx ix, const nxl_c16 *y, idx iy) { nxl_c16 r; nxl_blas_zdotc(&r, &n, x, &ix, y, &iy); return r; }
inline float dotu(idx n, const float *x, idx ix, const float *y, idx iy) { return nxl_blas_sdot(&n, x, &ix, y, &iy); }
inline double dotu(idx n, const double *x, idx ix, const double *y, idx iy) { return nxl_blas_ddot(&n, x, &ix, y, &iy); }
inline nxl_c8 dotu(idx n, const nxl_c8 *x, idx ix, const nxl_c8 *y, idx iy) { nxl_c8 r; nxl_blas_cdotu(&r, &n, x, &ix, y, &iy); return r; }
inline nxl_c16 dotu(idx n, const nxl_c16 *x, idx ix, const nxl_c16 *y, idx iy) { nxl_c16 r; nxl_blas_zdotu(&r, &n, x, &ix, y, &iy); return r; }
// Unconjugated rank-1 update A := alpha x y^T + A.
inline void geru(idx m, idx n, float al, const float *x, idx ix, const float *y, idx iy, float *a, idx lda) { nxl_blas_sger(&m, &n, &al, x, &ix, y, &iy, a, &lda); }
inline void geru(idx m, idx n, double al, const double *x, idx ix, const double *y, idx iy, double *a, idx lda) { nxl_blas_dger(&m, &n, &al, x, &ix, y, &iy, a, &lda); }
inline void geru(idx m, idx n, nxl_c8 al, const nxl_c8 *x, idx ix, const nxl_c8 *y, idx iy, nxl_c8 *a, idx lda) { nxl_blas_cgeru(&m, &n, &al, x, &ix, y, &iy, a, &lda); }
inline void geru(idx m, idx n, nxl_c16 al, const nxl_c16 *x, idx ix, const nxl_c16 *y, idx iy, nxl_c16 *a, idx lda) { nxl_blas_zgeru(&m, &n, &al, x, &ix, y, &iy, a, &lda); }

}  // namespace blas
}  // namespace nxl

#undef P_GEMM
#undef A_GEMM
#undef P_TRSM
#undef A_TRSM
#undef P_GEMV
#undef A_GEMV
#undef P_TRSV
#undef A_TRSV
#undef P_SCAL
#undef A_SCAL
#undef P_SWAP
#undef A_SWAP
#undef P_COPY
#undef P_AXPY
#undef A_AXPY

#endif  // NXL_LAPACK_BLAS_H
