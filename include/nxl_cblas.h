/* NXL CBLAS: the C interface to the BLAS, compatible with the standard
 * cblas.h (enumerations with the standard values), with 64-bit integers.
 * Real scalars are passed by value, complex scalars and data by address. */
#ifndef NXL_CBLAS_H
#define NXL_CBLAS_H

#include "nxl_types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef enum CBLAS_LAYOUT { CblasRowMajor = 101, CblasColMajor = 102 } CBLAS_LAYOUT;
typedef enum CBLAS_TRANSPOSE { CblasNoTrans = 111, CblasTrans = 112, CblasConjTrans = 113 } CBLAS_TRANSPOSE;
typedef enum CBLAS_UPLO { CblasUpper = 121, CblasLower = 122 } CBLAS_UPLO;
typedef enum CBLAS_DIAG { CblasNonUnit = 131, CblasUnit = 132 } CBLAS_DIAG;
typedef enum CBLAS_SIDE { CblasLeft = 141, CblasRight = 142 } CBLAS_SIDE;
typedef CBLAS_LAYOUT CBLAS_ORDER;
#ifndef CBLAS_INDEX
#define CBLAS_INDEX __SIZE_TYPE__ /* size_t */
#endif

float cblas_sdot(nxl_int n, const float *x, nxl_int incx, const float *y, nxl_int incy);
float cblas_snrm2(nxl_int n, const float *x, nxl_int incx);
float cblas_sasum(nxl_int n, const float *x, nxl_int incx);
CBLAS_INDEX cblas_isamax(nxl_int n, const float *x, nxl_int incx);
CBLAS_INDEX cblas_isamin(nxl_int n, const float *x, nxl_int incx);
void cblas_sswap(nxl_int n, float *x, nxl_int incx, float *y, nxl_int incy);
void cblas_scopy(nxl_int n, const float *x, nxl_int incx, float *y, nxl_int incy);
void cblas_saxpy(nxl_int n, const float alpha, const float *x, nxl_int incx, float *y, nxl_int incy);
void cblas_sscal(nxl_int n, const float alpha, float *x, nxl_int incx);
void cblas_srotg(float *a, float *b, float *c, float *s);
void cblas_srotmg(float *d1, float *d2, float *b1, const float b2, float *param);
void cblas_srot(nxl_int n, float *x, nxl_int incx, float *y, nxl_int incy, const float c, const float s);
void cblas_srotm(nxl_int n, float *x, nxl_int incx, float *y, nxl_int incy, const float *param);
double cblas_ddot(nxl_int n, const double *x, nxl_int incx, const double *y, nxl_int incy);
double cblas_dnrm2(nxl_int n, const double *x, nxl_int incx);
double cblas_dasum(nxl_int n, const double *x, nxl_int incx);
CBLAS_INDEX cblas_idamax(nxl_int n, const double *x, nxl_int incx);
CBLAS_INDEX cblas_idamin(nxl_int n, const double *x, nxl_int incx);
void cblas_dswap(nxl_int n, double *x, nxl_int incx, double *y, nxl_int incy);
void cblas_dcopy(nxl_int n, const double *x, nxl_int incx, double *y, nxl_int incy);
void cblas_daxpy(nxl_int n, const double alpha, const double *x, nxl_int incx, double *y, nxl_int incy);
void cblas_dscal(nxl_int n, const double alpha, double *x, nxl_int incx);
void cblas_drotg(double *a, double *b, double *c, double *s);
void cblas_drotmg(double *d1, double *d2, double *b1, const double b2, double *param);
void cblas_drot(nxl_int n, double *x, nxl_int incx, double *y, nxl_int incy, const double c, const double s);
void cblas_drotm(nxl_int n, double *x, nxl_int incx, double *y, nxl_int incy, const double *param);
void cblas_cdotu_sub(nxl_int n, const void *x, nxl_int incx, const void *y, nxl_int incy, void *dotu);
void cblas_cdotc_sub(nxl_int n, const void *x, nxl_int incx, const void *y, nxl_int incy, void *dotc);
float cblas_scnrm2(nxl_int n, const void *x, nxl_int incx);
float cblas_scasum(nxl_int n, const void *x, nxl_int incx);
CBLAS_INDEX cblas_icamax(nxl_int n, const void *x, nxl_int incx);
CBLAS_INDEX cblas_icamin(nxl_int n, const void *x, nxl_int incx);
void cblas_cswap(nxl_int n, void *x, nxl_int incx, void *y, nxl_int incy);
void cblas_ccopy(nxl_int n, const void *x, nxl_int incx, void *y, nxl_int incy);
void cblas_caxpy(nxl_int n, const void *alpha, const void *x, nxl_int incx, void *y, nxl_int incy);
void cblas_cscal(nxl_int n, const void *alpha, void *x, nxl_int incx);
void cblas_crotg(void *a, const void *b, float *c, void *s);
void cblas_crot(nxl_int n, void *x, nxl_int incx, void *y, nxl_int incy, const float c, const void *s);
void cblas_csrot(nxl_int n, void *x, nxl_int incx, void *y, nxl_int incy, const float c, const float s);
void cblas_csscal(nxl_int n, const float alpha, void *x, nxl_int incx);
void cblas_zdotu_sub(nxl_int n, const void *x, nxl_int incx, const void *y, nxl_int incy, void *dotu);
void cblas_zdotc_sub(nxl_int n, const void *x, nxl_int incx, const void *y, nxl_int incy, void *dotc);
double cblas_dznrm2(nxl_int n, const void *x, nxl_int incx);
double cblas_dzasum(nxl_int n, const void *x, nxl_int incx);
CBLAS_INDEX cblas_izamax(nxl_int n, const void *x, nxl_int incx);
CBLAS_INDEX cblas_izamin(nxl_int n, const void *x, nxl_int incx);
void cblas_zswap(nxl_int n, void *x, nxl_int incx, void *y, nxl_int incy);
void cblas_zcopy(nxl_int n, const void *x, nxl_int incx, void *y, nxl_int incy);
void cblas_zaxpy(nxl_int n, const void *alpha, const void *x, nxl_int incx, void *y, nxl_int incy);
void cblas_zscal(nxl_int n, const void *alpha, void *x, nxl_int incx);
void cblas_zrotg(void *a, const void *b, double *c, void *s);
void cblas_zrot(nxl_int n, void *x, nxl_int incx, void *y, nxl_int incy, const double c, const void *s);
void cblas_zdrot(nxl_int n, void *x, nxl_int incx, void *y, nxl_int incy, const double c, const double s);
void cblas_zdscal(nxl_int n, const double alpha, void *x, nxl_int incx);
float cblas_sdsdot(nxl_int n, const float alpha, const float *x, nxl_int incx, const float *y, nxl_int incy);
double cblas_dsdot(nxl_int n, const float *x, nxl_int incx, const float *y, nxl_int incy);
void cblas_sgemv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, nxl_int m, nxl_int n, const float alpha, const float *a, nxl_int lda, const float *x, nxl_int incx, const float beta, float *y, nxl_int incy);
void cblas_sgbmv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, nxl_int m, nxl_int n, nxl_int kl, nxl_int ku, const float alpha, const float *a, nxl_int lda, const float *x, nxl_int incx, const float beta, float *y, nxl_int incy);
void cblas_strmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const float *a, nxl_int lda, float *x, nxl_int incx);
void cblas_stbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, nxl_int k, const float *a, nxl_int lda, float *x, nxl_int incx);
void cblas_stpmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const float *ap, float *x, nxl_int incx);
void cblas_strsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const float *a, nxl_int lda, float *x, nxl_int incx);
void cblas_stbsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, nxl_int k, const float *a, nxl_int lda, float *x, nxl_int incx);
void cblas_stpsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const float *ap, float *x, nxl_int incx);
void cblas_ssymv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const float alpha, const float *a, nxl_int lda, const float *x, nxl_int incx, const float beta, float *y, nxl_int incy);
void cblas_ssbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, nxl_int k, const float alpha, const float *a, nxl_int lda, const float *x, nxl_int incx, const float beta, float *y, nxl_int incy);
void cblas_sspmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const float alpha, const float *ap, const float *x, nxl_int incx, const float beta, float *y, nxl_int incy);
void cblas_ssyr(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const float alpha, const float *x, nxl_int incx, float *a, nxl_int lda);
void cblas_sspr(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const float alpha, const float *x, nxl_int incx, float *ap);
void cblas_ssyr2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const float alpha, const float *x, nxl_int incx, const float *y, nxl_int incy, float *a, nxl_int lda);
void cblas_sspr2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const float alpha, const float *x, nxl_int incx, const float *y, nxl_int incy, float *ap);
void cblas_sger(CBLAS_LAYOUT layout, nxl_int m, nxl_int n, const float alpha, const float *x, nxl_int incx, const float *y, nxl_int incy, float *a, nxl_int lda);
void cblas_dgemv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, nxl_int m, nxl_int n, const double alpha, const double *a, nxl_int lda, const double *x, nxl_int incx, const double beta, double *y, nxl_int incy);
void cblas_dgbmv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, nxl_int m, nxl_int n, nxl_int kl, nxl_int ku, const double alpha, const double *a, nxl_int lda, const double *x, nxl_int incx, const double beta, double *y, nxl_int incy);
void cblas_dtrmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const double *a, nxl_int lda, double *x, nxl_int incx);
void cblas_dtbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, nxl_int k, const double *a, nxl_int lda, double *x, nxl_int incx);
void cblas_dtpmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const double *ap, double *x, nxl_int incx);
void cblas_dtrsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const double *a, nxl_int lda, double *x, nxl_int incx);
void cblas_dtbsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, nxl_int k, const double *a, nxl_int lda, double *x, nxl_int incx);
void cblas_dtpsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const double *ap, double *x, nxl_int incx);
void cblas_dsymv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const double alpha, const double *a, nxl_int lda, const double *x, nxl_int incx, const double beta, double *y, nxl_int incy);
void cblas_dsbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, nxl_int k, const double alpha, const double *a, nxl_int lda, const double *x, nxl_int incx, const double beta, double *y, nxl_int incy);
void cblas_dspmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const double alpha, const double *ap, const double *x, nxl_int incx, const double beta, double *y, nxl_int incy);
void cblas_dsyr(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const double alpha, const double *x, nxl_int incx, double *a, nxl_int lda);
void cblas_dspr(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const double alpha, const double *x, nxl_int incx, double *ap);
void cblas_dsyr2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const double alpha, const double *x, nxl_int incx, const double *y, nxl_int incy, double *a, nxl_int lda);
void cblas_dspr2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const double alpha, const double *x, nxl_int incx, const double *y, nxl_int incy, double *ap);
void cblas_dger(CBLAS_LAYOUT layout, nxl_int m, nxl_int n, const double alpha, const double *x, nxl_int incx, const double *y, nxl_int incy, double *a, nxl_int lda);
void cblas_cgemv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, nxl_int m, nxl_int n, const void *alpha, const void *a, nxl_int lda, const void *x, nxl_int incx, const void *beta, void *y, nxl_int incy);
void cblas_cgbmv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, nxl_int m, nxl_int n, nxl_int kl, nxl_int ku, const void *alpha, const void *a, nxl_int lda, const void *x, nxl_int incx, const void *beta, void *y, nxl_int incy);
void cblas_ctrmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const void *a, nxl_int lda, void *x, nxl_int incx);
void cblas_ctbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, nxl_int k, const void *a, nxl_int lda, void *x, nxl_int incx);
void cblas_ctpmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const void *ap, void *x, nxl_int incx);
void cblas_ctrsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const void *a, nxl_int lda, void *x, nxl_int incx);
void cblas_ctbsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, nxl_int k, const void *a, nxl_int lda, void *x, nxl_int incx);
void cblas_ctpsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const void *ap, void *x, nxl_int incx);
void cblas_chemv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const void *alpha, const void *a, nxl_int lda, const void *x, nxl_int incx, const void *beta, void *y, nxl_int incy);
void cblas_chbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, nxl_int k, const void *alpha, const void *a, nxl_int lda, const void *x, nxl_int incx, const void *beta, void *y, nxl_int incy);
void cblas_chpmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const void *alpha, const void *ap, const void *x, nxl_int incx, const void *beta, void *y, nxl_int incy);
void cblas_cher(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const float alpha, const void *x, nxl_int incx, void *a, nxl_int lda);
void cblas_chpr(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const float alpha, const void *x, nxl_int incx, void *ap);
void cblas_cher2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const void *alpha, const void *x, nxl_int incx, const void *y, nxl_int incy, void *a, nxl_int lda);
void cblas_chpr2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const void *alpha, const void *x, nxl_int incx, const void *y, nxl_int incy, void *ap);
void cblas_cgeru(CBLAS_LAYOUT layout, nxl_int m, nxl_int n, const void *alpha, const void *x, nxl_int incx, const void *y, nxl_int incy, void *a, nxl_int lda);
void cblas_cgerc(CBLAS_LAYOUT layout, nxl_int m, nxl_int n, const void *alpha, const void *x, nxl_int incx, const void *y, nxl_int incy, void *a, nxl_int lda);
void cblas_zgemv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, nxl_int m, nxl_int n, const void *alpha, const void *a, nxl_int lda, const void *x, nxl_int incx, const void *beta, void *y, nxl_int incy);
void cblas_zgbmv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, nxl_int m, nxl_int n, nxl_int kl, nxl_int ku, const void *alpha, const void *a, nxl_int lda, const void *x, nxl_int incx, const void *beta, void *y, nxl_int incy);
void cblas_ztrmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const void *a, nxl_int lda, void *x, nxl_int incx);
void cblas_ztbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, nxl_int k, const void *a, nxl_int lda, void *x, nxl_int incx);
void cblas_ztpmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const void *ap, void *x, nxl_int incx);
void cblas_ztrsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const void *a, nxl_int lda, void *x, nxl_int incx);
void cblas_ztbsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, nxl_int k, const void *a, nxl_int lda, void *x, nxl_int incx);
void cblas_ztpsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, nxl_int n, const void *ap, void *x, nxl_int incx);
void cblas_zhemv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const void *alpha, const void *a, nxl_int lda, const void *x, nxl_int incx, const void *beta, void *y, nxl_int incy);
void cblas_zhbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, nxl_int k, const void *alpha, const void *a, nxl_int lda, const void *x, nxl_int incx, const void *beta, void *y, nxl_int incy);
void cblas_zhpmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const void *alpha, const void *ap, const void *x, nxl_int incx, const void *beta, void *y, nxl_int incy);
void cblas_zher(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const double alpha, const void *x, nxl_int incx, void *a, nxl_int lda);
void cblas_zhpr(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const double alpha, const void *x, nxl_int incx, void *ap);
void cblas_zher2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const void *alpha, const void *x, nxl_int incx, const void *y, nxl_int incy, void *a, nxl_int lda);
void cblas_zhpr2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, nxl_int n, const void *alpha, const void *x, nxl_int incx, const void *y, nxl_int incy, void *ap);
void cblas_zgeru(CBLAS_LAYOUT layout, nxl_int m, nxl_int n, const void *alpha, const void *x, nxl_int incx, const void *y, nxl_int incy, void *a, nxl_int lda);
void cblas_zgerc(CBLAS_LAYOUT layout, nxl_int m, nxl_int n, const void *alpha, const void *x, nxl_int incx, const void *y, nxl_int incy, void *a, nxl_int lda);
void cblas_sgemm(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE transa, CBLAS_TRANSPOSE transb, nxl_int m, nxl_int n, nxl_int k, const float alpha, const float *a, nxl_int lda, const float *b, nxl_int ldb, const float beta, float *c, nxl_int ldc);
void cblas_strmm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE transa, CBLAS_DIAG diag, nxl_int m, nxl_int n, const float alpha, const float *a, nxl_int lda, float *b, nxl_int ldb);
void cblas_strsm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE transa, CBLAS_DIAG diag, nxl_int m, nxl_int n, const float alpha, const float *a, nxl_int lda, float *b, nxl_int ldb);
void cblas_ssymm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, nxl_int m, nxl_int n, const float alpha, const float *a, nxl_int lda, const float *b, nxl_int ldb, const float beta, float *c, nxl_int ldc);
void cblas_ssyrk(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, nxl_int n, nxl_int k, const float alpha, const float *a, nxl_int lda, const float beta, float *c, nxl_int ldc);
void cblas_ssyr2k(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, nxl_int n, nxl_int k, const float alpha, const float *a, nxl_int lda, const float *b, nxl_int ldb, const float beta, float *c, nxl_int ldc);
void cblas_dgemm(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE transa, CBLAS_TRANSPOSE transb, nxl_int m, nxl_int n, nxl_int k, const double alpha, const double *a, nxl_int lda, const double *b, nxl_int ldb, const double beta, double *c, nxl_int ldc);
void cblas_dtrmm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE transa, CBLAS_DIAG diag, nxl_int m, nxl_int n, const double alpha, const double *a, nxl_int lda, double *b, nxl_int ldb);
void cblas_dtrsm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE transa, CBLAS_DIAG diag, nxl_int m, nxl_int n, const double alpha, const double *a, nxl_int lda, double *b, nxl_int ldb);
void cblas_dsymm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, nxl_int m, nxl_int n, const double alpha, const double *a, nxl_int lda, const double *b, nxl_int ldb, const double beta, double *c, nxl_int ldc);
void cblas_dsyrk(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, nxl_int n, nxl_int k, const double alpha, const double *a, nxl_int lda, const double beta, double *c, nxl_int ldc);
void cblas_dsyr2k(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, nxl_int n, nxl_int k, const double alpha, const double *a, nxl_int lda, const double *b, nxl_int ldb, const double beta, double *c, nxl_int ldc);
void cblas_cgemm(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE transa, CBLAS_TRANSPOSE transb, nxl_int m, nxl_int n, nxl_int k, const void *alpha, const void *a, nxl_int lda, const void *b, nxl_int ldb, const void *beta, void *c, nxl_int ldc);
void cblas_ctrmm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE transa, CBLAS_DIAG diag, nxl_int m, nxl_int n, const void *alpha, const void *a, nxl_int lda, void *b, nxl_int ldb);
void cblas_ctrsm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE transa, CBLAS_DIAG diag, nxl_int m, nxl_int n, const void *alpha, const void *a, nxl_int lda, void *b, nxl_int ldb);
void cblas_csymm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, nxl_int m, nxl_int n, const void *alpha, const void *a, nxl_int lda, const void *b, nxl_int ldb, const void *beta, void *c, nxl_int ldc);
void cblas_csyrk(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, nxl_int n, nxl_int k, const void *alpha, const void *a, nxl_int lda, const void *beta, void *c, nxl_int ldc);
void cblas_csyr2k(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, nxl_int n, nxl_int k, const void *alpha, const void *a, nxl_int lda, const void *b, nxl_int ldb, const void *beta, void *c, nxl_int ldc);
void cblas_chemm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, nxl_int m, nxl_int n, const void *alpha, const void *a, nxl_int lda, const void *b, nxl_int ldb, const void *beta, void *c, nxl_int ldc);
void cblas_cherk(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, nxl_int n, nxl_int k, const float alpha, const void *a, nxl_int lda, const float beta, void *c, nxl_int ldc);
void cblas_cher2k(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, nxl_int n, nxl_int k, const void *alpha, const void *a, nxl_int lda, const void *b, nxl_int ldb, const float beta, void *c, nxl_int ldc);
void cblas_zgemm(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE transa, CBLAS_TRANSPOSE transb, nxl_int m, nxl_int n, nxl_int k, const void *alpha, const void *a, nxl_int lda, const void *b, nxl_int ldb, const void *beta, void *c, nxl_int ldc);
void cblas_ztrmm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE transa, CBLAS_DIAG diag, nxl_int m, nxl_int n, const void *alpha, const void *a, nxl_int lda, void *b, nxl_int ldb);
void cblas_ztrsm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE transa, CBLAS_DIAG diag, nxl_int m, nxl_int n, const void *alpha, const void *a, nxl_int lda, void *b, nxl_int ldb);
void cblas_zsymm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, nxl_int m, nxl_int n, const void *alpha, const void *a, nxl_int lda, const void *b, nxl_int ldb, const void *beta, void *c, nxl_int ldc);
void cblas_zsyrk(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, nxl_int n, nxl_int k, const void *alpha, const void *a, nxl_int lda, const void *beta, void *c, nxl_int ldc);
void cblas_zsyr2k(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, nxl_int n, nxl_int k, const void *alpha, const void *a, nxl_int lda, const void *b, nxl_int ldb, const void *beta, void *c, nxl_int ldc);
void cblas_zhemm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, nxl_int m, nxl_int n, const void *alpha, const void *a, nxl_int lda, const void *b, nxl_int ldb, const void *beta, void *c, nxl_int ldc);
void cblas_zherk(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, nxl_int n, nxl_int k, const double alpha, const void *a, nxl_int lda, const double beta, void *c, nxl_int ldc);
void cblas_zher2k(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, nxl_int n, nxl_int k, const void *alpha, const void *a, nxl_int lda, const void *b, nxl_int ldb, const double beta, void *c, nxl_int ldc);

#ifdef __cplusplus
}
#endif

#endif /* NXL_CBLAS_H */
