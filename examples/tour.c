/* A tour of NXL on a default workload. */
#include <stdio.h>
#include "nxl.h"

int main(void) {
  printf("NXL tour\n");
  printf("threads: %lld\n", nxl_get_max_threads());
  return 0;
}
