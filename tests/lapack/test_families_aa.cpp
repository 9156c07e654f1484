// Aasen's factorization, one- and two-stage: P A P^T = L T L^H rebuilt from
// the stored factors (both triangles, real, complex symmetric and
// Hermitian, with NaN in the triangle that must not be read and garbage in
// the imaginary part of a Hermitian diagonal), solves through each stage,
// the drivers, workspace queries and minimum sizes, singular T, and
// argument checks.
#include <dlfcn.h>
#include "sym_util.h"
#include "lapack/aasen/sytrf_aa_2stage.h"
#include <cctype>

using ft::C;
using ft::Dense;
using lt::idx;
namespace lp = nxl::lapack;

namespace {

// P1 ... P_{n-1} L T L^H P_{n-1} ... P1 from the storage of sytrf_aa.
template <class T>
Dense aa_rebuild(idx n, bool up, bool herm, const std::vector<T> &f, idx lda, const std::vector<idx> &ipiv) {
  auto lo = [&](idx i, idx j) {  // entry (i, j), i >= j, of the lower form
    C v = ft::wide(up ? f[j + i * lda] : f[i + j * lda]);
    return up ? st::cjh(herm, v) : v;
  };
  Dense l(static_cast<size_t>(n * n), C(0)), t(static_cast<size_t>(n * n), C(0));
  for (idx i = 0; i < n; ++i) {
    l[i + i * n] = 1;
    t[i + i * n] = herm ? C(lo(i, i).real()) : lo(i, i);
    if (i + 1 < n) {
      t[i + 1 + i * n] = lo(i + 1, i);
      t[i + (i + 1) * n] = st::cjh(herm, lo(i + 1, i));
    }
  }
  for (idx k = 1; k < n; ++k)
    for (idx i = k + 1; i < n; ++i) l[i + k * n] = lo(i, k - 1);
  Dense m = st::mul(st::mul(l, t, n), st::adjoint(l, n, herm), n);
  for (idx j = n - 1; j >= 0; --j) st::swap_sym(m, n, j, ipiv[static_cast<size_t>(j)] - 1);
  return m;
}

template <class T, bool herm>
void factor(const char *u, idx n, T *a, idx lda, idx *ipiv, T *work, idx lwork, idx *info) {
  if constexpr (herm) lp::hetrf_aa<T>(u, &n, a, &lda, ipiv, work, &lwork, info);
  else lp::sytrf_aa<T>(u, &n, a, &lda, ipiv, work, &lwork, info);
}
}  // namespace

template <class T> class AaTyped : public ::testing::Test {};
using Types = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(AaTyped, Types);

TYPED_TEST(AaTyped, FactorsRebuildAndSolve) {
  using T = TypeParam;
  using R = lt::real_t<T>;
  for (bool herm : {false, true}) {
    if (herm && !lt::cplx<T>) continue;
    for (idx n : {1, 2, 3, 8, 33, 100, 150, 257}) {
      for (bool up : {true, false}) {
        idx lda = n + 3;
        Dense a = st::sym_dense<T>(n, herm, static_cast<unsigned>(5 * n + up + 2 * herm), 0.1);
        auto f = st::full<T>(a, n, lda, up);
        if constexpr (lt::cplx<T>)  // a Hermitian routine ignores the imaginary part of the diagonal
          if (herm)
            for (idx i = 0; i < n; ++i) f[i + i * lda] += T(R(0), R(1e30));
        std::vector<idx> ipiv(static_cast<size_t>(n));
        idx lwork = -1, info = -1;
        std::vector<T> work(1);
        const char *u = up ? "U" : "L";
        if (herm) factor<T, true>(u, n, f.data(), lda, ipiv.data(), work.data(), lwork, &info);
        else factor<T, false>(u, n, f.data(), lda, ipiv.data(), work.data(), lwork, &info);
        ASSERT_EQ(info, 0);
        lwork = static_cast<idx>(std::real(work[0]));
        ASSERT_GE(lwork, 2 * n);
        work.resize(static_cast<size_t>(lwork));
        if (herm) factor<T, true>(u, n, f.data(), lda, ipiv.data(), work.data(), lwork, &info);
        else factor<T, false>(u, n, f.data(), lda, ipiv.data(), work.data(), lwork, &info);
        ASSERT_EQ(info, 0);
        EXPECT_EQ(ipiv[0], 1);
        EXPECT_LT(st::rel_diff<T>(a, aa_rebuild<T>(n, up, herm, f, lda, ipiv), n), 30.0) << n << up << herm;
        // The untouched triangle keeps its NaNs.
        for (idx j = 0; j < n; ++j)
          for (idx i = 0; i < n; ++i)
            if (up ? i > j : i < j) EXPECT_TRUE(std::isnan(std::real(f[i + j * lda])));
        idx nrhs = 4, ldb = n + 1, lw = 3 * n;
        auto b = lt::random_matrix<T>(n, nrhs, ldb, 3u), x = b;
        std::vector<T> w(static_cast<size_t>(std::max<idx>(lw, 1)));
        if (herm) lp::hetrs_aa<T>(u, &n, &nrhs, f.data(), &lda, ipiv.data(), x.data(), &ldb, w.data(), &lw, &info);
        else lp::sytrs_aa<T>(u, &n, &nrhs, f.data(), &lda, ipiv.data(), x.data(), &ldb, w.data(), &lw, &info);
        ASSERT_EQ(info, 0);
        EXPECT_LT(ft::solve_residual('N', n, nrhs, a, b.data(), ldb, x.data(), ldb), 30.0) << n << up << herm;
      }
    }
  }
}

