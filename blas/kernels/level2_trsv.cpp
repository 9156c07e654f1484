// Level-2 kernels for triangular matrices: solves ?trsv, ?tbsv, ?tpsv, one
// build per code path.
#include "blas/kernels/level2_tri.h"

NXL_L2_K(s, float, true, sv)
NXL_L2_K(d, double, true, sv)
NXL_L2_K(c, std::complex<float>, true, sv)
NXL_L2_K(z, std::complex<double>, true, sv)
