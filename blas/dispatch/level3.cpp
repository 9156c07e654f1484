// Level-3 dispatch layer and code-path entries.
//
// Quick returns, the hand-off of single-row and single-column products to
// gemv, and the threading decision. A threaded call cuts the output into
// pieces at multiples of the code path's register tile and runs the
// sequential kernel on each piece from an OpenMP team; since the engine never
// splits the depth and places its tiles at fixed multiples, every element
// is computed exactly as in a one-thread call.
#include <omp.h>

#include <algorithm>
#include <cmath>
#include <complex>

#include "blas/level2.h"
#include "blas/level3.h"
#include "service/codepath.h"
#include "service/nxl_serv.h"

using zcomplex = std::complex<double>;
using ccomplex = std::complex<float>;
using idx = nxl_int;

// ---------------------------------------------------------------------------
// Code-path entries.

#define NXL_L3_GEMM_PARAMS(T)                                                                   \
  (const char *ta, const char *tb, const idx *m, const idx *n, const idx *kd, const T *alpha,    \
   const T *a, const idx *lda, const T *b, const idx *ldb, const T *beta, T *c, const idx *ldc, \
   int la, int lb)
#define NXL_L3_GEMM_ARGS (ta, tb, m, n, kd, alpha, a, lda, b, ldb, beta, c, ldc, la, lb)
#define NXL_L3_SYMM_PARAMS(T)                                                                 \
  (const char *side, const char *uplo, const idx *m, const idx *n, const T *alpha, const T *a, \
   const idx *lda, const T *b, const idx *ldb, const T *beta, T *c, const idx *ldc, int ls, int lu)
#define NXL_L3_SYMM_ARGS (side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc, ls, lu)
#define NXL_L3_SYRK_PARAMS(T, S)                                                              \
  (const char *uplo, const char *trans, const idx *n, const idx *kd, const S *alpha, const T *a, \
   const idx *lda, const S *beta, T *c, const idx *ldc, int lu, int lt)
#define NXL_L3_SYRK_ARGS (uplo, trans, n, kd, alpha, a, lda, beta, c, ldc, lu, lt)
#define NXL_L3_SYR2K_PARAMS(T, S)                                                             \
  (const char *uplo, const char *trans, const idx *n, const idx *kd, const T *alpha, const T *a, \
   const idx *lda, const T *b, const idx *ldb, const S *beta, T *c, const idx *ldc, int lu, int lt)
#define NXL_L3_SYR2K_ARGS (uplo, trans, n, kd, alpha, a, lda, b, ldb, beta, c, ldc, lu, lt)
#define NXL_L3_TRXM_PARAMS(T)                                                                  \
  (const char *side, const char *uplo, const char *ta, const char *diag, const idx *m,          \
   const idx *n, const T *alpha, const T *a, const idx *lda, T *b, const idx *ldb, int ls, int lu, \
   int lt, int ld)
#define NXL_L3_TRXM_ARGS (side, uplo, ta, diag, m, n, alpha, a, lda, b, ldb, ls, lu, lt, ld)
#define NXL_L3_RANKK_PARAMS(T)                                                                \
  (const char *uplo, const char *trans, const idx *n, const idx *kd, const T *alpha, const T *a, \
   const idx *lda, const T *b, const idx *ldb, const T *beta, T *c, const idx *ldc,             \
   const idx *j0, const idx *j1, int op)
#define NXL_L3_RANKK_ARGS (uplo, trans, n, kd, alpha, a, lda, b, ldb, beta, c, ldc, j0, j1, op)

