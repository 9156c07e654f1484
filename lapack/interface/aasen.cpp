// Exported Aasen factorizations and solves (one- and two-stage) of the four
// precisions: symmetric in every precision, Hermitian in the complex ones,
// and their panel routines.
// One row each.
#include "lapack/frame.h"
#include "lapack/aasen/sytrf_aa_2stage.h"

using namespace nxl::lapack::row_types;

// Y, y: SY or HE, the symmetric or the Hermitian form.
#define NXL_ROWS_AA(P, p, Y, y)                                                                               \
  NXL_LAPACK_ROW(void, P##Y##TRF_AA, p##y##trf_aa, y##trf_aa, kNone, nullptr, cC, cI, T *, cI, I, T *, cI, I)  \
  NXL_LAPACK_ROW(void, P##Y##TRS_AA, p##y##trs_aa, y##trs_aa, kNone, nullptr, cC, cI, cI, const T *, cI, cI,   \
                 T *, cI, T *, cI, I)                                                                        \
  NXL_LAPACK_ROW(void, P##Y##SV_AA, p##y##sv_aa, y##sv_aa, kNone, nullptr, cC, cI, cI, T *, cI, I, T *, cI,    \
                 T *, cI, I)                                                                                 \
  NXL_LAPACK_ROW(void, P##Y##TRF_AA_2STAGE, p##y##trf_aa_2stage, y##trf_aa_2stage, kNone, nullptr, cC, cI,     \
                 T *, cI, T *, cI, I, I, T *, cI, I)                                                         \
  NXL_LAPACK_ROW(void, P##Y##TRS_AA_2STAGE, p##y##trs_aa_2stage, y##trs_aa_2stage, kNone, nullptr, cC, cI,     \
                 cI, const T *, cI, const T *, cI, cI, cI, T *, cI, I)                                       \
  NXL_LAPACK_ROW(void, P##Y##SV_AA_2STAGE, p##y##sv_aa_2stage, y##sv_aa_2stage, kNone, nullptr, cC, cI, cI,    \
                 T *, cI, T *, cI, I, I, T *, cI, T *, cI, I)                                                \
  NXL_LAPACK_ROW(void, P##LA##Y##F_AA, p##la##y##f_aa, la##y##f_aa, kNone, nullptr, cC, cI, cI, cI, T *, cI,   \
                 I, T *, cI, T *)

namespace nxl { namespace lapack { namespace rows_s {
using T = float; using R = float;
NXL_ROWS_AA(S, s, SY, sy)
} } }
namespace nxl { namespace lapack { namespace rows_d {
using T = double; using R = double;
NXL_ROWS_AA(D, d, SY, sy)
} } }
namespace nxl { namespace lapack { namespace rows_c {
using T = std::complex<float>; using R = float;
NXL_ROWS_AA(C, c, SY, sy) NXL_ROWS_AA(C, c, HE, he)
} } }
namespace nxl { namespace lapack { namespace rows_z {
using T = std::complex<double>; using R = double;
NXL_ROWS_AA(Z, z, SY, sy) NXL_ROWS_AA(Z, z, HE, he)
} } }
