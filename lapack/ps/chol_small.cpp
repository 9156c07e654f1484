// Cholesky kernels for one triangle without BLAS calls: the whole
// factorization for n <= 16 and the unblocked factorization of the upper or
// lower triangle below the blocked crossover. One source, compiled once per
// code path.
#include <utility>
#include "lapack/ps/simd.h"
#include "lapack/ps/small.h"
#include "lapack/ps/solve_regs.h"
#include "lapack/ps/solve_steps.h"
#include "lapack/ps/solve_vec.h"
#include "service/nxl_serv.h"

namespace nxl {
inline namespace NXL_LOCAL_NS {
namespace ps {

// A = U^H U, column by column: u(i,j) = (a(i,j) - u(0:i,i)^H u(0:i,j)) / u(i,i).
// Returns the order of the first leading minor that is not positive.
template <class T> idx potrf_upper_short(idx n, T *a, idx lda) {
  // The inner products may be summed in any order (vectorized).
#pragma clang fp reassociate(on)
  using R = real_t<T>;
  for (idx j = 0; j < n; ++j) {
    T *cj = a + j * lda;
    for (idx i = 0; i < j; ++i) {
      const T *ci = a + i * lda;
      T s = cj[i];
      for (idx k = 0; k < i; ++k) s -= mul(nxl::conj(ci[k]), cj[k]);
      cj[i] = s / re(ci[i]);
    }
    R d = re(cj[j]);
    for (idx k = 0; k < j; ++k) d -= re(cj[k]) * re(cj[k]) + im(cj[k]) * im(cj[k]);
    if (!(d > R(0))) {
      cj[j] = T(d);
      return j + 1;
    }
    cj[j] = T(std::sqrt(d));
  }
  return 0;
}

template <class T, int N> idx potrf_regs(T *buf, idx ldb);

// Runs f.template operator()<C>() with C = c, for 1 <= c <= 8.
template <class F> __attribute__((always_inline)) inline void with_count(idx c, F f) {
  switch (c) {
    case 8: f.template operator()<8>(); break;
    case 7: f.template operator()<7>(); break;
    case 6: f.template operator()<6>(); break;
    case 5: f.template operator()<5>(); break;
    case 4: f.template operator()<4>(); break;
    case 3: f.template operator()<3>(); break;
    case 2: f.template operator()<2>(); break;
    default: f.template operator()<1>(); break;
  }
}

// The rows [lo, hi) of the JB columns at p solved against the factored
// diagonal block at d (both leading dimension lda): X L11^H = A21, one
// window of rows at a time with the window's JB columns in registers,
// each column less its earlier columns times conj(l(c, q)), then scaled by
// the reciprocal of l(c, c).
template <class T, int JB> void lower_panel_solve(idx lo, idx hi, T *p, idx lda, const T *d) {
  using S = simd<T>;
  using V = typename S::V;
  using R = real_t<T>;
  constexpr idx E = S::E;
  R rinv[JB];
  for (int c = 0; c < JB; ++c) rinv[c] = R(1) / re(d[c + c * lda]);
  // NW windows from ws side by side, so that the chains of the columns'
  // dependent steps overlap; each column's sum kept in real and imaginary
  // parts (see block_update), with no lane shuffle inside it.
  auto run = [&]<int NW>(idx ws, idx l, idx top) __attribute__((always_inline)) {
    V v[NW][JB];
    for (int w = 0; w < NW; ++w)
      for (int c = 0; c < JB; ++c) v[w][c] = S::load(p + ws + w * E + c * lda);
    for (int c = 0; c < JB; ++c) {
      V ai[NW];
      for (int w = 0; w < NW; ++w) {
        ai[w] = S::splat(0);
        v[w][c] = v[w][c] * S::splat(rinv[c]);
      }
      for (int q = 0; q < c; ++q) {
        const T f = d[c + q * lda] * rinv[c];
        const V fr = S::splat(re(f)), fi = S::splat(im(f));
        for (int w = 0; w < NW; ++w) {
          v[w][c] -= v[w][q] * fr;
          if constexpr (S::cplx) ai[w] += v[w][q] * fi;
        }
      }
      // x * conj(f) = x re(f) - i x im(f).
      if constexpr (S::cplx)
        for (int w = 0; w < NW; ++w) v[w][c] += S::rot(ai[w]);
    }
    for (int w = 0; w < NW; ++w) {
      const idx wl = ws + w * E > l ? ws + w * E : l, wt = ws + (w + 1) * E < top ? ws + (w + 1) * E : top;
      for (int c = 0; c < JB; ++c) {
        T *col = p + c * lda + ws + w * E;
        if (wl == ws + w * E && wt == ws + (w + 1) * E) S::store(col, v[w][c]);
        else put(p + c * lda, ws + w * E, wl, wt, v[w][c], S::load(col));
      }
    }
  };
  for (idx top = hi; top > lo;) {
    if (top - 2 * E >= lo) {
      run.template operator()<2>(top - 2 * E, top - 2 * E, top);
      top -= 2 * E;
    } else {
      const idx ws = top - E > 0 ? top - E : 0, l = ws > lo ? ws : lo;
      run.template operator()<1>(ws, l, top);
      top = l;
    }
  }
}

// Blocked left-looking A = L L^H on vectors, for n above the register
// kernel's orders: each block of up to eight columns first takes the update
// from all columns left of it (a rank-j0 product held in vector
// accumulators); its diagonal block is then factored in registers and the
// rows below it solved against that block.
template <class T> idx potrf_lower_blocked(idx n, T *a, idx lda) {
  constexpr idx KB = 8, E = simd<T>::E, LD = KB > E ? KB : E;
  for (idx j0 = 0; j0 < n; j0 += KB) {
    const idx jb = n - j0 < KB ? n - j0 : KB, j1 = j0 + jb;
    T *blk = a + j0 * lda;
    if (j0 > 0)
      with_count(jb, [&]<int JB>() {
        panel_update<T, JB, true, true>(j0, n, blk, lda, a, lda, j0,
                                        [&](idx k, int c) { return a[j0 + c + k * lda]; });
      });
    // The diagonal block in place where whole vectors of rows from its
    // first row lie inside the columns (the register kernel changes only
    // the block's own triangle), else through a zeroed buffer.
    idx info = 0;
    if (jb == KB && j0 + LD <= n) {
      info = potrf_regs<T, KB>(blk + j0, lda);
    } else {
      alignas(64) T buf[LD * KB];
      for (idx j = 0; j < jb; ++j)
        for (idx i = 0; i < LD; ++i) buf[i + j * LD] = i >= j && i < jb ? blk[j0 + i + j * lda] : T(0);
      with_count(jb, [&]<int JB>() { info = potrf_regs<T, JB>(buf, LD); });
      for (idx j = 0; j < jb; ++j)
        for (idx i = j; i < jb; ++i) blk[j0 + i + j * lda] = buf[i + j * LD];
    }
    // Columns done before a failure still get their rows below solved.
    const idx done = info ? info - 1 : jb;
    if (done > 0 && j1 < n)
      with_count(done, [&]<int JB>() { lower_panel_solve<T, JB>(j1, n, blk, lda, blk + j0); });
    if (info) return j0 + info;
  }
  return 0;
}

// A = L L^H, column by column (left-looking): l(j,j) from the row j of L
// already computed, then the column below it. Orders below one vector.
template <class T> idx potrf_lower_short(idx n, T *a, idx lda) {
#pragma clang fp reassociate(on)
  using R = real_t<T>;
  for (idx j = 0; j < n; ++j) {
    T *cj = a + j * lda;
    R d = re(cj[j]);
    for (idx k = 0; k < j; ++k) {
      T l = a[j + k * lda];
      d -= re(l) * re(l) + im(l) * im(l);
    }
    if (!(d > R(0))) {
      cj[j] = T(d);
      return j + 1;
    }
    // Four earlier columns per sweep over column j: one load and store of
    // column j serves four multiply-adds.
    idx k = 0;
    for (; k + 4 <= j; k += 4) {
      const T *c0 = a + k * lda, *c1 = c0 + lda, *c2 = c1 + lda, *c3 = c2 + lda;
      T f0 = nxl::conj(c0[j]), f1 = nxl::conj(c1[j]), f2 = nxl::conj(c2[j]), f3 = nxl::conj(c3[j]);
      NXL_PS_SHORT_LOOP
      for (idx i = j + 1; i < n; ++i)
        cj[i] = cj[i] - mul(c0[i], f0) - mul(c1[i], f1) - mul(c2[i], f2) - mul(c3[i], f3);
    }
    for (; k < j; ++k) {
      const T *ck = a + k * lda;
      T f = nxl::conj(ck[j]);
      NXL_PS_SHORT_LOOP
      for (idx i = j + 1; i < n; ++i) cj[i] -= mul(ck[i], f);
    }
    R r = std::sqrt(d);
    cj[j] = T(r);
    R inv = R(1) / r;
    NXL_PS_SHORT_LOOP
    for (idx i = j + 1; i < n; ++i) cj[i] *= inv;
  }
  return 0;
}

// Orders up to two vectors: the triangle (as the lower one of U^H for 'U')
// copied into a zeroed square of vectors and factored in registers,
// right-looking on unscaled columns, A - a_j a_j^H / d_j, so that each step
// waits on one division rather than a square root and a division; the
// columns are scaled by 1/sqrt(d_j) off that chain.
// One step of the register factorization: column J's pivot, the update of
// the columns right of it, then column J scaled. False when the pivot fails.
// Each column is NV vectors; column c changes only from vector c / E down.
template <class T, int N, int NV, int J>
__attribute__((always_inline)) inline bool potrf_regs_step(typename simd<T>::V (*c)[NV]) {
  using S = simd<T>;
  using R = real_t<T>;
  constexpr int E = static_cast<int>(S::E);
  const R d = c[J][J / E][(J % E) * S::per];
  if (!(d > R(0))) return false;
  // Column J over d first, so that each update's factor, an entry of
  // column J, is ready before the division is.
  const auto invd = S::splat(R(1) / d);
  typename S::V g[NV], gr[NV];
  for (int v = J / E; v < NV; ++v) {
    g[v] = c[J][v] * invd;
    gr[v] = S::rot(c[J][v]) * invd;
  }
  [&]<int... K>(std::integer_sequence<int, K...>) __attribute__((always_inline)) {
    auto one = [&](auto kk) __attribute__((always_inline)) {
      constexpr int cc = J + 1 + decltype(kk)::value;
      constexpr int lane = (cc % E) * S::per;
      T f;
      if constexpr (S::cplx) f = T(c[J][cc / E][lane], -c[J][cc / E][lane + 1]);
      else f = c[J][cc / E][lane];
      const typename S::template factor<false> ff(f);
      for (int v = cc / E; v < NV; ++v) c[cc][v] = ff.minus(c[cc][v], g[v], gr[v]);
    };
    (one(std::integral_constant<int, K>{}), ...);
  }(std::make_integer_sequence<int, N - 1 - J>{});
  const R r = std::sqrt(d);
  const auto s = S::splat(R(1) / r);
  for (int v = J / E; v < NV; ++v) c[J][v] = c[J][v] * s;
  c[J][J / E][(J % E) * S::per] = r;
  if constexpr (S::cplx) c[J][J / E][(J % E) * 2 + 1] = R(0);
  return true;
}

// The lower triangle of order N in buf (leading dimension ldb, at least the
// N rows rounded up to whole vectors readable) factored in registers.
template <class T, int N> idx potrf_regs(T *buf, idx ldb) {
  using S = simd<T>;
  using V = typename S::V;
  constexpr int E = static_cast<int>(S::E);
  constexpr int NV = (N + E - 1) / E;
  V c[N][NV], keep[N][NV];
  for (int j = 0; j < N; ++j)
    for (int v = 0; v < NV; ++v) c[j][v] = keep[j][v] = S::load(buf + j * ldb + v * E);
  idx done = 0;
  [&]<int... J>(std::integer_sequence<int, J...>) __attribute__((always_inline)) {
    (void)((potrf_regs_step<T, N, NV, J>(c) && (++done, true)) && ...);
  }(std::make_integer_sequence<int, N>{});
  const idx info = done < N ? done + 1 : 0;
  // Column j changes from its diagonal down; the rows above it, and every
  // column from a failed pivot on but that pivot, keep their bits.
  for (int j = 0; j < N; ++j) {
    const idx hi = info && j >= info ? (j == info - 1 ? j + 1 : j) : N;
    for (int v = 0; v < NV; ++v) {
      const idx lo = j > v * E ? j : v * E, top = hi < (v + 1) * E ? hi : (v + 1) * E;
      if (lo < top) put(buf + j * ldb, v * E, lo, top, c[j][v], keep[j][v]);
    }
  }
  if (info) buf[(info - 1) * (ldb + 1)] = T(re(buf[(info - 1) * (ldb + 1)]));
  return info;
}

// Orders up to two vectors (where two vectors of columns still fit the
// register file: 16 real or 8 complex elements at most).
template <class T> constexpr idx regs_limit() { return simd<T>::E <= 8 ? 2 * simd<T>::E : simd<T>::E; }

template <class T, int N = regs_limit<T>()> idx potrf_regs_n(idx n, T *buf, idx ldb) {
  if constexpr (N > 1)
    if (n < N) return potrf_regs_n<T, N - 1>(n, buf, ldb);
  return potrf_regs<T, N>(buf, ldb);
}

template <class T> idx potrf_tiny(bool upper, idx n, T *a, idx lda) {
  constexpr idx D = regs_limit<T>();
  constexpr idx E = simd<T>::E;
  // A lower triangle of whole vectors of rows is factored where it is.
  if (!upper && n == D) return potrf_regs<T, D>(a, lda);
  if (!upper && n == E) return potrf_regs<T, E>(a, lda);
  alignas(64) T buf[D * D] = {};
  for (idx j = 0; j < n; ++j)
    for (idx i = j; i < n; ++i) buf[i + j * D] = upper ? nxl::conj(a[j + i * lda]) : a[i + j * lda];
  const idx info = potrf_regs_n<T>(n, buf, D);
  // Columns past a failed pivot keep their input; the failed one gets d.
  const idx done = info ? info : n;
  for (idx j = 0; j < done; ++j)
    for (idx i = j; i < n; ++i) {
      if (j == done - 1 && info && i > j) break;
      if (upper) a[j + i * lda] = nxl::conj(buf[i + j * D]);
      else a[i + j * lda] = buf[i + j * D];
    }
  return info;
}

template <class T> idx potrf_lower(idx n, T *a, idx lda) {
  return n > regs_limit<T>() ? potrf_lower_blocked(n, a, lda) : potrf_tiny(false, n, a, lda);
}

// The upper triangle as the lower one of U^H in a contiguous buffer, where
// the columns the blocked kernel walks are contiguous: A = U^H U is
// A^H = L L^H with L = U^H. The copies cost two passes over the triangle,
// a small part of the n^3/3 work even at one vector of order.
template <class T> void upper_to_lower(idx n, const T *a, idx lda, T *b) {
  for (idx j0 = 0; j0 < n; j0 += 8)
    for (idx i = j0; i < n; ++i)
      for (idx j = j0; j < j0 + 8 && j <= i; ++j) b[i + j * n] = nxl::conj(a[j + i * lda]);
}
template <class T> void lower_to_upper(idx n, const T *b, T *a, idx lda) {
  for (idx i0 = 0; i0 < n; i0 += 8)
    for (idx j = i0; j < n; ++j)
      for (idx i = i0; i < i0 + 8 && i <= j; ++i) a[i + j * lda] = nxl::conj(b[j + i * n]);
}

template <class T> idx potrf_upper(idx n, T *a, idx lda) {
  if (n <= regs_limit<T>()) return potrf_tiny(true, n, a, lda);
  constexpr idx kStack = 64;
  alignas(64) T local[kStack * kStack];
  T *b = local;
  if (n > kStack) {
    b = static_cast<T *>(nxl_serv_allocate(sizeof(T) * size_t(n) * size_t(n), 64));
    if (!b) return potrf_upper_short(n, a, lda);
  }
  upper_to_lower(n, a, lda, b);
  const idx info = potrf_lower_blocked(n, b, n);
  lower_to_upper(n, b, a, lda);
  if (b != local) nxl_serv_deallocate(b);
  return info;
}

// X := A^{-1} X with the factor of potrf (checked arguments): per column
// of X the two triangular solves, each either a vectorized update of the
// rows below (above) the current one or an inner product over its column.
// A X = B with the Cholesky factor of a real matrix of order n <= NV * E,
// on vectors: L and L^T (or U^T and U) in registers. False (nothing done)
// when a diagonal entry is unfit for a product with its reciprocal.
template <class T, int NV> bool potrs_regs(bool upper, idx n, idx nrhs, const T *a, idx lda, T *b, idx ldb) {
  tri_regs<T, NV> lo, up;
  if (!lo.set_diagonal(a, lda + 1, n)) return false;
  for (int v = 0; v < NV; ++v) up.rd[v] = lo.rd[v];
  up.unit = false;
  if (upper) {
    lo.template set_columns<true, true>(a, lda, n);
    up.template set_columns<false, false>(a, lda, n);
  } else {
    lo.template set_columns<true, false>(a, lda, n);
    up.template set_columns<false, true>(a, lda, n);
  }
  solve_in_registers<T, NV>(n, nrhs, lo, up, nullptr, b, ldb);
  return true;
}

// The same for a real order n <= NV * E, one right-hand side after the
// other through step_solve: the stored triangle is read in place for the
// solve that walks its columns, its transpose from a buffer for the other.
template <class T, int NV> bool potrs_steps(bool upper, idx n, idx nrhs, const T *a, idx lda, T *b, idx ldb) {
  using St = step_solve<T, NV>;
  St s;
  if (!s.set_diagonal(a, lda + 1, n)) return false;
  alignas(64) T buf[St::D * St::D];
  if (upper) turn_triangle<T, St::D, false>(n, a, lda, buf);
  else turn_triangle<T, St::D, true>(n, a, lda, buf);
  for (idx r = 0; r < nrhs; ++r) {
    T *x = b + r * ldb;
    s.load(x, n);
    if (upper) {
      s.template run<true, false>(buf, St::D, St::D, n);  // U^T y = b
      s.template run<false, false>(a, lda, n, n);         // U x = y
    } else {
      s.template run<true, false>(a, lda, n, n);          // L y = b
      s.template run<false, false>(buf, St::D, St::D, n);  // L^T x = y
    }
    s.store(x, n);
  }
  return true;
}

template <class T> void potrs_columns(bool upper, idx n, idx nrhs, const T *a, idx lda, T *b, idx ldb);

template <class T> void potrs_small(bool upper, idx n, idx nrhs, const T *a, idx lda, T *b, idx ldb) {
  constexpr idx E = simd<T>::E;
  // One right-hand side takes the step solve at every order: holding both
  // triangles in registers pays only when they serve several.
  if constexpr (!is_complex_v<T>)
    if (n <= E ? (nrhs == 1 ? potrs_steps<T, 1>(upper, n, nrhs, a, lda, b, ldb)
                            : potrs_regs<T, 1>(upper, n, nrhs, a, lda, b, ldb))
               : n <= 2 * E ? (nrhs == 1 ? potrs_steps<T, 2>(upper, n, nrhs, a, lda, b, ldb)
                                         : potrs_regs<T, 2>(upper, n, nrhs, a, lda, b, ldb))
               : n <= 4 * E ? potrs_steps<T, 4>(upper, n, nrhs, a, lda, b, ldb)
                            : n <= 64 && potrs_steps<T, E == 8 ? 8 : 4>(upper, n, nrhs, a, lda, b, ldb))
      return;
  potrs_columns(upper, n, nrhs, a, lda, b, ldb);
}

// One right-hand side after the other, as two triangular solves.
template <class T> void potrs_columns(bool upper, idx n, idx nrhs, const T *a, idx lda, T *b, idx ldb) {
  for (idx r = 0; r < nrhs; ++r) {
    T *x = b + r * ldb;
    if (upper) {
      solve_vec_t<T, diag::real, false, true>(n, a, lda, x);  // U^H y = b
      solve_vec_n<T, diag::real, false>(n, a, lda, x);        // U x = y
    } else {
      solve_vec_n<T, diag::real, true>(n, a, lda, x);        // L y = b
      solve_vec_t<T, diag::real, true, true>(n, a, lda, x);  // L^H x = y
    }
  }
}

}  // namespace ps
}  // namespace NXL_LOCAL_NS
}  // namespace nxl

