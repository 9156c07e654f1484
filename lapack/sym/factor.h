// Symmetric / Hermitian indefinite factorization A = L D L^H (lower form,
// see common.h for the upper one) with 1 x 1 and 2 x 2 diagonal blocks.
//
// Pivot choice (alpha = (1 + sqrt(17)) / 8 bounds the element growth):
//  - Bunch-Kaufman: the diagonal entry if it is at least alpha times the
//    largest entry of its column; else the candidate row r of that largest
//    entry is examined once: the current diagonal, the diagonal of r as a
//    1 x 1 block, or the 2 x 2 block (k, r).
//  - rook: the search walks from column to column until it finds a diagonal
//    entry at least alpha times the largest off-diagonal entry of its
//    column, or a pair of columns whose largest entries meet (2 x 2 block).
// Storage:
//  - classic: the multipliers of step k stay in the row order of step k;
//    the off-diagonal entry of a 2 x 2 block stays in the matrix;
//  - bounded ("rk"): every interchange is applied to the whole factor, the
//    off-diagonal entries of D go to the vector e and leave zeros behind.
//
// The unblocked form updates the trailing matrix at each step; the panel
// form factors up to nb columns left-looking with the work matrix W = L D
// and leaves the trailing matrix to one level-3 update A -= L W^H.
#ifndef NXL_LAPACK_SYM_FACTOR_H
#define NXL_LAPACK_SYM_FACTOR_H

#include "lapack/sym/common.h"

