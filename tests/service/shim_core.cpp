// TEMPORARY test-only stand-ins for core services (environment reader,
// message printer, exit hook) until the real ones are merged.
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "service/nxl_serv.h"

namespace {
void (*exit_hook)(int) = nullptr;
const char *text_of(int number) {
  switch (number) {
    case 1209: return "Ortex NXL WARNING: incorrect conditional numerical reproducibility mode, NXL_CBWR_AUTO is set";
    case 1210: return "Ortex NXL FATAL ERROR: This system does not meet the minimum requirements for use of the Ortex(R) Nexlib.";
    case 1211: return "The processor must support the Ortex(R) Streaming SIMD 2 Extensions (Ortex(R) SSE2) instructions.";
    case 1213: return "Ortex NXL ERROR: CPU %d is not supported.";
    default: return "";
  }
}
}  // namespace

extern "C" {
int nxl_serv_getenv(const char *name, char *buffer, int size) {
  buffer[0] = '\0';
  const char *v = getenv(name);
  if (!v) return 0;
  int len = static_cast<int>(strnlen(v, 4096));
  if (len >= size) return -len;
  memcpy(buffer, v, static_cast<size_t>(len) + 1);
  return len;
}
void nxl_serv_print(int stream, int number, int nargs, ...) {
  va_list ap;
  va_start(ap, nargs);
  FILE *f = stream == 1 ? stderr : stdout;
  vfprintf(f, text_of(number), ap);
  fputs("\n", f);
  fflush(f);
  va_end(ap);
}
void nxl_serv_exit(int code) {
  if (exit_hook) {
    exit_hook(code);
    return;
  }
  exit(code);
}
void nxl_serv_set_exit_handler(void (*hook)(int)) { exit_hook = hook; }
}
