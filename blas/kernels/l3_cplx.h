// Plain complex products on a native complex micro-kernel, for the code
// paths that have one (cukernel<R>::native): C = alpha * opA * opB + beta * C
// with general operands. Part of the level-3 engine (included by
// l3_engine.h, whose tile stores, beta modes and work buffers it uses).
//
// The loops are the engine's: NC-column blocks of C, KC-deep blocks of the
// depth, MC-row blocks of packed A, then NR-column and MR-row tiles. The
// packed panels hold plain complex elements, k-major: an A micro-panel MR
// elements per step (alpha and conjugation applied), a B micro-panel NR
// elements per step (conjugation applied), edge panels zero-padded. The depth
// blocking depends on k alone and every element of a tile runs the same
// operations, so cutting C anywhere gives the same bits.
#ifndef NXL_BLAS_L3_CPLX_H
#define NXL_BLAS_L3_CPLX_H

namespace nxl {
inline namespace NXL_CP_NS {

template <class T> struct cblk {
  using R = real_t<T>;
  using U = cukernel<R>;
  static constexpr int MR = U::MR, NR = U::NR;
  static constexpr idx KC = U::KC, MC = U::MC, NC = U::NC;
};

// Vectors of E complex elements as interleaved (re, im) reals.
template <class T, int E> struct cpack_vec {
  using R = real_t<T>;
  static constexpr int N = 2 * E;
  typedef R V __attribute__((vector_size(N * sizeof(R))));
  template <int... I> static V swap(V x, std::integer_sequence<int, I...>) {
    return __builtin_shufflevector(x, x, (I ^ 1)...);
  }
  template <int... I> static V alt(R even, R odd, std::integer_sequence<int, I...>) {
    return V{((I & 1) ? odd : even)...};
  }
  // conj?(w) * alpha, each lane as alpha_times forms it: the two products
  // on their own, then one sum or difference.
  struct scaler {
    V csign, ar, ai, rot;
    bool a1;
    scaler(T alpha, bool cj) {
      const auto seq = std::make_integer_sequence<int, N>();
      csign = alt(R(1), cj ? R(-1) : R(1), seq);
      ar = alt(alpha.real(), alpha.real(), seq);
      ai = alt(alpha.imag(), alpha.imag(), seq);
      rot = alt(R(-1), R(1), seq);
      a1 = alpha == T(1);
    }
    __attribute__((always_inline)) V operator()(V w) const {
      w = w * csign;
      if (a1) return w;
      V re_part = w * ar, im_part = swap(w, std::make_integer_sequence<int, N>()) * ai;
      __asm__("" : "+v"(re_part), "+v"(im_part));
      return re_part + im_part * rot;
    }
  };
};

// One step of an A micro-panel: MR contiguous complex elements from col,
// scaled, to d, as two vectors of L = MR / 2 elements.
template <class T> using cpack_half = cpack_vec<T, cblk<T>::MR / 2>;
template <class T>
__attribute__((always_inline)) inline void cpack_a_step(const T *col, const typename cpack_half<T>::scaler &sc,
                                                        real_t<T> *d) {
  using P = cpack_half<T>;
#pragma clang loop unroll(full)
  for (int h = 0; h < 2; ++h) {
    typename P::V v;
    __builtin_memcpy(&v, col + h * (cblk<T>::MR / 2), sizeof v);
    v = sc(v);
    __builtin_memcpy(d + h * cblk<T>::MR, &v, sizeof v);
  }
}

// A block: mc x kc of alpha * V (general view) in MR-row micro-panels.
// Untransposed, each step is a piece of one column; transposed, squares of
// L rows by L steps are transposed in registers. Edge panels and the last
// steps of a transposed panel gather their elements into a zero-padded
// column first, so every element is scaled by the same vector code.
template <class T>
void cpack_a(const view<T> &V, idx i0, idx p0, idx mc, idx kc, T alpha, real_t<T> *__restrict dst) {
  using R = real_t<T>;
  constexpr int MR = cblk<T>::MR, L = MR / 2;
  static_assert(MR % 2 == 0 && (L & (L - 1)) == 0, "the transposed packing takes two squares per panel");
  using PL = cpack_half<T>;
  const typename PL::scaler sc(alpha, V.cj);
  const idx ld = V.ld;
  alignas(64) T buf[MR];
  if (!V.trans) {
    // As the real packing: a few steps at a time across all whole panels,
    // each column read down in one sweep, the next pass prefetched; the
    // edge panel last.
    constexpr idx ahead = 16;
    const T *src = V.a + (V.r0 + i0) + (V.c0 + p0) * ld;
    const idx full = mc / MR * MR;
    for (idx q0 = 0; q0 < kc; q0 += ahead) {
      const idx q1 = std::min(kc, q0 + ahead);
      for (idx ir = 0; ir < full; ir += MR)
        for (idx p = q0; p < q1; ++p) {
          const T *col = src + ir + p * ld;
          if (p + ahead < kc) {
            __builtin_prefetch(col + ahead * ld);
            __builtin_prefetch(col + ahead * ld + MR - 1);
          }
          cpack_a_step<T>(col, sc, dst + ir * kc * 2 + p * 2 * MR);
        }
    }
    if (full < mc) {
      const idx mr = mc - full;
      for (idx p = 0; p < kc; ++p) {
        const T *col = src + full + p * ld;
        for (int i = 0; i < MR; ++i) buf[i] = i < mr ? col[i] : T(0);
        cpack_a_step<T>(buf, sc, dst + full * kc * 2 + p * 2 * MR);
      }
    }
    return;
  }
  for (idx ir = 0; ir < mc; ir += MR) {
    const idx mr = std::min<idx>(MR, mc - ir);
    R *d = dst + ir * kc * 2;
    const idx r = V.r0 + i0 + ir, c = V.c0 + p0;
    // op(A)(i, p) = a[p + i * ld]: rows of the panel are contiguous in p.
    const T *src = V.a + c + r * ld;
    idx p = 0;
    if (mr == MR) {
      using B = tblock<R, 2, L>;
      const R *sr = reinterpret_cast<const R *>(src);
      for (; p + L <= kc; p += L)
#pragma clang loop unroll(full)
        for (int g = 0; g < 2; ++g) {
          typename B::V v[L];
#pragma clang loop unroll(full)
          for (int q = 0; q < L; ++q) {
            const R *row = sr + 2 * ((g * L + q) * ld + p);
            __builtin_prefetch(row + 8 * L);
            __builtin_memcpy(&v[q], row, sizeof(v[q]));
          }
          B::transpose(v);
#pragma clang loop unroll(full)
          for (int q = 0; q < L; ++q) {
            typename PL::V w;
            __builtin_memcpy(&w, &v[q], sizeof w);
            w = sc(w);
            __builtin_memcpy(d + (p + q) * 2 * MR + g * 2 * L, &w, sizeof w);
          }
        }
    }
    for (; p < kc; ++p) {
      for (int i = 0; i < MR; ++i) buf[i] = i < mr ? src[p + i * ld] : T(0);
      cpack_a_step<T>(buf, sc, d + p * 2 * MR);
    }
  }
}

// B block: kc x nc of V (general view) in NR-column micro-panels, k-major,
// imaginary parts negated when V conjugates; edge panels zero-padded.
template <class T>
void cpack_b(const view<T> &V, idx p0, idx j0, idx kc, idx nc, real_t<T> *__restrict dst) {
  using R = real_t<T>;
  constexpr int NR = cblk<T>::NR;
  const R sg = V.cj ? R(-1) : R(1);
  const idx ld = V.ld;
  const idx r = V.r0 + p0, c = V.c0 + j0;
  for (idx jr = 0; jr < nc; jr += NR) {
    const int nr = int(std::min<idx>(NR, nc - jr));
    R *d = dst + jr * kc * 2;
    auto put = [&](idx p, int j, const R *e) {
      d[2 * (p * NR + j)] = e[0];
      d[2 * (p * NR + j) + 1] = sg * e[1];
    };
    if (!V.trans) {
      // Column j of the panel is contiguous in p.
      const T *src = V.a + r + (c + jr) * ld;
      if (nr == NR) {
        const T *cols[NR];
        column_bases(src, ld, cols);
        for (idx p = 0; p < kc; ++p) {
          if ((p & 3) == 0)
#pragma clang loop unroll(full)
            for (int j = 0; j < NR; ++j) __builtin_prefetch(cols[j] + p + 16);
#pragma clang loop unroll(full)
          for (int j = 0; j < NR; ++j) put(p, j, reinterpret_cast<const R *>(cols[j] + p));
        }
      } else {
        for (int j = 0; j < nr; ++j)
          for (idx p = 0; p < kc; ++p) put(p, j, reinterpret_cast<const R *>(src + j * ld + p));
      }
    } else {
      // Step p of the panel is contiguous in j.
      const T *src = V.a + (c + jr) + r * ld;
      for (idx p = 0; p < kc; ++p) {
        const R *row = reinterpret_cast<const R *>(src + p * ld);
        __builtin_prefetch(row + 16 * ld);
        for (int j = 0; j < nr; ++j) put(p, j, row + 2 * j);
      }
    }
    if (nr < NR)
      for (idx p = 0; p < kc; ++p)
        for (int j = nr; j < NR; ++j) d[2 * (p * NR + j)] = d[2 * (p * NR + j) + 1] = R(0);
  }
}

// Points ws's packed blocks at room for an mc x kc A block and a kc x nc B
// block of native panels: the stack area, the heap block it has, or a new
// one. Without memory, smaller blocks in the stack area (slower, still
// exact).
template <class T> void cplx_setup(workspace<T> &ws, idx m, idx n, idx k) {
  using R = real_t<T>;
  using CB = cblk<T>;
  auto a_elems = [](idx mc, idx kc) { return size_t((mc + CB::MR - 1) / CB::MR) * CB::MR * kc * 2; };
  auto b_elems = [](idx kc, idx nc) { return size_t((nc + CB::NR - 1) / CB::NR) * CB::NR * kc * 2; };
  ws.kc = std::min<idx>(std::max<idx>(k, 1), CB::KC);
  ws.mc = std::min<idx>(std::max<idx>(m, 1), CB::MC);
  ws.nc = std::min<idx>(std::max<idx>(n, 1), CB::NC);
  size_t abytes = (a_elems(ws.mc, ws.kc) * sizeof(R) + 63) & ~size_t(63);
  const size_t bytes = abytes + b_elems(ws.kc, ws.nc) * sizeof(R);
  unsigned char *base = nullptr;
  if (bytes <= workspace<T>::stack_bytes) {
    base = ws.stack;
  } else if (bytes <= ws.cap) {
    base = static_cast<unsigned char *>(ws.heap);
  } else {
    if (ws.heap) nxl_serv_deallocate(ws.heap);
    ws.heap = nxl_serv_allocate(bytes, 4096);
    ws.cap = ws.heap ? bytes : 0;
    base = static_cast<unsigned char *>(ws.heap);
  }
  if (!base) {
    ws.kc = std::min<idx>(ws.kc, 64);
    ws.mc = CB::MR;
    ws.nc = CB::NR;
    while (a_elems(ws.mc * 2, ws.kc) * sizeof(R) + 64 + b_elems(ws.kc, ws.nc * 2) * sizeof(R) <=
           workspace<T>::stack_bytes) {
      ws.mc *= 2;
      ws.nc *= 2;
    }
    abytes = (a_elems(ws.mc, ws.kc) * sizeof(R) + 63) & ~size_t(63);
    base = ws.stack;
  }
  ws.apack = reinterpret_cast<R *>(base);
  ws.bpack = reinterpret_cast<R *>(base + abytes);
}

template <class T>
void gemm_cplx(workspace<T> &ws, const view<T> &A, const view<T> &B, idx m, idx n, idx k, T alpha,
               T beta, T *C, idx ldc) {
  using R = real_t<T>;
  using U = cukernel<R>;
  constexpr int MR = U::MR, NR = U::NR;
  if (m <= 0 || n <= 0) return;
  if (k <= 0 || alpha == T(0)) {
    if (beta != T(1)) scale_c(C, ldc, m, n, beta, 0, 0, shape{});
    return;
  }
  cplx_setup(ws, m, n, k);
  const idx KCb = ws.kc, MCb = ws.mc, NCb = ws.nc;
  alignas(64) R tile[2 * MR * NR];
  const T *tt = reinterpret_cast<const T *>(tile);
  for (idx jc = 0; jc < n; jc += NCb) {
    const idx nc = std::min(NCb, n - jc);
    for (idx pc = 0; pc < k; pc += KCb) {
      const idx kc = std::min(KCb, k - pc);
      const bmode bm = pc == 0 ? beta_mode(beta) : bmode::one;
      cpack_b(B, pc, jc, kc, nc, ws.bpack);
      for (idx ic = 0; ic < m; ic += MCb) {
        const idx mc = std::min(MCb, m - ic);
        cpack_a(A, ic, pc, mc, kc, alpha, ws.apack);
        for (idx jr = 0; jr < nc; jr += NR) {
          const int nr = int(std::min<idx>(NR, nc - jr));
          const R *bp = ws.bpack + jr * kc * 2;
          const char *nb = reinterpret_cast<const char *>(bp + NR * kc * 2);
          const idx nbytes = jr + NR < nc ? NR * kc * 2 * idx(sizeof(R)) : 0;
          const idx ntiles = (mc + MR - 1) / MR;
          idx ir0 = 0;
          if constexpr (has_col<U>) {
            // The whole tiles of a whole column in one call.
            const idx full = mc / MR;
            if (nr == NR && bm != bmode::general && full > 0) {
              col_dest cd;
              cd.first = tile_dest{reinterpret_cast<char *>(C + ic + (jc + jr) * ldc), ldc * idx(sizeof(T)), NR,
                                   MR * int(sizeof(T)), bm == bmode::one ? tile_dest::add : tile_dest::copy};
              cd.tstep = MR * idx(sizeof(T));
              cd.nb = nb;
              cd.nbytes = nbytes;
              if (full == ntiles && jr + 2 * NR <= nc)
                cd.after = reinterpret_cast<const char *>(C + ic + (jc + jr + NR) * ldc);
              U::run_col(kc, full, MR * kc * 2, ws.apack, bp, cd);
              ir0 = full * MR;
            }
          }
          for (idx ir = ir0; ir < mc; ir += MR) {
            const int mr = int(std::min<idx>(MR, mc - ir));
            const R *ap = ws.apack + ir * kc * 2;
            T *c = C + (ic + ir) + (jc + jr) * ldc;
            tile_dest dst{reinterpret_cast<char *>(c), ldc * idx(sizeof(T)), nr, mr * int(sizeof(T))};
            if (mr == MR && nr == NR && bm != bmode::general)
              dst.mode = bm == bmode::one ? tile_dest::add : tile_dest::copy;
            prefetch_b_slice(nb, nbytes, ir / MR, ntiles);
            // C of the next tile (down this column of tiles, or the top of
            // the next one) a whole tile ahead: C comes from memory, further
            // than the kernel's own prefetch near its end can hide.
            idx ni = ir + MR, nj = jr;
            if (ni >= mc) {
              ni = 0;
              nj += NR;
            }
            if (nj < nc) {
              const T *cn = C + (ic + ni) + (jc + nj) * ldc;
              const int nn = int(std::min<idx>(NR, nc - nj)), last = int(std::min<idx>(MR, mc - ni)) - 1;
              for (int j = 0; j < nn; ++j) {
                __builtin_prefetch(cn + j * ldc, 1, 2);
                __builtin_prefetch(cn + j * ldc + last, 1, 2);
              }
            }
            U::run(kc, ap, bp, tile, dst);
            if (dst.mode != tile_dest::tile) continue;
            if (bm != bmode::general) {
              for (int j = 0; j < nr; ++j) store_col<T, 0>(c + j * ldc, tt + j * MR, mr, beta, bm);
              continue;
            }
            // beta * c with its products formed on their own (as alpha's in
            // packing), so that no contraction differs between full and
            // edge tiles.
            for (int j = 0; j < nr; ++j)
              for (int i = 0; i < mr; ++i) {
                T &e = c[i + j * ldc];
                const T bc = alpha_times(beta, e), s = tt[i + j * MR];
                e = T(bc.real() + s.real(), bc.imag() + s.imag());
              }
          }
        }
      }
    }
  }
}

}  // namespace NXL_CP_NS
}  // namespace nxl

#endif  // NXL_BLAS_L3_CPLX_H