#define NXL_PS_CHOL(p, T)                                                                               \
  extern "C" void NXL_KERNEL(nxl_lapack_ps_, _##p##potrs_small)(const char *uplo, const nxl_int *n,     \
      const nxl_int *nrhs, const T *a, const nxl_int *lda, T *b, const nxl_int *ldb, nxl_int *info,     \
      int, int) {                                                                                       \
    *info = 0;                                                                                          \
    nxl::ps::potrs_small<T>(nxl::ps::flag_is(uplo, 'U'), *n, *nrhs, a, *lda, b, *ldb);                  \
  }                                                                                                     \
  extern "C" void NXL_KERNEL(nxl_lapack_ps_, _##p##potrf_small)(const char *uplo, const nxl_int *n,     \
      T *a, const nxl_int *lda, nxl_int *info, int, int) {                                              \
    *info = nxl::ps::flag_is(uplo, 'U') ? nxl::ps::potrf_upper<T>(*n, a, *lda)                          \
                                        : nxl::ps::potrf_lower<T>(*n, a, *lda);                         \
  }                                                                                                     \
  extern "C" void NXL_KERNEL(nxl_lapack_ps_, _##p##potrf_u_small)(const char *, const nxl_int *n,       \
      T *a, const nxl_int *lda, nxl_int *info, int, int) {                                              \
    *info = nxl::ps::potrf_upper<T>(*n, a, *lda);                                                       \
  }                                                                                                     \
  extern "C" void NXL_KERNEL(nxl_lapack_ps_, _##p##potrf_l_small)(const char *, const nxl_int *n,       \
      T *a, const nxl_int *lda, nxl_int *info, int, int) {                                              \
    *info = nxl::ps::potrf_lower<T>(*n, a, *lda);                                                       \
  }

NXL_PS_CHOL(s, float)
NXL_PS_CHOL(d, double)
NXL_PS_CHOL(c, std::complex<float>)
NXL_PS_CHOL(z, std::complex<double>)