// The panel width follows the work given: from one column (lwork = 2n)
// through narrow panels to the full width, with or without room for the
// diagonal blocks of the update, the same factorization quality.
TYPED_TEST(AaTyped, EveryPanelWidthFromTheWork) {
  using T = TypeParam;
  for (bool herm : {false, true}) {
    if (herm && !lt::cplx<T>) continue;
    for (bool up : {true, false})
      for (idx n : {70, 131})
        for (idx per : {2, 3, 6, 40}) {
          idx lda = n, lwork = per * n + (per == 6 ? 64 * 64 : 0), info = -1;
          Dense a = st::sym_dense<T>(n, herm, static_cast<unsigned>(n + per + up), 0.1);
          auto f = st::full<T>(a, n, lda, up);
          std::vector<idx> ipiv(static_cast<size_t>(n));
          std::vector<T> work(static_cast<size_t>(lwork));
          if (herm) factor<T, true>(up ? "U" : "L", n, f.data(), lda, ipiv.data(), work.data(), lwork, &info);
          else factor<T, false>(up ? "U" : "L", n, f.data(), lda, ipiv.data(), work.data(), lwork, &info);
          ASSERT_EQ(info, 0);
          EXPECT_LT(st::rel_diff<T>(a, aa_rebuild<T>(n, up, herm, f, lda, ipiv), n), 30.0) << n << per << up;
        }
  }
}

