// Exported packed-storage routines of the four precisions: Hermitian
// (symmetric) positive definite, symmetric and Hermitian indefinite, and
// their norms, scalings and products. One row each.
#include "lapack/frame.h"
#include "lapack/packed/pptrf.h"
#include "lapack/packed/sptrf.h"

using namespace nxl::lapack::row_types;

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

// Symmetric indefinite (sp, every precision) and Hermitian indefinite (hp,
// complex) factorizations and what goes with them.
#define NXL_ROWS_SP(P, p)                                                                                 \
  NXL_LAPACK_ROW(void, P##SPTRF, p##sptrf, sptrf, kNone, nullptr, cC, cI, T *, I, I)                      \
  NXL_LAPACK_ROW(void, P##SPTRS, p##sptrs, sptrs, kNone, nullptr, cC, cI, cI, const T *, cI,              \
                 T *, cI, I)                                                                              \
  NXL_LAPACK_ROW(void, P##SPSV, p##spsv, spsv, kNone, nullptr, cC, cI, cI, T *, I, T *, cI, I)            \
  NXL_LAPACK_ROW(void, P##SPTRI, p##sptri, sptri, kNone, nullptr, cC, cI, T *, cI, T *, I)
#define NXL_ROWS_SP_WORK(P, p, W)                                                                         \
  NXL_LAPACK_ROW(void, P##SPRFS, p##sprfs, sprfs, kNone, nullptr, cC, cI, cI, const T *, const T *,       \
                 cI, const T *, cI, T *, cI, R *, R *, T *, W, I)                                         \
  NXL_LAPACK_ROW(void, P##SPSVX, p##spsvx, spsvx, kNone, nullptr, cC, cC, cI, cI, const T *, T *,         \
                 I, const T *, cI, T *, cI, R *, R *, R *, T *, W, I)

#define NXL_ROWS_HP(P, p)                                                                                 \
  NXL_LAPACK_ROW(void, P##HPTRF, p##hptrf, hptrf, kNone, nullptr, cC, cI, T *, I, I)                      \
  NXL_LAPACK_ROW(void, P##HPTRS, p##hptrs, hptrs, kNone, nullptr, cC, cI, cI, const T *, cI,              \
                 T *, cI, I)                                                                              \
  NXL_LAPACK_ROW(void, P##HPSV, p##hpsv, hpsv, kNone, nullptr, cC, cI, cI, T *, I, T *, cI, I)            \
  NXL_LAPACK_ROW(void, P##HPTRI, p##hptri, hptri, kNone, nullptr, cC, cI, T *, cI, T *, I)
#define NXL_ROWS_HP_WORK(P, p, W)                                                                         \
  NXL_LAPACK_ROW(void, P##HPRFS, p##hprfs, hprfs, kNone, nullptr, cC, cI, cI, const T *, const T *,       \
                 cI, const T *, cI, T *, cI, R *, R *, T *, W, I)                                         \
  NXL_LAPACK_ROW(void, P##HPSVX, p##hpsvx, hpsvx, kNone, nullptr, cC, cC, cI, cI, const T *, T *,         \
                 I, const T *, cI, T *, cI, R *, R *, R *, T *, W, I)

// Condition estimates: the real forms take an integer work array, the
// complex ones none.
#define NXL_ROWS_SPCON_REAL(P, p)                                                                         \
  NXL_LAPACK_ROW(void, P##SPCON, p##spcon, spcon, kNone, nullptr, cC, cI, const T *, cI, const R *, R *,  \
                 T *, I, I)
#define NXL_ROWS_SPCON_CPLX(P, p)                                                                         \
  NXL_LAPACK_ROW(void, P##SPCON, p##spcon, spcon_c, kNone, nullptr, cC, cI, const T *, cI, const R *,     \
                 R *, T *, I)                                                                             \
  NXL_LAPACK_ROW(void, P##HPCON, p##hpcon, hpcon, kNone, nullptr, cC, cI, const T *, cI, const R *, R *,  \
                 T *, I)

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
NXL_ROWS_SP(S, s) NXL_ROWS_SP_WORK(S, s, I) NXL_ROWS_SPCON_REAL(S, s)
} } }
namespace nxl { namespace lapack { namespace rows_d {
using T = double; using R = double;
NXL_ROWS_PP_COMMON(D, d) NXL_ROWS_PP_WORK(D, d, I)
NXL_ROWS_SP(D, d) NXL_ROWS_SP_WORK(D, d, I) NXL_ROWS_SPCON_REAL(D, d)
} } }
namespace nxl { namespace lapack { namespace rows_c {
using T = std::complex<float>; using R = float;
NXL_ROWS_PP_COMMON(C, c) NXL_ROWS_PP_WORK(C, c, R *)
NXL_ROWS_SP(C, c) NXL_ROWS_SP_WORK(C, c, R *)
NXL_ROWS_HP(C, c) NXL_ROWS_HP_WORK(C, c, R *) NXL_ROWS_SPCON_CPLX(C, c) NXL_ROWS_PP_CPLX(C, c)
} } }
namespace nxl { namespace lapack { namespace rows_z {
using T = std::complex<double>; using R = double;
NXL_ROWS_PP_COMMON(Z, z) NXL_ROWS_PP_WORK(Z, z, R *)
NXL_ROWS_SP(Z, z) NXL_ROWS_SP_WORK(Z, z, R *)
NXL_ROWS_HP(Z, z) NXL_ROWS_HP_WORK(Z, z, R *) NXL_ROWS_SPCON_CPLX(Z, z) NXL_ROWS_PP_CPLX(Z, z)
} } }
