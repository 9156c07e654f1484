// TEMPORARY test-only stand-ins for services and level-2 products that other
// parts of the library provide; removed once they are merged.
#include <omp.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <complex>
#include <cstdio>
#include "nxl_service.h"
#include "service/nxl_serv.h"

static int g_threads = 0;
extern "C" {
void nxl_set_num_threads(const nxl_int *n) { g_threads = int(*n); }
int nxl_serv_domain_get_max_threads(int) {
  if (omp_in_parallel()) return 1;
  return g_threads > 0 ? g_threads : omp_get_max_threads();
}
// Keeps freed blocks per thread for reuse, as the memory manager does.
struct blk_t { void *p; size_t n; };
static thread_local blk_t g_free[8];
void *nxl_serv_allocate(size_t bytes, int alignment) {
  for (auto &b : g_free)
    if (b.p && b.n >= bytes && (reinterpret_cast<uintptr_t>(b.p) % size_t(alignment)) == 0) {
      void *p = b.p;
      b.p = nullptr;
      return p;
    }
  void *raw = nullptr;
  if (alignment > 4096 || posix_memalign(&raw, 4096, bytes + 4096)) return nullptr;
  *static_cast<size_t *>(raw) = bytes;
  return static_cast<char *>(raw) + 4096;
}
void nxl_serv_deallocate(void *p) {
  if (!p) return;
  size_t n = *reinterpret_cast<size_t *>(static_cast<char *>(p) - 4096);
  for (auto &b : g_free)
    if (!b.p) { b.p = p; b.n = n; return; }
  free(static_cast<char *>(p) - 4096);
}
int nxl_serv_check_ptr_and_warn(const void *p, const char *) { return p ? 0 : 1; }
int nxl_serv_cpu_detect(void) {
  const char *e = getenv("NXL_ENABLE_INSTRUCTIONS");
  const char *c = getenv("NXL_CBWR");
  if (c && strcmp(c, "SSE2") == 0) return 0;
  if (!e) return 7;
  if (!strcmp(e, "AVX2")) return 5;
  if (!strcmp(e, "AVX")) return 4;
  if (!strcmp(e, "SSE4_2")) return 3;
  return 7;
}
int nxl_serv_cbwr_get(int what) {
  const char *c = getenv("NXL_CBWR");
  if (what == -1) return (c && strcmp(c, "SSE2") == 0) ? 4 : 1;
  return (c && strcmp(c, "SSE2") == 0) ? 4 : 1;
}
void nxl_serv_print(int, int number, int, ...) { std::printf("message %d\n", number); }
void nxl_serv_exit(int code) { exit(code); }
}

template <class T>
static void gemv_shim(const char *trans, const nxl_int *m, const nxl_int *n, const T *alpha,
                      const T *a, const nxl_int *lda, const T *x, const nxl_int *incx, const T *beta,
                      T *y, const nxl_int *incy) {
  const bool tr = *trans != 'N' && *trans != 'n';
  const bool cj = *trans == 'C' || *trans == 'c';
  const nxl_int leny = tr ? *n : *m, lenx = tr ? *m : *n;
  const nxl_int ox = *incx >= 0 ? 0 : (1 - lenx) * *incx, oy = *incy >= 0 ? 0 : (1 - leny) * *incy;
  for (nxl_int i = 0; i < leny; ++i) {
    T s = T(0);
    for (nxl_int p = 0; p < lenx; ++p) {
      T av = tr ? a[p + i * *lda] : a[i + p * *lda];
      if constexpr (!std::is_floating_point_v<T>) if (cj) av = std::conj(av);
      s += av * x[ox + p * *incx];
    }
    T &yi = y[oy + i * *incy];
    yi = (*beta == T(0) ? T(0) : *beta * yi) + *alpha * s;
  }
}
#define SHIM(P, T)                                                                                  \
  extern "C" void nxl_blas_##P##gemv(const char *t, const nxl_int *m, const nxl_int *n,             \
                                     const T *al, const T *a, const nxl_int *lda, const T *x,       \
                                     const nxl_int *ix, const T *be, T *y, const nxl_int *iy, int) { \
    gemv_shim(t, m, n, al, a, lda, x, ix, be, y, iy);                                              \
  }
SHIM(s, float)
SHIM(d, double)
SHIM(c, std::complex<float>)
SHIM(z, std::complex<double>)
