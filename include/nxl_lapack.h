/* NXL LAPACK (Fortran convention, ILP64). */
#ifndef NXL_LAPACK_H
#define NXL_LAPACK_H

#include "nxl_types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* NXL_LAPACK_H */
