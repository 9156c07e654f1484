// Level-2 kernels for triangular matrices: products ?trmv, ?tbmv, ?tpmv, whole
// and by parts of the result, one build per code path.
#include "blas/kernels/level2_tri.h"

NXL_L2_K(s, float, false, mv)
NXL_L2_K(d, double, false, mv)
NXL_L2_K(c, std::complex<float>, false, mv)
NXL_L2_K(z, std::complex<double>, false, mv)
NXL_L2_K_PART(s, float)
NXL_L2_K_PART(d, double)
NXL_L2_K_PART(c, std::complex<float>)
NXL_L2_K_PART(z, std::complex<double>)
