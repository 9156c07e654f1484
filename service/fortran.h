// Exported entries with the Fortran calling convention.
//
// NXL_FORTRAN_ENTRY(ret, DDOT, ddot, (params)) { body } defines the body
// under the internal upper-case name and exports it under the two lower-case
// spellings ddot and ddot_, which are aliases of the one body.
#ifndef NXL_FORTRAN_H
#define NXL_FORTRAN_H

#include "nxl_types.h"

#define NXL_FORTRAN_ENTRY(ret, UPPER, lower, params)                         \
  extern "C" NXL_API ret lower params __attribute__((alias(#UPPER)));       \
  extern "C" NXL_API ret lower##_ params __attribute__((alias(#UPPER)));    \
  extern "C" ret UPPER params

#endif  // NXL_FORTRAN_H
