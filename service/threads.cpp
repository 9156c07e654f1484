// Thread controls: the one thread-count getter every threaded driver asks,
// the per-calling-thread count, the processor-topology probe, the work
// partition helpers, and the exported controls.
#include <omp.h>
#include <pthread.h>
#include <sched.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <atomic>
#include <climits>
#include <cmath>

#include "service/env_state.h"
#include "service/fortran.h"
#include "service/serv_core.h"
#include "nxl_service.h"

using namespace nxl::env;

namespace {

// ---------------------------------------------------------------------------
// The calling thread's own count, in a thread-local slot.

pthread_key_t local_key;
std::atomic<int> local_key_ready{0};
nxl_serv_lock_t local_key_lock = 0;

void local_slot_destructor(void *) {}

bool make_local_key() {
  if (local_key_ready.load(std::memory_order_acquire)) return true;
  nxl_serv_lock(&local_key_lock);
  if (!local_key_ready.load(std::memory_order_relaxed) &&
      pthread_key_create(&local_key, local_slot_destructor) == 0)
    local_key_ready.store(1, std::memory_order_release);
  nxl_serv_unlock(&local_key_lock);
  return local_key_ready.load(std::memory_order_acquire) != 0;
}

int local_count() {
  if (!local_key_ready.load(std::memory_order_acquire)) return 0;
  return static_cast<int>(reinterpret_cast<intptr_t>(pthread_getspecific(local_key)));
}

// The key goes with the library, so that no thread of a process that
// unloaded us runs a destructor in unmapped code.
__attribute__((destructor)) void delete_local_key() {
  if (local_key_ready.load(std::memory_order_acquire)) {
    pthread_key_delete(local_key);
    local_key_ready.store(0, std::memory_order_release);
  }
}

// ---------------------------------------------------------------------------
// Topology probe.

constexpr int kMaxCpus = 8192;

struct cpuid_regs { unsigned a, b, c, d; };

cpuid_regs cpuid(unsigned leaf, unsigned sub = 0) {
  cpuid_regs r;
  __asm__ volatile("cpuid" : "=a"(r.a), "=b"(r.b), "=c"(r.c), "=d"(r.d) : "a"(leaf), "c"(sub));
  return r;
}

int ceil_log2(unsigned v) {
  int s = 0;
  while ((1u << s) < v) ++s;
  return s;
}

// Identity of the core and package a logical processor belongs to.
struct cpu_place { long long core, package; };

// Counts distinct cores and packages among `places`.
void count_places(const cpu_place *places, int n, int *cores, int *packages) {
  *cores = 0;
  *packages = 0;
  for (int i = 0; i < n; ++i) {
    bool new_core = true, new_pkg = true;
    for (int j = 0; j < i; ++j) {
      if (places[j].package == places[i].package) {
        new_pkg = false;
        if (places[j].core == places[i].core) new_core = false;
      }
    }
    *cores += new_core;
    *packages += new_pkg;
  }
}

// On the maker's processors: move the thread over each allowed processor and
// read its APIC identity, split into core and package by the CPUID shifts.
bool probe_by_cpuid(cpu_set_t *mask, size_t mask_size, cpu_place *places, int *n) {
  if (!nxl_serv_ortex_cpu_true()) return false;
  unsigned max_leaf = cpuid(0).a;
  int smt_shift, pkg_shift;
  bool x2apic = false;
  if (max_leaf >= 0xB && (cpuid(0xB, 0).b & 0xFFFF) != 0) {
    x2apic = true;
    smt_shift = static_cast<int>(cpuid(0xB, 0).a & 0x1F);
    pkg_shift = smt_shift;
    for (unsigned sub = 1; sub < 8; ++sub) {
      cpuid_regs r = cpuid(0xB, sub);
      unsigned type = (r.c >> 8) & 0xFF;
      if (type == 0) break;
      pkg_shift = static_cast<int>(r.a & 0x1F);
    }
  } else {
    // Leaf 4 must describe a cache (type field nonzero), else its core count
    // means nothing and the caller falls back to /proc/cpuinfo.
    if (max_leaf < 4 || (cpuid(4, 0).a & 0x1F) == 0) return false;
    cpuid_regs l1 = cpuid(1);
    unsigned per_pkg = (l1.d & (1u << 28)) ? ((l1.b >> 16) & 0xFF) : 1;
    unsigned cores = ((cpuid(4, 0).a >> 26) & 0x3F) + 1;
    if (per_pkg == 0) per_pkg = 1;
    if (cores > per_pkg) cores = per_pkg;
    smt_shift = ceil_log2(per_pkg / cores);
    pkg_shift = ceil_log2(per_pkg);
  }

  cpu_set_t *saved = CPU_ALLOC(kMaxCpus);
  cpu_set_t *one = CPU_ALLOC(kMaxCpus);
  if (saved == nullptr || one == nullptr) {
    CPU_FREE(saved);
    CPU_FREE(one);
    return false;
  }
  memcpy(saved, mask, mask_size);
  bool ok = true;
  int count = 0;
  for (int cpu = 0; cpu < kMaxCpus && ok; ++cpu) {
    if (!CPU_ISSET_S(cpu, mask_size, mask)) continue;
    CPU_ZERO_S(mask_size, one);
    CPU_SET_S(cpu, mask_size, one);
    if (sched_setaffinity(0, mask_size, one) != 0) {
      ok = false;
      break;
    }
    unsigned apic = x2apic ? cpuid(0xB, 0).d : (cpuid(1).b >> 24);
    places[count].core = static_cast<long long>(apic >> smt_shift);
    places[count].package = static_cast<long long>(apic >> pkg_shift);
    ++count;
  }
  sched_setaffinity(0, mask_size, saved);
  CPU_FREE(saved);
  CPU_FREE(one);
  *n = count;
  return ok && count > 0;
}

// Elsewhere: the "physical id" and "core id" fields of /proc/cpuinfo.
bool probe_by_cpuinfo(cpu_set_t *mask, size_t mask_size, cpu_place *places, int *n) {
  FILE *f = fopen("/proc/cpuinfo", "r");
  if (f == nullptr) return false;
  char line[512];
  long long proc = -1, pkg = -1, core = -1;
  int count = 0;
  auto flush = [&]() {
    if (proc >= 0 && proc < kMaxCpus && pkg >= 0 && core >= 0 &&
        CPU_ISSET_S(static_cast<int>(proc), mask_size, mask) && count < kMaxCpus) {
      places[count].core = core;
      places[count].package = pkg;
      ++count;
    }
    proc = pkg = core = -1;
  };
  while (fgets(line, sizeof line, f) != nullptr) {
    const char *colon = strchr(line, ':');
    if (colon == nullptr) {
      flush();
      continue;
    }
    long long v = -1;
    if (sscanf(colon + 1, "%lld", &v) != 1) continue;
    if (strncmp(line, "processor", 9) == 0) proc = v;
    else if (strncmp(line, "physical id", 11) == 0) pkg = v;
    else if (strncmp(line, "core id", 7) == 0) core = v;
  }
  flush();
  fclose(f);
  *n = count;
  return count > 0;
}

}  // namespace

