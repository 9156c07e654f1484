// Small products C = alpha * op(A) * op(B) + beta * C (m, n, k <= 64)
// without packing and without any work buffer for B.
//
// Each MR x NR block of C is accumulated in vector registers over the whole
// depth: per step of the depth, MR rows of a column of op(A) are loaded as
// vectors straight from A (the last one with a lane mask, so no row is read
// outside the matrix) and NR elements of op(B) are broadcast straight from
// B, whatever its transposition. A partial vector of C is stored in
// power-of-two pieces from the register, not with a masked store: masked
// stores are slow on some processors, and a later call reading that C would
// wait for them. Only a transposed A is first
// copied into a column-major stack block, so that its columns are contiguous.
//
// Complex elements use two accumulators per vector: one collects A times the
// real parts of B, the other A times the imaginary parts. Both products and
// any conjugation of A or B are combined once, when the block is stored:
//   A B         = acc_re + (swap acc_im) * (-1, +1)
//   A conj(B)   = acc_re + (swap acc_im) * (+1, -1)
//   conj(A) B   = acc_re * (+1, -1) + swap acc_im
//   conj(A B)   = acc_re * (+1, -1) - swap acc_im
// where swap exchanges the real and imaginary lanes of each element and the
// sign vectors are applied by flipping sign bits.
//
// Each element of C is one sum over the depth in increasing order, formed
// with fused multiply-adds where the code path has them, then
// alpha * sum + beta * c (beta = 0: C is not read).
#ifndef NXL_BLAS_L3_SMALL_H
#define NXL_BLAS_L3_SMALL_H

#include <immintrin.h>
#include <utility>
#include "service/scalar.h"
#include "blas/kernels/l3_transpose.h"

