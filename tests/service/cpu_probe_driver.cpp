// Runs the processor detection in a fresh process and prints what it chose,
// so tests can start it with chosen environments and processor models.
//
// Arguments are actions done in order before the report:
//   type0        print "type0=<nxl_serv_get_cpu_type(0)>" (before detection)
//   cbwr_set=V   print "cbwr_set=<nxl_serv_cbwr_set(V)>"
//   enable=V     print "enable=<nxl_serv_enable_instructions(V)>"
//   threads=N    detect from N threads at once; print "threads_agree=0|1"
//   detect       run the detection now
// The report: one line of key=value pairs, then "name=<display name>".
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <atomic>
#include <thread>
#include <vector>

#include "nxl_service.h"
#include "service/cpu.h"

namespace {

int arg_value(const char *arg, const char *key) {
  return static_cast<int>(strtol(arg + strlen(key), nullptr, 0));
}

void detect_from_threads(int n) {
  std::atomic<int> go{0};
  std::vector<int> seen(static_cast<size_t>(n), -2);
  std::vector<std::thread> team;
  for (int i = 0; i < n; ++i)
    team.emplace_back([&, i] {
      while (!go.load()) {
      }
      seen[static_cast<size_t>(i)] = nxl_serv_cpu_detect();
    });
  go = 1;
  for (auto &t : team) t.join();
  int agree = 1;
  for (int v : seen) agree &= v == seen[0] && v >= 0;
  printf("threads_agree=%d\n", agree);
}

}  // namespace

int main(int argc, char **argv) {
  for (int i = 1; i < argc; ++i) {
    const char *a = argv[i];
    if (strcmp(a, "type0") == 0) {
      printf("type0=%d\n", nxl_serv_get_cpu_type(0));
    } else if (strncmp(a, "cbwr_set=", 9) == 0) {
      printf("cbwr_set=%d\n", nxl_serv_cbwr_set(arg_value(a, "cbwr_set=")));
    } else if (strncmp(a, "enable=", 7) == 0) {
      printf("enable=%d\n", nxl_serv_enable_instructions(arg_value(a, "enable=")));
    } else if (strncmp(a, "threads=", 8) == 0) {
      detect_from_threads(arg_value(a, "threads="));
    } else if (strcmp(a, "detect") == 0) {
      nxl_serv_cpu_detect();
    } else {
      fprintf(stderr, "unknown action %s\n", a);
      return 2;
    }
  }
  const int path = static_cast<int>(nxl_get_code_path());
  printf("path=%d level=%d selected=%d cbwr=%d mode=0x%x vml=%d ortex=%d ortex_true=%d "
         "auto=%d sse4_2=%d avx=%d avx2=%d avx512=%d avx512_mic=%d mei=%d sngl=%d\n",
         path, static_cast<int>(nxl_get_cpu_level()), nxl_serv_selected_level(),
         static_cast<int>(nxl_get_cbwr_branch()), nxl_serv_cbwr_get(-1), nxl_vml_cpu_type,
         nxl_serv_ortex_cpu(), nxl_serv_ortex_cpu_true(), nxl_serv_cbwr_get_auto_branch(),
         nxl_serv_is_sse4_2_enabled(), nxl_serv_is_avx_enabled(), nxl_serv_is_avx2_enabled(),
         nxl_serv_is_avx512_enabled(), nxl_serv_is_avx512_mic_enabled(), cached_mei,
         __sngl_was_called);
  printf("features=0x%llx\n", nxl_serv_cpu_features());
  // The family tests as one bit each, in declaration order.
  const int families[] = {
      nxl_serv_cpuisbulldozer(),      nxl_serv_cpuiszen(),   nxl_serv_cpuisitbarcelona(),
      nxl_serv_cpuislowpower_sse4_2(), nxl_serv_cpuislowpower_ssse3(), nxl_serv_cpuisoldgen(),
      nxl_serv_cpuisskx(),            nxl_serv_cpuisclx(),   nxl_serv_cpuisicx(),
      nxl_serv_cpuisspr(),            nxl_serv_cpuisknl()};
  int family_bits = 0;
  for (int i = 0; i < static_cast<int>(sizeof families / sizeof families[0]); ++i)
    family_bits |= families[i] << i;
  printf("uarch=%d families=0x%x\n", nxl_serv_get_microarchitecture(), family_bits);
  char name[256];
  const nxl_int len = sizeof name;
  nxl_get_cpu_name(name, &len);
  printf("name=%s\n", name);
  return 0;
}
