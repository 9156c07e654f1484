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
// to the broadcast column values. Every window size is its own fully
// unrolled instantiation; a build with the address checker keeps to the
// small windows (wider bands take the general loops there), which exercise
// the same code while keeping that build's compile time bounded.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define NXL_L2_STRIPS_SMALL 1
#endif
#endif
#ifdef NXL_L2_STRIPS_SMALL
inline constexpr int kStripMaxNV = 5;
#else
inline constexpr int kStripMaxNV = kVecBytes == 64 ? 20 : 10;
#endif
// The strips that also form a dot product per column hold VB more vectors:
// at most ten window vectors there.
inline constexpr int kDotStripMaxNV = kStripMaxNV < 10 ? kStripMaxNV : 10;

// Window vectors for w band rows: ceil((w + VB - 1) / VB).
template <class T>
constexpr idx strip_window(idx w) {
  constexpr idx VB = idx(lanes<real_t<T>>::VL / (is_complex_v<T> ? 2 : 1));
  return (w + 2 * VB - 2) / VB;
}

// Transposed reduction of N vectors (N a power of two, at most the lane
// count): lane group c of the result (VL/N lanes) holds the sums of the
// lanes of u[c] with the same index modulo VL/N. Each level adds the upper
// half of every lane group to its lower half, two vectors into one, so the
// N sums cost N - 1 pairs of shuffles and additions in all; the order of
// the additions is set by N and the lane count alone.
template <int VL, int RS, bool Hi>
constexpr int fold_lane(int k) {
  const int half = RS / 2, nreg = VL / RS, q = k / half, o = k % half;
  return (q < nreg ? 0 : VL) + (q % nreg) * RS + o + (Hi ? half : 0);
}

