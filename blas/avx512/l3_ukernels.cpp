// AVX-512 micro-kernels of the level-3 engine: double 16 x 14 and float
// 32 x 14 (two zmm of A, 14 broadcasts of B, 28 zmm accumulators). Only
// AVX512F instructions, so the many-core path compiles the same file.
#include "blas/kernels/l3_simd_ukr.h"
#include "blas/kernels/l3_ukernel.h"

namespace nxl {
inline namespace NXL_CP_NS {

void ukr_hand_d(idx kc, const double *a, const double *b, double *t) {
  ukr_simd<__m512d, 2, 14>(kc, a, b, t);
}
void ukr_hand_s(idx kc, const float *a, const float *b, float *t) {
  ukr_simd<__m512, 2, 14>(kc, a, b, t);
}

}  // namespace NXL_CP_NS
}  // namespace nxl
