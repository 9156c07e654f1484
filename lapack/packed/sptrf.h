// Symmetric and Hermitian indefinite matrices in packed storage, by the
// Bunch-Kaufman diagonal pivoting method: A = U D U^H or L D L^H (U^T, L^T
// for symmetric matrices), D block diagonal with 1x1 and 2x2 blocks, U (L)
// a product of permutations and unit triangular block columns.
//
// Storage of the factors: for uplo = 'U' the steps run k = n-1 down to 0;
// ipiv[k] = p + 1 > 0 means a 1x1 block with rows and columns k and p
// interchanged; ipiv[k] = ipiv[k-1] = -(p + 1) a 2x2 block in rows k-1, k
// with k-1 and p interchanged. The multipliers of each step are stored in
// its column(s) above the block. For uplo = 'L' the steps run upwards and a
// 2x2 block in rows k, k+1 has ipiv[k] = ipiv[k+1] = -(p + 1), with k+1 and
// p interchanged.
//
// One template serves the real symmetric, complex symmetric (herm = false)
// and complex Hermitian (herm = true) cases: the trait decides where
// conjugates are taken and keeps Hermitian diagonals real.
#ifndef NXL_LAPACK_PACKED_SPTRF_H
#define NXL_LAPACK_PACKED_SPTRF_H

#include "lapack/lu/refine.h"
#include "lapack/packed/packed.h"