namespace nxl::env {

void probe_topology() {
  int logical = omp_get_num_procs();
  if (logical < 1) logical = 1;
  if (logical > kMaxCpus) logical = kMaxCpus;
  int physical = logical, packages = 1;

  size_t mask_size = CPU_ALLOC_SIZE(kMaxCpus);
  cpu_set_t *mask = CPU_ALLOC(kMaxCpus);
  cpu_place *places = new (std::nothrow) cpu_place[kMaxCpus];
  if (mask != nullptr && places != nullptr && sched_getaffinity(0, mask_size, mask) == 0) {
    int n = 0, cores = 0, pkgs = 0;
    if (probe_by_cpuid(mask, mask_size, places, &n) || probe_by_cpuinfo(mask, mask_size, places, &n)) {
      count_places(places, n, &cores, &pkgs);
      if (cores > 0 && cores <= logical) physical = cores;
      if (pkgs > 0) packages = pkgs;
    }
  }
  delete[] places;
  if (mask != nullptr) CPU_FREE(mask);

  __N_Logical_Cores.store(logical, std::memory_order_relaxed);
  __N_Physical_Cores.store(physical, std::memory_order_relaxed);
  __N_CPU_Packages.store(packages, std::memory_order_relaxed);
  int per = physical / packages;
  __N_Cores_per_Packages.store(per < 1 ? 1 : per, std::memory_order_relaxed);
  __HT.store(physical != logical ? 1 : 0, std::memory_order_relaxed);
}

}  // namespace nxl::env

