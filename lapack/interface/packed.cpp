// Exported packed-storage routines of the four precisions: Hermitian
// (symmetric) positive definite, symmetric and Hermitian indefinite, and
// their norms, scalings and products. One row each.
#include "lapack/frame.h"
#include "lapack/packed/pptrf.h"

namespace {
using cI = const nxl_int *;
using I = nxl_int *;
using cC = const char *;
using Ch = char *;
}  // namespace

// Rows whose parameter lists are the same in every precision.
#define NXL_ROWS_PP_COMMON(P, p)                                                                         \
  NXL_LAPACK_ROW(void, P##PPTRF, p##pptrf, pptrf, kNone, nullptr, cC, cI, T *, I)                        \
  NXL_LAPACK_ROW(void, P##PPTRS, p##pptrs, pptrs, kNone, nullptr, cC, cI, cI, const T *, T *, cI, I)     \
  NXL_LAPACK_ROW(void, P##PPSV, p##ppsv, ppsv, kNone, nullptr, cC, cI, cI, T *, T *, cI, I)              \
  NXL_LAPACK_ROW(void, P##PPTRI, p##pptri, pptri, kNone, nullptr, cC, cI, T *, I)                        \
  NXL_LAPACK_ROW(void, P##PPEQU, p##ppequ, ppequ, kNone, nullptr, cC, cI, const T *, R *, R *, R *, I)   \
  NXL_LAPACK_ROW(void, P##LAQSP, p##laqsp, laqsp, kNone, nullptr, cC, cI, T *, const R *, const R *,     \
                 const R *, Ch)                                                                          \
  NXL_LAPACK_ROW(R, P##LANSP, p##lansp, lansp, kNone, nullptr, cC, cC, cI, const T *, R *)

// Rows whose last work array is integer in the real forms (W = I) and real
// in the complex ones (W = R *).
#define NXL_ROWS_PP_WORK(P, p, W)                                                                         \
  NXL_LAPACK_ROW(void, P##PPCON, p##ppcon, ppcon, kNone, nullptr, cC, cI, const T *, const R *, R *, T *, \
                 W, I)                                                                                    \
  NXL_LAPACK_ROW(void, P##PPRFS, p##pprfs, pprfs, kNone, nullptr, cC, cI, cI, const T *, const T *,       \
                 const T *, cI, T *, cI, R *, R *, T *, W, I)                                             \
  NXL_LAPACK_ROW(void, P##PPSVX, p##ppsvx, ppsvx, kNone, nullptr, cC, cC, cI, cI, T *, T *, Ch, R *, T *, \
                 cI, T *, cI, R *, R *, R *, T *, W, I)

// Complex only: Hermitian packed norm and scaling, complex symmetric packed
// product and rank-1 update.
#define NXL_ROWS_PP_CPLX(P, p)                                                                           \
  NXL_LAPACK_ROW(R, P##LANHP, p##lanhp, lanhp, kNone, nullptr, cC, cC, cI, const T *, R *)               \
  NXL_LAPACK_ROW(void, P##LAQHP, p##laqhp, laqhp, kNone, nullptr, cC, cI, T *, const R *, const R *,     \
                 const R *, Ch)                                                                          \
  NXL_LAPACK_ROW(void, P##SPMV, p##spmv, spmv, kNone, nullptr, cC, cI, const T *, const T *, const T *,  \
                 cI, const T *, T *, cI)                                                                 \
  NXL_LAPACK_ROW(void, P##SPR, p##spr, spr, kNone, nullptr, cC, cI, const T *, const T *, cI, T *)

namespace nxl { namespace lapack { namespace rows_s {
using T = float; using R = float;
NXL_ROWS_PP_COMMON(S, s) NXL_ROWS_PP_WORK(S, s, I)
} } }
namespace nxl { namespace lapack { namespace rows_d {
using T = double; using R = double;
NXL_ROWS_PP_COMMON(D, d) NXL_ROWS_PP_WORK(D, d, I)
} } }
namespace nxl { namespace lapack { namespace rows_c {
using T = std::complex<float>; using R = float;
NXL_ROWS_PP_COMMON(C, c) NXL_ROWS_PP_WORK(C, c, R *) NXL_ROWS_PP_CPLX(C, c)
} } }
namespace nxl { namespace lapack { namespace rows_z {
using T = std::complex<double>; using R = double;
NXL_ROWS_PP_COMMON(Z, z) NXL_ROWS_PP_WORK(Z, z, R *) NXL_ROWS_PP_CPLX(Z, z)
} } }
