#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
// TEMPORARY test-only stand-ins for the level-2 BLAS dispatch functions that
// are not merged yet: they forward to Debian's reference BLAS. Removed once
// the real ones link.
#include <complex>
#include <dlfcn.h>
#include <cstdlib>
#include "nxl_types.h"

using c8 = std::complex<float>;
using c16 = std::complex<double>;
using I = const nxl_int *;
using C = const char *;
using L = size_t;

static void *ref(const char *name) {
  static void *h = dlopen("/usr/lib/x86_64-linux-gnu/blas64/libblas64.so.3", RTLD_NOW | RTLD_LOCAL);
  void *f = h ? dlsym(h, name) : nullptr;
  if (!f) abort();
  return f;
}
#define REF(name, type) static auto name = reinterpret_cast<type>(ref(#name))

extern "C" {
#define FWD4(stem, params)                                                                        \
  using s##stem##_t = void(*) params(float);                                                      \
  using d##stem##_t = void(*) params(double);                                                     \
  using c##stem##_t = void(*) params(c8);                                                         \
  using z##stem##_t = void(*) params(c16);
#define P_GEMV(T) (C, I, I, const T *, const T *, I, const T *, I, const T *, T *, I, L)
#define P_TRSV(T) (C, C, C, I, const T *, I, T *, I, L, L, L)
FWD4(gemv, P_GEMV)
FWD4(trsv, P_TRSV)
FWD4(trmv, P_TRSV)
#define DEFV(p, T)                                                                                 \
  void nxl_blas_##p##gemv(C t, I m, I n, const T *al, const T *A, I lda, const T *x, I ix,        \
                          const T *be, T *y, I iy, int) {                                         \
    REF(p##gemv_, p##gemv_t); p##gemv_(t, m, n, al, A, lda, x, ix, be, y, iy, 1);                                           \
  }                                                                                               \
  void nxl_blas_##p##trsv(C u, C t, C d, I n, const T *A, I lda, T *x, I ix, int, int, int) {     \
    REF(p##trsv_, p##trsv_t); p##trsv_(u, t, d, n, A, lda, x, ix, 1, 1, 1);                                                 \
  }                                                                                               \
  void nxl_blas_##p##trmv(C u, C t, C d, I n, const T *A, I lda, T *x, I ix, int, int, int) {     \
    REF(p##trmv_, p##trmv_t); p##trmv_(u, t, d, n, A, lda, x, ix, 1, 1, 1);                                                 \
  }
DEFV(s, float)
DEFV(d, double)
DEFV(c, c8)
DEFV(z, c16)
using sger_t = void (*)(I, I, const float *, const float *, I, const float *, I, float *, I);
using dger_t = void (*)(I, I, const double *, const double *, I, const double *, I, double *, I);
using cgeru_t = void (*)(I, I, const c8 *, const c8 *, I, const c8 *, I, c8 *, I);
using zgeru_t = void (*)(I, I, const c16 *, const c16 *, I, const c16 *, I, c16 *, I);
using ssymv_t = void (*)(C, I, const float *, const float *, I, const float *, I, const float *, float *, I, L);
using dsymv_t = void (*)(C, I, const double *, const double *, I, const double *, I, const double *, double *, I, L);
using chemv_t = void (*)(C, I, const c8 *, const c8 *, I, const c8 *, I, const c8 *, c8 *, I, L);
using zhemv_t = void (*)(C, I, const c16 *, const c16 *, I, const c16 *, I, const c16 *, c16 *, I, L);

void nxl_blas_sger(I m, I n, const float *a, const float *x, I ix, const float *y, I iy, float *A, I l) { REF(sger_, sger_t); sger_(m, n, a, x, ix, y, iy, A, l); }
void nxl_blas_dger(I m, I n, const double *a, const double *x, I ix, const double *y, I iy, double *A, I l) { REF(dger_, dger_t); dger_(m, n, a, x, ix, y, iy, A, l); }
void nxl_blas_cgeru(I m, I n, const c8 *a, const c8 *x, I ix, const c8 *y, I iy, c8 *A, I l) { REF(cgeru_, cgeru_t); cgeru_(m, n, a, x, ix, y, iy, A, l); }
void nxl_blas_zgeru(I m, I n, const c16 *a, const c16 *x, I ix, const c16 *y, I iy, c16 *A, I l) { REF(zgeru_, zgeru_t); zgeru_(m, n, a, x, ix, y, iy, A, l); }
void nxl_blas_ssymv(C u, I n, const float *a, const float *A, I l, const float *x, I ix, const float *b, float *y, I iy, int) { REF(ssymv_, ssymv_t); ssymv_(u, n, a, A, l, x, ix, b, y, iy, 1); }
void nxl_blas_dsymv(C u, I n, const double *a, const double *A, I l, const double *x, I ix, const double *b, double *y, I iy, int) { REF(dsymv_, dsymv_t); dsymv_(u, n, a, A, l, x, ix, b, y, iy, 1); }
void nxl_blas_chemv(C u, I n, const c8 *a, const c8 *A, I l, const c8 *x, I ix, const c8 *b, c8 *y, I iy, int) { REF(chemv_, chemv_t); chemv_(u, n, a, A, l, x, ix, b, y, iy, 1); }
void nxl_blas_zhemv(C u, I n, const c16 *a, const c16 *A, I l, const c16 *x, I ix, const c16 *b, c16 *y, I iy, int) { REF(zhemv_, zhemv_t); zhemv_(u, n, a, A, l, x, ix, b, y, iy, 1); }
}
