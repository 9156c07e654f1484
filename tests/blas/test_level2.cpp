// Level-2 routines against a long-double oracle: random shapes, every flag,
// positive and negative increments, padded leading dimensions and unstored
// triangles filled with NaN (never read, never written), NaN in y with
// beta = 0, thread counts 1 to 4 with bitwise-equal results, and every
// kernel build that this processor can run.
#include "level2_oracle.h"

#include "blas/level2.h"
#include "blas/level2_params.h"
#include "service/codepath.h"
#include "service/nxl_serv.h"

using namespace l2test;

#define L2T_DECLARE(name, fam, T, R, P, A) NXL_CP_DECLARE(void, nxl_blas_, _x##name, P)
NXL_L2_ALL_ROUTINES(L2T_DECLARE)

namespace {

template <class T> bool is_zero_scalar(T v) { return v == T(0); }
template <class T> auto re_of(T v) {
  if constexpr (Tr<T>::cx) return v.real();
  else return v;
}
template <class T> auto im_of(T v) {
  if constexpr (Tr<T>::cx) return v.imag();
  else return R_t<T>(0);
}

// The routines of one precision, from one layer (dispatch or one kernel build).
template <class T> struct Fns {
  using R = R_t<T>;
  std::string layer;
  void (*gemv) NXL_L2_GEMV_P(T);
  void (*gbmv) NXL_L2_GBMV_P(T);
  void (*symv) NXL_L2_SYMV_P(T);
  void (*sbmv) NXL_L2_SBMV_P(T);
  void (*spmv) NXL_L2_SPMV_P(T);
  void (*trmv) NXL_L2_TRMV_P(T);
  void (*tbmv) NXL_L2_TBMV_P(T);
  void (*tpmv) NXL_L2_TPMV_P(T);
  void (*trsv) NXL_L2_TRMV_P(T);
  void (*tbsv) NXL_L2_TBMV_P(T);
  void (*tpsv) NXL_L2_TPMV_P(T);
  void (*geru) NXL_L2_GER_P(T);
  void (*gerc) NXL_L2_GER_P(T);
  void (*syr) NXL_L2_SYR_P(T, R);
  void (*syr2) NXL_L2_SYR2_P(T);
  void (*spr) NXL_L2_SPR_P(T, R);
  void (*spr2) NXL_L2_SPR2_P(T);
};

#define L2T_REAL(layer, P, p)                                                                 \
  {layer, P##p##gemv, P##p##gbmv, P##p##symv, P##p##sbmv, P##p##spmv, P##p##trmv, P##p##tbmv, \
   P##p##tpmv, P##p##trsv, P##p##tbsv, P##p##tpsv, P##p##ger, P##p##ger, P##p##syr,           \
   P##p##syr2, P##p##spr, P##p##spr2}
#define L2T_CPLX(layer, P, p)                                                                 \
  {layer, P##p##gemv, P##p##gbmv, P##p##hemv, P##p##hbmv, P##p##hpmv, P##p##trmv, P##p##tbmv, \
   P##p##tpmv, P##p##trsv, P##p##tbsv, P##p##tpsv, P##p##geru, P##p##gerc, P##p##her,         \
   P##p##her2, P##p##hpr, P##p##hpr2}
#define L2T_LAYERS(M, p)                                                                  \
  {M("dispatch", nxl_blas_, p), M("def", nxl_blas_def_x, p), M("mc", nxl_blas_mc_x, p),   \
   M("mc3", nxl_blas_mc3_x, p), M("avx", nxl_blas_avx_x, p), M("avx2", nxl_blas_avx2_x, p), \
   M("avx512_mic", nxl_blas_avx512_mic_x, p), M("avx512", nxl_blas_avx512_x, p),          \
   M("cnr", nxl_blas_cnr_def_x, p)}

template <class T> const std::vector<Fns<T>> &layers();
template <> const std::vector<Fns<float>> &layers() {
  static const std::vector<Fns<float>> v = L2T_LAYERS(L2T_REAL, s);
  return v;
}
template <> const std::vector<Fns<double>> &layers() {
  static const std::vector<Fns<double>> v = L2T_LAYERS(L2T_REAL, d);
  return v;
}
template <> const std::vector<Fns<std::complex<float>>> &layers() {
  static const std::vector<Fns<std::complex<float>>> v = L2T_LAYERS(L2T_CPLX, c);
  return v;
}
template <> const std::vector<Fns<std::complex<double>>> &layers() {
  static const std::vector<Fns<std::complex<double>>> v = L2T_LAYERS(L2T_CPLX, z);
  return v;
}

bool layer_runs_here(const std::string &name) {
  if (name == "avx512" || name == "avx512_mic")
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512cd") &&
           (name == "avx512_mic" || (__builtin_cpu_supports("avx512bw") &&
                                     __builtin_cpu_supports("avx512dq") &&
                                     __builtin_cpu_supports("avx512vl")));
  if (name == "avx2") return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  if (name == "avx") return __builtin_cpu_supports("avx");
  if (name == "mc3") return __builtin_cpu_supports("sse4.2");
  if (name == "mc") return __builtin_cpu_supports("ssse3");
  return true;
}

const int kThreads[] = {1, 2, 3, 4};

void set_threads(int nt) { nxl_serv_domain_set_num_threads(nt, 1); }

template <class T> char pick_trans(Rng &r) { return "NTCntc"[r.i(0, 5)]; }

// A fixed case for the sweeps: the checks draw only what it leaves open
// (the values; the leading dimension's padding).
struct Shape {
  Kind kind;
  bool upper, unit, two;
  char tr;
  idx m, n, kl, ku, incx, incy;
  idx lda = 0;  // 0: the rows plus a drawn padding
};

// Runs `call` once per thread count (dispatch) or once (kernel builds),
// restoring the output from `reset` before each run and requiring the same
// bits from every thread count.
template <class T, class Reset, class Call, class Check>
void for_threads(bool dispatch, std::vector<T> &out, Reset reset, Call call, Check check) {
  std::vector<T> first;
  for (int nt : kThreads) {
    if (!dispatch && nt > 1) break;
    set_threads(nt);
    reset();
    call();
    SCOPED_TRACE("threads " + std::to_string(nt));
    check();
    if (nt == 1) first = out;
    else EXPECT_TRUE(all_same_bits(first, out)) << "result depends on the thread count";
  }
  set_threads(1);
}

// Result of y := alpha*op(A)*x + beta*y: A and x untouched, nothing written
// between the elements of y, y untouched by a quick return, else y close to
// the oracle.
template <class T>
void check_product(const std::vector<T> &a, const std::vector<T> &a0, const Vec<T> &x,
                   const Vec<T> &x0, const Vec<T> &y, const Vec<T> &y0, bool quick,
                   const std::vector<W_t<T>> &ref, const std::vector<LD> &gauge, idx terms) {
  EXPECT_TRUE(all_same_bits(a, a0)) << "A was written";
  EXPECT_TRUE(all_same_bits(x.buf, x0.buf)) << "x was written";
  EXPECT_TRUE(y.gaps_untouched(y0)) << "y written between its elements";
  if (quick) {
    EXPECT_TRUE(all_same_bits(y.buf, y0.buf)) << "quick return wrote y";
    return;
  }
  for (idx i = 0; i < y.n; ++i)
    ASSERT_TRUE(close_to(y[i], ref[size_t(i)], gauge[size_t(i)], terms)) << "y[" << i << "]";
}

// ---------------------------------------------------------------------------
// gemv and gbmv.
template <class T> void check_general(const Fns<T> &f, Rng &r, int trials, bool band,
                                      const Shape *fx = nullptr) {
  const bool dispatch = f.layer == "dispatch";
  for (int t = 0; t < trials; ++t) {
    const char tr = fx ? fx->tr : pick_trans<T>(r);
    const bool notr = tr == 'N' || tr == 'n', cj = tr == 'C' || tr == 'c';
    const idx m = fx ? fx->m : r.dim(), n = fx ? fx->n : r.dim();
    const idx kl = fx ? fx->kl : band ? r.i(0, 6) + (r.i(0, 4) == 0 ? m : 0) : 0;
    const idx ku = fx ? fx->ku : band ? r.i(0, 6) : 0;
    const idx rows = band ? kl + ku + 1 : (m > 1 ? m : 1);
    const idx lda = fx && fx->lda ? fx->lda : rows + r.i(0, 3);
    const idx incx = fx ? fx->incx : r.inc(), incy = fx ? fx->incy : r.inc();
    const T alpha = r.scalar<T>(), beta = r.scalar<T>();
    const idx lenx = notr ? n : m, leny = notr ? m : n;
    std::string ctx = std::string(band ? "gbmv" : "gemv") + " trans=" + tr + " m=" + std::to_string(m) +
                      " n=" + std::to_string(n) + " kl=" + std::to_string(kl) + " ku=" +
                      std::to_string(ku) + " lda=" + std::to_string(lda) + " incx=" +
                      std::to_string(incx) + " incy=" + std::to_string(incy);
    SCOPED_TRACE(ctx);
    std::vector<T> a(size_t(lda * (n > 0 ? n : 1)), nan_v<T>());
    std::vector<W_t<T>> dense(size_t(m * n), W_t<T>(0));
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < m; ++i) {
        if (band && (i < j - ku || i > j + kl)) continue;
        T v = r.val<T>();
        a[size_t((band ? ku + i - j : i) + j * lda)] = v;
        dense[size_t(i + j * m)] = wid(v);
      }
    Vec<T> x(lenx, incx), y(leny, incy);
    x.randomize(r);
    if (is_zero_scalar(beta)) {
      for (idx i = 0; i < leny; ++i) y[i] = nan_v<T>();
    } else {
      y.randomize(r);
    }
    const auto a0 = a;
    const auto x0 = x;
    const auto y0 = y;
    const bool quick = m == 0 || n == 0 || (is_zero_scalar(alpha) && beta == T(1));
    std::vector<W_t<T>> ref(static_cast<size_t>(leny));
    std::vector<LD> gauge(static_cast<size_t>(leny));
    for (idx i = 0; i < leny; ++i) {
      W_t<T> s = 0;
      LD g = 0;
      for (idx j = 0; j < lenx; ++j) {
        W_t<T> aij = notr ? dense[size_t(i + j * m)] : dense[size_t(j + i * m)];
        if (cj) aij = cjw(aij);
        s += aij * wid(x[j]);
        g += mag(aij) * mag(wid(x[j]));
      }
      if (quick) {
        ref[size_t(i)] = wid(y0[i]);
        gauge[size_t(i)] = mag(wid(y0[i]));
        continue;
      }
      W_t<T> yv = is_zero_scalar(beta) ? W_t<T>(0) : wid(beta) * wid(y0[i]);
      ref[size_t(i)] = wid(alpha) * s + yv;
      gauge[size_t(i)] = mag(wid(alpha)) * g + (is_zero_scalar(beta) ? 0 : mag(wid(beta)) * mag(wid(y0[i])));
    }
    const char trs[2] = {tr, 0};
    for_threads<T>(
        dispatch, y.buf, [&] { y = y0; },
        [&] {
          if (band)
            f.gbmv(trs, &m, &n, &kl, &ku, &alpha, a.data(), &lda, x.data(), &incx, &beta, y.data(), &incy, 1);
          else
            f.gemv(trs, &m, &n, &alpha, a.data(), &lda, x.data(), &incx, &beta, y.data(), &incy, 1);
        },
        [&] {
          check_product(a, a0, x, x0, y, y0, quick, ref, gauge, lenx);
        });
    if (::testing::Test::HasFatalFailure()) return;
  }
}

// Fills the stored part of a triangle; returns the dense matrix the routine
// must see (the stored triangle; the caller mirrors or completes it).
template <class T>
void fill_triangle(Rng &r, Kind kind, bool upper, idx n, idx k, idx lda, std::vector<T> &a,
                   std::vector<W_t<T>> &dense, bool unit_diag, LD offscale,
                   bool herm) {
  a.assign(size_t(storage_size(kind, n, lda)), nan_v<T>());
  dense.assign(size_t(n * n), W_t<T>(0));
  for_each_stored(kind, upper, n, k, lda, [&](idx i, idx j, idx off) {
    T v = r.val<T>();
    if (i != j) {
      if constexpr (Tr<T>::cx) v = T(R_t<T>(v.real() * offscale), R_t<T>(v.imag() * offscale));
      else v = T(R_t<T>(v * offscale));
      a[size_t(off)] = v;
      dense[size_t(i + j * n)] = wid(v);
      return;
    }
    if (unit_diag) {
      a[size_t(off)] = nan_v<T>();
      dense[size_t(i + j * n)] = W_t<T>(1);
      return;
    }
    if (herm) {
      // Only the real part of a Hermitian diagonal is read.
      if constexpr (Tr<T>::cx) v = T(v.real(), std::numeric_limits<R_t<T>>::quiet_NaN());
      a[size_t(off)] = v;
      dense[size_t(i + j * n)] = W_t<T>(rew(wid(v)));
      return;
    }
    a[size_t(off)] = v;
    dense[size_t(i + j * n)] = wid(v);
  });
}

template <class T> Kind pick_kind(Rng &r) { return Kind(r.i(0, 2)); }

// ---------------------------------------------------------------------------
// symv/hemv, sbmv/hbmv, spmv/hpmv.
template <class T> void check_symmetric(const Fns<T> &f, Rng &r, int trials,
                                        const Shape *fx = nullptr) {
  const bool dispatch = f.layer == "dispatch";
  constexpr bool herm = Tr<T>::cx;
  for (int t = 0; t < trials; ++t) {
    const Kind kind = fx ? fx->kind : pick_kind<T>(r);
    const bool upper = fx ? fx->upper : r.i(0, 1) == 0;
    const idx n = fx ? fx->n : r.dim();
    const idx k = fx ? fx->ku : kind == Kind::band ? r.i(0, 8) + (r.i(0, 5) == 0 ? n : 0) : 0;
    const idx lda = (kind == Kind::band ? k + 1 : (n > 1 ? n : 1)) + r.i(0, 2);
    const idx incx = fx ? fx->incx : r.inc(), incy = fx ? fx->incy : r.inc();
    const T alpha = r.scalar<T>(), beta = r.scalar<T>();
    SCOPED_TRACE(std::string("symmetric kind=") + std::to_string(int(kind)) + " uplo=" +
                 (upper ? "U" : "L") + " n=" + std::to_string(n) + " k=" + std::to_string(k) +
                 " lda=" + std::to_string(lda) + " incx=" + std::to_string(incx) +
                 " incy=" + std::to_string(incy));
    std::vector<T> a;
    std::vector<W_t<T>> dense;
    fill_triangle<T>(r, kind, upper, n, k, lda, a, dense, false, 1, herm);
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < n; ++i)
        if (upper ? i > j : i < j) dense[size_t(i + j * n)] = herm ? cjw(dense[size_t(j + i * n)]) : dense[size_t(j + i * n)];
    Vec<T> x(n, incx), y(n, incy);
    x.randomize(r);
    if (is_zero_scalar(beta)) {
      for (idx i = 0; i < n; ++i) y[i] = nan_v<T>();
    } else {
      y.randomize(r);
    }
    const auto a0 = a;
    const auto x0 = x;
    const auto y0 = y;
    const bool quick = n == 0 || (is_zero_scalar(alpha) && beta == T(1));
    std::vector<W_t<T>> ref(static_cast<size_t>(n));
    std::vector<LD> gauge(static_cast<size_t>(n));
    for (idx i = 0; i < n; ++i) {
      W_t<T> s = 0;
      LD g = 0;
      for (idx j = 0; j < n; ++j) {
        s += dense[size_t(i + j * n)] * wid(x[j]);
        g += mag(dense[size_t(i + j * n)]) * mag(wid(x[j]));
      }
      if (quick) {
        ref[size_t(i)] = wid(y0[i]);
        gauge[size_t(i)] = mag(wid(y0[i]));
        continue;
      }
      ref[size_t(i)] = wid(alpha) * s + (is_zero_scalar(beta) ? W_t<T>(0) : wid(beta) * wid(y0[i]));
      gauge[size_t(i)] = mag(wid(alpha)) * g + (is_zero_scalar(beta) ? 0 : mag(wid(beta)) * mag(wid(y0[i])));
    }
    const char ul[2] = {upper ? (r.i(0, 1) ? 'U' : 'u') : (r.i(0, 1) ? 'L' : 'l'), 0};
    for_threads<T>(
        dispatch, y.buf, [&] { y = y0; },
        [&] {
          if (kind == Kind::full)
            f.symv(ul, &n, &alpha, a.data(), &lda, x.data(), &incx, &beta, y.data(), &incy, 1);
          else if (kind == Kind::band)
            f.sbmv(ul, &n, &k, &alpha, a.data(), &lda, x.data(), &incx, &beta, y.data(), &incy, 1);
          else
            f.spmv(ul, &n, &alpha, a.data(), x.data(), &incx, &beta, y.data(), &incy, 1);
        },
        [&] {
          check_product(a, a0, x, x0, y, y0, quick, ref, gauge, n);
        });
    if (::testing::Test::HasFatalFailure()) return;
  }
}

// ---------------------------------------------------------------------------
// Triangular products and solves in the three storages.
template <class T> void check_triangular(const Fns<T> &f, Rng &r, int trials, bool solve,
                                         const Shape *fx = nullptr) {
  // Solves run on one thread: only the products are repeated per team size.
  const bool dispatch = f.layer == "dispatch" && !solve;
  for (int t = 0; t < trials; ++t) {
    const Kind kind = fx ? fx->kind : pick_kind<T>(r);
    const bool upper = fx ? fx->upper : r.i(0, 1) == 0, unit = fx ? fx->unit : r.i(0, 1) == 0;
    const char tr = fx ? fx->tr : pick_trans<T>(r);
    const bool notr = tr == 'N' || tr == 'n', cj = tr == 'C' || tr == 'c';
    const idx n = fx ? fx->n : r.dim();
    const idx k = fx ? fx->ku : kind == Kind::band ? r.i(0, 8) + (r.i(0, 5) == 0 ? n : 0) : 0;
    const idx lda = (kind == Kind::band ? k + 1 : (n > 1 ? n : 1)) + r.i(0, 2);
    const idx incx = fx ? fx->incx : r.inc();
    SCOPED_TRACE(std::string(solve ? "solve" : "product") + " kind=" + std::to_string(int(kind)) +
                 " uplo=" + (upper ? "U" : "L") + " trans=" + tr + " diag=" + (unit ? "U" : "N") +
                 " n=" + std::to_string(n) + " k=" + std::to_string(k) + " lda=" +
                 std::to_string(lda) + " incx=" + std::to_string(incx));
    std::vector<T> a;
    std::vector<W_t<T>> dense;
    // Off-diagonal elements scaled so that the solves stay well conditioned.
    const idx bw = kind == Kind::band ? (k < n ? k : n) : n;
    fill_triangle<T>(r, kind, upper, n, k, lda, a, dense, unit, solve ? 1.0L / LD(bw + 1) : 1.0L, false);
    if (solve && !unit)
      for_each_stored(kind, upper, n, k, lda, [&](idx i, idx j, idx off) {
        if (i != j) return;
        T v = a[size_t(off)];
        T d = v + (rew(wid(v)) >= 0 ? T(1.5) : T(-1.5));
        a[size_t(off)] = d;
        dense[size_t(i + j * n)] = wid(d);
      });
    // op(A) as a dense matrix.
    std::vector<W_t<T>> op(size_t(n * n));
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < n; ++i) {
        W_t<T> v = notr ? dense[size_t(i + j * n)] : dense[size_t(j + i * n)];
        op[size_t(i + j * n)] = cj ? cjw(v) : v;
      }
    Vec<T> x(n, incx);
    x.randomize(r);
    const auto a0 = a;
    const auto x0 = x;
    std::vector<W_t<T>> ref(static_cast<size_t>(n));
    std::vector<LD> gauge(static_cast<size_t>(n));
    if (!solve) {
      for (idx i = 0; i < n; ++i) {
        W_t<T> s = 0;
        LD g = 0;
        for (idx j = 0; j < n; ++j) {
          s += op[size_t(i + j * n)] * wid(x0[j]);
          g += mag(op[size_t(i + j * n)]) * mag(wid(x0[j]));
        }
        ref[size_t(i)] = s;
        gauge[size_t(i)] = g;
      }
    } else {
      // op(A) is upper triangular when exactly one of (upper, transposed) holds.
      const bool opup = upper == notr;
      for (idx s = 0; s < n; ++s) {
        idx i = opup ? n - 1 - s : s;
        W_t<T> v = wid(x0[i]);
        for (idx j = 0; j < n; ++j)
          if (opup ? j > i : j < i) v -= op[size_t(i + j * n)] * ref[size_t(j)];
        ref[size_t(i)] = v / op[size_t(i + i * n)];
      }
      LD mx = 0;
      for (idx i = 0; i < n; ++i) mx = std::max(mx, mag(ref[size_t(i)]));
      for (idx i = 0; i < n; ++i) gauge[size_t(i)] = 4 * mx;
    }
    const char ul[2] = {upper ? 'U' : 'l', 0}, trs[2] = {tr, 0}, dg[2] = {unit ? 'u' : 'N', 0};
    std::vector<T> dummy;
    auto call = [&] {
      if (kind == Kind::full) (solve ? f.trsv : f.trmv)(ul, trs, dg, &n, a.data(), &lda, x.data(), &incx, 1, 1, 1);
      else if (kind == Kind::band) (solve ? f.tbsv : f.tbmv)(ul, trs, dg, &n, &k, a.data(), &lda, x.data(), &incx, 1, 1, 1);
      else (solve ? f.tpsv : f.tpmv)(ul, trs, dg, &n, a.data(), x.data(), &incx, 1, 1, 1);
    };
    for_threads<T>(dispatch, x.buf, [&] { x = x0; }, call, [&] {
      EXPECT_TRUE(all_same_bits(a, a0)) << "A was written";
      EXPECT_TRUE(x.gaps_untouched(x0)) << "x written between its elements";
      for (idx i = 0; i < n; ++i)
        ASSERT_TRUE(close_to(x[i], ref[size_t(i)], gauge[size_t(i)], n)) << "x[" << i << "]";
    });
    if (::testing::Test::HasFatalFailure()) return;
  }
}

