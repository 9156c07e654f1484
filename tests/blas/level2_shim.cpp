// TEMPORARY stand-ins for the runtime services that the level-2 tests link
// against until the service layer is merged; removed once it is.
#include <omp.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "service/nxl_serv.h"

static int g_blas_threads = 0;

extern "C" {
int nxl_serv_cpu_detect(void) {
  if (__builtin_cpu_supports("avx512f")) return 7;
  if (__builtin_cpu_supports("avx2")) return 5;
  if (__builtin_cpu_supports("avx")) return 4;
  if (__builtin_cpu_supports("sse4.2")) return 3;
  return 0;
}
int nxl_serv_cbwr_get(int) { return NXL_CBWR_OFF; }
void nxl_serv_print(int, int number, int, ...) { std::printf("message %d\n", number); }
void nxl_serv_exit(int code) { std::exit(code); }
int nxl_serv_lsame(const char *a, const char *b, int, int) {
  return std::toupper((unsigned char)*a) == std::toupper((unsigned char)*b);
}
int nxl_serv_domain_set_num_threads(int n, int) {
  g_blas_threads = n;
  return 1;
}
int nxl_serv_domain_get_max_threads(int) {
  if (omp_in_parallel()) return 1;
  return g_blas_threads > 0 ? g_blas_threads : omp_get_max_threads();
}
}
extern "C" void nxl_serv_set_dynamic(int) {}
