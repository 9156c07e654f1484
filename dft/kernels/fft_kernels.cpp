// Transform kernels, compiled once per code path.
//
// Every kernel is a loop over split complex data whose body is a straight-line
// butterfly; the loops carry `omp simd` so that the compiler vectorises them
// with the code path's vector width (SSE2, AVX, AVX-512): across the
// interleaved transforms q (the `pass` kernels, s >= vector width) or across
// the butterflies p of the first pass (the `pass1` kernels, s == 1, where the
// strided loads and stores become shuffles). Butterflies of composite radices
// (8, 16) are built from smaller ones with compile-time twiddles, so trivial
// rotations (by 1, -i, -1, +i and the eighth roots) cost no multiplications.
//
// The reproducible build (cnr) compiles this file without contraction into
// FMA; the expressions fix the order of every operation, so its results do not
// depend on the processor.
#include <type_traits>
#include <utility>

#include "dft/engine/kernel_table.h"
#include "service/codepath.h"

// Some layout variants cannot be vectorised with the narrower instruction
// sets (e.g. interleaved stores of doubles with SSE2); they stay scalar.
#pragma clang diagnostic ignored "-Wpass-failed"

// Butterflies must be inlined into the vectorised loops.
#define NXL_AI inline __attribute__((always_inline))

