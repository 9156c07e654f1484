// Runs a program in a fresh process with a chosen environment and returns its
// exit status and standard output (standard error is merged into it).
#ifndef NXL_TESTS_CORE_SPAWN_H
#define NXL_TESTS_CORE_SPAWN_H

#include <spawn.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

extern char **environ;

struct spawn_result {
  int status = -1;
  std::string out;
};

// `env` entries "NAME=value" are added to the current environment, from
// which every NXL_*, OMP_*, KMP_* and message-passing variable is removed
// first so that the test decides alone.
inline spawn_result run_fresh(const std::string &program, const std::vector<std::string> &args,
                              const std::vector<std::string> &env) {
  std::vector<std::string> envs;
  for (char **e = environ; *e != nullptr; ++e) {
    std::string s = *e;
    bool overridden = false;
    for (const auto &o : env) overridden |= s.compare(0, o.find('=') + 1, o, 0, o.find('=') + 1) == 0;
    if (overridden || s.rfind("NXL_", 0) == 0 || s.rfind("OMP_", 0) == 0 || s.rfind("KMP_", 0) == 0 ||
        s.rfind("O_MPI_", 0) == 0 || s.rfind("OMPI_", 0) == 0 || s.rfind("MPI_", 0) == 0)
      continue;
    envs.push_back(s);
  }
  for (const auto &e : env) envs.push_back(e);
  std::vector<char *> envp, argv;
  for (auto &s : envs) envp.push_back(s.data());
  envp.push_back(nullptr);
  std::string prog = program;
  argv.push_back(prog.data());
  std::vector<std::string> a = args;
  for (auto &s : a) argv.push_back(s.data());
  argv.push_back(nullptr);

  spawn_result r;
  int fd[2];
  if (pipe(fd) != 0) return r;
  posix_spawn_file_actions_t fa;
  posix_spawn_file_actions_init(&fa);
  posix_spawn_file_actions_adddup2(&fa, fd[1], 1);
  posix_spawn_file_actions_adddup2(&fa, fd[1], 2);
  posix_spawn_file_actions_addclose(&fa, fd[0]);
  pid_t pid;
  int rc = posix_spawn(&pid, prog.c_str(), &fa, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&fa);
  close(fd[1]);
  if (rc != 0) {
    close(fd[0]);
    return r;
  }
  char buf[4096];
  ssize_t n;
  while ((n = read(fd[0], buf, sizeof buf)) > 0) r.out.append(buf, static_cast<size_t>(n));
  close(fd[0]);
  int st = 0;
  waitpid(pid, &st, 0);
  r.status = WIFEXITED(st) ? WEXITSTATUS(st) : 128 + WTERMSIG(st);
  return r;
}

// The integer after "key=" in `text`, or -999 when absent.
inline int field(const std::string &text, const std::string &key) {
  size_t p = 0;
  while ((p = text.find(key + "=", p)) != std::string::npos) {
    if (p == 0 || text[p - 1] == ' ' || text[p - 1] == '\n') return atoi(text.c_str() + p + key.size() + 1);
    ++p;
  }
  return -999;
}

#endif  // NXL_TESTS_CORE_SPAWN_H
