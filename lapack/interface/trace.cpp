// The trace format of the LAPACK wrappers.
#include "lapack/frame.h"

namespace nxl {
namespace lapack {
namespace trace {

void build_format(char *fmt, size_t size, const char *name, const char *const *specs, size_t count) {
  size_t pos = 0;
  auto put = [&](const char *s) {
    while (*s && pos + 1 < size) fmt[pos++] = *s++;
  };
  put(name);
  put("(");
  for (size_t i = 0; i < count; ++i) {
    if (i) put(",");
    put(specs[i]);
  }
  put(")");
  fmt[pos] = 0;
}

}  // namespace trace
}  // namespace lapack
}  // namespace nxl
