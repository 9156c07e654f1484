// TEMPORARY: service entries the engine tests need until the service layer
// is merged. Not part of the library.
#include <cstdlib>
#include <cstddef>
#include "service/nxl_serv.h"
extern "C" {
__attribute__((weak)) void *nxl_serv_allocate(size_t bytes, int alignment) {
  size_t a = alignment < 64 ? 64 : static_cast<size_t>(alignment);
  return std::aligned_alloc(a, (bytes + a - 1) / a * a);
}
__attribute__((weak)) void nxl_serv_deallocate(void *p) { std::free(p); }
__attribute__((weak)) int nxl_serv_cpu_detect(void) { return __builtin_cpu_supports("avx512f") ? 7 : __builtin_cpu_supports("avx2") ? 5 : 0; }
__attribute__((weak)) int nxl_serv_cbwr_get(int) { return NXL_CBWR_OFF; }
__attribute__((weak)) void nxl_serv_print(int, int, int, ...) {}
__attribute__((weak)) void nxl_serv_exit(int code) { std::exit(code); }
}
