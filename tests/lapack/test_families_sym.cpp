// Symmetric and Hermitian indefinite factorizations (full storage): the
// factor rebuilt as P L D L^H P^T against A for the three pivotings, both
// triangles, blocked and unblocked; solves, inverses, condition estimates,
// refinement and the drivers; storage conversions; argument checks.
#include <functional>
#include "families_util.h"
#include "lapack/sym/api.h"
#include "nxl_lapack.h"

using ft::C;
using ft::Dense;
using lt::idx;
namespace sy = nxl::lapack::sym;

namespace {

template <class T_, bool H_> struct Form {
  using T = T_;
  static constexpr bool H = H_;
};

template <class T> T from(C v) {
  if constexpr (lt::cplx<T>) return T(lt::real_t<T>(v.real()), lt::real_t<T>(v.imag()));
  else return T(v.real());
}

// A random symmetric (H = false) or Hermitian matrix in one triangle of a
// padded array; the other triangle holds NaN so that any read of it shows.
// kind 0: random; 1: zero diagonal (2 x 2 pivots); 2: one zero row and column.
template <class T, bool H> struct SymMat {
  idx n, lda;
  bool up;
  std::vector<T> a;
  Dense dense;
  SymMat(idx n_, unsigned seed, bool up_, int kind) : n(n_), lda(n_ + 2), up(up_) {
    std::mt19937_64 g(seed);
    a.assign(static_cast<size_t>(lda * std::max<idx>(n, 1)), T(std::numeric_limits<lt::real_t<T>>::quiet_NaN()));
    dense.assign(static_cast<size_t>(n * n), C(0));
    for (idx j = 0; j < n; ++j)
      for (idx i = j; i < n; ++i) {
        T v = lt::rnd<T>(g);
        if (i == j) {
          if (kind == 1 && n > 1) v = T(0);
          if constexpr (H) v = T(std::real(v));
        }
        if (kind == 2 && (i == n / 2 || j == n / 2)) v = T(0);
        C w = ft::wide(v);
        dense[i + j * n] = w;
        dense[j + i * n] = (H && i != j) ? std::conj(w) : w;
      }
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < n; ++i)
        if (up ? i <= j : i >= j) a[i + j * lda] = from<T>(dense[i + j * n]);
    // The imaginary part of a Hermitian diagonal is not referenced.
    if constexpr (H)
      for (idx i = 0; i < n; ++i) a[i + i * lda] = T(std::real(a[i + i * lda]), lt::real_t<T>(7));
  }
  double norm() const {
    double r = 0;
    for (idx j = 0; j < n; ++j) {
      double s = 0;
      for (idx i = 0; i < n; ++i) s += std::abs(dense[i + j * n]);
      r = std::max(r, s);
    }
    return r;
  }
};

double norm1(idx n, const Dense &m) {
  double r = 0;
  for (idx j = 0; j < n; ++j) {
    double s = 0;
    for (idx i = 0; i < n; ++i) s += std::abs(m[i + j * n]);
    r = std::max(r, s);
  }
  return r;
}

// P L D L^H P^T (or with U) from a factor in bounded storage: unit triangle
// from a, diagonal of D from a, off-diagonal of D from e, interchanges from
// ipiv in the order the factorization made them.
template <class T, bool H>
Dense rebuild(bool up, idx n, const T *a, idx lda, const T *e, const idx *ipiv) {
  auto cj = [](C x) { return H ? std::conj(x) : x; };
  Dense l(static_cast<size_t>(n * n), C(0)), d(static_cast<size_t>(n * n), C(0));
  for (idx j = 0; j < n; ++j) {
    l[j + j * n] = 1;
    C dj = ft::wide(a[j + j * lda]);
    d[j + j * n] = H ? C(dj.real()) : dj;
    for (idx i = 0; i < n; ++i)
      if (up ? i < j : i > j) l[i + j * n] = ft::wide(a[i + j * lda]);
  }
  std::vector<std::pair<idx, idx>> swaps;
  if (up) {
    for (idx k = n - 1; k >= 0;) {
      if (ipiv[k] > 0) {
        swaps.push_back({k, ipiv[k] - 1});
        --k;
      } else {
        C v = ft::wide(e[k]);
        d[(k - 1) + k * n] = v;
        d[k + (k - 1) * n] = cj(v);
        swaps.push_back({k, -ipiv[k] - 1});
        swaps.push_back({k - 1, -ipiv[k - 1] - 1});
        k -= 2;
      }
    }
  } else {
    for (idx k = 0; k < n;) {
      if (ipiv[k] > 0) {
        swaps.push_back({k, ipiv[k] - 1});
        ++k;
      } else {
        C v = ft::wide(e[k]);
        d[(k + 1) + k * n] = v;
        d[k + (k + 1) * n] = cj(v);
        swaps.push_back({k, -ipiv[k] - 1});
        swaps.push_back({k + 1, -ipiv[k + 1] - 1});
        k += 2;
      }
    }
  }
  Dense ld(static_cast<size_t>(n * n), C(0)), m(static_cast<size_t>(n * n), C(0));
  for (idx j = 0; j < n; ++j)
    for (idx k = 0; k < n; ++k)
      for (idx i = 0; i < n; ++i) ld[i + j * n] += l[i + k * n] * d[k + j * n];
  for (idx j = 0; j < n; ++j)
    for (idx k = 0; k < n; ++k)
      for (idx i = 0; i < n; ++i) m[i + j * n] += ld[i + k * n] * cj(l[j + k * n]);
  for (auto it = swaps.rbegin(); it != swaps.rend(); ++it) {
    idx r = it->first, s = it->second;
    for (idx j = 0; j < n; ++j) std::swap(m[r + j * n], m[s + j * n]);
    for (idx i = 0; i < n; ++i) std::swap(m[i + r * n], m[i + s * n]);
  }
  return m;
}

