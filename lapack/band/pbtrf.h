// Cholesky factorization of a Hermitian (symmetric) positive definite band
// matrix of bandwidth kd, A = U^H U or L L^H, in band storage: the upper
// band holds A(i, j) at ab[kd + i - j + j ldab], the lower one at
// ab[i - j + j ldab]. Both are full matrices with leading dimension
// ldab - 1 as far as the band reaches, which the blocked algorithm uses to
// run the diagonal blocks, the panel solves and the trailing updates on
// level-3 BLAS; the triangle of each panel that sticks out of the band goes
// through a small work block.
//
// pbstf: the split Cholesky factorization A = S^H S with S upper triangular
// in its leading m = (n + kd) / 2 rows and lower triangular in the others,
// of the same bandwidth as A.
#ifndef NXL_LAPACK_BAND_PBTRF_H
#define NXL_LAPACK_BAND_PBTRF_H

#include "lapack/chol/potrf.h"
#include "lapack/packed/packed.h"

namespace nxl {
namespace lapack {

// One step down the band: the kn entries after the diagonal in row j (upper
// band) or column j (lower band) are divided by ajj and their outer product
// is subtracted from the diagonal block that follows.
template <class T> void band_step(bool up, idx kd, T *ab, idx ldab, idx j, idx kn, real_t<T> ajj) {
  using R = real_t<T>;
  if (kn == 0) return;
  const idx ld1 = ldab - 1;
  if (up) {
    // Row j of U; the update takes its conjugate.
    T *x = ab + kd - 1 + (j + 1) * ldab;
    blas::rscal(kn, R(1) / ajj, x, ld1);
    lacgv(kn, x, ld1);
    blas::her('U', kn, R(-1), x, ld1, ab + kd + (j + 1) * ldab, ld1);
    lacgv(kn, x, ld1);
  } else {
    T *x = ab + 1 + j * ldab;
    blas::rscal(kn, R(1) / ajj, x, 1);
    blas::her('L', kn, R(-1), x, 1, ab + (j + 1) * ldab, ld1);
  }
}

// Unblocked band Cholesky; returns the order of the first minor that is not
// positive definite, 0 on success.
template <class T> idx pbtf2_work(bool up, idx n, idx kd, T *ab, idx ldab) {
  using R = real_t<T>;
  for (idx j = 0; j < n; ++j) {
    T *d = up ? ab + kd + j * ldab : ab + j * ldab;
    R ajj = nxl::re(*d);
    if (!(ajj > R(0))) {
      *d = T(ajj);
      return j + 1;
    }
    ajj = std::sqrt(ajj);
    *d = T(ajj);
    band_step<T>(up, kd, ab, ldab, j, imin(kd, n - j - 1), ajj);
  }
  return 0;
}

// Blocked band Cholesky with panels of nb <= kd columns.
template <class T> idx pbtrf_blocked(bool up, idx n, idx kd, T *ab, idx ldab, idx nb) {
  using R = real_t<T>;
  constexpr idx kMaxNb = 32;
  T w[kMaxNb * kMaxNb];
  const idx ld1 = ldab - 1;
  T *base = up ? ab + kd : ab;
  auto v = [&](idx r, idx c) { return base + r + c * ld1; };
  for (idx i = 0; i < n; i += nb) {
    idx ib = imin(nb, n - i);
    idx ii = potrf_tile<T>(up, ib, v(i, i), ld1);
    if (ii) return i + ii;
    if (i + ib >= n) break;
    idx i2 = imin(kd - ib, n - i - ib), i3 = imin(ib, n - i - kd);
    if (up) {
      if (i2 > 0) {
        blas::trsm('L', 'U', 'C', 'N', ib, i2, T(1), v(i, i), ld1, v(i, i + ib), ld1);
        blas::herk('U', 'C', i2, ib, R(-1), v(i, i + ib), ld1, R(1), v(i + ib, i + ib), ld1);
      }
      if (i3 > 0) {
        // The lower triangle of rows i.., columns i + kd.. lies in the band.
        for (idx q = 0; q < i3; ++q)
          for (idx p = 0; p < ib; ++p) w[p + q * kMaxNb] = p >= q ? *v(i + p, i + kd + q) : T(0);
        blas::trsm('L', 'U', 'C', 'N', ib, i3, T(1), v(i, i), ld1, w, kMaxNb);
        if (i2 > 0)
          blas::gemm('C', 'N', i2, i3, ib, T(-1), v(i, i + ib), ld1, w, kMaxNb, T(1), v(i + ib, i + kd), ld1);
        blas::herk('U', 'C', i3, ib, R(-1), w, kMaxNb, R(1), v(i + kd, i + kd), ld1);
        for (idx q = 0; q < i3; ++q)
          for (idx p = q; p < ib; ++p) *v(i + p, i + kd + q) = w[p + q * kMaxNb];
      }
    } else {
      if (i2 > 0) {
        blas::trsm('R', 'L', 'C', 'N', i2, ib, T(1), v(i, i), ld1, v(i + ib, i), ld1);
        blas::herk('L', 'N', i2, ib, R(-1), v(i + ib, i), ld1, R(1), v(i + ib, i + ib), ld1);
      }
      if (i3 > 0) {
        // The upper triangle of rows i + kd.., columns i.. lies in the band.
        for (idx q = 0; q < ib; ++q)
          for (idx p = 0; p < i3; ++p) w[p + q * kMaxNb] = p <= q ? *v(i + kd + p, i + q) : T(0);
        blas::trsm('R', 'L', 'C', 'N', i3, ib, T(1), v(i, i), ld1, w, kMaxNb);
        if (i2 > 0)
          blas::gemm('N', 'C', i3, i2, ib, T(-1), w, kMaxNb, v(i + ib, i), ld1, T(1), v(i + kd, i + ib), ld1);
        blas::herk('L', 'N', i3, ib, R(-1), w, kMaxNb, R(1), v(i + kd, i + kd), ld1);
        for (idx q = 0; q < ib; ++q)
          for (idx p = 0; p <= imin(q, i3 - 1); ++p) *v(i + kd + p, i + q) = w[p + q * kMaxNb];
      }
    }
  }
  return 0;
}

template <class T> idx pbtrf_work(bool up, idx n, idx kd, T *ab, idx ldab) {
  idx nb = imin(32, ilaenv_t<T>(1, "PBTRF", up ? "U" : "L", n, kd, -1, -1));
  if (kd < 64 || nb <= 1 || nb > kd) return pbtf2_work<T>(up, n, kd, ab, ldab);
  return pbtrf_blocked<T>(up, n, kd, ab, ldab, nb);
}

template <class T> idx pb_check(const char *stem, const char *uplo, idx n, idx kd, idx ldab, idx *info) {
  *info = 0;
  if (!same(uplo, 'U') && !same(uplo, 'L')) report<T>(stem, 1, info);
  else if (n < 0) report<T>(stem, 2, info);
  else if (kd < 0) report<T>(stem, 3, info);
  else if (ldab < kd + 1) report<T>(stem, 5, info);
  return *info;
}

template <class T> void pbtrf(const char *uplo, const idx *n, const idx *kd, T *ab, const idx *ldab, idx *info) {
  if (pb_check<T>("PBTRF", uplo, *n, *kd, *ldab, info)) return;
  *info = pbtrf_work<T>(same(uplo, 'U'), *n, *kd, ab, *ldab);
}
template <class T> void pbtf2(const char *uplo, const idx *n, const idx *kd, T *ab, const idx *ldab, idx *info) {
  if (pb_check<T>("PBTF2", uplo, *n, *kd, *ldab, info)) return;
  *info = pbtf2_work<T>(same(uplo, 'U'), *n, *kd, ab, *ldab);
}

template <class T> void pbstf(const char *uplo, const idx *pn, const idx *pkd, T *ab, const idx *pldab, idx *info) {
  using R = real_t<T>;
  idx n = *pn, kd = *pkd, ldab = *pldab;
  if (pb_check<T>("PBSTF", uplo, n, kd, ldab, info)) return;
  bool up = same(uplo, 'U');
  const idx ld1 = imax(1, ldab - 1), m = (n + kd) / 2;
  auto diag = [&](idx j) -> T & { return up ? ab[kd + j * ldab] : ab[j * ldab]; };
  auto pivot = [&](idx j, R &ajj) {
    ajj = nxl::re(diag(j));
    if (!(ajj > R(0))) {
      diag(j) = T(ajj);
      *info = j + 1;
      return false;
    }
    ajj = std::sqrt(ajj);
    diag(j) = T(ajj);
    return true;
  };
  R ajj;
  // Rows m.. of S, from the bottom: each removes its column above the diagonal.
  for (idx j = n - 1; j >= m; --j) {
    if (!pivot(j, ajj)) return;
    idx km = imin(j, kd);
    if (km == 0) continue;
    if (up) {
      T *x = ab + kd - km + j * ldab;
      blas::rscal(km, R(1) / ajj, x, 1);
      blas::her('U', km, R(-1), x, 1, ab + kd + (j - km) * ldab, ld1);
    } else {
      T *x = ab + km + (j - km) * ldab;
      blas::rscal(km, R(1) / ajj, x, ld1);
      lacgv(km, x, ld1);
      blas::her('L', km, R(-1), x, ld1, ab + (j - km) * ldab, ld1);
      lacgv(km, x, ld1);
    }
  }
  // Rows 0..m-1 of S, from the top, within the leading m x m block.
  for (idx j = 0; j < m; ++j) {
    if (!pivot(j, ajj)) return;
    band_step<T>(up, kd, ab, ldab, j, imin(kd, m - j - 1), ajj);
  }
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_BAND_PBTRF_H