#define NXL_L3_ENTRIES(P, T)                                                                    \
  NXL_CP_ENTRY(void, nxl_blas_x##P##gemm, nxl_blas_, _x##P##gemm, NXL_L3_GEMM_PARAMS(T),         \
               NXL_L3_GEMM_ARGS)                                                                 \
  NXL_CP_ENTRY(void, nxl_blas_x##P##symm, nxl_blas_, _x##P##symm, NXL_L3_SYMM_PARAMS(T),         \
               NXL_L3_SYMM_ARGS)                                                                 \
  NXL_CP_ENTRY(void, nxl_blas_x##P##syrk, nxl_blas_, _x##P##syrk, NXL_L3_SYRK_PARAMS(T, T),      \
               NXL_L3_SYRK_ARGS)                                                                 \
  NXL_CP_ENTRY(void, nxl_blas_x##P##syr2k, nxl_blas_, _x##P##syr2k, NXL_L3_SYR2K_PARAMS(T, T),   \
               NXL_L3_SYR2K_ARGS)                                                                \
  NXL_CP_ENTRY(void, nxl_blas_x##P##trmm, nxl_blas_, _x##P##trmm, NXL_L3_TRXM_PARAMS(T),         \
               NXL_L3_TRXM_ARGS)                                                                 \
  NXL_CP_ENTRY(void, nxl_blas_x##P##trsm, nxl_blas_, _x##P##trsm, NXL_L3_TRXM_PARAMS(T),         \
               NXL_L3_TRXM_ARGS)                                                                 \
  NXL_CP_ENTRY(void, nxl_blas_x##P##rankk_cols, nxl_blas_, _x##P##rankk_cols,                   \
               NXL_L3_RANKK_PARAMS(T), NXL_L3_RANKK_ARGS)                                        \
  NXL_CP_ENTRY(void, nxl_blas_x##P##gemm_small, nxl_blas_, _x##P##gemm_small,                   \
               NXL_L3_GEMM_PARAMS(T), NXL_L3_GEMM_ARGS)

#define NXL_L3_ENTRIES_HERM(P, T, R)                                                            \
  NXL_CP_ENTRY(void, nxl_blas_x##P##hemm, nxl_blas_, _x##P##hemm, NXL_L3_SYMM_PARAMS(T),         \
               NXL_L3_SYMM_ARGS)                                                                 \
  NXL_CP_ENTRY(void, nxl_blas_x##P##herk, nxl_blas_, _x##P##herk, NXL_L3_SYRK_PARAMS(T, R),      \
               NXL_L3_SYRK_ARGS)                                                                 \
  NXL_CP_ENTRY(void, nxl_blas_x##P##her2k, nxl_blas_, _x##P##her2k, NXL_L3_SYR2K_PARAMS(T, R),   \
               NXL_L3_SYR2K_ARGS)

NXL_L3_ENTRIES(s, float)
NXL_L3_ENTRIES(d, double)
NXL_L3_ENTRIES(c, ccomplex)
NXL_L3_ENTRIES(z, zcomplex)
NXL_L3_ENTRIES_HERM(c, ccomplex, float)
NXL_L3_ENTRIES_HERM(z, zcomplex, double)
NXL_CP_ENTRY(void, nxl_blas_xl3_tile, nxl_blas_, _xl3_tile, (int prec, int *mr, int *nr),
             (prec, mr, nr))

// Level-2 products that take over single-row and single-column products.
extern "C" {
void nxl_blas_sgemv(const char *trans, const idx *m, const idx *n, const float *alpha,
                    const float *a, const idx *lda, const float *x, const idx *incx,
                    const float *beta, float *y, const idx *incy, int);
void nxl_blas_dgemv(const char *trans, const idx *m, const idx *n, const double *alpha,
                    const double *a, const idx *lda, const double *x, const idx *incx,
                    const double *beta, double *y, const idx *incy, int);
void nxl_blas_cgemv(const char *trans, const idx *m, const idx *n, const ccomplex *alpha,
                    const ccomplex *a, const idx *lda, const ccomplex *x, const idx *incx,
                    const ccomplex *beta, ccomplex *y, const idx *incy, int);
void nxl_blas_zgemv(const char *trans, const idx *m, const idx *n, const zcomplex *alpha,
                    const zcomplex *a, const idx *lda, const zcomplex *x, const idx *incx,
                    const zcomplex *beta, zcomplex *y, const idx *incy, int);
// Version of the kernel interface selected under strict reproducibility.
int nxl_blas_get_kernel_api_version(void);
}

