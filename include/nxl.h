/* NXL: dense numerical kernels. The umbrella header: services, BLAS, CBLAS,
 * LAPACK and the DFTI transform interface. */
#ifndef NXL_H
#define NXL_H

#include "nxl_types.h"
#include "nxl_service.h"
#include "nxl_blas.h"
#include "nxl_cblas.h"
#include "nxl_lapack.h"
#include "nxl_dfti.h"

#endif /* NXL_H */
