// Level-2 kernels for symmetric and Hermitian products: ?symv/?hemv (full),
// ?sbmv/?hbmv (band), ?spmv/?hpmv (packed), one build per code path.
#include "blas/kernels/level2_algos.h"
#include "blas/level2_params.h"
#include "service/codepath.h"

namespace nxl {
inline namespace NXL_CP_NS {
namespace l2 {

// y := beta*y, then y += alpha*A*x through `run(upper, alpha, x, y)`.
template <class T, class Run>
inline void sym_product(const char *uplo, idx n, T alpha, const T *x, idx incx, T beta, T *y,
                        idx incy, Run run) {
  x += vec_start(n, incx);
  y += vec_start(n, incy);
  scale_vec(n, beta, y, incy);
  if (is_zero(alpha)) return;
  run(upc(uplo) == 'U', x, y);
}

template <class T, bool Herm>
void symv_k NXL_L2_SYMV_P(T) {
  const idx nn = *n, ix = *incx, iy = *incy, ld = *lda;
  const T al = *alpha;
  sym_product<T>(uplo, nn, al, x, ix, *beta, y, iy, [&](bool upper, const T *xs, T *ys) {
    symv_full<T, Herm>(upper, nn, 0, nn, al, a, ld, xs, ix, ys, iy);
  });
}

template <class T, bool Herm>
void sbmv_k NXL_L2_SBMV_P(T) {
  const idx nn = *n, ix = *incx, iy = *incy;
  const T al = *alpha;
  sym_product<T>(uplo, nn, al, x, ix, *beta, y, iy, [&](bool upper, const T *xs, T *ys) {
    const BandSt<const T *> st{a, *lda, *kband, upper, nn};
    if (ix == 1 && iy == 1) symv_band<T, Herm>(0, nn, al, st, xs, ys);
    else symv_cols<T, Herm>(0, nn, al, st, xs, ix, ys, iy);
  });
}

template <class T, bool Herm>
void spmv_k NXL_L2_SPMV_P(T) {
  const idx nn = *n, ix = *incx, iy = *incy;
  const T al = *alpha;
  sym_product<T>(uplo, nn, al, x, ix, *beta, y, iy, [&](bool upper, const T *xs, T *ys) {
    symv_cols<T, Herm>(0, nn, al, PackSt<const T *>{ap, upper, nn}, xs, ix, ys, iy);
  });
}

// Threaded ?symv/?hemv: yp (contiguous, n elements) += alpha times the
// contribution of the stored columns [c0, c1).
template <class T, bool Herm>
void symv_part_k NXL_L2_SYMV_PART_P(T) {
  const idx nn = *n, ix = *incx;
  symv_full<T, Herm>(upc(uplo) == 'U', nn, *c0, *c1, *alpha, a, *lda, x + vec_start(nn, ix), ix,
                     yp, 1);
}

// Threaded ?sbmv/?hbmv and ?spmv/?hpmv: the same for band and packed storage.
template <class T, bool Herm>
void sbmv_part_k NXL_L2_SBMV_PART_P(T) {
  const idx nn = *n, ix = *incx;
  const BandSt<const T *> st{a, *lda, *kband, upc(uplo) == 'U', nn};
  const T *xs = x + vec_start(nn, ix);
  if (ix == 1) symv_band<T, Herm>(*c0, *c1, *alpha, st, xs, yp);
  else symv_cols<T, Herm>(*c0, *c1, *alpha, st, xs, ix, yp, 1);
}

template <class T, bool Herm>
void spmv_part_k NXL_L2_SYMV_PART_P(T) {
  const idx nn = *n, ix = *incx;
  (void)lda;
  symv_cols<T, Herm>(*c0, *c1, *alpha, PackSt<const T *>{a, upc(uplo) == 'U', nn},
                     x + vec_start(nn, ix), ix, yp, 1);
}

}  // namespace l2
}  // namespace NXL_CP_NS
}  // namespace nxl

#define NXL_L2_K(p, T, H, sy, sb, sp)                                                      \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##sy) NXL_L2_SYMV_P(T) {                      \
    nxl::l2::symv_k<T, H> NXL_L2_SYMV_A;                                                   \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##sb) NXL_L2_SBMV_P(T) {                      \
    nxl::l2::sbmv_k<T, H> NXL_L2_SBMV_A;                                                   \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##sp) NXL_L2_SPMV_P(T) {                      \
    nxl::l2::spmv_k<T, H> NXL_L2_SPMV_A;                                                   \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##sy##_part) NXL_L2_SYMV_PART_P(T) {          \
    nxl::l2::symv_part_k<T, H> NXL_L2_SYMV_PART_A;                                         \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##sb##_part) NXL_L2_SBMV_PART_P(T) {          \
    nxl::l2::sbmv_part_k<T, H> NXL_L2_SBMV_PART_A;                                         \
  }                                                                                        \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##p##sp##_part) NXL_L2_SYMV_PART_P(T) {          \
    nxl::l2::spmv_part_k<T, H> NXL_L2_SYMV_PART_A;                                         \
  }
NXL_L2_K(s, float, false, symv, sbmv, spmv)
NXL_L2_K(d, double, false, symv, sbmv, spmv)
NXL_L2_K(c, std::complex<float>, true, hemv, hbmv, hpmv)
NXL_L2_K(z, std::complex<double>, true, hemv, hbmv, hpmv)
