// Exported general tridiagonal routines of the four precisions: one row each.
#include "lapack/frame.h"
#include "lapack/tridiag/gtsv.h"
#include "lapack/tridiag/gtsvx.h"
#include "lapack/tridiag/ptsv.h"
#include "lapack/tridiag/ptsvx.h"

using namespace nxl::lapack::row_types;

#define NXL_ROWS_GT_COMMON(P, p)                                                                          \
  NXL_LAPACK_ROW(void, P##GTTRF, p##gttrf, gttrf, kNone, nullptr, cI, T *, T *, T *, T *, I, I)           \
  NXL_LAPACK_ROW(void, P##GTTRS, p##gttrs, gttrs, kNone, nullptr, cC, cI, cI, const T *, const T *,       \
                 const T *, const T *, cI, T *, cI, I)                                                    \
  NXL_LAPACK_ROW(void, P##GTSV, p##gtsv, gtsv, kNone, nullptr, cI, cI, T *, T *, T *, T *, cI, I)         \
  NXL_LAPACK_ROW(R, P##LANGT, p##langt, langt, kNone, nullptr, cC, cI, const T *, const T *, const T *)

// Rows whose last work array is integer in the real forms (W = I) and real
// in the complex ones (W = R *).
#define NXL_ROWS_GT_WORK(P, p, W)                                                                         \
  NXL_LAPACK_ROW(void, P##GTRFS, p##gtrfs, gtrfs, kNone, nullptr, cC, cI, cI, const T *, const T *,       \
                 const T *, const T *, const T *, const T *, const T *, cI, const T *, cI, T *, cI, R *,  \
                 R *, T *, W, I)                                                                          \
  NXL_LAPACK_ROW(void, P##GTSVX, p##gtsvx, gtsvx, kNone, nullptr, cC, cC, cI, cI, const T *, const T *,   \
                 const T *, T *, T *, T *, T *, I, const T *, cI, T *, cI, R *, R *, R *, T *, W, I)

// gtcon has an integer work array in the real forms only.
#define NXL_ROWS_GTCON_REAL(P, p)                                                                         \
  NXL_LAPACK_ROW(void, P##GTCON, p##gtcon, gtcon, kNone, nullptr, cC, cI, const T *, const T *,           \
                 const T *, const T *, cI, const R *, R *, T *, I, I)
#define NXL_ROWS_GTCON_CPLX(P, p)                                                                         \
  NXL_LAPACK_ROW(void, P##GTCON, p##gtcon, gtcon_c, kNone, nullptr, cC, cI, const T *, const T *,         \
                 const T *, const T *, cI, const R *, R *, T *, I)

// Positive definite tridiagonal: real diagonal, off-diagonal of type T; the
// complex solve and refinement routines take uplo, the complex expert driver
// a real work array.
#define NXL_ROWS_PT_COMMON(P, p)                                                                          \
  NXL_LAPACK_ROW(void, P##PTTRF, p##pttrf, pttrf, kNone, nullptr, cI, R *, T *, I)                        \
  NXL_LAPACK_ROW(void, P##PTSV, p##ptsv, ptsv, kNone, nullptr, cI, cI, R *, T *, T *, cI, I)              \
  NXL_LAPACK_ROW(void, P##PTCON, p##ptcon, ptcon, kNone, nullptr, cI, const R *, const T *, const R *,    \
                 R *, R *, I)
#define NXL_ROWS_PT_REAL(P, p)                                                                            \
  NXL_LAPACK_ROW(void, P##PTTRS, p##pttrs, pttrs, kNone, nullptr, cI, cI, const R *, const T *, T *, cI, \
                 I)                                                                                       \
  NXL_LAPACK_ROW(void, P##PTRFS, p##ptrfs, ptrfs, kNone, nullptr, cI, cI, const R *, const T *,           \
                 const R *, const T *, const T *, cI, T *, cI, R *, R *, T *, I)                          \
  NXL_LAPACK_ROW(void, P##PTSVX, p##ptsvx, ptsvx, kNone, nullptr, cC, cI, cI, const R *, const T *, R *,  \
                 T *, const T *, cI, T *, cI, R *, R *, R *, T *, I)
#define NXL_ROWS_PT_CPLX(P, p)                                                                            \
  NXL_LAPACK_ROW(void, P##PTTRS, p##pttrs, pttrs_c, kNone, nullptr, cC, cI, cI, const R *, const T *,     \
                 T *, cI, I)                                                                              \
  NXL_LAPACK_ROW(void, P##PTRFS, p##ptrfs, ptrfs_c, kNone, nullptr, cC, cI, cI, const R *, const T *,     \
                 const R *, const T *, const T *, cI, T *, cI, R *, R *, T *, R *, I)                     \
  NXL_LAPACK_ROW(void, P##PTSVX, p##ptsvx, ptsvx_c, kNone, nullptr, cC, cI, cI, const R *, const T *,     \
                 R *, T *, const T *, cI, T *, cI, R *, R *, R *, T *, R *, I)

namespace nxl { namespace lapack { namespace rows_s {
using T = float; using R = float;
NXL_ROWS_GT_COMMON(S, s) NXL_ROWS_GT_WORK(S, s, I) NXL_ROWS_GTCON_REAL(S, s)
NXL_ROWS_PT_COMMON(S, s) NXL_ROWS_PT_REAL(S, s)
} } }
namespace nxl { namespace lapack { namespace rows_d {
using T = double; using R = double;
NXL_ROWS_GT_COMMON(D, d) NXL_ROWS_GT_WORK(D, d, I) NXL_ROWS_GTCON_REAL(D, d)
NXL_ROWS_PT_COMMON(D, d) NXL_ROWS_PT_REAL(D, d)
} } }
namespace nxl { namespace lapack { namespace rows_c {
using T = std::complex<float>; using R = float;
NXL_ROWS_GT_COMMON(C, c) NXL_ROWS_GT_WORK(C, c, R *) NXL_ROWS_GTCON_CPLX(C, c)
NXL_ROWS_PT_COMMON(C, c) NXL_ROWS_PT_CPLX(C, c)
} } }
namespace nxl { namespace lapack { namespace rows_z {
using T = std::complex<double>; using R = double;
NXL_ROWS_GT_COMMON(Z, z) NXL_ROWS_GT_WORK(Z, z, R *) NXL_ROWS_GTCON_CPLX(Z, z)
NXL_ROWS_PT_COMMON(Z, z) NXL_ROWS_PT_CPLX(Z, z)
} } }
