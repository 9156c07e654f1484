// Typed facade over the packed, band and rank-1 level-2 routines of the BLAS
// dispatch layer, for the packed, band and symmetric-indefinite families:
// triangular solves and products in packed and band storage, the symmetric
// (real) or Hermitian (complex) packed, band and full rank-1 updates and
// matrix-vector products.
#ifndef NXL_LAPACK_PACKED_BLAS2_H
#define NXL_LAPACK_PACKED_BLAS2_H

#include "lapack/blas.h"

#define NXL_LB2_DECL(T, R, p, sp, sb, spr, syr)                                                              \
  extern "C" void nxl_blas_##p##tpsv(const char *, const char *, const char *, const nxl_int *, const T *,  \
                                     T *, const nxl_int *, int, int, int);                                  \
  extern "C" void nxl_blas_##p##tpmv(const char *, const char *, const char *, const nxl_int *, const T *,  \
                                     T *, const nxl_int *, int, int, int);                                  \
  extern "C" void nxl_blas_##p##tbsv(const char *, const char *, const char *, const nxl_int *,             \
                                     const nxl_int *, const T *, const nxl_int *, T *, const nxl_int *, int, \
                                     int, int);                                                             \
  extern "C" void nxl_blas_##p##sp(const char *, const nxl_int *, const T *, const T *, const T *,          \
                                   const nxl_int *, const T *, T *, const nxl_int *, int);                  \
  extern "C" void nxl_blas_##p##sb(const char *, const nxl_int *, const nxl_int *, const T *, const T *,    \
                                   const nxl_int *, const T *, const nxl_int *, const T *, T *,             \
                                   const nxl_int *, int);                                                   \
  extern "C" void nxl_blas_##p##spr(const char *, const nxl_int *, const R *, const T *, const nxl_int *,   \
                                    T *, int);                                                              \
  extern "C" void nxl_blas_##p##syr(const char *, const nxl_int *, const R *, const T *, const nxl_int *,   \
                                    T *, const nxl_int *, int);                                             \
  namespace nxl {                                                                                           \
  namespace blas {                                                                                          \
  inline void tpsv(char u, char t, char d, idx n, const T *ap, T *x, idx inc) {                             \
    nxl_blas_##p##tpsv(&u, &t, &d, &n, ap, x, &inc, 1, 1, 1);                                               \
  }                                                                                                         \
  inline void tpmv(char u, char t, char d, idx n, const T *ap, T *x, idx inc) {                             \
    nxl_blas_##p##tpmv(&u, &t, &d, &n, ap, x, &inc, 1, 1, 1);                                               \
  }                                                                                                         \
  inline void tbsv(char u, char t, char d, idx n, idx k, const T *a, idx lda, T *x, idx inc) {              \
    nxl_blas_##p##tbsv(&u, &t, &d, &n, &k, a, &lda, x, &inc, 1, 1, 1);                                      \
  }                                                                                                         \
  inline void hpmv(char u, idx n, T al, const T *ap, const T *x, idx ix, T be, T *y, idx iy) {              \
    nxl_blas_##p##sp(&u, &n, &al, ap, x, &ix, &be, y, &iy, 1);                                              \
  }                                                                                                         \
  inline void hbmv(char u, idx n, idx k, T al, const T *a, idx lda, const T *x, idx ix, T be, T *y,         \
                   idx iy) {                                                                                \
    nxl_blas_##p##sb(&u, &n, &k, &al, a, &lda, x, &ix, &be, y, &iy, 1);                                     \
  }                                                                                                         \
  inline void hpr(char u, idx n, R al, const T *x, idx ix, T *ap) {                                         \
    nxl_blas_##p##spr(&u, &n, &al, x, &ix, ap, 1);                                                          \
  }                                                                                                         \
  inline void her(char u, idx n, R al, const T *x, idx ix, T *a, idx lda) {                                 \
    nxl_blas_##p##syr(&u, &n, &al, x, &ix, a, &lda, 1);                                                     \
  }                                                                                                         \
  }                                                                                                         \
  }

NXL_LB2_DECL(float, float, s, spmv, sbmv, spr, syr)
NXL_LB2_DECL(double, double, d, spmv, sbmv, spr, syr)
NXL_LB2_DECL(nxl_c8, float, c, hpmv, hbmv, hpr, her)
NXL_LB2_DECL(nxl_c16, double, z, hpmv, hbmv, hpr, her)
#undef NXL_LB2_DECL

#endif  // NXL_LAPACK_PACKED_BLAS2_H