template <class T> double rel_diff(idx n, const Dense &a, const Dense &b, double anorm) {
  Dense d(static_cast<size_t>(n * n));
  for (size_t i = 0; i < d.size(); ++i) d[i] = a[i] - b[i];
  return anorm > 0 ? norm1(n, d) / (anorm * double(n) * lt::eps<T>()) : norm1(n, d);
}

enum class Piv { BK, Rook, RK };

// Factors with the routine of the given pivoting: `block` 0 = unblocked
// routine, 1 = blocked with a small panel forced by the workspace size,
// 2 = blocked with the optimal workspace. Returns info.
template <class T, bool H>
idx factor(Piv p, int block, bool up, idx n, T *a, idx lda, T *e, idx *ipiv) {
  using F = sy::Fam<H>;
  char u = up ? 'U' : 'L';
  idx info = -99;
  if (block == 0) {
    if (p == Piv::BK) F::template tf2<T>(&u, &n, a, &lda, ipiv, &info);
    else if (p == Piv::Rook) F::template tf2_rook<T>(&u, &n, a, &lda, ipiv, &info);
    else F::template tf2_rk<T>(&u, &n, a, &lda, e, ipiv, &info);
    return info;
  }
  idx lwork = -1;
  T q;
  if (p == Piv::BK) F::template trf<T>(&u, &n, a, &lda, ipiv, &q, &lwork, &info);
  else if (p == Piv::Rook) F::template trf_rook<T>(&u, &n, a, &lda, ipiv, &q, &lwork, &info);
  else F::template trf_rk<T>(&u, &n, a, &lda, e, ipiv, &q, &lwork, &info);
  EXPECT_EQ(info, 0);
  EXPECT_GE(idx(std::real(q)), std::max<idx>(1, n));
  lwork = block == 1 ? std::max<idx>(1, n * 8) : idx(std::real(q));
  std::vector<T> work(static_cast<size_t>(lwork));
  if (p == Piv::BK) F::template trf<T>(&u, &n, a, &lda, ipiv, work.data(), &lwork, &info);
  else if (p == Piv::Rook) F::template trf_rook<T>(&u, &n, a, &lda, ipiv, work.data(), &lwork, &info);
  else F::template trf_rk<T>(&u, &n, a, &lda, e, ipiv, work.data(), &lwork, &info);
  return info;
}

// The factor in bounded storage (classic ones converted on a copy, and the
// conversion checked to round-trip).
template <class T, bool H>
void to_bounded(Piv p, bool up, idx n, std::vector<T> &a, idx lda, std::vector<T> &e, std::vector<idx> &ipiv) {
  if (p == Piv::RK || n == 0) return;
  char u = up ? 'U' : 'L', c = 'C', r = 'R';
  idx info = -1;
  auto a0 = a;
  auto ip0 = ipiv;
  if (p == Piv::BK) sy::Fam<H>::template convf<T>(&u, &c, &n, a.data(), &lda, e.data(), ipiv.data(), &info);
  else sy::Fam<H>::template convf_rook<T>(&u, &c, &n, a.data(), &lda, e.data(), ipiv.data(), &info);
  ASSERT_EQ(info, 0);
  auto a1 = a, e1 = e;
  auto ip1 = ipiv;
  if (p == Piv::BK) sy::Fam<H>::template convf<T>(&u, &r, &n, a1.data(), &lda, e1.data(), ip1.data(), &info);
  else sy::Fam<H>::template convf_rook<T>(&u, &r, &n, a1.data(), &lda, e1.data(), ip1.data(), &info);
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < n; ++i)
      if (up ? i < j : i > j) ASSERT_EQ(ft::wide(a1[i + j * lda]), ft::wide(a0[i + j * lda])) << i << " " << j;
  ASSERT_EQ(ip1, ip0);
}

}  // namespace

template <class F> class SymTyped : public ::testing::Test {};
using Forms = ::testing::Types<Form<float, false>, Form<double, false>, Form<std::complex<float>, false>,
                               Form<std::complex<double>, false>, Form<std::complex<float>, true>,
                               Form<std::complex<double>, true>>;
TYPED_TEST_SUITE(SymTyped, Forms);

