// porfs: refinement of the solution of A X = B with error bounds, A
// Hermitian positive definite, from the Cholesky factor of potrf.
#ifndef NXL_LAPACK_CHOL_PORFS_H
#define NXL_LAPACK_CHOL_PORFS_H

#include "lapack/chol/potrs.h"
#include "lapack/lu/refine.h"

namespace nxl {
namespace lapack {

template <class T> struct HermitianOps {
  bool up;
  idx n;
  const T *a, *af;
  idx lda, ldaf;
  T at(idx i, idx j) const {
    bool stored = up ? i <= j : i >= j;
    if (stored) return i == j ? T(nxl::re(a[i + i * lda])) : a[i + j * lda];
    return nxl::conj(a[j + i * lda]);
  }
  void residual(const T *x, const T *b, T *r) const {
    for (idx i = 0; i < n; ++i) r[i] = b[i];
    blas::hemv(up ? 'U' : 'L', n, T(-1), a, lda, x, 1, T(1), r, 1);
  }
  void abs_product(const T *x, real_t<T> *w) const {
    for (idx i = 0; i < n; ++i) {
      real_t<T> s = 0;
      for (idx k = 0; k < n; ++k) s += abs1(at(i, k)) * abs1(x[k]);
      w[i] += s;
    }
  }
  void solve(T *v, bool) const { potrs_work<T>(up, n, 1, af, ldaf, v, n); }
};

template <class T>
void porfs(const char *uplo, const idx *pn, const idx *pnrhs, const T *a, const idx *plda, const T *af,
           const idx *pldaf, const T *b, const idx *pldb, T *x, const idx *pldx, real_t<T> *ferr, real_t<T> *berr,
           T *, void *, idx *info) {
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ldaf = *pldaf, ldb = *pldb, ldx = *pldx;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("PORFS", 1, info);
  if (n < 0) return report<T>("PORFS", 2, info);
  if (nrhs < 0) return report<T>("PORFS", 3, info);
  if (lda < imax(1, n)) return report<T>("PORFS", 5, info);
  if (ldaf < imax(1, n)) return report<T>("PORFS", 7, info);
  if (ldb < imax(1, n)) return report<T>("PORFS", 9, info);
  if (ldx < imax(1, n)) return report<T>("PORFS", 11, info);
  HermitianOps<T> ops{up, n, a, af, lda, ldaf};
  refine<T>(n, nrhs, b, ldb, x, ldx, ferr, berr, ops, "PORFS", info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_CHOL_PORFS_H
