// Shell commands in capture and run mode, shutdown and restart, and process lookup on the real
// /proc and /bin/ps.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "capture_sink.h"
#include "fake_execve.h"
#include "tessera/system.h"
#include "tests/system/os_test_support.h"

namespace tessera::test {
namespace {

constexpr char kExecuting[] = "DEBUG: %s [%d]: Executing shell command: %s\n";
constexpr char kWaitError[] = "ERROR: %s [%d]: Error waiting for process to complete, pid = %d\n";

TEST(Capture, KeepsAtMostOneByteLessThanTheBufferAndNeverWritesBehindIt) {
  struct Case {
    const char *command;
    int32_t size;
    std::string text;
  };
  const Case cases[] = {
      {"printf 0123456789abcdefghij", 16, "0123456789abcde"},
      {"printf 0123456789abcde", 16, "0123456789abcde"},
      {"printf abc; exit 3", 16, "abc"},  // the exit code is not looked at
      {"yes | head -c 100000", 4, "y\ny"},
      {"printf abc", 2, "a"},
      {"printf abc", 1, ""},
      {"", 8, ""},
  };
  for (const auto &c : cases) {
    std::string buffer(64, '#');
    EXPECT_EQ(OSExecuteCommand(c.command, 0, buffer.data(), c.size), 0) << c.command;
    EXPECT_EQ(buffer.c_str(), c.text) << c.command;
    EXPECT_EQ(buffer.substr(static_cast<std::size_t>(c.size)),
              std::string(64 - static_cast<std::size_t>(c.size), '#'))
        << c.command;
  }
  EXPECT_TRUE(CaptureSink::instance().reports().empty());
}

// Without room, capture mode asserts; without a command, either mode returns 1 silently. Neither
// starts a child.
TEST(Capture, WithoutRoomOrCommandRunsNothing) {
  const ScratchDir dir;
  const std::string command = "touch " + dir.file("ran");
  for (const int32_t size : {0, -5}) {
    char buffer[4] = "###";
    EXPECT_EQ(OSExecuteCommand(command.c_str(), 1, buffer, size), 1);
    EXPECT_STREQ(buffer, "###");
  }
  EXPECT_EQ(CaptureSink::instance().assertions(), 2U);
  EXPECT_NE(access(dir.file("ran").c_str(), F_OK), 0);
  CaptureSink::instance().reset();
  char buffer[4] = "###";
  EXPECT_EQ(OSExecuteCommand(nullptr, 1, nullptr, 0), 1);
  EXPECT_EQ(OSExecuteCommand(nullptr, 1, buffer, 4), 1);
  EXPECT_STREQ(buffer, "###");
  EXPECT_TRUE(CaptureSink::instance().reports().empty());
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

TEST(Run, WaitsAndGivesTheExitCode) {
  struct Case {
    const char *command;
    int32_t result;
    const char *error;  // format of the report besides the command's, or null
  };
  const Case cases[] = {
      {"exit 3", 3, nullptr},
      {"exit 255", 255, nullptr},
      {"no-such-command-anywhere 2>/dev/null", 127, nullptr},
      {"kill -KILL $$", 1, "ERROR: %s [%d]: Process exited because of uncaught signal\n"},
  };
  for (const auto &c : cases) {
    CaptureSink::instance().reset();
    EXPECT_EQ(OSExecuteCommand(c.command, 5000, nullptr, 0), c.result) << c.command;
    const auto reports = CaptureSink::instance().reports();
    ASSERT_EQ(reports.size(), c.error != nullptr ? 2U : 1U) << c.command;
    EXPECT_EQ(reports[0].format, kExecuting);
    EXPECT_EQ(reports[0].level, 5);
    EXPECT_EQ(reports[0].message, std::string("Executing shell command: ") + c.command + "\n");
    if (c.error != nullptr) {
      EXPECT_EQ(reports[1].format, c.error);
      EXPECT_EQ(reports[1].level, 2);
    }
  }
}

TEST(Run, AShellThatCannotStartExitsWith127) {
  setenv(kExecveFailVariable, "2", 1);  // the starter fails with ENOENT in the child
  EXPECT_EQ(OSExecuteCommand("exit 0", 1, nullptr, 0), 127);
  unsetenv(kExecveFailVariable);
}

// Without waiting, SIGCHLD is ignored for good: children reap themselves, so a later call with
// waiting finds no child. This runs in a child process to keep the disposition away from here.
TEST(Run, WithoutWaitingLeavesSigchldIgnoredAndLaterWaitsFail) {
  EXPECT_EQ(
      in_child([] {
        setenv(kExecveFailVariable, "2", 1);
        if (OSExecuteCommand("exit 3", 0, nullptr, 0) != 0) {
          return std::string("no-wait run of a shell that cannot start did not give 0");
        }
        unsetenv(kExecveFailVariable);
        struct sigaction now {};
        sigaction(SIGCHLD, nullptr, &now);
        if (now.sa_handler != SIG_IGN) {
          return std::string("SIGCHLD not ignored");
        }
        CaptureSink::instance().reset();
        if (OSExecuteCommand("exit 3", 1, nullptr, 0) != 1) {
          return std::string("waiting run did not fail");
        }
        const auto reports = CaptureSink::instance().reports();
        if (reports.size() != 2 || reports[1].format != kWaitError ||
            reports[1].message.rfind("Error waiting for process to complete, pid = ", 0) != 0) {
          return std::string("missing wait error report");
        }
        return std::string();
      }),
      "");
}

// A `shutdown` stub first on PATH records its arguments and exits with $STUB_EXIT.
class Shutdown : public ::testing::Test {
 protected:
  void SetUp() override {
    const std::string stub = dir_.file("shutdown");
    write_file(stub,
               "#!/bin/sh\necho \"$@\" >> '" + dir_.file("calls") + "'\nexit ${STUB_EXIT:-0}\n");
    ASSERT_EQ(chmod(stub.c_str(), 0755), 0);
    saved_path_ = std::getenv("PATH");
    setenv("PATH", (dir_.path() + ":" + saved_path_).c_str(), 1);
    // The stub must come first in the mode that OSShutdownSystem runs its command in: this also
    // shows that run mode hands the environment on.
    const std::string found = dir_.file("found");
    ASSERT_EQ(OSExecuteCommand(("command -v shutdown > '" + found + "'").c_str(), 1, nullptr, 0),
              0);
    ASSERT_EQ(read_file(found), stub + "\n") << "refusing to run a real shutdown";
    CaptureSink::instance().reset();
  }
  void TearDown() override {
    setenv("PATH", saved_path_.c_str(), 1);
    unsetenv("STUB_EXIT");
  }
  ScratchDir dir_;
  std::string saved_path_;
};

TEST_F(Shutdown, RunsShutdownNowAndGivesZeroOnlyForExitZero) {
  EXPECT_EQ(OSShutdownSystem(), 0);
  EXPECT_EQ(OSRestartSystem(), 0);
  setenv("STUB_EXIT", "3", 1);
  EXPECT_EQ(OSShutdownSystem(), 1);
  EXPECT_EQ(OSRestartSystem(), 1);
  EXPECT_EQ(read_file(dir_.file("calls")), "-h now\n-r now\n-h now\n-r now\n");
  EXPECT_EQ(CaptureSink::instance().count(kExecuting), 4U);
  EXPECT_EQ(CaptureSink::instance().reports()[0].message,
            "Executing shell command: shutdown -h now\n");
}

// Children that sleep under a name of this test's own: a link to sleep, started by full path.
class NamedChildren : public ::testing::Test {
 protected:
  void SetUp() override {
    name_ = "tsrprobe" + std::to_string(getpid() % 100000);
    ASSERT_EQ(symlink("/bin/sleep", dir_.file(name_).c_str()), 0);
  }
  void TearDown() override {
    for (const pid_t child : children_) {
      kill(child, SIGKILL);
      waitpid(child, nullptr, 0);
    }
  }
  pid_t start() {
    int ready[2];
    if (pipe2(ready, O_CLOEXEC) != 0) {
      return -1;
    }
    const std::string path = dir_.file(name_);
    const pid_t child = fork();
    if (child == 0) {
      execl(path.c_str(), path.c_str(), "600", nullptr);
      _exit(127);
    }
    close(ready[1]);
    char c = 0;
    static_cast<void>(read(ready[0], &c, 1));  // end of file once the child has started sleep
    close(ready[0]);
    children_.push_back(child);
    return child;
  }

  ScratchDir dir_;
  std::string name_;
  std::vector<pid_t> children_;
};

TEST_F(NamedChildren, AppPidIsTheLowestIdWhoseProgramHasTheBaseName) {
  const pid_t first = start();
  const pid_t second = start();
  ASSERT_GT(first, 0);
  ASSERT_GT(second, 0);
  const pid_t lowest = std::min(first, second);
  EXPECT_EQ(OSGetAppPid(name_.c_str()), lowest < 99999 ? lowest : -1);
  EXPECT_EQ(OSGetAppPid(dir_.file(name_).c_str()), -1);  // the base name alone is compared
  EXPECT_EQ(OSGetAppPid((name_ + "x").c_str()), -1);
  EXPECT_EQ(OSGetAppPid(name_.substr(1).c_str()), -1);
  EXPECT_EQ(OSGetAppPid(nullptr), -1);
}

// The listing is searched in its first 4095 bytes only, and a busy machine's listing is longer.
// In a PID namespace of its own, with a /proc mounted for it, the listing is this test's alone.
TEST_F(NamedChildren, ProcessRunningSearchesTheListingText) {
  const std::string problems = in_child([&]() -> std::string {
    if (unshare(CLONE_NEWPID | CLONE_NEWNS) != 0) {
      return std::string("skip: ") + std::strerror(errno);
    }
    return in_child([&]() -> std::string {  // process 1 of the namespace
      if (mount(nullptr, "/", "none", MS_REC | MS_PRIVATE, nullptr) != 0 ||
          mount("proc", "/proc", "proc", 0, nullptr) != 0) {
        return std::string("mounting /proc: ") + std::strerror(errno);
      }
      const pid_t child = start();
      if (child <= 0) {
        return "the child did not start";
      }
      CaptureSink::instance().reset();
      const int32_t found = OSProcessRunning(name_.c_str());
      const auto reports = CaptureSink::instance().reports();
      if (found != 1 || reports.size() != 2 ||
          reports[0].format != "DEBUG: %s [%d]: Process Buffer: \n%s\n" ||
          reports[0].message.find(name_) == std::string::npos ||
          reports[1].message != "found process name in output\n") {
        return "the child was not found with its two reports";
      }
      if (OSProcessRunning("PID") != 1 || OSProcessRunning("no-such-process-name-here") != 0) {
        return "the listing's text was not searched as a whole";
      }
      return OSGetAppPid(name_.c_str()) == child ? "" : "OSGetAppPid did not find the child";
    });
  });
  if (problems.rfind("skip: ", 0) == 0) {
    GTEST_SKIP() << "no PID namespace for a process listing of this test's own: " << problems;
  }
  EXPECT_EQ(problems, "");
}

TEST(ProcessRunning, FailsAfterTheAssertionForANullName) {
  EXPECT_EQ(OSProcessRunning(nullptr), 0);
  EXPECT_EQ(CaptureSink::instance().assertions(), 1U);
}

}  // namespace
}  // namespace tessera::test