namespace nxl {
inline namespace NXL_CP_NS {
namespace small {

constexpr idx kMax = 64;  // largest m, n and k of the small path

// Vector operations of this code path for real type R: W lanes, masks that
// keep the first n lanes, unaligned and masked loads and stores.
template <class R> struct simd;

#if defined(__AVX512F__)
template <> struct simd<double> {
  using V = __m512d;
  using M = __mmask8;
  static constexpr int W = 8;
  static M mask(int n) { return M((1u << n) - 1u); }
  static V zero() { return _mm512_setzero_pd(); }
  static V load(const double *p) { return _mm512_loadu_pd(p); }
  static V loadm(const double *p, M m) { return _mm512_maskz_loadu_pd(m, p); }
  static void store(double *p, V v) { _mm512_storeu_pd(p, v); }
  static V set1(double x) { return _mm512_set1_pd(x); }
  static V fma(V a, V b, V c) { return _mm512_fmadd_pd(a, b, c); }
  static V mul(V a, V b) { return _mm512_mul_pd(a, b); }
  static V add(V a, V b) { return _mm512_add_pd(a, b); }
  static V swap(V a) { return _mm512_permute_pd(a, 0x55); }
  static V flip(V a, V s) {
    return _mm512_castsi512_pd(_mm512_xor_si512(_mm512_castpd_si512(a), _mm512_castpd_si512(s)));
  }
};
template <> struct simd<float> {
  using V = __m512;
  using M = __mmask16;
  static constexpr int W = 16;
  static M mask(int n) { return M((1u << n) - 1u); }
  static V zero() { return _mm512_setzero_ps(); }
  static V load(const float *p) { return _mm512_loadu_ps(p); }
  static V loadm(const float *p, M m) { return _mm512_maskz_loadu_ps(m, p); }
  static void store(float *p, V v) { _mm512_storeu_ps(p, v); }
  static V set1(float x) { return _mm512_set1_ps(x); }
  static V fma(V a, V b, V c) { return _mm512_fmadd_ps(a, b, c); }
  static V mul(V a, V b) { return _mm512_mul_ps(a, b); }
  static V add(V a, V b) { return _mm512_add_ps(a, b); }
  static V swap(V a) { return _mm512_permute_ps(a, 0xB1); }
  static V flip(V a, V s) {
    return _mm512_castsi512_ps(_mm512_xor_si512(_mm512_castps_si512(a), _mm512_castps_si512(s)));
  }
};
#elif defined(__AVX__)
// Lane masks for vmaskmov: n ones followed by zeros.
alignas(64) inline constexpr long long kMask64[8] = {-1, -1, -1, -1, 0, 0, 0, 0};
alignas(64) inline constexpr int kMask32[16] = {-1, -1, -1, -1, -1, -1, -1, -1, 0, 0, 0, 0, 0, 0, 0, 0};
template <> struct simd<double> {
  using V = __m256d;
  using M = __m256i;
  static constexpr int W = 4;
  static M mask(int n) { return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(kMask64 + 4 - n)); }
  static V zero() { return _mm256_setzero_pd(); }
  static V load(const double *p) { return _mm256_loadu_pd(p); }
  static V loadm(const double *p, M m) { return _mm256_maskload_pd(p, m); }
  static void store(double *p, V v) { _mm256_storeu_pd(p, v); }
  static V set1(double x) { return _mm256_set1_pd(x); }
#if defined(__FMA__)
  static V fma(V a, V b, V c) { return _mm256_fmadd_pd(a, b, c); }
#else
  static V fma(V a, V b, V c) { return _mm256_add_pd(_mm256_mul_pd(a, b), c); }
#endif
  static V mul(V a, V b) { return _mm256_mul_pd(a, b); }
  static V add(V a, V b) { return _mm256_add_pd(a, b); }
  static V swap(V a) { return _mm256_permute_pd(a, 0x5); }
  static V flip(V a, V s) { return _mm256_xor_pd(a, s); }
};
template <> struct simd<float> {
  using V = __m256;
  using M = __m256i;
  static constexpr int W = 8;
  static M mask(int n) { return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(kMask32 + 8 - n)); }
  static V zero() { return _mm256_setzero_ps(); }
  static V load(const float *p) { return _mm256_loadu_ps(p); }
  static V loadm(const float *p, M m) { return _mm256_maskload_ps(p, m); }
  static void store(float *p, V v) { _mm256_storeu_ps(p, v); }
  static V set1(float x) { return _mm256_set1_ps(x); }
#if defined(__FMA__)
  static V fma(V a, V b, V c) { return _mm256_fmadd_ps(a, b, c); }
#else
  static V fma(V a, V b, V c) { return _mm256_add_ps(_mm256_mul_ps(a, b), c); }
#endif
  static V mul(V a, V b) { return _mm256_mul_ps(a, b); }
  static V add(V a, V b) { return _mm256_add_ps(a, b); }
  static V swap(V a) { return _mm256_permute_ps(a, 0xB1); }
  static V flip(V a, V s) { return _mm256_xor_ps(a, s); }
};
#else
// SSE2: a partial vector is assembled from scalar and half-vector moves.
template <> struct simd<double> {
  using V = __m128d;
  using M = int;
  static constexpr int W = 2;
  static M mask(int n) { return n; }
  static V zero() { return _mm_setzero_pd(); }
  static V load(const double *p) { return _mm_loadu_pd(p); }
  static V loadm(const double *p, M m) { return m == 2 ? _mm_loadu_pd(p) : _mm_load_sd(p); }
  static void store(double *p, V v) { _mm_storeu_pd(p, v); }
  static V set1(double x) { return _mm_set1_pd(x); }
  static V fma(V a, V b, V c) { return _mm_add_pd(_mm_mul_pd(a, b), c); }
  static V mul(V a, V b) { return _mm_mul_pd(a, b); }
  static V add(V a, V b) { return _mm_add_pd(a, b); }
  static V swap(V a) { return _mm_shuffle_pd(a, a, 1); }
  static V flip(V a, V s) { return _mm_xor_pd(a, s); }
};
template <> struct simd<float> {
  using V = __m128;
  using M = int;
  static constexpr int W = 4;
  static M mask(int n) { return n; }
  static V zero() { return _mm_setzero_ps(); }
  static V load(const float *p) { return _mm_loadu_ps(p); }
  static V load2(const float *p) { return _mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double *>(p))); }
  static V loadm(const float *p, M m) {
    switch (m) {
      case 1: return _mm_load_ss(p);
      case 2: return load2(p);
      case 3: return _mm_movelh_ps(load2(p), _mm_load_ss(p + 2));
      default: return _mm_loadu_ps(p);
    }
  }
  static void store(float *p, V v) { _mm_storeu_ps(p, v); }
  static V set1(float x) { return _mm_set1_ps(x); }
  static V fma(V a, V b, V c) { return _mm_add_ps(_mm_mul_ps(a, b), c); }
  static V mul(V a, V b) { return _mm_mul_ps(a, b); }
  static V add(V a, V b) { return _mm_add_ps(a, b); }
  static V swap(V a) { return _mm_shuffle_ps(a, a, 0xB1); }
  static V flip(V a, V s) { return _mm_xor_ps(a, s); }
};
#endif

