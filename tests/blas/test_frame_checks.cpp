// Argument checks of every level-2 and level-3 routine family through the
// exported entries (real and complex double; the other precisions come from
// the same rows): for each argument that can be wrong, a call with only that
// argument wrong reports exactly its position under the routine's
// six-character name and writes nothing; a valid call reports nothing. Also
// the CBLAS positions (layout counted as 1, checked after the flags and
// dimensions).
#include <gtest/gtest.h>
#include <complex>
#include <cstring>
#include <functional>
#include <string>
#include <vector>
#include "nxl_blas.h"
#include "nxl_cblas.h"
#include "service/nxl_serv.h"

using I = nxl_int;
using cd = std::complex<double>;

namespace {
std::string got_name;
I got_info = 0;
int reports = 0;
void capture(const char *name, const nxl_int *info, int len) {
  got_name.assign(name, len > 0 ? size_t(len) : 0);
  got_info = *info;
  ++reports;
}

struct Args {
  char f1 = 'N', f2 = 'N', f3 = 'N', f4 = 'N';
  I m = 3, n = 3, k = 2, kl = 1, ku = 1, lda = 6, ldb = 6, ldc = 6, incx = 1, incy = 1;
};
using Mut = std::function<void(Args &)>;
struct Case {
  std::string name;
  Args valid;
  std::function<void(const Args &)> call;
  std::vector<std::pair<Mut, I>> bad;
};

std::vector<double> dbuf(4 * 400, 0.5);
std::vector<cd> zbuf(4 * 400, cd(0.5, 0.25));
double *da = dbuf.data(), *db = da + 400, *dc = db + 400, *dx = dc + 400;
cd *za = zbuf.data(), *zb = za + 400, *zc = zb + 400, *zx = zc + 400;
const double d1 = 1;
const cd z1 = 1;

Args flags(char f1, char f2 = 'N', char f3 = 'N', char f4 = 'N') {
  Args a;
  a.f1 = f1, a.f2 = f2, a.f3 = f3, a.f4 = f4;
  return a;
}
#define M(expr) [](Args &g) { expr; }
#define F1 {M(g.f1 = 'X'), 1}
#define F2 {M(g.f2 = 'X'), 2}
#define F3 {M(g.f3 = 'X'), 3}
#define F4 {M(g.f4 = 'X'), 4}

// The families, each for d (real) and z (complex).
std::vector<Case> cases() {
  std::vector<Case> v;
  // Level 2.
  v.push_back({"DGEMV", flags('T'), [](const Args &g) { dgemv_(&g.f1, &g.m, &g.n, &d1, da, &g.lda, dx, &g.incx, &d1, dc, &g.incy); },
               {F1, {M(g.m = -1), 2}, {M(g.n = -1), 3}, {M(g.lda = 2), 6}, {M(g.incx = 0), 8}, {M(g.incy = 0), 11}}});
  v.push_back({"ZGEMV", flags('C'), [](const Args &g) { zgemv_(&g.f1, &g.m, &g.n, &z1, za, &g.lda, zx, &g.incx, &z1, zc, &g.incy); },
               {F1, {M(g.m = -1), 2}, {M(g.n = -1), 3}, {M(g.lda = 2), 6}, {M(g.incx = 0), 8}, {M(g.incy = 0), 11}}});
  for (int z = 0; z < 2; ++z) {
    auto gb = z ? std::function<void(const Args &)>([](const Args &g) { zgbmv_(&g.f1, &g.m, &g.n, &g.kl, &g.ku, &z1, za, &g.lda, zx, &g.incx, &z1, zc, &g.incy); })
                : [](const Args &g) { dgbmv_(&g.f1, &g.m, &g.n, &g.kl, &g.ku, &d1, da, &g.lda, dx, &g.incx, &d1, dc, &g.incy); };
    v.push_back({z ? "ZGBMV" : "DGBMV", flags('N'), gb,
                 {F1, {M(g.m = -1), 2}, {M(g.n = -1), 3}, {M(g.kl = -1), 4}, {M(g.ku = -1), 5}, {M(g.lda = 2), 8}, {M(g.incx = 0), 10}, {M(g.incy = 0), 13}}});
  }
  v.push_back({"DSYMV", flags('U'), [](const Args &g) { dsymv_(&g.f1, &g.n, &d1, da, &g.lda, dx, &g.incx, &d1, dc, &g.incy); },
               {F1, {M(g.n = -1), 2}, {M(g.lda = 2), 5}, {M(g.incx = 0), 7}, {M(g.incy = 0), 10}}});
  v.push_back({"ZHEMV", flags('L'), [](const Args &g) { zhemv_(&g.f1, &g.n, &z1, za, &g.lda, zx, &g.incx, &z1, zc, &g.incy); },
               {F1, {M(g.n = -1), 2}, {M(g.lda = 2), 5}, {M(g.incx = 0), 7}, {M(g.incy = 0), 10}}});
  v.push_back({"DSBMV", flags('U'), [](const Args &g) { dsbmv_(&g.f1, &g.n, &g.k, &d1, da, &g.lda, dx, &g.incx, &d1, dc, &g.incy); },
               {F1, {M(g.n = -1), 2}, {M(g.k = -1), 3}, {M(g.lda = 2), 6}, {M(g.incx = 0), 8}, {M(g.incy = 0), 11}}});
  v.push_back({"ZHBMV", flags('U'), [](const Args &g) { zhbmv_(&g.f1, &g.n, &g.k, &z1, za, &g.lda, zx, &g.incx, &z1, zc, &g.incy); },
               {F1, {M(g.n = -1), 2}, {M(g.k = -1), 3}, {M(g.lda = 2), 6}, {M(g.incx = 0), 8}, {M(g.incy = 0), 11}}});
  v.push_back({"DSPMV", flags('U'), [](const Args &g) { dspmv_(&g.f1, &g.n, &d1, da, dx, &g.incx, &d1, dc, &g.incy); },
               {F1, {M(g.n = -1), 2}, {M(g.incx = 0), 6}, {M(g.incy = 0), 9}}});
  v.push_back({"ZHPMV", flags('U'), [](const Args &g) { zhpmv_(&g.f1, &g.n, &z1, za, zx, &g.incx, &z1, zc, &g.incy); },
               {F1, {M(g.n = -1), 2}, {M(g.incx = 0), 6}, {M(g.incy = 0), 9}}});
  // Triangular: full, band, packed; multiply and solve.
  v.push_back({"DTRMV", flags('U', 'T', 'U'), [](const Args &g) { dtrmv_(&g.f1, &g.f2, &g.f3, &g.n, da, &g.lda, dx, &g.incx); },
               {F1, F2, F3, {M(g.n = -1), 4}, {M(g.lda = 2), 6}, {M(g.incx = 0), 8}}});
  v.push_back({"ZTRSV", flags('L', 'C', 'N'), [](const Args &g) { ztrsv_(&g.f1, &g.f2, &g.f3, &g.n, za, &g.lda, zx, &g.incx); },
               {F1, F2, F3, {M(g.n = -1), 4}, {M(g.lda = 2), 6}, {M(g.incx = 0), 8}}});
  v.push_back({"DTBSV", flags('U', 'N', 'N'), [](const Args &g) { dtbsv_(&g.f1, &g.f2, &g.f3, &g.n, &g.k, da, &g.lda, dx, &g.incx); },
               {F1, F2, F3, {M(g.n = -1), 4}, {M(g.k = -1), 5}, {M(g.lda = 2), 7}, {M(g.incx = 0), 9}}});
  v.push_back({"ZTBMV", flags('L', 'T', 'U'), [](const Args &g) { ztbmv_(&g.f1, &g.f2, &g.f3, &g.n, &g.k, za, &g.lda, zx, &g.incx); },
               {F1, F2, F3, {M(g.n = -1), 4}, {M(g.k = -1), 5}, {M(g.lda = 2), 7}, {M(g.incx = 0), 9}}});
  v.push_back({"DTPMV", flags('U', 'N', 'N'), [](const Args &g) { dtpmv_(&g.f1, &g.f2, &g.f3, &g.n, da, dx, &g.incx); },
               {F1, F2, F3, {M(g.n = -1), 4}, {M(g.incx = 0), 7}}});
  v.push_back({"ZTPSV", flags('U', 'C', 'N'), [](const Args &g) { ztpsv_(&g.f1, &g.f2, &g.f3, &g.n, za, zx, &g.incx); },
               {F1, F2, F3, {M(g.n = -1), 4}, {M(g.incx = 0), 7}}});
  // Rank-1 and rank-2 updates.
  v.push_back({"DGER", Args(), [](const Args &g) { dger_(&g.m, &g.n, &d1, dx, &g.incx, db, &g.incy, dc, &g.lda); },
               {{M(g.m = -1), 1}, {M(g.n = -1), 2}, {M(g.incx = 0), 5}, {M(g.incy = 0), 7}, {M(g.lda = 2), 9}}});
  v.push_back({"ZGERC", Args(), [](const Args &g) { zgerc_(&g.m, &g.n, &z1, zx, &g.incx, zb, &g.incy, zc, &g.lda); },
               {{M(g.m = -1), 1}, {M(g.n = -1), 2}, {M(g.incx = 0), 5}, {M(g.incy = 0), 7}, {M(g.lda = 2), 9}}});
  v.push_back({"ZGERU", Args(), [](const Args &g) { zgeru_(&g.m, &g.n, &z1, zx, &g.incx, zb, &g.incy, zc, &g.lda); },
               {{M(g.m = -1), 1}, {M(g.n = -1), 2}, {M(g.incx = 0), 5}, {M(g.incy = 0), 7}, {M(g.lda = 2), 9}}});
  v.push_back({"DSYR", flags('U'), [](const Args &g) { dsyr_(&g.f1, &g.n, &d1, dx, &g.incx, dc, &g.lda); },
               {F1, {M(g.n = -1), 2}, {M(g.incx = 0), 5}, {M(g.lda = 2), 7}}});
  v.push_back({"ZHER", flags('L'), [](const Args &g) { zher_(&g.f1, &g.n, &d1, zx, &g.incx, zc, &g.lda); },
               {F1, {M(g.n = -1), 2}, {M(g.incx = 0), 5}, {M(g.lda = 2), 7}}});
  v.push_back({"DSPR", flags('U'), [](const Args &g) { dspr_(&g.f1, &g.n, &d1, dx, &g.incx, dc); },
               {F1, {M(g.n = -1), 2}, {M(g.incx = 0), 5}}});
  v.push_back({"ZHPR", flags('U'), [](const Args &g) { zhpr_(&g.f1, &g.n, &d1, zx, &g.incx, zc); },
               {F1, {M(g.n = -1), 2}, {M(g.incx = 0), 5}}});
  v.push_back({"DSYR2", flags('U'), [](const Args &g) { dsyr2_(&g.f1, &g.n, &d1, dx, &g.incx, db, &g.incy, dc, &g.lda); },
               {F1, {M(g.n = -1), 2}, {M(g.incx = 0), 5}, {M(g.incy = 0), 7}, {M(g.lda = 2), 9}}});
  v.push_back({"ZHER2", flags('L'), [](const Args &g) { zher2_(&g.f1, &g.n, &z1, zx, &g.incx, zb, &g.incy, zc, &g.lda); },
               {F1, {M(g.n = -1), 2}, {M(g.incx = 0), 5}, {M(g.incy = 0), 7}, {M(g.lda = 2), 9}}});
  v.push_back({"DSPR2", flags('U'), [](const Args &g) { dspr2_(&g.f1, &g.n, &d1, dx, &g.incx, db, &g.incy, dc); },
               {F1, {M(g.n = -1), 2}, {M(g.incx = 0), 5}, {M(g.incy = 0), 7}}});
  v.push_back({"ZHPR2", flags('U'), [](const Args &g) { zhpr2_(&g.f1, &g.n, &z1, zx, &g.incx, zb, &g.incy, zc); },
               {F1, {M(g.n = -1), 2}, {M(g.incx = 0), 5}, {M(g.incy = 0), 7}}});
  // Level 3.
  v.push_back({"DGEMM", flags('N', 'T'), [](const Args &g) { dgemm_(&g.f1, &g.f2, &g.m, &g.n, &g.k, &d1, da, &g.lda, db, &g.ldb, &d1, dc, &g.ldc); },
               {F1, F2, {M(g.m = -1), 3}, {M(g.n = -1), 4}, {M(g.k = -1), 5}, {M(g.lda = 2), 8}, {M(g.ldb = 2), 10}, {M(g.ldc = 2), 13},
                {M(g.f1 = 'x'; g.m = -1), 1}, {M(g.m = 0; g.lda = 0), 8}}});
  v.push_back({"ZGEMM", flags('C', 'N'), [](const Args &g) { zgemm_(&g.f1, &g.f2, &g.m, &g.n, &g.k, &z1, za, &g.lda, zb, &g.ldb, &z1, zc, &g.ldc); },
               {F1, F2, {M(g.m = -1), 3}, {M(g.n = -1), 4}, {M(g.k = -1), 5}, {M(g.lda = 1), 8}, {M(g.ldb = 1), 10}, {M(g.ldc = 2), 13}}});
  v.push_back({"DSYMM", flags('R', 'L'), [](const Args &g) { dsymm_(&g.f1, &g.f2, &g.m, &g.n, &d1, da, &g.lda, db, &g.ldb, &d1, dc, &g.ldc); },
               {F1, F2, {M(g.m = -1), 3}, {M(g.n = -1), 4}, {M(g.lda = 2), 7}, {M(g.ldb = 2), 9}, {M(g.ldc = 2), 12}}});
  v.push_back({"ZHEMM", flags('L', 'U'), [](const Args &g) { zhemm_(&g.f1, &g.f2, &g.m, &g.n, &z1, za, &g.lda, zb, &g.ldb, &z1, zc, &g.ldc); },
               {F1, F2, {M(g.m = -1), 3}, {M(g.n = -1), 4}, {M(g.lda = 2), 7}, {M(g.ldb = 2), 9}, {M(g.ldc = 2), 12}}});
  v.push_back({"DSYRK", flags('U', 'C'), [](const Args &g) { dsyrk_(&g.f1, &g.f2, &g.n, &g.k, &d1, da, &g.lda, &d1, dc, &g.ldc); },
               {F1, F2, {M(g.n = -1), 3}, {M(g.k = -1), 4}, {M(g.lda = 1), 7}, {M(g.ldc = 2), 10}}});
  v.push_back({"ZSYRK", flags('L', 'T'), [](const Args &g) { zsyrk_(&g.f1, &g.f2, &g.n, &g.k, &z1, za, &g.lda, &z1, zc, &g.ldc); },
               {F1, F2, {M(g.f2 = 'C'), 2}, {M(g.n = -1), 3}, {M(g.k = -1), 4}, {M(g.lda = 1), 7}, {M(g.ldc = 2), 10}}});
  v.push_back({"ZHERK", flags('U', 'C'), [](const Args &g) { zherk_(&g.f1, &g.f2, &g.n, &g.k, &d1, za, &g.lda, &d1, zc, &g.ldc); },
               {F1, F2, {M(g.f2 = 'T'), 2}, {M(g.n = -1), 3}, {M(g.k = -1), 4}, {M(g.lda = 1), 7}, {M(g.ldc = 2), 10}}});
  v.push_back({"DSYR2K", flags('U', 'N'), [](const Args &g) { dsyr2k_(&g.f1, &g.f2, &g.n, &g.k, &d1, da, &g.lda, db, &g.ldb, &d1, dc, &g.ldc); },
               {F1, F2, {M(g.n = -1), 3}, {M(g.k = -1), 4}, {M(g.lda = 2), 7}, {M(g.ldb = 2), 9}, {M(g.ldc = 2), 12}}});
  v.push_back({"ZSYR2K", flags('U', 'N'), [](const Args &g) { zsyr2k_(&g.f1, &g.f2, &g.n, &g.k, &z1, za, &g.lda, zb, &g.ldb, &z1, zc, &g.ldc); },
               {F1, F2, {M(g.f2 = 'C'), 2}, {M(g.n = -1), 3}, {M(g.k = -1), 4}, {M(g.lda = 2), 7}, {M(g.ldb = 2), 9}, {M(g.ldc = 2), 12}}});
  v.push_back({"ZHER2K", flags('L', 'N'), [](const Args &g) { zher2k_(&g.f1, &g.f2, &g.n, &g.k, &z1, za, &g.lda, zb, &g.ldb, &d1, zc, &g.ldc); },
               {F1, F2, {M(g.f2 = 'T'), 2}, {M(g.n = -1), 3}, {M(g.k = -1), 4}, {M(g.lda = 2), 7}, {M(g.ldb = 2), 9}, {M(g.ldc = 2), 12}}});
  v.push_back({"DTRSM", flags('L', 'U', 'N', 'U'), [](const Args &g) { dtrsm_(&g.f1, &g.f2, &g.f3, &g.f4, &g.m, &g.n, &d1, da, &g.lda, db, &g.ldb); },
               {F1, F2, F3, F4, {M(g.m = -1), 5}, {M(g.n = -1), 6}, {M(g.lda = 2), 9}, {M(g.ldb = 2), 11}}});
  v.push_back({"ZTRMM", flags('R', 'L', 'C', 'N'), [](const Args &g) { ztrmm_(&g.f1, &g.f2, &g.f3, &g.f4, &g.m, &g.n, &z1, za, &g.lda, zb, &g.ldb); },
               {F1, F2, F3, F4, {M(g.m = -1), 5}, {M(g.n = -1), 6}, {M(g.lda = 2), 9}, {M(g.ldb = 2), 11}}});
  return v;
}
}  // namespace