TYPED_TEST(AaTyped, DriversOneAndTwoStage) {
  using T = TypeParam;
  for (bool herm : {false, true}) {
    if (herm && !lt::cplx<T>) continue;
    for (idx n : {1, 6, 57}) {
      for (bool up : {true, false}) {
        const char *u = up ? "U" : "L";
        Dense a = st::sym_dense<T>(n, herm, static_cast<unsigned>(n + 11 * up + herm), 0.2);
        idx nrhs = 2, ldb = n, lda = n, info = -1;
        auto xt = lt::random_matrix<T>(n, nrhs, n, 8u);
        auto b = st::times<T>(a, n, xt, nrhs);
        // One stage.
        auto f = st::full<T>(a, n, lda, up);
        auto x = b;
        std::vector<idx> ipiv(static_cast<size_t>(n)), ipiv2(static_cast<size_t>(n));
        idx lwork = std::max<idx>(1, 3 * n);
        std::vector<T> work(static_cast<size_t>(lwork));
        if (herm) lp::hesv_aa<T>(u, &n, &nrhs, f.data(), &lda, ipiv.data(), x.data(), &ldb, work.data(), &lwork, &info);
        else lp::sysv_aa<T>(u, &n, &nrhs, f.data(), &lda, ipiv.data(), x.data(), &ldb, work.data(), &lwork, &info);
        ASSERT_EQ(info, 0);
        EXPECT_LT(ft::solve_residual('N', n, nrhs, a, b.data(), ldb, x.data(), ldb), 30.0);
        // Two stages, with the band array and work from the queries.
        f = st::full<T>(a, n, lda, up);
        x = b;
        idx ltb = -1, lw = -1;
        std::vector<T> tb(1);
        if (herm) lp::hesv_aa_2stage<T>(u, &n, &nrhs, f.data(), &lda, tb.data(), &ltb, ipiv.data(), ipiv2.data(),
                                        x.data(), &ldb, work.data(), &lw, &info);
        else lp::sysv_aa_2stage<T>(u, &n, &nrhs, f.data(), &lda, tb.data(), &ltb, ipiv.data(), ipiv2.data(),
                                   x.data(), &ldb, work.data(), &lw, &info);
        ASSERT_EQ(info, 0);
        ltb = static_cast<idx>(std::real(tb[0]));
        lw = static_cast<idx>(std::real(work[0]));
        EXPECT_GE(ltb, 4 * n);
        EXPECT_GE(lw, n);
        tb.assign(static_cast<size_t>(ltb), T(0));
        work.assign(static_cast<size_t>(std::max<idx>(lw, 1)), T(0));
        if (herm) lp::hesv_aa_2stage<T>(u, &n, &nrhs, f.data(), &lda, tb.data(), &ltb, ipiv.data(), ipiv2.data(),
                                        x.data(), &ldb, work.data(), &lw, &info);
        else lp::sysv_aa_2stage<T>(u, &n, &nrhs, f.data(), &lda, tb.data(), &ltb, ipiv.data(), ipiv2.data(),
                                   x.data(), &ldb, work.data(), &lw, &info);
        ASSERT_EQ(info, 0);
        EXPECT_LT(ft::solve_residual('N', n, nrhs, a, b.data(), ldb, x.data(), ldb), 30.0);
        // The factors of the driver solve again through sytrs_aa_2stage.
        auto y = b;
        if (herm) lp::hetrs_aa_2stage<T>(u, &n, &nrhs, f.data(), &lda, tb.data(), &ltb, ipiv.data(), ipiv2.data(),
                                         y.data(), &ldb, &info);
        else lp::sytrs_aa_2stage<T>(u, &n, &nrhs, f.data(), &lda, tb.data(), &ltb, ipiv.data(), ipiv2.data(),
                                    y.data(), &ldb, &info);
        ASSERT_EQ(info, 0);
        for (size_t i = 0; i < y.size(); ++i) EXPECT_EQ(y[i], x[i]);
      }
    }
  }
}

TYPED_TEST(AaTyped, SingularTridiagonal) {
  using T = TypeParam;
  idx n = 5, lda = 5, nrhs = 1, lwork = 15, ltb = 20, info = 0;
  Dense a = st::sym_dense<T>(n, false, 2u);
  for (idx k = 0; k < n; ++k) a[k] = a[k * n] = 0;  // zero first row and column
  auto f = st::full<T>(a, n, lda, false);
  std::vector<idx> ipiv(5), ipiv2(5);
  std::vector<T> work(15), b(5, T(1)), tb(20);
  lp::sytrf_aa<T>("L", &n, f.data(), &lda, ipiv.data(), work.data(), &lwork, &info);
  EXPECT_EQ(info, 0);
  lp::sytrs_aa<T>("L", &n, &nrhs, f.data(), &lda, ipiv.data(), b.data(), &n, work.data(), &lwork, &info);
  EXPECT_EQ(info, 1);
  f = st::full<T>(a, n, lda, false);
  lp::sytrf_aa_2stage<T>("L", &n, f.data(), &lda, tb.data(), &ltb, ipiv.data(), ipiv2.data(), work.data(), &n,
                         &info);
  EXPECT_GT(info, 0);
}