// ---------------------------------------------------------------------------
// ger/geru/gerc.
template <class T> void check_ger(const Fns<T> &f, Rng &r, int trials, const Shape *fx = nullptr) {
  const bool dispatch = f.layer == "dispatch";
  for (int t = 0; t < trials; ++t) {
    const bool conj = Tr<T>::cx && (fx ? fx->tr == 'C' : r.i(0, 1) == 1);
    const idx m = fx ? fx->m : r.dim(), n = fx ? fx->n : r.dim();
    const idx lda = fx && fx->lda ? fx->lda : (m > 1 ? m : 1) + r.i(0, 3);
    const idx incx = fx ? fx->incx : r.inc(), incy = fx ? fx->incy : r.inc();
    const T alpha = r.scalar<T>();
    SCOPED_TRACE(std::string(conj ? "gerc" : "geru") + " m=" + std::to_string(m) + " n=" +
                 std::to_string(n) + " lda=" + std::to_string(lda) + " incx=" +
                 std::to_string(incx) + " incy=" + std::to_string(incy));
    std::vector<T> a(size_t(lda * (n > 0 ? n : 1)), nan_v<T>());
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < m; ++i) a[size_t(i + j * lda)] = r.val<T>();
    Vec<T> x(m, incx), y(n, incy);
    x.randomize(r);
    y.randomize(r);
    const auto a0 = a;
    for_threads<T>(
        dispatch, a, [&] { a = a0; },
        [&] { (conj ? f.gerc : f.geru)(&m, &n, &alpha, x.data(), &incx, y.data(), &incy, a.data(), &lda); },
        [&] {
          for (idx j = 0; j < n; ++j) {
            for (idx i = 0; i < m; ++i) {
              W_t<T> yj = conj ? cjw(wid(y[j])) : wid(y[j]);
              W_t<T> ref = wid(a0[size_t(i + j * lda)]) + wid(alpha) * wid(x[i]) * yj;
              LD g = mag(wid(a0[size_t(i + j * lda)])) + mag(wid(alpha)) * mag(wid(x[i])) * mag(yj);
              ASSERT_TRUE(close_to(a[size_t(i + j * lda)], ref, g, 2)) << "A(" << i << "," << j << ")";
            }
            for (idx i = m; i < lda; ++i)
              ASSERT_TRUE(same_bits(a[size_t(i + j * lda)], a0[size_t(i + j * lda)])) << "padding written";
          }
        });
    if (::testing::Test::HasFatalFailure()) return;
  }
}

