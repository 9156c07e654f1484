// Packed storage of one triangle of a symmetric or Hermitian n x n matrix:
// column by column, the upper triangle as A(0..j, j), the lower one as
// A(j..n-1, j). Index helpers, the "symmetric or Hermitian" trait shared by
// the packed and band families, packed norms and equilibration, and the
// complex symmetric packed product and rank-1 update (spmv, spr).
#ifndef NXL_LAPACK_PACKED_PACKED_H
#define NXL_LAPACK_PACKED_PACKED_H

#include "lapack/aux/norms.h"
#include "lapack/aux/scale.h"
#include "lapack/lu/gecon.h"
#include "lapack/packed/blas2.h"

namespace nxl {
namespace lapack {

// Position of A(i, j) in the packed upper (i <= j) or lower (i >= j) triangle.
inline idx pk_up(idx i, idx j) { return i + j * (j + 1) / 2; }
inline idx pk_lo(idx n, idx i, idx j) { return i - j + j * (2 * n - j + 1) / 2; }
struct Packed {
  bool up;
  idx n;
  idx operator()(idx i, idx j) const { return up ? pk_up(i, j) : pk_lo(n, i, j); }
};

// x conjugated when the matrix is Hermitian (herm), left as is when it is
// complex symmetric; real types ignore the flag.
template <bool herm, class T> inline T cjh(T x) {
  if constexpr (herm) return nxl::conj(x);
  else return x;
}
// Diagonal entry as the matrix sees it: real part only when Hermitian.
template <bool herm, class T> inline T diag_of(T x) {
  if constexpr (herm) return T(nxl::re(x));
  else return x;
}

// Entry (i, j) of the full matrix held as one triangle by at(i, j) (called
// only on the stored side).
template <bool herm, class T, class At> inline T sym_entry(bool up, idx i, idx j, At at) {
  if (i == j) return diag_of<herm>(at(i, i));
  bool stored = up ? i < j : i > j;
  return stored ? at(i, j) : cjh<herm>(at(j, i));
}

// Norm of a symmetric/Hermitian matrix from one triangle given by at(i, j).
template <class T, bool herm, class At>
real_t<T> sym_norm(const char *norm, bool up, idx n, At at, real_t<T> *work) {
  if (n <= 0) return 0;
  auto get = [&](idx i, idx j) { return sym_entry<herm, T>(up, i, j, at); };
  auto rows = [&](idx, idx &lo, idx &hi) { lo = 0; hi = n; };
  char nm = upper(norm);
  if (nm == 'I') nm = 'O';
  return norm_by_columns<T>(nm, n, n, get, rows, work);
}

template <class T, bool herm>
real_t<T> lan_sp(const char *norm, const char *uplo, const idx *pn, const T *ap, real_t<T> *work) {
  Packed pk{same(uplo, 'U'), *pn};
  return sym_norm<T, herm>(norm, pk.up, pk.n, [&](idx i, idx j) { return ap[pk(i, j)]; }, work);
}
template <class T>
real_t<T> lansp(const char *norm, const char *uplo, const idx *n, const T *ap, real_t<T> *work) {
  return lan_sp<T, false>(norm, uplo, n, ap, work);
}
template <class T>
real_t<T> lanhp(const char *norm, const char *uplo, const idx *n, const T *ap, real_t<T> *work) {
  return lan_sp<T, true>(norm, uplo, n, ap, work);
}

// diag(s) A diag(s) on one stored triangle (band |i - j| <= kd) when the
// scale factors are worth applying; equed = 'Y' when applied.
template <class T, bool herm, class At>
void sym_scale(idx n, idx kd, bool up, At at, const real_t<T> *s, real_t<T> scond, real_t<T> amax, char *equed) {
  using R = real_t<T>;
  *equed = 'N';
  if (n <= 0) return;
  const R small = lamch<R>('S') / lamch<R>('P'), large = R(1) / small;
  if (scond >= R(0.1) && amax >= small && amax <= large) return;
  for (idx j = 0; j < n; ++j) {
    idx lo = up ? imax(0, j - kd) : j, hi = up ? j + 1 : imin(n, j + kd + 1);
    for (idx i = lo; i < hi; ++i) {
      T &x = at(i, j);
      x = i == j ? diag_of<herm>(x) * (s[j] * s[j]) : x * (s[i] * s[j]);
    }
  }
  *equed = 'Y';
}

template <class T, bool herm>
void laq_sp(const char *uplo, const idx *pn, T *ap, const real_t<T> *s, const real_t<T> *scond,
            const real_t<T> *amax, char *equed) {
  Packed pk{same(uplo, 'U'), *pn};
  sym_scale<T, herm>(pk.n, pk.n, pk.up, [&](idx i, idx j) -> T & { return ap[pk(i, j)]; }, s, *scond, *amax, equed);
}
template <class T>
void laqsp(const char *uplo, const idx *n, T *ap, const real_t<T> *s, const real_t<T> *scond,
           const real_t<T> *amax, char *equed) {
  laq_sp<T, false>(uplo, n, ap, s, scond, amax, equed);
}
template <class T>
void laqhp(const char *uplo, const idx *n, T *ap, const real_t<T> *s, const real_t<T> *scond,
           const real_t<T> *amax, char *equed) {
  laq_sp<T, true>(uplo, n, ap, s, scond, amax, equed);
}

// Scale factors 1/sqrt(a_ii) from the diagonal diag(i) of a Hermitian
// positive definite matrix; info = i + 1 for the first non-positive one.
template <class T, class Diag>
void diag_equ(idx n, Diag diag, real_t<T> *s, real_t<T> *scond, real_t<T> *amax, idx *info) {
  using R = real_t<T>;
  *info = 0;
  if (n == 0) {
    *scond = 1;
    *amax = 0;
    return;
  }
  R smin = nxl::re(diag(0)), mx = smin;
  for (idx i = 0; i < n; ++i) {
    s[i] = nxl::re(diag(i));
    smin = std::min(smin, s[i]);
    mx = std::max(mx, s[i]);
  }
  *amax = mx;
  for (idx i = 0; i < n; ++i)
    if (!(s[i] > R(0))) {
      *info = i + 1;
      return;
    }
  for (idx i = 0; i < n; ++i) s[i] = R(1) / std::sqrt(s[i]);
  *scond = std::sqrt(smin) / std::sqrt(mx);
}

// y := alpha A x + beta y for A symmetric (herm = false) or Hermitian held
// as one triangle by at(i, j); x and y contiguous.
template <class T, bool herm, class At>
void sym_mv(bool up, idx n, T alpha, At at, const T *x, idx incx, T beta, T *y, idx incy) {
  if (n <= 0) return;
  const T *xs = x + vec_start(n, incx);
  T *ys = y + vec_start(n, incy);
  for (idx i = 0; i < n; ++i) {
    T &yi = ys[i * incy];
    yi = beta == T(0) ? T(0) : (beta == T(1) ? yi : beta * yi);
  }
  if (alpha == T(0)) return;
  for (idx j = 0; j < n; ++j) {
    T t1 = alpha * xs[j * incx], t2 = T(0);
    idx lo = up ? 0 : j + 1, hi = up ? j : n;
    for (idx i = lo; i < hi; ++i) {
      T a = at(i, j);
      ys[i * incy] += t1 * a;
      t2 += cjh<herm>(a) * xs[i * incx];
    }
    ys[j * incy] += t1 * diag_of<herm>(at(j, j)) + alpha * t2;
  }
}

// Complex symmetric packed product and rank-1 update (the Hermitian and
// real ones are BLAS routines).
template <class T>
void spmv(const char *uplo, const idx *pn, const T *alpha, const T *ap, const T *x, const idx *incx, const T *beta,
          T *y, const idx *incy) {
  idx info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("SPMV", 1, &info);
  if (*pn < 0) return report<T>("SPMV", 2, &info);
  if (*incx == 0) return report<T>("SPMV", 6, &info);
  if (*incy == 0) return report<T>("SPMV", 9, &info);
  if (*pn == 0 || (*alpha == T(0) && *beta == T(1))) return;
  Packed pk{up, *pn};
  sym_mv<T, false>(up, *pn, *alpha, [&](idx i, idx j) { return ap[pk(i, j)]; }, x, *incx, *beta, y, *incy);
}

template <class T> void spr(const char *uplo, const idx *pn, const T *alpha, const T *x, const idx *pincx, T *ap) {
  idx info = 0, n = *pn, incx = *pincx;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>("SPR", 1, &info);
  if (n < 0) return report<T>("SPR", 2, &info);
  if (incx == 0) return report<T>("SPR", 5, &info);
  if (n == 0 || *alpha == T(0)) return;
  Packed pk{up, n};
  const T *xs = x + vec_start(n, incx);
  for (idx j = 0; j < n; ++j) {
    T t = *alpha * xs[j * incx];
    idx lo = up ? 0 : j, hi = up ? j + 1 : n;
    for (idx i = lo; i < hi; ++i) ap[pk(i, j)] += xs[i * incx] * t;
  }
}


// Operations of the iterative refinement (lapack/lu/refine.h) for a
// symmetric or Hermitian matrix held as one triangle by at(i, j), with the
// entries outside the band |i - j| <= kd known to be zero; solve(v) applies
// the inverse from the factors. A complex symmetric inverse applied for the
// conjugate transpose is conj(inv(A) conj(v)).
template <class T, bool herm, class At, class Solve> struct SymRefineOps {
  bool up;
  idx n, kd;
  At at;
  Solve solve_fn;
  idx lo(idx j) const { return imax(0, j - kd); }
  idx hi(idx j) const { return imin(n, j + kd + 1); }
  T get(idx i, idx j) const { return sym_entry<herm, T>(up, i, j, at); }
  void residual(const T *x, const T *b, T *r) const {
    for (idx i = 0; i < n; ++i) {
      T s = b[i];
      for (idx j = lo(i); j < hi(i); ++j) s -= get(i, j) * x[j];
      r[i] = s;
    }
  }
  void abs_product(const T *x, real_t<T> *w) const {
    for (idx i = 0; i < n; ++i) {
      real_t<T> s = 0;
      for (idx j = lo(i); j < hi(i); ++j) s += abs1(get(i, j)) * abs1(x[j]);
      w[i] += s;
    }
  }
  void solve(T *v, bool transposed) const {
    bool cj = transposed && !herm && is_complex_v<T>;
    if (cj)
      for (idx i = 0; i < n; ++i) v[i] = nxl::conj(v[i]);
    solve_fn(v);
    if (cj)
      for (idx i = 0; i < n; ++i) v[i] = nxl::conj(v[i]);
  }
};
template <class T, bool herm, class At, class Solve>
SymRefineOps<T, herm, At, Solve> sym_refine_ops(bool up, idx n, idx kd, At at, Solve solve) {
  return SymRefineOps<T, herm, At, Solve>{up, n, kd, at, solve};
}

// Reciprocal condition number in the one-norm of a symmetric or Hermitian
// matrix of norm anorm, from solve(v) = inv(A) v (the estimator's products
// with inv(A)^H are conjugated solves for complex symmetric matrices).
template <class T, bool herm, class Solve>
void sym_rcond(const char *stem, idx n, real_t<T> anorm, real_t<T> *rcond, T *work, Solve solve) {
  Work<idx> isgn(n);
  if (n > 0 && !isgn) return report<T>(stem, 1089, nullptr);
  rcond_by_solves<T>(n, anorm, rcond, work, isgn.get(), [&](T *x, idx kase) {
    bool cj = kase == 2 && !herm && is_complex_v<T>;
    if (cj)
      for (idx i = 0; i < n; ++i) x[i] = nxl::conj(x[i]);
    solve(x);
    if (cj)
      for (idx i = 0; i < n; ++i) x[i] = nxl::conj(x[i]);
  });
}

// The fact argument of the positive definite expert drivers: 'N' factor,
// 'E' equilibrate and factor, 'F' factors given (equed then says whether
// A was equilibrated, 'Y', or not, 'N'). equed becomes 'N' unless 'F'.
struct PdFact {
  bool nofact, equil, given, rcequ;
  PdFact(const char *fact, char *equed) {
    char fa = upper(fact);
    nofact = fa == 'N';
    equil = fa == 'E';
    given = fa == 'F';
    rcequ = given && upper(equed) == 'Y';
    if (nofact || equil) *equed = 'N';
  }
  bool equed_ok(const char *equed) const { return !given || rcequ || upper(equed) == 'N'; }
};

// The steps shared by the positive definite expert drivers around the
// factorization. pd_equilibrate: with fact = 'E', scale factors from the
// diagonal diag(i) applied by scale(s, scond, amax, equed) when worthwhile;
// then B := diag(s) B when A is (or was given) equilibrated.
template <class T, class Diag, class Scale>
void pd_equilibrate(bool equil, idx n, idx nrhs, Diag diag, Scale scale, real_t<T> *s, real_t<T> *scond,
                    char *equed, bool *rcequ, T *b, idx ldb) {
  if (equil) {
    idx infequ = 0;
    real_t<T> amax = 0;
    diag_equ<T>(n, diag, s, scond, &amax, &infequ);
    if (infequ == 0) {
      scale(s, scond, &amax, equed);
      *rcequ = *equed == 'Y';
    }
  }
  if (*rcequ)
    for (idx j = 0; j < nrhs; ++j)
      for (idx i = 0; i < n; ++i) b[i + j * ldb] *= s[i];
}
// pd_finish: X := inv(A) B by solve(x, ldx, nrhs), refined by refine();
// X := diag(s) X and the error bounds widened when equilibrated; info =
// n + 1 when the matrix is singular to working precision.
template <class T, class Solve, class Refine>
void pd_finish(idx n, idx nrhs, const T *b, idx ldb, T *x, idx ldx, bool rcequ, const real_t<T> *s,
               real_t<T> scond, real_t<T> rcond, real_t<T> *ferr, idx *info, Solve solve, Refine refine) {
  for (idx j = 0; j < nrhs; ++j)
    for (idx i = 0; i < n; ++i) x[i + j * ldx] = b[i + j * ldb];
  solve(x, ldx, nrhs);
  refine();
  if (rcequ) {
    for (idx j = 0; j < nrhs; ++j)
      for (idx i = 0; i < n; ++i) x[i + j * ldx] *= s[i];
    for (idx j = 0; j < nrhs; ++j) ferr[j] /= scond;
  }
  if (rcond < lamch<real_t<T>>('E')) *info = n + 1;
}

// Conjugates n entries x[0], x[inc], ... (no-op for real types).
template <class T> inline void lacgv(idx n, T *x, idx inc) {
  if constexpr (is_complex_v<T>)
    for (idx i = 0; i < n; ++i) x[i * inc] = nxl::conj(x[i * inc]);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_PACKED_PACKED_H
