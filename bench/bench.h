// The benchmark program: one executable for the whole library. Each source
// file registers its suites; main() parses the common options and runs the
// suites asked for, printing rates and, with a peer, ratios from the same run.
#ifndef NXL_BENCH_H
#define NXL_BENCH_H

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Options {
  std::vector<std::string> suites;   // --suite NAME (repeatable); empty = all
  std::string peer;                  // --peer /path/to/libX.so (BLAS/LAPACK peer)
  std::string fft_peer;              // --fft-peer /path/to/libfftw3.so
  std::vector<int> threads{1};       // --threads 1,2
  std::vector<long> sizes;           // --sizes 500,1000,2000 (suite default when empty)
  double min_time = 0.2;             // --min-time SECONDS per measurement
  bool quick = false;                // --quick: small sizes, for smoke runs
};

using SuiteFn = std::function<void(const Options &)>;

struct Suite {
  const char *name;
  const char *help;
  SuiteFn run;
};

std::vector<Suite> &registry();

struct Register {
  Register(const char *name, const char *help, SuiteFn fn) { registry().push_back({name, help, std::move(fn)}); }
};

// Seconds per call of fn: repeats until min_time has passed, best of 3 rounds.
double time_call(const std::function<void()> &fn, double min_time);

// Seconds per call of each of fns, taking turns in `rounds` rounds (min_time
// in all per function), best round of each.
std::vector<double> time_calls(const std::vector<std::function<void()>> &fns, double min_time, int rounds = 5);

// NXL_BENCH_FILTER=text keeps the rows whose name contains the text.
bool row_selected(const std::string &name);

// dlopen of a peer library whose internal calls bind to its own routines.
void *open_peer(const std::string &path);

}  // namespace bench

#define NXL_BENCH_SUITE(ident, name, help) \
  static void ident(const bench::Options &); \
  static bench::Register ident##_reg(name, help, ident); \
  static void ident(const bench::Options &opt)

#endif  // NXL_BENCH_H
