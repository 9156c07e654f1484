// Helpers of the transform-engine tests: random data, long-double reference
// transforms and error norms.
#ifndef NXL_TEST_ENGINE_UTIL_H
#define NXL_TEST_ENGINE_UTIL_H

#include <dlfcn.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "dft/engine/engine.h"

namespace engine_test {

using LD = long double;
using CLD = std::complex<LD>;

inline std::vector<CLD> random_complex(long n, std::uint64_t seed) {
  std::mt19937_64 g(seed);
  std::uniform_real_distribution<double> u(-0.5, 0.5);
  std::vector<CLD> x(static_cast<size_t>(n));
  for (auto &v : x) {
    const double a = u(g), b = u(g);
    v = CLD(a, b);
  }
  return x;
}

// exp(sign 2 pi i e / n), e < n, accurate in long double.
inline std::vector<CLD> roots_ld(long n, int sign) {
  std::vector<CLD> w(static_cast<size_t>(n));
  const LD pi = 3.141592653589793238462643383279502884L;
  for (long e = 0; e < n; ++e) {
    const LD a = 2 * pi * static_cast<LD>(e) / static_cast<LD>(n);
    w[static_cast<size_t>(e)] = CLD(cosl(a), sign * sinl(a));
  }
  return w;
}

// Direct O(n^2) transform in long double.
inline std::vector<CLD> direct_dft(const std::vector<CLD> &x, int sign) {
  const long n = static_cast<long>(x.size());
  const auto w = roots_ld(n, sign);
  std::vector<CLD> y(x.size());
  for (long k = 0; k < n; ++k) {
    CLD s = 0;
    long e = 0;
    for (long j = 0; j < n; ++j) {
      s += x[static_cast<size_t>(j)] * w[static_cast<size_t>(e)];
      e += k;
      if (e >= n) e -= n;
    }
    y[static_cast<size_t>(k)] = s;
  }
  return y;
}

// Long-double transform through the peer library (black-box oracle), for
// lengths too large for the direct sum. Empty result when unavailable.
inline std::vector<CLD> peer_dft_ld(const std::vector<CLD> &x, int sign) {
  static void *lib = dlopen("libfftw3l.so.3", RTLD_NOW | RTLD_LOCAL);
  if (!lib) return {};
  using plan_fn = void *(*)(int, void *, void *, int, unsigned);
  using exec_fn = void (*)(void *);
  using destroy_fn = void (*)(void *);
  auto plan = reinterpret_cast<plan_fn>(dlsym(lib, "fftwl_plan_dft_1d"));
  auto exec = reinterpret_cast<exec_fn>(dlsym(lib, "fftwl_execute"));
  auto destroy = reinterpret_cast<destroy_fn>(dlsym(lib, "fftwl_destroy_plan"));
  if (!plan || !exec || !destroy) return {};
  std::vector<CLD> in(x), out(x.size());
  void *p = plan(static_cast<int>(x.size()), in.data(), out.data(), sign, 1u << 6 /* estimate */);
  if (!p) return {};
  exec(p);
  destroy(p);
  return out;
}

inline std::vector<CLD> reference(const std::vector<CLD> &x, int sign) {
  if (x.size() <= 6000) return direct_dft(x, sign);
  return peer_dft_ld(x, sign);
}

// Relative rms error ||y - r|| / ||r||.
template <class R> double rel_rms(const std::vector<std::complex<R>> &y, const std::vector<CLD> &r) {
  LD num = 0, den = 0;
  for (size_t i = 0; i < r.size(); ++i) {
    const CLD d = CLD(y[i].real(), y[i].imag()) - r[i];
    num += std::norm(d);
    den += std::norm(r[i]);
  }
  if (den == 0) return static_cast<double>(sqrtl(num));
  return static_cast<double>(sqrtl(num / den));
}

// The accuracy bound: 2 eps log2 N (at least 2 eps).
template <class R> double bound(long n) {
  const double l = n > 2 ? std::log2(static_cast<double>(n)) : 1.0;
  return 2.0 * std::numeric_limits<R>::epsilon() * l;
}

template <class R> std::vector<std::complex<R>> to(const std::vector<CLD> &x) {
  std::vector<std::complex<R>> y(x.size());
  for (size_t i = 0; i < x.size(); ++i) y[i] = {static_cast<R>(x[i].real()), static_cast<R>(x[i].imag())};
  return y;
}
template <class R> std::vector<CLD> from(const std::vector<std::complex<R>> &x) {
  std::vector<CLD> y(x.size());
  for (size_t i = 0; i < x.size(); ++i) y[i] = CLD(x[i].real(), x[i].imag());
  return y;
}

// One interleaved out-of-place c2c transform through the engine.
template <class R> std::vector<std::complex<R>> run_c2c(const std::vector<std::complex<R>> &x, int sign, int threads = 1) {
  const long n = static_cast<long>(x.size());
  auto *p = nxl::dft::c2c_create<R>(n, 1, threads);
  std::vector<std::complex<R>> y(x.size());
  if (!p) return {};
  const R *xi = reinterpret_cast<const R *>(x.data());
  R *yo = reinterpret_cast<R *>(y.data());
  nxl::dft::c2c_execute<R>(p, sign, {xi, xi + 1, 2, 2 * n}, {yo, yo + 1, 2, 2 * n}, R(1));
  nxl::dft::destroy(p);
  return y;
}

}  // namespace engine_test

#endif  // NXL_TEST_ENGINE_UTIL_H
