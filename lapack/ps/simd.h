// Register-width arithmetic for the small-matrix kernels, written once with
// the compiler's generic vectors: a vector is 64 bytes of reals (one zmm on
// the 512-bit paths, two ymm or four xmm on the others), and a complex
// element is a pair of adjacent lanes. Columns are walked in windows of one
// vector; a window that reaches outside the rows to change is merged lane by
// lane with what it loaded, so those lanes are written back bit for bit.
#ifndef NXL_LAPACK_PS_SIMD_H
#define NXL_LAPACK_PS_SIMD_H

#include <cstdint>
#include <type_traits>
#include "service/scalar.h"

// Vectors pass between inline functions of one code path only, never across
// paths, so their calling convention is private to each build.
#pragma clang diagnostic ignored "-Wpsabi"

namespace nxl {
inline namespace NXL_LOCAL_NS {
namespace ps {

template <class R> struct vtypes;
template <> struct vtypes<double> {
  typedef double v __attribute__((vector_size(64)));
  typedef int64_t m __attribute__((vector_size(64)));
  static v swap(v x) { return __builtin_shufflevector(x, x, 1, 0, 3, 2, 5, 4, 7, 6); }
  static m lane() { return m{0, 1, 2, 3, 4, 5, 6, 7}; }
  static v sign() { return v{1, -1, 1, -1, 1, -1, 1, -1}; }
  static m re_sign() { return m{INT64_MIN, 0, INT64_MIN, 0, INT64_MIN, 0, INT64_MIN, 0}; }
};
template <> struct vtypes<float> {
  typedef float v __attribute__((vector_size(64)));
  typedef int32_t m __attribute__((vector_size(64)));
  static v swap(v x) { return __builtin_shufflevector(x, x, 1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14); }
  static m lane() { return m{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}; }
  static v sign() { return v{1, -1, 1, -1, 1, -1, 1, -1, 1, -1, 1, -1, 1, -1, 1, -1}; }
  static m re_sign() {
    return m{INT32_MIN, 0, INT32_MIN, 0, INT32_MIN, 0, INT32_MIN, 0,
             INT32_MIN, 0, INT32_MIN, 0, INT32_MIN, 0, INT32_MIN, 0};
  }
};

template <class R> constexpr R R_neg_one() { return R(-1); }

// Vector view of a column of T (real or complex).
template <class T> struct simd {
  using R = real_t<T>;
  using V = typename vtypes<R>::v;
  using M = typename vtypes<R>::m;
  static constexpr bool cplx = is_complex_v<T>;
  static constexpr idx per = cplx ? 2 : 1;             // reals per element
  static constexpr idx E = idx(64 / sizeof(R)) / per;  // elements per vector

  static V load(const T *p) {
    V v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
  }
  static void store(T *p, V v) { __builtin_memcpy(p, &v, sizeof v); }
  static V splat(R x) {
    V v;
    for (idx k = 0; k < E * per; ++k) v[k] = x;
    return v;
  }
  static V abs(V x) { return (V)((M)x & ~(M)splat(R(-0.0))); }
  // Lanes of the elements lo..hi-1 of a window.
  using Lane = std::conditional_t<sizeof(R) == 8, int64_t, int32_t>;
  static M mask(idx lo, idx hi) {
    M l = vtypes<R>::lane();
    return (l >= static_cast<Lane>(lo * per)) & (l < static_cast<Lane>(hi * per));
  }
  static V blend(M m, V yes, V no) { return (V)(((M)yes & m) | ((M)no & ~m)); }

  // i * x for every complex element of x (x itself for reals): the pair
  // (re, im) becomes (-im, re), a lane swap and a sign flip, no arithmetic.
  // A product x * f is then x * re(f) + rot(x) * im(f): two multiply-adds
  // on whole vectors, and a rot(x) reused over many factors costs nothing.
  static V rot(V x) {
    if constexpr (cplx) return (V)((M)vtypes<R>::swap(x) ^ vtypes<R>::re_sign());
    else return x;
  }

  // x * f, or x * conj(f) when Conj, for every element of x.
  template <bool Conj> struct factor {
    V r, i;  // f's real part and (conjugated) imaginary part on every lane
    explicit factor(T f) {
      if constexpr (cplx) {
        r = splat(f.real());
        i = splat(Conj ? -f.imag() : f.imag());
      } else {
        r = splat(f);
      }
    }
    V times(V x) const {
      if constexpr (cplx) return x * r + rot(x) * i;
      else return x * r;
    }
    // acc - x * f with xr = rot(x): one multiply-add per real product.
    V minus(V acc, V x, V xr) const {
      acc -= x * r;
      if constexpr (cplx) acc -= xr * i;
      (void)xr;
      return acc;
    }
  };
};


// Walks the rows [lo, hi) of a column in windows of one vector from the
// bottom up: f(ws, l, top) gets the window [ws, ws + E) and the rows [l, top)
// to change in it. Needs hi >= E or a column of at least E rows.
template <class T, class F> inline void windows(idx lo, idx hi, F f) {
  constexpr idx E = simd<T>::E;
  for (idx top = hi; top > lo;) {
    const idx ws = top - E > 0 ? top - E : 0, l = ws > lo ? ws : lo;
    f(ws, l, top);
    top = l;
  }
}

// Stores r over the window at p + ws, keeping v on the lanes outside [l, top).
template <class T>
inline void put(T *p, idx ws, idx l, idx top, typename simd<T>::V r, typename simd<T>::V v) {
  using S = simd<T>;
  S::store(p + ws, (l == ws && top == ws + S::E) ? r : S::blend(S::mask(l - ws, top - ws), r, v));
}

// dst[i] -= src[i] * f (or * conj(f)) for the rows [lo, hi).
template <class T, bool Conj> void column_axpy(idx lo, idx hi, T *dst, const T *src, T f) {
  using S = simd<T>;
  const typename S::template factor<Conj> ff(f);
  windows<T>(lo, hi, [&](idx ws, idx l, idx top) {
    auto v = S::load(dst + ws);
    const auto x = S::load(src + ws);
    put(dst, ws, l, top, ff.minus(v, x, S::rot(x)), v);
  });
}

// dst[i] *= s for the rows [lo, hi).
template <class T> void column_scale(idx lo, idx hi, T *dst, T s) {
  using S = simd<T>;
  const typename S::template factor<false> ff(s);
  windows<T>(lo, hi, [&](idx ws, idx l, idx top) {
    auto v = S::load(dst + ws);
    put(dst, ws, l, top, ff.times(v), v);
  });
}

// One tile of block_update: NW windows from ws (changing the rows [l, top))
// by the NC columns c0.. of dst. Each product is kept in two accumulators:
// src times the coefficients' real parts, and src times their imaginary
// parts, turned by i (rot) once at the end, so the loop over k is only
// multiply-adds into independent registers, no lane shuffles.
template <class T, int NW, int NC, bool Conj, bool Diag, class Coef>
__attribute__((always_inline)) inline void update_tile(idx lo, idx ws, idx l, idx top, T *dst, idx ldd, idx c0,
                                                       const T *src, idx lds, idx K, Coef &coef) {
  using S = simd<T>;
  using V = typename S::V;
  constexpr idx E = S::E;
  V ar[NW][NC], ai[NW][NC];
  for (int w = 0; w < NW; ++w)
    for (int c = 0; c < NC; ++c) {
      ar[w][c] = S::load(dst + ws + w * E + (c0 + c) * ldd);
      ai[w][c] = S::splat(0);
    }
  for (idx k = 0; k < K; ++k) {
    V x[NW];
    for (int w = 0; w < NW; ++w) x[w] = S::load(src + ws + w * E + k * lds);
    for (int c = 0; c < NC; ++c) {
      const T f = coef(k, c0 + c);
      const V fr = S::splat(re(f));
      for (int w = 0; w < NW; ++w) ar[w][c] -= x[w] * fr;
      if constexpr (S::cplx) {
        const V fi = S::splat(im(f));
        for (int w = 0; w < NW; ++w) ai[w][c] += x[w] * fi;
      }
    }
  }
  for (int w = 0; w < NW; ++w) {
    const idx wl = ws + w * E > l ? ws + w * E : l, wt = ws + (w + 1) * E < top ? ws + (w + 1) * E : top;
    for (int c = 0; c < NC; ++c) {
      V r = ar[w][c];
      if constexpr (S::cplx) r = Conj ? r + S::rot(ai[w][c]) : r - S::rot(ai[w][c]);
      const idx cg = c0 + c, from = Diag && wl < lo + cg ? lo + cg : wl;
      T *d = dst + cg * ldd;
      if (from == ws + w * E && wt == ws + (w + 1) * E) S::store(d + ws + w * E, r);
      else if (from < wt) put(d, ws + w * E, from, wt, r, S::load(d + ws + w * E));
    }
  }
}

// Tile shape of block_update: as many accumulators as leave registers for
// the source windows and the coefficients (32 vector registers on the
// 512-bit paths, 16 on the others, where a vector here is two or four).
// Complex rectangles take three windows (24 accumulators, three loads and
// eight broadcasts per 24 multiply-adds); a triangle's columns keep two,
// where the tiles on the diagonal would waste more of a taller one.
template <class T, bool Diag = false> struct tile_shape {
#if defined(__AVX512F__)
  static constexpr int NW = is_complex_v<T> && !Diag ? 3 : 2, NC = is_complex_v<T> ? 4 : 8;
#else
  static constexpr int NW = 1, NC = is_complex_v<T> ? 2 : 4;
#endif
};

// The columns c < ncols of dst (rows [lo, hi)) less a rank-K product:
// dst_c -= sum_k src_k * coef(k, c) (conjugated coefficients when Conj), by
// tiles of whole windows from the bottom up and groups of columns. With
// Diag, column c changes only from row lo + c down (a triangle's columns).
// Needs hi >= E or columns of at least E rows; src and dst must not overlap.
template <class T, bool Conj, bool Diag, class Coef>
void block_update(idx lo, idx hi, T *dst, idx ldd, idx ncols, const T *src, idx lds, idx K, Coef coef) {
  using S = simd<T>;
  constexpr idx E = S::E;
  constexpr int NW = tile_shape<T, Diag>::NW, NC = tile_shape<T, Diag>::NC;
  // The columns in groups of NC, then NC / 2, ... for the rest.
  auto columns = [&]<int W>(idx ws, idx l, idx top) __attribute__((always_inline)) {
    idx c0 = 0;
    for (; c0 + NC <= ncols; c0 += NC) update_tile<T, W, NC, Conj, Diag>(lo, ws, l, top, dst, ldd, c0, src, lds, K, coef);
    if constexpr (NC >= 8)
      if (c0 + 4 <= ncols) {
        update_tile<T, W, 4, Conj, Diag>(lo, ws, l, top, dst, ldd, c0, src, lds, K, coef);
        c0 += 4;
      }
    if constexpr (NC >= 4)
      if (c0 + 2 <= ncols) {
        update_tile<T, W, 2, Conj, Diag>(lo, ws, l, top, dst, ldd, c0, src, lds, K, coef);
        c0 += 2;
      }
    if (c0 < ncols) update_tile<T, W, 1, Conj, Diag>(lo, ws, l, top, dst, ldd, c0, src, lds, K, coef);
  };
  for (idx top = hi; top > lo;) {
    if (NW > 1 && top - NW * E >= lo) {
      columns.template operator()<NW>(top - NW * E, top - NW * E, top);
      top -= NW * E;
    } else if (NW > 2 && top - 2 * E >= lo) {
      columns.template operator()<2>(top - 2 * E, top - 2 * E, top);
      top -= 2 * E;
    } else {
      const idx ws = top - E > 0 ? top - E : 0, l = ws > lo ? ws : lo;
      columns.template operator()<1>(ws, l, top);
      top = l;
    }
  }
}

// block_update of JB columns (a block of a triangle's columns).
template <class T, int JB, bool Conj, bool Diag, class Coef>
void panel_update(idx lo, idx hi, T *dst, idx ldd, const T *src, idx lds, idx K, Coef coef) {
  block_update<T, Conj, Diag>(lo, hi, dst, ldd, JB, src, lds, K,
                              [&](idx k, idx c) { return coef(k, static_cast<int>(c)); });
}

// Running pivot search over the windows of a column: per lane the largest
// |re| + |im| seen and its row, and the lanes that saw a NaN. Windows come
// from the bottom up, so a lane takes the upper row on ties.
template <class T> struct pivot_search {
  using S = simd<T>;
  using V = typename S::V;
  using M = typename S::M;
  using Lane = typename S::Lane;
  V best = S::splat(R_neg_one<real_t<T>>());
  M row = {};
  M nan = {};

  // The values v of the window at ws, of which the rows [l, top) count.
  __attribute__((always_inline)) void add(V v, idx ws, idx l, idx top) {
    const M lane = vtypes<real_t<T>>::lane() >> (S::cplx ? 1 : 0);
    V a = S::abs(v);
    if constexpr (S::cplx) a = a + vtypes<real_t<T>>::swap(a);
    nan |= (a != a);
    a = S::blend(S::mask(l - ws, top - ws), a, S::splat(R_neg_one<real_t<T>>()));
    const M take = a >= best;
    best = S::blend(take, a, best);
    row = (take & (lane + static_cast<Lane>(ws))) | (~take & row);
  }

  // The first row of largest magnitude among the rows [lo, hi) of x, or
  // the first NaN.
  __attribute__((always_inline)) idx result(idx lo, idx hi, const T *x) const {
    bool any_nan = false;
    for (idx k = 0; k < S::E * S::per; ++k) any_nan |= nan[k] != 0;
    if (any_nan) {
      for (idx i = lo; i < hi; ++i)
        if (abs1(x[i]) != abs1(x[i])) return i;
    }
    // The two lanes of a complex element hold the same magnitude and row.
    // Pairs of lanes, then pairs of pairs, ...: a chain of log2(E)
    // comparisons rather than E - 1. Each one selects rather than branches:
    // which lane holds the pivot is data, and a mispredicted branch on it
    // would sit on the chain of every column step.
    constexpr idx E = S::E;
    real_t<T> b[E];
    idx r[E];
    for (idx e = 0; e < E; ++e) {
      b[e] = best[e * S::per];
      r[e] = row[e * S::per];
    }
    for (idx s = 1; s < E; s *= 2)
      for (idx e = 0; e + s < E; e += 2 * s) {
        const bool take = (b[e + s] > b[e]) | ((b[e + s] == b[e]) & (r[e + s] < r[e]));
        b[e] = __builtin_unpredictable(take) ? b[e + s] : b[e];
        r[e] = __builtin_unpredictable(take) ? r[e + s] : r[e];
      }
    return r[0];
  }
};

// Row of the pivot among the rows [lo, hi) of x (m >= E rows): the first of
// largest |re| + |im|, or the first NaN.
template <class T> __attribute__((always_inline)) inline idx pivot_index(idx lo, idx hi, const T *x) {
  pivot_search<T> ps;
  windows<T>(lo, hi, [&](idx ws, idx l, idx top) { ps.add(simd<T>::load(x + ws), ws, l, top); });
  return ps.result(lo, hi, x);
}

// dst_j -= sum_{q < K} src_q * coef(q, j) for the columns j < ncols of dst
// (rows [lo, hi)): a rank-K update with the K source windows held in
// registers while the destination columns stream through once. With
// `first`, the new values of column 0 also go to its pivot search.
template <class T, int K, class Coef>
void rank_update(idx lo, idx hi, T *dst, idx ldd, idx ncols, const T *src, idx lds, Coef coef,
                 pivot_search<T> *first = nullptr) {
  using S = simd<T>;
  using V = typename S::V;
  windows<T>(lo, hi, [&](idx ws, idx l, idx top) {
    V x[K], xr[K];
    for (int q = 0; q < K; ++q) {
      x[q] = S::load(src + ws + q * lds);
      xr[q] = S::rot(x[q]);
    }
    for (idx j = 0; j < ncols; ++j) {
      T *d = dst + j * ldd;
      const V v = S::load(d + ws);
      V r = v;
      for (int q = 0; q < K; ++q) r = typename S::template factor<false>(coef(q, j)).minus(r, x[q], xr[q]);
      put(d, ws, l, top, r, v);
      if (j == 0 && first) first->add(r, ws, l, top);
    }
  });
}

}  // namespace ps
}  // namespace NXL_LOCAL_NS
}  // namespace nxl

#endif  // NXL_LAPACK_PS_SIMD_H
