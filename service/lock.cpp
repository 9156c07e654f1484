// Spin locks of the runtime services.
//
// A lock word is 0 when free and 1 when held. Waiters first watch the word
// with plain reads (so they do not keep the cache line in exclusive state)
// and only try the atomic exchange when it looks free; while it is held they
// give their time slice away, since the holder may be descheduled.
#include <sched.h>

#include "service/nxl_serv.h"

extern "C" {

// Serialises the code-path selection and the reproducibility decision.
nxl_serv_lock_t NXL_Detect_Cpu_Global_Lock = 0;

void nxl_serv_lock(nxl_serv_lock_t *lock) {
  for (;;) {
    if (*lock == 0 &&
        __atomic_exchange_n(const_cast<int *>(lock), 1, __ATOMIC_ACQUIRE) == 0)
      return;
    while (*lock != 0) sched_yield();
  }
}

void nxl_serv_unlock(nxl_serv_lock_t *lock) {
  __atomic_store_n(const_cast<int *>(lock), 0, __ATOMIC_RELEASE);
}

}  // extern "C"
