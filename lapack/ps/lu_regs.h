// LU with partial pivoting held entirely in vector registers, for matrices
// of at most NV vectors of rows and NV vectors of columns: each column is NV
// vectors with the rows as lanes, the matrix zero-padded to a square of
// D = NV * E. The steps are unrolled at compile time: the pivot search is a
// vector max-reduction over the candidate rows, the row interchange a pair
// of lane blends on every column, and the trailing update one masked
// multiply-add per column vector. The arithmetic per element is that of the
// right-looking column algorithm, so the factors are the same.
#ifndef NXL_LAPACK_PS_LU_REGS_H
#define NXL_LAPACK_PS_LU_REGS_H

#include <cstdint>
#include <utility>
#if defined(__AVX512F__)
#include <immintrin.h>
#endif
#include "lapack/ps/simd.h"
#include "lapack/ps/small.h"

namespace nxl {
inline namespace NXL_LOCAL_NS {
namespace ps {

// Every lane set to the largest lane of x (signed integers), by halving
// butterflies, so the result needs no broadcast.
template <class M> __attribute__((always_inline)) inline M lanes_max(M x) {
  constexpr int W = sizeof(M) / sizeof(x[0]);
  auto mx = [](M a, M b) { const M gt = a > b; return (a & gt) | (b & ~gt); };
  if constexpr (W == 16) x = mx(x, __builtin_shufflevector(x, x, 8, 9, 10, 11, 12, 13, 14, 15, 0, 1, 2, 3, 4, 5, 6, 7));
  if constexpr (W == 16) {
    x = mx(x, __builtin_shufflevector(x, x, 4, 5, 6, 7, 0, 1, 2, 3, 12, 13, 14, 15, 8, 9, 10, 11));
    x = mx(x, __builtin_shufflevector(x, x, 2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13));
    x = mx(x, __builtin_shufflevector(x, x, 1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14));
  } else {
    x = mx(x, __builtin_shufflevector(x, x, 4, 5, 6, 7, 0, 1, 2, 3));
    x = mx(x, __builtin_shufflevector(x, x, 2, 3, 0, 1, 6, 7, 4, 5));
    x = mx(x, __builtin_shufflevector(x, x, 1, 0, 3, 2, 5, 4, 7, 6));
  }
  return x;
}

// Bit k set where lane k of the comparison result x is true.
template <class M> __attribute__((always_inline)) inline uint32_t lane_bits(M x) {
#if defined(__AVX512F__)
  if constexpr (sizeof(x[0]) == 8) return _mm512_test_epi64_mask((__m512i)x, (__m512i)x);
  else return _mm512_test_epi32_mask((__m512i)x, (__m512i)x);
#else
  constexpr int W = sizeof(M) / sizeof(x[0]);
  uint32_t b = 0;
  for (int k = 0; k < W; ++k) b |= static_cast<uint32_t>(x[k] & 1) << k;
  return b;
#endif
}

// Lane k of the result is lane idx[k] of the NV vectors x taken as one.
template <int NV, class V, class M> __attribute__((always_inline)) inline V permute(const V *x, M idx) {
  constexpr int W = sizeof(V) / sizeof(x[0][0]);
#if defined(__AVX512F__)
  if constexpr (NV <= 2) {
    if constexpr (sizeof(x[0][0]) == 8) {
      if constexpr (NV == 1) return (V)_mm512_permutexvar_pd((__m512i)idx, (__m512d)x[0]);
      else return (V)_mm512_permutex2var_pd((__m512d)x[0], (__m512i)idx, (__m512d)x[1]);
    } else {
      if constexpr (NV == 1) return (V)_mm512_permutexvar_ps((__m512i)idx, (__m512)x[0]);
      else return (V)_mm512_permutex2var_ps((__m512)x[0], (__m512i)idx, (__m512)x[1]);
    }
  }
#endif
  V out;
  for (int k = 0; k < W; ++k) out[k] = x[idx[k] / W][idx[k] % W];
  return out;
}

// The complex elements of two vectors (real and imaginary parts in adjacent
// lanes) as one vector of real parts and one of imaginary parts, and back.
template <class V> __attribute__((always_inline)) inline void split_parts(V lo, V hi, V &re, V &im) {
  if constexpr (sizeof(V) / sizeof(lo[0]) == 8) {
    re = __builtin_shufflevector(lo, hi, 0, 2, 4, 6, 8, 10, 12, 14);
    im = __builtin_shufflevector(lo, hi, 1, 3, 5, 7, 9, 11, 13, 15);
  } else {
    re = __builtin_shufflevector(lo, hi, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    im = __builtin_shufflevector(lo, hi, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
  }
}
template <class V> __attribute__((always_inline)) inline void merge_parts(V re, V im, V &lo, V &hi) {
  if constexpr (sizeof(V) / sizeof(re[0]) == 8) {
    lo = __builtin_shufflevector(re, im, 0, 8, 1, 9, 2, 10, 3, 11);
    hi = __builtin_shufflevector(re, im, 4, 12, 5, 13, 6, 14, 7, 15);
  } else {
    lo = __builtin_shufflevector(re, im, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    hi = __builtin_shufflevector(re, im, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
  }
}

// f(integral_constant<int, K>) for K = 0..N-1, unrolled.
template <int N, class F> __attribute__((always_inline)) inline void static_for(F f) {
  [&]<int... K>(std::integer_sequence<int, K...>) __attribute__((always_inline)) {
    (f(std::integral_constant<int, K>{}), ...);
  }(std::make_integer_sequence<int, N>{});
}

// The steps J = 0..k-1 of a kernel of order D (all D when Full), unrolled.
template <int D, bool Full, class F> __attribute__((always_inline)) inline void static_steps(idx k, F f) {
  [&]<int... J>(std::integer_sequence<int, J...>) __attribute__((always_inline)) {
    if constexpr (Full) (f(std::integral_constant<int, J>{}), ...);
    else (void)((J < k && (f(std::integral_constant<int, J>{}), true)) && ...);
  }(std::make_integer_sequence<int, D>{});
}

// Loads an m x n matrix into the register kernel K, factors it and stores it.
template <class K, class T> __attribute__((always_inline)) inline void factor_in(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info) {
  K r;
  r.load(m, n, a, lda);
  if (m == K::D && n == m) r.template run<true>(m, ipiv);
  else r.template run<false>(m < n ? m : n, ipiv);
  r.store(m, n, a, lda);
  *info = r.info;
}

// x - l * u on the lanes of the elements after the first `after` + 1 of a
// vector (all of them when `after` < 0), x elsewhere, with lr = rot(l): one
// masked multiply-add per real product, so the kept lanes keep their bits.
template <class T, class V>
__attribute__((always_inline)) inline V minus_product_below(V x, V l, V lr, T u, int after) {
  using S = simd<T>;
  const typename S::M below = S::mask(after + 1 > 0 ? after + 1 : 0, S::E);
#if defined(__AVX512F__)
  using R = real_t<T>;
  if constexpr (sizeof(R) == 8) {
    const __mmask8 k = static_cast<__mmask8>(lane_bits(below));
    if constexpr (S::cplx) {
      const __m512d y = _mm512_mask3_fnmadd_pd((__m512d)l, _mm512_set1_pd(u.real()), (__m512d)x, k);
      return (V)_mm512_mask3_fnmadd_pd((__m512d)lr, _mm512_set1_pd(u.imag()), y, k);
    } else {
      (void)lr;
      return (V)_mm512_mask3_fnmadd_pd((__m512d)l, _mm512_set1_pd(u), (__m512d)x, k);
    }
  } else {
    const __mmask16 k = static_cast<__mmask16>(lane_bits(below));
    if constexpr (S::cplx) {
      const __m512 y = _mm512_mask3_fnmadd_ps((__m512)l, _mm512_set1_ps(u.real()), (__m512)x, k);
      return (V)_mm512_mask3_fnmadd_ps((__m512)lr, _mm512_set1_ps(u.imag()), y, k);
    } else {
      (void)lr;
      return (V)_mm512_mask3_fnmadd_ps((__m512)l, _mm512_set1_ps(u), (__m512)x, k);
    }
  }
#else
  return S::blend(below, typename S::template factor<false>(u).minus(x, l, lr), x);
#endif
}

template <class T, int NV> struct lu_regs {
  using S = simd<T>;
  using R = real_t<T>;
  using V = typename S::V;
  using M = typename S::M;
  using Lane = typename S::Lane;
  static constexpr int E = static_cast<int>(S::E);
  static constexpr int D = NV * E;
  static constexpr int P = static_cast<int>(S::per);

  V c[D][NV];
  M row[NV];   // the row of each lane
  M valid[NV]; // lanes of the rows 0..m-1
  idx info = 0;

  // Row index of every lane of vector v (both lanes of a complex element).
  __attribute__((always_inline)) static M rows_of(int v) { return (vtypes<R>::lane() >> (P == 2 ? 1 : 0)) + static_cast<Lane>(v * E); }
  __attribute__((always_inline)) static V splat_t(T x) {
    V v;
    for (int k = 0; k < E; ++k) {
      if constexpr (P == 2) {
        v[2 * k] = x.real();
        v[2 * k + 1] = x.imag();
      } else {
        v[k] = x;
      }
    }
    return v;
  }
  // Element I of column j, I a constant.
  template <int I> __attribute__((always_inline)) T at(int j) const {
    if constexpr (P == 2) return T(c[j][I / E][(I % E) * 2], c[j][I / E][(I % E) * 2 + 1]);
    else return c[j][I / E][I % E];
  }

  __attribute__((always_inline)) void load(idx m, idx n, const T *a, idx lda) {
    for (int v = 0; v < NV; ++v) {
      row[v] = rows_of(v);
      valid[v] = row[v] < static_cast<Lane>(m);
    }
    if (m == D) {
      for (int j = 0; j < D; ++j)
        for (int v = 0; v < NV; ++v) c[j][v] = j < n ? S::load(a + j * lda + v * E) : S::splat(R(0));
      return;
    }
    alignas(64) T col[D];
    for (int j = 0; j < D; ++j) {
      for (idx i = 0; i < D; ++i) col[i] = j < n && i < m ? a[i + j * lda] : T(0);
      for (int v = 0; v < NV; ++v) c[j][v] = S::load(col + v * E);
    }
  }

  __attribute__((always_inline)) void store(idx m, idx n, T *a, idx lda) const {
    if (m == D) {
      for (int j = 0; j < D; ++j)
        if (j < n)
          for (int v = 0; v < NV; ++v) S::store(a + j * lda + v * E, c[j][v]);
      return;
    }
    alignas(64) T col[D];
    for (int j = 0; j < n; ++j) {
      for (int v = 0; v < NV; ++v) S::store(col + v * E, c[j][v]);
      for (idx i = 0; i < m; ++i) a[i + j * lda] = col[i];
    }
  }

  // Row of the pivot of column J: the first NaN, else the first row of
  // largest |re| + |im| among the rows J..m-1. The magnitudes are compared as
  // integers (their bit patterns order as the values do), with every NaN
  // raised to one key above infinity.
  template <int J> __attribute__((always_inline)) idx pivot() const {
    const M nan_key = (M)S::splat(__builtin_inf()) + Lane(1);
    M key[NV], best = M{} - Lane(1);
    for (int v = 0; v < NV; ++v) {
      V a = S::abs(c[J][v]);
      if constexpr (P == 2) a = a + vtypes<R>::swap(a);
      M k = (M)a;
      const M over = k > nan_key;
      k = (k & ~over) | (nan_key & over);
      const M use = valid[v] & (row[v] >= static_cast<Lane>(J));
      key[v] = (k & use) | (~use & (M{} - Lane(1)));
      const M gt = key[v] > best;
      best = (key[v] & gt) | (best & ~gt);
    }
    best = lanes_max(best);
    uint32_t bits = 0;
    for (int v = 0; v < NV; ++v) bits |= lane_bits(key[v] == best) << (v * E * P);
    return __builtin_ctz(bits) / P;
  }

  // Rows J and p of every column exchanged: one lane permutation per vector.
  template <int J> __attribute__((always_inline)) void swap_rows(int j0, idx p) {
    M idx[NV];
    for (int v = 0; v < NV; ++v) {
      const M g = vtypes<R>::lane() + static_cast<Lane>(v * E * P);
      idx[v] = g + ((row[v] == static_cast<Lane>(J)) & static_cast<Lane>((p - J) * P)) +
               ((row[v] == static_cast<Lane>(p)) & static_cast<Lane>((J - p) * P));
    }
    for (int j = j0; j < D; ++j) {
      V out[NV];
      for (int v = 0; v < NV; ++v) out[v] = permute<NV>(c[j], idx[v]);
      for (int v = 0; v < NV; ++v) c[j][v] = out[v];
    }
  }

  // 1/x of every element; complex by Smith's scaling, as inv() does for one.
  __attribute__((always_inline)) static V reciprocals(V x) {
    if constexpr (P == 1) {
      return S::splat(R(1)) / x;
    } else {
      // Even lanes compute the element's quotients: a = re, b = im.
      const V xs = vtypes<R>::swap(x);
      const M big = (M)(S::abs(x) >= S::abs(xs));  // |a| >= |b| on the even lanes
      const V p = S::blend(big, x, xs), q = S::blend(big, xs, x);
      const V r = q / p, d = p + q * r;
      const V one = S::splat(R(1));
      const V nre = S::blend(big, one, r), nim = S::blend(big, -r, -one);
      const M even = (vtypes<R>::lane() & Lane(1)) == Lane(0);
      return S::blend(even, nre, vtypes<R>::swap(nim)) / S::blend(even, d, vtypes<R>::swap(d));
    }
  }

  template <int J, bool Full> __attribute__((always_inline)) void step(idx *ipiv) {
    if constexpr (Full && J == D - 1) {
      // The last column of a full square: one candidate row, nothing below
      // it to scale or update.
      ipiv[J] = J + 1;
      if (at<J>(J) == T(0) && info == 0) info = J + 1;
      return;
    }
    // The reciprocals of the whole column are formed while the pivot search
    // runs, so that the division is off the chain of
    // dependent steps; the pivot's one is then picked by a permutation.
    V recip[NV];
    for (int v = 0; v < NV; ++v) recip[v] = reciprocals(c[J][v]);
    const idx p = pivot<J>();
    ipiv[J] = p + 1;
    swap_rows<J>(0, p);
    const T piv = at<J>(J);
    if (piv != T(0)) {
      if (abs1(piv) >= safe_min<R>()) {
        // The pivot's reciprocal on every lane (complex: the pair repeated).
        const V rb = permute<NV>(recip, (vtypes<R>::lane() & static_cast<Lane>(P - 1)) + static_cast<Lane>(p * P));
        T rp;
        if constexpr (P == 2) rp = T(rb[0], rb[1]);
        else rp = rb[0];
        const typename S::template factor<false> r(rp);
        for (int v = J / E; v < NV; ++v) {
          const M below = row[v] > static_cast<Lane>(J);
          V scaled;
          if constexpr (P == 1) scaled = c[J][v] * rb;
          else scaled = r.times(c[J][v]);
          c[J][v] = S::blend(below, scaled, c[J][v]);
        }
      } else {
        alignas(64) T col[D];
        for (int v = 0; v < NV; ++v) S::store(col + v * E, c[J][v]);
        for (int i = J + 1; i < D; ++i) col[i] = divide(col[i], piv);
        for (int v = 0; v < NV; ++v) c[J][v] = S::load(col + v * E);
      }
    } else if (info == 0) {
      info = J + 1;
    }
    // Trailing update of the rows below J; the rows above keep their bits
    // even where a multiplier times an infinite entry would give NaN.
    V lr[NV];
    for (int v = J / E; v < NV; ++v) lr[v] = S::rot(c[J][v]);
    static_for<D - 1 - J>([&](auto kk) __attribute__((always_inline)) {
      constexpr int col = J + 1 + decltype(kk)::value;
      const T u = at<J>(col);
      for (int v = J / E; v < NV; ++v) c[col][v] = minus_product_below<T>(c[col][v], c[J][v], lr[v], u, J - v * E);
    });
  }

  template <bool Full> __attribute__((always_inline)) void run(idx k, idx *ipiv) {
    static_steps<D, Full>(k, [&](auto j) __attribute__((always_inline)) { step<decltype(j)::value, Full>(ipiv); });
  }
};

#if defined(__AVX512F__)
// Complex LU of order up to one vector of reals (8 complex double) with the
// real and imaginary parts in separate registers (split on load, merged on
// store): every lane is a row, as for the real types, so the pivot search
// adds two magnitudes with no lane swap, the interchange is one permutation
// per part, and a complex multiply-add is four plain multiply-adds with no
// shuffles between them. The arithmetic per element is still that of the
// column algorithm: multipliers times the pivot's reciprocal, then each
// trailing entry less multiplier times row entry.
template <class R> struct lu_split {
  using T = std::complex<R>;
  using S = simd<R>;
  using V = typename S::V;
  using M = typename S::M;
  using Lane = typename S::Lane;
  static constexpr int D = static_cast<int>(S::E);
  V re[D], im[D];
  M valid;
  idx info = 0;

  __attribute__((always_inline)) static V bcast(V x, int lane) {
    return permute<1>(&x, M{} + static_cast<Lane>(lane));
  }

  __attribute__((always_inline)) void load(idx m, idx n, const T *a, idx lda) {
    valid = vtypes<R>::lane() < static_cast<Lane>(m);
    alignas(64) T col[D];
    for (int j = 0; j < D; ++j) {
      V lo, hi;
      if (m == D && j < n) {
        lo = simd<T>::load(a + j * lda);
        hi = simd<T>::load(a + j * lda + D / 2);
      } else {
        for (idx i = 0; i < D; ++i) col[i] = j < n && i < m ? a[i + j * lda] : T(0);
        lo = simd<T>::load(col);
        hi = simd<T>::load(col + D / 2);
      }
      split_parts(lo, hi, re[j], im[j]);
    }
  }

  __attribute__((always_inline)) void store(idx m, idx n, T *a, idx lda) const {
    alignas(64) T col[D];
    for (int j = 0; j < n; ++j) {
      V lo, hi;
      merge_parts(re[j], im[j], lo, hi);
      if (m == D) {
        simd<T>::store(a + j * lda, lo);
        simd<T>::store(a + j * lda + D / 2, hi);
      } else {
        simd<T>::store(col, lo);
        simd<T>::store(col + D / 2, hi);
        for (idx i = 0; i < m; ++i) a[i + j * lda] = col[i];
      }
    }
  }

  // Row of the pivot of column J (first NaN, else first largest |re| + |im|
  // among the rows J..m-1), by integer keys as in lu_regs::pivot.
  template <int J> __attribute__((always_inline)) idx pivot() const {
    const M nan_key = (M)S::splat(__builtin_inf()) + Lane(1);
    M k = (M)(S::abs(re[J]) + S::abs(im[J]));
    const M over = k > nan_key;
    k = (k & ~over) | (nan_key & over);
    const M use = valid & (vtypes<R>::lane() >= static_cast<Lane>(J));
    k = (k & use) | (~use & (M{} - Lane(1)));
    const M best = lanes_max(k);
    return __builtin_ctz(lane_bits(k == best));
  }

  template <int J, bool Full> __attribute__((always_inline)) void step(idx *ipiv) {
    if constexpr (Full && J == D - 1) {
      ipiv[J] = J + 1;
      if (re[J][J] == R(0) && im[J][J] == R(0) && info == 0) info = J + 1;
      return;
    }
    // The reciprocals of the whole column in the normal range, formed
    // while the search runs: conj(z) / |z|^2 with one division.
    const V s = S::splat(R(1)) / (re[J] * re[J] + im[J] * im[J]);
    const V rre = re[J] * s, rim = -(im[J] * s);
    const idx p = pivot<J>();
    ipiv[J] = p + 1;
    {
      const M lane = vtypes<R>::lane();
      const M idxv = lane + ((lane == static_cast<Lane>(J)) & static_cast<Lane>(p - J)) +
                     ((lane == static_cast<Lane>(p)) & static_cast<Lane>(J - p));
      for (int j = 0; j < D; ++j) {
        re[j] = permute<1>(&re[j], idxv);
        im[j] = permute<1>(&im[j], idxv);
      }
    }
    const T piv(re[J][J], im[J][J]);
    const M below = vtypes<R>::lane() > static_cast<Lane>(J);
    const __mmask8 kb = static_cast<__mmask8>(lane_bits(below));
    if (piv != T(0)) {
      if (abs1(piv) >= safe_min<R>()) {
        constexpr R lo = sizeof(R) == 8 ? 0x1p-500 : 0x1p-58f, hi = sizeof(R) == 8 ? 0x1p500 : 0x1p58f;
        const R big = std::fabs(piv.real()) >= std::fabs(piv.imag()) ? std::fabs(piv.real()) : std::fabs(piv.imag());
        V fr, fi;
        if (big > lo && big < hi) {
          fr = bcast(rre, static_cast<int>(p));
          fi = bcast(rim, static_cast<int>(p));
        } else {
          const T r = inv(piv);
          fr = S::splat(r.real());
          fi = S::splat(r.imag());
        }
        const V nre = re[J] * fr - im[J] * fi, nim = re[J] * fi + im[J] * fr;
        re[J] = S::blend(below, nre, re[J]);
        im[J] = S::blend(below, nim, im[J]);
      } else {
        alignas(64) R xr[D], xi[D];
        S::store(xr, re[J]);
        S::store(xi, im[J]);
        for (int i = J + 1; i < D; ++i) {
          const T q = divide(T(xr[i], xi[i]), piv);
          xr[i] = q.real();
          xi[i] = q.imag();
        }
        re[J] = S::load(xr);
        im[J] = S::load(xi);
      }
    } else if (info == 0) {
      info = J + 1;
    }
    // Trailing update of the rows below J, masked so that the rows above
    // keep their bits.
    const __m512d lr = (__m512d)re[J], li = (__m512d)im[J];
    static_for<D - 1 - J>([&](auto kk) __attribute__((always_inline)) {
      constexpr int col = J + 1 + decltype(kk)::value;
      const __m512d ur = _mm512_set1_pd(re[col][J]), ui = _mm512_set1_pd(im[col][J]);
      __m512d xr = _mm512_mask3_fnmadd_pd(lr, ur, (__m512d)re[col], kb);
      __m512d xi = _mm512_mask3_fnmadd_pd(lr, ui, (__m512d)im[col], kb);
      xr = _mm512_mask3_fmadd_pd(li, ui, xr, kb);
      xi = _mm512_mask3_fnmadd_pd(li, ur, xi, kb);
      re[col] = (V)xr;
      im[col] = (V)xi;
    });
  }

  template <bool Full> __attribute__((always_inline)) void run(idx k, idx *ipiv) {
    static_steps<D, Full>(k, [&](auto j) __attribute__((always_inline)) { step<decltype(j)::value, Full>(ipiv); });
  }
};

// m x n complex double with m, n <= 8.
inline void getrf_split(idx m, idx n, std::complex<double> *a, idx lda, idx *ipiv, idx *info) {
  factor_in<lu_split<double>>(m, n, a, lda, ipiv, info);
}
#endif


// m x n with m, n <= NV vectors of elements.
template <class T, int NV> void getrf_in_registers(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info) {
  factor_in<lu_regs<T, NV>>(m, n, a, lda, ipiv, info);
}

}  // namespace ps
}  // namespace NXL_LOCAL_NS
}  // namespace nxl

#endif  // NXL_LAPACK_PS_LU_REGS_H
