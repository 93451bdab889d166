// The library where the platform fails it. This program replaces fork, popen, waitpid, opendir,
// semget and socket with stand-ins that pass each call on to the C library, or fail it (or, for
// waitpid, change the status of the child it reaped) as a case asks. And the guard that keeps a
// broken daemon connection from killing the caller with SIGPIPE.
#include <gtest/gtest.h>

#include <dirent.h>
#include <dlfcn.h>
#include <signal.h>
#include <sys/sem.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "capture_sink.h"
#include "system/linux/sigpipe.h"
#include "tessera/orb_cfg.h"
#include "tessera/session.h"
#include "tessera/sync.h"
#include "tessera/system.h"
#include "tests/system/os_test_support.h"

namespace {

// What the stand-ins do: an errno fails the call with it; 0 passes it on. A `wait_status` other
// than -1 replaces the status of the child that waitpid reaped.
struct Faults {
  int fork = 0;
  int popen = 0;
  int waitpid = 0;
  int opendir = 0;
  int semget = 0;
  int socket = 0;
  int wait_status = -1;
};
Faults faults;

template <typename Function>
Function next(const char *name) {
  return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

template <typename Result>
Result fail_with(int error, Result result) {
  errno = error;
  return result;
}

}  // namespace

// Each stand-in passes the call on to the C library's function of its name, or fails it with the
// errno that `faults` holds under that name.
#define TESSERA_STAND_IN(Result, name, failure, parameters, arguments)                  \
  Result name parameters {                                                              \
    static const auto real = next<Result(*) parameters>(#name);                         \
    return faults.name != 0 ? fail_with<Result>(faults.name, failure) : real arguments; \
  }

extern "C" {

TESSERA_STAND_IN(pid_t, fork, -1, (), ())
TESSERA_STAND_IN(FILE *, popen, nullptr, (const char *command, const char *mode), (command, mode))
TESSERA_STAND_IN(DIR *, opendir, nullptr, (const char *path), (path))
TESSERA_STAND_IN(int, semget, -1, (key_t key, int count, int flags), (key, count, flags))
TESSERA_STAND_IN(int, socket, -1, (int domain, int type, int protocol), (domain, type, protocol))

pid_t waitpid(pid_t pid, int *status, int options) {
  static const auto real = next<pid_t (*)(pid_t, int *, int)>("waitpid");
  const pid_t reaped = real(pid, status, options);  // no child is left behind
  if (faults.waitpid != 0) {
    return fail_with(faults.waitpid, -1);
  }
  if (reaped > 0 && status != nullptr && faults.wait_status != -1) {
    *status = faults.wait_status;
  }
  return reaped;
}

}  // extern "C"

namespace tessera::test {
namespace {

constexpr char kForkFailed[] = "ERROR: %s [%d]: Failed to fork process!\n";
constexpr char kPipeFailed[] = "ERROR: %s [%d]: Failed to open redirected pipe for execution\n";
constexpr char kWaitFailed[] = "ERROR: %s [%d]: Error waiting for process to complete, pid = %d\n";

int32_t capture_untouched(const char *command) {
  char out[8] = "#######";
  const int32_t result = OSExecuteCommand(command, 0, out, sizeof out);
  return std::string(out) == "#######" ? result : -99;
}

TEST(FailingPlatform, EachFailureGivesItsResultAndItsReport) {
  struct Case {
    const char *what;
    Faults faults;
    std::function<int64_t()> call;
    int64_t result;
    std::vector<std::string> errors;  // formats of the level 2 reports, in order
  };
  const auto run = [] { return OSExecuteCommand("exit 0", 1, nullptr, 0); };
  const Case cases[] = {
      {"fork fails", {.fork = EAGAIN}, run, 1, {kForkFailed}},
      {"fork fails under shutdown", {.fork = ENOMEM}, OSShutdownSystem, 1, {kForkFailed}},
      {"popen fails",
       {.popen = EMFILE},
       [] { return capture_untouched("echo x"); },
       1,
       {kPipeFailed}},
      {"popen fails under the listing",
       {.popen = EMFILE},
       [] { return OSProcessRunning("sh"); },
       0,
       {kPipeFailed, kAssertFormat}},
      {"waitpid is interrupted", {.waitpid = EINTR}, run, 1, {kWaitFailed}},
      {"the child stopped",
       {.wait_status = 0x137f},
       run,
       1,
       {"ERROR: %s [%d]: Process not running\n"}},
      {"a status of no known kind", {.wait_status = 0xffff}, run, 1, {kAssertFormat}},
      {"/proc can't be read",
       {.opendir = EACCES},
       [] { return OSGetAppPid(program_invocation_short_name); },
       -1,
       {}},
      {"no semaphore",
       {.semget = ENOSPC},
       [] { return static_cast<int64_t>(OSLockInit("x") != nullptr); },
       0,
       {}},
      {"no socket for a property",
       {.socket = EMFILE},
       [] {
         char out[8] = "";
         return DM_ORB_Get_Property("WEBSERVER/http_port", out, sizeof out);
       },
       1,
       {}},
      {"no socket for a close", {.socket = EMFILE}, [] { return ssn_close(3); }, 12307, {}},
  };
  ASSERT_GT(OSGetAppPid(program_invocation_short_name), 0) << "the baseline finds this program";
  for (const auto &c : cases) {
    CaptureSink::instance().reset();
    faults = c.faults;
    const int64_t result = c.call();
    faults = {};
    EXPECT_EQ(result, c.result) << c.what;
    std::vector<std::string> errors;
    for (const auto &report : CaptureSink::instance().reports()) {
      if (report.level == 2) {
        errors.push_back(report.format);
      }
    }
    EXPECT_EQ(errors, c.errors) << c.what;
  }
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child was left unreaped";
}

// A write to a peer that has gone away raises SIGPIPE. Under the guard it neither kills the
// caller nor outlives the guard, while a SIGPIPE the caller had pending before stays pending
// and the caller's mask comes back as it was. Each case runs in a child of its own.
TEST(SigpipeGuard, DiscardsOnlyTheSignalRaisedWhileItLived) {
  struct Case {
    bool blocked;  // by the caller, before the guard
    bool pending;  // raised by the caller before the guard (blocked, so it waits)
    bool broken_write;
  };
  const Case cases[] = {
      {false, false, true}, {true, false, true}, {true, true, true}, {true, true, false}};
  for (const auto &c : cases) {
    const std::string problems = in_child([&c]() -> std::string {
      sigset_t pipe_only;
      sigemptyset(&pipe_only);
      sigaddset(&pipe_only, SIGPIPE);
      if (c.blocked) {
        pthread_sigmask(SIG_BLOCK, &pipe_only, nullptr);
      }
      if (c.pending) {
        ::raise(SIGPIPE);
      }
      int pair[2];
      if (::socketpair(AF_UNIX, SOCK_STREAM, 0, pair) != 0) {
        return "socketpair failed";
      }
      ::close(pair[1]);
      {
        const SigpipeGuard guard;
        if (c.broken_write && (::write(pair[0], "x", 1) != -1 || errno != EPIPE)) {
          return "the write did not meet a broken pipe";
        }
      }
      ::close(pair[0]);
      sigset_t now;
      sigset_t pending;
      pthread_sigmask(SIG_SETMASK, nullptr, &now);
      sigpending(&pending);
      std::string wrong;
      if (sigismember(&now, SIGPIPE) != static_cast<int>(c.blocked)) {
        wrong += " mask not restored;";
      }
      if (sigismember(&pending, SIGPIPE) != static_cast<int>(c.pending)) {
        wrong += c.pending ? " the caller's SIGPIPE was lost;" : " a SIGPIPE outlived the guard;";
      }
      return wrong;
    });
    EXPECT_EQ(problems, "") << "blocked " << c.blocked << ", pending " << c.pending
                            << ", broken write " << c.broken_write;
  }
}

}  // namespace
}  // namespace tessera::test