TYPED_TEST(SymTyped, FactorRebuildsMatrix) {
  using T = typename TypeParam::T;
  constexpr bool H = TypeParam::H;
  for (Piv p : {Piv::BK, Piv::Rook, Piv::RK})
    for (int block : {0, 1, 2})
      for (idx n : {0, 1, 2, 3, 7, 33, 90})
        for (int kind : {0, 1})
          for (bool up : {false, true}) {
            if (block == 2 && n < 90) continue;
            SymMat<T, H> m(n, static_cast<unsigned>(11 * n + kind + 3 * up), up, kind);
            std::vector<T> e(static_cast<size_t>(std::max<idx>(n, 1)), T(-5));
            std::vector<idx> ipiv(static_cast<size_t>(std::max<idx>(n, 1)), 0);
            idx info = factor<T, H>(p, block, up, n, m.a.data(), m.lda, e.data(), ipiv.data());
            ASSERT_EQ(info, 0) << n;
            to_bounded<T, H>(p, up, n, m.a, m.lda, e, ipiv);
            if (n == 0) continue;
            Dense r = rebuild<T, H>(up, n, m.a.data(), m.lda, e.data(), ipiv.data());
            EXPECT_LT(rel_diff<T>(n, r, m.dense, m.norm()), 30.0)
                << "piv " << int(p) << " block " << block << " n " << n << " kind " << kind << " up " << up;
          }
}

TYPED_TEST(SymTyped, BlockedAgreesWithUnblocked) {
  using T = typename TypeParam::T;
  constexpr bool H = TypeParam::H;
  idx n = 61;
  for (Piv p : {Piv::BK, Piv::Rook, Piv::RK})
    for (bool up : {false, true}) {
      SymMat<T, H> m1(n, 5u, up, 1), m2(n, 5u, up, 1);
      std::vector<T> e1(n), e2(n);
      std::vector<idx> i1(n), i2(n);
      ASSERT_EQ((factor<T, H>(p, 0, up, n, m1.a.data(), m1.lda, e1.data(), i1.data())), 0);
      ASSERT_EQ((factor<T, H>(p, 1, up, n, m2.a.data(), m2.lda, e2.data(), i2.data())), 0);
      EXPECT_EQ(i1, i2) << int(p) << up;
      double worst = 0;
      for (idx j = 0; j < n; ++j)
        for (idx i = 0; i < n; ++i)
          if (up ? i <= j : i >= j) worst = std::max(worst, lt::mag(m1.a[i + j * m1.lda] - m2.a[i + j * m2.lda]));
      EXPECT_LT(worst, 1e4 * lt::eps<T>()) << int(p) << up;
    }
}

TYPED_TEST(SymTyped, SingularPivotReported) {
  using T = typename TypeParam::T;
  constexpr bool H = TypeParam::H;
  idx n = 9;
  for (Piv p : {Piv::BK, Piv::Rook, Piv::RK})
    for (int block : {0, 1})
      for (bool up : {false, true}) {
        SymMat<T, H> m(n, 2u, up, 2);
        std::vector<T> e(n);
        std::vector<idx> ipiv(n);
        idx info = factor<T, H>(p, block, up, n, m.a.data(), m.lda, e.data(), ipiv.data());
        EXPECT_GT(info, 0) << int(p) << block << up;
        // The factorization still completes and reproduces A.
        to_bounded<T, H>(p, up, n, m.a, m.lda, e, ipiv);
        Dense r = rebuild<T, H>(up, n, m.a.data(), m.lda, e.data(), ipiv.data());
        EXPECT_LT(rel_diff<T>(n, r, m.dense, m.norm()), 30.0);
      }
  // A zero matrix: the first pivot processed is reported (last column for U).
  for (bool up : {false, true}) {
    idx info = -1, lda = 3, nn = 3;
    std::vector<T> z(9, T(0));
    std::vector<idx> ipiv(3);
    char u = up ? 'U' : 'L';
    sy::Fam<H>::template tf2<T>(&u, &nn, z.data(), &lda, ipiv.data(), &info);
    EXPECT_EQ(info, up ? 3 : 1);
  }
}

