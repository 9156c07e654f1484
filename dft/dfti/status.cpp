// DFTI status codes: classes and message texts.
#include <string.h>

#include "dft/dfti/descriptor.h"
#include "service/fortran.h"

namespace {

// Message numbers of statuses 0..9; status 4 shares the text of an unknown
// status.
constexpr int kMessageOf[10] = {761, 762, 763, 764, 771, 766, 767, 768, 769, 770};
constexpr int kUnknownMessage = 771;

// The built-in texts, used when the message table or catalogue in use has no
// DFTI text under a number.
const char *builtin_text(int number) {
  switch (number) {
    case 761: return "Ortex NXL DFTI SUCCESS: No error";
    case 762: return "Ortex NXL DFTI ERROR: Not enough memory to allocate";
    case 763: return "Ortex NXL DFTI ERROR: Invalid configuration parameters";
    case 764: return "Ortex NXL DFTI ERROR: Inconsistent configuration parameters";
    case 765: return "Ortex NXL DFTI ERROR: Error in OpenMP";
    case 766: return "Ortex NXL DFTI ERROR: Descriptor is uncommitted or corrupted";
    case 767: return "Ortex NXL DFTI ERROR: Functionality is not implemented";
    case 768: return "Ortex NXL DFTI ERROR: Internal error";
    case 769: return "Ortex NXL DFTI ERROR: Configuration parameter DFTI_NUMBER_OF_USER_THREADS is not set ";
    case 770: return "Ortex NXL DFTI ERROR: Size of one of transform dimensions exceeds 2^32 (32 bits)";
    default: return "Ortex NXL DFTI ERROR: Incorrect status";
  }
}

const char *message_text(int number) {
  static const char kFamily[] = "Ortex NXL DFTI ";
  const char *t = nxl_serv_get_msg(number, 0);
  if (t && strncmp(t, kFamily, sizeof kFamily - 1) == 0) return t;
  return builtin_text(number);
}

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
