// Helpers shared by the BLAS frame tests: random data, a wide oracle type
// and element access by logical index.
#ifndef NXL_TESTS_BLAS_UTIL_H
#define NXL_TESTS_BLAS_UTIL_H

#include <cmath>
#include <complex>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>
#include "nxl_types.h"

namespace bt {

template <class T> struct wide { using type = long double; };
template <class R> struct wide<std::complex<R>> { using type = std::complex<long double>; };
template <class T> using wide_t = typename wide<T>::type;
template <class T> struct real_of { using type = T; };
template <class R> struct real_of<std::complex<R>> { using type = R; };
template <class T> using real_t = typename real_of<T>::type;
template <class T> inline constexpr bool cplx = !std::is_same_v<T, real_t<T>>;

inline std::mt19937_64 &rng() {
  static std::mt19937_64 g(12345);
  return g;
}
template <class T> T rnd() {
  std::uniform_real_distribution<double> d(-1.0, 1.0);
  if constexpr (cplx<T>) return T(real_t<T>(d(rng())), real_t<T>(d(rng())));
  else return T(d(rng()));
}
// A vector of n logical elements with increment inc (storage (n-1)|inc|+1).
template <class T> std::vector<T> vec(nxl_int n, nxl_int inc) {
  nxl_int len = n > 0 ? 1 + (n - 1) * (inc < 0 ? -inc : inc) : 1;
  std::vector<T> v(static_cast<size_t>(len));
  for (auto &e : v) e = rnd<T>();
  return v;
}
// Storage offset of logical element i.
inline nxl_int at(nxl_int n, nxl_int inc, nxl_int i) { return inc >= 0 ? i * inc : (n - 1 - i) * -inc; }

template <class T> wide_t<T> W(T x) {
  if constexpr (cplx<T>) return wide_t<T>(x.real(), x.imag());
  else return wide_t<T>(x);
}
template <class T> long double mag(T x) { return std::abs(W(x)); }
template <class T> constexpr long double eps() { return std::numeric_limits<real_t<T>>::epsilon(); }

}  // namespace bt

#endif
