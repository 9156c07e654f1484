// Internal interfaces of the core services beyond nxl_serv.h: the message
// table, formatted printing, the environment one-time read, the memory
// manager's statistics and the version record.
#ifndef NXL_SERV_CORE_H
#define NXL_SERV_CORE_H

#include <stdint.h>
#include <stdio.h>

#include "service/nxl_serv.h"

#ifdef __cplusplus
extern "C" {
#endif

// ---------------------------------------------------------------------------
// Messages. Row i of the built-in table is message number i.
enum { NXL_MSGTAB_ROWS = 1431, NXL_MSG_BUFFER = 512 };
typedef struct {
  uint64_t id;        // low 32 bits: the number; high 32 bits: 4
  const char *text;
} nxl_msg_row;
extern const nxl_msg_row nxl_msgtab[NXL_MSGTAB_ROWS];

// Like nxl_serv_print with a caller-given format (and file).
void nxl_serv_format_print(int stream, const char *format, ...)
    __attribute__((format(printf, 2, 3)));
void nxl_serv_file_format_print(FILE *file, const char *format, ...)
    __attribute__((format(printf, 2, 3)));

// ---------------------------------------------------------------------------
// Memory manager.
size_t nxl_serv_mem_in_use(int *nbuffers);  // bytes and blocks held for callers
size_t nxl_serv_mem_held(int *nbuffers);    // the same plus cached blocks
void nxl_serv_free_buffers(void);           // release every cached block
void nxl_serv_thread_free_buffers(void);    // release the calling thread's cache
int nxl_serv_disable_fast_mm(void);
// mode 0 disable, 1 enable, 2 peak, 3 peak and reset; -1 when not enabled.
long long nxl_serv_peak_mem_usage(int mode);

// ---------------------------------------------------------------------------
// Version record.
typedef struct {
  int major, minor, update;
  const char *status;    // release status word
  const char *build;     // build date, YYYYMMDD
  const char *arch;      // architecture
  const char *os;        // operating system
} nxl_version_record;
const nxl_version_record *nxl_serv_version(void);

#ifdef __cplusplus
}
#endif

#endif  // NXL_SERV_CORE_H
