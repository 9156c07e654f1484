// Triangular and RFP suite: the RFP Cholesky factorization, inverse and
// solve (d, z), the triangular condition estimate and the scaled solve with
// many right-hand sides, against a peer loaded with dlopen in the same run
// (--peer LIB; ILP64 Fortran names).
#include <dlfcn.h>
#include <algorithm>
#include <complex>
#include <functional>
#include <cstdio>
#include <random>
#include <string>
#include <vector>
#include "bench.h"
#include "lapack_bench.h"
#include "nxl_lapack.h"
#include "nxl_service.h"

namespace {

using idx = nxl_int;
using z16 = std::complex<double>;

template <class T> using pf_fn = void (*)(const char *, const char *, const idx *, T *, idx *, size_t, size_t);
using pftrs_fn = void (*)(const char *, const char *, const idx *, const idx *, const double *, double *,
                          const idx *, idx *, size_t, size_t);
using trcon_fn = void (*)(const char *, const char *, const char *, const idx *, const double *, const idx *,
                          double *, double *, idx *, idx *, size_t, size_t, size_t);
using latrs3_fn = void (*)(const char *, const char *, const char *, const char *, const idx *, const idx *,
                           const double *, const idx *, double *, const idx *, double *, double *, double *,
                           const idx *, idx *, size_t, size_t, size_t, size_t);

// The routines of one library, looked up by their Fortran names: ours in
// the running program, the peer in the object that --peer names.
struct Lib {
  pf_fn<double> dpftrf = nullptr, dpftri = nullptr;
  pf_fn<z16> zpftrf = nullptr;
  pftrs_fn dpftrs = nullptr;
  trcon_fn dtrcon = nullptr;
  latrs3_fn dlatrs3 = nullptr;
  std::function<void(int)> threads;

