// Starts the detection driver in a fresh process with a chosen environment
// (optionally under qemu-x86_64 with a processor model) and parses its report.
#ifndef NXL_TEST_CPU_RUN_H
#define NXL_TEST_CPU_RUN_H

#include <stdlib.h>
#include <unistd.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "core_spawn.h"

namespace cpu_test {

struct Report {
  int status = -1;                          // exit status of the driver
  std::string out;                          // its output (qemu's notes included)
  std::map<std::string, std::string> kv;    // every key=value token
  int get(const std::string &key) const {
    auto it = kv.find(key);
    return it == kv.end() ? -999 : static_cast<int>(strtol(it->second.c_str(), nullptr, 0));
  }
  unsigned long long features() const {
    auto it = kv.find("features");
    return it == kv.end() ? 0 : strtoull(it->second.c_str(), nullptr, 0);
  }
};

inline std::string find_qemu() {
  const char *path = getenv("PATH");
  std::stringstream dirs(path ? path : "/usr/bin:/bin");
  std::string d;
  while (std::getline(dirs, d, ':')) {
    std::string p = d + "/qemu-x86_64";
    if (access(p.c_str(), X_OK) == 0) return p;
  }
  return "";
}

// Runs the driver (under qemu with `model` when not empty) with `env`
// ("NAME=value" entries) as its only NXL_* variables.
inline Report run_driver(const std::vector<std::string> &env, const std::vector<std::string> &args,
                         const std::string &model = "") {
  std::string program = CPU_PROBE_DRIVER;
  std::vector<std::string> argv = args;
  if (!model.empty()) {
    argv.insert(argv.begin(), {"-cpu", model, program});
    program = find_qemu();
  }
  spawn_result s = run_fresh(program, argv, env);
  Report r;
  r.status = s.status;
  r.out = s.out;
  std::stringstream lines(r.out);
  std::string line;
  while (std::getline(lines, line)) {
    if (line.rfind("name=", 0) == 0) {
      r.kv["name"] = line.substr(5);
      continue;
    }
    std::stringstream words(line);
    std::string w;
    while (words >> w) {
      auto eq = w.find('=');
      if (eq != std::string::npos) r.kv[w.substr(0, eq)] = w.substr(eq + 1);
    }
  }
  return r;
}

}  // namespace cpu_test

#endif  // NXL_TEST_CPU_RUN_H
