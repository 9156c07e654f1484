#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
// TEMPORARY test-only stand-ins for the service layer and the BLAS dispatch
// layer, until those subsystems are merged: the BLAS forwards to Debian's
// reference BLAS, the services are minimal. Removed once the real ones link.
#include <complex>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <omp.h>
#include <sys/time.h>
#include "service/nxl_serv.h"

using c8 = std::complex<float>;
using c16 = std::complex<double>;
using I = const nxl_int *;
using C = const char *;
using L = size_t;

extern "C" {
static nxl_xerbla_fn g_xerbla;
static nxl_progress_fn g_progress;
static int g_verbose = 0;
int nxl_serv_cpu_detect(void) {
  if (__builtin_cpu_supports("avx512f")) return 7;
  if (__builtin_cpu_supports("avx2")) return 5;
  return 0;
}
int nxl_serv_cbwr_get(int) { return 1; }
int nxl_serv_get_ncorespercpu(void) { return 2; }
int nxl_serv_get_max_threads(void) { return omp_get_max_threads(); }
void nxl_serv_default_xerbla(const char *name, const nxl_int *info, int len) {
  if (!name || !info || len < 0) return;
  printf("\nOrtex NXL ERROR: Parameter %lld was incorrect on entry to %.*s.\n", (long long)*info, len, name);
}
void nxl_serv_xerbla(const char *name, const nxl_int *info, int len) {
  if (!name || !info) return;
  if (g_xerbla) g_xerbla(name, info, len);
  else nxl_serv_default_xerbla(name, info, len);
}
void nxl_serv_iface_xerbla(const char *name, const nxl_int *info, int len) { nxl_serv_xerbla(name, info, len); }
nxl_xerbla_fn nxl_serv_set_xerbla(nxl_xerbla_fn h) {
  nxl_xerbla_fn o = g_xerbla;
  g_xerbla = h;
  return o ? o : nxl_serv_default_xerbla;
}
void cdecl_xerbla(const char *name, const nxl_int *info, int len) { nxl_serv_default_xerbla(name, info, len); }
void nxl_set_xerbla_interface(nxl_xerbla_fn h) {
  if (!g_xerbla) g_xerbla = h;
}
int nxl_serv_default_progress(const nxl_int *, const nxl_int *, const char *, nxl_int) { return 0; }
int cdecl_progress(const nxl_int *, const nxl_int *, const char *, nxl_int) { return 0; }
int nxl_serv_progress(const nxl_int *t, const nxl_int *s, const char *st, nxl_int l) {
  return g_progress ? g_progress(t, s, st, l) : 0;
}
nxl_progress_fn nxl_serv_set_progress(nxl_progress_fn f) {
  nxl_progress_fn o = g_progress;
  g_progress = f;
  return o ? o : nxl_serv_default_progress;
}
void nxl_serv_set_progress_interface(nxl_progress_fn f) {
  if (!g_progress) g_progress = f;
}
int *nxl_serv_iface_verbose_mode(void) { return &g_verbose; }
int nxl_serv_verbose(int mode) {
  int o = g_verbose;
  g_verbose = mode;
  return o;
}
double nxl_serv_iface_dsecnd(void) {
  timeval tv;
  gettimeofday(&tv, nullptr);
  return tv.tv_sec + 1e-6 * tv.tv_usec;
}
void nxl_serv_iface_print_verbose_info(int, const char *text, double s) { printf("NXL_VERBOSE %s %.2fs\n", text, s); }
int nxl_serv_snprintf_s(char *b, size_t size, size_t max, const char *f, ...) {
  va_list ap;
  va_start(ap, f);
  int r = vsnprintf(b, size < max + 1 ? size : max + 1, f, ap);
  va_end(ap);
  return r;
}
void *nxl_serv_allocate(size_t bytes, int al) { return aligned_alloc(al, (bytes + al - 1) / al * al); }
void nxl_serv_deallocate(void *p) { free(p); }
void nxl_serv_print(int, int n, int, ...) { printf("message %d\n", n); }
void nxl_serv_exit(int c) { exit(c); }

// Reference BLAS (Fortran convention, 64-bit integers).
#define FWD4(stem, params, args)                                                                  \
  void s##stem##_ params(float);                                                                  \
  void d##stem##_ params(double);                                                                 \
  void c##stem##_ params(c8);                                                                     \
  void z##stem##_ params(c16);
#define P_GEMM(T) (C, C, I, I, I, const T *, const T *, I, const T *, I, const T *, T *, I, L, L)
#define P_TRSM(T) (C, C, C, C, I, I, const T *, const T *, I, T *, I, L, L, L, L)
#define P_GEMV(T) (C, I, I, const T *, const T *, I, const T *, I, const T *, T *, I, L)
#define P_TRSV(T) (C, C, C, I, const T *, I, T *, I, L, L, L)
#define P_SCAL(T) (I, const T *, T *, I)
#define P_SWAP(T) (I, T *, I, T *, I)
#define P_SYRK(T) (C, C, I, I, const T *, const T *, I, const T *, T *, I, L, L)
FWD4(gemm, P_GEMM, )
FWD4(trsm, P_TRSM, )
FWD4(trmm, P_TRSM, )
FWD4(gemv, P_GEMV, )
FWD4(trsv, P_TRSV, )
FWD4(trmv, P_TRSV, )
FWD4(scal, P_SCAL, )
FWD4(swap, P_SWAP, )
FWD4(copy, P_SWAP, )
FWD4(syrk, P_SYRK, )
void saxpy_(I, const float *, const float *, I, float *, I);
void daxpy_(I, const double *, const double *, I, double *, I);
void caxpy_(I, const c8 *, const c8 *, I, c8 *, I);
void zaxpy_(I, const c16 *, const c16 *, I, c16 *, I);
void cherk_(C, C, I, I, const float *, const c8 *, I, const float *, c8 *, I, L, L);
void zherk_(C, C, I, I, const double *, const c16 *, I, const double *, c16 *, I, L, L);
nxl_int isamax_(I, const float *, I);
nxl_int idamax_(I, const double *, I);
nxl_int icamax_(I, const c8 *, I);
nxl_int izamax_(I, const c16 *, I);
float snrm2_(I, const float *, I);
double dnrm2_(I, const double *, I);
float scnrm2_(I, const c8 *, I);
double dznrm2_(I, const c16 *, I);
float sasum_(I, const float *, I);
double dasum_(I, const double *, I);
float scasum_(I, const c8 *, I);
double dzasum_(I, const c16 *, I);
void csscal_(I, const float *, c8 *, I);
void zdscal_(I, const double *, c16 *, I);
float sdot_(I, const float *, I, const float *, I);
double ddot_(I, const double *, I, const double *, I);
c8 cdotc_(I, const c8 *, I, const c8 *, I);
c16 zdotc_(I, const c16 *, I, const c16 *, I);
c8 cdotu_(I, const c8 *, I, const c8 *, I);
c16 zdotu_(I, const c16 *, I, const c16 *, I);
void sger_(I, I, const float *, const float *, I, const float *, I, float *, I);
void dger_(I, I, const double *, const double *, I, const double *, I, double *, I);
void cgeru_(I, I, const c8 *, const c8 *, I, const c8 *, I, c8 *, I);
void zgeru_(I, I, const c16 *, const c16 *, I, const c16 *, I, c16 *, I);
void ssymv_(C, I, const float *, const float *, I, const float *, I, const float *, float *, I, L);
void dsymv_(C, I, const double *, const double *, I, const double *, I, const double *, double *, I, L);
void chemv_(C, I, const c8 *, const c8 *, I, const c8 *, I, const c8 *, c8 *, I, L);
void zhemv_(C, I, const c16 *, const c16 *, I, const c16 *, I, const c16 *, c16 *, I, L);

#define DEF2(p, T, stem, x)                                                                      \
  void nxl_blas_##x##p##stem(C a, C b, I m, I n, I k, const T *al, const T *A, I lda, const T *B, \
                             I ldb, const T *be, T *Cc, I ldc, int, int) {                       \
    p##stem##_(a, b, m, n, k, al, A, lda, B, ldb, be, Cc, ldc, 1, 1);                            \
  }
