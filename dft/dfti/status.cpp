// DFTI status codes: classes and message texts.
#include <string.h>

#include "dft/dfti/descriptor.h"
#include "service/fortran.h"

namespace {

// Message numbers of statuses 0..9; status 4 shares the text of an unknown
// status.
constexpr int kMessageOf[10] = {761, 762, 763, 764, 771, 766, 767, 768, 769, 770};
constexpr int kUnknownMessage = 771;

// The text of a message: the external catalogue's when one is open, else the
// library's built-in table (rows 761 to 771 hold the transform statuses).
const char *message_text(int number) { return nxl_serv_get_msg(number, 0); }

}  // namespace

extern "C" {

// Statuses of the signal-processing primitive layer in DFTI terms.
int nxl_dft_transfer_vpp_nxl_error(int status) {
  if (status == 0) return DFTI_NO_ERROR;
  if (status == -9) return DFTI_MEMORY_ERROR;
  if (status == -8) return DFTI_INCONSISTENT_CONFIGURATION;
  return DFTI_NXL_INTERNAL_ERROR;
}

NXL_API nxl_int DftiErrorClass(nxl_int status, nxl_int error_class) { return status == error_class ? 1 : 0; }

NXL_API const char *DftiErrorMessage(nxl_int status) {
  uint32_t s = static_cast<uint32_t>(status);   // the low 32 bits decide
  return message_text(s <= 9 ? kMessageOf[s] : kUnknownMessage);
}

}  // extern "C"

NXL_FORTRAN_ENTRY(int, DFTI_ERROR_CLASS_EXTERNAL, dfti_error_class_external,
                  (const nxl_int *status, const nxl_int *error_class)) {
  return *status == *error_class ? 1 : 0;
}

NXL_FORTRAN_ENTRY(char *, DFTI_ERROR_MESSAGE_EXTERNAL, dfti_error_message_external,
                  (char *buffer, size_t buffer_length, const nxl_int *status)) {
  uint64_t s = static_cast<uint64_t>(*status);   // negative statuses are unknown
  const char *text = message_text(s <= 9 ? kMessageOf[s] : kUnknownMessage);
  size_t n = text ? nxl_serv_strnlen_s(text, buffer_length) : 0;
  if (n > buffer_length) n = buffer_length;
  if (n) memcpy(buffer, text, n);
  if (buffer_length > n) memset(buffer + n, ' ', buffer_length - n);
  return buffer;
}
