// LU with partial pivoting for matrices of at most NV vectors of rows and
// columns, on the 512-bit paths: every column is held as NV vectors with the
// rows as lanes (complex: the real and the imaginary parts in separate
// vectors, so a complex multiply-add is four plain ones with no shuffles),
// and the row interchanges are recorded instead of carried out. A step
// chooses its pivot among the rows not yet used, scales the multipliers and
// updates those rows only; the rows land in their final order once, when the
// factors are stored. No step moves data for an interchange, and the entry
// of a pivot row that an update needs is one broadcast load. The arithmetic
// per element is that of the right-looking column algorithm and the pivots
// are the ones it chooses (ties go to the row that comes first in the order
// of the interchanges so far), so the factors are the same.
#ifndef NXL_LAPACK_PS_LU_LANES_H
#define NXL_LAPACK_PS_LU_LANES_H

#if defined(__AVX512F__)
#include <immintrin.h>
#include <cstdint>
#include <type_traits>
#include "lapack/ps/lu_regs.h"
#include "lapack/ps/simd.h"
#include "lapack/ps/small.h"

namespace nxl {
inline namespace NXL_LOCAL_NS {
namespace ps {

template <class T, int NV> struct lu_lanes {
  using R = real_t<T>;
  using S = simd<R>;
  using V = typename S::V;
  using M = typename S::M;
  using Lane = typename S::Lane;
  static constexpr bool C = is_complex_v<T>;
  static constexpr int P = C ? 2 : 1;            // parts per element
  static constexpr int E = static_cast<int>(S::E);  // rows per vector
  static constexpr int D = NV * E;               // order at most
  static_assert(D <= 32, "rows are tracked in one 32-bit set");

  alignas(64) R x[P][D][D];  // part, column, physical row
  alignas(64) R rcp[P][D];   // reciprocals of the pivot column's entries
  int at[D];                 // physical row at each position of the interchanged order
  int pos[D];                // position of each physical row in that order
  uint32_t avail = 0;        // physical rows not yet a pivot row
  idx info = 0;

  // c - a * b on the lanes in k, c elsewhere (and + when Plus).
  template <bool Plus> __attribute__((always_inline)) static V fma_lanes(V a, V b, V c, uint32_t k) {
    if constexpr (sizeof(R) == 8) {
      const __mmask8 m = static_cast<__mmask8>(k);
      if constexpr (Plus) return (V)_mm512_mask3_fmadd_pd((__m512d)a, (__m512d)b, (__m512d)c, m);
      else return (V)_mm512_mask3_fnmadd_pd((__m512d)a, (__m512d)b, (__m512d)c, m);
    } else {
      const __mmask16 m = static_cast<__mmask16>(k);
      if constexpr (Plus) return (V)_mm512_mask3_fmadd_ps((__m512)a, (__m512)b, (__m512)c, m);
      else return (V)_mm512_mask3_fnmadd_ps((__m512)a, (__m512)b, (__m512)c, m);
    }
  }
  __attribute__((always_inline)) static V pick(uint32_t k, V yes, V no) {
    if constexpr (sizeof(R) == 8) return (V)_mm512_mask_blend_pd(static_cast<__mmask8>(k), (__m512d)no, (__m512d)yes);
    else return (V)_mm512_mask_blend_ps(static_cast<__mmask16>(k), (__m512)no, (__m512)yes);
  }
  __attribute__((always_inline)) static uint32_t lanes(uint32_t set, int v) {
    return (set >> (v * E)) & ((uint64_t(1) << E) - 1);
  }
  __attribute__((always_inline)) V load(int part, int j, int v) const { return S::load(&x[part][j][v * E]); }
  __attribute__((always_inline)) void store(int part, int j, int v, V y) { S::store(&x[part][j][v * E], y); }

  void load(idx m, idx n, const T *a, idx lda) {
    for (int r = 0; r < D; ++r) at[r] = pos[r] = r;
    avail = static_cast<uint32_t>((uint64_t(1) << m) - 1);
    for (int j = 0; j < n; ++j) {
      const T *col = a + j * lda;
      if constexpr (!C) {
        for (idx i = 0; i < D; ++i) x[0][j][i] = i < m ? col[i] : R(0);
      } else {
        alignas(64) T buf[D];
        if (m < D) {
          for (idx i = 0; i < D; ++i) buf[i] = i < m ? col[i] : T(0);
          col = buf;
        }
        for (int v = 0; v < NV; ++v) {
          const V lo = simd<T>::load(col + v * E), hi = simd<T>::load(col + v * E + E / 2);
          V re, im;
          split_parts(lo, hi, re, im);
          store(0, j, v, re);
          store(1, j, v, im);
        }
      }
    }
  }

  // The rows in their interchanged order: one lane permutation per vector.
  void store(idx m, idx n, T *a, idx lda) const {
    M perm[NV];
    for (int v = 0; v < NV; ++v)
      for (int l = 0; l < E; ++l) perm[v][l] = static_cast<Lane>(at[v * E + l]);
    for (int j = 0; j < n; ++j) {
      alignas(64) T buf[D];
      T *col = m == D ? a + j * lda : buf;
      V part[P][NV];
      for (int q = 0; q < P; ++q)
        for (int v = 0; v < NV; ++v) part[q][v] = load(q, j, v);
      for (int v = 0; v < NV; ++v) {
        const V re = permute<NV>(part[0], perm[v]);
        if constexpr (!C) {
          S::store(col + v * E, re);
        } else {
          const V im = permute<NV>(part[1], perm[v]);
          V lo, hi;
          merge_parts(re, im, lo, hi);
          simd<T>::store(col + v * E, lo);
          simd<T>::store(col + v * E + E / 2, hi);
        }
      }
      if (m < D)
        for (idx i = 0; i < m; ++i) a[i + j * lda] = buf[i];
    }
  }

  // Physical row of the pivot among the rows still available: the first
  // NaN, else the first of largest |re| + |im|, first meaning earliest in
  // the interchanged order. Magnitudes compare as integers (their bit
  // patterns order as the values do), every NaN raised to one key above
  // infinity and the rows not available lowered below zero.
  __attribute__((always_inline)) int pivot(const V (&c)[P][NV]) const {
    const M nan_key = (M)S::splat(__builtin_inf()) + Lane(1), none = M{} - Lane(1);
    M key[NV], best = none;
    for (int v = 0; v < NV; ++v) {
      V a = S::abs(c[0][v]);
      if constexpr (C) a = a + S::abs(c[1][v]);
      M k = (M)a;
      k = k < nan_key ? k : nan_key;
      key[v] = (M)pick(lanes(avail, v), (V)k, (V)none);
      const M gt = key[v] > best;
      best = (key[v] & gt) | (best & ~gt);
    }
    best = lanes_max(best);
    uint32_t eq = 0;
    for (int v = 0; v < NV; ++v) eq |= lane_bits(key[v] == best) << (v * E);
    int p = __builtin_ctz(eq);
    if (eq & (eq - 1))  // a tie: the earliest in the interchanged order
      for (uint32_t rest = eq & (eq - 1); rest; rest &= rest - 1) {
        const int r = __builtin_ctz(rest);
        if (pos[r] < pos[p]) p = r;
      }
    return p;
  }

  // Step J with column J in c, which then takes column J + 1 (when there is
  // one) as its update leaves it.
  __attribute__((always_inline)) void step(int J, idx m, idx n, idx *ipiv, V (&c)[P][NV]) {
    // The reciprocals of the whole column (complex: conj(z) / |z|^2, valid in
    // the normal range) are formed while the pivot search runs, so that the
    // division is off the chain of dependent steps.
    if constexpr (!C) {
      for (int v = 0; v < NV; ++v) S::store(&rcp[0][v * E], S::splat(R(1)) / c[0][v]);
    } else {
      for (int v = 0; v < NV; ++v) {
        const V s = S::splat(R(1)) / (c[0][v] * c[0][v] + c[1][v] * c[1][v]);
        S::store(&rcp[0][v * E], c[0][v] * s);
        S::store(&rcp[1][v * E], -(c[1][v] * s));
      }
    }
    const int p = pivot(c);
    {
      const int q = pos[p], r = at[J];
      ipiv[J] = q + 1;
      at[J] = p;
      at[q] = r;
      pos[p] = J;
      pos[r] = q;
    }
    avail &= ~(uint32_t(1) << p);
    T piv;
    if constexpr (C) piv = T(x[0][J][p], x[1][J][p]);
    else piv = x[0][J][p];
    if (J + 1 == m) {  // no rows left below the pivot
      if (piv == T(0) && info == 0) info = J + 1;
      return;
    }
    V l[P][NV];
    if (piv != T(0)) {
      if (abs1(piv) >= safe_min<R>()) {
        V f[P];
        f[0] = S::splat(rcp[0][p]);
        if constexpr (C) {
          constexpr R lo = sizeof(R) == 8 ? 0x1p-500 : 0x1p-58f, hi = sizeof(R) == 8 ? 0x1p500 : 0x1p58f;
          const R big = std::fabs(piv.real()) >= std::fabs(piv.imag()) ? std::fabs(piv.real()) : std::fabs(piv.imag());
          f[1] = S::splat(rcp[1][p]);
          if (!(big > lo && big < hi)) {
            const T r = inv(piv);
            f[0] = S::splat(r.real());
            f[1] = S::splat(r.imag());
          }
        }
        for (int v = 0; v < NV; ++v) {
          const uint32_t k = lanes(avail, v);
          if constexpr (C) {
            const V nre = c[0][v] * f[0] - c[1][v] * f[1], nim = c[0][v] * f[1] + c[1][v] * f[0];
            c[0][v] = pick(k, nre, c[0][v]);
            c[1][v] = pick(k, nim, c[1][v]);
          } else {
            c[0][v] = pick(k, c[0][v] * f[0], c[0][v]);
          }
        }
      } else {
        for (int q = 0; q < P; ++q)
          for (int v = 0; v < NV; ++v) store(q, J, v, c[q][v]);
        for (uint32_t rest = avail; rest; rest &= rest - 1) {
          const int r = __builtin_ctz(rest);
          if constexpr (C) {
            const T y = divide(T(x[0][J][r], x[1][J][r]), piv);
            x[0][J][r] = y.real();
            x[1][J][r] = y.imag();
          } else {
            x[0][J][r] = divide(x[0][J][r], piv);
          }
        }
        for (int q = 0; q < P; ++q)
          for (int v = 0; v < NV; ++v) c[q][v] = load(q, J, v);
      }
    } else if (info == 0) {
      info = J + 1;
    }
    for (int q = 0; q < P; ++q)
      for (int v = 0; v < NV; ++v) {
        l[q][v] = c[q][v];
        store(q, J, v, c[q][v]);
      }
    // The rows still available less multiplier times pivot row, in every
    // later column; the pivot rows keep their bits even where a multiplier
    // times an infinite entry would give NaN.
    uint32_t k[NV];
    for (int v = 0; v < NV; ++v) k[v] = lanes(avail, v);
    auto update = [&](int j, V (&y)[P][NV]) __attribute__((always_inline)) {
      const V ur = S::splat(x[0][j][p]);
      if constexpr (C) {
        const V ui = S::splat(x[1][j][p]);
        for (int v = 0; v < NV; ++v) {
          if (!k[v]) continue;
          y[0][v] = fma_lanes<false>(l[0][v], ur, y[0][v], k[v]);
          y[1][v] = fma_lanes<false>(l[0][v], ui, y[1][v], k[v]);
          y[0][v] = fma_lanes<true>(l[1][v], ui, y[0][v], k[v]);
          y[1][v] = fma_lanes<false>(l[1][v], ur, y[1][v], k[v]);
        }
      } else {
        for (int v = 0; v < NV; ++v)
          if (k[v]) y[0][v] = fma_lanes<false>(l[0][v], ur, y[0][v], k[v]);
      }
      for (int q = 0; q < P; ++q)
        for (int v = 0; v < NV; ++v) store(q, j, v, y[q][v]);
    };
    if (J + 1 >= n) return;
    for (int q = 0; q < P; ++q)
      for (int v = 0; v < NV; ++v) c[q][v] = load(q, J + 1, v);
    update(J + 1, c);
    for (int j = J + 2; j < n; ++j) {
      V y[P][NV];
      for (int q = 0; q < P; ++q)
        for (int v = 0; v < NV; ++v) y[q][v] = load(q, j, v);
      update(j, y);
    }
  }
};

// m x n with m, n <= NV vectors of rows.
template <class T, int NV> void getrf_lanes(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info) {
  lu_lanes<T, NV> f;
  f.load(m, n, a, lda);
  const idx k = m < n ? m : n;
  typename lu_lanes<T, NV>::V c[lu_lanes<T, NV>::P][NV];
  for (int q = 0; q < lu_lanes<T, NV>::P; ++q)
    for (int v = 0; v < NV; ++v) c[q][v] = f.load(q, 0, v);
  for (int j = 0; j < k; ++j) f.step(j, m, n, ipiv, c);
  f.store(m, n, a, lda);
  *info = f.info;
}

}  // namespace ps
}  // namespace NXL_LOCAL_NS
}  // namespace nxl

#endif  // __AVX512F__
#endif  // NXL_LAPACK_PS_LU_LANES_H
