// Level-2 algorithms over the column primitives of level2_core.h, written
// once for the four precisions and for the three storage schemes of
// triangular, symmetric and Hermitian matrices: full (with a leading
// dimension), band and packed. Full storage is processed in blocks of
// columns (a triangle on the diagonal plus a rectangle for the primitives),
// band and packed storage one column at a time.
//
// Vectors arrive as a pointer to their logical element 0 and a signed
// increment (element i at v[i*inc]), so negative increments need no special
// code here.
#ifndef NXL_BLAS_LEVEL2_ALGOS_H
#define NXL_BLAS_LEVEL2_ALGOS_H

#include "blas/kernels/level2_strips.h"

// A loop hint that the vectorizer cannot follow (complex elements) is no error.
#pragma clang diagnostic ignored "-Wpass-failed"

namespace nxl {
inline namespace NXL_CP_NS {
namespace l2 {

inline char upc(const char *c) { return (*c >= 'a' && *c <= 'z') ? char(*c - 32) : *c; }

// Block width of the blocked full-storage algorithms.
inline constexpr idx kNB = 64;
// Columns per chunk of the gemv scale buffer.
inline constexpr idx kCB = 256;
// Columns per group of the band algorithms on ragged columns.
inline constexpr idx kBG = 8;
// Elements of T in one vector of the code path.
template <class T>
constexpr idx block_rows() {
  return idx(lanes<real_t<T>>::VL / (is_complex_v<T> ? 2 : 1));
}

// The stored part of column j of a triangle: rows [r0, r1), p points at row r0.
// Upper triangles end with the diagonal (row r1 - 1 = j), lower ones start
// with it (row r0 = j).
template <class P>
struct Seg {
  P p;
  idx r0, r1;
};

template <class P>
struct FullSt {
  static constexpr idx group = 8;
  P a;
  idx lda;
  bool upper;
  idx n;
  Seg<P> col(idx j) const {
    return upper ? Seg<P>{a + j * lda, 0, j + 1} : Seg<P>{a + j * lda + j, j, n};
  }
};

template <class P>
struct BandSt {
  // Columns per group of the grouped algorithms: the rows that only some
  // columns of a group store grow with the group, so band groups are small.
  static constexpr idx group = 8;
  P a;
  idx lda, k;
  bool upper;
  idx n;
  Seg<P> col(idx j) const {
    if (upper) {
      idx r0 = j > k ? j - k : 0;
      return Seg<P>{a + j * lda + k - (j - r0), r0, j + 1};
    }
    idx r1 = j + k + 1 < n ? j + k + 1 : n;
    return Seg<P>{a + j * lda, j, r1};
  }
};

template <class S> struct is_band : std::false_type {};
template <class P> struct is_band<BandSt<P>> : std::true_type {};

template <class P>
struct PackSt {
  static constexpr idx group = 16;
  P ap;
  bool upper;
  idx n;
  Seg<P> col(idx j) const {
    if (upper) return Seg<P>{ap + j * (j + 1) / 2, 0, j + 1};
    return Seg<P>{ap + j * n - j * (j - 1) / 2, j, n};
  }
};

// ---------------------------------------------------------------------------
// General matrices.

// Common start of gemv and gbmv: vectors moved to their element 0 and
// y := beta*y; false when nothing more is to be done.
template <class T>
bool general_start(bool notrans, idx m, idx n, T alpha, const T *&x, idx incx, T beta, T *&y,
                   idx incy) {
  if (m <= 0 || n <= 0) return false;
  const idx lenx = notrans ? n : m, leny = notrans ? m : n;
  x += vec_start(lenx, incx);
  y += vec_start(leny, incy);
  scale_vec(leny, beta, y, incy);
  return !is_zero(alpha);
}

template <class T>
void gemv_run(char tr, idx m, idx n, T alpha, const T *a, idx lda, const T *x, idx incx,
              T beta, T *y, idx incy) {
  const bool notrans = tr == 'N';
  if (!general_start(notrans, m, n, alpha, x, incx, beta, y, incy)) return;
  T buf[kCB];
  for (idx j0 = 0; j0 < n; j0 += kCB) {
    const idx nb = n - j0 < kCB ? n - j0 : kCB;
    if (notrans) {
      for (idx k = 0; k < nb; ++k) buf[k] = mul(alpha, x[(j0 + k) * incx]);
      axpy_cols(m, nb, a + j0 * lda, lda, buf, y, incy);
    } else {
      if (tr == 'C') dot_cols<T, true>(m, nb, a + j0 * lda, lda, x, incx, buf);
      else dot_cols<T, false>(m, nb, a + j0 * lda, lda, x, incx, buf);
      for (idx k = 0; k < nb; ++k) y[(j0 + k) * incy] = y[(j0 + k) * incy] + mul(alpha, buf[k]);
    }
  }
}

// Band matrix with kl sub- and ku super-diagonals; A(i,j) at a[ku + i - j + j*lda].
// ku may be negative or kl larger than m: sub-problems of a split band do that.
template <class T>
void gbmv_run(char tr, idx m, idx n, idx kl, idx ku, T alpha, const T *a, idx lda,
              const T *x, idx incx, T beta, T *y, idx incy) {
  const bool notrans = tr == 'N';
  if (!general_start(notrans, m, n, alpha, x, incx, beta, y, incy)) return;
  if (notrans && incx == 1 && incy == 1 &&
      band_strips(0, m, n, kl, ku, a, lda, ku, x, BandOut<T>{y, y, alpha, true}))
    return;
  if (!is_complex_v<T> && notrans && incx == 1 && incy == 1) {
    // Bands too wide for the strips' registers: blocks of rows, each summed
    // in registers over the columns of the band (real types: a complex block
    // holds too few rows to pay).
    constexpr idx VB = block_rows<T>();
    T acc[VB];
    for (idx b = 0; b < m; b += VB) {
      const idx e = b + VB < m ? b + VB : m;
      band_block(b, e, n, kl, ku, a, lda, ku, x, acc);
      for (idx r = b; r < e; ++r) y[r] = y[r] + mul(alpha, acc[r - b]);
    }
    return;
  }
  if (incx == 1 && incy == 1) {
    // Groups of kBG columns as ragged columns.
    T t[kBG], out[kBG];
    idx lo[kBG], hi[kBG];
    const T *p[kBG];
    for (idx j0 = 0; j0 < n; j0 += kBG) {
      const idx g = n - j0 < kBG ? n - j0 : kBG;
      for (idx c = 0; c < g; ++c) {
        const idx j = j0 + c;
        const idx r0 = j - ku > 0 ? j - ku : 0, r1 = j + kl + 1 < m ? j + kl + 1 : m;
        lo[c] = r0 < m ? r0 : m;
        hi[c] = r1 > lo[c] ? r1 : lo[c];
        p[c] = a + j * lda + (ku + lo[c] - j);
        if (notrans) t[c] = mul(alpha, x[j]);
      }
      if (notrans) {
        ragged_cols<T, false, true, false>(g, lo, hi, p, t, y, nullptr, nullptr);
      } else {
        if (tr == 'C') ragged_cols<T, true, false, true>(g, lo, hi, p, nullptr, nullptr, x, out);
        else ragged_cols<T, false, false, true>(g, lo, hi, p, nullptr, nullptr, x, out);
        for (idx c = 0; c < g; ++c) y[j0 + c] = y[j0 + c] + mul(alpha, out[c]);
      }
    }
    return;
  }
  for (idx j = 0; j < n; ++j) {
    idx r0 = j - ku > 0 ? j - ku : 0;
    idx r1 = j + kl + 1 < m ? j + kl + 1 : m;
    if (r1 <= r0) continue;
    const T *seg = a + j * lda + (ku + r0 - j);
    if (notrans) {
      T t = mul(alpha, x[j * incx]);
      axpy_cols(r1 - r0, 1, seg, lda, &t, y + r0 * incy, incy);
    } else {
      T acc;
      if (tr == 'C') dot_cols<T, true>(r1 - r0, 1, seg, lda, x + r0 * incx, incx, &acc);
      else dot_cols<T, false>(r1 - r0, 1, seg, lda, x + r0 * incx, incx, &acc);
      y[j * incy] = y[j * incy] + mul(alpha, acc);
    }
  }
}

// ---------------------------------------------------------------------------
// Symmetric (Herm = false) and Hermitian (Herm = true) products y += alpha*A*x.

// Columns [j0, j0 + g) of a triangle taken together. The rows that every
// column of the group stores, outside the group's own rows, form a
// rectangle [lo, hi) that the column primitives sweep once for the whole
// group. What remains of each column is its diagonal, its rows inside the
// group (the group's triangle) and, for band storage, the few rows that only
// some columns of the group store (outside(c)); those go element by element.
template <class T, class S>
struct Group {
  static constexpr idx kG = S::group;
  const S &st;
  idx j0, g, lo, hi;
  Seg<const T *> seg[kG];
  const T *rect[kG];
  Group(const S &s, idx first, idx count) : st(s), j0(first), g(count) {
    for (idx c = 0; c < g; ++c) seg[c] = st.col(j0 + c);
    if (st.upper) {
      lo = seg[g - 1].r0 < j0 ? seg[g - 1].r0 : j0;
      hi = j0;
    } else {
      lo = j0 + g;
      hi = seg[0].r1 > lo ? seg[0].r1 : lo;
    }
    for (idx c = 0; c < g; ++c) rect[c] = seg[c].p + (lo - seg[c].r0);
  }
  T at(idx i, idx c) const { return seg[c].p[i - seg[c].r0]; }
  T diag(idx c) const { return at(j0 + c, c); }
  // Rows of column c outside the rectangle and outside the group.
  idx out_lo(idx c) const { return st.upper ? seg[c].r0 : hi; }
  idx out_hi(idx c) const { return st.upper ? lo : seg[c].r1; }
  // Rows of column c inside the group, diagonal excluded.
  idx in_lo(idx c) const { return st.upper ? (seg[c].r0 > j0 ? seg[c].r0 : j0) : j0 + c + 1; }
  idx in_hi(idx c) const { return st.upper ? j0 + c : (seg[c].r1 < j0 + g ? seg[c].r1 : j0 + g); }
};

// y[i] += A(i, c) t over rows [r0, r1) of column c of the group.
template <class T, class G>
inline void seg_axpy(const G &gr, idx c, idx r0, idx r1, T t, T *y, idx incy) {
  for (idx i = r0; i < r1; ++i) y[i * incy] = y[i * incy] + mul(gr.at(i, c), t);
}

// Sum of op(A(i, c)) x[i] over rows [r0, r1) of column c of the group.
template <class T, bool Conj, class G>
inline T seg_dot(const G &gr, idx c, idx r0, idx r1, const T *x, idx incx) {
  T s = T(0);
  for (idx i = r0; i < r1; ++i) s = s + mul(opc<Conj>(gr.at(i, c)), x[i * incx]);
  return s;
}

// Columns [c0, c1) (c0 a multiple of the group) contribute to y.
template <class T, bool Herm, class S>
void symv_cols(idx c0, idx c1, T alpha, const S &st, const T *x, idx incx, T *y, idx incy) {
  constexpr idx kG = S::group;
  T t[kG], out[kG];
  for (idx j0 = c0; j0 < c1; j0 += kG) {
    const idx g = c1 - j0 < kG ? c1 - j0 : kG;
    Group<T, S> gr(st, j0, g);
    for (idx c = 0; c < g; ++c) t[c] = mul(alpha, x[(j0 + c) * incx]);
    fused_cols_p<T, Herm>(gr.hi - gr.lo, g, gr.rect, t, y + gr.lo * incy, incy, x + gr.lo * incx,
                          incx, out);
    for (idx c = 0; c < g; ++c) {
      T acc = out[c];
      for (int part = 0; part < 2; ++part) {
        const idx r0 = part ? gr.in_lo(c) : gr.out_lo(c), r1 = part ? gr.in_hi(c) : gr.out_hi(c);
        seg_axpy(gr, c, r0, r1, t[c], y, incy);
        acc = acc + seg_dot<T, Herm>(gr, c, r0, r1, x, incx);
      }
      T d = gr.diag(c);
      if constexpr (Herm) d = T(re(d));
      const idx j = j0 + c;
      y[j * incy] = y[j * incy] + (mul(t[c], d) + mul(alpha, acc));
    }
  }
}

// Band storage with unit-stride vectors: lower triangles by column strips
// (sym_band_strips) as far as their window allows; the other columns' off-
// diagonal rows (contiguous on either side of the diagonal) as ragged
// columns, kBG at a time, in one fused pass that updates y and forms the
// dot products.
template <class T, bool Herm>
void symv_band(idx c0, idx c1, T alpha, const BandSt<const T *> &st, const T *x, T *y) {
  if (!st.upper) c0 = sym_band_strips<T, Herm>(c0, c1, st.n, st.k, alpha, st.a, st.lda, x, y);
  T t[kBG], out[kBG];
  idx lo[kBG], hi[kBG];
  const T *p[kBG], *d[kBG];
  for (idx j0 = c0; j0 < c1; j0 += kBG) {
    const idx g = c1 - j0 < kBG ? c1 - j0 : kBG;
    for (idx c = 0; c < g; ++c) {
      const idx j = j0 + c;
      const Seg<const T *> s = st.col(j);
      t[c] = mul(alpha, x[j]);
      lo[c] = st.upper ? s.r0 : j + 1;
      hi[c] = st.upper ? j : s.r1;
      p[c] = st.upper ? s.p : s.p + 1;
      d[c] = s.p + (j - s.r0);
    }
    ragged_cols<T, Herm, true, true>(g, lo, hi, p, t, y, x, out);
    for (idx c = 0; c < g; ++c) {
      T dv = *d[c];
      if constexpr (Herm) dv = T(re(dv));
      y[j0 + c] = y[j0 + c] + (mul(t[c], dv) + mul(alpha, out[c]));
    }
  }
}

// y += alpha * S x for the triangle of nb <= kNB columns at a (full
// storage) on the diagonal: S symmetric (Hermitian) with that triangle,
// t[j] = alpha * x[j] given. Groups of G columns (eight real, four
// complex: the registers of one pass) run their stored rows above (upper)
// or below (lower) the diagonal in one pass each (tri_fused), then the
// diagonal.
// Strided vectors go through contiguous copies, so every element gets the
// same operations whatever the increments.
template <class T, bool Herm>
void symv_diag(bool upper, idx nb, T alpha, const T *a, idx lda, const T *t, const T *x, idx incx,
               T *y, idx incy) {
  constexpr int G = is_complex_v<T> ? 4 : 8;
  T xb[kNB], yb[kNB], dots[kNB + G];
  const T *xs = x;
  T *ys = y;
  if (incx != 1) {
    for (idx i = 0; i < nb; ++i) xb[i] = x[i * incx];
    xs = xb;
  }
  if (incy != 1) {
    for (idx i = 0; i < nb; ++i) yb[i] = y[i * incy];
    ys = yb;
  }
  for (idx j0 = 0; j0 < nb; j0 += G)
    tri_fused<T, G, Herm>(upper, j0, nb, a, lda, t + j0, ys, xs, dots + j0);
  // The diagonal and the dot products last: a scalar store into y between
  // two groups would stall the next group's vector load of the same lines.
  for (idx j = 0; j < nb; ++j) {
    T d = a[j + j * lda];
    if constexpr (Herm) d = T(re(d));
    ys[j] = ys[j] + (mul(t[j], d) + mul(alpha, dots[j]));
  }
  if (incy != 1)
    for (idx i = 0; i < nb; ++i) y[i * incy] = yb[i];
}

// The contribution of the stored columns [c0, c1) (c0 a multiple of kNB) of
// a full-storage matrix, kNB at a time: the triangle on the diagonal
// (symv_diag), and the rectangle beside it in one fused pass.
template <class T, bool Herm>
void symv_full(bool upper, idx n, idx c0, idx c1, T alpha, const T *a, idx lda, const T *x,
               idx incx, T *y, idx incy) {
  T t[kNB], out[kNB];
  for (idx j0 = c0; j0 < c1; j0 += kNB) {
    const idx nb = c1 - j0 < kNB ? c1 - j0 : kNB, j1 = j0 + nb;
    for (idx k = 0; k < nb; ++k) t[k] = mul(alpha, x[(j0 + k) * incx]);
    const idx rows = upper ? j0 : n - j1;  // of the rectangle
    if (upper && rows > 0) fused_cols<T, Herm>(rows, nb, a + j0 * lda, lda, t, y, incy, x, incx, out);
    symv_diag<T, Herm>(upper, nb, alpha, a + j0 + j0 * lda, lda, t, x + j0 * incx, incx, y + j0 * incy, incy);
    if (!upper && rows > 0)
      fused_cols<T, Herm>(rows, nb, a + j1 + j0 * lda, lda, t, y + j1 * incy, incy, x + j1 * incx, incx, out);
    if (rows > 0)
      for (idx k = 0; k < nb; ++k) y[(j0 + k) * incy] = y[(j0 + k) * incy] + mul(alpha, out[k]);
  }
}

// ---------------------------------------------------------------------------
// Triangular products x := op(A) x and solves op(A) x = b.

// The own triangle of a whole group (not band) with no transposition, its
// rows held in locals so that each row's chain of additions stays in
// registers instead of going through memory column by column. Every row
// gets the same operations in the same order as by columns: a product
// scales a row by its diagonal and then adds the columns after it (upper)
// or before it (lower), in the order fwd gives; a solve divides the
// column's element and subtracts its multiples from the rows still to go.
template <class T, bool Solve, class G>
inline void own_rows(const G &gr, bool upper, bool unit, bool fwd, T *x, idx incx) {
  constexpr idx kG = G::kG;
  T y[kG], xo[kG];
#pragma clang loop unroll(full)
  for (idx r = 0; r < kG; ++r) xo[r] = y[r] = x[(gr.j0 + r) * incx];
  if constexpr (!Solve)
    if (!unit)
#pragma clang loop unroll(full)
      for (idx r = 0; r < kG; ++r) y[r] = mul(gr.diag(r), xo[r]);
#pragma clang loop unroll(full)
  for (idx s = 0; s < kG; ++s) {
    const idx c = fwd ? s : kG - 1 - s;
    T t = xo[c];
    if constexpr (Solve) {
      if (!unit) y[c] = div(y[c], gr.diag(c));
      t = -y[c];
    }
#pragma clang loop unroll(full)
    for (idx r = 0; r < kG; ++r)
      if (upper ? r < c : r > c) y[r] = y[r] + mul(gr.at(gr.j0 + r, c), t);
  }
#pragma clang loop unroll(full)
  for (idx r = 0; r < kG; ++r) x[(gr.j0 + r) * incx] = y[r];
}

// The own triangle of a whole group (not band) of a transposed product:
// each element is its diagonal term plus the sums outside the group (dot)
// and the dot product of its column's rows inside the group with x, all of
// whose values there are still the original ones (the columns go in the
// order that changes them last). Those values are held in locals, and each
// in-group sum adds its rows in ascending order, as by columns.
template <class T, bool Conj, class G>
inline void own_dots(const G &gr, bool upper, bool unit, const T *dot, T *x, idx incx) {
  constexpr idx kG = G::kG;
  T xo[kG];
#pragma clang loop unroll(full)
  for (idx r = 0; r < kG; ++r) xo[r] = x[(gr.j0 + r) * incx];
#pragma clang loop unroll(full)
  for (idx c = 0; c < kG; ++c) {
    T in = T(0);
#pragma clang loop unroll(full)
    for (idx r = 0; r < kG; ++r)
      if (upper ? r < c : r > c) in = in + mul(opc<Conj>(gr.at(gr.j0 + r, c)), xo[r]);
    const T v = unit ? xo[c] : mul(opc<Conj>(gr.diag(c)), xo[c]);
    x[(gr.j0 + c) * incx] = v + (dot[c] + in);
  }
}

// The own triangle of a whole group (not band) of a transposed solve, the
// sums outside the group in dot: each solved element adds its terms to the
// sums of the group's columns still to be solved (after it when upper,
// before it when lower, the order of the solve), all held in locals, so
// that the chain from one element to the next is a multiply-add, a
// subtraction and a division, not a round trip through memory.
template <class T, bool Conj, bool Upper, class G>
inline void own_solve_trans(const G &gr, bool unit, const T *dot, T *x, idx incx) {
  constexpr idx kG = G::kG;
  T t[kG];
#pragma clang loop unroll(full)
  for (idx r = 0; r < kG; ++r) t[r] = T(0);
#pragma clang loop unroll(full)
  for (idx s = 0; s < kG; ++s) {
    const idx c = Upper ? s : kG - 1 - s;
    T &xj = x[(gr.j0 + c) * incx];
    const T v = xj - (dot[c] + t[c]);
    const T xv = unit ? v : div(v, opc<Conj>(gr.diag(c)));
    xj = xv;
#pragma clang loop unroll(full)
    for (idx c2 = 0; c2 < kG; ++c2)
      if (Upper ? c2 > c : c2 < c) t[c2] = t[c2] + mul(opc<Conj>(gr.at(gr.j0 + c, c2)), xv);
  }
}

// Triangular product (Solve = false) or solve in groups of kG columns, in
// the order that leaves every element of x read before it is overwritten:
// the rectangle and the rows outside the group with the values of x[group]
// they need (before a product changes them, after a solve has found them),
// the group's own triangle (whole groups in registers, others by columns).
//
// A product may be restricted to the elements [p0, p1) of its result (p0
// and p1 multiples of kG, or n): xc then holds the original x (same
// increment), the values read outside the group come from it, and only
// x[p0, p1) is written. Every element is computed by the same operations in
// the same order as in the whole product (xc = x, p0 = 0, p1 = n), so a
// product split among threads has the bits of the product on one thread.
template <class T, bool Conj, bool Solve, class S>
void tr_groups(bool trans, bool unit, idx n, const S &st, T *x, idx incx, const T *xc, idx p0,
               idx p1) {
  const bool upper = st.upper;
  const bool ascending = Solve ? (upper == trans) : (upper != trans);
  constexpr idx kG = S::group;
  const idx ng = (n + kG - 1) / kG;
  T t[kG], dot[kG];
  for (idx gi = 0; gi < ng; ++gi) {
    const idx j0 = (ascending ? gi : ng - 1 - gi) * kG, g = n - j0 < kG ? n - j0 : kG;
    const bool own = j0 >= p0 && j0 < p1;
    // A transposed product writes the group's own elements only; the
    // rectangle of a product A x writes rows [p0, p1) only.
    if (!own && (trans || Solve)) continue;
    Group<T, S> gr(st, j0, g);
    const idx rlo = gr.lo > p0 ? gr.lo : p0, rhi = gr.hi < p1 ? gr.hi : p1;
    if (!own && rhi <= rlo && !is_band<S>::value) continue;
    const T *xr = xc + gr.lo * incx;
    const idx rm = gr.hi - gr.lo;
    // Columns of the group's triangle in the order the column algorithm
    // takes them (forward when the group's own rows come first).
    const bool fwd = ascending;
    const bool whole = g == kG && !is_band<S>::value;
    auto own_cols = [&](auto step) {
      for (idx s = 0; s < g; ++s) step(fwd ? s : g - 1 - s);
    };
    // Band storage, unit stride: the rows of each column outside the group
    // as ragged columns (the rectangle and the corner together).
    idx olo[kG], ohi[kG];
    const T *op[kG];
    const bool ragged = is_band<S>::value && incx == 1;
    if (ragged)
      for (idx c = 0; c < g; ++c) {
        const Seg<const T *> &s = gr.seg[c];
        olo[c] = upper ? s.r0 : j0 + g;
        ohi[c] = upper ? (j0 > s.r0 ? j0 : s.r0) : (s.r1 > olo[c] ? s.r1 : olo[c]);
        if (!trans) {
          // Rows written by this part only.
          olo[c] = olo[c] > p0 ? olo[c] : p0;
          ohi[c] = ohi[c] < p1 ? ohi[c] : p1;
          ohi[c] = ohi[c] > olo[c] ? ohi[c] : olo[c];
        }
        op[c] = s.p + (olo[c] - s.r0);
      }
    auto outer_axpy = [&] {
      if (ragged) {
        ragged_cols<T, false, true, false>(g, olo, ohi, op, t, x, nullptr, nullptr);
        return;
      }
      if (rhi > rlo) {
        const T *rp[kG];
        for (idx c = 0; c < g; ++c) rp[c] = gr.rect[c] + (rlo - gr.lo);
        axpy_cols_p(rhi - rlo, g, rp, t, x + rlo * incx, incx);
      }
      for (idx c = 0; c < g; ++c) {
        const idx lo = gr.out_lo(c) > p0 ? gr.out_lo(c) : p0;
        const idx hi = gr.out_hi(c) < p1 ? gr.out_hi(c) : p1;
        seg_axpy(gr, c, lo, hi, t[c], x, incx);
      }
    };
    auto outer_dot = [&] {
      if (ragged) {
        ragged_cols<T, Conj, false, true>(g, olo, ohi, op, nullptr, nullptr, xc, dot);
        return;
      }
      dot_cols_p<T, Conj>(rm, g, gr.rect, xr, incx, dot);
      for (idx c = 0; c < g; ++c)
        dot[c] = dot[c] + seg_dot<T, Conj>(gr, c, gr.out_lo(c), gr.out_hi(c), xc, incx);
    };
    if (!trans) {
      if constexpr (Solve) {
        if (whole) own_rows<T, true>(gr, upper, unit, fwd, x, incx);
        else own_cols([&](idx c) {
          T &xj = x[(j0 + c) * incx];
          if (!unit) xj = div(xj, gr.diag(c));
          seg_axpy(gr, c, gr.in_lo(c), gr.in_hi(c), T(-xj), x, incx);
        });
        for (idx c = 0; c < g; ++c) t[c] = -x[(j0 + c) * incx];
        outer_axpy();
      } else {
        for (idx c = 0; c < g; ++c) t[c] = xc[(j0 + c) * incx];
        outer_axpy();
        if (own && whole) own_rows<T, false>(gr, upper, unit, fwd, x, incx);
        else if (own) own_cols([&](idx c) {
          T &xj = x[(j0 + c) * incx];
          seg_axpy(gr, c, gr.in_lo(c), gr.in_hi(c), xj, x, incx);
          if (!unit) xj = mul(gr.diag(c), xj);
        });
      }
    } else if constexpr (Solve) {
      // Each solved element adds its terms to the sums of the group's
      // columns still to be solved at once, so that the chain from one
      // element to the next is a subtraction and a division, not a dot
      // product over the group's rows.
      outer_dot();
      if (whole) {
        if (upper) own_solve_trans<T, Conj, true>(gr, unit, dot, x, incx);
        else own_solve_trans<T, Conj, false>(gr, unit, dot, x, incx);
        continue;
      }
      for (idx c = 0; c < g; ++c) t[c] = T(0);
      own_cols([&](idx c) {
        T &xj = x[(j0 + c) * incx];
        const T v = xj - (dot[c] + t[c]);
        xj = unit ? v : div(v, opc<Conj>(gr.diag(c)));
        // Columns after c (upper) or before it (lower) hold row i in the
        // group; a band column may not reach it.
        const idx i = j0 + c, lo2 = upper ? c + 1 : 0, hi2 = upper ? g : c;
        for (idx c2 = lo2; c2 < hi2; ++c2)
          if (!is_band<S>::value || (i >= gr.in_lo(c2) && i < gr.in_hi(c2)))
            t[c2] = t[c2] + mul(opc<Conj>(gr.at(i, c2)), xj);
      });
    } else {
      outer_dot();
      if (whole) own_dots<T, Conj>(gr, upper, unit, dot, x, incx);
      else own_cols([&](idx c) {
        T &xj = x[(j0 + c) * incx];
        const T in = seg_dot<T, Conj>(gr, c, gr.in_lo(c), gr.in_hi(c), x, incx);
        const T v = unit ? xj : mul(opc<Conj>(gr.diag(c)), xj);
        xj = v + (dot[c] + in);
      });
    }
  }
}

// Band triangular product x := A x, unit stride: blocks of rows, each summed
// in registers over its band columns from the values of x that no earlier
// block has overwritten (upper: ascending blocks, lower: descending); xc
// holds those values (xc = x, or a copy of the original x), and only rows
// [p0, p1) (multiples of the block, or n) are computed.
template <class T>
void tbmv_rows(bool upper, bool unit, idx n, idx k, const T *a, idx lda, T *x, const T *xc,
               idx p0, idx p1) {
  constexpr idx VB = block_rows<T>();
  const idx kl = upper ? (unit ? -1 : 0) : k, ku = upper ? k : (unit ? -1 : 0);
  const idx off = upper ? k : 0;
  // Column strips write each row after the strip of its last column, which
  // has read every x[j] up to the row itself: in place, only a unit lower
  // triangle (rows end one column before their own) would be overwritten
  // before it is read.
  if ((xc != x || upper || !unit) &&
      band_strips(p0, p1, n, kl, ku, a, lda, off, xc, BandOut<T>{x, unit ? xc : nullptr, T(1), false}))
    return;
  const idx b0 = p0 / VB, b1 = (p1 + VB - 1) / VB;
  T acc[VB];
  for (idx bi = b0; bi < b1; ++bi) {
    const idx b = (upper ? bi : b1 - 1 - (bi - b0)) * VB, e = b + VB < n ? b + VB : n;
    band_block(b, e, n, kl, ku, a, lda, off, xc, acc);
    for (idx r = b; r < e; ++r) x[r] = unit ? acc[r - b] + xc[r] : acc[r - b];
  }
}

// Band triangular solve A x = b, unit stride: column strips (see
// band_solve_strips) when their window fits the registers; otherwise blocks
// of rows of one vector, from the last block down (upper) or the first up
// (lower). A block's sums
// over the columns beside it, all solved already, come from band_block in
// registers; its own triangle is then solved by substitution, column by
// column, on the block's right-hand sides held in a small array.
template <class T>
void tbsv_rows(bool upper, bool unit, idx n, idx k, const T *a, idx lda, T *x) {
  constexpr idx VB = block_rows<T>();
  if (band_solve_strips(upper, unit, n, k, a, lda, x)) return;
  const idx kl = upper ? 0 : k, ku = upper ? k : 0, off = upper ? k : 0;
  const idx nb = (n + VB - 1) / VB;
  T acc[VB], v[VB];
  for (idx bi = 0; bi < nb; ++bi) {
    const idx b = (upper ? nb - 1 - bi : bi) * VB, e = b + VB < n ? b + VB : n;
    band_block(b, e, n, kl, ku, a, lda, off, x, acc, upper ? e : 0, upper ? n : b);
    for (idx r = b; r < e; ++r) v[r - b] = x[r] - acc[r - b];
    band_substitute(upper, unit, k, a, lda, off, x, v, b, b, e);
  }
}

// Band triangular product or solve with op(A) = A^T or A^H, unit stride:
// column j of A gives element j of the result as one dot product over its
// off-diagonal rows, taken in the order in which those rows of x hold what
// the step needs (product: not yet overwritten; solve: already solved), so
// no group bookkeeping is needed.
// A product may be restricted to the columns [p0, p1), the other rows of x
// read from the copy xc of the original.
template <class T, bool Conj, bool Solve>
void tb_trans_cols(bool upper, bool unit, idx n, const BandSt<const T *> &st, T *x, const T *xc,
                   idx p0, idx p1) {
  // Product: upper columns descending, lower ascending; solve: the reverse.
  const bool ascending = Solve ? upper : !upper;
  auto cols = [&](idx lo, idx hi) {
    for (idx s = lo; s < hi; ++s) {
      const idx j = ascending ? s : hi - 1 - (s - lo);
      const Seg<const T *> c = st.col(j);
      const idx rlo = upper ? c.r0 : j + 1, rhi = upper ? j : c.r1;
      const T d = opc<Conj>(c.p[j - c.r0]);
      T &xj = x[j];
      if constexpr (Solve) {
        // The rows solved in the last kNear steps are summed apart, one by
        // one with the latest last: the step's chain then waits on one
        // product of the previous step's result, and the vector sums over
        // the rows solved before read none of the stores still in flight.
        // Above the diagonal the vector sums end on whole vectors, whose
        // last one would otherwise reach into those rows.
        constexpr idx kNear = 8, VE = lanes<real_t<T>>::VL / (is_complex_v<T> ? 2 : 1);
        const idx f0 = upper ? rlo : (rhi - j - 1 > kNear ? j + 1 + kNear : rhi),
                  f1 = upper ? (j - rlo > kNear ? rlo + (j - kNear - rlo) / VE * VE : rlo) : rhi;
        T dot = ragged_col<T, Conj, false, true>(f0, f1, c.p + (f0 - c.r0), T(0), nullptr, xc);
        if (upper)
          for (idx i = f1; i < j; ++i) dot += mul(opc<Conj>(c.p[i - c.r0]), xc[i]);
        else
          for (idx i = f0 - 1; i > j; --i) dot += mul(opc<Conj>(c.p[i - c.r0]), xc[i]);
        const T v = xj - dot;
        xj = unit ? v : div(v, d);
      } else {
        const T dot = ragged_col<T, Conj, false, true>(rlo, rhi, upper ? c.p : c.p + 1, T(0), nullptr, xc);
        xj = (unit ? xj : mul(d, xj)) + dot;
      }
    }
  };
  // A product's middle columns by strips, the others (within a vector of
  // the ends, or whose window would leave the matrix) one by one before
  // and after them in the same order.
  idx q0 = p0, q1 = p0;
  if constexpr (!Solve) band_trans_range<T>(upper, n, st.k, p0, p1, q0, q1);
  if (q1 <= q0) {
    cols(p0, p1);
    return;
  }
  cols(ascending ? p0 : q1, ascending ? q0 : p1);
  band_trans_strips<T, Conj>(upper, unit, st.k, st.a, st.lda, x, xc, q0, q1);
  cols(ascending ? q1 : p0, ascending ? p1 : q0);
}

template <class T, bool Conj, class S>
void trmv_cols(bool trans, bool unit, idx n, const S &st, T *x, idx incx) {
  tr_groups<T, Conj, false>(trans, unit, n, st, x, incx, x, 0, n);
}

template <class T, bool Conj, class S>
void trsv_cols(bool trans, bool unit, idx n, const S &st, T *x, idx incx) {
  tr_groups<T, Conj, true>(trans, unit, n, st, x, incx, x, 0, n);
}

// Blocked full-storage triangular product (Solve = false) or solve
// (Solve = true): a triangle of kNB columns on the diagonal with the column
// algorithm, the rectangle beside it with the column primitives, in the order
// that leaves every element of x read before it is overwritten. A product
// may be restricted to the elements [p0, p1) (multiples of kNB, or n), as
// tr_groups: the values of x outside the diagonal block from xc.
template <class T, bool Conj, bool Solve>
void tr_full(bool upper, bool trans, bool unit, idx n, const T *a, idx lda, T *x, idx incx,
             const T *xc, idx p0, idx p1) {
  const idx nblk = (n + kNB - 1) / kNB;
  T buf[kNB];
  auto diag = [&](idx j0, idx nb) {
    FullSt<const T *> blk{a + j0 + j0 * lda, lda, upper, nb};
    if constexpr (Solve) trsv_cols<T, Conj>(trans, unit, nb, blk, x + j0 * incx, incx);
    else trmv_cols<T, Conj>(trans, unit, nb, blk, x + j0 * incx, incx);
  };
  // Forward (ascending blocks) or backward, per case.
  const bool ascending = Solve ? (upper == trans) : (upper != trans);
  for (idx bi = 0; bi < nblk; ++bi) {
    const idx b = ascending ? bi : nblk - 1 - bi;
    const idx j0 = b * kNB, nb = n - j0 < kNB ? n - j0 : kNB, j1 = j0 + nb;
    const bool own = j0 >= p0 && j0 < p1;
    // Rectangle: rows [0, j0) for upper, [j1, n) for lower.
    idx r0 = upper ? 0 : j1, r1 = upper ? j0 : n;
    if (!trans) {
      // A product A x writes rows [p0, p1) only.
      r0 = r0 > p0 ? r0 : p0;
      r1 = r1 < p1 ? r1 : p1;
      if (r1 < r0) r1 = r0;
    } else if (!own) {
      continue;
    }
    const T *rect = a + r0 + j0 * lda;
    const idx rm = r1 - r0;
    if (!trans) {
      if constexpr (Solve) diag(j0, nb);
      for (idx k = 0; k < nb; ++k) buf[k] = Solve ? -x[(j0 + k) * incx] : xc[(j0 + k) * incx];
      axpy_cols(rm, nb, rect, lda, buf, x + r0 * incx, incx);
      if constexpr (!Solve) if (own) diag(j0, nb);
    } else {
      dot_cols<T, Conj>(rm, nb, rect, lda, xc + r0 * incx, incx, buf);
      if constexpr (Solve) {
        for (idx k = 0; k < nb; ++k) x[(j0 + k) * incx] = x[(j0 + k) * incx] - buf[k];
        diag(j0, nb);
      } else {
        diag(j0, nb);
        for (idx k = 0; k < nb; ++k) x[(j0 + k) * incx] = x[(j0 + k) * incx] + buf[k];
      }
    }
  }
}

// ---------------------------------------------------------------------------
// Rank-1 and rank-2 updates of the columns [c0, c1) of a triangle (full or
// packed storage); columns are independent of each other.

// Columns are taken in groups of kRG: the rows that every column of a group
// stores outside the group's own rows form a rectangle, updated by the
// column-group primitive with x (and y) loaded once per group; each column's
// rows inside the group (on vectors where x and y are contiguous) and its
// diagonal follow. Groups start at multiples of kRG (thread parts start at
// multiples of 64), so an element gets the same bits whatever the split.
inline constexpr idx kRG = 32;
// Columns of a sub-group inside a group: a cache line's worth of rows.
template <class T> inline constexpr idx kRS = 64 / idx(sizeof(T));

template <class T, bool Herm, bool Two, class S>
void rank_update(idx c0, idx c1, T alpha, const T *x, idx incx, const T *y, idx incy,
                 const S &st) {
  const bool unit = incx == 1 && (!Two || incy == 1);
  const idx n = st.n;
  T t[kRG], u[kRG];
  T *rect[kRG];
  for (idx j0 = c0; j0 < c1;) {
    const idx jend = (j0 / kRG + 1) * kRG < c1 ? (j0 / kRG + 1) * kRG : c1;
    const idx g = jend - j0;
    for (idx c = 0; c < g; ++c) {
      const T xj = x[(j0 + c) * incx];
      if constexpr (Two) {
        t[c] = mul(alpha, opc<Herm>(y[(j0 + c) * incy]));
        u[c] = opc<Herm>(mul(alpha, xj));
      } else {
        t[c] = mul(alpha, opc<Herm>(xj));
        u[c] = T(0);
      }
    }
    const idx lo = st.upper ? 0 : jend, hi = st.upper ? j0 : n;
    for (idx c = 0; c < g; ++c) {
      Seg<T *> s = st.col(j0 + c);
      rect[c] = s.p + (lo - s.r0);
    }
    if (hi > lo) {
      if (unit) {
        rank_cols<T, Two>(hi - lo, g, rect, x + lo, t, Two ? y + lo : y, u);
      } else {
        for (idx c = 0; c < g; ++c)
          rank_col_strided<T, Two>(hi - lo, rect[c], x + lo * incx, incx, t[c],
                                   Two ? y + lo * incy : y, incy, u[c]);
      }
    }
    // The group's own triangle. Complex: by sub-groups of kRS columns, the
    // rows of the group outside a sub-group's rows being a rectangle for the
    // column-group primitive (contiguous x and y only), since element by
    // element a complex update costs several times a vector lane's. Each
    // column's rows inside its sub-group and its diagonal follow. (Real
    // columns measured slower so: their in-group rows run on vectors or
    // are cheap one by one.)
    const idx rs = unit && is_complex_v<T> ? kRS<T> : g;
    for (idx s0 = j0; s0 < jend; s0 += rs) {
      const idx s1 = jend - s0 < rs ? jend : s0 + rs;
      if (unit) {
        const idx q0 = st.upper ? j0 : s1, q1 = st.upper ? s0 : jend;
        if (q1 > q0) {
          for (idx j = s0; j < s1; ++j) {
            Seg<T *> s = st.col(j);
            rect[j - s0] = s.p + (q0 - s.r0);
          }
          rank_cols<T, Two>(q1 - q0, s1 - s0, rect, x + q0, t + (s0 - j0), Two ? y + q0 : y, u + (s0 - j0));
        }
      }
      for (idx j = s0; j < s1; ++j) {
        const idx c = j - j0;
        Seg<T *> s = st.col(j);
        const idx r0 = st.upper ? s0 : j + 1, r1 = st.upper ? j : s1;
        auto diagonal = [&] {
          T &d = s.p[j - s.r0];
          T v = mul(x[j * incx], t[c]);
          if constexpr (Two) v = v + mul(y[j * incy], u[c]);
          if constexpr (Herm) d = T(re(d) + re(v));
          else d = d + v;
        };
        if (std::is_same_v<T, double> && unit) {
          // Vectors with a masked last one, the same operations per element.
          // Upper: the diagonal among them, since a scalar store of it just
          // before would stall the last vector's load, which covers it even
          // masked off, and a scalar load just after would wait for the
          // masked store to reach the cache. Lower: the diagonal first, the
          // vectors starting past it. (Single precision and complex measured
          // slower on vectors.)
          if (!st.upper) diagonal();
          const idx v0 = r0, v1 = st.upper ? j + 1 : r1;
          T *e = s.p + (v0 - s.r0);
          const T *xr = x + v0, *yr = Two ? y + v0 : y;
#pragma clang loop vectorize(enable) vectorize_predicate(enable) interleave_count(1)
          for (idx i = 0; i < v1 - v0; ++i) e[i] = rank_elem<T, Two>(e[i], xr[i], t[c], Two ? yr[i] : T(0), u[c]);
        } else {
          for (idx i = r0; i < r1; ++i) {
            T &e = s.p[i - s.r0];
            e = rank_elem<T, Two>(e, x[i * incx], t[c], Two ? y[i * incy] : T(0), u[c]);
          }
          diagonal();
        }
      }
    }
    j0 = jend;
  }
}

template <class T, bool Herm, class S>
void syr_cols(idx c0, idx c1, T alpha, const T *x, idx incx, const S &st) {
  rank_update<T, Herm, false>(c0, c1, alpha, x, incx, static_cast<const T *>(nullptr), 0, st);
}

template <class T, bool Herm, class S>
void syr2_cols(idx c0, idx c1, T alpha, const T *x, idx incx, const T *y, idx incy,
               const S &st) {
  rank_update<T, Herm, true>(c0, c1, alpha, x, incx, y, incy, st);
}

}  // namespace l2
}  // namespace NXL_CP_NS
}  // namespace nxl

#endif  // NXL_BLAS_LEVEL2_ALGOS_H
