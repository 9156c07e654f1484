// Equilibration of a symmetric or Hermitian matrix held as one triangle by
// binormalization (Livne and Golub, "Scaling by binormalization", 2004):
// scale factors s such that every row of diag(s) A diag(s) has Euclidean
// norm near 1, rounded to powers of the radix so that scaling is exact.
//
// With B = |A|.^2 (entrywise) and x = s.^2, row i of the scaled matrix has
// squared norm v_i = x_i (B x)_i. The iteration visits the unknowns in turn
// (Gauss-Seidel) and gives x_i the value that makes v_i equal to the mean
// of all v after the change: with d = B(i, i), g = (B x)_i - d x_i and
// m rows in play, that value is the positive root of
//   (m - 1) d xi^2 + (m - 2) g xi + (2 g x_i + d x_i^2 - m mean(v)) = 0,
// after which B x takes (xi - x_i) B(:, i). It stops when every v_i is
// within a quarter of the mean, or after kBinSweeps sweeps. Rows that are
// entirely zero keep s_i = 1 and stay out of the mean.
//
// To keep B in range the matrix is first scaled by s0_i = 1 / sqrt(r_i), r
// the largest magnitude of each row (no scaled entry exceeds 1); x starts
// at 1 for that matrix, and s = s0 sqrt(x) mean(v)^(-1/4) at the end.
#ifndef NXL_LAPACK_SYM_EQUB_H
#define NXL_LAPACK_SYM_EQUB_H

#include <cmath>
#include "lapack/aux/norms.h"
#include "lapack/packed/packed.h"

namespace nxl {
namespace lapack {

constexpr int kBinSweeps = 100;

// at(i, j) is the stored entry (i <= j for 'U', i >= j for 'L'). work holds
// 2n reals. Returns the 1-based index of the first diagonal entry whose
// real part is not positive, 0 when there is none.
template <class T, bool herm, class At>
idx sym_equb(bool up, idx n, At at, real_t<T> *s, real_t<T> *scond, real_t<T> *amax, real_t<T> *work) {
  using R = real_t<T>;
  *amax = 0;
  *scond = 1;
  if (n <= 0) return 0;
  R *s0 = work, *bx = work + n;
  auto mag = [&](idx i, idx j) { return std::abs(i == j ? diag_of<herm>(at(i, i)) : at(i, j)); };
  // Visits every stored entry once as (i, j, |a_ij|), i the row of the stored side.
  auto each = [&](auto f) {
    for (idx j = 0; j < n; ++j)
      for (idx i = up ? 0 : j; i < (up ? j + 1 : n); ++i) f(i, j, mag(i, j));
  };
  idx info = 0;
  for (idx i = 0; i < n && info == 0; ++i)
    if (std::real(at(i, i)) <= R(0)) info = i + 1;
  for (idx i = 0; i < n; ++i) s0[i] = 0;
  each([&](idx i, idx j, R v) {
    s0[i] = std::max(s0[i], v);
    s0[j] = std::max(s0[j], v);
  });
  idx m = 0;
  for (idx i = 0; i < n; ++i) {
    *amax = std::max(*amax, s0[i]);
    s[i] = 1;  // x
    if (s0[i] > R(0)) {
      s0[i] = R(1) / std::sqrt(s0[i]);
      ++m;
    }
  }
  // b(i, j) = |s0_i a_ij s0_j|^2 <= 1 for a stored (i, j); zero on zero
  // rows (s0_i = 0). Squares of parts scaled first: no overflow, no root.
  auto b = [&](idx i, idx j) {
    T v = i == j ? diag_of<herm>(at(i, i)) : at(i, j);
    R re = s0[i] * (std::real(v) * s0[j]), im = s0[i] * (std::imag(v) * s0[j]);
    return re * re + im * im;
  };
  auto bcol = [&](idx i, auto f) {  // f(j, B(j, i)) over column i of the full B
    for (idx j = 0; j < n; ++j) f(j, (up ? j <= i : j >= i) ? b(j, i) : b(i, j));
  };
  for (idx i = 0; i < n; ++i) bx[i] = 0;
  each([&](idx i, idx j, R) {
    R t = b(i, j);
    bx[i] += t * s[j];
    if (i != j) bx[j] += t * s[i];
  });
  auto mean = [&]() {
    R sum = 0;
    for (idx i = 0; i < n; ++i)
      if (s0[i] > R(0)) sum += s[i] * bx[i];
    return sum / R(m);
  };
  R avg = m > 0 ? mean() : R(1);
  for (int sweep = 0; sweep < kBinSweeps && m > 1; ++sweep) {
    R worst = 0;
    for (idx i = 0; i < n; ++i)
      if (s0[i] > R(0)) worst = std::max(worst, std::fabs(s[i] * bx[i] - avg));
    if (!(worst > R(0.25) * avg)) break;
    for (idx i = 0; i < n; ++i) {
      if (s0[i] == R(0)) continue;
      R d = b(i, i), g = bx[i] - d * s[i], xi = s[i];
      R c2 = R(m - 1) * d, c1 = R(m - 2) * g, c0 = R(2) * g * xi + d * xi * xi - R(m) * avg;
      R den = c1 + std::sqrt(std::max(R(0), c1 * c1 - R(4) * c2 * c0));
      if (!(den > R(0)) || !(c0 < R(0))) continue;  // no positive root: leave x_i
      R nx = R(-2) * c0 / den, dx = nx - xi;
      bcol(i, [&](idx j, R t) { bx[j] += dx * t; });
      s[i] = nx;
      avg = nx * (d * nx + g);
    }
    avg = mean();
  }
  // s = s0 sqrt(x) avg^(-1/4), rounded to the nearest power of the radix.
  const R radix = lamch<R>('B'), smlnum = lamch<R>('S'), bignum = R(1) / smlnum;
  const R root = std::sqrt(std::sqrt(avg > R(0) ? avg : R(1)));
  R smin = bignum, smax = 0;
  for (idx i = 0; i < n; ++i) {
    R v = s0[i] > R(0) ? s0[i] * std::sqrt(s[i]) / root : R(1);
    R e = std::round(std::log(v) / std::log(radix));
    s[i] = std::pow(radix, e);
    smin = std::min(smin, s[i]);
    smax = std::max(smax, s[i]);
  }
  *scond = std::max(smin, smlnum) / std::min(smax, bignum);
  return info;
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_SYM_EQUB_H
