// Environment configuration: the one bounded reader of environment variables,
// the process-wide thread settings and their one-time read, and the
// processes-per-node rules of message-passing runs.
//
// An environment value only fills a setting that is still unset, so an API
// call made before the first query wins; an API call always overwrites.
#include <limits.h>
#include <pthread.h>
#include <stdlib.h>
#include <string.h>

#include <atomic>

#include "service/env_state.h"
#include "service/serv_core.h"

namespace nxl::env {

std::atomic<int> __nxl_num_threads{-1};
std::atomic<int> __nxl_blas_num_threads{-1};
std::atomic<int> __nxl_fft_num_threads{-1};
std::atomic<int> __nxl_vml_num_threads{-1};
std::atomic<int> __nxl_pardiso_num_threads{-1};
std::atomic<int> __nxl_dynamic{-1};
std::atomic<int> __nxl_num_stripes{-1};
std::atomic<int> __omp_num_threads{-1};
std::atomic<int> __nxl_mpi_ppn{-1};
std::atomic<int> __nxl_mpi_thread_level{-1};
std::atomic<int> __mpi_SAFETY_BLACS{-1};

std::atomic<int> __N_Logical_Cores{1};
std::atomic<int> __N_Physical_Cores{-1};
std::atomic<int> __N_CPU_Packages{-1};
std::atomic<int> __N_Cores_per_Packages{-1};
std::atomic<int> __HT{-1};

namespace {

std::atomic<int> __threads_env_NOT_readed{1};
nxl_serv_lock_t env_lock = 0;
std::atomic<int> nxl_disable_env_variables{0};
std::atomic<int> ppn_cached{0};

constexpr int kEnvBuffer = 256;
constexpr size_t kLengthCeiling = 4096;

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Decimal digits only (at least one); the value saturates at INT_MAX.
bool parse_digits(const char *s, size_t n, int *value) {
  if (n == 0) return false;
  long long v = 0;
  for (size_t i = 0; i < n; ++i) {
    if (!is_digit(s[i])) return false;
    if (v < INT_MAX) v = v * 10 + (s[i] - '0');
  }
  *value = v > INT_MAX ? INT_MAX : static_cast<int>(v);
  return true;
}

void fill_if_unset(std::atomic<int> &setting, int value) {
  int unset = -1;
  setting.compare_exchange_strong(unset, value, std::memory_order_relaxed);
}

// NXL_NUM_THREADS and OMP_NUM_THREADS: a positive number, or 1 when the text
// is anything but digits (a serial run); "0" leaves the setting unset.
void read_thread_count(const char *name, std::atomic<int> &setting) {
  char buf[kEnvBuffer];
  int len = nxl_serv_getenv(name, buf, sizeof buf);
  if (len <= 0) return;
  int v;
  if (!parse_digits(buf, static_cast<size_t>(len), &v)) v = 1;
  if (v > 0) fill_if_unset(setting, v);
}

bool is_pair_separator(char c) {
  return c == ' ' || c == ',' || c == ';' || c == ':' || c == '"' || c == '\'';
}

// NXL_DOMAIN_NUM_THREADS: pairs "NAME=value" between separators.
void read_domain_counts() {
  char buf[kEnvBuffer];
  int len = nxl_serv_getenv("NXL_DOMAIN_NUM_THREADS", buf, sizeof buf);
  if (len <= 0) return;
  static const struct { const char *name; int domain; } names[] = {
      {"NXL_DOMAIN_ALL", 0}, {"NXL_DOMAIN_BLAS", 1}, {"NXL_DOMAIN_FFT", 2},
      {"NXL_DOMAIN_VML", 3}, {"NXL_DOMAIN_PARDISO", 4}};
  const char *p = buf, *end = buf + len;
  while (p < end) {
    while (p < end && is_pair_separator(*p)) ++p;
    if (p == end) break;
    const char *name = p;
    while (p < end && *p != '=' && *p != ' ' && *p != '"' && *p != '\'') ++p;
    size_t name_len = static_cast<size_t>(p - name);
    while (p < end && (*p == ' ' || *p == '=')) ++p;
    const char *value = p;
    while (p < end && !is_pair_separator(*p)) ++p;
    int v;
    if (!parse_digits(value, static_cast<size_t>(p - value), &v)) v = 1;
    if (v < 1) continue;
    for (const auto &n : names) {
      if (strlen(n.name) == name_len && memcmp(n.name, name, name_len) == 0) {
        fill_if_unset(domain_setting(n.domain), v);
        break;
      }
    }
  }
}

// NXL_DYNAMIC: only "FALSE" or "false" as the first token turns it off.
void read_dynamic() {
  if (__nxl_dynamic.load(std::memory_order_relaxed) != -1) return;
  char buf[kEnvBuffer];
  int len = nxl_serv_getenv("NXL_DYNAMIC", buf, sizeof buf);
  int v = 1;
  if (len > 0) {
    const char *p = buf, *end = buf + len;
    while (p < end && (*p == ' ' || *p == '"' || *p == '\'')) ++p;
    const char *tok = p;
    while (p < end && *p != ' ' && *p != '"' && *p != '\'') ++p;
    size_t n = static_cast<size_t>(p - tok);
    if (n == 5 && (memcmp(tok, "FALSE", 5) == 0 || memcmp(tok, "false", 5) == 0)) v = 0;
  }
  fill_if_unset(__nxl_dynamic, v);
}

void read_stripes() {
  char buf[kEnvBuffer];
  int len = nxl_serv_getenv("NXL_NUM_STRIPES", buf, sizeof buf);
  int v;
  if (len > 0 && parse_digits(buf, static_cast<size_t>(len), &v)) fill_if_unset(__nxl_num_stripes, v);
}

void read_mpi_thread_level() {
  char buf[kEnvBuffer];
  int len = nxl_serv_getenv("O_MPI_THREAD_LEVEL", buf, sizeof buf);
  if (len <= 0) return;
  int v;
  if (!parse_digits(buf, static_cast<size_t>(len), &v) || v > 3) v = 0;
  fill_if_unset(__nxl_mpi_thread_level, v);
}

void read_environment() {
  read_thread_count("NXL_NUM_THREADS", __nxl_num_threads);
  read_stripes();
  read_domain_counts();
  read_dynamic();
  read_thread_count("OMP_NUM_THREADS", __omp_num_threads);
  nxl_serv_mpi_get_ppn();
  read_mpi_thread_level();
}

// A whole-text base-10 number, 0 or more; anything else is -1.
int parse_count(const char *s) {
  if (*s == '\0') return -1;
  char *end = nullptr;
  long v = strtol(s, &end, 10);
  if (*end != '\0' || v < 0) return -1;
  return v > INT_MAX ? INT_MAX : static_cast<int>(v);
}

}  // namespace

std::atomic<int> &domain_setting(int domain) {
  switch (domain) {
    case 1: return __nxl_blas_num_threads;
    case 2: return __nxl_fft_num_threads;
    case 3: return __nxl_vml_num_threads;
    case 4: return __nxl_pardiso_num_threads;
    default: return __nxl_num_threads;
  }
}

// A child of fork has only the forking thread: a lock another thread held
// at that moment is released. The reads it guards may simply run again.
void reset_env_lock_in_child() { env_lock = 0; }
pthread_once_t fork_once = PTHREAD_ONCE_INIT;
void register_fork_handler() { pthread_atfork(nullptr, nullptr, reset_env_lock_in_child); }

void ensure_read() {
  if (!__threads_env_NOT_readed.load(std::memory_order_acquire)) return;
  pthread_once(&fork_once, register_fork_handler);
  nxl_serv_lock(&env_lock);
  if (__threads_env_NOT_readed.load(std::memory_order_relaxed)) {
    read_environment();
    probe_topology();
    __threads_env_NOT_readed.store(0, std::memory_order_release);
  }
  nxl_serv_unlock(&env_lock);
}

}  // namespace nxl::env

