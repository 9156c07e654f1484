// Error reporting: the xerbla family, the replaceable handler, the exit hook,
// the progress callback, and the small bounded string helpers every report
// uses.
//
// Every argument error of the library funnels through nxl_serv_xerbla. The
// interface layers install cdecl_xerbla as the handler; it hands the report
// to the application's own xerbla_ (Fortran) or xerbla (C) when the
// application defines one, and to the default printer otherwise.
#include <dlfcn.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <atomic>

#include "service/fortran.h"
#include "service/nxl_serv.h"
#include "nxl_service.h"

namespace {

// The installed error handler, progress function and exit hook. Null means
// "the default".
std::atomic<nxl_xerbla_fn> nxl_xerbla_address{nullptr};
std::atomic<nxl_progress_fn> nxl_progress_address{nullptr};
std::atomic<void (*)(int)> custom_core_exit{nullptr};
nxl_serv_lock_t xerbla_install_lock = 0;

// Fortran callers pass the hidden name length as a 64-bit integer.
using fortran_xerbla_fn = void (*)(const char *, const nxl_int *, size_t);
using c_xerbla_fn = void (*)(const char *, const nxl_int *, int);

// True when the shared object holding `p` is itself a BLAS or LAPACK
// library (it defines dgemm_ or dgetrf_): its xerbla is not the
// application's, and typically ends the process.
bool in_other_blas(void *p) {
  Dl_info where;
  if (dladdr(p, &where) == 0 || where.dli_fname == nullptr) return false;
  void *h = dlopen(where.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
  if (h == nullptr) return false;  // the main program
  bool other = false;
  for (const char *marker : {"dgemm_", "dgetrf_"}) {
    Dl_info mi;
    void *q = dlsym(h, marker);
    if (q != nullptr && dladdr(q, &mi) != 0 && mi.dli_fbase == where.dli_fbase) other = true;
  }
  dlclose(h);
  return other;
}

// Looks a routine up in the process's global scope and returns it unless it
// is our own definition (`own`) or another BLAS library's. Racing first
// callers store the same answer.
struct app_symbol {
  std::atomic<int> resolved{0};
  std::atomic<void *> address{nullptr};

  void *get(const char *name, const void *own) {
    if (resolved.load(std::memory_order_acquire)) return address.load(std::memory_order_relaxed);
    void *p = dlsym(RTLD_DEFAULT, name);
    if (p == own || (p != nullptr && in_other_blas(p))) p = nullptr;
    address.store(p, std::memory_order_relaxed);
    resolved.store(1, std::memory_order_release);
    return p;
  }
};

app_symbol app_xerbla_fortran;
app_symbol app_xerbla_c;
app_symbol app_progress;

constexpr size_t kNameCeiling = 4096;

}  // namespace

extern "C" {

// ---------------------------------------------------------------------------
// Bounded string helpers.

size_t nxl_serv_strnlen_s(const char *s, size_t max) {
  if (s == nullptr) return 0;
  return strnlen(s, max);
}

// Formats into `buffer` writing at most min(size - 1, max) characters and
// always terminating it. Returns the length the complete text would have (so a
// result >= size means the text was cut), or -1 for a bad buffer or format.
int nxl_serv_snprintf_s(char *buffer, size_t size, size_t max, const char *format, ...) {
  if (buffer == nullptr || size == 0) return -1;
  if (format == nullptr) {
    buffer[0] = '\0';
    return -1;
  }
  size_t limit = size;
  if (max < limit - 1) limit = max + 1;
  va_list ap;
  va_start(ap, format);
  int n = vsnprintf(buffer, limit, format, ap);
  va_end(ap);
  if (n < 0) buffer[0] = '\0';
  return n;
}

int nxl_serv_lsame(const char *a, const char *b, int la, int lb) {
  if (a == nullptr || b == nullptr) return 0;
  unsigned char x = static_cast<unsigned char>(*a), y = static_cast<unsigned char>(*b);
  if (x >= 'a' && x <= 'z') x = static_cast<unsigned char>(x - 'a' + 'A');
  if (y >= 'a' && y <= 'z') y = static_cast<unsigned char>(y - 'a' + 'A');
  return x == y;
}

// ---------------------------------------------------------------------------
// The default report.

void nxl_serv_default_xerbla(const char *name, const nxl_int *info, int len) {
  if (name == nullptr || info == nullptr || len < 0) return;
  char routine[22];
  int n = len < 20 ? len : 20;
  memcpy(routine, name, static_cast<size_t>(n));
  routine[n] = '\0';

  nxl_serv_print(0, 0, 0);
  nxl_int v = *info;
  if (v == 1000) {
    nxl_serv_print(0, 8, 1, routine);
  } else if (v == 1001) {
    nxl_serv_print(0, 9, 1, routine);
  } else if (v == 1212) {
    nxl_serv_print(0, 1212, 1, routine);
  } else if (v == 1089) {
    nxl_serv_print(0, 1089, 1, routine);
  } else if (v < 1) {
    nxl_serv_print(0, 7, 2, static_cast<int>(-v), routine);
  } else {
    nxl_serv_print(0, 6, 2, static_cast<int>(v), routine);
  }
}

// Set while a report is being handed to the application's routine, so that
// an application routine which calls back into xerbla gets the default report
// instead of an endless loop.
static thread_local int forwarding = 0;

// The exported xerbla and xerbla_: one body. The report goes to the
// application's xerbla_ or xerbla when it defines one (whichever spelling the
// caller used), else to the default printer. Our own definitions are skipped
// in the lookup, so the body never calls itself.
NXL_FORTRAN_ENTRY(void, XERBLA, xerbla, (const char *name, const nxl_int *info, int len)) {
  if (!forwarding) {
    const void *own = reinterpret_cast<const void *>(&XERBLA);
    void *f = app_xerbla_fortran.get("xerbla_", own);
    void *c = f ? nullptr : app_xerbla_c.get("xerbla", own);
    if (f != nullptr || c != nullptr) {
      forwarding = 1;
      if (f != nullptr)
        reinterpret_cast<fortran_xerbla_fn>(f)(name, info, len < 0 ? 0 : static_cast<size_t>(len));
      else
        reinterpret_cast<c_xerbla_fn>(c)(name, info, len);
      forwarding = 0;
      return;
    }
  }
  nxl_serv_default_xerbla(name, info, len);
}

// The handler adapter that the interface layers install: every report of
// theirs goes through xerbla, and so reaches an application's replacement.
void cdecl_xerbla(const char *name, const nxl_int *info, int len) { XERBLA(name, info, len); }

// ---------------------------------------------------------------------------
// The handler funnel.

void nxl_serv_xerbla(const char *name, const nxl_int *info, int len) {
  if (name == nullptr || info == nullptr) return;
  nxl_xerbla_fn h = nxl_xerbla_address.load(std::memory_order_acquire);
  if (h == nullptr)
    nxl_serv_default_xerbla(name, info, len);
  else
    h(name, info, len);
}

void nxl_serv_iface_xerbla(const char *name, const nxl_int *info, int len) {
  nxl_serv_xerbla(name, info, len);
}

nxl_xerbla_fn nxl_serv_set_xerbla(nxl_xerbla_fn handler) {
  nxl_xerbla_fn prev = nxl_xerbla_address.exchange(handler, std::memory_order_acq_rel);
  return prev ? prev : nxl_serv_default_xerbla;
}

void nxl_set_xerbla_interface(nxl_xerbla_fn handler) {
  if (nxl_xerbla_address.load(std::memory_order_acquire) != nullptr) return;
  nxl_serv_lock(&xerbla_install_lock);
  if (nxl_xerbla_address.load(std::memory_order_relaxed) == nullptr)
    nxl_xerbla_address.store(handler, std::memory_order_release);
  nxl_serv_unlock(&xerbla_install_lock);
}

void cblas_xerbla(const char *name, int position) {
  nxl_set_xerbla_interface(cdecl_xerbla);
  nxl_int info = position;
  nxl_serv_iface_xerbla(name, &info, static_cast<int>(nxl_serv_strnlen_s(name, kNameCeiling)));
}

void cblas_xerbla_malloc_error(const char *name) {
  nxl_set_xerbla_interface(cdecl_xerbla);
  nxl_int info = 1000;
  nxl_serv_iface_xerbla(name, &info, static_cast<int>(nxl_serv_strnlen_s(name, kNameCeiling)));
}

int nxl_serv_check_ptr(const void *pointer, const char *name) {
  if (pointer != nullptr) return 0;
  nxl_int info = 1089;
  nxl_serv_xerbla(name, &info, static_cast<int>(nxl_serv_strnlen_s(name, kNameCeiling)));
  return 1;
}

int nxl_serv_check_ptr_and_warn(const void *pointer, const char *name) {
  return pointer == nullptr ? 1 : 0;
}

// ---------------------------------------------------------------------------
// Process exit.

void nxl_serv_exit(int code) {
  void (*hook)(int) = custom_core_exit.load(std::memory_order_acquire);
  if (hook != nullptr) {
    hook(code);
    return;
  }
  exit(code);
}

void nxl_serv_set_exit_handler(void (*hook)(int)) {
  custom_core_exit.store(hook, std::memory_order_release);
}

// ---------------------------------------------------------------------------
// Progress.

int nxl_serv_default_progress(const nxl_int *thread, const nxl_int *step,
                              const char *stage, nxl_int stage_len) {
  return 0;
}

// The exported nxl_progress and nxl_progress_: one body. An application that
// defines its own nxl_progress_ takes the place of ours in the global scope;
// a call that still reaches this body is forwarded there.
NXL_FORTRAN_ENTRY(int, NXL_PROGRESS, nxl_progress,
                  (const nxl_int *thread, const nxl_int *step, const char *stage, nxl_int len)) {
  const void *own = reinterpret_cast<const void *>(&NXL_PROGRESS);
  if (void *f = app_progress.get("nxl_progress_", own))
    return reinterpret_cast<nxl_progress_fn>(f)(thread, step, stage, len);
  return 0;
}

// Upper-case twin of the trailing-underscore spelling.
int NXL_PROGRESS_(const nxl_int *thread, const nxl_int *step, const char *stage, nxl_int len) {
  return NXL_PROGRESS(thread, step, stage, len);
}

// The progress adapter of the LAPACK interface layer.
int cdecl_progress(const nxl_int *thread, const nxl_int *step, const char *stage,
                   nxl_int stage_len) {
  return NXL_PROGRESS(thread, step, stage, stage_len);
}

int nxl_serv_progress(const nxl_int *thread, const nxl_int *step, const char *stage,
                      nxl_int stage_len) {
  nxl_progress_fn f = nxl_progress_address.load(std::memory_order_acquire);
  if (f == nullptr) return 0;
  return f(thread, step, stage, stage_len);
}

nxl_progress_fn nxl_serv_set_progress(nxl_progress_fn fn) {
  nxl_progress_fn prev = nxl_progress_address.exchange(fn, std::memory_order_acq_rel);
  return prev ? prev : nxl_serv_default_progress;
}

void nxl_serv_set_progress_interface(nxl_progress_fn fn) {
  if (nxl_progress_address.load(std::memory_order_acquire) == nullptr)
    nxl_progress_address.store(fn, std::memory_order_release);
}

}  // extern "C"
