// The call frame: argument checkers and their positions, the exported
// entries, the verbose line, and the tuning oracle's rows.
#include <gtest/gtest.h>
#include <string>
#include "lapack/common.h"
#include "lapack/interface/errchk.h"
#include "service/nxl_serv.h"

using lt_idx = nxl_int;

extern "C" void DGETRF(const nxl_int *, const nxl_int *, double *, const nxl_int *, nxl_int *, nxl_int *);
extern "C" void DPOTRF(const char *, const nxl_int *, double *, const nxl_int *, nxl_int *);
extern "C" void dgesv_(const nxl_int *, const nxl_int *, double *, const nxl_int *, nxl_int *, double *,
                       const nxl_int *, nxl_int *);
extern "C" nxl_int ilaenv_(const nxl_int *, const char *, const char *, const nxl_int *, const nxl_int *,
                           const nxl_int *, const nxl_int *, int, int);

namespace {
std::string g_name;
nxl_int g_pos;
int g_calls;
void handler(const char *n, const nxl_int *info, int len) {
  g_name.assign(n, static_cast<size_t>(len));
  g_pos = *info;
  ++g_calls;
}
struct Capture {
  nxl_xerbla_fn old;
  Capture() : old(nxl_serv_set_xerbla(handler)) { g_calls = 0; g_pos = 0; g_name.clear(); }
  ~Capture() { nxl_serv_set_xerbla(old); }
};
nxl_int ilaenv(nxl_int ispec, const char *name, const char *opts, nxl_int n1, nxl_int n2, nxl_int n3, nxl_int n4) {
  return ilaenv_(&ispec, name, opts, &n1, &n2, &n3, &n4, 6, 1);
}
}  // namespace

TEST(Frame, GetrfChecksInOrder) {
  Capture c;
  double a[25] = {};
  nxl_int ipiv[5], info = 0;
  nxl_int m = -1, n = 2, lda = 0;
  DGETRF(&m, &n, a, &lda, ipiv, &info);
  EXPECT_EQ(info, -1);
  EXPECT_EQ(g_pos, 1);
  EXPECT_EQ(g_name, "DGETRF");
  EXPECT_EQ(g_calls, 1);
  m = 3; n = -2; lda = 3;
  DGETRF(&m, &n, a, &lda, ipiv, &info);
  EXPECT_EQ(info, -2);
  m = 5; n = 5; lda = 4;
  DGETRF(&m, &n, a, &lda, ipiv, &info);
  EXPECT_EQ(info, -4);
  EXPECT_EQ(g_pos, 4);
  m = 0; n = 0; lda = 1; info = 77;
  DGETRF(&m, &n, a, &lda, ipiv, &info);
  EXPECT_EQ(info, 0);
  EXPECT_EQ(g_calls, 3);
  // The checker alone: info = 0 on success.
  info = 5; m = 2; n = 2; lda = 2;
  EXPECT_EQ(nxl_lapack_errchk_zgetf2(&m, &n, nullptr, &lda, ipiv, &info), 0);
  EXPECT_EQ(info, 0);
}

TEST(Frame, PotrfFlagsAndGesvName) {
  Capture c;
  double a[4] = {4, 1, 1, 3};
  nxl_int n = 2, lda = 2, info = -9;
  DPOTRF("u", &n, a, &lda, &info);
  EXPECT_EQ(info, 0);
  EXPECT_EQ(a[0], 2.0);
  DPOTRF("X", &n, a, &lda, &info);
  EXPECT_EQ(info, -1);
  EXPECT_EQ(g_name, "DPOTRF");
  nxl_int nrhs = 1, ldb = 1, ipiv[2];
  double b[2] = {1, 1};
  dgesv_(&n, &nrhs, a, &lda, ipiv, b, &ldb, &info);
  EXPECT_EQ(info, -7);
  EXPECT_EQ(g_name, "DGESV ");
}

TEST(Frame, VerboseLine) {
  int *mode = nxl_serv_iface_verbose_mode();
  int old = *mode;
  *mode = 2;
  testing::internal::CaptureStdout();
  double a[4] = {4, 1, 1, 3};
  nxl_int n = 2, lda = 2, info = 0, ipiv[2];
  DGETRF(&n, &n, a, &lda, ipiv, &info);
  nxl_int bad = -1;
  DGETRF(&bad, &n, a, &lda, ipiv, &info);
  std::string out = testing::internal::GetCapturedStdout();
  *mode = old;
  EXPECT_NE(out.find("DGETRF(2,2,0x"), std::string::npos) << out;
  EXPECT_NE(out.find(",2,0x"), std::string::npos) << out;
  EXPECT_NE(out.find("DGETRF(-1,2,"), std::string::npos) << out;
  EXPECT_NE(out.find(",-1)"), std::string::npos) << out;
}

