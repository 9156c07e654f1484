// Reproducibility mode: the instruction-set branch the library is pinned to
// (NXL_CBWR or nxl_serv_cbwr_set), decided once before the code path is
// selected and frozen with it.
#include <string.h>

#include "service/cpu.h"
#include "service/fortran.h"
#include "nxl_service.h"

extern "C" {

volatile int nxl_cbwr = -1;

const nxl_cbwr_option cbwr_options_list[14] = {
    {"AUTO", NXL_CBWR_AUTO},
    {"COMPATIBLE", NXL_CBWR_COMPATIBLE},
    {"SSE2", NXL_CBWR_SSE2},
    {"SSE3", NXL_CBWR_SSE2},   // the same branch as SSE2
    {"SSSE3", NXL_CBWR_SSSE3},
    {"SSE4_1", NXL_CBWR_SSE4_1},
    {"SSE4_2", NXL_CBWR_SSE4_2},
    {"AVX", NXL_CBWR_AVX},
    {"AVX2", NXL_CBWR_AVX2},
    {"AVX512_MIC", NXL_CBWR_AVX512_MIC},
    {"AVX512", NXL_CBWR_AVX512},
    {"AVX512_MIC_E1", NXL_CBWR_AVX512_MIC_E1},
    {"AVX512_E1", NXL_CBWR_AVX512_E1},
    {nullptr, 0},
};

}  // extern "C"

namespace {

constexpr int kBranchMask = 0xFFFF;

bool known_branch(int b) {
  for (const nxl_cbwr_option *o = cbwr_options_list; o->text; ++o)
    if (o->value == b) return true;
  return false;
}

// 0 when branch b may be used here, -3 when the processor cannot run it,
// -2 when no such branch exists.
int validate(int b) {
  if (b == NXL_CBWR_AUTO || b == NXL_CBWR_COMPATIBLE) return 0;
  if (!known_branch(b)) return -2;
  if (!nxl_serv_ortex_cpu_true()) return -3;
  const int a = nxl_serv_cbwr_get_auto_branch();
  if (b > a) return -3;
  if (a == NXL_CBWR_AVX512 && b == NXL_CBWR_AVX512_MIC) return -3;
  if (a == NXL_CBWR_AVX512_MIC_E1 && b == NXL_CBWR_AVX512) return -3;
  if (a == NXL_CBWR_AVX512_E1 && (b == NXL_CBWR_AVX512_MIC || b == NXL_CBWR_AVX512_MIC_E1))
    return -3;
  return 0;
}

bool is_blank(char c) { return c == ' ' || c == '\t'; }

// The mode NXL_CBWR asks for.
int decide_from_environment() {
  char buf[128];
  nxl_serv_getenv("NXL_CBWR", buf, static_cast<int>(sizeof buf));
  if (buf[0] == '\0') return NXL_CBWR_OFF;

  // "<branch>,STRICT", blanks allowed between the comma and STRICT.
  int strict = 0;
  const size_t len = strlen(buf);
  static const char kStrict[] = "STRICT";
  const size_t ls = sizeof kStrict - 1;
  if (len >= ls && memcmp(buf + len - ls, kStrict, ls) == 0) {
    size_t i = len - ls;
    while (i > 0 && is_blank(buf[i - 1])) --i;
    if (i > 0 && buf[i - 1] == ',') {
      strict = NXL_CBWR_STRICT;
      buf[i - 1] = '\0';
    }
  }

  const char *text = buf;
  static const char kPrefix[] = "BRANCH=";
  if (strncmp(text, kPrefix, sizeof kPrefix - 1) == 0) text += sizeof kPrefix - 1;

  int branch = -1;
  for (const nxl_cbwr_option *o = cbwr_options_list; o->text; ++o) {
    if (strcmp(text, o->text) == 0) {
      branch = o->value;
      break;
    }
  }
  if (branch < 0) return NXL_CBWR_AUTO;
  if (validate(branch) != 0) branch = NXL_CBWR_AUTO;
  return branch | strict;
}

int select_part(int mode, int what) {
  if (what == 1) return mode & kBranchMask;
  if (what == -1) return mode;
  return -2;
}

}  // namespace

extern "C" {

int nxl_serv_cbwr_get_auto_branch(void) {
  if (!nxl_serv_ortex_cpu_true()) return NXL_CBWR_AUTO;
  switch (nxl_serv_get_cpu_type(1)) {
    case 0:
    case 1: return NXL_CBWR_SSE2;
    case 2: return nxl_serv_cpuhas_newgen_true() ? NXL_CBWR_SSE4_1 : NXL_CBWR_SSSE3;
    case 3: return NXL_CBWR_SSE4_2;
    case 4: return NXL_CBWR_AVX;
    case 5: return NXL_CBWR_AVX2;
    case 6: return NXL_CBWR_AVX512_MIC;
    case 7: return NXL_CBWR_AVX512;
    case 8: return NXL_CBWR_AVX512_MIC_E1;
    case 9:
    case 10:
    case 12: return NXL_CBWR_AVX512_E1;
    default: return -4;
  }
}

int nxl_serv_cbwr_get_nolock(int what) {
  int mode = nxl_cbwr;
  if (mode < 0) {
    mode = decide_from_environment();
    nxl_cbwr = mode;
  }
  return select_part(mode, what);
}

int nxl_serv_cbwr_get(int what) {
  int mode = nxl_cbwr;
  if (mode < 0) {
    nxl_serv_lock(&NXL_Detect_Cpu_Global_Lock);
    mode = nxl_cbwr;
    if (mode < 0) {
      mode = decide_from_environment();
      nxl_cbwr = mode;
    }
    nxl_serv_unlock(&NXL_Detect_Cpu_Global_Lock);
  }
  return select_part(mode, what);
}

int nxl_serv_cbwr_set(int value) {
  // Once the code path is chosen the mode is frozen.
  if (nxl_cpu_type >= 0) return value == nxl_serv_cbwr_get(-1) ? 0 : -8;
  nxl_serv_lock(&NXL_Detect_Cpu_Global_Lock);
  if (nxl_cpu_type >= 0) {
    nxl_serv_unlock(&NXL_Detect_Cpu_Global_Lock);
    return value == nxl_serv_cbwr_get_nolock(-1) ? 0 : -8;
  }
  int status = 0;
  if (value < NXL_CBWR_AUTO) {
    nxl_cbwr = NXL_CBWR_OFF;
  } else if (value == NXL_CBWR_AUTO) {
    nxl_cbwr = NXL_CBWR_AUTO;
  } else if ((value & ~(kBranchMask | NXL_CBWR_STRICT)) != 0) {
    status = -2;
  } else {
    status = validate(value & kBranchMask);
    if (status == 0) nxl_cbwr = value;
  }
  nxl_serv_unlock(&NXL_Detect_Cpu_Global_Lock);
  return status;
}

}  // extern "C"

// ---------------------------------------------------------------------------
// Exported controls.

NXL_FORTRAN_ENTRY(nxl_int, NXL_GET_CBWR_BRANCH, nxl_get_cbwr_branch, (void)) {
  return nxl_serv_cbwr_get(1);
}

NXL_FORTRAN_ENTRY(nxl_int, NXL_SET_CBWR_BRANCH, nxl_set_cbwr_branch, (const nxl_int *value)) {
  if (!value) return -2;
  const nxl_int v = *value;
  if (v > 0x7FFFFFFF) return -2;
  if (v < -0x7FFFFFFF) return nxl_serv_cbwr_set(NXL_CBWR_OFF);
  return nxl_serv_cbwr_set(static_cast<int>(v));
}
