// Level-3 BLAS against an oracle in long double: randomised shapes around the
// register-tile and cache-block sizes, every flag combination, leading
// dimensions with guarded padding, NaN in outputs that beta = 0 must
// overwrite and in inputs that alpha = 0 or the unused triangle must leave
// unread, and bit-identical results for 1 to 4 threads.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "blas/level3.h"
#include "nxl_service.h"

namespace {

using idx = nxl_int;
using LD = std::complex<long double>;

template <class T> constexpr bool cplx = !std::is_floating_point_v<T>;
template <class T> struct real_of { using type = T; };
template <class R> struct real_of<std::complex<R>> { using type = R; };
template <class T> using R_t = typename real_of<T>::type;

template <class T> LD ld(T x) {
  if constexpr (cplx<T>) return LD(x.real(), x.imag());
  else return LD(x, 0);
}
template <class T> T from(LD x) {
  if constexpr (cplx<T>) return T(R_t<T>(x.real()), R_t<T>(x.imag()));
  else return T(x.real());
}
template <class T> T nan_v() {
  const R_t<T> q = std::numeric_limits<R_t<T>>::quiet_NaN();
  if constexpr (cplx<T>) return T(q, q);
  else return q;
}
template <class T> bool same_bits(T a, T b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }

const double kSentinel = -7777.25;

std::mt19937_64 &rng() {
  static std::mt19937_64 g(20261122);
  return g;
}
template <class T> T rnd() {
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  if constexpr (cplx<T>) return T(R_t<T>(u(rng())), R_t<T>(u(rng())));
  else return T(u(rng()));
}
idx rint(idx lo, idx hi) { return std::uniform_int_distribution<idx>(lo, hi)(rng()); }

// Column-major matrix with leading dimension ld >= rows and sentinel padding.
template <class T> struct Mat {
  idx rows, cols, ldim;
  std::vector<T> v;
  Mat(idx r, idx c, idx pad) : rows(r), cols(c), ldim(std::max<idx>(1, r + pad)) {
    v.assign(size_t(ldim * std::max<idx>(c, 1)), T(kSentinel));
    for (idx j = 0; j < c; ++j)
      for (idx i = 0; i < r; ++i) v[i + j * ldim] = rnd<T>();
  }
  T &operator()(idx i, idx j) { return v[i + j * ldim]; }
  T *p() { return v.data(); }
};

// The four precisions through one set of names.
template <class T> struct api;
#define API(P, T)                                                                                  \
  template <> struct api<T> {                                                                      \
    static void gemm(const char *ta, const char *tb, idx m, idx n, idx k, T al, const T *a, idx lda, \
                     const T *b, idx ldb, T be, T *c, idx ldc) {                                   \
      nxl_blas_##P##gemm(ta, tb, &m, &n, &k, &al, a, &lda, b, &ldb, &be, c, &ldc, 1, 1);           \
    }                                                                                              \
    static void symm(bool herm, const char *s, const char *u, idx m, idx n, T al, const T *a,      \
                     idx lda, const T *b, idx ldb, T be, T *c, idx ldc);                           \
    static void rankk(bool herm, bool two, const char *u, const char *t, idx n, idx k, T al,       \
                      const T *a, idx lda, const T *b, idx ldb, T be, T *c, idx ldc);              \
    static void trxm(bool solve, const char *s, const char *u, const char *t, const char *d, idx m, \
                     idx n, T al, const T *a, idx lda, T *b, idx ldb) {                            \
      if (solve) nxl_blas_##P##trsm(s, u, t, d, &m, &n, &al, a, &lda, b, &ldb, 1, 1, 1, 1);       \
      else nxl_blas_##P##trmm(s, u, t, d, &m, &n, &al, a, &lda, b, &ldb, 1, 1, 1, 1);             \
    }                                                                                              \
  };
API(s, float)
API(d, double)
API(c, std::complex<float>)
API(z, std::complex<double>)

#define API_REAL_SYM(P, T)                                                                         \
  void api<T>::symm(bool, const char *s, const char *u, idx m, idx n, T al, const T *a, idx lda,   \
                    const T *b, idx ldb, T be, T *c, idx ldc) {                                    \
    nxl_blas_##P##symm(s, u, &m, &n, &al, a, &lda, b, &ldb, &be, c, &ldc, 1, 1);                   \
  }                                                                                                \
  void api<T>::rankk(bool, bool two, const char *u, const char *t, idx n, idx k, T al, const T *a, \
                     idx lda, const T *b, idx ldb, T be, T *c, idx ldc) {                          \
    if (two) nxl_blas_##P##syr2k(u, t, &n, &k, &al, a, &lda, b, &ldb, &be, c, &ldc, 1, 1);        \
    else nxl_blas_##P##syrk(u, t, &n, &k, &al, a, &lda, &be, c, &ldc, 1, 1);                      \
  }
API_REAL_SYM(s, float)
API_REAL_SYM(d, double)
#define API_CPLX_SYM(P, T, R)                                                                      \
  void api<T>::symm(bool herm, const char *s, const char *u, idx m, idx n, T al, const T *a,       \
                    idx lda, const T *b, idx ldb, T be, T *c, idx ldc) {                           \
    if (herm) nxl_blas_##P##hemm(s, u, &m, &n, &al, a, &lda, b, &ldb, &be, c, &ldc, 1, 1);        \
    else nxl_blas_##P##symm(s, u, &m, &n, &al, a, &lda, b, &ldb, &be, c, &ldc, 1, 1);             \
  }                                                                                                \
  void api<T>::rankk(bool herm, bool two, const char *u, const char *t, idx n, idx k, T al,        \
                     const T *a, idx lda, const T *b, idx ldb, T be, T *c, idx ldc) {              \
    R rb = be.real(), ra = al.real();                                                              \
    if (herm && two) nxl_blas_##P##her2k(u, t, &n, &k, &al, a, &lda, b, &ldb, &rb, c, &ldc, 1, 1); \
    else if (herm) nxl_blas_##P##herk(u, t, &n, &k, &ra, a, &lda, &rb, c, &ldc, 1, 1);            \
    else if (two) nxl_blas_##P##syr2k(u, t, &n, &k, &al, a, &lda, b, &ldb, &be, c, &ldc, 1, 1);   \
    else nxl_blas_##P##syrk(u, t, &n, &k, &al, a, &lda, &be, c, &ldc, 1, 1);                      \
  }
API_CPLX_SYM(c, std::complex<float>, float)
API_CPLX_SYM(z, std::complex<double>, double)

// op(X)(i, p) of a stored matrix.
template <class T> LD opel(Mat<T> &X, char t, idx i, idx p) {
  if (t == 'N') return ld(X(i, p));
  LD v = ld(X(p, i));
  return (t == 'C' && cplx<T>) ? std::conj(v) : v;
}

template <class T> long double eps() { return std::numeric_limits<R_t<T>>::epsilon(); }

// Expected C and a per-element error bound from |terms|.
template <class T> struct Expect {
  std::vector<LD> val;
  std::vector<long double> bound;
  idx m, n;
  Expect(idx m_, idx n_) : val(size_t(m_ * n_)), bound(size_t(m_ * n_)), m(m_), n(n_) {}
};

// Checks C against the expectation on the region `in(i, j)`; everything
// else of C's storage (other triangle, padding) must keep its old bits.
template <class T, class In>
void check_c(Mat<T> &C, const std::vector<T> &before, Expect<T> &E, In in, const char *what) {
  int bad = 0;
  for (idx j = 0; j < C.cols; ++j)
    for (idx i = 0; i < C.ldim; ++i) {
      const T got = C.v[i + j * C.ldim];
      if (i >= C.rows || !in(i, j)) {
        if (!same_bits(got, before[i + j * C.ldim]) && bad++ < 5)
          ADD_FAILURE() << what << ": element (" << i << "," << j << ") outside the output changed";
        continue;
      }
      const LD want = E.val[i + j * E.m];
      const long double err = std::abs(ld(got) - want);
      const long double tol = 8 * eps<T>() * (E.bound[i + j * E.m] + 1e-30L) + 1e-35L;
      if (!(err <= tol) && bad++ < 5)
        ADD_FAILURE() << what << ": C(" << i << "," << j << ") = " << got << " expected "
                      << from<T>(want) << " (err " << double(err) << ", tol " << double(tol) << ")";
    }
}

const char kTrans[] = {'N', 'T', 'C'};

// Sizes that hit every edge-tile remainder and straddle the cache blocks.
idx pick_dim(int big) {
  switch (rint(0, big ? 5 : 3)) {
    case 0: return rint(1, 17);
    case 1: return rint(1, 48);
    case 2: return rint(10, 70);
    case 3: return rint(0, 4);
    case 4: return rint(180, 300);
    default: return rint(90, 140);
  }
}

template <class T> void scalars(int mode, T &alpha, T &beta) {
  alpha = rnd<T>();
  beta = rnd<T>();
  if (mode == 1) beta = T(0);
  if (mode == 2) alpha = T(0);
  if (mode == 3) beta = T(1);
  if (mode == 4) { alpha = T(0); beta = T(0); }
}

// ----------------------------------------------------------------------------
template <class T> void run_gemm_case(char ta, char tb, idx m, idx n, idx k, int mode, idx pad) {
  T alpha, beta;
  scalars(mode, alpha, beta);
  Mat<T> A(ta == 'N' ? m : k, ta == 'N' ? k : m, pad), B(tb == 'N' ? k : n, tb == 'N' ? n : k, pad);
  Mat<T> C(m, n, pad);
  if (alpha == T(0)) {  // A and B must not be read
    for (auto &x : A.v) x = nan_v<T>();
    for (auto &x : B.v) x = nan_v<T>();
  }
  if (beta == T(0))
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < m; ++i) C(i, j) = nan_v<T>();
  Expect<T> E(m, n);
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < m; ++i) {
      LD s = 0;
      long double bnd = 0;
      if (alpha != T(0))
        for (idx p = 0; p < k; ++p) {
          LD t = opel(A, ta, i, p) * opel(B, tb, p, j);
          s += t;
          bnd += std::abs(t);
        }
      LD cv = beta == T(0) ? LD(0) : ld(beta) * ld(C(i, j));
      E.val[i + j * m] = ld(alpha) * s + cv;
      E.bound[i + j * m] = std::abs(ld(alpha)) * bnd * (k + 2) + std::abs(cv);
    }
  std::vector<T> before = C.v;
  const char sa[2] = {ta, 0}, sb[2] = {tb, 0};
  api<T>::gemm(sa, sb, m, n, k, alpha, A.p(), A.ldim, B.p(), B.ldim, beta, C.p(), C.ldim);
  std::string what = std::string("gemm ") + ta + tb + " m=" + std::to_string(m) + " n=" +
                     std::to_string(n) + " k=" + std::to_string(k) + " mode=" + std::to_string(mode);
  check_c(C, before, E, [](idx, idx) { return true; }, what.c_str());
}

