// BLAS suites of the benchmark program: "peak" (the core's FMA rate),
// "gemm" (s/d/c/z gemm, every transpose pair), "level3" (every level-3
// routine) and "small" (m = n = k from 4 to 64). Rates in GFLOPS; with
// --peer LIB the same calls into another ILP64 BLAS loaded with dlopen, and
// the ratio nxl / peer, from the same run.
#include <dlfcn.h>
#include <immintrin.h>
#include <omp.h>

#include <chrono>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "bench.h"

namespace {

using idx = long long;
using cfloat = std::complex<float>;
using cdouble = std::complex<double>;

// The Fortran-convention level-3 entries of one library, looked up by name.
struct Blas {
  void *handle = nullptr;
  void (*set_threads)(int) = nullptr;        // peer: openblas_set_num_threads
  void (*nxl_set_threads)(const idx *) = nullptr;
  void *sym(const char *name) const { return dlsym(handle, name); }
  void threads(int t) const {
    idx n = t;
    if (nxl_set_threads) nxl_set_threads(&n);
    if (set_threads) set_threads(t);
  }
};

Blas load_self() {
  Blas b;
  b.handle = RTLD_DEFAULT;
  b.nxl_set_threads = reinterpret_cast<void (*)(const idx *)>(dlsym(RTLD_DEFAULT, "nxl_set_num_threads"));
  return b;
}

Blas load_peer(const std::string &path, int first_threads) {
  Blas b;
  void *probe = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
  if (!probe) setenv("OMP_NUM_THREADS", std::to_string(first_threads).c_str(), 0);
  b.handle = bench::open_peer(path);
  if (!b.handle) {
    std::printf("cannot load peer %s: %s\n", path.c_str(), dlerror());
    return b;
  }
  b.set_threads = reinterpret_cast<void (*)(int)>(dlsym(b.handle, "openblas_set_num_threads"));
  return b;
}

template <class T> constexpr bool cplx = !std::is_floating_point_v<T>;
template <class T> constexpr char prefix() {
  return std::is_same_v<T, float> ? 's' : std::is_same_v<T, double> ? 'd' : std::is_same_v<T, cfloat> ? 'c' : 'z';
}
template <class T> double fma_flops() { return cplx<T> ? 8.0 : 2.0; }  // flops per multiply-add

template <class T> std::vector<T> random_matrix(idx rows, idx cols, unsigned seed) {
  std::mt19937 g(seed);
  std::uniform_real_distribution<double> u(-1, 1);
  std::vector<T> v(size_t(rows * cols));
  for (auto &x : v) {
    if constexpr (cplx<T>) x = T(u(g), u(g));
    else x = T(u(g));
  }
  return v;
}

// A triangle that stays well conditioned under repeated solves and products:
// unit-sized diagonal, off-diagonal entries of order 1/n.
template <class T> std::vector<T> triangle_matrix(idx n) {
  auto v = random_matrix<T>(n, n, 7);
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < n; ++i) v[size_t(i + j * n)] = i == j ? T(1) : v[size_t(i + j * n)] * T(0.5 / n);
  return v;
}

// Signatures of the level-3 entries.
template <class T> using gemm_fn = void (*)(const char *, const char *, const idx *, const idx *, const idx *,
                                            const T *, const T *, const idx *, const T *, const idx *, const T *,
                                            T *, const idx *);
template <class T> using symm_fn = void (*)(const char *, const char *, const idx *, const idx *, const T *,
                                            const T *, const idx *, const T *, const idx *, const T *, T *,
                                            const idx *);
template <class T, class S> using syrk_fn = void (*)(const char *, const char *, const idx *, const idx *,
                                                     const S *, const T *, const idx *, const S *, T *, const idx *);
template <class T, class S> using syr2k_fn = void (*)(const char *, const char *, const idx *, const idx *,
                                                      const T *, const T *, const idx *, const T *, const idx *,
                                                      const S *, T *, const idx *);
template <class T> using trxm_fn = void (*)(const char *, const char *, const char *, const char *, const idx *,
                                            const idx *, const T *, const T *, const idx *, T *, const idx *);

// One measurement: a routine at a size and thread count, on both libraries.
struct Row {
  std::string what;
  idx n;
  int threads;
};