template <class R, int N, int RS = lanes<R>::VL>
__attribute__((always_inline)) inline typename lanes<R>::V fold_lanes(const typename lanes<R>::V *u) {
  using V = typename lanes<R>::V;
  constexpr int VL = lanes<R>::VL;
  if constexpr (N == 1) {
    return u[0];
  } else {
    V w[N / 2];
#pragma clang loop unroll(full)
    for (int i = 0; i < N / 2; ++i)
      w[i] = [&]<int... K>(std::integer_sequence<int, K...>) __attribute__((always_inline)) {
        return __builtin_shufflevector(u[2 * i], u[2 * i + 1], fold_lane<VL, RS, false>(K)...) +
               __builtin_shufflevector(u[2 * i], u[2 * i + 1], fold_lane<VL, RS, true>(K)...);
      }(std::make_integer_sequence<int, VL>{});
    return fold_lanes<R, N / 2, RS / 2>(w);
  }
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

  // Column c (vector v at p + Dir*v*VL, masked as in column()) into the
  // accumulators of its dot product with the vectors xw of x: P += a*xw,
  // and for complex Q += swap(a)*xw; with Axpy, also the window += a*t
  // (tr, ti from bcast_scale).
  template <int c, bool Axpy>
  __attribute__((always_inline)) void column_dot(const R *p, V tr, V ti, const V *xw, V &P, V &Q) {
    auto one = [&](int v, bool masked, K k) __attribute__((always_inline)) {
      const V av = masked ? X::load_k(p + Dir * v * VL, k) : X::load(p + Dir * v * VL);
      const V as = Cx ? X::swap(av) : av;
      if (masked) {
        if constexpr (Axpy) acc[v] = X::madd_k(acc[v], av, tr, k);
        P = X::madd_k(P, av, xw[v], k);
        if constexpr (Cx) {
          if constexpr (Axpy) acc[v] = X::madd_k(acc[v], as, ti, k);
          Q = X::madd_k(Q, as, xw[v], k);
        }
      } else {
        if constexpr (Axpy) acc[v] = acc[v] + av * tr;
        P = P + av * xw[v];
        if constexpr (Cx) {
          if constexpr (Axpy) acc[v] = acc[v] + as * ti;
          Q = Q + as * xw[v];
        }
      }
    };
    one(0, true, k0[c]);
#pragma clang loop unroll(full)
    for (int v = 1; v < NV - 2; ++v) one(v, false, k0[c]);
    if constexpr (NV - 2 >= 1) one(NV - 2, true, k1[c]);
    if constexpr (NV - 1 >= 1) one(NV - 1, true, k2[c]);
  }

  // The dot products of the VB columns of a strip from their accumulators
  // (column_dot), element c for column c: op(a) = conj(a) when Conj.
  template <bool Conj>
  __attribute__((always_inline)) static V dots(const V *P, const V *Q) {
    V d = fold_lanes<R, VB>(P);
    if constexpr (Cx) {
      // Lane pairs of P: (a_re x_re, a_im x_im); of Q: (a_im x_re, a_re x_im).
      const V q = fold_lanes<R, VB>(Q), ps = X::swap(d), qs = X::swap(q);
      const V ev = Conj ? d + ps : d - ps;
      const V od = Conj ? q - qs : q + qs;
      d = X::blend(X::mask_odd(), od, ev);
    }
    return d;
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

// Symmetric (Herm = false) or Hermitian band product y += alpha*A*x from
// the lower triangle with k sub-diagonals (A(r, j) at a[j*lda + r - j]),
// columns [c0, c1) (c0 a multiple of the vector), unit-stride vectors, by
// column strips as band_strips: the window holds the sums of the
// sub-diagonal elements of the columns read so far times x[j] for the rows
// of the strip and the k below it, and the same loads give each column's
// dot product with x over those rows (the transposed half) in one vector
// accumulator per column. When a strip is done its columns' accumulators
// are folded into one vector, which with the front of the window and the
// diagonal completes the strip's rows. Strips run while the whole window
// lies inside the matrix; the window is then added to y and the remaining
// columns go one by one (ragged_col). Returns the first column not done by
// strips.
template <class T, bool Herm, int NV>
idx sym_band_strips_nv(idx c0, idx c1, idx n, idx k, T alpha, const T *a, idx lda, const T *x, T *y) {
  using Win = Window<T, NV, 1>;
  using R = typename Win::R;
  using X = typename Win::X;
  using V = typename Win::V;
  constexpr int VB = Win::VB;
  constexpr idx W = Win::W;
  Win win;
  // Column c of a strip: its sub-diagonal rows, lanes [c + 1, c + k + 1)
  // of the window (the diagonal apart).
  win.init([&](idx c, idx v, idx &lo, idx &hi) {
    lo = c + 1 - v * VB;
    hi = c + k + 1 - v * VB;
  });
  const R *ar = reinterpret_cast<const R *>(a);
  const R *xr = reinterpret_cast<const R *>(x);
  const idx cstep = W * (lda - 1);
  const V zero = V{} * R(0);
  idx j0 = c0;
  for (; j0 + VB <= c1 && j0 + NV * VB <= n; j0 += VB) {
    V xw[NV], P[VB], Q[VB];
#pragma clang loop unroll(full)
    for (int v = 0; v < NV; ++v) xw[v] = X::load(xr + W * (j0 + v * VB));
    const R *base = ar + W * j0 * lda;
    auto each = [&](auto c_) __attribute__((always_inline)) {
      constexpr int c = decltype(c_)::value;
      V tr, ti;
      bcast_scale(x[j0 + c], tr, ti);
      P[c] = Q[c] = zero;
      win.template column_dot<c, true>(base + c * cstep, tr, ti, xw, P[c], Q[c]);
    };
    [&]<int... C>(std::integer_sequence<int, C...>) __attribute__((always_inline)) {
      (each(std::integral_constant<int, C>{}), ...);
    }(std::make_integer_sequence<int, VB>{});
    // Lane group c: the dot product of column j0 + c.
    V d = Win::template dots<Herm>(P, Q);
    d = d + win.acc[0];
    T s[VB];
    X::store(reinterpret_cast<R *>(s), d);
    for (int c = 0; c < VB; ++c) {
      const idx j = j0 + c;
      T dg = a[j * lda];
      if constexpr (Herm) dg = T(re(dg));
      y[j] = y[j] + mul(alpha, s[c] + mul(dg, x[j]));
    }
    win.shift();
  }
  // Rows [j0, j0 + NV*VB) hold the sums of the columns before j0.
  if (j0 == c0) return j0;
  T s[VB];
  for (int v = 0; v < NV; ++v) {
    X::store(reinterpret_cast<R *>(s), win.acc[v]);
    for (idx i = 0; i < VB && j0 + v * VB + i < n; ++i) y[j0 + v * VB + i] = y[j0 + v * VB + i] + mul(alpha, s[i]);
  }
  return j0;
}

// The same for any band width; returns c0 when the window does not fit the
// registers (with the vectors of x and the columns' accumulators).
template <class T, bool Herm>
idx sym_band_strips(idx c0, idx c1, idx n, idx k, T alpha, const T *a, idx lda, const T *x, T *y) {
  constexpr idx VB = idx(lanes<real_t<T>>::VL / (is_complex_v<T> ? 2 : 1));
  constexpr int kRegs = kVecBytes == 64 ? 28 : 14, kMaxNV = kDotStripMaxNV;
  if (k < 1 || c0 % VB != 0) return c0;
  const idx nv = strip_window<T>(k + 1);
  if (nv > kMaxNV || 2 * nv + VB * (is_complex_v<T> ? 2 : 1) > kRegs) return c0;
  idx done = c0;
  [&]<int... I>(std::integer_sequence<int, I...>) {
    ((nv == I + 1 ? (void)(done = sym_band_strips_nv<T, Herm, I + 1>(c0, c1, n, k, alpha, a, lda, x, y))
                  : void()),
     ...);
  }(std::make_integer_sequence<int, kMaxNV>{});
  return done;
}

// Band triangular product x := op(A) x with op(A) = A^T or A^H (Conj),
// unit stride, on the strips of VB columns [q0, q1) (multiples of VB),
// taken in descending order for upper triangles and ascending for lower
// ones: element j is op(A(j, j)) x[j] plus the dot product of column j's
// off-diagonal rows with the original x (from xc). A strip loads the
// vectors of x that its columns meet once, forms the columns' dot products
// in one vector accumulator each and folds them together (as
// sym_band_strips). Upper triangles: window vector v holds the rows v
// vectors above the strip (q0 >= (NV - 1)*VB); lower ones: v vectors below
// it (q1 + (NV - 1)*VB <= n).
template <class T, bool Conj, int NV, bool Up>
void band_trans_strips_nv(bool unit, idx k, const T *a, idx lda, T *x, const T *xc, idx q0, idx q1) {
  using Win = Window<T, NV, Up ? -1 : 1>;
  using R = typename Win::R;
  using X = typename Win::X;
  using V = typename Win::V;
  constexpr int VB = Win::VB;
  constexpr idx W = Win::W;
  Win win;
  // Column c of a strip: rows [c - k, c) upward, [c + 1, c + k + 1)
  // downward, relative to the strip's first row.
  win.init([&](idx c, idx v, idx &lo, idx &hi) {
    lo = Up ? c - k + v * VB : c + 1 - v * VB;
    hi = Up ? c + v * VB : c + k + 1 - v * VB;
  });
  const R *ar = reinterpret_cast<const R *>(a);
  const R *xr = reinterpret_cast<const R *>(xc);
  const idx cstep = W * (lda - 1), off = Up ? k : 0;
  const V zero = V{} * R(0);
  const idx ns = (q1 - q0) / VB;
  for (idx si = 0; si < ns; ++si) {
    const idx j0 = Up ? q1 - (si + 1) * VB : q0 + si * VB;
    V xw[NV], P[VB], Q[VB];
#pragma clang loop unroll(full)
    for (int v = 0; v < NV; ++v) xw[v] = X::load(xr + W * (Up ? j0 - v * VB : j0 + v * VB));
    const R *base = ar + W * (j0 * lda + off);
    auto each = [&](auto c_) __attribute__((always_inline)) {
      constexpr int c = decltype(c_)::value;
      P[c] = Q[c] = zero;
      win.template column_dot<c, false>(base + c * cstep, zero, zero, xw, P[c], Q[c]);
    };
    [&]<int... C>(std::integer_sequence<int, C...>) __attribute__((always_inline)) {
      (each(std::integral_constant<int, C>{}), ...);
    }(std::make_integer_sequence<int, VB>{});
    T s[VB];
    X::store(reinterpret_cast<R *>(s), Win::template dots<Conj>(P, Q));
    for (int c = 0; c < VB; ++c) {
      const idx j = j0 + c;
      const T xj = x[j];
      x[j] = (unit ? xj : mul(opc<Conj>(a[j * lda + off]), xj)) + s[c];
    }
  }
}

// The strips of a transposed band product that lie in [p0, p1) and whose
// window lies inside the matrix, as [q0, q1); q0 = q1 when the window does
// not fit the registers.
template <class T>
void band_trans_range(bool upper, idx n, idx k, idx p0, idx p1, idx &q0, idx &q1) {
  constexpr idx VB = idx(lanes<real_t<T>>::VL / (is_complex_v<T> ? 2 : 1));
  constexpr int kRegs = kVecBytes == 64 ? 28 : 14;
  const idx nv = strip_window<T>(k + 1);
  q0 = (p0 + VB - 1) / VB * VB;
  q1 = p1 / VB * VB;
  if (upper) {
    if (q0 < (nv - 1) * VB) q0 = (nv - 1) * VB;
  } else {
    const idx top = (n - (nv - 1) * VB) / VB * VB;
    if (q1 > top) q1 = top;
  }
  if (k < 1 || nv > kDotStripMaxNV || nv + VB * (is_complex_v<T> ? 2 : 1) > kRegs || q1 < q0) q1 = q0;
}

template <class T, bool Conj>
void band_trans_strips(bool upper, bool unit, idx k, const T *a, idx lda, T *x, const T *xc, idx q0,
                       idx q1) {
  if (q1 <= q0) return;
  const idx nv = strip_window<T>(k + 1);
  [&]<int... I>(std::integer_sequence<int, I...>) {
    ((nv == I + 1 ? (upper ? band_trans_strips_nv<T, Conj, I + 1, true>(unit, k, a, lda, x, xc, q0, q1)
                           : band_trans_strips_nv<T, Conj, I + 1, false>(unit, k, a, lda, x, xc, q0, q1))
                  : void()),
     ...);
  }(std::make_integer_sequence<int, kDotStripMaxNV>{});
}

// x = v / d in the substitutions. Complex d: v times the reciprocal of d,
// formed with the scaling of div (by the larger part of d, so that nothing
// overflows where the reciprocal does not); the reciprocal does not depend
// on v, so it is found ahead of the chain of substitutions, which then
// carries a product instead of a division per unknown. Real d: the
// division itself.
template <class T>
__attribute__((always_inline)) inline T solve_div(T v, T d) {
  if constexpr (is_complex_v<T>) {
    using R = real_t<T>;
    const R dr = d.real(), di = d.imag();
    R rr, ri;
    if (std::fabs(dr) >= std::fabs(di)) {
      const R r = di / dr, s = dr + di * r;
      rr = R(1) / s;
      ri = -r / s;
    } else {
      const R r = dr / di, s = di + dr * r;
      rr = r / s;
      ri = R(-1) / s;
    }
    return mul(v, T(rr, ri));
  } else {
    return v / d;
  }
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
    const T xj = unit ? v[j - b] : solve_div(v[j - b], col[j]);
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
    const T xj = unit ? v[c] : solve_div(v[c], col[j]);
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