#define GEMMS(x) DEF2(s, float, gemm, x) DEF2(d, double, gemm, x) DEF2(c, c8, gemm, x) DEF2(z, c16, gemm, x)
GEMMS()
GEMMS(x)
#define DEFT(p, T, stem, x)                                                                       \
  void nxl_blas_##x##p##stem(C s, C u, C t, C d, I m, I n, const T *al, const T *A, I lda, T *B,  \
                             I ldb, int, int, int, int) {                                        \
    p##stem##_(s, u, t, d, m, n, al, A, lda, B, ldb, 1, 1, 1, 1);                                \
  }
#define TRSMS(x, stem) DEFT(s, float, stem, x) DEFT(d, double, stem, x) DEFT(c, c8, stem, x) DEFT(z, c16, stem, x)
TRSMS(, trsm)
TRSMS(x, trsm)
TRSMS(, trmm)
#define DEFV(p, T)                                                                                 \
  void nxl_blas_##p##gemv(C t, I m, I n, const T *al, const T *A, I lda, const T *x, I ix,        \
                          const T *be, T *y, I iy, int) {                                         \
    p##gemv_(t, m, n, al, A, lda, x, ix, be, y, iy, 1);                                           \
  }                                                                                               \
  void nxl_blas_##p##trsv(C u, C t, C d, I n, const T *A, I lda, T *x, I ix, int, int, int) {     \
    p##trsv_(u, t, d, n, A, lda, x, ix, 1, 1, 1);                                                 \
  }                                                                                               \
  void nxl_blas_##p##trmv(C u, C t, C d, I n, const T *A, I lda, T *x, I ix, int, int, int) {     \
    p##trmv_(u, t, d, n, A, lda, x, ix, 1, 1, 1);                                                 \
  }                                                                                               \
  void nxl_blas_##p##scal(I n, const T *a, T *x, I ix) { p##scal_(n, a, x, ix); }                 \
  void nxl_blas_##p##swap(I n, T *x, I ix, T *y, I iy) { p##swap_(n, x, ix, y, iy); }             \
  void nxl_blas_##p##copy(I n, const T *x, I ix, T *y, I iy) { p##copy_(n, const_cast<T *>(x), ix, y, iy); } \
  void nxl_blas_##p##axpy(I n, const T *a, const T *x, I ix, T *y, I iy) { p##axpy_(n, a, x, ix, y, iy); }
