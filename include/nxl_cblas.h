/* NXL CBLAS. */
#ifndef NXL_CBLAS_H
#define NXL_CBLAS_H

#include "nxl_types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* NXL_CBLAS_H */
