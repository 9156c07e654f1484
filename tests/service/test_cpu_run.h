// Starts the detection driver in a fresh process with a chosen environment
// (optionally under qemu-x86_64 with a processor model) and parses its report.
#ifndef NXL_TEST_CPU_RUN_H
#define NXL_TEST_CPU_RUN_H

#include <spawn.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

extern char **environ;

namespace cpu_test {

struct Report {
  int status = -1;                          // exit status of the driver
  std::string out;                          // its standard output
  std::string err;                          // its standard error
  std::map<std::string, std::string> kv;    // every key=value token
  int get(const std::string &key) const {
    auto it = kv.find(key);
    return it == kv.end() ? -999 : static_cast<int>(strtol(it->second.c_str(), nullptr, 0));
  }
  bool has(const std::string &key) const { return kv.count(key) != 0; }
};

// Variables that steer the detection; removed from the inherited environment
// so each run sees only what the test gives it.
inline bool steering(const char *entry) {
  static const char *names[] = {"NXL_CBWR=", "NXL_ENABLE_INSTRUCTIONS="};
  for (const char *n : names)
    if (strncmp(entry, n, strlen(n)) == 0) return true;
  return false;
}

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
// ("NAME=value" entries) added to the cleaned environment.
inline Report run_driver(const std::vector<std::string> &env, const std::vector<std::string> &args,
                         const std::string &model = "") {
  std::vector<std::string> argv_s;
  if (!model.empty()) {
    argv_s = {find_qemu(), "-cpu", model};
  }
  argv_s.push_back(CPU_PROBE_DRIVER);
  argv_s.insert(argv_s.end(), args.begin(), args.end());
  std::vector<char *> argv;
  for (auto &s : argv_s) argv.push_back(const_cast<char *>(s.c_str()));
  argv.push_back(nullptr);

  std::vector<std::string> env_s;
  for (char **e = environ; *e; ++e)
    if (!steering(*e)) env_s.push_back(*e);
  env_s.insert(env_s.end(), env.begin(), env.end());
  std::vector<char *> envp;
  for (auto &s : env_s) envp.push_back(const_cast<char *>(s.c_str()));
  envp.push_back(nullptr);

  Report r;
  int fd[2];
  if (pipe(fd) != 0) return r;
  // Standard error (qemu's notes on unsupported features among it) goes to
  // a file, kept for failure messages.
  char err_path[] = "/tmp/nxl_cpu_driver_XXXXXX";
  int err_fd = mkstemp(err_path);
  posix_spawn_file_actions_t fa;
  posix_spawn_file_actions_init(&fa);
  posix_spawn_file_actions_adddup2(&fa, fd[1], 1);
  if (err_fd >= 0) posix_spawn_file_actions_adddup2(&fa, err_fd, 2);
  posix_spawn_file_actions_addclose(&fa, fd[0]);
  posix_spawn_file_actions_addclose(&fa, fd[1]);
  pid_t pid;
  int rc = posix_spawn(&pid, argv[0], &fa, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&fa);
  close(fd[1]);
  if (rc != 0) {
    close(fd[0]);
    if (err_fd >= 0) {
      close(err_fd);
      unlink(err_path);
    }
    return r;
  }
  char buf[4096];
  ssize_t n;
  while ((n = read(fd[0], buf, sizeof buf)) > 0) r.out.append(buf, static_cast<size_t>(n));
  close(fd[0]);
  int st = 0;
  waitpid(pid, &st, 0);
  r.status = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
  if (err_fd >= 0) {
    lseek(err_fd, 0, SEEK_SET);
    while ((n = read(err_fd, buf, sizeof buf)) > 0) r.err.append(buf, static_cast<size_t>(n));
    close(err_fd);
    unlink(err_path);
  }

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