template <class T> void run_symm_case(bool herm, char side, char uplo, idx m, idx n, int mode, idx pad) {
  T alpha, beta;
  scalars(mode, alpha, beta);
  const idx na = side == 'L' ? m : n;
  Mat<T> A(na, na, pad), B(m, n, pad), C(m, n, pad);
  // The triangle that is not stored, and the imaginary part of a Hermitian
  // diagonal, must never be read.
  for (idx j = 0; j < na; ++j)
    for (idx i = 0; i < na; ++i) {
      if (uplo == 'U' ? i > j : i < j) A(i, j) = nan_v<T>();
      if constexpr (cplx<T>)
        if (herm && i == j) A(i, i) = T(A(i, i).real(), std::numeric_limits<R_t<T>>::quiet_NaN());
    }
  if (beta == T(0))
    for (auto &x : C.v) x = nan_v<T>();
  for (idx j = 0; j < n; ++j)
    for (idx i = m; i < C.ldim; ++i) C(i, j) = T(kSentinel);
  auto full = [&](idx i, idx p) -> LD {
    const bool stored = uplo == 'U' ? i <= p : i >= p;
    if (i == p && herm) return LD(ld(A(i, i)).real(), 0);
    LD v = stored ? ld(A(i, p)) : ld(A(p, i));
    return (!stored && herm) ? std::conj(v) : v;
  };
  Expect<T> E(m, n);
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < m; ++i) {
      LD s = 0;
      long double bnd = 0;
      if (alpha != T(0))
        for (idx p = 0; p < na; ++p) {
          LD t = side == 'L' ? full(i, p) * ld(B(p, j)) : ld(B(i, p)) * full(p, j);
          s += t;
          bnd += std::abs(t);
        }
      LD cv = beta == T(0) ? LD(0) : ld(beta) * ld(C(i, j));
      E.val[i + j * m] = ld(alpha) * s + cv;
      E.bound[i + j * m] = std::abs(ld(alpha)) * bnd * (na + 2) + std::abs(cv);
    }
  std::vector<T> before = C.v;
  const char s[2] = {side, 0}, u[2] = {uplo, 0};
  api<T>::symm(herm, s, u, m, n, alpha, A.p(), A.ldim, B.p(), B.ldim, beta, C.p(), C.ldim);
  std::string what = std::string(herm ? "hemm " : "symm ") + side + uplo + " m=" +
                     std::to_string(m) + " n=" + std::to_string(n) + " mode=" + std::to_string(mode);
  check_c(C, before, E, [](idx, idx) { return true; }, what.c_str());
}

