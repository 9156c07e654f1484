// Parameter and argument lists of the level-2 routines, shared by the
// code-path entries and the kernels (both take exactly the dispatch layer's
// arguments). T is the element type, R the type of a real scalar (her, hpr).
#ifndef NXL_BLAS_LEVEL2_PARAMS_H
#define NXL_BLAS_LEVEL2_PARAMS_H

#include <complex>
#include "nxl_types.h"

#define NXL_L2_GEMV_P(T)                                                                   \
  (const char *trans, const nxl_int *m, const nxl_int *n, const T *alpha, const T *a,      \
   const nxl_int *lda, const T *x, const nxl_int *incx, const T *beta, T *y,               \
   const nxl_int *incy, int ltrans)
#define NXL_L2_GEMV_A (trans, m, n, alpha, a, lda, x, incx, beta, y, incy, ltrans)

#define NXL_L2_GBMV_P(T)                                                                   \
  (const char *trans, const nxl_int *m, const nxl_int *n, const nxl_int *kl,               \
   const nxl_int *ku, const T *alpha, const T *a, const nxl_int *lda, const T *x,          \
   const nxl_int *incx, const T *beta, T *y, const nxl_int *incy, int ltrans)
#define NXL_L2_GBMV_A (trans, m, n, kl, ku, alpha, a, lda, x, incx, beta, y, incy, ltrans)

#define NXL_L2_SYMV_P(T)                                                                   \
  (const char *uplo, const nxl_int *n, const T *alpha, const T *a, const nxl_int *lda,     \
   const T *x, const nxl_int *incx, const T *beta, T *y, const nxl_int *incy, int luplo)
#define NXL_L2_SYMV_A (uplo, n, alpha, a, lda, x, incx, beta, y, incy, luplo)

#define NXL_L2_SBMV_P(T)                                                                   \
  (const char *uplo, const nxl_int *n, const nxl_int *kband, const T *alpha, const T *a,       \
   const nxl_int *lda, const T *x, const nxl_int *incx, const T *beta, T *y,               \
   const nxl_int *incy, int luplo)
#define NXL_L2_SBMV_A (uplo, n, kband, alpha, a, lda, x, incx, beta, y, incy, luplo)

#define NXL_L2_SPMV_P(T)                                                                   \
  (const char *uplo, const nxl_int *n, const T *alpha, const T *ap, const T *x,            \
   const nxl_int *incx, const T *beta, T *y, const nxl_int *incy, int luplo)
#define NXL_L2_SPMV_A (uplo, n, alpha, ap, x, incx, beta, y, incy, luplo)

#define NXL_L2_TRMV_P(T)                                                                   \
  (const char *uplo, const char *trans, const char *diag, const nxl_int *n, const T *a,    \
   const nxl_int *lda, T *x, const nxl_int *incx, int luplo, int ltrans, int ldiag)
#define NXL_L2_TRMV_A (uplo, trans, diag, n, a, lda, x, incx, luplo, ltrans, ldiag)

#define NXL_L2_TBMV_P(T)                                                                   \
  (const char *uplo, const char *trans, const char *diag, const nxl_int *n,                \
   const nxl_int *kband, const T *a, const nxl_int *lda, T *x, const nxl_int *incx, int luplo, \
   int ltrans, int ldiag)
#define NXL_L2_TBMV_A (uplo, trans, diag, n, kband, a, lda, x, incx, luplo, ltrans, ldiag)

#define NXL_L2_TPMV_P(T)                                                                   \
  (const char *uplo, const char *trans, const char *diag, const nxl_int *n, const T *ap,   \
   T *x, const nxl_int *incx, int luplo, int ltrans, int ldiag)
#define NXL_L2_TPMV_A (uplo, trans, diag, n, ap, x, incx, luplo, ltrans, ldiag)

#define NXL_L2_GER_P(T)                                                                    \
  (const nxl_int *m, const nxl_int *n, const T *alpha, const T *x, const nxl_int *incx,    \
   const T *y, const nxl_int *incy, T *a, const nxl_int *lda)
#define NXL_L2_GER_A (m, n, alpha, x, incx, y, incy, a, lda)

#define NXL_L2_SYR_P(T, R)                                                                 \
  (const char *uplo, const nxl_int *n, const R *alpha, const T *x, const nxl_int *incx,    \
   T *a, const nxl_int *lda, int luplo)
#define NXL_L2_SYR_A (uplo, n, alpha, x, incx, a, lda, luplo)

