// Runs the real `tessera` program as a user would, in a scratch directory of its own, and keeps
// what it printed and its exit status.
#pragma once

#include <string>
#include <vector>

#include "scratch.h"

namespace tessera::test {

struct Outcome {
  int exit = -1;
  std::string out;
  std::string err;
};

// The words of `text`, split at blanks.
std::vector<std::string> words(const std::string &text);

// The words that start the tessera program: the emulator's when cross built, then its path.
std::vector<std::string> tessera_program();

// A scratch directory whose runs of `tessera` take it as their HOME, so that nothing reaches the
// user's own store.
class Scratch : public ScratchDir {
 public:
  // Writes `text` to the file `name` in the directory and returns its path.
  std::string write(const std::string &name, const std::string &text) const {
    write_file(file(name), text);
    return file(name);
  }
  [[nodiscard]] std::string read(const std::string &name) const { return read_file(file(name)); }

  // Runs `command` (a program found on PATH, and its arguments) in this directory, with `input`
  // on its standard input and HOME, TESSERA_STORE_DB and TESSERA_SIM_DIR in this directory.
  Outcome run(std::vector<std::string> command, const std::string &input = "") const;
  // Runs tessera with `args` so.
  Outcome tessera(const std::vector<std::string> &args, const std::string &input = "") const;
};

// A run of tessera and what it must give: its exit status, its standard output, and a part of
// its standard error ("" when it must print nothing there).
struct Expected {
  std::vector<std::string> args;
  int exit;
  std::string out;
  std::string err;
};
// Runs each case, with `before` in front of its arguments, and checks what it gives.
void expect_runs(const Scratch &scratch, const std::vector<Expected> &cases,
                 const std::vector<std::string> &before = {});

}  // namespace tessera::test