// Register block of this code path: MV vectors of rows by NR columns for
// real elements; complex ones need two accumulators each, so fewer columns.
template <class T> struct regs {
#if defined(__AVX512F__)
  static constexpr int MV = 2, NR = is_complex_v<T> ? 6 : 14;
#elif defined(__AVX2__) && defined(__FMA__)
  static constexpr int MV = 2, NR = is_complex_v<T> ? 3 : 6;
#else
  static constexpr int MV = 2, NR = is_complex_v<T> ? 2 : 4;
#endif
};

// Everything a block needs, decoded once per call. A holds op(A) column by
// column (column p at a + p * lda reals); element (p, j) of op(B) is
// b[p * bsp + j * bsj].
template <class T> struct args {
  using R = real_t<T>;
  using S = simd<R>;
  using V = typename S::V;
  idx m, n, k;
  const R *a;
  idx lda;
  const T *b;
  idx bsp, bsj;
  T *c;
  idx ldc;
  int bmode;  // 0: beta = 0, 1: beta = 1, 2: general
  // Scalars and sign-table pointers rather than vectors: the record then
  // needs no vector-aligned frame, which every call would pay for.
  R alr, ali, ber, bei;         // alpha and beta, real and imaginary parts
  const R *sa, *sb, *se;        // sign flips of the complex combination; se: real lanes
};

template <class R, class V, int... N>
__attribute__((always_inline)) inline void store_prefix(R *c, V v, int n, std::integer_sequence<int, N...>) {
  ((n == N ? store_n<R, N>(c, v) : void()), ...);
}

template <class T, int MV, int NR, bool MK>
inline void block(const args<T> &g, idx i0, idx j0, typename simd<real_t<T>>::M mk, int nrem) {
  using R = real_t<T>;
  using S = simd<R>;
  using V = typename S::V;
  constexpr int W = S::W;
  constexpr int CF = is_complex_v<T> ? 2 : 1;
  V acc[CF][NR][MV];
#pragma clang loop unroll(full)
  for (int h = 0; h < CF; ++h)
#pragma clang loop unroll(full)
    for (int j = 0; j < NR; ++j)
#pragma clang loop unroll(full)
      for (int v = 0; v < MV; ++v) acc[h][j][v] = S::zero();
  const R *a = g.a + i0 * CF;
  const idx lda = g.lda, bsp = g.bsp * CF, bsj = g.bsj * CF;
  // The columns of op(B) are reached from one independent base per four of
  // them (see column_bases); within a group the offsets 0, 1, 2 and 3
  // strides fit the addressing.
  constexpr int NQ = (NR + 3) / 4;
  const R *q[NQ];
  column_bases(reinterpret_cast<const R *>(g.b + j0 * g.bsj), 4 * bsj, q);
  for (idx p = 0; p < g.k; ++p) {
    V av[MV];
#pragma clang loop unroll(full)
    for (int v = 0; v < MV; ++v) av[v] = (MK && v == MV - 1) ? S::loadm(a + v * W, mk) : S::load(a + v * W);
#pragma clang loop unroll(full)
    for (int j = 0; j < NR; ++j) {
      const R *b = q[j / 4] + (j % 4) * bsj;
      const V br = S::set1(b[0]);
#pragma clang loop unroll(full)
      for (int v = 0; v < MV; ++v) acc[0][j][v] = S::fma(av[v], br, acc[0][j][v]);
      if constexpr (CF == 2) {
        const V bi = S::set1(b[1]);
#pragma clang loop unroll(full)
        for (int v = 0; v < MV; ++v) acc[CF - 1][j][v] = S::fma(av[v], bi, acc[CF - 1][j][v]);
      }
    }
    a += lda;
#pragma clang loop unroll(full)
    for (int u = 0; u < NQ; ++u) q[u] += bsp;
  }
  // C = alpha * sum + beta * C: all of the block's C is read before any of
  // it is written, so no load waits on a masked store.
  const V alr = S::set1(g.alr);
  V t[NR][MV];
#pragma clang loop unroll(full)
  for (int j = 0; j < NR; ++j)
#pragma clang loop unroll(full)
    for (int v = 0; v < MV; ++v) {
      if constexpr (CF == 2) {
        const V x = S::add(S::flip(acc[0][j][v], S::load(g.sa)), S::flip(S::swap(acc[CF - 1][j][v]), S::load(g.sb)));
        t[j][v] = S::add(S::mul(alr, x), S::flip(S::mul(S::set1(g.ali), S::swap(x)), S::load(g.se)));
      } else {
        t[j][v] = S::mul(alr, acc[0][j][v]);
      }
    }
  R *c0 = reinterpret_cast<R *>(g.c + i0 + j0 * g.ldc);
  const idx ldc = g.ldc * CF;
  const int bm = g.bmode;
  if (bm != 0) {
    const V ber = S::set1(g.ber);
#pragma clang loop unroll(full)
    for (int j = 0; j < NR; ++j)
#pragma clang loop unroll(full)
      for (int v = 0; v < MV; ++v) {
        const R *c = c0 + j * ldc + v * W;
        const V old = (MK && v == MV - 1) ? S::loadm(c, mk) : S::load(c);
        if (bm == 1) t[j][v] = S::add(t[j][v], old);
        else if constexpr (CF == 2)
          t[j][v] = S::add(t[j][v], S::add(S::mul(ber, old), S::flip(S::mul(S::set1(g.bei), S::swap(old)), S::load(g.se))));
        else t[j][v] = S::add(t[j][v], S::mul(ber, old));
      }
  }
#pragma clang loop unroll(full)
  for (int j = 0; j < NR; ++j)
#pragma clang loop unroll(full)
    for (int v = 0; v < MV; ++v) {
      R *c = c0 + j * ldc + v * W;
      if (MK && v == MV - 1 && nrem < W) {
        store_prefix<R>(c, t[j][v], nrem, std::make_integer_sequence<int, W>());
      } else {
        S::store(c, t[j][v]);
      }
    }
}