// ---------------------------------------------------------------------------
// syr/her, syr2/her2 (full) and spr/hpr, spr2/hpr2 (packed).
template <class T> void check_rank_update(const Fns<T> &f, Rng &r, int trials,
                                          const Shape *fx = nullptr) {
  constexpr bool herm = Tr<T>::cx;
  using R = R_t<T>;
  const bool dispatch = f.layer == "dispatch";
  for (int t = 0; t < trials; ++t) {
    const Kind kind = fx ? fx->kind : r.i(0, 1) ? Kind::full : Kind::packed;
    const bool upper = fx ? fx->upper : r.i(0, 1) == 0, two = fx ? fx->two : r.i(0, 1) == 1;
    const idx n = fx ? fx->n : r.dim(), lda = (n > 1 ? n : 1) + r.i(0, 2);
    const idx incx = fx ? fx->incx : r.inc(), incy = fx ? fx->incy : r.inc();
    const T alpha2 = r.scalar<T>();
    const R alpha1 = R(re_of(r.scalar<T>()));
    SCOPED_TRACE(std::string(two ? "rank-2" : "rank-1") + (kind == Kind::full ? " full" : " packed") +
                 " uplo=" + (upper ? "U" : "L") + " n=" + std::to_string(n) + " lda=" +
                 std::to_string(lda) + " incx=" + std::to_string(incx) + " incy=" +
                 std::to_string(incy));
    std::vector<T> a(size_t(storage_size(kind, n, lda)), nan_v<T>());
    for_each_stored(kind, upper, n, 0, lda, [&](idx, idx, idx off) { a[size_t(off)] = r.val<T>(); });
    Vec<T> x(n, incx), y(n, incy);
    x.randomize(r);
    y.randomize(r);
    const auto a0 = a;
    const char ul[2] = {upper ? 'u' : 'L', 0};
    auto call = [&] {
      if (kind == Kind::full) {
        if (two) f.syr2(ul, &n, &alpha2, x.data(), &incx, y.data(), &incy, a.data(), &lda, 1);
        else f.syr(ul, &n, &alpha1, x.data(), &incx, a.data(), &lda, 1);
      } else {
        if (two) f.spr2(ul, &n, &alpha2, x.data(), &incx, y.data(), &incy, a.data(), 1);
        else f.spr(ul, &n, &alpha1, x.data(), &incx, a.data(), 1);
      }
    };
    const bool quick = two ? is_zero_scalar(alpha2) : alpha1 == R(0);
    for_threads<T>(dispatch, a, [&] { a = a0; }, call, [&] {
      if (quick) {
        EXPECT_TRUE(all_same_bits(a, a0)) << "alpha = 0 must leave A untouched";
        return;
      }
      std::vector<bool> stored(a.size(), false);
      for_each_stored(kind, upper, n, 0, lda, [&](idx i, idx j, idx off) {
        stored[size_t(off)] = true;
        auto op = [&](W_t<T> v) { return herm ? cjw(v) : v; };
        W_t<T> upd, al = two ? wid(alpha2) : W_t<T>(LD(alpha1));
        LD g;
        if (two) {
          upd = al * wid(x[i]) * op(wid(y[j])) + op(al) * wid(y[i]) * op(wid(x[j]));
          g = 2 * mag(al) * (mag(wid(x[i])) * mag(wid(y[j])) + mag(wid(y[i])) * mag(wid(x[j])));
        } else {
          upd = al * wid(x[i]) * op(wid(x[j]));
          g = mag(al) * mag(wid(x[i])) * mag(wid(x[j]));
        }
        W_t<T> old = wid(a0[size_t(off)]);
        if (herm && i == j) old = W_t<T>(rew(old));
        W_t<T> ref = old + upd;
        if (herm && i == j) {
          ref = W_t<T>(rew(ref));
          ASSERT_EQ(im_of(a[size_t(off)]), R(0)) << "Hermitian diagonal keeps an imaginary part";
        }
        ASSERT_TRUE(close_to(a[size_t(off)], ref, g + mag(old), 4)) << "A(" << i << "," << j << ")";
      });
      for (size_t p = 0; p < a.size(); ++p)
        if (!stored[p]) ASSERT_TRUE(same_bits(a[p], a0[p])) << "unstored element " << p << " written";
    });
    if (::testing::Test::HasFatalFailure()) return;
  }
}

