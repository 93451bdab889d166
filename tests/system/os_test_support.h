// Helpers of the operating-system, lock and trace tests: capture of a file descriptor, standard
// input from another descriptor, and a body run in a child process.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

#include <fcntl.h>
#include <stdio_ext.h>
#include <sys/wait.h>
#include <unistd.h>

#include "scratch.h"

#ifdef TESSERA_COVERAGE
extern "C" int __llvm_profile_write_file(void);
#endif

namespace tessera::test {

// While it lives, what is written to `fd` (1 or 2) lands in a scratch file; text() reads it.
class CaptureFd {
 public:
  explicit CaptureFd(int fd) : fd_(fd), file_(scratch_.file("captured")) {
    std::fflush(nullptr);
    saved_ = ::dup(fd_);
    const int target = ::open(file_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    ::dup2(target, fd_);
    ::close(target);
  }
  ~CaptureFd() {
    std::fflush(nullptr);
    ::dup2(saved_, fd_);
    ::close(saved_);
  }
  CaptureFd(const CaptureFd &) = delete;
  CaptureFd &operator=(const CaptureFd &) = delete;

  [[nodiscard]] std::string text() const {
    std::fflush(nullptr);
    return read_file(file_);
  }
  [[nodiscard]] const std::string &path() const { return file_; }

 private:
  int fd_;
  int saved_ = -1;
  ScratchDir scratch_;
  std::string file_;
};

// While it lives, descriptor 0 and stdin read from `fd`; stdin starts with an empty buffer.
class StdinFrom {
 public:
  explicit StdinFrom(int fd) : saved_(::dup(STDIN_FILENO)) {
    ::dup2(fd, STDIN_FILENO);
    reset_stream();
  }
  ~StdinFrom() {
    ::dup2(saved_, STDIN_FILENO);
    ::close(saved_);
    reset_stream();
  }
  StdinFrom(const StdinFrom &) = delete;
  StdinFrom &operator=(const StdinFrom &) = delete;

 private:
  static void reset_stream() {
    __fpurge(stdin);
    std::clearerr(stdin);
  }
  int saved_;
};

// Runs `body` in a forked child, for what must not reach this process (a signal disposition, a
// changed user). The body returns what went wrong, empty when all is well; so does this.
inline std::string in_child(const std::function<std::string()> &body) {
  int channel[2];
  if (::pipe(channel) != 0) {
    return "pipe failed";
  }
  std::fflush(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    ::close(channel[0]);
    const std::string problems = body();
    static_cast<void>(!::write(channel[1], problems.data(), problems.size()));
#ifdef TESSERA_COVERAGE
    static_cast<void>(__llvm_profile_write_file());  // _exit skips the handler that would
#endif
    ::_exit(0);
  }
  ::close(channel[1]);
  std::string problems;
  char piece[256];
  for (ssize_t got = 0; (got = ::read(channel[0], piece, sizeof piece)) > 0;) {
    problems.append(piece, static_cast<std::size_t>(got));
  }
  ::close(channel[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    problems += " (child ended with status " + std::to_string(status) + ")";
  }
  return problems;
}

}  // namespace tessera::test
