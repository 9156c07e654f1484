// Matrix norms: lange (general), lansy (symmetric; complex symmetric for
// complex types), lanhe (Hermitian), lantr (trapezoidal), and the scaled sum
// of squares lassq behind the Frobenius norm. 'M' max |a|, '1'/'O' one-norm,
// 'I' infinity-norm, 'F'/'E' Frobenius norm; NaN entries propagate.
#ifndef NXL_LAPACK_AUX_NORMS_H
#define NXL_LAPACK_AUX_NORMS_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

// Keeps the larger value, NaN winning.
template <class R> inline void take_max(R &acc, R v) {
  if (v > acc || std::isnan(v)) acc = v;
}

// scale^2 sumsq += |x|^2 component by component, without overflow.
template <class R> inline void ssq_add(R &scale, R &sumsq, R v) {
  R a = std::fabs(v);
  if (a == R(0) && !std::isnan(a)) return;
  if (std::isnan(a)) {
    scale = a;
    sumsq = a;
    return;
  }
  if (scale < a) {
    R r = scale / a;
    sumsq = R(1) + sumsq * r * r;
    scale = a;
  } else {
    R r = a / scale;
    sumsq += r * r;
  }
}

template <class T>
void lassq(const idx *pn, const T *x, const idx *pinc, real_t<T> *scale, real_t<T> *sumsq) {
  idx n = *pn, inc = *pinc;
  if (n <= 0) return;
  if (std::isnan(*scale) || std::isnan(*sumsq)) return;
  const T *p = x + vec_start(n, inc);
  for (idx i = 0; i < n; ++i, p += inc) {
    ssq_add(*scale, *sumsq, nxl::re(*p));
    if constexpr (is_complex_v<T>) ssq_add(*scale, *sumsq, nxl::im(*p));
  }
}

// Norm of an m x n matrix whose entries come from get(i, j) over the rows
// [lo(j), hi(j)) of each column; `work` holds m row sums for 'I'.
template <class T, class Get, class Rows>
real_t<T> norm_by_columns(char norm, idx m, idx n, Get get, Rows rows, real_t<T> *work) {
  using R = real_t<T>;
  R v = 0;
  if (norm == 'M') {
    for (idx j = 0; j < n; ++j) {
      idx lo, hi;
      rows(j, lo, hi);
      for (idx i = lo; i < hi; ++i) take_max(v, absv(get(i, j)));
    }
  } else if (norm == 'O' || norm == '1') {
    for (idx j = 0; j < n; ++j) {
      idx lo, hi;
      rows(j, lo, hi);
      R s = 0;
      for (idx i = lo; i < hi; ++i) s += absv(get(i, j));
      take_max(v, s);
    }
  } else if (norm == 'I') {
    R local[1];
    R *w = work ? work : local;
    if (!work && m > 1) {
      // No workspace: recompute each row sum.
      for (idx i = 0; i < m; ++i) {
        R s = 0;
        for (idx j = 0; j < n; ++j) {
          idx lo, hi;
          rows(j, lo, hi);
          if (i >= lo && i < hi) s += absv(get(i, j));
        }
        take_max(v, s);
      }
      return v;
    }
    for (idx i = 0; i < m; ++i) w[i] = 0;
    for (idx j = 0; j < n; ++j) {
      idx lo, hi;
      rows(j, lo, hi);
      for (idx i = lo; i < hi; ++i) w[i] += absv(get(i, j));
    }
    for (idx i = 0; i < m; ++i) take_max(v, w[i]);
  } else if (norm == 'F' || norm == 'E') {
    R scale = 0, sumsq = 1;
    for (idx j = 0; j < n; ++j) {
      idx lo, hi;
      rows(j, lo, hi);
      for (idx i = lo; i < hi; ++i) {
        T x = get(i, j);
        ssq_add(scale, sumsq, nxl::re(x));
        if constexpr (is_complex_v<T>) ssq_add(scale, sumsq, nxl::im(x));
      }
    }
    v = scale * std::sqrt(sumsq);
  }
  return v;
}

template <class T>
real_t<T> lange(const char *norm, const idx *pm, const idx *pn, const T *a, const idx *plda, real_t<T> *work) {
  idx m = *pm, n = *pn, lda = *plda;
  if (imin(m, n) <= 0) return 0;
  auto get = [&](idx i, idx j) { return a[i + j * lda]; };
  auto rows = [&](idx, idx &lo, idx &hi) { lo = 0; hi = m; };
  return norm_by_columns<T>(upper(norm), m, n, get, rows, work);
}

// Symmetric (herm = false) or Hermitian (herm = true) norm from one triangle.
template <class T, bool herm>
real_t<T> lan_sym(const char *norm, const char *uplo, idx n, const T *a, idx lda, real_t<T> *work) {
  if (n <= 0) return 0;
  bool up = same(uplo, 'U');
  auto get = [&](idx i, idx j) -> T {
    bool stored = up ? i <= j : i >= j;
    T x = stored ? a[i + j * lda] : a[j + i * lda];
    if (herm) {
      if (i == j) return T(nxl::re(x));
      if (!stored) return nxl::conj(x);
    }
    return x;
  };
  auto rows = [&](idx, idx &lo, idx &hi) { lo = 0; hi = n; };
  char nm = upper(norm);
  // The one- and infinity-norms of a symmetric matrix agree.
  if (nm == 'I') nm = 'O';
  return norm_by_columns<T>(nm, n, n, get, rows, work);
}

template <class T>
real_t<T> lansy(const char *norm, const char *uplo, const idx *n, const T *a, const idx *lda, real_t<T> *work) {
  return lan_sym<T, false>(norm, uplo, *n, a, *lda, work);
}
template <class T>
real_t<T> lanhe(const char *norm, const char *uplo, const idx *n, const T *a, const idx *lda, real_t<T> *work) {
  return lan_sym<T, true>(norm, uplo, *n, a, *lda, work);
}

template <class T>
real_t<T> lantr(const char *norm, const char *uplo, const char *diag, const idx *pm, const idx *pn, const T *a,
                const idx *plda, real_t<T> *work) {
  idx m = *pm, n = *pn, lda = *plda;
  if (imin(m, n) <= 0) return 0;
  bool up = same(uplo, 'U'), unit = same(diag, 'U');
  auto get = [&](idx i, idx j) -> T { return (unit && i == j) ? T(1) : a[i + j * lda]; };
  auto rows = [&](idx j, idx &lo, idx &hi) {
    if (up) { lo = 0; hi = imin(j + 1, m); }
    else { lo = imin(j, m); hi = m; }
  };
  return norm_by_columns<T>(upper(norm), m, n, get, rows, work);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_AUX_NORMS_H
