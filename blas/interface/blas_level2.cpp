// Exported level-2 BLAS routines: one row per family with its argument checks
// in the standard's order and positions, instantiated per precision.
#include "blas/blas_internal.h"
#include "blas/interface/frame.h"

using nxl::frame::F;
using nxl::frame::I;
using cfloat = std::complex<float>;
using cdouble = std::complex<double>;

#define NXL_ROW NXL_BLAS_ROUTINE
#include "blas/interface/table_level2.inc"
