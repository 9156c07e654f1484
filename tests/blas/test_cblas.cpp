// CBLAS in both layouts against a direct oracle of the row- or column-major
// definition: the row-major translations (operand exchange, swapped
// triangles, conjugated vectors for ConjTrans and Hermitian routines) must
// compute the same mathematics as the column-major calls.
#include <gtest/gtest.h>
#include <complex>
#include <vector>
#include "blas_test_util.h"
#include "nxl_cblas.h"

using namespace bt;
using cd = std::complex<double>;
using I = nxl_int;

namespace {
const CBLAS_LAYOUT layouts[] = {CblasColMajor, CblasRowMajor};
const CBLAS_TRANSPOSE transes[] = {CblasNoTrans, CblasTrans, CblasConjTrans};
const CBLAS_UPLO uplos[] = {CblasUpper, CblasLower};

// A dense matrix with a leading dimension, stored in a given layout.
struct Mat {
  CBLAS_LAYOUT l;
  I rows, cols, ld;
  std::vector<cd> v;
  Mat(CBLAS_LAYOUT l_, I r, I c, I pad = 2) : l(l_), rows(r), cols(c), ld((l_ == CblasColMajor ? r : c) + pad) {
    v.resize(size_t(ld * (l == CblasColMajor ? c : r) + 1));
    for (auto &e : v) e = rnd<cd>();
  }
  cd &operator()(I i, I j) { return l == CblasColMajor ? v[i + j * ld] : v[i * ld + j]; }
};
cd op(Mat &a, CBLAS_TRANSPOSE t, I i, I j) {
  return t == CblasNoTrans ? a(i, j) : t == CblasTrans ? a(j, i) : std::conj(a(j, i));
}
// The Hermitian matrix defined by one triangle (diagonal taken as real).
cd herm(Mat &a, CBLAS_UPLO u, I i, I j) {
  if (i == j) return a(i, i).real();
  bool stored = (u == CblasUpper) == (i < j);
  return stored ? a(i, j) : std::conj(a(j, i));
}
double rel(const std::vector<cd> &got, const std::vector<cd> &want) {
  double e = 0, s = 0;
  for (size_t i = 0; i < got.size(); ++i) e = std::max(e, std::abs(got[i] - want[i])), s = std::max(s, std::abs(want[i]));
  return e / (s + 1e-300);
}
}  // namespace

TEST(Cblas, GemmBothLayouts) {
  const cd al(0.7, -0.2), be(1.1, 0.3);
  for (auto l : layouts)
    for (auto ta : transes)
      for (auto tb : transes) {
        const I m = 4, n = 5, k = 3;
        Mat a(l, ta == CblasNoTrans ? m : k, ta == CblasNoTrans ? k : m);
        Mat b(l, tb == CblasNoTrans ? k : n, tb == CblasNoTrans ? n : k);
        Mat c(l, m, n);
        std::vector<cd> want;
        for (I i = 0; i < m; ++i)
          for (I j = 0; j < n; ++j) {
            cd s = 0;
            for (I p = 0; p < k; ++p) s += op(a, ta, i, p) * op(b, tb, p, j);
            want.push_back(al * s + be * c(i, j));
          }
        cblas_zgemm(l, ta, tb, m, n, k, &al, a.v.data(), a.ld, b.v.data(), b.ld, &be, c.v.data(), c.ld);
        std::vector<cd> got;
        for (I i = 0; i < m; ++i)
          for (I j = 0; j < n; ++j) got.push_back(c(i, j));
        EXPECT_LT(rel(got, want), 1e-13) << l << " " << ta << " " << tb;
      }
  // Real gemm, row-major, checked on one element.
  double A[6] = {1, 2, 3, 4, 5, 6}, B[6] = {1, 0, 0, 1, 1, 1}, C[4] = {0, 0, 0, 0};
  cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, 2, 2, 3, 1.0, A, 3, B, 2, 0.0, C, 2);
  EXPECT_EQ(C[0], 1 + 3);
  EXPECT_EQ(C[1], 2 + 3);
  EXPECT_EQ(C[2], 4 + 6);
}

