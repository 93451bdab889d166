// Operating-system services of the tools: sleep, ticks and timezone offsets; whole-file reads,
// writes and copies; a key press; shell commands; process lookup. Thin wrappers over POSIX.

// Large-file interfaces in this file only, so that files over 2 GiB open and stat on armhf too.
#define _FILE_OFFSET_BITS 64

#include "tessera/system.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/times.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
// After <cstring>: the POSIX basename, which takes "/a/b/" to "b" and "" to ".".
#include <libgen.h>

#include "memory/heap.h"
#include "system/linux/handles.h"
#include "tessera/store_client.h"
#include "trace/report.h"

#ifdef TESSERA_COVERAGE
extern "C" int __llvm_profile_write_file(void);
#endif

namespace tessera {
namespace {

// Coverage builds: a forked child ends in execve or _exit, past the exit handlers that write its
// coverage counts, so it writes them first. Nothing in other builds.
void write_child_coverage() {
#ifdef TESSERA_COVERAGE
  static_cast<void>(__llvm_profile_write_file());
#endif
}

constexpr int kSleepCalls = 11;                // one nanosleep and 10 retries after EINTR
constexpr uint32_t kMillisecondsPerTick = 10;  // fixed: the clock rate is not asked for
constexpr std::size_t kCopyPiece = 512;
constexpr int32_t kListingSize = 4096;  // bytes of the /bin/ps listing that are searched
constexpr long kNoProcess = 99999;      // mark for "none" of OSGetAppPid
constexpr std::size_t kCmdlineSize = 100;

int32_t capture_output(const char *command, char *out, int32_t out_size) {
  if (!REPORT_ASSERT(out_size >= 1)) {
    return 1;
  }
  const UniquePipe pipe(::popen(command, "re"));
  if (!pipe) {
    REPORT_ERROR("Failed to open redirected pipe for execution\n");
    return 1;
  }
  std::memset(out, 0, static_cast<std::size_t>(out_size));
  int32_t filled = 0;
  for (int c = 0; filled < out_size - 1 && (c = std::fgetc(pipe.get())) != EOF;) {
    out[filled++] = static_cast<char>(c);
  }
  out[filled] = '\0';
  return 0;
}

int32_t run_command(const char *command, unsigned int wait) {
  REPORT_DEBUG("Executing shell command: %s\n", command);
  if (wait == 0) {
    ::signal(SIGCHLD, SIG_IGN);  // children reap themselves; this outlives the call
  }
  const pid_t child = ::fork();
  if (child < 0) {
    REPORT_ERROR("Failed to fork process!\n");
    return 1;
  }
  if (child == 0) {
    char *const argv[] = {const_cast<char *>("sh"), const_cast<char *>("-c"),
                          const_cast<char *>(command), nullptr};
    write_child_coverage();
    if (tattletale_standin1_execve("/bin/sh", argv, environ) == -1) {
      REPORT_ERROR("execve failed, errno = %d\n", errno);
      write_child_coverage();
      ::_exit(127);
    }
    write_child_coverage();
    ::_exit(0);
  }
  if (wait == 0) {
    return 0;
  }
  int status = 0;
  if (::waitpid(child, &status, 0) == -1) {
    REPORT_ERROR("Error waiting for process to complete, pid = %d\n", static_cast<int>(child));
    return 1;
  }
  if (WIFSIGNALED(status)) {
    REPORT_ERROR("Process exited because of uncaught signal\n");
    return 1;
  }
  if (WIFSTOPPED(status)) {
    REPORT_ERROR("Process not running\n");
    return 1;
  }
  if (!REPORT_ASSERT(WIFEXITED(status))) {
    return 1;
  }
  return WEXITSTATUS(status);
}

// The zone settings are read from TZ only while the offset is 0: never read yet, or UTC.
void read_zone_while_utc() {
  if (::timezone == 0) {
    ::tzset();
  }
}

bool all_digits(const char *text) {
  if (*text == '\0') {
    return false;
  }
  for (; *text != '\0'; ++text) {
    if (*text < '0' || *text > '9') {
      return false;
    }
  }
  return true;
}

}  // namespace
}  // namespace tessera

using namespace tessera;

// --- Time, sleep and timezone -----------------------------------------------------------------

extern "C" void OSSleep(uint32_t milliseconds) {
  // One structure is both request and remainder, so that a retry sleeps only what was left.
  timespec time{};
  time.tv_sec = static_cast<time_t>(milliseconds / 1000);
  time.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000L;
  for (int call = 0; call < kSleepCalls; ++call) {
    if (::nanosleep(&time, &time) == 0 || errno != EINTR) {
      return;
    }
  }
}

extern "C" uint32_t GetTickCount() {
  tms unused{};
  clock_t ticks = ::times(&unused);
  if (ticks == static_cast<clock_t>(-1)) {
    std::perror("times:failed:");
    ticks = ::times(&unused);
    if (ticks == static_cast<clock_t>(-1)) {
      std::perror("Times Failed:");
    }
  }
  return static_cast<uint32_t>(ticks) * kMillisecondsPerTick;
}

extern "C" uint32_t OSGetTickCount() {
  return GetTickCount();
}

extern "C" uint32_t OSGetTimeDiff(uint32_t earlier) {
  const uint32_t now = OSGetTickCount();
  if (now >= earlier) {
    return now - earlier;
  }
  return 0xFFFFFFFFU - earlier + now;  // across a wrap: one less than the true difference
}

extern "C" int32_t OSGetTimezoneOffset() {
  read_zone_while_utc();
  return static_cast<int32_t>(-::timezone / 60);  // timezone: seconds west of UTC
}

