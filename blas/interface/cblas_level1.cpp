// CBLAS level-1 entries: the by-value integers and scalars are copied into
// locals and the Fortran-layer body is called by address; no checks.
#include "blas/interface/cblas_common.h"

using namespace nxl::cblas;
typedef nxl_int Int;
#define API extern "C" NXL_API

#define NXL_CBLAS_L1_COMMON(P, p, A, a, T, R, VT, VR, VAL)                                       \
  API void cblas_##p##axpy(Int n, VAL alpha, const VT *x, Int incx, VT *y, Int incy) {                 \
    P##AXPY(&n, nxl::cblas::scalar_ptr<T>(alpha), cp<T>(x), &incx, mp<T>(y), &incy);            \
  }                                                                                              \
  API void cblas_##p##copy(Int n, const VT *x, Int incx, VT *y, Int incy) {                            \
    P##COPY(&n, cp<T>(x), &incx, mp<T>(y), &incy);                                               \
  }                                                                                              \
  API void cblas_##p##swap(Int n, VT *x, Int incx, VT *y, Int incy) {                                  \
    P##SWAP(&n, mp<T>(x), &incx, mp<T>(y), &incy);                                               \
  }                                                                                              \
  API void cblas_##p##scal(Int n, VAL alpha, VT *x, Int incx) {                                      \
    P##SCAL(&n, nxl::cblas::scalar_ptr<T>(alpha), mp<T>(x), &incx);                              \
  }                                                                                              \
  API R cblas_##a##nrm2(Int n, const VT *x, Int incx) { return A##NRM2(&n, cp<T>(x), &incx); }       \
  API R cblas_##a##asum(Int n, const VT *x, Int incx) { return A##ASUM(&n, cp<T>(x), &incx); }       \
  API size_t cblas_i##p##amax(Int n, const VT *x, Int incx) {                                        \
    nxl_int i = I##P##AMAX(&n, cp<T>(x), &incx);                                                 \
    return i > 0 ? size_t(i - 1) : 0;                                                            \
  }                                                                                              \
  API size_t cblas_i##p##amin(Int n, const VT *x, Int incx) {                                        \
    nxl_int i = I##P##AMIN(&n, cp<T>(x), &incx);                                                 \
    return i > 0 ? size_t(i - 1) : 0;                                                            \
  }

namespace nxl {
namespace cblas {
// Address of a scalar passed by value (real) or by address (complex).
template <class T> inline const T *scalar_ptr(const T &v) { return &v; }
template <class T> inline const T *scalar_ptr(const void *p) { return static_cast<const T *>(p); }
}  // namespace cblas
}  // namespace nxl

#define NXL_CBLAS_L1_REAL(P, p, T)                                                               \
  NXL_CBLAS_L1_COMMON(P, p, P, p, T, T, T, T, const T)                                           \
  API T cblas_##p##dot(Int n, const T *x, Int incx, const T *y, Int incy) {                            \
    return P##DOT(&n, x, &incx, y, &incy);                                                       \
  }                                                                                              \
  API void cblas_##p##rot(Int n, T *x, Int incx, T *y, Int incy, const T c, const T s) {               \
    P##ROT(&n, x, &incx, y, &incy, &c, &s);                                                      \
  }                                                                                              \
  API void cblas_##p##rotm(Int n, T *x, Int incx, T *y, Int incy, const T *param) {                    \
    P##ROTM(&n, x, &incx, y, &incy, param);                                                      \
  }                                                                                              \
  API void cblas_##p##rotg(T *a, T *b, T *c, T *s) { P##ROTG(a, b, c, s); }                      \
  API void cblas_##p##rotmg(T *d1, T *d2, T *b1, const T b2, T *param) {                         \
    P##ROTMG(d1, d2, b1, &b2, param);                                                            \
  }

#define NXL_CBLAS_L1_CPLX(P, p, A, a, Q, q, T, R, CR)                                            \
  NXL_CBLAS_L1_COMMON(P, p, A, a, T, R, void, R, const void *)                                   \
  API void cblas_##p##dotu_sub(Int n, const void *x, Int incx, const void *y, Int incy, void *dotu) {  \
    CR r = P##DOTU(&n, cp<T>(x), &incx, cp<T>(y), &incy);                                        \
    *mp<T>(dotu) = T(r.real, r.imag);                                                            \
  }                                                                                              \
  API void cblas_##p##dotc_sub(Int n, const void *x, Int incx, const void *y, Int incy, void *dotc) {  \
    CR r = P##DOTC(&n, cp<T>(x), &incx, cp<T>(y), &incy);                                        \
    *mp<T>(dotc) = T(r.real, r.imag);                                                            \
  }                                                                                              \
  API void cblas_##p##rot(Int n, void *x, Int incx, void *y, Int incy, const R c, const void *s) {     \
    P##ROT(&n, mp<T>(x), &incx, mp<T>(y), &incy, &c, cp<T>(s));                                  \
  }                                                                                              \
  API void cblas_##p##q##rot(Int n, void *x, Int incx, void *y, Int incy, const R c, const R s) {      \
    P##Q##ROT(&n, mp<T>(x), &incx, mp<T>(y), &incy, &c, &s);                                     \
  }                                                                                              \
  API void cblas_##p##q##scal(Int n, const R alpha, void *x, Int incx) {                             \
    P##Q##SCAL(&n, &alpha, mp<T>(x), &incx);                                                     \
  }                                                                                              \
  API void cblas_##p##rotg(void *a, const void *b, R *c, void *s) {                              \
    P##ROTG(mp<T>(a), cp<T>(b), c, mp<T>(s));                                                    \
  }

NXL_CBLAS_L1_REAL(S, s, float)
NXL_CBLAS_L1_REAL(D, d, double)
NXL_CBLAS_L1_CPLX(C, c, SC, sc, S, s, cfloat, float, nxl_complex8)
NXL_CBLAS_L1_CPLX(Z, z, DZ, dz, D, d, cdouble, double, nxl_complex16)

API float cblas_sdsdot(Int n, const float alpha, const float *x, Int incx, const float *y, Int incy) {
  return SDSDOT(&n, &alpha, x, &incx, y, &incy);
}
API double cblas_dsdot(Int n, const float *x, Int incx, const float *y, Int incy) {
  return DSDOT(&n, x, &incx, y, &incy);
}