template <class T> class Level2 : public ::testing::Test {};
using Precisions = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(Level2, Precisions);

// Every layer the processor can run: the dispatch layer (with threads) and
// each kernel build directly.
template <class T, class F> void each_layer(int seed, int trials, F body) {
  nxl_serv_set_dynamic(0);
  for (const auto &f : layers<T>()) {
    if (!layer_runs_here(f.layer)) continue;
    SCOPED_TRACE("layer " + f.layer);
    Rng r(0x1234567ull * seed + 17);
    body(f, r, f.layer == "dispatch" ? trials : trials / 3);
    if (::testing::Test::HasFatalFailure()) return;
  }
}

TYPED_TEST(Level2, GeneralMatrixVector) {
  each_layer<TypeParam>(1, 90, [](auto &f, Rng &r, int n) { check_general(f, r, n, false); });
}
TYPED_TEST(Level2, BandMatrixVector) {
  each_layer<TypeParam>(2, 90, [](auto &f, Rng &r, int n) { check_general(f, r, n, true); });
}
TYPED_TEST(Level2, SymmetricOrHermitianMatrixVector) {
  each_layer<TypeParam>(3, 120, [](auto &f, Rng &r, int n) { check_symmetric(f, r, n); });
}
TYPED_TEST(Level2, TriangularProduct) {
  each_layer<TypeParam>(4, 120, [](auto &f, Rng &r, int n) { check_triangular(f, r, n, false); });
}
TYPED_TEST(Level2, TriangularSolve) {
  each_layer<TypeParam>(5, 120, [](auto &f, Rng &r, int n) { check_triangular(f, r, n, true); });
}
TYPED_TEST(Level2, GeneralRankOne) {
  each_layer<TypeParam>(6, 90, [](auto &f, Rng &r, int n) { check_ger(f, r, n); });
}
TYPED_TEST(Level2, SymmetricRankOneAndTwo) {
  each_layer<TypeParam>(7, 120, [](auto &f, Rng &r, int n) { check_rank_update(f, r, n); });
}