template <class T>
void run_rankk_case(bool herm, bool two, char uplo, char trans, idx n, idx k, int mode, idx pad) {
  T alpha, beta;
  scalars(mode, alpha, beta);
  if (herm) {
    if (!two) alpha = T(ld(alpha).real());
    beta = T(ld(beta).real());
  }
  const idx ra = trans == 'N' ? n : k, ca = trans == 'N' ? k : n;
  Mat<T> A(ra, ca, pad), B(ra, ca, pad), C(n, n, pad);
  if (alpha == T(0)) {
    for (auto &x : A.v) x = nan_v<T>();
    for (auto &x : B.v) x = nan_v<T>();
  }
  auto in = [&](idx i, idx j) { return uplo == 'U' ? i <= j : i >= j; };
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < n; ++i) {
      if (!in(i, j)) C(i, j) = T(kSentinel);
      else if (beta == T(0)) C(i, j) = nan_v<T>();
      else if constexpr (cplx<T>)
        if (herm && i == j) C(i, i) = T(C(i, i).real(), R_t<T>(0.75));  // must become 0
    }
  // op(X) is n x k; the second factor is op(X)^T, or ^H for herk/her2k.
  const char t1 = trans;
  auto x1 = [&](Mat<T> &X, idx i, idx p) { return opel(X, t1 == 'N' ? 'N' : (herm ? 'C' : 'T'), i, p); };
  auto x2 = [&](Mat<T> &X, idx p, idx j) {
    LD v = x1(X, j, p);
    return herm ? std::conj(v) : v;
  };
  Expect<T> E(n, n);
  const LD al = ld(alpha), al2 = herm ? std::conj(al) : al;
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < n; ++i) {
      if (!in(i, j)) continue;
      LD s = 0;
      long double bnd = 0;
      if (alpha != T(0))
        for (idx p = 0; p < k; ++p) {
          LD t1 = al * x1(A, i, p) * x2(two ? B : A, p, j);
          LD t2 = two ? al2 * x1(B, i, p) * x2(A, p, j) : LD(0);
          s += t1 + t2;
          bnd += std::abs(t1) + std::abs(t2);
        }
      LD c0 = ld(C(i, j));
      if (herm && i == j) c0 = LD(c0.real(), 0);
      LD cv = beta == T(0) ? LD(0) : ld(beta) * c0;
      LD v = s + cv;
      if (herm && i == j && !((k == 0 || alpha == T(0)) && beta == T(1))) v = LD(v.real(), 0);
      if (herm && i == j && (k == 0 || alpha == T(0)) && beta == T(1)) v = ld(C(i, j));
      E.val[i + j * n] = v;
      E.bound[i + j * n] = bnd * (k + 2) + std::abs(cv);
    }
  std::vector<T> before = C.v;
  const char u[2] = {uplo, 0}, t[2] = {trans, 0};
  api<T>::rankk(herm, two, u, t, n, k, alpha, A.p(), A.ldim, B.p(), B.ldim, beta, C.p(), C.ldim);
  std::string what = std::string(herm ? "her" : "syr") + (two ? "2k " : "k ") + uplo + trans +
                     " n=" + std::to_string(n) + " k=" + std::to_string(k) + " mode=" +
                     std::to_string(mode);
  check_c(C, before, E, in, what.c_str());
  // A Hermitian result has an exactly real diagonal.
  if constexpr (cplx<T>)
    if (herm && !((k == 0 || alpha == T(0)) && beta == T(1)))
      for (idx i = 0; i < n; ++i)
        if (C(i, i).imag() != 0) {
          ADD_FAILURE() << what << ": imaginary diagonal at " << i;
          break;
        }
}