TYPED_TEST(SymTyped, SolvesAndDrivers) {
  using T = typename TypeParam::T;
  constexpr bool H = TypeParam::H;
  using F = sy::Fam<H>;
  for (idx n : {1, 4, 37})
    for (bool up : {false, true}) {
      char u = up ? 'U' : 'L';
      SymMat<T, H> m(n, static_cast<unsigned>(n + 100 * up), up, 1);
      idx nrhs = 3, ldb = n + 1, info = -1, lwork = n * 8;
      auto b = lt::random_matrix<T>(n, nrhs, ldb, 9u);
      std::vector<T> work(static_cast<size_t>(std::max<idx>(lwork, 3 * n)));
      auto check = [&](const std::vector<T> &x, const char *what) {
        EXPECT_LT(ft::solve_residual<T>('N', n, nrhs, m.dense, b.data(), ldb, x.data(), ldb), 30.0)
            << what << " n " << n << " up " << up;
      };
      for (Piv p : {Piv::BK, Piv::Rook, Piv::RK}) {
        auto a = m.a;
        std::vector<T> e(n);
        std::vector<idx> ipiv(n);
        ASSERT_EQ((factor<T, H>(p, 1, up, n, a.data(), m.lda, e.data(), ipiv.data())), 0);
        auto x = b;
        if (p == Piv::BK) {
          F::template trs<T>(&u, &n, &nrhs, a.data(), &m.lda, ipiv.data(), x.data(), &ldb, &info);
          check(x, "trs");
          auto a2 = a;
          x = b;
          F::template trs2<T>(&u, &n, &nrhs, a2.data(), &m.lda, ipiv.data(), x.data(), &ldb, work.data(), &info);
          check(x, "trs2");
          // The factor is restored after the level-3 solve.
          for (idx j = 0; j < n; ++j)
            for (idx i = 0; i < n; ++i)
              if (up ? i <= j : i >= j) EXPECT_EQ(ft::wide(a2[i + j * m.lda]), ft::wide(a[i + j * m.lda]));
        } else if (p == Piv::Rook) {
          F::template trs_rook<T>(&u, &n, &nrhs, a.data(), &m.lda, ipiv.data(), x.data(), &ldb, &info);
          check(x, "trs_rook");
        } else {
          F::template trs_3<T>(&u, &n, &nrhs, a.data(), &m.lda, e.data(), ipiv.data(), x.data(), &ldb, &info);
          check(x, "trs_3");
        }
        EXPECT_EQ(info, 0);
      }
      // Simple drivers.
      for (Piv p : {Piv::BK, Piv::Rook, Piv::RK}) {
        auto a = m.a;
        auto x = b;
        std::vector<T> e(n);
        std::vector<idx> ipiv(n);
        if (p == Piv::BK) F::template sv<T>(&u, &n, &nrhs, a.data(), &m.lda, ipiv.data(), x.data(), &ldb, work.data(), &lwork, &info);
        else if (p == Piv::Rook) F::template sv_rook<T>(&u, &n, &nrhs, a.data(), &m.lda, ipiv.data(), x.data(), &ldb, work.data(), &lwork, &info);
        else F::template sv_rk<T>(&u, &n, &nrhs, a.data(), &m.lda, e.data(), ipiv.data(), x.data(), &ldb, work.data(), &lwork, &info);
        EXPECT_EQ(info, 0);
        check(x, "sv");
      }
      // Expert driver: factor, condition, solve, refinement.
      {
        using R = lt::real_t<T>;
        std::vector<T> af(static_cast<size_t>(m.lda * n)), x(static_cast<size_t>(ldb * nrhs));
        std::vector<idx> ipiv(n), iw(n);
        std::vector<R> ferr(nrhs), berr(nrhs), rw(n);
        R rcond = -1;
        char fact = 'N';
        idx lw = static_cast<idx>(work.size());
        F::template svx<T>(&fact, &u, &n, &nrhs, m.a.data(), &m.lda, af.data(), &m.lda, ipiv.data(), b.data(),
                           &ldb, x.data(), &ldb, &rcond, ferr.data(), berr.data(), work.data(), &lw,
                           lt::cplx<T> ? static_cast<void *>(rw.data()) : static_cast<void *>(iw.data()), &info);
        EXPECT_EQ(info, 0);
        check(x, "svx");
        double exact = 1.0 / ft::exact_condition(n, m.dense, true);
        EXPECT_GE(double(rcond), exact * 0.5);
        EXPECT_LE(double(rcond), exact * 10.0);
        for (idx j = 0; j < nrhs; ++j) {
          EXPECT_LT(double(berr[j]), 10 * lt::eps<T>());
          EXPECT_GE(double(ferr[j]), 0.0);
        }
      }
    }
}

// Many right-hand sides take the level-3 path of the classic solves (panel
// copies with the block's interchanges, several blocks, 2 x 2 pivots on the
// block borders); it must agree with the column-by-column path.
TYPED_TEST(SymTyped, ManyRightHandSides) {
  using T = typename TypeParam::T;
  constexpr bool H = TypeParam::H;
  using F = sy::Fam<H>;
  idx n = 150, nrhs = 6, ldb = n + 3, info = -1;
  for (bool rook : {false, true})
    for (bool up : {false, true}) {
      char u = up ? 'U' : 'L';
      SymMat<T, H> m(n, rook ? 31u : 32u, up, 1);
      std::vector<T> e(n);
      std::vector<idx> ipiv(n);
      ASSERT_EQ((factor<T, H>(rook ? Piv::Rook : Piv::BK, 1, up, n, m.a.data(), m.lda, e.data(), ipiv.data())), 0);
      auto b = lt::random_matrix<T>(n, nrhs, ldb, 12u);
      auto x = b, y = b;
      if (rook) F::template trs_rook<T>(&u, &n, &nrhs, m.a.data(), &m.lda, ipiv.data(), x.data(), &ldb, &info);
      else F::template trs<T>(&u, &n, &nrhs, m.a.data(), &m.lda, ipiv.data(), x.data(), &ldb, &info);
      EXPECT_EQ(info, 0);
      if (rook) sy::solve_classic<T, H, true>(sy::tri_view(up, n, m.a.data(), m.lda), n, nrhs, sy::piv_view(up, n, ipiv.data()), sy::rhs_view(up, n, y.data(), ldb));
      else sy::solve_classic<T, H, false>(sy::tri_view(up, n, m.a.data(), m.lda), n, nrhs, sy::piv_view(up, n, ipiv.data()), sy::rhs_view(up, n, y.data(), ldb));
      double worst = 0, scale = 0;
      for (idx j = 0; j < nrhs; ++j)
        for (idx i = 0; i < n; ++i) {
          worst = std::max(worst, lt::mag(x[i + j * ldb] - y[i + j * ldb]));
          scale = std::max(scale, lt::mag(y[i + j * ldb]));
        }
      EXPECT_LT(worst / scale, 1e3 * lt::eps<T>()) << rook << up;
      // The padding rows of B are left alone.
      for (idx j = 0; j < nrhs; ++j) EXPECT_EQ(ft::wide(x[n + j * ldb]), ft::wide(b[n + j * ldb]));
    }
}

