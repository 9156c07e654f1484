// The library's version record and nxl_get_version_string.
#include <string.h>

#include "service/fortran.h"
#include "service/serv_core.h"
#include "nxl_service.h"

namespace {

const nxl_version_record kVersion = {1, 0, 0, "Release", "20261122", "x86-64", "Linux"};

}  // namespace

extern "C" {

const nxl_version_record *nxl_serv_version(void) { return &kVersion; }

// Writes the version text into buf[0..len): at most len - 1 characters and a
// terminating NUL (for C callers), the rest blank-filled (for a Fortran
// character variable of length len).
NXL_FORTRAN_ENTRY(void, NXL_GET_VERSION_STRING, nxl_get_version_string,
                  (char *buf, const nxl_int *len)) {
  if (buf == nullptr || len == nullptr || *len <= 0) return;
  char text[128];
  int n = nxl_serv_snprintf_s(text, sizeof text, sizeof text - 1,
                              "Ortex(R) NXL %d.%d Update %d build %s for %s %s", kVersion.major,
                              kVersion.minor, kVersion.update, kVersion.build, kVersion.arch,
                              kVersion.os);
  if (n < 0) n = 0;
  size_t cap = static_cast<size_t>(*len);
  size_t copy = static_cast<size_t>(n) < cap - 1 ? static_cast<size_t>(n) : cap - 1;
  memcpy(buf, text, copy);
  buf[copy] = '\0';
  if (copy + 1 < cap) memset(buf + copy + 1, ' ', cap - copy - 1);
}

}  // extern "C"
