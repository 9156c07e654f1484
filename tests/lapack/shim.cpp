#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
// TEMPORARY test-only stand-ins for the level-2 BLAS dispatch functions that
// are not merged yet: each forwards to Debian's reference BLAS (loaded with
// dlopen). Removed once the real ones link.
#include <dlfcn.h>
#include <complex>
#include <cstddef>
#include <cstdlib>
#include "nxl_types.h"

static void *ref(const char *name) {
  static void *h = dlopen("/usr/lib/x86_64-linux-gnu/blas64/libblas64.so.3", RTLD_NOW | RTLD_LOCAL);
  void *f = h ? dlsym(h, name) : nullptr;
  if (!f) abort();
  return f;
}

extern "C" {
void nxl_blas_sgemv(const char* a0, const nxl_int* a1, const nxl_int* a2, const float* a3, const float* a4, const nxl_int* a5, const float* a6, const nxl_int* a7, const float* a8, float* a9, const nxl_int* a10, int) {
  using fn = void (*)(const char*, const nxl_int*, const nxl_int*, const float*, const float*, const nxl_int*, const float*, const nxl_int*, const float*, float*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("sgemv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, 1);
}
void nxl_blas_sgbmv(const char* a0, const nxl_int* a1, const nxl_int* a2, const nxl_int* a3, const nxl_int* a4, const float* a5, const float* a6, const nxl_int* a7, const float* a8, const nxl_int* a9, const float* a10, float* a11, const nxl_int* a12, int) {
  using fn = void (*)(const char*, const nxl_int*, const nxl_int*, const nxl_int*, const nxl_int*, const float*, const float*, const nxl_int*, const float*, const nxl_int*, const float*, float*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("sgbmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11, a12, 1);
}
void nxl_blas_ssymv(const char* a0, const nxl_int* a1, const float* a2, const float* a3, const nxl_int* a4, const float* a5, const nxl_int* a6, const float* a7, float* a8, const nxl_int* a9, int) {
  using fn = void (*)(const char*, const nxl_int*, const float*, const float*, const nxl_int*, const float*, const nxl_int*, const float*, float*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("ssymv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, 1);
}
void nxl_blas_ssbmv(const char* a0, const nxl_int* a1, const nxl_int* a2, const float* a3, const float* a4, const nxl_int* a5, const float* a6, const nxl_int* a7, const float* a8, float* a9, const nxl_int* a10, int) {
  using fn = void (*)(const char*, const nxl_int*, const nxl_int*, const float*, const float*, const nxl_int*, const float*, const nxl_int*, const float*, float*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("ssbmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, 1);
}
void nxl_blas_sspmv(const char* a0, const nxl_int* a1, const float* a2, const float* a3, const float* a4, const nxl_int* a5, const float* a6, float* a7, const nxl_int* a8, int) {
  using fn = void (*)(const char*, const nxl_int*, const float*, const float*, const float*, const nxl_int*, const float*, float*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("sspmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1);
}
void nxl_blas_strmv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const float* a4, const nxl_int* a5, float* a6, const nxl_int* a7, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const float*, const nxl_int*, float*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("strmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, 1, 1, 1);
}
void nxl_blas_stbmv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const nxl_int* a4, const float* a5, const nxl_int* a6, float* a7, const nxl_int* a8, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const nxl_int*, const float*, const nxl_int*, float*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("stbmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1, 1, 1);
}
void nxl_blas_stpmv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const float* a4, float* a5, const nxl_int* a6, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const float*, float*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("stpmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, 1, 1, 1);
}
void nxl_blas_strsv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const float* a4, const nxl_int* a5, float* a6, const nxl_int* a7, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const float*, const nxl_int*, float*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("strsv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, 1, 1, 1);
}
void nxl_blas_stbsv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const nxl_int* a4, const float* a5, const nxl_int* a6, float* a7, const nxl_int* a8, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const nxl_int*, const float*, const nxl_int*, float*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("stbsv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1, 1, 1);
}
void nxl_blas_stpsv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const float* a4, float* a5, const nxl_int* a6, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const float*, float*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("stpsv_"));
  f(a0, a1, a2, a3, a4, a5, a6, 1, 1, 1);
}
void nxl_blas_sger(const nxl_int* a0, const nxl_int* a1, const float* a2, const float* a3, const nxl_int* a4, const float* a5, const nxl_int* a6, float* a7, const nxl_int* a8) {
  using fn = void (*)(const nxl_int*, const nxl_int*, const float*, const float*, const nxl_int*, const float*, const nxl_int*, float*, const nxl_int*);
  static fn f = reinterpret_cast<fn>(ref("sger_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8);
}
void nxl_blas_ssyr(const char* a0, const nxl_int* a1, const float* a2, const float* a3, const nxl_int* a4, float* a5, const nxl_int* a6, int) {
  using fn = void (*)(const char*, const nxl_int*, const float*, const float*, const nxl_int*, float*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("ssyr_"));
  f(a0, a1, a2, a3, a4, a5, a6, 1);
}
void nxl_blas_ssyr2(const char* a0, const nxl_int* a1, const float* a2, const float* a3, const nxl_int* a4, const float* a5, const nxl_int* a6, float* a7, const nxl_int* a8, int) {
  using fn = void (*)(const char*, const nxl_int*, const float*, const float*, const nxl_int*, const float*, const nxl_int*, float*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("ssyr2_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1);
}
void nxl_blas_sspr(const char* a0, const nxl_int* a1, const float* a2, const float* a3, const nxl_int* a4, float* a5, int) {
  using fn = void (*)(const char*, const nxl_int*, const float*, const float*, const nxl_int*, float*, size_t);
  static fn f = reinterpret_cast<fn>(ref("sspr_"));
  f(a0, a1, a2, a3, a4, a5, 1);
}
void nxl_blas_sspr2(const char* a0, const nxl_int* a1, const float* a2, const float* a3, const nxl_int* a4, const float* a5, const nxl_int* a6, float* a7, int) {
  using fn = void (*)(const char*, const nxl_int*, const float*, const float*, const nxl_int*, const float*, const nxl_int*, float*, size_t);
  static fn f = reinterpret_cast<fn>(ref("sspr2_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, 1);
}
void nxl_blas_dgemv(const char* a0, const nxl_int* a1, const nxl_int* a2, const double* a3, const double* a4, const nxl_int* a5, const double* a6, const nxl_int* a7, const double* a8, double* a9, const nxl_int* a10, int) {
  using fn = void (*)(const char*, const nxl_int*, const nxl_int*, const double*, const double*, const nxl_int*, const double*, const nxl_int*, const double*, double*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("dgemv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, 1);
}
void nxl_blas_dgbmv(const char* a0, const nxl_int* a1, const nxl_int* a2, const nxl_int* a3, const nxl_int* a4, const double* a5, const double* a6, const nxl_int* a7, const double* a8, const nxl_int* a9, const double* a10, double* a11, const nxl_int* a12, int) {
  using fn = void (*)(const char*, const nxl_int*, const nxl_int*, const nxl_int*, const nxl_int*, const double*, const double*, const nxl_int*, const double*, const nxl_int*, const double*, double*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("dgbmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11, a12, 1);
}
void nxl_blas_dsymv(const char* a0, const nxl_int* a1, const double* a2, const double* a3, const nxl_int* a4, const double* a5, const nxl_int* a6, const double* a7, double* a8, const nxl_int* a9, int) {
  using fn = void (*)(const char*, const nxl_int*, const double*, const double*, const nxl_int*, const double*, const nxl_int*, const double*, double*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("dsymv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, 1);
}
void nxl_blas_dsbmv(const char* a0, const nxl_int* a1, const nxl_int* a2, const double* a3, const double* a4, const nxl_int* a5, const double* a6, const nxl_int* a7, const double* a8, double* a9, const nxl_int* a10, int) {
  using fn = void (*)(const char*, const nxl_int*, const nxl_int*, const double*, const double*, const nxl_int*, const double*, const nxl_int*, const double*, double*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("dsbmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, 1);
}
void nxl_blas_dspmv(const char* a0, const nxl_int* a1, const double* a2, const double* a3, const double* a4, const nxl_int* a5, const double* a6, double* a7, const nxl_int* a8, int) {
  using fn = void (*)(const char*, const nxl_int*, const double*, const double*, const double*, const nxl_int*, const double*, double*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("dspmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1);
}
void nxl_blas_dtrmv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const double* a4, const nxl_int* a5, double* a6, const nxl_int* a7, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const double*, const nxl_int*, double*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("dtrmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, 1, 1, 1);
}
void nxl_blas_dtbmv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const nxl_int* a4, const double* a5, const nxl_int* a6, double* a7, const nxl_int* a8, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const nxl_int*, const double*, const nxl_int*, double*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("dtbmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1, 1, 1);
}
void nxl_blas_dtpmv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const double* a4, double* a5, const nxl_int* a6, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const double*, double*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("dtpmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, 1, 1, 1);
}
void nxl_blas_dtrsv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const double* a4, const nxl_int* a5, double* a6, const nxl_int* a7, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const double*, const nxl_int*, double*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("dtrsv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, 1, 1, 1);
}
void nxl_blas_dtbsv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const nxl_int* a4, const double* a5, const nxl_int* a6, double* a7, const nxl_int* a8, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const nxl_int*, const double*, const nxl_int*, double*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("dtbsv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1, 1, 1);
}
void nxl_blas_dtpsv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const double* a4, double* a5, const nxl_int* a6, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const double*, double*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("dtpsv_"));
  f(a0, a1, a2, a3, a4, a5, a6, 1, 1, 1);
}
void nxl_blas_dger(const nxl_int* a0, const nxl_int* a1, const double* a2, const double* a3, const nxl_int* a4, const double* a5, const nxl_int* a6, double* a7, const nxl_int* a8) {
  using fn = void (*)(const nxl_int*, const nxl_int*, const double*, const double*, const nxl_int*, const double*, const nxl_int*, double*, const nxl_int*);
  static fn f = reinterpret_cast<fn>(ref("dger_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8);
}
void nxl_blas_dsyr(const char* a0, const nxl_int* a1, const double* a2, const double* a3, const nxl_int* a4, double* a5, const nxl_int* a6, int) {
  using fn = void (*)(const char*, const nxl_int*, const double*, const double*, const nxl_int*, double*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("dsyr_"));
  f(a0, a1, a2, a3, a4, a5, a6, 1);
}
void nxl_blas_dsyr2(const char* a0, const nxl_int* a1, const double* a2, const double* a3, const nxl_int* a4, const double* a5, const nxl_int* a6, double* a7, const nxl_int* a8, int) {
  using fn = void (*)(const char*, const nxl_int*, const double*, const double*, const nxl_int*, const double*, const nxl_int*, double*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("dsyr2_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1);
}
void nxl_blas_dspr(const char* a0, const nxl_int* a1, const double* a2, const double* a3, const nxl_int* a4, double* a5, int) {
  using fn = void (*)(const char*, const nxl_int*, const double*, const double*, const nxl_int*, double*, size_t);
  static fn f = reinterpret_cast<fn>(ref("dspr_"));
  f(a0, a1, a2, a3, a4, a5, 1);
}
void nxl_blas_dspr2(const char* a0, const nxl_int* a1, const double* a2, const double* a3, const nxl_int* a4, const double* a5, const nxl_int* a6, double* a7, int) {
  using fn = void (*)(const char*, const nxl_int*, const double*, const double*, const nxl_int*, const double*, const nxl_int*, double*, size_t);
  static fn f = reinterpret_cast<fn>(ref("dspr2_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, 1);
}
void nxl_blas_cgemv(const char* a0, const nxl_int* a1, const nxl_int* a2, const std::complex<float>* a3, const std::complex<float>* a4, const nxl_int* a5, const std::complex<float>* a6, const nxl_int* a7, const std::complex<float>* a8, std::complex<float>* a9, const nxl_int* a10, int) {
  using fn = void (*)(const char*, const nxl_int*, const nxl_int*, const std::complex<float>*, const std::complex<float>*, const nxl_int*, const std::complex<float>*, const nxl_int*, const std::complex<float>*, std::complex<float>*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("cgemv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, 1);
}
void nxl_blas_cgbmv(const char* a0, const nxl_int* a1, const nxl_int* a2, const nxl_int* a3, const nxl_int* a4, const std::complex<float>* a5, const std::complex<float>* a6, const nxl_int* a7, const std::complex<float>* a8, const nxl_int* a9, const std::complex<float>* a10, std::complex<float>* a11, const nxl_int* a12, int) {
  using fn = void (*)(const char*, const nxl_int*, const nxl_int*, const nxl_int*, const nxl_int*, const std::complex<float>*, const std::complex<float>*, const nxl_int*, const std::complex<float>*, const nxl_int*, const std::complex<float>*, std::complex<float>*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("cgbmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11, a12, 1);
}
void nxl_blas_chemv(const char* a0, const nxl_int* a1, const std::complex<float>* a2, const std::complex<float>* a3, const nxl_int* a4, const std::complex<float>* a5, const nxl_int* a6, const std::complex<float>* a7, std::complex<float>* a8, const nxl_int* a9, int) {
  using fn = void (*)(const char*, const nxl_int*, const std::complex<float>*, const std::complex<float>*, const nxl_int*, const std::complex<float>*, const nxl_int*, const std::complex<float>*, std::complex<float>*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("chemv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, 1);
}
void nxl_blas_chbmv(const char* a0, const nxl_int* a1, const nxl_int* a2, const std::complex<float>* a3, const std::complex<float>* a4, const nxl_int* a5, const std::complex<float>* a6, const nxl_int* a7, const std::complex<float>* a8, std::complex<float>* a9, const nxl_int* a10, int) {
  using fn = void (*)(const char*, const nxl_int*, const nxl_int*, const std::complex<float>*, const std::complex<float>*, const nxl_int*, const std::complex<float>*, const nxl_int*, const std::complex<float>*, std::complex<float>*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("chbmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, 1);
}
void nxl_blas_chpmv(const char* a0, const nxl_int* a1, const std::complex<float>* a2, const std::complex<float>* a3, const std::complex<float>* a4, const nxl_int* a5, const std::complex<float>* a6, std::complex<float>* a7, const nxl_int* a8, int) {
  using fn = void (*)(const char*, const nxl_int*, const std::complex<float>*, const std::complex<float>*, const std::complex<float>*, const nxl_int*, const std::complex<float>*, std::complex<float>*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("chpmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1);
}
void nxl_blas_ctrmv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const std::complex<float>* a4, const nxl_int* a5, std::complex<float>* a6, const nxl_int* a7, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const std::complex<float>*, const nxl_int*, std::complex<float>*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("ctrmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, 1, 1, 1);
}
void nxl_blas_ctbmv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const nxl_int* a4, const std::complex<float>* a5, const nxl_int* a6, std::complex<float>* a7, const nxl_int* a8, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const nxl_int*, const std::complex<float>*, const nxl_int*, std::complex<float>*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("ctbmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1, 1, 1);
}
void nxl_blas_ctpmv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const std::complex<float>* a4, std::complex<float>* a5, const nxl_int* a6, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const std::complex<float>*, std::complex<float>*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("ctpmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, 1, 1, 1);
}
void nxl_blas_ctrsv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const std::complex<float>* a4, const nxl_int* a5, std::complex<float>* a6, const nxl_int* a7, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const std::complex<float>*, const nxl_int*, std::complex<float>*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("ctrsv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, 1, 1, 1);
}
void nxl_blas_ctbsv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const nxl_int* a4, const std::complex<float>* a5, const nxl_int* a6, std::complex<float>* a7, const nxl_int* a8, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const nxl_int*, const std::complex<float>*, const nxl_int*, std::complex<float>*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("ctbsv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1, 1, 1);
}
void nxl_blas_ctpsv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const std::complex<float>* a4, std::complex<float>* a5, const nxl_int* a6, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const std::complex<float>*, std::complex<float>*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("ctpsv_"));
  f(a0, a1, a2, a3, a4, a5, a6, 1, 1, 1);
}
void nxl_blas_cgeru(const nxl_int* a0, const nxl_int* a1, const std::complex<float>* a2, const std::complex<float>* a3, const nxl_int* a4, const std::complex<float>* a5, const nxl_int* a6, std::complex<float>* a7, const nxl_int* a8) {
  using fn = void (*)(const nxl_int*, const nxl_int*, const std::complex<float>*, const std::complex<float>*, const nxl_int*, const std::complex<float>*, const nxl_int*, std::complex<float>*, const nxl_int*);
  static fn f = reinterpret_cast<fn>(ref("cgeru_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8);
}
void nxl_blas_cgerc(const nxl_int* a0, const nxl_int* a1, const std::complex<float>* a2, const std::complex<float>* a3, const nxl_int* a4, const std::complex<float>* a5, const nxl_int* a6, std::complex<float>* a7, const nxl_int* a8) {
  using fn = void (*)(const nxl_int*, const nxl_int*, const std::complex<float>*, const std::complex<float>*, const nxl_int*, const std::complex<float>*, const nxl_int*, std::complex<float>*, const nxl_int*);
  static fn f = reinterpret_cast<fn>(ref("cgerc_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8);
}
void nxl_blas_cher(const char* a0, const nxl_int* a1, const float* a2, const std::complex<float>* a3, const nxl_int* a4, std::complex<float>* a5, const nxl_int* a6, int) {
  using fn = void (*)(const char*, const nxl_int*, const float*, const std::complex<float>*, const nxl_int*, std::complex<float>*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("cher_"));
  f(a0, a1, a2, a3, a4, a5, a6, 1);
}
void nxl_blas_cher2(const char* a0, const nxl_int* a1, const std::complex<float>* a2, const std::complex<float>* a3, const nxl_int* a4, const std::complex<float>* a5, const nxl_int* a6, std::complex<float>* a7, const nxl_int* a8, int) {
  using fn = void (*)(const char*, const nxl_int*, const std::complex<float>*, const std::complex<float>*, const nxl_int*, const std::complex<float>*, const nxl_int*, std::complex<float>*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("cher2_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1);
}
void nxl_blas_chpr(const char* a0, const nxl_int* a1, const float* a2, const std::complex<float>* a3, const nxl_int* a4, std::complex<float>* a5, int) {
  using fn = void (*)(const char*, const nxl_int*, const float*, const std::complex<float>*, const nxl_int*, std::complex<float>*, size_t);
  static fn f = reinterpret_cast<fn>(ref("chpr_"));
  f(a0, a1, a2, a3, a4, a5, 1);
}
void nxl_blas_chpr2(const char* a0, const nxl_int* a1, const std::complex<float>* a2, const std::complex<float>* a3, const nxl_int* a4, const std::complex<float>* a5, const nxl_int* a6, std::complex<float>* a7, int) {
  using fn = void (*)(const char*, const nxl_int*, const std::complex<float>*, const std::complex<float>*, const nxl_int*, const std::complex<float>*, const nxl_int*, std::complex<float>*, size_t);
  static fn f = reinterpret_cast<fn>(ref("chpr2_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, 1);
}
void nxl_blas_zgemv(const char* a0, const nxl_int* a1, const nxl_int* a2, const std::complex<double>* a3, const std::complex<double>* a4, const nxl_int* a5, const std::complex<double>* a6, const nxl_int* a7, const std::complex<double>* a8, std::complex<double>* a9, const nxl_int* a10, int) {
  using fn = void (*)(const char*, const nxl_int*, const nxl_int*, const std::complex<double>*, const std::complex<double>*, const nxl_int*, const std::complex<double>*, const nxl_int*, const std::complex<double>*, std::complex<double>*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("zgemv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, 1);
}
void nxl_blas_zgbmv(const char* a0, const nxl_int* a1, const nxl_int* a2, const nxl_int* a3, const nxl_int* a4, const std::complex<double>* a5, const std::complex<double>* a6, const nxl_int* a7, const std::complex<double>* a8, const nxl_int* a9, const std::complex<double>* a10, std::complex<double>* a11, const nxl_int* a12, int) {
  using fn = void (*)(const char*, const nxl_int*, const nxl_int*, const nxl_int*, const nxl_int*, const std::complex<double>*, const std::complex<double>*, const nxl_int*, const std::complex<double>*, const nxl_int*, const std::complex<double>*, std::complex<double>*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("zgbmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11, a12, 1);
}
void nxl_blas_zhemv(const char* a0, const nxl_int* a1, const std::complex<double>* a2, const std::complex<double>* a3, const nxl_int* a4, const std::complex<double>* a5, const nxl_int* a6, const std::complex<double>* a7, std::complex<double>* a8, const nxl_int* a9, int) {
  using fn = void (*)(const char*, const nxl_int*, const std::complex<double>*, const std::complex<double>*, const nxl_int*, const std::complex<double>*, const nxl_int*, const std::complex<double>*, std::complex<double>*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("zhemv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, 1);
}
void nxl_blas_zhbmv(const char* a0, const nxl_int* a1, const nxl_int* a2, const std::complex<double>* a3, const std::complex<double>* a4, const nxl_int* a5, const std::complex<double>* a6, const nxl_int* a7, const std::complex<double>* a8, std::complex<double>* a9, const nxl_int* a10, int) {
  using fn = void (*)(const char*, const nxl_int*, const nxl_int*, const std::complex<double>*, const std::complex<double>*, const nxl_int*, const std::complex<double>*, const nxl_int*, const std::complex<double>*, std::complex<double>*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("zhbmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, 1);
}
void nxl_blas_zhpmv(const char* a0, const nxl_int* a1, const std::complex<double>* a2, const std::complex<double>* a3, const std::complex<double>* a4, const nxl_int* a5, const std::complex<double>* a6, std::complex<double>* a7, const nxl_int* a8, int) {
  using fn = void (*)(const char*, const nxl_int*, const std::complex<double>*, const std::complex<double>*, const std::complex<double>*, const nxl_int*, const std::complex<double>*, std::complex<double>*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("zhpmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1);
}
void nxl_blas_ztrmv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const std::complex<double>* a4, const nxl_int* a5, std::complex<double>* a6, const nxl_int* a7, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const std::complex<double>*, const nxl_int*, std::complex<double>*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("ztrmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, 1, 1, 1);
}
void nxl_blas_ztbmv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const nxl_int* a4, const std::complex<double>* a5, const nxl_int* a6, std::complex<double>* a7, const nxl_int* a8, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const nxl_int*, const std::complex<double>*, const nxl_int*, std::complex<double>*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("ztbmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1, 1, 1);
}
void nxl_blas_ztpmv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const std::complex<double>* a4, std::complex<double>* a5, const nxl_int* a6, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const std::complex<double>*, std::complex<double>*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("ztpmv_"));
  f(a0, a1, a2, a3, a4, a5, a6, 1, 1, 1);
}
void nxl_blas_ztrsv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const std::complex<double>* a4, const nxl_int* a5, std::complex<double>* a6, const nxl_int* a7, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const std::complex<double>*, const nxl_int*, std::complex<double>*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("ztrsv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, 1, 1, 1);
}
void nxl_blas_ztbsv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const nxl_int* a4, const std::complex<double>* a5, const nxl_int* a6, std::complex<double>* a7, const nxl_int* a8, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const nxl_int*, const std::complex<double>*, const nxl_int*, std::complex<double>*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("ztbsv_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1, 1, 1);
}
void nxl_blas_ztpsv(const char* a0, const char* a1, const char* a2, const nxl_int* a3, const std::complex<double>* a4, std::complex<double>* a5, const nxl_int* a6, int, int, int) {
  using fn = void (*)(const char*, const char*, const char*, const nxl_int*, const std::complex<double>*, std::complex<double>*, const nxl_int*, size_t, size_t, size_t);
  static fn f = reinterpret_cast<fn>(ref("ztpsv_"));
  f(a0, a1, a2, a3, a4, a5, a6, 1, 1, 1);
}
void nxl_blas_zgeru(const nxl_int* a0, const nxl_int* a1, const std::complex<double>* a2, const std::complex<double>* a3, const nxl_int* a4, const std::complex<double>* a5, const nxl_int* a6, std::complex<double>* a7, const nxl_int* a8) {
  using fn = void (*)(const nxl_int*, const nxl_int*, const std::complex<double>*, const std::complex<double>*, const nxl_int*, const std::complex<double>*, const nxl_int*, std::complex<double>*, const nxl_int*);
  static fn f = reinterpret_cast<fn>(ref("zgeru_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8);
}
void nxl_blas_zgerc(const nxl_int* a0, const nxl_int* a1, const std::complex<double>* a2, const std::complex<double>* a3, const nxl_int* a4, const std::complex<double>* a5, const nxl_int* a6, std::complex<double>* a7, const nxl_int* a8) {
  using fn = void (*)(const nxl_int*, const nxl_int*, const std::complex<double>*, const std::complex<double>*, const nxl_int*, const std::complex<double>*, const nxl_int*, std::complex<double>*, const nxl_int*);
  static fn f = reinterpret_cast<fn>(ref("zgerc_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8);
}
void nxl_blas_zher(const char* a0, const nxl_int* a1, const double* a2, const std::complex<double>* a3, const nxl_int* a4, std::complex<double>* a5, const nxl_int* a6, int) {
  using fn = void (*)(const char*, const nxl_int*, const double*, const std::complex<double>*, const nxl_int*, std::complex<double>*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("zher_"));
  f(a0, a1, a2, a3, a4, a5, a6, 1);
}
void nxl_blas_zher2(const char* a0, const nxl_int* a1, const std::complex<double>* a2, const std::complex<double>* a3, const nxl_int* a4, const std::complex<double>* a5, const nxl_int* a6, std::complex<double>* a7, const nxl_int* a8, int) {
  using fn = void (*)(const char*, const nxl_int*, const std::complex<double>*, const std::complex<double>*, const nxl_int*, const std::complex<double>*, const nxl_int*, std::complex<double>*, const nxl_int*, size_t);
  static fn f = reinterpret_cast<fn>(ref("zher2_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, a8, 1);
}
void nxl_blas_zhpr(const char* a0, const nxl_int* a1, const double* a2, const std::complex<double>* a3, const nxl_int* a4, std::complex<double>* a5, int) {
  using fn = void (*)(const char*, const nxl_int*, const double*, const std::complex<double>*, const nxl_int*, std::complex<double>*, size_t);
  static fn f = reinterpret_cast<fn>(ref("zhpr_"));
  f(a0, a1, a2, a3, a4, a5, 1);
}
void nxl_blas_zhpr2(const char* a0, const nxl_int* a1, const std::complex<double>* a2, const std::complex<double>* a3, const nxl_int* a4, const std::complex<double>* a5, const nxl_int* a6, std::complex<double>* a7, int) {
  using fn = void (*)(const char*, const nxl_int*, const std::complex<double>*, const std::complex<double>*, const nxl_int*, const std::complex<double>*, const nxl_int*, std::complex<double>*, size_t);
  static fn f = reinterpret_cast<fn>(ref("zhpr2_"));
  f(a0, a1, a2, a3, a4, a5, a6, a7, 1);
}
}
