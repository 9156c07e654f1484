// Triangular solves with one right-hand side for the small solve kernels:
// x := op(A)^-1 x, A triangular n x n, column-major. Each runs in blocks of
// NB unknowns: the block's own triangle element by element, and the part of
// the product that couples it to the unknowns already solved as NB
// simultaneous column streams (an update of the remaining x by NB columns of
// A, or NB inner products against the solved x), so the dependency chain per
// unknown is one short step and the long loops vectorize.
#ifndef NXL_LAPACK_PS_SOLVE_VEC_H
#define NXL_LAPACK_PS_SOLVE_VEC_H

#include "lapack/ps/small.h"

namespace nxl {
inline namespace NXL_LOCAL_NS {
namespace ps {

// How the diagonal divides: not at all (unit), by the element, or by its real
// part (Cholesky factors, whose diagonal is real).
enum class diag { unit, full, real };

template <class T, diag D> inline T div_diag(T v, T d) {
  if constexpr (D == diag::unit) return v;
  else if constexpr (D == diag::real) return divide_real(v, re(d));
  else return divide(v, d);
}
template <bool Conj, class T> inline T cj(T v) {
  if constexpr (Conj) return nxl::conj(v);
  else return v;
}

inline constexpr idx kVecNB = 4;

// A x = b, A lower (forward) or upper (backward): column form.
template <class T, diag D, bool Lower>
void solve_vec_n(idx n, const T *__restrict a, idx lda, T *__restrict x) {
  constexpr idx NB = kVecNB;
  for (idx s = 0; s < n; s += NB) {
    const idx nb = n - s < NB ? n - s : NB;
    const idx j0 = Lower ? s : n - s - nb;
    // The diagonal block.
    if constexpr (Lower) {
      for (idx k = 0; k < nb; ++k) {
        const T *c = a + (j0 + k) * lda + j0;
        const T xk = div_diag<T, D>(x[j0 + k], c[k]);
        x[j0 + k] = xk;
        for (idx i = k + 1; i < nb; ++i) x[j0 + i] -= mul(c[i], xk);
      }
    } else {
      for (idx k = nb - 1; k >= 0; --k) {
        const T *c = a + (j0 + k) * lda + j0;
        const T xk = div_diag<T, D>(x[j0 + k], c[k]);
        x[j0 + k] = xk;
        for (idx i = 0; i < k; ++i) x[j0 + i] -= mul(c[i], xk);
      }
    }
    // The rows below (lower) or above (upper) the block.
    const idx r0 = Lower ? j0 + nb : 0, r1 = Lower ? n : j0;
    const T *c0 = a + j0 * lda;
    if (nb == NB) {
      const T x0 = x[j0], x1 = x[j0 + 1], x2 = x[j0 + 2], x3 = x[j0 + 3];
      const T *c1 = c0 + lda, *c2 = c1 + lda, *c3 = c2 + lda;
      NXL_PS_SHORT_LOOP
      for (idx i = r0; i < r1; ++i)
        x[i] = x[i] - ((mul(c0[i], x0) + mul(c1[i], x1)) + (mul(c2[i], x2) + mul(c3[i], x3)));
    } else {
      for (idx k = 0; k < nb; ++k) {
        const T *c = c0 + k * lda;
        const T xk = x[j0 + k];
        for (idx i = r0; i < r1; ++i) x[i] -= mul(c[i], xk);
      }
    }
  }
}

// op(A) x = b with op(A) = A^T or A^H (Conj): row j of op(A) is column j of
// A, so each unknown is its right-hand side less one inner product. Upper A
// goes forward, lower A backward.
template <class T, diag D, bool Lower, bool Conj>
void solve_vec_t(idx n, const T *__restrict a, idx lda, T *__restrict x) {
  // The inner products may be summed in any order (vectorized).
#pragma clang fp reassociate(on)
  constexpr idx NB = kVecNB;
  for (idx s = 0; s < n; s += NB) {
    const idx nb = n - s < NB ? n - s : NB;
    const idx j0 = Lower ? n - s - nb : s;
    // Rows of the solved unknowns: above the block (upper) or below (lower).
    const idx r0 = Lower ? j0 + nb : 0, r1 = Lower ? n : j0;
    const T *c0 = a + j0 * lda;
    T dot[NB] = {};
    if (nb == NB) {
      const T *c1 = c0 + lda, *c2 = c1 + lda, *c3 = c2 + lda;
      T s0 = T(0), s1 = T(0), s2 = T(0), s3 = T(0);
      NXL_PS_SHORT_LOOP
      for (idx i = r0; i < r1; ++i) {
        const T xi = x[i];
        s0 += mul(cj<Conj>(c0[i]), xi);
        s1 += mul(cj<Conj>(c1[i]), xi);
        s2 += mul(cj<Conj>(c2[i]), xi);
        s3 += mul(cj<Conj>(c3[i]), xi);
      }
      dot[0] = s0, dot[1] = s1, dot[2] = s2, dot[3] = s3;
    } else {
      for (idx k = 0; k < nb; ++k) {
        const T *c = c0 + k * lda;
        T sk = T(0);
        for (idx i = r0; i < r1; ++i) sk += mul(cj<Conj>(c[i]), x[i]);
        dot[k] = sk;
      }
    }
    // The block's own triangle.
    if constexpr (Lower) {
      for (idx k = nb - 1; k >= 0; --k) {
        const T *c = c0 + k * lda + j0;
        T v = x[j0 + k] - dot[k];
        for (idx i = k + 1; i < nb; ++i) v -= mul(cj<Conj>(c[i]), x[j0 + i]);
        x[j0 + k] = div_diag<T, D>(v, cj<Conj>(c[k]));
      }
    } else {
      for (idx k = 0; k < nb; ++k) {
        const T *c = c0 + k * lda + j0;
        T v = x[j0 + k] - dot[k];
        for (idx i = 0; i < k; ++i) v -= mul(cj<Conj>(c[i]), x[j0 + i]);
        x[j0 + k] = div_diag<T, D>(v, cj<Conj>(c[k]));
      }
    }
  }
}

}  // namespace ps
}  // namespace NXL_LOCAL_NS
}  // namespace nxl

#endif  // NXL_LAPACK_PS_SOLVE_VEC_H
