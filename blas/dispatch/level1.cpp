// Level-1 BLAS dispatch layer (nxl_blas_<routine>): quick returns, the choice
// between the calling thread and an OpenMP team, the split into contiguous
// chunks and the combination of partial results; and the code-path entries
// (nxl_blas_x<routine>) with their lazily chosen kernels.
#include <cmath>
#include "blas/dispatch/level1_threading.h"
#include "service/codepath.h"

extern "C" {
void (*nxl_blas_l1_team_hook)(int requested, int actual) = nullptr;
}

namespace nxl {
namespace l1 {

// Threshold from which a routine may thread: 8192 single, 4096 double and
// single complex, 2048 double complex; scal and the norm, sum and index
// routines use twice that.
template <class T> inline constexpr idx base = 32768 / static_cast<idx>(sizeof(T));

// Two-vector reduction (dot products): k(size, xchunk, ychunk) -> partial.
template <class T, class K>
T dot(idx n, const T *x, idx incx, const T *y, idx incy, K k) {
  if (n <= 0) return T(0);
  return reduce<T>(n, base<T>, incx != 0 && incy != 0,
                   [&](Chunk c) { return k(c.size, x + offset(n, c, incx), y + offset(n, c, incy)); },
                   [](const T *s, int p) { return sum_fixed(s, p); });
}

// Two-vector update (axpy, copy, swap, rot).
template <class T, class X, class Y, class K>
void update2(idx n, X *x, idx incx, Y *y, idx incy, K k) {
  if (n <= 0) return;
  update(n, base<T>, incx != 0 && incy != 0,
         [&](Chunk c) { k(c.size, x + offset(n, c, incx), y + offset(n, c, incy)); });
}

// One-vector update (scal).
template <class T, class K> void update1(idx n, T *x, idx incx, K k) {
  if (n <= 0 || incx <= 0) return;
  update(n, 2 * base<T>, true, [&](Chunk c) { k(c.size, x + offset(n, c, incx)); });
}

template <class T, class K> real_t<T> asum(idx n, const T *x, idx incx, K k) {
  using R = real_t<T>;
  if (n <= 0 || incx <= 0) return R(0);
  return reduce<R>(n, 2 * base<T>, true, [&](Chunk c) { return k(c.size, x + offset(n, c, incx)); },
                   [](const R *s, int p) { return sum_fixed(s, p); });
}

// Norms of the chunks combined without overflow or underflow: NaN wins, then
// infinity; otherwise the largest partial scales the sum of squares (single
// precision sums its squares in double).
template <class R> R norm_combine(const R *s, int p) {
  bool inf = false;
  for (int i = 0; i < p; ++i) {
    if (s[i] != s[i]) return s[i];
    inf |= std::isinf(s[i]);
  }
  if (inf) return std::numeric_limits<R>::infinity();
  if constexpr (std::is_same_v<R, float>) {
    double q = 0;
    for (int i = 0; i < p; ++i) q += double(s[i]) * double(s[i]);
    return float(std::sqrt(q));
  } else {
    R m = 0;
    for (int i = 0; i < p; ++i) m = s[i] > m ? s[i] : m;
    if (m == 0) return 0;
    R q = 0;
    for (int i = 0; i < p; ++i) q += (s[i] / m) * (s[i] / m);
    return m * std::sqrt(q);
  }
}

template <class T, class K> real_t<T> nrm2(idx n, const T *x, idx incx, K k) {
  using R = real_t<T>;
  if (n <= 0) return R(0);
  return reduce<R>(n, 2 * base<T>, incx != 0,
                   [&](Chunk c) { return k(c.size, x + offset(n, c, incx)); }, norm_combine<R>);
}

// Index of the extreme: each chunk gives its first extreme (as a global
// 1-based index); the chunks are compared in index order, so the first
// extreme of the whole vector wins, and a NaN, once met, wins over all.
template <class T, bool Max, class K> idx iamax(idx n, const T *x, idx incx, K k) {
  if (n <= 0 || incx <= 0) return 0;
  auto member = [&](Chunk c) { return idx(c.start + k(c.size, x + offset(n, c, incx))); };
  auto combine = [&](const idx *s, int p) {
    idx best = 0;
    real_t<T> bv = 0;
    for (int i = 0; i < p; ++i) {
      if (s[i] <= 0) continue;
      const real_t<T> v = abs1(x[(s[i] - 1) * incx]);
      if (v != v) return s[i];
      if (best == 0 || (Max ? v > bv : v < bv)) best = s[i], bv = v;
    }
    return best;
  };
  return reduce<idx>(n, 2 * base<T>, true, member, combine);
}

}  // namespace l1
}  // namespace nxl

using nxl::idx;
namespace l1 = nxl::l1;

