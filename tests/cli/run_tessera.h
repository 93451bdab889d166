// Runs the real `tessera` program as a user would, in a scratch directory of its own, and keeps
// what it printed and its exit status.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tessera::test {

struct Outcome {
  int exit = -1;
  std::string out;
  std::string err;
};

// A temporary directory, removed with everything in it at the end of the test. Runs of
// `tessera` take it as their HOME, so that nothing reaches the user's own store.
class Scratch {
 public:
  Scratch();
  ~Scratch();
  Scratch(const Scratch &) = delete;
  Scratch &operator=(const Scratch &) = delete;

  [[nodiscard]] const std::filesystem::path &path() const { return path_; }
  [[nodiscard]] std::string file(const std::string &name) const { return path_ / name; }
  // Writes `text` to the file `name` in the directory and returns its path.
  std::string write(const std::string &name, const std::string &text) const;
  [[nodiscard]] std::string read(const std::string &name) const;

  // Runs tessera with `args`, `input` on its standard input, and HOME, TESSERA_STORE_DB and
  // TESSERA_SIM_DIR in this directory; `env` adds NAME=VALUE entries.
  Outcome tessera(const std::vector<std::string> &args, const std::string &input = "",
                  const std::vector<std::string> &env = {}) const;

 private:
  std::filesystem::path path_;
};

}  // namespace tessera::test
