// AVX-512 micro-kernels of the level-3 engine: double 16 x 14 and float
// 32 x 14 (two zmm of A, 14 broadcasts of B, 28 zmm accumulators). Only
// AVX512F instructions, so the many-core path compiles the same file.
#include "blas/kernels/l3_simd_ukr.h"
#include "blas/kernels/l3_ukernel.h"

NXL_L3_HAND_KERNELS(__m512d, __m512, 2, 14)
