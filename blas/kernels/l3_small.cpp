// Small general products of one code path: nxl_blas_<cp>_x<p>gemm_small,
// with the parameters of gemm. The dispatch layer calls them for
// m, n, k <= 64 with k >= 1 and alpha != 0.
#include <complex>
#include "blas/kernels/l3_small.h"
#include "service/codepath.h"

namespace nxl {
inline namespace NXL_CP_NS {
namespace small {
namespace {

// The flags were checked: each is one of n, t, c in either case, so clearing
// the lower-case bit gives the upper-case letter.
inline char upper(const char *f) { return char(*f & ~0x20); }

template <class T>
__attribute__((always_inline)) inline void gemm_k(const char *ta, const char *tb, const idx *m, const idx *n, const idx *k, const T *alpha,
            const T *a, const idx *lda, const T *b, const idx *ldb, const T *beta, T *c,
            const idx *ldc) {
  const char fa = upper(ta), fb = upper(tb);
  const bool ca = is_complex_v<T> && fa == 'C', cb = is_complex_v<T> && fb == 'C';
  gemm<T>(fa != 'N', ca, fb != 'N', cb, *m, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc);
}

}  // namespace
}  // namespace small
}  // namespace NXL_CP_NS
}  // namespace nxl

#define NXL_SMALL_KERNEL(P, T)                                                                   \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##P##gemm_small)(                                     \
      const char *ta, const char *tb, const nxl_int *m, const nxl_int *n, const nxl_int *k,      \
      const T *alpha, const T *a, const nxl_int *lda, const T *b, const nxl_int *ldb,            \
      const T *beta, T *c, const nxl_int *ldc, int, int) {                                       \
    nxl::NXL_CP_NS::small::gemm_k(ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);         \
  }
NXL_SMALL_KERNEL(s, float)
NXL_SMALL_KERNEL(d, double)
NXL_SMALL_KERNEL(c, std::complex<float>)
NXL_SMALL_KERNEL(z, std::complex<double>)
