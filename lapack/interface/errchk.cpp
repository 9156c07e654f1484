// Argument checkers of the routines that check in the interface layer:
// getrf, getf2 and potrf. Each returns 0 with info = 0 when the arguments
// are legal, else sets info = -position, reports and returns 1.
#include "lapack/common.h"

namespace {
using nxl::lapack::idx;
using nxl::lapack::imax;

template <class T> int errchk_lu(const char *stem, const idx *m, const idx *n, const idx *lda, idx *info) {
  idx pos = 0;
  if (*m < 0) pos = 1;
  else if (*n < 0) pos = 2;
  else if (*lda < imax(1, *m)) pos = 4;
  if (!pos) {
    *info = 0;
    return 0;
  }
  nxl::lapack::report<T>(stem, pos, info);
  return 1;
}

template <class T> int errchk_potrf(const char *uplo, const idx *n, const idx *lda, idx *info) {
  *info = 0;
  idx pos = 0;
  if (!nxl::lapack::same(uplo, 'U') && !nxl::lapack::same(uplo, 'L')) pos = 1;
  else if (*n < 0) pos = 2;
  else if (*lda < imax(1, *n)) pos = 4;
  if (!pos) return 0;
  nxl::lapack::report<T>("POTRF", pos, info);
  return 1;
}
}  // namespace

#define NXL_ERRCHK(p, T)                                                                                   \
  extern "C" int nxl_lapack_errchk_##p##getrf(const idx *m, const idx *n, T *, const idx *lda, idx *,    \
                                               idx *info) {                                             \
    return errchk_lu<T>("GETRF", m, n, lda, info);                                                      \
  }                                                                                                      \
  extern "C" int nxl_lapack_errchk_##p##getf2(const idx *m, const idx *n, T *, const idx *lda, idx *,    \
                                               idx *info) {                                             \
    return errchk_lu<T>("GETF2", m, n, lda, info);                                                      \
  }                                                                                                      \
  extern "C" int nxl_lapack_errchk_##p##potrf(const char *uplo, const idx *n, T *, const idx *lda,      \
                                               idx *info) {                                             \
    return errchk_potrf<T>(uplo, n, lda, info);                                                         \
  }

NXL_ERRCHK(s, float)
NXL_ERRCHK(d, double)
NXL_ERRCHK(c, std::complex<float>)
NXL_ERRCHK(z, std::complex<double>)
