// Exported level-3 BLAS routines: one row per family with its argument checks
// in the standard's order and positions, instantiated per precision.
#include "blas/interface/frame.h"

using nxl::frame::F;
using nxl::frame::I;
using cfloat = std::complex<float>;
using cdouble = std::complex<double>;

namespace nxl {
namespace frame {
// Complex symmetric updates take N or T; Hermitian ones N or C.
inline bool trans_nt(const char *t) { return is(t, "N") || is(t, "T"); }
inline bool trans_nc(const char *t) { return is(t, "N") || is(t, "C"); }
}  // namespace frame
}  // namespace nxl

#define NXL_L3_GENERAL(P, p, T)                                                                  \
  NXL_BLAS_ROUTINE(void, P##GEMM, p##gemm,                                                      \
                   (F transa, F transb, I m, I n, I k, const T *alpha, const T *a, I lda,       \
                    const T *b, I ldb, const T *beta, T *c, I ldc),                             \
                   (transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc),              \
                   NXL_CHECK(!trans_ok(transa), 1) NXL_CHECK(!trans_ok(transb), 2)              \
                   NXL_CHECK(*m < 0, 3) NXL_CHECK(*n < 0, 4) NXL_CHECK(*k < 0, 5)               \
                   NXL_CHECK(*lda < mx1(is(transa, "N") ? *m : *k), 8)                          \
                   NXL_CHECK(*ldb < mx1(is(transb, "N") ? *k : *n), 10)                         \
                   NXL_CHECK(*ldc < mx1(*m), 13))                                               \
  NXL_L3_TRIANGULAR(P, p, T, MM, mm)                                                                 \
  NXL_L3_TRIANGULAR(P, p, T, SM, sm)                                                                 \
  NXL_L3_SYMM(P, p, T, SY, sy)

#define NXL_L3_TRIANGULAR(P, p, T, OP, op)                                                           \
  NXL_BLAS_ROUTINE(void, P##TR##OP, p##tr##op,                                                  \
                   (F side, F uplo, F transa, F diag, I m, I n, const T *alpha, const T *a,     \
                    I lda, T *b, I ldb),                                                        \
                   (side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb),                     \
                   NXL_CHECK(!side_ok(side), 1) NXL_CHECK(!uplo_ok(uplo), 2)                    \
                   NXL_CHECK(!trans_ok(transa), 3) NXL_CHECK(!diag_ok(diag), 4)                 \
                   NXL_CHECK(*m < 0, 5) NXL_CHECK(*n < 0, 6)                                    \
                   NXL_CHECK(*lda < mx1(is(side, "L") ? *m : *n), 9)                            \
                   NXL_CHECK(*ldb < mx1(*m), 11))

#define NXL_L3_SYMM(P, p, T, SY, sy)                                                             \
  NXL_BLAS_ROUTINE(void, P##SY##MM, p##sy##mm,                                                  \
                   (F side, F uplo, I m, I n, const T *alpha, const T *a, I lda, const T *b,    \
                    I ldb, const T *beta, T *c, I ldc),                                         \
                   (side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc),                     \
                   NXL_CHECK(!side_ok(side), 1) NXL_CHECK(!uplo_ok(uplo), 2)                    \
                   NXL_CHECK(*m < 0, 3) NXL_CHECK(*n < 0, 4)                                    \
                   NXL_CHECK(*lda < mx1(is(side, "L") ? *m : *n), 7)                            \
                   NXL_CHECK(*ldb < mx1(*m), 9) NXL_CHECK(*ldc < mx1(*m), 12))

// Rank-k and rank-2k updates; AL and BE are the types of alpha and beta (real
// for herk; beta real for her2k), OK the accepted trans flags.
#define NXL_L3_RANK(P, p, T, A2, BE, AL, OK, SY, sy)                                             \
  NXL_BLAS_ROUTINE(void, P##SY##RK, p##sy##rk,                                                  \
                   (F uplo, F trans, I n, I k, const AL *alpha, const T *a, I lda, const BE *beta, \
                    T *c, I ldc),                                                               \
                   (uplo, trans, n, k, alpha, a, lda, beta, c, ldc),                            \
                   NXL_CHECK(!uplo_ok(uplo), 1) NXL_CHECK(!OK(trans), 2)                        \
                   NXL_CHECK(*n < 0, 3) NXL_CHECK(*k < 0, 4)                                    \
                   NXL_CHECK(*lda < mx1(is(trans, "N") ? *n : *k), 7)                           \
                   NXL_CHECK(*ldc < mx1(*n), 10))                                               \
  NXL_BLAS_ROUTINE(void, P##SY##R2K, p##sy##r2k,                                                \
                   (F uplo, F trans, I n, I k, const T *alpha, const T *a, I lda, const T *b,   \
                    I ldb, const BE *beta, T *c, I ldc),                                        \
                   (uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc),                    \
                   NXL_CHECK(!uplo_ok(uplo), 1) NXL_CHECK(!OK(trans), 2)                        \
                   NXL_CHECK(*n < 0, 3) NXL_CHECK(*k < 0, 4)                                    \
                   NXL_CHECK(*lda < mx1(is(trans, "N") ? *n : *k), 7)                           \
                   NXL_CHECK(*ldb < mx1(is(trans, "N") ? *n : *k), 9)                           \
                   NXL_CHECK(*ldc < mx1(*n), 12))

NXL_L3_GENERAL(S, s, float)
NXL_L3_GENERAL(D, d, double)
NXL_L3_GENERAL(C, c, cfloat)
NXL_L3_GENERAL(Z, z, cdouble)
NXL_L3_SYMM(C, c, cfloat, HE, he)
NXL_L3_SYMM(Z, z, cdouble, HE, he)
NXL_L3_RANK(S, s, float, , float, float, trans_ok, SY, sy)
NXL_L3_RANK(D, d, double, , double, double, trans_ok, SY, sy)
NXL_L3_RANK(C, c, cfloat, , cfloat, cfloat, trans_nt, SY, sy)
NXL_L3_RANK(Z, z, cdouble, , cdouble, cdouble, trans_nt, SY, sy)
NXL_L3_RANK(C, c, cfloat, , float, float, trans_nc, HE, he)
NXL_L3_RANK(Z, z, cdouble, , double, double, trans_nc, HE, he)
