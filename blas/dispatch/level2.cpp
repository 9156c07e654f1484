// Level-2 dispatch layer: quick returns, the threading decision and the split
// of the work among an OpenMP team, then the code-path entries.
//
// Threaded routines split their output so that every element is computed by
// one thread with the same kernel and the same summation order as a call on
// one thread: gemv and gbmv split rows of y ("N") or columns ("T", "C"), ger,
// syr/her and syr2/her2 split columns of A. symv/hemv splits the stored
// columns; each thread sums its columns' contributions into a private vector
// and the team adds those in thread order; sbmv/hbmv and spmv/hpmv do the
// same. spr/hpr and spr2/hpr2 split the packed columns like syr and syr2.
// The triangular products trmv, tbmv and tpmv split the elements of their
// result (rows for A x, columns for the transposed products) and read the
// original x from a copy; each element gets the operations of the product
// on one thread, so the result does not depend on the team.
#include <omp.h>

#include <cmath>

#include "blas/level2.h"
#include "blas/level2_params.h"
#include "service/nxl_serv.h"
#include "service/scalar.h"

#define NXL_L2_DECLARE(name, fam, T, R, P, A) extern "C" void nxl_blas_x##name P;
NXL_L2_ALL_ROUTINES(NXL_L2_DECLARE)
NXL_L2_ALL_PARTS(NXL_L2_DECLARE)