class FrameChecks : public ::testing::Test {
 protected:
  void SetUp() override { prev = nxl_serv_set_xerbla(capture); }
  void TearDown() override { nxl_serv_set_xerbla(prev == nxl_serv_default_xerbla ? nullptr : prev); }
  nxl_xerbla_fn prev = nullptr;
};

TEST_F(FrameChecks, EveryWrongArgumentReportsItsPosition) {
  for (auto &c : cases()) {
    std::string padded = c.name;
    padded.resize(6, ' ');
    reports = 0;
    c.call(c.valid);
    EXPECT_EQ(reports, 0) << c.name << " valid call reported " << got_info;
    for (auto &[mutate, pos] : c.bad) {
      Args g = c.valid;
      mutate(g);
      reports = 0;
      const std::vector<double> d0 = dbuf;
      const std::vector<cd> z0 = zbuf;
      c.call(g);
      EXPECT_EQ(reports, 1) << c.name << " position " << pos;
      EXPECT_EQ(got_name, padded) << c.name;
      EXPECT_EQ(got_info, pos) << c.name;
      EXPECT_TRUE(d0 == dbuf && z0 == zbuf) << c.name << " wrote its outputs on a failed check";
    }
  }
}

TEST_F(FrameChecks, CblasPositionsCountTheLayout) {
  auto dgemm = [](int layout, int ta, I m, I k, I lda) {
    reports = 0;
    cblas_dgemm(CBLAS_LAYOUT(layout), CBLAS_TRANSPOSE(ta), CblasNoTrans, m, 3, k, 1.0, da, lda, db, 6, 0.0, dc, 6);
    return reports ? got_info : 0;
  };
  EXPECT_EQ(dgemm(100, CblasNoTrans, -1, 2, 6), 4);  // dimensions before the layout
  EXPECT_EQ(dgemm(100, CblasNoTrans, 3, 2, 6), 1);
  EXPECT_EQ(got_name, "cblas_dgemm");
  EXPECT_EQ(dgemm(CblasRowMajor, CblasNoTrans, 3, 5, 4), 9);  // row-major lda >= k
  EXPECT_EQ(dgemm(CblasColMajor, CblasNoTrans, 3, 5, 4), 0);
  EXPECT_EQ(dgemm(CblasColMajor, 110, 3, 2, 6), 2);
  reports = 0;
  cblas_zher2k(CblasColMajor, CblasUpper, CblasTrans, 3, 2, &z1, za, 6, zb, 6, 1.0, zc, 6);
  EXPECT_EQ(got_info, 3);
  reports = 0;
  cblas_dtrsm(CblasRowMajor, CblasLeft, CblasUpper, CblasNoTrans, CblasUnit, 3, 4, 1.0, da, 3, db, 3);
  EXPECT_EQ(got_info, 12);  // row-major ldb >= n
  reports = 0;
  cblas_zgemv(CblasRowMajor, CblasConjTrans, 3, 4, &z1, za, 3, zx, 1, &z1, zc, 1);
  EXPECT_EQ(got_info, 7);
  EXPECT_EQ(got_name, "cblas_zgemv");
  reports = 0;
  cblas_dger(CblasColMajor, 3, 4, 1.0, dx, 0, db, 1, dc, 3);
  EXPECT_EQ(got_info, 6);
}
