// A scratch directory for a test's files, and whole-file reads and writes.
#pragma once

#include <string>
#include <string_view>

namespace tessera::test {

// A fresh directory under the temporary directory, removed with its contents at the end.
class ScratchDir {
 public:
  ScratchDir();
  ~ScratchDir();
  ScratchDir(const ScratchDir &) = delete;
  ScratchDir &operator=(const ScratchDir &) = delete;

  [[nodiscard]] const std::string &path() const { return path_; }
  [[nodiscard]] std::string file(const std::string &name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

// The bytes of a file; empty when it can't be read.
std::string read_file(const std::string &path);
// Replaces the file's content with `bytes`.
void write_file(const std::string &path, std::string_view bytes);

}  // namespace tessera::test
