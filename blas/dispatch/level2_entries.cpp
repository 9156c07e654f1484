// Code-path entries of the level-2 routines: nxl_blas_x<routine> forwards to
// the kernel build chosen for this processor on its first call.
#include "blas/level2_params.h"
#include "service/codepath.h"

#define NXL_L2_ENTRY(name, fam, T, R, P, A) NXL_CP_ENTRY(void, nxl_blas_x##name, nxl_blas_, _x##name, P, A)

NXL_L2_ALL_ROUTINES(NXL_L2_ENTRY)
NXL_L2_ALL_PARTS(NXL_L2_ENTRY)
