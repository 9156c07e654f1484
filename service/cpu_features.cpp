// What the processor offers: CPUID and XGETBV read into the feature word,
// the AMX and bfloat16 probes, the vendor and family tests, and the clock
// frequency. Every cache here is written idempotently (all threads compute
// the same value), so first-use races are harmless and no lock is taken.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "service/cpu.h"

namespace {

inline void cpuid_raw(unsigned leaf, unsigned subleaf, unsigned r[4]) {
  unsigned a, b, c, d;
  __asm__ volatile("cpuid" : "=a"(a), "=b"(b), "=c"(c), "=d"(d) : "a"(leaf), "c"(subleaf));
  r[0] = a;
  r[1] = b;
  r[2] = c;
  r[3] = d;
}

// XCR0: the register state components the operating system saves.
inline unsigned long long read_xcr0() {
  unsigned lo, hi;
  __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
  return (static_cast<unsigned long long>(hi) << 32) | lo;
}

inline bool bit(unsigned word, int n) { return (word >> n) & 1u; }

// XCR0 components.
constexpr unsigned long long kXcrSseYmm = 0x6;        // XMM and upper YMM halves
constexpr unsigned long long kXcrZmm = 0xE0;          // opmask, ZMM_Hi256, Hi16_ZMM
constexpr unsigned long long kXcrTile = 0x60000;      // TILECFG, TILEDATA

// Family and model as the processor reports them, extended fields folded in.
struct Signature {
  unsigned family, model, stepping;
};

Signature signature() {
  unsigned r[4];
  nxl_serv_cpuid(1, 0, r);
  unsigned base_family = (r[0] >> 8) & 0xF;
  Signature s;
  s.stepping = r[0] & 0xF;
  s.family = base_family == 0xF ? base_family + ((r[0] >> 20) & 0xFF) : base_family;
  s.model = (r[0] >> 4) & 0xF;
  if (base_family == 0x6 || base_family == 0xF) s.model |= ((r[0] >> 16) & 0xF) << 4;
  return s;
}

// Vendor strings as the three 32-bit words of CPUID leaf 0 (EBX, EDX, ECX).
constexpr unsigned kMaker[3] = {0x756e6547u, 0x49656e69u, 0x6c65746eu};   // "GenuineIntel"
constexpr unsigned kOther[3] = {0x68747541u, 0x69746e65u, 0x444d4163u};   // "AuthenticAMD"

bool vendor_is(const unsigned v[3]) {
  unsigned r[4];
  cpuid_raw(0, 0, r);
  return r[1] == v[0] && r[3] == v[1] && r[2] == v[2];
}

bool in_list(unsigned model, const unsigned *list, size_t n) {
  for (size_t i = 0; i < n; ++i)
    if (list[i] == model) return true;
  return false;
}

template <size_t N>
bool in_list(unsigned model, const unsigned (&list)[N]) {
  return in_list(model, list, N);
}

// Models of family 6 of the maker, by generation.
constexpr unsigned kLowPowerSsse3[] = {0x1C, 0x26, 0x27, 0x35, 0x36};
constexpr unsigned kLowPowerSse42[] = {0x37, 0x4A, 0x4C, 0x4D, 0x5A, 0x5C, 0x5D,
                                       0x5F, 0x7A, 0x86, 0x96, 0x9C};
constexpr unsigned kOldGen[] = {0x0F, 0x16, 0x17, 0x1D};
constexpr unsigned kNehalem[] = {0x1A, 0x1E, 0x1F, 0x25, 0x2C, 0x2E, 0x2F};
constexpr unsigned kSandyBridge[] = {0x2A, 0x2D, 0x3A, 0x3E};
constexpr unsigned kHaswell[] = {0x3C, 0x3D, 0x3F, 0x45, 0x46, 0x47, 0x4F, 0x56};
constexpr unsigned kSkylake[] = {0x4E, 0x5E, 0x8E, 0x9E, 0xA5, 0xA6};
constexpr unsigned kManyCore[] = {0x57, 0x85};
constexpr unsigned kSkylakeServer = 0x55;   // stepping 0-4; 5 and later: successor
constexpr unsigned kIceLake[] = {0x6A, 0x6C, 0x7D, 0x7E, 0x8C, 0x8D, 0xA7};
constexpr unsigned kSapphire[] = {0x8F, 0xAD, 0xAE, 0xCF};

bool maker_model(const unsigned *list, size_t n) {
  if (!nxl_serv_is_maker_vendor()) return false;
  Signature s = signature();
  return s.family == 6 && in_list(s.model, list, n);
}

template <size_t N>
bool maker_model(const unsigned (&list)[N]) {
  return maker_model(list, N);
}

// A cached 0/1 answer, computed by `f` on first use.
template <class F>
int cached(volatile int &slot, F f) {
  int v = slot;
  if (v < 0) {
    v = f() ? 1 : 0;
    slot = v;
  }
  return v;
}

bool amd_family(unsigned family) {
  return vendor_is(kOther) && signature().family == family;
}

volatile int amx_cache = -1;
volatile int bf16_cache = -1;
nxl_amx_info amx_facts;

}  // namespace