// Sweeps through the dispatch layer (the build the processor or the
// environment selects): every order 0..40 (plus two that span several
// vector blocks and groups), every flag, band widths from 0 to beyond the
// order; unit, negative and wide increments in turn.
template <class T, class F> void sweep(F body) {
  nxl_serv_set_dynamic(0);
  Rng r(99);
  const auto &f = layers<T>()[0];
  std::vector<idx> orders;
  for (idx n = 0; n <= 40; ++n) orders.push_back(n);
  orders.push_back(64);
  orders.push_back(67);
  orders.push_back(130);
  for (idx n : orders) {
    body(f, r, n);
    if (::testing::Test::HasFatalFailure()) return;
  }
}

const idx kSweepIncs[][2] = {{1, 1}, {-1, 2}, {3, -2}};
const idx *sweep_inc(idx i) { return kSweepIncs[i % 3]; }

std::vector<idx> band_widths(idx n) {
  std::vector<idx> k{0, 1, 2, 3, 7, 8, 9, 16, 17, 33};
  k.push_back(n > 0 ? n - 1 : 0);
  k.push_back(n);
  k.push_back(n + 5);
  return k;
}

TYPED_TEST(Level2, SweepBandAndTriangular) {
  sweep<TypeParam>([](auto &f, Rng &r, idx n) {
    for (idx k : band_widths(n))
      for (int up = 0; up < 2; ++up) {
        const idx *inc = sweep_inc(n + k + up);
        for (char tr : {'N', 'T', 'C'})
          for (int unit = 0; unit < 2; ++unit)
            for (bool solve : {false, true}) {
              const Shape s{Kind::band, up == 1, unit == 1, false, tr, n, n, 0, k, inc[0], inc[1]};
              check_triangular(f, r, 1, solve, &s);
            }
        const Shape s{Kind::band, up == 1, false, false, 'N', n, n, 0, k, inc[0], inc[1]};
        check_symmetric(f, r, 1, &s);
        for (char tr : {'N', 'T', 'C'}) {
          const Shape g{Kind::band, false, false, false, tr, n, n + up * 3, k, k / 2 + up, inc[0], inc[1]};
          check_general(f, r, 1, true, &g);
        }
      }
  });
}

