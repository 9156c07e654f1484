// Calls a few BLAS routines through the exported entries; run by the frame
// tests in fresh processes (with NXL_VERBOSE=1 to see the trace lines).
#include <complex>
#include <cstdio>
#include "nxl_blas.h"
#include "nxl_cblas.h"

int main() {
  double x[8] = {1, 2, 3, 4, 5, 6, 7, 8}, y[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1}, a = 2;
  const nxl_int n = 5, one = 1, two = 2, m = 2, k = 4, bad = -1;
  std::printf("ddot=%g\n", ddot_(&n, x, &one, y, &two));
  daxpy(&n, &a, x, &one, y, &one);
  std::printf("idamax=%lld\n", idamax_(&n, x, &one));
  double ra = 3, rb = 4, c, s;
  drotg_(&ra, &rb, &c, &s);
  std::complex<double> zx[2] = {{1, 2}, {3, 4}};
  nxl_complex16 z = zdotc_(&m, zx, &one, zx, &one);
  std::printf("zdotc=%g,%g\n", z.real, z.imag);
  double A[16] = {0}, B[16] = {0}, C[16] = {0};
  dgemm_("N", "T", &m, &two, &k, &a, A, &m, B, &two, &a, C, &m);
  dgemm_("X", "N", &bad, &two, &k, &a, A, &m, B, &two, &a, C, &m);  // fails: position 1
  cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, 2, 2, 4, 1.0, A, 4, B, 2, 0.0, C, 2);
  std::fflush(stdout);
  return 0;
}
