// Exported general and positive definite routines of the four precisions:
// one row each.
#include "lapack/frame.h"
#include "lapack/interface/errchk.h"
#include "lapack/chol/posvx.h"
#include "lapack/chol/potri.h"
#include "lapack/chol/pstrf.h"
#include "lapack/lu/gesv.h"
#include "lapack/lu/gesvx.h"
#include "lapack/lu/getri.h"

using namespace nxl::lapack::row_types;

// Rows whose parameter lists are the same in every precision.
#define NXL_ROWS_COMMON(P, p)                                                                            \
  NXL_LAPACK_ROW(void, P##GETRF, p##getrf, getrf, kProgress, &nxl_lapack_errchk_##p##getrf, cI, cI, T *, \
                 cI, I, I)                                                                               \
  NXL_LAPACK_ROW(void, P##GETF2, p##getf2, getf2, kNone, &nxl_lapack_errchk_##p##getf2, cI, cI, T *, cI, \
                 I, I)                                                                                   \
  NXL_LAPACK_ROW(void, P##GETRS, p##getrs, getrs, kNone, nullptr, cC, cI, cI, const T *, cI, cI, T *, cI, \
                 I)                                                                                      \
  NXL_LAPACK_ROW(void, P##GESV, p##gesv, gesv, kNone, nullptr, cI, cI, T *, cI, I, T *, cI, I)           \
  NXL_LAPACK_ROW(void, P##GETRI, p##getri, getri, kNone, nullptr, cI, T *, cI, cI, T *, cI, I)           \
  NXL_LAPACK_ROW(void, P##GEEQU, p##geequ, geequ, kNone, nullptr, cI, cI, const T *, cI, R *, R *, R *,  \
                 R *, R *, I)                                                                            \
  NXL_LAPACK_ROW(void, P##GEEQUB, p##geequb, geequb, kNone, nullptr, cI, cI, const T *, cI, R *, R *,    \
                 R *, R *, R *, I)                                                                       \
  NXL_LAPACK_ROW(void, P##LASWP, p##laswp, laswp, kNone, nullptr, cI, T *, cI, cI, cI, cI, cI)          \
  NXL_LAPACK_ROW(void, P##POTRF, p##potrf, potrf, kProgress, &nxl_lapack_errchk_##p##potrf, cC, cI, T *, \
                 cI, I)                                                                                  \
  NXL_LAPACK_ROW(void, P##POTF2, p##potf2, potf2, kNone, nullptr, cC, cI, T *, cI, I)                    \
  NXL_LAPACK_ROW(void, P##POTRS, p##potrs, potrs, kNone, nullptr, cC, cI, cI, const T *, cI, T *, cI, I) \
  NXL_LAPACK_ROW(void, P##POSV, p##posv, posv, kNone, nullptr, cC, cI, cI, T *, cI, T *, cI, I)          \
  NXL_LAPACK_ROW(void, P##POTRI, p##potri, potri, kNone, nullptr, cC, cI, T *, cI, I)                    \
  NXL_LAPACK_ROW(void, P##POEQU, p##poequ, poequ, kNone, nullptr, cI, const T *, cI, R *, R *, R *, I)   \
  NXL_LAPACK_ROW(void, P##POEQUB, p##poequb, poequb, kNone, nullptr, cI, const T *, cI, R *, R *, R *, I) \
  NXL_LAPACK_ROW(void, P##PSTRF, p##pstrf, pstrf, kNone, nullptr, cC, cI, T *, cI, I, I, const R *, R *,  \
                 I)                                                                                      \
  NXL_LAPACK_ROW(void, P##TRTRI, p##trtri, trtri, kNone, nullptr, cC, cC, cI, T *, cI, I)                \
  NXL_LAPACK_ROW(void, P##TRTI2, p##trti2, trti2, kNone, nullptr, cC, cC, cI, T *, cI, I)                \
  NXL_LAPACK_ROW(void, P##TRTRS, p##trtrs, trtrs, kNone, nullptr, cC, cC, cC, cI, cI, const T *, cI, T *, \
                 cI, I)                                                                                  \
  NXL_LAPACK_ROW(void, P##LAUUM, p##lauum, lauum, kNone, nullptr, cC, cI, T *, cI, I)                    \
  NXL_LAPACK_ROW(void, P##LAUU2, p##lauu2, lauu2, kNone, nullptr, cC, cI, T *, cI, I)

// Rows whose last work array is integer in the real forms (W = I) and real
// in the complex ones (W = R *).
#define NXL_ROWS_WORK(P, p, W)                                                                            \
  NXL_LAPACK_ROW(void, P##GECON, p##gecon, gecon, kNone, nullptr, cC, cI, const T *, cI, const R *, R *,   \
                 T *, W, I)                                                                                \
  NXL_LAPACK_ROW(void, P##POCON, p##pocon, pocon, kNone, nullptr, cC, cI, const T *, cI, const R *, R *,   \
                 T *, W, I)                                                                                \
  NXL_LAPACK_ROW(void, P##GERFS, p##gerfs, gerfs, kNone, nullptr, cC, cI, cI, const T *, cI, const T *,    \
                 cI, cI, const T *, cI, T *, cI, R *, R *, T *, W, I)                                      \
  NXL_LAPACK_ROW(void, P##PORFS, p##porfs, porfs, kNone, nullptr, cC, cI, cI, const T *, cI, const T *,    \
                 cI, const T *, cI, T *, cI, R *, R *, T *, W, I)                                          \
  NXL_LAPACK_ROW(void, P##GESVX, p##gesvx, gesvx, kNone, nullptr, cC, cC, cI, cI, T *, cI, T *, cI, I, Ch, \
                 R *, R *, T *, cI, T *, cI, R *, R *, R *, T *, W, I)                                     \
  NXL_LAPACK_ROW(void, P##POSVX, p##posvx, posvx, kNone, nullptr, cC, cC, cI, cI, T *, cI, T *, cI, Ch,    \
                 R *, T *, cI, T *, cI, R *, R *, R *, T *, W, I)

namespace nxl { namespace lapack { namespace rows_s {
using T = float; using R = float;
NXL_ROWS_COMMON(S, s) NXL_ROWS_WORK(S, s, I)
} } }
namespace nxl { namespace lapack { namespace rows_d {
using T = double; using R = double;
NXL_ROWS_COMMON(D, d) NXL_ROWS_WORK(D, d, I)
} } }
namespace nxl { namespace lapack { namespace rows_c {
using T = std::complex<float>; using R = float;
NXL_ROWS_COMMON(C, c) NXL_ROWS_WORK(C, c, R *)
} } }
namespace nxl { namespace lapack { namespace rows_z {
using T = std::complex<double>; using R = double;
NXL_ROWS_COMMON(Z, z) NXL_ROWS_WORK(Z, z, R *)
} } }
