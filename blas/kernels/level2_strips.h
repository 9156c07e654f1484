// Band products by column strips with the partial sums of the rows held in
// registers.
//
// A band matrix with kl sub- and ku super-diagonals (w = kl + ku + 1 band
// rows) is read column after column, in the order of its storage, so the
// matrix streams through the caches as one sequence. The columns are taken
// VB at a time (VB elements per vector): strip s holds the columns
// [g + ku, g + ku + VB) with g = r0 + s*VB, and every column of it meets
// the rows [g, g + VB + w - 1), a window of NV vectors of rows starting at
// row g. Those NV vectors of partial sums stay in registers for the whole
// run. After strip s, the rows [g, g + VB) have seen their last column: the
// first vector of the window is complete and leaves it, and the window moves
// down by one vector.
//
// Column c of a strip covers the lanes [c, c + w) of the window: vector 0
// from lane c on, vectors 1 .. NV-3 entirely, vectors NV-2 and NV-1 up to a
// lane set by w. The three edge vectors go through lane masks computed once
// per call; the others are whole loads.
//
// Every row's sum starts at zero and adds its columns in increasing order
// (complex: the real part of x, then the imaginary one, per column), so its
// bits depend neither on where the run starts nor on the vector lane the row
// falls in: a product split among threads by rows gives the bits of the
// product on one thread.
#ifndef NXL_BLAS_LEVEL2_STRIPS_H
#define NXL_BLAS_LEVEL2_STRIPS_H

#include <utility>

#include "blas/kernels/level2_core.h"