namespace nxl {
namespace {

using l2idx = nxl_int;

// The column-range kernels of one precision.
template <class T> struct Parts;
#define NXL_L2_PARTS_OF(T, p, n1, n2, n3, n4, n5, n6, n7)   \
  template <> struct Parts<T> {                           \
    static constexpr auto symv = nxl_blas_x##p##n1##_part; \
    static constexpr auto syr = nxl_blas_x##p##n2##_part;  \
    static constexpr auto syr2 = nxl_blas_x##p##n3##_part; \
    static constexpr auto sbmv = nxl_blas_x##p##n4##_part; \
    static constexpr auto spmv = nxl_blas_x##p##n5##_part; \
    static constexpr auto spr = nxl_blas_x##p##n6##_part;  \
    static constexpr auto spr2 = nxl_blas_x##p##n7##_part; \
    static constexpr auto trmv = nxl_blas_x##p##trmv_part; \
    static constexpr auto tbmv = nxl_blas_x##p##tbmv_part; \
    static constexpr auto tpmv = nxl_blas_x##p##tpmv_part; \
  };
NXL_L2_PARTS_OF(float, s, symv, syr, syr2, sbmv, spmv, spr, spr2)
NXL_L2_PARTS_OF(double, d, symv, syr, syr2, sbmv, spmv, spr, spr2)
NXL_L2_PARTS_OF(std::complex<float>, c, hemv, her, her2, hbmv, hpmv, hpr, hpr2)
NXL_L2_PARTS_OF(std::complex<double>, z, hemv, her, her2, hbmv, hpmv, hpr, hpr2)

// Matrix elements per thread below which another thread does not pay.
constexpr double kMinWorkPerThread = 32768.0;

// Threads for `work` matrix elements: 1 inside a parallel region of the
// caller, below the threshold or when the BLAS domain allows one thread.
int team_size(double work) {
  if (work < 2 * kMinWorkPerThread) return 1;
  if (omp_in_parallel()) return 1;
  int mx = nxl_serv_domain_get_max_threads(1);
  if (mx <= 1) return 1;
  double want = work / kMinWorkPerThread;
  return want < mx ? int(want) : mx;
}

// Rows [lo, hi) of a length-n range for thread t of nt, in chunks that are
// multiples of `align` elements (whole cache lines of y).
void split_range(l2idx n, int t, int nt, l2idx align, l2idx &lo, l2idx &hi) {
  l2idx chunk = (n + nt - 1) / nt;
  chunk = (chunk + align - 1) / align * align;
  lo = chunk * t < n ? chunk * t : n;
  hi = lo + chunk < n ? lo + chunk : n;
}

// First column of part t of nt of a triangle, balancing the stored elements
// (upper: column j holds j+1, lower: n-j), in multiples of 64 columns.
l2idx triangle_split(l2idx n, int t, int nt, bool upper) {
  if (t <= 0) return 0;
  if (t >= nt) return n;
  double f = double(t) / double(nt);
  double c = upper ? double(n) * std::sqrt(f) : double(n) * (1.0 - std::sqrt(1.0 - f));
  l2idx ci = (l2idx(c) + 32) / 64 * 64;
  return ci < n ? ci : n;
}

// Sub-vector of elements [start, start+len) of an n-vector with increment inc.
template <class T>
T *sub_vec(T *v, l2idx n, l2idx inc, l2idx start, l2idx len) {
  return inc > 0 ? v + start * inc : v + (n - start - len) * (-inc);
}

template <class T>
constexpr l2idx line_elems() {
  return 64 / sizeof(T) > 0 ? l2idx(64 / sizeof(T)) : 1;
}

template <class T>
bool is_notrans(const char *t) {
  return nxl_serv_lsame(t, "N", 1, 1) != 0;
}

// Runs body(t, nt) on a team of nt threads (nt > 1), or on the caller.
template <class F>
void run_team(int nt, F body) {
  if (nt <= 1) {
    body(0, 1);
    return;
  }
#pragma omp parallel num_threads(nt)
  body(omp_get_thread_num(), omp_get_num_threads());
}

// ---------------------------------------------------------------------------
template <class T, class R, void (*X) NXL_L2_GEMV_P(T)>
void gemv_d NXL_L2_GEMV_P(T) {
  const l2idx mm = *m, nn = *n;
  if (mm <= 0 || nn <= 0 || (is_zero(*alpha) && is_one(*beta))) return;
  const bool nt_ = is_notrans<T>(trans);
  const int nt = is_zero(*alpha) ? 1 : team_size(double(mm) * double(nn));
  if (nt <= 1) {
    X(trans, m, n, alpha, a, lda, x, incx, beta, y, incy, 1);
    return;
  }
  const l2idx ld = *lda, iy = *incy;
  run_team(nt, [&](int t, int nth) {
    l2idx lo, hi;
    if (nt_) {
      split_range(mm, t, nth, line_elems<T>(), lo, hi);
      if (hi <= lo) return;
      const l2idx ms = hi - lo;
      X(trans, &ms, n, alpha, a + lo, lda, x, incx, beta, sub_vec(y, mm, iy, lo, ms), incy, 1);
    } else {
      split_range(nn, t, nth, 8, lo, hi);
      if (hi <= lo) return;
      const l2idx ns = hi - lo;
      X(trans, m, &ns, alpha, a + lo * ld, lda, x, incx, beta, sub_vec(y, nn, iy, lo, ns), incy, 1);
    }
  });
}

template <class T, class R, void (*X) NXL_L2_GBMV_P(T)>
void gbmv_d NXL_L2_GBMV_P(T) {
  const l2idx mm = *m, nn = *n, kll = *kl, kuu = *ku;
  if (mm <= 0 || nn <= 0 || (is_zero(*alpha) && is_one(*beta))) return;
  const bool nt_ = is_notrans<T>(trans);
  const int nt = is_zero(*alpha) ? 1 : team_size(double(nt_ ? mm : nn) * double(kll + kuu + 1));
  if (nt <= 1) {
    X(trans, m, n, kl, ku, alpha, a, lda, x, incx, beta, y, incy, 1);
    return;
  }
  const l2idx ld = *lda, ix = *incx, iy = *incy;
  run_team(nt, [&](int t, int nth) {
    l2idx lo, hi;
    if (nt_) {
      // Rows [lo, hi) meet columns [c0, c1) of the band; the block is again a
      // band matrix with shifted diagonal counts.
      split_range(mm, t, nth, line_elems<T>(), lo, hi);
      if (hi <= lo) return;
      const l2idx ms = hi - lo;
      const l2idx c0 = lo - kll > 0 ? lo - kll : 0;
      const l2idx c1 = hi + kuu < nn ? hi + kuu : nn;
      T *ys = sub_vec(y, mm, iy, lo, ms);
      if (c1 <= c0) {
        // No stored element in these rows: y = beta*y only.
        const l2idx zero = 0, one = 1;
        const T no_alpha = T(0);
        X(trans, &ms, &one, &zero, &zero, &no_alpha, a, lda, x, incx, beta, ys, incy, 1);
        return;
      }
      const l2idx ns = c1 - c0, kls = kll - lo + c0, kus = kuu + lo - c0;
      X(trans, &ms, &ns, &kls, &kus, alpha, a + c0 * ld, lda, sub_vec(x, nn, ix, c0, ns), incx,
        beta, ys, incy, 1);
    } else {
      split_range(nn, t, nth, 8, lo, hi);
      if (hi <= lo) return;
      const l2idx ns = hi - lo, kls = kll + lo, kus = kuu - lo;
      X(trans, m, &ns, &kls, &kus, alpha, a + lo * ld, lda, x, incx, beta,
        sub_vec(y, nn, iy, lo, ns), incy, 1);
    }
  });
}

// symv/hemv, sbmv/hbmv and spmv/hpmv above the threading threshold always
// run as kSymvParts column parts summed in part order, whatever the team
// size, so that the result does not depend on the number of threads.
constexpr int kSymvParts = 4;

// y := beta*y + the sum of the parts; part(yp, c0, c1) adds the contribution
// of the stored columns [c0, c1) to the contiguous vector yp; bounds(p)
// gives the first column of part p. false when the parts' buffer is not
// to be had (the caller runs the plain kernel).
template <class T, class Bounds, class Part>
bool sym_parts(l2idx nn, double work, const T *beta, T *y, l2idx iy, Bounds bounds, Part part) {
  T *buf = static_cast<T *>(nxl_serv_allocate(sizeof(T) * size_t(nn) * kSymvParts, 64));
  if (!buf) return false;
  int nt = team_size(work);
  if (nt > kSymvParts) nt = kSymvParts;
  const T b = *beta;
  run_team(nt, [&](int t, int nth) {
    for (int p = t; p < kSymvParts; p += nth) {
      T *yp = buf + size_t(p) * size_t(nn);
      for (l2idx i = 0; i < nn; ++i) yp[i] = T(0);
      const l2idx c0 = bounds(p), c1 = bounds(p + 1);
      if (c1 > c0) part(yp, &c0, &c1);
    }
#pragma omp barrier
    l2idx lo, hi;
    split_range(nn, t, nth, line_elems<T>(), lo, hi);
    for (l2idx i = lo; i < hi; ++i) {
      T s = buf[i];
      for (int u = 1; u < kSymvParts; ++u) s = s + buf[size_t(u) * size_t(nn) + size_t(i)];
      T &yi = y[iy > 0 ? i * iy : (nn - 1 - i) * (-iy)];
      yi = is_zero(b) ? s : mul(b, yi) + s;
    }
  });
  nxl_serv_deallocate(buf);
  return true;
}

// Band width below which sbmv/hbmv runs on one thread.
constexpr l2idx kSbmvMinBand = 64;

// Whether a symmetric product of `work` stored elements runs in parts.
template <class T>
bool sym_threaded(const T *alpha, double work) {
  return !is_zero(*alpha) && work >= 2 * kMinWorkPerThread;
}

template <class T, class R, void (*X) NXL_L2_SYMV_P(T)>
void symv_d NXL_L2_SYMV_P(T) {
  const l2idx nn = *n;
  if (nn <= 0 || (is_zero(*alpha) && is_one(*beta))) return;
  const double work = 0.5 * double(nn) * double(nn);
  const bool upper = nxl_serv_lsame(uplo, "U", 1, 1) != 0;
  if (sym_threaded(alpha, work) &&
      sym_parts(
          nn, work, beta, y, *incy,
          [&](int p) { return triangle_split(nn, p, kSymvParts, upper); },
          [&](T *yp, const l2idx *c0, const l2idx *c1) {
            Parts<T>::symv(uplo, n, c0, c1, alpha, a, lda, x, incx, yp);
          }))
    return;
  X(uplo, n, alpha, a, lda, x, incx, beta, y, incy, 1);
}

template <class T, class R, void (*X) NXL_L2_SBMV_P(T)>
void sbmv_d NXL_L2_SBMV_P(T) {
  const l2idx nn = *n;
  if (nn <= 0 || (is_zero(*alpha) && is_one(*beta))) return;
  const l2idx kb = *kband < nn ? *kband : nn;
  // Narrow bands: the parts' own vectors (zeroed, then summed) cost too much
  // next to the band itself, so parts start at wider bands than the
  // stored-area threshold alone gives.
  const double work = double(nn) * double(kb + 1);
  if (kb >= kSbmvMinBand && sym_threaded(alpha, work) &&
      sym_parts(
          nn, work, beta, y, *incy,
          [&](int p) {
            l2idx lo, hi;
            split_range(nn, p, kSymvParts, 64, lo, hi);
            return p < kSymvParts ? lo : nn;
          },
          [&](T *yp, const l2idx *c0, const l2idx *c1) {
            Parts<T>::sbmv(uplo, n, kband, c0, c1, alpha, a, lda, x, incx, yp);
          }))
    return;
  X(uplo, n, kband, alpha, a, lda, x, incx, beta, y, incy, 1);
}

template <class T, class R, void (*X) NXL_L2_SPMV_P(T)>
void spmv_d NXL_L2_SPMV_P(T) {
  const l2idx nn = *n;
  if (nn <= 0 || (is_zero(*alpha) && is_one(*beta))) return;
  const double work = 0.5 * double(nn) * double(nn);
  const bool upper = nxl_serv_lsame(uplo, "U", 1, 1) != 0;
  const l2idx no_lda = 1;
  if (sym_threaded(alpha, work) &&
      sym_parts(
          nn, work, beta, y, *incy,
          [&](int p) { return triangle_split(nn, p, kSymvParts, upper); },
          [&](T *yp, const l2idx *c0, const l2idx *c1) {
            Parts<T>::spmv(uplo, n, c0, c1, alpha, ap, &no_lda, x, incx, yp);
          }))
    return;
  X(uplo, n, alpha, ap, x, incx, beta, y, incy, 1);
}

// Triangular products above the threading threshold: x (gathered into a
// contiguous buffer when its increment is not 1) and a copy of it; the
// elements of the result split among the team, rows of A x in parts of
// equal stored area (band: equal counts), columns of the transposed
// products likewise. The split follows the stored area, never the bits: an
// element is computed the same way in any part.
template <class T, class Part>
bool tri_threaded(const char *uplo, const char *trans, l2idx nn, l2idx ix, T *x, double work,
                  bool band, Part part) {
  if (work < 2 * kMinWorkPerThread) return false;
  const bool gather = ix != 1;
  T *buf = static_cast<T *>(nxl_serv_allocate(sizeof(T) * size_t(nn) * (gather ? 2 : 1), 64));
  if (!buf) return false;
  T *xt = gather ? buf + nn : x;
  auto at = [&](l2idx i) -> T & { return x[ix > 0 ? i * ix : (nn - 1 - i) * (-ix)]; };
  if (gather)
    for (l2idx i = 0; i < nn; ++i) xt[i] = at(i);
  for (l2idx i = 0; i < nn; ++i) buf[i] = xt[i];
  // Rows i of A x hold n - i stored elements for upper A (like the columns
  // of a lower triangle), i + 1 for lower; columns of A^T x the reverse.
  const bool upper = nxl_serv_lsame(uplo, "U", 1, 1) != 0;
  const bool grows = upper == !is_notrans<T>(trans);
  const int nt = team_size(work);
  run_team(nt, [&](int t, int nth) {
    l2idx p0, p1;
    if (band) {
      split_range(nn, t, nth, 64, p0, p1);
    } else {
      p0 = triangle_split(nn, t, nth, grows);
      p1 = triangle_split(nn, t + 1, nth, grows);
    }
    if (p1 > p0) part(xt, buf, &p0, &p1);
  });
  if (gather)
    for (l2idx i = 0; i < nn; ++i) at(i) = xt[i];
  nxl_serv_deallocate(buf);
  return true;
}

template <class T, class R, void (*X) NXL_L2_TRMV_P(T)>
void trmv_d NXL_L2_TRMV_P(T) {
  const l2idx nn = *n;
  if (nn <= 0) return;
  if (tri_threaded(uplo, trans, nn, *incx, x, 0.5 * double(nn) * double(nn), false,
                   [&](T *xt, const T *xc, const l2idx *p0, const l2idx *p1) {
                     Parts<T>::trmv(uplo, trans, diag, n, n, a, lda, xt, xc, p0, p1);
                   }))
    return;
  X(uplo, trans, diag, n, a, lda, x, incx, 1, 1, 1);
}

template <class T, class R, void (*X) NXL_L2_TBMV_P(T)>
void tbmv_d NXL_L2_TBMV_P(T) {
  const l2idx nn = *n;
  if (nn <= 0) return;
  const l2idx kb = *kband < nn ? *kband : nn;
  if (tri_threaded(uplo, trans, nn, *incx, x, double(nn) * double(kb + 1), true,
                   [&](T *xt, const T *xc, const l2idx *p0, const l2idx *p1) {
                     Parts<T>::tbmv(uplo, trans, diag, n, kband, a, lda, xt, xc, p0, p1);
                   }))
    return;
  X(uplo, trans, diag, n, kband, a, lda, x, incx, 1, 1, 1);
}

template <class T, class R, void (*X) NXL_L2_TPMV_P(T)>
void tpmv_d NXL_L2_TPMV_P(T) {
  const l2idx nn = *n;
  if (nn <= 0) return;
  const l2idx no_lda = 1;
  if (tri_threaded(uplo, trans, nn, *incx, x, 0.5 * double(nn) * double(nn), false,
                   [&](T *xt, const T *xc, const l2idx *p0, const l2idx *p1) {
                     Parts<T>::tpmv(uplo, trans, diag, n, n, ap, &no_lda, xt, xc, p0, p1);
                   }))
    return;
  X(uplo, trans, diag, n, ap, x, incx, 1, 1, 1);
}

template <class T, class R, void (*X) NXL_L2_TRMV_P(T)>
void trsv_d NXL_L2_TRMV_P(T) {
  if (*n <= 0) return;
  X(uplo, trans, diag, n, a, lda, x, incx, 1, 1, 1);
}

template <class T, class R, void (*X) NXL_L2_TBMV_P(T)>
void tbsv_d NXL_L2_TBMV_P(T) {
  if (*n <= 0) return;
  X(uplo, trans, diag, n, kband, a, lda, x, incx, 1, 1, 1);
}

template <class T, class R, void (*X) NXL_L2_TPMV_P(T)>
void tpsv_d NXL_L2_TPMV_P(T) {
  if (*n <= 0) return;
  X(uplo, trans, diag, n, ap, x, incx, 1, 1, 1);
}

template <class T, class R, void (*X) NXL_L2_GER_P(T)>
void ger_d NXL_L2_GER_P(T) {
  const l2idx mm = *m, nn = *n;
  if (mm <= 0 || nn <= 0 || is_zero(*alpha)) return;
  const int nt = team_size(double(mm) * double(nn));
  if (nt <= 1) {
    X(m, n, alpha, x, incx, y, incy, a, lda);
    return;
  }
  const l2idx ld = *lda, iy = *incy;
  run_team(nt, [&](int t, int nth) {
    l2idx lo, hi;
    split_range(nn, t, nth, 8, lo, hi);
    if (hi <= lo) return;
    const l2idx ns = hi - lo;
    X(m, &ns, alpha, x, incx, sub_vec(y, nn, iy, lo, ns), incy, a + lo * ld, lda);
  });
}

// Columns of the triangle split among a team, each part by its own kernel.
template <class F>
void triangle_team(const char *uplo, l2idx n, F part) {
  const int nt = team_size(0.5 * double(n) * double(n));
  const bool upper = nxl_serv_lsame(uplo, "U", 1, 1) != 0;
  run_team(nt, [&](int t, int nth) {
    const l2idx c0 = triangle_split(n, t, nth, upper), c1 = triangle_split(n, t + 1, nth, upper);
    if (c1 > c0) part(&c0, &c1);
  });
}

template <class T, class R, void (*X) NXL_L2_SYR_P(T, R)>
void syr_d NXL_L2_SYR_P(T, R) {
  if (*n <= 0 || *alpha == R(0)) return;
  triangle_team(uplo, *n, [&](const l2idx *c0, const l2idx *c1) {
    Parts<T>::syr(uplo, n, c0, c1, alpha, x, incx, a, lda);
  });
}

template <class T, class R, void (*X) NXL_L2_SYR2_P(T)>
void syr2_d NXL_L2_SYR2_P(T) {
  if (*n <= 0 || is_zero(*alpha)) return;
  triangle_team(uplo, *n, [&](const l2idx *c0, const l2idx *c1) {
    Parts<T>::syr2(uplo, n, c0, c1, alpha, x, incx, y, incy, a, lda);
  });
}

template <class T, class R, void (*X) NXL_L2_SPR_P(T, R)>
void spr_d NXL_L2_SPR_P(T, R) {
  if (*n <= 0 || *alpha == R(0)) return;
  const l2idx no_lda = 1;
  triangle_team(uplo, *n, [&](const l2idx *c0, const l2idx *c1) {
    Parts<T>::spr(uplo, n, c0, c1, alpha, x, incx, ap, &no_lda);
  });
}

template <class T, class R, void (*X) NXL_L2_SPR2_P(T)>
void spr2_d NXL_L2_SPR2_P(T) {
  if (*n <= 0 || is_zero(*alpha)) return;
  const l2idx no_lda = 1;
  triangle_team(uplo, *n, [&](const l2idx *c0, const l2idx *c1) {
    Parts<T>::spr2(uplo, n, c0, c1, alpha, x, incx, y, incy, ap, &no_lda);
  });
}

}  // namespace
}  // namespace nxl

// The dispatch functions, one per routine.
#define NXL_L2_DISPATCH(name, fam, T, R, P, A) \
  extern "C" void nxl_blas_##name P { nxl::fam<T, R, nxl_blas_x##name> A; }
NXL_L2_ALL_ROUTINES(NXL_L2_DISPATCH)
