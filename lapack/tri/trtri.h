// Triangular matrices: inverse in place (trti2 unblocked, trtri blocked),
// solve with several right-hand sides after a singularity check (trtrs),
// and the products U U^H / L^H L in place (lauu2 unblocked, lauum blocked).
#ifndef NXL_LAPACK_TRI_TRTRI_H
#define NXL_LAPACK_TRI_TRTRI_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

template <class T> void trti2_work(bool up, bool unit, idx n, T *a, idx lda) {
  char u = up ? 'U' : 'L', d = unit ? 'U' : 'N';
  if (up) {
    for (idx j = 0; j < n; ++j) {
      T ajj;
      if (!unit) {
        a[j + j * lda] = recip(a[j + j * lda]);
        ajj = -a[j + j * lda];
      } else {
        ajj = T(-1);
      }
      // Column j above the diagonal: -a(j,j)^{-1} inv(U11) u12.
      blas::trmv(u, 'N', d, j, a, lda, a + j * lda, 1);
      blas::scal(j, ajj, a + j * lda, 1);
    }
  } else {
    for (idx j = n - 1; j >= 0; --j) {
      T ajj;
      if (!unit) {
        a[j + j * lda] = recip(a[j + j * lda]);
        ajj = -a[j + j * lda];
      } else {
        ajj = T(-1);
      }
      if (j < n - 1) {
        blas::trmv(u, 'N', d, n - j - 1, a + (j + 1) + (j + 1) * lda, lda, a + (j + 1) + j * lda, 1);
        blas::scal(n - j - 1, ajj, a + (j + 1) + j * lda, 1);
      }
    }
  }
}

// First zero on the diagonal (1-based), 0 if none.
template <class T> idx first_zero_diag(idx n, const T *a, idx lda) {
  for (idx i = 0; i < n; ++i)
    if (a[i + i * lda] == T(0)) return i + 1;
  return 0;
}

template <class T> void trtri_work(bool up, bool unit, idx n, T *a, idx lda, idx *info) {
  *info = 0;
  if (n == 0) return;
  if (!unit && (*info = first_zero_diag(n, a, lda)) != 0) return;
  char u = up ? 'U' : 'L', d = unit ? 'U' : 'N';
  idx nb = ilaenv_t<T>(1, "TRTRI", up ? "U" : "L", n, -1, -1, -1);
  if (nb <= 1 || nb >= n) {
    trti2_work<T>(up, unit, n, a, lda);
    return;
  }
  if (up) {
    for (idx j = 0; j < n; j += nb) {
      idx jb = imin(nb, n - j);
      // Block column j: inv(U11) U12 inv(U22) with inv(U11) already in place.
      blas::trmm('L', u, 'N', d, j, jb, T(1), a, lda, a + j * lda, lda);
      blas::trsm('R', u, 'N', d, j, jb, T(-1), a + j + j * lda, lda, a + j * lda, lda);
      trti2_work<T>(up, unit, jb, a + j + j * lda, lda);
    }
  } else {
    idx nn = ((n - 1) / nb) * nb;
    for (idx j = nn; j >= 0; j -= nb) {
      idx jb = imin(nb, n - j);
      if (j + jb < n) {
        blas::trmm('L', u, 'N', d, n - j - jb, jb, T(1), a + (j + jb) + (j + jb) * lda, lda, a + (j + jb) + j * lda,
                   lda);
        blas::trsm('R', u, 'N', d, n - j - jb, jb, T(-1), a + j + j * lda, lda, a + (j + jb) + j * lda, lda);
      }
      trti2_work<T>(up, unit, jb, a + j + j * lda, lda);
    }
  }
}

template <class T>
void trti2(const char *uplo, const char *diag, const idx *pn, T *a, const idx *plda, idx *info) {
  idx n = *pn, lda = *plda;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("TRTI2", 1, info);
  if (!same(diag, 'N') && !same(diag, 'U')) return report<T>("TRTI2", 2, info);
  if (n < 0) return report<T>("TRTI2", 3, info);
  if (lda < imax(1, n)) return report<T>("TRTI2", 5, info);
  trti2_work<T>(up, same(diag, 'U'), n, a, lda);
}

template <class T>
void trtri(const char *uplo, const char *diag, const idx *pn, T *a, const idx *plda, idx *info) {
  idx n = *pn, lda = *plda;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("TRTRI", 1, info);
  if (!same(diag, 'N') && !same(diag, 'U')) return report<T>("TRTRI", 2, info);
  if (n < 0) return report<T>("TRTRI", 3, info);
  if (lda < imax(1, n)) return report<T>("TRTRI", 5, info);
  trtri_work<T>(up, same(diag, 'U'), n, a, lda, info);
}

