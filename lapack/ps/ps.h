// Declarations of the small-matrix kernel dispatchers (lapack/dispatch/ps.cpp).
#ifndef NXL_LAPACK_PS_H
#define NXL_LAPACK_PS_H

#include <complex>
#include "nxl_types.h"

#define NXL_PS_DECL_ALL(p, T)                                                                          \
  extern "C" void nxl_lapack_ps_##p##getrf_small(const nxl_int *, const nxl_int *, T *, const nxl_int *, \
                                                 nxl_int *, nxl_int *);                                \
  extern "C" void nxl_lapack_ps_##p##getrf_cols(const nxl_int *, const nxl_int *, T *, const nxl_int *,  \
                                                nxl_int *, nxl_int *, const nxl_int *, const nxl_int *); \
  extern "C" void nxl_lapack_ps_##p##getrs_small(const char *, const nxl_int *, const nxl_int *,       \
                                                 const T *, const nxl_int *, const nxl_int *, T *,     \
                                                 const nxl_int *, nxl_int *, int);                     \
  extern "C" void nxl_lapack_ps_##p##potrs_small(const char *, const nxl_int *, const nxl_int *,       \
                                                 const T *, const nxl_int *, T *, const nxl_int *,     \
                                                 nxl_int *, int);                                      \
  extern "C" void nxl_lapack_ps_##p##potrf_small(const char *, const nxl_int *, T *, const nxl_int *,   \
                                                 nxl_int *, int);                                      \
  extern "C" void nxl_lapack_ps_##p##potrf_u_small(const char *, const nxl_int *, T *, const nxl_int *, \
                                                   nxl_int *, int);                                    \
  extern "C" void nxl_lapack_ps_##p##potrf_l_small(const char *, const nxl_int *, T *, const nxl_int *, \
                                                   nxl_int *, int);
NXL_PS_DECL_ALL(s, float)
NXL_PS_DECL_ALL(d, double)
NXL_PS_DECL_ALL(c, std::complex<float>)
NXL_PS_DECL_ALL(z, std::complex<double>)
#undef NXL_PS_DECL_ALL

namespace nxl {
namespace lapack {
namespace ps {
using idx = nxl_int;
#define NXL_PS_OVL(p, T)                                                                               \
  inline void getrf_small(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info) {                        \
    nxl_lapack_ps_##p##getrf_small(&m, &n, a, &lda, ipiv, info);                                       \
  }                                                                                                    \
  inline void getrf_cols(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info, idx j0, idx j1) {          \
    nxl_lapack_ps_##p##getrf_cols(&m, &n, a, &lda, ipiv, info, &j0, &j1);                              \
  }                                                                                                    \
  inline void getrs_small(const char *tr, idx n, idx nrhs, const T *a, idx lda, const idx *ipiv, T *b, \
                          idx ldb, idx *info) {                                                        \
    nxl_lapack_ps_##p##getrs_small(tr, &n, &nrhs, a, &lda, ipiv, b, &ldb, info, 1);                    \
  }                                                                                                    \
  inline void potrs_small(const char *u, idx n, idx nrhs, const T *a, idx lda, T *b, idx ldb,          \
                          idx *info) {                                                                 \
    nxl_lapack_ps_##p##potrs_small(u, &n, &nrhs, a, &lda, b, &ldb, info, 1);                           \
  }                                                                                                    \
  inline void potrf_small(const char *u, idx n, T *a, idx lda, idx *info) {                            \
    nxl_lapack_ps_##p##potrf_small(u, &n, a, &lda, info, 1);                                           \
  }                                                                                                    \
  inline void potrf_u_small(const char *u, idx n, T *a, idx lda, idx *info) {                          \
    nxl_lapack_ps_##p##potrf_u_small(u, &n, a, &lda, info, 1);                                         \
  }                                                                                                    \
  inline void potrf_l_small(const char *u, idx n, T *a, idx lda, idx *info) {                          \
    nxl_lapack_ps_##p##potrf_l_small(u, &n, a, &lda, info, 1);                                         \
  }
NXL_PS_OVL(s, float)
NXL_PS_OVL(d, double)
NXL_PS_OVL(c, std::complex<float>)
NXL_PS_OVL(z, std::complex<double>)
#undef NXL_PS_OVL
}  // namespace ps
}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_PS_H
