// The exported routines of the symmetric / Hermitian indefinite families:
// argument checks in the standard's order, workspace queries, and the
// composition of factor.h, solve.h and inverse.h. Fam<false> gives the real
// symmetric and complex symmetric routines (sy), Fam<true> the Hermitian
// ones (he).
#ifndef NXL_LAPACK_SYM_API_H
#define NXL_LAPACK_SYM_API_H

#include "lapack/aux/copy.h"
#include "lapack/aux/norms.h"
#include "lapack/lu/gecon.h"
#include "lapack/lu/refine.h"
#include "lapack/sym/equb.h"
#include "lapack/sym/factor.h"
#include "lapack/sym/inverse.h"
#include "lapack/sym/solve.h"

namespace nxl {
namespace lapack {
namespace sym {

enum class Kind { BK, Rook, RK };

// A 1-based view index (0: none) as an index of the stored matrix.
inline idx stored_index(bool up, idx n, idx k) { return (k == 0 || !up) ? k : n + 1 - k; }

template <class T, bool H> struct RefineOps {
  bool up;
  idx n;
  const T *a, *af;
  idx lda, ldaf;
  const idx *ipiv;
  void residual(const T *x, const T *b, T *r) const {
    for (idx i = 0; i < n; ++i) r[i] = b[i];
    sym_mv<T, H>(up, n, T(-1), a, lda, x, T(1), r);
  }
  void abs_product(const T *x, real_t<T> *w) const {
    for (idx j = 0; j < n; ++j) {
      idx lo = up ? 0 : j + 1, hi = up ? j : n;
      real_t<T> xj = abs1(x[j]), s = 0;
      for (idx i = lo; i < hi; ++i) {
        real_t<T> v = abs1(a[i + j * lda]);
        w[i] += v * xj;
        s += v * abs1(x[i]);
      }
      w[j] += abs1(Ops<T, H>::diag(a[j + j * lda])) * xj + s;
    }
  }
  void solve(T *v, bool) const {
    solve_classic<T, H, false>(tri_view(up, n, const_cast<T *>(af), ldaf), n, 1, piv_view(up, n, ipiv),
                               rhs_view(up, n, v, n));
  }
};

template <bool H> struct Fam {
  // ---- factorizations -------------------------------------------------
  template <class T, Kind K>
  static void trf_any(const char *op, idx lwpos, const char *uplo, const idx *pn, T *a, const idx *plda, T *e,
                      idx *ipiv, T *work, const idx *plwork, idx *info) {
    idx n = *pn, lda = *plda, lwork = *plwork;
    *info = 0;
    bool up = same(uplo, 'U'), lquery = lwork == -1;
    if (!up && !same(uplo, 'L')) return fam_report<T, H>(op, 1, info);
    if (n < 0) return fam_report<T, H>(op, 2, info);
    if (lda < imax(1, n)) return fam_report<T, H>(op, 4, info);
    if (lwork < 1 && !lquery) return fam_report<T, H>(op, lwpos, info);
    idx nb = fam_nb<T, H>(op, uplo, n);
    idx lwkopt = imax(1, n * nb);
    work[0] = work_size<T>(lwkopt);
    if (lquery || n == 0) return;
    idx nbmin = 2;
    if (nb > 1 && nb < n) {
      if (lwork < n * nb) {
        nb = imax(lwork / n, 1);
        nbmin = imax(2, fam_nbmin<T, H>(op, uplo, n));
      }
    } else {
      nb = n;
    }
    if (nb < nbmin) nb = n;
    Mat<T> av = tri_view(up, n, a, lda);
    Piv ip = piv_view(up, n, ipiv);
    Vec<T> ev = vec_view(up, n, e);
    Mat<T> wv{work, 1, n};
    if (nb < n && up) wv = Mat<T>{work + (n - 1) + (nb - 1) * n, -1, -n};
    if constexpr (K == Kind::BK) *info = factor_blocked<T, H, false, false>(av, n, ip, ev, wv, nb);
    else if constexpr (K == Kind::Rook) *info = factor_blocked<T, H, true, false>(av, n, ip, ev, wv, nb);
    else *info = factor_blocked<T, H, true, true>(av, n, ip, ev, wv, nb);
    *info = stored_index(up, n, *info);
    work[0] = work_size<T>(lwkopt);
  }
  template <class T>
  static void trf(const char *uplo, const idx *n, T *a, const idx *lda, idx *ipiv, T *work, const idx *lwork,
                  idx *info) {
    trf_any<T, Kind::BK>("TRF", 7, uplo, n, a, lda, nullptr, ipiv, work, lwork, info);
  }
  template <class T>
  static void trf_rook(const char *uplo, const idx *n, T *a, const idx *lda, idx *ipiv, T *work,
                       const idx *lwork, idx *info) {
    trf_any<T, Kind::Rook>("TRF_ROOK", 7, uplo, n, a, lda, nullptr, ipiv, work, lwork, info);
  }
  template <class T>
  static void trf_rk(const char *uplo, const idx *n, T *a, const idx *lda, T *e, idx *ipiv, T *work,
                     const idx *lwork, idx *info) {
    trf_any<T, Kind::RK>("TRF_RK", 8, uplo, n, a, lda, e, ipiv, work, lwork, info);
  }

  template <class T, Kind K>
  static void tf2_any(const char *op, const char *uplo, const idx *pn, T *a, const idx *plda, T *e, idx *ipiv,
                      idx *info) {
    idx n = *pn, lda = *plda;
    *info = 0;
    bool up = same(uplo, 'U');
    if (!up && !same(uplo, 'L')) return fam_report<T, H>(op, 1, info);
    if (n < 0) return fam_report<T, H>(op, 2, info);
    if (lda < imax(1, n)) return fam_report<T, H>(op, 4, info);
    if (n == 0) return;
    Mat<T> av = tri_view(up, n, a, lda);
    Piv ip = piv_view(up, n, ipiv);
    Vec<T> ev = vec_view(up, n, e);
    if constexpr (K == Kind::BK) *info = factor_unblocked<T, H, false, false>(av, n, ip, 0, ev);
    else if constexpr (K == Kind::Rook) *info = factor_unblocked<T, H, true, false>(av, n, ip, 0, ev);
    else *info = factor_unblocked<T, H, true, true>(av, n, ip, 0, ev);
    *info = stored_index(up, n, *info);
  }
  template <class T>
  static void tf2(const char *uplo, const idx *n, T *a, const idx *lda, idx *ipiv, idx *info) {
    tf2_any<T, Kind::BK>("TF2", uplo, n, a, lda, nullptr, ipiv, info);
  }
  template <class T>
  static void tf2_rook(const char *uplo, const idx *n, T *a, const idx *lda, idx *ipiv, idx *info) {
    tf2_any<T, Kind::Rook>("TF2_ROOK", uplo, n, a, lda, nullptr, ipiv, info);
  }
  template <class T>
  static void tf2_rk(const char *uplo, const idx *n, T *a, const idx *lda, T *e, idx *ipiv, idx *info) {
    tf2_any<T, Kind::RK>("TF2_RK", uplo, n, a, lda, e, ipiv, info);
  }

  // Panel routines: no argument checks (auxiliaries).
  template <class T, Kind K>
  static void laf_any(const char *uplo, const idx *pn, const idx *pnb, idx *kb, T *a, const idx *plda, T *e,
                      idx *ipiv, T *w, const idx *pldw, idx *info) {
    idx n = *pn, nb = *pnb, lda = *plda, ldw = *pldw;
    *info = 0;
    *kb = 0;
    if (n <= 0 || nb <= 0) return;
    bool up = same(uplo, 'U');
    Mat<T> av = tri_view(up, n, a, lda);
    Piv ip = piv_view(up, n, ipiv);
    Vec<T> ev = vec_view(up, n, e);
    Mat<T> wv = up ? Mat<T>{w + (n - 1) + (nb - 1) * ldw, -1, -ldw} : Mat<T>{w, 1, ldw};
    if constexpr (K == Kind::BK) *info = factor_panel<T, H, false, false>(av, n, nb, wv, ip, 0, ev, kb);
    else if constexpr (K == Kind::Rook) *info = factor_panel<T, H, true, false>(av, n, nb, wv, ip, 0, ev, kb);
    else *info = factor_panel<T, H, true, true>(av, n, nb, wv, ip, 0, ev, kb);
    *info = stored_index(up, n, *info);
  }
  template <class T>
  static void laf(const char *uplo, const idx *n, const idx *nb, idx *kb, T *a, const idx *lda, idx *ipiv, T *w,
                  const idx *ldw, idx *info) {
    laf_any<T, Kind::BK>(uplo, n, nb, kb, a, lda, nullptr, ipiv, w, ldw, info);
  }
  template <class T>
  static void laf_rook(const char *uplo, const idx *n, const idx *nb, idx *kb, T *a, const idx *lda, idx *ipiv,
                       T *w, const idx *ldw, idx *info) {
    laf_any<T, Kind::Rook>(uplo, n, nb, kb, a, lda, nullptr, ipiv, w, ldw, info);
  }
  template <class T>
  static void laf_rk(const char *uplo, const idx *n, const idx *nb, idx *kb, T *a, const idx *lda, T *e,
                     idx *ipiv, T *w, const idx *ldw, idx *info) {
    laf_any<T, Kind::RK>(uplo, n, nb, kb, a, lda, e, ipiv, w, ldw, info);
  }

  // ---- solves -----------------------------------------------------------
  template <class T>
  static bool trs_check(const char *op, idx ldbpos, const char *uplo, idx n, idx nrhs, idx lda, idx ldb,
                        idx *info) {
    *info = 0;
    if (!same(uplo, 'U') && !same(uplo, 'L')) return fam_report<T, H>(op, 1, info), false;
    if (n < 0) return fam_report<T, H>(op, 2, info), false;
    if (nrhs < 0) return fam_report<T, H>(op, 3, info), false;
    if (lda < imax(1, n)) return fam_report<T, H>(op, 5, info), false;
    if (ldb < imax(1, n)) return fam_report<T, H>(op, ldbpos, info), false;
    return n > 0 && nrhs > 0;
  }
  template <class T, bool Rook>
  static void trs_classic(const char *op, const char *uplo, const idx *n, const idx *nrhs, const T *a,
                          const idx *lda, const idx *ipiv, T *b, const idx *ldb, idx *info) {
    if (!trs_check<T>(op, 8, uplo, *n, *nrhs, *lda, *ldb, info)) return;
    solve_classic_any<T, H, Rook>(same(uplo, 'U'), *n, *nrhs, a, *lda, ipiv, b, *ldb);
  }
  template <class T>
  static void trs(const char *uplo, const idx *n, const idx *nrhs, const T *a, const idx *lda, const idx *ipiv,
                  T *b, const idx *ldb, idx *info) {
    trs_classic<T, false>("TRS", uplo, n, nrhs, a, lda, ipiv, b, ldb, info);
  }
  template <class T>
  static void trs_rook(const char *uplo, const idx *n, const idx *nrhs, const T *a, const idx *lda,
                       const idx *ipiv, T *b, const idx *ldb, idx *info) {
    trs_classic<T, true>("TRS_ROOK", uplo, n, nrhs, a, lda, ipiv, b, ldb, info);
  }
  // Level-3 solve: the factor is converted in place (e in work) and back.
  template <class T>
  static void trs2(const char *uplo, const idx *n, const idx *nrhs, T *a, const idx *lda, const idx *ipiv, T *b,
                   const idx *ldb, T *work, idx *info) {
    if (!trs_check<T>("TRS2", 8, uplo, *n, *nrhs, *lda, *ldb, info)) return;
    bool up = same(uplo, 'U');
    idx *ip = const_cast<idx *>(ipiv);
    convert<T, H>(up, *n, a, *lda, work, ip, false, true, false);
    solve_bounded<T, H>(up, *n, *nrhs, a, *lda, work, ipiv, false, b, *ldb);
    convert<T, H>(up, *n, a, *lda, work, ip, false, false, false);
  }
  template <class T>
  static void trs_3(const char *uplo, const idx *n, const idx *nrhs, const T *a, const idx *lda, const T *e,
                    const idx *ipiv, T *b, const idx *ldb, idx *info) {
    if (!trs_check<T>("TRS_3", 9, uplo, *n, *nrhs, *lda, *ldb, info)) return;
    solve_bounded<T, H>(same(uplo, 'U'), *n, *nrhs, a, *lda, e, ipiv, true, b, *ldb);
  }

  // ---- storage conversions ----------------------------------------------
  template <class T>
  static void conv_any(const char *op, bool rook, bool fix, const char *uplo, const char *way, const idx *pn,
                       T *a, const idx *plda, T *e, idx *ipiv, idx *info) {
    idx n = *pn, lda = *plda;
    *info = 0;
    bool up = same(uplo, 'U');
    if (!up && !same(uplo, 'L')) return fam_report<T, false>(op, 1, info);
    bool to = same(way, 'C');
    if (!to && !same(way, 'R')) return fam_report<T, false>(op, 2, info);
    if (n < 0) return fam_report<T, false>(op, 3, info);
    if (lda < imax(1, n)) return fam_report<T, false>(op, 5, info);
    if (n == 0) return;
    convert<T, H>(up, n, a, lda, e, ipiv, rook, to, fix);
  }
  template <class T>
  static void conv(const char *uplo, const char *way, const idx *n, T *a, const idx *lda, const idx *ipiv, T *e,
                   idx *info) {
    conv_any<T>("CONV", false, false, uplo, way, n, a, lda, e, const_cast<idx *>(ipiv), info);
  }
  template <class T>
  static void convf(const char *uplo, const char *way, const idx *n, T *a, const idx *lda, T *e, idx *ipiv,
                    idx *info) {
    conv_any<T>("CONVF", false, true, uplo, way, n, a, lda, e, ipiv, info);
  }
  template <class T>
  static void convf_rook(const char *uplo, const char *way, const idx *n, T *a, const idx *lda, T *e,
                         const idx *ipiv, idx *info) {
    conv_any<T>("CONVF_ROOK", true, false, uplo, way, n, a, lda, e, const_cast<idx *>(ipiv), info);
  }

  // ---- inverses ---------------------------------------------------------
  template <class T>
  static bool tri_check(const char *op, const char *uplo, idx n, idx lda, idx *info) {
    *info = 0;
    if (!same(uplo, 'U') && !same(uplo, 'L')) return fam_report<T, H>(op, 1, info), false;
    if (n < 0) return fam_report<T, H>(op, 2, info), false;
    if (lda < imax(1, n)) return fam_report<T, H>(op, 4, info), false;
    return true;
  }
  // Classic storage: spread the interchanges, then invert with D read from A.
  template <class T>
  // With wsize >= n nb + 2n entries of work (nb >= 2) the blocked form runs.
  static void tri_classic(bool rook, const char *uplo, idx n, T *a, idx lda, const idx *ipiv, T *work,
                          idx *info, idx wsize = 0, idx nb = 0) {
    if (n == 0) return;
    bool up = same(uplo, 'U');
    if ((*info = singular_block<T, H>(up, n, a, lda, ipiv)) != 0) return;
    spread_swaps<T>(up, n, a, lda, ipiv, rook, true);
    if (nb >= 2 && wsize >= n * nb + 2 * n) invert_blocked<T, H>(up, n, a, lda, nullptr, ipiv, rook, work, nb);
    else invert_bounded<T, H>(up, n, a, lda, nullptr, ipiv, rook, work);
  }
  template <class T>
  static void tri(const char *uplo, const idx *n, T *a, const idx *lda, const idx *ipiv, T *work, idx *info) {
    if (tri_check<T>("TRI", uplo, *n, *lda, info)) tri_classic<T>(false, uplo, *n, a, *lda, ipiv, work, info);
  }
  template <class T>
  static void tri_rook(const char *uplo, const idx *n, T *a, const idx *lda, const idx *ipiv, T *work,
                       idx *info) {
    if (tri_check<T>("TRI_ROOK", uplo, *n, *lda, info))
      tri_classic<T>(true, uplo, *n, a, *lda, ipiv, work, info);
  }
  template <class T> static idx tri_worksize(const char *op, const char *uplo, idx n) {
    if (n == 0) return 1;
    idx nb = fam_nb<T, H>(op, uplo, n);
    if (nb < 1) nb = 1;
    return (n + nb + 1) * (nb + 3);
  }
  template <class T>
  static void tri2(const char *uplo, const idx *n, T *a, const idx *lda, const idx *ipiv, T *work,
                   const idx *lwork, idx *info) {
    if (!tri_check<T>("TRI2", uplo, *n, *lda, info)) return;
    // The inverse needs n entries; the query returns the blocked size.
    idx minsize = tri_worksize<T>("TRI2", uplo, *n);
    if (*lwork < imax(1, *n) && *lwork != -1) return fam_report<T, H>("TRI2", 7, info);
    if (*lwork == -1) {
      work[0] = work_size<T>(minsize);
      return;
    }
    idx nb = fam_nb<T, H>("TRI2", uplo, *n);
    if (*lwork < *n * nb + 2 * *n) nb = (*lwork - 2 * *n) / imax(1, *n);
    tri_classic<T>(false, uplo, *n, a, *lda, ipiv, work, info, *lwork, nb);
  }
  template <class T>
  // work holds (n + nb + 1) (nb + 3) entries.
  static void tri2x(const char *uplo, const idx *n, T *a, const idx *lda, const idx *ipiv, T *work,
                    const idx *nb, idx *info) {
    if (tri_check<T>("TRI2X", uplo, *n, *lda, info))
      tri_classic<T>(false, uplo, *n, a, *lda, ipiv, work, info, (*n + *nb + 1) * (*nb + 3), *nb);
  }
  template <class T>
  static void tri_bounded(const char *uplo, idx n, T *a, idx lda, const T *e, const idx *ipiv, T *work,
                          idx *info, idx wsize, idx nb) {
    if (n == 0) return;
    bool up = same(uplo, 'U');
    if ((*info = singular_block<T, H>(up, n, a, lda, ipiv)) != 0) return;
    if (nb >= 2 && wsize >= n * nb + 2 * n) invert_blocked<T, H>(up, n, a, lda, e, ipiv, true, work, nb);
    else invert_bounded<T, H>(up, n, a, lda, e, ipiv, true, work);
  }
  template <class T>
  static void tri_3(const char *uplo, const idx *n, T *a, const idx *lda, const T *e, const idx *ipiv, T *work,
                    const idx *lwork, idx *info) {
    if (!tri_check<T>("TRI_3", uplo, *n, *lda, info)) return;
    idx lwkopt = tri_worksize<T>("TRI_3", uplo, *n);
    if (*lwork < imax(1, *n) && *lwork != -1) return fam_report<T, H>("TRI_3", 8, info);
    work[0] = work_size<T>(lwkopt);
    if (*lwork == -1) return;
    idx nb = fam_nb<T, H>("TRI_3", uplo, *n);
    if (*lwork < *n * nb + 2 * *n) nb = (*lwork - 2 * *n) / imax(1, *n);
    tri_bounded<T>(uplo, *n, a, *lda, e, ipiv, work, info, *lwork, nb);
    work[0] = work_size<T>(lwkopt);
  }
  template <class T>
  static void tri_3x(const char *uplo, const idx *n, T *a, const idx *lda, const T *e, const idx *ipiv, T *work,
                     const idx *nb, idx *info) {
    if (tri_check<T>("TRI_3X", uplo, *n, *lda, info))
      tri_bounded<T>(uplo, *n, a, *lda, e, ipiv, work, info, (*n + *nb + 1) * (*nb + 3), *nb);
  }

  // ---- condition estimates ----------------------------------------------
  template <class T, class Solve>
  static void con_any(const char *op, idx anpos, const char *uplo, const idx *pn, const T *a, const idx *plda,
                      const idx *ipiv, const real_t<T> *panorm, real_t<T> *rcond, T *work, idx *isgn, idx *info,
                      Solve solve1) {
    using R = real_t<T>;
    idx n = *pn, lda = *plda;
    *info = 0;
    bool up = same(uplo, 'U');
    if (!up && !same(uplo, 'L')) return fam_report<T, H>(op, 1, info);
    if (n < 0) return fam_report<T, H>(op, 2, info);
    if (lda < imax(1, n)) return fam_report<T, H>(op, 4, info);
    if (*panorm < R(0)) return fam_report<T, H>(op, anpos, info);
    *rcond = 0;
    if (n == 0) {
      *rcond = 1;
      return;
    }
    if (!(*panorm > R(0))) return;
    if (singular_block<T, H>(up, n, a, lda, ipiv) != 0) return;
    rcond_by_solves<T>(n, *panorm, rcond, work, isgn, [&](T *x, idx) { solve1(up, n, x); });
  }
  template <class T, bool Rook>
  static void con_classic(const char *op, const char *uplo, const idx *n, const T *a, const idx *lda,
                          const idx *ipiv, const real_t<T> *anorm, real_t<T> *rcond, T *work, idx *isgn,
                          idx *info) {
    con_any<T>(op, 6, uplo, n, a, lda, ipiv, anorm, rcond, work, isgn, info, [&](bool up, idx nn, T *x) {
      solve_classic<T, H, Rook>(tri_view(up, nn, const_cast<T *>(a), *lda), nn, 1, piv_view(up, nn, ipiv),
                                rhs_view(up, nn, x, nn));
    });
  }
  // Real forms take an integer work array, complex ones none.
  template <class T>
  static void con(const char *uplo, const idx *n, const T *a, const idx *lda, const idx *ipiv,
                  const real_t<T> *anorm, real_t<T> *rcond, T *work, idx *iwork, idx *info) {
    con_classic<T, false>("CON", uplo, n, a, lda, ipiv, anorm, rcond, work, iwork, info);
  }
  template <class T>
  static void con_c(const char *uplo, const idx *n, const T *a, const idx *lda, const idx *ipiv,
                    const real_t<T> *anorm, real_t<T> *rcond, T *work, idx *info) {
    con_classic<T, false>("CON", uplo, n, a, lda, ipiv, anorm, rcond, work, nullptr, info);
  }
  template <class T>
  static void con_rook(const char *uplo, const idx *n, const T *a, const idx *lda, const idx *ipiv,
                       const real_t<T> *anorm, real_t<T> *rcond, T *work, idx *iwork, idx *info) {
    con_classic<T, true>("CON_ROOK", uplo, n, a, lda, ipiv, anorm, rcond, work, iwork, info);
  }
  template <class T>
  static void con_rook_c(const char *uplo, const idx *n, const T *a, const idx *lda, const idx *ipiv,
                         const real_t<T> *anorm, real_t<T> *rcond, T *work, idx *info) {
    con_classic<T, true>("CON_ROOK", uplo, n, a, lda, ipiv, anorm, rcond, work, nullptr, info);
  }
  template <class T>
  static void con_3(const char *uplo, const idx *n, const T *a, const idx *lda, const T *e, const idx *ipiv,
                    const real_t<T> *anorm, real_t<T> *rcond, T *work, idx *iwork, idx *info) {
    con_any<T>("CON_3", 7, uplo, n, a, lda, ipiv, anorm, rcond, work, iwork, info, [&](bool up, idx nn, T *x) {
      solve_bounded<T, H>(up, nn, 1, a, *lda, e, ipiv, true, x, nn);
    });
  }
  template <class T>
  static void con_3_c(const char *uplo, const idx *n, const T *a, const idx *lda, const T *e, const idx *ipiv,
                      const real_t<T> *anorm, real_t<T> *rcond, T *work, idx *info) {
    con_3<T>(uplo, n, a, lda, e, ipiv, anorm, rcond, work, nullptr, info);
  }

  // ---- refinement and drivers -------------------------------------------
  template <class T>
  static void rfs(const char *uplo, const idx *pn, const idx *pnrhs, const T *a, const idx *plda, const T *af,
                  const idx *pldaf, const idx *ipiv, const T *b, const idx *pldb, T *x, const idx *pldx,
                  real_t<T> *ferr, real_t<T> *berr, T *, void *, idx *info) {
    idx n = *pn, nrhs = *pnrhs, lda = *plda, ldaf = *pldaf, ldb = *pldb, ldx = *pldx;
    *info = 0;
    bool up = same(uplo, 'U');
    if (!up && !same(uplo, 'L')) return fam_report<T, H>("RFS", 1, info);
    if (n < 0) return fam_report<T, H>("RFS", 2, info);
    if (nrhs < 0) return fam_report<T, H>("RFS", 3, info);
    if (lda < imax(1, n)) return fam_report<T, H>("RFS", 5, info);
    if (ldaf < imax(1, n)) return fam_report<T, H>("RFS", 7, info);
    if (ldb < imax(1, n)) return fam_report<T, H>("RFS", 10, info);
    if (ldx < imax(1, n)) return fam_report<T, H>("RFS", 12, info);
    RefineOps<T, H> ops{up, n, a, af, lda, ldaf, ipiv};
    FamName<T, H> nm("RFS");
    refine<T>(n, nrhs, b, ldb, x, ldx, ferr, berr, ops, nm.s, info);
  }

  template <class T, Kind K>
  static void sv_any(const char *op, idx ldbpos, const char *uplo, const idx *pn, const idx *pnrhs, T *a,
                     const idx *plda, T *e, idx *ipiv, T *b, const idx *pldb, T *work, const idx *plwork,
                     idx *info) {
    idx n = *pn, nrhs = *pnrhs, lda = *plda, ldb = *pldb, lwork = *plwork;
    *info = 0;
    bool up = same(uplo, 'U'), lquery = lwork == -1;
    if (!up && !same(uplo, 'L')) return fam_report<T, H>(op, 1, info);
    if (n < 0) return fam_report<T, H>(op, 2, info);
    if (nrhs < 0) return fam_report<T, H>(op, 3, info);
    if (lda < imax(1, n)) return fam_report<T, H>(op, 5, info);
    if (ldb < imax(1, n)) return fam_report<T, H>(op, ldbpos, info);
    if (lwork < 1 && !lquery) return fam_report<T, H>(op, ldbpos + 2, info);
    const char *fop = K == Kind::BK ? "TRF" : K == Kind::Rook ? "TRF_ROOK" : "TRF_RK";
    idx lwkopt = n == 0 ? 1 : imax(1, n * fam_nb<T, H>(fop, uplo, n));
    work[0] = work_size<T>(lwkopt);
    if (lquery) return;
    trf_any<T, K>(fop, 7, uplo, pn, a, plda, e, ipiv, work, plwork, info);
    if (*info == 0 && n > 0 && nrhs > 0) {
      if constexpr (K == Kind::RK) {
        solve_bounded<T, H>(up, n, nrhs, a, lda, e, ipiv, true, b, ldb);
      } else if (K == Kind::BK && lwork >= n) {
        convert<T, H>(up, n, a, lda, work, ipiv, false, true, false);
        solve_bounded<T, H>(up, n, nrhs, a, lda, work, ipiv, false, b, ldb);
        convert<T, H>(up, n, a, lda, work, ipiv, false, false, false);
      } else {
        solve_classic_any<T, H, K == Kind::Rook>(up, n, nrhs, a, lda, ipiv, b, ldb);
      }
    }
    work[0] = work_size<T>(lwkopt);
  }
  template <class T>
  static void sv(const char *uplo, const idx *n, const idx *nrhs, T *a, const idx *lda, idx *ipiv, T *b,
                 const idx *ldb, T *work, const idx *lwork, idx *info) {
    sv_any<T, Kind::BK>("SV", 8, uplo, n, nrhs, a, lda, nullptr, ipiv, b, ldb, work, lwork, info);
  }
  template <class T>
  static void sv_rook(const char *uplo, const idx *n, const idx *nrhs, T *a, const idx *lda, idx *ipiv, T *b,
                      const idx *ldb, T *work, const idx *lwork, idx *info) {
    sv_any<T, Kind::Rook>("SV_ROOK", 8, uplo, n, nrhs, a, lda, nullptr, ipiv, b, ldb, work, lwork, info);
  }
  template <class T>
  static void sv_rk(const char *uplo, const idx *n, const idx *nrhs, T *a, const idx *lda, T *e, idx *ipiv,
                    T *b, const idx *ldb, T *work, const idx *lwork, idx *info) {
    sv_any<T, Kind::RK>("SV_RK", 9, uplo, n, nrhs, a, lda, e, ipiv, b, ldb, work, lwork, info);
  }

  template <class T>
  static void svx(const char *fact, const char *uplo, const idx *pn, const idx *pnrhs, const T *a,
                  const idx *plda, T *af, const idx *pldaf, idx *ipiv, const T *b, const idx *pldb, T *x,
                  const idx *pldx, real_t<T> *rcond, real_t<T> *ferr, real_t<T> *berr, T *work,
                  const idx *plwork, void *extra, idx *info) {
    using R = real_t<T>;
    idx n = *pn, nrhs = *pnrhs, lda = *plda, ldaf = *pldaf, ldb = *pldb, ldx = *pldx, lwork = *plwork;
    *info = 0;
    bool nofact = same(fact, 'N'), up = same(uplo, 'U'), lquery = lwork == -1;
    idx wmin = imax(1, (is_complex_v<T> ? 2 : 3) * n);
    if (!nofact && !same(fact, 'F')) return fam_report<T, H>("SVX", 1, info);
    if (!up && !same(uplo, 'L')) return fam_report<T, H>("SVX", 2, info);
    if (n < 0) return fam_report<T, H>("SVX", 3, info);
    if (nrhs < 0) return fam_report<T, H>("SVX", 4, info);
    if (lda < imax(1, n)) return fam_report<T, H>("SVX", 6, info);
    if (ldaf < imax(1, n)) return fam_report<T, H>("SVX", 8, info);
    if (ldb < imax(1, n)) return fam_report<T, H>("SVX", 11, info);
    if (ldx < imax(1, n)) return fam_report<T, H>("SVX", 13, info);
    if (lwork < wmin && !lquery) return fam_report<T, H>("SVX", 18, info);
    idx lwkopt = wmin;
    if (nofact) lwkopt = imax(lwkopt, n * fam_nb<T, H>("TRF", uplo, n));
    work[0] = work_size<T>(lwkopt);
    if (lquery) return;
    if (nofact) {
      lacpy<T>(uplo, pn, pn, a, plda, af, pldaf);
      trf<T>(uplo, pn, af, pldaf, ipiv, work, plwork, info);
      if (*info > 0) {
        *rcond = 0;
        return;
      }
    }
    R anorm = lan_sym<T, H>("I", uplo, n, a, lda, nullptr);
    idx *isgn = is_complex_v<T> ? nullptr : static_cast<idx *>(extra);
    idx linfo = 0;
    con_classic<T, false>("CON", uplo, pn, af, pldaf, ipiv, &anorm, rcond, work, isgn, &linfo);
    lacpy<T>("Full", pn, pnrhs, b, pldb, x, pldx);
    solve_classic_any<T, H, false>(up, n, nrhs, af, ldaf, ipiv, x, ldx);
    rfs<T>(uplo, pn, pnrhs, a, plda, af, pldaf, ipiv, b, pldb, x, pldx, ferr, berr, work, extra, &linfo);
    if (*rcond < lamch<R>('E')) *info = n + 1;
    work[0] = work_size<T>(lwkopt);
  }

  // ---- equilibration (equb.h) ------------------------------------------
  template <class T>
  static void equb(const char *uplo, const idx *pn, const T *a, const idx *plda, real_t<T> *s,
                   real_t<T> *scond, real_t<T> *amax, T *work, idx *info) {
    idx n = *pn, lda = *plda;
    *info = 0;
    bool up = same(uplo, 'U');
    if (!up && !same(uplo, 'L')) return fam_report<T, H>("EQUB", 1, info);
    if (n < 0) return fam_report<T, H>("EQUB", 2, info);
    if (lda < imax(1, n)) return fam_report<T, H>("EQUB", 4, info);
    *info = sym_equb<T, H>(up, n, [&](idx i, idx j) { return a[i + j * lda]; }, s, scond, amax,
                           reinterpret_cast<real_t<T> *>(work));
  }

  // ---- symmetric interchange ---------------------------------------------
  template <class T>
  static void swapr(const char *uplo, const idx *pn, T *a, const idx *plda, const idx *pi1, const idx *pi2) {
    idx n = *pn, i1 = *pi1, i2 = *pi2;
    if (n <= 0 || i1 < 1 || i2 < 1 || i1 > n || i2 > n || i1 == i2) return;
    bool up = same(uplo, 'U');
    Mat<T> av = tri_view(up, n, a, *plda);
    idx r = up ? n - i1 : i1 - 1, s = up ? n - i2 : i2 - 1;
    sym_swap<T, H>(av, n, 0, r, s);
  }
};

// Complex symmetric matrix-vector product and rank-1 update (the Hermitian
// and real ones belong to the BLAS).
template <class T>
void symv(const char *uplo, const idx *n, const T *alpha, const T *a, const idx *lda, const T *x, const idx *incx,
          const T *beta, T *y, const idx *incy) {
  idx pos = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) pos = 1;
  else if (*n < 0) pos = 2;
  else if (*lda < imax(1, *n)) pos = 5;
  else if (*incx == 0) pos = 7;
  else if (*incy == 0) pos = 10;
  if (pos) return report<T>("SYMV", pos, nullptr);
  symv_plain<T>(up, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}
template <class T>
void syr(const char *uplo, const idx *n, const T *alpha, const T *x, const idx *incx, T *a, const idx *lda) {
  idx pos = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) pos = 1;
  else if (*n < 0) pos = 2;
  else if (*incx == 0) pos = 5;
  else if (*lda < imax(1, *n)) pos = 7;
  if (pos) return report<T>("SYR", pos, nullptr);
  syr_plain<T>(up, *n, *alpha, x, *incx, a, *lda);
}

}  // namespace sym
}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_SYM_API_H
