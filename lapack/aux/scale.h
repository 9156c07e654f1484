// Scaling: lascl multiplies a matrix by cto/cfrom in steps that never
// overflow or underflow; laqge and laqsy/laqhe apply row/column
// equilibration factors when they are worth applying.
#ifndef NXL_LAPACK_AUX_SCALE_H
#define NXL_LAPACK_AUX_SCALE_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

template <class T>
void lascl(const char *type, const idx *pkl, const idx *pku, const real_t<T> *pcfrom, const real_t<T> *pcto,
           const idx *pm, const idx *pn, T *a, const idx *plda, idx *info) {
  using R = real_t<T>;
  idx kl = *pkl, ku = *pku, m = *pm, n = *pn, lda = *plda;
  R cfrom = *pcfrom, cto = *pcto;
  char t = upper(type);
  int kind = t == 'G' ? 0 : t == 'L' ? 1 : t == 'U' ? 2 : t == 'H' ? 3 : t == 'B' ? 4 : t == 'Q' ? 5
           : t == 'Z' ? 6 : -1;
  *info = 0;
  if (kind < 0) return report<T>("LASCL", 1, info);
  if (cfrom == R(0) || std::isnan(cfrom)) return report<T>("LASCL", 4, info);
  if (std::isnan(cto)) return report<T>("LASCL", 5, info);
  if (m < 0) return report<T>("LASCL", 6, info);
  if (n < 0 || (kind == 4 && n != m) || (kind == 5 && n != m)) return report<T>("LASCL", 7, info);
  if (kind <= 3 && lda < imax(1, m)) return report<T>("LASCL", 9, info);
  if (kind >= 4) {
    if (kl < 0 || kl > imax(m - 1, 0)) return report<T>("LASCL", 2, info);
    if (ku < 0 || ku > imax(n - 1, 0) || ((kind == 4 || kind == 5) && kl != ku))
      return report<T>("LASCL", 3, info);
    if ((kind == 4 && lda < kl + 1) || (kind == 5 && lda < ku + 1) || (kind == 6 && lda < 2 * kl + ku + 1))
      return report<T>("LASCL", 9, info);
  }
  if (n == 0 || m == 0) return;
  const R smlnum = lamch<R>('S'), bignum = R(1) / smlnum;
  R cfromc = cfrom, ctoc = cto;
  bool done = false;
  while (!done) {
    R cfrom1 = cfromc * smlnum, mul;
    if (cfrom1 == cfromc) {
      // cfromc is infinite: the quotient is a signed zero or NaN.
      mul = ctoc / cfromc;
      done = true;
    } else {
      R cto1 = ctoc / bignum;
      if (cto1 == ctoc) {
        // ctoc is zero or infinite: one multiplication by it.
        mul = ctoc;
        done = true;
        cfromc = R(1);
      } else if (std::fabs(cfrom1) > std::fabs(ctoc) && ctoc != R(0)) {
        mul = smlnum;
        cfromc = cfrom1;
      } else if (std::fabs(cto1) > std::fabs(cfromc)) {
        mul = bignum;
        ctoc = cto1;
      } else {
        mul = ctoc / cfromc;
        done = true;
        if (mul == R(1)) return;
      }
    }
    for (idx j = 0; j < n; ++j) {
      idx lo = 0, hi = m;
      switch (kind) {
        case 1: lo = j; break;
        case 2: hi = imin(j + 1, m); break;
        case 3: hi = imin(j + 2, m); break;
        case 4: lo = 0; hi = imin(kl + 1, n - j); break;            // lower half of a symmetric band
        case 5: lo = imax(ku - j, 0); hi = ku + 1; break;          // upper half of a symmetric band
        case 6: lo = imax(kl + ku - j, kl); hi = imin(2 * kl + ku + 1, kl + ku + m - j); break;
        default: break;
      }
      for (idx i = lo; i < hi; ++i) a[i + j * lda] *= mul;
    }
  }
}

