// Cholesky kernels for one triangle without BLAS calls: the whole
// factorization for n <= 16 and the unblocked factorization of the upper or
// lower triangle below the blocked crossover. One source, compiled once per
// code path.
#include "lapack/ps/small.h"

namespace nxl {
inline namespace NXL_LOCAL_NS {
namespace ps {

// A = U^H U, column by column: u(i,j) = (a(i,j) - u(0:i,i)^H u(0:i,j)) / u(i,i).
// Returns the order of the first leading minor that is not positive.
template <class T> idx potrf_upper(idx n, T *a, idx lda) {
  // The inner products may be summed in any order (vectorized).
#pragma clang fp reassociate(on)
  using R = real_t<T>;
  for (idx j = 0; j < n; ++j) {
    T *cj = a + j * lda;
    for (idx i = 0; i < j; ++i) {
      const T *ci = a + i * lda;
      T s = cj[i];
      for (idx k = 0; k < i; ++k) s -= mul(nxl::conj(ci[k]), cj[k]);
      cj[i] = s / re(ci[i]);
    }
    R d = re(cj[j]);
    for (idx k = 0; k < j; ++k) d -= re(cj[k]) * re(cj[k]) + im(cj[k]) * im(cj[k]);
    if (!(d > R(0))) {
      cj[j] = T(d);
      return j + 1;
    }
    cj[j] = T(std::sqrt(d));
  }
  return 0;
}

// A = L L^H, column by column (left-looking): l(j,j) from the row j of L
// already computed, then the column below it.
template <class T> idx potrf_lower(idx n, T *a, idx lda) {
#pragma clang fp reassociate(on)
  using R = real_t<T>;
  for (idx j = 0; j < n; ++j) {
    T *cj = a + j * lda;
    R d = re(cj[j]);
    for (idx k = 0; k < j; ++k) {
      T l = a[j + k * lda];
      d -= re(l) * re(l) + im(l) * im(l);
    }
    if (!(d > R(0))) {
      cj[j] = T(d);
      return j + 1;
    }
    // Four earlier columns per sweep over column j: one load and store of
    // column j serves four multiply-adds.
    idx k = 0;
    for (; k + 4 <= j; k += 4) {
      const T *c0 = a + k * lda, *c1 = c0 + lda, *c2 = c1 + lda, *c3 = c2 + lda;
      T f0 = nxl::conj(c0[j]), f1 = nxl::conj(c1[j]), f2 = nxl::conj(c2[j]), f3 = nxl::conj(c3[j]);
      for (idx i = j + 1; i < n; ++i)
        cj[i] = cj[i] - mul(c0[i], f0) - mul(c1[i], f1) - mul(c2[i], f2) - mul(c3[i], f3);
    }
    for (; k < j; ++k) {
      const T *ck = a + k * lda;
      T f = nxl::conj(ck[j]);
      for (idx i = j + 1; i < n; ++i) cj[i] -= mul(ck[i], f);
    }
    R r = std::sqrt(d);
    cj[j] = T(r);
    R inv = R(1) / r;
    for (idx i = j + 1; i < n; ++i) cj[i] *= inv;
  }
  return 0;
}

}  // namespace ps
}  // namespace NXL_LOCAL_NS
}  // namespace nxl

#define NXL_PS_CHOL(p, T)                                                                               \
  extern "C" void NXL_KERNEL(nxl_lapack_ps_, _##p##potrf_small)(const char *uplo, const nxl_int *n,     \
      T *a, const nxl_int *lda, nxl_int *info, int, int) {                                              \
    *info = nxl::ps::flag_is(uplo, 'U') ? nxl::ps::potrf_upper<T>(*n, a, *lda)                          \
                                        : nxl::ps::potrf_lower<T>(*n, a, *lda);                         \
  }                                                                                                     \
  extern "C" void NXL_KERNEL(nxl_lapack_ps_, _##p##potrf_u_small)(const char *, const nxl_int *n,       \
      T *a, const nxl_int *lda, nxl_int *info, int, int) {                                              \
    *info = nxl::ps::potrf_upper<T>(*n, a, *lda);                                                       \
  }                                                                                                     \
  extern "C" void NXL_KERNEL(nxl_lapack_ps_, _##p##potrf_l_small)(const char *, const nxl_int *n,       \
      T *a, const nxl_int *lda, nxl_int *info, int, int) {                                              \
    *info = nxl::ps::potrf_lower<T>(*n, a, *lda);                                                       \
  }

NXL_PS_CHOL(s, float)
NXL_PS_CHOL(d, double)
NXL_PS_CHOL(c, std::complex<float>)
NXL_PS_CHOL(z, std::complex<double>)
