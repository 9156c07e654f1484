// Exported triangular routines in full, packed and band storage, the scaled
// solvers and the triangle conversions: one row each.
#include "lapack/frame.h"
#include "lapack/tri/trcon.h"
#include "lapack/tri/tpsolve.h"

using namespace nxl::lapack::row_types;

// Rows whose parameter lists are the same in every precision.
#define NXL_ROWS_TRI_COMMON(P, p)                                                                         \
  NXL_LAPACK_ROW(void, P##TPTRS, p##tptrs, tptrs, kNone, nullptr, cC, cC, cC, cI, cI, const T *, T *, cI, \
                 I)                                                                                       \
  NXL_LAPACK_ROW(void, P##TBTRS, p##tbtrs, tbtrs, kNone, nullptr, cC, cC, cC, cI, cI, cI, const T *, cI,  \
                 T *, cI, I)                                                                              \
  NXL_LAPACK_ROW(void, P##TPTRI, p##tptri, tptri, kNone, nullptr, cC, cC, cI, T *, I)                     \
  NXL_LAPACK_ROW(void, P##LATRS, p##latrs, latrs, kNone, nullptr, cC, cC, cC, cC, cI, const T *, cI, T *, \
                 R *, R *, I)                                                                             \
  NXL_LAPACK_ROW(void, P##LATPS, p##latps, latps, kNone, nullptr, cC, cC, cC, cC, cI, const T *, T *,     \
                 R *, R *, I)                                                                             \
  NXL_LAPACK_ROW(void, P##LATBS, p##latbs, latbs, kNone, nullptr, cC, cC, cC, cC, cI, cI, const T *, cI,  \
                 T *, R *, R *, I)                                                                        \
  NXL_LAPACK_ROW(void, P##LATRS3, p##latrs3, latrs3, kNone, nullptr, cC, cC, cC, cC, cI, cI, const T *,   \
                 cI, T *, cI, R *, R *, R *, cI, I)                                                       \
  NXL_LAPACK_ROW(R, P##LANTP, p##lantp, lantp, kNone, nullptr, cC, cC, cC, cI, const T *, R *)            \
  NXL_LAPACK_ROW(R, P##LANTB, p##lantb, lantb, kNone, nullptr, cC, cC, cC, cI, cI, const T *, cI, R *)    \
  NXL_LAPACK_ROW(void, P##TRTTP, p##trttp, trttp, kNone, nullptr, cC, cI, const T *, cI, T *, I)          \
  NXL_LAPACK_ROW(void, P##TPTTR, p##tpttr, tpttr, kNone, nullptr, cC, cI, const T *, T *, cI, I)

// Rows whose last work array is integer in the real forms (W = I) and real
// in the complex ones (W = R *).
#define NXL_ROWS_TRI_WORK(P, p, W)                                                                        \
  NXL_LAPACK_ROW(void, P##TRCON, p##trcon, trcon, kNone, nullptr, cC, cC, cC, cI, const T *, cI, R *,     \
                 T *, W, I)                                                                               \
  NXL_LAPACK_ROW(void, P##TPCON, p##tpcon, tpcon, kNone, nullptr, cC, cC, cC, cI, const T *, R *, T *, W, \
                 I)                                                                                       \
  NXL_LAPACK_ROW(void, P##TBCON, p##tbcon, tbcon, kNone, nullptr, cC, cC, cC, cI, cI, const T *, cI, R *, \
                 T *, W, I)                                                                               \
  NXL_LAPACK_ROW(void, P##TRRFS, p##trrfs, trrfs, kNone, nullptr, cC, cC, cC, cI, cI, const T *, cI,      \
                 const T *, cI, const T *, cI, R *, R *, T *, W, I)                                       \
  NXL_LAPACK_ROW(void, P##TPRFS, p##tprfs, tprfs, kNone, nullptr, cC, cC, cC, cI, cI, const T *,          \
                 const T *, cI, const T *, cI, R *, R *, T *, W, I)                                       \
  NXL_LAPACK_ROW(void, P##TBRFS, p##tbrfs, tbrfs, kNone, nullptr, cC, cC, cC, cI, cI, cI, const T *, cI,  \
                 const T *, cI, const T *, cI, R *, R *, T *, W, I)

namespace nxl { namespace lapack { namespace rows_s {
using T = float; using R = float;
NXL_ROWS_TRI_COMMON(S, s) NXL_ROWS_TRI_WORK(S, s, I)
} } }
namespace nxl { namespace lapack { namespace rows_d {
using T = double; using R = double;
NXL_ROWS_TRI_COMMON(D, d) NXL_ROWS_TRI_WORK(D, d, I)
} } }
namespace nxl { namespace lapack { namespace rows_c {
using T = std::complex<float>; using R = float;
NXL_ROWS_TRI_COMMON(C, c) NXL_ROWS_TRI_WORK(C, c, R *)
} } }
namespace nxl { namespace lapack { namespace rows_z {
using T = std::complex<double>; using R = double;
NXL_ROWS_TRI_COMMON(Z, z) NXL_ROWS_TRI_WORK(Z, z, R *)
} } }
