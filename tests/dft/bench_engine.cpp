// Suite "fft-engine": the transform engine timed directly (no descriptor
// layer) against the peer FFT library loaded with dlopen, in the same run.
// Rates in MFlops: 5 N log2 N / t for complex transforms, 2.5 N log2 N / t
// for real ones (times the batch count).
//
//   nxl_bench --suite fft-engine --fft-peer /usr/lib/x86_64-linux-gnu/libfftw3.so.3 [--threads 1,2]
//
// The single-precision peer is the same path with libfftw3f; for more than one
// thread the peer's OpenMP variant (libfftw3_omp / libfftw3f_omp) beside it.
#include <dlfcn.h>

#include <cmath>
#include <complex>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bench.h"
#include "dft/engine/engine.h"

namespace {

namespace E = nxl::dft;

// The peer's entry points for one precision (prefix fftw_ or fftwf_).
struct Peer {
  void *lib = nullptr, *omp = nullptr;
  void *(*plan_many)(int, const int *, int, void *, const int *, int, int, void *, const int *, int, int, int,
                     unsigned) = nullptr;
  void *(*plan_r2c)(int, void *, void *, unsigned) = nullptr;
  void (*execute)(void *) = nullptr;
  void (*destroy)(void *) = nullptr;
  int (*init_threads)() = nullptr;
  void (*plan_with_nthreads)(int) = nullptr;
  bool ok() const { return plan_many && plan_r2c && execute && destroy; }
};

std::string with_suffix(std::string path, const char *suffix) {
  const auto pos = path.rfind("libfftw3");
  if (pos == std::string::npos) return path;
  path.insert(pos + 8, suffix);
  return path;
}

Peer load_peer(const std::string &path, bool single) {
  Peer p;
  if (path.empty()) return p;
  const std::string lib = single ? with_suffix(path, "f") : path;
  p.lib = dlopen(lib.c_str(), RTLD_NOW | RTLD_GLOBAL);
  if (!p.lib) return p;
  const std::string pre = single ? "fftwf_" : "fftw_";
  auto sym = [&](void *h, const char *name) { return h ? dlsym(h, (pre + name).c_str()) : nullptr; };
  p.plan_many = reinterpret_cast<decltype(p.plan_many)>(sym(p.lib, "plan_many_dft"));
  p.plan_r2c = reinterpret_cast<decltype(p.plan_r2c)>(sym(p.lib, "plan_dft_r2c_1d"));
  p.execute = reinterpret_cast<decltype(p.execute)>(sym(p.lib, "execute"));
  p.destroy = reinterpret_cast<decltype(p.destroy)>(sym(p.lib, "destroy_plan"));
  std::string ompname = with_suffix(lib, "");
  const auto dot = ompname.find(".so");
  if (dot != std::string::npos) ompname.insert(dot, "_omp");
  p.omp = dlopen(ompname.c_str(), RTLD_NOW | RTLD_GLOBAL);
  p.init_threads = reinterpret_cast<decltype(p.init_threads)>(sym(p.omp, "init_threads"));
  p.plan_with_nthreads = reinterpret_cast<decltype(p.plan_with_nthreads)>(sym(p.omp, "plan_with_nthreads"));
  if (p.init_threads) p.init_threads();
  return p;
}

constexpr unsigned kMeasure = 0;

enum class Kind { C2C, R2C };

struct Case {
  Kind kind;
  long n;
  long howmany;
};

template <class R> void fill(std::vector<R> &v) {
  std::mt19937_64 g(7);
  std::uniform_real_distribution<double> u(-0.5, 0.5);
  for (auto &x : v) x = static_cast<R>(u(g));
}

template <class R> void run_case(const Case &c, int threads, const Peer &peer, double min_time, const char *prec) {
  const long n = c.n, hm = c.howmany;
  const bool cplx = c.kind == Kind::C2C;
  const long outc = cplx ? n : n / 2 + 1;  // complex outputs per transform
  std::vector<R> in(static_cast<size_t>((cplx ? 2 : 1) * n * hm)), out(static_cast<size_t>(2 * outc * hm));
  fill(in);
  double t_nxl = 0;
  if (cplx) {
    auto *p = E::c2c_create<R>(n, hm, threads);
    if (!p) return;
    t_nxl = bench::time_call([&] {
      E::c2c_execute<R>(p, -1, {in.data(), in.data() + 1, 2, 2 * n}, {out.data(), out.data() + 1, 2, 2 * n}, R(1));
    }, min_time);
    E::destroy(p);
  } else {
    auto *p = E::r2c_create<R>(n, hm, threads);
    if (!p) return;
    t_nxl = bench::time_call([&] {
      E::r2c_execute<R>(p, {in.data(), 1, n}, {out.data(), out.data() + 1, 2, 2 * outc}, R(1));
    }, min_time);
    E::destroy(p);
  }
  const double flops = (cplx ? 5.0 : 2.5) * static_cast<double>(n) * std::log2(static_cast<double>(n)) *
                       static_cast<double>(hm);
  const double mf = flops / t_nxl * 1e-6;
  double t_peer = 0;
  if (peer.ok() && (threads == 1 || peer.plan_with_nthreads)) {
    if (peer.plan_with_nthreads) peer.plan_with_nthreads(threads);
    std::vector<R> pin(in.size()), pout(out.size());
    void *pl;
    const int ni = static_cast<int>(n);
    if (cplx) {
      pl = peer.plan_many(1, &ni, static_cast<int>(hm), pin.data(), nullptr, 1, ni, pout.data(), nullptr, 1, ni, -1,
                          kMeasure);
    } else if (hm == 1) {
      pl = peer.plan_r2c(ni, pin.data(), pout.data(), kMeasure);
    } else {
      pl = nullptr;
    }
    if (pl) {
      pin = in;
      t_peer = bench::time_call([&] { peer.execute(pl); }, min_time);
      peer.destroy(pl);
    }
  }
  std::printf("fft-engine %s %s n=%-8ld batch=%-6ld threads=%d  nxl %9.0f MF", cplx ? "c2c" : "r2c", prec, n, hm,
              threads, mf);
  if (t_peer > 0)
    std::printf("  peer %9.0f MF  ratio %.2f", flops / t_peer * 1e-6, t_peer / t_nxl);
  std::printf("\n");
  std::fflush(stdout);
}

std::vector<Case> cases(const bench::Options &opt) {
  std::vector<Case> v;
  if (!opt.sizes.empty()) {
    for (long n : opt.sizes) v.push_back({Kind::C2C, n, 1});
    for (long n : opt.sizes) v.push_back({Kind::R2C, n, 1});
    return v;
  }
  const int kmax = opt.quick ? 12 : 20;
  for (int k = 6; k <= kmax; ++k) v.push_back({Kind::C2C, 1L << k, 1});
  for (long n : {1000L, 2187L, 3125L, 6000L, 10125L}) v.push_back({Kind::C2C, n, 1});
  v.push_back({Kind::C2C, 1009, 1});
  if (!opt.quick) v.push_back({Kind::C2C, 65537, 1});
  for (int k = 6; k <= kmax; ++k) v.push_back({Kind::R2C, 1L << k, 1});
  v.push_back({Kind::C2C, 64, opt.quick ? 1000 : 10000});
  return v;
}

}  // namespace

NXL_BENCH_SUITE(fft_engine_suite, "fft-engine", "transform engine (1-D c2c, r2c, batches) vs the FFT peer") {
  const Peer pd = load_peer(opt.fft_peer, false), ps = load_peer(opt.fft_peer, true);
  for (int th : opt.threads)
    for (const Case &c : cases(opt)) {
      run_case<double>(c, th, pd, opt.min_time, "d");
      run_case<float>(c, th, ps, opt.min_time, "s");
    }
}
