// Level-2 BLAS dispatch layer: one function per routine, with the routine's
// Fortran argument list (every argument by address) followed by one hidden
// int length per character argument, in order (callers pass 1; the value is
// never read). These functions take the quick returns, decide on threads and
// call the code-path entries nxl_blas_x<routine>.
//
// Callers: the exported Fortran entries, the level-3 drivers (single row or
// column products) and LAPACK, which bypass the argument checks: the
// arguments must already be valid.
#ifndef NXL_BLAS_LEVEL2_H
#define NXL_BLAS_LEVEL2_H

#include <complex>
#include "nxl_types.h"

extern "C" {

// float
void nxl_blas_sgemv(const char* trans, const nxl_int* m, const nxl_int* n, const float* alpha, const float* a, const nxl_int* lda, const float* x, const nxl_int* incx, const float* beta, float* y, const nxl_int* incy, int);
void nxl_blas_sgbmv(const char* trans, const nxl_int* m, const nxl_int* n, const nxl_int* kl, const nxl_int* ku, const float* alpha, const float* a, const nxl_int* lda, const float* x, const nxl_int* incx, const float* beta, float* y, const nxl_int* incy, int);
void nxl_blas_ssymv(const char* uplo, const nxl_int* n, const float* alpha, const float* a, const nxl_int* lda, const float* x, const nxl_int* incx, const float* beta, float* y, const nxl_int* incy, int);
void nxl_blas_ssbmv(const char* uplo, const nxl_int* n, const nxl_int* k, const float* alpha, const float* a, const nxl_int* lda, const float* x, const nxl_int* incx, const float* beta, float* y, const nxl_int* incy, int);
void nxl_blas_sspmv(const char* uplo, const nxl_int* n, const float* alpha, const float* ap, const float* x, const nxl_int* incx, const float* beta, float* y, const nxl_int* incy, int);
void nxl_blas_strmv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const float* a, const nxl_int* lda, float* x, const nxl_int* incx, int, int, int);
void nxl_blas_stbmv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const nxl_int* k, const float* a, const nxl_int* lda, float* x, const nxl_int* incx, int, int, int);
void nxl_blas_stpmv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const float* ap, float* x, const nxl_int* incx, int, int, int);
void nxl_blas_strsv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const float* a, const nxl_int* lda, float* x, const nxl_int* incx, int, int, int);
void nxl_blas_stbsv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const nxl_int* k, const float* a, const nxl_int* lda, float* x, const nxl_int* incx, int, int, int);
void nxl_blas_stpsv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const float* ap, float* x, const nxl_int* incx, int, int, int);
void nxl_blas_sger(const nxl_int* m, const nxl_int* n, const float* alpha, const float* x, const nxl_int* incx, const float* y, const nxl_int* incy, float* a, const nxl_int* lda);
void nxl_blas_ssyr(const char* uplo, const nxl_int* n, const float* alpha, const float* x, const nxl_int* incx, float* a, const nxl_int* lda, int);
void nxl_blas_ssyr2(const char* uplo, const nxl_int* n, const float* alpha, const float* x, const nxl_int* incx, const float* y, const nxl_int* incy, float* a, const nxl_int* lda, int);
void nxl_blas_sspr(const char* uplo, const nxl_int* n, const float* alpha, const float* x, const nxl_int* incx, float* ap, int);
void nxl_blas_sspr2(const char* uplo, const nxl_int* n, const float* alpha, const float* x, const nxl_int* incx, const float* y, const nxl_int* incy, float* ap, int);

