/* NXL BLAS (Fortran convention, ILP64). */
#ifndef NXL_BLAS_H
#define NXL_BLAS_H

#include "nxl_types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* NXL_BLAS_H */