// Band widths on either side of the largest window of partial sums that the
// registers hold (the strip kernels below it, the row blocks above it, for
// each vector width and element size): products and solves, every flag,
// unit stride, the general band product with kl and ku around them, and the
// symmetric product (its strips also hold x and a sum per column: smaller
// limits).
TYPED_TEST(Level2, BandWindowLimits) {
  nxl_serv_set_dynamic(0);
  Rng r(77);
  const auto &f = layers<TypeParam>()[0];
  const idx n = 320;
  for (idx k : {idx(36), idx(37), idx(38), idx(41), idx(72), idx(73), idx(76), idx(77), idx(80), idx(81),
                idx(152), idx(153), idx(304), idx(305)})
    for (int up = 0; up < 2; ++up) {
      for (char tr : {'N', 'T'})
        for (int unit = 0; unit < 2; ++unit)
          for (bool solve : {false, true}) {
            const Shape s{Kind::band, up == 1, unit == 1, false, tr, n, n, 0, k, 1, 1};
            check_triangular(f, r, 1, solve, &s);
          }
      const Shape g{Kind::band, false, false, false, 'N', n + 9, n, k - k / 3, k / 3 + up, 1, 1};
      check_general(f, r, 1, true, &g);
      const Shape sy{Kind::band, up == 1, false, false, 'N', n, n, 0, k, 1, 1};
      check_symmetric(f, r, 1, &sy);
      if (::testing::Test::HasFatalFailure()) return;
    }
}

