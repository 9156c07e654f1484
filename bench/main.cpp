// Benchmark driver: nxl_bench [--suite NAME]... [--peer LIB] [--fft-peer LIB]
//                              [--threads LIST] [--sizes LIST] [--min-time S] [--quick]
#include "bench.h"
#include "nxl_service.h"

#include <dlfcn.h>
#include <omp.h>
#include <unistd.h>
#include <algorithm>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace bench {

std::vector<Suite> &registry() {
  static std::vector<Suite> r;
  return r;
}

// Calls run in batches between two readings of the clock, so that the
// clock's own cost (tens of ns) does not weigh on calls of similar length.
// The functions take turns round by round, so that a change in the machine's
// speed during the measurement (other work, clock changes) reaches all of
// them alike; each gets its best round.
// Worker threads of an OpenMP runtime keep spinning for a while after a
// parallel region ends: our runtime's for its block time (200 ms unless set),
// the peer's runtime for a few milliseconds. Left alone, the threads of the
// library that ran last would take cores from the one timed next. main()
// shortens our block time; before each turn the driver waits until both
// runtimes' idle threads are asleep, so every turn starts on a quiet machine.
// The pause leaves the core idle, and the calls right after it run slower
// (clock and caches coming back): short calls are repeated, untimed, for a
// few milliseconds before the timed ones.
constexpr int kBlockTimeMs = 20;
constexpr useconds_t kSettleUs = 30000;
constexpr double kRewarmS = 0.005;

bool settle() {
  if (nxl_get_max_threads() <= 1 && omp_get_max_threads() <= 1) return false;
  usleep(kSettleUs);
  return true;
}

std::vector<double> time_calls(const std::vector<std::function<void()>> &fns, double min_time, int rounds) {
  using clk = std::chrono::steady_clock;
  const size_t n = fns.size();
  std::vector<long> batch(n, 1);
  std::vector<double> best(n, 1e300), per_call(n, 0);
  for (size_t f = 0; f < n; ++f) {
    settle();
    fns[f]();  // warm-up
    for (;;) {
      auto t0 = clk::now();
      for (long i = 0; i < batch[f]; ++i) fns[f]();
      const double el = std::chrono::duration<double>(clk::now() - t0).count();
      per_call[f] = el / batch[f];
      if (el >= min_time / 300) break;
      batch[f] *= 2;
    }
  }
  for (int round = 0; round < rounds; ++round)
    for (size_t f = 0; f < n; ++f) {
      if (settle() && per_call[f] < kRewarmS)
        for (auto w0 = clk::now(); std::chrono::duration<double>(clk::now() - w0).count() < kRewarmS;) fns[f]();
      long reps = 0;
      auto t0 = clk::now();
      double el = 0;
      do {
        for (long i = 0; i < batch[f]; ++i) fns[f]();
        reps += batch[f];
        el = std::chrono::duration<double>(clk::now() - t0).count();
      } while (el < min_time / rounds);
      best[f] = std::min(best[f], el / reps);
    }
  return best;
}

bool row_selected(const std::string &name) {
  const char *filter = std::getenv("NXL_BENCH_FILTER");
  return !filter || name.find(filter) != std::string::npos;
}

double time_call(const std::function<void()> &fn, double min_time) { return time_calls({fn}, min_time, 3)[0]; }

void *open_peer(const std::string &path) {
  // The peer's own internal calls (its LAPACK calling its BLAS) must reach
  // its own routines, not ours of the same name already in the process.
  return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
}

}  // namespace bench

template <class T>
static std::vector<T> parse_list(const char *s) {
  std::vector<T> v;
  std::stringstream ss(s);
  std::string item;
  while (std::getline(ss, item, ',')) v.push_back(static_cast<T>(std::atol(item.c_str())));
  return v;
}

int main(int argc, char **argv) {
  if (!std::getenv("KMP_BLOCKTIME")) kmp_set_blocktime(bench::kBlockTimeMs);
  bench::Options opt;
  for (int i = 1; i < argc; ++i) {
    auto arg = [&](const char *name) { return std::strcmp(argv[i], name) == 0 && i + 1 < argc; };
    if (arg("--suite")) opt.suites.push_back(argv[++i]);
    else if (arg("--peer")) opt.peer = argv[++i];
    else if (arg("--fft-peer")) opt.fft_peer = argv[++i];
    else if (arg("--threads")) opt.threads = parse_list<int>(argv[++i]);
    else if (arg("--sizes")) opt.sizes = parse_list<long>(argv[++i]);
    else if (arg("--min-time")) opt.min_time = std::atof(argv[++i]);
    else if (std::strcmp(argv[i], "--quick") == 0) opt.quick = true;
    else {
      std::printf("usage: %s [--suite NAME]... [--peer LIB] [--fft-peer LIB] [--threads LIST]\n"
                  "          [--sizes LIST] [--min-time S] [--quick]\nsuites:\n", argv[0]);
      for (auto &s : bench::registry()) std::printf("  %-12s %s\n", s.name, s.help);
      return std::strcmp(argv[i], "--help") == 0 ? 0 : 2;
    }
  }
  for (auto &s : bench::registry()) {
    bool want = opt.suites.empty();
    for (auto &n : opt.suites) want |= n == s.name;
    if (want) s.run(opt);
  }
  return 0;
}
