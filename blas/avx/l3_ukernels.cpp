// AVX micro-kernels of the level-3 engine (no FMA: a product and a sum per
// step): double 8 x 4 and float 16 x 4, two ymm of A, 4 broadcasts of B,
// 8 ymm accumulators.
#include "blas/kernels/l3_simd_ukr.h"
#include "blas/kernels/l3_ukernel.h"

NXL_L3_HAND_KERNELS(__m256d, __m256, 2, 4)