void print_header(bool peer, const char *share = nullptr) {
  std::printf("%-22s %6s %4s %10s%s", "routine", "n", "thr", "nxl GF/s", peer ? "   peer GF/s   ratio" : "");
  if (share) std::printf(" %7s", share);
  std::printf("\n");
}

void print_row(const Row &r, double ours, double theirs, double share) {
  std::printf("%-22s %6lld %4d %10.2f", r.what.c_str(), r.n, r.threads, ours);
  if (theirs > 0) std::printf(" %12.2f %7.3f", theirs, ours / theirs);
  if (share > 0) std::printf(" %7.3f", share);
  std::printf("\n");
  std::fflush(stdout);
}

// A call of ours to compare a routine's rate with (the same precision's GEMM):
// timed in turn with the routine, so that both see the same machine.
struct Reference {
  std::function<void()> call;
  double flops = 0;
};

// The core's multiply-add loop: iters steps of 24 independent AVX-512
// accumulators of double, 24 * 8 multiply-adds a step. Returns the seconds.
__attribute__((target("avx512f"))) double fma_loop(long iters) {
  __m512d acc[24];
  for (int i = 0; i < 24; ++i) acc[i] = _mm512_set1_pd(i * 1e-3);
  const __m512d a = _mm512_set1_pd(0.999999), b = _mm512_set1_pd(1e-7);
  auto t0 = std::chrono::steady_clock::now();
  for (long it = 0; it < iters; ++it)
    for (int i = 0; i < 24; ++i) acc[i] = _mm512_fmadd_pd(acc[i], a, b);
  double el = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  __m512d s = acc[0];
  for (int i = 1; i < 24; ++i) s = _mm512_add_pd(s, acc[i]);
  volatile double sink = _mm512_reduce_add_pd(s);
  (void)sink;
  return el;
}

// Peak multiply-add rate of one core, double.
double peak_dp_gflops() {
  const long iters = 20000000;
  return double(iters) * 24 * 8 * 2 / fma_loop(iters) * 1e-9;
}

// The peak as a reference call for the product rows: the FMA loop on each
// of `threads` cores at once, timed in turn with the products so that both
// see the same minute of the machine. Its flop count is that of double
// (single precision runs twice as many per instruction); rows compare
// products of their own precision with it. None without AVX-512.
Reference peak_reference(int threads, bool single) {
  Reference r;
  if (!__builtin_cpu_supports("avx512f")) return r;
  const long iters = 200000;  // ~1.4 ms at 3.5 GHz
  r.call = [threads] {
#pragma omp parallel num_threads(threads)
    fma_loop(iters);
  };
  r.flops = double(threads) * iters * 24 * 8 * 2 * (single ? 2 : 1);
  return r;
}

// Times call(f) with f the entry `name` (of type F) of our library and of
// the peer, looked up once before timing, the two (and the reference, when
// given) taking turns; flops per call given.
template <class F, class Call>
void measure(const bench::Options &opt, const Blas &self, const Blas *peer, const Row &r, double flops,
             const std::string &name, Call call, const Reference *ref = nullptr) {
  if (!bench::row_selected(r.what)) return;
  F mine = reinterpret_cast<F>(self.sym(name.c_str()));
  if (!mine) {
    std::printf("%s: no entry %s\n", r.what.c_str(), name.c_str());
    return;
  }
  self.threads(r.threads);
  std::vector<std::function<void()>> fns{[&] { call(mine); }};
  F other = peer && peer->handle ? reinterpret_cast<F>(peer->sym(name.c_str())) : nullptr;
  if (other) {
    peer->threads(r.threads);
    fns.push_back([&] { call(other); });
  }
  if (ref) fns.push_back(ref->call);
  const auto t = bench::time_calls(fns, opt.min_time);
  const double ours = flops / t[0] * 1e-9, theirs = other ? flops / t[1] * 1e-9 : 0;
  const double share = ref ? ours / (ref->flops / t.back() * 1e-9) : 0;
  print_row(r, ours, theirs, share);
}

std::vector<long> sizes_or(const bench::Options &opt, std::vector<long> def, std::vector<long> quick) {
  if (!opt.sizes.empty()) return opt.sizes;
  return opt.quick ? quick : def;
}

struct Context {
  Blas self;
  Blas peer;
  bool has_peer = false;
  explicit Context(const bench::Options &opt) : self(load_self()) {
    if (!opt.peer.empty()) {
      peer = load_peer(opt.peer, opt.threads.empty() ? 1 : opt.threads[0]);
      has_peer = peer.handle != nullptr;
    }
  }
  const Blas *peer_ptr() const { return has_peer ? &peer : nullptr; }
};

