// Level-1 BLAS rates (GB/s of vector traffic) in and out of cache, with the
// peer's rate and the ratio from the same run.
#include <dlfcn.h>
#include <complex>
#include <cstdio>
#include <vector>
#include "bench.h"
#include "nxl_blas.h"
#include "nxl_service.h"

namespace {
using I = nxl_int;
using cd = std::complex<double>;

struct Peer {
  void *h = nullptr;
  template <class F> F get(const char *name) const { return h ? reinterpret_cast<F>(dlsym(h, name)) : nullptr; }
};

void report(const char *name, long n, int threads, double bytes, double t_nxl, double t_peer) {
  std::printf("%-8s n=%-9ld thr=%d  nxl %7.2f GB/s", name, n, threads, bytes / t_nxl * 1e-9);
  if (t_peer > 0) std::printf("  peer %7.2f GB/s  ratio %.2f", bytes / t_peer * 1e-9, t_peer / t_nxl);
  std::printf("\n");
}
}  // namespace

NXL_BENCH_SUITE(bench_level1, "level1", "ddot, daxpy, dnrm2, idamax, zdotc: GB/s against the peer") {
  Peer peer;
  if (!opt.peer.empty()) peer.h = bench::open_peer(opt.peer);
  auto p_ddot = peer.get<double (*)(const I *, const double *, const I *, const double *, const I *)>("ddot_");
  auto p_daxpy = peer.get<void (*)(const I *, const double *, const double *, const I *, double *, const I *)>("daxpy_");
  auto p_dnrm2 = peer.get<double (*)(const I *, const double *, const I *)>("dnrm2_");
  auto p_idamax = peer.get<I (*)(const I *, const double *, const I *)>("idamax_");
  auto p_zdotc = peer.get<cd (*)(const I *, const cd *, const I *, const cd *, const I *)>("zdotc_");
  auto p_threads = peer.get<void (*)(int)>("openblas_set_num_threads");
  std::vector<long> sizes = opt.sizes;
  if (sizes.empty()) sizes = opt.quick ? std::vector<long>{1000, 100000} : std::vector<long>{1000, 30000, 1000000, 20000000};
  for (int t : opt.threads) {
    const I nt = t;
    nxl_set_num_threads(&nt);
    if (p_threads) p_threads(t);
    for (long n : sizes) {
      std::vector<double> x(n, 0.5), y(n, 0.25);
      std::vector<cd> zx(n, cd(0.5, 0.1)), zy(n, cd(0.25, -0.1));
      const I N = n, one = 1;
      const double a = 1e-9;
      volatile double sink = 0;
      double tn = bench::time_call([&] { sink = sink + ddot_(&N, x.data(), &one, y.data(), &one); }, opt.min_time);
      double tp = p_ddot ? bench::time_call([&] { sink = sink + p_ddot(&N, x.data(), &one, y.data(), &one); }, opt.min_time) : 0;
      report("ddot", n, t, 16.0 * n, tn, tp);
      tn = bench::time_call([&] { daxpy_(&N, &a, x.data(), &one, y.data(), &one); }, opt.min_time);
      tp = p_daxpy ? bench::time_call([&] { p_daxpy(&N, &a, x.data(), &one, y.data(), &one); }, opt.min_time) : 0;
      report("daxpy", n, t, 24.0 * n, tn, tp);
      tn = bench::time_call([&] { sink = sink + dnrm2_(&N, x.data(), &one); }, opt.min_time);
      tp = p_dnrm2 ? bench::time_call([&] { sink = sink + p_dnrm2(&N, x.data(), &one); }, opt.min_time) : 0;
      report("dnrm2", n, t, 8.0 * n, tn, tp);
      tn = bench::time_call([&] { sink = sink + double(idamax_(&N, x.data(), &one)); }, opt.min_time);
      tp = p_idamax ? bench::time_call([&] { sink = sink + double(p_idamax(&N, x.data(), &one)); }, opt.min_time) : 0;
      report("idamax", n, t, 8.0 * n, tn, tp);
      tn = bench::time_call([&] { sink = sink + zdotc_(&N, zx.data(), &one, zy.data(), &one).real; }, opt.min_time);
      tp = p_zdotc ? bench::time_call([&] { sink = sink + p_zdotc(&N, zx.data(), &one, zy.data(), &one).real(); }, opt.min_time) : 0;
      report("zdotc", n, t, 32.0 * n, tn, tp);
    }
  }
  if (peer.h) dlclose(peer.h);
}