// double
void nxl_blas_dgemv(const char* trans, const nxl_int* m, const nxl_int* n, const double* alpha, const double* a, const nxl_int* lda, const double* x, const nxl_int* incx, const double* beta, double* y, const nxl_int* incy, int);
void nxl_blas_dgbmv(const char* trans, const nxl_int* m, const nxl_int* n, const nxl_int* kl, const nxl_int* ku, const double* alpha, const double* a, const nxl_int* lda, const double* x, const nxl_int* incx, const double* beta, double* y, const nxl_int* incy, int);
void nxl_blas_dsymv(const char* uplo, const nxl_int* n, const double* alpha, const double* a, const nxl_int* lda, const double* x, const nxl_int* incx, const double* beta, double* y, const nxl_int* incy, int);
void nxl_blas_dsbmv(const char* uplo, const nxl_int* n, const nxl_int* k, const double* alpha, const double* a, const nxl_int* lda, const double* x, const nxl_int* incx, const double* beta, double* y, const nxl_int* incy, int);
void nxl_blas_dspmv(const char* uplo, const nxl_int* n, const double* alpha, const double* ap, const double* x, const nxl_int* incx, const double* beta, double* y, const nxl_int* incy, int);
void nxl_blas_dtrmv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const double* a, const nxl_int* lda, double* x, const nxl_int* incx, int, int, int);
void nxl_blas_dtbmv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const nxl_int* k, const double* a, const nxl_int* lda, double* x, const nxl_int* incx, int, int, int);
void nxl_blas_dtpmv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const double* ap, double* x, const nxl_int* incx, int, int, int);
void nxl_blas_dtrsv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const double* a, const nxl_int* lda, double* x, const nxl_int* incx, int, int, int);
void nxl_blas_dtbsv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const nxl_int* k, const double* a, const nxl_int* lda, double* x, const nxl_int* incx, int, int, int);
void nxl_blas_dtpsv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const double* ap, double* x, const nxl_int* incx, int, int, int);
void nxl_blas_dger(const nxl_int* m, const nxl_int* n, const double* alpha, const double* x, const nxl_int* incx, const double* y, const nxl_int* incy, double* a, const nxl_int* lda);
void nxl_blas_dsyr(const char* uplo, const nxl_int* n, const double* alpha, const double* x, const nxl_int* incx, double* a, const nxl_int* lda, int);
void nxl_blas_dsyr2(const char* uplo, const nxl_int* n, const double* alpha, const double* x, const nxl_int* incx, const double* y, const nxl_int* incy, double* a, const nxl_int* lda, int);
void nxl_blas_dspr(const char* uplo, const nxl_int* n, const double* alpha, const double* x, const nxl_int* incx, double* ap, int);
void nxl_blas_dspr2(const char* uplo, const nxl_int* n, const double* alpha, const double* x, const nxl_int* incx, const double* y, const nxl_int* incy, double* ap, int);

// std::complex<float>
void nxl_blas_cgemv(const char* trans, const nxl_int* m, const nxl_int* n, const std::complex<float>* alpha, const std::complex<float>* a, const nxl_int* lda, const std::complex<float>* x, const nxl_int* incx, const std::complex<float>* beta, std::complex<float>* y, const nxl_int* incy, int);
void nxl_blas_cgbmv(const char* trans, const nxl_int* m, const nxl_int* n, const nxl_int* kl, const nxl_int* ku, const std::complex<float>* alpha, const std::complex<float>* a, const nxl_int* lda, const std::complex<float>* x, const nxl_int* incx, const std::complex<float>* beta, std::complex<float>* y, const nxl_int* incy, int);
void nxl_blas_chemv(const char* uplo, const nxl_int* n, const std::complex<float>* alpha, const std::complex<float>* a, const nxl_int* lda, const std::complex<float>* x, const nxl_int* incx, const std::complex<float>* beta, std::complex<float>* y, const nxl_int* incy, int);
void nxl_blas_chbmv(const char* uplo, const nxl_int* n, const nxl_int* k, const std::complex<float>* alpha, const std::complex<float>* a, const nxl_int* lda, const std::complex<float>* x, const nxl_int* incx, const std::complex<float>* beta, std::complex<float>* y, const nxl_int* incy, int);
void nxl_blas_chpmv(const char* uplo, const nxl_int* n, const std::complex<float>* alpha, const std::complex<float>* ap, const std::complex<float>* x, const nxl_int* incx, const std::complex<float>* beta, std::complex<float>* y, const nxl_int* incy, int);
void nxl_blas_ctrmv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const std::complex<float>* a, const nxl_int* lda, std::complex<float>* x, const nxl_int* incx, int, int, int);
void nxl_blas_ctbmv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const nxl_int* k, const std::complex<float>* a, const nxl_int* lda, std::complex<float>* x, const nxl_int* incx, int, int, int);
void nxl_blas_ctpmv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const std::complex<float>* ap, std::complex<float>* x, const nxl_int* incx, int, int, int);
void nxl_blas_ctrsv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const std::complex<float>* a, const nxl_int* lda, std::complex<float>* x, const nxl_int* incx, int, int, int);
void nxl_blas_ctbsv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const nxl_int* k, const std::complex<float>* a, const nxl_int* lda, std::complex<float>* x, const nxl_int* incx, int, int, int);
void nxl_blas_ctpsv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const std::complex<float>* ap, std::complex<float>* x, const nxl_int* incx, int, int, int);
void nxl_blas_cgeru(const nxl_int* m, const nxl_int* n, const std::complex<float>* alpha, const std::complex<float>* x, const nxl_int* incx, const std::complex<float>* y, const nxl_int* incy, std::complex<float>* a, const nxl_int* lda);
void nxl_blas_cgerc(const nxl_int* m, const nxl_int* n, const std::complex<float>* alpha, const std::complex<float>* x, const nxl_int* incx, const std::complex<float>* y, const nxl_int* incy, std::complex<float>* a, const nxl_int* lda);
void nxl_blas_cher(const char* uplo, const nxl_int* n, const float* alpha, const std::complex<float>* x, const nxl_int* incx, std::complex<float>* a, const nxl_int* lda, int);
void nxl_blas_cher2(const char* uplo, const nxl_int* n, const std::complex<float>* alpha, const std::complex<float>* x, const nxl_int* incx, const std::complex<float>* y, const nxl_int* incy, std::complex<float>* a, const nxl_int* lda, int);
void nxl_blas_chpr(const char* uplo, const nxl_int* n, const float* alpha, const std::complex<float>* x, const nxl_int* incx, std::complex<float>* ap, int);
void nxl_blas_chpr2(const char* uplo, const nxl_int* n, const std::complex<float>* alpha, const std::complex<float>* x, const nxl_int* incx, const std::complex<float>* y, const nxl_int* incy, std::complex<float>* ap, int);

