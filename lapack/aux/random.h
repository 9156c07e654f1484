// Random numbers: laruv gives n <= 128 uniform (0, 1) numbers from a 48-bit
// multiplicative congruential generator whose state is the seed iseed(1..4)
// (base-4096 digits, iseed(4) odd); larnv fills a vector with the uniform
// (0,1), uniform (-1,1) or normal (0,1) distribution, and for complex types
// also uniform in the unit disc or on the unit circle.
#ifndef NXL_LAPACK_AUX_RANDOM_H
#define NXL_LAPACK_AUX_RANDOM_H

#include <cstdint>
#include "lapack/common.h"

namespace nxl {
namespace lapack {

template <class R> void laruv(idx *iseed, const idx *pn, R *x) {
  idx n = *pn;
  if (n > 128) n = 128;
  const uint64_t mask = (uint64_t(1) << 48) - 1;
  const uint64_t a = 0x5DEECE66DULL;    // odd multiplier of full period mod 2^48 for odd states
  uint64_t s = (static_cast<uint64_t>(iseed[0] & 4095) << 36) | (static_cast<uint64_t>(iseed[1] & 4095) << 24) |
               (static_cast<uint64_t>(iseed[2] & 4095) << 12) | static_cast<uint64_t>(iseed[3] & 4095);
  s |= 1;
  for (idx i = 0; i < n; ++i) {
    R v;
    do {
      s = (s * a) & mask;
      // The top bits of the state as a fraction; zero and one cannot occur
      // for odd states, and rounding to R is kept strictly inside (0, 1).
      v = static_cast<R>(static_cast<double>(s >> 8) * (1.0 / 1099511627776.0));
    } while (v <= R(0) || v >= R(1));
    x[i] = v;
  }
  iseed[0] = static_cast<idx>((s >> 36) & 4095);
  iseed[1] = static_cast<idx>((s >> 24) & 4095);
  iseed[2] = static_cast<idx>((s >> 12) & 4095);
  iseed[3] = static_cast<idx>(s & 4095);
}

template <class T> void larnv(const idx *pidist, idx *iseed, const idx *pn, T *x) {
  using R = real_t<T>;
  idx idist = *pidist, n = *pn;
  const double twopi = 6.28318530717958647692528676655900576839;
  R u[128];
  // Uniforms per value: two for complex values and for the real normal
  // distribution (Box-Muller), one otherwise; 64 values take at most 128.
  idx per = (is_complex_v<T> || idist == 3) ? 2 : 1;
  for (idx i0 = 0; i0 < n; i0 += 64) {
    idx cnt = imin(64, n - i0);
    idx nu = cnt * per;
    laruv<R>(iseed, &nu, u);
    for (idx i = 0; i < cnt; ++i) {
      if constexpr (!is_complex_v<T>) {
        if (idist == 1) x[i0 + i] = u[i];
        else if (idist == 2) x[i0 + i] = R(2) * u[i] - R(1);
        else if (idist == 3)
          x[i0 + i] = static_cast<R>(std::sqrt(-2.0 * std::log(double(u[2 * i]))) * std::cos(twopi * double(u[2 * i + 1])));
      } else {
        R a = u[2 * i], b = u[2 * i + 1];
        if (idist == 1) x[i0 + i] = T(a, b);
        else if (idist == 2) x[i0 + i] = T(R(2) * a - R(1), R(2) * b - R(1));
        else if (idist == 3) {
          // Box-Muller: two independent normal parts from two uniforms.
          double r = std::sqrt(-2.0 * std::log(double(a))), t = twopi * double(b);
          x[i0 + i] = T(static_cast<R>(r * std::cos(t)), static_cast<R>(r * std::sin(t)));
        } else if (idist == 4) {
          double r = std::sqrt(double(a)), t = twopi * double(b);
          x[i0 + i] = T(static_cast<R>(r * std::cos(t)), static_cast<R>(r * std::sin(t)));
        } else if (idist == 5) {
          double t = twopi * double(b);
          x[i0 + i] = T(static_cast<R>(std::cos(t)), static_cast<R>(std::sin(t)));
        }
      }
    }
  }
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_AUX_RANDOM_H
