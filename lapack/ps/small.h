// Shared pieces of the small-matrix kernels. Compiled once per code path:
// everything lives in that path's namespace (see service/scalar.h).
#ifndef NXL_LAPACK_PS_SMALL_H
#define NXL_LAPACK_PS_SMALL_H

#include <cfloat>
#include "service/codepath.h"
#include "service/scalar.h"

// Loops over the rows of one short column (a few to a hundred elements):
// one vector per iteration with a masked last one where the instruction set
// has masks, rather than wide unrolled iterations and a scalar remainder
// that would take most of the elements.
// The hint is best effort: where masks or vectors are missing (complex types,
// the oldest paths) the loop stays as the compiler would build it anyway.
#pragma clang diagnostic ignored "-Wpass-failed"
#define NXL_PS_UNROLL _Pragma("clang loop unroll(full)")
#define NXL_PS_SHORT_LOOP _Pragma("clang loop vectorize(enable) vectorize_predicate(enable) interleave_count(1)")

namespace nxl {
inline namespace NXL_LOCAL_NS {
namespace ps {

inline bool flag_is(const char *c, char up) {
  char x = *c;
  if (x >= 'a' && x <= 'z') x = static_cast<char>(x - 32);
  return x == up;
}

template <class R> inline R safe_min();
template <> inline float safe_min<float>() { return FLT_MIN; }
template <> inline double safe_min<double>() { return DBL_MIN; }

// 1/z without the library call that complex division makes: conj(z) / |z|^2
// with one division where neither part can overflow or underflow in the
// squares, Smith's scaled form elsewhere.
template <class T> inline T inv(T x) { return T(1) / x; }
template <class R> inline std::complex<R> inv(std::complex<R> x) {
  R a = x.real(), b = x.imag();
  // 2^-(e/2 - 4) and 2^(e/2 - 4) for the exponent range e of R.
  constexpr R lo = sizeof(R) == 8 ? 0x1p-500 : 0x1p-58f, hi = sizeof(R) == 8 ? 0x1p500 : 0x1p58f;
  const R big = std::fabs(a) >= std::fabs(b) ? std::fabs(a) : std::fabs(b);
  if (big > lo && big < hi) {
    const R s = R(1) / (a * a + b * b);
    return {a * s, -b * s};
  }
  if (std::fabs(a) >= std::fabs(b)) {
    R r = b / a, d = a + b * r;
    return {R(1) / d, -r / d};
  }
  R r = a / b, d = b + a * r;
  return {r / d, R(-1) / d};
}
// Quotient p / q, scaled so that a tiny q gives no overflowing reciprocal.
template <class T> inline T divide(T p, T q) { return div(p, q); }
template <class T> inline T divide_real(T p, real_t<T> q) { return p / q; }

// Row of the pivot in x[0..n): the first NaN, else the first entry of
// largest |re| + |im|.
template <class T> inline idx pivot_row(idx n, const T *x) {
  idx best = 0;
  real_t<T> bv = abs1(x[0]);
  if (bv != bv) return 0;
  for (idx i = 1; i < n; ++i) {
    real_t<T> v = abs1(x[i]);
    if (v != v) return i;
    if (v > bv) { bv = v; best = i; }
  }
  return best;
}

}  // namespace ps
}  // namespace NXL_LOCAL_NS
}  // namespace nxl

#endif  // NXL_LAPACK_PS_SMALL_H