// std::complex<double>
void nxl_blas_zgemv(const char* trans, const nxl_int* m, const nxl_int* n, const std::complex<double>* alpha, const std::complex<double>* a, const nxl_int* lda, const std::complex<double>* x, const nxl_int* incx, const std::complex<double>* beta, std::complex<double>* y, const nxl_int* incy, int);
void nxl_blas_zgbmv(const char* trans, const nxl_int* m, const nxl_int* n, const nxl_int* kl, const nxl_int* ku, const std::complex<double>* alpha, const std::complex<double>* a, const nxl_int* lda, const std::complex<double>* x, const nxl_int* incx, const std::complex<double>* beta, std::complex<double>* y, const nxl_int* incy, int);
void nxl_blas_zhemv(const char* uplo, const nxl_int* n, const std::complex<double>* alpha, const std::complex<double>* a, const nxl_int* lda, const std::complex<double>* x, const nxl_int* incx, const std::complex<double>* beta, std::complex<double>* y, const nxl_int* incy, int);
void nxl_blas_zhbmv(const char* uplo, const nxl_int* n, const nxl_int* k, const std::complex<double>* alpha, const std::complex<double>* a, const nxl_int* lda, const std::complex<double>* x, const nxl_int* incx, const std::complex<double>* beta, std::complex<double>* y, const nxl_int* incy, int);
void nxl_blas_zhpmv(const char* uplo, const nxl_int* n, const std::complex<double>* alpha, const std::complex<double>* ap, const std::complex<double>* x, const nxl_int* incx, const std::complex<double>* beta, std::complex<double>* y, const nxl_int* incy, int);
void nxl_blas_ztrmv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const std::complex<double>* a, const nxl_int* lda, std::complex<double>* x, const nxl_int* incx, int, int, int);
void nxl_blas_ztbmv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const nxl_int* k, const std::complex<double>* a, const nxl_int* lda, std::complex<double>* x, const nxl_int* incx, int, int, int);
void nxl_blas_ztpmv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const std::complex<double>* ap, std::complex<double>* x, const nxl_int* incx, int, int, int);
void nxl_blas_ztrsv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const std::complex<double>* a, const nxl_int* lda, std::complex<double>* x, const nxl_int* incx, int, int, int);
void nxl_blas_ztbsv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const nxl_int* k, const std::complex<double>* a, const nxl_int* lda, std::complex<double>* x, const nxl_int* incx, int, int, int);
void nxl_blas_ztpsv(const char* uplo, const char* trans, const char* diag, const nxl_int* n, const std::complex<double>* ap, std::complex<double>* x, const nxl_int* incx, int, int, int);
void nxl_blas_zgeru(const nxl_int* m, const nxl_int* n, const std::complex<double>* alpha, const std::complex<double>* x, const nxl_int* incx, const std::complex<double>* y, const nxl_int* incy, std::complex<double>* a, const nxl_int* lda);
void nxl_blas_zgerc(const nxl_int* m, const nxl_int* n, const std::complex<double>* alpha, const std::complex<double>* x, const nxl_int* incx, const std::complex<double>* y, const nxl_int* incy, std::complex<double>* a, const nxl_int* lda);
void nxl_blas_zher(const char* uplo, const nxl_int* n, const double* alpha, const std::complex<double>* x, const nxl_int* incx, std::complex<double>* a, const nxl_int* lda, int);
void nxl_blas_zher2(const char* uplo, const nxl_int* n, const std::complex<double>* alpha, const std::complex<double>* x, const nxl_int* incx, const std::complex<double>* y, const nxl_int* incy, std::complex<double>* a, const nxl_int* lda, int);
void nxl_blas_zhpr(const char* uplo, const nxl_int* n, const double* alpha, const std::complex<double>* x, const nxl_int* incx, std::complex<double>* ap, int);
void nxl_blas_zhpr2(const char* uplo, const nxl_int* n, const std::complex<double>* alpha, const std::complex<double>* x, const nxl_int* incx, const std::complex<double>* y, const nxl_int* incy, std::complex<double>* ap, int);

}  // extern "C"

#endif  // NXL_BLAS_LEVEL2_H
