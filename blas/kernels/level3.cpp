// Level-3 kernels of one code path: nxl_blas_<cp>_x<routine> for the four
// precisions, all on the engine of l3_engine.h. Arguments arrive valid and
// the quick returns of the dispatch layer are already taken; each kernel
// still computes the full standard result for any valid argument list.
#include <complex>
#include "blas/kernels/l3_engine.h"
#include "service/codepath.h"

namespace nxl {
inline namespace NXL_CP_NS {
namespace {

inline char up(const char *f) {
  char c = *f;
  return (c >= 'a' && c <= 'z') ? char(c - 32) : c;
}

template <class T>
void gemm_k(const char *ta, const char *tb, const idx *m, const idx *n, const idx *k, const T *alpha,
            const T *a, const idx *lda, const T *b, const idx *ldb, const T *beta, T *c,
            const idx *ldc) {
  if (*m <= 0 || *n <= 0) return;
  const char fa = up(ta), fb = up(tb);
  const bool ca = fa == 'C' && is_complex_v<T>, cb = fb == 'C' && is_complex_v<T>;
  workspace<T> ws;
  gemm(ws, fa != 'N', ca, fb != 'N', cb, *m, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc);
}

template <class T>
void symm_k(const char *side, const char *uplo, bool herm, const idx *m, const idx *n, const T *alpha,
            const T *a, const idx *lda, const T *b, const idx *ldb, const T *beta, T *c,
            const idx *ldc) {
  if (*m <= 0 || *n <= 0) return;
  workspace<T> ws;
  symm(ws, up(side) == 'L', up(uplo) == 'U', herm, *m, *n, *alpha, a, *lda, b, *ldb, *beta, c, *ldc);
}

// op: 0 syrk, 1 syr2k, 2 herk, 3 her2k; columns [j0, j1) of C.
template <class T>
void rankk_k(const char *uplo, const char *trans, const idx *n, const idx *k, T alpha, const T *a,
             const idx *lda, const T *b, const idx *ldb, T beta, T *c, const idx *ldc, idx j0, idx j1,
             int op) {
  if (*n <= 0) return;
  workspace<T> ws;
  const bool herm = op >= 2, two = op & 1;
  rankk(ws, up(uplo) == 'U', up(trans) != 'N', herm, two, *n, *k, alpha, a, *lda, b, two ? *ldb : 1,
        beta, c, *ldc, j0, j1);
}

template <class T>
void trxm_k(bool solve, const char *side, const char *uplo, const char *ta, const char *diag,
            const idx *m, const idx *n, const T *alpha, const T *a, const idx *lda, T *b,
            const idx *ldb) {
  if (*m <= 0 || *n <= 0) return;
  workspace<T> ws;
  const char t = up(ta);
  const bool left = up(side) == 'L', upper = up(uplo) == 'U', unit = up(diag) == 'U';
  const bool cj = t == 'C' && is_complex_v<T>;
  if (solve) trsm(ws, left, upper, t != 'N', cj, unit, *m, *n, *alpha, a, *lda, b, *ldb);
  else trmm(ws, left, upper, t != 'N', cj, unit, *m, *n, *alpha, a, *lda, b, *ldb);
}

}  // namespace
}  // namespace NXL_CP_NS
}  // namespace nxl

using namespace nxl::NXL_CP_NS;