template <class T>
void run_trxm_case(bool solve, char side, char uplo, char ta, char diag, idx m, idx n, int mode,
                   idx pad) {
  T alpha, beta;
  scalars(mode, alpha, beta);
  const idx na = side == 'L' ? m : n;
  Mat<T> A(na, na, pad), B(m, n, pad);
  // A well-conditioned triangle: off-diagonal entries scaled by 1/na and a
  // diagonal of modulus about 2; the other triangle (and a unit diagonal) is
  // never read.
  for (idx j = 0; j < na; ++j)
    for (idx i = 0; i < na; ++i) {
      if (i == j) A(i, i) = diag == 'U' ? nan_v<T>() : T(2) + rnd<T>() * T(0.5);
      else if (uplo == 'U' ? i > j : i < j) A(i, j) = nan_v<T>();
      else A(i, j) = from<T>(ld(A(i, j)) / (long double)na);
    }
  if (alpha == T(0))
    for (idx j = 0; j < na; ++j)
      for (idx i = 0; i < na; ++i) A(i, j) = nan_v<T>();
  auto tri = [&](idx i, idx p) -> LD {  // op(A)(i, p)
    idx r = ta == 'N' ? i : p, c = ta == 'N' ? p : i;
    if (r == c) return diag == 'U' ? LD(1) : (ta == 'C' && cplx<T> ? std::conj(ld(A(r, r))) : ld(A(r, r)));
    if (uplo == 'U' ? r > c : r < c) return 0;
    LD v = ld(A(r, c));
    return (ta == 'C' && cplx<T>) ? std::conj(v) : v;
  };
  Expect<T> E(m, n);
  if (!solve) {
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < m; ++i) {
        LD s = 0;
        long double bnd = 0;
        if (alpha != T(0))
          for (idx p = 0; p < na; ++p) {
            LD t = side == 'L' ? tri(i, p) * ld(B(p, j)) : ld(B(i, p)) * tri(p, j);
            s += t;
            bnd += std::abs(t);
          }
        E.val[i + j * m] = ld(alpha) * s;
        E.bound[i + j * m] = std::abs(ld(alpha)) * bnd * (na + 2);
      }
  } else {
    // Substitution in long double on alpha * B; the bound grows with the
    // length of the recurrence.
    std::vector<LD> X(size_t(m * n));
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < m; ++i) X[i + j * m] = ld(alpha) * ld(B(i, j));
    bool lower_op = (uplo == 'L') == (ta == 'N');
    if (alpha != T(0)) {
      if (side == 'L') {
        for (idx j = 0; j < n; ++j)
          for (idx s = 0; s < m; ++s) {
            idx i = lower_op ? s : m - 1 - s;
            LD v = X[i + j * m];
            for (idx p = 0; p < m; ++p)
              if (p != i && (lower_op ? p < i : p > i)) v -= tri(i, p) * X[p + j * m];
            X[i + j * m] = v / tri(i, i);
          }
      } else {
        // X op(A) = alpha B: column j uses the columns before (upper) or after.
        bool upper_op = !lower_op;
        for (idx s = 0; s < n; ++s) {
          idx j = upper_op ? s : n - 1 - s;
          for (idx i = 0; i < m; ++i) {
            LD v = X[i + j * m];
            for (idx p = 0; p < n; ++p)
              if (p != j && (upper_op ? p < j : p > j)) v -= X[i + p * m] * tri(p, j);
            X[i + j * m] = v / tri(j, j);
          }
        }
      }
    }
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < m; ++i) {
        E.val[i + j * m] = X[i + j * m];
        E.bound[i + j * m] = (std::abs(X[i + j * m]) + 1) * 4 * (na + 2);
      }
  }
  std::vector<T> before = B.v;
  const char s[2] = {side, 0}, u[2] = {uplo, 0}, t[2] = {ta, 0}, d[2] = {diag, 0};
  api<T>::trxm(solve, s, u, t, d, m, n, alpha, A.p(), A.ldim, B.p(), B.ldim);
  std::string what = std::string(solve ? "trsm " : "trmm ") + side + uplo + ta + diag + " m=" +
                     std::to_string(m) + " n=" + std::to_string(n) + " mode=" + std::to_string(mode);
  check_c(B, before, E, [](idx, idx) { return true; }, what.c_str());
}

