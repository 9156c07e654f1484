// Code-path selection: the detection levels, the instruction cap
// (NXL_ENABLE_INSTRUCTIONS or nxl_serv_enable_instructions), the processor
// probe and the once-per-process choice of the code path, which also honours
// the reproducibility branch.
#include <string.h>

#include "service/cpu.h"
#include "service/fortran.h"
#include "nxl_service.h"

extern "C" {

volatile int nxl_cpu_type = -1;
volatile int nxl_vml_cpu_type = -1;
volatile int cached_mei = -1;
volatile int mei_was_called = 0;
volatile int __sngl_was_called = 0;

// The enable flags. The AMX level stays off unless asked for by name, so an
// AMX processor runs the bfloat16 level by default.
int _ENABLED_SSE4_2 = 1;
int _ENABLED_AVX = 1;
int _ENABLED_AVX2 = 1;
int _ENABLED_AVX512 = 1;
int _ENABLED_AVX512_E1 = 1;
int _ENABLED_AVX512_E2 = 1;
int _ENABLED_AVX512_E3 = 1;
int _ENABLED_AVX512_E4 = 0;
int _ENABLED_AVX512_MIC_E1 = 1;
int _ENABLED_AVX512_MIC = 1;

// Kernel and vector-math modules per level. The library is one file, so the
// names only mark which levels it carries.
const nxl_dll_cfg dll_cfg_names[15] = {
    {"libnxl_def.so", "libnxl_vml_def.so"},
    {"libnxl_def.so", "libnxl_vml_cmpt.so"},
    {"libnxl_mc.so", "libnxl_vml_mc.so"},
    {"libnxl_mc3.so", "libnxl_vml_mc3.so"},
    {"libnxl_avx.so", "libnxl_vml_avx.so"},
    {"libnxl_avx2.so", "libnxl_vml_avx2.so"},
    {"libnxl_avx512_mic.so", "libnxl_vml_avx512_mic.so"},
    {"libnxl_avx512.so", "libnxl_vml_avx512.so"},
    {"libnxl_avx512_mic.so", "libnxl_vml_avx512_mic.so"},
    {"libnxl_avx512.so", "libnxl_vml_avx512.so"},
    {"libnxl_avx512.so", "libnxl_vml_avx512.so"},
    {nullptr, nullptr},
    {"libnxl_avx512.so", "libnxl_vml_avx512.so"},
    {nullptr, nullptr},
    {"libnxl_avx512.so", "libnxl_vml_avx512.so"},
};

}  // extern "C"