TYPED_TEST(AaTyped, ArgumentChecksAndQueries) {
  using T = TypeParam;
  const char p = lp::prefix<T>();
  auto nm = [&](const char *stem) { return std::string(1, p) + stem; };
  std::vector<T> a(16, T(1)), w(16), tb(16);
  std::vector<idx> ip(4), ip2(4);
  idx zero = 0, one = 1, two = 2, m1 = -1, m2 = -2, four = 4, eight = 8, info = 0;
  ft::Xerbla cap;
  lp::sytrf_aa<T>("U", &zero, a.data(), &one, ip.data(), w.data(), &zero, &info);
  EXPECT_EQ(cap.name, nm("SYTRF_AA"));
  EXPECT_EQ(info, -7);
  lp::sytrf_aa<T>("U", &two, a.data(), &one, ip.data(), w.data(), &four, &info);
  EXPECT_EQ(info, -4);
  lp::sytrs_aa<T>("U", &zero, &one, a.data(), &one, ip.data(), w.data(), &one, w.data(), &m2, &info);
  EXPECT_EQ(cap.name, nm("SYTRS_AA"));
  EXPECT_EQ(info, -10);
  idx three = 3;
  lp::sysv_aa<T>("U", &two, &one, a.data(), &two, ip.data(), w.data(), &two, w.data(), &three, &info);
  EXPECT_EQ(info, -10);
  lp::sytrf_aa_2stage<T>("U", &two, a.data(), &two, tb.data(), &one, ip.data(), ip2.data(), w.data(), &two, &info);
  EXPECT_EQ(cap.name, nm("SYTRF_AA_2STAGE"));
  EXPECT_EQ(info, -6);
  lp::sytrf_aa_2stage<T>("U", &two, a.data(), &two, tb.data(), &eight, ip.data(), ip2.data(), w.data(), &zero,
                         &info);
  EXPECT_EQ(info, -10);
  lp::sytrs_aa_2stage<T>("U", &two, &one, a.data(), &two, tb.data(), &eight, ip.data(), ip2.data(), w.data(), &one,
                         &info);
  EXPECT_EQ(cap.name, nm("SYTRS_AA_2STAGE"));
  EXPECT_EQ(info, -11);
  lp::sysv_aa_2stage<T>("U", &two, &one, a.data(), &two, tb.data(), &eight, ip.data(), ip2.data(), w.data(), &two,
                        w.data(), &one, &info);
  EXPECT_EQ(info, -13);
  if constexpr (lt::cplx<T>) {
    lp::hetrf_aa<T>("/", &zero, a.data(), &one, ip.data(), w.data(), &one, &info);
    EXPECT_EQ(cap.name, nm("HETRF_AA"));
    EXPECT_EQ(info, -1);
    lp::hesv_aa_2stage<T>("U", &m1, &one, a.data(), &two, tb.data(), &eight, ip.data(), ip2.data(), w.data(), &two,
                          w.data(), &one, &info);
    EXPECT_EQ(cap.name, nm("HESV_AA_2STAGE"));
    EXPECT_EQ(info, -2);
  }
  // Queries: no factorization, sizes in work(1) and tb(1).
  idx q = -1, n = 10;
  lp::sysv_aa<T>("L", &n, &one, a.data(), &n, ip.data(), w.data(), &n, w.data(), &q, &info);
  EXPECT_EQ(info, 0);
  EXPECT_GE(std::real(w[0]), 28.0);
}

// The panel routines on their own. A panel over the first nb columns of the
// whole matrix (j1 = 1) leaves, with P the interchanges it recorded,
//   (P A P^T)(:, j) = sum_k L(:, k) (T L^H)(k, j) for j < nb
// (L's columns 0..nb and T up to T(nb, nb-1) are known), H(i, k) = (L T)(i, k)
// for i >= k (conjugated for 'U'), and the rest of the stored triangle equal
// to that of P A P^T. A second panel (j1 = 2) started on the trailing matrix
// the test updates itself must extend the same relation over its columns.
namespace {
template <class T> struct Panel {
  idx n;
  bool up, herm;
  std::vector<T> f;  // the stored triangle, leading dimension n
  std::vector<T> h;  // n x (n + 1)
  std::vector<idx> ipiv;
  C raw(idx i, idx j) const { return ft::wide(up ? f[j + i * n] : f[i + j * n]); }  // i >= j
  C get(idx i, idx j) const { return up ? st::cjh(herm, raw(i, j)) : raw(i, j); }
  void set(idx i, idx j, C v) { (up ? f[j + i * n] : f[i + j * n]) = st::narrow<T>(up ? st::cjh(herm, v) : v); }
  C l(idx i, idx k) const { return i == k ? C(1) : (k == 0 || i < k ? C(0) : get(i, k - 1)); }
  C t(idx i, idx j) const {  // tridiagonal T, |i - j| <= 1
    if (i == j) return herm ? C(get(i, i).real()) : get(i, i);
    return i > j ? get(i, j) : st::cjh(herm, get(j, i));
  }
  void run(idx j1, idx c0, idx m, idx nb, T *work) {
    idx ld = n, ldh = n;
    T *a = up ? &f[(c0 - (j1 - 1)) + c0 * n] : &f[c0 + (c0 - (j1 - 1)) * n];
    if (herm) lp::lahef_aa<T>(up ? "U" : "L", &j1, &m, &nb, a, &ld, &ipiv[c0], h.data(), &ldh, work);
    else lp::lasyf_aa<T>(up ? "U" : "L", &j1, &m, &nb, a, &ld, &ipiv[c0], h.data(), &ldh, work);
  }
};
// P A P^T from the interchanges ipiv[1..k].
Dense permuted(Dense a, idx n, idx k, const std::vector<idx> &ipiv) {
  for (idx j = 1; j < k; ++j) st::swap_sym(a, n, j, ipiv[static_cast<size_t>(j)] - 1);
  return a;
}
}  // namespace

