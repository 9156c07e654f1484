// TEMPORARY test-only stand-ins for the processor-detection services, used
// by the core service tests until those services are merged.
#include <sched.h>
#include "service/nxl_serv.h"

extern "C" {
nxl_serv_lock_t NXL_Detect_Cpu_Global_Lock = 0;
void nxl_serv_lock(nxl_serv_lock_t *lock) {
  while (__atomic_exchange_n(lock, 1, __ATOMIC_ACQUIRE)) sched_yield();
}
void nxl_serv_unlock(nxl_serv_lock_t *lock) { __atomic_store_n(lock, 0, __ATOMIC_RELEASE); }
int nxl_serv_cpu_detect(void) { return 0; }
int nxl_serv_cbwr_get(int what) { return what == 1 ? 1 : (what == -1 ? 1 : -2); }
int nxl_serv_ortex_cpu_true(void) { return 1; }
double nxl_serv_get_max_cpu_frequency(void) { return 2.0; }
}
