// Exported level-1 and sparse level-1 BLAS routines and lsame: one row per
// routine family, instantiated for the four precisions. Level-1 routines have
// no argument checks; n <= 0 returns at once in the dispatch layer.
#include "blas/interface/frame.h"
#include "blas/level1.h"

using nxl::frame::F;
using nxl::frame::I;
using cfloat = std::complex<float>;
using cdouble = std::complex<double>;

#define NXL_L1_COMMON(P, p, A, a, T, R)                                                          \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##AXPY, p##axpy,                                            \
                             (I n, const T *alpha, const T *x, I incx, T *y, I incy),           \
                             (n, alpha, x, incx, y, incy))                                      \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##COPY, p##copy, (I n, const T *x, I incx, T *y, I incy),   \
                             (n, x, incx, y, incy))                                             \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##SWAP, p##swap, (I n, T *x, I incx, T *y, I incy),         \
                             (n, x, incx, y, incy))                                             \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##SCAL, p##scal, (I n, const T *alpha, T *x, I incx),       \
                             (n, alpha, x, incx))                                               \
  NXL_BLAS_ROUTINE_UNCHECKED(R, A##NRM2, a##nrm2, (I n, const T *x, I incx), (n, x, incx))      \
  NXL_BLAS_ROUTINE_UNCHECKED(R, A##ASUM, a##asum, (I n, const T *x, I incx), (n, x, incx))      \
  NXL_BLAS_ROUTINE_UNCHECKED(nxl_int, I##P##AMAX, i##p##amax, (I n, const T *x, I incx),        \
                             (n, x, incx))                                                      \
  NXL_BLAS_ROUTINE_UNCHECKED(nxl_int, I##P##AMIN, i##p##amin, (I n, const T *x, I incx),        \
                             (n, x, incx))

#define NXL_L1_REAL(P, p, T)                                                                     \
  NXL_L1_COMMON(P, p, P, p, T, T)                                                                \
  NXL_BLAS_ROUTINE_UNCHECKED(T, P##DOT, p##dot, (I n, const T *x, I incx, const T *y, I incy),  \
                             (n, x, incx, y, incy))                                             \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##ROT, p##rot,                                              \
                             (I n, T *x, I incx, T *y, I incy, const T *c, const T *s),         \
                             (n, x, incx, y, incy, c, s))                                       \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##ROTM, p##rotm,                                            \
                             (I n, T *x, I incx, T *y, I incy, const T *param),                 \
                             (n, x, incx, y, incy, param))                                      \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##ROTG, p##rotg, (T * a, T * b, T * c, T * s), (a, b, c, s)) \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##ROTMG, p##rotmg,                                          \
                             (T * d1, T * d2, T * x1, const T *y1, T *param),                   \
                             (d1, d2, x1, y1, param))

#define NXL_L1_CPLX(P, p, A, a, Q, q, T, R)                                                      \
  NXL_L1_COMMON(P, p, A, a, T, R)                                                                \
  NXL_BLAS_ROUTINE_CRESULT(T, P##DOTU, p##dotu, (I n, const T *x, I incx, const T *y, I incy),  \
                           (n, x, incx, y, incy))                                               \
  NXL_BLAS_ROUTINE_CRESULT(T, P##DOTC, p##dotc, (I n, const T *x, I incx, const T *y, I incy),  \
                           (n, x, incx, y, incy))                                               \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##ROT, p##rot,                                              \
                             (I n, T *x, I incx, T *y, I incy, const R *c, const T *s),         \
                             (n, x, incx, y, incy, c, s))                                       \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##Q##ROT, p##q##rot,                                        \
                             (I n, T *x, I incx, T *y, I incy, const R *c, const R *s),         \
                             (n, x, incx, y, incy, c, s))                                       \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##Q##SCAL, p##q##scal, (I n, const R *alpha, T *x, I incx), \
                             (n, alpha, x, incx))                                               \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##ROTG, p##rotg, (T * a, const T *b, R *c, T *s),            \
                             (a, b, c, s))

NXL_L1_REAL(S, s, float)
NXL_L1_REAL(D, d, double)
NXL_L1_CPLX(C, c, SC, sc, S, s, cfloat, float)
NXL_L1_CPLX(Z, z, DZ, dz, D, d, cdouble, double)

NXL_BLAS_ROUTINE_UNCHECKED(float, SDSDOT, sdsdot,
                           (I n, const float *sb, const float *x, I incx, const float *y, I incy),
                           (n, sb, x, incx, y, incy))
NXL_BLAS_ROUTINE_UNCHECKED(double, DSDOT, dsdot,
                           (I n, const float *x, I incx, const float *y, I incy),
                           (n, x, incx, y, incy))

// Sparse level 1.
#define NXL_SPARSE(P, p, T)                                                                      \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##AXPYI, p##axpyi,                                          \
                             (I nz, const T *a, const T *x, I indx, T *y), (nz, a, x, indx, y)) \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##GTHR, p##gthr, (I nz, const T *y, T *x, I indx),          \
                             (nz, y, x, indx))                                                  \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##GTHRZ, p##gthrz, (I nz, T *y, T *x, I indx),              \
                             (nz, y, x, indx))                                                  \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##SCTR, p##sctr, (I nz, const T *x, I indx, T *y),          \
                             (nz, x, indx, y))
#define NXL_SPARSE_REAL(P, p, T)                                                                 \
  NXL_SPARSE(P, p, T)                                                                            \
  NXL_BLAS_ROUTINE_UNCHECKED(T, P##DOTI, p##doti, (I nz, const T *x, I indx, const T *y),       \
                             (nz, x, indx, y))                                                  \
  NXL_BLAS_ROUTINE_UNCHECKED(void, P##ROTI, p##roti,                                            \
                             (I nz, T *x, I indx, T *y, const T *c, const T *s),                \
                             (nz, x, indx, y, c, s))
#define NXL_SPARSE_CPLX(P, p, T)                                                                 \
  NXL_SPARSE(P, p, T)                                                                            \
  NXL_BLAS_ROUTINE_CRESULT(T, P##DOTUI, p##dotui, (I nz, const T *x, I indx, const T *y),       \
                           (nz, x, indx, y))                                                    \
  NXL_BLAS_ROUTINE_CRESULT(T, P##DOTCI, p##dotci, (I nz, const T *x, I indx, const T *y),       \
                           (nz, x, indx, y))

NXL_SPARSE_REAL(S, s, float)
NXL_SPARSE_REAL(D, d, double)
NXL_SPARSE_CPLX(C, c, cfloat)
NXL_SPARSE_CPLX(Z, z, cdouble)

// LOGICAL LSAME(CA, CB): case-insensitive comparison of two characters.
NXL_FORTRAN_ENTRY(nxl_int, LSAME, lsame, (const char *ca, const char *cb)) {
  return nxl_serv_lsame(ca, cb, 1, 1) != 0;
}
