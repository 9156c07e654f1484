// Small-matrix LU kernels (max(m, n) <= 16 for the factorization, n and nrhs
// <= 8 for the solve): plain loops over the columns, no BLAS calls, no
// allocation. One source, compiled once per code path.
#include "lapack/ps/lu_lanes.h"
#include "lapack/ps/lu_regs.h"
#include "lapack/ps/simd.h"
#include "lapack/ps/small.h"
#include "lapack/ps/solve_vec.h"
#include "lapack/ps/solve_regs.h"
#include "lapack/ps/solve_steps.h"

namespace nxl {
inline namespace NXL_LOCAL_NS {
namespace ps {

// Right-looking LU with partial pivoting (first row of largest magnitude) of
// the columns [j0, j1), interchanges across all n columns; an exactly zero
// pivot leaves its column unscaled and records the first one (if *info is
// still 0).
template <class T>
void getrf_right(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info, idx j0, idx j1) {
  using R = real_t<T>;
  R sfmin = safe_min<R>();
  for (idx j = j0; j < j1; ++j) {
    T *cj = a + j * lda;
    idx p = j + pivot_row(m - j, cj + j);
    ipiv[j] = p + 1;
    if (cj[p] != T(0)) {
      if (p != j)
        for (idx c = 0; c < n; ++c) {
          T t = a[j + c * lda];
          a[j + c * lda] = a[p + c * lda];
          a[p + c * lda] = t;
        }
      T piv = cj[j];
      if (abs1(piv) >= sfmin) {
        T r = inv(piv);
        NXL_PS_SHORT_LOOP
        for (idx i = j + 1; i < m; ++i) cj[i] = mul(cj[i], r);
      } else {
        NXL_PS_SHORT_LOOP
        for (idx i = j + 1; i < m; ++i) cj[i] = divide(cj[i], piv);
      }
    } else if (*info == 0) {
      *info = j + 1;
    }
    // Trailing update, two target columns per sweep over column j.
    idx c = j + 1;
    for (; c + 2 <= n; c += 2) {
      T *c0 = a + c * lda, *c1 = c0 + lda;
      T f0 = c0[j], f1 = c1[j];
      NXL_PS_SHORT_LOOP
      for (idx i = j + 1; i < m; ++i) {
        T l = cj[i];
        c0[i] -= mul(l, f0);
        c1[i] -= mul(l, f1);
      }
    }
    for (; c < n; ++c) {
      T *cc = a + c * lda;
      T f = cc[j];
      NXL_PS_SHORT_LOOP
      for (idx i = j + 1; i < m; ++i) cc[i] -= mul(cj[i], f);
    }
  }
}

// Entries move as raw bytes in one register each: a complex value copied as
// such goes through the stack.
template <class T> inline void swap_rows(T *a, idx lda, idx c0, idx c1, idx r, idx p) {
  typedef char raw __attribute__((vector_size(sizeof(T))));
  T *x = a + r + c0 * lda, *y = a + p + c0 * lda;
  for (idx c = c0; c < c1; ++c, x += lda, y += lda) {
    raw u, v;
    __builtin_memcpy(&u, x, sizeof u);
    __builtin_memcpy(&v, y, sizeof v);
    __builtin_memcpy(x, &v, sizeof v);
    __builtin_memcpy(y, &u, sizeof u);
  }
}

// X := L^{-1} X for the JB x ncols block X at u (leading dimension ld) and
// the unit lower triangle of order JB at l: each column of X is held in
// vectors (rows as lanes) and takes JB multiply-adds with the columns of L,
// masked to the rows below each one. Four columns go through the steps side
// by side, so that their chains of dependent steps overlap. Reads whole
// vectors of rows from the first row of both blocks.
template <class T, int JB> void unit_lower_solve(const T *l, idx ld, T *u, idx ncols) {
  using S = simd<T>;
  using V = typename S::V;
  constexpr int E = static_cast<int>(S::E), W = (JB + E - 1) / E;
  V lc[JB][W], lr[JB][W];
  for (int q = 0; q < JB; ++q)
    for (int w = 0; w < W; ++w) {
      const int lo = q + 1 - w * E, hi = JB - w * E;
      lc[q][w] = S::blend(S::mask(lo > 0 ? lo : 0, hi < E ? hi : E), S::load(l + q * ld + w * E), S::splat(0));
      lr[q][w] = S::rot(lc[q][w]);
    }
  auto solve = [&]<int G>(idx col) __attribute__((always_inline)) {
    V v[G][W], keep[G][W];
    for (int g = 0; g < G; ++g)
      for (int w = 0; w < W; ++w) v[g][w] = keep[g][w] = S::load(u + (col + g) * ld + w * E);
    for (int q = 0; q + 1 < JB; ++q)
      for (int g = 0; g < G; ++g) {
        T xq;
        if constexpr (S::cplx) xq = T(v[g][q / E][(q % E) * 2], v[g][q / E][(q % E) * 2 + 1]);
        else xq = v[g][q / E][q % E];
        // Masked to the rows below q: an infinite x_q must not reach the
        // rows already final through a zero of L.
        for (int w = q / E; w < W; ++w) v[g][w] = minus_product_below<T>(v[g][w], lc[q][w], lr[q][w], xq, q - w * E);
      }
    for (int g = 0; g < G; ++g)
      for (int w = 0; w < W; ++w) {
        const int lo = 1 - w * E, hi = JB - w * E;
        if (hi > 0) put(u + (col + g) * ld, w * E, w * E + (lo > 0 ? lo : 0), w * E + (hi < E ? hi : E), v[g][w], keep[g][w]);
      }
  };
  idx col = 0;
  for (; col + 4 <= ncols; col += 4) solve.template operator()<4>(col);
  for (; col < ncols; ++col) solve.template operator()<1>(col);
}

// Right-looking LU on vectors, for m >= n >= one vector of elements, blocked
// on two levels: outer panels whose trailing update is one rank-KO product,
// each factored by inner panels of KB columns (rank-KB updates inside the
// outer panel only), each of those column by column. A panel at any level:
// factor it, apply its interchanges to the columns left and right of it
// within the enclosing panel, solve for its rows of U there, and update the
// rest of the enclosing panel below them by a product that keeps the
// panel's windows in registers while the trailing columns stream through
// once. The arithmetic per element is that of the column algorithm in a
// different order of the sums.
template <class T> struct lu_blocked {
  using R = real_t<T>;
  static constexpr idx E = simd<T>::E;
  idx m;
  T *a;
  idx lda;
  idx *ipiv;
  idx *info;
  R sfmin = safe_min<R>();
  // The columns [now, n) take each row exchange as soon as its column
  // step makes it; the panels' interchanges reach the columns left of
  // `now` only.
  idx n;
  idx now;

  T *col(idx j) const { return a + j * lda; }

  // The columns [j0, j1) one by one; interchanges within them only.
  void columns(idx j0, idx j1) {
    // The pivot search of each column after the first runs in the update
    // that brings the column up to date with the one before.
    pivot_search<T> next;
    for (idx j = j0; j < j1; ++j) {
      T *cj = col(j);
      const idx p = j == j0 ? pivot_index(j, m, cj) : next.result(j, m, cj);
      next = pivot_search<T>();
      ipiv[j] = p + 1;
      // The pivot as found, not reloaded after the interchange stores it.
      const T piv = cj[p];
      if (piv != T(0)) {
        if (p != j) {
          swap_rows(a, lda, j0, j1, j, p);
          if (now <= j0) {
            swap_rows(a, lda, j1, n, j, p);
            swap_rows(a, lda, now, j0, j, p);
          }
        }
        if (abs1(piv) >= sfmin) column_scale<T>(j + 1, m, cj, inv(piv));
        else
          for (idx i = j + 1; i < m; ++i) cj[i] = divide(cj[i], piv);
      } else if (*info == 0) {
        *info = j + 1;
      }
      // The panel's later columns less the multipliers times their row j,
      // in one sweep over the column's windows.
      if (j + 1 < j1)
        rank_update<T, 1>(j + 1, m, cj + lda, lda, j1 - j - 1, cj, lda,
                          [&](int, idx c) { return cj[j + (c + 1) * lda]; }, &next);
    }
  }

  // The interchanges of the rows [p0, p1) applied to the columns [c0, c1),
  // one exchange at a time across the columns: two loads and two stores per
  // entry, with no table of moves to read.
  void interchange(idx p0, idx p1, idx c0, idx c1) const {
    if (c1 > now) c1 = now;
    if (c0 >= c1) return;
    for (idx j = p0; j < p1; ++j)
      if (ipiv[j] - 1 != j) swap_rows(a, lda, c0, c1, j, ipiv[j] - 1);
  }

  // Rows r0..r0+jb-1 (jb <= 8) of the columns [c0, c1) times the inverse of
  // the unit lower triangle at (r0, r0).
  void solve_rows(idx r0, idx jb, idx c0, idx c1) {
    T *blk = col(r0);
    T *u = a + r0 + c0 * lda;
    const idx nc = c1 - c0;
    if (r0 + (jb + E - 1) / E * E <= m) {
      switch (jb) {
        case 8: unit_lower_solve<T, 8>(blk + r0, lda, u, nc); break;
        case 7: unit_lower_solve<T, 7>(blk + r0, lda, u, nc); break;
        case 6: unit_lower_solve<T, 6>(blk + r0, lda, u, nc); break;
        case 5: unit_lower_solve<T, 5>(blk + r0, lda, u, nc); break;
        case 4: unit_lower_solve<T, 4>(blk + r0, lda, u, nc); break;
        case 3: unit_lower_solve<T, 3>(blk + r0, lda, u, nc); break;
        case 2: unit_lower_solve<T, 2>(blk + r0, lda, u, nc); break;
        default: break;
      }
      return;
    }
    // The multipliers and each column's entries are held in locals, so
    // that the columns' short recurrences overlap instead of waiting on
    // stores to memory the compiler must assume they share.
    T l[8][8] = {};
    for (idx r = 1; r < jb; ++r)
      for (idx q = 0; q < r; ++q) l[r][q] = blk[r0 + r + q * lda];
    for (idx c = 0; c < nc; ++c) {
      T *x0 = u + c * lda;
      T x[8];
      for (idx r = 0; r < jb; ++r) x[r] = x0[r];
      for (idx r = 1; r < jb; ++r)
        for (idx q = 0; q < r; ++q) x[r] -= mul(l[r][q], x[q]);
      for (idx r = 1; r < jb; ++r) x0[r] = x[r];
    }
  }

  // Rows [r0, r1) of the columns [c0, c1) less the product of the
  // multipliers in the columns [k0, k0 + K) and the rows [k0, k0 + K) of U.
  void update(idx r0, idx r1, idx c0, idx c1, idx k0, idx K) {
    if (r0 >= r1 || c0 >= c1) return;
    T *dst = col(c0);
    block_update<T, false, false>(r0, r1, dst, lda, c1 - c0, col(k0), lda, K,
                                  [&](idx q, idx c) { return dst[k0 + q + c * lda]; });
  }

  // Factors the columns [j0, j1) by panels of widths[0] (0: column by
  // column), with interchanges applied to the columns [c0, c1) around them
  // and the trailing columns [j1, c1) brought up to date.
  void range(idx c0, idx c1, idx j0, idx j1, const idx *widths, bool trail = false) {
    const idx w = widths[0];
    if (w == 0) return columns(j0, j1);
    // The solves take at most 8 rows at a time.
    const idx sub = widths[1] && widths[1] < 8 ? widths[1] : 8;
    for (idx p0 = j0; p0 < j1; p0 += w) {
      const idx p1 = j1 - p0 < w ? j1 : p0 + w;
      if (trail) now = p0;
      range(p0, p1, p0, p1, widths + 1);
      interchange(p0, p1, c0, p0);
      interchange(p0, p1, p1, c1);
      if (p1 >= c1) continue;
      // Rows p0..p1-1 of U right of the panel, by blocks of `sub` rows.
      for (idx s0 = p0; s0 < p1; s0 += sub) {
        const idx sb = p1 - s0 < sub ? p1 - s0 : sub;
        solve_rows(s0, sb, p1, c1);
        update(s0 + sb, p1, p1, c1, s0, sb);
      }
      update(p1, m, p1, c1, p0, p1 - p0);
    }
  }
};

// The columns [j0, j1) of an m x n matrix (m >= one vector of elements)
// whose columns left of j0 are factored and whose other columns are up to
// date with them: the interchanges reach all n columns, the update the
// columns from j1 on.
template <class T> void getrf_blocked(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info, idx j0, idx j1) {
  // Each row exchange reaches all columns at its column step where the
  // matrix fits the first-level cache: the exchanges then fill the waits
  // of the steps' chains. A larger one takes them so only on the columns
  // from the current outer panel on; the columns left of it, cold by then,
  // take each panel's interchanges in one sweep.
  const bool cached = m * n * idx(sizeof(T)) <= 36 * 1024;
  lu_blocked<T> f{m, a, lda, ipiv, info, safe_min<real_t<T>>(), n, cached ? 0 : n};
  // Outer panels of 16 columns. Complex ones of 17 to 64 rows are factored
  // by inner panels of four: the work inside a panel, a chain of dependent
  // column steps, then outweighs the updates. Real ones up to 64 rows and
  // complex ones up to 16 go column by column (their windows of the panel
  // stay in the first-level cache); taller ones by inner panels of 8.
  static constexpr idx kColumns[2] = {16, 0}, kComplex[3] = {16, 4, 0}, kTall[3] = {16, 8, 0};
  const idx *widths = m > 64 ? kTall : simd<T>::cplx && m > 16 ? kComplex : kColumns;
  f.range(0, n, j0, j1, widths, !cached);
}

template <class T> void getrf_cols(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info, idx j0, idx j1) {
  if (m >= simd<T>::E) getrf_blocked(m, n, a, lda, ipiv, info, j0, j1);
  else getrf_right(m, n, a, lda, ipiv, info, j0, j1);
}

template <class T>
void getrf_small(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info) {
  constexpr idx E = simd<T>::E;
#if defined(__AVX512F__)
  // Rows as lanes with the interchanges recorded, up to two vectors of
  // reals; double orders up to one vector of reals keep the kernels that
  // carry the interchanges out in registers, which are faster there.
  constexpr idx L = 64 / sizeof(real_t<T>);
  if (sizeof(real_t<T>) == 8 && m <= E && n <= E) return getrf_in_registers<T, 1>(m, n, a, lda, ipiv, info);
  if constexpr (std::is_same_v<T, std::complex<double>>)
    if (m <= L && n <= L) return getrf_split(m, n, a, lda, ipiv, info);
  if (m <= L && n <= L) return getrf_lanes<T, 1>(m, n, a, lda, ipiv, info);
  if (m <= 2 * L && n <= 2 * L) return getrf_lanes<T, 2>(m, n, a, lda, ipiv, info);
#else
  if (m <= E && n <= E) return getrf_in_registers<T, 1>(m, n, a, lda, ipiv, info);
  if constexpr (E <= 8)
    if (m <= 2 * E && n <= 2 * E) return getrf_in_registers<T, 2>(m, n, a, lda, ipiv, info);
#endif
  *info = 0;
  const idx k = m < n ? m : n;
  if (m >= n && n >= simd<T>::E) getrf_blocked(m, n, a, lda, ipiv, info, 0, k);
  else getrf_right(m, n, a, lda, ipiv, info, 0, k);
}

// A X = B with the factors of a real matrix of order n <= NV * E, on
// vectors: the interchanges as one lane permutation applied on load, L
// (unit) and U in registers. False (nothing done) when a pivot index is out
// of range or a diagonal entry of U is unfit for a product with its
// reciprocal.
template <class T, int NV> bool getrs_regs(idx n, idx nrhs, const T *a, idx lda, const idx *ipiv, T *b, idx ldb) {
  using S = simd<T>;
  using Lane = typename S::Lane;
  constexpr idx D = NV * S::E;
  alignas(64) Lane src[D];
  for (idx k = 0; k < D; ++k) src[k] = static_cast<Lane>(k);
  bool moved = false;
  for (idx i = 0; i < n; ++i) {
    const idx p = ipiv[i] - 1;
    if (p < 0 || p >= n) return false;
    moved |= p != i;
    const Lane t = src[i];
    src[i] = src[p];
    src[p] = t;
  }
  tri_regs<T, NV> l, u;
  if (!u.set_diagonal(a, lda + 1, n)) return false;
  l.template set_columns<true, false>(a, lda, n);
  u.template set_columns<false, false>(a, lda, n);
  typename S::M perm[NV];
  __builtin_memcpy(perm, src, sizeof perm);
  solve_in_registers<T, NV>(n, nrhs, l, u, moved ? perm : nullptr, b, ldb);
  return true;
}

// The same for a real order n <= NV * E, one right-hand side after the
// other through step_solve, both triangles read in place.
template <class T, int NV> bool getrs_steps(idx n, idx nrhs, const T *a, idx lda, const idx *ipiv, T *b, idx ldb) {
  for (idx i = 0; i < n; ++i)
    if (ipiv[i] < 1 || ipiv[i] > n) return false;
  step_solve<T, NV> s;
  if (!s.set_diagonal(a, lda + 1, n)) return false;
  for (idx r = 0; r < nrhs; ++r) {
    T *x = b + r * ldb;
    for (idx i = 0; i < n; ++i) {
      const idx p = ipiv[i] - 1;
      if (p != i) { T t = x[i]; x[i] = x[p]; x[p] = t; }
    }
    s.load(x, n);
    s.template run<true, true>(a, lda, n, n);    // L y = P b
    s.template run<false, false>(a, lda, n, n);  // U x = y
    s.store(x, n);
  }
  return true;
}

template <class T>
void getrs_small(const char *trans, idx n, idx nrhs, const T *a, idx lda, const idx *ipiv, T *b, idx ldb,
                 idx *info, const char *name) {
  idx bad = 0;
  bool nt = flag_is(trans, 'N'), tt = flag_is(trans, 'T'), ct = flag_is(trans, 'C');
  if (!nt && !tt && !ct) bad = 1;
  else if (n < 0) bad = 2;
  else if (nrhs < 0) bad = 3;
  else if (lda < (n > 1 ? n : 1)) bad = 5;
  else if (ldb < (n > 1 ? n : 1)) bad = 8;
  if (bad) {
    *info = -bad;
    nxl_serv_xerbla(name, &bad, 6);
    return;
  }
  *info = 0;
  if (n == 0 || nrhs == 0) return;
  constexpr idx E = simd<T>::E;
  if constexpr (!is_complex_v<T>)
    if (nt && (n <= E ? (nrhs == 1 ? getrs_steps<T, 1>(n, nrhs, a, lda, ipiv, b, ldb)
                                   : getrs_regs<T, 1>(n, nrhs, a, lda, ipiv, b, ldb))
               : n <= 2 * E ? (nrhs == 1 ? getrs_steps<T, 2>(n, nrhs, a, lda, ipiv, b, ldb)
                                         : getrs_regs<T, 2>(n, nrhs, a, lda, ipiv, b, ldb))
               : n <= 4 * E ? getrs_steps<T, 4>(n, nrhs, a, lda, ipiv, b, ldb)
                            : n <= 64 && getrs_steps<T, E == 8 ? 8 : 4>(n, nrhs, a, lda, ipiv, b, ldb)))
      return;
  for (idx r = 0; r < nrhs; ++r) {
    T *x = b + r * ldb;
    if (nt) {
      for (idx i = 0; i < n; ++i) {
        idx p = ipiv[i] - 1;
        if (p != i) { T t = x[i]; x[i] = x[p]; x[p] = t; }
      }
      solve_vec_n<T, diag::unit, true>(n, a, lda, x);   // L y = P b
      solve_vec_n<T, diag::full, false>(n, a, lda, x);  // U x = y
    } else {
      // U^T (or U^H) y = b, then L^T (or L^H) x = y, then the interchanges
      // in reverse order.
      if (ct) {
        solve_vec_t<T, diag::full, false, true>(n, a, lda, x);
        solve_vec_t<T, diag::unit, true, true>(n, a, lda, x);
      } else {
        solve_vec_t<T, diag::full, false, false>(n, a, lda, x);
        solve_vec_t<T, diag::unit, true, false>(n, a, lda, x);
      }
      for (idx i = n - 1; i >= 0; --i) {
        idx p = ipiv[i] - 1;
        if (p != i) { T t = x[i]; x[i] = x[p]; x[p] = t; }
      }
    }
  }
}

}  // namespace ps
}  // namespace NXL_LOCAL_NS
}  // namespace nxl

