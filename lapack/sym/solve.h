// Solves with the factors of factor.h, conversions between the two
// storages, and symmetric interchanges of a stored triangle.
//
// classic: A = P(0) L(0) P(1) L(1) ... D ... with the multipliers of step k
//   in the row order of step k: X is found column by column (level 2), the
//   interchanges interleaved with the elimination;
// bounded: A = P L D L^H P^T: permute, two triangular solves with multiple
//   right-hand sides (level 3) around the block-diagonal solve, permute back.
#ifndef NXL_LAPACK_SYM_SOLVE_H
#define NXL_LAPACK_SYM_SOLVE_H

#include "lapack/sym/common.h"

namespace nxl {
namespace lapack {
namespace sym {

template <class T> inline void swap_rows(Mat<T> b, idx nrhs, idx r, idx s) {
  if (r == s) return;
  for (idx c = 0; c < nrhs; ++c) std::swap(b(r, c), b(s, c));
}

// D X = B for the block-diagonal D: diagonal from `a`, the off-diagonal
// entry of a 2 x 2 block (k, k+1) from off(k).
template <class T, bool H, class Off>
void solve_d(Mat<T> a, idx n, idx nrhs, const Piv &ip, Off off, Mat<T> b) {
  using O = Ops<T, H>;
  for (idx k = 0; k < n;) {
    if (!ip.neg(k) || k + 1 >= n) {
      T d = O::diag(a(k, k));
      T r = recip(d);
      for (idx c = 0; c < nrhs; ++c) b(k, c) *= r;
      ++k;
    } else {
      Block2<T, H> d(O::diag(a(k, k)), off(k), O::diag(a(k + 1, k + 1)));
      for (idx c = 0; c < nrhs; ++c) {
        T x, y;
        d.col(b(k, c), b(k + 1, c), x, y);
        b(k, c) = x;
        b(k + 1, c) = y;
      }
      k += 2;
    }
  }
}

// Classic storage, Bunch-Kaufman or rook pivots: A X = B, column by column.
template <class T, bool H, bool Rook>
void solve_classic(Mat<T> a, idx n, idx nrhs, const Piv &ip, Mat<T> b) {
  using O = Ops<T, H>;
  // L D Y = P^T B
  for (idx k = 0; k < n;) {
    bool two = ip.neg(k) && k + 1 < n;
    if (!two) {
      swap_rows(b, nrhs, k, ip.get(k));
      T d = O::diag(a(k, k));
      T r = recip(d);
      idx m = n - k - 1;
      for (idx c = 0; c < nrhs; ++c) {
        T bk = b(k, c);
        if (bk != T(0) && m > 0) blas::axpy(m, -bk, a.block(k + 1, k, m, 1), 1, b.block(k + 1, c, m, 1), 1);
        b(k, c) = bk * r;
      }
      ++k;
    } else {
      if (Rook) swap_rows(b, nrhs, k, ip.get(k));
      swap_rows(b, nrhs, k + 1, ip.get(k + 1));
      Block2<T, H> d(O::diag(a(k, k)), a(k + 1, k), O::diag(a(k + 1, k + 1)));
      idx m = n - k - 2;
      for (idx c = 0; c < nrhs; ++c) {
        T b1 = b(k, c), b2 = b(k + 1, c);
        if (m > 0) {
          T *bc = b.block(k + 2, c, m, 1);
          blas::axpy(m, -b1, a.block(k + 2, k, m, 1), 1, bc, 1);
          blas::axpy(m, -b2, a.block(k + 2, k + 1, m, 1), 1, bc, 1);
        }
        d.col(b1, b2, b(k, c), b(k + 1, c));
      }
      k += 2;
    }
  }
  // L^H X = Y, then the interchanges in reverse.
  for (idx k = n - 1; k >= 0;) {
    bool two = ip.neg(k) && k > 0;
    idx k0 = two ? k - 1 : k;
    idx m = n - k - 1;
    if (m > 0)
      for (idx c = 0; c < nrhs; ++c) {
        const T *bc = b.block(k + 1, c, m, 1);
        for (idx j = k0; j <= k; ++j) {
          const T *col = a.block(k + 1, j, m, 1);
          b(j, c) -= H ? blas::dotc(m, col, 1, bc, 1) : blas::dotu(m, col, 1, bc, 1);
        }
      }
    swap_rows(b, nrhs, k, ip.get(k));
    if (two && Rook) swap_rows(b, nrhs, k0, ip.get(k0));
    k = k0 - 1;
  }
}

// Classic storage with many right-hand sides, level 3: the steps are taken
// in blocks of about nb columns. Moving a block's interchanges in front of
// its elimination matrices turns the block into P_blk L_blk, L_blk being the
// block's columns with the block's later interchanges applied to the earlier
// columns: a copy of that panel in w (n x nb, leading dimension n) serves a
// triangular solve and a GEMM on each side of the D solve.
template <class T, bool H, bool Rook>
void solve_classic_blocked(bool up, idx n, idx nrhs, const T *a, idx lda, const idx *ipiv, T *b, idx ldb, T *w,
                           idx nb) {
  Mat<T> av = tri_view(up, n, const_cast<T *>(a), lda);
  Mat<T> bv = rhs_view(up, n, b, ldb);
  Piv ip = piv_view(up, n, ipiv);
  const char u = up ? 'U' : 'L', ct = (H && is_complex_v<T>) ? 'C' : 'T';
  auto two = [&](idx k) { return ip.neg(k) && k + 1 < n; };
  // Interchanges of the step at k, in order.
  auto step_swaps = [&](idx k, auto f) {
    if (!two(k)) {
      f(k, ip.get(k));
    } else {
      if (Rook) f(k, ip.get(k));
      f(k + 1, ip.get(k + 1));
    }
  };
  // Rows [r, r + m) of the right-hand sides in storage order.
  auto brows = [&](idx r, idx m) { return up ? b + (n - r - m) : b + r; };
  // The panel of the block [k0, k1) with unit diagonal blocks.
  auto panel = [&](idx k0, idx k1) {
    idx m = n - k0, kb = k1 - k0;
    Mat<T> wv = up ? Mat<T>{w + (m - 1) + (kb - 1) * n, -1, -n} : Mat<T>{w, 1, n};
    for (idx j = 0; j < kb; ++j)
      for (idx i = 0; i < m; ++i) wv(i, j) = i > j ? av(k0 + i, k0 + j) : T(i == j ? 1 : 0);
    for (idx k = k0; k < k1;) {
      if (two(k)) wv(k + 1 - k0, k - k0) = T(0);
      step_swaps(k, [&](idx r, idx q) {
        if (r != q)
          for (idx j = 0; j < k - k0; ++j) std::swap(wv(r - k0, j), wv(q - k0, j));
      });
      k += two(k) ? 2 : 1;
    }
    return wv;
  };
  // L D Y = P^T B
  for (idx k0 = 0; k0 < n;) {
    idx k1 = k0;
    while (k1 < n && k1 < k0 + nb) k1 += two(k1) ? 2 : 1;
    for (idx k = k0; k < k1; k += two(k) ? 2 : 1)
      step_swaps(k, [&](idx r, idx q) { swap_rows(bv, nrhs, r, q); });
    Mat<T> wv = panel(k0, k1);
    idx m = n - k0, kb = k1 - k0;
    blas::trsm('L', u, 'N', 'U', kb, nrhs, T(1), wv.block(0, 0, kb, kb), n, brows(k0, kb), ldb);
    if (m > kb)
      blas::gemm('N', 'N', m - kb, nrhs, kb, T(-1), wv.block(kb, 0, m - kb, kb), n, brows(k0, kb), ldb, T(1),
                 brows(k1, m - kb), ldb);
    k0 = k1;
  }
  solve_d<T, H>(av, n, nrhs, ip, [&](idx k) { return av(k + 1, k); }, bv);
  // L^H X = Y, blocks from the last one.
  for (idx k1 = n; k1 > 0;) {
    idx k0 = k1;
    while (k0 > 0 && k0 > k1 - nb) k0 -= (ip.neg(k0 - 1) && k0 - 1 > 0) ? 2 : 1;
    Mat<T> wv = panel(k0, k1);
    idx m = n - k0, kb = k1 - k0;
    if (m > kb)
      blas::gemm(ct, 'N', kb, nrhs, m - kb, T(-1), wv.block(kb, 0, m - kb, kb), n, brows(k1, m - kb), ldb, T(1),
                 brows(k0, kb), ldb);
    blas::trsm('L', u, ct, 'U', kb, nrhs, T(1), wv.block(0, 0, kb, kb), n, brows(k0, kb), ldb);
    // The block's interchanges, newest first.
    for (idx k = k1 - 1; k >= k0;) {
      bool pair = ip.neg(k) && k > k0;
      idx ks = pair ? k - 1 : k;
      swap_rows(bv, nrhs, k, ip.get(k));
      if (pair && Rook) swap_rows(bv, nrhs, ks, ip.get(ks));
      k = ks - 1;
    }
    k1 = k0;
  }
}

// Classic solve: level 3 for several right-hand sides when the panel copy
// can be had, column by column otherwise.
template <class T, bool H, bool Rook>
void solve_classic_any(bool up, idx n, idx nrhs, const T *a, idx lda, const idx *ipiv, T *b, idx ldb) {
  if (n == 0 || nrhs == 0) return;
  if (nrhs >= 4 && n >= 16) {
    idx nb = imin(n, 64);
    Work<T> w(n * nb);
    if (w) return solve_classic_blocked<T, H, Rook>(up, n, nrhs, a, lda, ipiv, b, ldb, w.get(), nb);
  }
  solve_classic<T, H, Rook>(tri_view(up, n, const_cast<T *>(a), lda), n, nrhs, piv_view(up, n, ipiv),
                            rhs_view(up, n, b, ldb));
}

// Bounded storage (or classic storage converted by convert()): A X = B with
// the stored triangle, e the off-diagonal entries of D; `rook` tells the
// pivot encoding.
template <class T, bool H>
void solve_bounded(bool up, idx n, idx nrhs, const T *a, idx lda, const T *e, const idx *ipiv, bool rook, T *b,
                   idx ldb) {
  if (n == 0 || nrhs == 0) return;
  Piv ip = piv_view(up, n, ipiv);
  Mat<T> bv = rhs_view(up, n, b, ldb);
  Mat<T> av = tri_view(up, n, const_cast<T *>(a), lda);
  Vec<T> ev = vec_view(up, n, const_cast<T *>(e));
  for_each_swap(ip, n, rook, false, [&](idx r, idx s, idx) { swap_rows(bv, nrhs, r, s); });
  char u = up ? 'U' : 'L';
  blas::trsm('L', u, 'N', 'U', n, nrhs, T(1), a, lda, b, ldb);
  solve_d<T, H>(av, n, nrhs, ip, [&](idx k) { return ev[k]; }, bv);
  blas::trsm('L', u, (H && is_complex_v<T>) ? 'C' : 'T', 'U', n, nrhs, T(1), a, lda, b, ldb);
  for_each_swap(ip, n, rook, true, [&](idx r, idx s, idx) { swap_rows(bv, nrhs, r, s); });
}

// Applies (forward) or removes (backward) the later interchanges in the
// earlier columns of a classic factor.
template <class T>
void spread_swaps(bool up, idx n, T *a, idx lda, const idx *ipiv, bool rook, bool forward) {
  if (n == 0) return;
  Mat<T> av = tri_view(up, n, a, lda);
  Piv ip = piv_view(up, n, ipiv);
  for_each_swap(ip, n, rook, !forward, [&](idx r, idx s, idx k) {
    if (r != s)
      for (idx j = 0; j < k; ++j) std::swap(av(r, j), av(s, j));
  });
}

// Classic <-> bounded storage in place (to_bounded: e receives the
// off-diagonal entries of D, the later interchanges are applied to the
// earlier columns). With fix_ipiv, Bunch-Kaufman pivots are rewritten in
// the rook encoding (a 2 x 2 block's first row keeps its own index) and
// back.
template <class T, bool H>
void convert(bool up, idx n, T *a, idx lda, T *e, idx *ipiv, bool rook, bool to_bounded, bool fix_ipiv) {
  if (n == 0) return;
  Mat<T> av = tri_view(up, n, a, lda);
  Vec<T> ev = vec_view(up, n, e);
  Piv ip = piv_view(up, n, ipiv);
  auto row_swap = [&](idx r, idx s, idx k) {
    if (r != s)
      for (idx j = 0; j < k; ++j) std::swap(av(r, j), av(s, j));
  };
  if (to_bounded) {
    for (idx k = 0; k < n;) {
      if (ip.neg(k) && k + 1 < n) {
        ev[k] = av(k + 1, k);
        ev[k + 1] = T(0);
        av(k + 1, k) = T(0);
        k += 2;
      } else {
        ev[k] = T(0);
        ++k;
      }
    }
    for_each_swap(ip, n, rook, false, row_swap);
    if (fix_ipiv && !rook)
      for (idx k = 0; k + 1 < n;) {
        if (ip.neg(k)) {
          ip.set(k, k, true);
          k += 2;
        } else {
          ++k;
        }
      }
  } else {
    if (fix_ipiv && !rook)
      for (idx k = 0; k + 1 < n;) {
        if (ip.neg(k)) {
          ip.raw(k) = ip.raw(k + 1);
          k += 2;
        } else {
          ++k;
        }
      }
    for_each_swap(ip, n, rook, true, row_swap);
    for (idx k = 0; k + 1 < n;) {
      if (ip.neg(k)) {
        av(k + 1, k) = ev[k];
        k += 2;
      } else {
        ++k;
      }
    }
  }
}

}  // namespace sym
}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_SYM_SOLVE_H
