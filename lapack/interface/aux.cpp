// Exported auxiliary routines: one row each.
#include "lapack/frame.h"
#include "lapack/aux/copy.h"
#include "lapack/aux/elementary.h"
#include "lapack/aux/lacn2.h"
#include "lapack/aux/norms.h"
#include "lapack/aux/random.h"
#include "lapack/aux/scale.h"

using namespace nxl::lapack::row_types;

#define NXL_ROWS_AUX(P, p)                                                                               \
  NXL_LAPACK_ROW(void, P##LACPY, p##lacpy, lacpy, kNone, nullptr, cC, cI, cI, const T *, cI, T *, cI)    \
  NXL_LAPACK_ROW(void, P##LASET, p##laset, laset, kNone, nullptr, cC, cI, cI, const T *, const T *, T *, \
                 cI)                                                                                     \
  NXL_LAPACK_ROW(R, P##LANGE, p##lange, lange, kNone, nullptr, cC, cI, cI, const T *, cI, R *)           \
  NXL_LAPACK_ROW(R, P##LANSY, p##lansy, lansy, kNone, nullptr, cC, cC, cI, const T *, cI, R *)           \
  NXL_LAPACK_ROW(R, P##LANTR, p##lantr, lantr, kNone, nullptr, cC, cC, cC, cI, cI, const T *, cI, R *)   \
  NXL_LAPACK_ROW(void, P##LASCL, p##lascl, lascl, kNone, nullptr, cC, cI, cI, const R *, const R *, cI,  \
                 cI, T *, cI, I)                                                                         \
  NXL_LAPACK_ROW(void, P##LARTG, p##lartg, lartg, kNone, nullptr, const T *, const T *, R *, T *, T *)   \
  NXL_LAPACK_ROW(void, P##LAQGE, p##laqge, laqge, kNone, nullptr, cI, cI, T *, cI, const R *, const R *, \
                 const R *, const R *, const R *, Ch)                                                    \
  NXL_LAPACK_ROW(void, P##LAQSY, p##laqsy, laqsy, kNone, nullptr, cC, cI, T *, cI, const R *, const R *, \
                 const R *, Ch)                                                                          \
  NXL_LAPACK_ROW(void, P##LARNV, p##larnv, larnv, kNone, nullptr, cI, I, cI, T *)

#define NXL_ROWS_REAL(P, p)                                                                              \
  NXL_LAPACK_ROW(void, P##LASSQ, p##lassq, lassq, kNone, nullptr, cI, const T *, cI, R *, R *)           \
  NXL_LAPACK_ROW(void, P##LACN2, p##lacn2, lacn2_real, kNone, nullptr, cI, T *, T *, I, R *, I, I)        \
  NXL_LAPACK_ROW(void, P##LACON, p##lacon, lacon_real, kNone, nullptr, cI, T *, T *, I, R *, I)           \
  NXL_LAPACK_ROW(R, P##LAMCH, p##lamch, lamch_entry, kNone, nullptr, cC)                                 \
  NXL_LAPACK_ROW(R, P##LAPY2, p##lapy2, lapy2, kNone, nullptr, const R *, const R *)                     \
  NXL_LAPACK_ROW(R, P##LAPY3, p##lapy3, lapy3, kNone, nullptr, const R *, const R *, const R *)          \
  NXL_LAPACK_ROW(void, P##LABAD, p##labad, labad, kNone, nullptr, R *, R *)                              \
  NXL_LAPACK_ROW(void, P##LARUV, p##laruv, laruv, kNone, nullptr, I, cI, R *)

// The complex sum of squares keeps the name with the precision letter of the
// standard (classq, zlassq).
#define NXL_ROWS_CPLX(P, p)                                                                              \
  NXL_LAPACK_ROW(void, P##LASSQ, p##lassq, lassq, kNone, nullptr, cI, const T *, cI, R *, R *)           \
  NXL_LAPACK_ROW(void, P##LACN2, p##lacn2, lacn2_cplx, kNone, nullptr, cI, T *, T *, R *, I, I)           \
  NXL_LAPACK_ROW(void, P##LACON, p##lacon, lacon_cplx, kNone, nullptr, cI, T *, T *, R *, I)              \
  NXL_LAPACK_ROW(R, P##LANHE, p##lanhe, lanhe, kNone, nullptr, cC, cC, cI, const T *, cI, R *)           \
  NXL_LAPACK_ROW(void, P##LAQHE, p##laqhe, laqhe, kNone, nullptr, cC, cI, T *, cI, const R *, const R *, \
                 const R *, Ch)

namespace nxl { namespace lapack { namespace rows_s {
using T = float; using R = float;
NXL_ROWS_AUX(S, s) NXL_ROWS_REAL(S, s)
} } }
namespace nxl { namespace lapack { namespace rows_d {
using T = double; using R = double;
NXL_ROWS_AUX(D, d) NXL_ROWS_REAL(D, d)
} } }
namespace nxl { namespace lapack { namespace rows_c {
using T = std::complex<float>; using R = float;
NXL_ROWS_AUX(C, c) NXL_ROWS_CPLX(C, c)
} } }
namespace nxl { namespace lapack { namespace rows_z {
using T = std::complex<double>; using R = double;
NXL_ROWS_AUX(Z, z) NXL_ROWS_CPLX(Z, z)
} } }
