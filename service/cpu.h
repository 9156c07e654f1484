// Processor facts beyond the code-path number: the feature word and its bits,
// the AMX and bfloat16 probes, the processor-family tests that kernels use to
// pick tunings, and the levels of the detection with their display names.
// Internal to the library (nothing here is exported).
#ifndef NXL_SERVICE_CPU_H
#define NXL_SERVICE_CPU_H

#include "service/nxl_serv.h"

#ifdef __cplusplus
extern "C" {
#endif

// ---------------------------------------------------------------------------
// The feature word: one bit per instruction-set feature. A bit whose feature
// uses the YMM or ZMM/opmask registers is set only when the operating system
// saves that register state (XCR0), so a set bit always means "usable".
#define NXL_FEAT_X87            0x1ULL
#define NXL_FEAT_CMOV           0x2ULL
#define NXL_FEAT_MMX            0x4ULL
#define NXL_FEAT_FXSR           0x8ULL
#define NXL_FEAT_SSE            0x10ULL
#define NXL_FEAT_CX16           0x20ULL
#define NXL_FEAT_SSE2           0x40ULL
#define NXL_FEAT_SSE3           0x80ULL
#define NXL_FEAT_SSSE3          0x100ULL
#define NXL_FEAT_SSE4_1         0x200ULL
#define NXL_FEAT_SSE4_2         0x400ULL
#define NXL_FEAT_POPCNT         0x800ULL
#define NXL_FEAT_PCLMULQDQ      0x1000ULL
#define NXL_FEAT_FMA            0x2000ULL         // needs YMM state
#define NXL_FEAT_MOVBE          0x4000ULL
#define NXL_FEAT_AES            0x8000ULL
#define NXL_FEAT_AVX            0x10000ULL        // needs YMM state
#define NXL_FEAT_RDRAND         0x20000ULL
#define NXL_FEAT_AVX2           0x40000ULL        // needs YMM state
#define NXL_FEAT_BMI1           0x80000ULL
#define NXL_FEAT_BMI2           0x100000ULL
#define NXL_FEAT_LZCNT          0x200000ULL
#define NXL_FEAT_ADX            0x400000ULL
#define NXL_FEAT_F16C           0x800000ULL       // needs YMM state
#define NXL_FEAT_AVX512DQ       0x1000000ULL      // needs ZMM state
#define NXL_FEAT_RDSEED         0x2000000ULL
#define NXL_FEAT_SHA            0x4000000ULL
// AVX-512 foundation: AVX512F together with AVX512CD (every AVX-512 build of
// the library is compiled for both), needs ZMM and opmask state.
#define NXL_FEAT_AVX512F        0x8000000ULL
#define NXL_FEAT_PREFETCHW      0x10000000ULL
#define NXL_FEAT_OSXSAVE        0x20000000ULL
#define NXL_FEAT_RTM            0x40000000ULL
#define NXL_FEAT_CLFLUSHOPT     0x80000000ULL
#define NXL_FEAT_AVX512ER       0x100000000ULL
#define NXL_FEAT_AVX512PF       0x200000000ULL
#define NXL_FEAT_PREFETCHWT1    0x400000000ULL
#define NXL_FEAT_AVX512IFMA     0x800000000ULL
#define NXL_FEAT_AVX512VBMI     0x1000000000ULL
#define NXL_FEAT_AVX512BW       0x2000000000ULL
#define NXL_FEAT_AVX512VL       0x4000000000ULL
#define NXL_FEAT_CLWB           0x8000000000ULL
#define NXL_FEAT_AVX512_4VNNIW  0x10000000000ULL
#define NXL_FEAT_AVX512_4FMAPS  0x20000000000ULL
#define NXL_FEAT_AVX512VPOPCNTDQ 0x40000000000ULL
#define NXL_FEAT_AVX512BITALG   0x80000000000ULL
#define NXL_FEAT_AVX512VBMI2    0x100000000000ULL
#define NXL_FEAT_GFNI           0x200000000000ULL
#define NXL_FEAT_VAES           0x400000000000ULL  // EVEX forms: needs ZMM state
#define NXL_FEAT_VPCLMULQDQ     0x800000000000ULL  // EVEX forms: needs ZMM state
#define NXL_FEAT_AVX512VNNI     0x1000000000000ULL
#define NXL_FEAT_AVX512BF16     0x2000000000000ULL
#define NXL_FEAT_AVXVNNI        0x4000000000000ULL
#define NXL_FEAT_AVX512FP16     0x8000000000000ULL
#define NXL_FEAT_AMX_TILE       0x10000000000000ULL  // needs tile state
#define NXL_FEAT_AMX_INT8       0x20000000000000ULL
#define NXL_FEAT_AMX_BF16       0x40000000000000ULL
#define NXL_FEAT_AVX512VP2INTERSECT 0x80000000000000ULL
// Always set once the word is filled, so a filled word is never 0.
#define NXL_FEAT_INITIALIZED    0x8000000000000000ULL

// The instruction-set groups that the detection levels require.
#define NXL_FEATS_AVX2_GROUP    0x9C2000ULL        // FMA AVX2 BMI1 BMI2 F16C
#define NXL_FEATS_AVX512_MIC    0x708000000ULL     // F+CD ER PF PREFETCHWT1
#define NXL_FEATS_AVX512        0x6009000000ULL    // F+CD DQ BW VL
#define NXL_FEATS_AVX512_MIC_E1 0x30000000000ULL   // 4VNNIW 4FMAPS
#define NXL_FEATS_AVX512_E1     0x1000000000000ULL // VNNI
#define NXL_FEATS_AVX512_E2     0xC00000000000ULL  // VAES VPCLMULQDQ

// The feature word, filled on first use. Every reader loops while it is 0.
extern volatile unsigned long long __ortex_nxl_feature_indicator_x;
void __ortex_nxl_features_init_x(void);
// 1 when every bit of `mask` is set in the feature word.
int nxl_serv_cpu_has(unsigned long long mask);

// Raw CPUID (leaf, sub-leaf) into regs[4] = EAX, EBX, ECX, EDX; zeros for a
// leaf above the processor's maximum of its range.
void nxl_serv_cpuid(unsigned leaf, unsigned subleaf, unsigned regs[4]);

// ---------------------------------------------------------------------------
// AMX and bfloat16.
typedef struct {
  int palettes;          // CPUID 0x1D.0 EAX
  int total_tile_bytes;  // 0x1D.1 EAX[15:0]
  int bytes_per_tile;    // 0x1D.1 EAX[31:16]
  int bytes_per_row;     // 0x1D.1 EBX[15:0]
  int max_names;         // 0x1D.1 EBX[31:16]
  int max_rows;          // 0x1D.1 ECX[15:0]
  int tmul_max_k;        // 0x1E.0 EBX[7:0]
  int tmul_max_n;        // 0x1E.0 EBX[23:8]
} nxl_amx_info;
int nxl_serv_amx_probe(void);               // 1: AMX-TILE with INT8 or BF16
const nxl_amx_info *nxl_serv_amx_info(void);  // valid after a successful probe
int nxl_serv_bf16_probe(void);              // 1: AVX-512 BF16

// ---------------------------------------------------------------------------
// Vendor and family tests (each 0 or 1, computed once).
int nxl_serv_is_maker_vendor(void);  // the vendor string alone
int nxl_serv_cpuisbulldozer(void);
int nxl_serv_cpuiszen(void);
int nxl_serv_cpuisitbarcelona(void);
int nxl_serv_cpuislowpower_sse4_2(void);  // maker's low-power cores with SSE4.2
int nxl_serv_cpuislowpower_ssse3(void);   // maker's low-power cores with SSSE3
int nxl_serv_cpuisoldgen(void);           // maker's cores before SSE4.2
int nxl_serv_cpuisskx(void);              // first AVX-512 server generation
int nxl_serv_cpuisclx(void);              // its successor with DL Boost
int nxl_serv_cpuisicx(void);              // AVX-512 with VAES/VBMI2
int nxl_serv_cpuisspr(void);              // AVX-512 with BF16/FP16 and AMX
int nxl_serv_cpuisknl(void);              // many-core AVX-512 generation
int nxl_serv_cpuhas_newgen(void);         // SSE4.1 generation, reproducibility-aware
int nxl_serv_cpuhas_newgen_true(void);    // SSE4.1 generation, processor only
int nxl_serv_cpuhasamx(void);

// Microarchitecture classes returned by nxl_serv_get_microarchitecture.
enum {
  NXL_UARCH_UNKNOWN = 0,
  NXL_UARCH_LOWPOWER_SSSE3 = 1, NXL_UARCH_LOWPOWER_SSE4_2 = 2,
  NXL_UARCH_OLDGEN = 3, NXL_UARCH_NEHALEM = 4, NXL_UARCH_SANDYBRIDGE = 5,
  NXL_UARCH_HASWELL = 6, NXL_UARCH_SKYLAKE = 7, NXL_UARCH_KNL = 8,
  NXL_UARCH_SKX = 9, NXL_UARCH_CLX = 10, NXL_UARCH_ICX = 11, NXL_UARCH_SPR = 12,
  NXL_UARCH_BARCELONA = 20, NXL_UARCH_BULLDOZER = 21, NXL_UARCH_ZEN = 22,
  NXL_UARCH_ZEN4 = 23, NXL_UARCH_ZEN5 = 24
};
int nxl_serv_get_microarchitecture(void);

// ---------------------------------------------------------------------------
// Detection state (read-only for other modules; written by the detection).
extern volatile int nxl_cpu_type;
extern volatile int nxl_vml_cpu_type;
extern volatile int cached_mei;
extern volatile int mei_was_called;
extern volatile int __sngl_was_called;
extern int _ENABLED_SSE4_2, _ENABLED_AVX, _ENABLED_AVX2, _ENABLED_AVX512,
    _ENABLED_AVX512_E1, _ENABLED_AVX512_E2, _ENABLED_AVX512_E3,
    _ENABLED_AVX512_E4, _ENABLED_AVX512_MIC_E1, _ENABLED_AVX512_MIC;

// The library table: level -> (kernel module, vector-math module); a row of
// null names is a level this build does not carry.
typedef struct { const char *kernel; const char *vml; } nxl_dll_cfg;
extern const nxl_dll_cfg dll_cfg_names[15];
int nxl_serv_level_carried(int level);
int nxl_serv_level_to_code_path(int level);  // collapses 1->0, 8->6, 9..14->7
// The uncollapsed level behind the selected code path (1 under COMPATIBLE),
// or -1 before the selection.
int nxl_serv_selected_level(void);
// Apply NXL_ENABLE_INSTRUCTIONS once, unless a cap was applied already;
// returns when the flags are complete.
void nxl_serv_apply_env_cap(void);
// 1 when the processor has the features a cap value (0..9) asks for.
int nxl_serv_cap_features_present(int cap);

// ---------------------------------------------------------------------------
// Reproducibility mode: -1 until decided; low 16 bits the branch, bit 0x10000
// the STRICT flag.
extern volatile int nxl_cbwr;
typedef struct { const char *text; int value; } nxl_cbwr_option;
extern const nxl_cbwr_option cbwr_options_list[14];   // ends with a null text

#ifdef __cplusplus
}
#endif

#endif  // NXL_SERVICE_CPU_H
