// Iterative refinement with error bounds, shared by gerfs and porfs.
//
// For each right-hand side: r = b - op(A) x; the componentwise backward
// error berr = max_i |r_i| / (|op(A)| |x| + |b|)_i; while it is above eps,
// halves at least at each step and at most five steps were taken, solve
// op(A) d = r with the factors and set x += d. The forward error bound is
// |inv(op(A))| (|r| + nz eps (|op(A)| |x| + |b|)) estimated in the one-norm,
// over max |x_i|.
#ifndef NXL_LAPACK_LU_REFINE_H
#define NXL_LAPACK_LU_REFINE_H

#include "lapack/aux/lacn2.h"

namespace nxl {
namespace lapack {

// Componentwise backward error max_i |r_i| / w_i, where w = |op(A)| |x| + |b|;
// entries with a tiny w_i are compared with safe1 added on both sides.
template <class T>
real_t<T> backward_error(idx n, const T *r, const real_t<T> *w, real_t<T> safe1, real_t<T> safe2) {
  real_t<T> s = 0;
  for (idx i = 0; i < n; ++i) {
    real_t<T> q = w[i] > safe2 ? abs1(r[i]) / w[i] : (abs1(r[i]) + safe1) / (w[i] + safe1);
    if (q > s || std::isnan(q)) s = q;
  }
  return s;
}

// Forward error bound of x from the residual r and w = |op(A)| |x| + |b|:
// |inv(op(A))| (|r| + nz eps w) estimated in the one-norm, over max |x_i|.
// solve(y, transposed) replaces y by inv(op(A)) y or inv(op(A))^H y; r, v
// and w are overwritten.
template <class T, class Solve>
real_t<T> forward_error(idx n, const T *x, T *r, T *v, real_t<T> *w, idx *isgn, idx nz, Solve solve) {
  using R = real_t<T>;
  const R eps = lamch<R>('E'), safe1 = R(nz) * lamch<R>('S'), safe2 = safe1 / eps;
  for (idx i = 0; i < n; ++i) {
    R f = abs1(r[i]) + R(nz) * eps * w[i];
    w[i] = w[i] > safe2 ? f : f + safe1;
  }
  R est = 0;
  idx kase = 0, isave[3] = {0, 0, 0};
  for (;;) {
    lacn2_core<T>(n, v, r, isgn, &est, &kase, isave);
    if (kase == 0) break;
    if (kase == 1) {
      solve(r, true);
      for (idx i = 0; i < n; ++i) r[i] *= w[i];
    } else {
      for (idx i = 0; i < n; ++i) r[i] *= w[i];
      solve(r, false);
    }
  }
  R xmax = 0;
  for (idx i = 0; i < n; ++i) xmax = std::max(xmax, abs1(x[i]));
  return xmax != R(0) ? est / xmax : est;
}

// ops.residual(x, b, r): r = b - op(A) x (length n)
// ops.abs_product(x, w): w += |op(A)| |x|
// ops.solve(v, transposed): v = inv(op(A)) v, or inv(op(A))^H v when transposed
template <class T, class Ops>
void refine(idx n, idx nrhs, const T *b, idx ldb, T *x, idx ldx, real_t<T> *ferr, real_t<T> *berr, Ops &ops,
            const char *stem, idx *info) {
  using R = real_t<T>;
  if (n == 0 || nrhs == 0) {
    for (idx j = 0; j < nrhs; ++j) ferr[j] = berr[j] = 0;
    return;
  }
  const idx itmax = 5, nz = n + 1;
  const R eps = lamch<R>('E'), safmin = lamch<R>('S');
  const R safe1 = R(nz) * safmin, safe2 = safe1 / eps;
  Work<T> rw(2 * n);
  Work<R> ww(n);
  Work<idx> isgn(n);
  if (!rw || !ww || !isgn) return report<T>(stem, 1089, nullptr);
  T *r = rw.get(), *v = rw.get() + n;
  R *w = ww.get();
  for (idx j = 0; j < nrhs; ++j) {
    const T *bj = b + j * ldb;
    T *xj = x + j * ldx;
    idx count = 1;
    R lstres = 3;
    for (;;) {
      ops.residual(xj, bj, r);
      for (idx i = 0; i < n; ++i) w[i] = abs1(bj[i]);
      ops.abs_product(xj, w);
      R s = backward_error<T>(n, r, w, safe1, safe2);
      berr[j] = s;
      if (s > eps && R(2) * s <= lstres && count <= itmax) {
        ops.solve(r, false);
        for (idx i = 0; i < n; ++i) xj[i] += r[i];
        lstres = s;
        ++count;
        continue;
      }
      break;
    }
    ferr[j] = forward_error<T>(n, xj, r, v, w, isgn.get(), nz, [&](T *y, bool transposed) {
      ops.solve(y, transposed);
    });
  }
  (void)info;
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_LU_REFINE_H