// Ratio of the smallest to the largest of n given scale factors, clamped to
// the safe range; false when one of them is not positive.
template <class R> bool scale_ratio(idx n, const R *s, R *cnd) {
  const R smlnum = lamch<R>('S'), bignum = R(1) / smlnum;
  R mn = bignum, mx = 0;
  for (idx j = 0; j < n; ++j) {
    mn = std::min(mn, s[j]);
    mx = std::max(mx, s[j]);
  }
  if (n > 0 && mn <= R(0)) return false;
  *cnd = n > 0 ? std::max(mn, smlnum) / std::min(mx, bignum) : R(1);
  return true;
}

// Applies row scale r and column scale c to the entries at(i, j) of the rows
// [lo, hi) that rows(j, lo, hi) gives for each column, when the ratios say it
// helps; equed reports 'N', 'R', 'C' or 'B'.
template <class T, class At, class Rows>
void scale_rows_cols(idx m, idx n, At at, Rows rows_of, const real_t<T> *r, const real_t<T> *c,
                     const real_t<T> *rowcnd, const real_t<T> *colcnd, const real_t<T> *amax, char *equed) {
  using R = real_t<T>;
  if (m <= 0 || n <= 0) {
    *equed = 'N';
    return;
  }
  const R thresh = R(0.1);
  R small = lamch<R>('S') / lamch<R>('P'), large = R(1) / small;
  bool rows = !(*rowcnd >= thresh && *amax >= small && *amax <= large);
  bool cols = *colcnd < thresh;
  if (rows || cols)
    for (idx j = 0; j < n; ++j) {
      idx lo, hi;
      rows_of(j, lo, hi);
      for (idx i = lo; i < hi; ++i) {
        R f = R(1);
        if (rows) f *= r[i];
        if (cols) f *= c[j];
        at(i, j) *= f;
      }
    }
  *equed = rows ? (cols ? 'B' : 'R') : (cols ? 'C' : 'N');
}

template <class T>
void laqge(const idx *pm, const idx *pn, T *a, const idx *plda, const real_t<T> *r, const real_t<T> *c,
           const real_t<T> *rowcnd, const real_t<T> *colcnd, const real_t<T> *amax, char *equed) {
  idx m = *pm, lda = *plda;
  scale_rows_cols<T>(
      m, *pn, [&](idx i, idx j) -> T & { return a[i + j * lda]; }, [&](idx, idx &lo, idx &hi) { lo = 0; hi = m; },
      r, c, rowcnd, colcnd, amax, equed);
}

// Symmetric scaling diag(s) A diag(s) of the `uplo` triangle.
template <class T>
void laqsy(const char *uplo, const idx *pn, T *a, const idx *plda, const real_t<T> *s, const real_t<T> *scond,
           const real_t<T> *amax, char *equed) {
  using R = real_t<T>;
  idx n = *pn, lda = *plda;
  if (n <= 0) {
    *equed = 'N';
    return;
  }
  const R thresh = R(0.1);
  R small = lamch<R>('S') / lamch<R>('P'), large = R(1) / small;
  if (*scond >= thresh && *amax >= small && *amax <= large) {
    *equed = 'N';
    return;
  }
  bool up = same(uplo, 'U');
  for (idx j = 0; j < n; ++j) {
    idx lo = up ? 0 : j, hi = up ? j + 1 : n;
    for (idx i = lo; i < hi; ++i) a[i + j * lda] *= s[i] * s[j];
  }
  *equed = 'Y';
}

// Hermitian scaling: as laqsy, the diagonal kept real.
template <class T>
void laqhe(const char *uplo, const idx *pn, T *a, const idx *plda, const real_t<T> *s, const real_t<T> *scond,
           const real_t<T> *amax, char *equed) {
  laqsy<T>(uplo, pn, a, plda, s, scond, amax, equed);
  if (*equed == 'Y')
    for (idx j = 0; j < *pn; ++j) a[j + j * *plda] = T(nxl::re(a[j + j * *plda]));
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_AUX_SCALE_H
