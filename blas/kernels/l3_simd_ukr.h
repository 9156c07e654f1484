// Micro-kernel written with vector intrinsics, shared by the paths that have
// hand-written kernels: MV vectors of A (MR = MV * lanes rows) times NR
// broadcast elements of B, MV * NR accumulators held in registers for the
// whole depth, A prefetched a few steps ahead.
#ifndef NXL_BLAS_L3_SIMD_UKR_H
#define NXL_BLAS_L3_SIMD_UKR_H

#include <immintrin.h>
#include <type_traits>
#include <utility>
#include "service/scalar.h"
#include "blas/kernels/l3_ukernel.h"

namespace nxl {
inline namespace NXL_CP_NS {

// Operations on one vector type V of the path (__m512d, __m256, __m128d, ...),
// written once on the compiler's vector extensions. fma is a * b + c: these
// files are compiled with contraction on, so it is one fused instruction on
// paths that have FMA and a product and a sum on the others.
template <class V> struct vec {
  using R = std::remove_cvref_t<decltype(V{}[0])>;
  static constexpr int W = int(sizeof(V) / sizeof(R));
  static V zero() { return V{}; }
  static V load(const R *p) { return *reinterpret_cast<const V *>(p); }
  static V loadu(const R *p) {
    V v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
  }
  static V bcast(const R *p) { return splat(*p, std::make_index_sequence<W>()); }
  template <std::size_t... I> static V splat(R x, std::index_sequence<I...>) { return V{((void)I, x)...}; }
  static V fma(V a, V b, V c) { return a * b + c; }
  static V add(V a, V b) { return a + b; }
  static void store(R *p, V v) { *reinterpret_cast<V *>(p) = v; }
  static void storeu(R *p, V v) { __builtin_memcpy(p, &v, sizeof v); }
};

// Puts the NR x MV vectors of a finished tile where pf says: the tile
// buffer (MV vectors per column), or straight into C, added or copied.
template <class V, int MV, int NR>
__attribute__((always_inline)) inline void put_tile(V (&c)[NR][MV], typename vec<V>::R *__restrict t,
                                                    const tile_dest &pf) {
  using X = vec<V>;
  using R = typename X::R;
  constexpr int W = X::W, MR = MV * W;
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

// The sums of one tile into c: kc steps of MV vectors of A against NR
// broadcast elements of B. Packed panels are 64-byte aligned (block starts
// are, and panel strides are multiples of the vector width), so aligned
// loads are safe. near() runs a few steps before the end: the C tile the
// result goes to is prefetched for writing there, late enough that the
// streaming A panel does not evict it from L1 first. When early names a C
// tile, its columns are first brought into L2, one every few steps at the
// start of the depth: fetched in one burst (or only at the end) they queue
// behind each other and the A stream, and the tile store waits for memory.
template <class V, int MV, int NR, class F>
__attribute__((always_inline)) inline void tile_sums(idx kc, const typename vec<V>::R *__restrict a,
                                                     const typename vec<V>::R *__restrict b, V (&c)[NR][MV],
                                                     F near, const tile_dest *early = nullptr) {
  using X = vec<V>;
  constexpr int W = X::W, MR = MV * W;
  constexpr idx tail = 32;
#pragma clang loop unroll(full)
  for (int j = 0; j < NR; ++j)
#pragma clang loop unroll(full)
    for (int v = 0; v < MV; ++v) c[j][v] = X::zero();
  auto step = [&](idx steps) __attribute__((always_inline)) {
#pragma clang loop unroll_count(4)
    for (idx p = 0; p < steps; ++p) {
      _mm_prefetch(reinterpret_cast<const char *>(a + 8 * MR), _MM_HINT_T0);
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
  constexpr idx spread = 8;  // depth steps between two columns fetched early
  idx done = 0;
  if (early && early->c && kc >= NR * spread + tail) {
    const char *q = early->c;
    for (int j = 0; j < early->ncols; ++j, q += early->ldc) {
      each_line(q, early->colbytes, [](const char *r) { _mm_prefetch(r, _MM_HINT_T1); });
      step(spread);
    }
    done = early->ncols * spread;
  }
  const idx head = kc > tail ? kc - tail : 0;
  step(head - done);
  near();
  step(kc - head);
}

template <class V, int MV, int NR>
inline void ukr_simd(idx kc, const typename vec<V>::R *__restrict a,
                     const typename vec<V>::R *__restrict b, typename vec<V>::R *__restrict t,
                     const tile_dest &pf) {
  V c[NR][MV];
  tile_sums<V, MV, NR>(kc, a, b, c, [&] { pf.prefetch(); }, &pf);
  put_tile<V, MV, NR>(c, t, pf);
}

// A column of whole tiles (col_dest): sums(a, c, near) forms the MV x NR
// vectors of one tile from the A micro-panel at a. The loop keeps its
// pointers in registers from tile to tile, and each tile fetches the C tile
// of its successor into L1 as it starts: a whole tile ahead covers the
// memory latency (a prefetch near the end of the tile does not), and the C
// lines outlast the A panel streaming past them.
template <class V, int MV, int NR, class S>
__attribute__((always_inline)) inline void run_column(idx ntiles, idx astride, const typename vec<V>::R *a,
                                                      const col_dest &cd, S sums) {
  tile_dest pf = cd.first;
  for (idx t = 0; t < ntiles; ++t) {
    prefetch_b_slice(cd.nb, cd.nbytes, t, ntiles);
    const char *nx = t + 1 < ntiles ? pf.c + cd.tstep : cd.after;
    if (nx)
      for (int j = 0; j < pf.ncols; ++j)
        each_line(nx + j * pf.ldc, pf.colbytes, [](const char *q) { __builtin_prefetch(q, 1, 3); });
    V c[NR][MV];
    sums(a, c, [] {});
    put_tile<V, MV, NR>(c, nullptr, pf);
    a += astride;
    pf.c += cd.tstep;
  }
}

template <class V, int MV, int NR>
inline void ukr_simd_col(idx kc, idx ntiles, idx astride, const typename vec<V>::R *a,
                         const typename vec<V>::R *b, const col_dest &cd) {
  using R = typename vec<V>::R;
  run_column<V, MV, NR>(ntiles, astride, a, cd, [&](const R *ap, V(&c)[NR][MV], auto near)
                                                    __attribute__((always_inline)) {
                                                      tile_sums<V, MV, NR>(kc, ap, b, c, near);
                                                    });
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

// Defines their column forms (col_dest), for the paths whose blocking
// (l3_ukernel.h) offers run_col.
#define NXL_L3_COLUMN_KERNELS(VD, VS, MV, NR)                                   \
  namespace nxl {                                                                \
  inline namespace NXL_CP_NS {                                                   \
  void ukr_hand_d_col(idx kc, idx nt, idx as, const double *a, const double *b,  \
                      const col_dest &cd) {                                      \
    ukr_simd_col<VD, MV, NR>(kc, nt, as, a, b, cd);                              \
  }                                                                              \
  void ukr_hand_s_col(idx kc, idx nt, idx as, const float *a, const float *b,    \
                      const col_dest &cd) {                                      \
    ukr_simd_col<VS, MV, NR>(kc, nt, as, a, b, cd);                              \
  }                                                                              \
  }                                                                              \
  }

#endif  // NXL_BLAS_L3_SIMD_UKR_H