namespace nxl {
inline namespace NXL_CP_NS {
namespace l2 {

// Where the completed rows go: dst[r] = (add ? add[r] : 0) + (scaled ?
// alpha*s : s) for the sum s of row r.
template <class T>
struct BandOut {
  T *dst;
  const T *add;
  T alpha;
  bool scaled;
  void put(idx r, const T *s, idx cnt) const {
    for (idx i = 0; i < cnt; ++i) {
      const T v = scaled ? mul(alpha, s[i]) : s[i];
      dst[r + i] = add ? add[r + i] + v : v;
    }
  }
};

// Largest window, in vectors, that the registers of the code path hold next
// to the broadcast column values.
inline constexpr int kStripMaxNV = kVecBytes == 64 ? 20 : 10;

// Window vectors for w band rows: ceil((w + VB - 1) / VB).
template <class T>
constexpr idx strip_window(idx w) {
  constexpr idx VB = idx(lanes<real_t<T>>::VL / (is_complex_v<T> ? 2 : 1));
  return (w + 2 * VB - 2) / VB;
}

// The window of NV vectors of partial sums and the addition of one column
// to it. Dir = 1: window vector v holds the rows v vectors below the
// strip's own; Dir = -1: v vectors above them (the column read backwards).
template <class T, int NV, int Dir>
struct Window {
  using R = real_t<T>;
  using X = lanes<R>;
  using V = typename X::V;
  using K = typename X::K;
  static constexpr int VL = X::VL;
  static constexpr bool Cx = is_complex_v<T>;
  static constexpr idx W = Cx ? 2 : 1;
  static constexpr int VB = int(VL / W);
  V acc[NV];
  // Masks of the edge vectors 0, NV-2 and NV-1 for column c of a strip.
  K k0[VB], k1[VB], k2[VB];

  // lanes(c, v) gives the lane range [lo, hi) of column c in vector v.
  template <class F>
  void init(F lanes_of) {
    for (int c = 0; c < VB; ++c) {
      auto mk = [&](idx v) {
        idx lo, hi;
        lanes_of(c, v, lo, hi);
        lo = lo < 0 ? 0 : lo;
        hi = hi > VB ? VB : hi;
        if (hi < lo) hi = lo;
        return X::kmask(int(W * lo), int(W * hi));
      };
      k0[c] = mk(0);
      k1[c] = mk(NV - 2);
      k2[c] = mk(NV - 1);
    }
#pragma clang loop unroll(full)
    for (int v = 0; v < NV; ++v) acc[v] = V{} * R(0);
  }

  // Column c times t, its vector v at p + Dir*v*VL: vector 0 when Head
  // (whole for c = 0 on a window of three vectors or more), vectors
  // 1 .. NV-3 whole, NV-2 and NV-1 masked.
  template <int c, bool Head>
  __attribute__((always_inline)) void column(const R *p, T t) {
    V tr, ti;
    if constexpr (Cx) {
      bcast_scale(t, tr, ti);
    } else {
      tr = X::splat(t);
      ti = V{} * R(0);
    }
    auto whole = [&](int v) __attribute__((always_inline)) {
      const V av = X::load(p + Dir * v * VL);
      acc[v] = acc[v] + av * tr;
      if constexpr (Cx) acc[v] = acc[v] + X::swap(av) * ti;
    };
    auto masked = [&](int v, K k) __attribute__((always_inline)) {
      const V av = X::load_k(p + Dir * v * VL, k);
      acc[v] = X::madd_k(acc[v], av, tr, k);
      if constexpr (Cx) acc[v] = X::madd_k(acc[v], X::swap(av), ti, k);
    };
    if constexpr (Head) {
      if constexpr (c == 0 && NV > 2) whole(0);
      else masked(0, k0[c]);
    }
#pragma clang loop unroll(full)
    for (int v = 1; v < NV - 2; ++v) whole(v);
    if constexpr (NV - 2 >= 1) masked(NV - 2, k1[c]);
    if constexpr (NV - 1 >= 1) masked(NV - 1, k2[c]);
  }

  // The columns j0 + c of a strip (c < VB), those in [jlo, jhi) only
  // unless Whole; column c's vector 0 at base + c*cstep.
  template <bool Head, bool Whole>
  __attribute__((always_inline)) void strip(idx j0, idx jlo, idx jhi, const R *base, idx cstep,
                                            const T *x) {
    auto each = [&](auto c_) __attribute__((always_inline)) {
      constexpr int c = decltype(c_)::value;
      if (Whole || (j0 + c >= jlo && j0 + c < jhi)) column<c, Head>(base + c * cstep, x[j0 + c]);
    };
    [&]<int... C>(std::integer_sequence<int, C...>) __attribute__((always_inline)) {
      (each(std::integral_constant<int, C>{}), ...);
    }(std::make_integer_sequence<int, VB>{});
  }

  // The sums of vector 0 into s[0..VB).
  __attribute__((always_inline)) void front(T *s) const { X::store(reinterpret_cast<R *>(s), acc[0]); }
  // Vector 0 leaves the window; the others move up one.
  __attribute__((always_inline)) void shift() {
#pragma clang loop unroll(full)
    for (int v = 0; v + 1 < NV; ++v) acc[v] = acc[v + 1];
    acc[NV - 1] = V{} * R(0);
  }
};

// Rows [r0, r1) of A x: row r sums A(r, j) x[j] over the columns j in
// [max(0, r - kl), min(n, r + ku + 1)); A(r, j) at a[j*lda + off + r - j],
// unit-stride x. Rows of the window outside [r0, r1) are computed from
// stored band elements only and never written. Column c of a strip covers
// the lanes [c - v*VB, c + w - v*VB) of window vector v.
template <class T, int NV>
void band_strips_nv(idx r0, idx r1, idx n, idx kl, idx ku, const T *a, idx lda, idx off,
                    const T *x, const BandOut<T> &out) {
  using Win = Window<T, NV, 1>;
  constexpr idx VB = Win::VB, W = Win::W;
  const idx w = kl + ku + 1;
  Win win;
  win.init([&](idx c, idx v, idx &lo, idx &hi) {
    lo = c - v * VB;
    hi = c + w - v * VB;
  });
  const idx jlo = r0 - kl > 0 ? r0 - kl : 0, jhi = r1 + ku < n ? r1 + ku : n;
  const auto *ar = reinterpret_cast<const typename Win::R *>(a);
  const idx cstep = W * (lda - 1);
  // The first strip reaches column jlo.
  const idx d0 = jlo - ku - r0;
  const idx s0 = d0 >= 0 ? d0 / VB : -((-d0 + VB - 1) / VB);
  T res[VB];
  for (idx s = s0; s * VB < r1 - r0; ++s) {
    const idx g = r0 + s * VB, j0 = g + ku;
    const auto *base = ar + W * (j0 * lda + off - ku);
    if (j0 >= jlo && j0 + VB <= jhi) win.template strip<true, true>(j0, jlo, jhi, base, cstep, x);
    else win.template strip<true, false>(j0, jlo, jhi, base, cstep, x);
    if (s >= 0) {
      win.front(res);
      out.put(g, res, r1 - g < VB ? r1 - g : VB);
    }
    win.shift();
  }
}

// The same for any band width; false when the window does not fit the
// registers (the caller takes another algorithm).
template <class T>
bool band_strips(idx r0, idx r1, idx n, idx kl, idx ku, const T *a, idx lda, idx off,
                 const T *x, const BandOut<T> &out) {
  const idx w = kl + ku + 1;
  if (w < 1) return false;
  const idx nv = strip_window<T>(w);
  if (nv > kStripMaxNV) return false;
  if (r1 <= r0) return true;
  bool done = false;
  [&]<int... I>(std::integer_sequence<int, I...>) {
    ((nv == I + 1 ? (band_strips_nv<T, I + 1>(r0, r1, n, kl, ku, a, lda, off, x, out), done = true)
                  : false),
     ...);
  }(std::make_integer_sequence<int, kStripMaxNV>{});
  return done;
}

// Substitution on the rows [rb, re) of a band triangle with k off-diagonals
// (A(r, j) at a[j*lda + off + r - j]): v[r - b] holds b_r less the sums of
// the columns outside the rows; x[r] gets the solution. Upper triangles
// from the last row up, lower ones from the first down; v is updated in
// place.
template <class T>
inline void band_substitute(bool upper, bool unit, idx k, const T *a, idx lda, idx off, T *x,
                            T *v, idx b, idx rb, idx re) {
  for (idx q = 0; q < re - rb; ++q) {
    const idx j = upper ? re - 1 - q : rb + q;
    const T *col = a + j * lda + off - j;  // A(r, j) at col[r]
    const T xj = unit ? v[j - b] : div(v[j - b], col[j]);
    x[j] = xj;
    if (upper) {
      for (idx r = j - k > rb ? j - k : rb; r < j; ++r) v[r - b] = v[r - b] - mul(col[r], xj);
    } else {
      const idx r1 = j + k + 1 < re ? j + k + 1 : re;
      for (idx r = j + 1; r < r1; ++r) v[r - b] = v[r - b] - mul(col[r], xj);
    }
  }
}

// The same on VB rows [b, b + VB) that lie inside the band of each other
// (k >= VB - 1), unrolled: v stays in registers, and every element sees the
// operations of band_substitute in the same order.
template <class T, int VB, bool Up>
__attribute__((always_inline)) inline void block_substitute(bool unit, const T *a, idx lda, idx off,
                                                            T *x, T *v, idx b) {
#pragma clang loop unroll(full)
  for (int q = 0; q < VB; ++q) {
    const int c = Up ? VB - 1 - q : q;
    const idx j = b + c;
    const T *col = a + j * lda + off - j;
    const T xj = unit ? v[c] : div(v[c], col[j]);
    x[j] = xj;
#pragma clang loop unroll(full)
    for (int r = Up ? 0 : c + 1; r < (Up ? c : VB); ++r) v[r] = v[r] - mul(col[b + r], xj);
  }
}

// Band triangular solve A x = b with k off-diagonals, unit-stride x, by
// column strips: lower triangles from the first strip down, upper ones from
// the last strip up (Up). The window holds, for the rows of the strip and
// the k rows beyond it, the sums of A(r, j) x[j] over the columns already
// solved; vector 0 is the strip's own rows. A strip solves its own
// triangle by substitution from those sums, then adds its columns, times
// the values just found, to the rest of the window, and the window moves
// one vector on. A(r, j) is at a[j*lda + off + r - j] (off = k for upper
// triangles, 0 for lower ones).
//
// Column c of a strip covers the lanes [0, c + k + 1 - v*VB) of window
// vector v >= 1 going down, [c - k + v*VB, VB) going up (vector v then
// holds the rows v vectors above the strip).
template <class T, int NV, bool Up>
void band_solve_nv(bool unit, idx n, idx k, const T *a, idx lda, T *x) {
  using Win = Window<T, NV, Up ? -1 : 1>;
  constexpr idx VB = Win::VB, W = Win::W;
  const idx off = Up ? k : 0;
  Win win;
  win.init([&](idx c, idx v, idx &lo, idx &hi) {
    lo = Up ? c - k + v * VB : 0;
    hi = Up ? VB : c + k + 1 - v * VB;
  });
  const auto *ar = reinterpret_cast<const typename Win::R *>(a);
  const idx cstep = W * (lda - 1);
  const idx nb = (n + VB - 1) / VB;
  T s[VB], v[VB];
  for (idx bi = 0; bi < nb; ++bi) {
    const idx j0 = Up ? n - (bi + 1) * VB : bi * VB;
    const idx rb = j0 > 0 ? j0 : 0, re = j0 + VB < n ? j0 + VB : n;
    const bool inner = j0 >= 0 && j0 + VB <= n;
    win.front(s);
    for (idx r = rb; r < re; ++r) v[r - j0] = x[r] - s[r - j0];
    if (inner && k >= VB - 1) block_substitute<T, int(VB), Up>(unit, a, lda, off, x, v, j0);
    else band_substitute(Up, unit, k, a, lda, off, x, v, j0, rb, re);
    const auto *base = ar + W * (j0 * lda + off);
    if (inner) win.template strip<false, true>(j0, 0, n, base, cstep, x);
    else win.template strip<false, false>(j0, 0, n, base, cstep, x);
    win.shift();
  }
}

// The same for any band width; false when the window does not fit the
// registers.
template <class T>
bool band_solve_strips(bool upper, bool unit, idx n, idx k, const T *a, idx lda, T *x) {
  constexpr idx VB = idx(lanes<real_t<T>>::VL / (is_complex_v<T> ? 2 : 1));
  if (k < 1) return false;
  const idx nv = 1 + (k + VB - 1) / VB;
  if (nv > kStripMaxNV) return false;
  bool done = false;
  [&]<int... I>(std::integer_sequence<int, I...>) {
    ((nv == I + 1 ? ((upper ? band_solve_nv<T, I + 1, true>(unit, n, k, a, lda, x)
                            : band_solve_nv<T, I + 1, false>(unit, n, k, a, lda, x)),
                     done = true)
                  : false),
     ...);
  }(std::make_integer_sequence<int, kStripMaxNV>{});
  return done;
}

}  // namespace l2
}  // namespace NXL_CP_NS
}  // namespace nxl

#endif  // NXL_BLAS_LEVEL2_STRIPS_H
