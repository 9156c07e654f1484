// gesvx: expert driver for A X = B (or A^T, A^H): optional equilibration,
// LU factorization, condition estimate, solve, refinement with error bounds,
// reciprocal pivot growth in work[0] (real forms) or rwork[0] (complex).
//
// The steps are the same for every storage of A; svx_check and svx_solve
// run them on a storage policy (GeStorage here, the band one in gbsvx.h)
// that finds and applies the scaling, factors, measures the pivot growth,
// estimates the condition, solves and supplies the refinement's products.
#ifndef NXL_LAPACK_LU_GESVX_H
#define NXL_LAPACK_LU_GESVX_H

#include "lapack/aux/copy.h"
#include "lapack/aux/norms.h"
#include "lapack/aux/scale.h"
#include "lapack/lu/gecon.h"
#include "lapack/lu/geequ.h"
#include "lapack/lu/gerfs.h"
#include "lapack/lu/getrf.h"

namespace nxl {
namespace lapack {

// The expert drivers' flags, as parsed from fact, trans and equed.
template <class R> struct SvxFlags {
  char tr;
  bool nofact, equil, notran, rowequ = false, colequ = false;
  R rowcnd = 1, colcnd = 1;
};

// Checks the arguments the expert drivers share, in the standard's order:
// fact (1), trans (2), n (3), the storage's own arguments before nrhs (pre:
// position of the first bad one, 0 when none), nrhs (4 + sh), the
// storage's leading dimensions (ld, likewise), equed (10 + sh), r and c
// (11 + sh, 12 + sh), ldb (14 + sh), ldx (16 + sh). equed is 'N' on entry
// to the computation unless the factors are supplied. False once reported.
template <class T>
bool svx_check(const char *name, const char *fact, const char *trans, idx n, idx nrhs, idx sh, idx pre, idx ld,
               char *equed, const real_t<T> *r, const real_t<T> *c, idx ldb, idx ldx, SvxFlags<real_t<T>> &f,
               idx *info) {
  using R = real_t<T>;
  *info = 0;
  char fa = upper(fact);
  f.tr = upper(trans);
  f.nofact = fa == 'N';
  f.equil = fa == 'E';
  f.notran = f.tr == 'N';
  if (f.nofact || f.equil) {
    *equed = 'N';
  } else {
    char e = upper(equed);
    f.rowequ = e == 'R' || e == 'B';
    f.colequ = e == 'C' || e == 'B';
  }
  idx bad = 0;
  if (!f.nofact && !f.equil && fa != 'F') bad = 1;
  else if (f.tr != 'N' && f.tr != 'T' && f.tr != 'C') bad = 2;
  else if (n < 0) bad = 3;
  else if (pre) bad = pre;
  else if (nrhs < 0) bad = 4 + sh;
  else if (ld) bad = ld;
  else if (fa == 'F' && upper(equed) != 'N' && !f.rowequ && !f.colequ) bad = 10 + sh;
  else if (f.rowequ && !scale_ratio<R>(n, r, &f.rowcnd)) bad = 11 + sh;
  else if (f.colequ && !scale_ratio<R>(n, c, &f.colcnd)) bad = 12 + sh;
  else if (ldb < imax(1, n)) bad = 14 + sh;
  else if (ldx < imax(1, n)) bad = 16 + sh;
  if (bad) {
    report<T>(name, bad, info);
    return false;
  }
  if (!is_complex_v<T> && f.tr == 'C') f.tr = 'T';
  return true;
}

// Scales the n x nrhs block x by s row by row.
template <class T> void svx_scale_rows(idx n, idx nrhs, const real_t<T> *s, T *x, idx ldx) {
  for (idx j = 0; j < nrhs; ++j)
    for (idx i = 0; i < n; ++i) x[i + j * ldx] *= s[i];
}

// The computation after the checks: equilibrate (fact = 'E'), scale b,
// factor (unless supplied), pivot growth, condition estimate, solve,
// refine, scale x back. rpv receives the reciprocal pivot growth.
template <class T, class St>
void svx_solve(St &st, const char *name, SvxFlags<real_t<T>> &f, idx n, idx nrhs, char *equed, real_t<T> *r,
               real_t<T> *c, T *b, idx ldb, T *x, idx ldx, real_t<T> *rcond, real_t<T> *ferr, real_t<T> *berr,
               real_t<T> *rpv, idx *info) {
  using R = real_t<T>;
  if (f.equil) {
    R amax = 0;
    idx infequ = 0;
    st.equ(r, c, &f.rowcnd, &f.colcnd, &amax, &infequ);
    if (infequ == 0) {
      st.laq(r, c, f.rowcnd, f.colcnd, amax, equed);
      f.rowequ = *equed == 'R' || *equed == 'B';
      f.colequ = *equed == 'C' || *equed == 'B';
    }
  }
  // op(A) = diag(rb) op(A_scaled) diag(rx) on the scaled side.
  const R *sb = f.notran ? (f.rowequ ? r : nullptr) : (f.colequ ? c : nullptr);
  const R *sx = f.notran ? (f.colequ ? c : nullptr) : (f.rowequ ? r : nullptr);
  if (sb) svx_scale_rows<T>(n, nrhs, sb, b, ldb);
  if (f.nofact || f.equil) {
    *info = st.factor();
    if (*info > 0) {
      rpv[0] = st.growth(*info);
      *rcond = 0;
      return;
    }
  }
  R rpvgrw = st.growth(n);
  char nm = f.notran ? 'O' : 'I';
  Work<R> rowsum(n);
  Work<T> cw(2 * n);
  Work<idx> iw(n);
  if (n > 0 && (!cw || !iw || !rowsum)) return report<T>(name, 1089, nullptr);
  st.con(nm, st.norm(nm, rowsum.get()), rcond, cw.get(), iw.get());
  lacpy<T>("Full", &n, &nrhs, b, &ldb, x, &ldx);
  st.solve(f.tr, nrhs, x, ldx);
  auto ops = st.ops(f.tr);
  refine<T>(n, nrhs, b, ldb, x, ldx, ferr, berr, ops, name, info);
  if (sx) {
    svx_scale_rows<T>(n, nrhs, sx, x, ldx);
    R cnd = f.notran ? f.colcnd : f.rowcnd;
    for (idx j = 0; j < nrhs; ++j) ferr[j] /= cnd;
  }
  if (*rcond < lamch<R>('E')) *info = n + 1;
  rpv[0] = rpvgrw;
}

// The reciprocal pivot growth lands in work[0] (real) or rwork[0] (complex).
template <class T> real_t<T> *svx_growth_slot(T *work, void *iwork_or_rwork) {
  if constexpr (is_complex_v<T>) return static_cast<real_t<T> *>(iwork_or_rwork);
  else return work;
}

// A general n x n matrix and its LU factors.
template <class T> struct GeStorage {
  using R = real_t<T>;
  idx n;
  T *a;
  idx lda;
  T *af;
  idx ldaf;
  idx *ipiv;
  void equ(R *r, R *c, R *rowcnd, R *colcnd, R *amax, idx *info) {
    geequ_work<T, false>("GEEQU", n, n, a, lda, r, c, rowcnd, colcnd, amax, info);
  }
  void laq(const R *r, const R *c, R rowcnd, R colcnd, R amax, char *equed) {
    laqge<T>(&n, &n, a, &lda, r, c, &rowcnd, &colcnd, &amax, equed);
  }
  idx factor() {
    idx info = 0;
    lacpy<T>("Full", &n, &n, a, &lda, af, &ldaf);
    getrf<T>(&n, &n, af, &ldaf, ipiv, &info);
    return info;
  }
  // max |A| / max |U| over the first k columns; 1 when U vanishes there.
  R growth(idx k) {
    R u = lantr<T>("M", "U", "N", &k, &k, af, &ldaf, nullptr);
    return u == R(0) ? R(1) : lange<T>("M", &n, &k, a, &lda, nullptr) / u;
  }
  R norm(char nm, R *work) {
    char s[2] = {nm, 0};
    return lange<T>(s, &n, &n, a, &lda, work);
  }
  void con(char nm, R anorm, R *rcond, T *cw, idx *iw) { gecon_work<T>(nm, n, af, ldaf, anorm, rcond, cw, iw); }
  void solve(char tr, idx nrhs, T *x, idx ldx) { getrs_work<T>(tr, n, nrhs, af, ldaf, ipiv, x, ldx); }
  GeneralOps<T> ops(char tr) { return GeneralOps<T>{tr, n, a, af, lda, ldaf, ipiv}; }
};

template <class T>
void gesvx(const char *fact, const char *trans, const idx *pn, const idx *pnrhs, T *a, const idx *plda, T *af,
           const idx *pldaf, idx *ipiv, char *equed, real_t<T> *r, real_t<T> *c, T *b, const idx *pldb, T *x,
           const idx *pldx, real_t<T> *rcond, real_t<T> *ferr, real_t<T> *berr, T *work, void *iwork_or_rwork,
           idx *info) {
  idx n = *pn, lda = *plda, ldaf = *pldaf;
  SvxFlags<real_t<T>> f;
  idx ld = lda < imax(1, n) ? 6 : (ldaf < imax(1, n) ? 8 : 0);
  if (!svx_check<T>("GESVX", fact, trans, n, *pnrhs, 0, 0, ld, equed, r, c, *pldb, *pldx, f, info)) return;
  GeStorage<T> st{n, a, lda, af, ldaf, ipiv};
  svx_solve<T>(st, "GESVX", f, n, *pnrhs, equed, r, c, b, *pldb, x, *pldx, rcond, ferr, berr,
               svx_growth_slot<T>(work, iwork_or_rwork), info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_LU_GESVX_H
