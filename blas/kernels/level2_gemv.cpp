// Level-2 kernels for general matrices: gemv and gbmv, one build per code path.
#include "blas/kernels/level2_algos.h"
#include "blas/level2_params.h"
#include "service/codepath.h"

namespace nxl {
inline namespace NXL_CP_NS {
namespace l2 {

template <class T>
inline char trans_code(const char *trans) {
  char t = upc(trans);
  return (!is_complex_v<T> && t == 'C') ? 'T' : t;
}

template <class T>
void gemv_k NXL_L2_GEMV_P(T) {
  gemv_run<T>(trans_code<T>(trans), *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}

template <class T>
void gbmv_k NXL_L2_GBMV_P(T) {
  gbmv_run<T>(trans_code<T>(trans), *m, *n, *kl, *ku, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}

}  // namespace l2
}  // namespace NXL_CP_NS
}  // namespace nxl

#define NXL_L2_K(p, T)                                                                     \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##gemv) NXL_L2_GEMV_P(T) {                    \
    nxl::l2::gemv_k<T> NXL_L2_GEMV_A;                                                      \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##gbmv) NXL_L2_GBMV_P(T) {                    \
    nxl::l2::gbmv_k<T> NXL_L2_GBMV_A;                                                      \
  }
NXL_L2_K(s, float)
NXL_L2_K(d, double)
NXL_L2_K(c, std::complex<float>)
NXL_L2_K(z, std::complex<double>)
