// Level-3 BLAS dispatch layer: nxl_blas_<routine>.
//
// Every function takes the standard Fortran argument list, each argument by
// pointer, followed by one hidden int length per character argument (callers
// pass 1; the value is never read). These functions take the quick returns,
// choose between the calling thread and an OpenMP team, and call the
// code-path entries nxl_blas_x<routine>.
#ifndef NXL_BLAS_LEVEL3_H
#define NXL_BLAS_LEVEL3_H

#include <complex>
#include "nxl_types.h"

#define NXL_L3_DECLARE_COMMON(P, T)                                                        \
  void nxl_blas_##P##gemm(const char *transa, const char *transb, const nxl_int *m,        \
                          const nxl_int *n, const nxl_int *k, const T *alpha, const T *a,  \
                          const nxl_int *lda, const T *b, const nxl_int *ldb, const T *beta, \
                          T *c, const nxl_int *ldc, int, int);                             \
  void nxl_blas_##P##symm(const char *side, const char *uplo, const nxl_int *m,            \
                          const nxl_int *n, const T *alpha, const T *a, const nxl_int *lda, \
                          const T *b, const nxl_int *ldb, const T *beta, T *c,             \
                          const nxl_int *ldc, int, int);                                   \
  void nxl_blas_##P##syrk(const char *uplo, const char *trans, const nxl_int *n,           \
                          const nxl_int *k, const T *alpha, const T *a, const nxl_int *lda, \
                          const T *beta, T *c, const nxl_int *ldc, int, int);              \
  void nxl_blas_##P##syr2k(const char *uplo, const char *trans, const nxl_int *n,          \
                           const nxl_int *k, const T *alpha, const T *a,                   \
                           const nxl_int *lda, const T *b, const nxl_int *ldb,             \
                           const T *beta, T *c, const nxl_int *ldc, int, int);             \
  void nxl_blas_##P##trmm(const char *side, const char *uplo, const char *transa,          \
                          const char *diag, const nxl_int *m, const nxl_int *n,            \
                          const T *alpha, const T *a, const nxl_int *lda, T *b,            \
                          const nxl_int *ldb, int, int, int, int);                         \
  void nxl_blas_##P##trsm(const char *side, const char *uplo, const char *transa,          \
                          const char *diag, const nxl_int *m, const nxl_int *n,            \
                          const T *alpha, const T *a, const nxl_int *lda, T *b,            \
                          const nxl_int *ldb, int, int, int, int);

// hemm has symm's list; herk takes real alpha and beta, her2k a real beta.
#define NXL_L3_DECLARE_HERMITIAN(P, T, R)                                                  \
  void nxl_blas_##P##hemm(const char *side, const char *uplo, const nxl_int *m,            \
                          const nxl_int *n, const T *alpha, const T *a, const nxl_int *lda, \
                          const T *b, const nxl_int *ldb, const T *beta, T *c,             \
                          const nxl_int *ldc, int, int);                                   \
  void nxl_blas_##P##herk(const char *uplo, const char *trans, const nxl_int *n,           \
                          const nxl_int *k, const R *alpha, const T *a, const nxl_int *lda, \
                          const R *beta, T *c, const nxl_int *ldc, int, int);              \
  void nxl_blas_##P##her2k(const char *uplo, const char *trans, const nxl_int *n,          \
                           const nxl_int *k, const T *alpha, const T *a,                   \
                           const nxl_int *lda, const T *b, const nxl_int *ldb,             \
                           const R *beta, T *c, const nxl_int *ldc, int, int);

#ifdef __cplusplus
extern "C" {
#endif

NXL_L3_DECLARE_COMMON(s, float)
NXL_L3_DECLARE_COMMON(d, double)
NXL_L3_DECLARE_COMMON(c, std::complex<float>)
NXL_L3_DECLARE_COMMON(z, std::complex<double>)
NXL_L3_DECLARE_HERMITIAN(c, std::complex<float>, float)
NXL_L3_DECLARE_HERMITIAN(z, std::complex<double>, double)

// The threaded matrix-product driver: splits C among an OpenMP team of
// `threads` and runs nxl_blas_xdgemm on each piece.
void nxl_blas_dgemm_omp_driver_v1(const char *transa, const char *transb, const nxl_int *m,
                                  const nxl_int *n, const nxl_int *k, const double *alpha,
                                  const double *a, const nxl_int *lda, const double *b,
                                  const nxl_int *ldb, const double *beta, double *c,
                                  const nxl_int *ldc, int threads);

#ifdef __cplusplus
}
#endif

#endif  // NXL_BLAS_LEVEL3_H
