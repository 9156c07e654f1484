// Exported symmetric / Hermitian indefinite routines (full storage) of the
// four precisions: one row each. Fam<false> serves the real and complex
// symmetric forms, Fam<true> the Hermitian ones.
#include "lapack/frame.h"
#include "lapack/sym/api.h"

using namespace nxl::lapack::row_types;

// P: precision letter; Y: SY or HE (and y: sy or he); G: the Fam<> of the form.
#define NXL_ROWS_SYM(P, p, Y, y, G)                                                                         \
  NXL_LAPACK_ROW(void, P##Y##TRF, p##y##trf, G::trf, kNone, nullptr, cC, cI, T *, cI, I, T *, cI, I)      \
  NXL_LAPACK_ROW(void, P##Y##TRF_ROOK, p##y##trf_rook, G::trf_rook, kNone, nullptr, cC, cI, T *, cI, I,   \
                 T *, cI, I)                                                                             \
  NXL_LAPACK_ROW(void, P##Y##TRF_RK, p##y##trf_rk, G::trf_rk, kNone, nullptr, cC, cI, T *, cI, T *, I,    \
                 T *, cI, I)                                                                             \
  NXL_LAPACK_ROW(void, P##Y##TF2, p##y##tf2, G::tf2, kNone, nullptr, cC, cI, T *, cI, I, I)              \
  NXL_LAPACK_ROW(void, P##Y##TF2_ROOK, p##y##tf2_rook, G::tf2_rook, kNone, nullptr, cC, cI, T *, cI, I,   \
                 I)                                                                                      \
  NXL_LAPACK_ROW(void, P##Y##TF2_RK, p##y##tf2_rk, G::tf2_rk, kNone, nullptr, cC, cI, T *, cI, T *, I, I) \
  NXL_LAPACK_ROW(void, P##Y##TRS, p##y##trs, G::trs, kNone, nullptr, cC, cI, cI, const T *, cI, cI, T *,  \
                 cI, I)                                                                                  \
  NXL_LAPACK_ROW(void, P##Y##TRS_ROOK, p##y##trs_rook, G::trs_rook, kNone, nullptr, cC, cI, cI,           \
                 const T *, cI, cI, T *, cI, I)                                                          \
  NXL_LAPACK_ROW(void, P##Y##TRS2, p##y##trs2, G::trs2, kNone, nullptr, cC, cI, cI, T *, cI, cI, T *, cI, \
                 T *, I)                                                                                 \
  NXL_LAPACK_ROW(void, P##Y##TRS_3, p##y##trs_3, G::trs_3, kNone, nullptr, cC, cI, cI, const T *, cI,     \
                 const T *, cI, T *, cI, I)                                                              \
  NXL_LAPACK_ROW(void, P##Y##TRI, p##y##tri, G::tri, kNone, nullptr, cC, cI, T *, cI, cI, T *, I)         \
  NXL_LAPACK_ROW(void, P##Y##TRI_ROOK, p##y##tri_rook, G::tri_rook, kNone, nullptr, cC, cI, T *, cI, cI,  \
                 T *, I)                                                                                 \
  NXL_LAPACK_ROW(void, P##Y##TRI2, p##y##tri2, G::tri2, kNone, nullptr, cC, cI, T *, cI, cI, T *, cI, I)  \
  NXL_LAPACK_ROW(void, P##Y##TRI2X, p##y##tri2x, G::tri2x, kNone, nullptr, cC, cI, T *, cI, cI, T *, cI, \
                 I)                                                                                      \
  NXL_LAPACK_ROW(void, P##Y##TRI_3, p##y##tri_3, G::tri_3, kNone, nullptr, cC, cI, T *, cI, const T *,    \
                 cI, T *, cI, I)                                                                         \
  NXL_LAPACK_ROW(void, P##Y##TRI_3X, p##y##tri_3x, G::tri_3x, kNone, nullptr, cC, cI, T *, cI, const T *, \
                 cI, T *, cI, I)                                                                         \
  NXL_LAPACK_ROW(void, P##Y##SV, p##y##sv, G::sv, kNone, nullptr, cC, cI, cI, T *, cI, I, T *, cI, T *,   \
                 cI, I)                                                                                  \
  NXL_LAPACK_ROW(void, P##Y##SV_ROOK, p##y##sv_rook, G::sv_rook, kNone, nullptr, cC, cI, cI, T *, cI, I,  \
                 T *, cI, T *, cI, I)                                                                    \
  NXL_LAPACK_ROW(void, P##Y##SV_RK, p##y##sv_rk, G::sv_rk, kNone, nullptr, cC, cI, cI, T *, cI, T *, I,   \
                 T *, cI, T *, cI, I)                                                                    \
  NXL_LAPACK_ROW(void, P##Y##SWAPR, p##y##swapr, G::swapr, kNone, nullptr, cC, cI, T *, cI, cI, cI)       \
  NXL_LAPACK_ROW(void, P##Y##EQUB, p##y##equb, G::equb, kNone, nullptr, cC, cI, const T *, cI, R *, R *,  \
                 R *, T *, I)                                                                            \
  NXL_LAPACK_ROW(void, P##LA##Y##F, p##la##y##f, G::laf, kNone, nullptr, cC, cI, cI, I, T *, cI, I, T *,  \
                 cI, I)                                                                                  \
  NXL_LAPACK_ROW(void, P##LA##Y##F_ROOK, p##la##y##f_rook, G::laf_rook, kNone, nullptr, cC, cI, cI, I,    \
                 T *, cI, I, T *, cI, I)                                                                 \
  NXL_LAPACK_ROW(void, P##LA##Y##F_RK, p##la##y##f_rk, G::laf_rk, kNone, nullptr, cC, cI, cI, I, T *, cI, \
                 T *, I, T *, cI, I)

// Storage conversions exist for the symmetric forms only.
#define NXL_ROWS_SYCONV(P, p)                                                                              \
  NXL_LAPACK_ROW(void, P##SYCONV, p##syconv, sym::Fam<false>::conv, kNone, nullptr, cC, cC, cI, T *, cI, cI,    \
                 T *, I)                                                                                 \
  NXL_LAPACK_ROW(void, P##SYCONVF, p##syconvf, sym::Fam<false>::convf, kNone, nullptr, cC, cC, cI, T *, cI, T *, \
                 I, I)                                                                                   \
  NXL_LAPACK_ROW(void, P##SYCONVF_ROOK, p##syconvf_rook, sym::Fam<false>::convf_rook, kNone, nullptr, cC, cC,  \
                 cI, T *, cI, T *, cI, I)

// Rows whose last work array is integer in the real forms (W = I) and real
// in the complex ones (W = R *); the complex condition estimates have none.
#define NXL_ROWS_SYM_WORK(P, p, Y, y, G, W)                                                                 \
  NXL_LAPACK_ROW(void, P##Y##RFS, p##y##rfs, G::rfs, kNone, nullptr, cC, cI, cI, const T *, cI, const T *, \
                 cI, cI, const T *, cI, T *, cI, R *, R *, T *, W, I)                                    \
  NXL_LAPACK_ROW(void, P##Y##SVX, p##y##svx, G::svx, kNone, nullptr, cC, cC, cI, cI, const T *, cI, T *,  \
                 cI, I, const T *, cI, T *, cI, R *, R *, R *, T *, cI, W, I)
#define NXL_ROWS_SYM_CON_REAL(P, p, Y, y, G)                                                                \
  NXL_LAPACK_ROW(void, P##Y##CON, p##y##con, G::con, kNone, nullptr, cC, cI, const T *, cI, cI, const R *, \
                 R *, T *, I, I)                                                                         \
  NXL_LAPACK_ROW(void, P##Y##CON_ROOK, p##y##con_rook, G::con_rook, kNone, nullptr, cC, cI, const T *, cI, \
                 cI, const R *, R *, T *, I, I)                                                          \
  NXL_LAPACK_ROW(void, P##Y##CON_3, p##y##con_3, G::con_3, kNone, nullptr, cC, cI, const T *, cI,         \
                 const T *, cI, const R *, R *, T *, I, I)
#define NXL_ROWS_SYM_CON_CPLX(P, p, Y, y, G)                                                                \
  NXL_LAPACK_ROW(void, P##Y##CON, p##y##con, G::con_c, kNone, nullptr, cC, cI, const T *, cI, cI,         \
                 const R *, R *, T *, I)                                                                 \
  NXL_LAPACK_ROW(void, P##Y##CON_ROOK, p##y##con_rook, G::con_rook_c, kNone, nullptr, cC, cI, const T *,  \
                 cI, cI, const R *, R *, T *, I)                                                         \
  NXL_LAPACK_ROW(void, P##Y##CON_3, p##y##con_3, G::con_3_c, kNone, nullptr, cC, cI, const T *, cI,       \
                 const T *, cI, const R *, R *, T *, I)

// Complex symmetric level-2 kernels.
#define NXL_ROWS_CSYM(P, p)                                                                                \
  NXL_LAPACK_ROW(void, P##SYMV, p##symv, sym::symv, kNone, nullptr, cC, cI, const T *, const T *, cI, const T *, \
                 cI, const T *, T *, cI)                                                                 \
  NXL_LAPACK_ROW(void, P##SYR, p##syr, sym::syr, kNone, nullptr, cC, cI, const T *, const T *, cI, T *, cI)

namespace nxl { namespace lapack { namespace rows_s {
using T = float; using R = float;
NXL_ROWS_SYM(S, s, SY, sy, sym::Fam<false>) NXL_ROWS_SYCONV(S, s)
NXL_ROWS_SYM_WORK(S, s, SY, sy, sym::Fam<false>, I) NXL_ROWS_SYM_CON_REAL(S, s, SY, sy, sym::Fam<false>)
} } }
namespace nxl { namespace lapack { namespace rows_d {
using T = double; using R = double;
NXL_ROWS_SYM(D, d, SY, sy, sym::Fam<false>) NXL_ROWS_SYCONV(D, d)
NXL_ROWS_SYM_WORK(D, d, SY, sy, sym::Fam<false>, I) NXL_ROWS_SYM_CON_REAL(D, d, SY, sy, sym::Fam<false>)
} } }
namespace nxl { namespace lapack { namespace rows_c {
using T = std::complex<float>; using R = float;
NXL_ROWS_SYM(C, c, SY, sy, sym::Fam<false>) NXL_ROWS_SYCONV(C, c)
NXL_ROWS_SYM_WORK(C, c, SY, sy, sym::Fam<false>, R *) NXL_ROWS_SYM_CON_CPLX(C, c, SY, sy, sym::Fam<false>)
NXL_ROWS_SYM(C, c, HE, he, sym::Fam<true>)
NXL_ROWS_SYM_WORK(C, c, HE, he, sym::Fam<true>, R *) NXL_ROWS_SYM_CON_CPLX(C, c, HE, he, sym::Fam<true>)
NXL_ROWS_CSYM(C, c)
} } }
namespace nxl { namespace lapack { namespace rows_z {
using T = std::complex<double>; using R = double;
NXL_ROWS_SYM(Z, z, SY, sy, sym::Fam<false>) NXL_ROWS_SYCONV(Z, z)
NXL_ROWS_SYM_WORK(Z, z, SY, sy, sym::Fam<false>, R *) NXL_ROWS_SYM_CON_CPLX(Z, z, SY, sy, sym::Fam<false>)
NXL_ROWS_SYM(Z, z, HE, he, sym::Fam<true>)
NXL_ROWS_SYM_WORK(Z, z, HE, he, sym::Fam<true>, R *) NXL_ROWS_SYM_CON_CPLX(Z, z, HE, he, sym::Fam<true>)
NXL_ROWS_CSYM(Z, z)
} } }
