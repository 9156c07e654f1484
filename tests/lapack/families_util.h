// Helpers of the family tests: dense images of structured matrices, the
// error-handler capture and backward errors.
#ifndef NXL_TESTS_LAPACK_FAMILIES_UTIL_H
#define NXL_TESTS_LAPACK_FAMILIES_UTIL_H

#include <gtest/gtest.h>
#include <string>
#include "service/nxl_serv.h"
#include "util.h"

namespace ft {

using lt::idx;
using C = std::complex<double>;
template <class T> C wide(T x) { return C(std::real(x), std::imag(x)); }

// Captures the reports of the error handler for the scope.
struct Xerbla {
  static inline std::string name;
  static inline idx pos = 0;
  static inline int calls = 0;
  static void handler(const char *n, const nxl_int *info, int len) {
    name.assign(n, static_cast<size_t>(len));
    pos = *info;
    ++calls;
  }
  Xerbla() {
    calls = 0;
    pos = 0;
    name.clear();
    old = nxl_serv_set_xerbla(handler);
  }
  ~Xerbla() { nxl_serv_set_xerbla(old); }
  nxl_xerbla_fn old;
};

// Dense n x n (column-major, leading dimension n) in double complex.
using Dense = std::vector<C>;

// max_j |b_j - op(A) x_j|_1 / (|A|_1 |x_j|_1 n eps) for a dense A.
template <class T>
double solve_residual(char tr, idx n, idx nrhs, const Dense &a, const T *b, idx ldb, const T *x, idx ldx) {
  double anorm = 0;
  for (idx j = 0; j < n; ++j) {
    double s = 0, t = 0;
    for (idx i = 0; i < n; ++i) { s += std::abs(a[i + j * n]); t += std::abs(a[j + i * n]); }
    anorm = std::max(anorm, std::max(s, t));
  }
  double worst = 0;
  for (idx k = 0; k < nrhs; ++k) {
    double rn = 0, xn = 0;
    for (idx i = 0; i < n; ++i) {
      C s = wide(b[i + k * ldb]);
      for (idx j = 0; j < n; ++j) {
        C aij = tr == 'N' ? a[i + j * n] : a[j + i * n];
        if (tr == 'C') aij = std::conj(aij);
        s -= aij * wide(x[j + k * ldx]);
      }
      rn += std::abs(s);
      xn += std::abs(wide(x[i + k * ldx]));
    }
    if (xn > 0 && anorm > 0) worst = std::max(worst, rn / (anorm * xn * double(n) * lt::eps<T>()));
  }
  return worst;
}

// Exact |A|_1 |inv(A)|_1 (or infinity norms) by Gauss-Jordan in double.
inline double exact_condition(idx n, Dense a, bool one) {
  Dense inv(static_cast<size_t>(n * n), C(0));
  for (idx i = 0; i < n; ++i) inv[i + i * n] = 1;
  double anorm = 0;
  for (idx j = 0; j < n; ++j) {
    double s = 0;
    for (idx i = 0; i < n; ++i) s += one ? std::abs(a[i + j * n]) : std::abs(a[j + i * n]);
    anorm = std::max(anorm, s);
  }
  for (idx k = 0; k < n; ++k) {
    idx p = k;
    for (idx i = k + 1; i < n; ++i)
      if (std::abs(a[i + k * n]) > std::abs(a[p + k * n])) p = i;
    for (idx j = 0; j < n; ++j) { std::swap(a[k + j * n], a[p + j * n]); std::swap(inv[k + j * n], inv[p + j * n]); }
    C d = a[k + k * n];
    for (idx j = 0; j < n; ++j) { a[k + j * n] /= d; inv[k + j * n] /= d; }
    for (idx i = 0; i < n; ++i) {
      if (i == k) continue;
      C f = a[i + k * n];
      for (idx j = 0; j < n; ++j) { a[i + j * n] -= f * a[k + j * n]; inv[i + j * n] -= f * inv[k + j * n]; }
    }
  }
  double inorm = 0;
  for (idx j = 0; j < n; ++j) {
    double s = 0;
    for (idx i = 0; i < n; ++i) s += one ? std::abs(inv[i + j * n]) : std::abs(inv[j + i * n]);
    inorm = std::max(inorm, s);
  }
  return anorm * inorm;
}

}  // namespace ft

#endif  // NXL_TESTS_LAPACK_FAMILIES_UTIL_H
