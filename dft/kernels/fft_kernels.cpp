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
#include "dft/engine/kernel_table.h"
#include "service/codepath.h"

// Butterflies must be inlined into the vectorised loops.
#define NXL_AI inline __attribute__((always_inline))

namespace nxl {
namespace NXL_CP_NS {
namespace {

using dft::KernelTable;

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
// cos and sin of 2 pi e / 16 (the eighth and sixteenth roots).
constexpr double kC16[16] = {1.0, 0.9238795325112867561281832, 0.7071067811865475244008444,
                             0.38268343236508977172846, 0.0, -0.38268343236508977172846,
                             -0.7071067811865475244008444, -0.9238795325112867561281832, -1.0,
                             -0.9238795325112867561281832, -0.7071067811865475244008444,
                             -0.38268343236508977172846, 0.0, 0.38268343236508977172846,
                             0.7071067811865475244008444, 0.9238795325112867561281832};

// (xr, xi) *= exp(-2 pi i E / N), with the rotations by multiples of pi/4 exact
// or cheap.
template <int N, int E, class T> NXL_AI void rot(T &xr, T &xi) {
  static_assert(N == 4 || N == 8 || N == 16, "rotations by 2^k-th roots only");
  constexpr int e16 = (E % N) * (16 / N);  // in sixteenths of a turn
  if constexpr (e16 == 0) {
  } else if constexpr (e16 == 4) {  // -i
    T t = xr; xr = xi; xi = -t;
  } else if constexpr (e16 == 8) {
    xr = -xr; xi = -xi;
  } else if constexpr (e16 == 12) {  // +i
    T t = xr; xr = -xi; xi = t;
  } else if constexpr (e16 == 2 || e16 == 6 || e16 == 10 || e16 == 14) {
    // (1 - i)/sqrt2 times a power of -i
    const T h = T(0.7071067811865475244008444);
    T a = (xr + xi) * h, b = (xi - xr) * h;  // times (1 - i)/sqrt2
    if constexpr (e16 == 2) { xr = a; xi = b; }
    else if constexpr (e16 == 6) { xr = b; xi = -a; }
    else if constexpr (e16 == 10) { xr = -a; xi = -b; }
    else { xr = -b; xi = a; }
  } else {
    const T c = T(kC16[e16]), s = T(kC16[(e16 + 12) % 16]);  // cos, sin of 2 pi e16/16
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
      T er = ar[0], ei = ai[0], fr = T(0), fi = T(0);
#pragma clang loop unroll(full)
      for (int j = 1; j <= H; ++j) {
        const T c = T(Roots<R>::c[(j * k) % R]), s = T(Roots<R>::s[(j * k) % R]);
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

// Composite R = R1 * R2 (R1, R2 powers of two): index j = j1 + R1 j2,
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

// Stockham pass, q innermost. The p = 0 column has unit twiddles.
template <int R, int XS, int YS, class T>
void pass_q(long m, long s, const T *__restrict twr, const T *__restrict twi, const T *__restrict xr,
            const T *__restrict xi, T *__restrict yr, T *__restrict yi) {
  const long xj = s * m;
  for (long p = 0; p < m; ++p) {
    const T *xr0 = xr + XS * s * p, *xi0 = xi + XS * s * p;
    T *yr0 = yr + YS * s * R * p, *yi0 = yi + YS * s * R * p;
    if (p == 0) {
#pragma omp simd
      for (long q = 0; q < s; ++q) {
        T ar[R], ai[R];
#pragma clang loop unroll(full)
        for (int j = 0; j < R; ++j) { ar[j] = xr0[XS * (q + j * xj)]; ai[j] = xi0[XS * (q + j * xj)]; }
        Bfly<R, T>::run(ar, ai);
#pragma clang loop unroll(full)
        for (int k = 0; k < R; ++k) { yr0[YS * (q + k * s)] = ar[k]; yi0[YS * (q + k * s)] = ai[k]; }
      }
      continue;
    }
    T wr[R], wi[R];
#pragma clang loop unroll(full)
    for (int k = 1; k < R; ++k) { wr[k] = twr[p * (R - 1) + k - 1]; wi[k] = twi[p * (R - 1) + k - 1]; }
#pragma omp simd
    for (long q = 0; q < s; ++q) {
      T ar[R], ai[R];
#pragma clang loop unroll(full)
      for (int j = 0; j < R; ++j) { ar[j] = xr0[XS * (q + j * xj)]; ai[j] = xi0[XS * (q + j * xj)]; }
      Bfly<R, T>::run(ar, ai);
      yr0[YS * q] = ar[0]; yi0[YS * q] = ai[0];
#pragma clang loop unroll(full)
      for (int k = 1; k < R; ++k) {
        yr0[YS * (q + k * s)] = ar[k] * wr[k] - ai[k] * wi[k];
        yi0[YS * (q + k * s)] = ar[k] * wi[k] + ai[k] * wr[k];
      }
    }
  }
}

// Stockham pass with s == 1, p innermost; twiddles in [k-1][p] layout.
template <int R, int XS, int YS, class T>
void pass_p(long m, long, const T *__restrict twr, const T *__restrict twi, const T *__restrict xr,
            const T *__restrict xi, T *__restrict yr, T *__restrict yi) {
#pragma omp simd
  for (long p = 0; p < m; ++p) {
    T ar[R], ai[R];
#pragma clang loop unroll(full)
    for (int j = 0; j < R; ++j) { ar[j] = xr[XS * (p + j * m)]; ai[j] = xi[XS * (p + j * m)]; }
    Bfly<R, T>::run(ar, ai);
    yr[YS * R * p] = ar[0]; yi[YS * R * p] = ai[0];
#pragma clang loop unroll(full)
    for (int k = 1; k < R; ++k) {
      const T wr = twr[(k - 1) * m + p], wi = twi[(k - 1) * m + p];
      yr[YS * (R * p + k)] = ar[k] * wr - ai[k] * wi;
      yi[YS * (R * p + k)] = ar[k] * wi + ai[k] * wr;
    }
  }
}

// Generic odd radix: for each output k, y_k = sum_j a_j w_r^(jk) accumulated
// row by row (rows of s contiguous values), then the twiddle.
template <int XS, int YS, class T>
void gen_pass(long r, long m, long s, const T *__restrict twr, const T *__restrict twi,
              const T *__restrict rr, const T *__restrict ri, const T *__restrict xr,
              const T *__restrict xi, T *__restrict yr, T *__restrict yi) {
  const long xj = s * m;
  for (long p = 0; p < m; ++p) {
    const T *xr0 = xr + XS * s * p, *xi0 = xi + XS * s * p;
    for (long k = 0; k < r; ++k) {
      T *yrk = yr + YS * s * (r * p + k), *yik = yi + YS * s * (r * p + k);
#pragma omp simd
      for (long q = 0; q < s; ++q) { yrk[YS * q] = xr0[XS * q]; yik[YS * q] = xi0[XS * q]; }
      long e = 0;
      for (long j = 1; j < r; ++j) {
        e += k;
        if (e >= r) e -= r;
        const T cr = rr[e], ci = ri[e];
        const T *xrj = xr0 + XS * j * xj, *xij = xi0 + XS * j * xj;
#pragma omp simd
        for (long q = 0; q < s; ++q) {
          const T a = xrj[XS * q], b = xij[XS * q];
          yrk[YS * q] = yrk[YS * q] + (a * cr - b * ci);
          yik[YS * q] = yik[YS * q] + (a * ci + b * cr);
        }
      }
      if (p > 0 && k > 0) {
        const T wr = twr[p * (r - 1) + k - 1], wi = twi[p * (r - 1) + k - 1];
#pragma omp simd
        for (long q = 0; q < s; ++q) {
          const T a = yrk[YS * q], b = yik[YS * q];
          yrk[YS * q] = a * wr - b * wi;
          yik[YS * q] = a * wi + b * wr;
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

template <class T>
void gather(long n, long b, long ld, const T *re, const T *im, long stride, long dist, T *__restrict yr,
            T *__restrict yi) {
  if (b == 1) {
    if (stride == 2 && im == re + 1) {
#pragma omp simd
      for (long j = 0; j < n; ++j) { yr[j] = re[2 * j]; yi[j] = re[2 * j + 1]; }
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
  if (b == 1) {
    if (stride == 2 && im == re + 1) {
#pragma omp simd
      for (long k = 0; k < n; ++k) { re[2 * k] = yr[k] * scale; re[2 * k + 1] = yi[k] * scale; }
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
  for (long q0 = 0; q0 < b; q0 += 8) {
    const long qn = b - q0 < 8 ? b - q0 : 8;
    for (long k = 0; k < n; ++k)
      for (long q = q0; q < q0 + qn; ++q) {
        re[q * dist + k * stride] = yr[k * ld + q] * scale;
        im[q * dist + k * stride] = yi[k * ld + q] * scale;
      }
  }
}

// X_k = E_k + u_k O_k with E_k = (Z_k + conj Z_{h-k})/2, O_k = (Z_k - conj Z_{h-k})/(2i).
template <class T>
void r2c_post(long h, long s0, const T *__restrict zr, const T *__restrict zi, const T *__restrict ur,
              const T *__restrict ui, T *re, T *im, long stride, long dist, T scale) {
  const T half = T(0.5) * scale;
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

template <class T>
void c2r_pre(long h, long s0, const T *re, const T *im, long stride, long dist, const T *__restrict ur,
             const T *__restrict ui, T *__restrict zr, T *__restrict zi) {
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

template <int R, class T> constexpr void fill_radix(KernelTable<T> &t, int slot) {
  t.pass[slot][0] = pass_q<R, 1, 1, T>;
  t.pass[slot][1] = pass_q<R, 2, 1, T>;
  t.pass[slot][2] = pass_q<R, 1, 2, T>;
  t.pass[slot][3] = pass_q<R, 2, 2, T>;
  t.pass1[slot][0] = pass_p<R, 1, 1, T>;
  t.pass1[slot][1] = pass_p<R, 2, 1, T>;
  t.pass1[slot][2] = pass_p<R, 1, 2, T>;
  t.pass1[slot][3] = pass_p<R, 2, 2, T>;
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
  t.gen[0] = gen_pass<1, 1, T>;
  t.gen[1] = gen_pass<2, 1, T>;
  t.gen[2] = gen_pass<1, 2, T>;
  t.gen[3] = gen_pass<2, 2, T>;
  t.bmul[0] = bmul<1, 1, T>;
  t.bmul[1] = bmul<2, 1, T>;
  t.bmul[2] = bmul<1, 2, T>;
  t.bmul[3] = bmul<2, 2, T>;
  t.gather = gather<T>;
  t.scatter = scatter<T>;
  t.r2c_post = r2c_post<T>;
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
