// ptrfs: refinement of the solution of A X = B for a Hermitian positive
// definite tridiagonal matrix, with error bounds, from the pttrf factors.
// The complex forms say whether e is the super- or the subdiagonal.
#ifndef NXL_LAPACK_TRIDIAG_PTRFS_H
#define NXL_LAPACK_TRIDIAG_PTRFS_H

#include "lapack/lu/refine.h"
#include "lapack/tridiag/gtrfs.h"
#include "lapack/tridiag/pttrs.h"

namespace nxl {
namespace lapack {

template <class T> struct PosTridiagOps : TridiagProducts<T, PosTridiagOps<T>> {
  bool up;
  idx n;
  const real_t<T> *d, *df;
  const T *e, *ef;
  T a(idx i, idx j) const {
    if (i == j) return T(d[i]);
    // e sits above the diagonal (upper) or below it (lower).
    bool above = i < j;
    return op_conj(e[imin(i, j)], above != up);
  }
  void solve(T *v, bool) const { pttrs_vec<T>(up, n, df, ef, v); }
};

template <class T>
void ptrfs_checked(const char *uplo, idx pos, idx n, idx nrhs, const real_t<T> *d, const T *e, const real_t<T> *df,
                   const T *ef, const T *b, idx ldb, T *x, idx ldx, real_t<T> *ferr, real_t<T> *berr, idx *info) {
  *info = 0;
  bool up = uplo && same(uplo, 'U');
  if (uplo && !up && !same(uplo, 'L')) return report<T>("PTRFS", 1, info);
  if (n < 0) return report<T>("PTRFS", pos + 1, info);
  if (nrhs < 0) return report<T>("PTRFS", pos + 2, info);
  if (ldb < imax(1, n)) return report<T>("PTRFS", pos + 8, info);
  if (ldx < imax(1, n)) return report<T>("PTRFS", pos + 10, info);
  PosTridiagOps<T> ops{{}, up, n, d, df, e, ef};
  refine<T>(n, nrhs, b, ldb, x, ldx, ferr, berr, ops, "PTRFS", info);
}

template <class T>
void ptrfs(const idx *n, const idx *nrhs, const real_t<T> *d, const T *e, const real_t<T> *df, const T *ef,
           const T *b, const idx *ldb, T *x, const idx *ldx, real_t<T> *ferr, real_t<T> *berr, T *, idx *info) {
  ptrfs_checked<T>(nullptr, 0, *n, *nrhs, d, e, df, ef, b, *ldb, x, *ldx, ferr, berr, info);
}
template <class T>
void ptrfs_c(const char *uplo, const idx *n, const idx *nrhs, const real_t<T> *d, const T *e, const real_t<T> *df,
             const T *ef, const T *b, const idx *ldb, T *x, const idx *ldx, real_t<T> *ferr, real_t<T> *berr, T *,
             real_t<T> *, idx *info) {
  ptrfs_checked<T>(uplo, 1, *n, *nrhs, d, e, df, ef, b, *ldb, x, *ldx, ferr, berr, info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRIDIAG_PTRFS_H