namespace {

// Per-precision table of the entries the drivers use.
template <class T> struct l3;
#define NXL_L3_TABLE(P, T, PREC)                                                      \
  template <> struct l3<T> {                                                          \
    static constexpr int prec = PREC;                                                 \
    static constexpr auto gemm = nxl_blas_x##P##gemm;                                 \
    static constexpr auto gemm_small = nxl_blas_x##P##gemm_small;                     \
    static constexpr auto rankk = nxl_blas_x##P##rankk_cols;                          \
    static constexpr auto gemv = nxl_blas_##P##gemv;                                  \
    static constexpr auto trmv = nxl_blas_##P##trmv;                                  \
    static constexpr auto trsv = nxl_blas_##P##trsv;                                  \
  };
NXL_L3_TABLE(s, float, 0)
NXL_L3_TABLE(d, double, 1)
NXL_L3_TABLE(c, ccomplex, 2)
NXL_L3_TABLE(z, zcomplex, 3)

template <class T> constexpr bool cplx = !std::is_floating_point_v<T>;

inline char up(const char *f) {
  char c = *f;
  return (c >= 'a' && c <= 'z') ? char(c - 32) : c;
}

// Largest m, n and k of the small-product kernels (blas/kernels/l3_small.h).
constexpr idx kSmallMax = 64;

// Products below this many multiply-adds per thread stay on one thread.
constexpr double kMinWorkPerThread = 96.0 * 96.0 * 96.0;

// Number of threads for a product of `work` multiply-adds that can be cut
// into `pieces` independent tiles: 1 inside the caller's parallel region
// (the thread service also answers 1 there when dynamic adjustment is on).
int team_size(double work, idx pieces) {
  if (work < 2 * kMinWorkPerThread || pieces < 2) return 1;
  if (omp_in_parallel()) return 1;
  int mx = nxl_serv_domain_get_max_threads(1);
  if (mx <= 1) return 1;
  double by_work = std::floor(work / kMinWorkPerThread);
  idx nt = std::min<idx>(mx, std::min<idx>(pieces, idx(std::min(by_work, 1e9))));
  return int(std::max<idx>(nt, 1));
}

struct tile { int mr, nr; };
template <class T> tile tile_of() {
  tile t;
  nxl_blas_xl3_tile(l3<T>::prec, &t.mr, &t.nr);
  return t;
}

// Part t of `parts` of [0, n), cut at multiples of g.
inline void cut(idx n, idx g, int t, int parts, idx &lo, idx &hi) {
  const idx tiles = (n + g - 1) / g;
  lo = std::min(n, tiles * t / parts * g);
  hi = std::min(n, tiles * (t + 1) / parts * g);
}

// Runs f(thread, team) on an OpenMP team of nt threads (the runtime may give
// fewer; the pieces follow the team it gives).
template <class F> void run_team(int nt, F f) {
#pragma omp parallel num_threads(nt)
  f(omp_get_thread_num(), omp_get_num_threads());
}

// ---------------------------------------------------------------------------
// gemm

template <class T>
void gemm_driver(const char *ta, const char *tb, const idx *m, const idx *n, const idx *k,
                 const T *alpha, const T *a, const idx *lda, const T *b, const idx *ldb,
                 const T *beta, T *c, const idx *ldc, int threads) {
  const tile tl = tile_of<T>();
  const bool by_cols = *n / tl.nr >= threads || *n >= *m;
  const bool at = up(ta) != 'N', bt = up(tb) != 'N';
  run_team(threads, [&](int t, int nt) {
    idx lo, hi;
    if (by_cols) {
      cut(*n, tl.nr, t, nt, lo, hi);
      if (hi <= lo) return;
      const idx w = hi - lo;
      l3<T>::gemm(ta, tb, m, &w, k, alpha, a, lda, bt ? b + lo : b + lo * *ldb, ldb, beta,
                  c + lo * *ldc, ldc, 1, 1);
    } else {
      cut(*m, tl.mr, t, nt, lo, hi);
      if (hi <= lo) return;
      const idx h = hi - lo;
      l3<T>::gemm(ta, tb, &h, n, k, alpha, at ? a + lo * *lda : a + lo, lda, b, ldb, beta, c + lo,
                  ldc, 1, 1);
    }
  });
}

template <class T>
void gemm_dispatch(const char *ta, const char *tb, const idx *m, const idx *n, const idx *k,
                   const T *alpha, const T *a, const idx *lda, const T *b, const idx *ldb,
                   const T *beta, T *c, const idx *ldc) {
  if (*m <= 0 || *n <= 0) return;
  // Small products: one thread, registers only, straight to the kernel.
  if (*m <= kSmallMax && *n <= kSmallMax && *k <= kSmallMax && *k > 0 && *alpha != T(0))
    return l3<T>::gemm_small(ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc, 1, 1);
  if ((*k <= 0 || *alpha == T(0)) && *beta == T(1)) return;
  if (nxl_serv_cbwr_get(-1) & NXL_CBWR_STRICT) (void)nxl_blas_get_kernel_api_version();
  const char fa = up(ta), fb = up(tb);
  static const idx one = 1;
  // A single column: c = alpha * op(A) * op(B)(:, 0) + beta * c.
  if (*n == 1 && (!cplx<T> || fb != 'C') && *k > 0 && *alpha != T(0)) {
    const idx incx = fb == 'N' ? 1 : *ldb;
    const char tr[2] = {fa, 0};
    if (fa == 'N') l3<T>::gemv(tr, m, k, alpha, a, lda, b, &incx, beta, c, &one, 1);
    else l3<T>::gemv(tr, k, m, alpha, a, lda, b, &incx, beta, c, &one, 1);
    return;
  }
  // A single row: c^T = alpha * op(B)^T * op(A)(0, :)^T + beta * c^T.
  if (*m == 1 && (!cplx<T> || (fa != 'C' && fb != 'C')) && *k > 0 && *alpha != T(0)) {
    const idx incx = fa == 'N' ? *lda : 1;
    if (fb == 'N') l3<T>::gemv("T", k, n, alpha, b, ldb, a, &incx, beta, c, ldc, 1);
    else l3<T>::gemv("N", n, k, alpha, b, ldb, a, &incx, beta, c, ldc, 1);
    return;
  }
  const double work = double(*m) * double(*n) * double(*k > 0 ? *k : 0);
  int nt = 1;
  if (work >= 2 * kMinWorkPerThread) {
    const tile tl = tile_of<T>();
    nt = team_size(work, std::max(*n / tl.nr, *m / tl.mr));
  }
  if (nt > 1) gemm_driver(ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc, nt);
  else l3<T>::gemm(ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc, 1, 1);
}

// ---------------------------------------------------------------------------
// symm / hemm: a left-side product splits the columns of C, a right-side one
// its rows.

template <class T, class F>
void symm_dispatch(F entry, const char *side, const char *uplo, const idx *m, const idx *n,
                   const T *alpha, const T *a, const idx *lda, const T *b, const idx *ldb,
                   const T *beta, T *c, const idx *ldc) {
  if (*m <= 0 || *n <= 0) return;
  if (*alpha == T(0) && *beta == T(1)) return;
  const bool left = up(side) == 'L';
  const tile tl = tile_of<T>();
  const double work = double(*m) * double(*n) * double(left ? *m : *n);
  const int nt = team_size(work, left ? *n / tl.nr : *m / tl.mr);
  if (nt <= 1) return entry(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc, 1, 1);
  run_team(nt, [&](int t, int team) {
    idx lo, hi;
    cut(left ? *n : *m, left ? tl.nr : tl.mr, t, team, lo, hi);
    if (hi <= lo) return;
    const idx w = hi - lo;
    if (left) entry(side, uplo, m, &w, alpha, a, lda, b + lo * *ldb, ldb, beta, c + lo * *ldc, ldc, 1, 1);
    else entry(side, uplo, &w, n, alpha, a, lda, b + lo, ldb, beta, c + lo, ldc, 1, 1);
  });
}

// ---------------------------------------------------------------------------
// syrk, herk, syr2k, her2k: column ranges of equal triangle area, cut at
// multiples of the tile width.

template <class T>
void rankk_dispatch(int op, const char *uplo, const char *trans, const idx *n, const idx *k,
                    T alpha, const T *a, const idx *lda, const T *b, const idx *ldb, T beta, T *c,
                    const idx *ldc) {
  if (*n <= 0) return;
  if ((*k <= 0 || alpha == T(0)) && beta == T(1)) return;
  const tile tl = tile_of<T>();
  const double work = double(*n) * double(*n) * double(*k > 0 ? *k : 0) * ((op & 1) ? 1.0 : 0.5);
  const int nt = team_size(work, *n / tl.nr);
  if (nt <= 1) {
    const idx j0 = 0;
    l3<T>::rankk(uplo, trans, n, k, &alpha, a, lda, b, ldb, &beta, c, ldc, &j0, n, op);
    return;
  }
  const bool upper = up(uplo) == 'U';
  run_team(nt, [&](int t, int team) {
    // Upper: columns [0, j) hold j^2/2 elements; lower: (n^2 - (n-j)^2)/2.
    auto edge = [&](int s) -> idx {
      if (s <= 0) return 0;
      if (s >= team) return *n;
      const double f = double(s) / team;
      const double j = upper ? *n * std::sqrt(f) : *n * (1.0 - std::sqrt(1.0 - f));
      const idx g = tl.nr;
      return std::min<idx>(*n, idx(std::llround(j / g)) * g);
    };
    const idx j0 = edge(t), j1 = edge(t + 1);
    if (j1 <= j0) return;
    l3<T>::rankk(uplo, trans, n, k, &alpha, a, lda, b, ldb, &beta, c, ldc, &j0, &j1, op);
  });
}

// ---------------------------------------------------------------------------
// trmm / trsm: the columns of B (left side) or its rows (right side) are
// independent problems.

// One column of B (left side) or one row (right side) is a triangular
// matrix-vector product or solve, which the level-2 routine runs without
// packing. On the right, x op(A) is op(A)^T x: the transposition flips, and
// the conjugate transpose, which becomes the conjugated triangle, runs as
// conj(A conj(x)).
template <class T>
bool trxm_vector(bool solve, const char *side, const char *uplo, const char *ta, const char *diag, idx m, idx n,
                 T alpha, const T *a, const idx *lda, T *b, const idx *ldb) {
  const bool left = up(side) == 'L';
  if (left ? n != 1 : m != 1) return false;
  const idx len = left ? m : n, inc = left ? 1 : *ldb;
  auto each = [&](auto f) {
    for (idx i = 0; i < len; ++i) b[i * inc] = f(b[i * inc]);
  };
  if (alpha == T(0)) {
    each([](T) { return T(0); });
    return true;
  }
  char t = up(ta);
  bool conj_x = false;
  if (!left) {
    conj_x = cplx<T> && t == 'C';
    t = t == 'N' ? 'T' : 'N';
  }
  const char tt[2] = {t, 0};
  auto conj_b = [&] {
    if constexpr (cplx<T>)
      if (conj_x) each([](T v) { return std::conj(v); });
  };
  auto scale = [&] {
    if (alpha != T(1)) each([&](T v) { return alpha * v; });
  };
  if (solve) scale();
  conj_b();
  if (solve) l3<T>::trsv(uplo, tt, diag, &len, a, lda, b, &inc, 1, 1, 1);
  else l3<T>::trmv(uplo, tt, diag, &len, a, lda, b, &inc, 1, 1, 1);
  conj_b();
  if (!solve) scale();
  return true;
}

template <class T, class F>
void trxm_dispatch(F entry, const char *side, const char *uplo, const char *ta, const char *diag,
                   const idx *m, const idx *n, const T *alpha, const T *a, const idx *lda, T *b,
                   const idx *ldb) {
  if (*m <= 0 || *n <= 0) return;
  const bool left = up(side) == 'L';
  const tile tl = tile_of<T>();
  const double dim = left ? *m : *n;
  const double work = 0.5 * dim * dim * double(left ? *n : *m);
  const int nt = *alpha == T(0) ? 1 : team_size(work, left ? *n / tl.nr : *m / tl.mr);
  if (nt <= 1) return entry(side, uplo, ta, diag, m, n, alpha, a, lda, b, ldb, 1, 1, 1, 1);
  run_team(nt, [&](int t, int team) {
    idx lo, hi;
    cut(left ? *n : *m, left ? tl.nr : tl.mr, t, team, lo, hi);
    if (hi <= lo) return;
    const idx w = hi - lo;
    if (left) entry(side, uplo, ta, diag, m, &w, alpha, a, lda, b + lo * *ldb, ldb, 1, 1, 1, 1);
    else entry(side, uplo, ta, diag, &w, n, alpha, a, lda, b + lo, ldb, 1, 1, 1, 1);
  });
}

}  // namespace

