// Exported level-1 and sparse level-1 BLAS routines and lsame: one row per
// routine family, instantiated for the four precisions. Level-1 routines have
// no argument checks; n <= 0 returns at once in the dispatch layer.
#include "blas/interface/frame.h"
#include "blas/level1.h"

using nxl::frame::F;
using nxl::frame::I;
using cfloat = std::complex<float>;
using cdouble = std::complex<double>;

#define NXL_ROW1 NXL_BLAS_ROUTINE_UNCHECKED
#define NXL_ROWC NXL_BLAS_ROUTINE_CRESULT
#include "blas/interface/table_level1.inc"

// LOGICAL LSAME(CA, CB): case-insensitive comparison of two characters.
NXL_FORTRAN_ENTRY(nxl_int, LSAME, lsame, (const char *ca, const char *cb)) {
  return nxl_serv_lsame(ca, cb, 1, 1) != 0;
}
