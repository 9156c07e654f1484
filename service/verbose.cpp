// Call tracing: the NXL_VERBOSE switch, the output file, the trace line with
// the run-time settings of the call, and the clock that times calls.
#include <omp.h>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/time.h>
#include <x86intrin.h>

#include <atomic>

#include "service/serv_core.h"

namespace {

constexpr int kNameBuffer = 4096;

std::atomic<int> nxl_verbose_val{-1};
char verbose_file_name[kNameBuffer];
std::atomic<int> verbose_file_read{0};
std::atomic<int> header_printed{0};

nxl_serv_lock_t mode_read_lock = 0;
nxl_serv_lock_t file_read_lock = 0;
nxl_serv_lock_t mode_set_lock = 0;
nxl_serv_lock_t file_set_lock = 0;
nxl_serv_lock_t line_lock = 0;

// A child of fork releases the locks that a vanished thread held.
void reset_locks_in_child() {
  mode_read_lock = 0;
  file_read_lock = 0;
  mode_set_lock = 0;
  file_set_lock = 0;
  line_lock = 0;
}
pthread_once_t fork_once = PTHREAD_ONCE_INIT;
void register_fork_handler() { pthread_atfork(nullptr, nullptr, reset_locks_in_child); }

void warn(FILE *f, const char *what) {
  fprintf(f, "NXL_VERBOSE WARNING: %s\n", what);
  fflush(f);
}

// Checks `name` and keeps it as the output file, or clears it with a
// warning. Returns 0 when the file can be opened for appending.
int take_file_name(const char *name) {
  size_t n = name == nullptr ? 0 : strnlen(name, kNameBuffer);
  if (n == 0 || n >= static_cast<size_t>(kNameBuffer)) {
    warn(stdout, "incorrect output filename: too long or empty");
    verbose_file_name[0] = '\0';
    return 1;
  }
  FILE *f = fopen(name, "a");
  if (f == nullptr) {
    warn(stderr, "Unable to open verbose output file.");
    verbose_file_name[0] = '\0';
    return 1;
  }
  fclose(f);
  memcpy(verbose_file_name, name, n + 1);
  return 0;
}

void read_mode() {
  char buf[128];
  int len = nxl_serv_getenv("NXL_VERBOSE", buf, sizeof buf);
  int mode = 0;
  if (len > 0) {
    char *end = nullptr;
    long v = strtol(buf, &end, 0);
    if (end != buf && *end == '\0' && (v == 0 || v == 1)) mode = static_cast<int>(v);
  }
  nxl_verbose_val.store(mode, std::memory_order_release);
}

const char *cnr_name(int branch, char *scratch, size_t size) {
  switch (branch) {
    case 1: return "OFF";
    case 2: return "AUTO";
    case 3: return "COMPATIBLE";
    case 4: return "SSE2";
    case 6: return "SSSE3";
    case 7: return "SSE4_1";
    case 8: return "SSE4_2";
    case 9: return "AVX";
    case 10: return "AVX2";
    case 11: return "AVX512_MIC";
    case 12: return "AVX512";
    case 13: return "AVX512_MIC_E1";
    default:
      nxl_serv_snprintf_s(scratch, size, size - 1, "?%x", static_cast<unsigned>(branch));
      return scratch;
  }
}

// The header line: version record, platform, clock and interface words.
void format_header(char *buf, size_t size) {
  const nxl_version_record *v = nxl_serv_version();
  nxl_serv_snprintf_s(buf, size, size - 1,
                      "NXL_VERBOSE Ortex(R) NXL %d.%d Update %d %s build %s for %s %s, %s %.2fGHz "
                      "%s iface%x %s %s\n",
                      v->major, v->minor, v->update, v->status, v->build, v->arch, v->os, "Lnx",
                      nxl_serv_get_max_cpu_frequency(), sizeof(nxl_int) == 8 ? "ilp64" : "lp64",
                      // bit 0: Fortran-convention entries, bit 1: C entries
                      0x3u, "cdecl", "omp_thread");
}

// Writes the header (first time only) and the line to `f`.
void write_line(FILE *f, const char *line) {
  if (!header_printed.load(std::memory_order_acquire)) {
    char header[512];
    format_header(header, sizeof header);
    fputs(header, f);
    header_printed.store(1, std::memory_order_release);
  }
  fputs(line, f);
  fflush(f);
}

// Ticks of the time-stamp counter per second, or 0 when the counter is not
// invariant or its rate is not reported by the processor.
double tsc_rate() {
  static std::atomic<double> rate{-1.0};
  double r = rate.load(std::memory_order_relaxed);
  if (r >= 0.0) return r;
  r = 0.0;
  unsigned a, b, c, d;
  __asm__ volatile("cpuid" : "=a"(a), "=b"(b), "=c"(c), "=d"(d) : "a"(0x80000000u), "c"(0));
  unsigned max_ext = a;
  __asm__ volatile("cpuid" : "=a"(a), "=b"(b), "=c"(c), "=d"(d) : "a"(0u), "c"(0));
  unsigned max_leaf = a;
  bool invariant = false;
  if (max_ext >= 0x80000007u) {
    __asm__ volatile("cpuid" : "=a"(a), "=b"(b), "=c"(c), "=d"(d) : "a"(0x80000007u), "c"(0));
    invariant = (d >> 8) & 1;
  }
  if (invariant && max_leaf >= 0x15) {
    __asm__ volatile("cpuid" : "=a"(a), "=b"(b), "=c"(c), "=d"(d) : "a"(0x15u), "c"(0));
    if (a != 0 && b != 0 && c != 0) r = static_cast<double>(c) * b / a;
  }
  rate.store(r, std::memory_order_relaxed);
  return r;
}

}  // namespace

