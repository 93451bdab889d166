#include "run_tessera.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tessera::test {

std::vector<std::string> words(const std::string &text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string word; in >> word;) {
    out.push_back(word);
  }
  return out;
}

std::vector<std::string> tessera_program() {
  std::vector<std::string> command = words(TESSERA_CLI_EMULATOR);
  command.emplace_back(TESSERA_CLI_PATH);
  return command;
}

Outcome Scratch::tessera(const std::vector<std::string> &args, const std::string &input) const {
  std::vector<std::string> command = tessera_program();
  command.insert(command.end(), args.begin(), args.end());
  return run(command, input);
}

Outcome Scratch::run(std::vector<std::string> command, const std::string &input) const {
  const std::string in_path = write(".stdin", input);
  const std::string out_path = file(".stdout");
  const std::string err_path = file(".stderr");
  std::vector<char *> argv;
  for (auto &word : command) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    const int in = open(in_path.c_str(), O_RDONLY);
    const int out = open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const int err = open(err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (in < 0 || out < 0 || err < 0 || dup2(in, 0) < 0 || dup2(out, 1) < 0 || dup2(err, 2) < 0 ||
        chdir(path().c_str()) != 0) {
      _exit(126);
    }
    setenv("HOME", path().c_str(), 1);
    setenv("TESSERA_STORE_DB", file("store.db").c_str(), 1);
    setenv("TESSERA_SIM_DIR", file("sim").c_str(), 1);
    execvp(argv[0], argv.data());
    _exit(127);
  }
  Outcome run;
  int status = 0;
  if (child > 0 && waitpid(child, &status, 0) == child) {
    run.exit = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  run.out = read(".stdout");
  run.err = read(".stderr");
  return run;
}

void expect_runs(const Scratch &scratch, const std::vector<Expected> &cases,
                 const std::vector<std::string> &before) {
  for (const auto &c : cases) {
    auto args = before;
    args.insert(args.end(), c.args.begin(), c.args.end());
    const Outcome run = scratch.tessera(args);
    std::string line;
    for (const auto &arg : args) {
      line += " " + arg.substr(0, 40);
    }
    EXPECT_EQ(run.exit, c.exit) << line;
    EXPECT_EQ(run.out, c.out) << line;
    EXPECT_THAT(run.err, ::testing::HasSubstr(c.err)) << line;
    EXPECT_EQ(run.err.empty(), c.err.empty()) << line << ": " << run.err;
  }
}

}  // namespace tessera::test
