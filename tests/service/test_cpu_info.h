// The kernel's view of the processor (/proc/cpuinfo), an oracle that is
// independent of the library's own CPUID reading.
#ifndef NXL_TEST_CPU_INFO_H
#define NXL_TEST_CPU_INFO_H

#include <stdlib.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>

namespace cpu_test {

// The kernel's view of the processor: vendor, family and feature flags.
struct CpuInfo {
  std::string vendor;
  int family = -1;
  std::set<std::string> flags;
  bool has(const char *f) const { return flags.count(f) != 0; }
};

inline CpuInfo read_cpuinfo() {
  CpuInfo c;
  std::ifstream in("/proc/cpuinfo");
  std::string line;
  while (std::getline(in, line)) {
    auto colon = line.find(':');
    if (colon == std::string::npos) continue;
    std::string key = line.substr(0, line.find_last_not_of(" \t", colon - 1) + 1);
    std::string val = colon + 2 <= line.size() ? line.substr(colon + 2) : "";
    if (key == "vendor_id" && c.vendor.empty()) c.vendor = val;
    if (key == "cpu family" && c.family < 0) c.family = atoi(val.c_str());
    if (key == "flags" && c.flags.empty()) {
      std::stringstream ws(val);
      std::string w;
      while (ws >> w) c.flags.insert(w);
      break;
    }
  }
  return c;
}

// The machine has the AVX-512 group with DL Boost and bfloat16, no AMX:
// detection level 12.
inline bool native_level12(const CpuInfo &c) {
  return c.has("avx512f") && c.has("avx512cd") && c.has("avx512dq") && c.has("avx512bw") &&
         c.has("avx512vl") && c.has("avx512_vnni") && c.has("avx512_bf16") && c.has("fma") &&
         c.has("avx2") && c.has("bmi1") && c.has("bmi2") && c.has("f16c") && !c.has("amx_tile");
}

}  // namespace cpu_test

#endif  // NXL_TEST_CPU_INFO_H