TEST(Cblas, GemvAndGerBothLayouts) {
  const cd al(0.5, 0.5), be(-0.25, 1);
  for (auto l : layouts)
    for (auto t : transes)
      for (I incx : {1, -2}) {
        const I m = 5, n = 3;
        Mat a(l, m, n);
        const I lx = t == CblasNoTrans ? n : m, ly = t == CblasNoTrans ? m : n;
        auto x = vec<cd>(lx, incx), y = vec<cd>(ly, 1);
        std::vector<cd> want(ly);
        for (I i = 0; i < ly; ++i) {
          cd s = 0;
          for (I j = 0; j < lx; ++j) s += (t == CblasNoTrans ? a(i, j) : t == CblasTrans ? a(j, i) : std::conj(a(j, i))) * x[at(lx, incx, j)];
          want[i] = al * s + be * y[i];
        }
        cblas_zgemv(l, t, m, n, &al, a.v.data(), a.ld, x.data(), incx, &be, y.data(), 1);
        EXPECT_LT(rel(y, want), 1e-13) << l << " " << t << " " << incx;
      }
  for (auto l : layouts)
    for (int conj = 0; conj < 2; ++conj) {
      const I m = 4, n = 3;
      Mat a(l, m, n), a0 = a;
      auto x = vec<cd>(m, 1), y = vec<cd>(n, -1);
      if (conj) cblas_zgerc(l, m, n, &al, x.data(), 1, y.data(), -1, a.v.data(), a.ld);
      else cblas_zgeru(l, m, n, &al, x.data(), 1, y.data(), -1, a.v.data(), a.ld);
      std::vector<cd> got, want;
      for (I i = 0; i < m; ++i)
        for (I j = 0; j < n; ++j) {
          cd yj = y[at(n, -1, j)];
          want.push_back(a0(i, j) + al * x[i] * (conj ? std::conj(yj) : yj));
          got.push_back(a(i, j));
        }
      EXPECT_LT(rel(got, want), 1e-13) << l << " " << conj;
    }
}

TEST(Cblas, HermitianBothLayouts) {
  const cd al(0.3, 0.4), be(0.5, -1);
  const double ar = 0.75;
  const I n = 4;
  for (auto l : layouts)
    for (auto u : uplos) {
      Mat a(l, n, n);
      auto x = vec<cd>(n, 1), y = vec<cd>(n, 2), y0 = y;
      std::vector<cd> want(n);
      for (I i = 0; i < n; ++i) {
        cd s = 0;
        for (I j = 0; j < n; ++j) s += herm(a, u, i, j) * x[j];
        want[i] = al * s + be * y0[at(n, 2, i)];
      }
      cblas_zhemv(l, u, n, &al, a.v.data(), a.ld, x.data(), 1, &be, y.data(), 2);
      std::vector<cd> got(n);
      for (I i = 0; i < n; ++i) got[i] = y[at(n, 2, i)];
      EXPECT_LT(rel(got, want), 1e-13) << "hemv " << l << u;
      // her and her2 update the stored triangle only.
      Mat h(l, n, n), h0 = h;
      cblas_zher(l, u, n, ar, x.data(), 1, h.v.data(), h.ld);
      Mat g(l, n, n), g0 = g;
      auto z = vec<cd>(n, 1);
      cblas_zher2(l, u, n, &al, x.data(), 1, z.data(), 1, g.v.data(), g.ld);
      for (I i = 0; i < n; ++i)
        for (I j = 0; j < n; ++j) {
          bool stored = i == j || ((u == CblasUpper) == (i < j));
          cd w1 = herm(h0, u, i, j) + ar * x[i] * std::conj(x[j]);
          cd w2 = herm(g0, u, i, j) + al * x[i] * std::conj(z[j]) + std::conj(al) * z[i] * std::conj(x[j]);
          if (stored) {
            EXPECT_LT(std::abs(herm(h, u, i, j) - w1), 1e-13) << "her " << l << u << i << j;
            EXPECT_LT(std::abs(herm(g, u, i, j) - w2), 1e-13) << "her2 " << l << u << i << j;
          } else {
            EXPECT_EQ(h(i, j), h0(i, j));
            EXPECT_EQ(g(i, j), g0(i, j));
          }
        }
    }
}

TEST(Cblas, TriangularBothLayouts) {
  const I n = 4;
  for (auto l : layouts)
    for (auto u : uplos)
      for (auto t : transes)
        for (auto d : {CblasNonUnit, CblasUnit}) {
          Mat a(l, n, n);
          for (I i = 0; i < n; ++i) a(i, i) += 3.0;  // well conditioned
          auto tri = [&](I i, I j) -> cd {
            if (i == j) return d == CblasUnit ? cd(1) : a(i, i);
            return ((u == CblasUpper) == (i < j)) ? a(i, j) : cd(0);
          };
          auto opt = [&](I i, I j) { return t == CblasNoTrans ? tri(i, j) : t == CblasTrans ? tri(j, i) : std::conj(tri(j, i)); };
          auto x = vec<cd>(n, -1), x0 = x;
          cblas_ztrmv(l, u, t, d, n, a.v.data(), a.ld, x.data(), -1);
          std::vector<cd> got(n), want(n);
          for (I i = 0; i < n; ++i) {
            for (I j = 0; j < n; ++j) want[i] += opt(i, j) * x0[at(n, -1, j)];
            got[i] = x[at(n, -1, i)];
          }
          EXPECT_LT(rel(got, want), 1e-13) << "trmv " << l << u << t << d;
          cblas_ztrsv(l, u, t, d, n, a.v.data(), a.ld, x.data(), -1);
          for (I i = 0; i < n; ++i) got[i] = x[at(n, -1, i)], want[i] = x0[at(n, -1, i)];
          EXPECT_LT(rel(got, want), 1e-12) << "trsv " << l << u << t << d;
          // trsm on the left with two right-hand sides inverts trmm.
          Mat b(l, n, 2), b0 = b;
          const cd one = 1;
          cblas_ztrmm(l, CblasLeft, u, t, d, n, 2, &one, a.v.data(), a.ld, b.v.data(), b.ld);
          cblas_ztrsm(l, CblasLeft, u, t, d, n, 2, &one, a.v.data(), a.ld, b.v.data(), b.ld);
          std::vector<cd> g2, w2;
          for (I i = 0; i < n; ++i)
            for (I j = 0; j < 2; ++j) g2.push_back(b(i, j)), w2.push_back(b0(i, j));
          EXPECT_LT(rel(g2, w2), 1e-12) << "trsm " << l << u << t << d;
        }
}