template <class T>
void gemm_rows(const bench::Options &opt, const Context &cx, const std::vector<long> &sizes,
               const std::vector<std::string> &trans) {
  const std::string name = std::string(1, prefix<T>()) + "gemm_";
  for (long n : sizes) {
    auto A = random_matrix<T>(n, n, 1), B = random_matrix<T>(n, n, 2), C = random_matrix<T>(n, n, 3);
    const T alpha = T(0.5), beta = T(0.25);
    for (auto &tr : trans)
      for (int t : opt.threads) {
        Row r{std::string(1, prefix<T>()) + "gemm " + tr, n, t};
        const idx N = n;
        const Reference peak = peak_reference(t, std::is_same_v<T, float> || std::is_same_v<T, cfloat>);
        measure<gemm_fn<T>>(opt, cx.self, cx.peer_ptr(), r, fma_flops<T>() * double(n) * n * n, name, [&](gemm_fn<T> f) {
          const char ta[2] = {tr[0], 0}, tb[2] = {tr[1], 0};
          f(ta, tb, &N, &N, &N, &alpha, A.data(), &N, B.data(), &N, &beta, C.data(), &N);
        }, peak.call ? &peak : nullptr);
      }
  }
}

template <class T> void level3_rows(const bench::Options &opt, const Context &cx, long n) {
  using R = decltype(std::real(T()));
  const char p = prefix<T>();
  auto nm = [&](const char *r) { return std::string(1, p) + r + "_"; };
  auto A = random_matrix<T>(n, n, 1), B = random_matrix<T>(n, n, 2), C = random_matrix<T>(n, n, 3);
  auto Tr = triangle_matrix<T>(n);
  const T alpha = T(0.5), beta = T(0.25);
  const R ralpha = R(0.5), rbeta = R(0.25);
  const idx N = n;
  const double nn = double(n) * n * n, ff = fma_flops<T>();
  for (int t : opt.threads) {
    const Blas *peer = cx.peer_ptr();
    auto row = [&](std::string what) { return Row{std::string(1, p) + what, n, t}; };
    const std::string gname = nm("gemm");
    auto gemm_nn = [&](gemm_fn<T> f) {
      f("N", "N", &N, &N, &N, &alpha, A.data(), &N, B.data(), &N, &beta, C.data(), &N);
    };
    measure<gemm_fn<T>>(opt, cx.self, peer, row("gemm NN"), ff * nn, gname, gemm_nn);
    // Every other row is also given as a share of our GEMM's rate (flops of
    // the same count), the two timed in turn.
    std::vector<T> Cg(C);
    const auto our_gemm = reinterpret_cast<gemm_fn<T>>(cx.self.sym(gname.c_str()));
    const Reference gref{[&] {
                           our_gemm("N", "N", &N, &N, &N, &alpha, A.data(), &N, B.data(), &N, &beta, Cg.data(), &N);
                         },
                         ff * nn};
    const Reference *ref = our_gemm ? &gref : nullptr;
    for (const char *su : {"LU", "RL"}) {
      const char s[2] = {su[0], 0}, u[2] = {su[1], 0};
      for (const char *r : {"symm", "hemm"}) {
        if (r[0] == 'h' && !cplx<T>) continue;
        const std::string name = nm(r);
        measure<symm_fn<T>>(opt, cx.self, peer, row(std::string(r) + " " + su), ff * nn, name, [&](symm_fn<T> f) {
          f(s, u, &N, &N, &alpha, A.data(), &N, B.data(), &N,
                                                              &beta, C.data(), &N);
        }, ref);
      }
    }
    for (const char *ut : {"UN", "LT"}) {
      const char u[2] = {ut[0], 0}, tr[2] = {ut[1], 0}, trh[2] = {ut[1] == 'T' ? 'C' : 'N', 0};
      const std::string syrk = nm("syrk"), syr2k = nm("syr2k"), herk = nm("herk"), her2k = nm("her2k");
      measure<syrk_fn<T, T>>(opt, cx.self, peer, row(std::string("syrk ") + ut), ff * nn / 2, syrk, [&](syrk_fn<T, T> f) {
        f(u, tr, &N, &N, &alpha, A.data(), &N, &beta, C.data(), &N);
      }, ref);
      measure<syr2k_fn<T, T>>(opt, cx.self, peer, row(std::string("syr2k ") + ut), ff * nn, syr2k, [&](syr2k_fn<T, T> f) {
        f(u, tr, &N, &N, &alpha, A.data(), &N, B.data(), &N,
                                                                 &beta, C.data(), &N);
      }, ref);
      if constexpr (cplx<T>) {
        measure<syrk_fn<T, R>>(opt, cx.self, peer, row(std::string("herk ") + u + trh), ff * nn / 2, herk, [&](syrk_fn<T, R> f) {
          f(u, trh, &N, &N, &ralpha, A.data(), &N, &rbeta,
                                                                  C.data(), &N);
        }, ref);
        measure<syr2k_fn<T, R>>(opt, cx.self, peer, row(std::string("her2k ") + u + trh), ff * nn, her2k, [&](syr2k_fn<T, R> f) {
          f(u, trh, &N, &N, &alpha, A.data(), &N, B.data(),
                                                                    &N, &rbeta, C.data(), &N);
        }, ref);
      }
    }
    for (const char *r : {"trmm", "trsm"})
      for (const char *sut : {"LLN", "LUT", "RUN", "RLT"}) {
        const std::string name = nm(r);
        const char s[2] = {sut[0], 0}, u[2] = {sut[1], 0}, tr[2] = {sut[2], 0};
        const T one = T(1);
        measure<trxm_fn<T>>(opt, cx.self, peer, row(std::string(r) + " " + sut), ff * nn / 2, name, [&](trxm_fn<T> f) {
          f(s, u, tr, "N", &N, &N, &one, Tr.data(), &N,
                                                              B.data(), &N);
        }, ref);
      }
  }
}

}  // namespace