TYPED_TEST(AaTyped, PanelsFactorTheirColumns) {
  using T = TypeParam;
  const double tol = 30.0 * static_cast<double>(lt::eps<T>());
  for (bool herm : {false, true}) {
    if (herm && !lt::cplx<T>) continue;
    for (bool up : {false, true}) {
      for (idx n : {1, 2, 9, 40}) {
        for (idx nb1 : {1, 3, 8}) {
          nb1 = std::min(nb1, n);
          Dense a = st::sym_dense<T>(n, herm, static_cast<unsigned>(7 * n + nb1 + 2 * up + herm));
          Panel<T> p{n, up, herm, st::full<T>(a, n, n, up), std::vector<T>(static_cast<size_t>(n * (n + 1))),
                     std::vector<idx>(static_cast<size_t>(n), 0)};
          std::vector<T> work(static_cast<size_t>(n));
          p.run(1, 0, n, nb1, work.data());
          EXPECT_EQ(p.ipiv[0], 1);
          idx k1 = std::min(n, nb1 + 1);  // interchanges recorded: rows 1..nb1
          for (idx k = 1; k < k1; ++k) EXPECT_TRUE(p.ipiv[k] > k && p.ipiv[k] <= n);
          Dense pa = permuted(a, n, k1, p.ipiv);
          double scale = 0;
          for (C v : a) scale = std::max(scale, std::abs(v));
          auto check_columns = [&](idx c_lo, idx c_hi) {
            for (idx j = c_lo; j < c_hi; ++j)
              for (idx i = j; i < n; ++i) {
                C s = 0;
                for (idx k = 0; k <= std::min(j + 1, n - 1); ++k) {
                  C tl = 0;  // (T L^H)(k, j)
                  for (idx r = std::max<idx>(0, k - 1); r <= std::min(k + 1, j); ++r)
                    tl += p.t(k, r) * st::cjh(herm, p.l(j, r));
                  s += p.l(i, k) * tl;
                }
                EXPECT_LT(std::abs(s - pa[i + j * n]), tol * n * scale) << n << nb1 << up << herm << i << j;
              }
          };
          check_columns(0, nb1);
          for (idx k = 0; k < nb1; ++k)
            for (idx i = k; i < n; ++i) {
              C w = p.t(k, k) * p.l(i, k);
              if (k > 0) w += p.t(k - 1, k) * p.l(i, k - 1);
              if (k + 1 < n) w += p.t(k + 1, k) * p.l(i, k + 1);
              C hv = ft::wide(p.h[i + k * n]);
              EXPECT_LT(std::abs((up ? st::cjh(herm, hv) : hv) - w), tol * n * scale) << i << k;
            }
          for (idx j = nb1; j < n; ++j)
            for (idx i = j; i < n; ++i) EXPECT_EQ(p.get(i, j), st::cjh(false, C(st::narrow<T>(pa[i + j * n]))));
          if (nb1 + 1 >= n) continue;
          // The trailing matrix loses the first panel's part (its cross term
          // included); then a second panel of three columns starts from the
          // last L column of the first.
          idx c0 = nb1;
          for (idx j = c0; j < n; ++j)
            for (idx i = j; i < n; ++i) {
              C s = 0;
              for (idx k = 0; k < c0; ++k) {
                C w = p.t(k, k) * p.l(i, k) + p.t(k + 1, k) * p.l(i, k + 1);
                if (k > 0) w += p.t(k - 1, k) * p.l(i, k - 1);
                s += w * st::cjh(herm, p.l(j, k));
              }
              s += p.l(i, c0 - 1) * p.t(c0 - 1, c0) * st::cjh(herm, p.l(j, c0));
              p.set(i, j, p.get(i, j) - s);
            }
          idx nb2 = std::min<idx>(3, n - c0), m = n - c0;
          std::vector<idx> first(p.ipiv.begin(), p.ipiv.end());
          p.run(2, c0, m, nb2, work.data());
          idx k2 = std::min(n, c0 + nb2 + 1);
          for (idx k = c0 + 1; k < k2; ++k) {
            EXPECT_TRUE(p.ipiv[k] >= 2 && p.ipiv[k] <= m) << k;
            p.ipiv[k] += c0;
            // The columns of L left of the panel's view take the interchange here.
            for (idx c = 0; c + 1 < c0; ++c) {
              C x = p.get(k, c), y = p.get(p.ipiv[k] - 1, c);
              p.set(k, c, y);
              p.set(p.ipiv[k] - 1, c, x);
            }
          }
          EXPECT_EQ(p.ipiv[c0], first[c0]);  // the first panel's last interchange stays
          pa = permuted(a, n, k2, p.ipiv);
          check_columns(0, c0 + nb2);
        }
      }
    }
  }
}