// ---------------------------------------------------------------------------
// The dispatch functions.

extern "C" int nxl_blas_get_kernel_api_version(void) { return 1; }

extern "C" void nxl_blas_dgemm_omp_driver_v1(const char *transa, const char *transb,
                                             const idx *m, const idx *n, const idx *k,
                                             const double *alpha, const double *a, const idx *lda,
                                             const double *b, const idx *ldb, const double *beta,
                                             double *c, const idx *ldc, int threads) {
  gemm_driver(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc, threads);
}

#define NXL_L3_DISPATCH(P, T)                                                                   \
  extern "C" void nxl_blas_##P##gemm NXL_L3_GEMM_PARAMS(T) {                                    \
    gemm_dispatch(ta, tb, m, n, kd, alpha, a, lda, b, ldb, beta, c, ldc);                        \
  }                                                                                             \
  extern "C" void nxl_blas_##P##symm NXL_L3_SYMM_PARAMS(T) {                                    \
    symm_dispatch(nxl_blas_x##P##symm, side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);  \
  }                                                                                             \
  extern "C" void nxl_blas_##P##syrk NXL_L3_SYRK_PARAMS(T, T) {                                 \
    rankk_dispatch(0, uplo, trans, n, kd, *alpha, a, lda, a, lda, *beta, c, ldc);                \
  }                                                                                             \
  extern "C" void nxl_blas_##P##syr2k NXL_L3_SYR2K_PARAMS(T, T) {                               \
    rankk_dispatch(1, uplo, trans, n, kd, *alpha, a, lda, b, ldb, *beta, c, ldc);                \
  }                                                                                             \
  extern "C" void nxl_blas_##P##trmm NXL_L3_TRXM_PARAMS(T) {                                    \
    if (*m > 0 && *n > 0 && trxm_vector(false, side, uplo, ta, diag, *m, *n, *alpha, a, lda, b, ldb)) return; \
    trxm_dispatch(nxl_blas_x##P##trmm, side, uplo, ta, diag, m, n, alpha, a, lda, b, ldb);      \
  }                                                                                             \
  extern "C" void nxl_blas_##P##trsm NXL_L3_TRXM_PARAMS(T) {                                    \
    if (*m > 0 && *n > 0 && trxm_vector(true, side, uplo, ta, diag, *m, *n, *alpha, a, lda, b, ldb)) return; \
    trxm_dispatch(nxl_blas_x##P##trsm, side, uplo, ta, diag, m, n, alpha, a, lda, b, ldb);      \
  }

#define NXL_L3_DISPATCH_HERM(P, T, R)                                                           \
  extern "C" void nxl_blas_##P##hemm NXL_L3_SYMM_PARAMS(T) {                                    \
    symm_dispatch(nxl_blas_x##P##hemm, side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);  \
  }                                                                                             \
  extern "C" void nxl_blas_##P##herk NXL_L3_SYRK_PARAMS(T, R) {                                 \
    rankk_dispatch(2, uplo, trans, n, kd, T(*alpha), a, lda, a, lda, T(*beta), c, ldc);          \
  }                                                                                             \
  extern "C" void nxl_blas_##P##her2k NXL_L3_SYR2K_PARAMS(T, R) {                               \
    rankk_dispatch(3, uplo, trans, n, kd, *alpha, a, lda, b, ldb, T(*beta), c, ldc);             \
  }

NXL_L3_DISPATCH(s, float)
NXL_L3_DISPATCH(d, double)
NXL_L3_DISPATCH(c, ccomplex)
NXL_L3_DISPATCH(z, zcomplex)
NXL_L3_DISPATCH_HERM(c, ccomplex, float)
NXL_L3_DISPATCH_HERM(z, zcomplex, double)
