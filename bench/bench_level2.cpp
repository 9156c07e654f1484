// Suite "level2": GFLOPS and GB/s of every level-2 routine in the four
// precisions, at n = 4000 (memory-bound) and n = 500 (in cache) by default,
// with the ratio against a peer BLAS (--peer LIB, an ILP64 library with the
// Fortran convention, loaded with dlopen) measured in the same run.
//
// Both libraries are called through their exported Fortran entries, looked
// up by name (our own in the running program, which links libnxl.so).
// NXL_BENCH_FILTER=text runs only the cases whose name contains the text.
#include <dlfcn.h>

#include <complex>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bench.h"
#include "nxl_types.h"

namespace {

using idx = nxl_int;

struct Lib {
  std::string label;
  void *handle;
  void *sym(const std::string &name) const { return dlsym(handle, name.c_str()); }
  // Sets the library's thread count through its own control, if it has one.
  void set_threads(int nt) const {
    idx n = nt;
    if (auto f = reinterpret_cast<void (*)(const idx *)>(sym("nxl_set_num_threads"))) {
      f(&n);
      return;
    }
    if (auto g = reinterpret_cast<void (*)(int)>(sym("openblas_set_num_threads"))) g(nt);
  }
};

template <class T> constexpr bool is_cx = false;
template <class R> constexpr bool is_cx<std::complex<R>> = true;

template <class T> T rnd(std::mt19937_64 &g, double scale) {
  std::uniform_real_distribution<double> u(-scale, scale);
  if constexpr (is_cx<T>) {
    double re = u(g);
    return T(typename T::value_type(re), typename T::value_type(u(g)));
  } else {
    return T(u(g));
  }
}

// Operands of one precision and size: a full, a band (lda = 2k+1) and a
// packed matrix, and vectors; triangular matrices are made diagonally
// dominant so that repeated solves stay finite.
template <class T> struct Operands {
  idx n, k;
  std::vector<T> a, band, packed, x, x0, y;
  Operands(idx n_, idx k_) : n(n_), k(k_) {
    std::mt19937_64 g(42);
    a.resize(size_t(n * n));
    for (auto &v : a) v = rnd<T>(g, 1.0 / double(n));
    for (idx i = 0; i < n; ++i) a[size_t(i + i * n)] = T(2);
    band.resize(size_t((2 * k + 1) * n));
    for (auto &v : band) v = rnd<T>(g, 1.0 / double(k + 1));
    for (idx j = 0; j < n; ++j) band[size_t(k + j * (2 * k + 1))] = T(2);
    packed.resize(size_t(n * (n + 1) / 2));
    for (auto &v : packed) v = rnd<T>(g, 1.0 / double(n));
    for (idx j = 0; j < n; ++j) packed[size_t(j + j * (j + 1) / 2)] = T(2);
    x0.resize(size_t(n));
    for (auto &v : x0) v = rnd<T>(g, 1.0);
    x = x0;
    y = x0;
  }
};

template <class T> using gemv_t = void (*)(const char *, const idx *, const idx *, const T *, const T *, const idx *, const T *, const idx *, const T *, T *, const idx *, int);
template <class T> using gbmv_t = void (*)(const char *, const idx *, const idx *, const idx *, const idx *, const T *, const T *, const idx *, const T *, const idx *, const T *, T *, const idx *, int);
template <class T> using symv_t = void (*)(const char *, const idx *, const T *, const T *, const idx *, const T *, const idx *, const T *, T *, const idx *, int);
template <class T> using sbmv_t = void (*)(const char *, const idx *, const idx *, const T *, const T *, const idx *, const T *, const idx *, const T *, T *, const idx *, int);
template <class T> using spmv_t = void (*)(const char *, const idx *, const T *, const T *, const T *, const idx *, const T *, T *, const idx *, int);
template <class T> using trmv_t = void (*)(const char *, const char *, const char *, const idx *, const T *, const idx *, T *, const idx *, int, int, int);
template <class T> using tbmv_t = void (*)(const char *, const char *, const char *, const idx *, const idx *, const T *, const idx *, T *, const idx *, int, int, int);
template <class T> using tpmv_t = void (*)(const char *, const char *, const char *, const idx *, const T *, T *, const idx *, int, int, int);
template <class T> using ger_t = void (*)(const idx *, const idx *, const T *, const T *, const idx *, const T *, const idx *, T *, const idx *);
template <class T, class A> using syr_t = void (*)(const char *, const idx *, const A *, const T *, const idx *, T *, const idx *, int);
template <class T> using syr2_t = void (*)(const char *, const idx *, const T *, const T *, const idx *, const T *, const idx *, T *, const idx *, int);
template <class T, class A> using spr_t = void (*)(const char *, const idx *, const A *, const T *, const idx *, T *, int);
template <class T> using spr2_t = void (*)(const char *, const idx *, const T *, const T *, const idx *, const T *, const idx *, T *, int);

// One benchmarked call: its name, flop and byte counts, and a maker that
// binds a library's entry to the operands (empty when the entry is missing).
template <class T> struct Case {
  std::string name;
  double flops, bytes;
  std::function<std::function<void()>(const Lib &)> make;
};

template <class F> F look(const Lib &l, const std::string &name) { return reinterpret_cast<F>(l.sym(name + "_")); }

template <class T>
std::vector<Case<T>> cases(char p, Operands<T> &d) {
  using R = decltype(std::real(T()));
  const std::string pre(1, p);
  const double es = sizeof(T), n = double(d.n), band = double(2 * d.k + 1), sband = double(d.k + 1);
  const double cf = is_cx<T> ? 4.0 : 1.0;  // a complex multiply-add is four real ones
  const std::string sy = is_cx<T> ? "he" : "sy", sp = is_cx<T> ? "hp" : "sp", sb = is_cx<T> ? "hb" : "sb";
  const std::string ger = is_cx<T> ? "geru" : "ger";
  std::vector<Case<T>> v;
  static const idx one = 1;
  static const T alpha = T(1), beta = T(0.5), tiny = T(1e-9);
  static const R rtiny = R(1e-9);
  auto reset_x = [&d] { std::memcpy(d.x.data(), d.x0.data(), d.x.size() * sizeof(T)); };
  for (const char *tr : {"N", "T"})
    v.push_back({pre + "gemv " + tr, 2 * cf * n * n, es * n * n, [&d, pre, tr](const Lib &l) -> std::function<void()> {
                   auto f = look<gemv_t<T>>(l, pre + "gemv");
                   if (!f) return {};
                   return [f, &d, tr] { f(tr, &d.n, &d.n, &alpha, d.a.data(), &d.n, d.x.data(), &one, &beta, d.y.data(), &one, 1); };
                 }});
  v.push_back({pre + "gbmv N", 2 * cf * n * band, es * n * band, [&d, pre](const Lib &l) -> std::function<void()> {
                 auto f = look<gbmv_t<T>>(l, pre + "gbmv");
                 if (!f) return {};
                 return [f, &d] {
                   idx ld = 2 * d.k + 1;
                   f("N", &d.n, &d.n, &d.k, &d.k, &alpha, d.band.data(), &ld, d.x.data(), &one, &beta, d.y.data(), &one, 1);
                 };
               }});
  for (const char *ul : {"U", "L"})
    v.push_back({pre + sy + "mv " + ul, 2 * cf * n * n, es * n * n / 2, [&d, pre, sy, ul](const Lib &l) -> std::function<void()> {
                   auto f = look<symv_t<T>>(l, pre + sy + "mv");
                   if (!f) return {};
                   return [f, &d, ul] { f(ul, &d.n, &alpha, d.a.data(), &d.n, d.x.data(), &one, &beta, d.y.data(), &one, 1); };
                 }});
  v.push_back({pre + sb + "mv L", 2 * cf * n * (2 * sband - 1), es * n * sband, [&d, pre, sb](const Lib &l) -> std::function<void()> {
                 auto f = look<sbmv_t<T>>(l, pre + sb + "mv");
                 if (!f) return {};
                 return [f, &d] {
                   idx ld = 2 * d.k + 1;
                   f("L", &d.n, &d.k, &alpha, d.band.data(), &ld, d.x.data(), &one, &beta, d.y.data(), &one, 1);
                 };
               }});
  v.push_back({pre + sp + "mv U", 2 * cf * n * n, es * n * n / 2, [&d, pre, sp](const Lib &l) -> std::function<void()> {
                 auto f = look<spmv_t<T>>(l, pre + sp + "mv");
                 if (!f) return {};
                 return [f, &d] { f("U", &d.n, &alpha, d.packed.data(), d.x.data(), &one, &beta, d.y.data(), &one, 1); };
               }});
  for (const char *op : {"mv", "sv"})
    for (const char *flags : {"UN", "LT", "UT"}) {
      const std::string fl(flags);
      // Full: upper and lower; packed and band operands are upper triangles.
      if (fl != "UT")
        v.push_back({pre + "tr" + op + " " + fl, cf * n * n, es * n * n / 2, [&d, pre, op, fl, reset_x](const Lib &l) -> std::function<void()> {
                     auto f = look<trmv_t<T>>(l, pre + "tr" + op);
                     if (!f) return {};
                     return [f, &d, fl, reset_x] {
                       reset_x();
                       f(fl.substr(0, 1).c_str(), fl.substr(1, 1).c_str(), "N", &d.n, d.a.data(), &d.n, d.x.data(), &one, 1, 1, 1);
                     };
                   }});
      if (fl[0] != 'U') continue;
      v.push_back({pre + "tp" + op + " " + fl, cf * n * n, es * n * n / 2, [&d, pre, op, fl, reset_x](const Lib &l) -> std::function<void()> {
                     auto f = look<tpmv_t<T>>(l, pre + "tp" + op);
                     if (!f) return {};
                     return [f, &d, fl, reset_x] {
                       reset_x();
                       f(fl.substr(0, 1).c_str(), fl.substr(1, 1).c_str(), "N", &d.n, d.packed.data(), d.x.data(), &one, 1, 1, 1);
                     };
                   }});
      v.push_back({pre + "tb" + op + " " + fl, cf * n * 2 * sband, es * n * sband, [&d, pre, op, fl, reset_x](const Lib &l) -> std::function<void()> {
                     auto f = look<tbmv_t<T>>(l, pre + "tb" + op);
                     if (!f) return {};
                     return [f, &d, fl, reset_x] {
                       reset_x();
                       idx ld = 2 * d.k + 1;
                       f(fl.substr(0, 1).c_str(), fl.substr(1, 1).c_str(), "N", &d.n, &d.k, d.band.data(), &ld, d.x.data(), &one, 1, 1, 1);
                     };
                   }});
    }
  v.push_back({pre + ger, 2 * cf * n * n, 2 * es * n * n, [&d, pre, ger](const Lib &l) -> std::function<void()> {
                 auto f = look<ger_t<T>>(l, pre + ger);
                 if (!f) return {};
                 return [f, &d] { f(&d.n, &d.n, &tiny, d.x0.data(), &one, d.y.data(), &one, d.a.data(), &d.n); };
               }});
  const std::string r1 = is_cx<T> ? "her" : "syr", r1p = is_cx<T> ? "hpr" : "spr";
  v.push_back({pre + r1 + " U", cf * n * n, es * n * n, [&d, pre, r1](const Lib &l) -> std::function<void()> {
                 auto f = look<syr_t<T, R>>(l, pre + r1);
                 if (!f) return {};
                 return [f, &d] { f("U", &d.n, &rtiny, d.x0.data(), &one, d.a.data(), &d.n, 1); };
               }});
  v.push_back({pre + r1 + "2 L", 2 * cf * n * n, es * n * n, [&d, pre, r1](const Lib &l) -> std::function<void()> {
                 auto f = look<syr2_t<T>>(l, pre + r1 + "2");
                 if (!f) return {};
                 return [f, &d] { f("L", &d.n, &tiny, d.x0.data(), &one, d.y.data(), &one, d.a.data(), &d.n, 1); };
               }});
  v.push_back({pre + r1p + " U", cf * n * n, es * n * n, [&d, pre, r1p](const Lib &l) -> std::function<void()> {
                 auto f = look<spr_t<T, R>>(l, pre + r1p);
                 if (!f) return {};
                 return [f, &d] { f("U", &d.n, &rtiny, d.x0.data(), &one, d.packed.data(), 1); };
               }});
  v.push_back({pre + r1p + "2 U", 2 * cf * n * n, es * n * n, [&d, pre, r1p](const Lib &l) -> std::function<void()> {
                 auto f = look<spr2_t<T>>(l, pre + r1p + "2");
                 if (!f) return {};
                 return [f, &d] { f("U", &d.n, &tiny, d.x0.data(), &one, d.y.data(), &one, d.packed.data(), 1); };
               }});
  return v;
}

template <class T>
void run_precision(char p, const bench::Options &opt, const Lib &self, const Lib *peer) {
  std::vector<long> sizes = opt.sizes;
  if (sizes.empty()) sizes = opt.quick ? std::vector<long>{300} : std::vector<long>{4000, 500};
  for (long n : sizes) {
    Operands<T> d(n, 32);
    auto list = cases<T>(p, d);
    for (int nt : opt.threads) {
      for (auto &c : list) {
        if (!bench::row_selected(c.name)) continue;
        auto mine = c.make(self);
        if (!mine) {
          std::printf("%-10s n=%-5ld thr=%d  (not exported by %s)\n", c.name.c_str(), n, nt, self.label.c_str());
          continue;
        }
        self.set_threads(nt);
        std::vector<std::function<void()>> fns{mine};
        if (peer) {
          auto theirs = c.make(*peer);
          if (theirs) {
            peer->set_threads(nt);
            fns.push_back(theirs);
          }
        }
        // Ours and the peer's take turns (bench::time_calls).
        const auto ts = bench::time_calls(fns, opt.min_time);
        const double t = ts[0];
        std::printf("%-10s n=%-5ld thr=%d  nxl %8.2f GFLOPS %7.2f GB/s", c.name.c_str(), n, nt, c.flops / t * 1e-9,
                    c.bytes / t * 1e-9);
        if (ts.size() > 1) std::printf("  peer %8.2f GFLOPS  ratio %5.2f", c.flops / ts[1] * 1e-9, ts[1] / t);
        std::printf("\n");
        std::fflush(stdout);
      }
    }
  }
}

}  // namespace

NXL_BENCH_SUITE(bench_level2, "level2", "level-2 BLAS: GFLOPS, GB/s and ratio to --peer, n = 4000 and 500") {
  Lib self{"libnxl", RTLD_DEFAULT};
  Lib peer_lib{opt.peer, nullptr};
  if (!opt.peer.empty()) {
    peer_lib.handle = bench::open_peer(opt.peer);
    if (!peer_lib.handle) std::printf("level2: cannot load peer %s: %s\n", opt.peer.c_str(), dlerror());
  }
  const Lib *peer = peer_lib.handle ? &peer_lib : nullptr;
  run_precision<double>('d', opt, self, peer);
  run_precision<float>('s', opt, self, peer);
  run_precision<std::complex<double>>('z', opt, self, peer);
  run_precision<std::complex<float>>('c', opt, self, peer);
}