extern "C" {

volatile unsigned long long __ortex_nxl_feature_indicator_x = 0;

void nxl_serv_cpuid(unsigned leaf, unsigned subleaf, unsigned regs[4]) {
  unsigned range[4];
  cpuid_raw(leaf & 0x80000000u, 0, range);
  if (leaf > range[0]) {
    regs[0] = regs[1] = regs[2] = regs[3] = 0;
    return;
  }
  cpuid_raw(leaf, subleaf, regs);
}

void __ortex_nxl_features_init_x(void) {
  unsigned l1[4], l7[4], l71[4], e1[4];
  nxl_serv_cpuid(1, 0, l1);
  nxl_serv_cpuid(7, 0, l7);
  if (l7[0] >= 1)
    nxl_serv_cpuid(7, 1, l71);
  else
    l71[0] = l71[1] = l71[2] = l71[3] = 0;
  nxl_serv_cpuid(0x80000001u, 0, e1);

  const unsigned ecx1 = l1[2], edx1 = l1[3];
  const unsigned ebx7 = l7[1], ecx7 = l7[2], edx7 = l7[3];

  // Register state saved by the operating system.
  const bool osxsave = bit(ecx1, 27);
  const unsigned long long xcr0 = osxsave ? read_xcr0() : 0;
  const bool ymm = (xcr0 & kXcrSseYmm) == kXcrSseYmm;
  const bool zmm = ymm && (xcr0 & kXcrZmm) == kXcrZmm;
  const bool tile = (xcr0 & kXcrTile) == kXcrTile;

  unsigned long long w = NXL_FEAT_INITIALIZED;
  auto set = [&w](bool on, unsigned long long f) {
    if (on) w |= f;
  };
  set(bit(edx1, 0), NXL_FEAT_X87);
  set(bit(edx1, 15), NXL_FEAT_CMOV);
  set(bit(edx1, 23), NXL_FEAT_MMX);
  set(bit(edx1, 24), NXL_FEAT_FXSR);
  set(bit(edx1, 25), NXL_FEAT_SSE);
  set(bit(edx1, 26), NXL_FEAT_SSE2);
  set(bit(ecx1, 0), NXL_FEAT_SSE3);
  set(bit(ecx1, 1), NXL_FEAT_PCLMULQDQ);
  set(bit(ecx1, 9), NXL_FEAT_SSSE3);
  set(bit(ecx1, 13), NXL_FEAT_CX16);
  set(bit(ecx1, 19), NXL_FEAT_SSE4_1);
  set(bit(ecx1, 20), NXL_FEAT_SSE4_2);
  set(bit(ecx1, 22), NXL_FEAT_MOVBE);
  set(bit(ecx1, 23), NXL_FEAT_POPCNT);
  set(bit(ecx1, 25), NXL_FEAT_AES);
  set(osxsave, NXL_FEAT_OSXSAVE);
  set(bit(ecx1, 30), NXL_FEAT_RDRAND);
  // 256-bit instructions: usable only when the YMM state is saved.
  set(ymm && bit(ecx1, 28), NXL_FEAT_AVX);
  set(ymm && bit(ecx1, 12), NXL_FEAT_FMA);
  set(ymm && bit(ecx1, 29), NXL_FEAT_F16C);
  set(ymm && bit(ebx7, 5), NXL_FEAT_AVX2);
  set(ymm && bit(l71[0], 4), NXL_FEAT_AVXVNNI);
  // General-purpose and cache instructions.
  set(bit(ebx7, 3), NXL_FEAT_BMI1);
  set(bit(ebx7, 8), NXL_FEAT_BMI2);
  set(bit(ebx7, 11), NXL_FEAT_RTM);
  set(bit(ebx7, 18), NXL_FEAT_RDSEED);
  set(bit(ebx7, 19), NXL_FEAT_ADX);
  set(bit(ebx7, 23), NXL_FEAT_CLFLUSHOPT);
  set(bit(ebx7, 24), NXL_FEAT_CLWB);
  set(bit(ebx7, 29), NXL_FEAT_SHA);
  set(bit(ecx7, 0), NXL_FEAT_PREFETCHWT1);
  set(bit(ecx7, 8), NXL_FEAT_GFNI);
  set(bit(e1[2], 5), NXL_FEAT_LZCNT);
  set(bit(e1[2], 8), NXL_FEAT_PREFETCHW);
  // AVX-512: usable only when the opmask and all ZMM state is saved.
  set(zmm && bit(ebx7, 16) && bit(ebx7, 28), NXL_FEAT_AVX512F);
  set(zmm && bit(ebx7, 17), NXL_FEAT_AVX512DQ);
  set(zmm && bit(ebx7, 21), NXL_FEAT_AVX512IFMA);
  set(zmm && bit(ebx7, 26), NXL_FEAT_AVX512PF);
  set(zmm && bit(ebx7, 27), NXL_FEAT_AVX512ER);
  set(zmm && bit(ebx7, 30), NXL_FEAT_AVX512BW);
  set(zmm && bit(ebx7, 31), NXL_FEAT_AVX512VL);
  set(zmm && bit(ecx7, 1), NXL_FEAT_AVX512VBMI);
  set(zmm && bit(ecx7, 6), NXL_FEAT_AVX512VBMI2);
  set(zmm && bit(ecx7, 9), NXL_FEAT_VAES);
  set(zmm && bit(ecx7, 10), NXL_FEAT_VPCLMULQDQ);
  set(zmm && bit(ecx7, 11), NXL_FEAT_AVX512VNNI);
  set(zmm && bit(ecx7, 12), NXL_FEAT_AVX512BITALG);
  set(zmm && bit(ecx7, 14), NXL_FEAT_AVX512VPOPCNTDQ);
  set(zmm && bit(edx7, 2), NXL_FEAT_AVX512_4VNNIW);
  set(zmm && bit(edx7, 3), NXL_FEAT_AVX512_4FMAPS);
  set(zmm && bit(edx7, 8), NXL_FEAT_AVX512VP2INTERSECT);
  set(zmm && bit(edx7, 23), NXL_FEAT_AVX512FP16);
  set(zmm && bit(l71[0], 5), NXL_FEAT_AVX512BF16);
  // Tiles: usable only when the tile configuration and data are saved.
  set(tile && bit(edx7, 24), NXL_FEAT_AMX_TILE);
  set(tile && bit(edx7, 25), NXL_FEAT_AMX_INT8);
  set(tile && bit(edx7, 22), NXL_FEAT_AMX_BF16);

  __atomic_store_n(&__ortex_nxl_feature_indicator_x, w, __ATOMIC_RELEASE);
}

unsigned long long nxl_serv_cpu_features(void) {
  unsigned long long w;
  while ((w = __atomic_load_n(&__ortex_nxl_feature_indicator_x, __ATOMIC_ACQUIRE)) == 0)
    __ortex_nxl_features_init_x();
  return w;
}

int nxl_serv_cpu_has(unsigned long long mask) {
  return (nxl_serv_cpu_features() & mask) == mask;
}

int nxl_serv_amx_probe(void) {
  return cached(amx_cache, [] {
    unsigned l7[4];
    nxl_serv_cpuid(7, 0, l7);
    const unsigned edx = l7[3];
    if (!bit(edx, 24) || !(bit(edx, 25) || bit(edx, 22))) return false;
    unsigned r[4];
    nxl_amx_info f;
    nxl_serv_cpuid(0x1D, 0, r);
    f.palettes = static_cast<int>(r[0]);
    nxl_serv_cpuid(0x1D, 1, r);
    f.total_tile_bytes = static_cast<int>(r[0] & 0xFFFF);
    f.bytes_per_tile = static_cast<int>(r[0] >> 16);
    f.bytes_per_row = static_cast<int>(r[1] & 0xFFFF);
    f.max_names = static_cast<int>(r[1] >> 16);
    f.max_rows = static_cast<int>(r[2] & 0xFFFF);
    nxl_serv_cpuid(0x1E, 0, r);
    f.tmul_max_k = static_cast<int>(r[1] & 0xFF);
    f.tmul_max_n = static_cast<int>((r[1] >> 8) & 0xFFFF);
    amx_facts = f;
    return true;
  });
}

const nxl_amx_info *nxl_serv_amx_info(void) {
  return nxl_serv_amx_probe() ? &amx_facts : nullptr;
}

int nxl_serv_bf16_probe(void) {
  return cached(bf16_cache, [] {
    unsigned l7[4];
    nxl_serv_cpuid(7, 0, l7);
    if (l7[0] < 1) return false;
    nxl_serv_cpuid(7, 1, l7);
    return bit(l7[0], 5);
  });
}

int nxl_serv_is_maker_vendor(void) {
  static volatile int slot = -1;
  return cached(slot, [] { return vendor_is(kMaker); });
}

// The library maker's vendor string is "GenuineIntel". A processor of another
// vendor that carries the whole common AVX-512 group (F, CD, DQ, BW, VL, with
// the operating system saving the opmask and ZMM state) is treated as the
// maker's everywhere: the library's performance goals assume its AVX-512
// kernels run on such machines by default. Another vendor's processor without
// that group stays "another vendor" (def path, caps refused, fixed
// reproducibility branches unavailable).
int nxl_serv_ortex_cpu_true(void) {
  static volatile int slot = -1;
  return cached(slot, [] {
    return nxl_serv_is_maker_vendor() || nxl_serv_cpu_has(NXL_FEATS_AVX512);
  });
}

int nxl_serv_cpuisbulldozer(void) {
  static volatile int slot = -1;
  return cached(slot, [] { return amd_family(0x15); });
}

int nxl_serv_cpuiszen(void) {
  static volatile int slot = -1;
  return cached(slot, [] {
    if (!vendor_is(kOther)) return false;
    unsigned f = signature().family;
    return f == 0x17 || f == 0x19 || f == 0x1A;
  });
}

int nxl_serv_cpuisitbarcelona(void) {
  static volatile int slot = -1;
  return cached(slot, [] { return amd_family(0x10); });
}

int nxl_serv_cpuislowpower_sse4_2(void) {
  static volatile int slot = -1;
  return cached(slot, [] { return maker_model(kLowPowerSse42); });
}

int nxl_serv_cpuislowpower_ssse3(void) {
  static volatile int slot = -1;
  return cached(slot, [] { return maker_model(kLowPowerSsse3); });
}

int nxl_serv_cpuisoldgen(void) {
  static volatile int slot = -1;
  return cached(slot, [] { return maker_model(kOldGen); });
}

int nxl_serv_cpuisskx(void) {
  static volatile int slot = -1;
  return cached(slot, [] {
    const unsigned m[] = {kSkylakeServer};
    return maker_model(m) && signature().stepping < 5;
  });
}

int nxl_serv_cpuisclx(void) {
  static volatile int slot = -1;
  return cached(slot, [] {
    const unsigned m[] = {kSkylakeServer};
    return maker_model(m) && signature().stepping >= 5;
  });
}

int nxl_serv_cpuisicx(void) {
  static volatile int slot = -1;
  return cached(slot, [] { return maker_model(kIceLake); });
}

int nxl_serv_cpuisspr(void) {
  static volatile int slot = -1;
  return cached(slot, [] { return maker_model(kSapphire); });
}

int nxl_serv_cpuisknl(void) {
  static volatile int slot = -1;
  return cached(slot, [] { return maker_model(kManyCore); });
}

// The generation with SSE4.1 (it decides between the SSSE3 and SSE4_1
// reproducibility branches of an SSSE3-level processor).
int nxl_serv_cpuhas_newgen_true(void) {
  return nxl_serv_ortex_cpu_true() && nxl_serv_cpu_has(NXL_FEAT_SSE4_1);
}

int nxl_serv_cpuhas_newgen(void) {
  return nxl_serv_ortex_cpu() && nxl_serv_cpu_has(NXL_FEAT_SSE4_1);
}

int nxl_serv_cpuhasamx(void) { return nxl_serv_amx_probe(); }

int nxl_serv_get_microarchitecture(void) {
  static volatile int slot = -1;
  int v = slot;
  if (v >= 0) return v;
  v = NXL_UARCH_UNKNOWN;
  Signature s = signature();
  if (nxl_serv_is_maker_vendor() && s.family == 6) {
    if (in_list(s.model, kLowPowerSsse3)) v = NXL_UARCH_LOWPOWER_SSSE3;
    else if (in_list(s.model, kLowPowerSse42)) v = NXL_UARCH_LOWPOWER_SSE4_2;
    else if (in_list(s.model, kOldGen)) v = NXL_UARCH_OLDGEN;
    else if (in_list(s.model, kNehalem)) v = NXL_UARCH_NEHALEM;
    else if (in_list(s.model, kSandyBridge)) v = NXL_UARCH_SANDYBRIDGE;
    else if (in_list(s.model, kHaswell)) v = NXL_UARCH_HASWELL;
    else if (in_list(s.model, kSkylake)) v = NXL_UARCH_SKYLAKE;
    else if (in_list(s.model, kManyCore)) v = NXL_UARCH_KNL;
    else if (s.model == kSkylakeServer) v = s.stepping < 5 ? NXL_UARCH_SKX : NXL_UARCH_CLX;
    else if (in_list(s.model, kIceLake)) v = NXL_UARCH_ICX;
    else if (in_list(s.model, kSapphire)) v = NXL_UARCH_SPR;
  } else if (vendor_is(kOther)) {
    switch (s.family) {
      case 0x10: v = NXL_UARCH_BARCELONA; break;
      case 0x15: v = NXL_UARCH_BULLDOZER; break;
      case 0x17: v = NXL_UARCH_ZEN; break;
      case 0x19:
        // Family 0x19 holds two generations; the later one has AVX-512.
        v = nxl_serv_cpu_has(NXL_FEAT_AVX512F) ? NXL_UARCH_ZEN4 : NXL_UARCH_ZEN;
        break;
      case 0x1A: v = NXL_UARCH_ZEN5; break;
      default: break;
    }
  }
  slot = v;
  return v;
}

}  // extern "C"

