// Level-1 and sparse level-1 BLAS: the dispatch layer (nxl_blas_<routine>:
// quick returns, threading), the code-path entries (nxl_blas_x<routine>) and
// the sparse entries, which are their own code-path entries. Every argument is
// passed by address as in the Fortran interface; complex results come back
// through a leading out-parameter.
#ifndef NXL_BLAS_LEVEL1_H
#define NXL_BLAS_LEVEL1_H

#include <complex>
#include "nxl_types.h"

#define NXL_L1_I const nxl_int *

// One level-1 family declared for one precision.
//   P: routine prefix (s, d, c, z); T: element; R: real of T; A: prefix of
//   the real-result routines (s, d, sc, dz).
#define NXL_L1_DECLARE_COMMON(P, T, R, A, pre)                                                   \
  extern "C" void pre##P##axpy(NXL_L1_I n, const T *alpha, const T *x, NXL_L1_I incx, T *y,     \
                               NXL_L1_I incy);                                                  \
  extern "C" void pre##P##copy(NXL_L1_I n, const T *x, NXL_L1_I incx, T *y, NXL_L1_I incy);     \
  extern "C" void pre##P##swap(NXL_L1_I n, T *x, NXL_L1_I incx, T *y, NXL_L1_I incy);           \
  extern "C" void pre##P##scal(NXL_L1_I n, const T *alpha, T *x, NXL_L1_I incx);                \
  extern "C" R pre##A##nrm2(NXL_L1_I n, const T *x, NXL_L1_I incx);                             \
  extern "C" R pre##A##asum(NXL_L1_I n, const T *x, NXL_L1_I incx);                             \
  extern "C" nxl_int pre##i##P##amax(NXL_L1_I n, const T *x, NXL_L1_I incx);                    \
  extern "C" nxl_int pre##i##P##amin(NXL_L1_I n, const T *x, NXL_L1_I incx);

#define NXL_L1_DECLARE_REAL(P, T, pre)                                                           \
  NXL_L1_DECLARE_COMMON(P, T, T, P, pre)                                                         \
  extern "C" T pre##P##dot(NXL_L1_I n, const T *x, NXL_L1_I incx, const T *y, NXL_L1_I incy);   \
  extern "C" void pre##P##rot(NXL_L1_I n, T *x, NXL_L1_I incx, T *y, NXL_L1_I incy, const T *c, \
                              const T *s);                                                      \
  extern "C" void pre##P##rotm(NXL_L1_I n, T *x, NXL_L1_I incx, T *y, NXL_L1_I incy,            \
                               const T *param);                                                 \
  extern "C" void pre##P##rotg(T *a, T *b, T *c, T *s);                                         \
  extern "C" void pre##P##rotmg(T *d1, T *d2, T *x1, const T *y1, T *param);

#define NXL_L1_DECLARE_CPLX(P, T, R, A, Q, pre)                                                  \
  NXL_L1_DECLARE_COMMON(P, T, R, A, pre)                                                         \
  extern "C" void pre##P##dotu(T *result, NXL_L1_I n, const T *x, NXL_L1_I incx, const T *y,    \
                               NXL_L1_I incy);                                                  \
  extern "C" void pre##P##dotc(T *result, NXL_L1_I n, const T *x, NXL_L1_I incx, const T *y,    \
                               NXL_L1_I incy);                                                  \
  extern "C" void pre##P##rot(NXL_L1_I n, T *x, NXL_L1_I incx, T *y, NXL_L1_I incy, const R *c, \
                              const T *s);                                                      \
  extern "C" void pre##P##Q##rot(NXL_L1_I n, T *x, NXL_L1_I incx, T *y, NXL_L1_I incy,         \
                                 const R *c, const R *s);                                       \
  extern "C" void pre##P##Q##scal(NXL_L1_I n, const R *alpha, T *x, NXL_L1_I incx);             \
  extern "C" void pre##P##rotg(T *a, const T *b, R *c, T *s);

// Sparse level 1 (index vectors are 1-based).
#define NXL_SPARSE_DECLARE(P, T, pre, suf)                                                       \
  extern "C" void pre##P##axpyi##suf(NXL_L1_I nz, const T *a, const T *x, NXL_L1_I indx, T *y); \
  extern "C" void pre##P##gthr##suf(NXL_L1_I nz, const T *y, T *x, NXL_L1_I indx);              \
  extern "C" void pre##P##gthrz##suf(NXL_L1_I nz, T *y, T *x, NXL_L1_I indx);                   \
  extern "C" void pre##P##sctr##suf(NXL_L1_I nz, const T *x, NXL_L1_I indx, T *y);
#define NXL_SPARSE_DECLARE_REAL(P, T, pre, suf)                                                  \
  NXL_SPARSE_DECLARE(P, T, pre, suf)                                                             \
  extern "C" T pre##P##doti##suf(NXL_L1_I nz, const T *x, NXL_L1_I indx, const T *y);          \
  extern "C" void pre##P##roti##suf(NXL_L1_I nz, T *x, NXL_L1_I indx, T *y, const T *c,         \
                                    const T *s);
#define NXL_SPARSE_DECLARE_CPLX(P, T, pre, suf)                                                  \
  NXL_SPARSE_DECLARE(P, T, pre, suf)                                                             \
  extern "C" void pre##P##dotui##suf(T *result, NXL_L1_I nz, const T *x, NXL_L1_I indx,         \
                                     const T *y);                                               \
  extern "C" void pre##P##dotci##suf(T *result, NXL_L1_I nz, const T *x, NXL_L1_I indx,         \
                                     const T *y);

#define NXL_L1_DECLARE_ALL(pre)                                         \
  NXL_L1_DECLARE_REAL(s, float, pre)                                    \
  NXL_L1_DECLARE_REAL(d, double, pre)                                   \
  NXL_L1_DECLARE_CPLX(c, std::complex<float>, float, sc, s, pre)        \
  NXL_L1_DECLARE_CPLX(z, std::complex<double>, double, dz, d, pre)      \
  extern "C" float pre##sdsdot(NXL_L1_I n, const float *sb, const float *x, NXL_L1_I incx, \
                               const float *y, NXL_L1_I incy);         \
  extern "C" double pre##dsdot(NXL_L1_I n, const float *x, NXL_L1_I incx, const float *y, \
                               NXL_L1_I incy);

// The dispatch layer and the code-path entries.
NXL_L1_DECLARE_ALL(nxl_blas_)
NXL_L1_DECLARE_ALL(nxl_blas_x)

// Sparse entries (dispatch = code-path entry).
NXL_SPARSE_DECLARE_REAL(s, float, nxl_blas_, )
NXL_SPARSE_DECLARE_REAL(d, double, nxl_blas_, )
NXL_SPARSE_DECLARE_CPLX(c, std::complex<float>, nxl_blas_, )
NXL_SPARSE_DECLARE_CPLX(z, std::complex<double>, nxl_blas_, )

// Test hook: when set, every threaded level-1 call reports the team size it
// asked for and the size the runtime gave it.
extern "C" void (*nxl_blas_l1_team_hook)(int requested, int actual);

#endif  // NXL_BLAS_LEVEL1_H
