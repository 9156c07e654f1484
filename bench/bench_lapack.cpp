// LAPACK suite: LU and Cholesky factorizations (d, z) at a large order and at
// small orders, and the solves with 1 and 100 right-hand sides, against a
// peer loaded with dlopen in the same run (--peer LIB; ILP64 Fortran names).
#include <dlfcn.h>
#include <algorithm>
#include <complex>
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>
#include "bench.h"
#include "lapack_bench.h"
#include "nxl_lapack.h"
#include "nxl_service.h"

namespace {

using idx = nxl_int;
using z16 = std::complex<double>;

template <class T> using getrf_fn = void (*)(const idx *, const idx *, T *, const idx *, idx *, idx *);
template <class T> using potrf_fn = void (*)(const char *, const idx *, T *, const idx *, idx *, size_t);
using dgetrs_fn = void (*)(const char *, const idx *, const idx *, const double *, const idx *, const idx *,
                           double *, const idx *, idx *, size_t);
using dpotrs_fn = void (*)(const char *, const idx *, const idx *, const double *, const idx *, double *,
                           const idx *, idx *, size_t);

struct Lib {
  getrf_fn<double> dgetrf = nullptr;
  getrf_fn<z16> zgetrf = nullptr;
  potrf_fn<double> dpotrf = nullptr;
  potrf_fn<z16> zpotrf = nullptr;
  dgetrs_fn dgetrs = nullptr;
  dpotrs_fn dpotrs = nullptr;
  void (*threads)(int) = nullptr;
  bool load(void *h) {
    bench::find(h, "dgetrf_", dgetrf);
    bench::find(h, "zgetrf_", zgetrf);
    bench::find(h, "dpotrf_", dpotrf);
    bench::find(h, "zpotrf_", zpotrf);
    bench::find(h, "dgetrs_", dgetrs);
    bench::find(h, "dpotrs_", dpotrs);
    return dgetrf && zgetrf && dpotrf && zpotrf && dgetrs && dpotrs;
  }
};


template <class T> std::vector<T> matrix(idx n, bool spd, unsigned seed = 42) {
  std::mt19937_64 g(seed);
  std::uniform_real_distribution<double> d(-1, 1);
  std::vector<T> a(static_cast<size_t>(n * n));
  for (auto &x : a) {
    if constexpr (std::is_same_v<T, double>) x = d(g);
    else x = T(d(g), d(g));
  }
  if (spd) {
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < j; ++i) {
        T v = a[i + j * n];
        if constexpr (std::is_same_v<T, double>) a[j + i * n] = v;
        else a[j + i * n] = std::conj(v);
      }
    for (idx i = 0; i < n; ++i) a[i + i * n] = T(2.0 * n);
  }
  return a;
}

// The inputs of a factorization: for one with pivoting, up to 1024
// different matrices of one order within 16 MB, taken in turns (one for the
// large orders), since its branches follow the data (fewer are not enough:
// over 64 inputs of order 32 a branch predictor still learns the pivot
// sequence of every one). Cholesky takes the same branches on every input,
// and one matrix, which stays in cache, keeps the copies that restore it
// cheap and their cost, taken off the time, exact.
template <class T> std::vector<T> inputs(idx n, bool spd) {
  if (spd) return matrix<T>(n, spd);
  const size_t bytes = sizeof(T) * static_cast<size_t>(n * n);
  const size_t count = std::clamp<size_t>((size_t(16) << 20) / std::max<size_t>(bytes, 1), 1, 1024);
  std::vector<T> all;
  for (size_t i = 0; i < count; ++i) {
    auto one = matrix<T>(n, spd, 42 + unsigned(i));
    all.insert(all.end(), one.begin(), one.end());
  }
  return all;
}

