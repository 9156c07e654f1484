// Scalar traits shared by the four precisions: one template serves float,
// double, std::complex<float> and std::complex<double>.
//
// In a code-path translation unit everything here lands in that path's own
// namespace (NXL_CP_NS), so no inline copy compiled for a higher path can be
// merged into a lower one.
#ifndef NXL_SCALAR_H
#define NXL_SCALAR_H

#include <cmath>
#include <complex>
#include <type_traits>
#include "nxl_types.h"

#if defined(NXL_CP_NS)
#define NXL_LOCAL_NS NXL_CP_NS
#else
#define NXL_LOCAL_NS cp_base
#endif

namespace nxl {
inline namespace NXL_LOCAL_NS {

using idx = nxl_int;

template <class T> struct real_type { using type = T; };
template <class R> struct real_type<std::complex<R>> { using type = R; };
template <class T> using real_t = typename real_type<T>::type;

template <class T> inline constexpr bool is_complex_v = false;
template <class R> inline constexpr bool is_complex_v<std::complex<R>> = true;

template <class T> inline T conj(T x) { return x; }
template <class R> inline std::complex<R> conj(std::complex<R> x) { return {x.real(), -x.imag()}; }

template <class T> inline real_t<T> re(T x) { return x; }
template <class R> inline R re(std::complex<R> x) { return x.real(); }
template <class T> inline real_t<T> im(T) { return real_t<T>(0); }
template <class R> inline R im(std::complex<R> x) { return x.imag(); }

// |re| + |im|: the magnitude that the index-of-extreme and norm-1 routines use.
template <class T> inline real_t<T> abs1(T x) { return std::fabs(x); }
template <class R> inline R abs1(std::complex<R> x) { return std::fabs(x.real()) + std::fabs(x.imag()); }

// Complex product written out, without the library call that std::complex
// makes for infinities: the BLAS kernels want the plain formula.
template <class T> inline T mul(T a, T b) { return a * b; }
template <class R> inline std::complex<R> mul(std::complex<R> a, std::complex<R> b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

// Quotient a / b; complex by Smith's method (scaled by the larger part of b,
// so that no intermediate overflows where the quotient itself does not).
template <class T> inline T div(T a, T b) { return a / b; }
template <class R> inline std::complex<R> div(std::complex<R> a, std::complex<R> b) {
  const R br = b.real(), bi = b.imag();
  if (std::fabs(br) >= std::fabs(bi)) {
    const R r = bi / br, d = br + bi * r;
    return {(a.real() + a.imag() * r) / d, (a.imag() - a.real() * r) / d};
  }
  const R r = br / bi, d = bi + br * r;
  return {(a.real() * r + a.imag()) / d, (a.imag() * r - a.real()) / d};
}

template <class T> inline bool is_zero(T x) { return x == T(0); }
template <class T> inline bool is_one(T x) { return x == T(1); }

// Offset of logical element 0 of an n-vector with increment inc.
inline idx vec_start(idx n, idx inc) { return inc >= 0 ? 0 : (1 - n) * inc; }

}  // namespace NXL_LOCAL_NS
}  // namespace nxl

#endif  // NXL_SCALAR_H