template <class T> class Level3 : public ::testing::Test {};
using Precisions = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(Level3, Precisions);

TYPED_TEST(Level3, GemmAllTransposesEdgesAndScalars) {
  using T = TypeParam;
  for (char ta : kTrans)
    for (char tb : kTrans)
      for (int rep = 0; rep < 14; ++rep) {
        idx m = pick_dim(rep % 4 == 0), n = pick_dim(rep % 5 == 0), k = pick_dim(rep % 3 == 0);
        run_gemm_case<T>(ta, tb, m, n, k, rep % 5, rint(0, 3));
      }
  // Single rows and columns (handed to the level-2 product), and depths
  // around the cache block.
  for (char ta : kTrans)
    for (char tb : kTrans) {
      run_gemm_case<T>(ta, tb, 1, 37, 19, 0, 2);
      run_gemm_case<T>(ta, tb, 29, 1, 19, 1, 1);
      run_gemm_case<T>(ta, tb, 1, 1, 7, 0, 0);
      run_gemm_case<T>(ta, tb, 1, 9, 0, 0, 1);
    }
  for (idx k : {127, 128, 129, 191, 192, 193, 255, 256, 257, 383, 384, 385, 520})
    run_gemm_case<T>('N', 'N', 23, 17, k, 0, 1);
  for (idx m : {95, 96, 97, 191, 192, 193, 255, 256, 257})
    run_gemm_case<T>('T', 'N', m, 15, 33, 3, 2);
}

// Products up to 64 in every dimension run on register blocks that read A
// and B in place: every row remainder (masked vectors), every column
// remainder, both layouts of each operand, conjugation of either, the
// scalar modes, and padding around each matrix that must stay untouched.
TYPED_TEST(Level3, SmallProductsEveryRemainder) {
  using T = TypeParam;
  for (char ta : kTrans)
    for (char tb : kTrans) {
      for (idx m = 1; m <= 34; ++m) run_gemm_case<T>(ta, tb, m, (m * 5) % 17 + 1, m % 7 + 1, m % 5, m % 3);
      for (idx n = 1; n <= 16; ++n) run_gemm_case<T>(ta, tb, 19, n, 64, n % 5, 1);
      for (idx k = 1; k <= 24; ++k) run_gemm_case<T>(ta, tb, (k * 7) % 29 + 1, k % 4 + 1, k, k % 5, k % 3);
      for (idx m : {47, 48, 49, 63, 64}) run_gemm_case<T>(ta, tb, m, 64, 33, m % 5, 2);
      run_gemm_case<T>(ta, tb, 64, 64, 64, 2, 0);
      run_gemm_case<T>(ta, tb, 64, 65, 64, 0, 1);  // just outside the small path
    }
}

TYPED_TEST(Level3, SymmHemmSidesTrianglesAndScalars) {
  using T = TypeParam;
  for (int herm = 0; herm <= (cplx<T> ? 1 : 0); ++herm)
    for (char side : {'L', 'R'})
      for (char uplo : {'U', 'L'})
        for (int rep = 0; rep < 8; ++rep)
          run_symm_case<T>(herm, side, uplo, pick_dim(rep == 0), pick_dim(rep == 1), rep % 5, rint(0, 2));
}

