// Dispatchers of the small-matrix kernels: on the first call each asks for
// the code path and keeps the address of that path's kernel in a static
// pointer (racing first callers store the same value); the kernel gets the
// dispatcher's arguments and one trailing zero.
#include <complex>
#include "service/codepath.h"

namespace {
using c8 = std::complex<float>;
using c16 = std::complex<double>;
}  // namespace

// The seven builds of one kernel in the order of cp_kernel_index_nocnr().
#define NXL_PS_DECLARE(name, params)                                  \
  extern "C" void nxl_lapack_ps_def_##name params;                    \
  extern "C" void nxl_lapack_ps_mc_##name params;                     \
  extern "C" void nxl_lapack_ps_mc3_##name params;                    \
  extern "C" void nxl_lapack_ps_avx_##name params;                    \
  extern "C" void nxl_lapack_ps_avx2_##name params;                   \
  extern "C" void nxl_lapack_ps_avx512_mic_##name params;             \
  extern "C" void nxl_lapack_ps_avx512_##name params;

#define NXL_PS_DISPATCH(name, params, kparams, args)                                             \
  NXL_PS_DECLARE(name, kparams)                                                                  \
  extern "C" void nxl_lapack_ps_##name params {                                                  \
    using fn_t = void(*) kparams;                                                                \
    static fn_t kernel;                                                                          \
    fn_t k = kernel;                                                                             \
    if (!k) {                                                                                    \
      static const fn_t table[7] = {nxl_lapack_ps_def_##name, nxl_lapack_ps_mc_##name,           \
                                    nxl_lapack_ps_mc3_##name, nxl_lapack_ps_avx_##name,          \
                                    nxl_lapack_ps_avx2_##name, nxl_lapack_ps_avx512_mic_##name,  \
                                    nxl_lapack_ps_avx512_##name};                                \
      int i = nxl::cp_kernel_index_nocnr();                                                      \
      if (i < 0) return;                                                                         \
      k = table[i];                                                                              \
      kernel = k;                                                                                \
    }                                                                                            \
    k args;                                                                                      \
  }

#define NXL_PS_LU_ALL(p, T)                                                                        \
  NXL_PS_DISPATCH(p##getrf_small,                                                                  \
                  (const nxl_int *m, const nxl_int *n, T *a, const nxl_int *lda, nxl_int *ipiv,    \
                   nxl_int *info),                                                                 \
                  (const nxl_int *, const nxl_int *, T *, const nxl_int *, nxl_int *, nxl_int *,   \
                   int),                                                                           \
                  (m, n, a, lda, ipiv, info, 0))                                                   \
  NXL_PS_DISPATCH(p##getrf_cols,                                                                   \
                  (const nxl_int *m, const nxl_int *n, T *a, const nxl_int *lda, nxl_int *ipiv,    \
                   nxl_int *info, const nxl_int *j0, const nxl_int *j1),                           \
                  (const nxl_int *, const nxl_int *, T *, const nxl_int *, nxl_int *, nxl_int *,   \
                   const nxl_int *, const nxl_int *, int),                                         \
                  (m, n, a, lda, ipiv, info, j0, j1, 0))                                           \
  NXL_PS_DISPATCH(p##getrs_small,                                                                  \
                  (const char *tr, const nxl_int *n, const nxl_int *nrhs, const T *a,              \
                   const nxl_int *lda, const nxl_int *ipiv, T *b, const nxl_int *ldb,              \
                   nxl_int *info, int one),                                                        \
                  (const char *, const nxl_int *, const nxl_int *, const T *, const nxl_int *,     \
                   const nxl_int *, T *, const nxl_int *, nxl_int *, int, int),                    \
                  (tr, n, nrhs, a, lda, ipiv, b, ldb, info, one, 0))                               \
  NXL_PS_DISPATCH(p##potrs_small,                                                                  \
                  (const char *u, const nxl_int *n, const nxl_int *nrhs, const T *a,               \
                   const nxl_int *lda, T *b, const nxl_int *ldb, nxl_int *info, int one),          \
                  (const char *, const nxl_int *, const nxl_int *, const T *, const nxl_int *, T *, \
                   const nxl_int *, nxl_int *, int, int),                                          \
                  (u, n, nrhs, a, lda, b, ldb, info, one, 0))                                      \
  NXL_PS_DISPATCH(p##potrf_small,                                                                  \
                  (const char *u, const nxl_int *n, T *a, const nxl_int *lda, nxl_int *info,       \
                   int one),                                                                       \
                  (const char *, const nxl_int *, T *, const nxl_int *, nxl_int *, int, int),      \
                  (u, n, a, lda, info, one, 0))                                                    \
  NXL_PS_DISPATCH(p##potrf_u_small,                                                                \
                  (const char *u, const nxl_int *n, T *a, const nxl_int *lda, nxl_int *info,       \
                   int one),                                                                       \
                  (const char *, const nxl_int *, T *, const nxl_int *, nxl_int *, int, int),      \
                  (u, n, a, lda, info, one, 0))                                                    \
  NXL_PS_DISPATCH(p##potrf_l_small,                                                                \
                  (const char *u, const nxl_int *n, T *a, const nxl_int *lda, nxl_int *info,       \
                   int one),                                                                       \
                  (const char *, const nxl_int *, T *, const nxl_int *, nxl_int *, int, int),      \
                  (u, n, a, lda, info, one, 0))

NXL_PS_LU_ALL(s, float)
NXL_PS_LU_ALL(d, double)
NXL_PS_LU_ALL(c, c8)
NXL_PS_LU_ALL(z, c16)
