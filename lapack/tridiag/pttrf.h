// L D L^H factorization of a Hermitian positive definite tridiagonal matrix
// with real diagonal d and off-diagonal e: d becomes D, e the off-diagonal
// of the unit bidiagonal factor (read as the subdiagonal of L or as the
// superdiagonal of U = L^H, the arithmetic being the same).
#ifndef NXL_LAPACK_TRIDIAG_PTTRF_H
#define NXL_LAPACK_TRIDIAG_PTTRF_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

// Re(x conj(y)).
template <class T> real_t<T> re_dot(T x, T y) {
  if constexpr (is_complex_v<T>) return x.real() * y.real() + x.imag() * y.imag();
  else return x * y;
}

template <class T> void pttrf_work(idx n, real_t<T> *d, T *e, idx *info) {
  using R = real_t<T>;
  *info = 0;
  for (idx i = 0; i < n; ++i) {
    if (!(d[i] > R(0))) {
      *info = i + 1;
      return;
    }
    if (i + 1 < n) {
      // |e_i|^2 / d_i as (e_i / d_i) conj(e_i), which cannot overflow
      // where the square would.
      T ei = e[i];
      e[i] = ei / d[i];
      d[i + 1] -= re_dot(e[i], ei);
    }
  }
}

template <class T> void pttrf(const idx *pn, real_t<T> *d, T *e, idx *info) {
  *info = 0;
  if (*pn < 0) return report<T>("PTTRF", 1, info);
  pttrf_work<T>(*pn, d, e, info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRIDIAG_PTTRF_H
