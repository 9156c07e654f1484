// Short power-of-two transforms held in registers: every length 2 .. 1024 on
// every kernel build of the processor, every pair of layouts the kernels take
// (interleaved either way round, split, interleaved to split for the real
// forward transform and split to interleaved for the real backward one),
// batches with gaps between transforms, in place, scaled, and threaded
// batches, all against long-double direct sums or the same transform alone.
#include <gtest/gtest.h>

#include <cstring>

#include "dft/engine/engine.h"
#include "dft/engine/plan.h"
#include "test_engine_util.h"

using namespace engine_test;
namespace E = nxl::dft;

namespace {

int top_build() {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") ? 6
         : __builtin_cpu_supports("avx2")                                       ? 4
                                                                                : 2;
}

// hm transforms, dist (complex values) apart, of random data in interleaved
// storage; the references are the long-double direct sums times scale.
template <class R> struct Batch {
  long n, hm, dist;
  std::vector<std::complex<R>> x;
  std::vector<std::vector<CLD>> ref;
  Batch(long n_, long hm_, long gap, int sign, LD scale) : n(n_), hm(hm_), dist(n_ + gap) {
    x = to<R>(random_complex(dist * hm, static_cast<std::uint64_t>(n * 7 + hm)));
    for (long t = 0; t < hm; ++t) {
      std::vector<CLD> s(from<R>(std::vector<std::complex<R>>(x.begin() + t * dist, x.begin() + t * dist + n)));
      auto r = direct_dft(s, sign);
      for (auto &v : r) v *= scale;
      ref.push_back(r);
    }
  }
  // Error of transform t of y (same geometry as x).
  double err(const std::vector<std::complex<R>> &y, long t) const {
    return rel_rms(std::vector<std::complex<R>>(y.begin() + t * dist, y.begin() + t * dist + n),
                   ref[static_cast<size_t>(t)]);
  }
};

template <class R> void check_c2c_small(long n, long hm) {
  auto *p = E::c2c_create<R>(n, hm, 1);
  ASSERT_NE(p, nullptr);
  const long gap = 3;
  for (int sign : {-1, +1}) {
    const R scale = sign < 0 ? R(1) : R(0.5);
    Batch<R> b(n, hm, gap, sign, scale);
    const long d2 = 2 * b.dist;
    // Interleaved, out of place: the gaps between transforms are not written.
    std::vector<std::complex<R>> y(b.x.size(), std::complex<R>(R(7), R(7)));
    const R *xp = reinterpret_cast<const R *>(b.x.data());
    R *yp = reinterpret_cast<R *>(y.data());
    ASSERT_EQ(E::c2c_execute<R>(p, sign, {xp, xp + 1, 2, d2}, {yp, yp + 1, 2, d2}, scale), 0);
    for (long t = 0; t < hm; ++t) {
      EXPECT_LE(b.err(y, t), bound<R>(n)) << "interleaved n=" << n << " hm=" << hm << " t=" << t << " sign=" << sign;
      for (long g = 0; g < gap && t + 1 < hm; ++g)
        EXPECT_EQ(y[static_cast<size_t>(t * b.dist + n + g)], std::complex<R>(R(7), R(7))) << "gap written n=" << n;
    }
    // Interleaved in place.
    std::vector<std::complex<R>> z = b.x;
    R *zp = reinterpret_cast<R *>(z.data());
    E::c2c_execute<R>(p, sign, {zp, zp + 1, 2, d2}, {zp, zp + 1, 2, d2}, scale);
    for (long t = 0; t < hm; ++t) EXPECT_LE(b.err(z, t), bound<R>(n)) << "in place n=" << n << " sign=" << sign;
    // Split arrays, out of place and in place.
    std::vector<R> re(b.x.size()), im(b.x.size()), sr(b.x.size()), si(b.x.size());
    for (size_t i = 0; i < b.x.size(); ++i) {
      re[i] = b.x[i].real();
      im[i] = b.x[i].imag();
    }
    E::c2c_execute<R>(p, sign, {re.data(), im.data(), 1, b.dist}, {sr.data(), si.data(), 1, b.dist}, scale);
    E::c2c_execute<R>(p, sign, {re.data(), im.data(), 1, b.dist}, {re.data(), im.data(), 1, b.dist}, scale);
    std::vector<std::complex<R>> s1(b.x.size()), s2(b.x.size());
    for (size_t i = 0; i < b.x.size(); ++i) {
      s1[i] = {sr[i], si[i]};
      s2[i] = {re[i], im[i]};
    }
    for (long t = 0; t < hm; ++t) {
      EXPECT_LE(b.err(s1, t), bound<R>(n)) << "split n=" << n << " sign=" << sign;
      EXPECT_LE(b.err(s2, t), bound<R>(n)) << "split in place n=" << n << " sign=" << sign;
    }
  }
  E::destroy(p);
}

// Real transforms of length 2n: their half-length complex transform reads
// interleaved pairs into split arrays (forward) and writes split arrays to
// exchanged pairs (backward).
template <class R> void check_real_small(long n2) {
  const long h = n2 / 2;
  auto *p = E::r2c_create<R>(n2, 1, 1);
  ASSERT_NE(p, nullptr);
  const auto xc = random_complex(n2, static_cast<std::uint64_t>(n2 + 5));
  std::vector<R> x(static_cast<size_t>(n2)), back(static_cast<size_t>(n2));
  std::vector<CLD> xl(static_cast<size_t>(n2));
  for (long j = 0; j < n2; ++j) {
    x[static_cast<size_t>(j)] = static_cast<R>(xc[static_cast<size_t>(j)].real());
    xl[static_cast<size_t>(j)] = CLD(x[static_cast<size_t>(j)], 0);
  }
  const auto ref = direct_dft(xl, -1);
  std::vector<std::complex<R>> y(static_cast<size_t>(h + 1));
  R *yp = reinterpret_cast<R *>(y.data());
  ASSERT_EQ(E::r2c_execute<R>(p, {x.data(), 1, 0}, {yp, yp + 1, 2, 0}, R(1)), 0);
  EXPECT_LE(rel_rms(y, std::vector<CLD>(ref.begin(), ref.begin() + h + 1)), bound<R>(n2)) << "r2c n=" << n2;
  ASSERT_EQ(E::c2r_execute<R>(p, {yp, yp + 1, 2, 0}, {back.data(), 1, 0}, R(1) / static_cast<R>(n2)), 0);
  LD num = 0, den = 0;
  for (long j = 0; j < n2; ++j) {
    const LD d = static_cast<LD>(back[static_cast<size_t>(j)]) - x[static_cast<size_t>(j)];
    num += d * d;
    den += static_cast<LD>(x[static_cast<size_t>(j)]) * x[static_cast<size_t>(j)];
  }
  EXPECT_LE(static_cast<double>(sqrtl(num / den)), 2 * bound<R>(n2)) << "c2r round trip n=" << n2;
  E::destroy(p);
}

TEST(EngineSmall, EveryPowerOfTwoLayoutAndBuild) {
  for (int kb = 0; kb <= 7; ++kb) {
    if (kb > top_build() && kb != 7) continue;
    SCOPED_TRACE(kb);
    E::set_kernel_override(kb);
    for (long n = 2; n <= 1024; n *= 2) {
      for (long hm : {1L, 5L}) {
        check_c2c_small<double>(n, hm);
        check_c2c_small<float>(n, hm);
      }
      check_real_small<double>(2 * n);
      check_real_small<float>(2 * n);
    }
  }
  E::set_kernel_override(-1);
}

// The real forward untangling of one transform into interleaved output runs
// over whole vectors (Z_0 repeated at index h); every even length, power of
// two or not, against the direct sum.
TEST(EngineSmall, RealTransformsOfEveryEvenLength) {
  for (long n2 = 2; n2 <= 260; n2 += 2) {
    check_real_small<double>(n2);
    check_real_small<float>(n2);
  }
  for (long n2 : {2L * 1009, 3000L, 4096L + 2}) check_real_small<double>(n2);
}

// A threaded batch gives the same bits as the transforms one at a time.
template <class R> void check_threaded_batch(long n, long hm) {
  const auto x = to<R>(random_complex(n * hm, 77));
  auto *p2 = E::c2c_create<R>(n, hm, 2);
  auto *p1 = E::c2c_create<R>(n, 1, 1);
  ASSERT_TRUE(p1 && p2);
  std::vector<std::complex<R>> y2(x.size()), y1(x.size());
  const R *xp = reinterpret_cast<const R *>(x.data());
  R *y2p = reinterpret_cast<R *>(y2.data()), *y1p = reinterpret_cast<R *>(y1.data());
  E::c2c_execute<R>(p2, -1, {xp, xp + 1, 2, 2 * n}, {y2p, y2p + 1, 2, 2 * n}, R(0.25));
  for (long t = 0; t < hm; ++t)
    E::c2c_execute<R>(p1, -1, {xp + 2 * n * t, xp + 2 * n * t + 1, 2, 0}, {y1p + 2 * n * t, y1p + 2 * n * t + 1, 2, 0},
                      R(0.25));
  EXPECT_EQ(std::memcmp(y1.data(), y2.data(), sizeof(R) * 2 * static_cast<size_t>(n * hm)), 0) << "n=" << n;
  E::destroy(p1);
  E::destroy(p2);
}

TEST(EngineSmall, ThreadedBatchesMatchSingleTransforms) {
  for (long n : {16L, 64L, 128L}) {
    check_threaded_batch<double>(n, 1001);
    check_threaded_batch<float>(n, 1001);
  }
}

}  // namespace
