// Sparse level-1 entries: no threading layer, the dispatch routine is itself
// the code-path entry with its lazily chosen kernel.
#include <complex>
#include "blas/level1.h"
#include "service/codepath.h"

using nxl_idx = nxl_int;
#define I_ const nxl_idx *
#define NXL_SPARSE_ENTRIES(P, T)                                                                 \
  NXL_CP_ENTRY(void, nxl_blas_##P##axpyi, nxl_blas_, _##P##axpyi,                               \
               (I_ nz, const T *a, const T *x, I_ indx, T *y), (nz, a, x, indx, y))             \
  NXL_CP_ENTRY(void, nxl_blas_##P##gthr, nxl_blas_, _##P##gthr,                                 \
               (I_ nz, const T *y, T *x, I_ indx), (nz, y, x, indx))                            \
  NXL_CP_ENTRY(void, nxl_blas_##P##gthrz, nxl_blas_, _##P##gthrz,                               \
               (I_ nz, T *y, T *x, I_ indx), (nz, y, x, indx))                                  \
  NXL_CP_ENTRY(void, nxl_blas_##P##sctr, nxl_blas_, _##P##sctr,                                 \
               (I_ nz, const T *x, I_ indx, T *y), (nz, x, indx, y))
#define NXL_SPARSE_ENTRIES_REAL(P, T)                                                            \
  NXL_SPARSE_ENTRIES(P, T)                                                                       \
  NXL_CP_ENTRY(T, nxl_blas_##P##doti, nxl_blas_, _##P##doti,                                    \
               (I_ nz, const T *x, I_ indx, const T *y), (nz, x, indx, y))                      \
  NXL_CP_ENTRY(void, nxl_blas_##P##roti, nxl_blas_, _##P##roti,                                 \
               (I_ nz, T *x, I_ indx, T *y, const T *c, const T *s), (nz, x, indx, y, c, s))
#define NXL_SPARSE_ENTRIES_CPLX(P, T)                                                            \
  NXL_SPARSE_ENTRIES(P, T)                                                                       \
  NXL_CP_ENTRY(void, nxl_blas_##P##dotui, nxl_blas_, _##P##dotui,                               \
               (T * res, I_ nz, const T *x, I_ indx, const T *y), (res, nz, x, indx, y))        \
  NXL_CP_ENTRY(void, nxl_blas_##P##dotci, nxl_blas_, _##P##dotci,                               \
               (T * res, I_ nz, const T *x, I_ indx, const T *y), (res, nz, x, indx, y))

NXL_SPARSE_ENTRIES_REAL(s, float)
NXL_SPARSE_ENTRIES_REAL(d, double)
NXL_SPARSE_ENTRIES_CPLX(c, std::complex<float>)
NXL_SPARSE_ENTRIES_CPLX(z, std::complex<double>)