namespace {

int clamp_int(nxl_int v) {
  if (v > INT_MAX) return INT_MAX;
  if (v < INT_MIN) return INT_MIN;
  return static_cast<int>(v);
}

}  // namespace

extern "C" {

int nxl_serv_set_num_threads_local(int n) {
  if (!make_local_key()) return 0;
  int prev = local_count();
  intptr_t v = n > 0 ? n : 0;
  pthread_setspecific(local_key, reinterpret_cast<void *>(v));
  return prev > 0 ? prev : 0;
}

int nxl_serv_omp_in_parallel(void) { return omp_in_parallel(); }

int nxl_serv_domain_get_max_threads(int domain) {
  int local = local_count();
  if (local > 0) return local;
  ensure_read();

  bool dynamic = __nxl_dynamic.load(std::memory_order_relaxed) != 0;
  if (dynamic && omp_in_parallel()) return 1;

  int n = -1;
  bool explicit_setting = true;
  if (domain >= 1 && domain <= 4) {
    int d = domain_setting(domain).load(std::memory_order_relaxed);
    if (d >= 1) n = d;
  }
  if (n < 1) {
    int g = __nxl_num_threads.load(std::memory_order_relaxed);
    if (g >= 1) n = g;
  }
  if (n < 1) {
    n = omp_get_max_threads();
    explicit_setting = false;
  }

  if (dynamic) {
    int physical = __N_Physical_Cores.load(std::memory_order_relaxed);
    if (physical > 0 && n > physical) n = physical;
    int blacs = __mpi_SAFETY_BLACS.load(std::memory_order_relaxed);
    int ppn = __nxl_mpi_ppn.load(std::memory_order_relaxed);
    if (blacs == -1 && ppn > 0 && !explicit_setting &&
        __omp_num_threads.load(std::memory_order_relaxed) == -1) {
      if (__nxl_mpi_thread_level.load(std::memory_order_relaxed) < 1) {
        n = 1;
      } else {
        int share = physical > 0 ? physical / ppn : 1;
        if (n > share) n = share;
        if (n < 2) n = 1;
      }
    } else if (blacs == 0) {
      n = 1;
    }
  }
  return n < 1 ? 1 : n;
}

int nxl_serv_get_max_threads(void) { return nxl_serv_domain_get_max_threads(-1); }

int nxl_serv_get_ncpus(void) {
  ensure_read();
  return __N_CPU_Packages.load(std::memory_order_relaxed);
}

int nxl_serv_get_ncorespercpu(void) {
  ensure_read();
  return __N_Cores_per_Packages.load(std::memory_order_relaxed);
}

int nxl_serv_get_ht(void) {
  ensure_read();
  return __HT.load(std::memory_order_relaxed);
}

int nxl_serv_get_nlogicalcores(void) {
  ensure_read();
  return __N_Logical_Cores.load(std::memory_order_relaxed);
}

int nxl_serv_get_nphysicalcores(void) {
  ensure_read();
  return __N_Physical_Cores.load(std::memory_order_relaxed);
}

// ---------------------------------------------------------------------------
// Work partitions.

nxl_int nxl_serv_divbythreads(const nxl_int *ithr, const nxl_int *nthr, const nxl_int *n,
                              nxl_int *len) {
  nxl_int t = *ithr, p = *nthr, m = *n;
  if (p < 2) {
    *len = t == 0 ? m : 0;
    return 0;
  }
  if (t < 0 || t >= p) {
    *len = 0;
    return 0;
  }
  nxl_int q = m / p, r = m % p;
  *len = t < r ? q + 1 : q;
  return q * t + (t < r ? t : r);
}

nxl_int nxl_serv_divbythreadsnb(const nxl_int *ithr, const nxl_int *nthr, const nxl_int *n,
                                const nxl_int *nb, nxl_int *len) {
  nxl_int t = *ithr, p = *nthr, m = *n, b = *nb;
  if (p < 2 || b <= 0) {
    *len = t == 0 ? m : 0;
    return 0;
  }
  if (t < 0 || t >= p) {
    *len = 0;
    return 0;
  }
  nxl_int Q = m / (p * b), R = m % (p * b), e = R / b;
  nxl_int l = b * Q + (t < e ? b : 0);
  if (t == p - 1) l += R % b;
  *len = l;
  return (Q * t + (t < e ? t : e)) * b;
}

nxl_int nxl_serv_divbythreadstr(const nxl_int *ithr, const nxl_int *nthr, const nxl_int *n,
                                const char *uplo, nxl_int *len) {
  nxl_int t = *ithr, p = *nthr, m = *n;
  if (p < 2) {
    *len = t == 0 ? m : 0;
    return 0;
  }
  if (t < 0 || t >= p) {
    *len = 0;
    return 0;
  }
  double w = static_cast<double>((m * (m + 1) / 2) / p);
  auto row = [w](nxl_int k) {
    return static_cast<nxl_int>(std::trunc((std::sqrt(8.0 * static_cast<double>(k) * w + 1.0) - 1.0) / 2.0));
  };
  nxl_int start, end;
  if (uplo != nullptr && (*uplo == 'U' || *uplo == 'u')) {
    start = row(t);
    end = row(t + 1);
  } else {
    start = m - row(p - t);
    end = m - row(p - t - 1);
  }
  if (t == 0) start = 0;
  if (t == p - 1) end = m;
  if (start < 0) start = 0;
  if (start > m) start = m;
  if (end > m) end = m;
  if (end < start) end = start;
  *len = end - start;
  return start;
}

// ---------------------------------------------------------------------------
// Exported controls: both spellings are the Fortran entry (arguments by
// address). The by-value forms are internal.

void NXL_Set_Num_Threads(int n) { nxl_serv_set_num_threads(n); }
int NXL_Set_Num_Threads_Local(int n) { return nxl_serv_set_num_threads_local(n); }
int NXL_Get_Max_Threads(void) { return nxl_serv_get_max_threads(); }
int NXL_Domain_Set_Num_Threads(int n, int domain) { return nxl_serv_domain_set_num_threads(n, domain); }
int NXL_Domain_Get_Max_Threads(int domain) { return nxl_serv_domain_get_max_threads(domain); }
void NXL_Set_Dynamic(int flag) { nxl_serv_set_dynamic(flag); }
int NXL_Get_Dynamic(void) { return nxl_serv_get_dynamic(); }

NXL_FORTRAN_ENTRY(void, NXL_SET_NUM_THREADS, nxl_set_num_threads, (const nxl_int *n)) {
  if (n != nullptr) NXL_Set_Num_Threads(clamp_int(*n));
}

NXL_FORTRAN_ENTRY(nxl_int, NXL_SET_NUM_THREADS_LOCAL, nxl_set_num_threads_local, (const nxl_int *n)) {
  return NXL_Set_Num_Threads_Local(n != nullptr ? clamp_int(*n) : 0);
}

NXL_FORTRAN_ENTRY(nxl_int, NXL_GET_MAX_THREADS, nxl_get_max_threads, (void)) {
  return NXL_Get_Max_Threads();
}

NXL_FORTRAN_ENTRY(nxl_int, NXL_DOMAIN_SET_NUM_THREADS, nxl_domain_set_num_threads,
                  (const nxl_int *n, const nxl_int *domain)) {
  if (n == nullptr || domain == nullptr) return 0;
  return NXL_Domain_Set_Num_Threads(clamp_int(*n), clamp_int(*domain));
}

NXL_FORTRAN_ENTRY(nxl_int, NXL_DOMAIN_GET_MAX_THREADS, nxl_domain_get_max_threads,
                  (const nxl_int *domain)) {
  return NXL_Domain_Get_Max_Threads(domain != nullptr ? clamp_int(*domain) : 0);
}

NXL_FORTRAN_ENTRY(void, NXL_SET_DYNAMIC, nxl_set_dynamic, (const nxl_int *flag)) {
  if (flag != nullptr) NXL_Set_Dynamic(*flag != 0);
}

NXL_FORTRAN_ENTRY(nxl_int, NXL_GET_DYNAMIC, nxl_get_dynamic, (void)) { return NXL_Get_Dynamic(); }

}  // extern "C"
