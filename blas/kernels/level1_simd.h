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

// Sum over k of f(k) for k in [0, m): four vector accumulators of the
// path's register width take consecutive lanes, folded in a fixed order at
// the end; the tail is added one element at a time.
template <class R, class F> inline R block_sum(idx m, F f) {
  constexpr int L = vec_bytes / int(sizeof(R));
  using V = R __attribute__((ext_vector_type(L)));
  V acc[4] = {};
  idx k = 0;
  for (; k + 4 * L <= m; k += 4 * L)
    for (int u = 0; u < 4; ++u) {
      V t;
      for (int j = 0; j < L; ++j) t[j] = f(k + u * L + j);
      acc[u] += t;
    }
  const V v = (acc[0] + acc[1]) + (acc[2] + acc[3]);
  R s = 0;
  for (int j = 0; j < L; ++j) s += v[j];
  for (; k < m; ++k) s += f(k);
  return s;
}

// Two sums in one pass over an even count m, each split by the parity of k
// (the real and imaginary parts of interleaved complex data):
// f0 = sum f(k) over even k, f1 over odd k, and likewise for g.
template <class R, class F, class G>
inline void block_sum_parity(idx m, F f, G g, R &f0, R &f1, R &g0, R &g1) {
  constexpr int L = vec_bytes / int(sizeof(R));
  using V = R __attribute__((ext_vector_type(L)));
  V af[2] = {}, ag[2] = {};
  idx k = 0;
  for (; k + 2 * L <= m; k += 2 * L)
    for (int u = 0; u < 2; ++u) {
      V tf, tg;
      for (int j = 0; j < L; ++j) tf[j] = f(k + u * L + j), tg[j] = g(k + u * L + j);
      af[u] += tf;
      ag[u] += tg;
    }
  const V vf = af[0] + af[1], vg = ag[0] + ag[1];
  f0 = f1 = g0 = g1 = 0;
  for (int j = 0; j < L; j += 2) f0 += vf[j], f1 += vf[j + 1], g0 += vg[j], g1 += vg[j + 1];
  for (; k < m; k += 2) f0 += f(k), f1 += f(k + 1), g0 += g(k), g1 += g(k + 1);
}

// Lanes per register, for the index search.
template <class R> inline constexpr int acc_lanes = 4 * vec_bytes / int(sizeof(R));

// Reinterpretation of a complex array as its real and imaginary parts.
template <class T> inline const real_t<T> *flat(const T *p) {
  return reinterpret_cast<const real_t<T> *>(p);
}
template <class T> inline real_t<T> *flat(T *p) { return reinterpret_cast<real_t<T> *>(p); }

}  // namespace NXL_CP_NS
}  // namespace nxl

#endif
