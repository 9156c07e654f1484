// Transform results against a direct evaluation in long double, over a
// randomised set of ranks, lengths, layouts (strides, distances, offsets,
// dimension orders, negative strides), storages, placements, precisions,
// scales and thread counts; plus round trips, and linearity, impulse and
// shift properties at larger lengths.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "dft_check.h"

using namespace dftcheck;

namespace {

long double tolerance(const Case &c) {
  long total = 1;
  for (int k = 0; k < c.rank; ++k) total *= c.n[k];
  long double eps = c.prec == DFTI_SINGLE ? 5.96e-8L : 1.11e-16L;
  long double lg = std::max(1.0L, log2l(static_cast<long double>(total)));
  return 8 * eps * lg;
}

// Strides of a side: dimensions laid out in a random order with padding.
void gen_side(std::mt19937_64 &g, int rank, const long *m, bool allow_negative, long *s, long *dist, long *off) {
  int order[7];
  for (int k = 0; k < rank; ++k) order[k] = k;
  if (g() % 3 == 0) std::shuffle(order, order + rank, g);
  long cur = 1 + (g() % 4 == 0 ? g() % 3 : 0);
  for (int i = 0; i < rank; ++i) {
    int k = order[i];
    s[k] = cur;
    cur = cur * m[k] + (g() % 3 == 0 ? g() % 3 : 0);
  }
  *dist = cur + g() % 3;
  *off = g() % 4;
  if (allow_negative && g() % 4 == 0) {
    int k = g() % rank;
    *off += (m[k] - 1) * s[k];
    s[k] = -s[k];
  }
}

Case random_case(std::mt19937_64 &g) {
  Case c;
  c.prec = g() % 2 ? DFTI_DOUBLE : DFTI_SINGLE;
  c.domain = g() % 2 ? DFTI_COMPLEX : DFTI_REAL;
  static const long len1[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 15, 16, 17, 18, 20, 24, 25, 27,
                              31, 32, 36, 45, 49, 60, 64, 97, 100, 128, 131, 210, 256, 289};
  static const long lenm[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 12, 13, 16};
  int pick = g() % 10;
  c.rank = pick < 5 ? 1 : pick < 8 ? 2 + g() % 2 : 4 + g() % 4;
  long total = 1;
  for (int k = 0; k < c.rank; ++k) {
    if (c.rank == 1) c.n[k] = len1[g() % (sizeof len1 / sizeof *len1)];
    else if (c.rank <= 3) c.n[k] = lenm[g() % (sizeof lenm / sizeof *lenm)];
    else c.n[k] = 1 + g() % 3;
    total *= c.n[k];
  }
  c.howmany = 1 + g() % 3;
  c.inplace = g() % 2;
  c.forward = g() % 2;
  c.split = c.domain == DFTI_COMPLEX && g() % 3 == 0;
  c.format = DFTI_CCE_FORMAT;
  if (c.domain == DFTI_REAL && c.rank == 1) {
    static const int fmts[] = {DFTI_CCE_FORMAT, DFTI_CCS_FORMAT, DFTI_PACK_FORMAT, DFTI_PERM_FORMAT};
    c.format = fmts[g() % 4];
  }
  const double scales[] = {1.0, 0.5, 1.0 / total, 3.0};
  c.fscale = scales[g() % 4];
  c.bscale = scales[g() % 4];
  c.thread_limit = g() % 3;   // 0 (domain maximum), 1 or 2
  // Layouts.
  long rm[7], cm[7];
  for (int k = 0; k < c.rank; ++k) rm[k] = cm[k] = c.n[k];
  if (c.domain == DFTI_REAL)
    cm[0] = c.format == DFTI_CCE_FORMAT ? half(c.n[0]) : ce_reals(c.format, c.n[0]);
  long xs[7], ys[7], xd, yd, xo, yo;   // x: real or input side, y: spectrum side
  if (c.domain == DFTI_COMPLEX) {
    gen_side(g, c.rank, c.n, !c.inplace, xs, &xd, &xo);
    gen_side(g, c.rank, c.n, true, ys, &yd, &yo);
    if (c.inplace) {
      std::copy(xs, xs + c.rank, ys);
      yd = xd;
      yo = xo;
    }
  } else if (!c.inplace) {
    gen_side(g, c.rank, rm, true, xs, &xd, &xo);
    gen_side(g, c.rank, cm, true, ys, &yd, &yo);
  } else if (c.format == DFTI_CCE_FORMAT && (c.rank > 1 || g() % 3)) {
    // Canonical padded layout: the real rows inside the complex rows.
    ys[0] = 1;
    xs[0] = 1;
    long cur = half(c.n[0]) + (g() % 3 == 0 ? 1 : 0);
    for (int k = 1; k < c.rank; ++k) {
      ys[k] = cur;
      xs[k] = 2 * cur;
      cur *= c.n[k];
    }
    yd = cur + g() % 2;
    xd = 2 * yd;
    yo = g() % 3;
    xo = 2 * yo;
  } else if (c.format == DFTI_CCE_FORMAT) {
    // 1-D, not the canonical layout: real stride 2, complex stride 1.
    xs[0] = 2;
    ys[0] = 1;
    long foot = 2 * std::max(c.n[0], half(c.n[0])) + 2;
    xd = foot;
    yd = foot / 2;
    xo = 2;
    yo = 1;
  } else {
    // Packed formats in place: the same real positions on both sides.
    long s = 1 + g() % 2;
    xs[0] = ys[0] = s;
    xd = yd = s * ce_reals(DFTI_CCS_FORMAT, c.n[0]) + g() % 2;
    xo = yo = g() % 3;
  }
  // Forward reads x and writes y; backward reads y and writes x.
  const bool xin = c.forward || c.domain == DFTI_COMPLEX;
  for (int k = 0; k < c.rank; ++k) {
    c.is[k] = xin ? xs[k] : ys[k];
    c.os[k] = xin ? ys[k] : xs[k];
  }
  c.idist = xin ? xd : yd;
  c.odist = xin ? yd : xd;
  c.ioff = xin ? xo : yo;
  c.ooff = xin ? yo : xo;
  if (c.howmany == 1 && g() % 2) c.idist = c.odist = 0;
  return c;
}

Result run(const Case &c, unsigned seed) {
  return c.prec == DFTI_SINGLE ? run_case<float>(c, seed) : run_case<double>(c, seed);
}

TEST(DftiTransforms, RandomConfigurationsAgainstDirectEvaluation) {
  std::mt19937_64 g(20261122);
  int done = 0;
  for (int i = 0; i < 600; ++i) {
    Case c = random_case(g);
    Result r = run(c, 1000 + i);
    ASSERT_EQ(r.status, 0) << r.what << ": " << c.describe();
    ASSERT_LE(r.err, tolerance(c)) << r.what << ": " << c.describe();
    ++done;
  }
  EXPECT_EQ(done, 600);
}

TEST(DftiTransforms, EdgeShapes) {
  std::vector<Case> cases;
  Case c;
  // A single point; length-1 dimensions around others; seven dimensions.
  c.rank = 1;
  c.n[0] = 1;
  c.is[0] = c.os[0] = 1;
  cases.push_back(c);
  c.rank = 4;
  long l4[] = {1, 6, 1, 5};
  long acc = 1;
  for (int k = 0; k < 4; ++k) {
    c.n[k] = l4[k];
    c.is[k] = c.os[k] = acc;
    acc *= l4[k];
  }
  cases.push_back(c);
  c.rank = 7;
  acc = 1;
  for (int k = 0; k < 7; ++k) {
    c.n[k] = 2 + k % 2;
    c.is[k] = c.os[k] = acc;
    acc *= c.n[k];
  }
  c.howmany = 2;
  c.idist = c.odist = acc;
  cases.push_back(c);
  // Transforms interleaved with each other (unit distance).
  Case v;
  v.n[0] = 12;
  v.howmany = 5;
  v.is[0] = v.os[0] = 5;
  v.idist = v.odist = 1;
  cases.push_back(v);
  v.inplace = false;
  v.forward = false;
  v.split = true;
  cases.push_back(v);
  // Real transforms of length 1 and 2 in every format.
  for (int f : {DFTI_CCE_FORMAT, DFTI_CCS_FORMAT, DFTI_PACK_FORMAT, DFTI_PERM_FORMAT})
    for (long n : {1L, 2L, 3L})
      for (bool fwd : {true, false}) {
        Case r;
        r.domain = DFTI_REAL;
        r.format = f;
        r.n[0] = n;
        r.inplace = false;
        r.forward = fwd;
        r.is[0] = r.os[0] = 1;
        cases.push_back(r);
      }
  for (auto &x : cases) {
    for (int prec : {DFTI_SINGLE, DFTI_DOUBLE}) {
      x.prec = prec;
      Result r = run(x, 7);
      EXPECT_EQ(r.status, 0) << r.what << ": " << x.describe();
      EXPECT_LE(r.err, tolerance(x)) << r.what << ": " << x.describe();
    }
  }
}

// Forward then backward with scale 1/N returns the input.
template <class R> void round_trip(int domain, long n, long howmany) {
  DFTI_DESCRIPTOR_HANDLE h = nullptr;
  ASSERT_EQ(DftiCreateDescriptor(&h, sizeof(R) == 4 ? DFTI_SINGLE : DFTI_DOUBLE, static_cast<DFTI_CONFIG_VALUE>(domain), 1, n), 0);
  long cn = domain == DFTI_REAL ? n / 2 + 1 : n;
  ASSERT_EQ(DftiSetValue(h, DFTI_PLACEMENT, DFTI_NOT_INPLACE), 0);
  if (domain == DFTI_REAL) ASSERT_EQ(DftiSetValue(h, DFTI_CONJUGATE_EVEN_STORAGE, DFTI_COMPLEX_COMPLEX), 0);
  ASSERT_EQ(DftiSetValue(h, DFTI_NUMBER_OF_TRANSFORMS, nxl_int(howmany)), 0);
  long xin = domain == DFTI_REAL ? n : n;
  ASSERT_EQ(DftiSetValue(h, DFTI_INPUT_DISTANCE, nxl_int(xin)), 0);
  ASSERT_EQ(DftiSetValue(h, DFTI_OUTPUT_DISTANCE, nxl_int(cn)), 0);
  ASSERT_EQ(DftiSetValue(h, DFTI_BACKWARD_SCALE, 1.0 / n), 0);
  ASSERT_EQ(DftiCommitDescriptor(h), 0);
  DFTI_DESCRIPTOR_HANDLE b = nullptr;
  ASSERT_EQ(DftiCopyDescriptor(h, &b), 0);
  ASSERT_EQ(DftiSetValue(b, DFTI_INPUT_DISTANCE, nxl_int(cn)), 0);
  ASSERT_EQ(DftiSetValue(b, DFTI_OUTPUT_DISTANCE, nxl_int(xin)), 0);
  ASSERT_EQ(DftiCommitDescriptor(b), 0);
  const long re = domain == DFTI_REAL ? 1 : 2;
  std::vector<R> x(re * n * howmany), y(2 * cn * howmany), z(x.size());
  std::mt19937_64 g(n);
  std::uniform_real_distribution<double> U(-0.5, 0.5);
  for (auto &v : x) v = static_cast<R>(U(g));
  ASSERT_EQ(DftiComputeForward(h, x.data(), y.data()), 0);
  ASSERT_EQ(DftiComputeBackward(b, y.data(), z.data()), 0);
  long double num = 0, den = 0;
  for (size_t i = 0; i < x.size(); ++i) {
    num += (long double)(z[i] - x[i]) * (z[i] - x[i]);
    den += (long double)x[i] * x[i];
  }
  long double eps = sizeof(R) == 4 ? 5.96e-8L : 1.11e-16L;
  EXPECT_LE(sqrtl(num / den), 8 * eps * std::max(1.0L, log2l(n))) << n;
  DftiFreeDescriptor(&h);
  DftiFreeDescriptor(&b);
}

TEST(DftiTransforms, RoundTrips) {
  for (long n : {1L, 2L, 7L, 64L, 97L, 100L, 243L, 1000L}) {
    round_trip<double>(DFTI_COMPLEX, n, 3);
    round_trip<float>(DFTI_COMPLEX, n, 2);
    round_trip<double>(DFTI_REAL, n, 2);
    round_trip<float>(DFTI_REAL, n, 3);
  }
}

// Properties at a length where a direct reference is costly: the transform
// of an impulse at position p is the twiddle sequence; linearity; a
// circular shift of the input multiplies the spectrum by a phase.
TEST(DftiTransforms, ImpulseLinearityShift) {
  const long n = 4096 * 3;
  DFTI_DESCRIPTOR_HANDLE h = nullptr;
  ASSERT_EQ(DftiCreateDescriptor(&h, DFTI_DOUBLE, DFTI_COMPLEX, 1, n), 0);
  ASSERT_EQ(DftiSetValue(h, DFTI_PLACEMENT, DFTI_NOT_INPLACE), 0);
  ASSERT_EQ(DftiCommitDescriptor(h), 0);
  using C = std::complex<double>;
  std::vector<C> x(n), y(n), a(n), b(n), ya(n), yb(n), yab(n);
  const long p = 5;
  x[p] = 1;
  ASSERT_EQ(DftiComputeForward(h, x.data(), y.data()), 0);
  const long double pi = 3.141592653589793238462643383279502884L;
  double worst = 0;
  for (long k = 0; k < n; ++k) {
    long double ang = -2 * pi * ((p * k) % n) / n;
    worst = std::max(worst, std::abs(y[k] - C(cosl(ang), sinl(ang))));
  }
  EXPECT_LE(worst, 1e-13);
  std::mt19937_64 g(3);
  std::uniform_real_distribution<double> U(-0.5, 0.5);
  for (long i = 0; i < n; ++i) {
    a[i] = C(U(g), U(g));
    b[i] = C(U(g), U(g));
    x[i] = 0.75 * a[i] - 2.0 * b[i];
  }
  ASSERT_EQ(DftiComputeForward(h, a.data(), ya.data()), 0);
  ASSERT_EQ(DftiComputeForward(h, b.data(), yb.data()), 0);
  ASSERT_EQ(DftiComputeForward(h, x.data(), yab.data()), 0);
  worst = 0;
  double mag = 0;
  for (long k = 0; k < n; ++k) {
    worst = std::max(worst, std::abs(yab[k] - (0.75 * ya[k] - 2.0 * yb[k])));
    mag = std::max(mag, std::abs(yab[k]));
  }
  EXPECT_LE(worst, 1e-12 * mag);
  const long s = 17;
  for (long i = 0; i < n; ++i) x[(i + s) % n] = a[i];
  ASSERT_EQ(DftiComputeForward(h, x.data(), y.data()), 0);
  worst = 0;
  for (long k = 0; k < n; ++k) {
    long double ang = -2 * pi * ((s * k) % n) / n;
    worst = std::max(worst, std::abs(y[k] - ya[k] * C(cosl(ang), sinl(ang))));
  }
  EXPECT_LE(worst, 1e-12 * mag);
  DftiFreeDescriptor(&h);
}

// Several user threads computing with one descriptor at once give the
// serial result, bit for bit.
TEST(DftiTransforms, ConcurrentCallersOnOneDescriptor) {
  for (nxl_int limit : {1, 2}) {
    DFTI_DESCRIPTOR_HANDLE h = nullptr;
    nxl_int lens[2] = {10, 48};
    ASSERT_EQ(DftiCreateDescriptor(&h, DFTI_DOUBLE, DFTI_REAL, 2, lens), 0);
    ASSERT_EQ(DftiSetValue(h, DFTI_PLACEMENT, DFTI_NOT_INPLACE), 0);
    ASSERT_EQ(DftiSetValue(h, DFTI_CONJUGATE_EVEN_STORAGE, DFTI_COMPLEX_COMPLEX), 0);
    nxl_int os[3] = {0, 25, 1};
    ASSERT_EQ(DftiSetValue(h, DFTI_OUTPUT_STRIDES, os), 0);
    ASSERT_EQ(DftiSetValue(h, DFTI_NUMBER_OF_USER_THREADS, nxl_int(3)), 0);
    ASSERT_EQ(DftiSetValue(h, DFTI_THREAD_LIMIT, limit), 0);
    ASSERT_EQ(DftiCommitDescriptor(h), 0);
    std::vector<double> x(480);
    std::mt19937_64 g(9);
    std::uniform_real_distribution<double> U(-0.5, 0.5);
    for (auto &v : x) v = U(g);
    std::vector<std::complex<double>> ref(250);
    ASSERT_EQ(DftiComputeForward(h, x.data(), ref.data()), 0);
    std::vector<int> bad(4, 0);
    std::vector<std::thread> ts;
    for (int t = 0; t < 4; ++t)
      ts.emplace_back([&, t] {
        std::vector<std::complex<double>> y(250);
        for (int rep = 0; rep < 25; ++rep) {
          if (DftiComputeForward(h, x.data(), y.data()) != 0 ||
              std::memcmp(y.data(), ref.data(), sizeof(y[0]) * y.size()) != 0)
            ++bad[t];
        }
      });
    for (auto &t : ts) t.join();
    for (int t = 0; t < 4; ++t) EXPECT_EQ(bad[t], 0) << t;
    DftiFreeDescriptor(&h);
  }
}

}  // namespace
