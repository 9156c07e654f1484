// Register-level building blocks shared by the packing routines and the
// small-product path: transposition of a square block of elements held in
// vectors, stores of the first lanes of a vector, and column pointers the
// compiler cannot chain.
#ifndef NXL_BLAS_L3_TRANSPOSE_H
#define NXL_BLAS_L3_TRANSPOSE_H

#include <utility>
#include "service/scalar.h"

namespace nxl {
inline namespace NXL_CP_NS {

// The first N (< W) lanes of v to c, straight from the register in
// power-of-two pieces at fixed offsets (no trip through memory, whose reload
// could miss store forwarding, and no library call for a variable length).
template <class R, int O, class V, int... I>
__attribute__((always_inline)) inline void store_piece(R *c, V v, std::integer_sequence<int, I...>) {
  if constexpr (sizeof...(I) == 1) {
    c[O] = v[O];
  } else {
    using P = R __attribute__((vector_size(sizeof...(I) * sizeof(R))));
    const P piece = __builtin_shufflevector(v, v, (O + I)...);
    __builtin_memcpy(c + O, &piece, sizeof piece);
  }
}
template <class R, int N, class V>
__attribute__((always_inline)) inline void store_n(R *c, V v) {
  constexpr int o8 = N & 8, o4 = o8 + (N & 4), o2 = o4 + (N & 2);
  if constexpr ((N & 8) != 0) store_piece<R, 0>(c, v, std::make_integer_sequence<int, 8>());
  if constexpr ((N & 4) != 0) store_piece<R, o8>(c, v, std::make_integer_sequence<int, 4>());
  if constexpr ((N & 2) != 0) store_piece<R, o4>(c, v, std::make_integer_sequence<int, 2>());
  if constexpr ((N & 1) != 0) store_piece<R, o2>(c, v, std::make_integer_sequence<int, 1>());
}
// Transposition of an L x L block of elements (CF reals each) held as L
// vectors, one per row: log2(L) rounds of butterflies, the round of bit q
// exchanging element (r, c) with (r ^ 2^q, c ^ 2^q) where bit q of r is clear
// and bit q of c set. Each output vector is one two-source shuffle, which
// the backend lowers to the path's unpack/permute instructions.
template <class R, int CF, int L> struct tblock {
  static constexpr int N = L * CF;  // reals per vector
  using V = R __attribute__((vector_size(N * sizeof(R))));
  // Lane l of the new low (Hi = false) or high row of a pair, as an index
  // into the concatenation of the old low and high rows.
  template <int Q, bool Hi> static constexpr int pick(int l) {
    const int c = l / CF, h = l % CF, o = ((c ^ (1 << Q)) * CF) + h;
    if constexpr (Hi) return (c >> Q & 1) ? N + l : o;
    else return (c >> Q & 1) ? N + o : l;
  }
  template <int Q, int... I> __attribute__((always_inline)) static void round(V *v, std::integer_sequence<int, I...>) {
#pragma clang loop unroll(full)
    for (int r = 0; r < L; ++r) {
      if (r >> Q & 1) continue;
      const V x = v[r], y = v[r | (1 << Q)];
      v[r] = __builtin_shufflevector(x, y, pick<Q, false>(I)...);
      v[r | (1 << Q)] = __builtin_shufflevector(x, y, pick<Q, true>(I)...);
    }
  }
  template <int... Q> __attribute__((always_inline)) static void rounds(V *v, std::integer_sequence<int, Q...>) {
    (round<Q>(v, std::make_integer_sequence<int, N>()), ...);
  }
  __attribute__((always_inline)) static void transpose(V *v) {
    rounds(v, std::make_integer_sequence<int, log2(L)>());
  }
  // Rows [i, i + L) x depth [p, p + L) of op(A) = A^T, from src (A, column i
  // of op(A)'s rows at src + i * ld) to dst (column-major, ldd reals).
  __attribute__((always_inline)) static void copy(const R *src, idx ld, R *dst, idx ldd) {
    V v[L];
#pragma clang loop unroll(full)
    for (int r = 0; r < L; ++r) __builtin_memcpy(&v[r], src + r * ld, sizeof(V));
    transpose(v);
#pragma clang loop unroll(full)
    for (int q = 0; q < L; ++q) __builtin_memcpy(dst + q * ldd, &v[q], sizeof(V));
  }
  static constexpr int log2(int x) { return x <= 1 ? 0 : 1 + log2(x / 2); }
};

// Pointers to N columns ld apart, each opaque to the compiler: addressed
// from one pointer, it steps from column to column by adding the stride, a
// chain of dependent additions in every step of the loops that read them.
template <class T, idx N> inline void column_bases(const T *base, idx ld, const T *(&out)[N]) {
#pragma clang loop unroll(full)
  for (idx c = 0; c < N; ++c) {
    out[c] = base + c * ld;
    asm("" : "+r"(out[c]));
  }
}

}  // namespace NXL_CP_NS
}  // namespace nxl

#endif  // NXL_BLAS_L3_TRANSPOSE_H