// Rows of one column block: whole register blocks, then the remaining rows
// with as many vectors as they need, the last one masked.
template <class T, int NR>
inline void col_block(const args<T> &g, idx j0) {
  using S = simd<real_t<T>>;
  constexpr int CF = is_complex_v<T> ? 2 : 1;
  constexpr int MV = regs<T>::MV, RW = S::W / CF;  // rows per vector
  const typename S::M full = S::mask(S::W);
  idx i0 = 0;
  for (; i0 + MV * RW <= g.m; i0 += MV * RW) block<T, MV, NR, false>(g, i0, j0, full, S::W);
  const idx rem = g.m - i0;
  if (rem <= 0) return;
  const int nv = int((rem + RW - 1) / RW);
  const int nrem = int(rem - (nv - 1) * RW) * CF;
  const typename S::M mk = S::mask(nrem);
  if constexpr (MV >= 2) {
    if (nv == 2) return block<T, 2, NR, true>(g, i0, j0, mk, nrem);
  }
  static_assert(MV <= 2, "row remainders handle up to two vectors");
  block<T, 1, NR, true>(g, i0, j0, mk, nrem);
}

template <class T, int... J>
inline void col_rest(const args<T> &g, idx j0, int nr, std::integer_sequence<int, J...>) {
  ((nr == J + 1 ? col_block<T, J + 1>(g, j0) : void()), ...);
}

// Sign patterns for the complex combination, as constants (a loop filling
// a small array may be turned into masked loads, which some processors run
// slowly): -0 in the lanes to flip, +0 elsewhere; 16 lanes cover every width.
template <class R> struct signs {
  alignas(64) static constexpr R none[16] = {};
  alignas(64) static constexpr R even[16] = {R(-0.0), 0, R(-0.0), 0, R(-0.0), 0, R(-0.0), 0,
                                             R(-0.0), 0, R(-0.0), 0, R(-0.0), 0, R(-0.0), 0};
  alignas(64) static constexpr R odd[16] = {0, R(-0.0), 0, R(-0.0), 0, R(-0.0), 0, R(-0.0),
                                            0, R(-0.0), 0, R(-0.0), 0, R(-0.0), 0, R(-0.0)};
  alignas(64) static constexpr R all[16] = {R(-0.0), R(-0.0), R(-0.0), R(-0.0), R(-0.0), R(-0.0),
                                            R(-0.0), R(-0.0), R(-0.0), R(-0.0), R(-0.0), R(-0.0),
                                            R(-0.0), R(-0.0), R(-0.0), R(-0.0)};
};

