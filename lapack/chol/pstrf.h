// pstrf: Cholesky factorization with complete (diagonal) pivoting of a
// Hermitian positive semidefinite matrix, P^T A P = U^H U or L L^H, stopping
// at the first pivot not above the tolerance; rank is the number of steps
// taken. At step j the largest remaining updated diagonal entry is moved to
// position j by a symmetric interchange.
#ifndef NXL_LAPACK_CHOL_PSTRF_H
#define NXL_LAPACK_CHOL_PSTRF_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

// Lower form on the lower triangle of a; returns info (0 full rank, 1 not).
template <class T>
idx pstrf_lower(idx n, T *a, idx lda, idx *piv, idx *rank, real_t<T> tol, real_t<T> *work) {
  using R = real_t<T>;
  auto A = [&](idx i, idx j) -> T & { return a[i + j * lda]; };
  for (idx i = 0; i < n; ++i) piv[i] = i + 1;
  idx pvt = 0;
  R ajj = nxl::re(A(0, 0));
  for (idx i = 1; i < n; ++i)
    if (nxl::re(A(i, i)) > ajj) {
      ajj = nxl::re(A(i, i));
      pvt = i;
    }
  if (!(ajj > R(0))) {
    *rank = 0;
    return 1;
  }
  R dstop = tol < R(0) ? R(n) * lamch<R>('E') * ajj : tol;
  for (idx i = 0; i < n; ++i) work[i] = 0;
  for (idx j = 0; j < n; ++j) {
    for (idx i = j; i < n; ++i) {
      if (j > 0) {
        T l = A(i, j - 1);
        work[i] += nxl::re(l) * nxl::re(l) + nxl::im(l) * nxl::im(l);
      }
      work[n + i] = nxl::re(A(i, i)) - work[i];
    }
    pvt = j;
    ajj = work[n + j];
    for (idx i = j + 1; i < n; ++i)
      if (work[n + i] > ajj) {
        ajj = work[n + i];
        pvt = i;
      }
    if (ajj <= dstop || std::isnan(ajj)) {
      A(j, j) = T(ajj);
      *rank = j;
      return 1;
    }
    if (pvt != j) {
      A(pvt, pvt) = A(j, j);
      for (idx k = 0; k < j; ++k) std::swap(A(j, k), A(pvt, k));
      for (idx i = pvt + 1; i < n; ++i) std::swap(A(i, j), A(i, pvt));
      for (idx i = j + 1; i < pvt; ++i) {
        T t = nxl::conj(A(i, j));
        A(i, j) = nxl::conj(A(pvt, i));
        A(pvt, i) = t;
      }
      A(pvt, j) = nxl::conj(A(pvt, j));
      std::swap(work[j], work[pvt]);
      std::swap(piv[j], piv[pvt]);
    }
    ajj = std::sqrt(ajj);
    A(j, j) = T(ajj);
    if (j + 1 < n) {
      // Column j below the diagonal: (a(j+1:n, j) - L(j+1:n, 0:j) conj(L(j, 0:j))) / ajj.
      for (idx k = 0; k < j; ++k) {
        T f = nxl::conj(A(j, k));
        if (f == T(0)) continue;
        for (idx i = j + 1; i < n; ++i) A(i, j) -= A(i, k) * f;
      }
      R inv = R(1) / ajj;
      for (idx i = j + 1; i < n; ++i) A(i, j) *= inv;
    }
  }
  *rank = n;
  return 0;
}

template <class T>
void pstrf(const char *uplo, const idx *pn, T *a, const idx *plda, idx *piv, idx *rank, const real_t<T> *tol,
           real_t<T> *work, idx *info) {
  idx n = *pn, lda = *plda;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("PSTRF", 1, info);
  if (n < 0) return report<T>("PSTRF", 2, info);
  if (lda < imax(1, n)) return report<T>("PSTRF", 4, info);
  if (n == 0) return;
  if (!up) {
    *info = pstrf_lower<T>(n, a, lda, piv, rank, *tol, work);
    return;
  }
  // Upper: run the lower form on the conjugate transpose, then store back.
  Work<T> t(n * n);
  if (!t) return report<T>("PSTRF", 1089, nullptr);
  T *b = t.get();
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i <= j; ++i) b[j + i * n] = nxl::conj(a[i + j * lda]);
  *info = pstrf_lower<T>(n, b, n, piv, rank, *tol, work);
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i <= j; ++i) a[i + j * lda] = nxl::conj(b[j + i * n]);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_CHOL_PSTRF_H