TYPED_TEST(Level3, RankKFamilyTrianglesTransposesAndScalars) {
  using T = TypeParam;
  for (int herm = 0; herm <= (cplx<T> ? 1 : 0); ++herm)
    for (int two = 0; two <= 1; ++two)
      for (char uplo : {'U', 'L'})
        for (char trans : {'N', cplx<T> ? (herm ? 'C' : 'T') : 'T', cplx<T> ? 'N' : 'C'})
          for (int rep = 0; rep < 7; ++rep)
            run_rankk_case<T>(herm, two, uplo, trans, pick_dim(rep == 0), pick_dim(rep == 1), rep % 5,
                              rint(0, 2));
}

TYPED_TEST(Level3, TrmmTrsmAllFlags) {
  using T = TypeParam;
  for (int solve = 0; solve <= 1; ++solve)
    for (char side : {'L', 'R'})
      for (char uplo : {'U', 'L'})
        for (char ta : kTrans)
          for (char diag : {'N', 'U'})
            for (int rep = 0; rep < 3; ++rep) {
              int mode = rep == 2 ? 2 : (rep == 1 ? 3 : 0);  // alpha random / alpha 0 / beta unused
              run_trxm_case<T>(solve, side, uplo, ta, diag, pick_dim(rep == 0), pick_dim(rep == 1),
                               mode == 3 ? 0 : mode, rint(0, 2));
            }
  // A single column (left) or row (right: elements a leading dimension
  // apart) goes to the level-2 product or solve; alpha random and zero.
  for (int solve = 0; solve <= 1; ++solve)
    for (char side : {'L', 'R'})
      for (char uplo : {'U', 'L'})
        for (char ta : kTrans)
          for (char diag : {'N', 'U'})
            for (int mode : {0, 2}) {
              const bool left = side == 'L';
              run_trxm_case<T>(solve, side, uplo, ta, diag, left ? 70 : 1, left ? 1 : 70, mode, 3);
            }
  // Sizes that make the triangular solve recurse and trim several blocks.
  run_trxm_case<T>(1, 'L', 'L', 'N', 'N', 300, 37, 0, 1);
  run_trxm_case<T>(1, 'R', 'U', 'C', 'U', 41, 290, 0, 1);
  run_trxm_case<T>(0, 'L', 'U', 'T', 'N', 270, 29, 0, 1);
  run_trxm_case<T>(0, 'R', 'L', 'N', 'U', 33, 280, 0, 1);
  // The product runs in place, its depth blocks forwards or backwards by the
  // shape of op(A): orders over several depth blocks in every precision.
  for (char uplo : {'U', 'L'})
    for (char ta : {'N', 'T'}) {
      run_trxm_case<T>(0, 'L', uplo, ta, 'N', 800, 9, 2, 1);
      run_trxm_case<T>(0, 'R', uplo, ta, 'U', 7, 810, 2, 1);
    }
}

// One product computed with 1, 2, 3 and 4 threads: the bits must agree.
template <class T, class F> void same_bits_for_threads(const char *what, Mat<T> &out, F call) {
  const std::vector<T> start = out.v;
  const nxl_int saved = nxl_get_max_threads();
  std::vector<T> first;
  for (nxl_int t = 1; t <= 4; ++t) {
    nxl_set_num_threads(&t);
    out.v = start;
    call();
    if (t == 1) {
      first = out.v;
      continue;
    }
    for (size_t i = 0; i < first.size(); ++i)
      if (!same_bits(first[i], out.v[i])) {
        ADD_FAILURE() << what << ": " << t << " threads differ at storage index " << i;
        break;
      }
  }
  nxl_set_num_threads(&saved);
}

// A solve skips the updates a zero would make: a zero unknown (left side)
// meets an infinity of the triangle, and a zero of the triangle (right side)
// meets an infinite unknown, without turning anything into NaN. The triangle
// is the identity apart from the entries named, so X = B exactly. (Small
// orders: larger triangles apply their off-diagonal blocks as products.)
TYPED_TEST(Level3, TrsmZeroUpdatesAreSkipped) {
  using T = TypeParam;
  const T inf = T(std::numeric_limits<R_t<T>>::infinity());
  for (idx n : {idx(13), idx(32), idx(cplx<T> ? 29 : 40)})
    for (char uplo : {'L', 'U'})
      for (char tr : {'N', 'T'}) {
        const bool lowop = (uplo == 'L') == (tr == 'N');  // op(A) lower
        Mat<T> A(n, n, 1);
        for (idx j = 0; j < n; ++j)
          for (idx i = 0; i < n; ++i) A(i, j) = i == j ? T(1) : T(0);
        // Left: op(A)(r, c) = inf with unknown c zero in every column of B.
        const idx c = lowop ? 3 : n - 4, r = lowop ? n - 5 : 2;
        (tr == 'N' ? A(r, c) : A(c, r)) = inf;
        const idx nb = 9;
        Mat<T> B(n, nb, 2), X = B;
        for (idx j = 0; j < nb; ++j) X(c, j) = B(c, j) = T(0);
        const char u[2] = {uplo, 0}, t[2] = {tr, 0};
        api<T>::trxm(true, "L", u, t, "N", n, nb, T(1), A.p(), A.ldim, B.p(), B.ldim);
        for (idx j = 0; j < nb; ++j)
          for (idx i = 0; i < n; ++i) ASSERT_EQ(ld(B(i, j)), ld(X(i, j))) << n << uplo << tr << " L " << i << "," << j;
        // Right: column c of X infinite in one row, op(A) the identity (its
        // diagonal taken as unit, so that no division meets the infinity).
        (tr == 'N' ? A(r, c) : A(c, r)) = T(0);
        Mat<T> C(nb, n, 2), Y = C;
        C(4, c) = Y(4, c) = inf;
        api<T>::trxm(true, "R", u, t, "U", nb, n, T(1), A.p(), A.ldim, C.p(), C.ldim);
        for (idx j = 0; j < n; ++j)
          for (idx i = 0; i < nb; ++i) ASSERT_EQ(ld(C(i, j)), ld(Y(i, j))) << n << uplo << tr << " R " << i << "," << j;
      }
}

