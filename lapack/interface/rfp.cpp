// Exported routines on rectangular full packed (RFP) storage: one row each.
#include "lapack/frame.h"
#include "lapack/rfp/pftrf.h"

using namespace nxl::lapack::row_types;

#define NXL_ROWS_RFP(P, p)                                                                                \
  NXL_LAPACK_ROW(void, P##PFTRF, p##pftrf, pftrf, kNone, nullptr, cC, cC, cI, T *, I)                     \
  NXL_LAPACK_ROW(void, P##PFTRS, p##pftrs, pftrs, kNone, nullptr, cC, cC, cI, cI, const T *, T *, cI, I)  \
  NXL_LAPACK_ROW(void, P##PFTRI, p##pftri, pftri, kNone, nullptr, cC, cC, cI, T *, I)                     \
  NXL_LAPACK_ROW(void, P##TFTRI, p##tftri, tftri, kNone, nullptr, cC, cC, cC, cI, T *, I)                 \
  NXL_LAPACK_ROW(void, P##TFSM, p##tfsm, tfsm, kNone, nullptr, cC, cC, cC, cC, cC, cI, cI, const T *,     \
                 const T *, T *, cI)                                                                      \
  NXL_LAPACK_ROW(void, P##TFTTR, p##tfttr, tfttr, kNone, nullptr, cC, cC, cI, const T *, T *, cI, I)      \
  NXL_LAPACK_ROW(void, P##TRTTF, p##trttf, trttf, kNone, nullptr, cC, cC, cI, const T *, cI, T *, I)      \
  NXL_LAPACK_ROW(void, P##TPTTF, p##tpttf, tpttf, kNone, nullptr, cC, cC, cI, const T *, T *, I)          \
  NXL_LAPACK_ROW(void, P##TFTTP, p##tfttp, tfttp, kNone, nullptr, cC, cC, cI, const T *, T *, I)

// The rank-k update and the norm are symmetric for real types, Hermitian
// for complex ones.
#define NXL_ROWS_RFP_REAL(P, p)                                                                           \
  NXL_LAPACK_ROW(void, P##SFRK, p##sfrk, sfrk, kNone, nullptr, cC, cC, cC, cI, cI, const R *, const T *,  \
                 cI, const R *, T *)                                                                      \
  NXL_LAPACK_ROW(R, P##LANSF, p##lansf, lanhf, kNone, nullptr, cC, cC, cC, cI, const T *, R *)
#define NXL_ROWS_RFP_CPLX(P, p)                                                                           \
  NXL_LAPACK_ROW(void, P##HFRK, p##hfrk, sfrk, kNone, nullptr, cC, cC, cC, cI, cI, const R *, const T *,  \
                 cI, const R *, T *)                                                                      \
  NXL_LAPACK_ROW(R, P##LANHF, p##lanhf, lanhf, kNone, nullptr, cC, cC, cC, cI, const T *, R *)

namespace nxl { namespace lapack { namespace rows_s {
using T = float; using R = float;
NXL_ROWS_RFP(S, s) NXL_ROWS_RFP_REAL(S, s)
} } }
namespace nxl { namespace lapack { namespace rows_d {
using T = double; using R = double;
NXL_ROWS_RFP(D, d) NXL_ROWS_RFP_REAL(D, d)
} } }
namespace nxl { namespace lapack { namespace rows_c {
using T = std::complex<float>; using R = float;
NXL_ROWS_RFP(C, c) NXL_ROWS_RFP_CPLX(C, c)
} } }
namespace nxl { namespace lapack { namespace rows_z {
using T = std::complex<double>; using R = double;
NXL_ROWS_RFP(Z, z) NXL_ROWS_RFP_CPLX(Z, z)
} } }
