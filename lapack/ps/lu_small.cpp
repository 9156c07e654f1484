// Small-matrix LU kernels (max(m, n) <= 16 for the factorization, n and nrhs
// <= 8 for the solve): plain loops over the columns, no BLAS calls, no
// allocation. One source, compiled once per code path.
#include "lapack/ps/small.h"

namespace nxl {
inline namespace NXL_LOCAL_NS {
namespace ps {

// Right-looking LU with partial pivoting (first row of largest magnitude);
// an exactly zero pivot leaves its column unscaled and records the first one.
template <class T>
void getrf_small(idx m, idx n, T *a, idx lda, idx *ipiv, idx *info) {
  using R = real_t<T>;
  *info = 0;
  idx k = m < n ? m : n;
  R sfmin = safe_min<R>();
  for (idx j = 0; j < k; ++j) {
    T *cj = a + j * lda;
    idx p = j + pivot_row(m - j, cj + j);
    ipiv[j] = p + 1;
    if (cj[p] != T(0)) {
      if (p != j)
        for (idx c = 0; c < n; ++c) {
          T t = a[j + c * lda];
          a[j + c * lda] = a[p + c * lda];
          a[p + c * lda] = t;
        }
      T piv = cj[j];
      if (abs1(piv) >= sfmin) {
        T r = inv(piv);
        NXL_PS_SHORT_LOOP
        for (idx i = j + 1; i < m; ++i) cj[i] = mul(cj[i], r);
      } else {
        NXL_PS_SHORT_LOOP
        for (idx i = j + 1; i < m; ++i) cj[i] = divide(cj[i], piv);
      }
    } else if (*info == 0) {
      *info = j + 1;
    }
    // Trailing update, two target columns per sweep over column j.
    idx c = j + 1;
    for (; c + 2 <= n; c += 2) {
      T *c0 = a + c * lda, *c1 = c0 + lda;
      T f0 = c0[j], f1 = c1[j];
      NXL_PS_SHORT_LOOP
      for (idx i = j + 1; i < m; ++i) {
        T l = cj[i];
        c0[i] -= mul(l, f0);
        c1[i] -= mul(l, f1);
      }
    }
    for (; c < n; ++c) {
      T *cc = a + c * lda;
      T f = cc[j];
      NXL_PS_SHORT_LOOP
      for (idx i = j + 1; i < m; ++i) cc[i] -= mul(cj[i], f);
    }
  }
}

template <class T>
void getrs_small(const char *trans, idx n, idx nrhs, const T *a, idx lda, const idx *ipiv, T *b, idx ldb,
                 idx *info, const char *name) {
  idx bad = 0;
  bool nt = flag_is(trans, 'N'), tt = flag_is(trans, 'T'), ct = flag_is(trans, 'C');
  if (!nt && !tt && !ct) bad = 1;
  else if (n < 0) bad = 2;
  else if (nrhs < 0) bad = 3;
  else if (lda < (n > 1 ? n : 1)) bad = 5;
  else if (ldb < (n > 1 ? n : 1)) bad = 8;
  if (bad) {
    *info = -bad;
    nxl_serv_xerbla(name, &bad, 6);
    return;
  }
  *info = 0;
  if (n == 0 || nrhs == 0) return;
  for (idx r = 0; r < nrhs; ++r) {
    T *x = b + r * ldb;
    if (nt) {
      for (idx i = 0; i < n; ++i) {
        idx p = ipiv[i] - 1;
        if (p != i) { T t = x[i]; x[i] = x[p]; x[p] = t; }
      }
      for (idx j = 0; j < n; ++j) {
        T xj = x[j];
        const T *c = a + j * lda;
        NXL_PS_SHORT_LOOP
        for (idx i = j + 1; i < n; ++i) x[i] -= mul(c[i], xj);
      }
      for (idx j = n - 1; j >= 0; --j) {
        const T *c = a + j * lda;
        x[j] = divide(x[j], c[j]);
        T xj = x[j];
        for (idx i = 0; i < j; ++i) x[i] -= mul(c[i], xj);
      }
    } else {
      // U^T (or U^H) y = b, then L^T (or L^H) x = y, then the interchanges
      // in reverse order.
      for (idx j = 0; j < n; ++j) {
        const T *c = a + j * lda;
        T s = x[j];
        for (idx i = 0; i < j; ++i) s -= mul(ct ? nxl::conj(c[i]) : c[i], x[i]);
        x[j] = divide(s, ct ? nxl::conj(c[j]) : c[j]);
      }
      for (idx j = n - 1; j >= 0; --j) {
        const T *c = a + j * lda;
        T s = x[j];
        for (idx i = j + 1; i < n; ++i) s -= mul(ct ? nxl::conj(c[i]) : c[i], x[i]);
        x[j] = s;
      }
      for (idx i = n - 1; i >= 0; --i) {
        idx p = ipiv[i] - 1;
        if (p != i) { T t = x[i]; x[i] = x[p]; x[p] = t; }
      }
    }
  }
}

}  // namespace ps
}  // namespace NXL_LOCAL_NS
}  // namespace nxl

#define NXL_PS_LU(p, T, NAME)                                                                         \
  extern "C" void NXL_KERNEL(nxl_lapack_ps_, _##p##getrf_small)(const nxl_int *m, const nxl_int *n,   \
      T *a, const nxl_int *lda, nxl_int *ipiv, nxl_int *info, int) {                                 \
    nxl::ps::getrf_small<T>(*m, *n, a, *lda, ipiv, info);                                             \
  }                                                                                                   \
  extern "C" void NXL_KERNEL(nxl_lapack_ps_, _##p##getrs_small)(const char *trans, const nxl_int *n,  \
      const nxl_int *nrhs, const T *a, const nxl_int *lda, const nxl_int *ipiv, T *b,                 \
      const nxl_int *ldb, nxl_int *info, int, int) {                                                  \
    nxl::ps::getrs_small<T>(trans, *n, *nrhs, a, *lda, ipiv, b, *ldb, info, NAME);                    \
  }

NXL_PS_LU(s, float, "SGETRS")
NXL_PS_LU(d, double, "DGETRS")
NXL_PS_LU(c, std::complex<float>, "CGETRS")
NXL_PS_LU(z, std::complex<double>, "ZGETRS")
