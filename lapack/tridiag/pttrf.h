// L D L^H factorization of a Hermitian positive definite tridiagonal matrix
// with real diagonal d and off-diagonal e: d becomes D, e the off-diagonal
// of the unit bidiagonal factor (read as the subdiagonal of L or as the
// superdiagonal of U = L^H, the arithmetic being the same).
#ifndef NXL_LAPACK_TRIDIAG_PTTRF_H
#define NXL_LAPACK_TRIDIAG_PTTRF_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

template <class T> real_t<T> abs2(T x) {
  if constexpr (is_complex_v<T>) return x.real() * x.real() + x.imag() * x.imag();
  else return x * x;
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
      T ei = e[i];
      e[i] = ei / d[i];
      d[i + 1] -= abs2(ei) / d[i];
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
