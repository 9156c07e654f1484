// Numbered messages: the built-in table, the operating system's message
// catalog "nxl_msg.cat" (set 1) tried first, and printing to standard output
// or standard error.
#include <nl_types.h>
#include <pthread.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <atomic>

#include "service/serv_core.h"

extern "C" const nxl_msg_row nxl_msgtab[NXL_MSGTAB_ROWS] = {
#include "service/msgtab.inc"
};

namespace {

// Catalog state: first_msg is 1 until the catalog was tried once.
std::atomic<int> first_msg{1};
nl_catd message_catalog = reinterpret_cast<nl_catd>(-1);
int use_internal_msg = 1;
nxl_serv_lock_t catalog_lock = 0;

// Shared result buffers; concurrent reports may overwrite each other's text.
char msg_buffer[NXL_MSG_BUFFER];
char print_buffer[NXL_MSG_BUFFER];

const char kCatalogName[] = "nxl_msg.cat";

// A child of fork releases a lock that a vanished thread held; opening the
// catalog may then simply happen twice.
void reset_lock_in_child() { catalog_lock = 0; }
pthread_once_t fork_once = PTHREAD_ONCE_INIT;
void register_fork_handler() { pthread_atfork(nullptr, nullptr, reset_lock_in_child); }

void open_catalog() {
  nl_catd cat = catopen(kCatalogName, 0);
  if (cat == reinterpret_cast<nl_catd>(-1)) {
    // A locale with an encoding suffix (en_US.UTF-8) may have no catalog of
    // its own: retry with the bare language and territory.
    char lang[64];
    if (nxl_serv_getenv("LANG", lang, sizeof lang) > 0) {
      if (char *dot = strchr(lang, '.')) {
        *dot = '\0';
        setenv("LANG", lang, 1);
        cat = catopen(kCatalogName, 0);
      }
    }
  }
  message_catalog = cat;
  use_internal_msg = cat == reinterpret_cast<nl_catd>(-1) ? 1 : 0;
}

// The text of message `number`: the catalog's when it has one, else the
// built-in row. Message 0 and unknown numbers are the empty string.
const char *message_text(int number) {
  if (number <= 0 || number >= NXL_MSGTAB_ROWS) return "";
  if (first_msg.load(std::memory_order_acquire)) {
    pthread_once(&fork_once, register_fork_handler);
    nxl_serv_lock(&catalog_lock);
    if (first_msg.load(std::memory_order_relaxed)) {
      open_catalog();
      first_msg.store(0, std::memory_order_release);
    }
    nxl_serv_unlock(&catalog_lock);
  }
  const char *builtin = nxl_msgtab[number].text;
  if (use_internal_msg) return builtin;
  return catgets(message_catalog, 1, number, builtin);
}

// Formats into a 512-byte buffer; the result is the full length the text
// would have (>= 512 when it was cut), or -1.
__attribute__((format(printf, 2, 0))) int vformat(char *buffer, const char *format, va_list ap) {
  int n = vsnprintf(buffer, NXL_MSG_BUFFER, format, ap);
  if (n < 0) buffer[0] = '\0';
  return n;
}

FILE *choose_stream(int stream) { return (stream == 1 && stderr != nullptr) ? stderr : stdout; }

void emit(FILE *f, const char *text, int length) {
  if (f == nullptr) return;
  if (length >= NXL_MSG_BUFFER) {
    fprintf(f, "%s", "\nNXL INTERNAL ERROR: message buffer overflow.");
    fprintf(f, "\n       Lenght: %d   Buffer size: %d\n", length, NXL_MSG_BUFFER);
    fflush(f);
    return;
  }
  fprintf(f, "%s", text);
  fflush(f);
  fprintf(f, "%s", "\n");
  fflush(f);
}

}  // namespace

extern "C" {

const char *nxl_serv_get_msg(int number, int nargs, ...) {
  const char *text = message_text(number);
  if (nargs <= 0) return text;
  va_list ap;
  va_start(ap, nargs);
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wformat-nonliteral"
  vformat(msg_buffer, text, ap);
#pragma clang diagnostic pop
  va_end(ap);
  return msg_buffer;
}

void nxl_serv_print(int stream, int number, int nargs, ...) {
  const char *text = message_text(number);
  int length;
  if (nargs > 0) {
    va_list ap;
    va_start(ap, nargs);
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wformat-nonliteral"
    length = vformat(print_buffer, text, ap);
#pragma clang diagnostic pop
    va_end(ap);
  } else {
    length = nxl_serv_snprintf_s(print_buffer, NXL_MSG_BUFFER, NXL_MSG_BUFFER - 1, "%s", text);
  }
  emit(choose_stream(stream), print_buffer, length);
}

void nxl_serv_format_print(int stream, const char *format, ...) {
  if (format == nullptr) return;
  va_list ap;
  va_start(ap, format);
  int length = vformat(print_buffer, format, ap);
  va_end(ap);
  emit(choose_stream(stream), print_buffer, length);
}

void nxl_serv_file_format_print(FILE *file, const char *format, ...) {
  if (format == nullptr || file == nullptr) return;
  va_list ap;
  va_start(ap, format);
  int length = vformat(print_buffer, format, ap);
  va_end(ap);
  emit(file, print_buffer, length);
}

}  // extern "C"
