// Level-2 building blocks shared by the kernels of every code path.
//
// Three column primitives carry all the arithmetic on matrix columns:
//   axpy_cols   y += A t                 (column sweeps, blocked over 4 columns)
//   dot_cols    out = op(A)^T x          (blocked dot products, lane accumulators)
//   fused_cols  y += A t and out = op(A)^T x in one pass over A
// Complex columns are handled as arrays of reals (re, im interleaved), so the
// same lane loops vectorise for the four precisions. Every element of a result
// is accumulated in an order fixed by the shape and the build's lane count
// (the reproducible build has a single build, hence a single order).
#ifndef NXL_BLAS_LEVEL2_CORE_H
#define NXL_BLAS_LEVEL2_CORE_H

#include "service/scalar.h"

namespace nxl {
inline namespace NXL_CP_NS {
namespace l2 {

#if defined(NXL_CP) && NXL_CP >= 6 && NXL_CP < 100
inline constexpr int kVecBytes = 64;
#elif defined(NXL_CP) && NXL_CP >= 4 && NXL_CP < 100
inline constexpr int kVecBytes = 32;
#else
inline constexpr int kVecBytes = 16;
#endif

template <bool C, class T>
inline T opc(T a) {
  if constexpr (C) return nxl::conj(a);
  else return a;
}

// Sum of the lanes of an accumulator by halving, down to `keep` lanes.
template <class R, int L>
inline void fold_lanes(R (&s)[L], int keep) {
  for (int w = L / 2; w >= keep; w /= 2)
    for (int k = 0; k < w; ++k) s[k] = s[k] + s[k + w];
}

// One pass over `len` reals of NC columns a[c] (unit stride). With Axpy,
// y[p] += a[c][p] * t[c] (complex product when Cx); with Dot, the lane
// accumulators P (a*x) and, for complex, Q (a * swapped x) collect the dot
// products. Lanes of the tail continue the parity of the main loop.
template <class R, int NC, bool Cx, bool Axpy, bool Dot>
struct ColBlock {
  static constexpr int L = kVecBytes / int(sizeof(R)) < 4 ? 4 : kVecBytes / int(sizeof(R));
  R P[NC][L];
  R Q[NC][L];

  __attribute__((always_inline)) inline void step(const R *const *a, const R *tr, const R *ti,
                                                  R *__restrict y, const R *__restrict x,
                                                  idx base, int lane, idx p) {
    (void)base;
    R yv = Axpy ? y[p] : R(0);
    R xv = Dot ? x[p] : R(0);
    R xs = (Dot && Cx) ? x[p ^ 1] : R(0);
    for (int c = 0; c < NC; ++c) {
      R av = a[c][p];
      if constexpr (Axpy) {
        yv = yv + av * tr[c];
        if constexpr (Cx) yv = yv + a[c][p ^ 1] * ((p & 1) ? ti[c] : -ti[c]);
      }
      if constexpr (Dot) {
        P[c][lane] = P[c][lane] + av * xv;
        if constexpr (Cx) Q[c][lane] = Q[c][lane] + av * xs;
      }
    }
    if constexpr (Axpy) y[p] = yv;
  }

  __attribute__((always_inline)) inline void run(idx len, const R *const *a, const R *tr,
                                                 const R *ti, R *__restrict y,
                                                 const R *__restrict x) {
    for (int c = 0; c < NC; ++c)
      for (int k = 0; k < L; ++k) P[c][k] = Q[c][k] = R(0);
    idx b = 0;
    for (; b + L <= len; b += L)
      for (int k = 0; k < L; ++k) step(a, tr, ti, y, x, b, k, b + k);
    for (idx p = b; p < len; ++p) step(a, tr, ti, y, x, b, int(p - b), p);
  }
};

// Combines the lane accumulators of column c into the dot product.
template <class T, bool Conj, class Blk>
inline T finish_dot(Blk &blk, int c) {
  using R = real_t<T>;
  if constexpr (is_complex_v<T>) {
    fold_lanes(blk.P[c], 2);
    fold_lanes(blk.Q[c], 2);
    R pe = blk.P[c][0], po = blk.P[c][1], qe = blk.Q[c][0], qo = blk.Q[c][1];
    if constexpr (Conj) return T(pe + po, qe - qo);
    else return T(pe - po, qe + qo);
  } else {
    fold_lanes(blk.P[c], 1);
    return blk.P[c][0];
  }
}

// y += A t over NC columns, unit stride: a plain column sweep that the
// compiler vectorises (complex: re/im pairs).
template <class T, int NC>
inline void axpy_unit(idx m, const T *a, idx lda, const T *t, T *__restrict y) {
  using R = real_t<T>;
  const R *ac[NC];
  R tr[NC], ti[NC];
  for (int c = 0; c < NC; ++c) {
    ac[c] = reinterpret_cast<const R *>(a + c * lda);
    tr[c] = re(t[c]);
    ti[c] = im(t[c]);
  }
  R *__restrict yr = reinterpret_cast<R *>(y);
  if constexpr (is_complex_v<T>) {
    for (idx i = 0; i < m; ++i) {
      R y0 = yr[2 * i], y1 = yr[2 * i + 1];
      for (int c = 0; c < NC; ++c) {
        const R a0 = ac[c][2 * i], a1 = ac[c][2 * i + 1];
        y0 = y0 + a0 * tr[c] - a1 * ti[c];
        y1 = y1 + a0 * ti[c] + a1 * tr[c];
      }
      yr[2 * i] = y0;
      yr[2 * i + 1] = y1;
    }
  } else {
    for (idx i = 0; i < m; ++i) {
      R v = yr[i];
      for (int c = 0; c < NC; ++c) v = v + ac[c][i] * tr[c];
      yr[i] = v;
    }
  }
}

// NC columns of A starting at a (leading dimension lda), unit-stride vectors.
template <class T, int NC, bool Conj, bool Axpy, bool Dot>
inline void cols_unit(idx m, const T *a, idx lda, const T *t, T *y, const T *x, T *out) {
  if constexpr (Axpy && !Dot) {
    axpy_unit<T, NC>(m, a, lda, t, y);
    return;
  }
  if constexpr (Axpy && Dot && is_complex_v<T>) {
    // Complex columns: the dot products, then the sweep over the same
    // columns while they are still in cache; one fused loop needs more
    // shuffles per element than the two separate ones.
    cols_unit<T, NC, Conj, false, true>(m, a, lda, t, y, x, out);
    axpy_unit<T, NC>(m, a, lda, t, y);
    return;
  }
  using R = real_t<T>;
  constexpr bool Cx = is_complex_v<T>;
  constexpr int W = Cx ? 2 : 1;
  const R *ac[NC];
  R tr[NC], ti[NC];
  for (int c = 0; c < NC; ++c) {
    ac[c] = reinterpret_cast<const R *>(a + c * lda);
    if constexpr (Axpy) {
      tr[c] = re(t[c]);
      ti[c] = im(t[c]);
    } else {
      tr[c] = ti[c] = R(0);
    }
  }
  ColBlock<R, NC, Cx, Axpy, Dot> blk;
  blk.run(m * W, ac, tr, ti, reinterpret_cast<R *>(y), reinterpret_cast<const R *>(x));
  if constexpr (Dot)
    for (int c = 0; c < NC; ++c) out[c] = finish_dot<T, Conj>(blk, c);
}

// Strided vectors: one column at a time, single accumulator.
template <class T, bool Conj, bool Axpy, bool Dot>
inline void cols_strided(idx m, idx n, const T *a, idx lda, const T *t, T *y, idx incy,
                         const T *x, idx incx, T *out) {
  for (idx j = 0; j < n; ++j) {
    const T *col = a + j * lda;
    T s = T(0);
    T tj = Axpy ? t[j] : T(0);
    for (idx i = 0; i < m; ++i) {
      if constexpr (Axpy) y[i * incy] = y[i * incy] + mul(col[i], tj);
      if constexpr (Dot) s = s + mul(opc<Conj>(col[i]), x[i * incx]);
    }
    if constexpr (Dot) out[j] = s;
  }
}

template <class T, bool Conj, bool Axpy, bool Dot>
inline void cols(idx m, idx n, const T *a, idx lda, const T *t, T *y, idx incy, const T *x,
                 idx incx, T *out) {
  if (m <= 0 || n <= 0) {
    if constexpr (Dot)
      for (idx j = 0; j < n; ++j) out[j] = T(0);
    return;
  }
  if ((Axpy && incy != 1) || (Dot && incx != 1)) {
    cols_strided<T, Conj, Axpy, Dot>(m, n, a, lda, t, y, incy, x, incx, out);
    return;
  }
  idx j = 0;
  for (; j + 4 <= n; j += 4)
    cols_unit<T, 4, Conj, Axpy, Dot>(m, a + j * lda, lda, Axpy ? t + j : t, y, x, Dot ? out + j : out);
  const T *tj = Axpy ? t + j : t;
  T *oj = Dot ? out + j : out;
  switch (n - j) {
    case 3: cols_unit<T, 3, Conj, Axpy, Dot>(m, a + j * lda, lda, tj, y, x, oj); break;
    case 2: cols_unit<T, 2, Conj, Axpy, Dot>(m, a + j * lda, lda, tj, y, x, oj); break;
    case 1: cols_unit<T, 1, Conj, Axpy, Dot>(m, a + j * lda, lda, tj, y, x, oj); break;
    default: break;
  }
}

// y[i*incy] += sum_j A(i,j) t[j]  (t contiguous, already scaled).
template <class T>
inline void axpy_cols(idx m, idx n, const T *a, idx lda, const T *t, T *y, idx incy) {
  cols<T, false, true, false>(m, n, a, lda, t, y, incy, nullptr, 1, nullptr);
}

// out[j] = sum_i op(A(i,j)) x[i*incx].
template <class T, bool Conj>
inline void dot_cols(idx m, idx n, const T *a, idx lda, const T *x, idx incx, T *out) {
  cols<T, Conj, false, true>(m, n, a, lda, nullptr, nullptr, 1, x, incx, out);
}

// Both of the above in one pass over A.
template <class T, bool Conj>
inline void fused_cols(idx m, idx n, const T *a, idx lda, const T *t, T *y, idx incy,
                       const T *x, idx incx, T *out) {
  cols<T, Conj, true, true>(m, n, a, lda, t, y, incy, x, incx, out);
}

// y[i*incy] += x[i*incx] * t (+ w[i*incw] * u): the column update of the
// rank-1 and rank-2 routines.
template <class T, bool Two>
inline void axpy_vec(idx m, const T *x, idx incx, T t, const T *w, idx incw, T u, T *y) {
  if (incx == 1 && (!Two || incw == 1)) {
    if constexpr (is_complex_v<T>) {
      using R = real_t<T>;
      const R *xr = reinterpret_cast<const R *>(x);
      const R *wr = reinterpret_cast<const R *>(w);
      R *yr = reinterpret_cast<R *>(y);
      const R tr = t.real(), ti = t.imag(), ur = u.real(), ui = u.imag();
      for (idx i = 0; i < m; ++i) {
        R x0 = xr[2 * i], x1 = xr[2 * i + 1];
        R y0 = yr[2 * i] + x0 * tr - x1 * ti;
        R y1 = yr[2 * i + 1] + x0 * ti + x1 * tr;
        if constexpr (Two) {
          R w0 = wr[2 * i], w1 = wr[2 * i + 1];
          y0 = y0 + w0 * ur - w1 * ui;
          y1 = y1 + w0 * ui + w1 * ur;
        }
        yr[2 * i] = y0;
        yr[2 * i + 1] = y1;
      }
    } else {
      for (idx i = 0; i < m; ++i) {
        T v = y[i] + x[i] * t;
        if constexpr (Two) v = v + w[i] * u;
        y[i] = v;
      }
    }
    return;
  }
  for (idx i = 0; i < m; ++i) {
    T v = y[i] + mul(x[i * incx], t);
    if constexpr (Two) v = v + mul(w[i * incw], u);
    y[i] = v;
  }
}

// y := beta*y over n elements; beta = 0 writes zeros without reading y.
template <class T>
inline void scale_vec(idx n, T beta, T *y, idx incy) {
  if (is_one(beta)) return;
  if (is_zero(beta)) {
    for (idx i = 0; i < n; ++i) y[i * incy] = T(0);
  } else {
    for (idx i = 0; i < n; ++i) y[i * incy] = mul(beta, y[i * incy]);
  }
}

}  // namespace l2
}  // namespace NXL_CP_NS
}  // namespace nxl

#endif  // NXL_BLAS_LEVEL2_CORE_H