template <class T>
void trtrs(const char *uplo, const char *trans, const char *diag, const idx *pn, const idx *pnrhs, const T *a,
           const idx *plda, T *b, const idx *pldb, idx *info) {
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ldb = *pldb;
  *info = 0;
  bool up = same(uplo, 'U');
  char tr = upper(trans);
  if (!up && !same(uplo, 'L')) return report<T>("TRTRS", 1, info);
  if (tr != 'N' && tr != 'T' && tr != 'C') return report<T>("TRTRS", 2, info);
  if (!same(diag, 'N') && !same(diag, 'U')) return report<T>("TRTRS", 3, info);
  if (n < 0) return report<T>("TRTRS", 4, info);
  if (nrhs < 0) return report<T>("TRTRS", 5, info);
  if (lda < imax(1, n)) return report<T>("TRTRS", 7, info);
  if (ldb < imax(1, n)) return report<T>("TRTRS", 9, info);
  if (n == 0) return;
  if (same(diag, 'N') && (*info = first_zero_diag(n, a, lda)) != 0) return;
  blas::trsm('L', up ? 'U' : 'L', tr, upper(diag), n, nrhs, T(1), a, lda, b, ldb);
}

// U U^H (up) or L^H L in place, unblocked.
template <class T> void lauu2_work(bool up, idx n, T *a, idx lda) {
  using R = real_t<T>;
  for (idx i = 0; i < n; ++i) {
    R aii = nxl::re(a[i + i * lda]);
    if (up) {
      // Column i, rows 0..i-1: aii u(0:i,i) + U(0:i,i+1:n) conj(U(i,i+1:n))^T.
      for (idx k = 0; k < i; ++k) {
        T s = a[k + i * lda] * aii;
        for (idx j = i + 1; j < n; ++j) s += a[k + j * lda] * nxl::conj(a[i + j * lda]);
        a[k + i * lda] = s;
      }
      R d = aii * aii;
      for (idx j = i + 1; j < n; ++j) d += nxl::re(a[i + j * lda]) * nxl::re(a[i + j * lda]) +
                                          nxl::im(a[i + j * lda]) * nxl::im(a[i + j * lda]);
      a[i + i * lda] = T(d);
    } else {
      // Row i, columns 0..i-1: aii l(i,0:i) + sum_{j>i} conj(l(j,i)) l(j,0:i).
      for (idx k = 0; k < i; ++k) {
        T s = a[i + k * lda] * aii;
        for (idx j = i + 1; j < n; ++j) s += nxl::conj(a[j + i * lda]) * a[j + k * lda];
        a[i + k * lda] = s;
      }
      R d = aii * aii;
      for (idx j = i + 1; j < n; ++j) d += nxl::re(a[j + i * lda]) * nxl::re(a[j + i * lda]) +
                                          nxl::im(a[j + i * lda]) * nxl::im(a[j + i * lda]);
      a[i + i * lda] = T(d);
    }
  }
}

template <class T> void lauum_work(bool up, idx n, T *a, idx lda) {
  using R = real_t<T>;
  idx nb = ilaenv_t<T>(1, "LAUUM", up ? "U" : "L", n, -1, -1, -1);
  if (nb <= 1 || nb >= n) {
    lauu2_work<T>(up, n, a, lda);
    return;
  }
  for (idx i = 0; i < n; i += nb) {
    idx ib = imin(nb, n - i);
    T *d = a + i + i * lda;
    if (up) {
      blas::trmm('R', 'U', 'C', 'N', i, ib, T(1), d, lda, a + i * lda, lda);
      lauu2_work<T>(true, ib, d, lda);
      if (i + ib < n) {
        blas::gemm('N', 'C', i, ib, n - i - ib, T(1), a + (i + ib) * lda, lda, d + ib * lda, lda, T(1),
                   a + i * lda, lda);
        blas::herk('U', 'N', ib, n - i - ib, R(1), d + ib * lda, lda, R(1), d, lda);
      }
    } else {
      blas::trmm('L', 'L', 'C', 'N', ib, i, T(1), d, lda, a + i, lda);
      lauu2_work<T>(false, ib, d, lda);
      if (i + ib < n) {
        blas::gemm('C', 'N', ib, i, n - i - ib, T(1), d + ib, lda, a + i + ib, lda, T(1), a + i, lda);
        blas::herk('L', 'C', ib, n - i - ib, R(1), d + ib, lda, R(1), d, lda);
      }
    }
  }
}

template <class T> void lauu2(const char *uplo, const idx *pn, T *a, const idx *plda, idx *info) {
  idx n = *pn, lda = *plda;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("LAUU2", 1, info);
  if (n < 0) return report<T>("LAUU2", 2, info);
  if (lda < imax(1, n)) return report<T>("LAUU2", 4, info);
  lauu2_work<T>(up, n, a, lda);
}

template <class T> void lauum(const char *uplo, const idx *pn, T *a, const idx *plda, idx *info) {
  idx n = *pn, lda = *plda;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("LAUUM", 1, info);
  if (n < 0) return report<T>("LAUUM", 2, info);
  if (lda < imax(1, n)) return report<T>("LAUUM", 4, info);
  if (n > 0) lauum_work<T>(up, n, a, lda);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRI_TRTRI_H
