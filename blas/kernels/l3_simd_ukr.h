// Micro-kernel written with vector intrinsics, shared by the paths that have
// hand-written kernels: MV vectors of A (MR = MV * lanes rows) times NR
// broadcast elements of B, MV * NR accumulators held in registers for the
// whole depth, A prefetched a few steps ahead.
#ifndef NXL_BLAS_L3_SIMD_UKR_H
#define NXL_BLAS_L3_SIMD_UKR_H

#include <immintrin.h>
#include "service/scalar.h"
#include "blas/kernels/l3_ukernel.h"

namespace nxl {
inline namespace NXL_CP_NS {

template <class V> struct vec;

#if defined(__AVX512F__)
template <> struct vec<__m512d> {
  using R = double;
  static constexpr int W = 8;
  static __m512d zero() { return _mm512_setzero_pd(); }
  static __m512d load(const double *p) { return _mm512_load_pd(p); }
  static __m512d bcast(const double *p) { return _mm512_set1_pd(*p); }
  static __m512d fma(__m512d a, __m512d b, __m512d c) { return _mm512_fmadd_pd(a, b, c); }
  static void store(double *p, __m512d v) { _mm512_store_pd(p, v); }
  static __m512d loadu(const double *p) { return _mm512_loadu_pd(p); }
  static void storeu(double *p, __m512d v) { _mm512_storeu_pd(p, v); }
  static __m512d add(__m512d a, __m512d b) { return _mm512_add_pd(a, b); }
};
template <> struct vec<__m512> {
  using R = float;
  static constexpr int W = 16;
  static __m512 zero() { return _mm512_setzero_ps(); }
  static __m512 load(const float *p) { return _mm512_load_ps(p); }
  static __m512 bcast(const float *p) { return _mm512_set1_ps(*p); }
  static __m512 fma(__m512 a, __m512 b, __m512 c) { return _mm512_fmadd_ps(a, b, c); }
  static void store(float *p, __m512 v) { _mm512_store_ps(p, v); }
  static __m512 loadu(const float *p) { return _mm512_loadu_ps(p); }
  static void storeu(float *p, __m512 v) { _mm512_storeu_ps(p, v); }
  static __m512 add(__m512 a, __m512 b) { return _mm512_add_ps(a, b); }
};
#endif
#if defined(__AVX2__) && defined(__FMA__)
template <> struct vec<__m256d> {
  using R = double;
  static constexpr int W = 4;
  static __m256d zero() { return _mm256_setzero_pd(); }
  static __m256d load(const double *p) { return _mm256_load_pd(p); }
  static __m256d bcast(const double *p) { return _mm256_broadcast_sd(p); }
  static __m256d fma(__m256d a, __m256d b, __m256d c) { return _mm256_fmadd_pd(a, b, c); }
  static void store(double *p, __m256d v) { _mm256_store_pd(p, v); }
  static __m256d loadu(const double *p) { return _mm256_loadu_pd(p); }
  static void storeu(double *p, __m256d v) { _mm256_storeu_pd(p, v); }
  static __m256d add(__m256d a, __m256d b) { return _mm256_add_pd(a, b); }
};
template <> struct vec<__m256> {
  using R = float;
  static constexpr int W = 8;
  static __m256 zero() { return _mm256_setzero_ps(); }
  static __m256 load(const float *p) { return _mm256_load_ps(p); }
  static __m256 bcast(const float *p) { return _mm256_broadcast_ss(p); }
  static __m256 fma(__m256 a, __m256 b, __m256 c) { return _mm256_fmadd_ps(a, b, c); }
  static void store(float *p, __m256 v) { _mm256_store_ps(p, v); }
  static __m256 loadu(const float *p) { return _mm256_loadu_ps(p); }
  static void storeu(float *p, __m256 v) { _mm256_storeu_ps(p, v); }
  static __m256 add(__m256 a, __m256 b) { return _mm256_add_ps(a, b); }
};
#elif defined(__AVX__)
// AVX without FMA: a product and a sum per step.
template <> struct vec<__m256d> {
  using R = double;
  static constexpr int W = 4;
  static __m256d zero() { return _mm256_setzero_pd(); }
  static __m256d load(const double *p) { return _mm256_load_pd(p); }
  static __m256d bcast(const double *p) { return _mm256_broadcast_sd(p); }
  static __m256d fma(__m256d a, __m256d b, __m256d c) { return _mm256_add_pd(_mm256_mul_pd(a, b), c); }
  static void store(double *p, __m256d v) { _mm256_store_pd(p, v); }
  static __m256d loadu(const double *p) { return _mm256_loadu_pd(p); }
  static void storeu(double *p, __m256d v) { _mm256_storeu_pd(p, v); }
  static __m256d add(__m256d a, __m256d b) { return _mm256_add_pd(a, b); }
};
template <> struct vec<__m256> {
  using R = float;
  static constexpr int W = 8;
  static __m256 zero() { return _mm256_setzero_ps(); }
  static __m256 load(const float *p) { return _mm256_load_ps(p); }
  static __m256 bcast(const float *p) { return _mm256_broadcast_ss(p); }
  static __m256 fma(__m256 a, __m256 b, __m256 c) { return _mm256_add_ps(_mm256_mul_ps(a, b), c); }
  static void store(float *p, __m256 v) { _mm256_store_ps(p, v); }
  static __m256 loadu(const float *p) { return _mm256_loadu_ps(p); }
  static void storeu(float *p, __m256 v) { _mm256_storeu_ps(p, v); }
  static __m256 add(__m256 a, __m256 b) { return _mm256_add_ps(a, b); }
};
#else
// SSE2: 128-bit vectors, a product and a sum per step.
template <> struct vec<__m128d> {
  using R = double;
  static constexpr int W = 2;
  static __m128d zero() { return _mm_setzero_pd(); }
  static __m128d load(const double *p) { return _mm_load_pd(p); }
  static __m128d bcast(const double *p) { return _mm_load1_pd(p); }
  static __m128d fma(__m128d a, __m128d b, __m128d c) { return _mm_add_pd(_mm_mul_pd(a, b), c); }
  static void store(double *p, __m128d v) { _mm_store_pd(p, v); }
  static __m128d loadu(const double *p) { return _mm_loadu_pd(p); }
  static void storeu(double *p, __m128d v) { _mm_storeu_pd(p, v); }
  static __m128d add(__m128d a, __m128d b) { return _mm_add_pd(a, b); }
};
template <> struct vec<__m128> {
  using R = float;
  static constexpr int W = 4;
  static __m128 zero() { return _mm_setzero_ps(); }
  static __m128 load(const float *p) { return _mm_load_ps(p); }
  static __m128 bcast(const float *p) { return _mm_load1_ps(p); }
  static __m128 fma(__m128 a, __m128 b, __m128 c) { return _mm_add_ps(_mm_mul_ps(a, b), c); }
  static void store(float *p, __m128 v) { _mm_store_ps(p, v); }
  static __m128 loadu(const float *p) { return _mm_loadu_ps(p); }
  static void storeu(float *p, __m128 v) { _mm_storeu_ps(p, v); }
  static __m128 add(__m128 a, __m128 b) { return _mm_add_ps(a, b); }
};
#endif

// Packed panels are 64-byte aligned (block starts are, and panel strides are
// multiples of the vector width), so aligned loads are safe. The C tile the
// result goes to is prefetched for writing a few steps before the end, late
// enough that the streaming A panel does not evict it from L1 first.
template <class V, int MV, int NR>
inline void ukr_simd(idx kc, const typename vec<V>::R *__restrict a,
                     const typename vec<V>::R *__restrict b, typename vec<V>::R *__restrict t,
                     const tile_dest &pf) {
  using X = vec<V>;
  constexpr int W = X::W, MR = MV * W;
  constexpr idx tail = 32;
  constexpr bool kPrefetchA = true;
  V c[NR][MV];
#pragma clang loop unroll(full)
  for (int j = 0; j < NR; ++j)
#pragma clang loop unroll(full)
    for (int v = 0; v < MV; ++v) c[j][v] = X::zero();
  auto step = [&](idx steps) __attribute__((always_inline)) {
#pragma clang loop unroll_count(4)
    for (idx p = 0; p < steps; ++p) {
      if constexpr (kPrefetchA) _mm_prefetch(reinterpret_cast<const char *>(a + 8 * MR), _MM_HINT_T0);
      V av[MV];
#pragma clang loop unroll(full)
      for (int v = 0; v < MV; ++v) av[v] = X::load(a + v * W);
#pragma clang loop unroll(full)
      for (int j = 0; j < NR; ++j) {
        V bj = X::bcast(b + j);
#pragma clang loop unroll(full)
        for (int v = 0; v < MV; ++v) c[j][v] = X::fma(av[v], bj, c[j][v]);
      }
      a += MR;
      b += NR;
    }
  };
  const idx head = kc > tail ? kc - tail : 0;
  step(head);
  pf.prefetch();
  step(kc - head);
  using R = typename X::R;
  if (pf.mode == tile_dest::tile) {
#pragma clang loop unroll(full)
    for (int j = 0; j < NR; ++j)
#pragma clang loop unroll(full)
      for (int v = 0; v < MV; ++v) X::store(t + j * MR + v * W, c[j][v]);
    return;
  }
  R *cc = reinterpret_cast<R *>(pf.c);
  const idx ldc = pf.ldc / idx(sizeof(R));
  if (pf.mode == tile_dest::add) {
#pragma clang loop unroll(full)
    for (int j = 0; j < NR; ++j)
#pragma clang loop unroll(full)
      for (int v = 0; v < MV; ++v) {
        R *p = cc + j * ldc + v * W;
        X::storeu(p, X::add(X::loadu(p), c[j][v]));
      }
  } else {
#pragma clang loop unroll(full)
    for (int j = 0; j < NR; ++j)
#pragma clang loop unroll(full)
      for (int v = 0; v < MV; ++v) X::storeu(cc + j * ldc + v * W, c[j][v]);
  }
}

}  // namespace NXL_CP_NS
}  // namespace nxl

// Defines the hand-written kernels of a path (declared in l3_ukernel.h):
// MV vectors of type VD (double) or VS (float) by NR columns.
#define NXL_L3_HAND_KERNELS(VD, VS, MV, NR)                                     \
  namespace nxl {                                                                \
  inline namespace NXL_CP_NS {                                                   \
  void ukr_hand_d(idx kc, const double *a, const double *b, double *t,          \
                  const tile_dest &pf) {                                     \
    ukr_simd<VD, MV, NR>(kc, a, b, t, pf);                                       \
  }                                                                              \
  void ukr_hand_s(idx kc, const float *a, const float *b, float *t,             \
                  const tile_dest &pf) {                                     \
    ukr_simd<VS, MV, NR>(kc, a, b, t, pf);                                       \
  }                                                                              \
  }                                                                              \
  }

#endif  // NXL_BLAS_L3_SIMD_UKR_H
