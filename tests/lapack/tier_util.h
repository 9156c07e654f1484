// Helpers of the LU and Cholesky tier tests: a scoped thread count, and a
// progress function that records the step and the memory manager's blocks
// held for callers at every report (the threaded tiers hold their distribution, graph
// and work area while they run; the others hold nothing) and can stop the
// call at a chosen report.
#ifndef NXL_TESTS_LAPACK_TIER_UTIL_H
#define NXL_TESTS_LAPACK_TIER_UTIL_H

#include <algorithm>
#include <vector>
#include "service/nxl_serv.h"
#include "service/serv_core.h"

namespace lt {

struct ScopedThreads {
  int old;
  explicit ScopedThreads(int n) : old(nxl_serv_get_max_threads()) { nxl_serv_set_num_threads(n); }
  ~ScopedThreads() { nxl_serv_set_num_threads(old); }
};

struct HeldBlocks {
  static inline std::vector<int> blocks;
  static inline std::vector<long long> steps;
  static inline int stop_after = -1;  // stop at this report (0-based); -1 never
  static int fn(const nxl_int *, const nxl_int *step, const char *, nxl_int) {
    steps.push_back(*step);
    int b = 0;
    nxl_serv_mem_in_use(&b);
    blocks.push_back(b);
    return stop_after >= 0 && static_cast<int>(blocks.size()) > stop_after;
  }
  nxl_progress_fn old;
  int base = 0;
  HeldBlocks() : old(nxl_serv_set_progress(fn)) {
    blocks.clear();
    steps.clear();
    stop_after = -1;
    nxl_serv_mem_in_use(&base);
  }
  ~HeldBlocks() { nxl_serv_set_progress(old == nxl_serv_default_progress ? nullptr : old); }
  // Most blocks held beyond the base during the call.
  int extra() const {
    int e = 0;
    for (int b : blocks) e = std::max(e, b - base);
    return e;
  }
  // Blocks held now beyond the base (0 when the call released everything).
  int left() const {
    int b = 0;
    nxl_serv_mem_in_use(&b);
    return b - base;
  }
};

}  // namespace lt

#endif  // NXL_TESTS_LAPACK_TIER_UTIL_H
