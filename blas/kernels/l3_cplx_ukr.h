// Native complex micro-kernel written with vector intrinsics: MV vectors of
// packed complex A (interleaved real and imaginary parts, MR = MV * W / 2
// elements) times NR complex elements of B, whose real and imaginary parts
// are broadcast separately. Each product goes into one of two accumulators,
// A * re(b) and A * im(b); at the end the second has its pairs swapped and
// is added with alternating signs:
//   (ar br, ai br) + (-ai bi, ar bi) = (ar br - ai bi, ai br + ar bi).
// A and B are prefetched ahead within their panels (B too: between two
// tiles on the same B panel a whole A panel passes through L1). Every lane
// runs the same operations, so an element's bits do not depend on
// its place in the tile. Conjugation and alpha are folded into packing.
#ifndef NXL_BLAS_L3_CPLX_UKR_H
#define NXL_BLAS_L3_CPLX_UKR_H

#include "blas/kernels/l3_simd_ukr.h"

namespace nxl {
inline namespace NXL_CP_NS {

template <class V, int... I> inline V swap_pairs_v(V x, std::integer_sequence<int, I...>) {
  return __builtin_shufflevector(x, x, (I ^ 1)...);
}
template <class V, class R, int... I> inline V alt_sign_v(std::integer_sequence<int, I...>) {
  return V{(I % 2 ? R(1) : R(-1))...};
}

// The sums of one tile, combined, into cr (near() as in tile_sums).
template <class V, int MV, int NR, class F>
__attribute__((always_inline)) inline void cplx_tile_sums(idx kc, const typename vec<V>::R *__restrict a,
                                                          const typename vec<V>::R *__restrict b,
                                                          V (&cr)[NR][MV], F near) {
  using X = vec<V>;
  using R = typename X::R;
  constexpr int W = X::W, MRR = MV * W;  // reals per step of A
  constexpr idx tail = 32;
  V ci[NR][MV];
#pragma clang loop unroll(full)
  for (int j = 0; j < NR; ++j)
#pragma clang loop unroll(full)
    for (int v = 0; v < MV; ++v) cr[j][v] = ci[j][v] = X::zero();
  auto step = [&](idx steps) __attribute__((always_inline)) {
#pragma clang loop unroll_count(4)
    for (idx p = 0; p < steps; ++p) {
      _mm_prefetch(reinterpret_cast<const char *>(a + 8 * MRR), _MM_HINT_T0);
      _mm_prefetch(reinterpret_cast<const char *>(b + 32 * 2 * NR), _MM_HINT_T0);
      V av[MV];
#pragma clang loop unroll(full)
      for (int v = 0; v < MV; ++v) av[v] = X::load(a + v * W);
#pragma clang loop unroll(full)
      for (int j = 0; j < NR; ++j) {
        const V br = X::bcast(b + 2 * j);
#pragma clang loop unroll(full)
        for (int v = 0; v < MV; ++v) cr[j][v] = X::fma(av[v], br, cr[j][v]);
        const V bi = X::bcast(b + 2 * j + 1);
#pragma clang loop unroll(full)
        for (int v = 0; v < MV; ++v) ci[j][v] = X::fma(av[v], bi, ci[j][v]);
      }
      a += MRR;
      b += 2 * NR;
    }
  };
  const idx head = kc > tail ? kc - tail : 0;
  step(head);
  near();
  step(kc - head);
  const auto seq = std::make_integer_sequence<int, W>();
  const V sg = alt_sign_v<V, R>(seq);
#pragma clang loop unroll(full)
  for (int j = 0; j < NR; ++j)
#pragma clang loop unroll(full)
    for (int v = 0; v < MV; ++v) cr[j][v] = X::fma(swap_pairs_v(ci[j][v], seq), sg, cr[j][v]);
}

template <class V, int MV, int NR>
inline void ukr_cplx_simd(idx kc, const typename vec<V>::R *__restrict a,
                          const typename vec<V>::R *__restrict b, typename vec<V>::R *__restrict t,
                          const tile_dest &pf) {
  V c[NR][MV];
  cplx_tile_sums<V, MV, NR>(kc, a, b, c, [&] { pf.prefetch(); });
  put_tile<V, MV, NR>(c, t, pf);
}

template <class V, int MV, int NR>
inline void ukr_cplx_col(idx kc, idx ntiles, idx astride, const typename vec<V>::R *a,
                         const typename vec<V>::R *b, const col_dest &cd) {
  using R = typename vec<V>::R;
  run_column<V, MV, NR>(ntiles, astride, a, cd, [&](const R *ap, V(&c)[NR][MV], auto near)
                                                    __attribute__((always_inline)) {
                                                      cplx_tile_sums<V, MV, NR>(kc, ap, b, c, near);
                                                    });
}

}  // namespace NXL_CP_NS
}  // namespace nxl

// Defines the native complex kernels of a path (declared in l3_ukernel.h):
// MV vectors of type VD (double) or VS (float) by NR columns.
#define NXL_L3_CPLX_KERNELS(VD, VS, MV, NR)                                   \
  namespace nxl {                                                              \
  inline namespace NXL_CP_NS {                                                 \
  void ukr_cplx_z(idx kc, const double *a, const double *b, double *t,        \
                  const tile_dest &pf) {                                       \
    ukr_cplx_simd<VD, MV, NR>(kc, a, b, t, pf);                                \
  }                                                                            \
  void ukr_cplx_c(idx kc, const float *a, const float *b, float *t,           \
                  const tile_dest &pf) {                                       \
    ukr_cplx_simd<VS, MV, NR>(kc, a, b, t, pf);                                \
  }                                                                            \
  void ukr_cplx_z_col(idx kc, idx nt, idx as, const double *a, const double *b, \
                      const col_dest &cd) {                                    \
    ukr_cplx_col<VD, MV, NR>(kc, nt, as, a, b, cd);                            \
  }                                                                            \
  void ukr_cplx_c_col(idx kc, idx nt, idx as, const float *a, const float *b,  \
                      const col_dest &cd) {                                    \
    ukr_cplx_col<VS, MV, NR>(kc, nt, as, a, b, cd);                            \
  }                                                                            \
  }                                                                            \
  }

#endif  // NXL_BLAS_L3_CPLX_UKR_H