// ---------------------------------------------------------------- dispatch layer
#define NXL_L1_DISPATCH_COMMON(P, T, R, A)                                                       \
  extern "C" void nxl_blas_##P##axpy(const idx *n, const T *a, const T *x, const idx *incx,     \
                                     T *y, const idx *incy) {                                   \
    if (*n <= 0 || *a == T(0)) return;                                                          \
    l1::update2<T>(*n, x, *incx, y, *incy, [&](idx m, const T *xc, T *yc) {                     \
      nxl_blas_x##P##axpy(&m, a, xc, incx, yc, incy);                                           \
    });                                                                                         \
  }                                                                                             \
  extern "C" void nxl_blas_##P##copy(const idx *n, const T *x, const idx *incx, T *y,           \
                                     const idx *incy) {                                         \
    l1::update2<T>(*n, x, *incx, y, *incy, [&](idx m, const T *xc, T *yc) {                     \
      nxl_blas_x##P##copy(&m, xc, incx, yc, incy);                                              \
    });                                                                                         \
  }                                                                                             \
  extern "C" void nxl_blas_##P##swap(const idx *n, T *x, const idx *incx, T *y,                 \
                                     const idx *incy) {                                         \
    l1::update2<T>(*n, x, *incx, y, *incy, [&](idx m, T *xc, T *yc) {                           \
      nxl_blas_x##P##swap(&m, xc, incx, yc, incy);                                              \
    });                                                                                         \
  }                                                                                             \
  extern "C" void nxl_blas_##P##scal(const idx *n, const T *a, T *x, const idx *incx) {         \
    l1::update1<T>(*n, x, *incx, [&](idx m, T *xc) { nxl_blas_x##P##scal(&m, a, xc, incx); });  \
  }                                                                                             \
  extern "C" R nxl_blas_##A##nrm2(const idx *n, const T *x, const idx *incx) {                  \
    return l1::nrm2<T>(*n, x, *incx,                                                            \
                       [&](idx m, const T *xc) { return nxl_blas_x##A##nrm2(&m, xc, incx); });  \
  }                                                                                             \
  extern "C" R nxl_blas_##A##asum(const idx *n, const T *x, const idx *incx) {                  \
    return l1::asum<T>(*n, x, *incx,                                                            \
                       [&](idx m, const T *xc) { return nxl_blas_x##A##asum(&m, xc, incx); });  \
  }                                                                                             \
  extern "C" idx nxl_blas_i##P##amax(const idx *n, const T *x, const idx *incx) {               \
    return l1::iamax<T, true>(*n, x, *incx, [&](idx m, const T *xc) {                           \
      return nxl_blas_xi##P##amax(&m, xc, incx);                                                \
    });                                                                                         \
  }                                                                                             \
  extern "C" idx nxl_blas_i##P##amin(const idx *n, const T *x, const idx *incx) {               \
    return l1::iamax<T, false>(*n, x, *incx, [&](idx m, const T *xc) {                          \
      return nxl_blas_xi##P##amin(&m, xc, incx);                                                \
    });                                                                                         \
  }

#define NXL_L1_DISPATCH_REAL(P, T)                                                               \
  NXL_L1_DISPATCH_COMMON(P, T, T, P)                                                             \
  extern "C" T nxl_blas_##P##dot(const idx *n, const T *x, const idx *incx, const T *y,         \
                                 const idx *incy) {                                             \
    return l1::dot<T>(*n, x, *incx, y, *incy, [&](idx m, const T *xc, const T *yc) {           \
      return nxl_blas_x##P##dot(&m, xc, incx, yc, incy);                                        \
    });                                                                                         \
  }                                                                                             \
  extern "C" void nxl_blas_##P##rot(const idx *n, T *x, const idx *incx, T *y, const idx *incy, \
                                    const T *c, const T *s) {                                   \
    l1::update2<T>(*n, x, *incx, y, *incy, [&](idx m, T *xc, T *yc) {                           \
      nxl_blas_x##P##rot(&m, xc, incx, yc, incy, c, s);                                         \
    });                                                                                         \
  }                                                                                             \
  extern "C" void nxl_blas_##P##rotm(const idx *n, T *x, const idx *incx, T *y,                 \
                                     const idx *incy, const T *param) {                         \
    if (*n <= 0) return;                                                                        \
    nxl_blas_x##P##rotm(n, x, incx, y, incy, param);                                            \
  }                                                                                             \
  extern "C" void nxl_blas_##P##rotg(T *a, T *b, T *c, T *s) { nxl_blas_x##P##rotg(a, b, c, s); } \
  extern "C" void nxl_blas_##P##rotmg(T *d1, T *d2, T *x1, const T *y1, T *param) {             \
    nxl_blas_x##P##rotmg(d1, d2, x1, y1, param);                                                \
  }

