// Exported Aasen factorizations and solves (one- and two-stage) of the four
// precisions: symmetric in every precision, Hermitian in the complex ones,
// and their panel routines.
// One row each.
#include "lapack/frame.h"
#include "lapack/aasen/sytrf_aa_2stage.h"

namespace {
using cI = const nxl_int *;
using I = nxl_int *;
using cC = const char *;
}  // namespace

#define NXL_ROWS_SA(P, p)                                                                                 \
  NXL_LAPACK_ROW(void, P##SYTRF_AA, p##sytrf_aa, sytrf_aa, kNone, nullptr, cC, cI, T *, cI, I, T *, cI, I) \
  NXL_LAPACK_ROW(void, P##SYTRS_AA, p##sytrs_aa, sytrs_aa, kNone, nullptr, cC, cI, cI, const T *, cI, cI, \
                 T *, cI, T *, cI, I)                                                                     \
  NXL_LAPACK_ROW(void, P##SYSV_AA, p##sysv_aa, sysv_aa, kNone, nullptr, cC, cI, cI, T *, cI, I, T *, cI,  \
                 T *, cI, I)                                                                              \
  NXL_LAPACK_ROW(void, P##SYTRF_AA_2STAGE, p##sytrf_aa_2stage, sytrf_aa_2stage, kNone, nullptr, cC, cI,   \
                 T *, cI, T *, cI, I, I, T *, cI, I)                                                      \
  NXL_LAPACK_ROW(void, P##SYTRS_AA_2STAGE, p##sytrs_aa_2stage, sytrs_aa_2stage, kNone, nullptr, cC, cI,   \
                 cI, const T *, cI, const T *, cI, cI, cI, T *, cI, I)                                    \
  NXL_LAPACK_ROW(void, P##SYSV_AA_2STAGE, p##sysv_aa_2stage, sysv_aa_2stage, kNone, nullptr, cC, cI, cI,  \
                 T *, cI, T *, cI, I, I, T *, cI, T *, cI, I)                                          \
  NXL_LAPACK_ROW(void, P##LASYF_AA, p##lasyf_aa, lasyf_aa, kNone, nullptr, cC, cI, cI, cI, T *, cI, I, T *, \
                 cI, T *)

#define NXL_ROWS_HA(P, p)                                                                                 \
  NXL_LAPACK_ROW(void, P##HETRF_AA, p##hetrf_aa, hetrf_aa, kNone, nullptr, cC, cI, T *, cI, I, T *, cI, I) \
  NXL_LAPACK_ROW(void, P##HETRS_AA, p##hetrs_aa, hetrs_aa, kNone, nullptr, cC, cI, cI, const T *, cI, cI, \
                 T *, cI, T *, cI, I)                                                                     \
  NXL_LAPACK_ROW(void, P##HESV_AA, p##hesv_aa, hesv_aa, kNone, nullptr, cC, cI, cI, T *, cI, I, T *, cI,  \
                 T *, cI, I)                                                                              \
  NXL_LAPACK_ROW(void, P##HETRF_AA_2STAGE, p##hetrf_aa_2stage, hetrf_aa_2stage, kNone, nullptr, cC, cI,   \
                 T *, cI, T *, cI, I, I, T *, cI, I)                                                      \
  NXL_LAPACK_ROW(void, P##HETRS_AA_2STAGE, p##hetrs_aa_2stage, hetrs_aa_2stage, kNone, nullptr, cC, cI,   \
                 cI, const T *, cI, const T *, cI, cI, cI, T *, cI, I)                                    \
  NXL_LAPACK_ROW(void, P##HESV_AA_2STAGE, p##hesv_aa_2stage, hesv_aa_2stage, kNone, nullptr, cC, cI, cI,  \
                 T *, cI, T *, cI, I, I, T *, cI, T *, cI, I)                                          \
  NXL_LAPACK_ROW(void, P##LAHEF_AA, p##lahef_aa, lahef_aa, kNone, nullptr, cC, cI, cI, cI, T *, cI, I, T *, \
                 cI, T *)

namespace nxl { namespace lapack { namespace rows_s {
using T = float; using R = float;
NXL_ROWS_SA(S, s)
} } }
namespace nxl { namespace lapack { namespace rows_d {
using T = double; using R = double;
NXL_ROWS_SA(D, d)
} } }
namespace nxl { namespace lapack { namespace rows_c {
using T = std::complex<float>; using R = float;
NXL_ROWS_SA(C, c) NXL_ROWS_HA(C, c)
} } }
namespace nxl { namespace lapack { namespace rows_z {
using T = std::complex<double>; using R = double;
NXL_ROWS_SA(Z, z) NXL_ROWS_HA(Z, z)
} } }
