// The direct compute path of short transforms: which configurations commit
// to it (every setting that must keep a descriptor off it, or change what
// it does), and that both its results and those of the configurations kept
// off it match a long-double evaluation, with every element outside the
// addressed ones untouched.
#include <gtest/gtest.h>

#include <cmath>

#include "dft/dfti/descriptor.h"
#include "dft/engine/plan.h"
#include "service/codepath.h"
#include "dft_check.h"

using namespace dftcheck;
namespace E = nxl::dft;

namespace {

// Whether the engine has one in-register kernel for the whole transform of
// length n (real: for its half-length transform) in the current kernel build.
template <class R> bool one_kernel(bool real, long n) {
  E::SmallDirect<R> sd;
  bool ok;
  if (real) {
    auto *p = E::r2c_create<R>(n, 1, 1);
    ok = p && E::small_direct(p, &sd);
    if (p) E::destroy(p);
  } else {
    auto *p = E::c2c_create<R>(n, 1, 1);
    ok = p && E::small_direct(p, &sd);
    if (p) E::destroy(p);
  }
  return ok;
}

bool one_kernel(const Case &c) {
  const bool real = c.domain == DFTI_REAL;
  return c.prec == DFTI_SINGLE ? one_kernel<float>(real, c.n[0]) : one_kernel<double>(real, c.n[0]);
}

struct Probe {
  int dirs = -1;
};

bool commit_and_probe(DFTI_DESCRIPTOR_HANDLE h, void *arg) {
  if (DftiCommitDescriptor(h) != 0) return false;
  static_cast<Probe *>(arg)->dirs = nxl_dft_dfti_direct_paths(h);
  return true;
}

// Runs the case in both directions; expects the direct path on the
// directions in `want` (bit 0 forward, bit 1 backward) when the length has
// one kernel, and results within 2 eps log2 N (relative rms).
void check(Case c, int want, const char *what) {
  if (!one_kernel(c)) want = 0;
  long total = 1;
  for (int k = 0; k < c.rank; ++k) total *= c.n[k];
  const long double eps = c.prec == DFTI_SINGLE ? 5.96e-8L : 1.11e-16L;
  const long double bound = 2 * eps * std::max(1.0L, log2l(static_cast<long double>(total)));
  for (bool fwd : {true, false}) {
    c.forward = fwd;
    Probe p;
    Result r = c.prec == DFTI_SINGLE ? run_case<float>(c, 11, commit_and_probe, &p)
                                     : run_case<double>(c, 11, commit_and_probe, &p);
    ASSERT_EQ(r.status, 0) << what << ": " << c.describe() << " " << r.what;
    EXPECT_LE(r.err, bound) << what << ": " << c.describe();
    EXPECT_EQ(p.dirs, want) << what << ": " << c.describe();
  }
}

Case complex1d(int prec, long n) {
  Case c;
  c.prec = prec;
  c.domain = DFTI_COMPLEX;
  c.n[0] = n;
  c.is[0] = c.os[0] = 1;
  return c;
}

Case real1d(int prec, long n) {
  Case c = complex1d(prec, n);
  c.domain = DFTI_REAL;
  return c;
}

// Every kernel build the processor runs (and the reproducible one).
TEST(DftiDirect, ComplexEveryShortPowerOfTwoAndBuild) {
  // 64 single points fit every build's registers; 64 double points need
  // vectors of four or more (the 16-byte builds, cnr included, run passes).
  const int cur = nxl::cp_kernel_index();
  const bool wide = cur >= 3 && cur <= 6;
  EXPECT_TRUE(one_kernel<float>(false, 64) && one_kernel<float>(true, 64));
  EXPECT_EQ(one_kernel<double>(false, 64), wide);
  const int top = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") ? 7
                  : __builtin_cpu_supports("avx2") ? 4 : 2;
  for (int kb = 0; kb <= 7; ++kb) {
    if (kb > top && kb != 7) continue;
    SCOPED_TRACE(kb);
    E::set_kernel_override(kb);
    for (int prec : {DFTI_SINGLE, DFTI_DOUBLE})
      for (long n = 2; n <= 1024; n *= 2) {
        Case c = complex1d(prec, n);
        check(c, 3, "out of place");
        c.inplace = true;
        check(c, 3, "in place");
        c.split = true;
        check(c, 3, "split in place");
        c.inplace = false;
        check(c, 3, "split out of place");
        Case r = real1d(prec, 2 * n);
        check(r, 3, "real");
      }
  }
  E::set_kernel_override(-1);
}

// Scales, offsets and batches change what the direct path does; strides,
// other lengths, ranks and threaded batches keep a descriptor off it.
TEST(DftiDirect, ComplexSettings) {
  for (int prec : {DFTI_SINGLE, DFTI_DOUBLE}) {
    Case c = complex1d(prec, 64);
    c.fscale = 0.25;
    c.bscale = 1.0 / 64;
    check(c, 3, "scales");
    c.ioff = 3;
    c.ooff = 5;
    check(c, 3, "offsets");
    c.split = true;
    check(c, 3, "split offsets");
    c.split = false;
    c.howmany = 5;
    c.idist = 70;
    c.odist = 66;
    c.thread_limit = 1;
    check(c, 3, "batch on one thread");
    c.inplace = true;
    c.ooff = c.ioff;
    c.odist = c.idist;
    check(c, 3, "batch in place");
    c.inplace = false;
    c.thread_limit = 2;
    check(c, 0, "batch with two threads");
    c.howmany = 1;
    c.idist = c.odist = 0;
    check(c, 3, "one transform, two threads");
    c.user_threads = 3;
    check(c, 3, "several user threads");
    c.user_threads = 1;
    c.thread_limit = 0;

    Case s = complex1d(prec, 32);
    s.is[0] = 2;
    check(s, 0, "input stride");
    s.is[0] = 1;
    s.os[0] = -1;
    s.ooff = 31;
    check(s, 0, "negative output stride");
    for (long n : {48L, 2048L, 1L}) check(complex1d(prec, n), 0, "length without one kernel");

    Case t = complex1d(prec, 8);
    t.rank = 2;
    t.n[1] = 8;
    t.is[1] = t.os[1] = 8;
    check(t, 0, "two dimensions");
    t.n[1] = 1;
    t.is[1] = t.os[1] = 8;
    check(t, 3, "two dimensions, one of length 1");
  }
}

TEST(DftiDirect, RealEveryShortEvenLength) {
  for (int prec : {DFTI_SINGLE, DFTI_DOUBLE})
    for (long n = 4; n <= 1024; n *= 2) {
      Case c = real1d(prec, n);
      check(c, 3, "out of place");
      c.fscale = 3;
      c.bscale = 1.0 / n;
      check(c, 3, "scales");
      c.fscale = c.bscale = 1;
      c.format = DFTI_CCS_FORMAT;
      check(c, 3, "CCS");
      c.format = DFTI_CCE_FORMAT;
      c.inplace = true;
      check(c, 3, "in place");
      // The forward layout of the padded in-place storage; backward it is
      // another one and goes row by row.
      c.ioff = 2;
      c.ooff = 1;
      check(c, 1, "in place, offsets");
    }
}

TEST(DftiDirect, RealSettings) {
  for (int prec : {DFTI_SINGLE, DFTI_DOUBLE}) {
    Case c = real1d(prec, 64);
    c.ioff = 3;
    c.ooff = 2;
    check(c, 3, "offsets");
    // The input strides describe the forward input (real) and the backward
    // input (conjugate-even); the real side must have unit stride.
    c.os[0] = 2;
    check(c, 1, "output stride 2");
    c.os[0] = 1;
    c.is[0] = 2;
    check(c, 2, "input stride 2");
    c.is[0] = 1;
    for (int f : {DFTI_PACK_FORMAT, DFTI_PERM_FORMAT}) {
      c.format = f;
      check(c, 0, "packed format");
    }
    c.format = DFTI_CCE_FORMAT;
    c.howmany = 3;
    c.idist = c.odist = 70;
    check(c, 0, "batch");
    c.howmany = 1;
    c.idist = c.odist = 0;
    c.thread_limit = 2;
    check(c, 3, "two threads");
    c.thread_limit = 0;
    for (long n : {2L, 6L, 33L, 2048L}) check(real1d(prec, n), 0, "length without one kernel");
    Case t = real1d(prec, 16);
    t.rank = 2;
    t.n[1] = 4;
    t.is[1] = t.os[1] = 18;
    check(t, 0, "two dimensions");
  }
}

}  // namespace
