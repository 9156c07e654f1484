// LAPACK symmetric-storage suite: Aasen (dsytrf_aa, zhetrf_aa), packed
// Bunch-Kaufman (dsptrf), packed and band Cholesky (dpptrf, dpbtrf) against
// a peer loaded with dlopen in the same run (--peer LIB; ILP64 Fortran
// names). Rates count the factorization's nominal flops.
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

using aa_fn = void (*)(const char *, const idx *, void *, const idx *, idx *, void *, const idx *, idx *, size_t);
using sp_fn = void (*)(const char *, const idx *, double *, idx *, idx *, size_t);
using pp_fn = void (*)(const char *, const idx *, double *, idx *, size_t);
using pb_fn = void (*)(const char *, const idx *, const idx *, double *, const idx *, idx *, size_t);

struct Lib {
  aa_fn dsytrf_aa = nullptr, zhetrf_aa = nullptr;
  sp_fn dsptrf = nullptr;
  pp_fn dpptrf = nullptr;
  pb_fn dpbtrf = nullptr;
  void (*threads)(int) = nullptr;
  bool load(void *h) {
    bench::find(h, "dsytrf_aa_", dsytrf_aa);
    bench::find(h, "zhetrf_aa_", zhetrf_aa);
    bench::find(h, "dsptrf_", dsptrf);
    bench::find(h, "dpptrf_", dpptrf);
    bench::find(h, "dpbtrf_", dpbtrf);
    return dsytrf_aa && zhetrf_aa && dsptrf && dpptrf && dpbtrf;
  }
};


// Symmetric (Hermitian) n x n, dominant diagonal when spd.
template <class T> std::vector<T> matrix(idx n, bool spd) {
  std::mt19937_64 g(7);
  std::uniform_real_distribution<double> d(-1, 1);
  std::vector<T> a(static_cast<size_t>(n * n));
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i <= j; ++i) {
      T v;
      if constexpr (std::is_same_v<T, double>) v = d(g);
      else v = T(d(g), i == j ? 0.0 : d(g));
      if (spd && i == j) v += T(2.0 * n);
      a[i + j * n] = v;
      if constexpr (std::is_same_v<T, double>) a[j + i * n] = v;
      else a[j + i * n] = std::conj(v);
    }
  return a;
}

// Rate of call(lib) on a fresh copy of a0 in w (the copy's own time taken
// out) for us and, when given, the peer; prepare(lib) runs before each
// library's timing. Prints both rates and their ratio.
template <class T, class Prepare, class Call>
void measure(const char *name, idx n, idx kd, int thr, double flops, const std::vector<T> &a0, std::vector<T> &w,
             Lib &ours_lib, Lib *peer_lib, double mt, Prepare prepare, Call call) {
  auto restore = [&] { std::copy(a0.begin(), a0.end(), w.begin()); };
  double copy = bench::time_call(restore, mt / 4);
  auto seconds = [&](Lib &l) {
    prepare(l);
    double t = bench::time_call([&] { restore(); call(l); }, mt);
    return std::max(t - copy, t * 0.02);
  };
  double to = seconds(ours_lib), tp = peer_lib ? seconds(*peer_lib) : 0;
  std::printf("lapack-sym %-9s n=%5lld kd=%4lld threads=%d  nxl %8.2f GF", name, static_cast<long long>(n),
              static_cast<long long>(kd), thr, flops / to * 1e-9);
  if (tp > 0) std::printf("  peer %8.2f GF  ratio %5.2f", flops / tp * 1e-9, tp / to);
  std::printf("\n");
  std::fflush(stdout);
}
const auto no_prepare = [](Lib &) {};