extern "C" {

int nxl_serv_verbose_mode(void) {
  if (nxl_verbose_val.load(std::memory_order_acquire) < 0) {
    pthread_once(&fork_once, register_fork_handler);
    nxl_serv_lock(&mode_read_lock);
    if (nxl_verbose_val.load(std::memory_order_relaxed) < 0) read_mode();
    nxl_serv_unlock(&mode_read_lock);
  }
  return nxl_verbose_val.load(std::memory_order_acquire);
}

int *nxl_serv_iface_verbose_mode(void) {
  nxl_serv_verbose_mode();
  static_assert(sizeof(std::atomic<int>) == sizeof(int));
  return reinterpret_cast<int *>(&nxl_verbose_val);
}

int nxl_serv_verbose(int mode) {
  if (mode != 0 && mode != 1) return -1;
  if (nxl_serv_verbose_mode() != mode) {
    nxl_serv_lock(&mode_set_lock);
    nxl_verbose_val.store(mode, std::memory_order_release);
    nxl_serv_unlock(&mode_set_lock);
  }
  return nxl_verbose_val.load(std::memory_order_acquire);
}

const char *nxl_serv_verbose_output_file_mode(void) {
  if (!verbose_file_read.load(std::memory_order_acquire)) {
    nxl_serv_lock(&file_read_lock);
    if (!verbose_file_read.load(std::memory_order_relaxed)) {
      char *name = static_cast<char *>(malloc(kNameBuffer));
      if (name != nullptr) {
        int len = nxl_serv_getenv("NXL_VERBOSE_OUTPUT_FILE", name, kNameBuffer);
        if (len < 0)
          take_file_name(nullptr);
        else if (len > 0)
          take_file_name(name);
        free(name);
      }
      verbose_file_read.store(1, std::memory_order_release);
    }
    nxl_serv_unlock(&file_read_lock);
  }
  return verbose_file_name;
}

int nxl_serv_verbose_output_file(const char *name) {
  nxl_serv_verbose_output_file_mode();
  nxl_serv_lock(&file_set_lock);
  int r = take_file_name(name);
  nxl_serv_unlock(&file_set_lock);
  return r;
}

void nxl_serv_print_verbose_info(int kind, const char *text, double seconds) {
  pthread_once(&fork_once, register_fork_handler);
  char suffix[512];
  size_t pos = 0;
  auto append = [&](const char *fmt, auto... args) {
    if (pos >= sizeof suffix - 1) return;
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wformat-nonliteral"
#pragma clang diagnostic ignored "-Wformat-security"
    int n = snprintf(suffix + pos, sizeof suffix - pos, fmt, args...);
#pragma clang diagnostic pop
    if (n > 0) pos += static_cast<size_t>(n);
    if (pos > sizeof suffix - 1) pos = sizeof suffix - 1;
  };

  if (seconds <= 0.0)
    append("%.2fs", 0.0);
  else if (seconds > 1.0)
    append("%.2fs", seconds);
  else if (seconds > 1e-3)
    append("%.2fms", seconds * 1e3);
  else if (seconds > 1e-6)
    append("%.2fus", seconds * 1e6);
  else
    append("%.0fns", seconds * 1e9);

  char scratch[16];
  int mode = nxl_serv_cbwr_get(-1);
  append(" CNR:%s", cnr_name(nxl_serv_cbwr_get(1), scratch, sizeof scratch));
  if (mode > 0 && (mode & NXL_CBWR_STRICT)) append("%s", ",STRICT");
  append(" Dyn:%d", nxl_serv_get_dynamic());
  append(" FastMM:%d", nxl_serv_fast_mm_status() == 0 ? 1 : 0);
  append(" TID:%-2d", omp_get_thread_num());
  append(" NThr:%d", nxl_serv_get_max_threads());
  append(",BLAS:%d", nxl_serv_domain_get_max_threads(1));
  append(",FFT:%d", nxl_serv_domain_get_max_threads(2));
  append(",VML:%d", nxl_serv_domain_get_max_threads(3));
  append(",PARDISO:%d", nxl_serv_domain_get_max_threads(4));

  size_t need = strlen(text != nullptr ? text : "") + pos + 16;
  char small[1024];
  char *line = need <= sizeof small ? small : static_cast<char *>(malloc(need));
  if (line == nullptr) return;
  snprintf(line, need, "NXL_VERBOSE %s %s\n", text != nullptr ? text : "", suffix);

  nxl_serv_verbose_output_file_mode();
  nxl_serv_lock(&line_lock);
  FILE *f = nullptr;
  if (verbose_file_name[0] != '\0') {
    // The name may be replaced meanwhile: open a stable copy.
    char file[kNameBuffer];
    nxl_serv_lock(&file_set_lock);
    memcpy(file, verbose_file_name, sizeof file);
    nxl_serv_unlock(&file_set_lock);
    if (file[0] != '\0') {
      f = fopen(file, "a");
      if (f == nullptr) warn(stdout, "unable to open output file. Print to STDOUT");
    }
  }
  if (f != nullptr) {
    write_line(f, line);
    fclose(f);
  } else {
    write_line(stdout, line);
  }
  nxl_serv_unlock(&line_lock);
  if (line != small) free(line);
}

void nxl_serv_iface_print_verbose_info(int kind, const char *text, double seconds) {
  nxl_serv_print_verbose_info(kind, text, seconds);
}

// Seconds since an arbitrary origin: the time-stamp counter when it runs at
// a constant, known rate, else the system clock.
double nxl_serv_dsecnd(void) {
  double rate = tsc_rate();
  if (rate > 0.0) return static_cast<double>(__rdtsc()) / rate;
  struct timeval tv;
  gettimeofday(&tv, nullptr);
  return static_cast<double>(tv.tv_sec) + 1e-6 * static_cast<double>(tv.tv_usec);
}

double nxl_serv_iface_dsecnd(void) { return nxl_serv_dsecnd(); }

}  // extern "C"
