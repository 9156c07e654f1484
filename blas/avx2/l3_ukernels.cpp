// AVX2 + FMA micro-kernels of the level-3 engine: double 8 x 6 and float
// 16 x 6 (two ymm of A, 6 broadcasts of B, 12 ymm accumulators), and the
// native complex ones, double 4 x 3 and float 8 x 3 (two ymm of A, the real
// and imaginary parts of 3 elements of B broadcast, 12 ymm accumulators),
// each also in a form that runs a whole column of tiles.
#include "blas/kernels/l3_cplx_ukr.h"
#include "blas/kernels/l3_simd_ukr.h"
#include "blas/kernels/l3_ukernel.h"

NXL_L3_HAND_KERNELS(__m256d, __m256, 2, 6)
NXL_L3_COLUMN_KERNELS(__m256d, __m256, 2, 6)
NXL_L3_CPLX_KERNELS(__m256d, __m256, 2, 3)
