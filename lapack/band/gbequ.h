// Row and column scalings of a band matrix that bring the largest entry of
// every row and column to 1 (gbequ; gbequb in powers of the radix), and their application when worth it
// (laqgb).
#ifndef NXL_LAPACK_BAND_GBEQU_H
#define NXL_LAPACK_BAND_GBEQU_H

#include "lapack/aux/scale.h"
#include "lapack/lu/geequ.h"

namespace nxl {
namespace lapack {

template <class T, bool radix_powers>
void gbequ_work(const char *stem, idx m, idx n, idx kl, idx ku, const T *ab, idx ldab, real_t<T> *r,
                real_t<T> *c, real_t<T> *rowcnd, real_t<T> *colcnd, real_t<T> *amax, idx *info) {
  *info = 0;
  if (m < 0) return report<T>(stem, 1, info);
  if (n < 0) return report<T>(stem, 2, info);
  if (kl < 0) return report<T>(stem, 3, info);
  if (ku < 0) return report<T>(stem, 4, info);
  if (ldab < kl + ku + 1) return report<T>(stem, 6, info);
  equilibrate_by_columns<T, radix_powers>(
      m, n, [&](idx i, idx j) { return abs1(ab[ku + i - j + j * ldab]); },
      [&](idx j, idx &lo, idx &hi) { lo = imax(0, j - ku); hi = imin(m, j + kl + 1); }, r, c, rowcnd, colcnd, amax,
      info);
}

template <class T>
void gbequ(const idx *m, const idx *n, const idx *kl, const idx *ku, const T *ab, const idx *ldab, real_t<T> *r,
           real_t<T> *c, real_t<T> *rowcnd, real_t<T> *colcnd, real_t<T> *amax, idx *info) {
  gbequ_work<T, false>("GBEQU", *m, *n, *kl, *ku, ab, *ldab, r, c, rowcnd, colcnd, amax, info);
}

// The same scalings restricted to powers of the radix, so that applying them
// introduces no rounding error.
template <class T>
void gbequb(const idx *m, const idx *n, const idx *kl, const idx *ku, const T *ab, const idx *ldab, real_t<T> *r,
            real_t<T> *c, real_t<T> *rowcnd, real_t<T> *colcnd, real_t<T> *amax, idx *info) {
  gbequ_work<T, true>("GBEQUB", *m, *n, *kl, *ku, ab, *ldab, r, c, rowcnd, colcnd, amax, info);
}

// Applies the scalings to the band when they are worth it.
template <class T>
void laqgb(const idx *pm, const idx *pn, const idx *pkl, const idx *pku, T *ab, const idx *pldab,
           const real_t<T> *r, const real_t<T> *c, const real_t<T> *rowcnd, const real_t<T> *colcnd,
           const real_t<T> *amax, char *equed) {
  idx m = *pm, kl = *pkl, ku = *pku, ldab = *pldab;
  scale_rows_cols<T>(
      m, *pn, [&](idx i, idx j) -> T & { return ab[ku + i - j + j * ldab]; },
      [&](idx j, idx &lo, idx &hi) { lo = imax(0, j - ku); hi = imin(m, j + kl + 1); }, r, c, rowcnd, colcnd,
      amax, equed);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_BAND_GBEQU_H
