// Two triangular solves of order n <= E (one vector of real elements) on
// many right-hand sides, with both factors held in registers: each column of
// a triangle is one vector (rows as lanes, zero outside the strict
// triangle), each right-hand side is one vector, and a solve is n steps of
// "broadcast x_q, multiply-add into the rows below (or above) q", masked to
// those rows so that an infinite x_q never reaches a row through a zero of
// the factor. Groups of right-hand sides go through the steps side by side,
// so their chains of dependent steps overlap. The diagonal is applied as a
// product with its reciprocals (the solve is taken only when every diagonal
// entry and its reciprocal are normal numbers, so the product rounds as
// well as the quotient would).
#ifndef NXL_LAPACK_PS_SOLVE_REGS_H
#define NXL_LAPACK_PS_SOLVE_REGS_H

#include <utility>
#include "lapack/ps/lu_regs.h"

namespace nxl {
inline namespace NXL_LOCAL_NS {
namespace ps {

// Lane q of x on every lane (real vectors).
template <int Q, class V> __attribute__((always_inline)) inline V lane_splat(V x) {
  constexpr int W = sizeof(V) / sizeof(x[0]);
  if constexpr (W == 8) return __builtin_shufflevector(x, x, Q, Q, Q, Q, Q, Q, Q, Q);
  else return __builtin_shufflevector(x, x, Q, Q, Q, Q, Q, Q, Q, Q, Q, Q, Q, Q, Q, Q, Q, Q);
}

// p[lo..hi) on the lanes lo..hi-1, zero on the others (real T).
template <class T> __attribute__((always_inline)) inline typename simd<T>::V load_lanes(const T *p, idx lo, idx hi) {
  using S = simd<T>;
#if defined(__AVX512F__)
  const unsigned bits = ((1u << hi) - 1u) & ~((1u << lo) - 1u);
  if constexpr (sizeof(T) == 8) return (typename S::V)_mm512_maskz_loadu_pd(static_cast<__mmask8>(bits), p);
  else return (typename S::V)_mm512_maskz_loadu_ps(static_cast<__mmask16>(bits), p);
#else
  alignas(64) T t[S::E] = {};
  for (idx i = lo; i < hi; ++i) t[i] = p[i];
  return S::load(t);
#endif
}

// The lanes 0..n-1 of v to p[0..n).
template <class T> __attribute__((always_inline)) inline void store_lanes(T *p, idx n, typename simd<T>::V v) {
#if defined(__AVX512F__)
  const unsigned bits = (1u << n) - 1u;
  if constexpr (sizeof(T) == 8) _mm512_mask_storeu_pd(p, static_cast<__mmask8>(bits), (__m512d)v);
  else _mm512_mask_storeu_ps(p, static_cast<__mmask16>(bits), (__m512)v);
#else
  using S = simd<T>;
  if (n == S::E) return S::store(p, v);
  alignas(64) T t[S::E];
  S::store(t, v);
  for (idx i = 0; i < n; ++i) p[i] = t[i];
#endif
}

template <class T, int NV> struct tri_regs {
  using S = simd<T>;
  using V = typename S::V;
  static constexpr int E = static_cast<int>(S::E), D = NV * E;
  V col[D][NV];     // strict triangle of each column (of the triangle solved with)
  V rd[NV];         // reciprocals of the diagonal, 1 past n
  bool unit = true;

  // The diagonal d[q * ld] (q < n) as reciprocals; false when an entry or
  // its reciprocal is not a normal number (zero, tiny, huge, Inf, NaN).
  bool set_diagonal(const T *d, idx ld, idx n) {
    using R = real_t<T>;
    alignas(64) T r[D];
    bool ok = true;
    for (int q = 0; q < D; ++q) {
      const R v = q < n ? d[q * ld] : R(1), m = std::fabs(v);
      ok &= m >= safe_min<R>() && m <= R(1) / safe_min<R>();
      r[q] = R(1) / v;
    }
    for (int v = 0; v < NV; ++v) rd[v] = S::load(r + v * E);
    unit = false;
    return ok;
  }
  // Columns of a lower (Lower) or upper triangle from the columns of a
  // (a[i + q * lda]), or from its rows (a[q + i * lda]) when Rows.
  template <bool Lower, bool Rows> void set_columns(const T *a, idx lda, idx n) {
    for (int q = 0; q < D; ++q) {
      const idx lo = Lower ? q + 1 : 0, hi = q >= n ? 0 : Lower ? n : q;
      alignas(64) T t[D] = {};
      if constexpr (Rows)
        for (idx i = lo; i < hi; ++i) t[i] = a[q + i * lda];
      for (int v = 0; v < NV; ++v) {
        const idx l = lo - v * E > 0 ? lo - v * E : 0, h = hi - v * E < E ? hi - v * E : E;
        if (h <= l) col[q][v] = S::splat(0);
        else if constexpr (Rows) col[q][v] = S::load(t + v * E);
        else col[q][v] = load_lanes(a + q * lda + v * E, l, h);
      }
    }
  }

  // x := T^{-1} x for G right-hand sides, the steps q < n.
  template <bool Lower, int G> __attribute__((always_inline)) void solve(V (&x)[G][NV], idx n) const {
    auto step = [&]<int Q>() __attribute__((always_inline)) {
      if (Q >= n) return;
      constexpr int W = Q / E, L = Q % E;
      const typename S::M rows = Lower ? S::mask(L + 1, E) : S::mask(0, L);
      for (int g = 0; g < G; ++g) {
        const V t = unit ? lane_splat<L>(x[g][W]) : lane_splat<L>(x[g][W] * rd[W]);
        // Whole vectors past (or before) the one holding row Q change on
        // every lane.
        for (int v = Lower ? W + 1 : 0; v < (Lower ? NV : W); ++v) x[g][v] -= col[Q][v] * t;
        x[g][W] = S::blend(rows, x[g][W] - col[Q][W] * t, x[g][W]);
      }
    };
    [&]<int... K>(std::integer_sequence<int, K...>) __attribute__((always_inline)) {
      if constexpr (Lower) (step.template operator()<K>(), ...);
      else (step.template operator()<D - 1 - K>(), ...);
    }(std::make_integer_sequence<int, D>{});
    if (!unit)
      for (int g = 0; g < G; ++g)
        for (int v = 0; v < NV; ++v) x[g][v] *= rd[v];
  }
};

// B := second^{-1} first^{-1} P B for the n x nrhs block b (P the row
// permutation perm, lane k of vector v taking row perm[v][k]; first lower,
// second upper).
template <class T, int NV>
void solve_in_registers(idx n, idx nrhs, const tri_regs<T, NV> &first, const tri_regs<T, NV> &second,
                        const typename simd<T>::M *perm, T *b, idx ldb) {
  using S = simd<T>;
  using V = typename S::V;
  constexpr idx E = S::E;
  auto run = [&]<int G>(idx c) __attribute__((always_inline)) {
    V x[G][NV];
    for (int g = 0; g < G; ++g) {
      V raw[NV];
      for (int v = 0; v < NV; ++v) raw[v] = n > v * E ? load_lanes(b + (c + g) * ldb + v * E, 0, n - v * E < E ? n - v * E : E) : S::splat(0);
      for (int v = 0; v < NV; ++v) x[g][v] = perm ? permute<NV>(raw, perm[v]) : raw[v];
    }
    first.template solve<true, G>(x, n);
    second.template solve<false, G>(x, n);
    for (int g = 0; g < G; ++g)
      for (int v = 0; v < NV; ++v)
        if (n > v * E) store_lanes(b + (c + g) * ldb + v * E, n - v * E < E ? n - v * E : E, x[g][v]);
  };
  idx c = 0;
  for (; c + 4 <= nrhs; c += 4) run.template operator()<4>(c);
  for (; c < nrhs; ++c) run.template operator()<1>(c);
}

}  // namespace ps
}  // namespace NXL_LOCAL_NS
}  // namespace nxl

#endif  // NXL_LAPACK_PS_SOLVE_REGS_H