TEST(Cblas, RankKAndHemmBothLayouts) {
  const cd al(0.6, 0.1), be(0.2, 0.0);
  const I n = 4, k = 3;
  for (auto l : layouts)
    for (auto u : uplos)
      for (auto t : {CblasNoTrans, CblasConjTrans}) {
        Mat a(l, t == CblasNoTrans ? n : k, t == CblasNoTrans ? k : n);
        Mat b(l, t == CblasNoTrans ? n : k, t == CblasNoTrans ? k : n);
        Mat c(l, n, n), c0 = c;
        auto A = [&](I i, I p) { return t == CblasNoTrans ? a(i, p) : std::conj(a(p, i)); };
        auto B = [&](I i, I p) { return t == CblasNoTrans ? b(i, p) : std::conj(b(p, i)); };
        cblas_zher2k(l, u, t, n, k, &al, a.v.data(), a.ld, b.v.data(), b.ld, be.real(), c.v.data(), c.ld);
        for (I i = 0; i < n; ++i)
          for (I j = 0; j < n; ++j) {
            if (!(i == j || ((u == CblasUpper) == (i < j)))) continue;
            cd s = 0;
            for (I p = 0; p < k; ++p) s += al * A(i, p) * std::conj(B(j, p)) + std::conj(al) * B(i, p) * std::conj(A(j, p));
            EXPECT_LT(std::abs(herm(c, u, i, j) - (s + be.real() * herm(c0, u, i, j))), 1e-13) << "her2k " << l << u << t;
          }
      }
  for (auto l : layouts)
    for (auto s : {CblasLeft, CblasRight})
      for (auto u : uplos) {
        const I m = 3, n = 4, ka = s == CblasLeft ? m : n;
        Mat a(l, ka, ka), b(l, m, n), c(l, m, n), c0 = c;
        cblas_zhemm(l, s, u, m, n, &al, a.v.data(), a.ld, b.v.data(), b.ld, &be, c.v.data(), c.ld);
        std::vector<cd> got, want;
        for (I i = 0; i < m; ++i)
          for (I j = 0; j < n; ++j) {
            cd acc = 0;
            for (I p = 0; p < ka; ++p) acc += s == CblasLeft ? herm(a, u, i, p) * b(p, j) : b(i, p) * herm(a, u, p, j);
            want.push_back(al * acc + be * c0(i, j));
            got.push_back(c(i, j));
          }
        EXPECT_LT(rel(got, want), 1e-13) << "hemm " << l << s << u;
      }
}

TEST(Cblas, Level1ByValue) {
  double x[4] = {1, -7, 3, 7}, y[4] = {2, 2, 2, 2};
  EXPECT_EQ(cblas_idamax(4, x, 1), 1u);  // zero-based, first of the ties
  EXPECT_EQ(cblas_idamin(4, x, 1), 0u);
  EXPECT_EQ(cblas_idamax(0, x, 1), 0u);
  EXPECT_EQ(cblas_ddot(4, x, 1, y, 1), 8.0);
  cblas_daxpy(4, 0.5, x, 1, y, 1);
  EXPECT_EQ(y[1], 2 - 3.5);
  cd zx[2] = {{1, 1}, {2, -1}}, zy[2] = {{0, 1}, {1, 0}}, r;
  cblas_zdotc_sub(2, zx, 1, zy, 1, &r);
  EXPECT_EQ(r, std::conj(zx[0]) * zy[0] + std::conj(zx[1]) * zy[1]);
  cblas_zdotu_sub(2, zx, 1, zy, 1, &r);
  EXPECT_EQ(r, zx[0] * zy[0] + zx[1] * zy[1]);
  cblas_zdscal(2, 2.0, zx, 1);
  EXPECT_EQ(zx[1], cd(4, -2));
  EXPECT_NEAR(cblas_dznrm2(2, zx, 1), std::sqrt(4.0 + 4 + 16 + 4), 1e-15);
  double a = 3, b = 4, c, s;
  cblas_drotg(&a, &b, &c, &s);
  EXPECT_NEAR(a, 5, 1e-15);
}