TEST(Ilaenv, FixedRows) {
  EXPECT_EQ(ilaenv(1, "DGETRF", " ", 10, 10, -1, -1), 1);
  EXPECT_EQ(ilaenv(2, "DGETRF", " ", 100, 100, -1, -1), 2);
  EXPECT_EQ(ilaenv(2, "DSYTRF", "U", 100, -1, -1, -1), 8);
  EXPECT_EQ(ilaenv(6, "DGESVD", " ", 100, 50, -1, -1), 80);
  EXPECT_EQ(ilaenv(6, "DGESVD", " ", 5, 3, -1, -1), 4);
  EXPECT_EQ(ilaenv(99, "DGETRF", " ", 11, 5, -1, -1), -1);
  EXPECT_EQ(ilaenv(99, "DGETRF", " ", 10, 10, -1, -1), 1);
  EXPECT_EQ(ilaenv(3, "DGETRF", " ", 5, 5, -1, -1), 22);
  EXPECT_EQ(ilaenv(3, "DGETRF", " ", 5, -1, -1, -1), 32);
  EXPECT_EQ(ilaenv(4, "DGEEV ", " ", 5, 5, -1, -1), 6);
  EXPECT_EQ(ilaenv(8, "DHSEQR", " ", 50, 5, -1, -1), 50);
  EXPECT_EQ(ilaenv(9, "DGELSD", " ", 50, 5, -1, -1), 25);
  EXPECT_EQ(ilaenv(10, "DSTEBZ", " ", 50, 5, -1, -1), 1);
  int cp = nxl_serv_cpu_detect();
  EXPECT_EQ(ilaenv(1, "CPUINF", " ", 1, 1, 1, 1), cp);
  EXPECT_EQ(ilaenv(42, "CPU", " ", 100, 100, 1, 1), cp);
  EXPECT_EQ(ilaenv(19, "DGETRF", " ", 100, 100, 1, 1), cp);
  EXPECT_EQ(ilaenv(1, "XGETRF", " ", 100, 100, -1, -1), 1);
  EXPECT_EQ(ilaenv(1, "DQQQQQ", " ", 100, 100, -1, -1), 1);
  EXPECT_EQ(ilaenv(2, "DQQQQQ", " ", 100, 100, -1, -1), 2);
}

TEST(Ilaenv, LuAndCholeskyRows) {
  // Crossover between the sequential and threaded LU.
  EXPECT_EQ(ilaenv(3, "DGETRF", " ", 100, 100, -1, -1), 1);
  EXPECT_EQ(ilaenv(3, "DGETRF", " ", 400, 63, -1, -1), 1);
  EXPECT_EQ(ilaenv(3, "DGETRF", " ", 200, 100, -1, -1), 0);
  EXPECT_EQ(ilaenv(3, "ZGETRF", " ", 200, 100, 4, -1), 0);
  int cp = nxl_serv_cpu_detect();
  EXPECT_EQ(ilaenv(3, "DGETRF", " ", 5000, 5000, 8, -1), cp < 5 ? 1 : 0);
  EXPECT_EQ(ilaenv(3, "DPOTRF", "U", 500, -1, -1, -1), 128);
  // Cholesky block sizes with a one-thread hint.
  EXPECT_EQ(ilaenv(1, "DPOTRF", "L", 100, 1, -1, -1), 128);
  EXPECT_EQ(ilaenv(1, "DPOTRF", "L", 300, 1, -1, -1), 24);
  EXPECT_EQ(ilaenv(1, "DPOTRF", "L", 800, 1, -1, -1), 56);
  EXPECT_EQ(ilaenv(1, "DPOTRF", "L", 1000, 1, -1, -1), 96);
  EXPECT_EQ(ilaenv(1, "DPOTRF", "L", 1200, 1, -1, -1), 128);
  EXPECT_EQ(ilaenv(1, "DPOTRF", "L", 1500, 1, -1, -1), 192);
  EXPECT_EQ(ilaenv(1, "DPOTRF", "L", 1900, 1, -1, -1), 256);
  EXPECT_EQ(ilaenv(1, "DPOTRF", "L", 2500, 1, -1, -1), 384);
  EXPECT_EQ(ilaenv(1, "DPOTRF", "L", 5000, 1, -1, -1), 512);
  if (cp >= 6) {
    EXPECT_EQ(ilaenv(1, "DGETRF", " ", 1000, 1000, -1, -1), 48);
    EXPECT_EQ(ilaenv(1, "DGETRF", " ", 3000, 3000, 1, -1), 96);
    EXPECT_EQ(ilaenv(1, "ZGETRF", " ", 5000, 5000, 1, -1), 96);
    EXPECT_EQ(ilaenv(1, "DGETRF", " ", 5000, 5000, 1, -1), 224);
    EXPECT_EQ(ilaenv(1, "DGETRF", " ", 20000, 20000, 1, -1), 336);
    EXPECT_EQ(ilaenv(1, "DGETRF", " ", 7500, 7500, 4, -2), 120);
    EXPECT_EQ(ilaenv(1, "CGETRF", " ", 7500, 7500, 4, -2), 92);
    EXPECT_EQ(ilaenv(1, "DGETRF", " ", 12000, 12000, 4, -2), 168);
    EXPECT_EQ(ilaenv(1, "DPOTRF", "U", 100, 32, -1, 1), 64);
    EXPECT_EQ(ilaenv(1, "DPOTRF", "U", 20000, 32, -1, 1), 552);
    EXPECT_EQ(ilaenv(7, "ZHGEQZ", " ", 900, 5, -1, -1), cp == 6 ? 32 : 4);
    EXPECT_EQ(ilaenv(7, "DHGEQZ", " ", 900, 5, -1, -1), 32);
    EXPECT_EQ(ilaenv(7, "DSYTRD", "U", 900, 500, 7, -1), 7);
    EXPECT_EQ(ilaenv(7, "DSYTD2", "u", 900, 500, 7, -1), 8);
  }
  EXPECT_EQ(ilaenv(12, "DGEQRF", "P", 100, 500, -1, -1), 32);
  EXPECT_EQ(ilaenv(12, "DGEQRF", "P", 100, 1350, -1, -1), 64);
  EXPECT_EQ(ilaenv(12, "DGEQRF", "P", 100, 5000, -1, -1), 128);
}
