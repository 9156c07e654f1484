// Level-2 kernels for rank-1 and rank-2 updates: ?ger/?geru/?gerc,
// ?syr/?her, ?syr2/?her2 (full storage), ?spr/?hpr, ?spr2/?hpr2 (packed),
// one build per code path.
#include "blas/kernels/level2_algos.h"
#include "blas/level2_params.h"
#include "service/codepath.h"

namespace nxl {
inline namespace NXL_CP_NS {
namespace l2 {

// A += alpha * x * op(y)^T with op = conj for gerc.
template <class T, bool Conj>
void ger_k NXL_L2_GER_P(T) {
  const idx mm = *m, nn = *n, ix = *incx, iy = *incy, ld = *lda;
  const T al = *alpha;
  if (mm <= 0 || nn <= 0 || is_zero(al)) return;
  x += vec_start(mm, ix);
  y += vec_start(nn, iy);
  // Groups of kRG columns, each column streamed once with x loaded once per
  // group; strided x goes one column at a time.
  T t[kRG];
  T *cols[kRG];
  for (idx j0 = 0; j0 < nn; j0 += kRG) {
    const idx g = nn - j0 < kRG ? nn - j0 : kRG;
    for (idx c = 0; c < g; ++c) {
      t[c] = mul(al, opc<Conj>(y[(j0 + c) * iy]));
      cols[c] = a + (j0 + c) * ld;
    }
    if (ix == 1) {
      rank_cols<T, false>(mm, g, cols, x, t, nullptr, nullptr);
    } else {
      for (idx c = 0; c < g; ++c)
        rank_col_strided<T, false>(mm, cols[c], x, ix, t[c], nullptr, 0, T(0));
    }
  }
}

template <class T, bool Herm, bool Packed, class A>
void syr_k(const char *uplo, idx n, idx c0, idx c1, A alpha, const T *x, idx incx, T *a,
           idx lda) {
  if (n <= 0 || alpha == A(0)) return;
  const bool upper = upc(uplo) == 'U';
  x += vec_start(n, incx);
  if constexpr (Packed) syr_cols<T, Herm>(c0, c1, T(alpha), x, incx, PackSt<T *>{a, upper, n});
  else syr_cols<T, Herm>(c0, c1, T(alpha), x, incx, FullSt<T *>{a, lda, upper, n});
}

template <class T, bool Herm, bool Packed>
void syr2_k(const char *uplo, idx n, idx c0, idx c1, T alpha, const T *x, idx incx, const T *y,
            idx incy, T *a, idx lda) {
  if (n <= 0 || is_zero(alpha)) return;
  const bool upper = upc(uplo) == 'U';
  x += vec_start(n, incx);
  y += vec_start(n, incy);
  if constexpr (Packed)
    syr2_cols<T, Herm>(c0, c1, alpha, x, incx, y, incy, PackSt<T *>{a, upper, n});
  else
    syr2_cols<T, Herm>(c0, c1, alpha, x, incx, y, incy, FullSt<T *>{a, lda, upper, n});
}

}  // namespace l2
}  // namespace NXL_CP_NS
}  // namespace nxl

#define NXL_L2_K_SYM(p, T, R, H, syr, syr2, spr, spr2)                                     \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##syr) NXL_L2_SYR_P(T, R) {                   \
    nxl::l2::syr_k<T, H, false>(uplo, *n, 0, *n, *alpha, x, *incx, a, *lda);                \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##syr2) NXL_L2_SYR2_P(T) {                    \
    nxl::l2::syr2_k<T, H, false>(uplo, *n, 0, *n, *alpha, x, *incx, y, *incy, a, *lda);     \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##spr) NXL_L2_SPR_P(T, R) {                   \
    nxl::l2::syr_k<T, H, true>(uplo, *n, 0, *n, *alpha, x, *incx, ap, 0);                   \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##spr2) NXL_L2_SPR2_P(T) {                    \
    nxl::l2::syr2_k<T, H, true>(uplo, *n, 0, *n, *alpha, x, *incx, y, *incy, ap, 0);        \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##syr##_part) NXL_L2_SYR_PART_P(T, R) {       \
    nxl::l2::syr_k<T, H, false>(uplo, *n, *c0, *c1, *alpha, x, *incx, a, *lda);             \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##syr2##_part) NXL_L2_SYR2_PART_P(T) {        \
    nxl::l2::syr2_k<T, H, false>(uplo, *n, *c0, *c1, *alpha, x, *incx, y, *incy, a, *lda);  \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##spr##_part) NXL_L2_SYR_PART_P(T, R) {       \
    nxl::l2::syr_k<T, H, true>(uplo, *n, *c0, *c1, *alpha, x, *incx, a, 0);                 \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##spr2##_part) NXL_L2_SYR2_PART_P(T) {        \
    nxl::l2::syr2_k<T, H, true>(uplo, *n, *c0, *c1, *alpha, x, *incx, y, *incy, a, 0);      \
  }
#define NXL_L2_K_GER(p, T, name, C)                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##name) NXL_L2_GER_P(T) {                     \
    nxl::l2::ger_k<T, C> NXL_L2_GER_A;                                                     \
  }
NXL_L2_K_GER(s, float, ger, false)
NXL_L2_K_GER(d, double, ger, false)
NXL_L2_K_GER(c, std::complex<float>, geru, false)
NXL_L2_K_GER(c, std::complex<float>, gerc, true)
NXL_L2_K_GER(z, std::complex<double>, geru, false)
NXL_L2_K_GER(z, std::complex<double>, gerc, true)
NXL_L2_K_SYM(s, float, float, false, syr, syr2, spr, spr2)
NXL_L2_K_SYM(d, double, double, false, syr, syr2, spr, spr2)
NXL_L2_K_SYM(c, std::complex<float>, float, true, her, her2, hpr, hpr2)
NXL_L2_K_SYM(z, std::complex<double>, double, true, her, her2, hpr, hpr2)
