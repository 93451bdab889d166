// Owners of operating-system handles, so that every path out of a function gives them back.
#pragma once

#include <cstdio>
#include <memory>

#include <dirent.h>
#include <unistd.h>

namespace tessera {

// A file descriptor, closed when the owner goes.
class UniqueFd {
 public:
  explicit UniqueFd(int fd) noexcept : fd_(fd) {}
  UniqueFd(const UniqueFd &) = delete;
  UniqueFd &operator=(const UniqueFd &) = delete;
  ~UniqueFd() {
    if (fd_ >= 0) {
      ::close(fd_);
    }
  }

  [[nodiscard]] int get() const noexcept { return fd_; }
  [[nodiscard]] bool valid() const noexcept { return fd_ >= 0; }

 private:
  int fd_;
};

struct FileCloser {
  void operator()(std::FILE *file) const noexcept { std::fclose(file); }
};
struct PipeCloser {
  void operator()(std::FILE *pipe) const noexcept { ::pclose(pipe); }
};
struct DirCloser {
  void operator()(DIR *dir) const noexcept { ::closedir(dir); }
};

// A stream from fopen, closed with fclose; a stream from popen, closed with pclose.
using UniqueFile = std::unique_ptr<std::FILE, FileCloser>;
using UniquePipe = std::unique_ptr<std::FILE, PipeCloser>;
// A directory stream from opendir, closed with closedir.
using UniqueDir = std::unique_ptr<DIR, DirCloser>;

}  // namespace tessera
