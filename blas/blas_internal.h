// The BLAS dispatch layer as seen by the rest of the library (LAPACK, the
// level-3 drivers, the interface layer): levels 1, 2 and 3 and sparse level 1.
#ifndef NXL_BLAS_INTERNAL_H
#define NXL_BLAS_INTERNAL_H

#include "blas/level1.h"
#if __has_include("blas/level2.h")
#include "blas/level2.h"
#endif
#if __has_include("blas/level3.h")
#include "blas/level3.h"
#endif

#endif  // NXL_BLAS_INTERNAL_H
