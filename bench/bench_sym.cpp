// Symmetric indefinite suite: dsytrf (Bunch-Kaufman), dsytrf_rk (bounded),
// zhetrf, dsytrs with 1 and 100 right-hand sides, dsytri and dsytri2, against a peer
// loaded with dlopen in the same run (--peer LIB; ILP64 Fortran names).
#include <dlfcn.h>
#include <algorithm>
#include <complex>
#include <cstdio>
#include <random>
#include <vector>
#include "bench.h"
#include "lapack_bench.h"
#include "nxl_lapack.h"
#include "nxl_service.h"

namespace {

using idx = nxl_int;
using z16 = std::complex<double>;

template <class T>
using trf_fn = void (*)(const char *, const idx *, T *, const idx *, idx *, T *, const idx *, idx *, size_t);
using trf_rk_fn = void (*)(const char *, const idx *, double *, const idx *, double *, idx *, double *,
                           const idx *, idx *, size_t);
using trs_fn = void (*)(const char *, const idx *, const idx *, const double *, const idx *, const idx *,
                        double *, const idx *, idx *, size_t);
using tri_fn = void (*)(const char *, const idx *, double *, const idx *, const idx *, double *, idx *, size_t);
using tri2_fn = void (*)(const char *, const idx *, double *, const idx *, const idx *, double *, const idx *,
                         idx *, size_t);

struct Lib {
  trf_fn<double> dsytrf = nullptr;
  trf_fn<z16> zhetrf = nullptr;
  trf_rk_fn dsytrf_rk = nullptr;
  trs_fn dsytrs = nullptr;
  tri_fn dsytri = nullptr;
  tri2_fn dsytri2 = nullptr;
  void (*threads)(int) = nullptr;
  bool load(void *h) {
    bench::find(h, "dsytrf_", dsytrf);
    bench::find(h, "zhetrf_", zhetrf);
    bench::find(h, "dsytrf_rk_", dsytrf_rk);
    bench::find(h, "dsytrs_", dsytrs);
    bench::find(h, "dsytri_", dsytri);
    bench::find(h, "dsytri2_", dsytri2);
    return dsytrf && zhetrf && dsytrf_rk && dsytrs && dsytri && dsytri2;
  }
};


// Symmetric (Hermitian) indefinite: random entries, both triangles equal.
template <class T> std::vector<T> matrix(idx n, unsigned seed) {
  std::mt19937_64 g(seed);
  std::uniform_real_distribution<double> d(-1, 1);
  std::vector<T> a(static_cast<size_t>(n * n));
  for (idx j = 0; j < n; ++j)
    for (idx i = j; i < n; ++i) {
      T v;
      if constexpr (std::is_same_v<T, double>) v = d(g);
      else v = i == j ? T(d(g)) : T(d(g), d(g));
      a[i + j * n] = v;
      if constexpr (std::is_same_v<T, double>) a[j + i * n] = v;
      else a[j + i * n] = std::conj(v);
    }
  return a;
}

template <class T, class F> double time_restoring(std::vector<T> &w, const std::vector<T> &a0, F f, double mt) {
  double both = bench::time_call([&] { std::copy(a0.begin(), a0.end(), w.begin()); f(); }, mt);
  double copy = bench::time_call([&] { std::copy(a0.begin(), a0.end(), w.begin()); }, mt / 4);
  return std::max(both - copy, both * 0.02);
}

void report(const char *name, idx n, idx nrhs, int thr, double flops, double t_ours, double t_peer) {
  std::printf("sym %-9s n=%5lld nrhs=%3lld threads=%d  nxl %8.2f GF", name, static_cast<long long>(n),
              static_cast<long long>(nrhs), thr, flops / t_ours * 1e-9);
  if (t_peer > 0) std::printf("  peer %8.2f GF  ratio %5.2f", flops / t_peer * 1e-9, t_peer / t_ours);
  std::printf("\n");
  std::fflush(stdout);
}

// kind 0: dsytrf, 1: dsytrf_rk, 2: zhetrf.
void run_factor(int kind, idx n, int thr, Lib &a, Lib *p, double mt) {
  idx info = 0, lwork = n * 128;
  std::vector<idx> ipiv(static_cast<size_t>(n));
  double flops = double(n) * n * n / 3.0 * (kind == 2 ? 4 : 1);
  double to = 0, tp = 0;
  if (kind == 2) {
    auto a0 = matrix<z16>(n, 3u);
    std::vector<z16> w(a0.size()), work(static_cast<size_t>(lwork));
    auto call = [&](Lib &l) { l.zhetrf("L", &n, w.data(), &n, ipiv.data(), work.data(), &lwork, &info, 1); };
    to = time_restoring(w, a0, [&] { call(a); }, mt);
    if (p) tp = time_restoring(w, a0, [&] { call(*p); }, mt);
  } else {
    auto a0 = matrix<double>(n, 3u);
    std::vector<double> w(a0.size()), work(static_cast<size_t>(lwork)), e(static_cast<size_t>(n));
    auto call = [&](Lib &l) {
      if (kind == 0) l.dsytrf("L", &n, w.data(), &n, ipiv.data(), work.data(), &lwork, &info, 1);
      else l.dsytrf_rk("L", &n, w.data(), &n, e.data(), ipiv.data(), work.data(), &lwork, &info, 1);
    };
    to = time_restoring(w, a0, [&] { call(a); }, mt);
    if (p) tp = time_restoring(w, a0, [&] { call(*p); }, mt);
  }
  report(kind == 0 ? "dsytrf" : kind == 1 ? "dsytrf_rk" : "zhetrf", n, 0, thr, flops, to, tp);
}

void run_solve_inverse(idx n, int thr, Lib &a, Lib *p, double mt) {
  auto a0 = matrix<double>(n, 5u);
  std::vector<idx> ipiv(static_cast<size_t>(n));
  idx info = 0, lwork = (n + 260) * 260;  // room for any block size of the inverses
  std::vector<double> work(static_cast<size_t>(lwork));
  a.dsytrf("L", &n, a0.data(), &n, ipiv.data(), work.data(), &lwork, &info, 1);
  for (idx nrhs : {1, 100}) {
    auto b0 = matrix<double>(std::max(n, nrhs), 6u);
    b0.resize(static_cast<size_t>(n * nrhs));
    std::vector<double> b(b0.size());
    auto call = [&](Lib &l) { l.dsytrs("L", &n, &nrhs, a0.data(), &n, ipiv.data(), b.data(), &n, &info, 1); };
    double to = time_restoring(b, b0, [&] { call(a); }, mt);
    double tp = p ? time_restoring(b, b0, [&] { call(*p); }, mt) : 0;
    report("dsytrs", n, nrhs, thr, 2.0 * double(n) * n * nrhs, to, tp);
  }
  std::vector<double> w(a0.size());
  auto call = [&](Lib &l) { l.dsytri("L", &n, w.data(), &n, ipiv.data(), work.data(), &info, 1); };
  double to = time_restoring(w, a0, [&] { call(a); }, mt);
  double tp = p ? time_restoring(w, a0, [&] { call(*p); }, mt) : 0;
  report("dsytri", n, 0, thr, 2.0 * double(n) * n * n / 3.0, to, tp);
  auto call2 = [&](Lib &l) { l.dsytri2("L", &n, w.data(), &n, ipiv.data(), work.data(), &lwork, &info, 1); };
  to = time_restoring(w, a0, [&] { call2(a); }, mt);
  tp = p ? time_restoring(w, a0, [&] { call2(*p); }, mt) : 0;
  report("dsytri2", n, 0, thr, 2.0 * double(n) * n * n / 3.0, to, tp);
}

}  // namespace

NXL_BENCH_SUITE(bench_sym, "sym",
                "dsytrf/dsytrf_rk/zhetrf (n = 2000 and 16..128), dsytrs with 1 and 100 right-hand sides, dsytri, dsytri2") {
  Lib mine = bench::our_routines<Lib>(), other;
  Lib *p = nullptr;
  if (!opt.peer.empty() && bench::peer_routines("sym", opt.peer, other)) p = &other;
  std::vector<long> large = opt.sizes.empty() ? std::vector<long>{opt.quick ? 300 : 2000} : opt.sizes;
  for (int thr : opt.threads) {
    mine.threads(thr);
    if (p && p->threads) p->threads(thr);
    for (long n : large) {
      for (int kind : {0, 1, 2}) run_factor(kind, n, thr, mine, p, opt.min_time);
      run_solve_inverse(n, thr, mine, p, opt.min_time);
    }
    for (idx n : {16, 64, 128})
      for (int kind : {0, 2}) run_factor(kind, n, thr, mine, p, opt.min_time);
  }
}
