// Exported Hermitian (symmetric) positive definite band routines of the four
// precisions and the symmetric/Hermitian band norms: one row each.
#include "lapack/frame.h"
#include "lapack/band/pbsvx.h"

using namespace nxl::lapack::row_types;

// Rows whose parameter lists are the same in every precision.
#define NXL_ROWS_PB_COMMON(P, p)                                                                          \
  NXL_LAPACK_ROW(void, P##PBTRF, p##pbtrf, pbtrf, kNone, nullptr, cC, cI, cI, T *, cI, I)                 \
  NXL_LAPACK_ROW(void, P##PBTF2, p##pbtf2, pbtf2, kNone, nullptr, cC, cI, cI, T *, cI, I)                 \
  NXL_LAPACK_ROW(void, P##PBSTF, p##pbstf, pbstf, kNone, nullptr, cC, cI, cI, T *, cI, I)                 \
  NXL_LAPACK_ROW(void, P##PBTRS, p##pbtrs, pbtrs, kNone, nullptr, cC, cI, cI, cI, const T *, cI, T *, cI, \
                 I)                                                                                       \
  NXL_LAPACK_ROW(void, P##PBSV, p##pbsv, pbsv, kNone, nullptr, cC, cI, cI, cI, T *, cI, T *, cI, I)       \
  NXL_LAPACK_ROW(void, P##PBEQU, p##pbequ, pbequ, kNone, nullptr, cC, cI, cI, const T *, cI, R *, R *,    \
                 R *, I)                                                                                  \
  NXL_LAPACK_ROW(R, P##LANSB, p##lansb, lansb, kNone, nullptr, cC, cC, cI, cI, const T *, cI, R *)

// Rows whose last work array is integer in the real forms (W = I) and real
// in the complex ones (W = R *).
#define NXL_ROWS_PB_WORK(P, p, W)                                                                         \
  NXL_LAPACK_ROW(void, P##PBCON, p##pbcon, pbcon, kNone, nullptr, cC, cI, cI, const T *, cI, const R *,   \
                 R *, T *, W, I)                                                                          \
  NXL_LAPACK_ROW(void, P##PBRFS, p##pbrfs, pbrfs, kNone, nullptr, cC, cI, cI, cI, const T *, cI,          \
                 const T *, cI, const T *, cI, T *, cI, R *, R *, T *, W, I)                              \
  NXL_LAPACK_ROW(void, P##PBSVX, p##pbsvx, pbsvx, kNone, nullptr, cC, cC, cI, cI, cI, T *, cI, T *, cI,   \
                 Ch, R *, T *, cI, T *, cI, R *, R *, R *, T *, W, I)

// Band scaling: symmetric in the real forms, Hermitian in the complex ones.
#define NXL_ROWS_PB_REAL(P, p)                                                                            \
  NXL_LAPACK_ROW(void, P##LAQSB, p##laqsb, laqsb, kNone, nullptr, cC, cI, cI, T *, cI, const R *,         \
                 const R *, const R *, Ch)
#define NXL_ROWS_PB_CPLX(P, p)                                                                            \
  NXL_LAPACK_ROW(void, P##LAQHB, p##laqhb, laqhb, kNone, nullptr, cC, cI, cI, T *, cI, const R *,         \
                 const R *, const R *, Ch)                                                                \
  NXL_LAPACK_ROW(R, P##LANHB, p##lanhb, lanhb, kNone, nullptr, cC, cC, cI, cI, const T *, cI, R *)

namespace nxl { namespace lapack { namespace rows_s {
using T = float; using R = float;
NXL_ROWS_PB_COMMON(S, s) NXL_ROWS_PB_WORK(S, s, I) NXL_ROWS_PB_REAL(S, s)
} } }
namespace nxl { namespace lapack { namespace rows_d {
using T = double; using R = double;
NXL_ROWS_PB_COMMON(D, d) NXL_ROWS_PB_WORK(D, d, I) NXL_ROWS_PB_REAL(D, d)
} } }
namespace nxl { namespace lapack { namespace rows_c {
using T = std::complex<float>; using R = float;
NXL_ROWS_PB_COMMON(C, c) NXL_ROWS_PB_WORK(C, c, R *) NXL_ROWS_PB_CPLX(C, c)
} } }
namespace nxl { namespace lapack { namespace rows_z {
using T = std::complex<double>; using R = double;
NXL_ROWS_PB_COMMON(Z, z) NXL_ROWS_PB_WORK(Z, z, R *) NXL_ROWS_PB_CPLX(Z, z)
} } }