namespace nxl {
namespace lapack {

// |a_kk| as the pivot test sees it: the real part of a Hermitian diagonal.
template <bool herm, class T> inline real_t<T> diag_abs(T x) {
  if constexpr (herm) return std::fabs(nxl::re(x));
  else return abs1(x);
}

// Swap of rows and columns kk and kp of a symmetric matrix held as one
// triangle through a(i, j), within the leading part up to kk ('U', kp < kk)
// or the trailing part of order n from kk on ('L', kp > kk).
template <bool herm, class T, class A>
void sym_interchange(bool up, idx n, idx kk, idx kp, A a) {
  if (up) {
    // kp < kk: columns above kp, then the stretch between, then the corner.
    for (idx i = 0; i < kp; ++i) std::swap(a(i, kk), a(i, kp));
    for (idx j = kp + 1; j < kk; ++j) {
      T t = cjh<herm>(a(j, kk));
      a(j, kk) = cjh<herm>(a(kp, j));
      a(kp, j) = t;
    }
    a(kp, kk) = cjh<herm>(a(kp, kk));
  } else {
    // kp > kk.
    for (idx i = kp + 1; i < n; ++i) std::swap(a(i, kk), a(i, kp));
    for (idx j = kk + 1; j < kp; ++j) {
      T t = cjh<herm>(a(j, kk));
      a(j, kk) = cjh<herm>(a(kp, j));
      a(kp, j) = t;
    }
    a(kp, kk) = cjh<herm>(a(kp, kk));
  }
  std::swap(a(kk, kk), a(kp, kp));
}

// Bunch-Kaufman factorization of a matrix held as one triangle through
// a(i, j) (i <= j for 'U', i >= j for 'L'). rank1(m, r, start, k) must
// subtract r x x^H (x x^T when symmetric), x the m entries of column k off
// the diagonal, from the leading m x m block ('U') or from the trailing
// block that starts at row and column `start` ('L'). Returns info: the
// first exactly zero 1x1 block of D (the factorization is completed).
template <class T, bool herm, class A, class Rank1> idx bk_factor(bool up, idx n, A a, idx *ipiv, Rank1 rank1) {
  using R = real_t<T>;
  const R alpha = (R(1) + std::sqrt(R(17))) / R(8);
  idx info = 0;
  auto colmax_of = [&](idx k, idx lo, idx hi, idx &imx) {
    R m = -1;
    imx = lo;
    for (idx i = lo; i < hi; ++i) {
      R v = abs1(a(i, k));
      if (v > m) { m = v; imx = i; }
    }
    return m < 0 ? R(0) : m;
  };
  idx k = up ? n - 1 : 0;
  while (up ? k >= 0 : k < n) {
    idx kstep = 1, kp = k;
    R absakk = diag_abs<herm>(a(k, k));
    idx imx = k;
    R colmax = up ? colmax_of(k, 0, k, imx) : colmax_of(k, k + 1, n, imx);
    if ((absakk == R(0) && colmax == R(0)) || std::isnan(absakk)) {
      if (info == 0) info = k + 1;
      kp = k;
      a(k, k) = diag_of<herm>(a(k, k));
    } else {
      if (absakk < alpha * colmax) {
        // Largest off-diagonal entry in row/column imx of the remaining part.
        R rowmax = 0;
        if (up) {
          for (idx j = imx + 1; j <= k; ++j) rowmax = std::max(rowmax, abs1(a(imx, j)));
          for (idx j = 0; j < imx; ++j) rowmax = std::max(rowmax, abs1(a(j, imx)));
        } else {
          for (idx j = k; j < imx; ++j) rowmax = std::max(rowmax, abs1(a(imx, j)));
          for (idx j = imx + 1; j < n; ++j) rowmax = std::max(rowmax, abs1(a(j, imx)));
        }
        if (absakk >= alpha * colmax * (colmax / rowmax)) {
          kp = k;
        } else if (diag_abs<herm>(a(imx, imx)) >= alpha * rowmax) {
          kp = imx;
        } else {
          kp = imx;
          kstep = 2;
        }
      }
      idx kk = up ? k - kstep + 1 : k + kstep - 1;
      if (kp != kk) {
        sym_interchange<herm, T>(up, up ? k + 1 : n, kk, kp, a);
        if (kstep == 2) {
          if (up) std::swap(a(k - 1, k), a(kp, k));
          else std::swap(a(k + 1, k), a(kp, k));
        }
      }
      a(k, k) = diag_of<herm>(a(k, k));
      if (kstep == 2) a(kk, kk) = diag_of<herm>(a(kk, kk));
      if (kstep == 1) {
        // A := A - x x^H / d over the remaining part; x := x / d.
        T r1 = recip(a(k, k));
        idx m = up ? k : n - k - 1;
        if (m > 0) {
          rank1(m, r1, up ? 0 : k + 1, k);
          for (idx i = 0; i < m; ++i) {
            T &x = up ? a(i, k) : a(k + 1 + i, k);
            x = x * r1;
          }
        }
      } else {
        // 2x2 block D in rows (k-1, k) ('U') or (k, k+1) ('L'): the
        // multipliers W inv(D) replace W, the update subtracts W inv(D) W^H.
        idx c0 = up ? k - 1 : k, c1 = up ? k : k + 1;  // block columns
        T d01 = up ? a(k - 1, k) : cjh<herm>(a(k + 1, k));  // D(0, 1)
        R dn;
        T d00n, d11n, d01n;
        if constexpr (herm) {
          dn = nxl::lapack::absv(d01);
          d00n = T(nxl::re(a(c0, c0)) / dn);
          d11n = T(nxl::re(a(c1, c1)) / dn);
          d01n = d01 / dn;
        } else {
          dn = R(1);
          d00n = a(c0, c0) / d01;
          d11n = a(c1, c1) / d01;
          d01n = T(1);
        }
        T sc = (herm ? T(R(1) / dn) : recip(d01)) * recip(d00n * d11n - T(1));
        idx lo = up ? 0 : k + 2, hi = up ? k - 1 : n;
        for (idx j = (up ? hi - 1 : lo); up ? j >= lo : j < hi; up ? --j : ++j) {
          T w0 = a(j, c0), w1 = a(j, c1);
          // Row j of W inv(D), D = [d00 d01; conj(d01) d11] (d01 for symmetric).
          T l0 = sc * (d11n * w0 - cjh<herm>(d01n) * w1);
          T l1 = sc * (d00n * w1 - d01n * w0);
          idx ilo = up ? 0 : j, ihi = up ? j + 1 : n;
          for (idx i = ilo; i < ihi; ++i) a(i, j) -= a(i, c0) * cjh<herm>(l0) + a(i, c1) * cjh<herm>(l1);
          a(j, c0) = l0;
          a(j, c1) = l1;
          a(j, j) = diag_of<herm>(a(j, j));
        }
      }
    }
    if (kstep == 1) {
      ipiv[k] = kp + 1;
    } else {
      ipiv[k] = -(kp + 1);
      ipiv[up ? k - 1 : k + 1] = -(kp + 1);
    }
    k += up ? -kstep : kstep;
  }
  return info;
}

template <class T, bool herm> idx sptrf_work(bool up, idx n, T *ap, idx *ipiv) {
  Packed pk{up, n};
  auto a = [&](idx i, idx j) -> T & { return ap[pk(i, j)]; };
  // The rank-1 update of the leading (U) or trailing (L) packed block, whose
  // packed form starts at ap (U) or at the diagonal of row `start` (L).
  auto rank1 = [&](idx m, T r1, idx start, idx col) {
    const T *x = up ? ap + pk(0, col) : ap + pk(start, col);
    T *blk = up ? ap : ap + pk(start, start);
    if constexpr (herm || !is_complex_v<T>) {
      blas::hpr(up ? 'U' : 'L', m, -nxl::re(r1), x, 1, blk);
    } else {
      const char u = up ? 'U' : 'L';
      T al = -r1;
      idx one = 1;
      spr<T>(&u, &m, &al, x, &one, blk);
    }
  };
  return bk_factor<T, herm>(up, n, a, ipiv, rank1);
}

template <class T, bool herm>
void sptrf_t(const char *stem, const char *uplo, const idx *pn, T *ap, idx *ipiv, idx *info) {
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>(stem, 1, info);
  if (*pn < 0) return report<T>(stem, 2, info);
  *info = sptrf_work<T, herm>(up, *pn, ap, ipiv);
}
template <class T> void sptrf(const char *uplo, const idx *n, T *ap, idx *ipiv, idx *info) {
  sptrf_t<T, false>("SPTRF", uplo, n, ap, ipiv, info);
}
template <class T> void hptrf(const char *uplo, const idx *n, T *ap, idx *ipiv, idx *info) {
  sptrf_t<T, true>("HPTRF", uplo, n, ap, ipiv, info);
}

// Solve with the block factors held through a(i, j): B (n x nrhs) becomes
// inv(A) B.
template <class T, bool herm, class A>
void bk_solve(bool up, idx n, idx nrhs, A a, const idx *ipiv, T *b, idx ldb) {
  auto row = [&](idx i) { return b + i; };
  auto swap_rows = [&](idx i, idx p) {
    if (i != p) blas::swap(nrhs, row(i), ldb, row(p), ldb);
  };
  // B(rows) -= column c of the factor (rows lo..hi-1) times B(r, :).
  auto axpy_rows = [&](idx lo, idx hi, idx c, idx r) {
    for (idx j = 0; j < nrhs; ++j) {
      T br = b[r + j * ldb];
      if (br == T(0)) continue;
      for (idx i = lo; i < hi; ++i) b[i + j * ldb] -= a(i, c) * br;
    }
  };
  // B(r, :) -= (column c of the factor, rows lo..hi-1)^H B(lo..hi-1, :).
  auto dot_rows = [&](idx lo, idx hi, idx c, idx r) {
    for (idx j = 0; j < nrhs; ++j) {
      T s = 0;
      for (idx i = lo; i < hi; ++i) s += cjh<herm>(a(i, c)) * b[i + j * ldb];
      b[r + j * ldb] -= s;
    }
  };
  auto div1 = [&](idx k) {
    T d = diag_of<herm>(a(k, k));
    for (idx j = 0; j < nrhs; ++j) b[k + j * ldb] = nxl::div(b[k + j * ldb], d);
  };
  // Solve with the 2x2 block [d00 d01; conj(d01) d11] in rows r0, r1.
  auto div2 = [&](idx r0, idx r1, T d01) {
    T d00 = diag_of<herm>(a(r0, r0)), d11 = diag_of<herm>(a(r1, r1));
    T d10 = cjh<herm>(d01);
    T akm1 = nxl::div(d00, d01), ak = nxl::div(d11, d10);
    T denom = akm1 * ak - T(1);
    for (idx j = 0; j < nrhs; ++j) {
      T bkm1 = nxl::div(b[r0 + j * ldb], d01), bk = nxl::div(b[r1 + j * ldb], d10);
      b[r0 + j * ldb] = nxl::div(ak * bkm1 - bk, denom);
      b[r1 + j * ldb] = nxl::div(akm1 * bk - bkm1, denom);
    }
  };
  if (up) {
    // U D X = B, from the bottom.
    for (idx k = n - 1; k >= 0;) {
      if (ipiv[k] > 0) {
        swap_rows(k, ipiv[k] - 1);
        axpy_rows(0, k, k, k);
        div1(k);
        k -= 1;
      } else {
        swap_rows(k - 1, -ipiv[k] - 1);
        axpy_rows(0, k - 1, k, k);
        axpy_rows(0, k - 1, k - 1, k - 1);
        div2(k - 1, k, a(k - 1, k));
        k -= 2;
      }
    }
    // U^H X = B, from the top.
    for (idx k = 0; k < n;) {
      if (ipiv[k] > 0) {
        dot_rows(0, k, k, k);
        swap_rows(k, ipiv[k] - 1);
        k += 1;
      } else {
        dot_rows(0, k, k, k);
        dot_rows(0, k, k + 1, k + 1);
        swap_rows(k, -ipiv[k] - 1);
        k += 2;
      }
    }
  } else {
    for (idx k = 0; k < n;) {
      if (ipiv[k] > 0) {
        swap_rows(k, ipiv[k] - 1);
        axpy_rows(k + 1, n, k, k);
        div1(k);
        k += 1;
      } else {
        swap_rows(k + 1, -ipiv[k] - 1);
        axpy_rows(k + 2, n, k, k);
        axpy_rows(k + 2, n, k + 1, k + 1);
        div2(k, k + 1, cjh<herm>(a(k + 1, k)));
        k += 2;
      }
    }
    for (idx k = n - 1; k >= 0;) {
      if (ipiv[k] > 0) {
        dot_rows(k + 1, n, k, k);
        swap_rows(k, ipiv[k] - 1);
        k -= 1;
      } else {
        dot_rows(k + 1, n, k, k);
        dot_rows(k + 1, n, k - 1, k - 1);
        swap_rows(k, -ipiv[k] - 1);
        k -= 2;
      }
    }
  }
}

template <class T, bool herm> void sptrs_work(bool up, idx n, idx nrhs, const T *ap, const idx *ipiv, T *b, idx ldb) {
  Packed pk{up, n};
  bk_solve<T, herm>(up, n, nrhs, [&](idx i, idx j) { return ap[pk(i, j)]; }, ipiv, b, ldb);
}

// Checks of uplo (1), n (2), nrhs (3) and ldb (position 7) of the packed
// solves; true when one failed (and was reported).
template <class T> bool sp_solve_check(const char *stem, const char *uplo, idx n, idx nrhs, idx ldb, idx *info) {
  *info = 0;
  if (!same(uplo, 'U') && !same(uplo, 'L')) report<T>(stem, 1, info);
  else if (n < 0) report<T>(stem, 2, info);
  else if (nrhs < 0) report<T>(stem, 3, info);
  else if (ldb < imax(1, n)) report<T>(stem, 7, info);
  return *info != 0;
}

template <class T, bool herm>
void sptrs_t(const char *stem, const char *uplo, const idx *pn, const idx *pnrhs, const T *ap, const idx *ipiv, T *b,
             const idx *pldb, idx *info) {
  if (sp_solve_check<T>(stem, uplo, *pn, *pnrhs, *pldb, info) || *pn == 0 || *pnrhs == 0) return;
  sptrs_work<T, herm>(same(uplo, 'U'), *pn, *pnrhs, ap, ipiv, b, *pldb);
}
template <class T>
void sptrs(const char *uplo, const idx *n, const idx *nrhs, const T *ap, const idx *ipiv, T *b, const idx *ldb,
           idx *info) {
  sptrs_t<T, false>("SPTRS", uplo, n, nrhs, ap, ipiv, b, ldb, info);
}
template <class T>
void hptrs(const char *uplo, const idx *n, const idx *nrhs, const T *ap, const idx *ipiv, T *b, const idx *ldb,
           idx *info) {
  sptrs_t<T, true>("HPTRS", uplo, n, nrhs, ap, ipiv, b, ldb, info);
}

template <class T, bool herm>
void spsv_t(const char *stem, const char *uplo, const idx *pn, const idx *pnrhs, T *ap, idx *ipiv, T *b,
            const idx *pldb, idx *info) {
  idx n = *pn, nrhs = *pnrhs;
  if (sp_solve_check<T>(stem, uplo, n, nrhs, *pldb, info)) return;
  bool up = same(uplo, 'U');
  *info = sptrf_work<T, herm>(up, n, ap, ipiv);
  if (*info == 0 && nrhs > 0) sptrs_work<T, herm>(up, n, nrhs, ap, ipiv, b, *pldb);
}
template <class T>
void spsv(const char *uplo, const idx *n, const idx *nrhs, T *ap, idx *ipiv, T *b, const idx *ldb, idx *info) {
  spsv_t<T, false>("SPSV", uplo, n, nrhs, ap, ipiv, b, ldb, info);
}
template <class T>
void hpsv(const char *uplo, const idx *n, const idx *nrhs, T *ap, idx *ipiv, T *b, const idx *ldb, idx *info) {
  spsv_t<T, true>("HPSV", uplo, n, nrhs, ap, ipiv, b, ldb, info);
}

// Index of the first exactly zero 1x1 block of D (1-based), 0 if none.
template <class T, class A> idx bk_singular(bool up, idx n, A a, const idx *ipiv) {
  for (idx k = up ? n - 1 : 0; up ? k >= 0 : k < n; up ? --k : ++k)
    if (ipiv[k] > 0 && a(k, k) == T(0)) return k + 1;
  return 0;
}

// Inverse of a packed symmetric/Hermitian matrix from its block factors.
template <class T, bool herm> idx sptri_work(bool up, idx n, T *ap, const idx *ipiv, T *work) {
  Packed pk{up, n};
  auto a = [&](idx i, idx j) -> T & { return ap[pk(i, j)]; };
  if (idx s = bk_singular<T>(up, n, a, ipiv)) return s;
  // col := -inv(A_block) col for the block already inverted: the leading
  // k x k ('U') or trailing ('L', from row s) part.
  auto apply_inv = [&](idx m, idx s, T *col) {
    for (idx i = 0; i < m; ++i) work[i] = col[i];
    const T *blk = up ? ap : ap + pk(s, s);
    if constexpr (herm || !is_complex_v<T>) {
      blas::hpmv(up ? 'U' : 'L', m, T(-1), blk, work, 1, T(0), col, 1);
    } else {
      const char u = up ? 'U' : 'L';
      T mone(-1), zero(0);
      idx one = 1;
      spmv<T>(&u, &m, &mone, blk, work, &one, &zero, col, &one);
    }
  };
  auto dot = [&](idx m, const T *x, const T *y) {
    T s = 0;
    for (idx i = 0; i < m; ++i) s += cjh<herm>(x[i]) * y[i];
    return s;
  };
  for (idx k = up ? 0 : n - 1; up ? k < n : k >= 0;) {
    idx kstep = ipiv[k] > 0 ? 1 : 2;
    idx m = up ? k : n - k - 1;  // order of the inverted part beside the block
    if (kstep == 1) {
      a(k, k) = diag_of<herm>(recip(diag_of<herm>(a(k, k))));
      if (m > 0) {
        T *col = up ? &a(0, k) : &a(k + 1, k);
        apply_inv(m, k + 1, col);
        a(k, k) -= diag_of<herm>(dot(m, work, col));
      }
    } else {
      // Block in rows (c0, c1): c0 = k, c1 = k+1 for 'U'; c0 = k-1, c1 = k for 'L'.
      idx c0 = up ? k : k - 1, c1 = up ? k + 1 : k;
      T &d01 = up ? a(c0, c1) : a(c1, c0);  // stored off-diagonal entry
      T t = herm ? T(nxl::lapack::absv(d01)) : d01;
      T ak = nxl::div(diag_of<herm>(a(c0, c0)), t), akp1 = nxl::div(diag_of<herm>(a(c1, c1)), t);
      T akkp1 = nxl::div(d01, t);
      T d = t * (ak * akp1 - T(1));
      a(c0, c0) = nxl::div(akp1, d);
      a(c1, c1) = nxl::div(ak, d);
      d01 = -nxl::div(akkp1, d);
      idx mm = up ? k : n - k - 1;
      if (mm > 0) {
        idx s = k + 1;
        if (up) {
          T *col0 = &a(0, c0), *col1 = &a(0, c1);
          apply_inv(mm, s, col0);
          a(c0, c0) -= diag_of<herm>(dot(mm, work, col0));
          d01 -= dot(mm, col0, col1);
          apply_inv(mm, s, col1);
          a(c1, c1) -= diag_of<herm>(dot(mm, work, col1));
        } else {
          T *col0 = &a(s, c0), *col1 = &a(s, c1);
          apply_inv(mm, s, col0);
          a(c0, c0) -= diag_of<herm>(dot(mm, work, col0));
          d01 -= dot(mm, col1, col0);
          apply_inv(mm, s, col1);
          a(c1, c1) -= diag_of<herm>(dot(mm, work, col1));
        }
      }
    }
    idx kp = (ipiv[k] > 0 ? ipiv[k] : -ipiv[k]) - 1;
    if (kp != k) {
      // Undo the interchange of k with kp inside the part inverted so far.
      sym_interchange<herm, T>(up, n, k, kp, a);
      if (kstep == 2) {
        if (up) std::swap(a(k, k + 1), a(kp, k + 1));
        else std::swap(a(k, k - 1), a(kp, k - 1));
      }
    }
    k += up ? kstep : -kstep;
  }
  return 0;
}

template <class T, bool herm>
void sptri_t(const char *stem, const char *uplo, const idx *pn, T *ap, const idx *ipiv, T *work, idx *info) {
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>(stem, 1, info);
  if (*pn < 0) return report<T>(stem, 2, info);
  if (*pn == 0) return;
  *info = sptri_work<T, herm>(up, *pn, ap, ipiv, work);
}
template <class T> void sptri(const char *uplo, const idx *n, T *ap, const idx *ipiv, T *work, idx *info) {
  sptri_t<T, false>("SPTRI", uplo, n, ap, ipiv, work, info);
}
template <class T> void hptri(const char *uplo, const idx *n, T *ap, const idx *ipiv, T *work, idx *info) {
  sptri_t<T, true>("HPTRI", uplo, n, ap, ipiv, work, info);
}

template <class T, bool herm>
void spcon_t(const char *stem, const char *uplo, const idx *pn, const T *ap, const idx *ipiv,
             const real_t<T> *panorm, real_t<T> *rcond, T *work, idx *info) {
  using R = real_t<T>;
  idx n = *pn;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>(stem, 1, info);
  if (n < 0) return report<T>(stem, 2, info);
  if (*panorm < 0) return report<T>(stem, 5, info);
  *rcond = 0;
  if (n == 0) {
    *rcond = 1;
    return;
  }
  if (!(*panorm > R(0))) return;
  Packed pk{up, n};
  if (bk_singular<T>(up, n, [&](idx i, idx j) { return ap[pk(i, j)]; }, ipiv)) return;
  sym_rcond<T, herm>(stem, n, *panorm, rcond, work,
                     [&](T *x) { sptrs_work<T, herm>(up, n, 1, ap, ipiv, x, n); });
}
// The real form takes an integer work array, the complex ones none.
template <class T>
void spcon(const char *uplo, const idx *n, const T *ap, const idx *ipiv, const real_t<T> *anorm, real_t<T> *rcond,
           T *work, void *, idx *info) {
  spcon_t<T, false>("SPCON", uplo, n, ap, ipiv, anorm, rcond, work, info);
}
template <class T>
void spcon_c(const char *uplo, const idx *n, const T *ap, const idx *ipiv, const real_t<T> *anorm, real_t<T> *rcond,
             T *work, idx *info) {
  spcon_t<T, false>("SPCON", uplo, n, ap, ipiv, anorm, rcond, work, info);
}
template <class T>
void hpcon(const char *uplo, const idx *n, const T *ap, const idx *ipiv, const real_t<T> *anorm, real_t<T> *rcond,
           T *work, idx *info) {
  spcon_t<T, true>("HPCON", uplo, n, ap, ipiv, anorm, rcond, work, info);
}

template <class T, bool herm>
void sprfs_work(bool up, idx n, idx nrhs, const T *ap, const T *afp, const idx *ipiv, const T *b, idx ldb, T *x,
                idx ldx, real_t<T> *ferr, real_t<T> *berr, const char *stem, idx *info) {
  Packed pk{up, n};
  auto ops = sym_refine_ops<T, herm>(up, n, n, [&](idx i, idx j) { return ap[pk(i, j)]; },
                                     [&](T *v) { sptrs_work<T, herm>(up, n, 1, afp, ipiv, v, n); });
  refine<T>(n, nrhs, b, ldb, x, ldx, ferr, berr, ops, stem, info);
}

template <class T, bool herm>
void sprfs_t(const char *stem, const char *uplo, const idx *pn, const idx *pnrhs, const T *ap, const T *afp,
             const idx *ipiv, const T *b, const idx *pldb, T *x, const idx *pldx, real_t<T> *ferr, real_t<T> *berr,
             idx *info) {
  idx n = *pn, nrhs = *pnrhs;
  *info = 0;
  bool up = same(uplo, 'U');
  if (!up && !same(uplo, 'L')) return report<T>(stem, 1, info);
  if (n < 0) return report<T>(stem, 2, info);
  if (nrhs < 0) return report<T>(stem, 3, info);
  if (*pldb < imax(1, n)) return report<T>(stem, 8, info);
  if (*pldx < imax(1, n)) return report<T>(stem, 10, info);
  sprfs_work<T, herm>(up, n, nrhs, ap, afp, ipiv, b, *pldb, x, *pldx, ferr, berr, stem, info);
}
template <class T>
void sprfs(const char *uplo, const idx *n, const idx *nrhs, const T *ap, const T *afp, const idx *ipiv, const T *b,
           const idx *ldb, T *x, const idx *ldx, real_t<T> *ferr, real_t<T> *berr, T *, void *, idx *info) {
  sprfs_t<T, false>("SPRFS", uplo, n, nrhs, ap, afp, ipiv, b, ldb, x, ldx, ferr, berr, info);
}
template <class T>
void hprfs(const char *uplo, const idx *n, const idx *nrhs, const T *ap, const T *afp, const idx *ipiv, const T *b,
           const idx *ldb, T *x, const idx *ldx, real_t<T> *ferr, real_t<T> *berr, T *, void *, idx *info) {
  sprfs_t<T, true>("HPRFS", uplo, n, nrhs, ap, afp, ipiv, b, ldb, x, ldx, ferr, berr, info);
}

template <class T, bool herm>
void spsvx_t(const char *stem, const char *fact, const char *uplo, const idx *pn, const idx *pnrhs, const T *ap,
             T *afp, idx *ipiv, const T *b, const idx *pldb, T *x, const idx *pldx, real_t<T> *rcond,
             real_t<T> *ferr, real_t<T> *berr, T *work, idx *info) {
  using R = real_t<T>;
  idx n = *pn, nrhs = *pnrhs, ldb = *pldb, ldx = *pldx;
  *info = 0;
  char fa = upper(fact);
  bool up = same(uplo, 'U');
  if (fa != 'N' && fa != 'F') return report<T>(stem, 1, info);
  if (!up && !same(uplo, 'L')) return report<T>(stem, 2, info);
  if (n < 0) return report<T>(stem, 3, info);
  if (nrhs < 0) return report<T>(stem, 4, info);
  if (ldb < imax(1, n)) return report<T>(stem, 9, info);
  if (ldx < imax(1, n)) return report<T>(stem, 11, info);
  if (fa == 'N') {
    for (idx i = 0; i < n * (n + 1) / 2; ++i) afp[i] = ap[i];
    *info = sptrf_work<T, herm>(up, n, afp, ipiv);
    if (*info > 0) {
      *rcond = 0;
      return;
    }
  }
  R anorm = lan_sp<T, herm>("I", uplo, &n, ap, nullptr);
  idx linfo = 0;
  spcon_t<T, herm>(stem, uplo, &n, afp, ipiv, &anorm, rcond, work, &linfo);
  for (idx j = 0; j < nrhs; ++j)
    for (idx i = 0; i < n; ++i) x[i + j * ldx] = b[i + j * ldb];
  if (n > 0 && nrhs > 0) sptrs_work<T, herm>(up, n, nrhs, afp, ipiv, x, ldx);
  sprfs_work<T, herm>(up, n, nrhs, ap, afp, ipiv, b, ldb, x, ldx, ferr, berr, stem, info);
  if (*rcond < lamch<R>('E')) *info = n + 1;
}
template <class T>
void spsvx(const char *fact, const char *uplo, const idx *n, const idx *nrhs, const T *ap, T *afp, idx *ipiv,
           const T *b, const idx *ldb, T *x, const idx *ldx, real_t<T> *rcond, real_t<T> *ferr, real_t<T> *berr,
           T *work, void *, idx *info) {
  spsvx_t<T, false>("SPSVX", fact, uplo, n, nrhs, ap, afp, ipiv, b, ldb, x, ldx, rcond, ferr, berr, work, info);
}
template <class T>
void hpsvx(const char *fact, const char *uplo, const idx *n, const idx *nrhs, const T *ap, T *afp, idx *ipiv,
           const T *b, const idx *ldb, T *x, const idx *ldx, real_t<T> *rcond, real_t<T> *ferr, real_t<T> *berr,
           T *work, void *, idx *info) {
  spsvx_t<T, true>("HPSVX", fact, uplo, n, nrhs, ap, afp, ipiv, b, ldb, x, ldx, rcond, ferr, berr, work, info);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_PACKED_SPTRF_H