DEFV(s, float)
DEFV(d, double)
DEFV(c, c8)
DEFV(z, c16)
#define DEFK(p, T, R, f, x)                                                                        \
  void nxl_blas_##x##p##f(C u, C t, I n, I k, const R *al, const T *A, I lda, const R *be, T *Cc,  \
                          I ldc, int, int) {                                                      \
    p##f##_(u, t, n, k, al, A, lda, be, Cc, ldc, 1, 1);                                           \
  }
DEFK(s, float, float, syrk, ) DEFK(d, double, double, syrk, ) DEFK(c, c8, c8, syrk, ) DEFK(z, c16, c16, syrk, )
DEFK(s, float, float, syrk, x) DEFK(d, double, double, syrk, x)
DEFK(c, c8, float, herk, ) DEFK(z, c16, double, herk, ) DEFK(c, c8, float, herk, x) DEFK(z, c16, double, herk, x)
nxl_int nxl_blas_isamax(I n, const float *x, I i) { return isamax_(n, x, i); }
nxl_int nxl_blas_idamax(I n, const double *x, I i) { return idamax_(n, x, i); }
nxl_int nxl_blas_icamax(I n, const c8 *x, I i) { return icamax_(n, x, i); }
nxl_int nxl_blas_izamax(I n, const c16 *x, I i) { return izamax_(n, x, i); }
float nxl_blas_snrm2(I n, const float *x, I i) { return snrm2_(n, x, i); }
double nxl_blas_dnrm2(I n, const double *x, I i) { return dnrm2_(n, x, i); }
float nxl_blas_scnrm2(I n, const c8 *x, I i) { return scnrm2_(n, x, i); }
double nxl_blas_dznrm2(I n, const c16 *x, I i) { return dznrm2_(n, x, i); }
float nxl_blas_sasum(I n, const float *x, I i) { return sasum_(n, x, i); }
double nxl_blas_dasum(I n, const double *x, I i) { return dasum_(n, x, i); }
float nxl_blas_scasum(I n, const c8 *x, I i) { return scasum_(n, x, i); }
double nxl_blas_dzasum(I n, const c16 *x, I i) { return dzasum_(n, x, i); }
void nxl_blas_csscal(I n, const float *a, c8 *x, I i) { csscal_(n, a, x, i); }
void nxl_blas_zdscal(I n, const double *a, c16 *x, I i) { zdscal_(n, a, x, i); }
float nxl_blas_sdot(I n, const float *x, I ix, const float *y, I iy) { return sdot_(n, x, ix, y, iy); }
double nxl_blas_ddot(I n, const double *x, I ix, const double *y, I iy) { return ddot_(n, x, ix, y, iy); }
void nxl_blas_cdotc(c8 *r, I n, const c8 *x, I ix, const c8 *y, I iy) { *r = cdotc_(n, x, ix, y, iy); }
void nxl_blas_zdotc(c16 *r, I n, const c16 *x, I ix, const c16 *y, I iy) { *r = zdotc_(n, x, ix, y, iy); }
void nxl_blas_cdotu(c8 *r, I n, const c8 *x, I ix, const c8 *y, I iy) { *r = cdotu_(n, x, ix, y, iy); }
void nxl_blas_zdotu(c16 *r, I n, const c16 *x, I ix, const c16 *y, I iy) { *r = zdotu_(n, x, ix, y, iy); }
void nxl_blas_sger(I m, I n, const float *a, const float *x, I ix, const float *y, I iy, float *A, I l) { sger_(m, n, a, x, ix, y, iy, A, l); }
void nxl_blas_dger(I m, I n, const double *a, const double *x, I ix, const double *y, I iy, double *A, I l) { dger_(m, n, a, x, ix, y, iy, A, l); }
void nxl_blas_cgeru(I m, I n, const c8 *a, const c8 *x, I ix, const c8 *y, I iy, c8 *A, I l) { cgeru_(m, n, a, x, ix, y, iy, A, l); }
void nxl_blas_zgeru(I m, I n, const c16 *a, const c16 *x, I ix, const c16 *y, I iy, c16 *A, I l) { zgeru_(m, n, a, x, ix, y, iy, A, l); }
void nxl_blas_ssymv(C u, I n, const float *a, const float *A, I l, const float *x, I ix, const float *b, float *y, I iy, int) { ssymv_(u, n, a, A, l, x, ix, b, y, iy, 1); }
void nxl_blas_dsymv(C u, I n, const double *a, const double *A, I l, const double *x, I ix, const double *b, double *y, I iy, int) { dsymv_(u, n, a, A, l, x, ix, b, y, iy, 1); }
void nxl_blas_chemv(C u, I n, const c8 *a, const c8 *A, I l, const c8 *x, I ix, const c8 *b, c8 *y, I iy, int) { chemv_(u, n, a, A, l, x, ix, b, y, iy, 1); }
void nxl_blas_zhemv(C u, I n, const c16 *a, const c16 *A, I l, const c16 *x, I ix, const c16 *b, c16 *y, I iy, int) { zhemv_(u, n, a, A, l, x, ix, b, y, iy, 1); }
}