#define NXL_PS_LU(p, T, NAME)                                                                         \
  extern "C" void NXL_KERNEL(nxl_lapack_ps_, _##p##getrf_small)(const nxl_int *m, const nxl_int *n,   \
      T *a, const nxl_int *lda, nxl_int *ipiv, nxl_int *info, int) {                                 \
    nxl::ps::getrf_small<T>(*m, *n, a, *lda, ipiv, info);                                             \
  }                                                                                                   \
  extern "C" void NXL_KERNEL(nxl_lapack_ps_, _##p##getrf_cols)(const nxl_int *m, const nxl_int *n,    \
      T *a, const nxl_int *lda, nxl_int *ipiv, nxl_int *info, const nxl_int *j0, const nxl_int *j1,   \
      int) {                                                                                          \
    nxl::ps::getrf_cols<T>(*m, *n, a, *lda, ipiv, info, *j0, *j1);                                    \
  }                                                                                                   \
  extern "C" void NXL_KERNEL(nxl_lapack_ps_, _##p##getrs_small)(const char *trans, const nxl_int *n,  \
      const nxl_int *nrhs, const T *a, const nxl_int *lda, const nxl_int *ipiv, T *b,                 \
      const nxl_int *ldb, nxl_int *info, int, int) {                                                  \
    nxl::ps::getrs_small<T>(trans, *n, *nrhs, a, *lda, ipiv, b, *ldb, info, NAME);                    \
  }

NXL_PS_LU(s, float, "SGETRS")
NXL_PS_LU(d, double, "DGETRS")
NXL_PS_LU(c, std::complex<float>, "CGETRS")
NXL_PS_LU(z, std::complex<double>, "ZGETRS")
