// FFT suite: forward transforms through the DFTI interface, rate
// 5 N log2 N / time for complex data (half of that for real data), with the
// FFTW library as the peer in the same run (--fft-peer .../libfftw3.so.3; the
// single-precision library libfftw3f is found beside it; plans made with
// FFTW_MEASURE and the same thread count, through libfftw3_omp when present).
#include <dlfcn.h>

#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bench.h"
#include "nxl_dfti.h"
#include "nxl_service.h"

namespace {

// The part of the peer's interface the suite uses.
struct Peer {
  void *lib = nullptr, *omp = nullptr;
  void *(*plan_many_dft)(int, const int *, int, void *, const int *, int, int, void *, const int *, int, int, int,
                         unsigned) = nullptr;
  void *(*plan_many_r2c)(int, const int *, int, void *, const int *, int, int, void *, const int *, int, int,
                         unsigned) = nullptr;
  void (*execute)(void *) = nullptr;
  void (*destroy)(void *) = nullptr;
  void *(*alloc)(size_t) = nullptr;
  void (*release)(void *) = nullptr;
  int (*init_threads)(void) = nullptr;
  void (*with_nthreads)(int) = nullptr;
  bool ok() const { return plan_many_dft && execute; }
};

std::string sibling(const std::string &path, const char *from, const char *to) {
  std::string s = path;
  size_t p = s.rfind(from);
  if (p != std::string::npos) s.replace(p, std::strlen(from), to);
  return s;
}

Peer load_peer(const std::string &path, bool single) {
  Peer P;
  if (path.empty()) return P;
  std::string lib = single ? sibling(path, "libfftw3.", "libfftw3f.") : path;
  P.lib = dlopen(lib.c_str(), RTLD_NOW | RTLD_GLOBAL);
  if (!P.lib) return P;
  const char *pre = single ? "fftwf_" : "fftw_";
  auto sym = [&](void *h, const char *name) { return h ? dlsym(h, (std::string(pre) + name).c_str()) : nullptr; };
  P.plan_many_dft = reinterpret_cast<decltype(P.plan_many_dft)>(sym(P.lib, "plan_many_dft"));
  P.plan_many_r2c = reinterpret_cast<decltype(P.plan_many_r2c)>(sym(P.lib, "plan_many_dft_r2c"));
  P.execute = reinterpret_cast<decltype(P.execute)>(sym(P.lib, "execute"));
  P.destroy = reinterpret_cast<decltype(P.destroy)>(sym(P.lib, "destroy_plan"));
  P.alloc = reinterpret_cast<decltype(P.alloc)>(sym(P.lib, "malloc"));
  P.release = reinterpret_cast<decltype(P.release)>(sym(P.lib, "free"));
  std::string omp = sibling(lib, single ? "libfftw3f." : "libfftw3.", single ? "libfftw3f_omp." : "libfftw3_omp.");
  P.omp = dlopen(omp.c_str(), RTLD_NOW | RTLD_GLOBAL);
  P.init_threads = reinterpret_cast<decltype(P.init_threads)>(sym(P.omp, "init_threads"));
  P.with_nthreads = reinterpret_cast<decltype(P.with_nthreads)>(sym(P.omp, "plan_with_nthreads"));
  if (P.init_threads) P.init_threads();
  return P;
}

struct FftCase {
  std::string name;
  bool real;
  std::vector<long> dims;   // row-major (last fastest)
  long howmany;
  int threads;
};

constexpr unsigned kMeasure = 0;   // FFTW_MEASURE

template <class R>
double time_nxl(const FftCase &c, double min_time) {
  using C = std::complex<R>;
  const DFTI_CONFIG_VALUE prec = sizeof(R) == 4 ? DFTI_SINGLE : DFTI_DOUBLE;
  long n = 1;
  for (long d : c.dims) n *= d;
  const long last = c.dims.back();
  const long cn = c.real ? n / last * (last / 2 + 1) : n;
  DFTI_DESCRIPTOR_HANDLE h = nullptr;
  std::vector<nxl_int> lens(c.dims.begin(), c.dims.end());
  nxl_int st = c.dims.size() == 1
                   ? DftiCreateDescriptor(&h, prec, c.real ? DFTI_REAL : DFTI_COMPLEX, 1, lens[0])
                   : DftiCreateDescriptor(&h, prec, c.real ? DFTI_REAL : DFTI_COMPLEX, static_cast<int>(lens.size()),
                                          lens.data());
  if (st) return -1;
  DftiSetValue(h, DFTI_PLACEMENT, DFTI_NOT_INPLACE);
  DftiSetValue(h, DFTI_THREAD_LIMIT, nxl_int(c.threads));
  if (c.real) {
    DftiSetValue(h, DFTI_CONJUGATE_EVEN_STORAGE, DFTI_COMPLEX_COMPLEX);
    std::vector<nxl_int> os(c.dims.size() + 1);
    os[0] = 0;
    nxl_int s = 1;
    for (size_t k = c.dims.size(); k-- > 0;) {
      os[k + 1] = s;
      s *= k + 1 == c.dims.size() ? c.dims[k] / 2 + 1 : c.dims[k];
    }
    DftiSetValue(h, DFTI_OUTPUT_STRIDES, os.data());
  }
  if (c.howmany > 1) {
    DftiSetValue(h, DFTI_NUMBER_OF_TRANSFORMS, nxl_int(c.howmany));
    DftiSetValue(h, DFTI_INPUT_DISTANCE, nxl_int(n));
    DftiSetValue(h, DFTI_OUTPUT_DISTANCE, nxl_int(cn));
  }
  if (DftiCommitDescriptor(h)) return -1;
  // Cache-line aligned arrays, as the peer's own allocator gives it.
  const size_t nin = static_cast<size_t>((c.real ? 1 : 2) * n * c.howmany);
  R *in = static_cast<R *>(std::aligned_alloc(64, (sizeof(R) * nin + 63) & ~size_t(63)));
  C *out = static_cast<C *>(std::aligned_alloc(64, (sizeof(C) * cn * c.howmany + 63) & ~size_t(63)));
  std::mt19937 g(1);
  std::uniform_real_distribution<R> U(-0.5, 0.5);
  for (size_t i = 0; i < nin; ++i) in[i] = U(g);
  double t = bench::time_call([&] { DftiComputeForward(h, in, out); }, min_time);
  std::free(in);
  std::free(out);
  DftiFreeDescriptor(&h);
  return t;
}

template <class R>
double time_peer(const Peer &P, const FftCase &c, double min_time) {
  if (!P.ok()) return -1;
  long n = 1;
  for (long d : c.dims) n *= d;
  const long last = c.dims.back();
  const long cn = c.real ? n / last * (last / 2 + 1) : n;
  std::vector<int> dims(c.dims.begin(), c.dims.end());
  if (P.with_nthreads) P.with_nthreads(c.threads);
  else if (c.threads > 1) return -1;
  void *in = P.alloc(sizeof(R) * (c.real ? 1 : 2) * n * c.howmany);
  void *out = P.alloc(sizeof(R) * 2 * cn * c.howmany);
  void *plan = c.real ? P.plan_many_r2c(static_cast<int>(dims.size()), dims.data(), static_cast<int>(c.howmany), in,
                                        nullptr, 1, static_cast<int>(n), out, nullptr, 1, static_cast<int>(cn), kMeasure)
                      : P.plan_many_dft(static_cast<int>(dims.size()), dims.data(), static_cast<int>(c.howmany), in,
                                        nullptr, 1, static_cast<int>(n), out, nullptr, 1, static_cast<int>(n), -1,
                                        kMeasure);
  double t = -1;
  if (plan) {
    R *x = static_cast<R *>(in);
    std::mt19937 g(1);
    std::uniform_real_distribution<R> U(-0.5, 0.5);
    for (long i = 0; i < (c.real ? 1 : 2) * n * c.howmany; ++i) x[i] = U(g);
    t = bench::time_call([&] { P.execute(plan); }, min_time);
    P.destroy(plan);
  }
  P.release(in);
  P.release(out);
  return t;
}

// NXL_BENCH_FFT_ONLY=text limits the suite to the cases whose name contains
// the text (for quick comparisons while tuning one shape).
bool selected(const FftCase &c) {
  const char *only = std::getenv("NXL_BENCH_FFT_ONLY");
  return !only || !*only || c.name.find(only) != std::string::npos;
}

template <class R> void run_cases(const std::vector<FftCase> &cases, const Peer &P, const bench::Options &opt) {
  for (const FftCase &c : cases) {
    if (!selected(c)) continue;
    long n = 1;
    for (long d : c.dims) n *= d;
    double flops = 5.0 * n * std::log2(static_cast<double>(n)) * c.howmany * (c.real ? 0.5 : 1.0);
    double t = time_nxl<R>(c, opt.min_time);
    double tp = time_peer<R>(P, c, opt.min_time);
    double gf = t > 0 ? flops / t * 1e-9 : 0, gp = tp > 0 ? flops / tp * 1e-9 : 0;
    std::printf("fft  %-26s %c thr=%d  nxl %8.2f GF", c.name.c_str(), sizeof(R) == 4 ? 's' : 'd', c.threads, gf);
    if (gp > 0) std::printf("  peer %8.2f GF  ratio %5.2f", gp, gf / gp);
    std::printf("\n");
    std::fflush(stdout);
  }
}

std::vector<FftCase> fft_cases(bool quick, bool single) {
  std::vector<FftCase> v;
  auto add = [&](std::string name, bool real, std::vector<long> dims, long howmany = 1, int threads = 1) {
    v.push_back({std::move(name), real, std::move(dims), howmany, threads});
  };
  int kmax = quick ? 12 : 20;
  for (int k = 6; k <= kmax; ++k) add("c1d 2^" + std::to_string(k), false, {1L << k});
  for (long n : {1000L, 2187L, 3125L, 6000L, 10125L}) add("c1d " + std::to_string(n), false, {n});
  for (long n : {1009L, 65537L}) add("c1d prime " + std::to_string(n), false, {n});
  for (int k = 6; k <= kmax; k += quick ? 3 : 2) add("r1d 2^" + std::to_string(k), true, {1L << k});
  add("c2d 256x256", false, {256, 256});
  add("r2d 256x256", true, {256, 256});
  if (!quick) {
    add("c2d 1024x1024", false, {1024, 1024});
    add("r2d 1024x1024", true, {1024, 1024});
  }
  add("c3d 64x64x64", false, {64, 64, 64});
  add("r3d 64x64x64", true, {64, 64, 64});
  add("c1d 64 x10000 batch", false, {64}, quick ? 1000 : 10000);
  add("c1d 2^20 2 threads", false, {quick ? (1L << 14) : (1L << 20)}, 1, 2);
  add("c2d 512x512 2 threads", false, {512, 512}, 1, 2);
  (void)single;
  return v;
}

}  // namespace

NXL_BENCH_SUITE(bench_fft, "fft", "DFTI forward transforms (5 N log2 N / t), peer FFTW via --fft-peer") {
  for (bool single : {false, true}) {
    Peer P = load_peer(opt.fft_peer, single);
    if (!opt.fft_peer.empty() && !P.ok()) std::printf("fft: peer %s not usable\n", opt.fft_peer.c_str());
    if (single) run_cases<float>(fft_cases(opt.quick, true), P, opt);
    else run_cases<double>(fft_cases(opt.quick, false), P, opt);
  }
}
