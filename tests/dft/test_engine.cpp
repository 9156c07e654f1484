// Transform engine: accuracy against long-double references over every kind
// of length, layouts (strides, distances, batches, split and interleaved, in
// place), real transforms, large-N properties and thread-count invariance.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>

#include "dft/engine/engine.h"
#include "dft/engine/plan.h"
#include "test_engine_util.h"

using namespace engine_test;
namespace E = nxl::dft;

namespace {

// Every length 1..80, then lengths of every kind up to ~5000: powers of two,
// 2/3/5/7-smooth, 11/13 factors, small and large primes, products with large
// primes, and a randomised sample.
std::vector<long> test_lengths() {
  std::set<long> s;
  for (long n = 1; n <= 80; ++n) s.insert(n);
  for (long n : {128L, 256L, 512L, 1024L, 2048L, 4096L, 96L, 100L, 125L, 243L, 343L, 360L, 441L, 1000L, 2187L,
                 3125L, 1331L, 2197L, 143L, 17L * 19L, 97L, 101L, 127L, 509L, 1009L, 2003L, 4093L, 2 * 1009L,
                 3 * 257L, 16 * 61L, 1024L * 3L, 4096L + 1L, 29L * 31L, 23L * 64L})
    s.insert(n);
  std::mt19937_64 g(12345);
  for (int i = 0; i < 12; ++i) s.insert(static_cast<long>(81 + g() % 4900));
  return {s.begin(), s.end()};
}

template <class R> void check_c2c_accuracy(long n, std::uint64_t seed) {
  const auto x = random_complex(n, seed);
  const auto xr = to<R>(x);
  const auto xin = from<R>(xr);  // exactly the rounded input
  for (int sign : {-1, +1}) {
    const auto ref = direct_dft(xin, sign);
    const auto y = run_c2c<R>(xr, sign);
    ASSERT_EQ(y.size(), xr.size()) << "n=" << n;
    EXPECT_LE(rel_rms(y, ref), bound<R>(n)) << "n=" << n << " sign=" << sign;
  }
  // Round trip, scaled by 1/n on the way back.
  auto *p = E::c2c_create<R>(n, 1, 1);
  ASSERT_NE(p, nullptr);
  std::vector<std::complex<R>> y(xr.size()), z(xr.size());
  const R *xp = reinterpret_cast<const R *>(xr.data());
  R *yp = reinterpret_cast<R *>(y.data()), *zp = reinterpret_cast<R *>(z.data());
  E::c2c_execute<R>(p, -1, {xp, xp + 1, 2, 0}, {yp, yp + 1, 2, 0}, R(1));
  E::c2c_execute<R>(p, +1, {yp, yp + 1, 2, 0}, {zp, zp + 1, 2, 0}, R(1) / static_cast<R>(n));
  EXPECT_LE(rel_rms(z, xin), bound<R>(n)) << "round trip n=" << n;
  E::destroy(p);
}

TEST(EngineC2C, AccuracyEveryKindOfLengthDouble) {
  for (long n : test_lengths()) check_c2c_accuracy<double>(n, static_cast<std::uint64_t>(n));
}

TEST(EngineC2C, AccuracyEveryKindOfLengthSingle) {
  for (long n : test_lengths()) check_c2c_accuracy<float>(n, static_cast<std::uint64_t>(n) + 7);
}

// Large lengths against the long-double peer: four-step splits, Bluestein
// with large convolutions, odd smooth lengths.
template <class R> void check_large(long n) {
  const auto x = random_complex(n, static_cast<std::uint64_t>(n));
  const auto xr = to<R>(x);
  const auto xin = from<R>(xr);
  const auto ref = peer_dft_ld(xin, -1);
  if (ref.empty()) GTEST_SKIP() << "long-double peer unavailable";
  const auto y = run_c2c<R>(xr, -1);
  EXPECT_LE(rel_rms(y, ref), bound<R>(n)) << "n=" << n;
  const auto refb = peer_dft_ld(xin, +1);
  const auto yb = run_c2c<R>(xr, +1, 2);
  EXPECT_LE(rel_rms(yb, refb), bound<R>(n)) << "backward n=" << n;
}

TEST(EngineC2C, AccuracyLargeLengths) {
  for (long n : {1L << 20, 65537L, 3L * 3 * 3 * 3 * 3 * 3 * 3 * 3 * 3 * 3 * 3, 6L * 65536L, 1L << 21})
    check_large<double>(n);
  for (long n : {1L << 18, 100000L, 65537L}) check_large<float>(n);
}

// Strided, batched, split and in-place layouts agree with the reference.
template <class R> void check_layouts(long n, long hm) {
  const long stride = 3, dist = n * stride + 5;
  const auto x = random_complex(dist * hm, 99 + static_cast<std::uint64_t>(n));
  std::vector<std::vector<CLD>> refs;
  std::vector<R> re(static_cast<size_t>(dist * hm)), im(re.size());
  for (long t = 0; t < hm; ++t) {
    std::vector<CLD> seq(static_cast<size_t>(n));
    for (long j = 0; j < n; ++j) {
      const auto v = x[static_cast<size_t>(t * dist + j * stride)];
      re[static_cast<size_t>(t * dist + j * stride)] = static_cast<R>(v.real());
      im[static_cast<size_t>(t * dist + j * stride)] = static_cast<R>(v.imag());
      seq[static_cast<size_t>(j)] = CLD(static_cast<R>(v.real()), static_cast<R>(v.imag()));
    }
    refs.push_back(direct_dft(seq, -1));
  }
  auto *p = E::c2c_create<R>(n, hm, 2);
  ASSERT_NE(p, nullptr);
  auto check = [&](auto get, const char *what) {
    for (long t = 0; t < hm; ++t) {
      std::vector<std::complex<R>> y(static_cast<size_t>(n));
      for (long k = 0; k < n; ++k) y[static_cast<size_t>(k)] = get(t, k);
      EXPECT_LE(rel_rms(y, refs[static_cast<size_t>(t)]), bound<R>(n)) << what << " n=" << n << " hm=" << hm << " t=" << t;
    }
  };
  // Split, strided input to interleaved unit-stride output.
  std::vector<R> out(static_cast<size_t>(2 * n * hm));
  E::c2c_execute<R>(p, -1, {re.data(), im.data(), stride, dist}, {out.data(), out.data() + 1, 2, 2 * n}, R(1));
  check([&](long t, long k) { return std::complex<R>(out[static_cast<size_t>(2 * (t * n + k))], out[static_cast<size_t>(2 * (t * n + k) + 1)]); },
        "split->interleaved");
  // Interleaved unit stride in place, transforms interleaved with each other (dist 2, stride 2*hm).
  std::vector<R> il(static_cast<size_t>(2 * n * hm));
  for (long t = 0; t < hm; ++t)
    for (long j = 0; j < n; ++j) {
      il[static_cast<size_t>(2 * (j * hm + t))] = re[static_cast<size_t>(t * dist + j * stride)];
      il[static_cast<size_t>(2 * (j * hm + t) + 1)] = im[static_cast<size_t>(t * dist + j * stride)];
    }
  E::c2c_execute<R>(p, -1, {il.data(), il.data() + 1, 2 * hm, 2}, {il.data(), il.data() + 1, 2 * hm, 2}, R(1));
  check([&](long t, long k) { return std::complex<R>(il[static_cast<size_t>(2 * (k * hm + t))], il[static_cast<size_t>(2 * (k * hm + t) + 1)]); },
        "in place, transposed batch");
  // Split arrays in place with their strides, then scaled backward returns the input.
  std::vector<R> r2 = re, i2 = im;
  E::c2c_execute<R>(p, -1, {r2.data(), i2.data(), stride, dist}, {r2.data(), i2.data(), stride, dist}, R(1));
  check([&](long t, long k) { return std::complex<R>(r2[static_cast<size_t>(t * dist + k * stride)], i2[static_cast<size_t>(t * dist + k * stride)]); },
        "split in place");
  E::c2c_execute<R>(p, +1, {r2.data(), i2.data(), stride, dist}, {r2.data(), i2.data(), stride, dist}, R(1) / static_cast<R>(n));
  double err = 0, nrm = 0;
  for (long t = 0; t < hm; ++t)
    for (long j = 0; j < n; ++j) {
      const size_t o = static_cast<size_t>(t * dist + j * stride);
      err += std::pow(double(r2[o]) - double(re[o]), 2) + std::pow(double(i2[o]) - double(im[o]), 2);
      nrm += std::pow(double(re[o]), 2) + std::pow(double(im[o]), 2);
    }
  EXPECT_LE(std::sqrt(err / nrm), bound<R>(n)) << "round trip n=" << n;
  // Unit-stride interleaved in place, one transform after another, and a
  // negative stride (element 0 at the end of the storage).
  std::vector<R> u(static_cast<size_t>(2 * n * hm));
  for (long t = 0; t < hm; ++t)
    for (long j = 0; j < n; ++j) {
      u[static_cast<size_t>(2 * (t * n + j))] = re[static_cast<size_t>(t * dist + j * stride)];
      u[static_cast<size_t>(2 * (t * n + j) + 1)] = im[static_cast<size_t>(t * dist + j * stride)];
    }
  std::vector<R> neg(static_cast<size_t>(2 * n * hm));
  E::c2c_execute<R>(p, -1, {u.data(), u.data() + 1, 2, 2 * n},
                    {neg.data() + 2 * (n - 1), neg.data() + 2 * (n - 1) + 1, -2, 2 * n}, R(1));
  E::c2c_execute<R>(p, -1, {u.data(), u.data() + 1, 2, 2 * n}, {u.data(), u.data() + 1, 2, 2 * n}, R(1));
  check([&](long t, long k) { return std::complex<R>(u[static_cast<size_t>(2 * (t * n + k))], u[static_cast<size_t>(2 * (t * n + k) + 1)]); },
        "interleaved in place");
  check([&](long t, long k) { return std::complex<R>(neg[static_cast<size_t>(2 * (t * n + n - 1 - k))], neg[static_cast<size_t>(2 * (t * n + n - 1 - k) + 1)]); },
        "negative stride");
  E::destroy(p);
}

TEST(EngineC2C, StridesBatchesSplitInPlace) {
  for (long n : {1L, 2L, 7L, 8L, 16L, 60L, 64L, 97L, 128L, 210L, 1000L, 1009L}) {
    for (long hm : {1L, 3L, 37L}) {
      check_layouts<double>(n, hm);
      check_layouts<float>(n, hm);
    }
  }
}

// Every kernel build of the processor (the reproducible one included) gives
// accurate transforms.
TEST(EngineC2C, EveryKernelBuild) {
  const int top = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") ? 7
                  : __builtin_cpu_supports("avx2") ? 4 : 2;
  for (int kb = 0; kb <= 7; ++kb) {
    if (kb > top && kb != 7) continue;
    E::set_kernel_override(kb);
    for (long n : {5L, 16L, 48L, 64L, 243L, 1009L, 4096L}) {
      SCOPED_TRACE(kb);
      check_c2c_accuracy<double>(n, 3);
      check_c2c_accuracy<float>(n, 4);
    }
    for (long hm : {1L, 19L}) check_layouts<double>(64, hm);
  }
  E::set_kernel_override(-1);
}

// Powers of two 2 .. 2^14 on every kernel build of the processor: the
// in-register transforms (up to 32 vectors on AVX-512), the first pass of the
// vector length and the passes of 8 and 4 after it, against long-double
// references computed once per length and precision; strided split layouts
// for the lengths in several passes.
template <class R> void check_powers_of_two(const std::vector<int> &builds) {
  for (int e = 1; e <= 14; ++e) {
    const long n = 1L << e;
    const auto xr = to<R>(random_complex(n, static_cast<std::uint64_t>(e) + 500));
    const auto xin = from<R>(xr);
    const auto fwd = reference(xin, -1), bwd = reference(xin, +1);
    if (fwd.empty() || bwd.empty()) continue;
    for (int kb : builds) {
      E::set_kernel_override(kb);
      EXPECT_LE(rel_rms(run_c2c<R>(xr, -1), fwd), bound<R>(n)) << "n=" << n << " build=" << kb;
      EXPECT_LE(rel_rms(run_c2c<R>(xr, +1), bwd), bound<R>(n)) << "backward n=" << n << " build=" << kb;
      if (e == 9 || e == 11) check_layouts<R>(n, 2);
    }
  }
  E::set_kernel_override(-1);
}

TEST(EngineC2C, PowersOfTwoEveryKernelBuild) {
  const int top = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") ? 7
                  : __builtin_cpu_supports("avx2") ? 4 : 2;
  std::vector<int> builds;
  for (int kb = 0; kb <= 7; ++kb)
    if (kb <= top || kb == 7) builds.push_back(kb);
  check_powers_of_two<double>(builds);
  check_powers_of_two<float>(builds);
}

// Real transforms against the complex reference of the real input.
template <class R> void check_real(long n, long hm) {
  const long h = n / 2;
  const long is = 2, idist = n * is + 3, os = 3, odist = (h + 1) * os + 1;
  std::mt19937_64 g(static_cast<std::uint64_t>(n * 31 + hm));
  std::uniform_real_distribution<double> u(-0.5, 0.5);
  std::vector<R> x(static_cast<size_t>(idist * hm));
  for (auto &v : x) v = static_cast<R>(u(g));
  auto *p = E::r2c_create<R>(n, hm, 2);
  ASSERT_NE(p, nullptr);
  std::vector<R> re(static_cast<size_t>(odist * hm)), im(re.size());
  E::r2c_execute<R>(p, {x.data(), is, idist}, {re.data(), im.data(), os, odist}, R(1));
  for (long t = 0; t < hm; ++t) {
    std::vector<CLD> seq(static_cast<size_t>(n));
    for (long j = 0; j < n; ++j) seq[static_cast<size_t>(j)] = x[static_cast<size_t>(t * idist + j * is)];
    auto ref = direct_dft(seq, -1);
    ref.resize(static_cast<size_t>(h + 1));
    std::vector<std::complex<R>> y(static_cast<size_t>(h + 1));
    for (long k = 0; k <= h; ++k) y[static_cast<size_t>(k)] = {re[static_cast<size_t>(t * odist + k * os)], im[static_cast<size_t>(t * odist + k * os)]};
    EXPECT_LE(rel_rms(y, ref), bound<R>(n)) << "r2c n=" << n << " hm=" << hm;
  }
  // Back with 1/n: the input returns. Garbage imaginary parts at 0 (and n/2)
  // are ignored.
  for (long t = 0; t < hm; ++t) {
    im[static_cast<size_t>(t * odist)] = R(123);
    if (n % 2 == 0) im[static_cast<size_t>(t * odist + h * os)] = R(-77);
  }
  std::vector<R> z(x.size(), R(0));
  E::c2r_execute<R>(p, {re.data(), im.data(), os, odist}, {z.data(), is, idist}, R(1) / static_cast<R>(n));
  double err = 0, nrm = 0;
  for (long t = 0; t < hm; ++t)
    for (long j = 0; j < n; ++j) {
      const size_t o = static_cast<size_t>(t * idist + j * is);
      err += std::pow(double(z[o]) - double(x[o]), 2);
      nrm += std::pow(double(x[o]), 2);
    }
  EXPECT_LE(std::sqrt(err / nrm), bound<R>(n)) << "c2r round trip n=" << n << " hm=" << hm;
  // Unit strides, in place in one array (x at p[j], X_k at p[2k], p[2k+1]).
  std::vector<R> ip(static_cast<size_t>(2 * (h + 1) * hm));
  for (long t = 0; t < hm; ++t)
    for (long j = 0; j < n; ++j) ip[static_cast<size_t>(t * 2 * (h + 1) + j)] = x[static_cast<size_t>(t * idist + j * is)];
  E::r2c_execute<R>(p, {ip.data(), 1, 2 * (h + 1)}, {ip.data(), ip.data() + 1, 2, 2 * (h + 1)}, R(1));
  for (long t = 0; t < hm; ++t)
    for (long k = 0; k <= h; ++k) {
      EXPECT_NEAR(ip[static_cast<size_t>(t * 2 * (h + 1) + 2 * k)], re[static_cast<size_t>(t * odist + k * os)], 8 * bound<R>(n) * std::sqrt(double(n)));
      if (k > 0 && !(n % 2 == 0 && k == h))
        EXPECT_NEAR(ip[static_cast<size_t>(t * 2 * (h + 1) + 2 * k + 1)], im[static_cast<size_t>(t * odist + k * os)], 8 * bound<R>(n) * std::sqrt(double(n)));
    }
  E::c2r_execute<R>(p, {ip.data(), ip.data() + 1, 2, 2 * (h + 1)}, {ip.data(), 1, 2 * (h + 1)}, R(1) / static_cast<R>(n));
  err = 0;
  for (long t = 0; t < hm; ++t)
    for (long j = 0; j < n; ++j) {
      const double d = double(ip[static_cast<size_t>(t * 2 * (h + 1) + j)]) - double(x[static_cast<size_t>(t * idist + j * is)]);
      err += d * d;
    }
  EXPECT_LE(std::sqrt(err / nrm), bound<R>(n)) << "in place round trip n=" << n;
  E::destroy(p);
}

TEST(EngineReal, ForwardBackwardEveryKind) {
  for (long n : {1L, 2L, 3L, 4L, 5L, 6L, 7L, 8L, 9L, 10L, 15L, 16L, 30L, 31L, 32L, 64L, 100L, 127L, 128L, 250L,
                 1000L, 1009L, 2018L, 4096L}) {
    for (long hm : {1L, 5L, 33L}) {
      if (hm > 5 && n > 256) continue;
      check_real<double>(n, hm);
      check_real<float>(n, hm);
    }
  }
}

TEST(EngineReal, LargeAgainstPeer) {
  for (long n : {1L << 18, 1L << 20, 2L * 65537L}) {
    std::mt19937_64 g(static_cast<std::uint64_t>(n));
    std::uniform_real_distribution<double> u(-0.5, 0.5);
    std::vector<double> x(static_cast<size_t>(n));
    std::vector<CLD> xl(x.size());
    for (size_t i = 0; i < x.size(); ++i) xl[i] = x[i] = u(g);
    const auto ref = peer_dft_ld(xl, -1);
    if (ref.empty()) GTEST_SKIP();
    auto *p = E::r2c_create<double>(n, 1, 2);
    std::vector<std::complex<double>> y(static_cast<size_t>(n / 2 + 1));
    double *yp = reinterpret_cast<double *>(y.data());
    E::r2c_execute<double>(p, {x.data(), 1, 0}, {yp, yp + 1, 2, 0}, 1.0);
    EXPECT_LE(rel_rms(y, std::vector<CLD>(ref.begin(), ref.begin() + n / 2 + 1)), bound<double>(n)) << n;
    std::vector<double> z(x.size());
    E::c2r_execute<double>(p, {yp, yp + 1, 2, 0}, {z.data(), 1, 0}, 1.0 / static_cast<double>(n));
    double err = 0, nrm = 0;
    for (size_t i = 0; i < x.size(); ++i) { err += (z[i] - x[i]) * (z[i] - x[i]); nrm += x[i] * x[i]; }
    EXPECT_LE(std::sqrt(err / nrm), bound<double>(n)) << n;
    E::destroy(p);
  }
}

// Linearity, impulse and shift for large N (no reference needed).
template <class R> void check_properties(long n) {
  const auto a = to<R>(random_complex(n, 1)), b = to<R>(random_complex(n, 2));
  const R alpha = R(0.75), beta = R(-1.25);
  std::vector<std::complex<R>> c(a.size());
  for (size_t i = 0; i < a.size(); ++i) c[i] = alpha * a[i] + beta * b[i];
  const auto A = run_c2c<R>(a, -1), B = run_c2c<R>(b, -1), C = run_c2c<R>(c, -1);
  std::vector<CLD> lin(a.size());
  for (size_t i = 0; i < a.size(); ++i) lin[i] = CLD(alpha) * CLD(A[i].real(), A[i].imag()) + CLD(beta) * CLD(B[i].real(), B[i].imag());
  EXPECT_LE(rel_rms(C, lin), 2 * bound<R>(n)) << "linearity n=" << n;
  // Impulse at j0: X_k = exp(-2 pi i j0 k / n).
  const long j0 = n / 3 + 1;
  std::vector<std::complex<R>> d(a.size(), {R(0), R(0)});
  d[static_cast<size_t>(j0)] = {R(1), R(0)};
  const auto D = run_c2c<R>(d, -1);
  std::vector<CLD> ex(a.size());
  const auto w = roots_ld(n, -1);
  for (long k = 0; k < n; ++k) ex[static_cast<size_t>(k)] = w[static_cast<size_t>((static_cast<unsigned __int128>(j0) * k) % n)];
  EXPECT_LE(rel_rms(D, ex), bound<R>(n)) << "impulse n=" << n;
  // Shift by s: X'_k = X_k exp(-2 pi i s k / n).
  const long s = 12345 % n;
  std::vector<std::complex<R>> sh(a.size());
  for (long j = 0; j < n; ++j) sh[static_cast<size_t>((j + s) % n)] = a[static_cast<size_t>(j)];
  const auto S = run_c2c<R>(sh, -1);
  std::vector<CLD> exs(a.size());
  for (long k = 0; k < n; ++k)
    exs[static_cast<size_t>(k)] = CLD(A[static_cast<size_t>(k)].real(), A[static_cast<size_t>(k)].imag()) * w[static_cast<size_t>((static_cast<unsigned __int128>(s) * k) % n)];
  EXPECT_LE(rel_rms(S, exs), 2 * bound<R>(n)) << "shift n=" << n;
}

TEST(EngineProperties, LinearityImpulseShiftLargeN) {
  for (long n : {1L << 20, 3L * 5 * 7 * 11 * 13 * 17, 65537L, 1L << 15}) {
    check_properties<double>(n);
    check_properties<float>(n);
  }
}

// Threads 1, 2 and 3 give identical bits: batches and four-step splits.
template <class R> void check_threads(long n, long hm) {
  const auto x = to<R>(random_complex(n * hm, 5));
  std::vector<std::vector<std::complex<R>>> outs;
  for (int th = 1; th <= 3; ++th) {
    auto *p = E::c2c_create<R>(n, hm, th);
    ASSERT_NE(p, nullptr);
    std::vector<std::complex<R>> y(x.size());
    const R *xp = reinterpret_cast<const R *>(x.data());
    R *yp = reinterpret_cast<R *>(y.data());
    E::c2c_execute<R>(p, -1, {xp, xp + 1, 2, 2 * n}, {yp, yp + 1, 2, 2 * n}, R(1));
    E::destroy(p);
    outs.push_back(std::move(y));
  }
  EXPECT_EQ(0, std::memcmp(outs[0].data(), outs[1].data(), outs[0].size() * sizeof(outs[0][0]))) << n;
  EXPECT_EQ(0, std::memcmp(outs[0].data(), outs[2].data(), outs[0].size() * sizeof(outs[0][0]))) << n;
  // Real transforms too.
  std::vector<std::vector<R>> routs;
  std::vector<R> xr(static_cast<size_t>(n * hm));
  for (size_t i = 0; i < xr.size(); ++i) xr[i] = x[i].real();
  for (int th = 1; th <= 3; ++th) {
    auto *p = E::r2c_create<R>(n, hm, th);
    std::vector<R> y(static_cast<size_t>(2 * (n / 2 + 1) * hm));
    E::r2c_execute<R>(p, {xr.data(), 1, n}, {y.data(), y.data() + 1, 2, 2 * (n / 2 + 1)}, R(1));
    E::destroy(p);
    routs.push_back(std::move(y));
  }
  EXPECT_TRUE(routs[0] == routs[1] && routs[0] == routs[2]) << "real n=" << n;
}

TEST(EngineThreads, BitwiseIdenticalAcrossThreadCounts) {
  check_threads<double>(64, 1000);
  check_threads<float>(64, 1000);
  check_threads<double>(1000, 37);
  check_threads<double>(1L << 20, 1);
  check_threads<double>(3L * 5 * 7 * 11 * 13 * 17, 1);   // generic odd-radix pass shared
  check_threads<double>(1L << 21, 1);                    // four-step
  check_threads<float>(1L << 18, 2);
  check_threads<double>(1009, 9);
}

// Batches of short transforms run in blocks across transforms (their
// gathers and scatters transposed in registers): every transform of a batch,
// forward and backward, interleaved and split, complex and real, agrees with
// the same transform computed alone.
template <class R> void check_blocks(long n, long hm) {
  const auto x = to<R>(random_complex(n * hm, 17 + static_cast<std::uint64_t>(n)));
  auto *pb = E::c2c_create<R>(n, hm, 1);
  auto *p1 = E::c2c_create<R>(n, 1, 1);
  ASSERT_TRUE(pb && p1);
  const R *xp = reinterpret_cast<const R *>(x.data());
  std::vector<R> re(static_cast<size_t>(n * hm)), im(re.size());
  for (size_t i = 0; i < re.size(); ++i) {
    re[i] = x[i].real();
    im[i] = x[i].imag();
  }
  for (int sign : {-1, +1}) {
    std::vector<std::complex<R>> yb(x.size()), y1(static_cast<size_t>(n));
    R *ybp = reinterpret_cast<R *>(yb.data()), *y1p = reinterpret_cast<R *>(y1.data());
    E::c2c_execute<R>(pb, sign, {xp, xp + 1, 2, 2 * n}, {ybp, ybp + 1, 2, 2 * n}, R(1));
    std::vector<R> sr(re.size()), si(re.size());
    E::c2c_execute<R>(pb, sign, {re.data(), im.data(), 1, n}, {sr.data(), si.data(), 1, n}, R(1));
    for (long t = 0; t < hm; ++t) {
      E::c2c_execute<R>(p1, sign, {xp + 2 * t * n, xp + 2 * t * n + 1, 2, 0}, {y1p, y1p + 1, 2, 0}, R(1));
      const auto ref = from<R>(y1);
      std::vector<std::complex<R>> got(yb.begin() + t * n, yb.begin() + (t + 1) * n), gs(static_cast<size_t>(n));
      for (long k = 0; k < n; ++k) gs[static_cast<size_t>(k)] = {sr[static_cast<size_t>(t * n + k)], si[static_cast<size_t>(t * n + k)]};
      EXPECT_LE(rel_rms(got, ref), bound<R>(n)) << "n=" << n << " hm=" << hm << " t=" << t << " sign=" << sign;
      EXPECT_LE(rel_rms(gs, ref), bound<R>(n)) << "split n=" << n << " hm=" << hm << " t=" << t << " sign=" << sign;
    }
  }
  E::destroy(pb);
  E::destroy(p1);
  // Real: r2c of the batch, then c2r back (scaled) gives the input.
  const long h = n / 2 + 1;
  auto *rb = E::r2c_create<R>(n, hm, 1);
  auto *r1 = E::r2c_create<R>(n, 1, 1);
  ASSERT_TRUE(rb && r1);
  std::vector<R> spectrum(static_cast<size_t>(2 * h * hm)), one(static_cast<size_t>(2 * h)), back(re.size());
  E::r2c_execute<R>(rb, {re.data(), 1, n}, {spectrum.data(), spectrum.data() + 1, 2, 2 * h}, R(1));
  for (long t = 0; t < hm; ++t) {
    E::r2c_execute<R>(r1, {re.data() + t * n, 1, 0}, {one.data(), one.data() + 1, 2, 0}, R(1));
    long double num = 0, den = 0;
    for (long i = 0; i < 2 * h; ++i) {
      const long double d = spectrum[static_cast<size_t>(2 * h * t + i)] - one[static_cast<size_t>(i)];
      num += d * d;
      den += static_cast<long double>(one[static_cast<size_t>(i)]) * one[static_cast<size_t>(i)];
    }
    EXPECT_LE(sqrtl(num / den), bound<R>(n)) << "r2c n=" << n << " hm=" << hm << " t=" << t;
  }
  E::c2r_execute<R>(rb, {spectrum.data(), spectrum.data() + 1, 2, 2 * h}, {back.data(), 1, n}, R(1) / static_cast<R>(n));
  long double num = 0, den = 0;
  for (size_t i = 0; i < re.size(); ++i) {
    num += (back[i] - re[i]) * static_cast<long double>(back[i] - re[i]);
    den += static_cast<long double>(re[i]) * re[i];
  }
  EXPECT_LE(sqrtl(num / den), 2 * bound<R>(n)) << "c2r round trip n=" << n << " hm=" << hm;
  E::destroy(rb);
  E::destroy(r1);
}

TEST(EngineBatches, BlocksAcrossTransformsMatchSingleTransforms) {
  for (long n : {8L, 16L, 32L, 64L, 12L})
    for (long hm : {64L, 37L}) {
      check_blocks<double>(n, hm);
      check_blocks<float>(n, hm);
    }
}

TEST(EngineInfo, DescribesPlans) {
  auto *p = E::c2c_create<double>(1009, 1, 1);
  ASSERT_NE(p, nullptr);
  const auto in = E::info(p);
  EXPECT_EQ(in.largest_prime, 1009);
  EXPECT_TRUE(in.bluestein);
  E::destroy(p);
  auto *q = E::c2c_create<float>(1L << 21, 1, 1);
  EXPECT_TRUE(E::info(q).four_step);
  E::destroy(q);
  q = E::c2c_create<float>(1L << 20, 1, 2);   // passes shared by threads, not split
  EXPECT_FALSE(E::info(q).four_step);
  E::destroy(q);
  EXPECT_EQ(E::largest_prime_factor(1), 1);
  EXPECT_EQ(E::largest_prime_factor(2L * 3 * 65537), 65537);
  EXPECT_EQ(E::c2c_create<double>(0, 1, 1), nullptr);
  EXPECT_EQ(E::r2c_create<double>(8, 0, 1), nullptr);
  EXPECT_EQ(E::c2c_execute<double>(nullptr, -1, {}, {}, 1.0), 3);
}

}  // namespace