TYPED_TEST(Level2, SweepFullAndPacked) {
  sweep<TypeParam>([](auto &f, Rng &r, idx n) {
    for (Kind kind : {Kind::full, Kind::packed})
      for (int up = 0; up < 2; ++up) {
        const idx *inc = sweep_inc(n + up + (kind == Kind::full ? 1 : 0));
        for (char tr : {'N', 'T', 'C'})
          for (int unit = 0; unit < 2; ++unit)
            for (bool solve : {false, true}) {
              const Shape s{kind, up == 1, unit == 1, false, tr, n, n, 0, 0, inc[0], inc[1]};
              check_triangular(f, r, 1, solve, &s);
            }
        const Shape s{kind, up == 1, false, false, 'N', n, n, 0, 0, inc[0], inc[1]};
        check_symmetric(f, r, 1, &s);
        for (int two = 0; two < 2; ++two) {
          const Shape u{kind, up == 1, false, two == 1, 'N', n, n, 0, 0, inc[0], inc[1]};
          check_rank_update(f, r, 1, &u);
        }
      }
    for (auto inc : kSweepIncs)
      for (char tr : {'N', 'C'}) {
        const Shape g{Kind::full, false, false, false, tr, n + 3, n, 0, 0, inc[0], inc[1]};
        check_ger(f, r, 1, &g);
      }
  });
}

