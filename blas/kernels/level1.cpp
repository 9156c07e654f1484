// Level-1 BLAS kernels, one template per algorithm, instantiated for the four
// precisions and compiled once per code path (nxl_blas_<cp>_x<routine>).
// The dispatch layer hands each kernel one contiguous logical chunk; a
// negative increment addresses logical element i at (n-1-i)*|inc|.
#include "blas/kernels/level1_simd.h"
#include "service/codepath.h"

namespace nxl {
inline namespace NXL_CP_NS {

template <class T> inline const T *first(const T *x, idx n, idx inc) { return x + vec_start(n, inc); }
template <class T> inline T *first(T *x, idx n, idx inc) { return x + vec_start(n, inc); }

// ---------------------------------------------------------------- dot products
template <class T, bool Conj> T dot(idx n, const T *x, idx incx, const T *y, idx incy) {
  if (n <= 0) return T(0);
  if constexpr (!is_complex_v<T>) {
    if (incx == 1 && incy == 1) return block_sum<T>(n, [&](idx k) { return x[k] * y[k]; });
    x = first(x, n, incx);
    y = first(y, n, incy);
    T s = 0;
    for (idx i = 0; i < n; ++i) s += x[i * incx] * y[i * incy];
    return s;
  } else {
    using R = real_t<T>;
    const R *xf = flat(x), *yf = flat(y);
    if (incx == 1 && incy == 1) {
      // Products of matching parts split by parity give rr and ii, of
      // crossed parts ri and ir.
      R rr, ii, ri, ir;
      block_sum_parity<R>(
          2 * n, [&](idx k) { return xf[k] * yf[k]; }, [&](idx k) { return xf[k] * yf[k ^ 1]; }, rr, ii,
          ri, ir);
      return Conj ? T(rr + ii, ri - ir) : T(rr - ii, ri + ir);
    } else {
      xf = flat(first(x, n, incx));
      yf = flat(first(y, n, incy));
      R rr = 0, ii = 0, ri = 0, ir = 0;
      for (idx i = 0; i < n; ++i) {
        R xr = xf[2 * i * incx], xi = xf[2 * i * incx + 1];
        R yr = yf[2 * i * incy], yi = yf[2 * i * incy + 1];
        rr += xr * yr;
        ii += xi * yi;
        ri += xr * yi;
        ir += xi * yr;
      }
      return Conj ? T(rr + ii, ri - ir) : T(rr - ii, ri + ir);
    }
  }
}

// Single-precision inputs summed in double.
inline double dot_wide(idx n, const float *x, idx incx, const float *y, idx incy) {
  if (n <= 0) return 0.0;
  if (incx == 1 && incy == 1)
    return block_sum<double>(n, [&](idx k) { return double(x[k]) * double(y[k]); });
  x = first(x, n, incx);
  y = first(y, n, incy);
  double s = 0;
  for (idx i = 0; i < n; ++i) s += double(x[i * incx]) * double(y[i * incy]);
  return s;
}

// ---------------------------------------------------------------- updates
template <class T> void axpy(idx n, T a, const T *x, idx incx, T *y, idx incy) {
  if (n <= 0) return;
  if constexpr (!is_complex_v<T>) {
    if (incx == 1 && incy == 1) {
      for (idx i = 0; i < n; ++i) y[i] += a * x[i];
      return;
    }
  } else {
    using R = real_t<T>;
    if (incx == 1 && incy == 1) {
      const R *xf = flat(x);
      R *yf = flat(y);
      const R ar = a.real(), ai = a.imag();
      for (idx i = 0; i < n; ++i) {
        R xr = xf[2 * i], xi = xf[2 * i + 1];
        yf[2 * i] += ar * xr - ai * xi;
        yf[2 * i + 1] += ar * xi + ai * xr;
      }
      return;
    }
  }
  x = first(x, n, incx);
  y = first(y, n, incy);
  for (idx i = 0; i < n; ++i) y[i * incy] += mul(a, x[i * incx]);
}

// x = a*x with a scalar of type S (the element type, or the real type for
// csscal/zdscal).
template <class T, class S> void scal(idx n, S a, T *x, idx incx) {
  if (n <= 0) return;
  if constexpr (std::is_same_v<S, real_t<T>>) {
    real_t<T> *xf = flat(x);
    constexpr int w = is_complex_v<T> ? 2 : 1;
    if (incx == 1) {
      for (idx i = 0; i < w * n; ++i) xf[i] *= a;
    } else {
      xf = flat(first(x, n, incx));
      for (idx i = 0; i < n; ++i)
        for (int k = 0; k < w; ++k) xf[w * i * incx + k] *= a;
    }
  } else {
    using R = real_t<T>;
    R *xf = flat(first(x, n, incx));
    const R ar = a.real(), ai = a.imag();
    const idx s = 2 * incx;
    for (idx i = 0; i < n; ++i) {
      R xr = xf[i * s], xi = xf[i * s + 1];
      xf[i * s] = ar * xr - ai * xi;
      xf[i * s + 1] = ar * xi + ai * xr;
    }
  }
}

template <class T> void copy(idx n, const T *x, idx incx, T *y, idx incy) {
  if (n <= 0) return;
  if (incx == 1 && incy == 1) {
    const real_t<T> *xf = flat(x);
    real_t<T> *yf = flat(y);
    constexpr int w = is_complex_v<T> ? 2 : 1;
    for (idx i = 0; i < w * n; ++i) yf[i] = xf[i];
    return;
  }
  x = first(x, n, incx);
  y = first(y, n, incy);
  for (idx i = 0; i < n; ++i) y[i * incy] = x[i * incx];
}

template <class T> void swap(idx n, T *x, idx incx, T *y, idx incy) {
  if (n <= 0) return;
  if (incx == 1 && incy == 1) {
    real_t<T> *xf = flat(x), *yf = flat(y);
    constexpr int w = is_complex_v<T> ? 2 : 1;
    for (idx i = 0; i < w * n; ++i) {
      real_t<T> t = xf[i];
      xf[i] = yf[i];
      yf[i] = t;
    }
    return;
  }
  x = first(x, n, incx);
  y = first(y, n, incy);
  for (idx i = 0; i < n; ++i) {
    T t = x[i * incx];
    x[i * incx] = y[i * incy];
    y[i * incy] = t;
  }
}

// Plane rotation: x' = c x + s y, y' = c y - conj(s) x (c real; s real or
// of the element type).
template <class T, class S> void rot(idx n, T *x, idx incx, T *y, idx incy, real_t<T> c, S s) {
  if (n <= 0) return;
  if constexpr (std::is_same_v<S, real_t<T>>) {
    using R = real_t<T>;
    constexpr int w = is_complex_v<T> ? 2 : 1;
    if (incx == 1 && incy == 1) {
      R *xf = flat(x), *yf = flat(y);
      for (idx i = 0; i < w * n; ++i) {
        R a = xf[i], b = yf[i];
        xf[i] = c * a + s * b;
        yf[i] = c * b - s * a;
      }
      return;
    }
    R *xf = flat(first(x, n, incx)), *yf = flat(first(y, n, incy));
    for (idx i = 0; i < n; ++i)
      for (int k = 0; k < w; ++k) {
        R a = xf[w * i * incx + k], b = yf[w * i * incy + k];
        xf[w * i * incx + k] = c * a + s * b;
        yf[w * i * incy + k] = c * b - s * a;
      }
  } else {
    x = first(x, n, incx);
    y = first(y, n, incy);
    const S sc = nxl::NXL_CP_NS::conj(s);
    for (idx i = 0; i < n; ++i) {
      T a = x[i * incx], b = y[i * incy];
      x[i * incx] = c * a + mul(s, b);
      y[i * incy] = c * b - mul(sc, a);
    }
  }
}

// Modified rotation with H given by param (flag, h11, h21, h12, h22).
template <class T> void rotm(idx n, T *x, idx incx, T *y, idx incy, const T *param) {
  const T flag = param[0];
  if (n <= 0 || flag == T(-2)) return;
  T h11, h12, h21, h22;
  if (flag < 0) {
    h11 = param[1], h21 = param[2], h12 = param[3], h22 = param[4];
  } else if (flag == 0) {
    h11 = 1, h21 = param[2], h12 = param[3], h22 = 1;
  } else {
    h11 = param[1], h21 = -1, h12 = 1, h22 = param[4];
  }
  if (incx == 1 && incy == 1) {
    for (idx i = 0; i < n; ++i) {
      T a = x[i], b = y[i];
      x[i] = a * h11 + b * h12;
      y[i] = a * h21 + b * h22;
    }
    return;
  }
  x = first(x, n, incx);
  y = first(y, n, incy);
  for (idx i = 0; i < n; ++i) {
    T a = x[i * incx], b = y[i * incy];
    x[i * incx] = a * h11 + b * h12;
    y[i * incy] = a * h21 + b * h22;
  }
}

// ---------------------------------------------------------------- norms and sums
// Sum of |re| + |im| over the vector.
template <class T> real_t<T> asum(idx n, const T *x, idx incx) {
  using R = real_t<T>;
  if (n <= 0 || incx <= 0) return R(0);
  constexpr int w = is_complex_v<T> ? 2 : 1;
  const R *xf = flat(x);
  if (incx == 1) return block_sum<R>(w * n, [&](idx k) { return std::fabs(xf[k]); });
  R s = 0;
  for (idx i = 0; i < n; ++i)
    for (int k = 0; k < w; ++k) s += std::fabs(xf[w * i * incx + k]);
  return s;
}

// Euclidean norm. Single precision squares and sums in double, which can
// neither overflow nor underflow for float data. Double precision keeps three
// sums (Blue's algorithm): squares of tiny values scaled up, of huge values
// scaled down, and of the rest unscaled, then combines them.
template <class T> real_t<T> nrm2(idx n, const T *x, idx incx) {
  using R = real_t<T>;
  if (n <= 0) return R(0);
  constexpr int w = is_complex_v<T> ? 2 : 1;
  const R *xf = flat(first(x, n, incx));
  const idx m = w * n;
  auto at = [&](idx k) { return incx == 1 ? xf[k] : xf[(k / w) * w * incx + k % w]; };
  if constexpr (std::is_same_v<R, float>) {
    double s = incx == 1 ? block_sum<double>(m, [&](idx k) { double v = xf[k]; return v * v; })
                         : block_sum<double>(m, [&](idx k) { double v = at(k); return v * v; });
    return float(std::sqrt(s));
  } else {
    using L = std::numeric_limits<R>;
    // Thresholds and scalings of the three sums (powers of two).
    constexpr int emin = L::min_exponent, emax = L::max_exponent, dig = L::digits;
    const R tsml = std::ldexp(R(1), (emin - 1) / 2);                  // ceil((emin-1)/2)
    const R tbig = std::ldexp(R(1), (emax - dig + 1) / 2);            // floor((emax-dig+1)/2)
    const R ssml = std::ldexp(R(1), -((emin - dig - 1) / 2));         // -floor((emin-dig)/2)
    const R sbig = std::ldexp(R(1), -((emax + dig) / 2));             // -ceil((emax+dig-1)/2)
    auto big = [&](R v) { R a = std::fabs(v); return a > tbig ? (a * sbig) * (a * sbig) : R(0); };
    auto sml = [&](R v) { R a = std::fabs(v); return a < tsml ? (a * ssml) * (a * ssml) : R(0); };
    auto med = [&](R v) { R a = std::fabs(v); return (a > tbig || a < tsml) ? R(0) : a * a; };
    // Most vectors need no scaling: one pass of plain squares is the result
    // whenever it neither overflowed nor fell into the range where
    // underflowed squares could matter.
    const R plain = incx == 1 ? block_sum<R>(m, [&](idx k) { return xf[k] * xf[k]; })
                              : block_sum<R>(m, [&](idx k) { return at(k) * at(k); });
    if (plain <= L::max() && plain >= tsml * tsml * R(1ull << 52)) return std::sqrt(plain);
    R abig, asml, amed;
    if (incx == 1) {
      abig = block_sum<R>(m, [&](idx k) { return big(xf[k]); });
      asml = block_sum<R>(m, [&](idx k) { return sml(xf[k]); });
      amed = block_sum<R>(m, [&](idx k) { return med(xf[k]); });
    } else {
      abig = block_sum<R>(m, [&](idx k) { return big(at(k)); });
      asml = block_sum<R>(m, [&](idx k) { return sml(at(k)); });
      amed = block_sum<R>(m, [&](idx k) { return med(at(k)); });
    }
    R scl, sumsq;
    if (abig > 0) {
      if (amed > 0 || amed != amed) abig += (amed * sbig) * sbig;
      scl = 1 / sbig;
      sumsq = abig;
    } else if (asml > 0) {
      if (amed > 0 || amed != amed) {
        R a = std::sqrt(amed), b = std::sqrt(asml) / ssml;
        R lo = a < b ? a : b, hi = a < b ? b : a;
        scl = 1;
        sumsq = hi * hi * (1 + (lo / hi) * (lo / hi));
      } else {
        scl = 1 / ssml;
        sumsq = asml;
      }
    } else {
      scl = 1;
      sumsq = amed;
    }
    return scl * std::sqrt(sumsq);
  }
}

// ---------------------------------------------------------------- index of extreme
// First index (1-based) of the largest (Max) or smallest |re| + |im|; a NaN
// counts as the extreme, the first one wins.
template <class T, bool Max> idx iamax(idx n, const T *x, idx incx) {
  using R = real_t<T>;
  if (n <= 0 || incx <= 0) return 0;
  auto v = [&](idx i) { return abs1(x[i * incx]); };
  constexpr int W = acc_lanes<R>;
  R ext[W];
  bool nan[W];
  for (int j = 0; j < W; ++j) ext[j] = Max ? R(-1) : std::numeric_limits<R>::infinity(), nan[j] = false;
  idx i = 0;
  for (; i + W <= n; i += W)
    for (int j = 0; j < W; ++j) {
      R a = v(i + j);
      ext[j] = (Max ? a > ext[j] : a < ext[j]) ? a : ext[j];
      nan[j] |= a != a;
    }
  R e = ext[0];
  bool anynan = nan[0];
  for (int j = 1; j < W; ++j) {
    e = (Max ? ext[j] > e : ext[j] < e) ? ext[j] : e;
    anynan |= nan[j];
  }
  for (; i < n; ++i) {
    R a = v(i);
    e = (Max ? a > e : a < e) ? a : e;
    anynan |= a != a;
  }
  for (idx k = 0; k < n; ++k) {
    R a = v(k);
    if (anynan ? a != a : a == e) return k + 1;
  }
  return 1;
}

// ---------------------------------------------------------------- rotation setup
template <class R> void rotg_real(R *a, R *b, R *c, R *s) {
  const R safmin = std::numeric_limits<R>::min();
  const R safmax = 1 / safmin;
  R f = *a, g = *b;
  R af = std::fabs(f), ag = std::fabs(g);
  if (ag == 0) {
    *c = 1, *s = 0, *b = 0;
  } else if (af == 0) {
    *c = 0, *s = 1, *a = g, *b = 1;
  } else {
    R scl = af > ag ? af : ag;
    scl = scl < safmin ? safmin : (scl > safmax ? safmax : scl);
    R roe = af > ag ? f : g;
    R r = std::copysign(scl * std::sqrt((f / scl) * (f / scl) + (g / scl) * (g / scl)), roe);
    *c = f / r;
    *s = g / r;
    R z = af > ag ? *s : (*c != 0 ? 1 / *c : R(1));
    *a = r;
    *b = z;
  }
}

// Complex rotation: c real, s complex with c a + s b = r, -conj(s) a + c b = 0.
template <class R> void rotg_cplx(std::complex<R> *a, const std::complex<R> *b, R *c, std::complex<R> *s) {
  using C = std::complex<R>;
  C f = *a, g = *b;
  R af = std::hypot(f.real(), f.imag());
  if (af == 0) {
    *c = 0;
    *s = 1;
    *a = g;
    return;
  }
  R ag = std::hypot(g.real(), g.imag());
  R scale = af + ag;
  R fr = af / scale, gr = ag / scale;
  R norm = scale * std::sqrt(fr * fr + gr * gr);
  C alpha(f.real() / af, f.imag() / af);
  *c = af / norm;
  C t = mul(alpha, nxl::NXL_CP_NS::conj(g));
  *s = C(t.real() / norm, t.imag() / norm);
  *a = C(alpha.real() * norm, alpha.imag() * norm);
}

// Modified Givens rotation setup (Lawson, Hanson, Kincaid and Krogh): finds H
// with H (sqrt(d1) x1, sqrt(d2) y1)^T = (r, 0)^T and rescales d1, d2 into
// [1/gam^2, gam^2].
template <class R> void rotmg(R *d1, R *d2, R *x1, const R *y1, R *param) {
  const R gam = 4096, gsq = gam * gam, rgsq = 1 / gsq;
  R flag, h11 = 0, h12 = 0, h21 = 0, h22 = 0;
  auto zero_all = [&] {
    flag = -1;
    h11 = h12 = h21 = h22 = 0;
    *d1 = *d2 = *x1 = 0;
  };
  if (*d1 < 0) {
    zero_all();
  } else {
    R p2 = *d2 * *y1;
    if (p2 == 0) {
      param[0] = -2;
      return;
    }
    R p1 = *d1 * *x1, q2 = p2 * *y1, q1 = p1 * *x1;
    if (std::fabs(q1) > std::fabs(q2)) {
      h21 = -*y1 / *x1;
      h12 = p2 / p1;
      R u = 1 - h12 * h21;
      if (u > 0) {
        flag = 0;
        *d1 /= u;
        *d2 /= u;
        *x1 *= u;
      } else {
        zero_all();
      }
    } else if (q2 < 0) {
      zero_all();
    } else {
      flag = 1;
      h11 = p1 / p2;
      h22 = *x1 / *y1;
      R u = 1 + h11 * h22;
      R t = *d2 / u;
      *d2 = *d1 / u;
      *d1 = t;
      *x1 = *y1 * u;
    }
    auto to_full = [&] {
      if (flag == 0) h11 = h22 = 1;
      else if (flag > 0) h21 = -1, h12 = 1;
      flag = -1;
    };
    if (*d1 != 0) {
      while (*d1 <= rgsq || *d1 >= gsq) {
        to_full();
        if (*d1 <= rgsq) *d1 *= gsq, *x1 /= gam, h11 /= gam, h12 /= gam;
        else *d1 /= gsq, *x1 *= gam, h11 *= gam, h12 *= gam;
      }
    }
    if (*d2 != 0) {
      while (std::fabs(*d2) <= rgsq || std::fabs(*d2) >= gsq) {
        to_full();
        if (std::fabs(*d2) <= rgsq) *d2 *= gsq, h21 /= gam, h22 /= gam;
        else *d2 /= gsq, h21 *= gam, h22 *= gam;
      }
    }
  }
  if (flag < 0) {
    param[1] = h11, param[2] = h21, param[3] = h12, param[4] = h22;
  } else if (flag == 0) {
    param[2] = h21, param[3] = h12;
  } else {
    param[1] = h11, param[4] = h22;
  }
  param[0] = flag;
}

}  // namespace NXL_CP_NS
}  // namespace nxl

