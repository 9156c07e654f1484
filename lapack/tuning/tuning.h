// Tuning functions beside the ilaenv oracle.
#ifndef NXL_LAPACK_TUNING_H
#define NXL_LAPACK_TUNING_H

#include <cmath>
#include "nxl_types.h"

namespace nxl {
namespace lapack {
// Tile size of the threaded Cholesky algorithm for order n and a team of
// `threads` (precision letter S, D, C or Z).
nxl_int ilaenv_dt_f(char prec, nxl_int n, int threads);
// Panel width of the threaded LU tier for an m x n matrix and `threads`.
nxl_int getrf_team_nb(char prec, nxl_int m, nxl_int n, int threads);
}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_TUNING_H
