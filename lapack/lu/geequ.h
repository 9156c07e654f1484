// Equilibration factors: geequ/geequb give row and column scalings that make
// the largest entry of every row and column of diag(r) A diag(c) about one
// (geequb restricts them to powers of the radix); poequ/poequb give the
// symmetric scaling s(i) = 1/sqrt(a(i,i)).
#ifndef NXL_LAPACK_LU_GEEQU_H
#define NXL_LAPACK_LU_GEEQU_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

template <class T> inline real_t<T> cabs1(T x) { return abs1(x); }

// The scalings of an m x n matrix whose entries have magnitudes mag(i, j)
// over the rows [lo, hi) that rows(j, lo, hi) gives for each column.
template <class T, bool radix_powers, class Mag, class Rows>
void equilibrate_by_columns(idx m, idx n, Mag mag, Rows rows, real_t<T> *r, real_t<T> *c, real_t<T> *rowcnd,
                            real_t<T> *colcnd, real_t<T> *amax, idx *info) {
  using R = real_t<T>;
  if (m == 0 || n == 0) {
    *rowcnd = 1;
    *colcnd = 1;
    *amax = 0;
    return;
  }
  const R smlnum = lamch<R>('S'), bignum = R(1) / smlnum, radix = lamch<R>('B');
  const R logr = std::log(radix);
  auto to_power = [&](R v) { return std::pow(radix, std::trunc(std::log(v) / logr)); };
  for (idx i = 0; i < m; ++i) r[i] = 0;
  for (idx j = 0; j < n; ++j) {
    idx lo, hi;
    rows(j, lo, hi);
    for (idx i = lo; i < hi; ++i) r[i] = std::max(r[i], mag(i, j));
  }
  if (radix_powers)
    for (idx i = 0; i < m; ++i)
      if (r[i] > R(0)) r[i] = to_power(r[i]);
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
    idx lo, hi;
    rows(j, lo, hi);
    for (idx i = lo; i < hi; ++i) v = std::max(v, mag(i, j) * r[i]);
    if (radix_powers && v > R(0)) v = to_power(v);
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

template <class T, bool radix_powers>
void geequ_work(const char *stem, idx m, idx n, const T *a, idx lda, real_t<T> *r, real_t<T> *c, real_t<T> *rowcnd,
                real_t<T> *colcnd, real_t<T> *amax, idx *info) {
  *info = 0;
  if (m < 0) return report<T>(stem, 1, info);
  if (n < 0) return report<T>(stem, 2, info);
  if (lda < imax(1, m)) return report<T>(stem, 4, info);
  equilibrate_by_columns<T, radix_powers>(
      m, n, [&](idx i, idx j) { return cabs1(a[i + j * lda]); }, [&](idx, idx &lo, idx &hi) { lo = 0; hi = m; }, r,
      c, rowcnd, colcnd, amax, info);
}

template <class T>
void geequ(const idx *m, const idx *n, const T *a, const idx *lda, real_t<T> *r, real_t<T> *c, real_t<T> *rowcnd,
           real_t<T> *colcnd, real_t<T> *amax, idx *info) {
  geequ_work<T, false>("GEEQU", *m, *n, a, *lda, r, c, rowcnd, colcnd, amax, info);
}
template <class T>
void geequb(const idx *m, const idx *n, const T *a, const idx *lda, real_t<T> *r, real_t<T> *c, real_t<T> *rowcnd,
            real_t<T> *colcnd, real_t<T> *amax, idx *info) {
  geequ_work<T, true>("GEEQUB", *m, *n, a, *lda, r, c, rowcnd, colcnd, amax, info);
}

template <class T, bool radix_powers>
void poequ_work(const char *stem, idx n, const T *a, idx lda, real_t<T> *s, real_t<T> *scond, real_t<T> *amax,
                idx *info) {
  using R = real_t<T>;
  *info = 0;
  if (n < 0) return report<T>(stem, 1, info);
  if (lda < imax(1, n)) return report<T>(stem, 3, info);
  if (n == 0) {
    *scond = 1;
    *amax = 0;
    return;
  }
  R smin = nxl::re(a[0]), mx = smin;
  for (idx i = 0; i < n; ++i) {
    s[i] = nxl::re(a[i + i * lda]);
    smin = std::min(smin, s[i]);
    mx = std::max(mx, s[i]);
  }
  *amax = mx;
  if (smin <= R(0)) {
    for (idx i = 0; i < n; ++i)
      if (s[i] <= R(0)) {
        *info = i + 1;
        return;
      }
  }
  const R radix = lamch<R>('B'), half_over_log = R(-0.5) / std::log(radix);
  for (idx i = 0; i < n; ++i) {
    if (radix_powers) s[i] = std::pow(radix, std::trunc(half_over_log * std::log(s[i])));
    else s[i] = R(1) / std::sqrt(s[i]);
  }
  *scond = std::sqrt(smin) / std::sqrt(mx);
}

template <class T>
void poequ(const idx *n, const T *a, const idx *lda, real_t<T> *s, real_t<T> *scond, real_t<T> *amax, idx *info) {
  poequ_work<T, false>("POEQU", *n, a, *lda, s, scond, amax, info);
}
template <class T>
void poequb(const idx *n, const T *a, const idx *lda, real_t<T> *s, real_t<T> *scond, real_t<T> *amax, idx *info) {
  poequ_work<T, true>("POEQUB", *n, a, *lda, s, scond, amax, info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_LU_GEEQU_H
