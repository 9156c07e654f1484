// Timing and report lines shared by the LAPACK suites.
#ifndef NXL_BENCH_LAPACK_BENCH_H
#define NXL_BENCH_LAPACK_BENCH_H

#include <dlfcn.h>
#include <algorithm>
#include <string>
#include <utility>
#include <cstdio>
#include <vector>
#include "bench.h"
#include "nxl_service.h"
#include "nxl_types.h"

namespace bench {

// Seconds per call of f, which overwrites `work`: each call starts from a
// fresh copy of a0, whose cost is measured apart and taken off.
template <class T, class F> double time_restoring(std::vector<T> &work, const std::vector<T> &a0, F f, double mt) {
  double both = time_call([&] { std::copy(a0.begin(), a0.end(), work.begin()); f(); }, mt);
  double copy = time_call([&] { std::copy(a0.begin(), a0.end(), work.begin()); }, mt / 4);
  return std::max(both - copy, both * 0.02);
}

// The same for ours (f(0)) and, when peer, the peer's (f(1)) taking turns;
// the peer's time is 0 without one. a0 may hold several inputs one after
// another (a0.size() / work.size() of them): each call then starts from
// another one, so that a library's branches meet data they have not just
// seen, as in an application, rather than a sequence learnt from thousands
// of calls on one input. The inputs are visited 389 apart (mod their count),
// so that no hardware prefetcher streams the next one in.
template <class T, class F>
std::pair<double, double> time_restoring_pair(std::vector<T> &work, const std::vector<T> &a0, F f, bool peer,
                                              double mt) {
  const size_t len = work.size(), count = len ? a0.size() / len : 1;
  size_t next = 0;
  auto restore = [&] {
    const auto from = a0.begin() + static_cast<std::ptrdiff_t>(len * next);
    std::copy(from, from + static_cast<std::ptrdiff_t>(len), work.begin());
    next = (next + (count % 389 ? 389 : 1)) % count;
  };
  std::vector<std::function<void()>> fns{[&] { restore(); f(0); }};
  if (peer) fns.push_back([&] { restore(); f(1); });
  fns.push_back(restore);
  auto t = time_calls(fns, mt);
  const double copy = t.back();
  auto net = [&](double both) { return std::max(both - copy, both * 0.02); };
  return {net(t[0]), peer ? net(t[1]) : 0.0};
}

// "<suite> <name> n= nrhs= threads=  nxl .. GF  peer .. GF  ratio .."
inline void report_rate(const char *suite, const char *name, nxl_int n, nxl_int nrhs, int thr, double flops,
                        double t_ours, double t_peer) {
  std::printf("%s %-7s n=%5lld nrhs=%3lld threads=%d  nxl %8.2f GF", suite, name, static_cast<long long>(n),
              static_cast<long long>(nrhs), thr, flops / t_ours * 1e-9);
  if (t_peer > 0) std::printf("  peer %8.2f GF  ratio %5.2f", flops / t_peer * 1e-9, t_peer / t_ours);
  std::printf("\n");
  std::fflush(stdout);
}

// The routines of one library are looked up by their Fortran names (L::load
// fills them from a handle): ours in the running program, the peer in the
// shared object that --peer names, with its own thread control when it has one.
template <class F> void find(void *h, const char *name, F &f) { f = reinterpret_cast<F>(dlsym(h, name)); }

template <class L> L our_routines() {
  L l;
  l.load(RTLD_DEFAULT);
  l.threads = [](int n) {
    nxl_int t = n;
    nxl_set_num_threads(&t);
  };
  return l;
}

template <class L> bool peer_routines(const char *suite, const std::string &path, L &l) {
  void *h = open_peer(path);
  if (!h || !l.load(h)) {
    std::printf("%s: cannot use peer %s: %s\n", suite, path.c_str(), h ? "routines missing" : dlerror());
    return false;
  }
  if (auto set = reinterpret_cast<void (*)(int)>(dlsym(h, "openblas_set_num_threads"))) l.threads = set;
  return true;
}

}  // namespace bench

#endif  // NXL_BENCH_LAPACK_BENCH_H
