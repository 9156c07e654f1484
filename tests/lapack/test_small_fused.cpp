// LU of orders 17..64 in the code path's kernels: the progress reports fall
// on the recursion's panel boundaries (from the tuning oracle on this code
// path), a stop at any report gives -1002, and the pivots are those of the
// plain column algorithm with the same tie rule.
#include <gtest/gtest.h>
#include <cmath>
#include <complex>
#include <vector>
#include "lapack/common.h"
#include "lapack/lu/getrf.h"
#include "service/nxl_serv.h"
#include "tier_util.h"
#include "util.h"

using lt::idx;
namespace lp = nxl::lapack;

namespace {
template <class T> class FusedLu : public ::testing::Test {};
using Types = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(FusedLu, Types);

// The column ends of the leaves of a recursion that splits a panel of mm x
// nn at column `off` into panels of the oracle's width until that width
// covers the panel.
template <class T> void panel_ends(idx mm, idx nn, idx off, std::vector<long long> &out) {
  const idx mn = std::min(mm, nn);
  const idx nb = lp::ilaenv_t<T>(1, "GETRF", "S", mm, nn, -1, -1);
  if (nb < 2 || nb >= mn) {
    out.push_back(off + nn);
    return;
  }
  for (idx j = 0; j < mn; j += nb) panel_ends<T>(mm - j, std::min(mn - j, nb), off + j, out);
}

// Unblocked right-looking LU in the precision of T: the pivot is the first
// row of largest |re| + |im|.
template <class T> void column_lu(idx m, idx n, std::vector<T> &a, idx lda, std::vector<idx> &ipiv) {
  using R = lt::real_t<T>;
  auto abs1 = [](T x) { return std::abs(std::real(x)) + std::abs(std::imag(x)); };
  for (idx j = 0; j < std::min(m, n); ++j) {
    idx p = j;
    R best = abs1(a[j + j * lda]);
    for (idx i = j + 1; i < m; ++i)
      if (abs1(a[i + j * lda]) > best) {
        best = abs1(a[i + j * lda]);
        p = i;
      }
    ipiv[static_cast<size_t>(j)] = p + 1;
    for (idx c = 0; c < n; ++c) std::swap(a[j + c * lda], a[p + c * lda]);
    const T piv = a[j + j * lda];
    if (piv == T(0)) continue;
    for (idx i = j + 1; i < m; ++i) a[i + j * lda] /= piv;
    for (idx c = j + 1; c < n; ++c)
      for (idx i = j + 1; i < m; ++i) a[i + c * lda] -= a[i + j * lda] * a[j + c * lda];
  }
}
}  // namespace

// Every shape up to 64 rows and columns past the small kernel's limit: the
// steps reported are the recursion's column ends, in order, the last one n.
TYPED_TEST(FusedLu, ProgressStepsAreThePanelEnds) {
  using T = TypeParam;
  for (idx n = 17; n <= 64; ++n)
    for (idx m : {n, n - 5, idx(64), idx(20)}) {
      if (m < 1) continue;
      auto a0 = lt::random_matrix<T>(m, n, m, static_cast<unsigned>(m * 100 + n));
      auto a = a0;
      std::vector<idx> ipiv(static_cast<size_t>(std::min(m, n)));
      idx info = -9;
      lt::HeldBlocks scope;
      lp::getrf<T>(&m, &n, a.data(), &m, ipiv.data(), &info);
      ASSERT_EQ(info, 0) << m << "x" << n;
      std::vector<long long> want;
      panel_ends<T>(m, n, 0, want);
      EXPECT_EQ(scope.steps, want) << m << "x" << n;
      EXPECT_LT(lt::lu_residual(m, n, a0.data(), m, a.data(), ipiv.data()), 30.0) << m << "x" << n;
    }
}

// A stop at each report in turn ends the call there with -1002; a zero
// column in a later panel still gives its info when nothing stops.
TYPED_TEST(FusedLu, StopAtEveryReport) {
  using T = TypeParam;
  for (idx n : {17, 40, 49, 64}) {
    std::vector<long long> want;
    panel_ends<T>(n, n, 0, want);
    for (int at = 0; at < static_cast<int>(want.size()); ++at) {
      auto a = lt::random_matrix<T>(n, n, n, static_cast<unsigned>(n + at));
      std::vector<idx> ipiv(static_cast<size_t>(n));
      idx info = 0;
      lt::HeldBlocks scope;
      scope.stop_after = at;
      lp::getrf<T>(&n, &n, a.data(), &n, ipiv.data(), &info);
      EXPECT_EQ(info, -1002) << n << " at " << at;
      EXPECT_EQ(scope.steps.size(), static_cast<size_t>(at + 1)) << n;
    }
    auto a0 = lt::random_matrix<T>(n, n, n, static_cast<unsigned>(n));
    const idx k = n - 3;
    for (idx i = 0; i < n; ++i) a0[i + k * n] = T(0);
    auto a = a0;
    std::vector<idx> ipiv(static_cast<size_t>(n));
    idx info = 0;
    lp::getrf<T>(&n, &n, a.data(), &n, ipiv.data(), &info);
    EXPECT_EQ(info, k + 1) << n;
    EXPECT_LT(lt::lu_residual(n, n, a0.data(), n, a.data(), ipiv.data()), 30.0) << n;
  }
}

// The pivots of every order and shape up to 70 are the column algorithm's,
// and so (to rounding) are the factors. In double precision, where no two
// candidates of random data come within rounding of each other.
TYPED_TEST(FusedLu, PivotsOfTheColumnAlgorithm) {
  using T = TypeParam;
  if constexpr (std::is_same_v<lt::real_t<T>, double>) {
    for (idx n = 1; n <= 70; ++n)
      for (idx dm : {0, 4, -4}) {
        const idx m = n + dm;
        if (m < 1) continue;
        const idx lda = m + 2;
        auto a = lt::random_matrix<T>(m, n, lda, static_cast<unsigned>(n * 13 + dm + 5));
        auto ref = a;
        std::vector<idx> ipiv(static_cast<size_t>(std::min(m, n))), want(ipiv.size());
        idx info = -9;
        lp::getrf<T>(&m, &n, a.data(), &lda, ipiv.data(), &info);
        ASSERT_EQ(info, 0);
        column_lu(m, n, ref, lda, want);
        ASSERT_EQ(ipiv, want) << m << "x" << n;
        double worst = 0;
        for (idx j = 0; j < n; ++j)
          for (idx i = 0; i < m; ++i) worst = std::max(worst, lt::mag(a[i + j * lda] - ref[i + j * lda]));
        EXPECT_LT(worst, 1e-10) << m << "x" << n;
      }
  }
}
