// Shared pieces of the symmetric / Hermitian indefinite families (Bunch-
// Kaufman, rook and bounded Bunch-Kaufman pivoting, full storage).
//
// Every algorithm is written once, for the lower triangle. The upper
// triangle is handled by the same code through a reversed view: with
// J the exchange matrix, J A J turns an upper-stored matrix into a
// lower-stored one, U D U^H into (J U J)(J D J)(J U J)^H with J U J unit
// lower triangular, and pivot k into pivot n-1-k. The views below map
// indices (matrix, pivot vector, off-diagonal vector of D) accordingly;
// products of reversed blocks are the reversed products of the stored
// blocks, so BLAS calls see the stored blocks unchanged.
//
// The trait H selects the Hermitian form (conjugation on, real diagonal);
// without it the complex routines are the complex symmetric ones.
#ifndef NXL_LAPACK_SYM_COMMON_H
#define NXL_LAPACK_SYM_COMMON_H

#include <cstring>
#include "lapack/common.h"

// Rank-1 updates of the BLAS dispatch layer (real symmetric, Hermitian).
extern "C" void nxl_blas_ssyr(const char *, const nxl_int *, const float *, const float *, const nxl_int *, float *,
                              const nxl_int *, int);
extern "C" void nxl_blas_dsyr(const char *, const nxl_int *, const double *, const double *, const nxl_int *,
                              double *, const nxl_int *, int);
extern "C" void nxl_blas_cher(const char *, const nxl_int *, const float *, const std::complex<float> *,
                              const nxl_int *, std::complex<float> *, const nxl_int *, int);
extern "C" void nxl_blas_zher(const char *, const nxl_int *, const double *, const std::complex<double> *,
                              const nxl_int *, std::complex<double> *, const nxl_int *, int);

