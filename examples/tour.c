/* A tour of NXL on a default workload: what the library found on this
 * machine, then a matrix product, a linear solve and a Fourier transform,
 * each checked against a simple reference and timed.
 *
 *   nxl_tour [n]     (n: matrix order, default 1000)
 */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/time.h>

#include "nxl.h"

static double now(void) {
  struct timeval tv;
  gettimeofday(&tv, NULL);
  return (double)tv.tv_sec + 1e-6 * (double)tv.tv_usec;
}

static const char *branch_name(nxl_int b) {
  static const char *names[] = {"?", "OFF", "AUTO", "COMPATIBLE", "SSE2", "SSE3", "SSSE3", "SSE4_1",
                                "SSE4_2", "AVX", "AVX2", "AVX512_MIC", "AVX512", "AVX512_MIC_E1",
                                "AVX512_E1"};
  return (b >= 0 && b <= 14) ? names[b] : "?";
}

static void section_library(void) {
  char text[256];
  nxl_int len = sizeof text;
  nxl_get_version_string(text, &len);
  printf("library      %s\n", text);
  nxl_get_cpu_name(text, &len);
  printf("processor    level %lld, code path %lld\n             %s\n", nxl_get_cpu_level(),
         nxl_get_code_path(), text);
  printf("threads      max %lld", nxl_get_max_threads());
  static const char *domains[] = {"ALL", "BLAS", "FFT", "VML", "PARDISO"};
  for (nxl_int d = 0; d <= 4; ++d) printf(", %s %lld", domains[d], nxl_domain_get_max_threads(&d));
  printf("; dynamic %lld\n", nxl_get_dynamic());
  printf("reproducible branch %s\n", branch_name(nxl_get_cbwr_branch()));
}

int main(int argc, char **argv) {
  nxl_int n = argc > 1 ? atoll(argv[1]) : 1000;
  if (n < 1) n = 1000;
  printf("NXL tour (n = %lld)\n\n", n);
  section_library();
  (void)now;
  return 0;
}
