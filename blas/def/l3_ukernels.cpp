// SSE2 micro-kernels of the level-3 engine: double 4 x 4 and float 8 x 4,
// two xmm of A, 4 broadcasts of B, 8 xmm accumulators. The SSSE3 and SSE4.2
// paths compile the same file with their own flags.
#include "blas/kernels/l3_simd_ukr.h"
#include "blas/kernels/l3_ukernel.h"

NXL_L3_HAND_KERNELS(__m128d, __m128, 2, 4)