TYPED_TEST(SymTyped, InversesAndConditionEstimates) {
  using T = typename TypeParam::T;
  using R = lt::real_t<T>;
  constexpr bool H = TypeParam::H;
  using F = sy::Fam<H>;
  for (idx n : {1, 2, 5, 30, 70})
    for (bool up : {false, true})
      for (Piv p : {Piv::BK, Piv::Rook, Piv::RK}) {
        char u = up ? 'U' : 'L';
        SymMat<T, H> m(n, static_cast<unsigned>(3 * n + up), up, 1);
        auto a = m.a;
        std::vector<T> e(n), work(static_cast<size_t>(4 * n + 64 * 70));
        std::vector<idx> ipiv(n), iw(n);
        idx info = -1;
        ASSERT_EQ((factor<T, H>(p, 1, up, n, a.data(), m.lda, e.data(), ipiv.data())), 0);
        // Condition estimate against the exact value.
        R anorm = R(m.norm()), rcond = -1;
        if (p == Piv::BK) F::template con<T>(&u, &n, a.data(), &m.lda, ipiv.data(), &anorm, &rcond, work.data(), iw.data(), &info);
        else if (p == Piv::Rook) F::template con_rook<T>(&u, &n, a.data(), &m.lda, ipiv.data(), &anorm, &rcond, work.data(), iw.data(), &info);
        else F::template con_3<T>(&u, &n, a.data(), &m.lda, e.data(), ipiv.data(), &anorm, &rcond, work.data(), iw.data(), &info);
        EXPECT_EQ(info, 0);
        double exact = 1.0 / ft::exact_condition(n, m.dense, true);
        EXPECT_GE(double(rcond), exact * 0.5) << int(p);
        EXPECT_LE(double(rcond), exact * 10.0) << int(p);
        // Every inverse routine of the pivoting.
        // Level 2 (tri, tri_rook), blocked with the full workspace and with
        // small blocks (a reduced workspace, or nb given).
        for (int variant = 0; variant < 3; ++variant) {
          auto ai = a;
          idx lw = variant == 1 ? static_cast<idx>(work.size()) : 8 * n + 2 * n, nb = 5;
          if (p == Piv::BK) {
            if (variant == 0) F::template tri<T>(&u, &n, ai.data(), &m.lda, ipiv.data(), work.data(), &info);
            else if (variant == 1) F::template tri2<T>(&u, &n, ai.data(), &m.lda, ipiv.data(), work.data(), &lw, &info);
            else F::template tri2x<T>(&u, &n, ai.data(), &m.lda, ipiv.data(), work.data(), &nb, &info);
          } else if (p == Piv::Rook) {
            if (variant != 0) continue;
            F::template tri_rook<T>(&u, &n, ai.data(), &m.lda, ipiv.data(), work.data(), &info);
          } else {
            if (variant == 2) F::template tri_3x<T>(&u, &n, ai.data(), &m.lda, e.data(), ipiv.data(), work.data(), &nb, &info);
            else F::template tri_3<T>(&u, &n, ai.data(), &m.lda, e.data(), ipiv.data(), work.data(), &lw, &info);
          }
          ASSERT_EQ(info, 0);
          Dense inv(static_cast<size_t>(n * n));
          for (idx j = 0; j < n; ++j)
            for (idx i = 0; i < n; ++i) {
              bool st = up ? i <= j : i >= j;
              C v = ft::wide(st ? ai[i + j * m.lda] : ai[j + i * m.lda]);
              if (H && i == j) v = v.real();
              if (H && !st) v = std::conj(v);
              inv[i + j * n] = v;
            }
          Dense prod(static_cast<size_t>(n * n), C(0));
          for (idx j = 0; j < n; ++j)
            for (idx k = 0; k < n; ++k)
              for (idx i = 0; i < n; ++i) prod[i + j * n] += m.dense[i + k * n] * inv[k + j * n];
          for (idx i = 0; i < n; ++i) prod[i + i * n] -= 1.0;
          double r = norm1(n, prod) / (m.norm() * norm1(n, inv) * double(n) * lt::eps<T>());
          EXPECT_LT(r, 30.0) << "inverse piv " << int(p) << " variant " << variant << " n " << n << " up " << up;
        }
      }
}

TYPED_TEST(SymTyped, RefinementImprovesPerturbedSolution) {
  using T = typename TypeParam::T;
  using R = lt::real_t<T>;
  constexpr bool H = TypeParam::H;
  idx n = 25, nrhs = 2, ldb = n, info = -1;
  for (bool up : {false, true}) {
    char u = up ? 'U' : 'L';
    SymMat<T, H> m(n, 77u, up, 0);
    auto af = m.a;
    std::vector<T> e(n), work(static_cast<size_t>(3 * n));
    std::vector<idx> ipiv(n), iw(n);
    ASSERT_EQ((factor<T, H>(Piv::BK, 0, up, n, af.data(), m.lda, e.data(), ipiv.data())), 0);
    auto b = lt::random_matrix<T>(n, nrhs, ldb, 4u);
    auto x = b;
    sy::Fam<H>::template trs<T>(&u, &n, &nrhs, af.data(), &m.lda, ipiv.data(), x.data(), &ldb, &info);
    for (auto &v : x) v *= T(R(1) + R(1e-3));
    std::vector<R> ferr(nrhs), berr(nrhs), rw(n);
    sy::Fam<H>::template rfs<T>(&u, &n, &nrhs, m.a.data(), &m.lda, af.data(), &m.lda, ipiv.data(), b.data(), &ldb,
                                x.data(), &ldb, ferr.data(), berr.data(), work.data(),
                                lt::cplx<T> ? static_cast<void *>(rw.data()) : static_cast<void *>(iw.data()), &info);
    EXPECT_EQ(info, 0);
    EXPECT_LT(ft::solve_residual<T>('N', n, nrhs, m.dense, b.data(), ldb, x.data(), ldb), 10.0);
    for (idx j = 0; j < nrhs; ++j) EXPECT_LT(double(berr[j]), 10 * lt::eps<T>());
  }
}

