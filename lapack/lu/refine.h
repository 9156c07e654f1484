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
      R s = 0;
      for (idx i = 0; i < n; ++i) {
        R q = w[i] > safe2 ? abs1(r[i]) / w[i] : (abs1(r[i]) + safe1) / (w[i] + safe1);
        if (q > s || std::isnan(q)) s = q;
      }
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
    for (idx i = 0; i < n; ++i) {
      R f = abs1(r[i]) + R(nz) * eps * w[i];
      w[i] = w[i] > safe2 ? f : f + safe1;
    }
    R est = 0;
    idx kase = 0, isave[3] = {0, 0, 0};
    for (;;) {
      lacn2_core<T>(n, v, r, isgn.get(), &est, &kase, isave);
      if (kase == 0) break;
      if (kase == 1) {
        ops.solve(r, true);
        for (idx i = 0; i < n; ++i) r[i] *= w[i];
      } else {
        for (idx i = 0; i < n; ++i) r[i] *= w[i];
        ops.solve(r, false);
      }
    }
    R xmax = 0;
    for (idx i = 0; i < n; ++i) xmax = std::max(xmax, abs1(xj[i]));
    ferr[j] = xmax != R(0) ? est / xmax : est;
  }
  (void)info;
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_LU_REFINE_H