namespace nxl {
namespace lapack {
namespace sym {

inline constexpr idx kGemvBuf = 256;

template <class R> inline R growth_alpha() { return (R(1) + std::sqrt(R(17))) / R(8); }

// Writes the pivots of a step (view indices, off = offset of the block).
template <bool Rook> inline void put_pivots(const Piv &ip, idx off, idx k, idx kstep, idx p, idx kp) {
  if (kstep == 1) {
    ip.set(off + k, off + kp, false);
  } else if (Rook) {
    ip.set(off + k, off + p, true);
    ip.set(off + k + 1, off + kp, true);
  } else {
    ip.set(off + k, off + kp, true);
    ip.set(off + k + 1, off + kp, true);
  }
}

// Largest |x| (first one) over the entries of row/column im of the current
// matrix with index in [lo, n), im excluded; get(j) gives the entry.
template <class R, class Get> inline void row_max(idx lo, idx n, idx im, Get get, R &rmax, idx &jmax) {
  rmax = R(-1);
  jmax = lo;
  for (idx j = lo; j < n; ++j) {
    if (j == im) continue;
    R v = abs1(get(j));
    if (v > rmax || rmax < R(0)) {
      rmax = v;
      jmax = j;
    }
  }
  if (rmax < R(0)) rmax = R(0);
}

// Largest |x| (first one) below the diagonal of column k; get(i) gives the
// entry of row i.
template <class R, class Get> inline void col_max(idx k, idx n, Get get, R &cmax, idx &imax) {
  cmax = 0;
  imax = k;
  for (idx i = k + 1; i < n; ++i) {
    R v = abs1(get(i));
    if (v > cmax) {
      cmax = v;
      imax = i;
    }
  }
}

// A column with nothing to pivot on (zero, or a NaN diagonal): the first
// such step is the zero pivot reported; the step records no interchange.
template <class R> inline bool no_pivot(R absakk, R colmax) {
  return std::max(absakk, colmax) == R(0) || std::isnan(absakk);
}
template <class T, bool Rook, bool RK> inline void zero_step(idx &info, idx &k, Vec<T> e, const Piv &ip, idx off) {
  if (info == 0) info = k + 1;
  if constexpr (RK) e[k] = T(0);
  put_pivots<Rook>(ip, off, k, 1, k, k);
  ++k;
}

// The pivot of step k (see the top of this file) from |A(k, k)| and the
// largest entry colmax of column k below it, in row imax. cand(im, rowmax,
// jmax) makes im the candidate (its column brought up to date), finds the
// largest entry of its row and column off the diagonal, and returns its
// |diagonal|; keep() is told when the candidate's column becomes the one
// kept (a 1 x 1 pivot, or the next column of a rook walk).
struct PivotStep {
  idx kstep, kp, p;
};
template <class R, bool Rook, class Cand, class Keep>
PivotStep choose_pivot(idx k, R absakk, R colmax, idx imax, Cand cand, Keep keep) {
  const R alpha = growth_alpha<R>();
  PivotStep st{1, k, k};
  if (!(absakk < alpha * colmax)) return st;
  for (;;) {
    R rowmax;
    idx jmax;
    R dimm = cand(imax, rowmax, jmax);
    if (!Rook) {
      if (absakk >= alpha * colmax * (colmax / rowmax)) break;
      st.kp = imax;
      if (dimm >= alpha * rowmax) keep();
      else st.kstep = 2;
      break;
    }
    if (!(dimm < alpha * rowmax)) {
      st.kp = imax;
      keep();
      break;
    }
    if (st.p == jmax || rowmax <= colmax) {
      st.kp = imax;
      st.kstep = 2;
      break;
    }
    st.p = imax;
    colmax = rowmax;
    imax = jmax;
    keep();
  }
  return st;
}

// Unblocked factorization of the n x n block `a` (view indices offset by
// `off` in the pivot vector). Returns the first zero pivot (1-based, local)
// or 0.
template <class T, bool H, bool Rook, bool RK>
idx factor_unblocked(Mat<T> a, idx n, const Piv &ip, idx off, Vec<T> e) {
  using R = real_t<T>;
  using O = Ops<T, H>;
  const R sfmin = lamch<R>('S');
  idx info = 0;
  for (idx k = 0; k < n;) {
    if constexpr (H) a(k, k) = O::diag(a(k, k));
    R absakk = O::dabs(a(k, k)), colmax;
    idx imax;
    col_max<R>(k, n, [&](idx i) { return a(i, k); }, colmax, imax);
    if (no_pivot(absakk, colmax)) {
      zero_step<T, Rook, RK>(info, k, e, ip, off);
      continue;
    }
    PivotStep ps = choose_pivot<R, Rook>(
        k, absakk, colmax, imax,
        [&](idx im, R &rowmax, idx &jmax) {
          row_max<R>(k, n, im, [&](idx j) { return j < im ? a(im, j) : a(j, im); }, rowmax, jmax);
          return O::dabs(a(im, im));
        },
        [] {});
    idx kstep = ps.kstep, kp = ps.kp, p = ps.p;
    idx kk = k + kstep - 1;
    idx c0 = RK ? 0 : k;
    if (Rook && kstep == 2 && p != k) sym_swap<T, H>(a, n, c0, k, p);
    if (kp != kk) sym_swap<T, H>(a, n, c0, kk, kp);
    if (kstep == 1) {
      T d = O::diag(a(k, k));
      a(k, k) = d;
      if (k + 1 < n) {
        bool tiny = abs1(d) < sfmin;
        T r = recip(d);
        // A(i, j) -= W(i) cj(L(j)) with W the column before scaling.
        // Real and Hermitian: A -= W W^H / d by the BLAS, then L = W / d.
        if constexpr (H || !is_complex_v<T>) {
          if (!tiny) {
            idx m = n - k - 1;
            T *x = a.block(k + 1, k, m, 1);
            her(a.rs > 0 ? 'L' : 'U', m, -nxl::re(r), x, a.block(k + 1, k + 1, m, m), a.ld());
            for (idx i = 0; i < m; ++i) x[i] *= r;
            if constexpr (RK) e[k] = T(0);
            put_pivots<Rook>(ip, off, k, kstep, p, kp);
            k += kstep;
            continue;
          }
        }
        // Rows j..n of a column are one stored run (either direction), so
        // the loops run over plain arrays.
        for (idx j = k + 1; j < n; ++j) {
          T lj = tiny ? a(j, k) / d : a(j, k) * r;
          T c = O::cj(lj);
          idx m = n - j;
          T *y = a.block(j, j, m, 1);
          const T *x = a.block(j, k, m, 1);
          for (idx i = 0; i < m; ++i) y[i] -= x[i] * c;
          a(j, k) = lj;
          if constexpr (H) a(j, j) = O::diag(a(j, j));
        }
      }
      if constexpr (RK) e[k] = T(0);
    } else {
      a(k, k) = O::diag(a(k, k));
      a(k + 1, k + 1) = O::diag(a(k + 1, k + 1));
      if (k + 2 < n) {
        Block2<T, H> d(a(k, k), a(k + 1, k), a(k + 1, k + 1));
        for (idx j = k + 2; j < n; ++j) {
          T l1, l2;
          d.row(a(j, k), a(j, k + 1), l1, l2);
          T c1 = O::cj(l1), c2 = O::cj(l2);
          idx m = n - j;
          T *y = a.block(j, j, m, 1);
          const T *x1 = a.block(j, k, m, 1), *x2 = a.block(j, k + 1, m, 1);
          for (idx i = 0; i < m; ++i) y[i] -= x1[i] * c1 + x2[i] * c2;
          a(j, k) = l1;
          a(j, k + 1) = l2;
          if constexpr (H) a(j, j) = O::diag(a(j, j));
        }
      }
      if constexpr (RK) {
        e[k] = a(k + 1, k);
        e[k + 1] = T(0);
        a(k + 1, k) = T(0);
      }
    }
    put_pivots<Rook>(ip, off, k, kstep, p, kp);
    k += kstep;
  }
  return info;
}

// Panel: factors at most nb columns of the n x n block `a` (nb < n: the
// last column may be left for the next panel when a 2 x 2 block would
// cross the border), updates the trailing matrix, and returns the number of
// columns done in kb. W is an n x nb work view. Classic storage restores
// the row order of each panel column (undoing the later interchanges that
// the left-looking updates needed).
template <class T, bool H, bool Rook, bool RK>
idx factor_panel(Mat<T> a, idx n, idx nb, Mat<T> w, const Piv &ip, idx off, Vec<T> e, idx *kb) {
  using R = real_t<T>;
  using O = Ops<T, H>;
  const R sfmin = lamch<R>('S');
  idx info = 0, k = 0;
  // y(r0:n) -= a(r0:n, 0:k) cj(w(row, 0:k))^T for a column y of A or W
  // (GEMV on the stored blocks; the conjugated coefficients go through a
  // small buffer).
  T buf[kGemvBuf];
  auto gemv_update = [&](Mat<T> y, idx ycol, idx r0, idx r1, idx row) {
    idx m = r1 - r0;
    if (m <= 0 || k == 0) return;
    const T *x = w.block(row, 0, 1, k);
    idx incx = w.ld();
    if ((H && is_complex_v<T>) || k > kGemvBuf) {
      if (k > kGemvBuf) {
        for (idx l = 0; l < k; ++l) {
          T c = -O::cj(w(row, l));
          for (idx i = r0; i < r1; ++i) y(i, ycol) += a(i, l) * c;
        }
        return;
      }
      for (idx l = 0; l < k; ++l) buf[l] = O::cj(x[l * incx]);
      x = buf;
      incx = 1;
    }
    blas::gemv('N', m, k, T(-1), a.block(r0, 0, m, k), a.ld(), x, incx, T(1), y.block(r0, ycol, m, 1), 1);
  };
  auto update = [&](idx col, idx row) { gemv_update(w, col, k, n, row); };
  // w(k:n, k+1) := column im of the updated matrix.
  auto load = [&](idx im) {
    for (idx j = k; j < im; ++j) w(j, k + 1) = O::cj(a(im, j));
    for (idx i = im; i < n; ++i) w(i, k + 1) = a(i, im);
    if constexpr (H) w(im, k + 1) = O::diag(w(im, k + 1));
    update(k + 1, im);
    if constexpr (H) w(im, k + 1) = O::diag(w(im, k + 1));
  };
  auto keep_candidate = [&]() {
    for (idx i = k; i < n; ++i) w(i, k) = w(i, k + 1);
  };
  // Moves the not yet updated column s of the lazy trailing matrix to
  // position t > s and exchanges rows s and t of the done part of A and W.
  auto move = [&](idx s, idx t, idx kk) {
    a(t, t) = a(s, s);
    for (idx j = s + 1; j < t; ++j) a(t, j) = O::cj(a(j, s));
    if constexpr (H) a(t, t) = O::diag(a(t, t));
    for (idx i = t + 1; i < n; ++i) a(i, t) = a(i, s);
    for (idx j = 0; j < k; ++j) std::swap(a(s, j), a(t, j));
    for (idx j = 0; j <= kk; ++j) std::swap(w(s, j), w(t, j));
  };
  for (;;) {
    if ((k >= nb - 1 && nb < n) || k >= n) break;
    for (idx i = k; i < n; ++i) w(i, k) = a(i, k);
    if constexpr (H) w(k, k) = O::diag(w(k, k));
    update(k, k);
    if constexpr (H) w(k, k) = O::diag(w(k, k));
    R absakk = O::dabs(w(k, k)), colmax;
    idx imax;
    col_max<R>(k, n, [&](idx i) { return w(i, k); }, colmax, imax);
    if (no_pivot(absakk, colmax)) {
      for (idx i = k; i < n; ++i) a(i, k) = w(i, k);
      zero_step<T, Rook, RK>(info, k, e, ip, off);
      continue;
    }
    PivotStep ps = choose_pivot<R, Rook>(
        k, absakk, colmax, imax,
        [&](idx im, R &rowmax, idx &jmax) {
          load(im);
          row_max<R>(k, n, im, [&](idx j) { return w(j, k + 1); }, rowmax, jmax);
          return O::dabs(w(im, k + 1));
        },
        keep_candidate);
    idx kstep = ps.kstep, kp = ps.kp, p = ps.p;
    idx kk = k + kstep - 1;
    if (Rook && kstep == 2 && p != k) move(k, p, kk);
    if (kp != kk) move(kk, kp, kk);
    if (kstep == 1) {
      T d = O::diag(w(k, k));
      a(k, k) = d;
      if (k + 1 < n) {
        bool tiny = abs1(d) < sfmin;
        T r = recip(d);
        for (idx i = k + 1; i < n; ++i) a(i, k) = tiny ? w(i, k) / d : w(i, k) * r;
      }
      if constexpr (RK) e[k] = T(0);
    } else {
      T d11 = O::diag(w(k, k)), d21 = w(k + 1, k), d22 = O::diag(w(k + 1, k + 1));
      if (k + 2 < n) {
        Block2<T, H> d(d11, d21, d22);
        for (idx j = k + 2; j < n; ++j) d.row(w(j, k), w(j, k + 1), a(j, k), a(j, k + 1));
      }
      a(k, k) = d11;
      a(k + 1, k) = d21;
      a(k + 1, k + 1) = d22;
      if constexpr (RK) {
        e[k] = d21;
        e[k + 1] = T(0);
        a(k + 1, k) = T(0);
      }
    }
    put_pivots<Rook>(ip, off, k, kstep, p, kp);
    k += kstep;
  }
  *kb = k;
  // Trailing update A(k:n, k:n) -= L(k:n, 0:k) W(k:n, 0:k)^H, lower triangle
  // only: halves recursively, the square below the diagonal halves by one
  // GEMM, triangles of at most nb columns column by column.
  const char tr = (H && is_complex_v<T>) ? 'C' : 'T';
  auto trailing = [&](auto &&self, idx j0, idx j1) -> void {
    idx m = j1 - j0;
    if (m <= 16) {
      for (idx jj = j0; jj < j1; ++jj) {
        gemv_update(a, jj, jj, j1, jj);
        if constexpr (H) a(jj, jj) = O::diag(a(jj, jj));
      }
      return;
    }
    idx h = j0 + m / 2;
    self(self, j0, h);
    blas::gemm('N', tr, j1 - h, h - j0, k, T(-1), a.block(h, 0, j1 - h, k), a.ld(), w.block(j0, 0, h - j0, k),
               w.ld(), T(1), a.block(h, j0, j1 - h, h - j0), a.ld());
    self(self, h, j1);
  };
  if (k > 0 && k < n) trailing(trailing, k, n);
  if constexpr (!RK) {
    // Undo, newest first, the interchanges of each step in the columns
    // before it.
    for (idx s = k - 1; s >= 0;) {
      bool two = s > 0 && ip.neg(off + s);
      idx k0 = two ? s - 1 : s;
      auto unswap = [&](idx r) {
        idx q = ip.get(off + r) - off;
        if (q != r)
          for (idx j = 0; j < k0; ++j) std::swap(a(r, j), a(q, j));
      };
      unswap(s);
      if (two && Rook) unswap(k0);
      s = k0 - 1;
    }
  }
  return info;
}

// Blocked factorization of the n x n lower-form view; w is an n x nb work
// view (nb <= 1 or nb >= n: unblocked).
template <class T, bool H, bool Rook, bool RK>
idx factor_blocked(Mat<T> a, idx n, const Piv &ip, Vec<T> e, Mat<T> w, idx nb) {
  idx info = 0;
  for (idx k = 0; k < n;) {
    idx kb, iinfo;
    Vec<T> ek = RK ? e.at(k) : e;
    if (nb > 1 && nb < n - k) {
      iinfo = factor_panel<T, H, Rook, RK>(a.at(k, k), n - k, nb, w, ip, k, ek, &kb);
    } else {
      iinfo = factor_unblocked<T, H, Rook, RK>(a.at(k, k), n - k, ip, k, ek);
      kb = n - k;
    }
    if (info == 0 && iinfo > 0) info = iinfo + k;
    if constexpr (RK) {
      // The block's interchanges reach the columns factored before it.
      if (k > 0) {
        for (idx s = k; s < k + kb;) {
          bool two = s + 1 < k + kb && ip.neg(s);
          idx q = ip.get(s);
          if (q != s)
            for (idx j = 0; j < k; ++j) std::swap(a(s, j), a(q, j));
          if (two) {
            idx q1 = ip.get(s + 1);
            if (q1 != s + 1)
              for (idx j = 0; j < k; ++j) std::swap(a(s + 1, j), a(q1, j));
          }
          s += two ? 2 : 1;
        }
      }
    }
    k += kb;
  }
  return info;
}

}  // namespace sym
}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_SYM_FACTOR_H