#define NXL_L1_DISPATCH_CPLX(P, T, R, A, Q)                                                      \
  NXL_L1_DISPATCH_COMMON(P, T, R, A)                                                             \
  extern "C" void nxl_blas_##P##dotu(T *res, const idx *n, const T *x, const idx *incx,         \
                                     const T *y, const idx *incy) {                             \
    *res = l1::dot<T>(*n, x, *incx, y, *incy, [&](idx m, const T *xc, const T *yc) {            \
      T r;                                                                                      \
      nxl_blas_x##P##dotu(&r, &m, xc, incx, yc, incy);                                          \
      return r;                                                                                 \
    });                                                                                         \
  }                                                                                             \
  extern "C" void nxl_blas_##P##dotc(T *res, const idx *n, const T *x, const idx *incx,         \
                                     const T *y, const idx *incy) {                             \
    *res = l1::dot<T>(*n, x, *incx, y, *incy, [&](idx m, const T *xc, const T *yc) {            \
      T r;                                                                                      \
      nxl_blas_x##P##dotc(&r, &m, xc, incx, yc, incy);                                          \
      return r;                                                                                 \
    });                                                                                         \
  }                                                                                             \
  extern "C" void nxl_blas_##P##rot(const idx *n, T *x, const idx *incx, T *y, const idx *incy, \
                                    const R *c, const T *s) {                                   \
    l1::update2<T>(*n, x, *incx, y, *incy, [&](idx m, T *xc, T *yc) {                           \
      nxl_blas_x##P##rot(&m, xc, incx, yc, incy, c, s);                                         \
    });                                                                                         \
  }                                                                                             \
  extern "C" void nxl_blas_##P##Q##rot(const idx *n, T *x, const idx *incx, T *y,               \
                                       const idx *incy, const R *c, const R *s) {               \
    l1::update2<T>(*n, x, *incx, y, *incy, [&](idx m, T *xc, T *yc) {                           \
      nxl_blas_x##P##Q##rot(&m, xc, incx, yc, incy, c, s);                                      \
    });                                                                                         \
  }                                                                                             \
  extern "C" void nxl_blas_##P##Q##scal(const idx *n, const R *a, T *x, const idx *incx) {      \
    l1::update1<T>(*n, x, *incx, [&](idx m, T *xc) { nxl_blas_x##P##Q##scal(&m, a, xc, incx); }); \
  }                                                                                             \
  extern "C" void nxl_blas_##P##rotg(T *a, const T *b, R *c, T *s) {                            \
    nxl_blas_x##P##rotg(a, b, c, s);                                                            \
  }

NXL_L1_DISPATCH_REAL(s, float)
NXL_L1_DISPATCH_REAL(d, double)
NXL_L1_DISPATCH_CPLX(c, std::complex<float>, float, sc, s)
NXL_L1_DISPATCH_CPLX(z, std::complex<double>, double, dz, d)

extern "C" float nxl_blas_sdsdot(const idx *n, const float *sb, const float *x, const idx *incx,
                                 const float *y, const idx *incy) {
  if (*n <= 0) return *sb;
  return nxl_blas_xsdsdot(n, sb, x, incx, y, incy);
}
extern "C" double nxl_blas_dsdot(const idx *n, const float *x, const idx *incx, const float *y,
                                 const idx *incy) {
  if (*n <= 0) return 0.0;
  return nxl_blas_xdsdot(n, x, incx, y, incy);
}

// ---------------------------------------------------------------- code-path entries
#define I_ const idx *
#define NXL_L1_ENTRIES_COMMON(P, T, R, A)                                                        \
  NXL_CP_ENTRY(void, nxl_blas_x##P##axpy, nxl_blas_, _x##P##axpy,                               \
               (I_ n, const T *a, const T *x, I_ incx, T *y, I_ incy), (n, a, x, incx, y, incy)) \
  NXL_CP_ENTRY(void, nxl_blas_x##P##copy, nxl_blas_, _x##P##copy,                               \
               (I_ n, const T *x, I_ incx, T *y, I_ incy), (n, x, incx, y, incy))               \
  NXL_CP_ENTRY(void, nxl_blas_x##P##swap, nxl_blas_, _x##P##swap,                               \
               (I_ n, T *x, I_ incx, T *y, I_ incy), (n, x, incx, y, incy))                     \
  NXL_CP_ENTRY(void, nxl_blas_x##P##scal, nxl_blas_, _x##P##scal,                               \
               (I_ n, const T *a, T *x, I_ incx), (n, a, x, incx))                              \
  NXL_CP_ENTRY(R, nxl_blas_x##A##nrm2, nxl_blas_, _x##A##nrm2, (I_ n, const T *x, I_ incx),     \
               (n, x, incx))                                                                    \
  NXL_CP_ENTRY(R, nxl_blas_x##A##asum, nxl_blas_, _x##A##asum, (I_ n, const T *x, I_ incx),     \
               (n, x, incx))                                                                    \
  NXL_CP_ENTRY(idx, nxl_blas_xi##P##amax, nxl_blas_, _xi##P##amax, (I_ n, const T *x, I_ incx), \
               (n, x, incx))                                                                    \
  NXL_CP_ENTRY(idx, nxl_blas_xi##P##amin, nxl_blas_, _xi##P##amin, (I_ n, const T *x, I_ incx), \
               (n, x, incx))

