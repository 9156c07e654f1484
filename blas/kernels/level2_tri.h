// Level-2 kernels for triangular matrices: the frame shared by the products
// ?trmv, ?tbmv, ?tpmv (level2_trmv.cpp) and the solves ?trsv, ?tbsv, ?tpsv
// (level2_trsv.cpp), which are built as separate units per code path.
#pragma once
#include "blas/kernels/level2_algos.h"
#include "blas/level2_params.h"
#include "service/codepath.h"

namespace nxl {
inline namespace NXL_CP_NS {
namespace l2 {

enum class Store { full, band, packed };

// x := op(A) x or op(A) x = b; a product may be restricted to the elements
// [p0, p1) of its result with the original x in xc (see tr_groups).
template <class T, bool Solve, Store St>
void tri_k(const char *uplo, const char *trans, const char *diag, idx n, idx k, const T *a,
           idx lda, T *x, idx incx, const T *xc, idx p0, idx p1) {
  const bool upper = upc(uplo) == 'U';
  const char t = upc(trans);
  const bool tr = t != 'N', cj = is_complex_v<T> && t == 'C';
  const bool unit = upc(diag) == 'U';
  auto go = [&](auto conj_tag) {
    constexpr bool C = decltype(conj_tag)::value;
    if constexpr (St == Store::full) {
      tr_full<T, C, Solve>(upper, tr, unit, n, a, lda, x, incx, xc, p0, p1);
    } else if constexpr (St == Store::band) {
      BandSt<const T *> s{a, lda, k, upper, n};
      if (!tr && incx == 1) {
        if constexpr (Solve) tbsv_rows<T>(upper, unit, n, k, a, lda, x);
        else tbmv_rows<T>(upper, unit, n, k, a, lda, x, xc, p0, p1);
      } else if (tr && incx == 1) {
        tb_trans_cols<T, C, Solve>(upper, unit, n, s, x, xc, p0, p1);
      } else {
        tr_groups<T, C, Solve>(tr, unit, n, s, x, incx, xc, p0, p1);
      }
    } else {
      PackSt<const T *> s{a, upper, n};
      tr_groups<T, C, Solve>(tr, unit, n, s, x, incx, xc, p0, p1);
    }
  };
  if (cj) go(std::true_type{});
  else go(std::false_type{});
}

// The whole product or solve.
template <class T, bool Solve, Store St>
void tri_whole(const char *uplo, const char *trans, const char *diag, idx n, idx k, const T *a,
               idx lda, T *x, idx incx) {
  x += vec_start(n, incx);
  tri_k<T, Solve, St>(uplo, trans, diag, n, k, a, lda, x, incx, x, 0, n);
}

// Elements [p0, p1) of a product, unit-stride x and its copy xc.
template <class T, Store St>
void tri_part(const char *uplo, const char *trans, const char *diag, idx n, idx k, const T *a,
              idx lda, T *x, const T *xc, idx p0, idx p1) {
  tri_k<T, false, St>(uplo, trans, diag, n, k, a, lda, x, 1, xc, p0, p1);
}

}  // namespace l2
}  // namespace NXL_CP_NS
}  // namespace nxl

#define NXL_L2_K(p, T, S, mv)                                                              \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##tr##mv) NXL_L2_TRMV_P(T) {                  \
    nxl::l2::tri_whole<T, S, nxl::l2::Store::full>(uplo, trans, diag, *n, 0, a, *lda, x, *incx); \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##tb##mv) NXL_L2_TBMV_P(T) {                  \
    nxl::l2::tri_whole<T, S, nxl::l2::Store::band>(uplo, trans, diag, *n, *kband, a, *lda, x, \
                                                   *incx);                                 \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##tp##mv) NXL_L2_TPMV_P(T) {                  \
    nxl::l2::tri_whole<T, S, nxl::l2::Store::packed>(uplo, trans, diag, *n, 0, ap, 0, x, *incx); \
  }
#define NXL_L2_K_PART(p, T)                                                                \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##trmv_part) NXL_L2_TRMV_PART_P(T) {          \
    nxl::l2::tri_part<T, nxl::l2::Store::full>(uplo, trans, diag, *n, 0, a, *lda, x, xc, *p0, *p1); \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##tbmv_part) NXL_L2_TRMV_PART_P(T) {          \
    nxl::l2::tri_part<T, nxl::l2::Store::band>(uplo, trans, diag, *n, *kband, a, *lda, x, xc, \
                                               *p0, *p1);                                  \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##tpmv_part) NXL_L2_TRMV_PART_P(T) {          \
    nxl::l2::tri_part<T, nxl::l2::Store::packed>(uplo, trans, diag, *n, 0, a, 0, x, xc, *p0, *p1); \
  }