using namespace nxl::env;

extern "C" {

int nxl_serv_getenv(const char *name, char *buffer, int size) {
  if (buffer != nullptr && size > 0) buffer[0] = '\0';
  if (name == nullptr || buffer == nullptr || size <= 0) return 0;
  if (nxl_disable_env_variables.load(std::memory_order_relaxed) > 0 &&
      strcmp(name, "LD_LIBRARY_PATH") != 0 && strcmp(name, "MIC_LD_LIBRARY_PATH") != 0 &&
      strcmp(name, "NXLROOT") != 0 && strcmp(name, "LANG") != 0)
    return 0;
  const char *value = getenv(name);
  if (value == nullptr) return 0;
  size_t len = strnlen(value, kLengthCeiling);
  if (len >= static_cast<size_t>(size)) return -static_cast<int>(len);
  memcpy(buffer, value, len);
  buffer[len] = '\0';
  return static_cast<int>(len);
}

void nxl_serv_set_envmode_variable(int mode) {
  nxl_disable_env_variables.store(mode, std::memory_order_relaxed);
}

int nxl_serv_get_envmode_variable(void) {
  return nxl_disable_env_variables.load(std::memory_order_relaxed);
}

void nxl_serv_set_num_threads(int n) {
  if (n < 1) return;
  __nxl_num_threads.store(n, std::memory_order_relaxed);
}

int nxl_serv_domain_set_num_threads(int n, int domain) {
  if (n < 0 || domain < 0 || domain > 4) return 0;
  domain_setting(domain).store(n, std::memory_order_relaxed);
  return 1;
}

void nxl_serv_set_dynamic(int flag) {
  __nxl_dynamic.store(flag != 0 ? 1 : 0, std::memory_order_relaxed);
}

int nxl_serv_get_dynamic(void) {
  ensure_read();
  return __nxl_dynamic.load(std::memory_order_relaxed) == 0 ? 0 : 1;
}

void nxl_serv_set_num_stripes(int n) {
  if (n < 0) return;
  __nxl_num_stripes.store(n, std::memory_order_relaxed);
}

// 0 means "no stripe count given": the level-3 drivers choose.
int nxl_serv_get_num_stripes(void) {
  ensure_read();
  int v = __nxl_num_stripes.load(std::memory_order_relaxed);
  return v < 0 ? 0 : v;
}

int nxl_serv_mpi_get_ppn(void) {
  if (ppn_cached.load(std::memory_order_acquire)) return __nxl_mpi_ppn.load(std::memory_order_relaxed);
  static const char *const names[] = {"NXL_MPI_PPN", "O_MPI_NUMBER_OF_MPI_PROCESSES_PER_NODE",
                                      "O_MPI_PIN_MAPPING", "OMPI_COMM_WORLD_LOCAL_SIZE",
                                      "MPI_LOCALNRANKS"};
  int result = -1;
  for (const char *name : names) {
    char buf[kEnvBuffer];
    if (nxl_serv_getenv(name, buf, sizeof buf) <= 0) continue;
    int v;
    if (strcmp(name, "O_MPI_PIN_MAPPING") == 0) {
      // "<count>:<mapping>": only the leading count matters.
      size_t n = 0;
      while (buf[n] >= '0' && buf[n] <= '9') ++n;
      if (n == 0 || buf[n] != ':') continue;
      buf[n] = '\0';
      v = parse_count(buf);
    } else {
      v = parse_count(buf);
    }
    if (v > 0) {
      result = v;
      break;
    }
  }
  __nxl_mpi_ppn.store(result, std::memory_order_relaxed);
  ppn_cached.store(1, std::memory_order_release);
  return result;
}

void nxl_serv_mpi_safe(int flag) {
  __mpi_SAFETY_BLACS.store(flag == 1 ? 1 : 0, std::memory_order_relaxed);
}

}  // extern "C"
