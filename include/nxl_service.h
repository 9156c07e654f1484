/* NXL service functions: thread controls, error handling and progress,
 * the memory manager and the version.
 *
 * Every exported service function has two spellings, nxl_name and nxl_name_,
 * which are one and the same entry with the Fortran calling convention:
 * every argument is passed by address, integers are 64-bit.
 *
 * Environment variables, read once at first use (an API call made earlier
 * wins; one made later overwrites):
 *   NXL_NUM_THREADS         threads for every domain (digits; other text = 1)
 *   NXL_DOMAIN_NUM_THREADS  per domain, e.g. "NXL_DOMAIN_ALL=2, NXL_DOMAIN_BLAS=4"
 *   NXL_DYNAMIC             "FALSE"/"false" keeps the counts as given; otherwise
 *                           the library caps them at the physical cores and uses
 *                           one thread inside the caller's parallel regions
 *   OMP_NUM_THREADS         the OpenMP default when nothing else is set
 *   NXL_NUM_STRIPES         stripe count of the level-3 drivers
 *   NXL_MPI_PPN (or the MPI runtime's processes-per-node variables),
 *   O_MPI_THREAD_LEVEL      threads per process of an MPI run
 *   NXL_VERBOSE=1           one trace line per call;
 *   NXL_VERBOSE_OUTPUT_FILE appended to this file instead of standard output
 *   NXL_DISABLE_FAST_MM     any value but 0: no reuse of work buffers
 *   NXL_FAST_MEMORY_LIMIT   megabytes the memory manager may hold
 *   LANG, NLSPATH           locate the message catalog nxl_msg.cat */
#ifndef NXL_SERVICE_H
#define NXL_SERVICE_H

#include "nxl_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Thread-control domains. */
#define NXL_DOMAIN_ALL     0
#define NXL_DOMAIN_BLAS    1
#define NXL_DOMAIN_FFT     2
#define NXL_DOMAIN_VML     3
#define NXL_DOMAIN_PARDISO 4

/* Thread controls. An API setting overrides NXL_NUM_THREADS, which
 * overrides OMP_NUM_THREADS; a per-calling-thread count overrides all. */
NXL_API void    nxl_set_num_threads(const nxl_int *n);
NXL_API void    nxl_set_num_threads_(const nxl_int *n);
NXL_API nxl_int nxl_set_num_threads_local(const nxl_int *n);
NXL_API nxl_int nxl_set_num_threads_local_(const nxl_int *n);
NXL_API nxl_int nxl_get_max_threads(void);
NXL_API nxl_int nxl_get_max_threads_(void);
NXL_API nxl_int nxl_domain_set_num_threads(const nxl_int *n, const nxl_int *domain);
NXL_API nxl_int nxl_domain_set_num_threads_(const nxl_int *n, const nxl_int *domain);
NXL_API nxl_int nxl_domain_get_max_threads(const nxl_int *domain);
NXL_API nxl_int nxl_domain_get_max_threads_(const nxl_int *domain);
NXL_API void    nxl_set_dynamic(const nxl_int *flag);
NXL_API void    nxl_set_dynamic_(const nxl_int *flag);
NXL_API nxl_int nxl_get_dynamic(void);
NXL_API nxl_int nxl_get_dynamic_(void);

/* The default error handler of BLAS and LAPACK: prints the report and
 * returns. An application that defines its own xerbla or xerbla_ receives
 * every report of the library instead. The name is not terminated; the
 * trailing length is the name's length. */
NXL_API void xerbla(const char *name, const nxl_int *info, int len);
NXL_API void xerbla_(const char *name, const nxl_int *info, int len);

/* The default progress function of long factorizations: returns 0 (go on).
 * An application that defines nxl_progress_ is called instead, after each
 * stage; a nonzero result stops the factorization (info = -1002). */
NXL_API int nxl_progress(const nxl_int *thread, const nxl_int *step, const char *stage, nxl_int len);
NXL_API int nxl_progress_(const nxl_int *thread, const nxl_int *step, const char *stage, nxl_int len);

