// Level-2 kernels for triangular matrices: products ?trmv, ?tbmv, ?tpmv and
// solves ?trsv, ?tbsv, ?tpsv, one build per code path.
#include "blas/kernels/level2_algos.h"
#include "blas/level2_params.h"
#include "service/codepath.h"

namespace nxl {
inline namespace NXL_CP_NS {
namespace l2 {

enum class Store { full, band, packed };

template <class T, bool Solve, Store St>
void tri_k(const char *uplo, const char *trans, const char *diag, idx n, idx k, const T *a,
           idx lda, T *x, idx incx) {
  const bool upper = upc(uplo) == 'U';
  const char t = upc(trans);
  const bool tr = t != 'N', cj = is_complex_v<T> && t == 'C';
  const bool unit = upc(diag) == 'U';
  x += vec_start(n, incx);
  auto go = [&](auto conj_tag) {
    constexpr bool C = decltype(conj_tag)::value;
    if constexpr (St == Store::full) {
      tr_full<T, C, Solve>(upper, tr, unit, n, a, lda, x, incx);
    } else if constexpr (St == Store::band) {
      BandSt<const T *> s{a, lda, k, upper, n};
      if (!Solve && !tr && incx == 1 && !is_complex_v<T>) tbmv_rows<T>(upper, unit, n, k, a, lda, x);
      else if (tr && incx == 1) tb_trans_cols<T, C, Solve>(upper, unit, n, s, x);
      else if constexpr (Solve) trsv_cols<T, C>(tr, unit, n, s, x, incx);
      else trmv_cols<T, C>(tr, unit, n, s, x, incx);
    } else {
      PackSt<const T *> s{a, upper, n};
      if constexpr (Solve) trsv_cols<T, C>(tr, unit, n, s, x, incx);
      else trmv_cols<T, C>(tr, unit, n, s, x, incx);
    }
  };
  if (cj) go(std::true_type{});
  else go(std::false_type{});
}

}  // namespace l2
}  // namespace NXL_CP_NS
}  // namespace nxl

#define NXL_L2_K(p, T, S, mv)                                                              \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##tr##mv) NXL_L2_TRMV_P(T) {                  \
    nxl::l2::tri_k<T, S, nxl::l2::Store::full>(uplo, trans, diag, *n, 0, a, *lda, x, *incx); \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##tb##mv) NXL_L2_TBMV_P(T) {                  \
    nxl::l2::tri_k<T, S, nxl::l2::Store::band>(uplo, trans, diag, *n, *kband, a, *lda, x, *incx); \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##tp##mv) NXL_L2_TPMV_P(T) {                  \
    nxl::l2::tri_k<T, S, nxl::l2::Store::packed>(uplo, trans, diag, *n, 0, ap, 0, x, *incx); \
  }
NXL_L2_K(s, float, false, mv)
NXL_L2_K(d, double, false, mv)
NXL_L2_K(c, std::complex<float>, false, mv)
NXL_L2_K(z, std::complex<double>, false, mv)
NXL_L2_K(s, float, true, sv)
NXL_L2_K(d, double, true, sv)
NXL_L2_K(c, std::complex<float>, true, sv)
NXL_L2_K(z, std::complex<double>, true, sv)
