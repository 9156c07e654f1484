// The level-3 engine: packed panels, a macro-kernel over register tiles, and
// every level-3 operation cast onto them.
//
// C = alpha * opA * opB + beta * C runs as the usual five loops: columns of C
// in blocks of NC (the packed B block, kc x nc, shared by the row blocks),
// the depth in blocks of KC, rows in blocks of MC (the packed A block, kept
// in L2), then NR-column and MR-row micro-tiles. Transposition, conjugation,
// alpha, the mirrored triangle of symm/hemm and the zeros and unit diagonal
// of a triangular factor are all folded into packing; edge panels are
// zero-padded so the micro-kernel never branches. The k loop is never split
// and tiles sit at fixed multiples of MR and NR from the origin of C, so a
// caller that cuts C at those multiples gets bit-identical elements.
#ifndef NXL_BLAS_L3_ENGINE_H
#define NXL_BLAS_L3_ENGINE_H

#include <algorithm>
#include "blas/kernels/l3_transpose.h"
#include "blas/kernels/l3_ukernel.h"
#include "service/nxl_serv.h"

// The register tiles of the triangular solves ask for full unrolling; in
// their variants with a run-time count the hint is dropped without a word.
#pragma clang diagnostic ignored "-Wpass-failed"

namespace nxl {
inline namespace NXL_CP_NS {

// ---------------------------------------------------------------------------
// Logical operand: element (i, p) of a matrix view, with its structure.
enum class mkind : int { general, symmetric, hermitian, triangular };

template <class T> struct view {
  const T *a = nullptr;
  idx ld = 1;
  bool trans = false;   // element (i, p) is stored at (p, i)
  bool cj = false;      // conjugate every stored element
  mkind kind = mkind::general;
  bool upper = false;   // symmetric/hermitian: stored triangle; triangular: shape of the view
  bool unit = false;    // triangular: unit diagonal, not read
  idx r0 = 0, c0 = 0;   // origin of this view in the logical matrix

  view sub(idx i, idx p) const {
    view v = *this;
    v.r0 += i;
    v.c0 += p;
    return v;
  }
  T raw(idx i, idx p) const {
    T v = trans ? a[p + i * ld] : a[i + p * ld];
    return cj ? nxl::NXL_CP_NS::conj(v) : v;
  }
  T at(idx i, idx p) const {
    i += r0;
    p += c0;
    switch (kind) {
      case mkind::general: return raw(i, p);
      case mkind::symmetric:
        return (upper ? i <= p : i >= p) ? a[i + p * ld] : a[p + i * ld];
      case mkind::hermitian:
        if (i == p) return T(re(a[i + i * ld]));
        return (upper ? i < p : i > p) ? a[i + p * ld] : nxl::NXL_CP_NS::conj(a[p + i * ld]);
      case mkind::triangular:
        if (i == p) return unit ? T(1) : raw(i, p);
        return (upper ? i < p : i > p) ? raw(i, p) : T(0);
    }
    return T(0);
  }
};

template <class T> view<T> general_view(const T *a, idx ld, bool trans, bool cj) {
  view<T> v;
  v.a = a;
  v.ld = ld;
  v.trans = trans;
  v.cj = cj;
  return v;
}

// Micro-tile restrictions of the macro-kernel.
struct shape {
  enum kind_t { full, triangle, trim_a, trim_b } kind = full;
  bool upper = false;     // triangle: stored triangle of C; trim: shape of the triangular operand
  bool real_diag = false; // triangle: force a real diagonal (herk, her2k)
  // trim: C is the general operand itself (trmm in place). The depth blocks
  // run in the order in which every block reads only rows (left) or columns
  // (right) that no earlier block has written; a tile is overwritten by the
  // depth block holding its own rows (columns) and accumulated by the rest.
  bool in_place = false;
};

// How beta is applied when a tile is stored.
enum class bmode : int { zero, one, general };

template <class T> bmode beta_mode(T beta) {
  return beta == T(0) ? bmode::zero : beta == T(1) ? bmode::one : bmode::general;
}

// ---------------------------------------------------------------------------
// Engine constants for element type T, in T's own units.
template <class T> struct blk {
  using R = real_t<T>;
  using U = ukernel<R>;
  static constexpr int cf = is_complex_v<T> ? 2 : 1;  // reals per element
  static constexpr int MR = U::MR / cf;               // rows of a tile
  static constexpr int NR = U::NR;                    // columns of a tile
  static constexpr idx KC = U::KC / cf;               // depth of a block
  static constexpr idx MC = U::MC / cf;
  static constexpr idx NC = U::NC;
};

// ---------------------------------------------------------------------------
// Packing.

// alpha * v for the packed A. The products are formed on their own (the
// empty asm keeps the compiler from fusing one of them into the sum), so a
// value packs to the same bits in every packing loop, vectorized or not,
// whichever panel of a block its row falls in.
template <class T> inline T alpha_times(T alpha, T v) {
  if constexpr (is_complex_v<T>) {
    auto rr = alpha.real() * v.real(), ii = alpha.imag() * v.imag();
    auto ri = alpha.real() * v.imag(), ir = alpha.imag() * v.real();
    __asm__("" : "+x"(rr), "+x"(ii), "+x"(ri), "+x"(ir));
    return T(rr - ii, ri + ir);
  } else {
    return alpha * v;
  }
}

// A block: mc x kc of alpha * V, in MR-row micro-panels (real: MR x kc,
// k-major; complex: the 2x2 real blocks [re -im; im re] of the 1m method).
template <class T, class G>
void pack_a_rows(G get, bool ktr, idx mc, idx kc, T alpha, real_t<T> *dst) {
  using R = real_t<T>;
  constexpr int RMR = ukernel<R>::MR;
  constexpr int MR = blk<T>::MR;
  const bool a1 = alpha == T(1);
  for (idx ir = 0; ir < mc; ir += MR) {
    const int mr = int(std::min<idx>(MR, mc - ir));
    R *d = dst + (ir / MR) * RMR * kc * blk<T>::cf;
    if constexpr (!is_complex_v<T>) {
      auto put = [&](idx i, idx p) {
        T v = get(ir + i, p);
        d[p * RMR + i] = a1 ? v : alpha * v;
      };
      if (ktr) {
        for (int i = 0; i < mr; ++i)
          for (idx p = 0; p < kc; ++p) put(i, p);
      } else {
        for (idx p = 0; p < kc; ++p)
          for (int i = 0; i < mr; ++i) put(i, p);
      }
      for (idx p = 0; p < kc; ++p)
        for (int i = mr; i < RMR; ++i) d[p * RMR + i] = R(0);
    } else {
      auto put = [&](idx i, idx p) {
        T v = get(ir + i, p);
        if (!a1) v = alpha_times(alpha, v);
        R *c0 = d + 2 * p * RMR + 2 * i;
        R *c1 = c0 + RMR;
        c0[0] = v.real();
        c0[1] = v.imag();
        c1[0] = -v.imag();
        c1[1] = v.real();
      };
      if (ktr) {
        for (int i = 0; i < mr; ++i)
          for (idx p = 0; p < kc; ++p) put(i, p);
      } else {
        for (idx p = 0; p < kc; ++p)
          for (int i = 0; i < mr; ++i) put(i, p);
      }
      for (idx p = 0; p < 2 * kc; ++p)
        for (int i = 2 * mr; i < RMR; ++i) d[p * RMR + i] = R(0);
    }
  }
}

// B block: kc x nc of V, in NR-column micro-panels (complex: each k gives a
// row of real parts and a row of imaginary parts).
template <class T, class G>
void pack_b_cols(G get, bool ktr, idx kc, idx nc, real_t<T> *dst) {
  using R = real_t<T>;
  constexpr int NR = blk<T>::NR;
  constexpr int cf = blk<T>::cf;
  for (idx jr = 0; jr < nc; jr += NR) {
    const int nr = int(std::min<idx>(NR, nc - jr));
    R *d = dst + jr * kc * cf;
    auto put = [&](idx p, int j) {
      T v = get(p, jr + j);
      if constexpr (!is_complex_v<T>) {
        d[p * NR + j] = v;
      } else {
        d[2 * p * NR + j] = v.real();
        d[(2 * p + 1) * NR + j] = v.imag();
      }
    };
    // ktr: consecutive k of one column are adjacent in memory.
    if (ktr) {
      for (int j = 0; j < nr; ++j)
        for (idx p = 0; p < kc; ++p) put(p, j);
    } else {
      for (idx p = 0; p < kc; ++p)
        for (int j = 0; j < nr; ++j) put(p, j);
    }
    if (nr < NR)
      for (idx p = 0; p < kc * cf; ++p)
        for (int j = nr; j < NR; ++j) d[p * NR + j] = R(0);
  }
}

// v, conjugated when cj (the fringe panels of the direct packing loops).
template <class T> inline T maybe_conj(T v, bool cj) { return cj ? nxl::NXL_CP_NS::conj(v) : v; }

// Steps per pass of the packing of untransposed A, where the blocking of the
// path sets one (pack_a_pass); 0: panel by panel.
template <class U> constexpr idx a_pass = [] {
  if constexpr (requires { U::pack_a_pass; }) return idx(U::pack_a_pass);
  else return idx(0);
}();

// Untransposed A (columns contiguous): each k step of a micro-panel is MR
// consecutive elements of one column. With passes, the block goes that many
// steps at a time across all its panels, so that each column is read down
// in one sweep, and the same rows of the columns of the next pass are
// prefetched: a whole pass ahead, enough to cover the memory latency.
// Without, each panel runs through the depth, prefetching a few steps ahead.
// Complex: the step's column gives the row (re, im) pairs and the row of
// (-im, re) pairs of the 2x2 blocks; cj conjugates A first.
template <class T>
void pack_a_cols(const T *__restrict s, idx ld, idx mc, idx kc, T alpha, bool cj,
                 real_t<T> *__restrict dst) {
  using R = real_t<T>;
  constexpr int RMR = ukernel<R>::MR, MR = blk<T>::MR, cf = blk<T>::cf;
  constexpr idx ahead = a_pass<ukernel<R>> ? a_pass<ukernel<R>> : 8;
  const idx pass = a_pass<ukernel<R>> ? ahead : kc;
  const bool a1 = alpha == T(1);
  const R sg = cj ? R(-1) : R(1);  // sign of the imaginary parts
  const idx full = mc / MR * MR;   // rows in whole panels
  // A complex row packs to two real rows of 2 kc steps.
  for (idx p0 = 0; p0 < kc; p0 += pass) {
    const idx p1 = std::min(kc, p0 + pass);
    for (idx ir = 0; ir < full; ir += MR) {
      R *d = dst + ir * kc * cf * cf;
      const T *src = s + ir;
      for (idx p = p0; p < p1; ++p) {
        const T *col = src + p * ld;
        if (p + ahead < kc)
          each_line(reinterpret_cast<const char *>(col + ahead * ld), RMR * int(sizeof(R)),
                    [](const char *q) { __builtin_prefetch(q); });
        if constexpr (!is_complex_v<T>) {
          if (a1) {
            for (int i = 0; i < MR; ++i) d[p * MR + i] = col[i];
          } else {
            for (int i = 0; i < MR; ++i) d[p * MR + i] = alpha * col[i];
          }
        } else {
          const R *c = reinterpret_cast<const R *>(col);
          R *c0 = d + 2 * p * RMR, *c1 = c0 + RMR;
          if (a1) {
            for (int i = 0; i < MR; ++i) {
              const R re = c[2 * i], im = sg * c[2 * i + 1];
              c0[2 * i] = re;
              c0[2 * i + 1] = im;
              c1[2 * i] = -im;
              c1[2 * i + 1] = re;
            }
          } else {
            for (int i = 0; i < MR; ++i) {
              const T v = alpha_times(alpha, T(c[2 * i], sg * c[2 * i + 1]));
              const R re = v.real(), im = v.imag();
              c0[2 * i] = re;
              c0[2 * i + 1] = im;
              c1[2 * i] = -im;
              c1[2 * i + 1] = re;
            }
          }
        }
      }
    }
  }
  if (full < mc) {
    const T *rest = s + full;
    pack_a_rows<T>([=](idx i, idx p) { return maybe_conj(rest[i + p * ld], cj); }, false, mc - full,
                   kc, alpha, dst + full * kc * cf * cf);
  }
}

// Untransposed B (each micro-panel column contiguous in k): columns are read
// a cache line at a time and interleaved into the k-major panel, with each
// column's next lines prefetched. Complex: each k step gives a row of real
// parts and a row of imaginary parts (negated when cj).
// Columns [J, NR) of a real B panel over VL steps of the depth: groups of
// VL columns are loaded as vectors along the depth (missing columns zero),
// transposed, and each step's NR-column row is stored from the registers.
template <class R, int NR, int VL, int J>
__attribute__((always_inline)) inline void pack_b_group(const R *s, idx ld, R *d) {
  constexpr int G = NR - J < VL ? NR - J : VL;
  using B = tblock<R, 1, VL>;
  typename B::V v[VL];
#pragma clang loop unroll(full)
  for (int j = 0; j < VL; ++j) {
    if (j < G) __builtin_memcpy(&v[j], s + (J + j) * ld, sizeof(v[j]));
    else v[j] = typename B::V{};
  }
  B::transpose(v);
#pragma clang loop unroll(full)
  for (int q = 0; q < VL; ++q) {
    if constexpr (G == VL) __builtin_memcpy(d + q * NR + J, &v[q], sizeof(v[q]));
    else store_n<R, G>(d + q * NR + J, v[q]);
  }
  if constexpr (J + G < NR) pack_b_group<R, NR, VL, J + G>(s, ld, d);
}

template <class T>
void pack_b_cols_direct(const T *__restrict s, idx ld, idx kc, idx nc, bool cj,
                        real_t<T> *__restrict dst) {
  using R = real_t<T>;
  constexpr int NR = blk<T>::NR, cf = blk<T>::cf;
  constexpr int L = 64 / int(sizeof(T));  // elements per cache line
  constexpr int VL = ukernel<R>::MR / 2;  // reals per vector of this path
  const R sg = cj ? R(-1) : R(1);
  idx jr = 0;
  for (; jr + NR <= nc; jr += NR) {
    R *d = dst + jr * kc * cf;
    const T *src = s + jr * ld;
    idx p = 0;
    if constexpr (!is_complex_v<T>) {
      // Real elements: a vector of depth from each column, transposed in
      // registers into rows of the panel.
      for (; p + VL <= kc; p += VL) {
#pragma clang loop unroll(full)
        for (int j = 0; j < NR; ++j) __builtin_prefetch(src + j * ld + p + 4 * L);
        pack_b_group<R, NR, VL, 0>(src + p, ld, d + p * NR);
      }
    }
    for (; p + L <= kc; p += L) {
      for (int j = 0; j < NR; ++j) {
        const T *col = src + j * ld + p;
        __builtin_prefetch(col + 4 * L);
        if constexpr (!is_complex_v<T>) {
          for (int q = 0; q < L; ++q) d[(p + q) * NR + j] = col[q];
        } else {
          const R *c = reinterpret_cast<const R *>(col);
          for (int q = 0; q < L; ++q) {
            d[2 * (p + q) * NR + j] = c[2 * q];
            d[(2 * (p + q) + 1) * NR + j] = sg * c[2 * q + 1];
          }
        }
      }
    }
    for (; p < kc; ++p)
      for (int j = 0; j < NR; ++j) {
        if constexpr (!is_complex_v<T>) {
          d[p * NR + j] = src[j * ld + p];
        } else {
          const T v = src[j * ld + p];
          d[2 * p * NR + j] = v.real();
          d[(2 * p + 1) * NR + j] = sg * v.imag();
        }
      }
  }
  if (jr < nc) {
    const T *rest = s + jr * ld;
    pack_b_cols<T>([=](idx p, idx j) { return maybe_conj(rest[p + j * ld], cj); }, true, kc,
                   nc - jr, dst + jr * kc * cf);
  }
}

// The part of a structured view strictly below (i > p) or above (i < p) its
// diagonal as a general view of the stored elements it reads; false for the
// zero part of a triangular view.
template <class T> bool part_view(const view<T> &V, bool below, view<T> &g) {
  g = general_view(V.a, V.ld, V.trans, V.cj);
  g.r0 = V.r0;
  g.c0 = V.c0;
  if (V.kind == mkind::triangular) return below != V.upper;
  // Symmetric / Hermitian: the stored triangle as it is, the other one
  // mirrored (and conjugated when Hermitian).
  const bool stored = below != V.upper;
  g.trans = !stored;
  g.cj = !stored && V.kind == mkind::hermitian;
  return true;
}

// Packs V(i0.., p0..) choosing a fast accessor for plain views.
// Transposed real A (the rows of op(A) contiguous along the depth): each
// half of a micro-panel is a square of vectors, one per row, transposed in
// registers into steps of the depth. The edge panel goes through the
// accessor.
template <class T>
void pack_a_rows_direct(const T *__restrict s, idx ld, idx mc, idx kc, T alpha, T *__restrict dst) {
  constexpr int MR = blk<T>::MR, VL = MR / 2;
  using B = tblock<T, 1, VL>;
  using V = typename B::V;
  const bool a1 = alpha == T(1);
  idx ir = 0;
  for (; ir + MR <= mc; ir += MR) {
    T *d = dst + ir * kc;
    const T *src = s + ir * ld;
    idx p = 0;
    for (; p + VL <= kc; p += VL)
#pragma clang loop unroll(full)
      for (int g = 0; g < 2; ++g) {
        V v[VL];
#pragma clang loop unroll(full)
        for (int r = 0; r < VL; ++r) {
          const T *row = src + (g * VL + r) * ld + p;
          __builtin_prefetch(row + 4 * VL);
          __builtin_memcpy(&v[r], row, sizeof(V));
        }
        B::transpose(v);
#pragma clang loop unroll(full)
        for (int q = 0; q < VL; ++q) {
          const V w = a1 ? v[q] : v[q] * alpha;
          __builtin_memcpy(d + (p + q) * MR + g * VL, &w, sizeof(V));
        }
      }
    for (; p < kc; ++p)
      for (int i = 0; i < MR; ++i) {
        const T v = src[p + i * ld];
        d[p * MR + i] = a1 ? v : alpha * v;
      }
  }
  if (ir < mc) {
    const T *rest = s + ir * ld;
    pack_a_rows<T>([=](idx i, idx p) { return rest[p + i * ld]; }, true, mc - ir, kc, alpha, dst + ir * kc);
  }
}

// The same for complex A: a vector holds L elements (re, im) of one row;
// after the transposition it is the (re, im) row of the packed 2x2 blocks
// for L rows at one step, and its pairs swapped and half negated the
// (-im, re) row. alpha multiplies as alpha_times does: the four products
// formed on their own, then one sum or difference each.
template <class T>
void pack_a_rows_direct_c(const T *__restrict s, idx ld, idx mc, idx kc, T alpha, bool cj,
                          real_t<T> *__restrict dst) {
  using R = real_t<T>;
  constexpr int MR = blk<T>::MR, RMR = ukernel<R>::MR, L = MR / 2 > 0 ? MR / 2 : 1, G = MR / L;
  using B = tblock<R, 2, L>;
  using V = typename B::V;
  constexpr int N = B::N;
  auto swap = []<int... I>(V x, std::integer_sequence<int, I...>) { return __builtin_shufflevector(x, x, (I ^ 1)...); };
  auto alt = []<int... I>(R even, R odd, std::integer_sequence<int, I...>) { return V{((I & 1) ? odd : even)...}; };
  const auto seq = std::make_integer_sequence<int, N>();
  const V conj_sign = alt(R(1), cj ? R(-1) : R(1), seq), rot_sign = alt(R(-1), R(1), seq);
  const V ar = alt(alpha.real(), alpha.real(), seq), ai = alt(alpha.imag(), alpha.imag(), seq);
  const bool a1 = alpha == T(1);
  const R *sr = reinterpret_cast<const R *>(s);
  idx ir = 0;
  for (; ir + MR <= mc; ir += MR) {
    R *d = dst + ir * kc * 4;
    idx p = 0;
    for (; p + L <= kc; p += L)
#pragma clang loop unroll(full)
      for (int g = 0; g < G; ++g) {
        V v[L];
#pragma clang loop unroll(full)
        for (int r = 0; r < L; ++r) {
          const R *row = sr + 2 * ((ir + g * L + r) * ld + p);
          __builtin_prefetch(row + 4 * N);
          __builtin_memcpy(&v[r], row, sizeof(V));
        }
        B::transpose(v);
#pragma clang loop unroll(full)
        for (int q = 0; q < L; ++q) {
          V w = v[q] * conj_sign;
          if (!a1) {
            V re_part = w * ar, im_part = swap(w, seq) * ai;
            __asm__("" : "+v"(re_part), "+v"(im_part));
            w = re_part + im_part * rot_sign;
          }
          const V w1 = swap(w, seq) * rot_sign;
          R *c0 = d + 2 * (p + q) * RMR + g * N;
          __builtin_memcpy(c0, &w, sizeof(V));
          __builtin_memcpy(c0 + RMR, &w1, sizeof(V));
        }
      }
    if (p < kc) {
      const T *rest = s + ir * ld + p;
      pack_a_rows<T>([=](idx i, idx q) { return maybe_conj(rest[q + i * ld], cj); }, true, MR, kc - p,
                     alpha, dst + ir * kc * 4 + 2 * p * RMR);
    }
  }
  if (ir < mc) {
    const T *rest = s + ir * ld;
    pack_a_rows<T>([=](idx i, idx q) { return maybe_conj(rest[q + i * ld], cj); }, true, mc - ir, kc,
                   alpha, dst + ir * kc * 4);
  }
}

template <class T>
void pack_a(const view<T> &V, idx i0, idx p0, idx mc, idx kc, T alpha, real_t<T> *dst) {
  if (V.kind == mkind::general) {
    const T *a = V.a;
    const idx ld = V.ld, r = V.r0 + i0, c = V.c0 + p0;
    if (!V.trans) {
      pack_a_cols<T>(a + r + c * ld, ld, mc, kc, alpha, V.cj, dst);
    } else {
      const T *s = a + c + r * ld;
      if constexpr (!is_complex_v<T>) pack_a_rows_direct<T>(s, ld, mc, kc, alpha, dst);
      else pack_a_rows_direct_c<T>(s, ld, mc, kc, alpha, V.cj, dst);
    }
    return;
  }
  // Structured view: each micro-panel splits at its diagonal band into a
  // part left of it, the band and a part right of it; only the band needs
  // the element-wise accessor.
  using R = real_t<T>;
  constexpr int MR = blk<T>::MR, RMR = ukernel<R>::MR, cf = blk<T>::cf;
  view<T> lo, hi;
  const bool lo_nz = part_view(V, true, lo), hi_nz = part_view(V, false, hi);
  for (idx ir = 0; ir < mc; ir += MR) {
    const idx mr = std::min<idx>(MR, mc - ir);
    R *d = dst + ir * kc * cf * cf;
    const idx gi = V.r0 + i0 + ir, gp = V.c0 + p0;
    const idx b0 = std::clamp<idx>(gi - gp, 0, kc), b1 = std::clamp<idx>(gi + mr - gp, 0, kc);
    auto piece = [&](const view<T> &g, bool nz, idx pa, idx pb) {
      if (pb <= pa) return;
      R *dd = d + pa * RMR * cf;
      if (nz) pack_a(g, i0 + ir, p0 + pa, mr, pb - pa, alpha, dd);
      else __builtin_memset(dd, 0, sizeof(R) * size_t(pb - pa) * RMR * cf);
    };
    piece(lo, lo_nz, 0, b0);  // columns left of the band: below the diagonal
    if (b1 > b0)
      pack_a_rows<T>([&](idx i, idx p) { return V.at(i0 + ir + i, p0 + b0 + p); }, V.trans, mr,
                     b1 - b0, alpha, d + b0 * RMR * cf);
    piece(hi, hi_nz, b1, kc);
  }
}

// B block of a transposed operand: the NR elements of one k of a whole
// micro-panel are adjacent in memory, a straight copy (complex: split into a
// row of real parts and a row of imaginary parts, negated when cj). An edge
// panel goes through the accessor and is zero-padded.
template <class T>
void pack_b_rows_direct(const T *__restrict s, idx ld, idx kc, idx nc, bool cj,
                        real_t<T> *__restrict dst) {
  using R = real_t<T>;
  constexpr int NR = blk<T>::NR, cf = blk<T>::cf;
  const R sg = cj ? R(-1) : R(1);
  idx jr = 0;
  for (; jr + NR <= nc; jr += NR) {
    R *d = dst + jr * kc * cf;
    for (idx p = 0; p < kc; ++p) {
      const T *sp = s + jr + p * ld;
      __builtin_prefetch(sp + 8 * ld);
      if constexpr (!is_complex_v<T>) {
        for (int j = 0; j < NR; ++j) d[p * NR + j] = sp[j];
      } else {
        const R *c = reinterpret_cast<const R *>(sp);
        for (int j = 0; j < NR; ++j) {
          d[2 * p * NR + j] = c[2 * j];
          d[(2 * p + 1) * NR + j] = sg * c[2 * j + 1];
        }
      }
    }
  }
  if (jr < nc) {
    const T *e = s + jr;
    pack_b_cols<T>([=](idx p, idx j) { return maybe_conj(e[j + p * ld], cj); }, false, kc, nc - jr,
                   dst + jr * kc * cf);
  }
}

template <class T>
void pack_b(const view<T> &V, idx p0, idx j0, idx kc, idx nc, real_t<T> *dst) {
  if (V.kind == mkind::general) {
    const T *a = V.a;
    const idx ld = V.ld, r = V.r0 + p0, c = V.c0 + j0;
    if (!V.trans) {
      pack_b_cols_direct<T>(a + r + c * ld, ld, kc, nc, V.cj, dst);
    } else {
      pack_b_rows_direct<T>(a + c + r * ld, ld, kc, nc, V.cj, dst);
    }
    return;
  }
  // Structured view: as for A, each micro-panel splits at its diagonal band.
  using R = real_t<T>;
  constexpr int NR = blk<T>::NR, cf = blk<T>::cf;
  view<T> lo, hi;
  const bool lo_nz = part_view(V, true, lo), hi_nz = part_view(V, false, hi);
  for (idx jr = 0; jr < nc; jr += NR) {
    const idx nr = std::min<idx>(NR, nc - jr);
    R *d = dst + jr * kc * cf;
    const idx gj = V.c0 + j0 + jr, gp = V.r0 + p0;
    const idx b0 = std::clamp<idx>(gj - gp, 0, kc), b1 = std::clamp<idx>(gj + nr - gp, 0, kc);
    auto piece = [&](const view<T> &g, bool nz, idx pa, idx pb) {
      if (pb <= pa) return;
      R *dd = d + pa * NR * cf;
      if (nz) pack_b(g, p0 + pa, j0 + jr, pb - pa, nr, dd);
      else __builtin_memset(dd, 0, sizeof(R) * size_t(pb - pa) * NR * cf);
    };
    piece(hi, hi_nz, 0, b0);  // rows above the band: above the diagonal
    if (b1 > b0)
      pack_b_cols<T>([&](idx p, idx j) { return V.at(p0 + b0 + p, j0 + jr + j); }, !V.trans, b1 - b0,
                     nr, d + b0 * NR * cf);
    piece(lo, lo_nz, b1, kc);
  }
}

// ---------------------------------------------------------------------------
// Storing tiles and scaling C.

// beta * c formed as alpha's products in packing: no product is fused into
// what follows, so a vectorized full-tile store and a scalar edge store give
// an element the same bits.
template <class T> inline T beta_times(T beta, T c) { return alpha_times(beta, c); }

// One column of a tile: c = t + beta * c.
template <class T, int N>
inline void store_col(T *__restrict c, const T *__restrict s, int n, T beta, bmode bm) {
  const int len = N > 0 ? N : n;
  switch (bm) {
    case bmode::zero:
      for (int i = 0; i < len; ++i) c[i] = s[i];
      break;
    case bmode::one:
      for (int i = 0; i < len; ++i) c[i] = c[i] + s[i];
      break;
    case bmode::general:
      for (int i = 0; i < len; ++i) c[i] = beta_times(beta, c[i]) + s[i];
      break;
  }
}

// C(0:mr, 0:nr) = t + beta * C, where t has leading dimension MR.
template <class T>
inline void store_full(T *C, idx ldc, int mr, int nr, const T *t, T beta, bmode bm) {
  constexpr int MR = blk<T>::MR;
  if (mr == MR) {
    for (int j = 0; j < nr; ++j) store_col<T, MR>(C + j * ldc, t + j * MR, MR, beta, bm);
  } else {
    for (int j = 0; j < nr; ++j) store_col<T, 0>(C + j * ldc, t + j * MR, mr, beta, bm);
  }
}

// Diagonal element of herk/her2k: beta * re(c) + re(t), imaginary part 0.
template <class T> inline T real_diag_update(T c, T t, T beta, bmode bm) {
  if constexpr (is_complex_v<T>) {
    using R = real_t<T>;
    R v = bm == bmode::zero ? t.real()
        : bm == bmode::one  ? c.real() + t.real()
                            : beta.real() * c.real() + t.real();
    return T(v, R(0));
  } else {
    return bm == bmode::zero ? t : bm == bmode::one ? c + t : beta * c + t;
  }
}

// Stores only the elements of the stored triangle (global position gi, gj of
// the tile's corner).
template <class T>
void store_tri(T *C, idx ldc, int mr, int nr, const T *t, int ldt, T beta, bmode bm, idx gi,
               idx gj, const shape &sh) {
  for (int j = 0; j < nr; ++j) {
    const idx col = gj + j;
    int lo = 0, hi = mr;
    if (sh.upper) hi = int(std::clamp<idx>(col - gi + 1, 0, mr));
    else lo = int(std::clamp<idx>(col - gi, 0, mr));
    T *c = C + j * ldc;
    const T *s = t + j * ldt;
    for (int i = lo; i < hi; ++i) {
      if (sh.real_diag && gi + i == col) {
        c[i] = real_diag_update(c[i], s[i], beta, bm);
        continue;
      }
      switch (bm) {
        case bmode::zero: c[i] = s[i]; break;
        case bmode::one: c[i] = c[i] + s[i]; break;
        case bmode::general: c[i] = beta_times(beta, c[i]) + s[i]; break;
      }
    }
  }
}

// C = beta * C over an m x n block at global position (gi, gj), restricted
// by the shape's triangle. beta = 0 writes zeros without reading C.
template <class T>
void scale_c(T *C, idx ldc, idx m, idx n, T beta, idx gi, idx gj, const shape &sh) {
  const bmode bm = beta_mode(beta);
  const bool tri = sh.kind == shape::triangle;
  for (idx j = 0; j < n; ++j) {
    idx lo = 0, hi = m;
    if (tri) {
      const idx col = gj + j;
      if (sh.upper) hi = std::clamp<idx>(col - gi + 1, 0, m);
      else lo = std::clamp<idx>(col - gi, 0, m);
    }
    T *c = C + j * ldc;
    for (idx i = lo; i < hi; ++i) {
      if (tri && sh.real_diag && gi + i == gj + j) {
        c[i] = real_diag_update(c[i], T(0), beta, bm);
        continue;
      }
      if (bm == bmode::zero) c[i] = T(0);
      else if (bm == bmode::general) c[i] = beta_times(beta, c[i]);
    }
  }
}

// ---------------------------------------------------------------------------
// Work buffers for the packed blocks: heap blocks from the memory manager,
// or a stack area for products that fit in it.
template <class T> struct workspace {
  using R = real_t<T>;
  R *apack = nullptr, *bpack = nullptr;
  void *heap = nullptr;
  idx mc = 0, nc = 0, kc = 0;   // block sizes (T units) in use
  static constexpr size_t stack_bytes = 96 * 1024;
  alignas(64) unsigned char stack[stack_bytes];

  static size_t a_elems(idx mc, idx kc) {
    return size_t((mc + blk<T>::MR - 1) / blk<T>::MR) * ukernel<R>::MR * kc * blk<T>::cf;
  }
  static size_t b_elems(idx kc, idx nc) {
    return size_t((nc + blk<T>::NR - 1) / blk<T>::NR) * blk<T>::NR * kc * blk<T>::cf;
  }
  size_t cap = 0;  // bytes of the heap block
  // Chooses block sizes for an m x n x k product and finds room for them.
  // The depth kc = min(k, KC) fixes the order of every sum; mc and nc only
  // group whole tiles.
  void setup(idx m, idx n, idx k) {
    kc = std::min<idx>(std::max<idx>(k, 1), blk<T>::KC);
    mc = std::min<idx>(std::max<idx>(m, 1), blk<T>::MC);
    nc = std::min<idx>(std::max<idx>(n, 1), blk<T>::NC);
    size_t abytes = (a_elems(mc, kc) * sizeof(R) + 63) & ~size_t(63);
    size_t bytes = abytes + b_elems(kc, nc) * sizeof(R);
    unsigned char *base = nullptr;
    if (bytes <= stack_bytes) {
      base = stack;
    } else if (bytes <= cap) {
      base = static_cast<unsigned char *>(heap);
    } else {
      if (heap) nxl_serv_deallocate(heap);
      heap = nxl_serv_allocate(bytes, 4096);
      cap = heap ? bytes : 0;
      base = static_cast<unsigned char *>(heap);
    }
    if (!base) {
      // No memory: smaller blocks in the stack area (slower, still exact).
      kc = std::min<idx>(kc, 64 / blk<T>::cf);
      nc = blk<T>::NR;
      mc = blk<T>::MR;
      while (a_elems(mc * 2, kc) * sizeof(R) + 64 + b_elems(kc, nc * 2) * sizeof(R) <= stack_bytes) {
        mc *= 2;
        nc *= 2;
      }
      abytes = (a_elems(mc, kc) * sizeof(R) + 63) & ~size_t(63);
      base = stack;
    }
    apack = reinterpret_cast<R *>(base);
    bpack = reinterpret_cast<R *>(base + abytes);
  }
  ~workspace() {
    if (heap) nxl_serv_deallocate(heap);
  }
};

// ---------------------------------------------------------------------------
// Triangular operands with infinities or NaNs elsewhere. A micro-tile that
// meets the diagonal of a triangular operand multiplies the packed zeros of
// its other triangle too, which is harmless for finite data only: 0 times an
// infinity of the general operand would be a NaN where that element takes
// no part. Blocks whose general operand is not all finite add the products
// of the diagonal band one by one, skipping the zero triangle.

// True when every value of the packed block is finite (the exponent of an
// infinity or NaN has all bits set).
template <class R> bool packed_finite(const R *p, size_t n) {
  using U = std::conditional_t<sizeof(R) == 4, uint32_t, uint64_t>;
  constexpr U em = sizeof(R) == 4 ? U(0x7f800000u) : U(0x7ff0000000000000ull);
  U bad = 0;
  for (size_t i = 0; i < n; ++i) {
    U u;
    __builtin_memcpy(&u, p + i, sizeof u);
    bad |= U((u & em) == em);
  }
  return bad == 0;
}

// tile += the products of the depth steps [q0, q1) of a micro-tile at
// (ti, tj) in block pc, each only where the triangular operand is nonzero.
template <class T>
void band_products(const real_t<T> *ap, const real_t<T> *bp, idx q0, idx q1, int mr, int nr,
                   idx ti, idx tj, idx pc, const shape &sh, real_t<T> *tile) {
  constexpr int cf = blk<T>::cf, RMR = ukernel<real_t<T>>::MR, NR = blk<T>::NR;
  for (idx p = q0; p < q1; ++p) {
    const idx gp = pc + p;
    for (int j = 0; j < nr; ++j)
      for (int i = 0; i < mr; ++i) {
        const idx gi = ti + i, gj = tj + j;
        const bool zero = sh.kind == shape::trim_a ? (sh.upper ? gi > gp : gi < gp)
                                                   : (sh.upper ? gp > gj : gp < gj);
        if (zero) continue;
        for (int u = 0; u < cf; ++u)
          for (int r = 0; r < cf; ++r)
            tile[j * RMR + i * cf + r] += ap[(p * cf + u) * RMR + i * cf + r] * bp[(p * cf + u) * NR + j];
      }
  }
}

// Whether the micro-kernels of R ask the macro-kernel for that prefetch.
template <class U> constexpr bool wants_next_b = requires { requires U::prefetch_next_b; };

// ---------------------------------------------------------------------------
// The product C = alpha * A * B + beta * C (m x n, depth k), tiles restricted
// by sh. (gi0, gj0) is the position of C in the output used for the triangle
// tests; A's row index and B's column index are taken in the same frame for
// trimming. alpha = 0 or k = 0 only scales C.
template <class T>
void gemm_core(workspace<T> &ws, const view<T> &A, const view<T> &B, idx m, idx n, idx k, T alpha,
               T beta, T *C, idx ldc, const shape &sh, idx gi0 = 0, idx gj0 = 0) {
  using R = real_t<T>;
  using U = ukernel<R>;
  constexpr int MR = blk<T>::MR, NR = blk<T>::NR, cf = blk<T>::cf;
  if (m <= 0 || n <= 0) return;
  if (k <= 0 || alpha == T(0)) {
    if (beta != T(1)) scale_c(C, ldc, m, n, beta, gi0, gj0, sh);
    return;
  }
  ws.setup(m, n, k);
  const bool in_place = sh.in_place;
  // In place, a tile's rows (left) or columns (right) lie in one depth block.
  if (in_place) {
    const idx g = sh.kind == shape::trim_a ? MR : NR;
    ws.kc = std::max<idx>(ws.kc / g, 1) * g;
  }
  const idx KCb = ws.kc, MCb = ws.mc, NCb = ws.nc;
  alignas(64) R tile[U::MR * U::NR];
  const T *tt = reinterpret_cast<const T *>(tile);
  const bool tri = sh.kind == shape::triangle;
  // In place, a lower triangle on the left or an upper one on the right
  // reads ahead of what it writes, so its blocks run backwards; on the right
  // the column blocks go with the depth blocks.
  const bool backwards = in_place && (sh.kind == shape::trim_a) != sh.upper;
  const idx nblk = (n + NCb - 1) / NCb, kblk = (k + KCb - 1) / KCb;

  for (idx jb = 0; jb < nblk; ++jb) {
    const idx jc = (backwards && sh.kind == shape::trim_b ? nblk - 1 - jb : jb) * NCb;
    const idx nc = std::min(NCb, n - jc);
    const idx gj = gj0 + jc;
    for (idx pb = 0; pb < kblk; ++pb) {
      const idx pc = (backwards ? kblk - 1 - pb : pb) * KCb;
      const idx kc = std::min(KCb, k - pc);
      const bool first = pc == 0 && !in_place;
      const bmode bm = first ? beta_mode(beta) : bmode::one;
      bool b_packed = false, b_finite = true;
      for (idx ic = 0; ic < m; ic += MCb) {
        const idx mc = std::min(MCb, m - ic);
        const idx gi = gi0 + ic;
        if (tri) {
          if (sh.upper && gi > gj + nc - 1) break;
          if (!sh.upper && gi + mc - 1 < gj) continue;
        }
        // Blocks that meet only the zero part of a triangular operand.
        bool block_zero = false;
        if (sh.kind == shape::trim_a) block_zero = sh.upper ? pc + kc <= gi : pc >= gi + mc;
        if (sh.kind == shape::trim_b) block_zero = sh.upper ? pc >= gj + nc : pc + kc <= gj;
        if (block_zero && !first) continue;
        if (!b_packed) {
          pack_b(B, pc, jc, kc, nc, ws.bpack);
          b_packed = true;
          if (sh.kind == shape::trim_a)
            b_finite = packed_finite(ws.bpack, workspace<T>::b_elems(kc, nc));
        }
        pack_a(A, ic, pc, mc, kc, alpha, ws.apack);
        // Whether the band tiles of this block must skip the zero triangle.
        const bool careful = sh.kind == shape::trim_a ? !b_finite
                             : sh.kind == shape::trim_b && !packed_finite(ws.apack, workspace<T>::a_elems(mc, kc));
        // Macro-kernel over the micro-tiles of this block.
        for (idx jr = 0; jr < nc; jr += NR) {
          const int nr = int(std::min<idx>(NR, nc - jr));
          const idx tj = gj + jr;
          const R *bp = ws.bpack + jr * kc * cf;
          const idx nbytes = jr + NR < nc ? NR * kc * cf * idx(sizeof(R)) : 0;
          idx ir0 = 0;
          if constexpr (has_col<U>) {
            // Plain products: the whole tiles of a whole column in one call.
            const idx full = mc / MR;
            if (sh.kind == shape::full && !in_place && nr == NR && bm != bmode::general && full > 0) {
              col_dest cd;
              cd.first = tile_dest{reinterpret_cast<char *>(C + ic + (jc + jr) * ldc), ldc * idx(sizeof(T)), NR,
                                   MR * int(sizeof(T)), bm == bmode::one ? tile_dest::add : tile_dest::copy};
              cd.tstep = MR * idx(sizeof(T));
              if constexpr (wants_next_b<U>) {
                cd.nb = reinterpret_cast<const char *>(bp + NR * kc * cf);
                cd.nbytes = nbytes;
              }
              if (full * MR == mc && jr + 2 * NR <= nc)
                cd.after = reinterpret_cast<const char *>(C + ic + (jc + jr + NR) * ldc);
              U::run_col(kc * cf, full, U::MR * kc * cf, ws.apack, bp, cd);
              ir0 = full * MR;
            }
          }
          for (idx ir = ir0; ir < mc; ir += MR) {
            const int mr = int(std::min<idx>(MR, mc - ir));
            const idx ti = gi + ir;
            if constexpr (wants_next_b<U>)
              prefetch_b_slice(reinterpret_cast<const char *>(bp + NR * kc * cf), nbytes, ir / MR, (mc + MR - 1) / MR);
            bool diag = false;
            if (tri) {
              if (sh.upper) {
                if (ti > tj + nr - 1) continue;
                diag = ti + mr - 1 >= tj;
              } else {
                if (ti + mr - 1 < tj) continue;
                diag = ti <= tj + nr - 1;
              }
            }
            // Depth range [klo, khi) of this tile that meets the nonzero part
            // of a triangular operand.
            idx klo = 0, khi = kc;
            if (sh.kind == shape::trim_a) {
              if (sh.upper) klo = std::clamp<idx>(ti - pc, 0, kc);
              else khi = std::clamp<idx>(ti + mr - pc, 0, kc);
            } else if (sh.kind == shape::trim_b) {
              if (sh.upper) khi = std::clamp<idx>(tj + nr - pc, 0, kc);
              else klo = std::clamp<idx>(tj - pc, 0, kc);
            }
            if (klo >= khi) {
              if (!first) continue;
              klo = khi = 0;
            }
            bmode tbm = bm;
            if (in_place) {
              const idx t0 = sh.kind == shape::trim_a ? ti : tj;
              if (t0 >= pc && t0 < pc + kc) tbm = beta_mode(beta);
            }
            const R *ap = ws.apack + (ir / MR) * U::MR * kc * cf;
            T *c = C + (ic + ir) + (jc + jr) * ldc;
            tile_dest dst;
            dst.c = reinterpret_cast<char *>(c);
            dst.ldc = ldc * idx(sizeof(T));
            dst.ncols = nr;
            dst.colbytes = mr * int(sizeof(T));
            // Whole tiles off the diagonal with beta 0 or 1 go straight to C.
            if (U::direct && !diag && mr == MR && nr == NR && tbm != bmode::general)
              dst.mode = tbm == bmode::one ? tile_dest::add : tile_dest::copy;
            // Careful band tiles: the kernel takes the depth outside the band
            // (on one side of it: the other side was trimmed), the band goes
            // step by step.
            idx q0 = khi, q1 = khi;
            if (careful) {
              const idx t0 = sh.kind == shape::trim_a ? ti : tj, tw = sh.kind == shape::trim_a ? mr : nr;
              q0 = std::clamp<idx>(t0 - pc, klo, khi);
              q1 = std::clamp<idx>(t0 + tw - pc, klo, khi);
              if (q0 < q1) dst.mode = tile_dest::tile;
            }
            if (q0 < q1 && q0 > klo)
              U::run((q0 - klo) * cf, ap + klo * cf * U::MR, bp + klo * cf * NR, tile, dst);
            else if (q0 < q1)
              U::run((khi - q1) * cf, ap + q1 * cf * U::MR, bp + q1 * cf * NR, tile, dst);
            else
              U::run((khi - klo) * cf, ap + klo * cf * U::MR, bp + klo * cf * NR, tile, dst);
            if (q0 < q1) band_products<T>(ap, bp, q0, q1, mr, nr, ti, tj, pc, sh, tile);
            if (dst.mode != tile_dest::tile) continue;
            if (diag) store_tri(c, ldc, mr, nr, tt, MR, beta, tbm, ti, tj, sh);
            else store_full(c, ldc, mr, nr, tt, beta, tbm);
          }
        }
      }
    }
  }
}

// ---------------------------------------------------------------------------
// Level-3 operations on the engine. Flags are already decoded.

}  // namespace NXL_CP_NS
}  // namespace nxl
#include "blas/kernels/l3_cplx.h"
namespace nxl {
inline namespace NXL_CP_NS {

template <class T>
void gemm(workspace<T> &ws, bool ta, bool ca, bool tb, bool cb, idx m, idx n, idx k, T alpha,
          const T *a, idx lda, const T *b, idx ldb, T beta, T *c, idx ldc) {
  if constexpr (is_complex_v<T> && cukernel<real_t<T>>::native) {
    gemm_cplx(ws, general_view(a, lda, ta, ca), general_view(b, ldb, tb, cb), m, n, k, alpha, beta, c, ldc);
    return;
  }
  gemm_core(ws, general_view(a, lda, ta, ca), general_view(b, ldb, tb, cb), m, n, k, alpha, beta,
            c, ldc, shape{});
}

// symm / hemm: the packing of A mirrors its stored triangle.
template <class T>
void symm(workspace<T> &ws, bool left, bool upper, bool herm, idx m, idx n, T alpha, const T *a,
          idx lda, const T *b, idx ldb, T beta, T *c, idx ldc) {
  view<T> S;
  S.a = a;
  S.ld = lda;
  S.kind = herm ? mkind::hermitian : mkind::symmetric;
  S.upper = upper;
  view<T> G = general_view(b, ldb, false, false);
  if (left) gemm_core(ws, S, G, m, n, m, alpha, beta, c, ldc, shape{});
  else gemm_core(ws, G, S, m, n, n, alpha, beta, c, ldc, shape{});
}

// Rank-k and rank-2k updates of the columns [j0, j1) of the stored triangle:
// C = alpha * opA * opB^T (+ alpha2 * opB * opA^T) + beta * C, where for the
// Hermitian forms ^T is the conjugate transpose and alpha2 = conj(alpha).
template <class T>
void rankk(workspace<T> &ws, bool upper, bool trans, bool herm, bool two, idx n, idx k, T alpha,
           const T *a, idx lda, const T *b, idx ldb, T beta, T *c, idx ldc, idx j0, idx j1) {
  if (j1 <= j0) return;
  shape sh;
  sh.kind = shape::triangle;
  sh.upper = upper;
  sh.real_diag = herm;
  // Row range of C that the column range meets, starting on the tile grid
  // of the whole matrix so that every tile is the one a full call forms.
  const idx r0 = upper ? 0 : j0 / blk<T>::MR * blk<T>::MR, r1 = upper ? j1 : n;
  // opX (n x k) as the A operand, opX^T (k x n) as the B operand.
  auto left_op = [&](const T *x, idx ldx) {
    return general_view(x, ldx, trans, trans && herm).sub(r0, 0);
  };
  auto right_op = [&](const T *x, idx ldx) {
    return general_view(x, ldx, !trans, !trans && herm).sub(0, j0);
  };
  T *cc = c + r0 + j0 * ldc;
  if (k <= 0 || alpha == T(0)) {
    if (beta != T(1)) scale_c(cc, ldc, r1 - r0, j1 - j0, beta, r0, j0, sh);
    return;
  }
  gemm_core(ws, left_op(a, lda), right_op(two ? b : a, two ? ldb : lda), r1 - r0, j1 - j0, k, alpha,
            beta, cc, ldc, sh, r0, j0);
  if (two) {
    T alpha2 = herm ? nxl::NXL_CP_NS::conj(alpha) : alpha;
    gemm_core(ws, left_op(b, ldb), right_op(a, lda), r1 - r0, j1 - j0, k, alpha2, T(1), cc, ldc, sh,
              r0, j0);
  }
}

// Triangular view of op(A): its shape after transposition.
template <class T>
view<T> tri_view(const T *a, idx lda, bool upper, bool trans, bool cj, bool unit) {
  view<T> v = general_view(a, lda, trans, cj);
  v.kind = mkind::triangular;
  v.upper = upper != trans;
  v.unit = unit;
  return v;
}

template <class T> void scale_b(T *b, idx ldb, idx m, idx n, T alpha) {
  if (alpha == T(1)) return;
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < m; ++i) b[i + j * ldb] = alpha == T(0) ? T(0) : mul(alpha, b[i + j * ldb]);
}

// trmm: B = alpha * op(A) * B or alpha * B * op(A), in place: the engine
// packs each block of B before any tile it feeds is written (see
// shape::in_place), and trims the zero part of the triangle from each
// micro-tile's depth.
template <class T>
void trmm(workspace<T> &ws, bool left, bool upper, bool trans, bool cj, bool unit, idx m, idx n,
          T alpha, const T *a, idx lda, T *b, idx ldb) {
  if (alpha == T(0)) {
    scale_b(b, ldb, m, n, T(0));
    return;
  }
  const view<T> A = tri_view(a, lda, upper, trans, cj, unit), B = general_view<T>(b, ldb, false, false);
  shape sh;
  sh.upper = A.upper;
  sh.in_place = true;
  sh.kind = left ? shape::trim_a : shape::trim_b;
  if (left) gemm_core(ws, A, B, m, n, m, alpha, T(0), b, ldb, sh);
  else gemm_core(ws, B, A, m, n, n, alpha, T(0), b, ldb, sh);
}

// Order of the diagonal blocks the triangular solve ends on.
template <class T> constexpr idx trsm_nb() { return is_complex_v<T> ? 32 : 64; }

// dst (rows x cols, leading dimension ldd) = the r x c block of src, zero
// outside it.
template <class T>
void copy_padded(const T *src, idx lds, idx r, idx c, T *dst, idx ldd, idx rows, idx cols) {
  for (idx j = 0; j < cols; ++j)
    for (idx i = 0; i < rows; ++i) dst[i + j * ldd] = i < r && j < c ? src[i + j * lds] : T(0);
}

// Vectors of the diagonal-block solves: W reals (half the rows of a
// micro-tile), E elements of T, complex ones as (re, im) pairs. Complex
// products are two fused steps, the real part of the scalar first, in every
// place alike.
template <class T> struct svec {
  using R = real_t<T>;
  static constexpr int cf = is_complex_v<T> ? 2 : 1;
  static constexpr int W = blk<T>::MR * cf / 2, E = W / cf;
  typedef R V __attribute__((ext_vector_type(W)));
  static V load(const T *p) {
    V v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
  }
  static void store(T *p, V v) { __builtin_memcpy(p, &v, sizeof v); }
  static T get(V v, int e) {
    if constexpr (cf == 1) return v[e];
    else return T(v[2 * e], v[2 * e + 1]);
  }
  static void set(V &v, int e, T x) {
    if constexpr (cf == 1) {
      v[e] = x;
    } else {
      v[2 * e] = x.real();
      v[2 * e + 1] = x.imag();
    }
  }
  template <int... I> static V swap_pairs(V v, std::integer_sequence<int, I...>) {
    return __builtin_shufflevector(v, v, (I ^ 1)...);
  }
  // (-xi, xi, -xi, xi, ...)
  template <int... I> static V alt(R xi, std::integer_sequence<int, I...>) { return V{(I % 2 ? xi : -xi)...}; }
  // acc - v x
  static V fnma(V acc, V v, T x) {
    if constexpr (cf == 1) {
      return acc - v * x;
    } else {
      const V t = acc - v * x.real();
      return t - swap_pairs(v, std::make_integer_sequence<int, W>()) * alt(x.imag(), std::make_integer_sequence<int, W>());
    }
  }
  // v x
  static V scale(V v, T x) {
    if constexpr (cf == 1) {
      return v * x;
    } else {
      const V t = v * x.real();
      return t + swap_pairs(v, std::make_integer_sequence<int, W>()) * alt(x.imag(), std::make_integer_sequence<int, W>());
    }
  }
  // Half h of a tile of 2E elements after element k was solved: lanes of the
  // elements solved up to k (at or above k when up) from old, others from nv.
  template <int k, bool up, int h, int... I> static V blend(V nv, V old, std::integer_sequence<int, I...>) {
    return __builtin_shufflevector(nv, old, ((up ? h * E + I / cf >= k : h * E + I / cf <= k) ? W + I : I)...);
  }
};

// Solves with a diagonal block D (nbp x nbp, a multiple of the tile, lower
// or upper, column-major), on register tiles of RB = 2E rows by CB columns.
// Left, D X = B: a tile of rows first takes the updates of every row solved
// before it (a vector of D's column times a broadcast unknown, accumulators
// held over the whole depth), then is solved on its vector lanes. Right,
// X D = B: rows of X are independent; a tile of CB columns takes the columns
// solved before it (a vector of X's column times a broadcast element of D),
// then its columns are solved one after the other as whole vectors. Every
// element takes its updates one at a time in the order of the solve, and
// edge tiles run zero-padded in a buffer, so an element's value does not
// depend on how B's other dimension is split.
//
// Fast form: scaling by the reciprocal of the diagonal, every update made.
// Careful form, when D holds a non-finite entry (left) or a zero (right), or
// a diagonal whose reciprocal is not normal: divisions, and the updates a
// zero would make are skipped (a zero unknown on the left, a zero of D on
// the right), so an infinity never meets a zero.
template <class T, bool Careful, bool up, bool unit, idx CB>
inline void trsm_left_tile(const T *d, idx ldd, const T *rdiag, idx nbp, idx r0, T *x, idx ldx) {
  using S = svec<T>;
  using V = typename S::V;
  constexpr int E = S::E;
  V a[CB][2];
#pragma clang loop unroll(full)
  for (idx j = 0; j < CB; ++j)
    for (int h = 0; h < 2; ++h) a[j][h] = S::load(x + r0 + h * E + j * ldx);
  const idx np = up ? nbp - r0 - 2 * E : r0;
  const T *xc[CB];
  column_bases(x, ldx, xc);
  for (idx q = 0; q < np; ++q) {
    const idx p = up ? nbp - 1 - q : q;
    const V d0 = S::load(d + r0 + p * ldd), d1 = S::load(d + r0 + E + p * ldd);
#pragma clang loop unroll(full)
    for (idx j = 0; j < CB; ++j) {
      const T xp = xc[j][p];
      if (Careful && xp == T(0)) continue;
      a[j][0] = S::fnma(a[j][0], d0, xp);
      a[j][1] = S::fnma(a[j][1], d1, xp);
    }
  }
  auto step = [&]<int k>() __attribute__((always_inline)) {
    const T *dc = d + r0 + (r0 + k) * ldd;
    const V dk[2] = {S::load(dc), S::load(dc + E)};
#pragma clang loop unroll(full)
    for (idx j = 0; j < CB; ++j) {
      T xk = S::get(a[j][k / E], k % E);
      if constexpr (!unit) xk = Careful ? div(xk, dc[k]) : mul(xk, rdiag[r0 + k]);
      x[r0 + k + j * ldx] = xk;
      if (Careful && xk == T(0)) continue;
      if constexpr (up ? k > 0 : k < E - 1)
        a[j][0] = S::template blend<k, up, 0>(S::fnma(a[j][0], dk[0], xk), a[j][0], std::make_integer_sequence<int, S::W>());
      if constexpr (up ? k > E : k < 2 * E - 1)
        a[j][1] = S::template blend<k, up, 1>(S::fnma(a[j][1], dk[1], xk), a[j][1], std::make_integer_sequence<int, S::W>());
    }
  };
  [&]<int... K>(std::integer_sequence<int, K...>) __attribute__((always_inline)) {
    (step.template operator()<up ? 2 * E - 1 - K : K>(), ...);
  }(std::make_integer_sequence<int, 2 * E>());
}

template <class T, bool Careful, bool up, bool unit, idx CB>
inline void trsm_right_tile(const T *d, idx ldd, const T *rdiag, idx nbp, idx c0, T *x, idx ldx) {
  using S = svec<T>;
  using V = typename S::V;
  constexpr int E = S::E;
  V a[CB][2];
#pragma clang loop unroll(full)
  for (idx c = 0; c < CB; ++c)
    for (int h = 0; h < 2; ++h) a[c][h] = S::load(x + h * E + (c0 + c) * ldx);
  const idx np = up ? c0 : nbp - c0 - CB;
  for (idx q = 0; q < np; ++q) {
    const idx p = up ? q : nbp - 1 - q;
    const V x0 = S::load(x + p * ldx), x1 = S::load(x + E + p * ldx);
#pragma clang loop unroll(full)
    for (idx c = 0; c < CB; ++c) {
      const T dpc = d[p + (c0 + c) * ldd];
      if (Careful && dpc == T(0)) continue;
      a[c][0] = S::fnma(a[c][0], x0, dpc);
      a[c][1] = S::fnma(a[c][1], x1, dpc);
    }
  }
#pragma clang loop unroll(full)
  for (idx s = 0; s < CB; ++s) {
    const idx c = up ? s : CB - 1 - s;
    if constexpr (!unit) {
      const T dcc = d[c0 + c + (c0 + c) * ldd];
      for (int h = 0; h < 2; ++h) {
        if constexpr (Careful) {
          for (int e = 0; e < E; ++e) S::set(a[c][h], e, div(S::get(a[c][h], e), dcc));
        } else {
          a[c][h] = S::scale(a[c][h], rdiag[c0 + c]);
        }
      }
    }
    for (int h = 0; h < 2; ++h) S::store(x + h * E + (c0 + c) * ldx, a[c][h]);
    const idx lo = up ? c + 1 : 0, hi = up ? CB : c;
#pragma clang loop unroll(full)
    for (idx e = lo; e < hi; ++e) {
      const T dce = d[c0 + c + (c0 + e) * ldd];
      if (Careful && dce == T(0)) continue;
      a[e][0] = S::fnma(a[e][0], a[c][0], dce);
      a[e][1] = S::fnma(a[e][1], a[c][1], dce);
    }
  }
}

// Columns of the solve per tile, and the padded buffer the edge tiles use.
// On the left the steps of a tile's own solve form a chain of dependent
// operations, so the columns are its independent work: 8 where the path has
// 32 vector registers for their 16 accumulators, 4 otherwise. On the right
// the tile's columns are solved as whole vectors, one after the other, and
// 4 do best.
#if defined(__AVX512F__)
constexpr idx trsm_cb_left = 8;
#else
constexpr idx trsm_cb_left = 4;
#endif
constexpr idx trsm_cb_right = 4;
template <class T> constexpr idx trsm_pad_size() {
  return std::max(trsm_nb<T>() * trsm_cb_left, 2 * svec<T>::E * trsm_nb<T>());
}

template <class T, bool Careful, bool up, bool unit>
void trsm_block_form(bool left, const T *d, idx ldd, const T *rdiag, idx nb, idx nbp, idx other, T *b,
                     idx ldb) {
  constexpr idx RB = 2 * svec<T>::E;
  alignas(64) T pad[trsm_pad_size<T>()];
  if (left) {
    constexpr idx CB = trsm_cb_left;
    for (idx j0 = 0; j0 < other; j0 += CB) {
      const idx cb = std::min(CB, other - j0);
      const bool padded = cb < CB || nbp != nb;
      T *x = padded ? pad : b + j0 * ldb;
      const idx ldx = padded ? nbp : ldb;
      if (padded) copy_padded(b + j0 * ldb, ldb, nb, cb, pad, nbp, nbp, CB);
      for (idx r0 = up ? nbp - RB : 0; up ? r0 >= 0 : r0 < nbp; r0 += up ? -RB : RB)
        trsm_left_tile<T, Careful, up, unit, CB>(d, ldd, rdiag, nbp, r0, x, ldx);
      if (padded) copy_padded(pad, nbp, nb, cb, b + j0 * ldb, ldb, nb, cb);
    }
  } else {
    constexpr idx CB = trsm_cb_right;
    for (idx r0 = 0; r0 < other; r0 += RB) {
      const idx rb = std::min(RB, other - r0);
      const bool padded = rb < RB || nbp != nb;
      T *x = padded ? pad : b + r0;
      const idx ldx = padded ? RB : ldb;
      if (padded) copy_padded(b + r0, ldb, rb, nb, pad, RB, RB, nbp);
      for (idx c0 = up ? 0 : nbp - CB; up ? c0 < nbp : c0 >= 0; c0 += up ? CB : -CB)
        trsm_right_tile<T, Careful, up, unit, CB>(d, ldd, rdiag, nbp, c0, x, ldx);
      if (padded) copy_padded(pad, RB, rb, nb, b + r0, ldb, rb, nb);
    }
  }
}

// Triangular solve of a small diagonal block: op(D) X = B (left) or
// X op(D) = B (right), D (nb x nb) read from the view. D is used in place
// when it is stored as used (no transpose, no conjugate) and its order fits
// the tiles; otherwise its referenced part goes into the buffer, padded to
// whole tiles with a unit diagonal and zeros (padded unknowns stay zero and
// change nothing). The form is decided from D alone.
template <class T>
void trsm_block(bool left, const view<T> &A, idx nb, idx other, T *b, idx ldb, T *dbuf) {
  const bool up = A.upper, unit = A.unit;
  const idx g = left ? 2 * svec<T>::E : trsm_cb_right, nbp = (nb + g - 1) / g * g;
  const T *d = dbuf;
  idx ldd = nbp;
  if (!A.trans && !A.cj && nbp == nb) {
    d = A.a + A.r0 + A.c0 * A.ld;
    ldd = A.ld;
  } else {
    for (idx p = 0; p < nbp; ++p) {
      const idx lo = up ? 0 : p, hi = up ? p + 1 : nbp;
      for (idx i = lo; i < hi; ++i)
        dbuf[i + p * nbp] = i < nb && p < nb ? A.raw(A.r0 + i, A.c0 + p) : i == p ? T(1) : T(0);
    }
  }
  bool careful = false;
  alignas(64) T rdiag[trsm_nb<T>()];
  for (idx p = 0; p < nbp; ++p) rdiag[p] = T(1);
  for (idx p = 0; p < nb && !careful; ++p) {
    const idx lo = up ? 0 : p + 1, hi = up ? p : nb;
    for (idx i = lo; i < hi; ++i) {
      const T v = d[i + p * ldd];
      careful |= left ? !(__builtin_isfinite(std::real(v)) && __builtin_isfinite(std::imag(v))) : v == T(0);
    }
    if (!unit) {
      const T r = div(T(1), d[p + p * ldd]);
      const real_t<T> big = std::max(std::fabs(std::real(r)), std::fabs(std::imag(r)));
      careful |= !(__builtin_isnormal(big) && __builtin_isfinite(std::real(r)) && __builtin_isfinite(std::imag(r)));
      rdiag[p] = r;
    }
  }
  // Every variant is a template of its own: no run-time branch may separate
  // a product from the difference it is fused into.
  auto run = [&]<bool C, bool U, bool N>() { trsm_block_form<T, C, U, N>(left, d, ldd, rdiag, nb, nbp, other, b, ldb); };
  switch ((careful ? 4 : 0) + (up ? 2 : 0) + (unit ? 1 : 0)) {
    case 0: run.template operator()<false, false, false>(); break;
    case 1: run.template operator()<false, false, true>(); break;
    case 2: run.template operator()<false, true, false>(); break;
    case 3: run.template operator()<false, true, true>(); break;
    case 4: run.template operator()<true, false, false>(); break;
    case 5: run.template operator()<true, false, true>(); break;
    case 6: run.template operator()<true, true, false>(); break;
    default: run.template operator()<true, true, true>(); break;
  }
}

// Recursive triangular solve: halve the triangle, solve one half, update the
// other through the engine (B2 -= op(A)21 X1), solve the second half.
template <class T>
void trsm_rec(workspace<T> &ws, bool left, const view<T> &A, idx nt, idx other, T *b, idx ldb, T *d) {
  if (nt <= trsm_nb<T>()) {
    trsm_block(left, A, nt, other, b, ldb, d);
    return;
  }
  const idx g = left ? blk<T>::MR : blk<T>::NR;
  idx n1 = (nt / 2 + g - 1) / g * g;
  if (n1 >= nt) n1 = nt / 2;
  const idx n2 = nt - n1;
  const bool up = A.upper;
  auto bptr = [&](idx off) { return left ? b + off : b + off * ldb; };
  view<T> A11 = A, A22 = A.sub(n1, n1);
  // Forward order: lower-left and upper-right start at the top.
  const bool fwd = left ? !up : up;
  view<T> A21 = A;
  A21.kind = mkind::general;
  if (left) A21 = fwd ? A21.sub(n1, 0) : A21.sub(0, n1);
  else A21 = fwd ? A21.sub(0, n1) : A21.sub(n1, 0);
  const idx first = fwd ? 0 : n1, firstn = fwd ? n1 : n2;
  const idx second = fwd ? n1 : 0, secondn = fwd ? n2 : n1;
  view<T> Af = fwd ? A11 : A22, As = fwd ? A22 : A11;
  trsm_rec(ws, left, Af, firstn, other, bptr(first), ldb, d);
  view<T> X = general_view<T>(bptr(first), ldb, false, false);
  if (left)
    gemm_core(ws, A21, X, secondn, other, firstn, T(-1), T(1), bptr(second), ldb, shape{});
  else
    gemm_core(ws, X, A21, other, secondn, firstn, T(-1), T(1), bptr(second), ldb, shape{});
  trsm_rec(ws, left, As, secondn, other, bptr(second), ldb, d);
}

template <class T>
void trsm(workspace<T> &ws, bool left, bool upper, bool trans, bool cj, bool unit, idx m, idx n,
          T alpha, const T *a, idx lda, T *b, idx ldb) {
  scale_b(b, ldb, m, n, alpha);
  if (alpha == T(0)) return;
  alignas(64) T d[trsm_nb<T>() * trsm_nb<T>()];
  trsm_rec(ws, left, tri_view(a, lda, upper, trans, cj, unit), left ? m : n, left ? n : m, b, ldb, d);
}

}  // namespace NXL_CP_NS
}  // namespace nxl

#endif  // NXL_BLAS_L3_ENGINE_H