#define NXL_L2_SYR2_P(T)                                                                   \
  (const char *uplo, const nxl_int *n, const T *alpha, const T *x, const nxl_int *incx,    \
   const T *y, const nxl_int *incy, T *a, const nxl_int *lda, int luplo)
#define NXL_L2_SYR2_A (uplo, n, alpha, x, incx, y, incy, a, lda, luplo)

#define NXL_L2_SPR_P(T, R)                                                                 \
  (const char *uplo, const nxl_int *n, const R *alpha, const T *x, const nxl_int *incx,    \
   T *ap, int luplo)
#define NXL_L2_SPR_A (uplo, n, alpha, x, incx, ap, luplo)

#define NXL_L2_SPR2_P(T)                                                                   \
  (const char *uplo, const nxl_int *n, const T *alpha, const T *x, const nxl_int *incx,    \
   const T *y, const nxl_int *incy, T *ap, int luplo)
#define NXL_L2_SPR2_A (uplo, n, alpha, x, incx, y, incy, ap, luplo)

// Column-range parts of symv/hemv, syr/her and syr2/her2 for the threaded
// dispatch: columns [c0, c1) of the stored triangle; symv adds into a
// private contiguous vector yp.
#define NXL_L2_SYMV_PART_P(T)                                                              \
  (const char *uplo, const nxl_int *n, const nxl_int *c0, const nxl_int *c1, const T *alpha, \
   const T *a, const nxl_int *lda, const T *x, const nxl_int *incx, T *yp)
#define NXL_L2_SYMV_PART_A (uplo, n, c0, c1, alpha, a, lda, x, incx, yp)
#define NXL_L2_SYR_PART_P(T, R)                                                            \
  (const char *uplo, const nxl_int *n, const nxl_int *c0, const nxl_int *c1, const R *alpha, \
   const T *x, const nxl_int *incx, T *a, const nxl_int *lda)
#define NXL_L2_SYR_PART_A (uplo, n, c0, c1, alpha, x, incx, a, lda)
#define NXL_L2_SYR2_PART_P(T)                                                              \
  (const char *uplo, const nxl_int *n, const nxl_int *c0, const nxl_int *c1, const T *alpha, \
   const T *x, const nxl_int *incx, const T *y, const nxl_int *incy, T *a, const nxl_int *lda)
#define NXL_L2_SYR2_PART_A (uplo, n, c0, c1, alpha, x, incx, y, incy, a, lda)

// Band symmetric/Hermitian products: the same with the band width.
#define NXL_L2_SBMV_PART_P(T)                                                              \
  (const char *uplo, const nxl_int *n, const nxl_int *kband, const nxl_int *c0,             \
   const nxl_int *c1, const T *alpha, const T *a, const nxl_int *lda, const T *x,           \
   const nxl_int *incx, T *yp)
#define NXL_L2_SBMV_PART_A (uplo, n, kband, c0, c1, alpha, a, lda, x, incx, yp)
// Triangular products x := op(A) x for the threaded dispatch, one signature
// for the three storages (kband and lda unused where the storage has none):
// elements [p0, p1) of the result written to x (unit stride), every other
// element of the original x read from its copy xc (unit stride).
#define NXL_L2_TRMV_PART_P(T)                                                              \
  (const char *uplo, const char *trans, const char *diag, const nxl_int *n,                \
   const nxl_int *kband, const T *a, const nxl_int *lda, T *x, const T *xc,                \
   const nxl_int *p0, const nxl_int *p1)
#define NXL_L2_TRMV_PART_A (uplo, trans, diag, n, kband, a, lda, x, xc, p0, p1)

