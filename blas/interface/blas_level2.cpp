// Exported level-2 BLAS routines: one row per family with its argument checks
// in the standard's order and positions, instantiated per precision.
#include "blas/interface/frame.h"

using nxl::frame::F;
using nxl::frame::I;
using cfloat = std::complex<float>;
using cdouble = std::complex<double>;

#define NXL_L2_GENERAL(P, p, T)                                                                  \
  NXL_BLAS_ROUTINE(void, P##GEMV, p##gemv,                                                      \
                   (F trans, I m, I n, const T *alpha, const T *a, I lda, const T *x, I incx,   \
                    const T *beta, T *y, I incy),                                               \
                   (trans, m, n, alpha, a, lda, x, incx, beta, y, incy),                        \
                   NXL_CHECK(!trans_ok(trans), 1) NXL_CHECK(*m < 0, 2) NXL_CHECK(*n < 0, 3)     \
                   NXL_CHECK(*lda < mx1(*m), 6) NXL_CHECK(*incx == 0, 8)                        \
                   NXL_CHECK(*incy == 0, 11))                                                   \
  NXL_BLAS_ROUTINE(void, P##GBMV, p##gbmv,                                                      \
                   (F trans, I m, I n, I kl, I ku, const T *alpha, const T *a, I lda,           \
                    const T *x, I incx, const T *beta, T *y, I incy),                           \
                   (trans, m, n, kl, ku, alpha, a, lda, x, incx, beta, y, incy),                \
                   NXL_CHECK(!trans_ok(trans), 1) NXL_CHECK(*m < 0, 2) NXL_CHECK(*n < 0, 3)     \
                   NXL_CHECK(*kl < 0, 4) NXL_CHECK(*ku < 0, 5)                                  \
                   NXL_CHECK(*lda < *kl + *ku + 1, 8) NXL_CHECK(*incx == 0, 10)                 \
                   NXL_CHECK(*incy == 0, 13))                                                   \
  NXL_L2_TRIANGULAR(P, p, T, MV, mv)                                                                 \
  NXL_L2_TRIANGULAR(P, p, T, SV, sv)

// Triangular multiply (MV) and solve (SV): full, band and packed storage.
#define NXL_L2_TRIANGULAR(P, p, T, OP, op)                                                           \
  NXL_BLAS_ROUTINE(void, P##TR##OP, p##tr##op,                                                  \
                   (F uplo, F trans, F diag, I n, const T *a, I lda, T *x, I incx),             \
                   (uplo, trans, diag, n, a, lda, x, incx),                                     \
                   NXL_CHECK(!uplo_ok(uplo), 1) NXL_CHECK(!trans_ok(trans), 2)                  \
                   NXL_CHECK(!diag_ok(diag), 3) NXL_CHECK(*n < 0, 4)                            \
                   NXL_CHECK(*lda < mx1(*n), 6) NXL_CHECK(*incx == 0, 8))                       \
  NXL_BLAS_ROUTINE(void, P##TB##OP, p##tb##op,                                                  \
                   (F uplo, F trans, F diag, I n, I k, const T *a, I lda, T *x, I incx),        \
                   (uplo, trans, diag, n, k, a, lda, x, incx),                                  \
                   NXL_CHECK(!uplo_ok(uplo), 1) NXL_CHECK(!trans_ok(trans), 2)                  \
                   NXL_CHECK(!diag_ok(diag), 3) NXL_CHECK(*n < 0, 4) NXL_CHECK(*k < 0, 5)       \
                   NXL_CHECK(*lda < *k + 1, 7) NXL_CHECK(*incx == 0, 9))                        \
  NXL_BLAS_ROUTINE(void, P##TP##OP, p##tp##op,                                                  \
                   (F uplo, F trans, F diag, I n, const T *ap, T *x, I incx),                   \
                   (uplo, trans, diag, n, ap, x, incx),                                         \
                   NXL_CHECK(!uplo_ok(uplo), 1) NXL_CHECK(!trans_ok(trans), 2)                  \
                   NXL_CHECK(!diag_ok(diag), 3) NXL_CHECK(*n < 0, 4)                            \
                   NXL_CHECK(*incx == 0, 7))

