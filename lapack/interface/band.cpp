// Exported general band routines of the four precisions: one row each.
#include "lapack/frame.h"
#include "lapack/band/gbsv.h"
#include "lapack/band/gbsvx.h"

using namespace nxl::lapack::row_types;

// Rows whose parameter lists are the same in every precision.
#define NXL_ROWS_GB_COMMON(P, p)                                                                          \
  NXL_LAPACK_ROW(void, P##GBTRF, p##gbtrf, gbtrf, kProgress, nullptr, cI, cI, cI, cI, T *, cI, I, I)      \
  NXL_LAPACK_ROW(void, P##GBTF2, p##gbtf2, gbtf2, kNone, nullptr, cI, cI, cI, cI, T *, cI, I, I)          \
  NXL_LAPACK_ROW(void, P##GBTRS, p##gbtrs, gbtrs, kNone, nullptr, cC, cI, cI, cI, cI, const T *, cI, cI,  \
                 T *, cI, I)                                                                              \
  NXL_LAPACK_ROW(void, P##GBSV, p##gbsv, gbsv, kNone, nullptr, cI, cI, cI, cI, T *, cI, I, T *, cI, I)    \
  NXL_LAPACK_ROW(void, P##GBEQU, p##gbequ, gbequ, kNone, nullptr, cI, cI, cI, cI, const T *, cI, R *,     \
                 R *, R *, R *, R *, I)                                                                   \
  NXL_LAPACK_ROW(void, P##GBEQUB, p##gbequb, gbequb, kNone, nullptr, cI, cI, cI, cI, const T *, cI, R *,  \
                 R *, R *, R *, R *, I)                                                                   \
  NXL_LAPACK_ROW(void, P##LAQGB, p##laqgb, laqgb, kNone, nullptr, cI, cI, cI, cI, T *, cI, const R *,     \
                 const R *, const R *, const R *, const R *, Ch)                                          \
  NXL_LAPACK_ROW(R, P##LANGB, p##langb, langb, kNone, nullptr, cC, cI, cI, cI, const T *, cI, R *)

// Rows whose last work array is integer in the real forms (W = I) and real
// in the complex ones (W = R *).
#define NXL_ROWS_GB_WORK(P, p, W)                                                                         \
  NXL_LAPACK_ROW(void, P##GBCON, p##gbcon, gbcon, kNone, nullptr, cC, cI, cI, cI, const T *, cI, cI,      \
                 const R *, R *, T *, W, I)                                                               \
  NXL_LAPACK_ROW(void, P##GBRFS, p##gbrfs, gbrfs, kNone, nullptr, cC, cI, cI, cI, cI, const T *, cI,      \
                 const T *, cI, cI, const T *, cI, T *, cI, R *, R *, T *, W, I)                          \
  NXL_LAPACK_ROW(void, P##GBSVX, p##gbsvx, gbsvx, kNone, nullptr, cC, cC, cI, cI, cI, cI, T *, cI, T *,   \
                 cI, I, Ch, R *, R *, T *, cI, T *, cI, R *, R *, R *, T *, W, I)

namespace nxl { namespace lapack { namespace rows_s {
using T = float; using R = float;
NXL_ROWS_GB_COMMON(S, s) NXL_ROWS_GB_WORK(S, s, I)
} } }
namespace nxl { namespace lapack { namespace rows_d {
using T = double; using R = double;
NXL_ROWS_GB_COMMON(D, d) NXL_ROWS_GB_WORK(D, d, I)
} } }
namespace nxl { namespace lapack { namespace rows_c {
using T = std::complex<float>; using R = float;
NXL_ROWS_GB_COMMON(C, c) NXL_ROWS_GB_WORK(C, c, R *)
} } }
namespace nxl { namespace lapack { namespace rows_z {
using T = std::complex<double>; using R = double;
NXL_ROWS_GB_COMMON(Z, z) NXL_ROWS_GB_WORK(Z, z, R *)
} } }