template <class T> void run_aasen(idx n, int thr, Lib &a, Lib *p, double mt) {
  auto a0 = matrix<T>(n, false);
  std::vector<T> w(a0.size()), work;
  std::vector<idx> ipiv(static_cast<size_t>(n));
  idx info = 0, lwork = 0;
  auto fn = [&](Lib &l) { return std::is_same_v<T, double> ? l.dsytrf_aa : l.zhetrf_aa; };
  // Each library gets the work its query asks for.
  auto query = [&](Lib &l) {
    T q = 0;
    idx m1 = -1;
    fn(l)("L", &n, w.data(), &n, ipiv.data(), &q, &m1, &info, 1);
    lwork = std::max<idx>(static_cast<idx>(std::real(q)), 2 * n);
    work.assign(static_cast<size_t>(lwork), T(0));
  };
  double flops = double(n) * n * n / 3.0 * (std::is_same_v<T, double> ? 1 : 4);
  measure(std::is_same_v<T, double> ? "dsytrf_aa" : "zhetrf_aa", n, 0, thr, flops, a0, w, a, p, mt, query,
          [&](Lib &l) { fn(l)("L", &n, w.data(), &n, ipiv.data(), work.data(), &lwork, &info, 1); });
}

// Packed lower triangle of a full matrix.
std::vector<double> packed(const std::vector<double> &a, idx n) {
  std::vector<double> ap;
  for (idx j = 0; j < n; ++j)
    for (idx i = j; i < n; ++i) ap.push_back(a[i + j * n]);
  return ap;
}

void run_packed(idx n, int thr, Lib &a, Lib *p, double mt) {
  std::vector<idx> ipiv(static_cast<size_t>(n));
  idx info = 0;
  auto s0 = packed(matrix<double>(n, false), n), w = s0;
  double f3 = double(n) * n * n / 3.0;
  measure("dsptrf", n, 0, thr, f3, s0, w, a, p, mt, no_prepare,
          [&](Lib &l) { l.dsptrf("L", &n, w.data(), ipiv.data(), &info, 1); });
  auto c0 = packed(matrix<double>(n, true), n);
  measure("dpptrf", n, 0, thr, f3, c0, w, a, p, mt, no_prepare, [&](Lib &l) { l.dpptrf("L", &n, w.data(), &info, 1); });
}

void run_band(idx n, idx kd, int thr, Lib &a, Lib *p, double mt) {
  idx ldab = kd + 1, info = 0;
  std::mt19937_64 g(3);
  std::uniform_real_distribution<double> d(-1, 1);
  std::vector<double> b0(static_cast<size_t>(ldab * n));
  for (idx j = 0; j < n; ++j) {
    b0[j * ldab] = 2.0 * (kd + 1);
    for (idx i = 1; i < ldab; ++i) b0[i + j * ldab] = d(g);
  }
  auto w = b0;
  measure("dpbtrf", n, kd, thr, double(n) * kd * kd, b0, w, a, p, mt, no_prepare,
          [&](Lib &l) { l.dpbtrf("L", &n, &kd, w.data(), &ldab, &info, 1); });
}

}  // namespace

NXL_BENCH_SUITE(bench_lapack_sym, "lapack-sym",
                "dsytrf_aa/zhetrf_aa (n = 1000, 2000), dsptrf/dpptrf (n = 1000), dpbtrf (n = 4000, kd = 32, 200)") {
  Lib mine = bench::our_routines<Lib>(), other;
  Lib *p = nullptr;
  if (!opt.peer.empty() && bench::peer_routines("lapack-sym", opt.peer, other)) p = &other;
  std::vector<long> sizes = opt.sizes.empty() ? std::vector<long>{opt.quick ? 300 : 1000, opt.quick ? 400 : 2000}
                                              : opt.sizes;
  for (int thr : opt.threads) {
    mine.threads(thr);
    if (p && p->threads) p->threads(thr);
    for (long n : sizes) {
      run_aasen<double>(n, thr, mine, p, opt.min_time);
      run_aasen<z16>(n, thr, mine, p, opt.min_time);
    }
    run_packed(sizes.front(), thr, mine, p, opt.min_time);
    for (idx kd : {32, 200}) run_band(opt.quick ? 500 : 4000, kd, thr, mine, p, opt.min_time);
  }
}