#define NXL_L3_KERNELS(P, T)                                                                     \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##P##gemm)(                                           \
      const char *ta, const char *tb, const idx *m, const idx *n, const idx *k, const T *alpha,  \
      const T *a, const idx *lda, const T *b, const idx *ldb, const T *beta, T *c,               \
      const idx *ldc, int, int) {                                                                \
    gemm_k(ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);                                \
  }                                                                                              \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##P##symm)(                                           \
      const char *side, const char *uplo, const idx *m, const idx *n, const T *alpha, const T *a, \
      const idx *lda, const T *b, const idx *ldb, const T *beta, T *c, const idx *ldc, int, int) { \
    symm_k(side, uplo, false, m, n, alpha, a, lda, b, ldb, beta, c, ldc);                        \
  }                                                                                              \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##P##syrk)(                                           \
      const char *uplo, const char *trans, const idx *n, const idx *k, const T *alpha,           \
      const T *a, const idx *lda, const T *beta, T *c, const idx *ldc, int, int) {               \
    rankk_k(uplo, trans, n, k, *alpha, a, lda, a, lda, *beta, c, ldc, 0, *n, 0);                 \
  }                                                                                              \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##P##syr2k)(                                          \
      const char *uplo, const char *trans, const idx *n, const idx *k, const T *alpha,           \
      const T *a, const idx *lda, const T *b, const idx *ldb, const T *beta, T *c,               \
      const idx *ldc, int, int) {                                                                \
    rankk_k(uplo, trans, n, k, *alpha, a, lda, b, ldb, *beta, c, ldc, 0, *n, 1);                 \
  }                                                                                              \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##P##trmm)(                                           \
      const char *side, const char *uplo, const char *ta, const char *diag, const idx *m,        \
      const idx *n, const T *alpha, const T *a, const idx *lda, T *b, const idx *ldb, int, int,  \
      int, int) {                                                                                \
    trxm_k(false, side, uplo, ta, diag, m, n, alpha, a, lda, b, ldb);                            \
  }                                                                                              \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##P##trsm)(                                           \
      const char *side, const char *uplo, const char *ta, const char *diag, const idx *m,        \
      const idx *n, const T *alpha, const T *a, const idx *lda, T *b, const idx *ldb, int, int,  \
      int, int) {                                                                                \
    trxm_k(true, side, uplo, ta, diag, m, n, alpha, a, lda, b, ldb);                             \
  }                                                                                              \
  /* Columns [*j0, *j1) of a rank-k family update (op as in rankk_k); alpha */                   \
  /* and beta in the element type, b ignored for the rank-k forms. */                            \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##P##rankk_cols)(                                     \
      const char *uplo, const char *trans, const idx *n, const idx *k, const T *alpha,           \
      const T *a, const idx *lda, const T *b, const idx *ldb, const T *beta, T *c,               \
      const idx *ldc, const idx *j0, const idx *j1, int op) {                                    \
    rankk_k(uplo, trans, n, k, *alpha, a, lda, b, ldb, *beta, c, ldc, *j0, *j1, op);             \
  }

#define NXL_L3_KERNELS_HERM(P, T, R)                                                             \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##P##hemm)(                                           \
      const char *side, const char *uplo, const idx *m, const idx *n, const T *alpha, const T *a, \
      const idx *lda, const T *b, const idx *ldb, const T *beta, T *c, const idx *ldc, int, int) { \
    symm_k(side, uplo, true, m, n, alpha, a, lda, b, ldb, beta, c, ldc);                         \
  }                                                                                              \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##P##herk)(                                           \
      const char *uplo, const char *trans, const idx *n, const idx *k, const R *alpha,           \
      const T *a, const idx *lda, const R *beta, T *c, const idx *ldc, int, int) {               \
    rankk_k(uplo, trans, n, k, T(*alpha), a, lda, a, lda, T(*beta), c, ldc, 0, *n, 2);           \
  }                                                                                              \
  extern "C" void NXL_KERNEL(nxl_blas_, _x##P##her2k)(                                          \
      const char *uplo, const char *trans, const idx *n, const idx *k, const T *alpha,           \
      const T *a, const idx *lda, const T *b, const idx *ldb, const R *beta, T *c,               \
      const idx *ldc, int, int) {                                                                \
    rankk_k(uplo, trans, n, k, *alpha, a, lda, b, ldb, T(*beta), c, ldc, 0, *n, 3);              \
  }

NXL_L3_KERNELS(s, float)
NXL_L3_KERNELS(d, double)
NXL_L3_KERNELS(c, std::complex<float>)
NXL_L3_KERNELS(z, std::complex<double>)
NXL_L3_KERNELS_HERM(c, std::complex<float>, float)
NXL_L3_KERNELS_HERM(z, std::complex<double>, double)

// Register tile of this path in elements of precision prec (0 s, 1 d, 2 c,
// 3 z): the multiples at which the threaded drivers may cut C.
extern "C" void NXL_KERNEL(nxl_blas_, _xl3_tile)(int prec, int *mr, int *nr) {
  switch (prec) {
    case 0: *mr = blk<float>::MR; *nr = blk<float>::NR; break;
    case 1: *mr = blk<double>::MR; *nr = blk<double>::NR; break;
    case 2: *mr = blk<std::complex<float>>::MR; *nr = blk<std::complex<float>>::NR; break;
    default: *mr = blk<std::complex<double>>::MR; *nr = blk<std::complex<double>>::NR; break;
  }
}
