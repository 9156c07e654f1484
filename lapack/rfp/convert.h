// Conversions between RFP and full (trttf, tfttr) or packed (tpttf,
// tfttp) triangles, and the norms of a symmetric (lansf) or Hermitian
// (lanhf) matrix in RFP storage.
#ifndef NXL_LAPACK_RFP_CONVERT_H
#define NXL_LAPACK_RFP_CONVERT_H

#include "lapack/aux/norms.h"
#include "lapack/rfp/layout.h"

namespace nxl {
namespace lapack {

// Visits each entry (i, j) of the `uplo` triangle with its RFP offset.
template <class T, class F> void rfp_each(const Rfp<T> &f, F visit) {
  for (idx j = 0; j < f.n; ++j)
    for (idx i = f.lower ? j : 0; i < (f.lower ? f.n : j + 1); ++i) {
      bool cj;
      idx k = f.locate(i, j, cj);
      visit(i, j, k, cj);
    }
}

template <class T> idx rfp_check(const char *transr, const char *uplo, idx n) {
  if (!rfp_transr_ok<T>(transr)) return 1;
  if (!same(uplo, 'U') && !same(uplo, 'L')) return 2;
  if (n < 0) return 3;
  return 0;
}

template <class T>
void trttf(const char *transr, const char *uplo, const idx *pn, const T *a, const idx *plda, T *arf, idx *info) {
  idx n = *pn, lda = *plda;
  *info = 0;
  idx pos = rfp_check<T>(transr, uplo, n);
  if (!pos && lda < imax(1, n)) pos = 5;
  if (pos) return report<T>("TRTTF", pos, info);
  Rfp<T> f(n, same(uplo, 'L'), same(transr, 'N'), arf);
  rfp_each(f, [&](idx i, idx j, idx k, bool cj) { arf[k] = rfp_conj(a[i + j * lda], cj); });
}

template <class T>
void tfttr(const char *transr, const char *uplo, const idx *pn, const T *arf, T *a, const idx *plda, idx *info) {
  idx n = *pn, lda = *plda;
  *info = 0;
  idx pos = rfp_check<T>(transr, uplo, n);
  if (!pos && lda < imax(1, n)) pos = 6;
  if (pos) return report<T>("TFTTR", pos, info);
  Rfp<const T> f(n, same(uplo, 'L'), same(transr, 'N'), arf);
  rfp_each(f, [&](idx i, idx j, idx k, bool cj) { a[i + j * lda] = rfp_conj(arf[k], cj); });
}

// Offset of entry (i, j) of a packed triangle.
inline idx packed_at(bool lower, idx n, idx i, idx j) {
  return lower ? i - j + j * (2 * n - j + 1) / 2 : i + j * (j + 1) / 2;
}

template <class T>
void tpttf(const char *transr, const char *uplo, const idx *pn, const T *ap, T *arf, idx *info) {
  idx n = *pn;
  *info = 0;
  idx pos = rfp_check<T>(transr, uplo, n);
  if (pos) return report<T>("TPTTF", pos, info);
  Rfp<T> f(n, same(uplo, 'L'), same(transr, 'N'), arf);
  rfp_each(f, [&](idx i, idx j, idx k, bool cj) { arf[k] = rfp_conj(ap[packed_at(f.lower, n, i, j)], cj); });
}

template <class T>
void tfttp(const char *transr, const char *uplo, const idx *pn, const T *arf, T *ap, idx *info) {
  idx n = *pn;
  *info = 0;
  idx pos = rfp_check<T>(transr, uplo, n);
  if (pos) return report<T>("TFTTP", pos, info);
  Rfp<const T> f(n, same(uplo, 'L'), same(transr, 'N'), arf);
  rfp_each(f, [&](idx i, idx j, idx k, bool cj) { ap[packed_at(f.lower, n, i, j)] = rfp_conj(arf[k], cj); });
}

// Norm of the symmetric (real) or Hermitian (complex: diagonal taken real)
// matrix; one- and infinity-norms agree. No workspace is needed.
template <class T>
real_t<T> lanhf(const char *norm, const char *transr, const char *uplo, const idx *pn, const T *arf,
                real_t<T> *) {
  idx n = *pn;
  if (n <= 0) return real_t<T>(0);
  Rfp<const T> f(n, same(uplo, 'L'), same(transr, 'N'), arf);
  auto get = [&](idx i, idx j) -> T {
    bool cj;
    bool stored = f.lower ? i >= j : i <= j;
    idx k = stored ? f.locate(i, j, cj) : f.locate(j, i, cj);
    if (i == j) return T(nxl::re(arf[k]));
    return arf[k];
  };
  auto rows = [&](idx, idx &lo, idx &hi) { lo = 0; hi = n; };
  char nm = upper(norm);
  if (nm == 'I' || nm == '1') nm = 'O';
  return norm_by_columns<T>(nm, n, n, get, rows, nullptr);
}

}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_RFP_CONVERT_H