#define K_(name) NXL_KERNEL(nxl_blas_, _x##name)
#define NS nxl::NXL_CP_NS
using nxl::idx;

#define NXL_L1_KERNELS_COMMON(P, T, R, A)                                                        \
  extern "C" void K_(P##axpy)(const idx *n, const T *a, const T *x, const idx *incx, T *y,      \
                              const idx *incy) { NS::axpy<T>(*n, *a, x, *incx, y, *incy); }     \
  extern "C" void K_(P##copy)(const idx *n, const T *x, const idx *incx, T *y, const idx *incy) \
  { NS::copy<T>(*n, x, *incx, y, *incy); }                                                     \
  extern "C" void K_(P##swap)(const idx *n, T *x, const idx *incx, T *y, const idx *incy)       \
  { NS::swap<T>(*n, x, *incx, y, *incy); }                                                     \
  extern "C" void K_(P##scal)(const idx *n, const T *a, T *x, const idx *incx)                  \
  { NS::scal<T, T>(*n, *a, x, *incx); }                                                        \
  extern "C" R K_(A##nrm2)(const idx *n, const T *x, const idx *incx)                           \
  { return NS::nrm2<T>(*n, x, *incx); }                                                        \
  extern "C" R K_(A##asum)(const idx *n, const T *x, const idx *incx)                           \
  { return NS::asum<T>(*n, x, *incx); }                                                        \
  extern "C" idx K_(i##P##amax)(const idx *n, const T *x, const idx *incx)                      \
  { return NS::iamax<T, true>(*n, x, *incx); }                                                 \
  extern "C" idx K_(i##P##amin)(const idx *n, const T *x, const idx *incx)                      \
  { return NS::iamax<T, false>(*n, x, *incx); }

#define NXL_L1_KERNELS_REAL(P, T)                                                                \
  NXL_L1_KERNELS_COMMON(P, T, T, P)                                                              \
  extern "C" T K_(P##dot)(const idx *n, const T *x, const idx *incx, const T *y, const idx *incy) \
  { return NS::dot<T, false>(*n, x, *incx, y, *incy); }                                        \
  extern "C" void K_(P##rot)(const idx *n, T *x, const idx *incx, T *y, const idx *incy,        \
                             const T *c, const T *s)                                            \
  { NS::rot<T, T>(*n, x, *incx, y, *incy, *c, *s); }                                           \
  extern "C" void K_(P##rotm)(const idx *n, T *x, const idx *incx, T *y, const idx *incy,       \
                              const T *param) { NS::rotm<T>(*n, x, *incx, y, *incy, param); }   \
  extern "C" void K_(P##rotg)(T *a, T *b, T *c, T *s) { NS::rotg_real<T>(a, b, c, s); }          \
  extern "C" void K_(P##rotmg)(T *d1, T *d2, T *x1, const T *y1, T *param)                       \
  { NS::rotmg<T>(d1, d2, x1, y1, param); }

#define NXL_L1_KERNELS_CPLX(P, T, R, A, Q)                                                       \
  NXL_L1_KERNELS_COMMON(P, T, R, A)                                                              \
  extern "C" void K_(P##dotu)(T *res, const idx *n, const T *x, const idx *incx, const T *y,    \
                              const idx *incy) { *res = NS::dot<T, false>(*n, x, *incx, y, *incy); } \
  extern "C" void K_(P##dotc)(T *res, const idx *n, const T *x, const idx *incx, const T *y,    \
                              const idx *incy) { *res = NS::dot<T, true>(*n, x, *incx, y, *incy); } \
  extern "C" void K_(P##rot)(const idx *n, T *x, const idx *incx, T *y, const idx *incy,        \
                             const R *c, const T *s)                                            \
  { NS::rot<T, T>(*n, x, *incx, y, *incy, *c, *s); }                                           \
  extern "C" void K_(P##Q##rot)(const idx *n, T *x, const idx *incx, T *y, const idx *incy,     \
                                const R *c, const R *s)                                         \
  { NS::rot<T, R>(*n, x, *incx, y, *incy, *c, *s); }                                           \
  extern "C" void K_(P##Q##scal)(const idx *n, const R *a, T *x, const idx *incx)               \
  { NS::scal<T, R>(*n, *a, x, *incx); }                                                        \
  extern "C" void K_(P##rotg)(T *a, const T *b, R *c, T *s) { NS::rotg_cplx<R>(a, b, c, s); }

NXL_L1_KERNELS_REAL(s, float)
NXL_L1_KERNELS_REAL(d, double)
NXL_L1_KERNELS_CPLX(c, std::complex<float>, float, sc, s)
NXL_L1_KERNELS_CPLX(z, std::complex<double>, double, dz, d)

extern "C" float K_(sdsdot)(const idx *n, const float *sb, const float *x, const idx *incx,
                            const float *y, const idx *incy) {
  return float(double(*sb) + NS::dot_wide(*n, x, *incx, y, *incy));
}
extern "C" double K_(dsdot)(const idx *n, const float *x, const idx *incx, const float *y,
                            const idx *incy) {
  return NS::dot_wide(*n, x, *incx, y, *incy);
}
