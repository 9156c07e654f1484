// LU factorization with partial pivoting of an m x n band matrix with kl
// sub- and ku superdiagonals, in band storage with kl extra rows on top for
// the fill-in: entry (i, j) sits in row kl + ku + i - j of column j. U gets
// kl + ku superdiagonals; the multipliers of step j stay below the diagonal
// of column j (rows are not exchanged in them by later steps, so the solves
// apply the interchanges and eliminations step by step).
#ifndef NXL_LAPACK_BAND_GBTRF_H
#define NXL_LAPACK_BAND_GBTRF_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

// Column-by-column elimination; the row interchange and the rank-one update
// touch columns j .. ju only, ju being the last column reached by a pivot
// row so far.
template <class T> void gbtf2_work(idx m, idx n, idx kl, idx ku, T *ab, idx ldab, idx *ipiv, idx *info) {
  using R = real_t<T>;
  *info = 0;
  if (m == 0 || n == 0) return;
  const idx kv = ku + kl;
  // The fill-in rows above the original band start out as zeros.
  for (idx j = 0; j < n; ++j)
    for (idx r = imax(0, kv - j); r < kl; ++r) ab[r + j * ldab] = T(0);
  const R sfmin = lamch<R>('S');
  idx ju = 0;
  const idx kmax = imin(m, n);
  for (idx j = 0; j < kmax; ++j) {
    T *col = ab + kv + j * ldab;  // the diagonal entry of column j
    idx km = imin(kl, m - 1 - j);
    idx p = 0;
    R best = abs1(col[0]);
    for (idx i = 1; i <= km; ++i) {
      R v = abs1(col[i]);
      if (v > best) { best = v; p = i; }
    }
    ipiv[j] = j + p + 1;
    if (col[p] != T(0)) {
      ju = imax(ju, imin(j + ku + p, n - 1));
      if (p != 0) blas::swap(ju - j + 1, col + p, ldab - 1, col, ldab - 1);
      if (km > 0) {
        if (abs1(col[0]) >= sfmin) {
          blas::scal(km, recip(col[0]), col + 1, 1);
        } else {
          for (idx i = 1; i <= km; ++i) col[i] = div(col[i], col[0]);
        }
        if (ju > j)
          blas::geru(km, ju - j, T(-1), col + 1, 1, col + ldab - 1, ldab - 1, col + ldab, ldab - 1);
      }
    } else if (*info == 0) {
      *info = j + 1;
    }
  }
}

// Argument checks shared by gbtrf and gbtf2, then the factorization.
template <class T>
void gb_factor(const char *stem, const idx *pm, const idx *pn, const idx *pkl, const idx *pku, T *ab,
               const idx *pldab, idx *ipiv, idx *info) {
  idx m = *pm, n = *pn, kl = *pkl, ku = *pku, ldab = *pldab;
  *info = 0;
  if (m < 0) return report<T>(stem, 1, info);
  if (n < 0) return report<T>(stem, 2, info);
  if (kl < 0) return report<T>(stem, 3, info);
  if (ku < 0) return report<T>(stem, 4, info);
  if (ldab < 2 * kl + ku + 1) return report<T>(stem, 6, info);
  gbtf2_work<T>(m, n, kl, ku, ab, ldab, ipiv, info);
}

template <class T>
void gbtf2(const idx *m, const idx *n, const idx *kl, const idx *ku, T *ab, const idx *ldab, idx *ipiv, idx *info) {
  gb_factor<T>("GBTF2", m, n, kl, ku, ab, ldab, ipiv, info);
}

template <class T>
void gbtrf(const idx *m, const idx *n, const idx *kl, const idx *ku, T *ab, const idx *ldab, idx *ipiv, idx *info) {
  gb_factor<T>("GBTRF", m, n, kl, ku, ab, ldab, ipiv, info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_BAND_GBTRF_H