namespace {

// Long single transforms whose output is apart from the input use the
// output's storage as a buffer of the passes; the same transform in place,
// or into a strided output (which cannot take that path), gives the same
// bits for complex data, and agrees within the bound for real data (its
// untangling step runs in place there).
template <class R> void check_output_as_buffer(long n) {
  using C = std::complex<R>;
  const auto x = to<R>(random_complex(n, 4242 + static_cast<std::uint64_t>(n)));
  const R *xp = reinterpret_cast<const R *>(x.data());
  auto *p = E::c2c_create<R>(n, 1, 1);
  ASSERT_NE(p, nullptr);
  for (int sign : {-1, +1})
    for (R scale : {R(1), R(0.25)}) {
      std::vector<C> y(x.size()), ip(x), st(2 * x.size());
      R *yp = reinterpret_cast<R *>(y.data()), *ipp = reinterpret_cast<R *>(ip.data());
      R *sp = reinterpret_cast<R *>(st.data());
      E::c2c_execute<R>(p, sign, {xp, xp + 1, 2, 0}, {yp, yp + 1, 2, 0}, scale);
      E::c2c_execute<R>(p, sign, {ipp, ipp + 1, 2, 0}, {ipp, ipp + 1, 2, 0}, scale);
      E::c2c_execute<R>(p, sign, {xp, xp + 1, 2, 0}, {sp, sp + 1, 4, 0}, scale);
      for (long k = 0; k < n; ++k) {
        ASSERT_EQ(y[k], ip[k]) << "in place n=" << n << " k=" << k << " sign=" << sign;
        ASSERT_EQ(y[k], st[2 * k]) << "strided n=" << n << " k=" << k << " sign=" << sign;
      }
      // Split arrays.
      std::vector<R> xr(n), xi(n), yr(n), yi(n);
      for (long j = 0; j < n; ++j) {
        xr[j] = x[j].real();
        xi[j] = x[j].imag();
      }
      E::c2c_execute<R>(p, sign, {xr.data(), xi.data(), 1, 0}, {yr.data(), yi.data(), 1, 0}, scale);
      for (long k = 0; k < n; ++k) ASSERT_EQ(C(yr[k], yi[k]), y[k]) << "split n=" << n << " k=" << k;
    }
  E::destroy(p);
  // Real forward: unit-stride interleaved output against a strided one.
  std::vector<R> xr(n);
  for (long j = 0; j < n; ++j) xr[j] = x[j].real();
  auto *q = E::r2c_create<R>(n, 1, 1);
  ASSERT_NE(q, nullptr);
  const long h = n / 2;
  std::vector<C> y(h + 1), st(2 * (h + 1));
  R *yp = reinterpret_cast<R *>(y.data()), *sp = reinterpret_cast<R *>(st.data());
  E::r2c_execute<R>(q, {xr.data(), 1, 0}, {yp, yp + 1, 2, 0}, R(0.5));
  E::r2c_execute<R>(q, {xr.data(), 1, 0}, {sp, sp + 1, 4, 0}, R(0.5));
  std::vector<CLD> ref(h + 1);
  for (long k = 0; k <= h; ++k) ref[k] = CLD(st[2 * k].real(), st[2 * k].imag());
  EXPECT_LE(rel_rms(y, ref), bound<R>(n)) << "real n=" << n;
  EXPECT_EQ(y[0].imag(), R(0));
  if (n % 2 == 0) EXPECT_EQ(y[h].imag(), R(0)) << "n=" << n;
  E::destroy(q);
}

TEST(EngineC2C, OutputAsBufferOfTheLongPasses) {
  for (long n : {1024L, 2187L, 1L << 16, 3L * (1L << 14)}) {
    check_output_as_buffer<double>(n);
    check_output_as_buffer<float>(n);
  }
}

}  // namespace
