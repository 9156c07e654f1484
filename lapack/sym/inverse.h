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

}  // namespace sym
}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_SYM_INVERSE_H
