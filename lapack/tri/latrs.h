// Triangular solves that cannot overflow: op(A) x = s b with a scale
// 0 <= s <= 1 chosen as the solve goes (latrs full, latps packed, latbs
// band; latrs3 several right-hand sides with one scale each).
//
// The column norms c_j of the off-diagonal parts bound how much solving for
// x_j can make the remaining entries grow. A first pass turns them into a
// lower bound of 1 / max|x_i| over the whole solve (the growth bound); when
// it stays above the underflow threshold the plain level-2 (or level-3)
// solve is safe. Otherwise the careful loop divides by each diagonal entry
// and updates the rest of x only after rescaling x (and s) whenever the next
// step could exceed the overflow threshold. Complex entries are measured by
// |re| + |im|, which bounds both parts and the modulus.
#ifndef NXL_LAPACK_TRI_LATRS_H
#define NXL_LAPACK_TRI_LATRS_H

#include "lapack/aux/norms.h"
#include "lapack/tri/storage.h"

namespace nxl {
namespace lapack {

template <class T> inline real_t<T> max_abs1(idx n, const T *x) {
  if (n <= 0) return real_t<T>(0);
  return abs1(x[blas::iamax(n, x, 1) - 1]);
}

// op(diag) for trans 'C' of a complex matrix.
template <class T> inline T op_entry(T v, bool conjugate) { return conjugate ? nxl::conj(v) : v; }

template <class T> struct LatrsLimits {
  using R = real_t<T>;
  R smlnum = lamch<R>('S') / lamch<R>('P');
  R bignum = R(1) / smlnum;
  // The factor kept below the overflow threshold for complex products.
  R half = is_complex_v<T> ? R(0.5) : R(1);
};

// Column norms of the off-diagonal parts (|re| + |im| sums).
template <class T, class S> void off_diag_norms(const S &a, real_t<T> *cnorm) {
  for (idx j = 0; j < a.n; ++j) {
    idx lo, hi;
    const T *p = a.col(j, lo, hi);
    real_t<T> s = 0;
    for (idx i = 0; i < hi - lo; ++i) s += abs1(p[i]);
    cnorm[j] = s;
  }
}

// The scaling tscal that brings the column norms into range (scaling them
// in place); 0 when an entry of A is not finite, in which case the caller
// falls back to the plain solve so that Inf and NaN propagate.
template <class T, class S> real_t<T> norm_scaling(const S &a, real_t<T> *cnorm) {
  using R = real_t<T>;
  LatrsLimits<T> L;
  const R ovfl = lamch<R>('O');
  const idx n = a.n;
  R tmax = 0;
  for (idx j = 0; j < n; ++j) take_max(tmax, cnorm[j]);
  if (tmax <= L.bignum * L.half) return R(1);
  if (tmax <= ovfl) {
    R tscal = L.half / (L.smlnum * tmax);
    for (idx j = 0; j < n; ++j) cnorm[j] *= tscal;
    return tscal;
  }
  // Some column norm overflowed: scale by the largest off-diagonal entry.
  R emax = 0;
  for (idx j = 0; j < n; ++j) {
    idx lo, hi;
    const T *p = a.col(j, lo, hi);
    for (idx i = 0; i < hi - lo; ++i) take_max(emax, absv(p[i]));
  }
  if (!(emax <= ovfl)) return R(0);
  R tscal = L.half / (L.smlnum * emax);
  for (idx j = 0; j < n; ++j) {
    if (cnorm[j] <= ovfl) {
      cnorm[j] *= tscal;
    } else {
      idx lo, hi;
      const T *p = a.col(j, lo, hi);
      R s = 0;
      for (idx i = 0; i < hi - lo; ++i) s += tscal * abs1(p[i]);
      cnorm[j] = s;
    }
  }
  return tscal;
}

// Lower bound on 1 / max|x_i| over the solve of op(A) x = b with |b| <= xbnd.
template <class T, class S>
real_t<T> growth_bound(const S &a, bool notran, real_t<T> tscal, real_t<T> xbnd, const real_t<T> *cnorm) {
  using R = real_t<T>;
  LatrsLimits<T> L;
  const idx n = a.n;
  if (tscal != R(1)) return R(0);
  // Columns are visited in the order of the solve.
  const bool fwd = a.up != notran;
  auto col_at = [&](idx k) { return fwd ? k : n - 1 - k; };
  if (a.unit) {
    R grow = std::min(R(1), R(1) / std::max(xbnd, L.smlnum));
    for (idx k = 0; k < n; ++k) {
      if (grow <= L.smlnum) break;
      grow *= R(1) / (R(1) + cnorm[col_at(k)]);
    }
    return grow;
  }
  R grow = R(1) / std::max(xbnd, L.smlnum);
  xbnd = grow;
  for (idx k = 0; k < n; ++k) {
    if (grow <= L.smlnum) return grow;
    idx j = col_at(k);
    R tjj = abs1(a.diag(j));
    if (notran) {
      xbnd = std::min(xbnd, std::min(R(1), tjj) * grow);
      if (tjj + cnorm[j] >= L.smlnum) grow *= tjj / (tjj + cnorm[j]);
      else grow = 0;
    } else {
      R xj = R(1) + cnorm[j];
      grow = std::min(grow, xbnd / xj);
      if (xj > tjj) xbnd *= tjj / xj;
    }
  }
  return notran ? xbnd : std::min(grow, xbnd);
}

// x := x / tjjs for the careful loop, rescaling x first when the quotient
// could overflow; a zero tjjs gives the null vector e_j with scale 0.
template <class T>
void careful_divide(idx n, T *x, idx j, T tjjs, real_t<T> cnormj, bool cap_by_cnorm, real_t<T> &scale,
                    real_t<T> &xmax) {
  using R = real_t<T>;
  LatrsLimits<T> L;
  R xj = abs1(x[j]), tjj = abs1(tjjs);
  if (tjj > L.smlnum) {
    if (tjj < R(1) && xj > tjj * L.bignum) {
      R rec = R(1) / xj;
      blas::rscal(n, rec, x, 1);
      scale *= rec;
      xmax *= rec;
    }
    x[j] = nxl::div(x[j], tjjs);
  } else if (tjj > R(0)) {
    if (xj > tjj * L.bignum) {
      R rec = (tjj * L.bignum) / xj;
      if (cap_by_cnorm && cnormj > R(1)) rec /= cnormj;
      blas::rscal(n, rec, x, 1);
      scale *= rec;
      xmax *= rec;
    }
    x[j] = nxl::div(x[j], tjjs);
  } else {
    for (idx i = 0; i < n; ++i) x[i] = T(0);
    x[j] = T(1);
    scale = 0;
    xmax = 0;
  }
}

// The solve itself; tr is 'N', 'T' or 'C'. cnorm holds the column norms on
// entry when normin, and holds them on return in any case.
template <class T, class S>
void latrs_core(const S &a, char tr, bool normin, T *x, real_t<T> *scale, real_t<T> *cnorm) {
  using R = real_t<T>;
  LatrsLimits<T> L;
  const idx n = a.n;
  const bool notran = tr == 'N', cj = is_complex_v<T> && tr == 'C';
  *scale = 1;
  if (n == 0) return;
  if (!normin) off_diag_norms<T>(a, cnorm);
  R tscal = norm_scaling<T>(a, cnorm);
  if (tscal == R(0)) {
    a.solve(tr, x);
    return;
  }
  R xmax = max_abs1(n, x);
  R grow = growth_bound<T>(a, notran, tscal, xmax, cnorm);
  if (grow * tscal > L.smlnum) {
    a.solve(tr, x);
  } else {
    R s = 1;
    const bool fwd = a.up != notran;
    if (xmax > L.bignum) {
      s = L.bignum / xmax;
      blas::rscal(n, s, x, 1);
      xmax = L.bignum;
    }
    for (idx k = 0; k < n; ++k) {
      const idx j = fwd ? k : n - 1 - k;
      idx lo, hi;
      const T *p = a.col(j, lo, hi);
      const T tjjs = a.unit ? T(tscal) : op_entry(a.diag(j), cj) * tscal;
      const bool divide = !(a.unit && tscal == R(1));
      if (notran) {
        if (divide) careful_divide<T>(n, x, j, tjjs, cnorm[j], true, s, xmax);
        R xj = abs1(x[j]);
        // Room for adding a multiple of column j to the rest.
        if (xj > R(1)) {
          R rec = R(1) / xj;
          if (cnorm[j] > (L.bignum - xmax) * rec) {
            rec *= R(0.5);
            blas::rscal(n, rec, x, 1);
            s *= rec;
          }
        } else if (xj * cnorm[j] > L.bignum - xmax) {
          blas::rscal(n, R(0.5), x, 1);
          s *= R(0.5);
        }
        if (hi > lo) blas::axpy(hi - lo, -x[j] * tscal, p, 1, x + lo, 1);
        // The largest entry of the part still to solve.
        if (a.up) { if (j > 0) xmax = max_abs1(j, x); }
        else if (j + 1 < n) xmax = max_abs1(n - j - 1, x + j + 1);
      } else {
        R xj = abs1(x[j]);
        T uscal = T(tscal);
        R rec = R(1) / std::max(xmax, R(1));
        if (cnorm[j] > (L.bignum - xj) * rec) {
          // x_j could overflow: scale x by 1 / (2 xmax), dividing the dot
          // product by the diagonal first when that is larger than one.
          rec *= R(0.5);
          R tjj = abs1(tjjs);
          if (tjj > R(1)) {
            rec = std::min(R(1), rec * tjj);
            uscal = nxl::div(uscal, tjjs);
          }
          if (rec < R(1)) {
            blas::rscal(n, rec, x, 1);
            s *= rec;
            xmax *= rec;
          }
        }
        T sumj = T(0);
        if (uscal == T(1)) {
          sumj = cj ? blas::dotc(hi - lo, p, 1, x + lo, 1) : blas::dotu(hi - lo, p, 1, x + lo, 1);
        } else {
          for (idx i = 0; i < hi - lo; ++i) sumj += (op_entry(p[i], cj) * uscal) * x[lo + i];
        }
        if (uscal == T(tscal)) {
          x[j] -= sumj;
          if (divide) careful_divide<T>(n, x, j, tjjs, cnorm[j], false, s, xmax);
        } else {
          x[j] = nxl::div(x[j], tjjs) - sumj;
        }
        xmax = std::max(xmax, abs1(x[j]));
      }
    }
    *scale = s / tscal;
  }
  if (tscal != R(1)) {
    for (idx j = 0; j < n; ++j) cnorm[j] /= tscal;
  }
}

inline idx latrs_flags(const char *uplo, const char *trans, const char *diag, const char *normin) {
  idx pos = check_uplo_trans_diag(uplo, trans, diag);
  if (pos) return pos;
  if (!same(normin, 'Y') && !same(normin, 'N')) return 4;
  return 0;
}

template <class T>
void latrs(const char *uplo, const char *trans, const char *diag, const char *normin, const idx *pn, const T *a,
           const idx *plda, T *x, real_t<T> *scale, real_t<T> *cnorm, idx *info) {
  idx n = *pn, lda = *plda;
  *info = 0;
  idx pos = latrs_flags(uplo, trans, diag, normin);
  if (!pos && n < 0) pos = 5;
  if (!pos && lda < imax(1, n)) pos = 7;
  if (pos) return report<T>("LATRS", pos, info);
  FullTri<T> v{same(uplo, 'U'), same(diag, 'U'), n, a, lda};
  latrs_core<T>(v, upper(trans), same(normin, 'Y'), x, scale, cnorm);
}

template <class T>
void latps(const char *uplo, const char *trans, const char *diag, const char *normin, const idx *pn, const T *ap,
           T *x, real_t<T> *scale, real_t<T> *cnorm, idx *info) {
  idx n = *pn;
  *info = 0;
  idx pos = latrs_flags(uplo, trans, diag, normin);
  if (!pos && n < 0) pos = 5;
  if (pos) return report<T>("LATPS", pos, info);
  PackedTri<T> v{same(uplo, 'U'), same(diag, 'U'), n, ap};
  latrs_core<T>(v, upper(trans), same(normin, 'Y'), x, scale, cnorm);
}

template <class T>
void latbs(const char *uplo, const char *trans, const char *diag, const char *normin, const idx *pn, const idx *pkd,
           const T *ab, const idx *pldab, T *x, real_t<T> *scale, real_t<T> *cnorm, idx *info) {
  idx n = *pn, kd = *pkd, ldab = *pldab;
  *info = 0;
  idx pos = latrs_flags(uplo, trans, diag, normin);
  if (!pos && n < 0) pos = 5;
  if (!pos && kd < 0) pos = 6;
  if (!pos && ldab < kd + 1) pos = 8;
  if (pos) return report<T>("LATBS", pos, info);
  BandTri<T> v{same(uplo, 'U'), same(diag, 'U'), n, kd, ab, ldab};
  latrs_core<T>(v, upper(trans), same(normin, 'Y'), x, scale, cnorm);
}

// Workspace size latrs3 reports and requires: a scale table per block row
// and the norms of the off-diagonal blocks of a 32 x 32 blocking. Callers
// size their arrays by it; the solve below does not need to touch it.
inline idx latrs3_lwork(idx n, idx nrhs) {
  const idx nb = 32, nbrhs = 32;
  idx nba = imax(1, (n + nb - 1) / nb);
  idx lscale = nba * imax(nba, imin(nrhs, nbrhs));
  return imax(1, lscale + nba * nba);
}

// Several right-hand sides, one scale each. When the growth bound of the
// whole block allows it the solve is one level-3 call; otherwise each column
// takes the careful path.
template <class T>
void latrs3(const char *uplo, const char *trans, const char *diag, const char *normin, const idx *pn,
            const idx *pnrhs, const T *a, const idx *plda, T *x, const idx *pldx, real_t<T> *scale,
            real_t<T> *cnorm, real_t<T> *work, const idx *plwork, idx *info) {
  using R = real_t<T>;
  idx n = *pn, nrhs = *pnrhs, lda = *plda, ldx = *pldx, lwork = *plwork;
  *info = 0;
  const idx lwmin = latrs3_lwork(n, nrhs);
  const bool query = lwork == -1;
  if (query || lwork >= 1) work[0] = R(lwmin);
  idx pos = latrs_flags(uplo, trans, diag, normin);
  if (!pos && n < 0) pos = 5;
  if (!pos && nrhs < 0) pos = 6;
  if (!pos && lda < imax(1, n)) pos = 8;
  if (!pos && ldx < imax(1, n)) pos = 10;
  if (!pos && !query && lwork < lwmin) pos = 14;
  if (pos) return report<T>("LATRS3", pos, info);
  if (query) return;
  for (idx k = 0; k < nrhs; ++k) scale[k] = 1;
  if (n == 0 || nrhs == 0) return;
  FullTri<T> v{same(uplo, 'U'), same(diag, 'U'), n, a, lda};
  const char tr = upper(trans);
  const LatrsLimits<T> L;
  if (!same(normin, 'Y')) off_diag_norms<T>(v, cnorm);
  R tscal = norm_scaling<T>(v, cnorm);
  if (tscal == R(1)) {
    R xbnd = 0;
    for (idx k = 0; k < nrhs; ++k) xbnd = std::max(xbnd, max_abs1(n, x + k * ldx));
    if (growth_bound<T>(v, tr == 'N', tscal, xbnd, cnorm) > L.smlnum) {
      v.solve_many(tr, nrhs, x, ldx);
      return;
    }
  } else if (tscal != R(0)) {
    for (idx j = 0; j < n; ++j) cnorm[j] /= tscal;
  }
  for (idx k = 0; k < nrhs; ++k) latrs_core<T>(v, tr, true, x + k * ldx, scale + k, cnorm);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TRI_LATRS_H
