// Matrix copies and fills: lacpy, laset, and the precision conversions
// lag2s/lag2d (general) and lat2s (triangular), which report entries that do
// not fit the single-precision range.
#ifndef NXL_LAPACK_AUX_COPY_H
#define NXL_LAPACK_AUX_COPY_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

// Row range [lo, hi) of column j for the part `u` ('U' upper trapezoid,
// 'L' lower trapezoid, anything else the whole column).
inline void part_rows(char u, idx m, idx j, idx &lo, idx &hi) {
  lo = 0;
  hi = m;
  if (u == 'U') hi = imin(j + 1, m);
  else if (u == 'L') lo = imin(j, m);
}

template <class T>
void lacpy(const char *uplo, const idx *pm, const idx *pn, const T *a, const idx *plda, T *b, const idx *pldb) {
  idx m = *pm, n = *pn, lda = *plda, ldb = *pldb;
  char u = upper(uplo);
  for (idx j = 0; j < n; ++j) {
    idx lo, hi;
    part_rows(u, m, j, lo, hi);
    for (idx i = lo; i < hi; ++i) b[i + j * ldb] = a[i + j * lda];
  }
}

template <class T>
void laset(const char *uplo, const idx *pm, const idx *pn, const T *alpha, const T *beta, T *a, const idx *plda) {
  idx m = *pm, n = *pn, lda = *plda;
  char u = upper(uplo);
  for (idx j = 0; j < n; ++j) {
    idx lo, hi;
    part_rows(u, m, j, lo, hi);
    if (u == 'U') hi = imin(j, m);
    else if (u == 'L') lo = imin(j + 1, m);
    for (idx i = lo; i < hi; ++i) a[i + j * lda] = *alpha;
  }
  for (idx i = 0; i < imin(m, n); ++i) a[i + i * lda] = *beta;
}

// Conversion of the `part` of an m x n matrix from precision S to D (D
// narrower or wider). Narrowing returns 1 when an entry exceeds the target's
// overflow threshold (the copy then stops).
template <class S, class D> idx convert(char part, idx m, idx n, const S *a, idx lda, D *b, idx ldb) {
  using RD = real_t<D>;
  const double rmax = static_cast<double>(std::numeric_limits<RD>::max());
  const bool narrow = sizeof(real_t<D>) < sizeof(real_t<S>);
  for (idx j = 0; j < n; ++j) {
    idx lo, hi;
    part_rows(part, m, j, lo, hi);
    for (idx i = lo; i < hi; ++i) {
      S x = a[i + j * lda];
      if (narrow) {
        double re_ = static_cast<double>(nxl::re(x)), im_ = static_cast<double>(nxl::im(x));
        if (re_ < -rmax || re_ > rmax || im_ < -rmax || im_ > rmax) return 1;
      }
      if constexpr (is_complex_v<D>) b[i + j * ldb] = D(static_cast<RD>(nxl::re(x)), static_cast<RD>(nxl::im(x)));
      else b[i + j * ldb] = static_cast<D>(x);
    }
  }
  return 0;
}

template <class S, class D>
void lag2(const idx *m, const idx *n, const S *a, const idx *lda, D *b, const idx *ldb, idx *info) {
  *info = convert<S, D>(' ', *m, *n, a, *lda, b, *ldb);
}
template <class S, class D>
void lat2(const char *uplo, const idx *n, const S *a, const idx *lda, D *b, const idx *ldb, idx *info) {
  *info = convert<S, D>(upper(uplo), *n, *n, a, *lda, b, *ldb);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_AUX_COPY_H
