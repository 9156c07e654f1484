// Solves A X = B, A^T X = B or A^H X = B with the band LU factors of gbtrf.
#ifndef NXL_LAPACK_BAND_GBTRS_H
#define NXL_LAPACK_BAND_GBTRS_H

#include "lapack/common.h"

namespace nxl {
namespace lapack {

template <class T> inline T op_conj(T x, bool c) {
  if constexpr (is_complex_v<T>) return c ? std::conj(x) : x;
  else { (void)c; return x; }
}

// One right-hand side b (length n). tr is 'N', 'T' or 'C'.
template <class T>
void gbtrs_vec(char tr, idx n, idx kl, idx ku, const T *ab, idx ldab, const idx *ipiv, T *b) {
  const idx kv = kl + ku;
  auto u = [&](idx i, idx j) { return ab[kv + i - j + j * ldab]; };
  if (tr == 'N') {
    if (kl > 0)
      for (idx j = 0; j + 1 < n; ++j) {
        idx lm = imin(kl, n - 1 - j), p = ipiv[j] - 1;
        if (p != j) std::swap(b[j], b[p]);
        T bj = b[j];
        if (bj != T(0))
          for (idx r = 1; r <= lm; ++r) b[j + r] -= ab[kv + r + j * ldab] * bj;
      }
    for (idx j = n - 1; j >= 0; --j) {
      if (b[j] == T(0)) continue;
      b[j] = div(b[j], u(j, j));
      T bj = b[j];
      for (idx i = imax(0, j - kv); i < j; ++i) b[i] -= u(i, j) * bj;
    }
  } else {
    bool c = tr == 'C';
    for (idx j = 0; j < n; ++j) {
      T s = b[j];
      for (idx i = imax(0, j - kv); i < j; ++i) s -= op_conj(u(i, j), c) * b[i];
      b[j] = div(s, op_conj(u(j, j), c));
    }
    if (kl > 0)
      for (idx j = n - 2; j >= 0; --j) {
        idx lm = imin(kl, n - 1 - j), p = ipiv[j] - 1;
        T s = b[j];
        for (idx r = 1; r <= lm; ++r) s -= op_conj(ab[kv + r + j * ldab], c) * b[j + r];
        b[j] = s;
        if (p != j) std::swap(b[j], b[p]);
      }
  }
}

template <class T>
void gbtrs_work(char tr, idx n, idx kl, idx ku, idx nrhs, const T *ab, idx ldab, const idx *ipiv, T *b, idx ldb) {
  if (n == 0 || nrhs == 0) return;
  for (idx k = 0; k < nrhs; ++k) gbtrs_vec<T>(tr, n, kl, ku, ab, ldab, ipiv, b + k * ldb);
}

template <class T>
void gbtrs(const char *trans, const idx *pn, const idx *pkl, const idx *pku, const idx *pnrhs, const T *ab,
           const idx *pldab, const idx *ipiv, T *b, const idx *pldb, idx *info) {
  idx n = *pn, kl = *pkl, ku = *pku, nrhs = *pnrhs, ldab = *pldab, ldb = *pldb;
  *info = 0;
  char tr = upper(trans);
  if (tr != 'N' && tr != 'T' && tr != 'C') return report<T>("GBTRS", 1, info);
  if (n < 0) return report<T>("GBTRS", 2, info);
  if (kl < 0) return report<T>("GBTRS", 3, info);
  if (ku < 0) return report<T>("GBTRS", 4, info);
  if (nrhs < 0) return report<T>("GBTRS", 5, info);
  if (ldab < 2 * kl + ku + 1) return report<T>("GBTRS", 7, info);
  if (ldb < imax(1, n)) return report<T>("GBTRS", 10, info);
  if (!is_complex_v<T> && tr == 'C') tr = 'T';
  gbtrs_work<T>(tr, n, kl, ku, nrhs, ab, ldab, ipiv, b, ldb);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_BAND_GBTRS_H
