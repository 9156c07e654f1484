// Inverse from the bounded storage: with A = P L D L^H P^T,
// inv(A) = P X P^T, X = inv(L)^H inv(D) inv(L), built from the last block
// backwards: for a block k with multipliers l below it and the inverse X2
// of the trailing part already in place,
//   X(k+:, k) = -X2 l,   X(k, k) = inv(D_k) - l^H X2 l.
// The interchanges are then applied to X symmetrically, newest first.
// Classic storage is converted first (see solve.h).
#ifndef NXL_LAPACK_SYM_INVERSE_H
#define NXL_LAPACK_SYM_INVERSE_H

#include "lapack/sym/common.h"
#include "lapack/tri/trtri.h"

namespace nxl {
namespace lapack {
namespace sym {

// First singular 1 x 1 block of D (1-based index of the stored matrix), 0 if none.
template <class T, bool H> idx singular_block(bool up, idx n, const T *a, idx lda, const idx *ipiv) {
  Mat<T> av = tri_view(up, n, const_cast<T *>(a), lda);
  Piv ip = piv_view(up, n, ipiv);
  for (idx k = 0; k < n; ++k)
    if (!ip.neg(k) && Ops<T, H>::diag(av(k, k)) == T(0)) return up ? n - k : k + 1;
  return 0;
}

// work: n entries. Without e the off-diagonal entries of D are read from
// the matrix (classic storage with its interchanges already spread, see
// spread_swaps in solve.h).
template <class T, bool H>
void invert_bounded(bool up, idx n, T *a, idx lda, const T *e, const idx *ipiv, bool rook, T *work) {
  using O = Ops<T, H>;
  if (n == 0) return;
  Mat<T> av = tri_view(up, n, a, lda);
  Vec<T> ev = vec_view(up, n, const_cast<T *>(e));
  Piv ip = piv_view(up, n, ipiv);
  // x := -X2 v for the trailing block after position k, v copied to work;
  // returns cj(v)^T x added to `acc` targets by the caller.
  auto column = [&](idx j, idx k) {
    idx m = n - 1 - k;
    T *col = av.block(k + 1, j, m, 1);
    std::memcpy(work, col, sizeof(T) * static_cast<size_t>(m));
    sym_mv<T, H>(up, m, T(-1), av.block(k + 1, k + 1, m, m), lda, work, T(0), col);
  };
  auto dotv = [&](idx m, const T *v, const T *x) {
    T s = T(0);
    for (idx i = 0; i < m; ++i) s += O::cj(v[i]) * x[i];
    return s;
  };
  for (idx k = n - 1; k >= 0;) {
    idx m = n - 1 - k;
    if (!ip.neg(k) || k == 0) {
      av(k, k) = O::diag(recip(O::diag(av(k, k))));
      if (m > 0) {
        column(k, k);
        av(k, k) = O::diag(av(k, k) - dotv(m, work, av.block(k + 1, k, m, 1)));
      }
      --k;
    } else {
      idx k0 = k - 1;
      Block2<T, H> d(O::diag(av(k0, k0)), e ? ev[k0] : av(k, k0), O::diag(av(k, k)));
      av(k0, k0) = d.i00();
      av(k, k0) = d.i10();
      av(k, k) = d.i11();
      if (m > 0) {
        // Both columns of the block; the second needs the first's
        // multipliers l1 and the new X(k+1:, k0).
        column(k0, k);
        T *x1 = av.block(k + 1, k0, m, 1);
        av(k0, k0) = O::diag(av(k0, k0) - dotv(m, work, x1));
        // work now holds l1; keep X(k+1:, k0) and form the second column.
        T *x2 = av.block(k + 1, k, m, 1);
        T s = T(0);
        // l2^H x1 (l2 is column k before its replacement)
        s = dotv(m, x2, x1);
        av(k, k0) -= s;
        column(k, k);
        av(k, k) = O::diag(av(k, k) - dotv(m, work, x2));
      }
      k -= 2;
    }
  }
  for_each_swap(ip, n, rook, true, [&](idx r, idx s, idx) { sym_swap<T, H>(av, n, 0, r, s); });
}

// Blocked form of invert_bounded, level 3: V = inv(L) in place by the
// triangular inverse (the unit diagonal is implied, D sits on it), then
// X = V^H inv(D) V by column blocks J = [j0, j1) in increasing order, each
// needing only V's columns from j0 on:
//   Y = inv(D) V(j0:, J)                     (work, (n - j0) x jb)
//   X(J, J)   = V(J, J)^H Y(J) + V(j1:, J)^H Y(j1:)
//   X(j1:, J) = V(j1:, j1:)^H Y(j1:).
// work: n nb + 2 n entries.
template <class T, bool H>
void invert_blocked(bool up, idx n, T *a, idx lda, const T *e, const idx *ipiv, bool rook, T *work, idx nb) {
  using O = Ops<T, H>;
  if (n == 0) return;
  Mat<T> av = tri_view(up, n, a, lda);
  Vec<T> ev = vec_view(up, n, const_cast<T *>(e));
  Piv ip = piv_view(up, n, ipiv);
  T *dd = work, *doff = work + n, *y = work + 2 * n;
  auto two = [&](idx k) { return ip.neg(k) && k + 1 < n; };
  // inv(D): diagonal in dd, the (k+1, k) entry of a 2 x 2 block in doff(k);
  // the matrix keeps a unit lower triangle below its diagonal.
  for (idx k = 0; k < n;) {
    if (!two(k)) {
      dd[k] = O::diag(recip(O::diag(av(k, k))));
      doff[k] = T(0);
      ++k;
    } else {
      Block2<T, H> d(O::diag(av(k, k)), e ? ev[k] : av(k + 1, k), O::diag(av(k + 1, k + 1)));
      dd[k] = d.i00();
      dd[k + 1] = d.i11();
      doff[k] = d.i10();
      doff[k + 1] = T(0);
      av(k + 1, k) = T(0);
      k += 2;
    }
  }
  idx tinfo = 0;
  trtri_work<T>(up, true, n, a, lda, &tinfo);
  const char u = up ? 'U' : 'L', ct = (H && is_complex_v<T>) ? 'C' : 'T';
  for (idx j0 = 0; j0 < n;) {
    idx j1 = j0;
    while (j1 < n && j1 < j0 + nb) j1 += two(j1) ? 2 : 1;
    idx m = n - j0, jb = j1 - j0, m2 = n - j1;
    Mat<T> yv = up ? Mat<T>{y + (m - 1) + (jb - 1) * m, -1, -m} : Mat<T>{y, 1, m};
    // Y = inv(D) V(j0:, J) with V's unit diagonal and zeros above it.
    auto vf = [&](idx i, idx j) { return i > j ? av(i, j) : T(i == j ? 1 : 0); };
    for (idx j = j0; j < j1; ++j)
      for (idx k = j0; k < n;) {
        if (!two(k)) {
          yv(k - j0, j - j0) = dd[k] * vf(k, j);
          ++k;
        } else {
          T v1 = vf(k, j), v2 = vf(k + 1, j);
          yv(k - j0, j - j0) = dd[k] * v1 + O::cj(doff[k]) * v2;
          yv(k + 1 - j0, j - j0) = doff[k] * v1 + dd[k + 1] * v2;
          k += 2;
        }
      }
    // X(J, J): Y(J) := V(J, J)^H Y(J) + V(j1:, J)^H Y(j1:).
    blas::trmm('L', u, ct, 'U', jb, jb, T(1), av.block(j0, j0, jb, jb), lda, yv.block(0, 0, jb, jb), m);
    if (m2 > 0) {
      blas::gemm(ct, 'N', jb, jb, m2, T(1), av.block(j1, j0, m2, jb), lda, yv.block(jb, 0, m2, jb), m, T(1),
                 yv.block(0, 0, jb, jb), m);
      blas::trmm('L', u, ct, 'U', m2, jb, T(1), av.block(j1, j1, m2, m2), lda, yv.block(jb, 0, m2, jb), m);
    }
    for (idx j = 0; j < jb; ++j) {
      for (idx i = j; i < m; ++i) av(j0 + i, j0 + j) = yv(i, j);
      if constexpr (H) av(j0 + j, j0 + j) = O::diag(av(j0 + j, j0 + j));
    }
    j0 = j1;
  }
  for_each_swap(ip, n, rook, true, [&](idx r, idx s, idx) { sym_swap<T, H>(av, n, 0, r, s); });
}

}  // namespace sym
}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_SYM_INVERSE_H
