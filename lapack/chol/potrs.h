// Solve A X = B with the Cholesky factor of potrf; posv chains the two.
#ifndef NXL_LAPACK_CHOL_POTRS_H
#define NXL_LAPACK_CHOL_POTRS_H

#include "lapack/chol/potrf.h"

namespace nxl {
namespace lapack {

template <class T> void potrs_work(bool up, idx n, idx nrhs, const T *a, idx lda, T *b, idx ldb) {
  if (n == 0 || nrhs == 0) return;
  // A = U^H U: solve U^H Y = B, then U X = Y. A = L L^H: L Y = B, L^H X = Y.
  char t1 = up ? 'C' : 'N', t2 = up ? 'N' : 'C';
  char u = up ? 'U' : 'L';
  if (nrhs == 1) {
    blas::trsv(u, t1, 'N', n, a, lda, b, 1);
    blas::trsv(u, t2, 'N', n, a, lda, b, 1);
  } else {
    blas::trsm('L', u, t1, 'N', n, nrhs, T(1), a, lda, b, ldb);
    blas::trsm('L', u, t2, 'N', n, nrhs, T(1), a, lda, b, ldb);
  }
}

template <class T>
void potrs(const char *uplo, const idx *pn, const idx *pnrhs, const T *a, const idx *plda, T *b, const idx *pldb,
           idx *info) {
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ldb = *pldb;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("POTRS", 1, info);
  if (n < 0) return report<T>("POTRS", 2, info);
  if (nrhs < 0) return report<T>("POTRS", 3, info);
  if (lda < imax(1, n)) return report<T>("POTRS", 5, info);
  if (ldb < imax(1, n)) return report<T>("POTRS", 7, info);
  // One right-hand side while the factor fits in L2, or a real order of up
  // to 64 bytes per column with any number of them: the code path's kernel
  // (its blocked vector solves), without the set-up of two triangular-solve
  // calls. Larger factors stream from memory, where the level-2 solves do
  // better; more right-hand sides go to the blocked solves' register tiles.
  if ((n <= 768 && nrhs == 1) || (!is_complex_v<T> && n * idx(sizeof(T)) <= 64)) {
    if (n > 0 && nrhs > 0) ps::potrs_small(uplo, n, nrhs, a, lda, b, ldb, info);
    return;
  }
  potrs_work<T>(up, n, nrhs, a, lda, b, ldb);
}

template <class T>
void posv(const char *uplo, const idx *pn, const idx *pnrhs, T *a, const idx *plda, T *b, const idx *pldb,
          idx *info) {
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ldb = *pldb;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("POSV", 1, info);
  if (n < 0) return report<T>("POSV", 2, info);
  if (nrhs < 0) return report<T>("POSV", 3, info);
  if (lda < imax(1, n)) return report<T>("POSV", 5, info);
  if (ldb < imax(1, n)) return report<T>("POSV", 7, info);
  potrf<T>(uplo, pn, a, plda, info);
  if (*info == 0) potrs_work<T>(up, n, nrhs, a, lda, b, ldb);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_CHOL_POTRS_H
