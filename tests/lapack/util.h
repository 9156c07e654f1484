// Helpers of the LAPACK tests: random matrices, naive products and norms.
#ifndef NXL_TESTS_LAPACK_UTIL_H
#define NXL_TESTS_LAPACK_UTIL_H

#include <cmath>
#include <complex>
#include <limits>
#include <random>
#include <vector>
#include "nxl_types.h"

namespace lt {

using idx = nxl_int;
template <class T> struct Real { using type = T; };
template <class R> struct Real<std::complex<R>> { using type = R; };
template <class T> using real_t = typename Real<T>::type;
template <class T> constexpr bool cplx = !std::is_same_v<T, real_t<T>>;

template <class T> real_t<T> eps() { return std::numeric_limits<real_t<T>>::epsilon(); }
template <class T> double mag(T x) { return std::abs(std::complex<double>(std::real(x), std::imag(x))); }
template <class T> T cj(T x) {
  if constexpr (cplx<T>) return std::conj(x);
  else return x;
}

template <class T> T rnd(std::mt19937_64 &g) {
  std::uniform_real_distribution<double> d(-1.0, 1.0);
  if constexpr (cplx<T>) return T(real_t<T>(d(g)), real_t<T>(d(g)));
  else return T(d(g));
}

template <class T> std::vector<T> random_matrix(idx m, idx n, idx ld, unsigned seed) {
  std::mt19937_64 g(seed);
  std::vector<T> a(static_cast<size_t>(ld * (n > 0 ? n : 1)));
  for (auto &x : a) x = rnd<T>(g);
  return a;
}

// Hermitian positive definite: B^H B + n I.
template <class T> std::vector<T> spd_matrix(idx n, idx ld, unsigned seed) {
  auto b = random_matrix<T>(n, n, n, seed);
  std::vector<T> a(static_cast<size_t>(ld * n), T(0));
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < n; ++i) {
      std::complex<double> s = 0;
      for (idx k = 0; k < n; ++k) {
        std::complex<double> x(std::real(b[k + i * n]), -std::imag(b[k + i * n]));
        std::complex<double> y(std::real(b[k + j * n]), std::imag(b[k + j * n]));
        s += x * y;
      }
      if (i == j) s += double(n);
      if constexpr (cplx<T>) a[i + j * ld] = T(real_t<T>(s.real()), real_t<T>(i == j ? 0.0 : s.imag()));
      else a[i + j * ld] = T(s.real());
    }
  return a;
}

template <class T> double norm1(idx m, idx n, const T *a, idx ld) {
  double r = 0;
  for (idx j = 0; j < n; ++j) {
    double s = 0;
    for (idx i = 0; i < m; ++i) s += mag(a[i + j * ld]);
    r = std::max(r, s);
  }
  return r;
}

// |P A - L U|_1 / (n |A|_1 eps) for the factors of getrf.
template <class T> double lu_residual(idx m, idx n, const T *a0, idx lda, const T *f, const idx *ipiv) {
  idx k = std::min(m, n);
  std::vector<std::complex<double>> pa(static_cast<size_t>(m * n));
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < m; ++i) pa[i + j * m] = std::complex<double>(std::real(a0[i + j * lda]), std::imag(a0[i + j * lda]));
  for (idx i = 0; i < k; ++i) {
    idx p = ipiv[i] - 1;
    if (p != i)
      for (idx j = 0; j < n; ++j) std::swap(pa[i + j * m], pa[p + j * m]);
  }
  double worst = 0;
  for (idx j = 0; j < n; ++j) {
    double s = 0;
    for (idx i = 0; i < m; ++i) {
      std::complex<double> lu = 0;
      for (idx q = 0; q <= std::min({i, j, k - 1}); ++q) {
        std::complex<double> l = q == i ? 1.0 : std::complex<double>(std::real(f[i + q * lda]), std::imag(f[i + q * lda]));
        std::complex<double> u(std::real(f[q + j * lda]), std::imag(f[q + j * lda]));
        lu += l * u;
      }
      s += std::abs(pa[i + j * m] - lu);
    }
    worst = std::max(worst, s);
  }
  double an = norm1(m, n, a0, lda);
  return worst / (std::max<idx>(1, std::max(m, n)) * (an > 0 ? an : 1) * eps<T>());
}

// |B - op(A) X|_1 / (|A|_1 |X|_1 n eps), op per trans.
template <class T>
double solve_residual(char trans, idx n, idx nrhs, const T *a, idx lda, const T *x, idx ldx, const T *b, idx ldb) {
  double worst = 0, xn = 0;
  for (idx r = 0; r < nrhs; ++r) {
    double s = 0, xs = 0;
    for (idx i = 0; i < n; ++i) {
      std::complex<double> v(std::real(b[i + r * ldb]), std::imag(b[i + r * ldb]));
      for (idx k = 0; k < n; ++k) {
        T aik = trans == 'N' ? a[i + k * lda] : a[k + i * lda];
        if (trans == 'C') aik = cj(aik);
        v -= std::complex<double>(std::real(aik), std::imag(aik)) *
             std::complex<double>(std::real(x[k + r * ldx]), std::imag(x[k + r * ldx]));
      }
      s += std::abs(v);
      xs += mag(x[i + r * ldx]);
    }
    worst = std::max(worst, s);
    xn = std::max(xn, xs);
  }
  double an = norm1(n, n, a, lda);
  return worst / (std::max<idx>(n, 1) * (an > 0 ? an : 1) * (xn > 0 ? xn : 1) * eps<T>());
}

}  // namespace lt

#endif
