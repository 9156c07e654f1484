// gtrfs: refinement of the solution of op(A) X = B for a tridiagonal matrix,
// with forward and backward error bounds, from the factors of gttrf.
#ifndef NXL_LAPACK_TRIDIAG_GTRFS_H
#define NXL_LAPACK_TRIDIAG_GTRFS_H

#include "lapack/lu/refine.h"
#include "lapack/tridiag/gttrs.h"

namespace nxl {
namespace lapack {

// r = b - op(A) x and w += |op(A)| |x| for a tridiagonal op(A) whose
// entries Ops::a(i, j) gives.
template <class T, class Ops> struct TridiagProducts {
  void residual(const T *x, const T *b, T *r) const {
    const Ops &o = static_cast<const Ops &>(*this);
    for (idx i = 0; i < o.n; ++i) {
      T s = b[i];
      for (idx j = imax(0, i - 1); j < imin(o.n, i + 2); ++j) s -= o.a(i, j) * x[j];
      r[i] = s;
    }
  }
  void abs_product(const T *x, real_t<T> *w) const {
    const Ops &o = static_cast<const Ops &>(*this);
    for (idx i = 0; i < o.n; ++i)
      for (idx j = imax(0, i - 1); j < imin(o.n, i + 2); ++j) w[i] += abs1(o.a(i, j)) * abs1(x[j]);
  }
};

template <class T> struct TridiagOps : TridiagProducts<T, TridiagOps<T>> {
  char tr;
  idx n;
  const T *dl, *d, *du, *dlf, *df, *duf, *du2;
  const idx *ipiv;
  // Entry (i, j) of op(A) for |i - j| <= 1.
  T a(idx i, idx j) const {
    bool t = tr != 'N';
    idx r = t ? j : i, c = t ? i : j;
    T v = r == c ? d[c] : r > c ? dl[c] : du[r];
    return op_conj(v, tr == 'C');
  }
  void solve(T *v, bool transposed) const {
    char t = tr;
    if (transposed) t = tr == 'N' ? (is_complex_v<T> ? 'C' : 'T') : 'N';
    gttrs_vec<T>(t, n, dlf, df, duf, du2, ipiv, v);
  }
};

template <class T>
void gtrfs(const char *trans, const idx *pn, const idx *pnrhs, const T *dl, const T *d, const T *du, const T *dlf,
           const T *df, const T *duf, const T *du2, const idx *ipiv, const T *b, const idx *pldb, T *x,
           const idx *pldx, real_t<T> *ferr, real_t<T> *berr, T *, void *, idx *info) {
  idx n = *pn, nrhs = *pnrhs, ldb = *pldb, ldx = *pldx;
  *info = 0;
  char tr = upper(trans);
  if (tr != 'N' && tr != 'T' && tr != 'C') return report<T>("GTRFS", 1, info);
  if (n < 0) return report<T>("GTRFS", 2, info);
  if (nrhs < 0) return report<T>("GTRFS", 3, info);
  if (ldb < imax(1, n)) return report<T>("GTRFS", 13, info);
  if (ldx < imax(1, n)) return report<T>("GTRFS", 15, info);
  if (!is_complex_v<T> && tr == 'C') tr = 'T';
  TridiagOps<T> ops{{}, tr, n, dl, d, du, dlf, df, duf, du2, ipiv};
  refine<T>(n, nrhs, b, ldb, x, ldx, ferr, berr, ops, "GTRFS", info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRIDIAG_GTRFS_H