  bool load(void *h) {
    bench::find(h, "dpftrf_", dpftrf);
    bench::find(h, "dpftri_", dpftri);
    bench::find(h, "zpftrf_", zpftrf);
    bench::find(h, "dpftrs_", dpftrs);
    bench::find(h, "dtrcon_", dtrcon);
    bench::find(h, "dlatrs3_", dlatrs3);
    return dpftrf && dpftri && zpftrf && dpftrs && dtrcon && dlatrs3;
  }
};


// A Hermitian positive definite matrix in RFP form (lower, normal): any
// n (n + 1) / 2 numbers with a dominant diagonal do; the diagonal entries of
// the lower normal layout of odd n sit at i + i * n for i < n1 and below.
template <class T> std::vector<T> rfp_spd(idx n) {
  std::mt19937_64 g(7);
  std::uniform_real_distribution<double> d(-1, 1);
  std::vector<T> a(static_cast<size_t>(n * (n + 1) / 2));
  for (auto &x : a) {
    if constexpr (std::is_same_v<T, double>) x = d(g);
    else x = T(d(g), d(g));
  }
  const idx n2 = n / 2, n1 = n - n2;
  for (idx i = 0; i < n1; ++i) a[static_cast<size_t>(i + i * n)] = T(2.0 * n);
  for (idx i = 0; i < n2; ++i) a[static_cast<size_t>(i + (i + 1) * n)] = T(2.0 * n);
  return a;
}

void run_all(idx n, int thr, Lib &a, Lib *p, double mt) {
  // n is made odd so that the two diagonal blocks differ in order.
  n |= 1;
  idx info = 0;
  const double nd = double(n);
  {
    auto a0 = rfp_spd<double>(n);
    std::vector<double> w(a0.size());
    auto f = [&](Lib &l) { l.dpftrf("N", "L", &n, w.data(), &info, 1, 1); };
    double to = bench::time_restoring(w, a0, [&] { f(a); }, mt), tp = p ? bench::time_restoring(w, a0, [&] { f(*p); }, mt) : 0;
    bench::report_rate("lapack-tr", "dpftrf", n, 0, thr, nd * nd * nd / 3, to, tp);
    // The inverse and the solve start from the factor.
    a.dpftrf("N", "L", &n, a0.data(), &info, 1, 1);
    auto g = [&](Lib &l) { l.dpftri("N", "L", &n, w.data(), &info, 1, 1); };
    to = bench::time_restoring(w, a0, [&] { g(a); }, mt);
    tp = p ? bench::time_restoring(w, a0, [&] { g(*p); }, mt) : 0;
    bench::report_rate("lapack-tr", "dpftri", n, 0, thr, 2 * nd * nd * nd / 3, to, tp);
    idx nrhs = 100;
    std::vector<double> b0(static_cast<size_t>(n * nrhs), 1.0), b(b0.size());
    auto h = [&](Lib &l) { l.dpftrs("N", "L", &n, &nrhs, a0.data(), b.data(), &n, &info, 1, 1); };
    to = bench::time_restoring(b, b0, [&] { h(a); }, mt);
    tp = p ? bench::time_restoring(b, b0, [&] { h(*p); }, mt) : 0;
    bench::report_rate("lapack-tr", "dpftrs", n, nrhs, thr, 2 * nd * nd * double(nrhs), to, tp);
  }
  {
    auto a0 = rfp_spd<z16>(n);
    std::vector<z16> w(a0.size());
    auto f = [&](Lib &l) { l.zpftrf("N", "L", &n, w.data(), &info, 1, 1); };
    double to = bench::time_restoring(w, a0, [&] { f(a); }, mt), tp = p ? bench::time_restoring(w, a0, [&] { f(*p); }, mt) : 0;
    bench::report_rate("lapack-tr", "zpftrf", n, 0, thr, 4 * nd * nd * nd / 3, to, tp);
  }
  {
    // A well-conditioned lower triangle: the condition estimate and the
    // scaled solve with 100 right-hand sides.
    std::mt19937_64 g(3);
    std::uniform_real_distribution<double> d(-1, 1);
    std::vector<double> t(static_cast<size_t>(n * n), 0.0);
    for (idx j = 0; j < n; ++j)
      for (idx i = j; i < n; ++i) t[i + j * n] = i == j ? 2.0 * n : d(g);
    std::vector<double> work(static_cast<size_t>(3 * n)), cnorm(static_cast<size_t>(n));
    std::vector<idx> iwork(static_cast<size_t>(n));
    double rcond = 0;
    auto c = [&](Lib &l) {
      l.dtrcon("1", "L", "N", &n, t.data(), &n, &rcond, work.data(), iwork.data(), &info, 1, 1, 1);
    };
    double to = bench::time_call([&] { c(a); }, mt), tp = p ? bench::time_call([&] { c(*p); }, mt) : 0;
    bench::report_rate("lapack-tr", "dtrcon", n, 0, thr, 2 * 5 * nd * nd, to, tp);
    idx nrhs = 100, lwork = -1;
    std::vector<double> x0(static_cast<size_t>(n * nrhs), 1.0), x(x0.size()), scale(static_cast<size_t>(nrhs));
    double q = 0;
    a.dlatrs3("L", "N", "N", "N", &n, &nrhs, t.data(), &n, x.data(), &n, scale.data(), cnorm.data(), &q, &lwork,
              &info, 1, 1, 1, 1);
    lwork = std::max<idx>(static_cast<idx>(q), 4 * n * nrhs);
    std::vector<double> wk(static_cast<size_t>(lwork));
    auto s = [&](Lib &l) {
      l.dlatrs3("L", "N", "N", "N", &n, &nrhs, t.data(), &n, x.data(), &n, scale.data(), cnorm.data(), wk.data(),
                &lwork, &info, 1, 1, 1, 1);
    };
    to = bench::time_restoring(x, x0, [&] { s(a); }, mt);
    tp = p ? bench::time_restoring(x, x0, [&] { s(*p); }, mt) : 0;
    bench::report_rate("lapack-tr", "dlatrs3", n, nrhs, thr, nd * nd * double(nrhs), to, tp);
  }
}

}  // namespace

NXL_BENCH_SUITE(bench_lapack_tr, "lapack-tr",
                "dpftrf/dpftri/dpftrs/zpftrf (RFP, n = 2001), dtrcon, dlatrs3 with 100 right-hand sides") {
  Lib mine = bench::our_routines<Lib>(), other;
  Lib *p = nullptr;
  if (!opt.peer.empty() && bench::peer_routines("lapack-tr", opt.peer, other)) p = &other;
  std::vector<long> sizes = opt.sizes.empty() ? std::vector<long>{opt.quick ? 301 : 2001} : opt.sizes;
  for (int thr : opt.threads) {
    mine.threads(thr);
    if (p && p->threads) p->threads(thr);
    for (long n : sizes) run_all(static_cast<idx>(n), thr, mine, p, opt.min_time);
  }
}