TYPED_TEST(SymTyped, SymmetricInterchange) {
  using T = typename TypeParam::T;
  constexpr bool H = TypeParam::H;
  idx n = 7;
  for (bool up : {false, true})
    for (auto pr : {std::pair<idx, idx>{2, 6}, {6, 2}, {1, 2}, {3, 3}}) {
      SymMat<T, H> m(n, 8u, up, 0);
      char u = up ? 'U' : 'L';
      sy::Fam<H>::template swapr<T>(&u, &n, m.a.data(), &m.lda, &pr.first, &pr.second);
      idx r = pr.first - 1, s = pr.second - 1;
      for (idx j = 0; j < n; ++j) std::swap(m.dense[r + j * n], m.dense[s + j * n]);
      for (idx i = 0; i < n; ++i) std::swap(m.dense[i + r * n], m.dense[i + s * n]);
      for (idx j = 0; j < n; ++j)
        for (idx i = 0; i < n; ++i)
          if (up ? i <= j : i >= j) {
            C v = ft::wide(m.a[i + j * m.lda]);
            if (H && i == j) v = v.real();
            EXPECT_LT(std::abs(v - m.dense[i + j * n]), 1e-6) << i << " " << j;
          }
    }
}

// Equilibration by binormalization: every row of diag(s) A diag(s) gets a
// Euclidean norm within the radix of 1 with s powers of two, on a matrix
// scaled over twelve orders of magnitude, on one with a zero row (whose
// factor stays 1) and on one with a zero diagonal; info names the first
// diagonal entry that is not positive (real part), scond = min s / max s,
// amax the largest magnitude.
TYPED_TEST(SymTyped, EquilibrationBalancesRowNorms) {
  using T = typename TypeParam::T;
  using R = lt::real_t<T>;
  constexpr bool H = TypeParam::H;
  for (int kind : {0, 1, 2})
    for (idx n : {1, 12, 37})
      for (bool up : {false, true}) {
        SymMat<T, H> m(n, 21u + static_cast<unsigned>(n + kind), up, kind);
        for (idx j = 0; j < n; ++j)
          for (idx i = 0; i < n; ++i) {
            double f = kind == 0 ? std::pow(10.0, double(i % 13) - 6) * std::pow(10.0, double(j % 13) - 6) : 1.0;
            m.dense[i + j * n] *= f;
            if (up ? i <= j : i >= j) m.a[i + j * m.lda] *= T(R(f));
          }
        idx want = 0;
        double amax = 0;
        for (idx i = 0; i < n; ++i)
          if (want == 0 && m.dense[i + i * n].real() <= 0) want = i + 1;
        for (C v : m.dense) amax = std::max(amax, std::abs(v));
        std::vector<R> s(n);
        std::vector<T> work(2 * n);
        R scond = 0, am = 0;
        idx info = -1;
        char u = up ? 'U' : 'L';
        sy::Fam<H>::template equb<T>(&u, &n, m.a.data(), &m.lda, s.data(), &scond, &am, work.data(), &info);
        EXPECT_EQ(info, want) << n << kind << up;
        EXPECT_NEAR(double(am), amax, 1e-5 * amax);
        double smin = 1e300, smax = 0;
        for (idx i = 0; i < n; ++i) {
          int ex;
          EXPECT_EQ(std::frexp(double(s[i]), &ex), 0.5);  // a power of two
          smin = std::min(smin, double(s[i]));
          smax = std::max(smax, double(s[i]));
          double r2 = 0;
          for (idx j = 0; j < n; ++j) r2 += std::norm(m.dense[i + j * n] * double(s[i]) * double(s[j]));
          if (kind == 2 && i == n / 2) {
            EXPECT_EQ(s[i], R(1));
            continue;
          }
          EXPECT_GT(std::sqrt(r2), 0.4) << i << " n " << n << " kind " << kind;
          EXPECT_LT(std::sqrt(r2), 2.5) << i << " n " << n << " kind " << kind;
        }
        EXPECT_NEAR(double(scond), smin / smax, 1e-6 * smin / smax);
      }
  idx zero = 0, info = -1, lda = 1;
  R s0 = 0, scond = 0, am = 5;
  T a0 = T(0), w0 = T(0);
  char u = 'L';
  sy::Fam<H>::template equb<T>(&u, &zero, &a0, &lda, &s0, &scond, &am, &w0, &info);
  EXPECT_EQ(info, 0);
  EXPECT_EQ(am, R(0));
  EXPECT_EQ(scond, R(1));
}

