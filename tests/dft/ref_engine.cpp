// Test-only stand-in for the 1-D transform engine: direct O(n^2) evaluation
// in long double, with the engine's interface. Used by the frame's tests
// until the real engine is part of the library.
#include <cmath>
#include <cstring>
#include <vector>

#include "dft/engine/engine.h"

namespace nxl::dft {

template <class R> struct C2CPlan {
  long n, howmany;
  std::vector<long double> c, s;
};
template <class R> struct R2CPlan {
  C2CPlan<R> c;
};

namespace {
template <class R> void make(C2CPlan<R> *p, long n, long howmany) {
  p->n = n;
  p->howmany = howmany;
  p->c.resize(n);
  p->s.resize(n);
  const long double pi = 3.141592653589793238462643383279502884L;
  for (long k = 0; k < n; ++k) {
    p->c[k] = cosl(2 * pi * k / n);
    p->s[k] = sinl(2 * pi * k / n);
  }
}
// y[k] = scale * sum x[j] e^{sign 2 pi i jk/n}
template <class R>
void dft(const C2CPlan<R> *p, int sign, const long double *xr, const long double *xi, long double *yr,
         long double *yi, long double scale) {
  long n = p->n;
  for (long k = 0; k < n; ++k) {
    long double ar = 0, ai = 0;
    for (long j = 0; j < n; ++j) {
      long idx = (j * k) % n;
      long double c = p->c[idx], s = sign * p->s[idx];
      ar += xr[j] * c - xi[j] * s;
      ai += xr[j] * s + xi[j] * c;
    }
    yr[k] = ar * scale;
    yi[k] = ai * scale;
  }
}
}  // namespace

template <class R> C2CPlan<R> *c2c_create(long n, long howmany, int, int) {
  if (n < 1) return nullptr;
  auto *p = new C2CPlan<R>();
  make(p, n, howmany);
  return p;
}
template <class R> R2CPlan<R> *r2c_create(long n, long howmany, int, int) {
  if (n < 1) return nullptr;
  auto *p = new R2CPlan<R>();
  make(&p->c, n, howmany);
  return p;
}
template <class R> void destroy(C2CPlan<R> *p) { delete p; }
template <class R> void destroy(R2CPlan<R> *p) { delete p; }

template <class R>
int c2c_execute(const C2CPlan<R> *p, int sign, CView<const R> in, CView<R> out, R scale, long howmany) {
  if (howmany < 0) howmany = p->howmany;
  long n = p->n;
  std::vector<long double> xr(n), xi(n), yr(n), yi(n);
  for (long b = 0; b < howmany; ++b) {
    for (long j = 0; j < n; ++j) {
      xr[j] = in.re[b * in.dist + j * in.stride];
      xi[j] = in.im[b * in.dist + j * in.stride];
    }
    dft(p, sign, xr.data(), xi.data(), yr.data(), yi.data(), scale);
    for (long k = 0; k < n; ++k) {
      out.re[b * out.dist + k * out.stride] = static_cast<R>(yr[k]);
      out.im[b * out.dist + k * out.stride] = static_cast<R>(yi[k]);
    }
  }
  return 0;
}

template <class R> int r2c_execute(const R2CPlan<R> *p, RView<const R> in, CView<R> out, R scale, long howmany) {
  if (howmany < 0) howmany = p->c.howmany;
  long n = p->c.n;
  std::vector<long double> xr(n), xi(n, 0.0L), yr(n), yi(n);
  for (long b = 0; b < howmany; ++b) {
    for (long j = 0; j < n; ++j) xr[j] = in.p[b * in.dist + j * in.stride];
    dft(&p->c, -1, xr.data(), xi.data(), yr.data(), yi.data(), scale);
    for (long k = 0; k <= n / 2; ++k) {
      out.re[b * out.dist + k * out.stride] = static_cast<R>(yr[k]);
      out.im[b * out.dist + k * out.stride] = static_cast<R>(yi[k]);
    }
  }
  return 0;
}

template <class R> int c2r_execute(const R2CPlan<R> *p, CView<const R> in, RView<R> out, R scale, long howmany) {
  if (howmany < 0) howmany = p->c.howmany;
  long n = p->c.n;
  std::vector<long double> xr(n), xi(n), yr(n), yi(n);
  for (long b = 0; b < howmany; ++b) {
    for (long k = 0; k <= n / 2; ++k) {
      xr[k] = in.re[b * in.dist + k * in.stride];
      xi[k] = in.im[b * in.dist + k * in.stride];
    }
    xi[0] = 0;
    if (n % 2 == 0) xi[n / 2] = 0;
    for (long k = n / 2 + 1; k < n; ++k) {
      xr[k] = xr[n - k];
      xi[k] = -xi[n - k];
    }
    dft(&p->c, +1, xr.data(), xi.data(), yr.data(), yi.data(), scale);
    for (long j = 0; j < n; ++j) out.p[b * out.dist + j * out.stride] = static_cast<R>(yr[j]);
  }
  return 0;
}

template <class R> PlanInfo info(const C2CPlan<R> *p) { return PlanInfo{p->n, largest_prime_factor(p->n), false, false, false, 0}; }
template <class R> PlanInfo info(const R2CPlan<R> *p) { return info(&p->c); }

long largest_prime_factor(long n) {
  long best = 1;
  for (long f = 2; f * f <= n; ++f)
    while (n % f == 0) {
      best = f;
      n /= f;
    }
  return n > 1 ? (n > best ? n : best) : best;
}

#define INST(R)                                                                                   \
  template C2CPlan<R> *c2c_create<R>(long, long, int, int);                                       \
  template R2CPlan<R> *r2c_create<R>(long, long, int, int);                                       \
  template void destroy<R>(C2CPlan<R> *);                                                         \
  template void destroy<R>(R2CPlan<R> *);                                                         \
  template int c2c_execute<R>(const C2CPlan<R> *, int, CView<const R>, CView<R>, R, long);        \
  template int r2c_execute<R>(const R2CPlan<R> *, RView<const R>, CView<R>, R, long);             \
  template int c2r_execute<R>(const R2CPlan<R> *, CView<const R>, RView<R>, R, long);             \
  template PlanInfo info<R>(const C2CPlan<R> *);                                                  \
  template PlanInfo info<R>(const R2CPlan<R> *);
INST(float)
INST(double)

}  // namespace nxl::dft
