// gerfs: refinement of the solution of op(A) X = B with error bounds, from
// the LU factors of getrf.
#ifndef NXL_LAPACK_LU_GERFS_H
#define NXL_LAPACK_LU_GERFS_H

#include "lapack/lu/getrs.h"
#include "lapack/lu/refine.h"

namespace nxl {
namespace lapack {

template <class T> struct GeneralOps {
  char tr;  // 'N', 'T' or 'C'
  idx n;
  const T *a, *af;
  idx lda, ldaf;
  const idx *ipiv;
  void residual(const T *x, const T *b, T *r) const {
    for (idx i = 0; i < n; ++i) r[i] = b[i];
    blas::gemv(tr, n, n, T(-1), a, lda, x, 1, T(1), r, 1);
  }
  void abs_product(const T *x, real_t<T> *w) const {
    if (tr == 'N') {
      for (idx k = 0; k < n; ++k) {
        real_t<T> xk = abs1(x[k]);
        for (idx i = 0; i < n; ++i) w[i] += abs1(a[i + k * lda]) * xk;
      }
    } else {
      for (idx i = 0; i < n; ++i) {
        real_t<T> s = 0;
        for (idx k = 0; k < n; ++k) s += abs1(a[k + i * lda]) * abs1(x[k]);
        w[i] += s;
      }
    }
  }
  void solve(T *v, bool transposed) const {
    char t = tr;
    if (transposed) t = tr == 'N' ? (is_complex_v<T> ? 'C' : 'T') : 'N';
    getrs_work<T>(t, n, 1, af, ldaf, ipiv, v, n);
  }
};

template <class T>
void gerfs(const char *trans, const idx *pn, const idx *pnrhs, const T *a, const idx *plda, const T *af,
           const idx *pldaf, const idx *ipiv, const T *b, const idx *pldb, T *x, const idx *pldx, real_t<T> *ferr,
           real_t<T> *berr, T *, void *, idx *info) {
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ldaf = *pldaf, ldb = *pldb, ldx = *pldx;
  *info = 0;
  char tr = upper(trans);
  if (tr != 'N' && tr != 'T' && tr != 'C') return report<T>("GERFS", 1, info);
  if (n < 0) return report<T>("GERFS", 2, info);
  if (nrhs < 0) return report<T>("GERFS", 3, info);
  if (lda < imax(1, n)) return report<T>("GERFS", 5, info);
  if (ldaf < imax(1, n)) return report<T>("GERFS", 7, info);
  if (ldb < imax(1, n)) return report<T>("GERFS", 10, info);
  if (ldx < imax(1, n)) return report<T>("GERFS", 12, info);
  if (!is_complex_v<T> && tr == 'C') tr = 'T';
  GeneralOps<T> ops{tr, n, a, af, lda, ldaf, ipiv};
  refine<T>(n, nrhs, b, ldb, x, ldx, ferr, berr, ops, "GERFS", info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_LU_GERFS_H
