// Packed and band triangular matrices: solves after a singularity check
// (tptrs, tbtrs), the packed inverse in place (tptri), their norms (lantp,
// lantb, written once over the storage views) and the conversions between
// full and packed triangles (trttp, tpttr).
#ifndef NXL_LAPACK_TRI_TPSOLVE_H
#define NXL_LAPACK_TRI_TPSOLVE_H

#include "lapack/aux/norms.h"
#include "lapack/tri/storage.h"

namespace nxl {
namespace lapack {

template <class T>
void tptrs(const char *uplo, const char *trans, const char *diag, const idx *pn, const idx *pnrhs, const T *ap,
           T *b, const idx *pldb, idx *info) {
  idx n = *pn, nrhs = *pnrhs, ldb = *pldb;
  *info = 0;
  idx pos = check_uplo_trans_diag(uplo, trans, diag);
  if (!pos && n < 0) pos = 4;
  if (!pos && nrhs < 0) pos = 5;
  if (!pos && ldb < imax(1, n)) pos = 8;
  if (pos) return report<T>("TPTRS", pos, info);
  if (n == 0) return;
  PackedTri<T> v{same(uplo, 'U'), same(diag, 'U'), n, ap};
  if (!v.unit && (*info = first_zero_on_diag<T>(v)) != 0) return;
  v.solve_many(upper(trans), nrhs, b, ldb);
}

template <class T>
void tbtrs(const char *uplo, const char *trans, const char *diag, const idx *pn, const idx *pkd, const idx *pnrhs,
           const T *ab, const idx *pldab, T *b, const idx *pldb, idx *info) {
  idx n = *pn, kd = *pkd, nrhs = *pnrhs, ldab = *pldab, ldb = *pldb;
  *info = 0;
  idx pos = check_band_solve(uplo, trans, diag, n, kd, nrhs, ldab, ldb);
  if (pos) return report<T>("TBTRS", pos, info);
  if (n == 0) return;
  BandTri<T> v{same(uplo, 'U'), same(diag, 'U'), n, kd, ab, ldab};
  if (!v.unit && (*info = first_zero_on_diag<T>(v)) != 0) return;
  v.solve_many(upper(trans), nrhs, b, ldb);
}

// Inverse of a packed triangle, column by column: column j of inv(U) is
// -inv(U(0:j,0:j)) u_j / u_jj, where the leading inverse is already in
// place and is itself a packed triangle (the prefix of the array); for L the
// trailing inverse is the packed suffix.
template <class T> void tptri_work(bool up, bool unit, idx n, T *ap) {
  const char d = unit ? 'U' : 'N';
  if (up) {
    for (idx j = 0; j < n; ++j) {
      T *cj = ap + packed_col(true, n, j);
      T ajj = T(-1);
      if (!unit) {
        cj[j] = recip(cj[j]);
        ajj = -cj[j];
      }
      blas::tpmv('U', 'N', d, j, ap, cj);
      blas::scal(j, ajj, cj, 1);
    }
  } else {
    for (idx j = n - 1; j >= 0; --j) {
      T *cj = ap + packed_col(false, n, j);
      T ajj = T(-1);
      if (!unit) {
        cj[0] = recip(cj[0]);
        ajj = -cj[0];
      }
      if (j + 1 < n) {
        blas::tpmv('L', 'N', d, n - j - 1, ap + packed_col(false, n, j + 1), cj + 1);
        blas::scal(n - j - 1, ajj, cj + 1, 1);
      }
    }
  }
}

template <class T> void tptri(const char *uplo, const char *diag, const idx *pn, T *ap, idx *info) {
  idx n = *pn;
  *info = 0;
  idx pos = check_uplo_trans_diag(uplo, nullptr, diag);
  if (!pos && n < 0) pos = 3;
  if (pos) return report<T>("TPTRI", pos, info);
  PackedTri<T> v{same(uplo, 'U'), same(diag, 'U'), n, ap};
  if (!v.unit && (*info = first_zero_on_diag<T>(v)) != 0) return;
  tptri_work<T>(v.up, v.unit, n, ap);
}

// Norm of a triangle in any of the three storages (unit diagonal read as
// ones); `work` holds n row sums for the infinity-norm.
template <class T, class S> real_t<T> tri_norm(char norm, const S &v, real_t<T> *work) {
  if (v.n <= 0) return real_t<T>(0);
  auto get = [&](idx i, idx j) -> T {
    if (i == j) return v.unit ? T(1) : v.diag(j);
    idx lo, hi;
    const T *p = v.col(j, lo, hi);
    return p[i - lo];
  };
  auto rows = [&](idx j, idx &lo, idx &hi) {
    v.col(j, lo, hi);
    if (v.up) hi = j + 1;
    else lo = j;
  };
  return norm_by_columns<T>(norm, v.n, v.n, get, rows, work);
}

template <class T>
real_t<T> lantp(const char *norm, const char *uplo, const char *diag, const idx *pn, const T *ap, real_t<T> *work) {
  PackedTri<T> v{same(uplo, 'U'), same(diag, 'U'), *pn, ap};
  return tri_norm<T>(upper(norm), v, work);
}

template <class T>
real_t<T> lantb(const char *norm, const char *uplo, const char *diag, const idx *pn, const idx *pk, const T *ab,
                const idx *pldab, real_t<T> *work) {
  BandTri<T> v{same(uplo, 'U'), same(diag, 'U'), *pn, *pk, ab, *pldab};
  return tri_norm<T>(upper(norm), v, work);
}

// Full triangle to packed and back; only the `uplo` triangle is read or
// written.
template <class T>
void trttp(const char *uplo, const idx *pn, const T *a, const idx *plda, T *ap, idx *info) {
  idx n = *pn, lda = *plda;
  *info = 0;
  bool up = same(uplo, 'U');
  idx pos = 0;
  if (!up && !same(uplo, 'L')) pos = 1;
  else if (n < 0) pos = 2;
  else if (lda < imax(1, n)) pos = 4;
  if (pos) return report<T>("TRTTP", pos, info);
  for (idx j = 0, k = 0; j < n; ++j)
    for (idx i = up ? 0 : j; i < (up ? j + 1 : n); ++i) ap[k++] = a[i + j * lda];
}

template <class T>
void tpttr(const char *uplo, const idx *pn, const T *ap, T *a, const idx *plda, idx *info) {
  idx n = *pn, lda = *plda;
  *info = 0;
  bool up = same(uplo, 'U');
  idx pos = 0;
  if (!up && !same(uplo, 'L')) pos = 1;
  else if (n < 0) pos = 2;
  else if (lda < imax(1, n)) pos = 5;
  if (pos) return report<T>("TPTTR", pos, info);
  for (idx j = 0, k = 0; j < n; ++j)
    for (idx i = up ? 0 : j; i < (up ? j + 1 : n); ++i) a[i + j * lda] = ap[k++];
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRI_TPSOLVE_H
