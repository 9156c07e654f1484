// gbrfs: refinement of the solution of op(A) X = B for a band matrix, with
// forward and backward error bounds, from the factors of gbtrf.
#ifndef NXL_LAPACK_BAND_GBRFS_H
#define NXL_LAPACK_BAND_GBRFS_H

#include "lapack/band/gbtrs.h"
#include "lapack/lu/refine.h"

namespace nxl {
namespace lapack {

template <class T> struct BandOps {
  char tr;  // 'N', 'T' or 'C'
  idx n, kl, ku;
  const T *ab, *afb;
  idx ldab, ldafb;
  const idx *ipiv;
  T a(idx i, idx j) const { return ab[ku + i - j + j * ldab]; }
  idx lo(idx j) const { return imax(0, j - ku); }
  idx hi(idx j) const { return imin(n, j + kl + 1); }
  void residual(const T *x, const T *b, T *r) const {
    for (idx i = 0; i < n; ++i) r[i] = b[i];
    if (tr == 'N') {
      for (idx j = 0; j < n; ++j) {
        T xj = x[j];
        for (idx i = lo(j); i < hi(j); ++i) r[i] -= a(i, j) * xj;
      }
    } else {
      for (idx j = 0; j < n; ++j) {
        T s = 0;
        for (idx i = lo(j); i < hi(j); ++i) s += op_conj(a(i, j), tr == 'C') * x[i];
        r[j] -= s;
      }
    }
  }
  void abs_product(const T *x, real_t<T> *w) const {
    if (tr == 'N') {
      for (idx j = 0; j < n; ++j) {
        real_t<T> xj = abs1(x[j]);
        for (idx i = lo(j); i < hi(j); ++i) w[i] += abs1(a(i, j)) * xj;
      }
    } else {
      for (idx j = 0; j < n; ++j) {
        real_t<T> s = 0;
        for (idx i = lo(j); i < hi(j); ++i) s += abs1(a(i, j)) * abs1(x[i]);
        w[j] += s;
      }
    }
  }
  void solve(T *v, bool transposed) const {
    char t = tr;
    if (transposed) t = tr == 'N' ? (is_complex_v<T> ? 'C' : 'T') : 'N';
    gbtrs_vec<T>(t, n, kl, ku, afb, ldafb, ipiv, v);
  }
};

template <class T>
void gbrfs(const char *trans, const idx *pn, const idx *pkl, const idx *pku, const idx *pnrhs, const T *ab,
           const idx *pldab, const T *afb, const idx *pldafb, const idx *ipiv, const T *b, const idx *pldb, T *x,
           const idx *pldx, real_t<T> *ferr, real_t<T> *berr, T *, void *, idx *info) {
  idx n = *pn, kl = *pkl, ku = *pku, nrhs = *pnrhs, ldab = *pldab, ldafb = *pldafb, ldb = *pldb, ldx = *pldx;
  *info = 0;
  char tr = upper(trans);
  if (tr != 'N' && tr != 'T' && tr != 'C') return report<T>("GBRFS", 1, info);
  if (n < 0) return report<T>("GBRFS", 2, info);
  if (kl < 0) return report<T>("GBRFS", 3, info);
  if (ku < 0) return report<T>("GBRFS", 4, info);
  if (nrhs < 0) return report<T>("GBRFS", 5, info);
  if (ldab < kl + ku + 1) return report<T>("GBRFS", 7, info);
  if (ldafb < 2 * kl + ku + 1) return report<T>("GBRFS", 9, info);
  if (ldb < imax(1, n)) return report<T>("GBRFS", 12, info);
  if (ldx < imax(1, n)) return report<T>("GBRFS", 14, info);
  if (!is_complex_v<T> && tr == 'C') tr = 'T';
  BandOps<T> ops{tr, n, kl, ku, ab, afb, ldab, ldafb, ipiv};
  refine<T>(n, nrhs, b, ldb, x, ldx, ferr, berr, ops, "GBRFS", info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_BAND_GBRFS_H