TYPED_TEST(Level3, ThreadedResultsAreBitIdentical) {
  using T = TypeParam;
  const idx m = 263, n = 251, k = 300;
  Mat<T> A(k, k, 1), B(k, k, 2), C(m, n, 3), S(m, m, 0), W(n, k, 1), Wt(k, n, 1), Bs(m, n, 1);
  const T al = rnd<T>(), be = rnd<T>();
  same_bits_for_threads<T>("gemm NN", C, [&] {
    api<T>::gemm("N", "N", m, n, k, al, A.p(), A.ldim, B.p(), B.ldim, be, C.p(), C.ldim);
  });
  same_bits_for_threads<T>("gemm CT", C, [&] {
    api<T>::gemm("C", "T", m, n, k, al, A.p(), A.ldim, B.p(), B.ldim, be, C.p(), C.ldim);
  });
  same_bits_for_threads<T>("gemm wide", C, [&] {
    api<T>::gemm("N", "N", 40, n, k, al, A.p(), A.ldim, B.p(), B.ldim, be, C.p(), C.ldim);
  });
  same_bits_for_threads<T>("symm L", C, [&] {
    api<T>::symm(false, "L", "U", m, n, al, S.p(), S.ldim, Bs.p(), Bs.ldim, be, C.p(), C.ldim);
  });
  Mat<T> C2(m, n, 3);
  same_bits_for_threads<T>("symm R", C2, [&] {
    api<T>::symm(cplx<T>, "R", "L", 200, n, al, B.p(), B.ldim, C.p(), C.ldim, be, C2.p(), C2.ldim);
  });
  Mat<T> D(n, n, 2);
  for (bool herm : {false, true})
    for (bool two : {false, true})
      for (const char *u : {"U", "L"}) {
        if (herm && !cplx<T>) continue;
        T a2 = herm && !two ? T(ld(al).real()) : al, b2 = herm ? T(ld(be).real()) : be;
        same_bits_for_threads<T>("rank-k", D, [&] {
          api<T>::rankk(herm, two, u, "N", n, k, a2, W.p(), W.ldim, W.p(), W.ldim, b2, D.p(), D.ldim);
        });
        same_bits_for_threads<T>("rank-k trans", D, [&] {
          api<T>::rankk(herm, two, u, herm ? "C" : "T", n, k, a2, Wt.p(), Wt.ldim, Wt.p(), Wt.ldim,
                        b2, D.p(), D.ldim);
        });
      }
  // A well-conditioned triangle, so that solves stay finite over every flag.
  Mat<T> Tm(m, m, 0);
  for (idx j = 0; j < m; ++j)
    for (idx i = 0; i < m; ++i) Tm(i, j) = i == j ? T(3) : Tm(i, j) * T(1.0 / double(m));
  for (bool solve : {false, true}) {
    for (const char *f : {"LNN", "UTU", "UNN", "LCU"})
      same_bits_for_threads<T>("trxm L", C, [&] {
        const char u[2] = {f[0], 0}, t[2] = {f[1], 0}, dg[2] = {f[2], 0};
        api<T>::trxm(solve, "L", u, t, dg, m, n, al, Tm.p(), Tm.ldim, C.p(), C.ldim);
      });
    for (const char *f : {"UTU", "LNN", "UNN", "LCN"})
      same_bits_for_threads<T>("trxm R", C, [&] {
        const char u[2] = {f[0], 0}, t[2] = {f[1], 0}, dg[2] = {f[2], 0};
        api<T>::trxm(solve, "R", u, t, dg, n, 240, al, Tm.p(), Tm.ldim, C.p(), C.ldim);
      });
  }
}