// Leading dimensions of 2048 and 4096 bytes and multiples: every column's
// rows share their address bits below 4096 (or half of them), which the
// column sweeps and rank updates take in smaller groups, loads first.
TYPED_TEST(Level2, ColumnsSharingLowAddressBits) {
  using T = TypeParam;
  each_layer<T>(7, 1, [](auto &f, Rng &r, int) {
    for (idx bytes : {idx(2048), idx(4096), idx(8192)})
      for (idx n : {idx(5), idx(37)}) {
        const idx lda = bytes / idx(sizeof(T));
        for (char tr : {'N', 'C'}) {
          const Shape g{Kind::full, false, false, false, tr, 40, n, 0, 0, 1, 1, lda};
          check_ger(f, r, 1, &g);
          if (tr == 'N') check_general(f, r, 1, false, &g);
        }
      }
  });
}

// y += A x on real columns sums the products of each group of four columns
// apart; how many columns one pass takes (16, 8 or 4) follows the low address
// bits of the columns, and must not change a bit of the result.
TYPED_TEST(Level2, GeneralProductBitsIndependentOfColumnSpacing) {
  using T = TypeParam;
  if constexpr (!Tr<T>::cx) {
    each_layer<T>(11, 1, [](auto &f, Rng &r, int) {
      const idx m = 45, n = 39, one = 1;
      std::vector<T> dense(static_cast<size_t>(m * n)), x(static_cast<size_t>(n)), y0(static_cast<size_t>(m));
      for (auto &v : dense) v = r.val<T>();
      for (auto &v : x) v = r.val<T>();
      for (auto &v : y0) v = r.val<T>();
      const T alpha = T(0.75), beta = T(-1.25);
      std::vector<T> first;
      // Columns at a common offset from a vector boundary start with a
      // partial block; shifts of a few elements from a 64-byte boundary
      // move where the blocks fall.
      for (idx bytes : {idx(0), idx(2048), idx(4096)})
        for (idx shift : {0, 1, 3}) {
          const idx lda = bytes ? bytes / idx(sizeof(T)) : m;
          std::vector<T> buf(size_t(lda * n + 64), T(0)), y = y0;
          T *a = buf.data() + (64 - reinterpret_cast<uintptr_t>(buf.data()) % 64) / sizeof(T) % (64 / sizeof(T)) + shift;
          for (idx j = 0; j < n; ++j)
            for (idx i = 0; i < m; ++i) a[i + j * lda] = dense[size_t(i + j * m)];
          f.gemv("N", &m, &n, &alpha, a, &lda, x.data(), &one, &beta, y.data(), &one, 1);
          if (first.empty()) first = y;
          else ASSERT_TRUE(all_same_bits(y, first)) << "lda " << lda << " shift " << shift;
        }
    });
  }
}

// Orders large enough for the dispatch layer to split the work among
// threads (and to run the products in parts on one thread): plain and
// transposed triangular products, the symmetric products, the general
// products, ger and the full and packed rank updates in the three storages,
// unit and non-unit increments, band widths narrow and wide; results
// compared with the oracle and bit for bit across 1 to 4 threads.
TYPED_TEST(Level2, ThreadedOrders) {
  nxl_serv_set_dynamic(0);
  Rng r(4242);
  const auto &f = layers<TypeParam>()[0];
  const idx incs[][2] = {{1, 1}, {-2, 3}};
  for (Kind kind : {Kind::full, Kind::packed, Kind::band})
    for (int up = 0; up < 2; ++up)
      for (int v = 0; v < 2; ++v) {
        const idx *inc = incs[(up + v) % 2];
        const idx n = kind == Kind::band ? (v ? 330 : 560) : (v ? 460 : 380);
        const idx k = kind == Kind::band ? (v ? 330 : 120) : 0;
        // A x and a transposed product (T and C in turn), unit and
        // non-unit diagonals in turn.
        for (char tr : {'N', v ? 'C' : 'T'}) {
          const bool unit = (up + v + (tr == 'N')) % 2 == 1;
          const Shape s{kind, up == 1, unit, false, tr, n, n, 0, k, inc[0], inc[1]};
          check_triangular(f, r, 1, false, &s);
          if (::testing::Test::HasFatalFailure()) return;
        }
        const Shape s{kind, up == 1, false, false, 'N', n, n, 0, k, inc[0], inc[1]};
        check_symmetric(f, r, 1, &s);
        if (kind != Kind::band)
          for (int two = 0; two < 2; ++two) {
            const Shape u{kind, up == 1, false, two == 1, 'N', n, n, 0, 0, inc[0], inc[1]};
            check_rank_update(f, r, 1, &u);
          }
        if (kind != Kind::packed) {
          // General products with rows that end off any vector or group
          // boundary: row parts of A x, column parts of the transposed ones.
          const Shape g{kind, false, false, false, up ? 'N' : (v ? 'C' : 'T'), n + 5, n + 3 * v,
                        k, k / 2 + v, inc[0], inc[1]};
          check_general(f, r, 1, kind == Kind::band, &g);
        }
        if (kind == Kind::full) {
          const Shape g{kind, false, false, false, v ? 'C' : 'N', n + 7, n, 0, 0, inc[0], inc[1]};
          check_ger(f, r, 1, &g);
        }
        if (::testing::Test::HasFatalFailure()) return;
      }
}

}  // namespace
