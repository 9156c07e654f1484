// Driver for once-per-process behaviours of the core services. The tests run
// it in a fresh process with a chosen environment and read what it prints.
#include <omp.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "service/serv_core.h"

namespace {

void print_threads() {
  printf("max=%d blas=%d fft=%d vml=%d pardiso=%d dynamic=%d stripes=%d\n",
         nxl_serv_get_max_threads(), nxl_serv_domain_get_max_threads(1),
         nxl_serv_domain_get_max_threads(2), nxl_serv_domain_get_max_threads(3),
         nxl_serv_domain_get_max_threads(4), nxl_serv_get_dynamic(), nxl_serv_get_num_stripes());
  printf("omp=%d ppn=%d physical=%d logical=%d\n", omp_get_max_threads(), nxl_serv_mpi_get_ppn(),
         nxl_serv_get_nphysicalcores(), nxl_serv_get_nlogicalcores());
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 2) return 2;
  const char *cmd = argv[1];
  const char *arg = argc > 2 ? argv[2] : "";
  if (strcmp(cmd, "threads") == 0) {
    print_threads();
  } else if (strcmp(cmd, "threads-api") == 0) {
    // An API call before the first query wins over the environment.
    nxl_serv_set_num_threads(atoi(arg));
    print_threads();
  } else if (strcmp(cmd, "threads-after") == 0) {
    // ... and so does one after it.
    nxl_serv_get_max_threads();
    nxl_serv_set_num_threads(atoi(arg));
    print_threads();
  } else if (strcmp(cmd, "parallel") == 0) {
    int inside = -1;
#pragma omp parallel num_threads(2)
    {
#pragma omp master
      inside = nxl_serv_get_max_threads();
    }
    printf("inside=%d\n", inside);
  } else if (strcmp(cmd, "topology") == 0) {
    printf("logical=%d physical=%d packages=%d percpu=%d ht=%d\n", nxl_serv_get_nlogicalcores(),
           nxl_serv_get_nphysicalcores(), nxl_serv_get_ncpus(), nxl_serv_get_ncorespercpu(),
           nxl_serv_get_ht());
  } else if (strcmp(cmd, "verbose") == 0) {
    printf("mode=%d file=[%s]\n", nxl_serv_verbose_mode(), nxl_serv_verbose_output_file_mode());
    fflush(stdout);
    if (nxl_serv_verbose_mode()) {
      nxl_serv_print_verbose_info(0, "DDOT(3,0x1,1,0x2,1)", atof(arg));
      nxl_serv_print_verbose_info(0, "DDOT(4,0x1,1,0x2,1)", atof(arg));
    }
  } else if (strcmp(cmd, "message") == 0) {
    nxl_serv_print(0, atoi(arg), 0);
    const char *lang = getenv("LANG");
    printf("LANG=%s\n", lang ? lang : "(unset)");
  } else if (strcmp(cmd, "exit") == 0) {
    nxl_serv_exit(atoi(arg));
    printf("returned\n");
  } else if (strcmp(cmd, "memory") == 0) {
    // Allocates blocks of `arg` MB until one fails (at most 8).
    size_t mb = static_cast<size_t>(atol(arg));
    printf("status=%d\n", nxl_serv_fast_mm_status());
    int got = 0;
    void *blocks[8];
    for (int i = 0; i < 8; ++i) {
      blocks[i] = nxl_serv_allocate(mb << 20, 64);
      if (blocks[i] == nullptr) break;
      ++got;
    }
    printf("blocks=%d\n", got);
    for (int i = 0; i < got; ++i) nxl_serv_deallocate(blocks[i]);
    // With reuse on, freed blocks stay with the manager.
    int kept = 0;
    nxl_serv_mem_held(&kept);
    printf("kept=%d\n", kept);
  } else {
    return 2;
  }
  fflush(stdout);
  return 0;
}
