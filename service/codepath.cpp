// Choice of the kernel build for the code-path entries.
#include "service/codepath.h"

namespace nxl {

namespace {
// Unknown code path: message 1213 and the end of the process. If the
// application's exit hook returns, the caller gets no kernel.
int unknown_path(int code) {
  nxl_serv_print(0, 1213, 1, code);
  nxl_serv_exit(1);
  return -1;
}
}  // namespace

int cp_kernel_index(void) {
  int code = nxl_serv_cpu_detect();
  switch (code) {
    case 0:
    case 1: return nxl_serv_cbwr_get(1) == NXL_CBWR_OFF ? 0 : 7;
    case 2: return nxl_serv_cbwr_get(1) == NXL_CBWR_OFF ? 1 : 7;
    case 3: return 2;
    case 4: return 3;
    case 5: return 4;
    case 6: return 5;
    case 7: return 6;
    default: return unknown_path(code);
  }
}

int cp_kernel_index_nocnr(void) {
  int code = nxl_serv_cpu_detect();
  switch (code) {
    case 0:
    case 1: return 0;
    case 2: return 1;
    case 3: return 2;
    case 4: return 3;
    case 5: return 4;
    case 6: return 5;
    case 7: return 6;
    default: return unknown_path(code);
  }
}

}  // namespace nxl
