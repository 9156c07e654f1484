// One-norm estimation by reverse communication (Hager's method with
// Higham's refinements): the caller applies A (kase = 1) or A^H (kase = 2)
// to x and calls again, until kase = 0; est then holds a lower estimate of
// |A|_1 and v a vector with |A v| = est |v|. lacn2 keeps its state in isave;
// lacon keeps it in static storage (one estimation at a time per process).
#ifndef NXL_LAPACK_AUX_LACN2_H
#define NXL_LAPACK_AUX_LACN2_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

// Sum of |x_i| (true modulus for complex entries).
template <class T> real_t<T> sum_abs(idx n, const T *x) {
  real_t<T> s = 0;
  for (idx i = 0; i < n; ++i) s += absv(x[i]);
  return s;
}
// First index of the largest |x_i|.
template <class T> idx index_max(idx n, const T *x) {
  idx k = 0;
  real_t<T> best = absv(x[0]);
  for (idx i = 1; i < n; ++i) {
    real_t<T> v = absv(x[i]);
    if (v > best) { best = v; k = i; }
  }
  return k;
}

// isgn is used by the real forms only (may be null for complex types).
template <class T>
void lacn2_core(idx n, T *v, T *x, idx *isgn, real_t<T> *est, idx *kase, idx *isave) {
  using R = real_t<T>;
  const idx itmax = 5;
  const R safmin = lamch<R>('S');
  auto unit_signs = [&]() {
    for (idx i = 0; i < n; ++i) {
      if constexpr (is_complex_v<T>) {
        R a = absv(x[i]);
        x[i] = a > safmin ? x[i] / a : T(1);
      } else {
        x[i] = x[i] >= R(0) ? R(1) : R(-1);
        isgn[i] = static_cast<idx>(x[i]);
      }
    }
  };
  auto unit_vector = [&](idx j) {
    for (idx i = 0; i < n; ++i) x[i] = T(0);
    x[j] = T(1);
    *kase = 1;
    isave[0] = 3;
  };
  auto alternating = [&]() {
    R s = 1;
    for (idx i = 0; i < n; ++i) {
      x[i] = T(s * (R(1) + R(i) / R(n > 1 ? n - 1 : 1)));
      s = -s;
    }
    *kase = 1;
    isave[0] = 5;
  };
  if (*kase == 0) {
    for (idx i = 0; i < n; ++i) x[i] = T(R(1) / R(n));
    *kase = 1;
    isave[0] = 1;
    return;
  }
  switch (isave[0]) {
    case 1:  // x = A x
      if (n == 1) {
        v[0] = x[0];
        *est = absv(v[0]);
        *kase = 0;
        return;
      }
      *est = sum_abs(n, x);
      unit_signs();
      *kase = 2;
      isave[0] = 2;
      return;
    case 2:  // x = A^H x
      isave[1] = index_max(n, x);
      isave[2] = 2;
      unit_vector(isave[1]);
      return;
    case 3: {  // x = A x
      for (idx i = 0; i < n; ++i) v[i] = x[i];
      R estold = *est;
      *est = sum_abs(n, v);
      if constexpr (!is_complex_v<T>) {
        bool same_signs = true;
        for (idx i = 0; i < n; ++i) {
          idx sg = x[i] >= R(0) ? 1 : -1;
          if (sg != isgn[i]) { same_signs = false; break; }
        }
        if (same_signs) {
          alternating();
          return;
        }
      }
      if (*est <= estold) {
        alternating();
        return;
      }
      unit_signs();
      *kase = 2;
      isave[0] = 4;
      return;
    }
    case 4: {  // x = A^H x
      idx jlast = isave[1];
      isave[1] = index_max(n, x);
      bool moved;
      if constexpr (is_complex_v<T>) moved = absv(x[jlast]) != absv(x[isave[1]]);
      else moved = x[jlast] != std::fabs(x[isave[1]]);
      if (moved && isave[2] < itmax) {
        ++isave[2];
        unit_vector(isave[1]);
        return;
      }
      alternating();
      return;
    }
    case 5: {  // x = A x
      R temp = R(2) * (sum_abs(n, x) / R(3 * n));
      if (temp > *est) {
        for (idx i = 0; i < n; ++i) v[i] = x[i];
        *est = temp;
      }
      *kase = 0;
      return;
    }
    default:
      *kase = 0;
      return;
  }
}

template <class T>
void lacn2_real(const idx *n, T *v, T *x, idx *isgn, real_t<T> *est, idx *kase, idx *isave) {
  lacn2_core<T>(*n, v, x, isgn, est, kase, isave);
}
template <class T>
void lacn2_cplx(const idx *n, T *v, T *x, real_t<T> *est, idx *kase, idx *isave) {
  lacn2_core<T>(*n, v, x, nullptr, est, kase, isave);
}
template <class T> idx *lacon_state() {
  static idx isave[3];
  return isave;
}
template <class T>
void lacon_real(const idx *n, T *v, T *x, idx *isgn, real_t<T> *est, idx *kase) {
  lacn2_core<T>(*n, v, x, isgn, est, kase, lacon_state<T>());
}
template <class T>
void lacon_cplx(const idx *n, T *v, T *x, real_t<T> *est, idx *kase) {
  lacn2_core<T>(*n, v, x, nullptr, est, kase, lacon_state<T>());
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_AUX_LACN2_H