// op(A) = A^T (m x k, A stored k x m with ld reals between its columns)
// copied column-major into dst (m elements per column): whole L x L blocks
// through registers, L the largest power of two up to a vector that fits
// both m and k; the remaining rows and depth element by element.
template <class R, int CF>
__attribute__((always_inline)) inline void copy_transposed(const R *a, idx ld, R *dst, idx m, idx k) {
  constexpr int U = simd<R>::W / CF;  // elements per vector
  const idx mr = m * CF;
  idx mb = 0, kb = 0;
  auto blocks = [&](auto tag) __attribute__((always_inline)) {
    constexpr int L = decltype(tag)::value;
    using B = tblock<R, CF, L>;
    mb = m / L * L;
    kb = k / L * L;
    for (idx i = 0; i < mb; i += L)
      for (idx p = 0; p < kb; p += L) B::copy(a + i * ld + p * CF, ld, dst + p * mr + i * CF, mr);
  };
  const idx mk = m < k ? m : k;
  if (U >= 16 && mk >= 16) blocks(std::integral_constant<int, (U >= 16 ? 16 : 1)>());
  else if (U >= 8 && mk >= 8) blocks(std::integral_constant<int, (U >= 8 ? 8 : 1)>());
  else if (U >= 4 && mk >= 4) blocks(std::integral_constant<int, (U >= 4 ? 4 : 1)>());
  else if (U >= 2 && mk >= 2) blocks(std::integral_constant<int, (U >= 2 ? 2 : 1)>());
  // The depth beyond the blocks for their rows, then the rows beyond them.
  for (idx i = 0; i < mb; ++i)
    for (idx p = kb; p < k; ++p)
      for (int h = 0; h < CF; ++h) dst[p * mr + i * CF + h] = a[i * ld + p * CF + h];
  for (idx i = mb; i < m; ++i)
    for (idx p = 0; p < k; ++p)
      for (int h = 0; h < CF; ++h) dst[p * mr + i * CF + h] = a[i * ld + p * CF + h];
}

// The product on this code path. k >= 1 and alpha != 0; ta, tb: op is a
// transposition; ca, cb: op conjugates (complex only).
template <class T, bool TA>
__attribute__((always_inline)) inline void gemm_op(bool ca, bool tb, bool cb, idx m, idx n, idx k, T alpha, const T *a, idx lda,
             const T *b, idx ldb, T beta, T *c, idx ldc) {
  using R = real_t<T>;
  args<T> g;
  constexpr int CF = is_complex_v<T> ? 2 : 1;
  // Reals, not T: std::complex would zero the whole block on construction.
  // Only a transposed A needs the block (a large frame costs every call).
  alignas(64) R at[TA ? kMax * kMax * CF : 1];
  g.a = reinterpret_cast<const R *>(a);
  g.lda = lda * CF;
  if constexpr (TA) {
    copy_transposed<R, CF>(g.a, lda * CF, at, m, k);
    g.a = at;
    g.lda = m * CF;
  }
  g.m = m;
  g.n = n;
  g.k = k;
  g.b = b;
  g.bsp = tb ? ldb : 1;
  g.bsj = tb ? 1 : ldb;
  g.c = c;
  g.ldc = ldc;
  g.bmode = beta == T(0) ? 0 : beta == T(1) ? 1 : 2;
  g.alr = re(alpha);
  g.ali = im(alpha);
  g.ber = re(beta);
  g.bei = im(beta);
  if constexpr (is_complex_v<T>) {
    using K = signs<R>;
    g.se = K::even;
    g.sa = ca ? K::odd : K::none;
    g.sb = ca ? (cb ? K::all : K::none) : (cb ? K::odd : K::even);
  }
  // Blocks of NR columns; the last NR + r columns (0 < r < NR) as two
  // blocks of about equal width, since a narrow block has too few
  // independent sums to hide the latency of its multiply-adds.
  constexpr int NR = regs<T>::NR;
  auto cols = [&](idx j0, int w) __attribute__((always_inline)) {
    if (w == NR) col_block<T, NR>(g, j0);
    else col_rest<T>(g, j0, w, std::make_integer_sequence<int, NR - 1>());
  };
  idx j0 = 0;
  for (; n - j0 >= 2 * NR; j0 += NR) col_block<T, NR>(g, j0);
  const int rest = int(n - j0);
  if (rest > NR) {
    cols(j0, (rest + 1) / 2);
    cols(j0 + (rest + 1) / 2, rest / 2);
  } else {
    cols(j0, rest);
  }
}

// Inlined into the caller together with gemm_op, so that the arguments stay
// in registers (a reload of stacked arguments written as vectors can miss
// store forwarding, which costs a call of this size dearly).
template <class T>
__attribute__((always_inline)) inline void gemm(bool ta, bool ca, bool tb, bool cb, idx m, idx n, idx k, T alpha, const T *a,
                 idx lda, const T *b, idx ldb, T beta, T *c, idx ldc) {
  if (ta) gemm_op<T, true>(ca, tb, cb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
  else gemm_op<T, false>(ca, tb, cb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

}  // namespace small
}  // namespace NXL_CP_NS
}  // namespace nxl

#endif  // NXL_BLAS_L3_SMALL_H
