// Complex gemm on the paths with a native complex micro-kernel (registered
// again under NXL_ENABLE_INSTRUCTIONS=AVX2): every row and column remainder
// of its tiles, depths and row counts around its cache blocks, all nine
// transpose/conjugate pairs, the scalar modes, padding that must stay
// untouched, results independent of the thread count and of where an element
// falls in a tile.
#include <gtest/gtest.h>

#include <complex>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "nxl_blas.h"
#include "nxl_service.h"
#include "tests/blas/blas_test_util.h"

namespace {

using idx = nxl_int;
using bt::rnd;

// Called by name, not through a pointer: the header declares the complex
// arguments as void pointers, the library defines them with its own types.
template <class T> void gemm(char ta, char tb, idx m, idx n, idx k, T al, const T *a, idx lda, const T *b,
                             idx ldb, T be, T *c, idx ldc) {
  const char sa[2] = {ta, 0}, sb[2] = {tb, 0};
  if constexpr (std::is_same_v<T, std::complex<float>>)
    cgemm_(sa, sb, &m, &n, &k, &al, a, &lda, b, &ldb, &be, c, &ldc);
  else
    zgemm_(sa, sb, &m, &n, &k, &al, a, &lda, b, &ldb, &be, c, &ldc);
}

template <class T> bool same_bits(const T &a, const T &b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }

// Column-major operand with `pad` sentinel rows below each column.
template <class T> struct Mat {
  idx rows, cols, ld;
  std::vector<T> v;
  Mat(idx r, idx c, idx pad) : rows(r), cols(c), ld(std::max<idx>(1, r + pad)) {
    v.assign(size_t(ld * std::max<idx>(c, 1)), T(-7.5e9f, 3.25e9f));
    for (idx j = 0; j < c; ++j)
      for (idx i = 0; i < r; ++i) v[size_t(i + j * ld)] = rnd<T>();
  }
  T &operator()(idx i, idx j) { return v[size_t(i + j * ld)]; }
};

template <class T> bt::wide_t<T> op(Mat<T> &X, char t, idx i, idx p) {
  const auto v = bt::W(t == 'N' ? X(i, p) : X(p, i));
  return t == 'C' ? std::conj(v) : v;
}

// alpha/beta modes: 0 general, 1 beta 0 (C starts as NaN), 2 beta 1,
// 3 alpha 1, 4 alpha 0 (A and B hold NaN: not read).
template <class T> void run_case(char ta, char tb, idx m, idx n, idx k, int mode, idx pad) {
  T al = rnd<T>(), be = rnd<T>();
  if (mode == 1) be = T(0);
  if (mode == 2) be = T(1);
  if (mode == 3) al = T(1);
  if (mode == 4) al = T(0);
  Mat<T> A(ta == 'N' ? m : k, ta == 'N' ? k : m, pad), B(tb == 'N' ? k : n, tb == 'N' ? n : k, pad + 1),
      C(m, n, pad + 2);
  const T nan(std::numeric_limits<bt::real_t<T>>::quiet_NaN(), 0);
  if (mode == 4) {
    for (auto &x : A.v) x = nan;
    for (auto &x : B.v) x = nan;
  }
  if (mode == 1)
    for (idx j = 0; j < n; ++j)
      for (idx i = 0; i < m; ++i) C(i, j) = nan;
  const std::vector<T> before = C.v;
  gemm<T>(ta, tb, m, n, k, al, A.v.data(), A.ld, B.v.data(), B.ld, be, C.v.data(), C.ld);
  const std::string what = std::string(1, ta) + tb + " m=" + std::to_string(m) + " n=" + std::to_string(n) +
                           " k=" + std::to_string(k) + " mode=" + std::to_string(mode);
  int bad = 0;
  for (idx j = 0; j < n; ++j)
    for (idx i = 0; i < C.ld; ++i) {
      const T got = C.v[size_t(i + j * C.ld)];
      if (i >= m) {
        if (!same_bits(got, before[size_t(i + j * C.ld)]) && bad++ < 3)
          ADD_FAILURE() << what << ": padding at (" << i << "," << j << ") changed";
        continue;
      }
      bt::wide_t<T> s = 0;
      long double mag = 0;
      if (mode != 4)
        for (idx p = 0; p < k; ++p) {
          const auto t = op(A, ta, i, p) * op(B, tb, p, j);
          s += t;
          mag += std::abs(t);
        }
      const auto cv = mode == 1 ? bt::wide_t<T>(0) : bt::W(be) * bt::W(before[size_t(i + j * C.ld)]);
      const auto want = bt::W(al) * s + cv;
      const long double tol = 8 * bt::eps<T>() * (std::abs(bt::W(al)) * mag * (k + 2) + std::abs(cv)) + 1e-35L;
      if (!(std::abs(bt::W(got) - want) <= tol) && bad++ < 3)
        ADD_FAILURE() << what << ": C(" << i << "," << j << ") = " << got;
    }
  // The columns past n are not written either.
  for (size_t q = size_t(n * C.ld); q < C.v.size(); ++q)
    if (!same_bits(C.v[q], before[q]) && bad++ < 3) ADD_FAILURE() << what << ": storage past C changed";
}

bool forced_avx2() {
  const char *cap = std::getenv("NXL_ENABLE_INSTRUCTIONS");
  return cap && std::string(cap) == "AVX2";
}

template <class T> class GemmNative : public ::testing::Test {};
using Complex = ::testing::Types<std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(GemmNative, Complex);

// Above the small-product sizes, so the blocked engine takes every case.
TYPED_TEST(GemmNative, EveryTileRemainderAndOperandForm) {
  using T = TypeParam;
  const char tr[] = {'N', 'T', 'C'};
  for (char ta : tr)
    for (char tb : tr) {
      // Row remainders 0..7 (tiles of 4 or 8 rows), column remainders 0..2.
      for (idx r = 0; r < 8; ++r) run_case<T>(ta, tb, 65 + r, 66 + r % 3, 19 + r, int(r % 5), r % 3);
      for (idx c = 0; c < 3; ++c) run_case<T>(ta, tb, 7, 67 + c, 70, int((c + 2) % 5), 1);
      run_case<T>(ta, tb, 1, 70, 3, 0, 0);
      run_case<T>(ta, tb, 70, 2, 1, 1, 2);
    }
}

TYPED_TEST(GemmNative, DepthsAndRowsAroundTheCacheBlocks) {
  using T = TypeParam;
  for (idx k : {255, 256, 257, 511, 513})
    for (char ta : {'N', 'C'}) run_case<T>(ta, 'T', 21, 17, k, k % 4, 1);
  for (idx m : {47, 48, 49, 95, 96, 97, 193}) run_case<T>('T', 'N', m, 70, 40, int(m % 3), 2);
  run_case<T>('N', 'C', 101, 4085, 3, 2, 0);  // past a column block
}

// The same product cut into pieces at odd rows and columns: each piece's
// elements must be bit-identical to the whole product's, whichever tile and
// block they fall in there.
TYPED_TEST(GemmNative, ElementsDoNotDependOnTheirPlaceInATile) {
  using T = TypeParam;
  // The 1m engine's products still depend on the tile position when the
  // compiler vectorizes its packing or stores differently (low optimisation).
  if (!forced_avx2()) GTEST_SKIP() << "cuts at any row and column hold on the native kernels only";
  const idx m = 150, n = 77, k = 300;
  for (const char *t : {"NN", "TC", "CT"}) {
    Mat<T> A(t[0] == 'N' ? m : k, t[0] == 'N' ? k : m, 1), B(t[1] == 'N' ? k : n, t[1] == 'N' ? n : k, 0);
    Mat<T> C(m, n, 0);
    const T al = rnd<T>(), be = rnd<T>();
    Mat<T> full = C;
    gemm<T>(t[0], t[1], m, n, k, al, A.v.data(), A.ld, B.v.data(), B.ld, be, full.v.data(), full.ld);
    for (idx r0 : {idx(1), idx(5), idx(51)})
      for (idx c0 : {idx(1), idx(2), idx(38)}) {
        Mat<T> part = C;
        const T *a = t[0] == 'N' ? &A(r0, 0) : &A(0, r0);
        const T *b = t[1] == 'N' ? &B(0, c0) : &B(c0, 0);
        gemm<T>(t[0], t[1], m - r0, n - c0, k, al, a, A.ld, b, B.ld, be, &part(r0, c0), part.ld);
        for (idx j = c0; j < n; ++j)
          for (idx i = r0; i < m; ++i)
            if (!same_bits(part(i, j), full(i, j))) {
              ADD_FAILURE() << t << " piece at " << r0 << "," << c0 << " differs at " << i << "," << j;
              i = m, j = n;
            }
      }
  }
}

TYPED_TEST(GemmNative, OneToFourThreadsGiveTheSameBits) {
  using T = TypeParam;
  const nxl_int saved = nxl_get_max_threads();
  for (const char *t : {"NN", "CN", "TC"}) {
    const idx m = 269, n = 211, k = 259;
    Mat<T> A(t[0] == 'N' ? m : k, t[0] == 'N' ? k : m, 1), B(t[1] == 'N' ? k : n, t[1] == 'N' ? n : k, 1);
    Mat<T> C0(m, n, 3);
    const T al = rnd<T>(), be = rnd<T>();
    std::vector<T> first;
    for (nxl_int th = 1; th <= 4; ++th) {
      nxl_set_num_threads(&th);
      Mat<T> C = C0;
      gemm<T>(t[0], t[1], m, n, k, al, A.v.data(), A.ld, B.v.data(), B.ld, be, C.v.data(), C.ld);
      if (th == 1) {
        first = C.v;
        continue;
      }
      for (size_t q = 0; q < first.size(); ++q)
        if (!same_bits(first[q], C.v[q])) {
          ADD_FAILURE() << t << ": " << th << " threads differ at storage index " << q;
          break;
        }
    }
  }
  nxl_set_num_threads(&saved);
}

// The forced path is the one asked for (so the cases above ran on it).
TEST(GemmNativePath, ForcedPathIsTaken) {
  if (!forced_avx2()) GTEST_SKIP() << "no forced path";
  EXPECT_EQ(nxl_get_cpu_level(), 5);
}

}  // namespace
