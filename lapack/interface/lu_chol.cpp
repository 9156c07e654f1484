// Exported LU and Cholesky routines of the four precisions: one row each.
#include "lapack/frame.h"
#include "lapack/interface/errchk.h"
#include "lapack/lu/gesv.h"
#include "lapack/chol/potrs.h"

namespace {
using cI = const nxl_int *;
using I = nxl_int *;
using cC = const char *;
}  // namespace

#define NXL_ROWS_LU_CHOL(P, p)                                                                          \
  NXL_LAPACK_ROW(void, P##GETRF, p##getrf, getrf, kProgress, &nxl_lapack_errchk_##p##getrf, cI, cI, T *, \
                 cI, I, I)                                                                               \
  NXL_LAPACK_ROW(void, P##GETF2, p##getf2, getf2, kNone, &nxl_lapack_errchk_##p##getf2, cI, cI, T *, cI, \
                 I, I)                                                                                   \
  NXL_LAPACK_ROW(void, P##GETRS, p##getrs, getrs, kNone, nullptr, cC, cI, cI, const T *, cI, cI, T *, cI, \
                 I)                                                                                      \
  NXL_LAPACK_ROW(void, P##GESV, p##gesv, gesv, kNone, nullptr, cI, cI, T *, cI, I, T *, cI, I)           \
  NXL_LAPACK_ROW(void, P##LASWP, p##laswp, laswp, kNone, nullptr, cI, T *, cI, cI, cI, cI, cI)          \
  NXL_LAPACK_ROW(void, P##POTRF, p##potrf, potrf, kProgress, &nxl_lapack_errchk_##p##potrf, cC, cI, T *, \
                 cI, I)                                                                                  \
  NXL_LAPACK_ROW(void, P##POTF2, p##potf2, potf2, kNone, nullptr, cC, cI, T *, cI, I)                    \
  NXL_LAPACK_ROW(void, P##POTRS, p##potrs, potrs, kNone, nullptr, cC, cI, cI, const T *, cI, T *, cI, I) \
  NXL_LAPACK_ROW(void, P##POSV, p##posv, posv, kNone, nullptr, cC, cI, cI, T *, cI, T *, cI, I)

namespace nxl { namespace lapack { namespace rows_s { using T = float; NXL_ROWS_LU_CHOL(S, s) } } }
namespace nxl { namespace lapack { namespace rows_d { using T = double; NXL_ROWS_LU_CHOL(D, d) } } }
namespace nxl { namespace lapack { namespace rows_c { using T = std::complex<float>; NXL_ROWS_LU_CHOL(C, c) } } }
namespace nxl { namespace lapack { namespace rows_z { using T = std::complex<double>; NXL_ROWS_LU_CHOL(Z, z) } } }
