// Helpers of the packed, band and symmetric-indefinite tests: symmetric or
// Hermitian dense matrices, their packed and band images, and norms of
// dense differences.
#ifndef NXL_TESTS_LAPACK_SYM_UTIL_H
#define NXL_TESTS_LAPACK_SYM_UTIL_H

#include <algorithm>
#include "families_util.h"

namespace st {

using ft::C;
using ft::Dense;
using lt::idx;

template <class T> T narrow(C v) {
  if constexpr (lt::cplx<T>) return T(lt::real_t<T>(v.real()), lt::real_t<T>(v.imag()));
  else return T(v.real());
}
inline C cjh(bool herm, C v) { return herm ? std::conj(v) : v; }

// Random symmetric (herm = false) or Hermitian n x n matrix in double
// complex; real types get real entries. diag scales the diagonal; boost is
// added to it (a positive boost over n makes it positive definite when
// Hermitian).
template <class T> Dense sym_dense(idx n, bool herm, unsigned seed, double diag = 1.0, double boost = 0.0) {
  auto r = lt::random_matrix<T>(n, n, n, seed);
  Dense a(static_cast<size_t>(n * n));
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i <= j; ++i) {
      C v = ft::wide(r[i + j * n]);
      if (i == j) v = (herm ? C(v.real(), 0) : v) * diag + boost;
      a[i + j * n] = v;
      a[j + i * n] = cjh(herm, v);
    }
  return a;
}
// Hermitian positive definite with entries of the band |i - j| <= kd only
// (diagonally dominant).
template <class T> Dense hpd_band(idx n, idx kd, unsigned seed) {
  Dense a = sym_dense<T>(n, true, seed);
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < n; ++i)
      if (std::abs(i - j) > kd) a[i + j * n] = 0;
  for (idx i = 0; i < n; ++i) {
    double s = 0;
    for (idx j = 0; j < n; ++j) s += std::abs(a[i + j * n]);
    a[i + i * n] = s + 1.0;
  }
  return a;
}

template <class T> std::vector<T> pack(const Dense &a, idx n, bool up) {
  std::vector<T> ap;
  for (idx j = 0; j < n; ++j)
    for (idx i = up ? 0 : j; i < (up ? j + 1 : n); ++i) ap.push_back(narrow<T>(a[i + j * n]));
  if (ap.empty()) ap.push_back(T(0));
  return ap;
}
// Dense n x n copy with leading dimension lda; the triangle that the
// routine must not read is filled with NaN.
template <class T> std::vector<T> full(const Dense &a, idx n, idx lda, bool up, bool poison = true) {
  std::vector<T> f(static_cast<size_t>(lda * std::max<idx>(n, 1)), T(0));
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < n; ++i) {
      bool stored = up ? i <= j : i >= j;
      f[i + j * lda] = stored || !poison ? narrow<T>(a[i + j * n]) : T(std::numeric_limits<lt::real_t<T>>::quiet_NaN());
    }
  return f;
}
// Band storage (ldab >= kd + 1) of the stored triangle.
template <class T> std::vector<T> band(const Dense &a, idx n, idx kd, idx ldab, bool up) {
  std::vector<T> ab(static_cast<size_t>(ldab * std::max<idx>(n, 1)), T(0));
  for (idx j = 0; j < n; ++j)
    for (idx i = std::max<idx>(0, j - kd); i <= std::min(n - 1, j + kd); ++i) {
      if (up && i <= j) ab[kd + i - j + j * ldab] = narrow<T>(a[i + j * n]);
      if (!up && i >= j) ab[i - j + j * ldab] = narrow<T>(a[i + j * n]);
    }
  return ab;
}

inline Dense mul(const Dense &x, const Dense &y, idx n) {
  Dense r(static_cast<size_t>(n * n), C(0));
  for (idx j = 0; j < n; ++j)
    for (idx k = 0; k < n; ++k) {
      C v = y[k + j * n];
      if (v == C(0)) continue;
      for (idx i = 0; i < n; ++i) r[i + j * n] += x[i + k * n] * v;
    }
  return r;
}
inline Dense adjoint(const Dense &x, idx n, bool herm) {
  Dense r(static_cast<size_t>(n * n));
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < n; ++i) r[i + j * n] = cjh(herm, x[j + i * n]);
  return r;
}
inline double norm1(const Dense &x, idx n) {
  double v = 0;
  for (idx j = 0; j < n; ++j) {
    double s = 0;
    for (idx i = 0; i < n; ++i) s += std::abs(x[i + j * n]);
    v = std::max(v, s);
  }
  return v;
}
// |A - B|_1 / (n |A|_1 eps).
template <class T> double rel_diff(const Dense &a, const Dense &b, idx n) {
  Dense d(a.size());
  for (size_t i = 0; i < a.size(); ++i) d[i] = a[i] - b[i];
  double an = norm1(a, n);
  return norm1(d, n) / (double(std::max<idx>(n, 1)) * (an > 0 ? an : 1) * lt::eps<T>());
}
// Symmetric interchange of rows and columns i and p.
inline void swap_sym(Dense &m, idx n, idx i, idx p) {
  if (i == p) return;
  for (idx c = 0; c < n; ++c) std::swap(m[i + c * n], m[p + c * n]);
  for (idx r = 0; r < n; ++r) std::swap(m[r + i * n], m[r + p * n]);
}
// B = A X for a dense A; x and b with leading dimension n.
template <class T> std::vector<T> times(const Dense &a, idx n, const std::vector<T> &x, idx nrhs) {
  std::vector<T> b(static_cast<size_t>(n * nrhs));
  for (idx k = 0; k < nrhs; ++k)
    for (idx i = 0; i < n; ++i) {
      C s = 0;
      for (idx j = 0; j < n; ++j) s += a[i + j * n] * ft::wide(x[j + k * n]);
      b[i + k * n] = narrow<T>(s);
    }
  return b;
}
// Inverse of a dense matrix given as the stored triangle of a symmetric or
// Hermitian result, compared through |I - A inv(A)|_1 / (n |A| |inv(A)| eps).
inline double inverse_residual(const Dense &a, const Dense &inv, idx n, double eps) {
  Dense p = mul(a, inv, n);
  for (idx i = 0; i < n; ++i) p[i + i * n] -= 1.0;
  return norm1(p, n) / (double(n) * norm1(a, n) * norm1(inv, n) * eps);
}

}  // namespace st

#endif  // NXL_TESTS_LAPACK_SYM_UTIL_H