TYPED_TEST(SymTyped, ArgumentChecksAndQueries) {
  using T = typename TypeParam::T;
  constexpr bool H = TypeParam::H;
  using F = sy::Fam<H>;
  const char *fam = (H && lt::cplx<T>) ? "HE" : "SY";
  char pre = lt::cplx<T> ? (std::is_same_v<T, std::complex<float>> ? 'C' : 'Z')
                         : (std::is_same_v<T, float> ? 'S' : 'D');
  auto name = [&](const char *op) { return std::string(1, pre) + fam + op; };
  T a[4] = {}, w[4] = {};
  idx ipiv[2] = {}, info = 0, n = 2, m1 = -1, one = 1, zero = 0;
  char bad = 'X', lo = 'L';
  {
    ft::Xerbla x;
    F::template trf<T>(&bad, &n, a, &n, ipiv, w, &one, &info);
    EXPECT_EQ(info, -1);
    EXPECT_EQ(x.name.substr(0, 5 + 1), name("TRF").substr(0, 6));
  }
  {
    ft::Xerbla x;
    F::template trf_rk<T>(&lo, &n, a, &n, w, ipiv, w, &zero, &info);
    EXPECT_EQ(info, -8);
    EXPECT_EQ(x.name.substr(0, 9), name("TRF_RK"));
  }
  {
    ft::Xerbla x;
    F::template trf_rook<T>(&lo, &n, a, &one, ipiv, w, &one, &info);
    EXPECT_EQ(info, -4);
  }
  {
    ft::Xerbla x;
    F::template trs_3<T>(&lo, &n, &one, a, &n, w, ipiv, w, &one, &info);
    EXPECT_EQ(info, -9);
    F::template trs<T>(&lo, &n, &m1, a, &n, ipiv, w, &n, &info);
    EXPECT_EQ(info, -3);
    F::template sv_rk<T>(&lo, &n, &one, a, &n, w, ipiv, w, &n, w, &zero, &info);
    EXPECT_EQ(info, -11);
    using R = lt::real_t<T>;
    R an = -1, rc = 0;
    F::template con_3<T>(&lo, &n, a, &n, w, ipiv, &an, &rc, w, ipiv, &info);
    EXPECT_EQ(info, -7);
    EXPECT_EQ(x.calls, 4);
  }
  if constexpr (!H) {
    ft::Xerbla x;
    sy::Fam<false>::template convf_rook<T>(&lo, &bad, &n, a, &n, w, ipiv, &info);
    EXPECT_EQ(info, -2);
    EXPECT_EQ(x.name, std::string(1, pre) + "SYCONVF_ROOK");
  }
  // Workspace queries: nothing touched but work(1).
  {
    idx q = -1;
    T aw[4] = {T(3), T(3), T(3), T(3)};
    idx nn = 100;
    F::template trf<T>(&lo, &nn, aw, &nn, ipiv, w, &q, &info);
    EXPECT_EQ(info, 0);
    EXPECT_GE(std::real(w[0]), 100.0);
    EXPECT_EQ(std::real(aw[0]), 3.0);
  }
  // n = 0 quick returns.
  {
    F::template tf2<T>(&lo, &zero, a, &one, ipiv, &info);
    EXPECT_EQ(info, 0);
    F::template trs_3<T>(&lo, &zero, &one, a, &one, w, ipiv, w, &one, &info);
    EXPECT_EQ(info, 0);
    using R = lt::real_t<T>;
    R an = 1, rc = -1;
    F::template con<T>(&lo, &zero, a, &one, ipiv, &an, &rc, w, ipiv, &info);
    EXPECT_EQ(rc, R(1));
  }
}

// Complex symmetric matrix-vector product and rank-1 update against naive
// loops, both triangles, negative increments.
template <class T> class CsymTyped : public ::testing::Test {};
using CTypes = ::testing::Types<std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(CsymTyped, CTypes);

TYPED_TEST(CsymTyped, SymvAndSyr) {
  using T = TypeParam;
  idx n = 6, lda = 8;
  for (bool up : {false, true})
    for (idx inc : {1, -2}) {
      SymMat<T, false> m(n, 4u, up, 0);
      auto x = lt::random_matrix<T>(1, n * 2, 1, 5u);
      auto y = lt::random_matrix<T>(1, n * 2, 1, 6u);
      auto y0 = y;
      T alpha(0.5, -1), beta(2, 0.25);
      char u = up ? 'U' : 'L';
      idx ainc = inc < 0 ? -inc : inc;
      auto at = [&](std::vector<T> &v, idx i) -> T & { return v[inc > 0 ? i * ainc : (n - 1 - i) * ainc]; };
      sy::symv<T>(&u, &n, &alpha, m.a.data(), &lda, x.data(), &inc, &beta, y.data(), &inc);
      for (idx i = 0; i < n; ++i) {
        C s = 0;
        for (idx j = 0; j < n; ++j) s += m.dense[i + j * n] * ft::wide(at(x, j));
        C want = ft::wide(alpha) * s + ft::wide(beta) * ft::wide(at(y0, i));
        EXPECT_LT(std::abs(ft::wide(at(y, i)) - want), 1e-4) << i;
      }
      sy::syr<T>(&u, &n, &alpha, x.data(), &inc, m.a.data(), &lda);
      for (idx j = 0; j < n; ++j)
        for (idx i = 0; i < n; ++i)
          if (up ? i <= j : i >= j) {
            C want = m.dense[i + j * n] + ft::wide(alpha) * ft::wide(at(x, i)) * ft::wide(at(x, j));
            EXPECT_LT(std::abs(ft::wide(m.a[i + j * lda]) - want), 1e-4);
          }
    }
}

