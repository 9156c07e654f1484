/* NXL DFTI discrete Fourier transforms. */
#ifndef NXL_DFTI_H
#define NXL_DFTI_H

#include "nxl_types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* NXL_DFTI_H */