NXL_BENCH_SUITE(suite_peak, "peak", "peak FMA rate of one core (AVX-512, double), best of 5") {
  if (!__builtin_cpu_supports("avx512f")) {
    std::printf("peak: no AVX-512 on this processor\n");
    return;
  }
  double best = 0;
  for (int r = 0; r < 5; ++r) best = std::max(best, peak_dp_gflops());
  std::printf("peak: %.1f GFLOPS double (%.1f single) per core\n", best, 2 * best);
}

NXL_BENCH_SUITE(suite_gemm, "gemm",
                "s/d/c/z gemm, all transpose pairs (default n = 500,1000,2000); peak = rate / the cores' FMA peak") {
  Context cx(opt);
  print_header(cx.has_peer, __builtin_cpu_supports("avx512f") ? "peak" : nullptr);
  const auto sizes = sizes_or(opt, {500, 1000, 2000}, {200});
  const std::vector<std::string> real_tr{"NN", "NT", "TN", "TT"};
  const std::vector<std::string> cplx_tr{"NN", "NT", "TN", "TT", "CN", "NC", "CC"};
  gemm_rows<double>(opt, cx, sizes, real_tr);
  gemm_rows<float>(opt, cx, sizes, real_tr);
  gemm_rows<cdouble>(opt, cx, sizes, cplx_tr);
  gemm_rows<cfloat>(opt, cx, sizes, cplx_tr);
}

NXL_BENCH_SUITE(suite_level3, "level3",
                "every level-3 routine, all precisions (default n = 1000,2000); share = rate / our GEMM's") {
  Context cx(opt);
  print_header(cx.has_peer, "share");
  for (long n : sizes_or(opt, {1000, 2000}, {200})) {
    level3_rows<double>(opt, cx, n);
    level3_rows<float>(opt, cx, n);
    level3_rows<cdouble>(opt, cx, n);
    level3_rows<cfloat>(opt, cx, n);
  }
}

NXL_BENCH_SUITE(suite_small, "small", "small gemm, m = n = k in 4..64, all precisions") {
  Context cx(opt);
  print_header(cx.has_peer);
  const auto sizes = sizes_or(opt, {4, 8, 16, 32, 48, 64}, {4, 16, 64});
  gemm_rows<double>(opt, cx, sizes, {"NN", "TN"});
  gemm_rows<float>(opt, cx, sizes, {"NN"});
  gemm_rows<cdouble>(opt, cx, sizes, {"NN"});
  gemm_rows<cfloat>(opt, cx, sizes, {"NN"});
}