// The same panel calls through the reference LAPACK (black-box oracle, when
// installed): equal factors and interchanges on inputs where no pivot ties.
// The reference takes the first column of the panel in H(:, 0) as its
// driver leaves it there.
namespace {
using PanelFn = void (*)(const char *, const idx *, const idx *, const idx *, void *, const idx *, idx *, void *,
                         const idx *, void *, size_t);
template <class T> PanelFn reference_panel(bool herm) {
  static void *lib = dlopen("/usr/lib/x86_64-linux-gnu/lapack64/liblapack64.so.3", RTLD_NOW | RTLD_LOCAL);
  if (!lib) return nullptr;
  std::string name = std::string(1, static_cast<char>(std::tolower(lp::prefix<T>()))) +
                     (herm ? "lahef_aa_" : "lasyf_aa_");
  return reinterpret_cast<PanelFn>(dlsym(lib, name.c_str()));
}
}  // namespace

TYPED_TEST(AaTyped, PanelsAgreeWithReference) {
  using T = TypeParam;
  const double tol = 100.0 * static_cast<double>(lt::eps<T>());
  for (bool herm : {false, true}) {
    if (herm && !lt::cplx<T>) continue;
    PanelFn ref = reference_panel<T>(herm);
    if (!ref) GTEST_SKIP() << "reference LAPACK not installed";
    for (bool up : {false, true})
      for (idx j1 : {1, 2})
        for (idx nb : {1, 4, 7}) {
          idx m = 23, lda = m + 3, ldh = m + 1, cols = m + j1 - 1;
          auto a0 = lt::random_matrix<T>(lda, cols, lda, static_cast<unsigned>(nb + 5 * j1 + 3 * up + herm));
          auto a = up ? std::vector<T>(static_cast<size_t>(lda * (cols + 1))) : a0;
          if (up)  // the transposed layout: rows of the view are columns of the storage
            for (idx j = 0; j < cols; ++j)
              for (idx i = 0; i < m + 1 && i < lda; ++i) a[j + i * lda] = a0[i + j * lda];
          auto b = a;
          std::vector<T> h(static_cast<size_t>(ldh * (nb + 1)), T(0)), hr = h, w(static_cast<size_t>(m)), wr = w;
          std::vector<idx> ip(static_cast<size_t>(m), 0), ipr = ip;
          for (idx i = 0; i < m; ++i) hr[i] = up ? b[(j1 - 1) + i * lda] : b[i + (j1 - 1) * lda];
          const char *u = up ? "U" : "L";
          if (herm) lp::lahef_aa<T>(u, &j1, &m, &nb, a.data(), &lda, ip.data(), h.data(), &ldh, w.data());
          else lp::lasyf_aa<T>(u, &j1, &m, &nb, a.data(), &lda, ip.data(), h.data(), &ldh, w.data());
          ref(u, &j1, &m, &nb, b.data(), &lda, ipr.data(), hr.data(), &ldh, wr.data(), 1);
          for (idx k = 1; k <= nb && k < m; ++k) EXPECT_EQ(ip[k], ipr[k]) << k << up << j1 << nb << herm;
          if (j1 == 1) EXPECT_EQ(ip[0], 1);
          double worst = 0, big = 0;
          for (idx j = 0; j < cols; ++j)
            for (idx i = j - (j1 - 1); i < m; ++i) {
              if (i < 0) continue;
              size_t s = static_cast<size_t>(up ? j + i * lda : i + j * lda);
              worst = std::max(worst, lt::mag(a[s] - b[s]));
              big = std::max(big, lt::mag(b[s]));
            }
          EXPECT_LT(worst, tol * m * big) << up << j1 << nb << herm;
        }
  }
}
