/* A tour of NXL on a default workload: what the library found on this
 * machine, then a matrix product, a linear solve and a Fourier transform,
 * each checked against a simple reference and timed.
 *
 *   nxl_tour [n]     (n: matrix order, default 1000)
 */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/time.h>

#include "nxl.h"

static double now(void) {
  struct timeval tv;
  gettimeofday(&tv, NULL);
  return (double)tv.tv_sec + 1e-6 * (double)tv.tv_usec;
}

/* Infinity norm (largest row sum) of an n x n matrix. */
static double dlange_like(const double *a, nxl_int n) {
  double m = 0;
  for (nxl_int i = 0; i < n; ++i) {
    double row = 0;
    for (nxl_int j = 0; j < n; ++j) row += fabs(a[i + j * n]);
    m = fmax(m, row);
  }
  return m;
}

static const char *branch_name(nxl_int b) {
  static const char *names[] = {"?", "OFF", "AUTO", "COMPATIBLE", "SSE2", "SSE3", "SSSE3", "SSE4_1",
                                "SSE4_2", "AVX", "AVX2", "AVX512_MIC", "AVX512", "AVX512_MIC_E1",
                                "AVX512_E1"};
  return (b >= 0 && b <= 14) ? names[b] : "?";
}

static void section_library(void) {
  char text[256];
  nxl_int len = sizeof text;
  nxl_get_version_string(text, &len);
  printf("library      %s\n", text);
  nxl_get_cpu_name(text, &len);
  printf("processor    level %lld, code path %lld\n             %s\n", nxl_get_cpu_level(),
         nxl_get_code_path(), text);
  printf("threads      max %lld", nxl_get_max_threads());
  static const char *domains[] = {"ALL", "BLAS", "FFT", "VML", "PARDISO"};
  for (nxl_int d = 0; d <= 4; ++d) printf(", %s %lld", domains[d], nxl_domain_get_max_threads(&d));
  printf("; dynamic %lld\n", nxl_get_dynamic());
  printf("reproducible branch %s\n", branch_name(nxl_get_cbwr_branch()));
}

/* Uniform pseudo-random numbers in [-0.5, 0.5): the tour needs no library. */
static double rnd(unsigned long long *state) {
  *state = *state * 6364136223846793005ULL + 1442695040888963407ULL;
  return (double)(*state >> 11) / 9007199254740992.0 - 0.5;
}

static void fill(double *x, nxl_int count, unsigned long long seed) {
  for (nxl_int i = 0; i < count; ++i) x[i] = rnd(&seed);
}

/* C = A B through dgemm, checked on a random projection: |C v - A (B v)|
 * relative to |A| |B| |v|, which a wrong product cannot pass. */
static int section_product(nxl_int n) {
  double *a = malloc(sizeof(double) * n * n), *b = malloc(sizeof(double) * n * n);
  double *c = malloc(sizeof(double) * n * n), *v = malloc(sizeof(double) * n);
  double *bv = malloc(sizeof(double) * n), *abv = malloc(sizeof(double) * n), *cv = malloc(sizeof(double) * n);
  fill(a, n * n, 1);
  fill(b, n * n, 2);
  fill(v, n, 3);
  const double one = 1.0, zero = 0.0;
  const nxl_int inc = 1;
  dgemm("N", "N", &n, &n, &n, &one, a, &n, b, &n, &zero, c, &n); /* warm-up */
  int reps = 0;
  double t0 = now(), t;
  do {
    dgemm("N", "N", &n, &n, &n, &one, a, &n, b, &n, &zero, c, &n);
    ++reps;
    t = now() - t0;
  } while (t < 0.5);
  double gflops = 2.0 * (double)n * (double)n * (double)n * reps / t * 1e-9;
  dgemv("N", &n, &n, &one, b, &n, v, &inc, &zero, bv, &inc);
  dgemv("N", &n, &n, &one, a, &n, bv, &inc, &zero, abv, &inc);
  dgemv("N", &n, &n, &one, c, &n, v, &inc, &zero, cv, &inc);
  double err = 0, na = dlange_like(a, n), nb = dlange_like(b, n), nv = 0;
  for (nxl_int i = 0; i < n; ++i) {
    err = fmax(err, fabs(cv[i] - abv[i]));
    nv = fmax(nv, fabs(v[i]));
  }
  double rel = err / (na * nb * nv * (double)n * 2.2e-16); /* |C v - A B v| / (|A| |B| |v| n eps) */
  printf("\nmatrix product   dgemm %lld x %lld: %.1f GFLOPS, check %.3f (units of n eps) %s\n", n, n,
         gflops, rel, rel < 10 ? "ok" : "WRONG");
  free(a); free(b); free(c); free(v); free(bv); free(abv); free(cv);
  return rel < 10;
}