// ---------------------------------------------------------------------------
// Clock frequency in GHz.
namespace {

// The largest "cpu MHz" of /proc/cpuinfo, or 0.
double cpuinfo_ghz() {
  FILE *f = fopen("/proc/cpuinfo", "r");
  if (!f) return 0.0;
  char line[512];
  double best = 0.0;
  while (fgets(line, sizeof line, f)) {
    if (strncmp(line, "cpu MHz", 7) != 0) continue;
    const char *colon = strchr(line, ':');
    if (!colon) continue;
    double mhz = strtod(colon + 1, nullptr);
    if (mhz > best) best = mhz;
  }
  fclose(f);
  return best / 1000.0;
}

inline unsigned long long rdtsc() {
  unsigned lo, hi;
  __asm__ volatile("rdtsc" : "=a"(lo), "=d"(hi));
  return (static_cast<unsigned long long>(hi) << 32) | lo;
}

double seconds_now() {
  timespec t;
  clock_gettime(CLOCK_MONOTONIC, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

// Time-stamp ticks over about 20 ms of wall time.
double tsc_ghz() {
  double t0 = seconds_now();
  unsigned long long c0 = rdtsc();
  double t1;
  do {
    t1 = seconds_now();
  } while (t1 - t0 < 0.02);
  unsigned long long c1 = rdtsc();
  return static_cast<double>(c1 - c0) / (t1 - t0) * 1e-9;
}

}  // namespace

extern "C" double nxl_serv_get_max_cpu_frequency(void) {
  static volatile double ghz = 0.0;
  double v = ghz;
  if (v > 0.0) return v;
  unsigned r[4];
  nxl_serv_cpuid(0x16, 0, r);
  v = (r[1] & 0xFFFF) / 1000.0;  // maximum frequency, MHz
  if (v <= 0.0) v = cpuinfo_ghz();
  if (v <= 0.0) v = tsc_ghz();
  ghz = v;
  return v;
}
