// Threading of the level-1 dispatch layer: team sizes from the thresholds,
// the chunk rule with negative increments, the fixed combination order of
// the partial dot products (bitwise), and the eight kernel builds.
#include <gtest/gtest.h>
#include <omp.h>
#include <vector>
#include "blas/dispatch/level1_threading.h"
#include "blas/level1.h"
#include "blas_test_util.h"
#include "nxl_blas.h"
#include "service/codepath.h"
#include "service/nxl_serv.h"

using namespace bt;
using I = nxl_int;

namespace {
int requested = 0, actual = 0, calls = 0;
void hook(int r, int a) { requested = r, actual = a, ++calls; }

// Runs f with a maximum of `threads` BLAS threads and returns the team the
// dispatch layer requested (1 when it stayed on the calling thread).
template <class F> int team_for(int threads, F f) {
  int prev = nxl_serv_set_num_threads_local(threads);
  nxl_blas_l1_team_hook = hook;
  calls = 0, requested = 1, actual = 1;
  f();
  nxl_blas_l1_team_hook = nullptr;
  nxl_serv_set_num_threads_local(prev);
  return calls ? requested : 1;
}
}  // namespace

TEST(Level1Threads, TeamSizeFollowsThresholds) {
  std::vector<double> x(40000, 1.0), y(40000, 1.0);
  const I one = 1, zero = 0;
  auto ddot = [&](I n, I ix) { return [&, n, ix] { ddot_(&n, x.data(), &ix, y.data(), &one); }; };
  EXPECT_EQ(team_for(8, ddot(4095, 1)), 1);
  EXPECT_EQ(team_for(4, ddot(4096, 1)), 2);
  EXPECT_EQ(team_for(8, ddot(4096, 1)), 2);
  EXPECT_EQ(team_for(8, ddot(4096, 0)), 1);   // incx = 0 never splits
  EXPECT_EQ(team_for(16, ddot(20000, 1)), 10);
  EXPECT_EQ(team_for(8, ddot(20000, 1)), 8);
  EXPECT_EQ(team_for(1, ddot(20000, 1)), 1);
  (void)zero;

  std::vector<std::complex<double>> zx(40000), zy(40000);
  const std::complex<double> a(1, 1);
  for (I n : {I(2047), I(2048), I(5000)}) {
    int t = team_for(16, [&] { zaxpy_(&n, &a, zx.data(), &one, zy.data(), &one); });
    EXPECT_EQ(t, n < 2048 ? 1 : int((n + 1023) / 1024)) << n;
  }
  std::vector<float> s(40000, 1.0f);
  const float two = 2.0f;
  for (I n : {I(16383), I(16384), I(40000)}) {
    int t = team_for(16, [&] { sscal_(&n, &two, s.data(), &one); });
    EXPECT_EQ(t, n < 16384 ? 1 : int((n + 8191) / 8192)) << n;
  }
  // The norm, sum and index routines use twice the base threshold.
  I n = 8191;
  EXPECT_EQ(team_for(8, [&] { dasum_(&n, x.data(), &one); }), 1);
  n = 8192;
  EXPECT_EQ(team_for(8, [&] { dasum_(&n, x.data(), &one); }), 2);
  EXPECT_EQ(team_for(8, [&] { idamax_(&n, x.data(), &one); }), 2);
  // alpha = 0 returns before any threading.
  const double dz = 0.0;
  n = 40000;
  EXPECT_EQ(team_for(8, [&] { daxpy_(&n, &dz, x.data(), &one, y.data(), &one); }), 1);
}

TEST(Level1Threads, ChunkRule) {
  using nxl::l1::chunk;
  // n = 5 over 8 members: members 0..4 one element each, 5..7 idle.
  for (int t = 0; t < 8; ++t) {
    auto c = chunk(5, t, 8);
    EXPECT_EQ(c.size, t < 5 ? 1 : 0) << t;
    if (t < 5) EXPECT_EQ(c.start, t);
  }
  // The chunks tile [0, n) in order for many shapes.
  for (I n : {1, 7, 100, 10000, 12345})
    for (int p : {1, 2, 3, 7, 10, 33}) {
      I next = 0;
      for (int t = 0; t < p; ++t) {
        auto c = chunk(n, t, p);
        if (c.size == 0) continue;
        EXPECT_EQ(c.start, next);
        next += c.size;
      }
      EXPECT_EQ(next, n);
    }
  // incx = -1, n = 10000, 3 members: member 0 holds logical 0..3333, which
  // lie at the high end of memory, from offset 6666.
  auto c0 = chunk(10000, 0, 3);
  EXPECT_EQ(c0.size, 3334);
  EXPECT_EQ(nxl::l1::offset(10000, c0, -1), 6666);
  EXPECT_EQ(nxl::l1::offset(10000, c0, 1), 0);
  auto c2 = chunk(10000, 2, 3);
  EXPECT_EQ(nxl::l1::offset(10000, c2, -2), 0);
}

// The combination rule written out independently of the library.
static double combine(const std::vector<double> &s) {
  const size_t p = s.size();
  if (p == 1) return s[0];
  if (p - 1 < 8) {
    double r = s[0];
    for (size_t i = 1; i < p; ++i) r += s[i];
    return r;
  }
  double A[2] = {s[0], 0}, B[2] = {0, 0}, C[2] = {0, 0}, D[2] = {0, 0};
  size_t i = 1;
  for (; i + 8 <= p; i += 8) {
    A[0] += s[i], A[1] += s[i + 1], B[0] += s[i + 2], B[1] += s[i + 3];
    C[0] += s[i + 4], C[1] += s[i + 5], D[0] += s[i + 6], D[1] += s[i + 7];
  }
  A[0] = (A[0] + B[0]) + (C[0] + D[0]);
  A[1] = (A[1] + B[1]) + (C[1] + D[1]);
  double r = A[0] + A[1];
  for (; i < p; ++i) r += s[i];
  return r;
}