namespace {

// The uncollapsed level behind the selected code path.
volatile int selected_level = -1;

// Serialises the first application of the environment cap.
nxl_serv_lock_t cap_lock = 0;
int cap_ready = 0;

// Cap texts in the order they are compared, with their values.
struct CapText {
  const char *text;
  int value;
};
constexpr CapText kCapTexts[] = {
    {"AVX512_E4", 9}, {"AVX512_E3", 8},     {"AVX512_E2", 7},  {"AVX512_E1", 6},
    {"AVX512_MIC_E1", 5}, {"AVX512_MIC", 3}, {"AVX512", 4},    {"AVX2", 2},
    {"AVX", 1},       {"SSE4_2", 0},
};

// Enable flags as bits, and the set each cap value leaves on.
enum : unsigned {
  F_SSE4_2 = 1u << 0, F_AVX = 1u << 1, F_AVX2 = 1u << 2, F_AVX512 = 1u << 3,
  F_E1 = 1u << 4, F_E2 = 1u << 5, F_E3 = 1u << 6, F_E4 = 1u << 7,
  F_MIC_E1 = 1u << 8, F_MIC = 1u << 9
};
constexpr unsigned kBase = F_SSE4_2 | F_AVX | F_AVX2;
constexpr unsigned kCapFlags[10] = {
    F_SSE4_2,                                          // 0 SSE4_2
    F_SSE4_2 | F_AVX,                                  // 1 AVX
    kBase,                                             // 2 AVX2
    kBase | F_MIC,                                     // 3 AVX512_MIC
    kBase | F_AVX512,                                  // 4 AVX512
    kBase | F_MIC | F_MIC_E1,                          // 5 AVX512_MIC_E1
    kBase | F_AVX512 | F_E1,                           // 6 AVX512_E1
    kBase | F_AVX512 | F_E1 | F_E2,                    // 7 AVX512_E2
    kBase | F_AVX512 | F_E1 | F_E3,                    // 8 AVX512_E3
    kBase | F_AVX512 | F_E1 | F_E2 | F_E3 | F_E4,      // 9 AVX512_E4
};

void set_flags(unsigned f) {
  _ENABLED_SSE4_2 = (f & F_SSE4_2) != 0;
  _ENABLED_AVX = (f & F_AVX) != 0;
  _ENABLED_AVX2 = (f & F_AVX2) != 0;
  _ENABLED_AVX512 = (f & F_AVX512) != 0;
  _ENABLED_AVX512_E1 = (f & F_E1) != 0;
  _ENABLED_AVX512_E2 = (f & F_E2) != 0;
  _ENABLED_AVX512_E3 = (f & F_E3) != 0;
  _ENABLED_AVX512_E4 = (f & F_E4) != 0;
  _ENABLED_AVX512_MIC_E1 = (f & F_MIC_E1) != 0;
  _ENABLED_AVX512_MIC = (f & F_MIC) != 0;
}

// The call-only cap value that switches to the COMPATIBLE branch.
constexpr int kCapCompatible = 0x600;

// The processor probe: the best level the processor, the operating system and
// the cap allow. Sets *err and returns -1 below SSE2.
int probe(int *err) {
  nxl_serv_apply_env_cap();
  // Other vendors run the def path; family tests serve their tunings.
  if (!nxl_serv_ortex_cpu_true()) return 0;
  const unsigned long long w = nxl_serv_cpu_features();
  auto has = [w](unsigned long long m) { return (w & m) == m; };
  if (has(NXL_FEAT_AVX)) {
    if (has(NXL_FEATS_AVX2_GROUP)) {
      if (_ENABLED_AVX512 && has(NXL_FEATS_AVX512)) {
        if (_ENABLED_AVX512_E4 && nxl_serv_amx_probe()) return 14;
        if (_ENABLED_AVX512_E3 && nxl_serv_bf16_probe()) return 12;
        if (_ENABLED_AVX512_E2 && has(NXL_FEATS_AVX512_E2)) return 10;
        if (_ENABLED_AVX512_E1 && has(NXL_FEATS_AVX512_E1)) return 9;
        return 7;
      }
      if (_ENABLED_AVX512_MIC && has(NXL_FEATS_AVX512_MIC))
        return _ENABLED_AVX512_MIC_E1 && has(NXL_FEATS_AVX512_MIC_E1) ? 8 : 6;
      if (_ENABLED_AVX2) return 5;
    }
    if (_ENABLED_AVX) return 4;
  }
  if (_ENABLED_SSE4_2 && has(NXL_FEAT_SSE4_2)) return 3;
  if (has(NXL_FEAT_SSSE3)) return 2;
  if (has(NXL_FEAT_SSE2)) return 0;
  nxl_serv_print(0, 1210, 0);
  nxl_serv_print(0, 1211, 0);
  *err = 1;
  return -1;
}

// Level of a reproducibility branch; -4 for a branch without one.
int branch_level(int branch) {
  switch (branch) {
    case NXL_CBWR_COMPATIBLE: return 1;
    case NXL_CBWR_SSE2: case 5: return 0;   // SSE2, SSE3
    case NXL_CBWR_SSSE3: case NXL_CBWR_SSE4_1: return 2;
    case NXL_CBWR_SSE4_2: return 3;
    case NXL_CBWR_AVX: return 4;
    case NXL_CBWR_AVX2: return 5;
    case NXL_CBWR_AVX512_MIC: return 6;
    case NXL_CBWR_AVX512: return 7;
    case NXL_CBWR_AVX512_MIC_E1: return 8;
    case NXL_CBWR_AVX512_E1: return 9;
    default: return -4;
  }
}

// Free selection under the detection lock (held on entry). Returns the level,
// or -1 after releasing the lock and calling the exit hook.
int free_selection() {
  int err = 0;
  int level = probe(&err);
  int path = level < 0 ? level : nxl_serv_level_to_code_path(level);
  if (err) {
    nxl_serv_unlock(&NXL_Detect_Cpu_Global_Lock);
    nxl_serv_exit(err);
    return -1;
  }
  if (level < 0 || level > 14 || !nxl_serv_level_carried(path)) {
    nxl_serv_unlock(&NXL_Detect_Cpu_Global_Lock);
    nxl_serv_exit(1);
    return -1;
  }
  return level;
}

// Reads NXL_ENABLE_INSTRUCTIONS into cached_mei and applies it.
void read_env_cap() {
  char buf[30];
  nxl_serv_getenv("NXL_ENABLE_INSTRUCTIONS", buf, static_cast<int>(sizeof buf));
  if (buf[0] != '\0') {
    int value = -1;
    for (const CapText &c : kCapTexts) {
      if (memcmp(buf, c.text, strlen(c.text) + 1) == 0) {
        value = c.value;
        break;
      }
    }
    cached_mei = value;
  }
  nxl_serv_enable_instructions(cached_mei);
}

}  // namespace