#define NXL_L1_ENTRIES_REAL(P, T)                                                                \
  NXL_L1_ENTRIES_COMMON(P, T, T, P)                                                              \
  NXL_CP_ENTRY(T, nxl_blas_x##P##dot, nxl_blas_, _x##P##dot,                                    \
               (I_ n, const T *x, I_ incx, const T *y, I_ incy), (n, x, incx, y, incy))         \
  NXL_CP_ENTRY(void, nxl_blas_x##P##rot, nxl_blas_, _x##P##rot,                                 \
               (I_ n, T *x, I_ incx, T *y, I_ incy, const T *c, const T *s),                    \
               (n, x, incx, y, incy, c, s))                                                     \
  NXL_CP_ENTRY(void, nxl_blas_x##P##rotm, nxl_blas_, _x##P##rotm,                               \
               (I_ n, T *x, I_ incx, T *y, I_ incy, const T *param),                            \
               (n, x, incx, y, incy, param))                                                    \
  NXL_CP_ENTRY(void, nxl_blas_x##P##rotg, nxl_blas_, _x##P##rotg, (T * a, T * b, T * c, T * s),  \
               (a, b, c, s))                                                                    \
  NXL_CP_ENTRY(void, nxl_blas_x##P##rotmg, nxl_blas_, _x##P##rotmg,                             \
               (T * d1, T * d2, T * x1, const T *y1, T *param), (d1, d2, x1, y1, param))

#define NXL_L1_ENTRIES_CPLX(P, T, R, A, Q)                                                       \
  NXL_L1_ENTRIES_COMMON(P, T, R, A)                                                              \
  NXL_CP_ENTRY(void, nxl_blas_x##P##dotu, nxl_blas_, _x##P##dotu,                               \
               (T * res, I_ n, const T *x, I_ incx, const T *y, I_ incy),                       \
               (res, n, x, incx, y, incy))                                                      \
  NXL_CP_ENTRY(void, nxl_blas_x##P##dotc, nxl_blas_, _x##P##dotc,                               \
               (T * res, I_ n, const T *x, I_ incx, const T *y, I_ incy),                       \
               (res, n, x, incx, y, incy))                                                      \
  NXL_CP_ENTRY(void, nxl_blas_x##P##rot, nxl_blas_, _x##P##rot,                                 \
               (I_ n, T *x, I_ incx, T *y, I_ incy, const R *c, const T *s),                    \
               (n, x, incx, y, incy, c, s))                                                     \
  NXL_CP_ENTRY(void, nxl_blas_x##P##Q##rot, nxl_blas_, _x##P##Q##rot,                           \
               (I_ n, T *x, I_ incx, T *y, I_ incy, const R *c, const R *s),                    \
               (n, x, incx, y, incy, c, s))                                                     \
  NXL_CP_ENTRY(void, nxl_blas_x##P##Q##scal, nxl_blas_, _x##P##Q##scal,                         \
               (I_ n, const R *a, T *x, I_ incx), (n, a, x, incx))                              \
  NXL_CP_ENTRY(void, nxl_blas_x##P##rotg, nxl_blas_, _x##P##rotg,                               \
               (T * a, const T *b, R *c, T *s), (a, b, c, s))

NXL_L1_ENTRIES_REAL(s, float)
NXL_L1_ENTRIES_REAL(d, double)
NXL_L1_ENTRIES_CPLX(c, std::complex<float>, float, sc, s)
NXL_L1_ENTRIES_CPLX(z, std::complex<double>, double, dz, d)
NXL_CP_ENTRY(float, nxl_blas_xsdsdot, nxl_blas_, _xsdsdot,
             (I_ n, const float *sb, const float *x, I_ incx, const float *y, I_ incy),
             (n, sb, x, incx, y, incy))
NXL_CP_ENTRY(double, nxl_blas_xdsdot, nxl_blas_, _xdsdot,
             (I_ n, const float *x, I_ incx, const float *y, I_ incy), (n, x, incx, y, incy))
