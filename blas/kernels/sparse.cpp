// Sparse level-1 kernels (nxl_blas_<cp>_<routine>): a compressed vector
// (values x, 1-based indices indx) against a full vector y.
#include "blas/kernels/level1_simd.h"
#include "service/codepath.h"

namespace nxl {
inline namespace NXL_CP_NS {

template <class T> void axpyi(idx nz, T a, const T *x, const idx *indx, T *y) {
  if (nz <= 0 || a == T(0)) return;
  for (idx i = 0; i < nz; ++i) y[indx[i] - 1] += mul(a, x[i]);
}

template <class T, bool Conj> T doti(idx nz, const T *x, const idx *indx, const T *y) {
  T s = T(0);
  for (idx i = 0; i < nz; ++i) s += mul(Conj ? nxl::NXL_CP_NS::conj(x[i]) : x[i], y[indx[i] - 1]);
  return s;
}

template <class T, bool Zero> void gthr(idx nz, T *y, T *x, const idx *indx) {
  for (idx i = 0; i < nz; ++i) {
    x[i] = y[indx[i] - 1];
    if constexpr (Zero) y[indx[i] - 1] = T(0);
  }
}

template <class T> void sctr(idx nz, const T *x, const idx *indx, T *y) {
  for (idx i = 0; i < nz; ++i) y[indx[i] - 1] = x[i];
}

template <class T> void roti(idx nz, T *x, const idx *indx, T *y, T c, T s) {
  for (idx i = 0; i < nz; ++i) {
    T a = x[i], b = y[indx[i] - 1];
    x[i] = c * a + s * b;
    y[indx[i] - 1] = c * b - s * a;
  }
}

}  // namespace NXL_CP_NS
}  // namespace nxl

#define K_(name) NXL_KERNEL(nxl_blas_, _##name)
#define NS nxl::NXL_CP_NS
using nxl::idx;

#define NXL_SPARSE_KERNELS(P, T)                                                                 \
  extern "C" void K_(P##axpyi)(const idx *nz, const T *a, const T *x, const idx *indx, T *y)    \
  { NS::axpyi<T>(*nz, *a, x, indx, y); }                                                       \
  extern "C" void K_(P##gthr)(const idx *nz, const T *y, T *x, const idx *indx)                 \
  { NS::gthr<T, false>(*nz, const_cast<T *>(y), x, indx); }                                    \
  extern "C" void K_(P##gthrz)(const idx *nz, T *y, T *x, const idx *indx)                      \
  { NS::gthr<T, true>(*nz, y, x, indx); }                                                      \
  extern "C" void K_(P##sctr)(const idx *nz, const T *x, const idx *indx, T *y)                 \
  { NS::sctr<T>(*nz, x, indx, y); }
#define NXL_SPARSE_KERNELS_REAL(P, T)                                                            \
  NXL_SPARSE_KERNELS(P, T)                                                                       \
  extern "C" T K_(P##doti)(const idx *nz, const T *x, const idx *indx, const T *y)              \
  { return NS::doti<T, false>(*nz, x, indx, y); }                                              \
  extern "C" void K_(P##roti)(const idx *nz, T *x, const idx *indx, T *y, const T *c,           \
                              const T *s) { NS::roti<T>(*nz, x, indx, y, *c, *s); }
#define NXL_SPARSE_KERNELS_CPLX(P, T)                                                            \
  NXL_SPARSE_KERNELS(P, T)                                                                       \
  extern "C" void K_(P##dotui)(T *res, const idx *nz, const T *x, const idx *indx, const T *y)  \
  { *res = NS::doti<T, false>(*nz, x, indx, y); }                                              \
  extern "C" void K_(P##dotci)(T *res, const idx *nz, const T *x, const idx *indx, const T *y)  \
  { *res = NS::doti<T, true>(*nz, x, indx, y); }

NXL_SPARSE_KERNELS_REAL(s, float)
NXL_SPARSE_KERNELS_REAL(d, double)
NXL_SPARSE_KERNELS_CPLX(c, std::complex<float>)
NXL_SPARSE_KERNELS_CPLX(z, std::complex<double>)
