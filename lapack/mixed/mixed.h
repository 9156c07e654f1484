// Mixed-precision solvers (dsgesv, zcgesv, dsposv, zcposv): factor in single
// precision, refine the solution in double precision until the residual
// satisfies |r| <= |x| |A|_inf eps sqrt(n) for every right-hand side (at
// most 30 steps); otherwise, or when A or B do not fit single precision or
// the single factorization fails, solve in double precision. iter reports
// the steps taken or the reason of the fall-back (-2 conversion overflow,
// -3 single factorization failed, -31 no convergence).
#ifndef NXL_LAPACK_MIXED_MIXED_H
#define NXL_LAPACK_MIXED_MIXED_H

#include "lapack/aux/copy.h"
#include "lapack/aux/norms.h"
#include "lapack/chol/potrs.h"
#include "lapack/lu/gesv.h"

namespace nxl {
namespace lapack {

template <class T> struct narrow { using type = float; };
template <> struct narrow<std::complex<double>> { using type = std::complex<float>; };
template <class T> using narrow_t = typename narrow<T>::type;
template <class T> struct wide { using type = double; };
template <> struct wide<std::complex<float>> { using type = std::complex<double>; };
template <class T> using wide_t = typename wide<T>::type;

template <class T>
void lag2_down(const idx *m, const idx *n, const T *a, const idx *lda, narrow_t<T> *b, const idx *ldb, idx *info) {
  lag2<T, narrow_t<T>>(m, n, a, lda, b, ldb, info);
}
template <class T>
void lag2_up(const idx *m, const idx *n, const T *a, const idx *lda, wide_t<T> *b, const idx *ldb, idx *info) {
  lag2<T, wide_t<T>>(m, n, a, lda, b, ldb, info);
}
template <class T>
void lat2_down(const char *uplo, const idx *n, const T *a, const idx *lda, narrow_t<T> *b, const idx *ldb,
               idx *info) {
  lat2<T, narrow_t<T>>(uplo, n, a, lda, b, ldb, info);
}

// The shared refinement loop; `spd` selects Cholesky, else LU.
template <class T, bool spd>
void mixed_solve(const char *uplo, idx n, idx nrhs, T *a, idx lda, idx *ipiv, const T *b, idx ldb, T *x, idx ldx,
                 T *work, narrow_t<T> *swork, idx *iter, idx *info) {
  using R = real_t<T>;
  using S = narrow_t<T>;
  const idx itermax = 30;
  bool up = same(uplo, 'U');
  *iter = 0;
  if (n == 0) return;
  Work<R> rs(n);
  R anrm = spd ? lan_sym<T, is_complex_v<T>>("I", uplo, n, a, lda, rs.get())
               : lange<T>("I", &n, &n, a, &lda, rs.get());
  const R eps = lamch<R>('E'), cte = anrm * eps * std::sqrt(R(n));
  S *sa = swork, *sx = swork + n * n;
  idx lds = n;
  auto fallback = [&]() {
    if (spd) potrf<T>(uplo, &n, a, &lda, info);
    else getrf<T>(&n, &n, a, &lda, ipiv, info);
    if (*info != 0) return;
    lacpy<T>("All", &n, &nrhs, b, &ldb, x, &ldx);
    if (spd) potrs_work<T>(up, n, nrhs, a, lda, x, ldx);
    else getrs_work<T>('N', n, nrhs, a, lda, ipiv, x, ldx);
  };
  auto residual = [&]() {
    lacpy<T>("All", &n, &nrhs, b, &ldb, work, &n);
    if (spd) {
      blas::hemm('L', up ? 'U' : 'L', n, nrhs, T(-1), a, lda, x, ldx, T(1), work, n);
    } else {
      blas::gemm('N', 'N', n, nrhs, n, T(-1), a, lda, x, ldx, T(1), work, n);
    }
  };
  auto converged = [&]() {
    for (idx j = 0; j < nrhs; ++j) {
      R xn = abs1(x[blas::iamax(n, x + j * ldx, 1) - 1 + j * ldx]);
      R rn = abs1(work[blas::iamax(n, work + j * n, 1) - 1 + j * n]);
      if (!(rn <= xn * cte)) return false;
    }
    return true;
  };
  auto single_solve = [&]() {
    if (spd) potrs_work<S>(up, n, nrhs, sa, lds, sx, lds);
    else getrs_work<S>('N', n, nrhs, sa, lds, ipiv, sx, lds);
  };
  idx bad = convert<T, S>(' ', n, nrhs, b, ldb, sx, lds);
  if (bad) {
    *iter = -2;
    return fallback();
  }
  bad = spd ? convert<T, S>(up ? 'U' : 'L', n, n, a, lda, sa, lds) : convert<T, S>(' ', n, n, a, lda, sa, lds);
  if (bad) {
    *iter = -2;
    return fallback();
  }
  idx sinfo = 0;
  if (spd) potrf<S>(uplo, &n, sa, &lds, &sinfo);
  else getrf<S>(&n, &n, sa, &lds, ipiv, &sinfo);
  if (sinfo != 0) {
    *iter = -3;
    return fallback();
  }
  single_solve();
  convert<S, T>(' ', n, nrhs, sx, lds, x, ldx);
  residual();
  if (converged()) {
    *iter = 0;
    return;
  }
  for (idx it = 1; it <= itermax; ++it) {
    if (convert<T, S>(' ', n, nrhs, work, n, sx, lds)) {
      *iter = -2;
      return fallback();
    }
    single_solve();
    for (idx j = 0; j < nrhs; ++j)
      for (idx i = 0; i < n; ++i) {
        S v = sx[i + j * lds];
        if constexpr (is_complex_v<T>) x[i + j * ldx] += T(nxl::re(v), nxl::im(v));
        else x[i + j * ldx] += T(v);
      }
    residual();
    if (converged()) {
      *iter = it;
      return;
    }
  }
  *iter = -(itermax + 1);
  fallback();
}

template <class T>
void mixed_gesv_checked(const idx *pn, const idx *pnrhs, T *a, const idx *plda, idx *ipiv, const T *b,
                        const idx *pldb, T *x, const idx *pldx, T *work, narrow_t<T> *swork, idx *iter, idx *info) {
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ldb = *pldb, ldx = *pldx;
  const char *stem = is_complex_v<T> ? "CGESV" : "SGESV";
  *info = 0;
  *iter = 0;
  if (n < 0) return report<T>(stem, 1, info);
  if (nrhs < 0) return report<T>(stem, 2, info);
  if (lda < imax(1, n)) return report<T>(stem, 4, info);
  if (ldb < imax(1, n)) return report<T>(stem, 7, info);
  if (ldx < imax(1, n)) return report<T>(stem, 9, info);
  mixed_solve<T, false>("L", n, nrhs, a, lda, ipiv, b, ldb, x, ldx, work, swork, iter, info);
}
template <class T>
void mixed_posv_checked(const char *uplo, const idx *pn, const idx *pnrhs, T *a, const idx *plda, const T *b,
                        const idx *pldb, T *x, const idx *pldx, T *work, narrow_t<T> *swork, idx *iter, idx *info) {
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ldb = *pldb, ldx = *pldx;
  const char *stem = is_complex_v<T> ? "CPOSV" : "SPOSV";
  *info = 0;
  *iter = 0;
  if (!same(uplo, 'U') && !same(uplo, 'L')) return report<T>(stem, 1, info);
  if (n < 0) return report<T>(stem, 2, info);
  if (nrhs < 0) return report<T>(stem, 3, info);
  if (lda < imax(1, n)) return report<T>(stem, 5, info);
  if (ldb < imax(1, n)) return report<T>(stem, 7, info);
  if (ldx < imax(1, n)) return report<T>(stem, 9, info);
  mixed_solve<T, true>(uplo, n, nrhs, a, lda, nullptr, b, ldb, x, ldx, work, swork, iter, info);
}

// Exported forms: the real ones without rwork, the complex ones with it.
template <class T>
void mixed_gesv(const idx *n, const idx *nrhs, T *a, const idx *lda, idx *ipiv, const T *b, const idx *ldb, T *x,
                const idx *ldx, T *work, narrow_t<T> *swork, idx *iter, idx *info) {
  mixed_gesv_checked<T>(n, nrhs, a, lda, ipiv, b, ldb, x, ldx, work, swork, iter, info);
}
template <class T>
void mixed_gesv_c(const idx *n, const idx *nrhs, T *a, const idx *lda, idx *ipiv, const T *b, const idx *ldb, T *x,
                  const idx *ldx, T *work, narrow_t<T> *swork, real_t<T> *, idx *iter, idx *info) {
  mixed_gesv_checked<T>(n, nrhs, a, lda, ipiv, b, ldb, x, ldx, work, swork, iter, info);
}
template <class T>
void mixed_posv(const char *uplo, const idx *n, const idx *nrhs, T *a, const idx *lda, const T *b, const idx *ldb,
                T *x, const idx *ldx, T *work, narrow_t<T> *swork, idx *iter, idx *info) {
  mixed_posv_checked<T>(uplo, n, nrhs, a, lda, b, ldb, x, ldx, work, swork, iter, info);
}
template <class T>
void mixed_posv_c(const char *uplo, const idx *n, const idx *nrhs, T *a, const idx *lda, const T *b, const idx *ldb,
                  T *x, const idx *ldx, T *work, narrow_t<T> *swork, real_t<T> *, idx *iter, idx *info) {
  mixed_posv_checked<T>(uplo, n, nrhs, a, lda, b, ldb, x, ldx, work, swork, iter, info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_MIXED_MIXED_H
