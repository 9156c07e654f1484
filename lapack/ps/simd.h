// Register-width arithmetic for the small-matrix kernels, written once with
// the compiler's generic vectors: a vector is 64 bytes of reals (one zmm on
// the 512-bit paths, two ymm or four xmm on the others), and a complex
// element is a pair of adjacent lanes. Columns are walked in windows of one
// vector; a window that reaches outside the rows to change is merged lane by
// lane with what it loaded, so those lanes are written back bit for bit.
#ifndef NXL_LAPACK_PS_SIMD_H
#define NXL_LAPACK_PS_SIMD_H

#include <cstdint>
#include <type_traits>
#include "service/scalar.h"

// Vectors pass between inline functions of one code path only, never across
// paths, so their calling convention is private to each build.
#pragma clang diagnostic ignored "-Wpsabi"

namespace nxl {
inline namespace NXL_LOCAL_NS {
namespace ps {

template <class R> struct vtypes;
template <> struct vtypes<double> {
  typedef double v __attribute__((vector_size(64)));
  typedef int64_t m __attribute__((vector_size(64)));
  static v swap(v x) { return __builtin_shufflevector(x, x, 1, 0, 3, 2, 5, 4, 7, 6); }
  static m lane() { return m{0, 1, 2, 3, 4, 5, 6, 7}; }
  static v sign() { return v{1, -1, 1, -1, 1, -1, 1, -1}; }
};
template <> struct vtypes<float> {
  typedef float v __attribute__((vector_size(64)));
  typedef int32_t m __attribute__((vector_size(64)));
  static v swap(v x) { return __builtin_shufflevector(x, x, 1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14); }
  static m lane() { return m{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}; }
  static v sign() { return v{1, -1, 1, -1, 1, -1, 1, -1, 1, -1, 1, -1, 1, -1, 1, -1}; }
};

// Vector view of a column of T (real or complex).
template <class T> struct simd {
  using R = real_t<T>;
  using V = typename vtypes<R>::v;
  using M = typename vtypes<R>::m;
  static constexpr bool cplx = is_complex_v<T>;
  static constexpr idx per = cplx ? 2 : 1;             // reals per element
  static constexpr idx E = idx(64 / sizeof(R)) / per;  // elements per vector

  static V load(const T *p) {
    V v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
  }
  static void store(T *p, V v) { __builtin_memcpy(p, &v, sizeof v); }
  static V splat(R x) { return V{} + x; }
  // Lanes of the elements lo..hi-1 of a window.
  using Lane = std::conditional_t<sizeof(R) == 8, int64_t, int32_t>;
  static M mask(idx lo, idx hi) {
    M l = vtypes<R>::lane();
    return (l >= static_cast<Lane>(lo * per)) & (l < static_cast<Lane>(hi * per));
  }
  static V blend(M m, V yes, V no) { return (V)(((M)yes & m) | ((M)no & ~m)); }

  // x * f, or x * conj(f) when Conj, for every element of x.
  template <bool Conj> struct factor {
    V r, i;  // f's real part on every lane; f's imaginary part with the sign pattern of the product
    explicit factor(T f) {
      if constexpr (cplx) {
        r = splat(f.real());
        i = splat(Conj ? f.imag() : -f.imag()) * vtypes<R>::sign();
      } else {
        r = splat(f);
      }
    }
    V times(V x) const {
      if constexpr (cplx) return x * r + vtypes<R>::swap(x) * i;
      else return x * r;
    }
  };
};

}  // namespace ps
}  // namespace NXL_LOCAL_NS
}  // namespace nxl

#endif  // NXL_LAPACK_PS_SIMD_H