extern "C" {

int nxl_serv_level_carried(int level) {
  return level >= 0 && level <= 14 && dll_cfg_names[level].kernel != nullptr;
}

int nxl_serv_level_to_code_path(int level) {
  switch (level) {
    case 1: return 0;
    case 8: return 6;
    case 9: case 10: case 11: case 12: case 13: case 14: return 7;
    default: return level;
  }
}

int nxl_serv_selected_level(void) {
  nxl_serv_cpu_detect();
  return selected_level;
}

int nxl_serv_cap_features_present(int cap) {
  switch (cap) {
    case 0: return nxl_serv_cpu_has(NXL_FEAT_SSE4_2);
    case 1: return nxl_serv_cpu_has(NXL_FEAT_AVX);
    case 2: return nxl_serv_cpu_has(NXL_FEATS_AVX2_GROUP);
    case 3: return nxl_serv_cpu_has(NXL_FEATS_AVX512_MIC);
    case 4: return nxl_serv_cpu_has(NXL_FEATS_AVX512);
    case 5: return nxl_serv_cpu_has(NXL_FEATS_AVX512_MIC_E1);
    case 6: return nxl_serv_cpu_has(NXL_FEATS_AVX512_E1);
    case 7: return nxl_serv_cpu_has(NXL_FEATS_AVX512_E2);
    case 8: return nxl_serv_bf16_probe();
    case 9: return nxl_serv_amx_probe();
    default: return 0;
  }
}

int nxl_serv_enable_instructions(int level) {
  // Any call, refused or not, stands in for the environment variable.
  mei_was_called = 1;
  if (level == kCapCompatible) {
    int ok = nxl_serv_cbwr_set(NXL_CBWR_COMPATIBLE) == 0;
    __sngl_was_called = 1;
    return ok;
  }
  if (!nxl_serv_ortex_cpu_true()) return 0;
  if (level < 0 || level > 9) return 0;   // no cap of that value
  if (!nxl_serv_cap_features_present(level)) return 0;
  set_flags(kCapFlags[level]);
  return 1;
}

void nxl_serv_apply_env_cap(void) {
  // The flags are written one by one; a reader that finds the cap applied
  // must also find all of them written, so the first application runs under
  // a lock and is published by cap_ready afterwards.
  if (mei_was_called && __atomic_load_n(&cap_ready, __ATOMIC_ACQUIRE)) return;
  nxl_serv_lock(&cap_lock);
  if (!mei_was_called) read_env_cap();
  __atomic_store_n(&cap_ready, 1, __ATOMIC_RELEASE);
  nxl_serv_unlock(&cap_lock);
}
int nxl_serv_get_cpu_type(int real) {
  if (real == 0) return nxl_cpu_type;
  int err = 0;
  return probe(&err);
}

int nxl_serv_cpu_detect(void) {
  int cached = nxl_cpu_type;
  if (cached >= 0) return cached;

  nxl_serv_lock(&NXL_Detect_Cpu_Global_Lock);
  cached = nxl_cpu_type;
  if (cached >= 0) {
    nxl_serv_unlock(&NXL_Detect_Cpu_Global_Lock);
    return cached;
  }

  int level;
  const int mode = nxl_serv_cbwr_get_nolock(1);
  if (mode == NXL_CBWR_OFF || mode == NXL_CBWR_AUTO) {
    level = free_selection();
    if (level < 0) return -1;
  } else {
    level = branch_level(mode & 0xFFFF);
    nxl_serv_apply_env_cap();
    if (level < 0 || !nxl_serv_level_carried(nxl_serv_level_to_code_path(level))) {
      nxl_serv_print(0, 1209, 0);
      level = free_selection();
      if (level < 0) return -1;
    } else if (cached_mei >= 0 && cached_mei < level) {
      // A cap below the branch: the two numberings are compared as they
      // stand. A cap of 3 to 9 that the processor can honour wins through
      // the probe; otherwise the branch is taken as requested.
      if (cached_mei >= 3 && cached_mei <= 9 && nxl_serv_cap_features_present(cached_mei)) {
        level = free_selection();
        if (level < 0) return -1;
      }
    }
  }

  const int path = nxl_serv_level_to_code_path(level);
  const int t = level == 1 ? 1 : path;   // collapsed, COMPATIBLE kept as 1
  nxl_vml_cpu_type = t <= 1 ? t : t + 1 + (t > 2 ? 1 : 0);
  selected_level = level;
  __atomic_store_n(&nxl_cpu_type, path, __ATOMIC_RELEASE);
  nxl_serv_unlock(&NXL_Detect_Cpu_Global_Lock);
  return path;
}

int nxl_serv_is_sse4_2_enabled(void) {
  nxl_serv_apply_env_cap();
  return _ENABLED_SSE4_2;
}

int nxl_serv_is_avx_enabled(void) {
  nxl_serv_apply_env_cap();
  return _ENABLED_AVX;
}

int nxl_serv_is_avx2_enabled(void) {
  nxl_serv_apply_env_cap();
  return _ENABLED_AVX2;
}

int nxl_serv_is_avx512_enabled(void) {
  nxl_serv_apply_env_cap();
  return _ENABLED_AVX512;
}

int nxl_serv_is_avx512_mic_enabled(void) {
  nxl_serv_apply_env_cap();
  return _ENABLED_AVX512_MIC;
}

// Reproducible runs take the vendor-neutral kernels under COMPATIBLE and the
// maker's kernels under every other fixed branch.
int nxl_serv_ortex_cpu(void) {
  static volatile int answer = -1;
  static nxl_serv_lock_t lock = 0;
  int v = answer;
  if (v >= 0) return v;
  nxl_serv_lock(&lock);
  v = answer;
  if (v < 0) {
    const int mode = nxl_serv_cbwr_get(1);
    if (mode == NXL_CBWR_OFF || mode == NXL_CBWR_AUTO)
      v = nxl_serv_ortex_cpu_true();
    else
      v = mode == NXL_CBWR_COMPATIBLE ? 0 : 1;
    answer = v;
  }
  nxl_serv_unlock(&lock);
  return v;
}

const char *nxl_serv_cpu_level_name(int level) {
  switch (level) {
    case 0:
    case 1:
      return "Ortex(R) Streaming SIMD Extensions 2 (Ortex(R) SSE2) enabled processors";
    case 2:
      return "Ortex(R) Supplemental Streaming SIMD Extensions 3 (Ortex(R) SSSE3) enabled processors";
    case 3:
      return "Ortex(R) Streaming SIMD Extensions 4.2 (Ortex(R) SSE4.2) enabled processors";
    case 4:
      return "Ortex(R) Advanced Vector Extensions (Ortex(R) AVX) enabled processors";
    case 5:
      return "Ortex(R) Advanced Vector Extensions 2 (Ortex(R) AVX2) enabled processors";
    case 6:
      return "Ortex(R) Advanced Vector Extensions 512 (Ortex(R) AVX-512) for many-core "
             "processors enabled processors";
    case 7:
      return "Ortex(R) Advanced Vector Extensions 512 (Ortex(R) AVX-512) enabled processors";
    case 8:
      return "Ortex(R) Advanced Vector Extensions 512 (Ortex(R) AVX-512) for many-core "
             "processors with 4-way neural network and fused multiply-add instructions "
             "enabled processors";
    case 9:
      return "Ortex(R) Advanced Vector Extensions 512 (Ortex(R) AVX-512) with support of "
             "Ortex(R) Deep Learning Boost (Ortex(R) DL Boost) enabled processors";
    case 10:
      return "Ortex(R) Advanced Vector Extensions 512 (Ortex(R) AVX-512) with support of "
             "Ortex(R) Deep Learning Boost (Ortex(R) DL Boost), EVEX-encoded AES and "
             "Carry-Less Multiplication Quadword instructions enabled processors";
    case 12:
      return "Ortex(R) Advanced Vector Extensions 512 (Ortex(R) AVX-512) with support of "
             "Ortex(R) Deep Learning Boost (Ortex(R) DL Boost) and bfloat16 enabled processors";
    case 14:
      return "Ortex(R) AVX-512 with Ortex(R) DL Boost and bfloat16 support and Ortex(R) AMX "
             "with bfloat16 and 8-bit integer support";
    default:
      return "";
  }
}

}  // extern "C"

// ---------------------------------------------------------------------------
// Exported queries.

NXL_FORTRAN_ENTRY(nxl_int, NXL_GET_CODE_PATH, nxl_get_code_path, (void)) {
  return nxl_serv_cpu_detect();
}

NXL_FORTRAN_ENTRY(nxl_int, NXL_GET_CPU_LEVEL, nxl_get_cpu_level, (void)) {
  return nxl_serv_get_cpu_type(1);
}

NXL_FORTRAN_ENTRY(void, NXL_GET_CPU_NAME, nxl_get_cpu_name,
                  (char *buf, const nxl_int *buflen)) {
  if (!buf || !buflen || *buflen <= 0) return;
  const char *name = nxl_serv_cpu_level_name(nxl_serv_selected_level());
  size_t n = strlen(name);
  const size_t room = static_cast<size_t>(*buflen) - 1;
  if (n > room) n = room;
  memcpy(buf, name, n);
  buf[n] = '\0';
}
