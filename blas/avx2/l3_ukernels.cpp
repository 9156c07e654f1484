// AVX2 + FMA micro-kernels of the level-3 engine: double 8 x 6 and float
// 16 x 6 (two ymm of A, 6 broadcasts of B, 12 ymm accumulators).
#include "blas/kernels/l3_simd_ukr.h"
#include "blas/kernels/l3_ukernel.h"

namespace nxl {
inline namespace NXL_CP_NS {

void ukr_hand_d(idx kc, const double *a, const double *b, double *t) {
  ukr_simd<__m256d, 2, 6>(kc, a, b, t);
}
void ukr_hand_s(idx kc, const float *a, const float *b, float *t) {
  ukr_simd<__m256, 2, 6>(kc, a, b, t);
}

}  // namespace NXL_CP_NS
}  // namespace nxl