/* Solve A x = b through dgesv and report the scaled residual
 * |b - A x| / (|A| |x| n eps). */
static int section_solve(nxl_int n) {
  double *a = malloc(sizeof(double) * n * n), *lu = malloc(sizeof(double) * n * n);
  double *b = malloc(sizeof(double) * n), *x = malloc(sizeof(double) * n);
  nxl_int *ipiv = malloc(sizeof(nxl_int) * n), info = 0, one_rhs = 1, inc = 1;
  fill(a, n * n, 4);
  fill(b, n, 5);
  memcpy(lu, a, sizeof(double) * n * n);
  memcpy(x, b, sizeof(double) * n);
  double t0 = now();
  dgesv(&n, &one_rhs, lu, &n, ipiv, x, &n, &info);
  double t = now() - t0;
  const double m1 = -1.0, p1 = 1.0;
  dgemv("N", &n, &n, &m1, a, &n, x, &inc, &p1, b, &inc); /* b := b - A x */
  double r = 0, nx = 0;
  for (nxl_int i = 0; i < n; ++i) {
    r = fmax(r, fabs(b[i]));
    nx = fmax(nx, fabs(x[i]));
  }
  double rel = r / (dlange_like(a, n) * nx * (double)n * 2.2e-16);
  printf("linear solve     dgesv %lld: info %lld, %.1f GFLOPS, residual %.4f (units of n eps) %s\n", n, info,
         (2.0 / 3.0) * (double)n * (double)n * (double)n / t * 1e-9, rel, info == 0 && rel < 10 ? "ok" : "WRONG");
  free(a); free(lu); free(b); free(x); free(ipiv);
  return info == 0 && rel < 10;
}

/* A complex transform of length 2^14 against a direct evaluation of a few of
 * its outputs, and its rate as 5 N log2 N per second. */
static int section_transform(void) {
  const nxl_int len = 1 << 14;
  double *x = malloc(sizeof(double) * 2 * len), *y = malloc(sizeof(double) * 2 * len);
  fill(x, 2 * len, 6);
  DFTI_DESCRIPTOR_HANDLE h = NULL;
  nxl_int st = DftiCreateDescriptor(&h, DFTI_DOUBLE, DFTI_COMPLEX, 1, len);
  if (st == 0) st = DftiSetValue(h, DFTI_PLACEMENT, DFTI_NOT_INPLACE);
  if (st == 0) st = DftiCommitDescriptor(h);
  if (st != 0) {
    printf("transform        failed: %s\n", DftiErrorMessage(st));
    return 0;
  }
  DftiComputeForward(h, x, y);
  int reps = 0;
  double t0 = now(), t;
  do {
    DftiComputeForward(h, x, y);
    ++reps;
    t = now() - t0;
  } while (t < 0.3);
  double err = 0, ny = 0;
  const nxl_int probes[] = {0, 1, 777, len / 2, len - 1};
  for (int p = 0; p < 5; ++p) {
    long double re = 0, im = 0;
    for (nxl_int j = 0; j < len; ++j) {
      long double ang = -2.0L * 3.14159265358979323846264338327950288L * (long double)((probes[p] * j) % len) / len;
      re += x[2 * j] * cosl(ang) - x[2 * j + 1] * sinl(ang);
      im += x[2 * j] * sinl(ang) + x[2 * j + 1] * cosl(ang);
    }
    err = fmax(err, hypot((double)(re - y[2 * probes[p]]), (double)(im - y[2 * probes[p] + 1])));
    ny = fmax(ny, hypot((double)re, (double)im));
  }
  double rel = err / ny;
  printf("transform        complex 1-D N = %lld: %.0f MFLOPS (5 N log2 N), error %.1e %s\n", len,
         5.0 * len * 14 * reps / t * 1e-6, rel, rel < 1e-12 ? "ok" : "WRONG");
  DftiFreeDescriptor(&h);
  free(x); free(y);
  return rel < 1e-12;
}

int main(int argc, char **argv) {
  nxl_int n = argc > 1 ? atoll(argv[1]) : 1000;
  if (n < 1) n = 1000;
  printf("NXL tour (n = %lld)\n\n", n);
  section_library();
  int ok = section_product(n);
  ok &= section_solve(n);
  ok &= section_transform();
  printf("\n%s\n", ok ? "all checks passed" : "SOME CHECKS FAILED");
  return ok ? 0 : 1;
}