TEST(Level1Threads, DdotCombinesPartialsInFixedOrder) {
  for (auto shape : {std::tuple<I, int, I>{20000, 4, 1}, {20000, 10, 1}, {50000, 20, -1}, {60000, 27, 2}}) {
    const I n = std::get<0>(shape), ix = std::get<2>(shape);
    const int threads = std::get<1>(shape);
    std::vector<double> x = vec<double>(n, ix), y = vec<double>(n, 1);
    // Magnitudes spread over many binades so that the order shows.
    for (I i = 0; i < (I)x.size(); ++i) x[i] *= std::ldexp(1.0, int(i % 61) - 30);
    const I one = 1;
    double got = 0;
    team_for(threads, [&] { got = ddot_(&n, x.data(), &ix, y.data(), &one); });
    ASSERT_EQ(calls, 1);
    const int p = actual;
    std::vector<double> parts(p);
    for (int t = 0; t < p; ++t) {
      auto c = nxl::l1::chunk(n, t, p);
      I m = c.size;
      parts[t] = m ? nxl_blas_xddot(&m, x.data() + nxl::l1::offset(n, c, ix), &ix,
                                    y.data() + nxl::l1::offset(n, c, one), &one)
                   : 0.0;
    }
    EXPECT_EQ(got, combine(parts)) << n << " " << p;
    // The same result on every repetition.
    double again = 0;
    team_for(threads, [&] { again = ddot_(&n, x.data(), &ix, y.data(), &one); });
    EXPECT_EQ(got, again);
  }
}

TEST(Level1Threads, ThreadedEqualsOracleWithNegativeIncrements) {
  const I n = 30000;
  for (I ix : {-1, 3})
    for (I iy : {1, -2}) {
      auto x = vec<std::complex<double>>(n, ix), y = vec<std::complex<double>>(n, iy);
      std::complex<long double> want = 0;
      for (I i = 0; i < n; ++i) want += W(std::conj(x[at(n, ix, i)])) * W(y[at(n, iy, i)]);
      nxl_complex16 r{};
      EXPECT_EQ(team_for(4, [&] { r = zdotc_(&n, x.data(), &ix, y.data(), &iy); }), 4);
      EXPECT_LE(std::abs(std::complex<long double>(r.real, r.imag) - want), 1e-10L);
      // An update splits the same way: y := y + 2 x, checked elementwise.
      auto y0 = y;
      const std::complex<double> two(2, 0);
      team_for(4, [&] { zaxpy_(&n, &two, x.data(), &ix, y.data(), &iy); });
      for (I i = 0; i < n; i += 97)
        ASSERT_EQ(y[at(n, iy, i)], y0[at(n, iy, i)] + 2.0 * x[at(n, ix, i)]) << i;
    }
}

// Every kernel build computes the same results (within rounding) and the
// reproducible build repeats its bits.
NXL_CP_DECLARE(double, nxl_blas_, _xddot, (const I *, const double *, const I *, const double *, const I *))
NXL_CP_DECLARE(double, nxl_blas_, _xdnrm2, (const I *, const double *, const I *))
NXL_CP_DECLARE(I, nxl_blas_, _xizamax, (const I *, const std::complex<double> *, const I *))
TEST(Level1Threads, EveryKernelBuildAgrees) {
  typedef double (*dot_t)(const I *, const double *, const I *, const double *, const I *);
  typedef double (*nrm_t)(const I *, const double *, const I *);
  typedef I (*amax_t)(const I *, const std::complex<double> *, const I *);
  const dot_t dots[8] = NXL_CP_TABLE(nxl_blas_, _xddot);
  const nrm_t nrms[8] = NXL_CP_TABLE(nxl_blas_, _xdnrm2);
  const amax_t amaxs[8] = NXL_CP_TABLE(nxl_blas_, _xizamax);
  const unsigned long long f = nxl_serv_cpu_features();
  const bool has_avx = f & 0x10000, has_avx2 = (f & 0x9C2000) == 0x9C2000, has_512 = (f & 0x6009000000ULL) == 0x6009000000ULL;
  const bool has_mic = (f & 0x708000000ULL) == 0x708000000ULL;
  const bool runs[8] = {true, true, true, has_avx, has_avx2, has_mic, has_512, true};
  for (I n : {1, 5, 64, 1000, 3333})
    for (I inc : {1, -2}) {
      auto x = vec<double>(n, inc), y = vec<double>(n, inc);
      auto z = vec<std::complex<double>>(n, 1);
      long double d = 0, s = 0;
      for (I i = 0; i < n; ++i) d += (long double)x[at(n, inc, i)] * y[at(n, inc, i)], s += (long double)x[at(n, inc, i)] * x[at(n, inc, i)];
      const I one = 1;
      const I want_amax = izamax_(&n, z.data(), &one);
      for (int k = 0; k < 8; ++k) {
        if (!runs[k]) continue;
        EXPECT_NEAR(dots[k](&n, x.data(), &inc, y.data(), &inc), double(d), 1e-12 * n) << k;
        EXPECT_NEAR(nrms[k](&n, x.data(), &inc), std::sqrt(double(s)), 1e-14 * std::sqrt(double(s)) * 4) << k;
        EXPECT_EQ(amaxs[k](&n, z.data(), &one), want_amax) << k;
      }
      EXPECT_EQ(dots[7](&n, x.data(), &inc, y.data(), &inc), dots[7](&n, x.data(), &inc, y.data(), &inc));
    }
}