namespace nxl {
namespace lapack {
namespace sym {

// A := alpha x x^H + A on one stored triangle (real alpha; Hermitian or real).
inline void her(char u, idx n, float al, const float *x, float *a, idx lda) {
  idx one = 1;
  nxl_blas_ssyr(&u, &n, &al, x, &one, a, &lda, 1);
}
inline void her(char u, idx n, double al, const double *x, double *a, idx lda) {
  idx one = 1;
  nxl_blas_dsyr(&u, &n, &al, x, &one, a, &lda, 1);
}
inline void her(char u, idx n, float al, const std::complex<float> *x, std::complex<float> *a, idx lda) {
  idx one = 1;
  nxl_blas_cher(&u, &n, &al, x, &one, a, &lda, 1);
}
inline void her(char u, idx n, double al, const std::complex<double> *x, std::complex<double> *a, idx lda) {
  idx one = 1;
  nxl_blas_zher(&u, &n, &al, x, &one, a, &lda, 1);
}

// A matrix view with row stride rs (+1 or -1) and column stride cs.
template <class T> struct Mat {
  T *p;
  idx rs, cs;
  T &operator()(idx i, idx j) const { return p[i * rs + j * cs]; }
  Mat at(idx i, idx j) const { return {&(*this)(i, j), rs, cs}; }
  // First stored element and leading dimension of the m x n block at (i, j).
  T *block(idx i, idx j, idx m, idx n) const { return rs > 0 ? &(*this)(i, j) : &(*this)(i + m - 1, j + n - 1); }
  idx ld() const { return rs > 0 ? cs : -cs; }
};

// The lower-form view of an n x n triangle (n >= 1).
template <class T> Mat<T> tri_view(bool up, idx n, T *a, idx lda) {
  if (up) return {a + (n - 1) + (n - 1) * lda, -1, -lda};
  return {a, 1, lda};
}
// Rows reversed for the upper form, columns in stored order (right-hand sides).
template <class T> Mat<T> rhs_view(bool up, idx n, T *b, idx ldb) {
  if (up) return {b + (n - 1), -1, ldb};
  return {b, 1, ldb};
}

// A vector view (the off-diagonal entries of D in the bounded forms).
template <class T> struct Vec {
  T *p;
  idx inc;
  T &operator[](idx k) const { return p[k * inc]; }
  Vec at(idx k) const { return {p + k * inc, inc}; }
};
template <class T> Vec<T> vec_view(bool up, idx n, T *e) {
  if (!e) return {nullptr, 1};
  return up ? Vec<T>{e + (n - 1), -1} : Vec<T>{e, 1};
}

// The pivot vector in view indices (0-based); stored values are 1-based
// indices of the stored matrix, negative for the rows of a 2 x 2 block.
struct Piv {
  idx *p;
  idx n;
  bool rev;
  idx &raw(idx k) const { return p[rev ? n - 1 - k : k]; }
  void set(idx k, idx piv, bool neg) const {
    idx v = rev ? n - piv : piv + 1;
    raw(k) = neg ? -v : v;
  }
  idx get(idx k) const {
    idx v = raw(k);
    idx a = v < 0 ? -v : v;
    return rev ? n - a : a - 1;
  }
  bool neg(idx k) const { return raw(k) < 0; }
};
inline Piv piv_view(bool up, idx n, const idx *ipiv) { return {const_cast<idx *>(ipiv), n, up}; }

// Scalar operations of the two forms.
template <class T, bool H> struct Ops {
  using R = real_t<T>;
  static T cj(T x) {
    if constexpr (H) return nxl::conj(x);
    else return x;
  }
  // Magnitude used for a diagonal entry in the pivot choice.
  static R dabs(T x) {
    if constexpr (H) return std::fabs(nxl::re(x));
    else return abs1(x);
  }
  // A diagonal entry as stored (real for the Hermitian form).
  static T diag(T x) {
    if constexpr (H) return T(nxl::re(x));
    else return x;
  }
};

// A 2 x 2 diagonal block D = [a cj(b); b c] (b = D(1,0)) and products with
// its inverse, scaled by b so that no intermediate overflows:
// with s = |b| (Hermitian) or b, u = b / s, a' = a / s, c' = c / s,
// inv(D) = f [c' -cj(u); -u a'] with f = 1 / (s (a' c' - 1)).
template <class T, bool H> struct Block2 {
  T u, ap, cp, f;
  Block2(T a, T b, T c) {
    T s;
    if constexpr (H) s = T(absv(b));
    else s = b;
    u = b / s;
    ap = a / s;
    cp = c / s;
    f = T(1) / (s * (ap * cp - T(1)));
  }
  // [x y] inv(D)
  void row(T x, T y, T &l1, T &l2) const {
    l1 = (cp * x - u * y) * f;
    l2 = (ap * y - Ops<T, H>::cj(u) * x) * f;
  }
  // inv(D) [x; y]
  void col(T x, T y, T &l1, T &l2) const {
    l1 = (cp * x - Ops<T, H>::cj(u) * y) * f;
    l2 = (ap * y - u * x) * f;
  }
  T i00() const { return Ops<T, H>::diag(cp * f); }
  T i10() const { return -u * f; }
  T i11() const { return Ops<T, H>::diag(ap * f); }
};

// Interchanges rows and columns r and s of the matrix held in the lower
// triangle of the view (order n); the rows of columns [c0, min(r, s)) are
// interchanged too.
template <class T, bool H> void sym_swap(Mat<T> a, idx n, idx c0, idx r, idx s) {
  using O = Ops<T, H>;
  if (r == s) return;
  if (r > s) std::swap(r, s);
  for (idx j = c0; j < r; ++j) std::swap(a(r, j), a(s, j));
  for (idx j = r + 1; j < s; ++j) {
    T t = a(j, r);
    a(j, r) = O::cj(a(s, j));
    a(s, j) = O::cj(t);
  }
  if constexpr (H) a(s, r) = nxl::conj(a(s, r));
  std::swap(a(r, r), a(s, s));
  for (idx i = s + 1; i < n; ++i) std::swap(a(i, r), a(i, s));
}

// Calls f(r, s, k) for each interchange of rows r and s made at the step
// whose block starts at k, steps in factorization order (or reversed).
// In the Bunch-Kaufman encoding a 2 x 2 block (k, k+1) has one interchange
// (k+1 with the pivot); in the rook encoding each row has its own.
template <class F> void for_each_swap(const Piv &ip, idx n, bool rook, bool reverse, F f) {
  if (!reverse) {
    for (idx k = 0; k < n;) {
      if (!ip.neg(k) || k + 1 >= n) {
        f(k, ip.get(k), k);
        ++k;
      } else {
        if (rook) f(k, ip.get(k), k);
        f(k + 1, ip.get(k + 1), k);
        k += 2;
      }
    }
  } else {
    for (idx k = n - 1; k >= 0;) {
      if (!ip.neg(k) || k == 0) {
        f(k, ip.get(k), k);
        --k;
      } else {
        f(k, ip.get(k), k - 1);
        if (rook) f(k - 1, ip.get(k - 1), k - 1);
        k -= 2;
      }
    }
  }
}

// Complex symmetric y := alpha A x + beta y from one triangle (the real and
// Hermitian forms go to the BLAS).
template <class T>
void symv_plain(bool up, idx n, T alpha, const T *a, idx lda, const T *x, idx incx, T beta, T *y, idx incy) {
  if (n <= 0 || (alpha == T(0) && beta == T(1))) return;
  const T *xs = x + vec_start(n, incx);
  T *ys = y + vec_start(n, incy);
  for (idx i = 0; i < n; ++i) {
    T &yi = ys[i * incy];
    yi = beta == T(0) ? T(0) : beta * yi;
  }
  if (alpha == T(0)) return;
  for (idx j = 0; j < n; ++j) {
    T t1 = alpha * xs[j * incx], t2 = T(0);
    const T *col = a + j * lda;
    if (up) {
      for (idx i = 0; i < j; ++i) {
        ys[i * incy] += t1 * col[i];
        t2 += col[i] * xs[i * incx];
      }
      ys[j * incy] += t1 * col[j] + alpha * t2;
    } else {
      ys[j * incy] += t1 * col[j];
      for (idx i = j + 1; i < n; ++i) {
        ys[i * incy] += t1 * col[i];
        t2 += col[i] * xs[i * incx];
      }
      ys[j * incy] += alpha * t2;
    }
  }
}

// Complex symmetric rank-1 update A := alpha x x^T + A of one triangle.
template <class T> void syr_plain(bool up, idx n, T alpha, const T *x, idx incx, T *a, idx lda) {
  if (n <= 0 || alpha == T(0)) return;
  const T *xs = x + vec_start(n, incx);
  for (idx j = 0; j < n; ++j) {
    T xj = xs[j * incx];
    if (xj == T(0)) continue;
    T t = alpha * xj;
    T *col = a + j * lda;
    if (up)
      for (idx i = 0; i <= j; ++i) col[i] += xs[i * incx] * t;
    else
      for (idx i = j; i < n; ++i) col[i] += xs[i * incx] * t;
  }
}

// y := alpha A x + beta y, A Hermitian (H) or symmetric, stored triangle.
template <class T, bool H>
void sym_mv(bool up, idx n, T alpha, const T *a, idx lda, const T *x, T beta, T *y) {
  if (n <= 0) return;
  if constexpr (H || !is_complex_v<T>) blas::hemv(up ? 'U' : 'L', n, alpha, a, lda, x, 1, beta, y, 1);
  else symv_plain<T>(up, n, alpha, a, lda, x, 1, beta, y, 1);
}

// The name of a routine of the family: "SY" or "HE" followed by `op`.
template <class T, bool H> struct FamName {
  char s[16];
  FamName(const char *op) {
    s[0] = (H && is_complex_v<T>) ? 'H' : 'S';
    s[1] = (H && is_complex_v<T>) ? 'E' : 'Y';
    size_t i = 2;
    for (; op[i - 2] && i < 15; ++i) s[i] = op[i - 2];
    s[i] = 0;
  }
};
// Reports illegal argument `pos` (names of any length, SYCONVF_ROOK included).
template <class T, bool H> inline void fam_report(const char *op, idx pos, idx *info) {
  FamName<T, H> nm(op);
  char full[20];
  full[0] = prefix<T>();
  int len = 1;
  for (; nm.s[len - 1] && len < 19; ++len) full[len] = nm.s[len - 1];
  for (; len < 6; ++len) full[len] = ' ';
  full[len] = 0;
  if (info) *info = -pos;
  idx p = pos;
  nxl_serv_xerbla(full, &p, len);
}
template <class T, bool H> inline idx fam_nb(const char *op, const char *uplo, idx n) {
  FamName<T, H> nm(op);
  char u[2] = {upper(uplo), 0};
  return ilaenv_t<T>(1, nm.s, u, n, -1, -1, -1);
}
template <class T, bool H> inline idx fam_nbmin(const char *op, const char *uplo, idx n) {
  FamName<T, H> nm(op);
  char u[2] = {upper(uplo), 0};
  return ilaenv_t<T>(2, nm.s, u, n, -1, -1, -1);
}

}  // namespace sym
}  // namespace lapack
}  // namespace nxl

#endif  // NXL_LAPACK_SYM_COMMON_H