// The exported panel routines reach their forms: with nb >= n a panel
// factors the whole matrix like the unblocked routine of the same pivoting.
namespace {
using Z = std::complex<double>;
using nz = nxl_complex16;
// The entries are reached through wrappers that call them directly: the C
// header's complex type differs from the library's own C++ one, which a
// call through a function pointer of the header's type would misstate.
struct PanelSet {
  std::function<void(const char *, const idx *, const idx *, idx *, nz *, const idx *, idx *, nz *, const idx *,
                     idx *)>
      laf, laf_rook;
  std::function<void(const char *, const idx *, const idx *, idx *, nz *, const idx *, nz *, idx *, nz *,
                     const idx *, idx *)>
      laf_rk;
  std::function<void(const char *, const idx *, nz *, const idx *, idx *, idx *)> tf2, tf2_rook;
  std::function<void(const char *, const idx *, nz *, const idx *, nz *, idx *, idx *)> tf2_rk;
};
#define NXL_DIRECT(f) [](auto... a) { f(a...); }
template <bool H> void panel_matches(const PanelSet &f, char u, int form) {
  idx n = 12, nb = 16, ldw = n, kb = -1, info = -1, info2 = -1;
  bool up = u == 'U';
  SymMat<Z, H> m(n, 40u + form, up, 1);
  auto a2 = m.a;
  std::vector<Z> w(static_cast<size_t>(ldw * nb)), e(n), e2(n);
  std::vector<idx> p1(n), p2(n);
  auto zc = [](std::vector<Z> &v) { return reinterpret_cast<nz *>(v.data()); };
  if (form == 0) {
    f.laf(&u, &n, &nb, &kb, zc(m.a), &m.lda, p1.data(), zc(w), &ldw, &info);
    f.tf2(&u, &n, zc(a2), &m.lda, p2.data(), &info2);
  } else if (form == 1) {
    f.laf_rook(&u, &n, &nb, &kb, zc(m.a), &m.lda, p1.data(), zc(w), &ldw, &info);
    f.tf2_rook(&u, &n, zc(a2), &m.lda, p2.data(), &info2);
  } else {
    f.laf_rk(&u, &n, &nb, &kb, zc(m.a), &m.lda, zc(e), p1.data(), zc(w), &ldw, &info);
    f.tf2_rk(&u, &n, zc(a2), &m.lda, zc(e2), p2.data(), &info2);
  }
  EXPECT_EQ(kb, n);
  EXPECT_EQ(info, info2);
  EXPECT_EQ(p1, p2) << u << form << H;
  double worst = 0;
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < n; ++i)
      if (up ? i <= j : i >= j) worst = std::max(worst, std::abs(m.a[i + j * m.lda] - a2[i + j * m.lda]));
  EXPECT_LT(worst, 1e-10) << u << form << H;
}
}  // namespace

TEST(SymExported, PanelsWithWideBlockMatchUnblocked) {
  const PanelSet he{NXL_DIRECT(zlahef),  NXL_DIRECT(zlahef_rook), NXL_DIRECT(zlahef_rk),
                    NXL_DIRECT(zhetf2),  NXL_DIRECT(zhetf2_rook), NXL_DIRECT(zhetf2_rk)};
  const PanelSet sy{NXL_DIRECT(zlasyf),  NXL_DIRECT(zlasyf_rook), NXL_DIRECT(zlasyf_rk),
                    NXL_DIRECT(zsytf2),  NXL_DIRECT(zsytf2_rook), NXL_DIRECT(zsytf2_rk)};
  for (char u : {'U', 'L'})
    for (int form = 0; form < 3; ++form) {
      panel_matches<true>(he, u, form);
      panel_matches<false>(sy, u, form);
    }
}

// Non-finite entries end the factorization normally (no endless pivot search).
TEST(SymExported, NonFiniteEntriesTerminate) {
  idx n = 6, lwork = 64, info = 0;
  for (double bad : {std::nan(""), HUGE_VAL})
    for (char u : {'U', 'L'}) {
      SymMat<double, false> m(n, 3u, u == 'U', 0);
      m.a[2 + 3 * m.lda] = bad;
      m.a[3 + 2 * m.lda] = bad;
      std::vector<double> e(n), work(lwork);
      std::vector<idx> ipiv(n);
      auto a1 = m.a, a2 = m.a;
      dsytrf_rook(&u, &n, a1.data(), &m.lda, ipiv.data(), work.data(), &lwork, &info);
      dsytrf_rk(&u, &n, a2.data(), &m.lda, e.data(), ipiv.data(), work.data(), &lwork, &info);
      dsytrf(&u, &n, m.a.data(), &m.lda, ipiv.data(), work.data(), &lwork, &info);
      for (idx k = 0; k < n; ++k) EXPECT_NE(ipiv[k], 0);
    }
}
