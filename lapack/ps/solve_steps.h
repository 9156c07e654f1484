// Triangular solves with one right-hand side of a real order n <= NV
// vectors, the right-hand side held in NV vectors (rows as lanes) and the
// triangle read column by column from memory: step q broadcasts x_q and
// takes one multiply-add per vector of the rows below (forward, lower
// triangle) or above (backward, upper) row q, masked to those rows within
// the vector holding q. The chain of dependent steps is one broadcast and
// one multiply-add per unknown: the columns are scaled by the reciprocal of
// their diagonal entry off that chain, and x by the reciprocals once at the
// end. A transposed triangle is first copied, E x E blocks turned by lane
// shuffles, into a buffer whose columns are its rows.
#ifndef NXL_LAPACK_PS_SOLVE_STEPS_H
#define NXL_LAPACK_PS_SOLVE_STEPS_H

#include <cmath>
#include <utility>
#include "lapack/ps/solve_regs.h"

namespace nxl {
inline namespace NXL_LOCAL_NS {
namespace ps {

// x - c * t on the lanes [lo, hi), x elsewhere, bit for bit.
template <class T> __attribute__((always_inline)) inline typename simd<T>::V
minus_on(typename simd<T>::V x, typename simd<T>::V c, typename simd<T>::V t, int lo, int hi) {
  using S = simd<T>;
#if defined(__AVX512F__)
  const unsigned bits = ((1u << hi) - 1u) & ~((1u << lo) - 1u);
  if constexpr (sizeof(T) == 8)
    return (typename S::V)_mm512_mask3_fnmadd_pd((__m512d)c, (__m512d)t, (__m512d)x, static_cast<__mmask8>(bits));
  else
    return (typename S::V)_mm512_mask3_fnmadd_ps((__m512)c, (__m512)t, (__m512)x, static_cast<__mmask16>(bits));
#else
  return S::blend(S::mask(lo, hi), x - c * t, x);
#endif
}

// The E vectors r (rows of an E x E block) turned into its columns: at
// stage B the off-diagonal B x B blocks of every 2B x 2B block change
// places, one two-source shuffle per vector.
template <class V, int E> struct block_turn {
  template <int B, int... K> __attribute__((always_inline)) static void stage(V (&r)[E], std::integer_sequence<int, K...>) {
    for (int i = 0; i < E; ++i)
      if ((i & B) == 0) {
        const V x = r[i], y = r[i + B];
        r[i] = __builtin_shufflevector(x, y, ((K & B) ? E + K - B : K)...);
        r[i + B] = __builtin_shufflevector(x, y, ((K & B) ? E + K : K + B)...);
      }
  }
  __attribute__((always_inline)) static void run(V (&r)[E]) {
    constexpr auto lanes = std::make_integer_sequence<int, E>{};
    if constexpr (E >= 16) stage<8>(r, lanes);
    if constexpr (E >= 8) stage<4>(r, lanes);
    stage<2>(r, lanes);
    stage<1>(r, lanes);
  }
};

template <class T, int NV> struct step_solve {
  using S = simd<T>;
  using V = typename S::V;
  static constexpr int E = static_cast<int>(S::E), D = NV * E;

  // Reciprocals of the diagonal (1 past n), with which the columns and x
  // are scaled.
  alignas(64) T r[D];
  V x[NV];

  // The diagonal d[q * ld] as reciprocals; false when an entry or its
  // reciprocal is not a normal number.
  bool set_diagonal(const T *d, idx ld, idx n) {
    for (int q = 0; q < D; ++q) r[q] = q < n ? d[q * ld] : T(1);
    V bad = S::splat(0);
    for (int v = 0; v < NV; ++v) {
      const V m = S::abs(S::load(r + v * E));
      bad = S::blend((m >= S::splat(safe_min<T>())) & (m <= S::splat(T(1) / safe_min<T>())), bad, S::splat(1));
      S::store(r + v * E, S::splat(1) / S::load(r + v * E));
    }
    for (int k = 0; k < E; ++k)
      if (bad[k] != T(0)) return false;
    return true;
  }

  __attribute__((always_inline)) static V part(const T *p, idx avail) {
    return avail >= E ? S::load(p) : load_lanes(p, 0, avail);
  }

  void load(const T *b, idx n) {
    for (int v = 0; v < NV; ++v) x[v] = n > v * E ? part(b + v * E, n - v * E) : S::splat(0);
  }
  void store(T *b, idx n) const {
    for (int v = 0; v < NV; ++v)
      if (n > v * E) store_lanes(b + v * E, n - v * E < E ? n - v * E : E, x[v]);
  }

  // x := T^{-1} x for the triangle whose column q is c + q * ldc, lower
  // (forward) or upper (backward), unit or scaled by r; the rows from
  // `avail` on are not read.
  template <bool Lower, bool Unit> __attribute__((always_inline)) void run(const T *c, idx ldc, idx avail, idx n) {
    const int nv = static_cast<int>((n + E - 1) / E);
    // A local copy, which the loads of the triangle cannot alias: it stays
    // in registers instead of going back to the member at every step.
    V y[NV];
    for (int v = 0; v < NV; ++v) y[v] = x[v];
    auto step = [&]<int Q>() __attribute__((always_inline)) {
      if (Q >= n) return;
      constexpr int W = Q / E, L = Q % E;
      const V t = lane_splat<L>(y[W]);
      const T *col = c + Q * ldc;
      const V f = S::splat(Unit ? T(1) : r[Q]);
      for (int v = Lower ? W : 0; v < (Lower ? NV : W + 1); ++v) {
        if (Lower && v >= nv) break;
        V cv = part(col + v * E, avail - v * E);
        if (!Unit) cv *= f;
        if (v == W) y[v] = minus_on<T>(y[v], cv, t, Lower ? L + 1 : 0, Lower ? E : L);
        else y[v] -= cv * t;
      }
#if defined(__AVX512F__)
      // Every E steps the values are pinned to their registers, which keeps
      // the compiler from hoisting the loads of many later columns (and
      // spilling them) ahead of the steps.
      if constexpr (Q % E == E - 1)
        for (int v = 0; v < NV; ++v) asm volatile("" : "+v"(y[v]));
#endif
    };
    [&]<int... K>(std::integer_sequence<int, K...>) __attribute__((always_inline)) {
      if constexpr (Lower) (step.template operator()<K>(), ...);
      else (step.template operator()<D - 1 - K>(), ...);
    }(std::make_integer_sequence<int, D>{});
    for (int v = 0; v < NV; ++v) x[v] = Unit ? y[v] : y[v] * S::load(r + v * E);
  }
};

// The triangle of order n at a (lower when Lower) transposed into buf
// (leading dimension D): column i of buf holds row i of the triangle. The
// entries of buf outside the transposed triangle are left unspecified.
template <class T, int D, bool Lower> void turn_triangle(idx n, const T *a, idx lda, T *buf) {
  using S = simd<T>;
  using V = typename S::V;
  constexpr int E = static_cast<int>(S::E);
  const idx nb = (n + E - 1) / E;
  for (idx bc = 0; bc < nb; ++bc)
    for (idx br = Lower ? bc : 0; br < (Lower ? nb : bc + 1); ++br) {
      // Rows br*E.. of the columns bc*E.. of a, then the rows of the block
      // as columns bc*E.. of buf's columns br*E...
      V blk[E];
      const idx rows = n - br * E < E ? n - br * E : E;
      for (int j = 0; j < E; ++j) {
        const T *p = a + br * E + (bc * E + j) * lda;
        blk[j] = bc * E + j < n ? (rows == E ? S::load(p) : load_lanes(p, 0, rows)) : S::splat(0);
      }
      block_turn<V, E>::run(blk);
      for (int i = 0; i < E; ++i) S::store(buf + bc * E + (br * E + i) * D, blk[i]);
    }
}

}  // namespace ps
}  // namespace NXL_LOCAL_NS
}  // namespace nxl

#endif  // NXL_LAPACK_PS_SOLVE_STEPS_H