// Symmetric (SY, SB, SP: real) or Hermitian (HE, HB, HP: complex) routines;
// S is the type of the scalar of the rank-1 update (real for her, hpr).
#define NXL_L2_SYMMETRIC(P, p, T, S, SY, sy, SB, sb, SP, sp)                                     \
  NXL_BLAS_ROUTINE(void, P##SY##MV, p##sy##mv,                                                  \
                   (F uplo, I n, const T *alpha, const T *a, I lda, const T *x, I incx,         \
                    const T *beta, T *y, I incy),                                               \
                   (uplo, n, alpha, a, lda, x, incx, beta, y, incy),                            \
                   NXL_CHECK(!uplo_ok(uplo), 1) NXL_CHECK(*n < 0, 2)                            \
                   NXL_CHECK(*lda < mx1(*n), 5) NXL_CHECK(*incx == 0, 7)                        \
                   NXL_CHECK(*incy == 0, 10))                                                   \
  NXL_BLAS_ROUTINE(void, P##SB##MV, p##sb##mv,                                                  \
                   (F uplo, I n, I k, const T *alpha, const T *a, I lda, const T *x, I incx,    \
                    const T *beta, T *y, I incy),                                               \
                   (uplo, n, k, alpha, a, lda, x, incx, beta, y, incy),                         \
                   NXL_CHECK(!uplo_ok(uplo), 1) NXL_CHECK(*n < 0, 2) NXL_CHECK(*k < 0, 3)       \
                   NXL_CHECK(*lda < *k + 1, 6) NXL_CHECK(*incx == 0, 8)                         \
                   NXL_CHECK(*incy == 0, 11))                                                   \
  NXL_BLAS_ROUTINE(void, P##SP##MV, p##sp##mv,                                                  \
                   (F uplo, I n, const T *alpha, const T *ap, const T *x, I incx,               \
                    const T *beta, T *y, I incy),                                               \
                   (uplo, n, alpha, ap, x, incx, beta, y, incy),                                \
                   NXL_CHECK(!uplo_ok(uplo), 1) NXL_CHECK(*n < 0, 2)                            \
                   NXL_CHECK(*incx == 0, 6) NXL_CHECK(*incy == 0, 9))                           \
  NXL_BLAS_ROUTINE(void, P##SY##R, p##sy##r,                                                    \
                   (F uplo, I n, const S *alpha, const T *x, I incx, T *a, I lda),              \
                   (uplo, n, alpha, x, incx, a, lda),                                           \
                   NXL_CHECK(!uplo_ok(uplo), 1) NXL_CHECK(*n < 0, 2)                            \
                   NXL_CHECK(*incx == 0, 5) NXL_CHECK(*lda < mx1(*n), 7))                       \
  NXL_BLAS_ROUTINE(void, P##SP##R, p##sp##r,                                                    \
                   (F uplo, I n, const S *alpha, const T *x, I incx, T *ap),                    \
                   (uplo, n, alpha, x, incx, ap),                                               \
                   NXL_CHECK(!uplo_ok(uplo), 1) NXL_CHECK(*n < 0, 2) NXL_CHECK(*incx == 0, 5))  \
  NXL_BLAS_ROUTINE(void, P##SY##R2, p##sy##r2,                                                  \
                   (F uplo, I n, const T *alpha, const T *x, I incx, const T *y, I incy, T *a,  \
                    I lda),                                                                     \
                   (uplo, n, alpha, x, incx, y, incy, a, lda),                                  \
                   NXL_CHECK(!uplo_ok(uplo), 1) NXL_CHECK(*n < 0, 2)                            \
                   NXL_CHECK(*incx == 0, 5) NXL_CHECK(*incy == 0, 7)                            \
                   NXL_CHECK(*lda < mx1(*n), 9))                                                \
  NXL_BLAS_ROUTINE(void, P##SP##R2, p##sp##r2,                                                  \
                   (F uplo, I n, const T *alpha, const T *x, I incx, const T *y, I incy,        \
                    T *ap),                                                                     \
                   (uplo, n, alpha, x, incx, y, incy, ap),                                      \
                   NXL_CHECK(!uplo_ok(uplo), 1) NXL_CHECK(*n < 0, 2)                            \
                   NXL_CHECK(*incx == 0, 5) NXL_CHECK(*incy == 0, 7))

// Rank-1 update of a general matrix (GER real; GERU, GERC complex).
#define NXL_L2_GER(P, p, T, SUF, suf)                                                            \
  NXL_BLAS_ROUTINE(void, P##GER##SUF, p##ger##suf,                                              \
                   (I m, I n, const T *alpha, const T *x, I incx, const T *y, I incy, T *a,     \
                    I lda),                                                                     \
                   (m, n, alpha, x, incx, y, incy, a, lda),                                     \
                   NXL_CHECK(*m < 0, 1) NXL_CHECK(*n < 0, 2) NXL_CHECK(*incx == 0, 5)           \
                   NXL_CHECK(*incy == 0, 7) NXL_CHECK(*lda < mx1(*m), 9))

NXL_L2_GENERAL(S, s, float)
NXL_L2_GENERAL(D, d, double)
NXL_L2_GENERAL(C, c, cfloat)
NXL_L2_GENERAL(Z, z, cdouble)
NXL_L2_SYMMETRIC(S, s, float, float, SY, sy, SB, sb, SP, sp)
NXL_L2_SYMMETRIC(D, d, double, double, SY, sy, SB, sb, SP, sp)
NXL_L2_SYMMETRIC(C, c, cfloat, float, HE, he, HB, hb, HP, hp)
NXL_L2_SYMMETRIC(Z, z, cdouble, double, HE, he, HB, hb, HP, hp)
NXL_L2_GER(S, s, float, , )
NXL_L2_GER(D, d, double, , )
NXL_L2_GER(C, c, cfloat, U, u)
NXL_L2_GER(C, c, cfloat, C, c)
NXL_L2_GER(Z, z, cdouble, U, u)
NXL_L2_GER(Z, z, cdouble, C, c)