namespace nxl {
namespace NXL_CP_NS {
namespace {

using dft::KernelTable;

// Bytes of the code path's vectors (the hand-vectorised first pass).
constexpr int kVBytes = (NXL_CP == 6 || NXL_CP == 7) ? 64 : (NXL_CP == 4 || NXL_CP == 5) ? 32 : 16;
template <class T, int W> struct Vec { typedef T type __attribute__((vector_size(W * sizeof(T)))); };

// A constant of type T: a scalar, or a vector with every lane set.
template <class T> inline __attribute__((always_inline)) T splat(double c) {
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(c);
  } else {
    using E = std::remove_reference_t<decltype(std::declval<T &>()[0])>;
    return T{} + static_cast<E>(c);
  }
}

// cos and sin of 2 pi e / R, e < R.
template <int R> struct Roots;
template <> struct Roots<3> {
  static constexpr double c[3] = {1.0, -0.5, -0.5};
  static constexpr double s[3] = {0.0, 0.8660254037844386467637232, -0.8660254037844386467637232};
};
template <> struct Roots<5> {
  static constexpr double c[5] = {1.0, 0.3090169943749474241022934, -0.8090169943749474241022934,
                                  -0.8090169943749474241022934, 0.3090169943749474241022934};
  static constexpr double s[5] = {0.0, 0.9510565162951535721164393, 0.587785252292473129168706,
                                  -0.587785252292473129168706, -0.9510565162951535721164393};
};
template <> struct Roots<7> {
  static constexpr double c[7] = {1.0, 0.6234898018587335305250049, -0.2225209339563144042889026,
                                  -0.9009688679024191262361023, -0.9009688679024191262361023,
                                  -0.2225209339563144042889026, 0.6234898018587335305250049};
  static constexpr double s[7] = {0.0, 0.7818314824680298087084445, 0.9749279121818236070181317,
                                  0.4338837391175581204757683, -0.4338837391175581204757683,
                                  -0.9749279121818236070181317, -0.7818314824680298087084445};
};
template <> struct Roots<9> {
  static constexpr double c[9] = {1.0,
                                  0.7660444431189780352023927,
                                  0.1736481776669303488517166,
                                  -0.5,
                                  -0.9396926207859083840541093,
                                  -0.9396926207859083840541093,
                                  -0.5,
                                  0.1736481776669303488517166,
                                  0.7660444431189780352023927};
  static constexpr double s[9] = {0.0,
                                  0.6427876096865393263226434,
                                  0.9848077530122080593667430,
                                  0.8660254037844386467637232,
                                  0.3420201433256687330440996,
                                  -0.3420201433256687330440996,
                                  -0.8660254037844386467637232,
                                  -0.9848077530122080593667430,
                                  -0.6427876096865393263226434};
};
template <> struct Roots<11> {
  static constexpr double c[11] = {
      1.0, 0.8412535328311811688618116, 0.4154150130018864255292741, -0.1423148382732851404437927,
      -0.6548607339452850640569251, -0.9594929736144973898903681, -0.9594929736144973898903681,
      -0.6548607339452850640569251, -0.1423148382732851404437927, 0.4154150130018864255292741,
      0.8412535328311811688618116};
  static constexpr double s[11] = {
      0.0, 0.540640817455597582107636, 0.9096319953545183714117154, 0.989821441880932732376092,
      0.7557495743542582837740358, 0.2817325568414296977114179, -0.2817325568414296977114179,
      -0.7557495743542582837740358, -0.989821441880932732376092, -0.9096319953545183714117154,
      -0.540640817455597582107636};
};
template <> struct Roots<13> {
  static constexpr double c[13] = {
      1.0, 0.8854560256532098959003755, 0.5680647467311558025118076, 0.1205366802553230533490677,
      -0.3546048870425356259696379, -0.7485107481711010986346306, -0.9709418174260520271569823,
      -0.9709418174260520271569823, -0.7485107481711010986346306, -0.3546048870425356259696379,
      0.1205366802553230533490677, 0.5680647467311558025118076, 0.8854560256532098959003755};
  static constexpr double s[13] = {
      0.0, 0.4647231720437685456560153, 0.8229838658936563945796174, 0.9927088740980539928007516,
      0.9350162426854148234397846, 0.6631226582407952023767855, 0.2393156642875577671487537,
      -0.2393156642875577671487537, -0.6631226582407952023767855, -0.9350162426854148234397846,
      -0.9927088740980539928007516, -0.8229838658936563945796174, -0.4647231720437685456560153};
};
// cos 2 pi e / 32 (the roots of orders dividing 32).
constexpr double kC32[32] = {1.0, 0.9807852804032304491261822, 0.9238795325112867561281832,
                             0.8314696123025452370787884, 0.7071067811865475244008444,
                             0.5555702330196022247428308, 0.3826834323650897717284600,
                             0.1950903220161282678482849, 0.0, -0.1950903220161282678482849,
                             -0.3826834323650897717284600, -0.5555702330196022247428308,
                             -0.7071067811865475244008444, -0.8314696123025452370787884,
                             -0.9238795325112867561281832, -0.9807852804032304491261822, -1.0,
                             -0.9807852804032304491261822, -0.9238795325112867561281832,
                             -0.8314696123025452370787884, -0.7071067811865475244008444,
                             -0.5555702330196022247428308, -0.3826834323650897717284600,
                             -0.1950903220161282678482849, 0.0, 0.1950903220161282678482849,
                             0.3826834323650897717284600, 0.5555702330196022247428308,
                             0.7071067811865475244008444, 0.8314696123025452370787884,
                             0.9238795325112867561281832, 0.9807852804032304491261822};

// (xr, xi) *= exp(-2 pi i E / N), with the rotations by multiples of pi/4 exact
// or cheap.
template <int N, int E, class T> NXL_AI void rot(T &xr, T &xi) {
  static_assert(N == 4 || N == 8 || N == 16 || N == 32 || N == 9, "rotations by 2^k-th and ninth roots only");
  constexpr int e32 = N == 9 ? -1 : (E % N) * (32 / (N == 9 ? 32 : N));  // in 32nds of a turn
  if constexpr (N == 9) {
    if constexpr (E % 9 != 0) {
      const T c = splat<T>(Roots<9>::c[E % 9]), s = splat<T>(Roots<9>::s[E % 9]);
      T t = xr * c + xi * s;
      xi = xi * c - xr * s;
      xr = t;
    }
  } else if constexpr (e32 == 0) {
  } else if constexpr (e32 == 8) {  // -i
    T t = xr; xr = xi; xi = -t;
  } else if constexpr (e32 == 16) {
    xr = -xr; xi = -xi;
  } else if constexpr (e32 == 24) {  // +i
    T t = xr; xr = -xi; xi = t;
  } else if constexpr (e32 % 4 == 0) {
    // (1 - i)/sqrt2 times a power of -i
    const T h = splat<T>(0.7071067811865475244008444);
    T a = (xr + xi) * h, b = (xi - xr) * h;  // times (1 - i)/sqrt2
    if constexpr (e32 == 4) { xr = a; xi = b; }
    else if constexpr (e32 == 12) { xr = b; xi = -a; }
    else if constexpr (e32 == 20) { xr = -a; xi = -b; }
    else { xr = -b; xi = a; }
  } else {
    const T c = splat<T>(kC32[e32]), s = splat<T>(kC32[(e32 + 24) % 32]);  // cos, sin of 2 pi e32/32
    T t = xr * c + xi * s;
    xi = xi * c - xr * s;
    xr = t;
  }
}

// In-register forward DFTs of R points, in place on a[0..R).
template <int R, class T> struct Bfly;

template <class T> struct Bfly<2, T> {
  NXL_AI static void run(T *ar, T *ai) {
    T r = ar[0] - ar[1], i = ai[0] - ai[1];
    ar[0] = ar[0] + ar[1]; ai[0] = ai[0] + ai[1];
    ar[1] = r; ai[1] = i;
  }
};

template <class T> struct Bfly<4, T> {
  NXL_AI static void run(T *ar, T *ai) {
    T t0r = ar[0] + ar[2], t0i = ai[0] + ai[2];
    T t1r = ar[0] - ar[2], t1i = ai[0] - ai[2];
    T t2r = ar[1] + ar[3], t2i = ai[1] + ai[3];
    T t3r = ai[1] - ai[3], t3i = ar[3] - ar[1];  // -i (a1 - a3)
    ar[0] = t0r + t2r; ai[0] = t0i + t2i;
    ar[2] = t0r - t2r; ai[2] = t0i - t2i;
    ar[1] = t1r + t3r; ai[1] = t1i + t3i;
    ar[3] = t1r - t3r; ai[3] = t1i - t3i;
  }
};

// Odd prime R: pairs j, R-j share their sums and differences.
template <int R, class T> struct BflyOdd {
  NXL_AI static void run(T *ar, T *ai) {
    constexpr int H = (R - 1) / 2;
    T sr[H + 1], si[H + 1], dr[H + 1], di[H + 1];
    T y0r = ar[0], y0i = ai[0];
#pragma clang loop unroll(full)
    for (int j = 1; j <= H; ++j) {
      sr[j] = ar[j] + ar[R - j]; si[j] = ai[j] + ai[R - j];
      dr[j] = ar[j] - ar[R - j]; di[j] = ai[j] - ai[R - j];
      y0r = y0r + sr[j]; y0i = y0i + si[j];
    }
#pragma clang loop unroll(full)
    for (int k = 1; k <= H; ++k) {
      T er = ar[0], ei = ai[0], fr = splat<T>(0), fi = splat<T>(0);
#pragma clang loop unroll(full)
      for (int j = 1; j <= H; ++j) {
        const T c = splat<T>(Roots<R>::c[(j * k) % R]), s = splat<T>(Roots<R>::s[(j * k) % R]);
        er = er + c * sr[j]; ei = ei + c * si[j];
        fr = fr + s * dr[j]; fi = fi + s * di[j];
      }
      // X_k = E - i F, X_{R-k} = E + i F
      ar[k] = er + fi; ai[k] = ei - fr;
      ar[R - k] = er - fi; ai[R - k] = ei + fr;
    }
    ar[0] = y0r; ai[0] = y0i;
  }
};
template <class T> struct Bfly<3, T> : BflyOdd<3, T> {};
template <class T> struct Bfly<5, T> : BflyOdd<5, T> {};
template <class T> struct Bfly<7, T> : BflyOdd<7, T> {};
template <class T> struct Bfly<11, T> : BflyOdd<11, T> {};
template <class T> struct Bfly<13, T> : BflyOdd<13, T> {};

// Composite R = R1 * R2 (4 x 4, 2 x 4, 4 x 8, 3 x 3): index j = j1 + R1 j2,
// k = k2 + R2 k1; R2-point DFTs over j2, rotation by w_R^(j1 k2), R1-point
// DFTs over j1.
template <int R1, int R2, class T> struct BflyComp {
  template <int J1> NXL_AI static void inner(T *ar, T *ai, T (*br)[R2], T (*bi)[R2]) {
    T cr[R2], ci[R2];
#pragma clang loop unroll(full)
    for (int j2 = 0; j2 < R2; ++j2) { cr[j2] = ar[J1 + R1 * j2]; ci[j2] = ai[J1 + R1 * j2]; }
    Bfly<R2, T>::run(cr, ci);
    rots<J1, 0>(cr, ci);
#pragma clang loop unroll(full)
    for (int k2 = 0; k2 < R2; ++k2) { br[J1][k2] = cr[k2]; bi[J1][k2] = ci[k2]; }
    if constexpr (J1 + 1 < R1) inner<J1 + 1>(ar, ai, br, bi);
  }
  template <int J1, int K2> NXL_AI static void rots(T *cr, T *ci) {
    if constexpr (K2 < R2) {
      rot<R1 * R2, J1 * K2>(cr[K2], ci[K2]);
      rots<J1, K2 + 1>(cr, ci);
    }
  }
  NXL_AI static void run(T *ar, T *ai) {
    T br[R1][R2], bi[R1][R2];
    inner<0>(ar, ai, br, bi);
#pragma clang loop unroll(full)
    for (int k2 = 0; k2 < R2; ++k2) {
      T cr[R1], ci[R1];
#pragma clang loop unroll(full)
      for (int j1 = 0; j1 < R1; ++j1) { cr[j1] = br[j1][k2]; ci[j1] = bi[j1][k2]; }
      Bfly<R1, T>::run(cr, ci);
#pragma clang loop unroll(full)
      for (int k1 = 0; k1 < R1; ++k1) { ar[k2 + R2 * k1] = cr[k1]; ai[k2 + R2 * k1] = ci[k1]; }
    }
  }
};
template <class T> struct Bfly<8, T> : BflyComp<2, 4, T> {};
template <class T> struct Bfly<16, T> : BflyComp<4, 4, T> {};
template <class T> struct Bfly<32, T> : BflyComp<4, 8, T> {};
template <class T> struct Bfly<9, T> : BflyComp<3, 3, T> {};

// Element access by layout mode: 0 split arrays (r, i), 1 interleaved pairs
// (re, im) at r[2e], r[2e+1], 2 interleaved and exchanged: (im, re) pairs.
// With one base pointer and constant offsets the vectoriser sees whole
// interleave groups.
template <int M, class T> NXL_AI T ld_re(const T *r, const T *i, long e) {
  if constexpr (M == 0) return r[e];
  else if constexpr (M == 1) return r[2 * e];
  else return r[2 * e + 1];
}
template <int M, class T> NXL_AI T ld_im(const T *r, const T *i, long e) {
  if constexpr (M == 0) return i[e];
  else if constexpr (M == 1) return r[2 * e + 1];
  else return r[2 * e];
}
template <int M, class T> NXL_AI void st(T *r, T *i, long e, T vr, T vi) {
  if constexpr (M == 0) { r[e] = vr; i[e] = vi; }
  else if constexpr (M == 1) { r[2 * e] = vr; r[2 * e + 1] = vi; }
  else { r[2 * e] = vi; r[2 * e + 1] = vr; }
}

// Stockham pass, q innermost (S > 0: the row length s is the constant S, so
// that short rows still fill whole vectors; OM: output layout mode). The
// p = 0 column has unit twiddles.
template <int R, int S, int OM, class T>
void pass_q(long m, long s_, long lo, long hi, const T *__restrict twr, const T *__restrict twi,
            const T *__restrict xr, const T *__restrict xi, T *__restrict yr, T *__restrict yi) {
  const long s = S > 0 ? S : s_;
  const long xj = s * m;
  for (long p = lo / s; p < m && p * s < hi; ++p) {
    const T *xr0 = xr + s * p, *xi0 = xi + s * p;
    const long y0 = s * R * p;
    // The q range of this p within [lo, hi) (whole rows when S is fixed:
    // ranges are cut at multiples of 64).
    const long qa = S > 0 ? 0 : (p * s < lo ? lo - p * s : 0);
    const long qb = S > 0 ? s : (hi - p * s < s ? hi - p * s : s);
    if (p == 0) {
#pragma omp simd
      for (long q = qa; q < qb; ++q) {
        T ar[R], ai[R];
#pragma clang loop unroll(full)
        for (int j = 0; j < R; ++j) { ar[j] = xr0[q + j * xj]; ai[j] = xi0[q + j * xj]; }
        Bfly<R, T>::run(ar, ai);
#pragma clang loop unroll(full)
        for (int k = 0; k < R; ++k) st<OM>(yr, yi, y0 + q + k * s, ar[k], ai[k]);
      }
      continue;
    }
    T wr[R], wi[R];
#pragma clang loop unroll(full)
    for (int k = 1; k < R; ++k) { wr[k] = twr[p * (R - 1) + k - 1]; wi[k] = twi[p * (R - 1) + k - 1]; }
#pragma omp simd
    for (long q = qa; q < qb; ++q) {
      T ar[R], ai[R];
#pragma clang loop unroll(full)
      for (int j = 0; j < R; ++j) { ar[j] = xr0[q + j * xj]; ai[j] = xi0[q + j * xj]; }
      Bfly<R, T>::run(ar, ai);
      st<OM>(yr, yi, y0 + q, ar[0], ai[0]);
#pragma clang loop unroll(full)
      for (int k = 1; k < R; ++k)
        st<OM>(yr, yi, y0 + q + k * s, ar[k] * wr[k] - ai[k] * wi[k], ar[k] * wi[k] + ai[k] * wr[k]);
    }
  }
}

// Stockham pass with s == 1, p innermost; twiddles in [k-1][p] layout; IM:
// input layout mode.
template <int R, int IM, class T>
void pass_p(long m, long, long lo, long hi, const T *__restrict twr, const T *__restrict twi,
            const T *__restrict xr, const T *__restrict xi, T *__restrict yr, T *__restrict yi) {
#pragma omp simd
  for (long p = lo; p < hi; ++p) {
    T ar[R], ai[R];
#pragma clang loop unroll(full)
    for (int j = 0; j < R; ++j) { ar[j] = ld_re<IM>(xr, xi, p + j * m); ai[j] = ld_im<IM>(xr, xi, p + j * m); }
    Bfly<R, T>::run(ar, ai);
    yr[R * p] = ar[0]; yi[R * p] = ai[0];
#pragma clang loop unroll(full)
    for (int k = 1; k < R; ++k) {
      const T wr = twr[(k - 1) * m + p], wi = twi[(k - 1) * m + p];
      yr[R * p + k] = ar[k] * wr - ai[k] * wi;
      yi[R * p + k] = ar[k] * wi + ai[k] * wr;
    }
  }
}

// The first pass (s == 1) with R equal to the vector length W, vectorised by
// hand: W butterflies at a time, their R outputs transposed in registers so
// that each butterfly's outputs are stored as one contiguous vector. Needs
// m % W == 0.
template <class V> NXL_AI V vload(const void *p) {
  V v;
  __builtin_memcpy(&v, p, sizeof(V));
  return v;
}
template <class V> NXL_AI void vstore(void *p, V v) { __builtin_memcpy(p, &v, sizeof(V)); }

template <int W, int D, class V, std::size_t... I> NXL_AI V shuf_lo(V a, V b, std::index_sequence<I...>) {
  return __builtin_shufflevector(a, b, ((I & D) ? (W + I - D) : I)...);
}
template <int W, int D, class V, std::size_t... I> NXL_AI V shuf_hi(V a, V b, std::index_sequence<I...>) {
  return __builtin_shufflevector(a, b, ((I & D) ? (W + I) : (I + D))...);
}
// Transpose of a W x W block held as W row vectors, by log2(W) stages of
// pairwise interleaves at distances 1, 2, 4, ... With Rows < W (a power of
// two), the W/Rows blocks of Rows x Rows side by side in Rows vectors are
// transposed each in place (the interleaves stay within each block).
template <int W, int D, class V, int Rows = W> NXL_AI void transpose(V *a) {
  if constexpr (D < Rows) {
#pragma clang loop unroll(full)
    for (int r = 0; r < Rows; ++r) {
      if (r & D) continue;
      const V lo = shuf_lo<W, D>(a[r], a[r + D], std::make_index_sequence<W>{});
      const V hi = shuf_hi<W, D>(a[r], a[r + D], std::make_index_sequence<W>{});
      a[r] = lo;
      a[r + D] = hi;
    }
    transpose<W, 2 * D, V, Rows>(a);
  }
}
template <class V, std::size_t... I> NXL_AI V even(V a, V b, std::index_sequence<I...>) {
  return __builtin_shufflevector(a, b, (2 * I)...);
}
template <class V, std::size_t... I> NXL_AI V odd(V a, V b, std::index_sequence<I...>) {
  return __builtin_shufflevector(a, b, (2 * I + 1)...);
}

// Loads W points starting at element e in layout mode IM.
template <int IM, int W, class V, class T> NXL_AI void vld(const T *r, const T *i, long e, V &a, V &b) {
  if constexpr (IM == 0) {
    a = vload<V>(r + e);
    b = vload<V>(i + e);
  } else {
    const V u = vload<V>(r + 2 * e), v = vload<V>(r + 2 * e + W);
    const V ev = even(u, v, std::make_index_sequence<W>{}), od = odd(u, v, std::make_index_sequence<W>{});
    a = IM == 1 ? ev : od;
    b = IM == 1 ? od : ev;
  }
}

// W butterflies of radix W at p .. p+W-1 (p % W == 0) of a first pass with
// m butterflies: loaded as W vectors (vector j = points p + j*m ..), the
// butterfly across the vectors, the twiddles ([k-1][p] layout) and a W x W
// transpose, after which a[q] holds outputs W*(p+q) + k, k < W. With
// Rows < W: radix Rows on W butterflies, the W/Rows blocks of Rows lanes
// each transposed in place.
template <int W, int IM, int Rows = W, class V, class T>
NXL_AI void first_chunk(const T *xr, const T *xi, long p, long m, const T *twr, const T *twi, V *ar, V *ai) {
#pragma clang loop unroll(full)
  for (int j = 0; j < Rows; ++j) vld<IM, W>(xr, xi, p + j * m, ar[j], ai[j]);
  Bfly<Rows, V>::run(ar, ai);
#pragma clang loop unroll(full)
  for (int k = 1; k < Rows; ++k) {
    const V wr = vload<V>(twr + (k - 1) * m + p), wi = vload<V>(twi + (k - 1) * m + p);
    const V a = ar[k], b = ai[k];
    ar[k] = a * wr - b * wi;
    ai[k] = a * wi + b * wr;
  }
  transpose<W, 1, V, Rows>(ar);
  transpose<W, 1, V, Rows>(ai);
}

template <int IM, class T>
void pass_v(long m, long, long lo, long hi, const T *__restrict twr, const T *__restrict twi,
            const T *__restrict xr, const T *__restrict xi, T *__restrict yr, T *__restrict yi) {
  constexpr int W = kVBytes / static_cast<int>(sizeof(T));
  using V = typename Vec<T, W>::type;
  for (long p = lo; p + W <= hi; p += W) {
    V ar[W], ai[W];
    first_chunk<W, IM>(xr, xi, p, m, twr, twi, ar, ai);
#pragma clang loop unroll(full)
    for (int q = 0; q < W; ++q) {
      vstore(yr + W * (p + q), ar[q]);
      vstore(yi + W * (p + q), ai[q]);
    }
  }
}

// Stockham pass, q innermost, vectorised by hand: W consecutive q at a time
// (s % W == 0), twiddles broadcast; OM: output layout mode, interleaving with
// two shuffles per vector pair.
template <class V, std::size_t... I> NXL_AI V zip_lo(V a, V b, std::index_sequence<I...>) {
  return __builtin_shufflevector(a, b, ((I % 2 == 0) ? I / 2 : sizeof...(I) + I / 2)...);
}
template <class V, std::size_t... I> NXL_AI V zip_hi(V a, V b, std::index_sequence<I...>) {
  return __builtin_shufflevector(
      a, b, ((I % 2 == 0) ? sizeof...(I) / 2 + I / 2 : sizeof...(I) + sizeof...(I) / 2 + I / 2)...);
}
template <int OM, int W, class V, class T> NXL_AI void vst(T *r, T *i, long e, V a, V b) {
  if constexpr (OM == 0) {
    vstore(r + e, a);
    vstore(i + e, b);
  } else {
    const V x = OM == 1 ? a : b, y = OM == 1 ? b : a;
    vstore(r + 2 * e, zip_lo(x, y, std::make_index_sequence<W>{}));
    vstore(r + 2 * e + W, zip_hi(x, y, std::make_index_sequence<W>{}));
  }
}

template <int R, int OM, class T, int W = kVBytes / static_cast<int>(sizeof(T))>
void pass_qv(long m, long s, long lo, long hi, const T *__restrict twr, const T *__restrict twi,
             const T *__restrict xr, const T *__restrict xi, T *__restrict yr, T *__restrict yi) {
  using V = typename Vec<T, W>::type;
  const long xj = s * m;
  for (long p = lo / s; p < m && p * s < hi; ++p) {
    const long qa = p * s < lo ? lo - p * s : 0, qb = hi - p * s < s ? hi - p * s : s;
    const T *xr0 = xr + s * p, *xi0 = xi + s * p;
    const long y0 = s * R * p;
    V wr[R], wi[R];
#pragma clang loop unroll(full)
    for (int k = 1; k < R; ++k) {
      wr[k] = p > 0 ? V{} + twr[p * (R - 1) + k - 1] : V{} + T(1);
      wi[k] = p > 0 ? V{} + twi[p * (R - 1) + k - 1] : V{};
    }
    for (long q = qa; q < qb; q += W) {
      V ar[R], ai[R];
#pragma clang loop unroll(full)
      for (int j = 0; j < R; ++j) {
        ar[j] = vload<V>(xr0 + q + j * xj);
        ai[j] = vload<V>(xi0 + q + j * xj);
      }
      Bfly<R, V>::run(ar, ai);
      vst<OM, W>(yr, yi, y0 + q, ar[0], ai[0]);
#pragma clang loop unroll(full)
      for (int k = 1; k < R; ++k)
        vst<OM, W>(yr, yi, y0 + q + k * s, ar[k] * wr[k] - ai[k] * wi[k], ar[k] * wi[k] + ai[k] * wr[k]);
    }
  }
}

// Generic odd radix: for each output k, y_k = sum_j a_j w_r^(jk) accumulated
// row by row (rows of s contiguous values), then the twiddle.
template <class T>
void gen_pass(long r, long m, long s, long lo, long hi, const T *__restrict twr, const T *__restrict twi,
              const T *__restrict rr, const T *__restrict ri, const T *__restrict xr,
              const T *__restrict xi, T *__restrict yr, T *__restrict yi) {
  const long xj = s * m;
  for (long p = lo / s; p < m && p * s < hi; ++p) {
    const long qa = p * s < lo ? lo - p * s : 0, qb = hi - p * s < s ? hi - p * s : s;
    const T *xr0 = xr + s * p, *xi0 = xi + s * p;
    for (long k = 0; k < r; ++k) {
      T *yrk = yr + s * (r * p + k), *yik = yi + s * (r * p + k);
#pragma omp simd
      for (long q = qa; q < qb; ++q) { yrk[q] = xr0[q]; yik[q] = xi0[q]; }
      long e = 0;
      for (long j = 1; j < r; ++j) {
        e += k;
        if (e >= r) e -= r;
        const T cr = rr[e], ci = ri[e];
        const T *xrj = xr0 + j * xj, *xij = xi0 + j * xj;
#pragma omp simd
        for (long q = qa; q < qb; ++q) {
          const T a = xrj[q], b = xij[q];
          yrk[q] = yrk[q] + (a * cr - b * ci);
          yik[q] = yik[q] + (a * ci + b * cr);
        }
      }
      if (p > 0 && k > 0) {
        const T wr = twr[p * (r - 1) + k - 1], wi = twi[p * (r - 1) + k - 1];
#pragma omp simd
        for (long q = qa; q < qb; ++q) {
          const T a = yrk[q], b = yik[q];
          yrk[q] = a * wr - b * wi;
          yik[q] = a * wi + b * wr;
        }
      }
    }
  }
}

template <int XS, int YS, class T>
void bmul(long n, long s0, const T *__restrict wr, const T *__restrict wi, const T *xr, const T *xi,
          T *yr, T *yi) {
  for (long j = 0; j < n; ++j) {
    const T cr = wr[j], ci = wi[j];
    const T *xr0 = xr + XS * j * s0, *xi0 = xi + XS * j * s0;
    T *yr0 = yr + YS * j * s0, *yi0 = yi + YS * j * s0;
#pragma omp simd
    for (long q = 0; q < s0; ++q) {
      const T a = xr0[XS * q], b = xi0[XS * q];
      yr0[YS * q] = a * cr - b * ci;
      yi0[YS * q] = a * ci + b * cr;
    }
  }
}

// Rows of b adjacent transforms (b a whole number of vectors), split or
// interleaved in either order, moved by whole vectors: the gather and scatter
// of column blocks.
template <class T> NXL_AI bool rows_vectorisable(long b, const T *re, const T *im, long dist) {
  constexpr int W = kVBytes / static_cast<int>(sizeof(T));
  return b % W == 0 && (dist == 1 || (dist == 2 && (im == re + 1 || re == im + 1)));
}

// Hides a value from the optimiser, so that a copy loop stays a loop of
// vector moves instead of becoming a call of the library's memcpy.
template <class V> NXL_AI V opaque(V v) {
  __asm__("" : "+x"(v));
  return v;
}

template <class T>
void gather_rows(long n, long b, long ld, const T *re, const T *im, long stride, long dist, T *__restrict yr,
                 T *__restrict yi) {
  constexpr int W = kVBytes / static_cast<int>(sizeof(T));
  using V = typename Vec<T, W>::type;
  if (dist == 1) {
    for (long j = 0; j < n; ++j)
      for (long q = 0; q < b; q += W) {
        vstore(yr + j * ld + q, opaque(vload<V>(re + j * stride + q)));
        vstore(yi + j * ld + q, opaque(vload<V>(im + j * stride + q)));
      }
    return;
  }
  const bool swapped = re == im + 1;
  const T *base = swapped ? im : re;
  for (long j = 0; j < n; ++j)
    for (long q = 0; q < b; q += W) {
      const V a = vload<V>(base + j * stride + 2 * q), c = vload<V>(base + j * stride + 2 * q + W);
      const V e = even(a, c, std::make_index_sequence<W>{}), o = odd(a, c, std::make_index_sequence<W>{});
      vstore(yr + j * ld + q, swapped ? o : e);
      vstore(yi + j * ld + q, swapped ? e : o);
    }
}

template <class T>
void scatter_rows(long n, long b, long ld, const T *__restrict yr, const T *__restrict yi, T *re, T *im, long stride,
                  long dist, T scale) {
  constexpr int W = kVBytes / static_cast<int>(sizeof(T));
  using V = typename Vec<T, W>::type;
  if (dist == 1) {
    for (long k = 0; k < n; ++k)
      for (long q = 0; q < b; q += W) {
        vstore(re + k * stride + q, vload<V>(yr + k * ld + q) * scale);
        vstore(im + k * stride + q, vload<V>(yi + k * ld + q) * scale);
      }
    return;
  }
  const bool swapped = re == im + 1;
  T *base = swapped ? im : re;
  for (long k = 0; k < n; ++k)
    for (long q = 0; q < b; q += W) {
      const V a = vload<V>(yr + k * ld + q) * scale, c = vload<V>(yi + k * ld + q) * scale;
      const V x = swapped ? c : a, y = swapped ? a : c;
      vstore(base + k * stride + 2 * q, zip_lo(x, y, std::make_index_sequence<W>{}));
      vstore(base + k * stride + 2 * q + W, zip_hi(x, y, std::make_index_sequence<W>{}));
    }
}

// Whole transforms (unit stride, split or interleaved in either order) moved
// between their own layout and the [j][q] layout of a block by squares of
// W x W values transposed in registers; needs b and n multiples of W.
template <class T> NXL_AI bool squares_vectorisable(long n, long b, const T *re, const T *im, long stride) {
  constexpr int W = kVBytes / static_cast<int>(sizeof(T));
  return W >= 4 && b % W == 0 && n % W == 0 &&
         (stride == 1 || (stride == 2 && (im == re + 1 || re == im + 1)));
}

template <class T>
void gather_squares(long n, long b, long ld, const T *re, const T *im, long stride, long dist, T *__restrict yr,
                    T *__restrict yi) {
  constexpr int W = kVBytes / static_cast<int>(sizeof(T));
  using V = typename Vec<T, W>::type;
  const bool swapped = stride == 2 && re == im + 1;
  const T *base = swapped ? im : re;
  for (long q0 = 0; q0 < b; q0 += W)
    for (long j0 = 0; j0 < n; j0 += W) {
      V vr[W], vi[W];
#pragma clang loop unroll(full)
      for (int i = 0; i < W; ++i) {
        if (stride == 1) {
          vr[i] = vload<V>(re + (q0 + i) * dist + j0);
          vi[i] = vload<V>(im + (q0 + i) * dist + j0);
        } else {
          const T *p = base + (q0 + i) * dist + 2 * j0;
          const V a = vload<V>(p), c = vload<V>(p + W);
          const V e = even(a, c, std::make_index_sequence<W>{}), o = odd(a, c, std::make_index_sequence<W>{});
          vr[i] = swapped ? o : e;
          vi[i] = swapped ? e : o;
        }
      }
      transpose<W, 1>(vr);
      transpose<W, 1>(vi);
#pragma clang loop unroll(full)
      for (int i = 0; i < W; ++i) {
        vstore(yr + (j0 + i) * ld + q0, vr[i]);
        vstore(yi + (j0 + i) * ld + q0, vi[i]);
      }
    }
}

template <class T>
void scatter_squares(long n, long b, long ld, const T *__restrict yr, const T *__restrict yi, T *re, T *im,
                     long stride, long dist, T scale) {
  constexpr int W = kVBytes / static_cast<int>(sizeof(T));
  using V = typename Vec<T, W>::type;
  const bool swapped = stride == 2 && re == im + 1;
  T *base = swapped ? im : re;
  for (long q0 = 0; q0 < b; q0 += W)
    for (long k0 = 0; k0 < n; k0 += W) {
      V vr[W], vi[W];
#pragma clang loop unroll(full)
      for (int i = 0; i < W; ++i) {
        vr[i] = vload<V>(yr + (k0 + i) * ld + q0) * scale;
        vi[i] = vload<V>(yi + (k0 + i) * ld + q0) * scale;
      }
      transpose<W, 1>(vr);
      transpose<W, 1>(vi);
#pragma clang loop unroll(full)
      for (int i = 0; i < W; ++i) {
        if (stride == 1) {
          vstore(re + (q0 + i) * dist + k0, vr[i]);
          vstore(im + (q0 + i) * dist + k0, vi[i]);
        } else {
          const V x = swapped ? vi[i] : vr[i], y = swapped ? vr[i] : vi[i];
          T *p = base + (q0 + i) * dist + 2 * k0;
          vstore(p, zip_lo(x, y, std::make_index_sequence<W>{}));
          vstore(p + W, zip_hi(x, y, std::make_index_sequence<W>{}));
        }
      }
    }
}

template <class T>
void gather(long n, long b, long ld, const T *re, const T *im, long stride, long dist, T *__restrict yr,
            T *__restrict yi) {
  if (b > 1 && rows_vectorisable(b, re, im, dist)) {
    gather_rows(n, b, ld, re, im, stride, dist, yr, yi);
    return;
  }
  if (b > 1 && squares_vectorisable(n, b, re, im, stride)) {
    gather_squares(n, b, ld, re, im, stride, dist, yr, yi);
    return;
  }
  if (b == 1) {
    if (stride == 2 && im == re + 1) {
#pragma omp simd
      for (long j = 0; j < n; ++j) { yr[j] = re[2 * j]; yi[j] = re[2 * j + 1]; }
    } else if (stride == 2 && re == im + 1) {
#pragma omp simd
      for (long j = 0; j < n; ++j) { yr[j] = im[2 * j + 1]; yi[j] = im[2 * j]; }
    } else if (stride == 1) {
#pragma omp simd
      for (long j = 0; j < n; ++j) { yr[j] = re[j]; yi[j] = im[j]; }
    } else {
      for (long j = 0; j < n; ++j) { yr[j] = re[j * stride]; yi[j] = im[j * stride]; }
    }
    return;
  }
  if (dist == 1) {
    for (long j = 0; j < n; ++j) {
      const T *r = re + j * stride, *i = im + j * stride;
#pragma omp simd
      for (long q = 0; q < b; ++q) { yr[j * ld + q] = r[q]; yi[j * ld + q] = i[q]; }
    }
    return;
  }
  if (dist == 2 && im == re + 1) {
    for (long j = 0; j < n; ++j) {
      const T *r = re + j * stride;
#pragma omp simd
      for (long q = 0; q < b; ++q) { yr[j * ld + q] = r[2 * q]; yi[j * ld + q] = r[2 * q + 1]; }
    }
    return;
  }
  if (dist == 2 && re == im + 1) {
    for (long j = 0; j < n; ++j) {
      const T *r = im + j * stride;
#pragma omp simd
      for (long q = 0; q < b; ++q) { yr[j * ld + q] = r[2 * q + 1]; yi[j * ld + q] = r[2 * q]; }
    }
    return;
  }
  // Transposing gather, a few transforms at a time so that each reads
  // consecutive elements.
  for (long q0 = 0; q0 < b; q0 += 8) {
    const long qn = b - q0 < 8 ? b - q0 : 8;
    for (long j = 0; j < n; ++j)
      for (long q = q0; q < q0 + qn; ++q) {
        yr[j * ld + q] = re[q * dist + j * stride];
        yi[j * ld + q] = im[q * dist + j * stride];
      }
  }
}

template <class T>
void scatter(long n, long b, long ld, const T *__restrict yr, const T *__restrict yi, T *re, T *im,
             long stride, long dist, T scale, const T *__restrict wr, const T *__restrict wi, long wld) {
  if (wr) {
    for (long k = 0; k < n; ++k) {
      const T *w0 = wr + k * wld, *w1 = wi + k * wld;
      T *r = re + k * stride, *i = im + k * stride;
      if (dist == 1) {
#pragma omp simd
        for (long q = 0; q < b; ++q) {
          const T a = yr[k * ld + q], c = yi[k * ld + q];
          r[q] = (a * w0[q] - c * w1[q]) * scale;
          i[q] = (a * w1[q] + c * w0[q]) * scale;
        }
      } else {
        for (long q = 0; q < b; ++q) {
          const T a = yr[k * ld + q], c = yi[k * ld + q];
          r[q * dist] = (a * w0[q] - c * w1[q]) * scale;
          i[q * dist] = (a * w1[q] + c * w0[q]) * scale;
        }
      }
    }
    return;
  }
  if (b > 1 && rows_vectorisable<T>(b, re, im, dist)) {
    scatter_rows(n, b, ld, yr, yi, re, im, stride, dist, scale);
    return;
  }
  if (b > 1 && squares_vectorisable(n, b, re, im, stride)) {
    scatter_squares(n, b, ld, yr, yi, re, im, stride, dist, scale);
    return;
  }
  if (b == 1) {
    if (stride == 2 && im == re + 1) {
#pragma omp simd
      for (long k = 0; k < n; ++k) { re[2 * k] = yr[k] * scale; re[2 * k + 1] = yi[k] * scale; }
    } else if (stride == 2 && re == im + 1) {
#pragma omp simd
      for (long k = 0; k < n; ++k) { im[2 * k + 1] = yr[k] * scale; im[2 * k] = yi[k] * scale; }
    } else if (stride == 1) {
#pragma omp simd
      for (long k = 0; k < n; ++k) { re[k] = yr[k] * scale; im[k] = yi[k] * scale; }
    } else {
      for (long k = 0; k < n; ++k) { re[k * stride] = yr[k] * scale; im[k * stride] = yi[k] * scale; }
    }
    return;
  }
  if (dist == 1) {
    for (long k = 0; k < n; ++k) {
      T *r = re + k * stride, *i = im + k * stride;
#pragma omp simd
      for (long q = 0; q < b; ++q) { r[q] = yr[k * ld + q] * scale; i[q] = yi[k * ld + q] * scale; }
    }
    return;
  }
  if (dist == 2 && im == re + 1) {
    for (long k = 0; k < n; ++k) {
      T *r = re + k * stride;
#pragma omp simd
      for (long q = 0; q < b; ++q) { r[2 * q] = yr[k * ld + q] * scale; r[2 * q + 1] = yi[k * ld + q] * scale; }
    }
    return;
  }
  if (dist == 2 && re == im + 1) {
    for (long k = 0; k < n; ++k) {
      T *r = im + k * stride;
#pragma omp simd
      for (long q = 0; q < b; ++q) { r[2 * q + 1] = yr[k * ld + q] * scale; r[2 * q] = yi[k * ld + q] * scale; }
    }
    return;
  }
  for (long q0 = 0; q0 < b; q0 += 8) {
    const long qn = b - q0 < 8 ? b - q0 : 8;
    for (long k = 0; k < n; ++k)
      for (long q = q0; q < q0 + qn; ++q) {
        re[q * dist + k * stride] = yr[k * ld + q] * scale;
        im[q * dist + k * stride] = yi[k * ld + q] * scale;
      }
  }
}

// Transposing scatter with twiddles: w[q*wld + k] = y[k*ld + q] * t[q*tld + k]
// for k < n, q < b (split arrays). Squares of W x W values are transposed in
// registers, so that both the reads of y and the writes of w are whole
// vectors; the edges go element by element.
template <class T>
void tscatter(long n, long b, long ld, const T *__restrict yr, const T *__restrict yi, T *__restrict wr,
              T *__restrict wi, long wld, const T *__restrict tr, const T *__restrict ti, long tld) {
  constexpr int W = kVBytes / static_cast<int>(sizeof(T));
  using V = typename Vec<T, W>::type;
  const long nv = n / W * W, bv = b / W * W;
  for (long q0 = 0; q0 < bv; q0 += W)
    for (long k0 = 0; k0 < nv; k0 += W) {
      V ar[W], ai[W];
#pragma clang loop unroll(full)
      for (int i = 0; i < W; ++i) {
        ar[i] = vload<V>(yr + (k0 + i) * ld + q0);
        ai[i] = vload<V>(yi + (k0 + i) * ld + q0);
      }
      transpose<W, 1>(ar);
      transpose<W, 1>(ai);
#pragma clang loop unroll(full)
      for (int i = 0; i < W; ++i) {
        const long t = (q0 + i) * tld + k0, o = (q0 + i) * wld + k0;
        const V cr = vload<V>(tr + t), ci = vload<V>(ti + t);
        vstore(wr + o, ar[i] * cr - ai[i] * ci);
        vstore(wi + o, ar[i] * ci + ai[i] * cr);
      }
    }
  for (long q = 0; q < b; ++q) {
    const long k1 = q < bv ? nv : 0;
    for (long k = k1; k < n; ++k) {
      const T a = yr[k * ld + q], c = yi[k * ld + q], cr = tr[q * tld + k], ci = ti[q * tld + k];
      wr[q * wld + k] = a * cr - c * ci;
      wi[q * wld + k] = a * ci + c * cr;
    }
  }
}

// X_k = E_k + u_k O_k with E_k = (Z_k + conj Z_{h-k})/2, O_k = (Z_k - conj Z_{h-k})/(2i),
// for k = 0 .. h-1 (Z_h = Z_0 at index h, so that the loop runs over whole
// vectors with no remainder for h a power of two).
template <int OM, class T>
NXL_AI void r2c_one(long h, const T *__restrict zr, const T *__restrict zi, const T *__restrict ur,
                    const T *__restrict ui, T *re, T *im, T half) {
#pragma omp simd
  for (long k = 0; k < h; ++k) {
    const T ar = zr[k], ai = zi[k], br = zr[h - k], bi = zi[h - k];
    const T er = ar + br, ei = ai - bi, or_ = ai + bi, oi = br - ar;
    const T wr = ur[k], wi = ui[k];
    st<OM>(re, im, k, (er + (wr * or_ - wi * oi)) * half, (ei + (wr * oi + wi * or_)) * half);
  }
}

template <class T>
void r2c_post(long h, long s0, T *zr, T *zi, const T *__restrict ur, const T *__restrict ui, T *re, T *im,
              long stride, long dist, T scale) {
  const T half = T(0.5) * scale;
  if (s0 == 1 && h > 1 && stride == 2 && (im == re + 1 || re == im + 1)) {
    const T z0r = zr[0], z0i = zi[0];
    zr[h] = z0r;
    zi[h] = z0i;
    if (im == re + 1) r2c_one<1>(h, zr, zi, ur, ui, re, im, half);
    else r2c_one<2>(h, zr, zi, ur, ui, im, re, half);
    re[0] = (z0r + z0i) * scale; im[0] = T(0);
    re[2 * h] = (z0r - z0i) * scale; im[2 * h] = T(0);
    return;
  }
  for (long k = 0; k <= h; ++k) {
    const long k1 = k == h ? 0 : k, k2 = k == 0 ? 0 : h - k;
    const T wr = ur[k], wi = ui[k];
    const T *ar = zr + k1 * s0, *ai = zi + k1 * s0, *br = zr + k2 * s0, *bi = zi + k2 * s0;
    T *r = re + k * stride, *i = im + k * stride;
#pragma omp simd
    for (long q = 0; q < s0; ++q) {
      const T er = ar[q] + br[q], ei = ai[q] - bi[q];
      // O * 2 = (Z_k - conj Z_{h-k}) / i = (ai + bi) - i (ar - br)
      const T or_ = ai[q] + bi[q], oi = br[q] - ar[q];
      r[q * dist] = (er + (wr * or_ - wi * oi)) * half;
      i[q * dist] = (ei + (wr * oi + wi * or_)) * half;
    }
  }
}

// The same in place on interleaved values: Z_k (k < h) at z[2k], z[2k+1]
// become X_k (k <= h; z holds h + 1 pairs). Step k computes X_k and X_{h-k}
// from Z_k and Z_{h-k}, so the steps touch disjoint pairs.
template <class T> void r2c_post_ip(long h, T *z, const T *__restrict ur, const T *__restrict ui, T scale) {
  const T half = T(0.5) * scale;
  const T z0r = z[0], z0i = z[1];
  const long m = h / 2;
#pragma omp simd
  for (long k = 1; k <= m; ++k) {
    const long j = h - k;
    const T ar = z[2 * k], ai = z[2 * k + 1], br = z[2 * j], bi = z[2 * j + 1];
    const T er = ar + br, ei = ai - bi, or_ = ai + bi, oi = br - ar;
    const T ukr = ur[k], uki = ui[k];
    const T xkr = (er + (ukr * or_ - uki * oi)) * half, xki = (ei + (ukr * oi + uki * or_)) * half;
    // X_{h-k}: the roles of Z_k and Z_{h-k} exchange (E' = conj E and
    // 2i O' = conj(2i O)), and u_{h-k} = -conj u_k.
    const T xjr = (er + (uki * oi - ukr * or_)) * half, xji = ((ukr * oi + uki * or_) - ei) * half;
    z[2 * k] = xkr;
    z[2 * k + 1] = xki;
    z[2 * j] = xjr;
    z[2 * j + 1] = xji;
  }
  z[0] = (z0r + z0i) * scale;
  z[1] = T(0);
  z[2 * h] = (z0r - z0i) * scale;
  z[2 * h + 1] = T(0);
}

template <int IM, class T>
NXL_AI void c2r_one(long h, const T *re, const T *im, const T *__restrict ur, const T *__restrict ui,
                    T *__restrict zr, T *__restrict zi) {
#pragma omp simd
  for (long k = 1; k < h; ++k) {
    const T xr = ld_re<IM>(re, im, k), xi = ld_im<IM>(re, im, k);
    const T yr = ld_re<IM>(re, im, h - k), yi = -ld_im<IM>(re, im, h - k);
    const T wr = ur[k], wi = -ui[k];
    const T sr = xr + yr, si = xi + yi, dr = xr - yr, di = xi - yi;
    zr[k] = sr - (wr * di + wi * dr);
    zi[k] = si + (wr * dr - wi * di);
  }
}

template <class T>
void c2r_pre(long h, long s0, const T *re, const T *im, long stride, long dist, const T *__restrict ur,
             const T *__restrict ui, T *__restrict zr, T *__restrict zi) {
  if (s0 == 1 && h > 1 && stride == 2 && (im == re + 1 || re == im + 1)) {
    if (im == re + 1) c2r_one<1>(h, re, im, ur, ui, zr, zi);
    else c2r_one<2>(h, im, re, ur, ui, zr, zi);
    // k = 0: X_0 and X_h real.
    const T x0 = re[0], xh = re[2 * h];
    zr[0] = x0 + xh;
    zi[0] = x0 - xh;
    return;
  }
  for (long k = 0; k < h; ++k) {
    const long k2 = h - k;
    const T wr = ur[k], wi = -ui[k];
    const bool edge = k == 0;
    const T *ar = re + k * stride, *ai = im + k * stride, *br = re + k2 * stride, *bi = im + k2 * stride;
#pragma omp simd
    for (long q = 0; q < s0; ++q) {
      const T xr = ar[q * dist], xi = edge ? T(0) : ai[q * dist];
      const T yr = br[q * dist], yi = edge ? T(0) : -bi[q * dist];  // conj X_{h-k}
      const T sr = xr + yr, si = xi + yi, dr = xr - yr, di = xi - yi;
      // i * w * d = i (wr dr - wi di) - (wr di + wi dr)
      zr[k * s0 + q] = sr - (wr * di + wi * dr);
      zi[k * s0 + q] = si + (wr * dr - wi * di);
    }
  }
}

template <class T> void scale(long n, long b, T *p, long stride, long dist, T s) {
  for (long q = 0; q < b; ++q) {
    T *x = p + q * dist;
    if (stride == 1) {
#pragma omp simd
      for (long j = 0; j < n; ++j) x[j] *= s;
    } else {
      for (long j = 0; j < n; ++j) x[j * stride] *= s;
    }
  }
}

// ---- Whole short transforms in registers ------------------------------------
//
// n = W*M points as M rows of W: point p + j*M (p < M, j < W). Chunks of W
// rows p0..p0+W-1 are loaded as W vectors (vector j = points p0 + j*M ..),
// take a W-point butterfly across the vectors, the twiddles w_n^(p k), and a
// W x W transpose, after which vector p holds y[W*p + k], k < W. The M
// vectors then take an M-point butterfly across them: vector k2 holds
// X[W*k2 + k], k < W, stored as one vector (or two, interleaved).

// Vector k of a[0..Count) to element W*k, scaled when Scaled.
template <int OM, int W, int Count, bool Scaled, class V, class T>
NXL_AI void store_rows(T *yr, T *yi, const V *ar, const V *ai, T scale) {
#pragma clang loop unroll(full)
  for (int k = 0; k < Count; ++k) {
    V a = ar[k], b = ai[k];
    if constexpr (Scaled) {
      a = a * scale;
      b = b * scale;
    }
    vst<OM, W>(yr, yi, W * k, a, b);
  }
}

template <int N, int W, int IM, int OM, bool Scaled, class T>
NXL_AI void small_one(const T *xr, const T *xi, T *yr, T *yi, const T *__restrict twr, const T *__restrict twi,
                      T scale) {
  using V = typename Vec<T, W>::type;
  constexpr int M = N / W;
  V br[M], bi[M];
#pragma clang loop unroll(full)
  for (int p0 = 0; p0 < M; p0 += W) {
    V ar[W], ai[W];
    first_chunk<W, IM>(xr, xi, p0, M, twr, twi, ar, ai);
#pragma clang loop unroll(full)
    for (int q = 0; q < W; ++q) {
      br[p0 + q] = ar[q];
      bi[p0 + q] = ai[q];
    }
  }
  Bfly<M, V>::run(br, bi);
  store_rows<OM, W, M, Scaled>(yr, yi, br, bi, scale);
}


// The same for n = W*W/2 points (W the code path's full vector length) in
// n/W whole vectors, vector j = points W*j .. W*j + W-1, taken as the two
// halves of H = W/2 lanes of the (n/H) x H scheme above: row p of the
// M = 2H rows is the half p / H of vector p % H. The H-point butterflies
// across the vectors and the twiddles ([k-1][p] layout, k < H, p < M) run on
// whole vectors, the H x H transposes within each half; then the M-point
// butterfly splits as 2 x H: the sum and difference of the two halves of each
// vector (the latter turned by w_M^q), and H-point butterflies across the
// vectors, after which vector k holds X[W*k .. W*k + W-1].
template <class V, std::size_t... I> NXL_AI V swap_halves(V a, std::index_sequence<I...>) {
  return __builtin_shufflevector(a, a, ((I + sizeof...(I) / 2) % sizeof...(I))...);
}
template <class V, std::size_t... I> NXL_AI V low_high(V a, V b, std::index_sequence<I...>) {
  return __builtin_shufflevector(a, b, (I < sizeof...(I) / 2 ? I : sizeof...(I) + I)...);
}
template <int H, int Q, class V> NXL_AI void halves_step(V *ar, V *ai) {
  if constexpr (Q < H) {
    constexpr int W = 2 * H;
    const V tr = swap_halves(ar[Q], std::make_index_sequence<W>{}),
            ti = swap_halves(ai[Q], std::make_index_sequence<W>{});
    const V sr = ar[Q] + tr, si = ai[Q] + ti;  // low half: lo + hi
    V dr = tr - ar[Q], di = ti - ai[Q];        // high half: lo - hi
    rot<2 * H, Q>(dr, di);
    ar[Q] = low_high(sr, dr, std::make_index_sequence<W>{});
    ai[Q] = low_high(si, di, std::make_index_sequence<W>{});
    halves_step<H, Q + 1>(ar, ai);
  }
}

template <int N, int W, int IM, int OM, bool Scaled, class T>
NXL_AI void small_half_one(const T *xr, const T *xi, T *yr, T *yi, const T *__restrict twr,
                           const T *__restrict twi, T scale) {
  using V = typename Vec<T, W>::type;
  constexpr int H = W / 2, M = 2 * H;
  static_assert(N == W * H, "n = W*W/2 points");
  V ar[H], ai[H];
  first_chunk<W, IM, H>(xr, xi, 0, M, twr, twi, ar, ai);
  halves_step<H, 0>(ar, ai);
  Bfly<H, V>::run(ar, ai);
  store_rows<OM, W, H, Scaled>(yr, yi, ar, ai, scale);
}

// hm transforms through either scheme (Half: the whole-vector one), the
// scaling compiled out when the scale is 1.
template <int N, int W, int IM, int OM, bool Half, class T>
void small_fft(long hm, const T *xr, const T *xi, long xd, T *yr, T *yi, long yd, const T *twr, const T *twi,
               T scale) {
  auto run = [&](auto scaled) {
    constexpr bool S = decltype(scaled)::value;
    for (long t = 0; t < hm; ++t) {
      if constexpr (Half)
        small_half_one<N, W, IM, OM, S>(xr + t * xd, xi + t * xd, yr + t * yd, yi + t * yd, twr, twi, scale);
      else
        small_one<N, W, IM, OM, S>(xr + t * xd, xi + t * xd, yr + t * yd, yi + t * yd, twr, twi, scale);
    }
  };
  if (scale == T(1)) run(std::false_type{});
  else run(std::true_type{});
}

// Vector width of the in-register transform of 2^e points: the widest power
// of two W with W*W <= n that the code path's vectors hold, when the n/W
// vectors of each part do not overflow the registers by too much: n/W <= 32
// with the 32 registers of AVX-512 (the M-point butterfly, 4 x 8, spills a
// little and still beats three passes through memory), n/W <= 16 with 16
// registers (longer ones lose to the passes); 0 when there is none.
template <class T> constexpr int small_width(int e) {
  const long n = 1L << e;
  constexpr long max_rows = kVBytes == 64 ? 32 : 16;
  int w = kVBytes / static_cast<int>(sizeof(T));
  while (w > 2 && static_cast<long>(w) * w > n) w /= 2;
  if (static_cast<long>(w) * w > n || n / w > max_rows) return 0;
  return w;
}

template <int E, class T> constexpr void fill_small(KernelTable<T> &t) {
  constexpr int W = small_width<T>(E);
  if constexpr (W > 0) {
    constexpr int N = 1 << E;
    constexpr int WF = kVBytes / static_cast<int>(sizeof(T));
    // W*W/2 points in whole vectors rather than 2W half vectors.
    constexpr bool Half = kVBytes == 64 && 2 * W == WF && N == W * WF;
    constexpr int WK = Half ? WF : W;
    t.small_w[E] = W;
    t.small[E][dft::kIO00] = small_fft<N, WK, 0, 0, Half, T>;
    t.small[E][dft::kIO11] = small_fft<N, WK, 1, 1, Half, T>;
    t.small[E][dft::kIO22] = small_fft<N, WK, 2, 2, Half, T>;
    t.small[E][dft::kIO10] = small_fft<N, WK, 1, 0, Half, T>;
    t.small[E][dft::kIO02] = small_fft<N, WK, 0, 2, Half, T>;
  }
  if constexpr (E < dft::kSmallMaxLog) fill_small<E + 1, T>(t);
}

template <int R, class T> constexpr void fill_radix(KernelTable<T> &t, int slot) {
  t.pass[slot][0] = pass_q<R, 0, 0, T>;
  t.pass[slot][1] = pass_q<R, 0, 1, T>;
  t.pass[slot][2] = pass_q<R, 0, 2, T>;
  t.pass4[slot][0] = pass_q<R, 4, 0, T>;
  t.pass4[slot][1] = pass_q<R, 4, 1, T>;
  t.pass4[slot][2] = pass_q<R, 4, 2, T>;
  t.pass8[slot][0] = pass_q<R, 8, 0, T>;
  t.pass8[slot][1] = pass_q<R, 8, 1, T>;
  t.pass8[slot][2] = pass_q<R, 8, 2, T>;
  t.passqv[slot][0] = pass_qv<R, 0, T>;
  t.passqv[slot][1] = pass_qv<R, 1, T>;
  t.passqv[slot][2] = pass_qv<R, 2, T>;
  constexpr int H = kVBytes / static_cast<int>(sizeof(T)) / 2;
  t.passqh[slot][0] = pass_qv<R, 0, T, H>;
  t.passqh[slot][1] = pass_qv<R, 1, T, H>;
  t.passqh[slot][2] = pass_qv<R, 2, T, H>;
  t.pass1[slot][0] = pass_p<R, 0, T>;
  t.pass1[slot][1] = pass_p<R, 1, T>;
  t.pass1[slot][2] = pass_p<R, 2, T>;
}

template <class T> constexpr KernelTable<T> make_table() {
  KernelTable<T> t{};
  fill_radix<2, T>(t, dft::kR2);
  fill_radix<3, T>(t, dft::kR3);
  fill_radix<4, T>(t, dft::kR4);
  fill_radix<5, T>(t, dft::kR5);
  fill_radix<7, T>(t, dft::kR7);
  fill_radix<8, T>(t, dft::kR8);
  fill_radix<11, T>(t, dft::kR11);
  fill_radix<13, T>(t, dft::kR13);
  fill_radix<16, T>(t, dft::kR16);
  fill_radix<9, T>(t, dft::kR9);
  t.gen = gen_pass<T>;
  fill_small<3, T>(t);
  t.lanes = kVBytes / static_cast<int>(sizeof(T));
  t.passv[0] = pass_v<0, T>;
  t.passv[1] = pass_v<1, T>;
  t.passv[2] = pass_v<2, T>;
  t.bmul[0] = bmul<1, 1, T>;
  t.bmul[1] = bmul<2, 1, T>;
  t.bmul[2] = bmul<1, 2, T>;
  t.bmul[3] = bmul<2, 2, T>;
  t.gather = gather<T>;
  t.scatter = scatter<T>;
  t.tscatter = tscatter<T>;
  t.r2c_post = r2c_post<T>;
  t.r2c_post_ip = r2c_post_ip<T>;
  t.c2r_pre = c2r_pre<T>;
  t.scale = scale<T>;
  return t;
}

constexpr KernelTable<double> kTableD = make_table<double>();
constexpr KernelTable<float> kTableF = make_table<float>();

}  // namespace
}  // namespace NXL_CP_NS
}  // namespace nxl

extern "C" const void *NXL_KERNEL(nxl_dft_, _kernels_d)(void) { return &nxl::NXL_CP_NS::kTableD; }
extern "C" const void *NXL_KERNEL(nxl_dft_, _kernels_s)(void) { return &nxl::NXL_CP_NS::kTableF; }
