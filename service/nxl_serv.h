// Internal interfaces of the runtime services, shared by every subsystem:
// processor detection and code-path selection, reproducibility mode, error
// reporting and messages, environment and thread controls, call tracing,
// spin locks and the memory manager. None of these names is exported.
#ifndef NXL_SERV_H
#define NXL_SERV_H

#include <stddef.h>
#include <stdint.h>
#include "nxl_types.h"

#ifdef __cplusplus
extern "C" {
#endif

// ---------------------------------------------------------------------------
// Spin locks (a test-and-test-and-set lock that yields while it waits).
typedef volatile int nxl_serv_lock_t;
void nxl_serv_lock(nxl_serv_lock_t *lock);
void nxl_serv_unlock(nxl_serv_lock_t *lock);
extern nxl_serv_lock_t NXL_Detect_Cpu_Global_Lock;

// ---------------------------------------------------------------------------
// Processor detection and code-path selection.
enum {
  NXL_CP_DEF = 0, NXL_CP_MC = 2, NXL_CP_MC3 = 3, NXL_CP_AVX = 4,
  NXL_CP_AVX2 = 5, NXL_CP_AVX512_MIC = 6, NXL_CP_AVX512 = 7
};
int nxl_serv_cpu_detect(void);            // code-path number 0..7
int nxl_serv_get_cpu_type(int real);      // 0: cached path (-1 before); else the level 0..14
int nxl_serv_enable_instructions(int level);
int nxl_serv_is_sse4_2_enabled(void);
int nxl_serv_is_avx_enabled(void);
int nxl_serv_is_avx2_enabled(void);
int nxl_serv_is_avx512_enabled(void);
int nxl_serv_is_avx512_mic_enabled(void);
int nxl_serv_ortex_cpu_true(void);
int nxl_serv_ortex_cpu(void);
unsigned long long nxl_serv_cpu_features(void);   // the feature word
const char *nxl_serv_cpu_level_name(int level);   // display name of a level
double nxl_serv_get_max_cpu_frequency(void);      // GHz

// ---------------------------------------------------------------------------
// Reproducibility mode.
enum {
  NXL_CBWR_OFF = 1, NXL_CBWR_AUTO = 2, NXL_CBWR_COMPATIBLE = 3,
  NXL_CBWR_SSE2 = 4, NXL_CBWR_SSSE3 = 6, NXL_CBWR_SSE4_1 = 7,
  NXL_CBWR_SSE4_2 = 8, NXL_CBWR_AVX = 9, NXL_CBWR_AVX2 = 10,
  NXL_CBWR_AVX512_MIC = 11, NXL_CBWR_AVX512 = 12,
  NXL_CBWR_AVX512_MIC_E1 = 13, NXL_CBWR_AVX512_E1 = 14,
  NXL_CBWR_STRICT = 0x10000
};
int nxl_serv_cbwr_get(int what);          // 1: branch; -1: whole value
int nxl_serv_cbwr_get_nolock(int what);
int nxl_serv_cbwr_set(int value);
int nxl_serv_cbwr_get_auto_branch(void);

// ---------------------------------------------------------------------------
// Error reporting, messages, exit hook, progress.
typedef void (*nxl_xerbla_fn)(const char *name, const nxl_int *info, int len);
typedef int (*nxl_progress_fn)(const nxl_int *thread, const nxl_int *step,
                               const char *stage, nxl_int len);

void nxl_serv_xerbla(const char *name, const nxl_int *info, int len);
void nxl_serv_iface_xerbla(const char *name, const nxl_int *info, int len);
void nxl_serv_default_xerbla(const char *name, const nxl_int *info, int len);
nxl_xerbla_fn nxl_serv_set_xerbla(nxl_xerbla_fn handler);
void nxl_set_xerbla_interface(nxl_xerbla_fn handler);
void cdecl_xerbla(const char *name, const nxl_int *info, int len);
void cblas_xerbla(const char *name, int position);
void cblas_xerbla_malloc_error(const char *name);
int nxl_serv_check_ptr(const void *pointer, const char *name);
int nxl_serv_check_ptr_and_warn(const void *pointer, const char *name);

const char *nxl_serv_get_msg(int number, int nargs, ...);
void nxl_serv_print(int stream, int number, int nargs, ...);

void nxl_serv_exit(int code);
void nxl_serv_set_exit_handler(void (*hook)(int));

int nxl_serv_progress(const nxl_int *thread, const nxl_int *step,
                      const char *stage, nxl_int stage_len);
int nxl_serv_default_progress(const nxl_int *thread, const nxl_int *step,
                              const char *stage, nxl_int stage_len);
nxl_progress_fn nxl_serv_set_progress(nxl_progress_fn fn);
void nxl_serv_set_progress_interface(nxl_progress_fn fn);
int cdecl_progress(const nxl_int *thread, const nxl_int *step,
                   const char *stage, nxl_int stage_len);

size_t nxl_serv_strnlen_s(const char *s, size_t max);
int nxl_serv_snprintf_s(char *buffer, size_t size, size_t max, const char *format, ...)
    __attribute__((format(printf, 4, 5)));

// Case-insensitive comparison of one character flag.
int nxl_serv_lsame(const char *a, const char *b, int la, int lb);

// ---------------------------------------------------------------------------
// Environment and thread controls.
int nxl_serv_getenv(const char *name, char *buffer, int size);
void nxl_serv_set_envmode_variable(int mode);
int nxl_serv_get_envmode_variable(void);
void nxl_serv_set_num_threads(int n);
int nxl_serv_domain_set_num_threads(int n, int domain);
int nxl_serv_set_num_threads_local(int n);
void nxl_serv_set_dynamic(int flag);
int nxl_serv_get_dynamic(void);
int nxl_serv_get_max_threads(void);
int nxl_serv_domain_get_max_threads(int domain);
void nxl_serv_set_num_stripes(int n);
int nxl_serv_get_num_stripes(void);
int nxl_serv_get_ncpus(void);
int nxl_serv_get_ncorespercpu(void);
int nxl_serv_get_ht(void);
int nxl_serv_get_nlogicalcores(void);
int nxl_serv_get_nphysicalcores(void);
int nxl_serv_mpi_get_ppn(void);
void nxl_serv_mpi_safe(int flag);
int nxl_serv_omp_in_parallel(void);
nxl_int nxl_serv_divbythreads(const nxl_int *ithr, const nxl_int *nthr,
                              const nxl_int *n, nxl_int *len);
nxl_int nxl_serv_divbythreadsnb(const nxl_int *ithr, const nxl_int *nthr,
                                const nxl_int *n, const nxl_int *nb, nxl_int *len);
nxl_int nxl_serv_divbythreadstr(const nxl_int *ithr, const nxl_int *nthr,
                                const nxl_int *n, const char *uplo, nxl_int *len);

// ---------------------------------------------------------------------------
// Call tracing.
int nxl_serv_verbose_mode(void);
int *nxl_serv_iface_verbose_mode(void);   // address of the mode word
int nxl_serv_verbose(int mode);
int nxl_serv_verbose_output_file(const char *name);
const char *nxl_serv_verbose_output_file_mode(void);
void nxl_serv_print_verbose_info(int kind, const char *text, double seconds);
void nxl_serv_iface_print_verbose_info(int kind, const char *text, double seconds);
double nxl_serv_dsecnd(void);
double nxl_serv_iface_dsecnd(void);

// ---------------------------------------------------------------------------
// Memory manager: blocks of at least `bytes` aligned to `alignment` (a power
// of two), or null when memory is exhausted.
void *nxl_serv_allocate(size_t bytes, int alignment);
void nxl_serv_deallocate(void *pointer);
int nxl_serv_fast_mm_status(void);        // 0 when buffer reuse is active

#ifdef __cplusplus
}
#endif

#endif  // NXL_SERV_H
