// Register-blocked micro-kernels of the level-3 engine, and the blocking of
// this code path.
//
// A micro-kernel computes the MR x NR product of one packed A micro-panel
// (MR rows, k-contiguous) and one packed B micro-panel (NR columns,
// k-contiguous) over kc steps and writes it, column-major with leading
// dimension MR, into a tile buffer; kc = 0 writes zeros. It never reads or
// writes C: the engine stores tiles (full and partial alike) through one
// routine, so every element of C is formed by the same operations whatever
// its position in a tile.
//
// Complex products run on the real kernels (the 1m method): the engine packs
// complex A as 2x2 real blocks and complex B as real/imaginary row pairs.
// Paths with a native complex kernel run plain complex products on it
// instead (l3_cplx.h).
#ifndef NXL_BLAS_L3_UKERNEL_H
#define NXL_BLAS_L3_UKERNEL_H

#include "service/scalar.h"

namespace nxl {
inline namespace NXL_CP_NS {

// Calls fetch for every cache line of the n bytes from p (n > 0): a column
// of a tile that does not start on a line boundary covers one line more than
// its length alone would.
template <class F> inline void each_line(const char *p, int n, F fetch) {
  for (int o = 0; o < n; o += 64) fetch(p + o);
  fetch(p + n - 1);
}

// Where a micro-kernel's result goes. mode tile: into the tile buffer t
// (the engine then stores it); c, when set, names the C tile (ncols columns
// of colbytes bytes, ldc bytes apart) to prefetch for writing before the
// kernel ends. mode add / copy: a whole tile added to / copied over C
// directly, skipping the buffer: the same sums c + t or copies the tile store
// would make, so the result does not depend on the way taken.
struct tile_dest {
  enum kind { tile, add, copy };
  char *c = nullptr;
  idx ldc = 0;  // bytes between columns
  int ncols = 0, colbytes = 0;
  kind mode = tile;
  void prefetch() const {
    if (!c) return;
    for (int j = 0; j < ncols; ++j) each_line(c + j * ldc, colbytes, [](const char *q) { __builtin_prefetch(q, 1, 3); });
  }
};

// A column of whole tiles, for the kernels that loop over one themselves:
// ntiles A micro-panels (astride reals apart) against one B micro-panel,
// each tile added to or copied over C (first.mode add or copy) at first.c
// and then tstep bytes further down per tile. While the tiles run, the next
// B micro-panel (nbytes from nb; none if 0) is fetched a slice per tile and
// each tile's successor in C a whole tile ahead: the one below, and after
// the last tile `after` (none if null).
struct col_dest {
  tile_dest first;
  idx tstep = 0;
  const char *nb = nullptr;
  idx nbytes = 0;
  const char *after = nullptr;
};

// The next B micro-panel (nbytes from nb; 0 on the last one) brought in a
// slice per tile of the current column of tiles, so that it is near when
// its tiles start: between two tiles on the same B panel a whole A panel
// passes through L1, and the packed B block itself lives beyond L2.
inline void prefetch_b_slice(const char *nb, idx nbytes, idx tile, idx ntiles) {
  const idx slice = (nbytes / ntiles + 63) & ~idx(63), off = tile * slice;
  for (idx o = off; o < (off + slice < nbytes ? off + slice : nbytes); o += 64) __builtin_prefetch(nb + o);
}

// Portable micro-kernel: plain loops the compiler turns into vector code with
// the accumulators in registers. Under the reproducible build it is compiled
// without contraction, so each element is a fixed sequence of products and
// sums.
template <class R, int MR, int NR>
inline void ukr_generic(idx kc, const R *__restrict a, const R *__restrict b, R *__restrict t) {
  R acc[NR][MR];
  for (int j = 0; j < NR; ++j)
    for (int i = 0; i < MR; ++i) acc[j][i] = R(0);
  for (idx p = 0; p < kc; ++p) {
    for (int j = 0; j < NR; ++j) {
      R bj = b[j];
      for (int i = 0; i < MR; ++i) acc[j][i] += a[i] * bj;
    }
    a += MR;
    b += NR;
  }
  for (int j = 0; j < NR; ++j)
    for (int i = 0; i < MR; ++i) t[j * MR + i] = acc[j][i];
}

// Hand-written kernels of the paths that have them (blas/<path>/).
void ukr_hand_d(idx kc, const double *a, const double *b, double *t, const tile_dest &pf);
void ukr_hand_s(idx kc, const float *a, const float *b, float *t, const tile_dest &pf);

// Native complex kernels of the paths that have them (blas/<path>/): an MR x
// NR tile of complex elements from A packed as plain complex MR-row
// micro-panels and B as plain complex NR-column micro-panels, both k-major;
// the tile buffer holds complex elements, column-major, leading dimension MR.
void ukr_cplx_z(idx kc, const double *a, const double *b, double *t, const tile_dest &pf);
void ukr_cplx_c(idx kc, const float *a, const float *b, float *t, const tile_dest &pf);

// Column forms of the kernels above (col_dest), on the paths that have them.
void ukr_hand_d_col(idx kc, idx ntiles, idx astride, const double *a, const double *b, const col_dest &cd);
void ukr_hand_s_col(idx kc, idx ntiles, idx astride, const float *a, const float *b, const col_dest &cd);
void ukr_cplx_z_col(idx kc, idx ntiles, idx astride, const double *a, const double *b, const col_dest &cd);
void ukr_cplx_c_col(idx kc, idx ntiles, idx astride, const float *a, const float *b, const col_dest &cd);

// The native complex kernel of real type R on this path, if it has one:
// tile and blocks in complex elements. Paths without one run complex
// products on the real kernels.
template <class R> struct cukernel {
  static constexpr bool native = false;
};

// Whether kernel set U has the column form (run_col).
template <class U> constexpr bool has_col = requires { &U::run_col; };

// Block sizes, in real elements: MR x NR register tile, KC depth of the packed
// panels (L1/L2), MC rows of the packed A block (L2), NC columns of the packed
// B block (L3). KC is even and MC a multiple of MR, so complex blocks (twice
// the real depth) stay whole. prefetch_next_b, where set, has the macro-kernel
// fetch the next B micro-panel while the tiles of the current one run;
// pack_a_pass, where set, is the number of depth steps the packing of
// untransposed A takes across all panels of the block at a time.
template <class R> struct ukernel;

#if NXL_CP == 7 || NXL_CP == 6
template <> struct ukernel<double> {
  static constexpr int MR = 16, NR = 14;
  static constexpr bool direct = true;
  static constexpr idx KC = 256, MC = 192, NC = 4088;
  static void run(idx kc, const double *a, const double *b, double *t, const tile_dest &pf) { ukr_hand_d(kc, a, b, t, pf); }
};
template <> struct ukernel<float> {
  static constexpr int MR = 32, NR = 14;
  static constexpr bool direct = true;
  static constexpr idx KC = 384, MC = 256, NC = 4088;
  static void run(idx kc, const float *a, const float *b, float *t, const tile_dest &pf) { ukr_hand_s(kc, a, b, t, pf); }
};
#elif NXL_CP == 5
template <> struct ukernel<double> {
  static constexpr int MR = 8, NR = 6;
  static constexpr bool direct = true, prefetch_next_b = true;
  static constexpr int pack_a_pass = 16;
  static constexpr idx KC = 256, MC = 384, NC = 4080;
  static void run(idx kc, const double *a, const double *b, double *t, const tile_dest &pf) { ukr_hand_d(kc, a, b, t, pf); }
  static void run_col(idx kc, idx nt, idx as, const double *a, const double *b, const col_dest &cd) {
    ukr_hand_d_col(kc, nt, as, a, b, cd);
  }
};
template <> struct ukernel<float> {
  static constexpr int MR = 16, NR = 6;
  static constexpr bool direct = true, prefetch_next_b = true;
  static constexpr int pack_a_pass = 16;
  static constexpr idx KC = 256, MC = 384, NC = 4080;
  static void run(idx kc, const float *a, const float *b, float *t, const tile_dest &pf) { ukr_hand_s(kc, a, b, t, pf); }
  static void run_col(idx kc, idx nt, idx as, const float *a, const float *b, const col_dest &cd) {
    ukr_hand_s_col(kc, nt, as, a, b, cd);
  }
};
// Complex: 2 vectors of A (4 or 8 elements) by 3 columns, the products
// with the real and with the imaginary parts of B in separate accumulators
// (12 ymm). The depth of a block is in complex elements, so the packed
// panels take the bytes the real kernels' do.
template <> struct cukernel<double> {
  static constexpr bool native = true;
  static constexpr int MR = 4, NR = 3;
  static constexpr idx KC = 256, MC = 96, NC = 4080;
  static void run(idx kc, const double *a, const double *b, double *t, const tile_dest &pf) { ukr_cplx_z(kc, a, b, t, pf); }
  static void run_col(idx kc, idx nt, idx as, const double *a, const double *b, const col_dest &cd) {
    ukr_cplx_z_col(kc, nt, as, a, b, cd);
  }
};
template <> struct cukernel<float> {
  static constexpr bool native = true;
  static constexpr int MR = 8, NR = 3;
  static constexpr idx KC = 256, MC = 192, NC = 4080;
  static void run(idx kc, const float *a, const float *b, float *t, const tile_dest &pf) { ukr_cplx_c(kc, a, b, t, pf); }
  static void run_col(idx kc, idx nt, idx as, const float *a, const float *b, const col_dest &cd) {
    ukr_cplx_c_col(kc, nt, as, a, b, cd);
  }
};
#elif NXL_CP == 4
template <> struct ukernel<double> {
  static constexpr int MR = 8, NR = 4;
  static constexpr bool direct = true;
  static constexpr idx KC = 256, MC = 96, NC = 4096;
  static void run(idx kc, const double *a, const double *b, double *t, const tile_dest &pf) { ukr_hand_d(kc, a, b, t, pf); }
};
template <> struct ukernel<float> {
  static constexpr int MR = 16, NR = 4;
  static constexpr bool direct = true;
  static constexpr idx KC = 256, MC = 192, NC = 4096;
  static void run(idx kc, const float *a, const float *b, float *t, const tile_dest &pf) { ukr_hand_s(kc, a, b, t, pf); }
};
#elif NXL_CP == 0 || NXL_CP == 2 || NXL_CP == 3
template <> struct ukernel<double> {
  static constexpr int MR = 4, NR = 4;
  static constexpr bool direct = true;
  static constexpr idx KC = 256, MC = 96, NC = 4096;
  static void run(idx kc, const double *a, const double *b, double *t, const tile_dest &pf) { ukr_hand_d(kc, a, b, t, pf); }
};
template <> struct ukernel<float> {
  static constexpr int MR = 8, NR = 4;
  static constexpr bool direct = true;
  static constexpr idx KC = 256, MC = 192, NC = 4096;
  static void run(idx kc, const float *a, const float *b, float *t, const tile_dest &pf) { ukr_hand_s(kc, a, b, t, pf); }
};
#else
// The reproducible build: the portable kernel, compiled without contraction.
template <> struct ukernel<double> {
  static constexpr int MR = 4, NR = 4;
  static constexpr bool direct = false;
  static constexpr idx KC = 256, MC = 96, NC = 4096;
  static void run(idx kc, const double *a, const double *b, double *t, const tile_dest &pf) {
    pf.prefetch();
    ukr_generic<double, 4, 4>(kc, a, b, t);
  }
};
template <> struct ukernel<float> {
  static constexpr int MR = 8, NR = 4;
  static constexpr bool direct = false;
  static constexpr idx KC = 256, MC = 192, NC = 4096;
  static void run(idx kc, const float *a, const float *b, float *t, const tile_dest &pf) {
    pf.prefetch();
    ukr_generic<float, 8, 4>(kc, a, b, t);
  }
};
#endif

}  // namespace NXL_CP_NS
}  // namespace nxl

#endif  // NXL_BLAS_L3_UKERNEL_H
