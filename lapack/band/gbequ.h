// Row and column scalings of a band matrix that bring the largest entry of
// every row and column to 1 (gbequ), and their application when worth it
// (laqgb).
#ifndef NXL_LAPACK_BAND_GBEQU_H
#define NXL_LAPACK_BAND_GBEQU_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

template <class T>
void gbequ(const idx *pm, const idx *pn, const idx *pkl, const idx *pku, const T *ab, const idx *pldab,
           real_t<T> *r, real_t<T> *c, real_t<T> *rowcnd, real_t<T> *colcnd, real_t<T> *amax, idx *info) {
  using R = real_t<T>;
  idx m = *pm, n = *pn, kl = *pkl, ku = *pku, ldab = *pldab;
  *info = 0;
  if (m < 0) return report<T>("GBEQU", 1, info);
  if (n < 0) return report<T>("GBEQU", 2, info);
  if (kl < 0) return report<T>("GBEQU", 3, info);
  if (ku < 0) return report<T>("GBEQU", 4, info);
  if (ldab < kl + ku + 1) return report<T>("GBEQU", 6, info);
  if (m == 0 || n == 0) {
    *rowcnd = 1;
    *colcnd = 1;
    *amax = 0;
    return;
  }
  const R smlnum = lamch<R>('S'), bignum = R(1) / smlnum;
  auto at = [&](idx i, idx j) { return abs1(ab[ku + i - j + j * ldab]); };
  auto for_band = [&](idx j, auto f) {
    for (idx i = imax(0, j - ku); i <= imin(m - 1, j + kl); ++i) f(i);
  };
  for (idx i = 0; i < m; ++i) r[i] = 0;
  for (idx j = 0; j < n; ++j) for_band(j, [&](idx i) { r[i] = std::max(r[i], at(i, j)); });
  R rmin = bignum, rmax = 0;
  for (idx i = 0; i < m; ++i) {
    rmax = std::max(rmax, r[i]);
    rmin = std::min(rmin, r[i]);
  }
  *amax = rmax;
  if (rmin == R(0)) {
    for (idx i = 0; i < m; ++i)
      if (r[i] == R(0)) {
        *info = i + 1;
        return;
      }
  }
  for (idx i = 0; i < m; ++i) r[i] = R(1) / std::min(std::max(r[i], smlnum), bignum);
  *rowcnd = std::max(rmin, smlnum) / std::min(rmax, bignum);
  for (idx j = 0; j < n; ++j) {
    R v = 0;
    for_band(j, [&](idx i) { v = std::max(v, at(i, j) * r[i]); });
    c[j] = v;
  }
  R cmin = bignum, cmax = 0;
  for (idx j = 0; j < n; ++j) {
    cmin = std::min(cmin, c[j]);
    cmax = std::max(cmax, c[j]);
  }
  if (cmin == R(0)) {
    for (idx j = 0; j < n; ++j)
      if (c[j] == R(0)) {
        *info = m + j + 1;
        return;
      }
  }
  for (idx j = 0; j < n; ++j) c[j] = R(1) / std::min(std::max(c[j], smlnum), bignum);
  *colcnd = std::max(cmin, smlnum) / std::min(cmax, bignum);
}

// Scales rows by r when the row ratio is small or amax is near the
// over/underflow limits, columns by c when the column ratio is small.
template <class T>
void laqgb(const idx *pm, const idx *pn, const idx *pkl, const idx *pku, T *ab, const idx *pldab,
           const real_t<T> *r, const real_t<T> *c, const real_t<T> *rowcnd, const real_t<T> *colcnd,
           const real_t<T> *amax, char *equed) {
  using R = real_t<T>;
  idx m = *pm, n = *pn, kl = *pkl, ku = *pku, ldab = *pldab;
  if (m <= 0 || n <= 0) {
    *equed = 'N';
    return;
  }
  const R thresh = R(0.1);
  R small = lamch<R>('S') / lamch<R>('P'), large = R(1) / small;
  bool rows = !(*rowcnd >= thresh && *amax >= small && *amax <= large);
  bool cols = *colcnd < thresh;
  if (rows || cols)
    for (idx j = 0; j < n; ++j)
      for (idx i = imax(0, j - ku); i <= imin(m - 1, j + kl); ++i) {
        R f = R(1);
        if (rows) f *= r[i];
        if (cols) f *= c[j];
        ab[ku + i - j + j * ldab] *= f;
      }
  *equed = rows ? (cols ? 'B' : 'R') : (cols ? 'C' : 'N');
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_BAND_GBEQU_H
