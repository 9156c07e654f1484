// Elementary functions: lamch (machine parameters), lapy2 = sqrt(x^2 + y^2),
// lapy3 = sqrt(x^2 + y^2 + z^2) without unnecessary overflow, labad, and
// lartg, the plane rotation [c s; -conj(s) c] [f; g] = [r; 0] with real c.
#ifndef NXL_LAPACK_AUX_ELEMENTARY_H
#define NXL_LAPACK_AUX_ELEMENTARY_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

template <class R> R lamch_entry(const char *cmach) { return lamch<R>(upper(cmach)); }

template <class R> R lapy2(const R *px, const R *py) {
  R x = *px, y = *py;
  if (std::isnan(x)) return x;
  if (std::isnan(y)) return y;
  R a = std::fabs(x), b = std::fabs(y);
  R w = a > b ? a : b, z = a > b ? b : a;
  if (z == R(0) || w > std::numeric_limits<R>::max()) return w;
  R q = z / w;
  return w * std::sqrt(R(1) + q * q);
}

template <class R> R lapy3(const R *px, const R *py, const R *pz) {
  R a = std::fabs(*px), b = std::fabs(*py), c = std::fabs(*pz);
  if (std::isnan(a) || std::isnan(b) || std::isnan(c)) return a + b + c;
  R w = std::max(a, std::max(b, c));
  if (w == R(0) || w > std::numeric_limits<R>::max()) return a + b + c;
  R qa = a / w, qb = b / w, qc = c / w;
  return w * std::sqrt(qa * qa + qb * qb + qc * qc);
}

template <class R> void labad(R *, R *) {}

// Real rotation: r = sign(f) sqrt(f^2 + g^2) (r >= 0 when f = 0).
template <class T>
void lartg(const T *pf, const T *pg, real_t<T> *c, T *s, T *r) {
  using R = real_t<T>;
  T f = *pf, g = *pg;
  if constexpr (!is_complex_v<T>) {
    if (g == R(0)) {
      *c = 1;
      *s = 0;
      *r = f;
    } else if (f == R(0)) {
      *c = 0;
      *s = g > 0 ? R(1) : R(-1);
      *r = std::fabs(g);
    } else {
      R d = lapy2<R>(&f, &g);
      *c = std::fabs(f) / d;
      R rr = f > 0 ? d : -d;
      *s = g / rr;
      *r = rr;
    }
  } else {
    R fa = absv(f), ga = absv(g);
    if (ga == R(0)) {
      *c = 1;
      *s = T(0);
      *r = f;
    } else if (fa == R(0)) {
      *c = 0;
      *s = nxl::conj(g) / ga;
      *r = T(ga);
    } else {
      R d = lapy2<R>(&fa, &ga);
      *c = fa / d;
      T ph = f / fa;                      // f / |f|
      *r = ph * d;
      *s = ph * nxl::conj(g) / d;
    }
  }
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_AUX_ELEMENTARY_H