/* Memory manager. Work areas of the library are cached per thread and
 * reused; these release them and report the manager's usage. */
NXL_API void    nxl_free_buffers(void);          /* release every cached buffer */
NXL_API void    nxl_free_buffers_(void);
NXL_API void    nxl_thread_free_buffers(void);   /* the calling thread's cache only */
NXL_API void    nxl_thread_free_buffers_(void);
/* Turns buffer reuse off for the rest of the run; returns 1. */
NXL_API nxl_int nxl_disable_fast_mm(void);
NXL_API nxl_int nxl_disable_fast_mm_(void);
/* Bytes the manager holds (buffers in use and cached); *nbuffers receives
 * their number. */
NXL_API nxl_int nxl_get_mem_stat(nxl_int *nbuffers);
NXL_API nxl_int nxl_get_mem_stat_(nxl_int *nbuffers);
/* Peak usage: *mode 0 stops, 1 starts tracking (returning 0); 2 returns the
 * peak in bytes, 3 returns it and restarts from the current usage; -1 when
 * tracking is off or the mode is unknown. */
#define NXL_PEAK_MEM_DISABLE 0
#define NXL_PEAK_MEM_ENABLE  1
#define NXL_PEAK_MEM         2
#define NXL_PEAK_MEM_RESET   3
NXL_API nxl_int nxl_get_peak_mem_usage(const nxl_int *mode);
NXL_API nxl_int nxl_get_peak_mem_usage_(const nxl_int *mode);

/* Version: writes "Ortex(R) NXL <major>.<minor> Update <n> build <date> for
 * x86-64 Linux" into buf[0..*len), NUL-terminated, the rest blank-filled. */
NXL_API void    nxl_get_version_string(char *buf, const nxl_int *len);
NXL_API void    nxl_get_version_string_(char *buf, const nxl_int *len);

/* Processor detection and reproducibility.
 *
 * nxl_get_code_path: the code path the library runs, chosen once per process:
 * 0 generic SSE2, 2 SSSE3, 3 SSE4.2, 4 AVX, 5 AVX2, 6 AVX-512 for many-core
 * processors, 7 AVX-512.
 * nxl_get_cpu_level: the processor's detection level (0-14), with the
 * instruction cap of NXL_ENABLE_INSTRUCTIONS applied.
 * nxl_get_cpu_name: the display name of the running level, NUL-terminated and
 * cut to fit *buflen bytes.
 * nxl_get_cbwr_branch: the reproducibility branch (1 OFF, 2 AUTO,
 * 3 COMPATIBLE, 4 SSE2, 6 SSSE3, 7 SSE4_1, 8 SSE4_2, 9 AVX, 10 AVX2,
 * 11 AVX512_MIC, 12 AVX512, 13 AVX512_MIC_E1, 14 AVX512_E1).
 * nxl_set_cbwr_branch: sets it before the first computation (0x10000 added
 * asks for STRICT); returns 0 on success, -2 for an unknown value, -3 for a
 * branch this processor cannot run, -8 once the code path is chosen. */
#define NXL_CBWR_STRICT_FLAG 0x10000
NXL_API nxl_int nxl_get_code_path(void);
NXL_API nxl_int nxl_get_code_path_(void);
NXL_API nxl_int nxl_get_cpu_level(void);
NXL_API nxl_int nxl_get_cpu_level_(void);
NXL_API void    nxl_get_cpu_name(char *buf, const nxl_int *buflen);
NXL_API void    nxl_get_cpu_name_(char *buf, const nxl_int *buflen);
NXL_API nxl_int nxl_get_cbwr_branch(void);
NXL_API nxl_int nxl_get_cbwr_branch_(void);
NXL_API nxl_int nxl_set_cbwr_branch(const nxl_int *value);
NXL_API nxl_int nxl_set_cbwr_branch_(const nxl_int *value);

#ifdef __cplusplus
}
#endif

#endif /* NXL_SERVICE_H */