extern "C" int32_t OSGetDaylightOffset() {
  read_zone_while_utc();
  return ::daylight != 0 ? 60 : 0;
}

// --- Files and console ------------------------------------------------------------------------

extern "C" int32_t OSFileExists(const char *path) {
  return path != nullptr && ::access(path, R_OK) == 0 ? 1 : 0;
}

extern "C" int32_t OSIsAdmin() {
  return ::geteuid() == 0 ? 1 : 0;
}

extern "C" int32_t OSGetFileSize(const char *path) {
  struct stat info {};
  if (OSFileExists(path) == 0 || ::stat(path, &info) != 0) {
    return 0;
  }
  constexpr auto kLargest = std::numeric_limits<int32_t>::max();
  return info.st_size > kLargest ? kLargest : static_cast<int32_t>(info.st_size);
}

extern "C" int32_t OSWriteFile(const char *path, const void *buffer, int32_t count) {
  if (path == nullptr || count < 0 || (buffer == nullptr && count > 0)) {
    return -1;
  }
  const UniqueFile file(std::fopen(path, "w+e"));
  if (!file) {
    return -1;
  }
  if (count == 0) {
    return 0;
  }
  return static_cast<int32_t>(std::fwrite(buffer, 1, static_cast<std::size_t>(count), file.get()));
}

extern "C" int32_t OSReadFile(const char *path, void *buffer, int32_t count) {
  if (path == nullptr || count < 0 || (buffer == nullptr && count > 0)) {
    return -1;
  }
  const UniqueFile file(std::fopen(path, "re"));
  if (!file) {
    return -1;
  }
  if (count == 0) {
    return 0;
  }
  return static_cast<int32_t>(std::fread(buffer, 1, static_cast<std::size_t>(count), file.get()));
}

extern "C" int32_t OSFileCopy(const char *source, const char *destination) {
  if (source == nullptr || destination == nullptr) {
    return 1;
  }
  const UniqueFd from(::open(source, O_RDONLY | O_CLOEXEC));
  if (!from.valid()) {
    return 1;
  }
  // Not truncated: an older, longer destination keeps its tail.
  const UniqueFd to(::open(destination, O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
  if (!to.valid()) {
    return 1;
  }
  char piece[kCopyPiece];
  for (ssize_t got = 0; (got = ::read(from.get(), piece, sizeof piece)) > 0;) {
    const ssize_t rv = ::write(to.get(), piece, static_cast<std::size_t>(got));
    if (rv != 0) {
      REPORT_DEBUG("rv = %d\n", static_cast<int>(rv));
    }
  }
  return 0;
}

extern "C" int32_t getch() {
  termios kept{};
  const bool terminal = ::tcgetattr(STDIN_FILENO, &kept) == 0;
  if (terminal) {
    termios raw = kept;
    raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    ::tcsetattr(STDIN_FILENO, TCSANOW, &raw);
  }
  const int c = std::getchar();
  if (terminal) {
    ::tcsetattr(STDIN_FILENO, TCSANOW, &kept);
  }
  return c;
}

// --- Commands and processes -------------------------------------------------------------------

extern "C" int32_t OSExecuteCommand(const char *command, unsigned int wait, char *out,
                                    int32_t out_size) {
  if (command == nullptr) {
    return 1;
  }
  return out != nullptr ? capture_output(command, out, out_size) : run_command(command, wait);
}

extern "C" int32_t OSShutdownSystem() {
  return OSExecuteCommand("shutdown -h now", 1, nullptr, 0) == 0 ? 0 : 1;
}

extern "C" int32_t OSRestartSystem() {
  return OSExecuteCommand("shutdown -r now", 1, nullptr, 0) == 0 ? 0 : 1;
}

extern "C" int32_t OSProcessRunning(const char *name) {
  if (!REPORT_ASSERT(name != nullptr)) {
    return 0;
  }
  const heap::Owned<char> listing(static_cast<char *>(heap::allocate_zeroed(kListingSize)));
  if (!listing) {
    REPORT_ERROR("Unable to allocate memory\n");
  }
  if (!REPORT_ASSERT(listing != nullptr) ||
      !REPORT_ASSERT(OSExecuteCommand("/bin/ps", 5000, listing.get(), kListingSize) == 0)) {
    return 0;
  }
  REPORT_DEBUG("Process Buffer: \n%s\n", listing.get());
  if (std::strstr(listing.get(), name) == nullptr) {
    return 0;
  }
  REPORT_DEBUG("found process name in output\n");
  return 1;
}

extern "C" int32_t OSGetAppPid(const char *name) {
  if (name == nullptr) {
    return -1;
  }
  const UniqueDir proc(::opendir("/proc"));
  if (!proc) {
    return -1;
  }
  long best = kNoProcess;
  while (const dirent *entry = ::readdir(proc.get())) {
    if (!all_digits(entry->d_name)) {
      continue;
    }
    char path[64];
    const int length = std::snprintf(path, sizeof path, "/proc/%s/cmdline", entry->d_name);
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof path) {
      continue;
    }
    // The command line's arguments are NUL-separated, so the text read is the first argument.
    char line[kCmdlineSize] = {};
    if (const UniqueFile file{std::fopen(path, "re")}) {
      if (std::fgets(line, sizeof line, file.get()) == nullptr) {
        REPORT_DEBUG("Error with fgets\n");
      }
    }
    if (std::strcmp(::basename(line), name) != 0) {
      continue;
    }
    const long id = std::strtol(entry->d_name, nullptr, 10);
    if (id <= best) {
      best = id;
    }
  }
  return best == kNoProcess ? -1 : static_cast<int32_t>(best);
}
