// Hermitian (symmetric) positive definite matrices in packed storage:
// Cholesky factorization A = U^H U or L L^H (pptrf), solves (pptrs, ppsv),
// inverse (pptri), condition estimate (ppcon), equilibration (ppequ),
// refinement (pprfs) and the expert driver (ppsvx).
//
// The packed factorization works column by column (a triangular solve with
// the leading factor, or a rank-1 update of the trailing matrix); from order
// kPackedToFull on, the triangle is unpacked into a full work matrix and
// factored by the blocked Cholesky, which runs on level-3 BLAS, as long as
// that matrix stays within kFullBytes (packed storage is often chosen to
// save memory) and the memory manager can supply it.
#ifndef NXL_LAPACK_PACKED_PPTRF_H
#define NXL_LAPACK_PACKED_PPTRF_H

#include "lapack/aux/scale.h"
#include "lapack/chol/potrf.h"
#include "lapack/lu/refine.h"
#include "lapack/packed/packed.h"

namespace nxl {
namespace lapack {

constexpr idx kPackedToFull = 96;
constexpr double kFullBytes = 512.0 * 1024 * 1024;

// Copies the packed triangle to (to_full) or from a full n x n matrix.
template <class T> void pack_copy(bool up, idx n, T *ap, T *a, idx lda, bool to_full) {
  idx p = 0;
  for (idx j = 0; j < n; ++j) {
    idx lo = up ? 0 : j, hi = up ? j + 1 : n;
    for (idx i = lo; i < hi; ++i, ++p) {
      if (to_full) a[i + j * lda] = ap[p];
      else ap[p] = a[i + j * lda];
    }
  }
}

// Unblocked packed Cholesky; returns the order of the first minor that is
// not positive definite, 0 on success.
template <class T> idx pptrf_packed(bool up, idx n, T *ap) {
  using R = real_t<T>;
  if (up) {
    for (idx j = 0; j < n; ++j) {
      T *col = ap + pk_up(0, j);
      if (j > 0) blas::tpsv('U', 'C', 'N', j, ap, col, 1);
      R ajj = nxl::re(col[j]) - nxl::re(blas::dotc(j, col, 1, col, 1));
      if (!(ajj > R(0))) {
        col[j] = T(ajj);
        return j + 1;
      }
      col[j] = T(std::sqrt(ajj));
    }
  } else {
    for (idx j = 0; j < n; ++j) {
      idx jj = pk_lo(n, j, j);
      R ajj = nxl::re(ap[jj]);
      if (!(ajj > R(0))) {
        ap[jj] = T(ajj);
        return j + 1;
      }
      ajj = std::sqrt(ajj);
      ap[jj] = T(ajj);
      idx r = n - j - 1;
      if (r > 0) {
        blas::rscal(r, R(1) / ajj, ap + jj + 1, 1);
        blas::hpr('L', r, R(-1), ap + jj + 1, 1, ap + jj + n - j);
      }
    }
  }
  return 0;
}

template <class T> idx pptrf_work(bool up, idx n, T *ap) {
  if (n >= kPackedToFull && double(n) * double(n) * sizeof(T) <= kFullBytes) {
    Work<T> full(n * n);
    if (full) {
      pack_copy<T>(up, n, ap, full.get(), n, true);
      idx info = 0;
      potrf_blocked<T>(up, n, full.get(), n, &info);
      pack_copy<T>(up, n, ap, full.get(), n, false);
      return info;
    }
  }
  return pptrf_packed<T>(up, n, ap);
}

template <class T> void pptrf(const char *uplo, const idx *pn, T *ap, idx *info) {
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("PPTRF", 1, info);
  if (*pn < 0) return report<T>("PPTRF", 2, info);
  *info = pptrf_work<T>(up, *pn, ap);
}

template <class T> void pptrs_work(bool up, idx n, idx nrhs, const T *ap, T *b, idx ldb) {
  for (idx j = 0; j < nrhs; ++j) {
    T *x = b + j * ldb;
    if (up) {
      blas::tpsv('U', 'C', 'N', n, ap, x, 1);
      blas::tpsv('U', 'N', 'N', n, ap, x, 1);
    } else {
      blas::tpsv('L', 'N', 'N', n, ap, x, 1);
      blas::tpsv('L', 'C', 'N', n, ap, x, 1);
    }
  }
}

template <class T>
void pptrs(const char *uplo, const idx *pn, const idx *pnrhs, const T *ap, T *b, const idx *pldb, idx *info) {
  idx n = *pn, nrhs = *pnrhs;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("PPTRS", 1, info);
  if (n < 0) return report<T>("PPTRS", 2, info);
  if (nrhs < 0) return report<T>("PPTRS", 3, info);
  if (*pldb < imax(1, n)) return report<T>("PPTRS", 6, info);
  if (n == 0) return;
  pptrs_work<T>(up, n, nrhs, ap, b, *pldb);
}

template <class T>
void ppsv(const char *uplo, const idx *pn, const idx *pnrhs, T *ap, T *b, const idx *pldb, idx *info) {
  idx n = *pn, nrhs = *pnrhs;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("PPSV", 1, info);
  if (n < 0) return report<T>("PPSV", 2, info);
  if (nrhs < 0) return report<T>("PPSV", 3, info);
  if (*pldb < imax(1, n)) return report<T>("PPSV", 6, info);
  *info = pptrf_work<T>(up, n, ap);
  if (*info == 0) pptrs_work<T>(up, n, nrhs, ap, b, *pldb);
}

// Inverse of a packed triangular matrix with a non-unit diagonal, in place;
// returns the index of the first zero diagonal entry, 0 on success.
template <class T> idx tptri_nonunit(bool up, idx n, T *ap) {
  Packed pk{up, n};
  for (idx j = 0; j < n; ++j)
    if (ap[pk(j, j)] == T(0)) return j + 1;
  if (up) {
    for (idx j = 0; j < n; ++j) {
      T *col = ap + pk_up(0, j);
      col[j] = recip(col[j]);
      T ajj = -col[j];
      if (j > 0) {
        blas::tpmv('U', 'N', 'N', j, ap, col, 1);
        blas::scal(j, ajj, col, 1);
      }
    }
  } else {
    for (idx j = n - 1; j >= 0; --j) {
      idx jj = pk_lo(n, j, j);
      ap[jj] = recip(ap[jj]);
      T ajj = -ap[jj];
      if (j < n - 1) {
        blas::tpmv('L', 'N', 'N', n - j - 1, ap + jj + n - j, ap + jj + 1, 1);
        blas::scal(n - j - 1, ajj, ap + jj + 1, 1);
      }
    }
  }
  return 0;
}

template <class T> void pptri(const char *uplo, const idx *pn, T *ap, idx *info) {
  using R = real_t<T>;
  idx n = *pn;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("PPTRI", 1, info);
  if (n < 0) return report<T>("PPTRI", 2, info);
  if (n == 0) return;
  *info = tptri_nonunit<T>(up, n, ap);
  if (*info) return;
  if (up) {
    // inv(A) = inv(U) inv(U)^H, accumulated column by column.
    for (idx j = 0; j < n; ++j) {
      T *col = ap + pk_up(0, j);
      if (j > 0) blas::hpr('U', j, R(1), col, 1, ap);
      blas::rscal(j + 1, nxl::re(col[j]), col, 1);
    }
  } else {
    // inv(A) = inv(L)^H inv(L).
    for (idx j = 0; j < n; ++j) {
      idx jj = pk_lo(n, j, j);
      ap[jj] = T(nxl::re(blas::dotc(n - j, ap + jj, 1, ap + jj, 1)));
      if (j < n - 1) blas::tpmv('L', 'C', 'N', n - j - 1, ap + jj + n - j, ap + jj + 1, 1);
    }
  }
}

template <class T>
void ppcon(const char *uplo, const idx *pn, const T *ap, const real_t<T> *panorm, real_t<T> *rcond, T *work, void *,
           idx *info) {
  idx n = *pn;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("PPCON", 1, info);
  if (n < 0) return report<T>("PPCON", 2, info);
  if (*panorm < 0) return report<T>("PPCON", 4, info);
  sym_rcond<T, true>("PPCON", n, *panorm, rcond, work, [&](T *x) { pptrs_work<T>(up, n, 1, ap, x, n); });
}

template <class T>
void ppequ(const char *uplo, const idx *pn, const T *ap, real_t<T> *s, real_t<T> *scond, real_t<T> *amax,
           idx *info) {
  idx n = *pn;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("PPEQU", 1, info);
  if (n < 0) return report<T>("PPEQU", 2, info);
  Packed pk{up, n};
  diag_equ<T>(n, [&](idx i) { return ap[pk(i, i)]; }, s, scond, amax, info);
}

template <class T>
void pprfs_work(bool up, idx n, idx nrhs, const T *ap, const T *afp, const T *b, idx ldb, T *x, idx ldx,
                real_t<T> *ferr, real_t<T> *berr, const char *stem, idx *info) {
  Packed pk{up, n};
  auto ops = sym_refine_ops<T, true>(up, n, n, [&](idx i, idx j) { return ap[pk(i, j)]; },
                                     [&](T *v) { pptrs_work<T>(up, n, 1, afp, v, n); });
  refine<T>(n, nrhs, b, ldb, x, ldx, ferr, berr, ops, stem, info);
}

template <class T>
void pprfs(const char *uplo, const idx *pn, const idx *pnrhs, const T *ap, const T *afp, const T *b, const idx *pldb,
           T *x, const idx *pldx, real_t<T> *ferr, real_t<T> *berr, T *, void *, idx *info) {
  idx n = *pn, nrhs = *pnrhs;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("PPRFS", 1, info);
  if (n < 0) return report<T>("PPRFS", 2, info);
  if (nrhs < 0) return report<T>("PPRFS", 3, info);
  if (*pldb < imax(1, n)) return report<T>("PPRFS", 7, info);
  if (*pldx < imax(1, n)) return report<T>("PPRFS", 9, info);
  pprfs_work<T>(up, n, nrhs, ap, afp, b, *pldb, x, *pldx, ferr, berr, "PPRFS", info);
}

template <class T>
void ppsvx(const char *fact, const char *uplo, const idx *pn, const idx *pnrhs, T *ap, T *afp, char *equed,
           real_t<T> *s, T *b, const idx *pldb, T *x, const idx *pldx, real_t<T> *rcond, real_t<T> *ferr,
           real_t<T> *berr, T *work, void *, idx *info) {
  using R = real_t<T>;
  idx n = *pn, nrhs = *pnrhs, ldb = *pldb, ldx = *pldx;
  *info = 0;
  PdFact fa(fact, equed);
  bool up = same(uplo, 'U'), rcequ = fa.rcequ;
  R scond = 1;
  if (!fa.nofact && !fa.equil && !fa.given) return report<T>("PPSVX", 1, info);
  if (!up && !same(uplo, 'L')) return report<T>("PPSVX", 2, info);
  if (n < 0) return report<T>("PPSVX", 3, info);
  if (nrhs < 0) return report<T>("PPSVX", 4, info);
  if (!fa.equed_ok(equed)) return report<T>("PPSVX", 7, info);
  if (rcequ && !scale_ratio<R>(n, s, &scond)) return report<T>("PPSVX", 8, info);
  if (ldb < imax(1, n)) return report<T>("PPSVX", 10, info);
  if (ldx < imax(1, n)) return report<T>("PPSVX", 12, info);
  Packed pk{up, n};
  pd_equilibrate<T>(
      fa.equil, n, nrhs, [&](idx i) { return ap[pk(i, i)]; },
      [&](const R *sc, const R *cnd, const R *mx, char *eq) { laq_sp<T, true>(uplo, &n, ap, sc, cnd, mx, eq); }, s,
      &scond, equed, &rcequ, b, ldb);
  if (fa.nofact || fa.equil) {
    for (idx i = 0; i < n * (n + 1) / 2; ++i) afp[i] = ap[i];
    *info = pptrf_work<T>(up, n, afp);
    if (*info > 0) {
      *rcond = 0;
      return;
    }
  }
  R anorm = lan_sp<T, true>("I", uplo, &n, ap, nullptr);
  sym_rcond<T, true>("PPSVX", n, anorm, rcond, work, [&](T *v) { pptrs_work<T>(up, n, 1, afp, v, n); });
  pd_finish<T>(
      n, nrhs, b, ldb, x, ldx, rcequ, s, scond, *rcond, ferr, info,
      [&](T *v, idx ldv, idx k) { pptrs_work<T>(up, n, k, afp, v, ldv); },
      [&]() { pprfs_work<T>(up, n, nrhs, ap, afp, b, ldb, x, ldx, ferr, berr, "PPSVX", info); });
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_PACKED_PPTRF_H