#define NXL_L2_PARTS(X, p, T, R, sy, sb, sp, syr, syr2, spr, spr2)                     \
  X(p##sy##_part, , T, R, NXL_L2_SYMV_PART_P(T), NXL_L2_SYMV_PART_A)                   \
  X(p##sb##_part, , T, R, NXL_L2_SBMV_PART_P(T), NXL_L2_SBMV_PART_A)                   \
  X(p##sp##_part, , T, R, NXL_L2_SYMV_PART_P(T), NXL_L2_SYMV_PART_A)                   \
  X(p##syr##_part, , T, R, NXL_L2_SYR_PART_P(T, R), NXL_L2_SYR_PART_A)                 \
  X(p##syr2##_part, , T, R, NXL_L2_SYR2_PART_P(T), NXL_L2_SYR2_PART_A)                 \
  X(p##spr##_part, , T, R, NXL_L2_SYR_PART_P(T, R), NXL_L2_SYR_PART_A)                 \
  X(p##spr2##_part, , T, R, NXL_L2_SYR2_PART_P(T), NXL_L2_SYR2_PART_A)                 \
  X(p##trmv_part, , T, R, NXL_L2_TRMV_PART_P(T), NXL_L2_TRMV_PART_A)                   \
  X(p##tbmv_part, , T, R, NXL_L2_TRMV_PART_P(T), NXL_L2_TRMV_PART_A)                   \
  X(p##tpmv_part, , T, R, NXL_L2_TRMV_PART_P(T), NXL_L2_TRMV_PART_A)
#define NXL_L2_ALL_PARTS(X)                                                                \
  NXL_L2_PARTS(X, s, float, float, symv, sbmv, spmv, syr, syr2, spr, spr2)                 \
  NXL_L2_PARTS(X, d, double, double, symv, sbmv, spmv, syr, syr2, spr, spr2)               \
  NXL_L2_PARTS(X, c, std::complex<float>, float, hemv, hbmv, hpmv, her, her2, hpr, hpr2)   \
  NXL_L2_PARTS(X, z, std::complex<double>, double, hemv, hbmv, hpmv, her, her2, hpr, hpr2)

// X(routine, dispatch family, element type, real type, parameter list,
// argument list) for every level-2 routine of the four precisions. Real and
// complex precisions differ in names only (symv/hemv, ger/geru+gerc, ...).
#define NXL_L2_ROUTINES(X, p, T, R, sy, sb, sp, gu, syr, syr2, spr, spr2) \
  X(p##gemv, gemv_d, T, R, NXL_L2_GEMV_P(T), NXL_L2_GEMV_A)               \
  X(p##gbmv, gbmv_d, T, R, NXL_L2_GBMV_P(T), NXL_L2_GBMV_A)               \
  X(p##sy, symv_d, T, R, NXL_L2_SYMV_P(T), NXL_L2_SYMV_A)                 \
  X(p##sb, sbmv_d, T, R, NXL_L2_SBMV_P(T), NXL_L2_SBMV_A)                 \
  X(p##sp, spmv_d, T, R, NXL_L2_SPMV_P(T), NXL_L2_SPMV_A)                 \
  X(p##trmv, trmv_d, T, R, NXL_L2_TRMV_P(T), NXL_L2_TRMV_A)               \
  X(p##tbmv, tbmv_d, T, R, NXL_L2_TBMV_P(T), NXL_L2_TBMV_A)               \
  X(p##tpmv, tpmv_d, T, R, NXL_L2_TPMV_P(T), NXL_L2_TPMV_A)               \
  X(p##trsv, trsv_d, T, R, NXL_L2_TRMV_P(T), NXL_L2_TRMV_A)               \
  X(p##tbsv, tbsv_d, T, R, NXL_L2_TBMV_P(T), NXL_L2_TBMV_A)               \
  X(p##tpsv, tpsv_d, T, R, NXL_L2_TPMV_P(T), NXL_L2_TPMV_A)               \
  X(p##gu, ger_d, T, R, NXL_L2_GER_P(T), NXL_L2_GER_A)                    \
  X(p##syr, syr_d, T, R, NXL_L2_SYR_P(T, R), NXL_L2_SYR_A)                \
  X(p##syr2, syr2_d, T, R, NXL_L2_SYR2_P(T), NXL_L2_SYR2_A)               \
  X(p##spr, spr_d, T, R, NXL_L2_SPR_P(T, R), NXL_L2_SPR_A)                \
  X(p##spr2, spr2_d, T, R, NXL_L2_SPR2_P(T), NXL_L2_SPR2_A)

#define NXL_L2_ALL_ROUTINES(X)                                                              \
  NXL_L2_ROUTINES(X, s, float, float, symv, sbmv, spmv, ger, syr, syr2, spr, spr2)          \
  NXL_L2_ROUTINES(X, d, double, double, symv, sbmv, spmv, ger, syr, syr2, spr, spr2)        \
  NXL_L2_ROUTINES(X, c, std::complex<float>, float, hemv, hbmv, hpmv, geru, her, her2, hpr, \
                  hpr2)                                                                     \
  NXL_L2_ROUTINES(X, z, std::complex<double>, double, hemv, hbmv, hpmv, geru, her, her2,    \
                  hpr, hpr2)                                                                \
  X(cgerc, ger_d, std::complex<float>, float, NXL_L2_GER_P(std::complex<float>), NXL_L2_GER_A) \
  X(zgerc, ger_d, std::complex<double>, double, NXL_L2_GER_P(std::complex<double>), NXL_L2_GER_A)

#endif  // NXL_BLAS_LEVEL2_PARAMS_H