// A call from inside the caller's parallel region runs on its own thread and
// still gives the one-thread result.
TEST(Level3Threads, CallsInsideAParallelRegion) {
  const idx n = 160;
  Mat<double> A(n, n, 0), B(n, n, 0), C0(n, n, 0);
  std::vector<double> ref = C0.v;
  api<double>::gemm("N", "N", n, n, n, 1.0, A.p(), n, B.p(), n, 0.0, ref.data(), n);
  std::vector<std::vector<double>> outs(4, C0.v);
#pragma omp parallel for num_threads(4)
  for (int t = 0; t < 4; ++t)
    api<double>::gemm("N", "N", n, n, n, 1.0, A.p(), n, B.p(), n, 0.0, outs[t].data(), n);
  for (auto &o : outs) EXPECT_EQ(0, std::memcmp(o.data(), ref.data(), ref.size() * sizeof(double)));
}

// Quick returns: nothing is read or written.
TEST(Level3QuickReturns, ZeroDimensionsAndIdentityUpdates) {
  double c[4] = {1, 2, 3, 4};
  const double nan = std::numeric_limits<double>::quiet_NaN();
  double anan[4] = {nan, nan, nan, nan};
  api<double>::gemm("N", "N", 0, 2, 2, 1.0, anan, 1, anan, 2, 0.0, c, 1);
  api<double>::gemm("N", "N", 2, 0, 2, 1.0, anan, 2, anan, 2, 0.0, c, 2);
  api<double>::gemm("N", "N", 2, 2, 0, 1.0, anan, 2, anan, 1, 1.0, c, 2);
  api<double>::gemm("N", "N", 2, 2, 2, 0.0, anan, 2, anan, 2, 1.0, c, 2);
  api<double>::rankk(false, false, "U", "N", 2, 2, 0.0, anan, 2, anan, 2, 1.0, c, 2);
  api<double>::trxm(true, "L", "U", "N", "N", 0, 2, 1.0, anan, 1, c, 1);
  api<double>::trxm(false, "R", "U", "N", "N", 2, 0, 1.0, anan, 1, c, 2);
  EXPECT_EQ(c[0], 1);
  EXPECT_EQ(c[1], 2);
  EXPECT_EQ(c[2], 3);
  EXPECT_EQ(c[3], 4);
  // k = 0 with beta = 0 gives exact zeros, even over NaN.
  double z[4] = {nan, nan, nan, nan};
  api<double>::gemm("N", "N", 2, 2, 0, 1.0, anan, 2, anan, 1, 0.0, z, 2);
  for (double v : z) EXPECT_EQ(v, 0.0);
}

// NaN and Inf in the inputs propagate to the elements they touch.
TEST(Level3Propagation, NanAndInfReachTheirElements) {
  const idx n = 40;
  Mat<double> A(n, n, 0), B(n, n, 0), C(n, n, 0);
  A(3, 5) = std::numeric_limits<double>::quiet_NaN();
  B(7, 9) = std::numeric_limits<double>::infinity();
  api<double>::gemm("N", "N", n, n, n, 1.0, A.p(), n, B.p(), n, 0.0, C.p(), n);
  for (idx j = 0; j < n; ++j) EXPECT_TRUE(std::isnan(C(3, j))) << j;
  for (idx i = 0; i < n; ++i)
    if (i != 3) EXPECT_TRUE(std::isinf(C(i, 9)) || std::isnan(C(i, 9))) << i;
  EXPECT_TRUE(std::isfinite(C(0, 0)));
}

// An infinity of B in a triangular product reaches only the elements whose
// sums take it with a nonzero of the triangle: the other triangle is not
// part of the operand, whatever the tiles multiply internally.
template <class T> void trmm_infinity_case(idx n, char side, char uplo, char ta) {
  Mat<T> A(n, n, 1), B(n, n, 2);
  const idx k = n / 2 + 3;
  const T inf = T(std::numeric_limits<double>::infinity());
  if (side == 'L') B(k, 5) = inf;
  else B(5, k) = inf;
  const char s[2] = {side, 0}, u[2] = {uplo, 0}, t[2] = {ta, 0};
  api<T>::trxm(false, s, u, t, "N", n, n, T(1), A.p(), A.ldim, B.p(), B.ldim);
  const bool lower = (uplo == 'L') != (ta != 'N');  // shape of op(A)
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < n; ++i) {
      // Left: row i takes B(k, 5) where op(A)(i, k) is stored; right:
      // column j takes B(5, k) where op(A)(k, j) is.
      const bool reached = side == 'L' ? j == 5 && (lower ? i >= k : i <= k)
                                       : i == 5 && (lower ? j <= k : j >= k);
      const LD v = ld(B(i, j));
      const bool finite = std::isfinite(v.real()) && std::isfinite(v.imag());
      ASSERT_EQ(finite, !reached) << side << uplo << ta << " n=" << n << " at " << i << "," << j;
    }
}

TEST(Level3Propagation, TrmmInfinityStaysOffTheZeroTriangle) {
  for (idx n : {40, 300})
    for (char side : {'L', 'R'})
      for (char uplo : {'U', 'L'})
        for (char ta : {'N', 'T'}) {
          trmm_infinity_case<double>(n, side, uplo, ta);
          trmm_infinity_case<std::complex<float>>(n, side, uplo, ta == 'T' ? 'C' : 'N');
        }
}

}  // namespace