template <class T> void run_factor(const char *name, bool chol, idx n, int thr, Lib &a, Lib *p, double mt) {
  auto a0 = inputs<T>(n, chol);
  std::vector<T> w(static_cast<size_t>(n * n));
  std::vector<idx> ipiv(static_cast<size_t>(n));
  idx info = 0;
  auto call = [&](Lib &l) {
    if constexpr (std::is_same_v<T, double>) {
      if (chol) l.dpotrf("L", &n, w.data(), &n, &info, 1);
      else l.dgetrf(&n, &n, w.data(), &n, ipiv.data(), &info);
    } else {
      if (chol) l.zpotrf("L", &n, w.data(), &n, &info, 1);
      else l.zgetrf(&n, &n, w.data(), &n, ipiv.data(), &info);
    }
  };
  double flops = (chol ? 1.0 / 3.0 : 2.0 / 3.0) * double(n) * n * n * (std::is_same_v<T, double> ? 1 : 4);
  auto [to, tp] = bench::time_restoring_pair(w, a0, [&](int which) { call(which ? *p : a); }, p != nullptr, mt);
  bench::report_rate("lapack", name, n, 0, thr, flops, to, tp);
}

void run_solve(bool chol, idx n, idx nrhs, int thr, Lib &a, Lib *p, double mt) {
  auto a0 = matrix<double>(n, chol);
  std::vector<idx> ipiv(static_cast<size_t>(n));
  idx info = 0;
  if (chol) a.dpotrf("L", &n, a0.data(), &n, &info, 1);
  else a.dgetrf(&n, &n, a0.data(), &n, ipiv.data(), &info);
  auto b0 = matrix<double>(std::max(n, nrhs), false);
  b0.resize(static_cast<size_t>(n * nrhs));
  std::vector<double> b(b0.size());
  auto call = [&](Lib &l) {
    if (chol) l.dpotrs("L", &n, &nrhs, a0.data(), &n, b.data(), &n, &info, 1);
    else l.dgetrs("N", &n, &nrhs, a0.data(), &n, ipiv.data(), b.data(), &n, &info, 1);
  };
  double flops = 2.0 * double(n) * n * nrhs;
  auto [to, tp] = bench::time_restoring_pair(b, b0, [&](int which) { call(which ? *p : a); }, p != nullptr, mt);
  bench::report_rate("lapack", chol ? "dpotrs" : "dgetrs", n, nrhs, thr, flops, to, tp);
}

}  // namespace

NXL_BENCH_SUITE(bench_lapack, "lapack",
                "dgetrf/dpotrf/zgetrf/zpotrf (n = 2000 and 8..64), dgetrs/dpotrs with 1 and 100 right-hand sides") {
  Lib mine = bench::our_routines<Lib>(), other;
  Lib *p = nullptr;
  if (!opt.peer.empty() && bench::peer_routines("lapack", opt.peer, other)) p = &other;
  std::vector<long> large = opt.sizes.empty() ? std::vector<long>{opt.quick ? 300 : 2000} : opt.sizes;
  const idx small[] = {8, 16, 32, 64};
  for (int thr : opt.threads) {
    mine.threads(thr);
    if (p && p->threads) p->threads(thr);
    for (long n : large) {
      run_factor<double>("dgetrf", false, n, thr, mine, p, opt.min_time);
      run_factor<double>("dpotrf", true, n, thr, mine, p, opt.min_time);
      run_factor<z16>("zgetrf", false, n, thr, mine, p, opt.min_time);
      run_factor<z16>("zpotrf", true, n, thr, mine, p, opt.min_time);
      for (idx nrhs : {1, 100}) {
        run_solve(false, n, nrhs, thr, mine, p, opt.min_time);
        run_solve(true, n, nrhs, thr, mine, p, opt.min_time);
      }
    }
    for (idx n : small) {
      run_factor<double>("dgetrf", false, n, thr, mine, p, opt.min_time);
      run_factor<double>("dpotrf", true, n, thr, mine, p, opt.min_time);
      run_factor<z16>("zgetrf", false, n, thr, mine, p, opt.min_time);
      run_factor<z16>("zpotrf", true, n, thr, mine, p, opt.min_time);
    }
  }
}
