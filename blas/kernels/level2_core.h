// Level-2 building blocks shared by the kernels of every code path.
//
// Three column primitives carry all the arithmetic on matrix columns:
//   axpy_cols   y += A t                 (column sweeps, blocked over 4 columns)
//   dot_cols    out = op(A)^T x          (blocked dot products, lane accumulators)
//   fused_cols  y += A t and out = op(A)^T x in one pass over A
// Complex columns are handled as arrays of reals (re, im interleaved), so the
// same lane loops vectorise for the four precisions. Every element of a result
// is accumulated in an order fixed by the shape and the build's lane count
// (the reproducible build has a single build, hence a single order).
#ifndef NXL_BLAS_LEVEL2_CORE_H
#define NXL_BLAS_LEVEL2_CORE_H

#include <cstdint>
#include <utility>

#include "service/scalar.h"

#if defined(__AVX__)
#include <immintrin.h>
#endif

namespace nxl {
inline namespace NXL_CP_NS {
namespace l2 {

#if defined(NXL_CP) && NXL_CP >= 6 && NXL_CP < 100
inline constexpr int kVecBytes = 64;
#elif defined(NXL_CP) && NXL_CP >= 4 && NXL_CP < 100
inline constexpr int kVecBytes = 32;
#else
inline constexpr int kVecBytes = 16;
#endif

template <bool C, class T>
inline T opc(T a) {
  if constexpr (C) return nxl::conj(a);
  else return a;
}

// A vector of the code path's width, as a compiler vector type, and the
// exchange of neighbouring lanes (real and imaginary parts).
template <class R> struct lanes {
  static constexpr int VL = kVecBytes / int(sizeof(R));
  typedef R V __attribute__((vector_size(kVecBytes)));
  static V load(const R *p) {
    V v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
  }
  static void store(R *p, V v) { __builtin_memcpy(p, &v, sizeof v); }
  static V splat(R r) {
    V v;
    for (int k = 0; k < VL; ++k) v[k] = r;
    return v;
  }
  // Integer lanes of the same width: lane masks (all bits set or clear).
  typedef std::conditional_t<sizeof(R) == 8, long long, int> I;
  typedef I M __attribute__((vector_size(kVecBytes)));
  static M mask(int l0, int l1) {
    M io;
    for (int k = 0; k < VL; ++k) io[k] = I(k);
    return (io >= I(l0)) & (io < I(l1));
  }
  static M mask_odd() {
    M io;
    for (int k = 0; k < VL; ++k) io[k] = I(k & 1 ? -1 : 0);
    return io;
  }
  // Lanes of m from a, the others from b.
  static V blend(M m, V a, V b) { return (V)(((M)a & m) | ((M)b & ~m)); }
  // Lanes [l0, l1) from p[l0..l1), zero elsewhere; p + l is read only for
  // those lanes (masked loads do not fault on the others).
  static V load_part(const R *p, int l0, int l1) {
#if defined(__AVX512F__)
    if constexpr (kVecBytes == 64) {
      const unsigned k = ((1u << l1) - 1u) & ~((1u << l0) - 1u);
      if constexpr (sizeof(R) == 8) return (V)_mm512_maskz_loadu_pd(__mmask8(k), p);
      else return (V)_mm512_maskz_loadu_ps(__mmask16(k), p);
    }
#endif
#if defined(__AVX__)
    if constexpr (kVecBytes == 32) {
      if constexpr (sizeof(R) == 8) return (V)_mm256_maskload_pd(p, (__m256i)mask(l0, l1));
      else return (V)_mm256_maskload_ps(p, (__m256i)mask(l0, l1));
    }
#endif
    V v = V{} * R(0);
    for (int k = l0; k < l1; ++k) v[k] = p[k];
    return v;
  }
  // Stores lanes [l0, l1) of v to p[l0..l1) and nothing else.
  static void store_part(R *p, V v, int l0, int l1) {
#if defined(__AVX512F__)
    if constexpr (kVecBytes == 64) {
      const unsigned k = ((1u << l1) - 1u) & ~((1u << l0) - 1u);
      if constexpr (sizeof(R) == 8) _mm512_mask_storeu_pd(p, __mmask8(k), (__m512d)v);
      else _mm512_mask_storeu_ps(p, __mmask16(k), (__m512)v);
      return;
    }
#endif
#if defined(__AVX__)
    if constexpr (kVecBytes == 32) {
      if constexpr (sizeof(R) == 8) _mm256_maskstore_pd(p, (__m256i)mask(l0, l1), (__m256d)v);
      else _mm256_maskstore_ps(p, (__m256i)mask(l0, l1), (__m256)v);
      return;
    }
#endif
    for (int k = l0; k < l1; ++k) p[k] = v[k];
  }
  // A lane mask for load_k and madd_k: mask bits on 64-byte vectors, lanes
  // of all bits set or clear elsewhere.
#if defined(__AVX512F__)
  typedef std::conditional_t<kVecBytes == 64, unsigned, M> K;
#else
  typedef M K;
#endif
  static K kmask(int l0, int l1) {
    if constexpr (std::is_same_v<K, unsigned>) return ((1u << l1) - 1u) & ~((1u << l0) - 1u);
    else return mask(l0, l1);
  }
  // The lanes of k from p, zero elsewhere; the other lanes are not read.
  static V load_k(const R *p, K k) {
#if defined(__AVX512F__)
    if constexpr (kVecBytes == 64) {
      if constexpr (sizeof(R) == 8) return (V)_mm512_maskz_loadu_pd(__mmask8(k), p);
      else return (V)_mm512_maskz_loadu_ps(__mmask16(k), p);
    }
#endif
#if defined(__AVX__)
    if constexpr (kVecBytes == 32) {
      if constexpr (sizeof(R) == 8) return (V)_mm256_maskload_pd(p, (__m256i)k);
      else return (V)_mm256_maskload_ps(p, (__m256i)k);
    }
#endif
    if constexpr (!std::is_same_v<K, unsigned>) {
      V v = V{} * R(0);
      for (int l = 0; l < VL; ++l)
        if (k[l]) v[l] = p[l];
      return v;
    }
  }
  // acc + a*b in the lanes of k, acc elsewhere.
  static V madd_k(V acc, V a, V b, K k) {
#if defined(__AVX512F__)
    if constexpr (kVecBytes == 64) {
      if constexpr (sizeof(R) == 8)
        return (V)_mm512_mask3_fmadd_pd((__m512d)a, (__m512d)b, (__m512d)acc, __mmask8(k));
      else
        return (V)_mm512_mask3_fmadd_ps((__m512)a, (__m512)b, (__m512)acc, __mmask16(k));
    }
#endif
    if constexpr (!std::is_same_v<K, unsigned>) return blend(k, acc + a * b, acc);
  }
  static V swap(V v) {
    if constexpr (VL == 2) return __builtin_shufflevector(v, v, 1, 0);
    else if constexpr (VL == 4) return __builtin_shufflevector(v, v, 1, 0, 3, 2);
    else if constexpr (VL == 8) return __builtin_shufflevector(v, v, 1, 0, 3, 2, 5, 4, 7, 6);
    else return __builtin_shufflevector(v, v, 1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14);
  }
};

// The sums of the even and of the odd lanes of v (N lanes), by halving:
// the upper half of the lanes is added to the lower one until two remain.
// Halves keep the lane parity, and the order is set by N alone.
template <class R, int N, class V>
__attribute__((always_inline)) inline void lane_pair_sums(V v, R &even, R &odd) {
  if constexpr (N == 2) {
    even = v[0];
    odd = v[1];
  } else {
    const auto h = [&]<int... I>(std::integer_sequence<int, I...>) __attribute__((always_inline)) {
      return __builtin_shufflevector(v, v, I...) + __builtin_shufflevector(v, v, (I + N / 2)...);
    }(std::make_integer_sequence<int, N / 2>{});
    lane_pair_sums<R, N / 2>(h, even, odd);
  }
}

// The lane-pair sums of NC vectors of VL lanes at once: even[c] and odd[c]
// are lane_pair_sums<R, VL>(v[c]), by the same additions, while the columns
// move into the lanes as the halving goes: each step adds the halves of the
// segments of two vectors into one vector of twice as many segments, half
// as wide, so a group of columns takes a few shuffles per step instead of a
// reduction each. Segment s of a result lies at lanes [s h, (s + 1) h),
// h = W / 2; segments [0, VL / W) come from a, the rest from b.
template <int VL, int W, int Hi> constexpr int halve_lane(int L) {
  const int h = W / 2, s = L / h, i = L % h + Hi * h, k = VL / W;
  return s < k ? s * W + i : VL + (s - k) * W + i;
}
template <int VL, int Odd> constexpr int parity_lane(int L) { return 2 * L + Odd; }

template <class R, int VL, int W, int M, int NC, class V>
__attribute__((always_inline)) inline void pair_sums_step(const V *v, R *even, R *odd) {
  constexpr int H = (M + 1) / 2;  // an odd last vector pairs with itself
  if constexpr (W > 2) {
    V h[H];
#pragma clang loop unroll(full)
    for (int i = 0; i < H; ++i) {
      const V a = v[2 * i], b = 2 * i + 1 < M ? v[2 * i + 1] : v[2 * i];
      h[i] = [&]<int... L>(std::integer_sequence<int, L...>) __attribute__((always_inline)) {
        return __builtin_shufflevector(a, b, halve_lane<VL, W, 0>(L)...) +
               __builtin_shufflevector(a, b, halve_lane<VL, W, 1>(L)...);
      }(std::make_integer_sequence<int, VL>{});
    }
    pair_sums_step<R, VL, W / 2, H, NC>(h, even, odd);
  } else {
    // Each vector holds VL / 2 columns as (even, odd) lane pairs.
#pragma clang loop unroll(full)
    for (int i = 0; i < H; ++i) {
      const V a = v[2 * i], b = 2 * i + 1 < M ? v[2 * i + 1] : v[2 * i];
      const auto split = [&]<int... L>(std::integer_sequence<int, L...>) __attribute__((always_inline)) {
        return std::pair{__builtin_shufflevector(a, b, parity_lane<VL, 0>(L)...),
                         __builtin_shufflevector(a, b, parity_lane<VL, 1>(L)...)};
      }(std::make_integer_sequence<int, VL>{});
#pragma clang loop unroll(full)
      for (int l = 0; l < VL && i * VL + l < NC; ++l) {
        even[i * VL + l] = split.first[l];
        odd[i * VL + l] = split.second[l];
      }
    }
  }
}

template <class R, int VL, int NC, class V>
__attribute__((always_inline)) inline void lane_pair_sums_cols(const V (&v)[NC], R *even, R *odd) {
  pair_sums_step<R, VL, VL, NC, NC>(v, even, odd);
}

// A scalar of T as two vectors for y += a*t on interleaved lanes:
// tr = (re t, re t, ...), ti = (-im t, im t, ...) (zero for real T), so
// that a*t = a*tr + swap(a)*ti.
template <class T, class V>
inline void bcast_scale(T t, V &tr, V &ti) {
  tr = V{} * real_t<T>(0) + re(t);
  ti = V{} * real_t<T>(0);
  if constexpr (is_complex_v<T>)
    for (int k = 0; k < int(sizeof(V) / sizeof(real_t<T>)); k += 2) {
      ti[k] = -im(t);
      ti[k + 1] = im(t);
    }
}

// Software prefetch distance of the matrix streams, in bytes ahead of the
// rows being read. One core pulls far more from memory with several column
// streams requested ahead than the hardware prefetchers alone give it on
// columns of a few kilobytes.
inline constexpr idx kPfBytes = 512;

// Requests the cache lines of [p + kPfBytes, p + kPfBytes + Bytes) (at
// least one line); Write asks for them with the intent to modify.
template <idx Bytes, bool Write = false, class R>
__attribute__((always_inline)) inline void prefetch_ahead(const R *p) {
  const char *c = reinterpret_cast<const char *>(p) + kPfBytes;
#pragma clang loop unroll(full)
  for (idx o = 0; o < (Bytes > 64 ? Bytes : 64); o += 64) __builtin_prefetch(c + o, Write ? 1 : 0, 3);
}

// Dot products of NC columns ac[c] with x over `len` reals (complex: re/im
// interleaved), and with Axpy also y += sum_c ac[c] * tr[c] (real only).
// Two vector accumulators per column collect a * x (P) and, for complex,
// a * swapped x (Q), so that consecutive multiply-adds are independent; the
// tail (fewer than two vectors) goes into per-parity sums. The result for
// column c: real, the sum of its lanes; complex, the even and odd lanes
// combined by finish().
template <class R, int NC, bool Cx, bool Axpy>
struct DotBlock {
  using X = lanes<R>;
  using V = typename X::V;
  static constexpr int VL = X::VL;
  R pe[NC], po[NC], qe[NC], qo[NC];  // sums by lane parity

  __attribute__((always_inline)) inline void run(idx len, const R *const *ac, const R *tr,
                                                 R *__restrict y, const R *__restrict x) {
    V P[NC][2], Q[NC][2];
    const V zero = V{} * R(0);
#pragma clang loop unroll(full)
    for (int c = 0; c < NC; ++c) P[c][0] = P[c][1] = Q[c][0] = Q[c][1] = zero;
    idx b = 0;
    for (; b + 2 * VL <= len; b += 2 * VL) {
#pragma clang loop unroll(full)
      for (int c = 0; c < NC; ++c) prefetch_ahead<2 * kVecBytes>(ac[c] + b);
#pragma clang loop unroll(full)
      for (int h = 0; h < 2; ++h) {
        const V xv = X::load(x + b + h * VL);
        const V xs = Cx ? X::swap(xv) : zero;
        V yv = Axpy ? X::load(y + b + h * VL) : zero;
#pragma clang loop unroll(full)
        for (int c = 0; c < NC; ++c) {
          const V av = X::load(ac[c] + b + h * VL);
          P[c][h] = P[c][h] + av * xv;
          if constexpr (Cx) Q[c][h] = Q[c][h] + av * xs;
          if constexpr (Axpy) yv = yv + av * tr[c];
        }
        if constexpr (Axpy) X::store(y + b + h * VL, yv);
      }
    }
#pragma clang loop unroll(full)
    for (int c = 0; c < NC; ++c) {
      lane_pair_sums<R, VL>(P[c][0] + P[c][1], pe[c], po[c]);
      if constexpr (Cx) lane_pair_sums<R, VL>(Q[c][0] + Q[c][1], qe[c], qo[c]);
      else qe[c] = qo[c] = R(0);
    }
    // Tail: complex lengths are even, so lane parities carry on.
    for (idx p = b; p < len; ++p) {
      const bool odd = (p - b) & 1;
      R yv = Axpy ? y[p] : R(0);
      for (int c = 0; c < NC; ++c) {
        const R av = ac[c][p];
        if (odd) {
          po[c] = po[c] + av * x[p];
          if constexpr (Cx) qo[c] = qo[c] + av * x[p - 1];
        } else {
          pe[c] = pe[c] + av * x[p];
          if constexpr (Cx) qe[c] = qe[c] + av * x[p + 1];
        }
        if constexpr (Axpy) yv = yv + av * tr[c];
      }
      if constexpr (Axpy) y[p] = yv;
    }
  }

  template <class T, bool Conj> T finish(int c) const {
    if constexpr (is_complex_v<T>) {
      if constexpr (Conj) return T(pe[c] + po[c], qe[c] - qo[c]);
      else return T(pe[c] - po[c], qe[c] + qo[c]);
    } else {
      return pe[c] + po[c];
    }
  }
};

// y += A t over NC columns, unit stride. y is loaded and stored once for the
// NC columns, and every element gets the lane arithmetic of the whole
// vectors, the ragged end included (masked), so its bits do not depend on
// where the rows of a call start. Real columns go in groups of four: each
// group's products are summed on their own, in column order, and the sum
// added to y, so that y waits on one addition per group rather than on a
// multiply-add per column (over short columns that chain, not the loads,
// sets the time); callers that start the groups at multiples of four
// columns get the same bits from 16, 8 or 4 columns per call. Complex
// columns, whose broadcasts already fill the registers, go in column order
// onto y (y + a_0 t_0 + a_1 t_1 + ...) for the products with the real parts
// of t, and those with the imaginary parts into a second sum w (lanes
// ar*ti, ai*ti), exchanged and added with its signs after every eight
// columns (real lanes y - sum ai*ti, imaginary lanes y + sum ar*ti): two
// chains and one exchange per eight columns instead of one chain of twice
// the length and an exchange per column. Sixteen columns so give the bits
// of two calls of eight.
template <class T, int NC>
inline void axpy_unit(idx m, const T *const *a, const T *t, T *__restrict y) {
  using R = real_t<T>;
  using X = lanes<R>;
  using V = typename X::V;
  constexpr int VL = X::VL;
  constexpr bool Cx = is_complex_v<T>;
  constexpr idx W = Cx ? 2 : 1;
  // Two cache lines of every column per step.
  constexpr int U = 128 / kVecBytes;
  const R *ac[NC];
  V tr[NC], ti[NC];
  [[maybe_unused]] V sgn = X::splat(R(1));
#pragma clang loop unroll(full)
  for (int c = 0; c < NC; ++c) {
    ac[c] = reinterpret_cast<const R *>(a[c]);
    tr[c] = X::splat(re(t[c]));
    ti[c] = X::splat(im(t[c]));
  }
  if constexpr (Cx)
    for (int k = 0; k < VL; k += 2) sgn[k] = R(-1);
  R *__restrict yr = reinterpret_cast<R *>(y);
  const idx len = m * W;
  auto step = [&](idx b, int l1, auto full) __attribute__((always_inline)) {
    constexpr bool Full = decltype(full)::value;
    V yv = Full ? X::load(yr + b) : X::load_part(yr + b, 0, l1);
    V p = V{}, w = V{};
#pragma clang loop unroll(full)
    for (int c = 0; c < NC; ++c) {
      const V av = Full ? X::load(ac[c] + b) : X::load_part(ac[c] + b, 0, l1);
      if constexpr (Cx) {
        yv = yv + av * tr[c];
        w = w + av * ti[c];
        if (c % 8 == 7 || c == NC - 1) {
          yv = yv + X::swap(w) * sgn;
          w = V{};
        }
      } else {
        p = c % 4 == 0 ? av * tr[c] : p + av * tr[c];
        if (c % 4 == 3 || c == NC - 1) yv = yv + p;
      }
    }
    if (Full) X::store(yr + b, yv);
    else X::store_part(yr + b, yv, 0, l1);
  };
  idx b = 0;
  // Real columns that share their offset within a vector start with the
  // rows up to the next vector boundary, so that the loads of the columns
  // (not of y, loaded once for all of them) do not straddle cache lines.
  // Every element of y gets the same operations wherever the blocks start.
  // Complex steps, with their exchanges, cost more than the straddling
  // loads they would save.
  {
    const uintptr_t off = reinterpret_cast<uintptr_t>(ac[0]) & (kVecBytes - 1);
    bool same = off != 0;
#pragma clang loop unroll(full)
    for (int c = 1; c < NC; ++c) same = same && (reinterpret_cast<uintptr_t>(ac[c]) & (kVecBytes - 1)) == off;
    const idx head = idx(kVecBytes - off) / idx(sizeof(R));
    if (!Cx && same && off % sizeof(T) == 0 && len > 2 * VL) {
      step(0, int(head), std::false_type{});
      b = head;
    }
  }
  for (; b + U * VL <= len; b += U * VL) {
#pragma clang loop unroll(full)
    for (int c = 0; c < NC; ++c) prefetch_ahead<128>(ac[c] + b);
#pragma clang loop unroll(full)
    for (int u = 0; u < U; ++u) step(b + u * VL, VL, std::true_type{});
  }
  for (; b + VL <= len; b += VL) step(b, VL, std::true_type{});
  if (b < len) step(b, int(len - b), std::false_type{});
}

// NC columns of A (a[c] points at the first row of column c), unit-stride
// vectors.
template <class T, int NC, bool Conj, bool Axpy, bool Dot>
inline void cols_unit(idx m, const T *const *a, const T *t, T *y, const T *x, T *out) {
  if constexpr (Axpy && !Dot) {
    axpy_unit<T, NC>(m, a, t, y);
    return;
  }
  if constexpr (Axpy && Dot && is_complex_v<T>) {
    // Complex columns: the dot products, then the sweep over the same
    // columns while they are still in cache; one fused loop needs more
    // shuffles per element than the two separate ones.
    cols_unit<T, NC, Conj, false, true>(m, a, t, y, x, out);
    axpy_unit<T, NC>(m, a, t, y);
    return;
  }
  using R = real_t<T>;
  constexpr bool Cx = is_complex_v<T>;
  constexpr int W = Cx ? 2 : 1;
  const R *ac[NC];
  R tr[NC];
  for (int c = 0; c < NC; ++c) {
    ac[c] = reinterpret_cast<const R *>(a[c]);
    tr[c] = Axpy ? re(t[c]) : R(0);
  }
  DotBlock<R, NC, Cx, Axpy> blk;
  blk.run(m * W, ac, tr, reinterpret_cast<R *>(y), reinterpret_cast<const R *>(x));
  for (int c = 0; c < NC; ++c) out[c] = blk.template finish<T, Conj>(c);
}

// The distance in bytes between the first two columns a[0], a[1] reduced to
// its greatest common divisor with 4096: 4096 when all the columns share
// their address bits below 4096 (a leading dimension of 512 doubles times a
// power of two), 1 for a single column.
template <class P> inline uintptr_t col_low_bits(idx g, const P *a) {
  if (g < 2) return 1;
  const uintptr_t d = (reinterpret_cast<uintptr_t>(a[1]) - reinterpret_cast<uintptr_t>(a[0])) & 4095;
  return d ? (d & (~d + 1)) : 4096;
}

// The most such columns one step should touch: the first-level cache has
// 64 sets of 64-byte lines and 12 ways, so columns 4096 bytes apart share
// one set and columns 2048 bytes apart two; more of them than the ways hold
// evict each other on every step.
inline int cols_per_step(uintptr_t low) { return low >= 4096 ? 4 : low >= 2048 ? 8 : 16; }

// Strided vectors: one column at a time, single accumulator.
template <class T, bool Conj, bool Axpy, bool Dot>
inline void cols_strided(idx m, idx n, const T *const *a, const T *t, T *y, idx incy,
                         const T *x, idx incx, T *out) {
  for (idx j = 0; j < n; ++j) {
    const T *col = a[j];
    T s = T(0);
    T tj = Axpy ? t[j] : T(0);
    for (idx i = 0; i < m; ++i) {
      if constexpr (Axpy) y[i * incy] = y[i * incy] + mul(col[i], tj);
      if constexpr (Dot) s = s + mul(opc<Conj>(col[i]), x[i * incx]);
    }
    if constexpr (Dot) out[j] = s;
  }
}

// Columns a[0], ..., a[n-1] (any addresses, m rows each), in groups of up
// to four (more for the sweeps y += A t alone and for real dot products).
template <class T, bool Conj, bool Axpy, bool Dot>
inline void cols_p(idx m, idx n, const T *const *a, const T *t, T *y, idx incy, const T *x,
                   idx incx, T *out) {
  if (m <= 0 || n <= 0) {
    if constexpr (Dot)
      for (idx j = 0; j < n; ++j) out[j] = T(0);
    return;
  }
  if ((Axpy && incy != 1) || (Dot && incx != 1)) {
    cols_strided<T, Conj, Axpy, Dot>(m, n, a, t, y, incy, x, incx, out);
    return;
  }
  idx j = 0;
  if constexpr (Axpy && !Dot) {
    const int cap = cols_per_step(col_low_bits(n, a));
    // Complex columns take two broadcast vectors each: sixteen of them do
    // not leave the registers a step needs, which costs more than the
    // extra passes over y while y is short; over long columns the passes
    // over y cost more.
    if (cap >= 16 && (!is_complex_v<T> || m * idx(sizeof(T)) > 4096))
      for (; j + 16 <= n; j += 16) cols_unit<T, 16, Conj, Axpy, Dot>(m, a + j, t + j, y, x, out);
    if (cap >= 8)
      for (; j + 8 <= n; j += 8) cols_unit<T, 8, Conj, Axpy, Dot>(m, a + j, t + j, y, x, out);
  }
  // Real dot products on 64-byte vectors: eight columns (sixteen
  // accumulators) per pass over x (and over y with the sweep).
  if constexpr (Dot && !is_complex_v<T> && kVecBytes == 64)
    for (; j + 8 <= n; j += 8) cols_unit<T, 8, Conj, Axpy, Dot>(m, a + j, Axpy ? t + j : t, y, x, out + j);
  for (; j + 4 <= n; j += 4)
    cols_unit<T, 4, Conj, Axpy, Dot>(m, a + j, Axpy ? t + j : t, y, x, Dot ? out + j : out);
  const T *tj = Axpy ? t + j : t;
  T *oj = Dot ? out + j : out;
  switch (n - j) {
    case 3: cols_unit<T, 3, Conj, Axpy, Dot>(m, a + j, tj, y, x, oj); break;
    case 2: cols_unit<T, 2, Conj, Axpy, Dot>(m, a + j, tj, y, x, oj); break;
    case 1: cols_unit<T, 1, Conj, Axpy, Dot>(m, a + j, tj, y, x, oj); break;
    default: break;
  }
}

// The same for n columns at a fixed distance lda.
template <class T, bool Conj, bool Axpy, bool Dot>
inline void cols(idx m, idx n, const T *a, idx lda, const T *t, T *y, idx incy, const T *x,
                 idx incx, T *out) {
  constexpr idx G = 64;
  const T *p[G];
  for (idx j0 = 0; j0 < n; j0 += G) {
    const idx g = n - j0 < G ? n - j0 : G;
    for (idx c = 0; c < g; ++c) p[c] = a + (j0 + c) * lda;
    cols_p<T, Conj, Axpy, Dot>(m, g, p, Axpy ? t + j0 : t, y, incy, x, incx, Dot ? out + j0 : out);
  }
}

// y[i*incy] += sum_j A(i,j) t[j]  (t contiguous, already scaled).
template <class T>
inline void axpy_cols(idx m, idx n, const T *a, idx lda, const T *t, T *y, idx incy) {
  cols<T, false, true, false>(m, n, a, lda, t, y, incy, nullptr, 1, nullptr);
}

// out[j] = sum_i op(A(i,j)) x[i*incx].
template <class T, bool Conj>
inline void dot_cols(idx m, idx n, const T *a, idx lda, const T *x, idx incx, T *out) {
  cols<T, Conj, false, true>(m, n, a, lda, nullptr, nullptr, 1, x, incx, out);
}

// Both of the above in one pass over A.
template <class T, bool Conj>
inline void fused_cols(idx m, idx n, const T *a, idx lda, const T *t, T *y, idx incy,
                       const T *x, idx incx, T *out) {
  cols<T, Conj, true, true>(m, n, a, lda, t, y, incy, x, incx, out);
}

// The three primitives on columns given by their addresses.
template <class T>
inline void axpy_cols_p(idx m, idx n, const T *const *a, const T *t, T *y, idx incy) {
  cols_p<T, false, true, false>(m, n, a, t, y, incy, nullptr, 1, nullptr);
}
template <class T, bool Conj>
inline void dot_cols_p(idx m, idx n, const T *const *a, const T *x, idx incx, T *out) {
  cols_p<T, Conj, false, true>(m, n, a, nullptr, nullptr, 1, x, incx, out);
}
template <class T, bool Conj>
inline void fused_cols_p(idx m, idx n, const T *const *a, const T *t, T *y, idx incy,
                         const T *x, idx incx, T *out) {
  cols_p<T, Conj, true, true>(m, n, a, t, y, incy, x, incx, out);
}

// Ragged columns: columns whose stored rows [lo, hi) differ from one column
// to the next (band storage, the rows of a group outside its own triangle),
// p pointing at row lo; y and x are unit-stride and indexed by row. Each
// column runs over vector blocks on a fixed grid of rows (multiples of the
// vector length from row 0): whole blocks inside, masked loads and stores
// for its first and last blocks, so the corners of a band cost vector
// operations, not element loops, and consecutive columns meet the same y
// blocks at the same addresses.
//   Axpy: y[r] += A(r) t          Dot: returns sum_r op(A(r)) x[r]
// Dot products sum four lane accumulators in a fixed order set by the rows
// alone, so they do not depend on how the columns are grouped.
template <class T, bool Conj, bool Axpy, bool Dot>
inline T ragged_col(idx lo, idx hi, const T *p, T t, T *y, const T *x) {
  using R = real_t<T>;
  using X = lanes<R>;
  using V = typename X::V;
  constexpr int VL = X::VL;
  constexpr bool Cx = is_complex_v<T>;
  constexpr idx W = Cx ? 2 : 1;
  const idx lr = W * lo, hr = W * hi;
  if (hr <= lr) return T(0);
  const R *ar = reinterpret_cast<const R *>(p);
  const R *xr = reinterpret_cast<const R *>(x);
  R *yr = reinterpret_cast<R *>(y);
  const V zero = V{} * R(0);
  V tr, ti;
  bcast_scale(t, tr, ti);
  V P[4] = {zero, zero, zero, zero}, Q[4] = {zero, zero, zero, zero};
  // One block of rows [b, b + VL): lanes [l0, l1) (all lanes when Full).
  auto step = [&](idx b, int l0, int l1, auto full, int acc) __attribute__((always_inline)) {
    constexpr bool Full = decltype(full)::value;
    const R *q = ar + (b - lr);
    const V av = Full ? X::load(q) : X::load_part(q, l0, l1);
    if constexpr (Axpy) {
      V yv = Full ? X::load(yr + b) : X::load_part(yr + b, l0, l1);
      yv = yv + av * tr;
      if constexpr (Cx) yv = yv + X::swap(av) * ti;
      if (Full) X::store(yr + b, yv);
      else X::store_part(yr + b, yv, l0, l1);
    }
    if constexpr (Dot) {
      const V xv = Full ? X::load(xr + b) : X::load_part(xr + b, l0, l1);
      P[acc] = P[acc] + av * xv;
      if constexpr (Cx) Q[acc] = Q[acc] + av * X::swap(xv);
    }
  };
  using part = std::false_type;
  using whole = std::true_type;
  idx b = lr - lr % VL;
  if (b != lr || hr - b < VL) {
    step(b, int(lr - b), int(hr - b < VL ? hr - b : VL), part{}, 0);
    b += VL;
  }
  for (; b + 4 * VL <= hr; b += 4 * VL) {
    step(b, 0, VL, whole{}, 0);
    step(b + VL, 0, VL, whole{}, 1);
    step(b + 2 * VL, 0, VL, whole{}, 2);
    step(b + 3 * VL, 0, VL, whole{}, 3);
  }
  for (; b + VL <= hr; b += VL) step(b, 0, VL, whole{}, 1);
  if (b < hr) step(b, 0, int(hr - b), part{}, 2);
  if constexpr (Dot) {
    const V pv = (P[0] + P[1]) + (P[2] + P[3]);
    R pe, po;
    lane_pair_sums<R, VL>(pv, pe, po);
    if constexpr (Cx) {
      const V qv = (Q[0] + Q[1]) + (Q[2] + Q[3]);
      R qe, qo;
      lane_pair_sums<R, VL>(qv, qe, qo);
      return Conj ? T(pe + po, qe - qo) : T(pe - po, qe + qo);
    } else {
      return pe + po;
    }
  }
  return T(0);
}

// g ragged columns (empty ranges allowed: their dot products are 0).
template <class T, bool Conj, bool Axpy, bool Dot>
inline void ragged_cols(idx g, const idx *lo, const idx *hi, const T *const *p, const T *t, T *y,
                        const T *x, T *out) {
  for (idx c = 0; c < g; ++c) {
    const T v = ragged_col<T, Conj, Axpy, Dot>(lo[c], hi[c], p[c], Axpy ? t[c] : T(0), y, x);
    if constexpr (Dot) out[c] = v;
  }
}

// The group of NC columns [j0, j0 + NC) of the triangle on the diagonal of a
// symmetric (Hermitian) matrix in full storage, nb columns (a at row 0 of
// column 0, lda apart), in one pass over their rows, unit-stride vectors:
// for each column j < nb with stored rows off the diagonal, [j + 1, nb)
// (lower) or [0, j) (upper), y[r] += A(r, j) t[c] and out[c] =
// sum_r op(A(r, j)) x[r]. The rows of the group together run in vector
// blocks on a grid from row 0 (aligned with the caller's y and x, the same
// for every group); y is loaded and stored once per block for all NC
// columns, and the lanes outside a column's rows take no part in its sums
// (masked multiply-adds), so values outside the stored triangle never
// enter a result. Columns without such rows take no part and get 0.
template <class T, int NC, bool Conj>
inline void tri_fused(bool upper, idx j0, idx nb, const T *a, idx lda, const T *t, T *y, const T *x,
                      T *out) {
  using R = real_t<T>;
  using X = lanes<R>;
  using V = typename X::V;
  using K = typename X::K;
  constexpr int VL = X::VL;
  constexpr bool Cx = is_complex_v<T>;
  constexpr idx W = Cx ? 2 : 1;
  // Live columns [c0, c1): lower, those with a row below the diagonal;
  // upper, those with a row above it. Their rows: [j0 + c + 1, nb) or
  // [0, j0 + c); union [u0, u1), common part [f0, f1).
  const idx g = nb - j0 < NC ? nb - j0 : NC;
  const idx c0 = upper && j0 == 0 ? 1 : 0;
  const idx c1 = upper ? g : (nb - j0 - 1 < g ? nb - j0 - 1 : g);
  for (int c = 0; c < NC; ++c) out[c] = T(0);
  if (c1 <= c0) return;
  const idx u0 = upper ? 0 : j0 + 1, u1 = upper ? j0 + c1 - 1 : nb;
  const idx f0 = upper ? 0 : j0 + c1, f1 = upper ? j0 + c0 : nb;
  const V zero = V{} * R(0);
  const R *ac[NC];
  V tr[NC], ti[NC], P[NC], Q[NC];
#pragma clang loop unroll(full)
  for (int c = 0; c < NC; ++c) {
    ac[c] = reinterpret_cast<const R *>(a + (j0 + c) * lda);
    bcast_scale(c < g ? t[c] : T(0), tr[c], ti[c]);
    P[c] = Q[c] = zero;
  }
  R *__restrict yr = reinterpret_cast<R *>(y);
  const R *__restrict xr = reinterpret_cast<const R *>(x);
  const idx e = W * u1;
  // Instantiated twice: with every column live (whole groups, the common
  // case) the blocks skip the per-column test.
  auto blocks = [&](auto all_live) __attribute__((always_inline)) {
    constexpr bool Live = decltype(all_live)::value;
    for (idx b = W * u0 / VL * VL; b < e; b += VL) {
      const int n = int(e - b < VL ? e - b : VL);
      const int s = int(W * u0 > b ? W * u0 - b : 0);
      if (s == 0 && n == VL && b >= W * f0 && b + VL <= W * f1) {
        V yv = X::load(yr + b);
        const V xv = X::load(xr + b);
        const V xs = Cx ? X::swap(xv) : zero;
#pragma clang loop unroll(full)
        for (int c = 0; c < NC; ++c) {
          if (!Live && (c < c0 || c >= c1)) continue;
          const V av = X::load(ac[c] + b);
          P[c] = P[c] + av * xv;
          yv = yv + av * tr[c];
          if constexpr (Cx) {
            Q[c] = Q[c] + av * xs;
            yv = yv + X::swap(av) * ti[c];
          }
        }
        X::store(yr + b, yv);
        continue;
      }
      V yv = X::load_part(yr + b, s, n);
      const V xv = X::load_part(xr + b, s, n);
      const V xs = Cx ? X::swap(xv) : zero;
#pragma clang loop unroll(full)
      for (int c = 0; c < NC; ++c) {
        if (!Live && (c < c0 || c >= c1)) continue;
        const idx l0 = upper ? -b : W * (j0 + c + 1) - b, l1 = upper ? W * (j0 + c) - b : e - b;
        if (l1 <= 0 || l0 >= VL || l0 >= l1) continue;
        const K k = X::kmask(int(l0 > 0 ? l0 : 0), int(l1 < VL ? l1 : VL));
        const V av = X::load_k(ac[c] + b, k);
        P[c] = X::madd_k(P[c], av, xv, k);
        yv = X::madd_k(yv, av, tr[c], k);
        if constexpr (Cx) {
          Q[c] = X::madd_k(Q[c], av, xs, k);
          yv = X::madd_k(yv, X::swap(av), ti[c], k);
        }
      }
      X::store_part(yr + b, yv, s, n);
    }
  };
  if (c0 == 0 && c1 == NC) blocks(std::true_type{});
  else blocks(std::false_type{});
  R pe[NC], po[NC], qe[NC], qo[NC];
  lane_pair_sums_cols<R, VL>(P, pe, po);
  if constexpr (Cx) lane_pair_sums_cols<R, VL>(Q, qe, qo);
#pragma clang loop unroll(full)
  for (int c = 0; c < NC; ++c) {
    if (c < c0 || c >= c1) continue;
    if constexpr (Cx) out[c] = Conj ? T(pe[c] + po[c], qe[c] - qo[c]) : T(pe[c] - po[c], qe[c] + qo[c]);
    else out[c] = pe[c] + po[c];
  }
}

// acc + av*xv in lanes [l0, l1), acc unchanged elsewhere, whatever the
// other lanes of av and xv hold.
template <class R>
__attribute__((always_inline)) inline typename lanes<R>::V
madd_lanes(typename lanes<R>::V acc, typename lanes<R>::V av, typename lanes<R>::V xv, int l0, int l1) {
  using X = lanes<R>;
#if defined(__AVX512F__)
  using V = typename X::V;
  if constexpr (kVecBytes == 64) {
    const unsigned k = ((1u << l1) - 1u) & ~((1u << l0) - 1u);
    if constexpr (sizeof(R) == 8)
      return (V)_mm512_mask3_fmadd_pd((__m512d)av, (__m512d)xv, (__m512d)acc, __mmask8(k));
    else
      return (V)_mm512_mask3_fmadd_ps((__m512)av, (__m512)xv, (__m512)acc, __mmask16(k));
  }
#endif
  const auto m = X::mask(l0, l1);
  return X::blend(m, acc + av * xv, acc);
}

// Band rows: acc[r] = sum_j A(r, j) x[j] for the rows of one block
// [b, e) (e - b at most one vector of elements), over the columns j in
// [cmin, cmax) whose band rows [j - ku, j + kl] meet the block; A(r, j) is
// at a[j*lda + off + r - j]. The block's sums stay in registers: each column
// adds one vector (masked where the block sticks out of its band rows), so
// the result is written once. Columns go to four accumulators by their
// distance d from column b - kl, so the sums do not depend on where a
// sub-problem starts or which columns a caller leaves out.
//
// With w = kl + ku + 1 band rows, column d of a whole block covers the
// lanes of rows [d - w + 1, d] of the block: the columns d in [VB - 1, w)
// cover the block entirely and are read as whole vectors; the VB - 1 on
// either side are masked. Complex columns are multiplied by the real and by
// the imaginary part of x[j] into two sums; the second one's lanes are
// exchanged once at the end (the exchange commutes with the sums), which
// saves one shuffle per column.
template <class T>
inline void band_block(idx b, idx e, idx n, idx kl, idx ku, const T *a, idx lda, idx off,
                       const T *x, T *acc, idx cmin = 0, idx cmax = -1) {
  using R = real_t<T>;
  using X = lanes<R>;
  using V = typename X::V;
  constexpr int VL = X::VL;
  constexpr bool Cx = is_complex_v<T>;
  constexpr idx W = Cx ? 2 : 1;
  constexpr idx VB = VL / W;
  const V zero = V{} * R(0);
  V P[4] = {zero, zero, zero, zero}, Q[4] = {zero, zero, zero, zero};
  const idx jbase = b - kl, w = kl + ku + 1;
  idx jlo = jbase > 0 ? jbase : 0, jhi = e - 1 + ku + 1 < n ? e + ku : n;
  if (cmin > jlo) jlo = cmin;
  if (cmax >= 0 && cmax < jhi) jhi = cmax;
  const idx rows = e - b;
  const idx dlo = jlo - jbase, dhi = jhi - jbase;
  // Column d (at jbase + d) read from the block's first row on, at
  // ar0 + base + d*step.
  const R *ar0 = reinterpret_cast<const R *>(a);
  const idx base = W * (jbase * (lda - 1) + off + b), step = W * (lda - 1);
  const R *xr = reinterpret_cast<const R *>(x);
  const idx xb = W * jbase;
  // Column d over lanes of rows [max(0, d - w + 1), min(rows, d + 1)).
  auto part = [&](idx d, auto u_) __attribute__((always_inline)) {
    constexpr int u = decltype(u_)::value;
    const idx s = d - w + 1 > 0 ? d - w + 1 : 0, t = d + 1 < rows ? d + 1 : rows;
    if (t <= s) return;
    const int l0 = int(W * s), l1 = int(W * t);
    const V av = X::load_part(ar0 + (base + d * step), l0, l1);
    P[u] = madd_lanes<R>(P[u], av, X::splat(xr[xb + W * d]), l0, l1);
    if constexpr (Cx) Q[u] = madd_lanes<R>(Q[u], av, X::splat(xr[xb + W * d + 1]), l0, l1);
  };
  auto whole = [&](idx d, auto u_) __attribute__((always_inline)) {
    constexpr int u = decltype(u_)::value;
    const V av = X::load(ar0 + (base + d * step));
    P[u] = P[u] + av * xr[xb + W * d];
    if constexpr (Cx) Q[u] = Q[u] + av * xr[xb + W * d + 1];
  };
  // Columns [d0, d1) by f, accumulator d mod 4, unrolled by four.
  auto run = [&](idx d0, idx d1, auto f) __attribute__((always_inline)) {
    if (d0 < dlo) d0 = dlo;
    if (d1 > dhi) d1 = dhi;
    if (d1 <= d0) return;
    idx q = d0 & ~idx(3);
    if (q < d0) {
      if (q + 1 >= d0 && q + 1 < d1) f(q + 1, std::integral_constant<int, 1>{});
      if (q + 2 >= d0 && q + 2 < d1) f(q + 2, std::integral_constant<int, 2>{});
      if (q + 3 < d1) f(q + 3, std::integral_constant<int, 3>{});
      q += 4;
    }
    for (; q + 4 <= d1; q += 4) {
      f(q, std::integral_constant<int, 0>{});
      f(q + 1, std::integral_constant<int, 1>{});
      f(q + 2, std::integral_constant<int, 2>{});
      f(q + 3, std::integral_constant<int, 3>{});
    }
    if (q < d1) {
      f(q, std::integral_constant<int, 0>{});
      if (q + 1 < d1) f(q + 1, std::integral_constant<int, 1>{});
      if (q + 2 < d1) f(q + 2, std::integral_constant<int, 2>{});
    }
  };
  if (rows == VB) {
    const idx h = VB - 1, t0 = w > h ? w : h;
    run(0, h, part);
    run(h, w, whole);
    run(t0, w + h, part);
  } else {
    // A short last block: every column masked (whole vectors would read
    // rows past the matrix).
    run(0, w + rows - 1, part);
  }
  V pv = (P[0] + P[1]) + (P[2] + P[3]);
  if constexpr (Cx) {
    const V qv = X::swap((Q[0] + Q[1]) + (Q[2] + Q[3]));
    // Even lanes subtract, odd lanes add: pv + qv*(-1, 1, ...) without the
    // multiply.
    V nq = zero - qv;
    pv = pv + X::blend(X::mask_odd(), qv, nq);
  }
  R *ar = reinterpret_cast<R *>(acc);
  if (rows == VB) X::store(ar, pv);
  else X::store_part(ar, pv, 0, int(W * rows));
}

// One element of a rank-1 (Two = false) or rank-2 update:
// a + x*t (+ w*u). Complex products are written as the vector loop of
// rank_cols computes them lane by lane (real lane: ar + xr*tr + xi*(-ti),
// imaginary lane: ai + xi*tr + xr*ti), so that an element gets the same bits
// whether a vector or this scalar form updates it.
template <class T, bool Two>
inline T rank_elem(T a, T x, T t, T w, T u) {
  if constexpr (is_complex_v<T>) {
    using R = real_t<T>;
    R r = a.real() + x.real() * t.real() + x.imag() * (-t.imag());
    R i = a.imag() + x.imag() * t.real() + x.real() * t.imag();
    if constexpr (Two) {
      r = r + w.real() * u.real() + w.imag() * (-u.imag());
      i = i + w.imag() * u.real() + w.real() * u.imag();
    }
    return T(r, i);
  } else {
    T v = a + x * t;
    if constexpr (Two) v = v + w * u;
    return v;
  }
}

// a[c][i] += x[i]*t[c] (+ w[i]*u[c]) for rows [0, m) of NC columns, unit
// stride: x (and w) are loaded once for all the columns of the group, and
// each column is streamed once. With LoadsFirst each step loads the vectors
// of all NC columns before it stores any: when columns of a group share
// their address bits below 4096, a load that follows a store to such an
// address waits for the store (loads and stores interleaved column by
// column ran up to 15 times slower at such leading dimensions). Otherwise
// the loads and stores interleave, which holds fewer vectors at a time.
template <class T, int NC, bool Two, bool LoadsFirst = false>
inline void rank_cols_unit(idx m, T *const *a, const T *x, const T *t, const T *w, const T *u) {
  using R = real_t<T>;
  using X = lanes<R>;
  using V = typename X::V;
  constexpr int VL = X::VL;
  constexpr bool Cx = is_complex_v<T>;
  constexpr idx W = Cx ? 2 : 1;
  const R *xr = reinterpret_cast<const R *>(x);
  const R *wr = reinterpret_cast<const R *>(w);
  R *ar[NC];
  V tr[NC], ti[NC], ur[NC], ui[NC];
  const V zero = V{} * R(0);
#pragma clang loop unroll(full)
  for (int c = 0; c < NC; ++c) {
    ar[c] = reinterpret_cast<R *>(a[c]);
    bcast_scale(t[c], tr[c], ti[c]);
    bcast_scale(Two ? u[c] : T(0), ur[c], ui[c]);
  }
  const idx len = m * W;
  idx b = 0;
  for (; b + VL <= len; b += VL) {
    const V xv = X::load(xr + b);
    const V xs = Cx ? X::swap(xv) : zero;
    V wv = zero, ws = zero;
    if constexpr (Two) {
      wv = X::load(wr + b);
      if constexpr (Cx) ws = X::swap(wv);
    }
    auto update = [&](V av, int c) __attribute__((always_inline)) {
      av = av + xv * tr[c];
      if constexpr (Cx) av = av + xs * ti[c];
      if constexpr (Two) {
        av = av + wv * ur[c];
        if constexpr (Cx) av = av + ws * ui[c];
      }
      return av;
    };
    if constexpr (LoadsFirst) {
      V av[NC];
#pragma clang loop unroll(full)
      for (int c = 0; c < NC; ++c) {
        prefetch_ahead<kVecBytes, true>(ar[c] + b);
        av[c] = X::load(ar[c] + b);
      }
#pragma clang loop unroll(full)
      for (int c = 0; c < NC; ++c) X::store(ar[c] + b, update(av[c], c));
    } else {
#pragma clang loop unroll(full)
      for (int c = 0; c < NC; ++c) {
        prefetch_ahead<kVecBytes, true>(ar[c] + b);
        X::store(ar[c] + b, update(X::load(ar[c] + b), c));
      }
    }
  }
  for (idx i = b / W; i < m; ++i) {
    const T xi = x[i], wi = Two ? w[i] : T(0);
#pragma clang loop unroll(full)
    for (int c = 0; c < NC; ++c) a[c][i] = rank_elem<T, Two>(a[c][i], xi, t[c], wi, Two ? u[c] : T(0));
  }
}

// The same for g columns (any g), unit stride, in groups of 32 (real
// rank-1), 16 (real), eight and four (up to cap columns): more write
// streams per pass keep more of the matrix in flight. Columns whose distance
// has few distinct address bits below 4096 go in groups the cache's sets
// allow, each step's loads before its stores.
template <class T, bool Two, bool LoadsFirst>
inline void rank_cols_by(idx m, idx g, T *const *a, const T *x, const T *t, const T *w, const T *u, int cap) {
  idx c = 0;
  if constexpr (!is_complex_v<T> && !Two && !LoadsFirst)
    if (cap >= 32)
      for (; c + 32 <= g; c += 32) rank_cols_unit<T, 32, Two>(m, a + c, x, t + c, w, u);
  if constexpr (!is_complex_v<T>)
    if (cap >= 16)
      for (; c + 16 <= g; c += 16) rank_cols_unit<T, 16, Two, LoadsFirst>(m, a + c, x, t + c, w, Two ? u + c : u);
  if (cap >= 8)
    for (; c + 8 <= g; c += 8) rank_cols_unit<T, 8, Two, LoadsFirst>(m, a + c, x, t + c, w, Two ? u + c : u);
  for (; c + 4 <= g; c += 4) rank_cols_unit<T, 4, Two, LoadsFirst>(m, a + c, x, t + c, w, Two ? u + c : u);
  for (; c < g; ++c) rank_cols_unit<T, 1, Two>(m, a + c, x, t + c, w, Two ? u + c : u);
}

template <class T, bool Two>
inline void rank_cols(idx m, idx g, T *const *a, const T *x, const T *t, const T *w, const T *u) {
  if (m <= 0) return;
  const uintptr_t low = col_low_bits(g, a);
  // Interleaved, a step's columns need distinct address bits below 4096:
  // 4096 / low of them have.
  if (low <= 256) rank_cols_by<T, Two, false>(m, g, a, x, t, w, u, low <= 128 ? 32 : 16);
  else rank_cols_by<T, Two, true>(m, g, a, x, t, w, u, cols_per_step(low));
}

// One column with strided vectors: a[i] += x[i*incx]*t (+ w[i*incw]*u).
template <class T, bool Two>
inline void rank_col_strided(idx m, T *a, const T *x, idx incx, T t, const T *w, idx incw, T u) {
  for (idx i = 0; i < m; ++i)
    a[i] = rank_elem<T, Two>(a[i], x[i * incx], t, Two ? w[i * incw] : T(0), u);
}

// y := beta*y over n elements; beta = 0 writes zeros without reading y.
template <class T>
inline void scale_vec(idx n, T beta, T *y, idx incy) {
  if (is_one(beta)) return;
  if (is_zero(beta)) {
    for (idx i = 0; i < n; ++i) y[i * incy] = T(0);
  } else {
    for (idx i = 0; i < n; ++i) y[i * incy] = mul(beta, y[i * incy]);
  }
}

}  // namespace l2
}  // namespace NXL_CP_NS
}  // namespace nxl

#endif  // NXL_BLAS_LEVEL2_CORE_H
