// Declarations of the interface-layer argument checkers (errchk.cpp).
#ifndef NXL_LAPACK_INTERFACE_ERRCHK_H
#define NXL_LAPACK_INTERFACE_ERRCHK_H

#include <complex>
#include "nxl_types.h"

#define NXL_ERRCHK_DECL(p, T)                                                                              \
  extern "C" int nxl_lapack_errchk_##p##getrf(const nxl_int *, const nxl_int *, T *, const nxl_int *,     \
                                               nxl_int *, nxl_int *);                                    \
  extern "C" int nxl_lapack_errchk_##p##getf2(const nxl_int *, const nxl_int *, T *, const nxl_int *,     \
                                               nxl_int *, nxl_int *);                                    \
  extern "C" int nxl_lapack_errchk_##p##potrf(const char *, const nxl_int *, T *, const nxl_int *,        \
                                               nxl_int *);
NXL_ERRCHK_DECL(s, float)
NXL_ERRCHK_DECL(d, double)
NXL_ERRCHK_DECL(c, std::complex<float>)
NXL_ERRCHK_DECL(z, std::complex<double>)
#undef NXL_ERRCHK_DECL

#endif  // NXL_LAPACK_INTERFACE_ERRCHK_H
