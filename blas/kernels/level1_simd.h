// Level-1 kernel building blocks for one code path: contiguous loops written
// with a fixed number of independent accumulators (a multiple of the path's
// vector width) so that the compiler turns them into vector code without any
// reassociation; strided loops run element by element in index order. The
// order of every sum depends only on n, so a build gives the same bits on
// every processor that runs it.
#ifndef NXL_BLAS_KERNELS_LEVEL1_SIMD_H
#define NXL_BLAS_KERNELS_LEVEL1_SIMD_H

#include <cmath>
#include <complex>
#include <limits>
#include "service/scalar.h"

namespace nxl {
inline namespace NXL_CP_NS {

// Bytes per vector register of this build.
#if NXL_CP_IS_CNR || NXL_CP < 4
inline constexpr int vec_bytes = 16;
#elif NXL_CP < 6
inline constexpr int vec_bytes = 32;
#else
inline constexpr int vec_bytes = 64;
#endif

// Independent accumulators per reduction: four registers' worth.
template <class R> inline constexpr int acc_lanes = 4 * vec_bytes / int(sizeof(R));

// Pairwise fold of an accumulator block, lane order fixed.
template <class R, int W> inline R fold(R (&acc)[W]) {
  for (int w = W / 2; w >= 1; w /= 2)
    for (int j = 0; j < w; ++j) acc[j] += acc[j + w];
  return acc[0];
}

// Sum over k of f(k) for k in [0, m) with contiguous-friendly blocking.
template <class R, class F> inline R block_sum(idx m, F f) {
  constexpr int W = acc_lanes<R>;
  R acc[W] = {};
  idx k = 0;
  for (; k + W <= m; k += W)
    for (int j = 0; j < W; ++j) acc[j] += f(k + j);
  R s = fold(acc);
  for (; k < m; ++k) s += f(k);
  return s;
}

// Reinterpretation of a complex array as its real and imaginary parts.
template <class T> inline const real_t<T> *flat(const T *p) {
  return reinterpret_cast<const real_t<T> *>(p);
}
template <class T> inline real_t<T> *flat(T *p) { return reinterpret_cast<real_t<T> *>(p); }

}  // namespace NXL_CP_NS
}  // namespace nxl

#endif
