// Exported mixed-precision solvers and precision conversions: one row each.
#include "lapack/frame.h"
#include "lapack/mixed/mixed.h"

using namespace nxl::lapack::row_types;

namespace nxl { namespace lapack { namespace rows_d {
using T = double; using R = double; using N = float;
NXL_LAPACK_ROW(void, DSGESV, dsgesv, mixed_gesv, kNone, nullptr, cI, cI, T *, cI, I, const T *, cI, T *, cI,
               T *, N *, I, I)
NXL_LAPACK_ROW(void, DSPOSV, dsposv, mixed_posv, kNone, nullptr, cC, cI, cI, T *, cI, const T *, cI, T *, cI,
               T *, N *, I, I)
NXL_LAPACK_ROW(void, DLAG2S, dlag2s, lag2_down, kNone, nullptr, cI, cI, const T *, cI, N *, cI, I)
NXL_LAPACK_ROW(void, DLAT2S, dlat2s, lat2_down, kNone, nullptr, cC, cI, const T *, cI, N *, cI, I)
} } }
namespace nxl { namespace lapack { namespace rows_z {
using T = std::complex<double>; using R = double; using N = std::complex<float>;
NXL_LAPACK_ROW(void, ZCGESV, zcgesv, mixed_gesv_c, kNone, nullptr, cI, cI, T *, cI, I, const T *, cI, T *, cI,
               T *, N *, R *, I, I)
NXL_LAPACK_ROW(void, ZCPOSV, zcposv, mixed_posv_c, kNone, nullptr, cC, cI, cI, T *, cI, const T *, cI, T *,
               cI, T *, N *, R *, I, I)
NXL_LAPACK_ROW(void, ZLAG2C, zlag2c, lag2_down, kNone, nullptr, cI, cI, const T *, cI, N *, cI, I)
NXL_LAPACK_ROW(void, ZLAT2C, zlat2c, lat2_down, kNone, nullptr, cC, cI, const T *, cI, N *, cI, I)
} } }
namespace nxl { namespace lapack { namespace rows_s {
using T = float; using W = double;
NXL_LAPACK_ROW(void, SLAG2D, slag2d, lag2_up, kNone, nullptr, cI, cI, const T *, cI, W *, cI, I)
} } }
namespace nxl { namespace lapack { namespace rows_c {
using T = std::complex<float>; using W = std::complex<double>;
NXL_LAPACK_ROW(void, CLAG2Z, clag2z, lag2_up, kNone, nullptr, cI, cI, const T *, cI, W *, cI, I)
} } }
