// The private user and mount namespace of the simulated controller: made for the daemons when
// the user can't write /var/run/tolvex, with a tmpfs of its own there, and joined by every later
// `tessera` command so that it reaches them from the user's shell.
#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

#include "sim.h"

namespace tessera_cli::sim {
namespace {

bool same_namespace(pid_t pid, const char *kind) {
  struct stat mine {};
  struct stat theirs {};
  return stat((std::string("/proc/self/ns/") + kind).c_str(), &mine) == 0 &&
         stat(("/proc/" + std::to_string(pid) + "/ns/" + kind).c_str(), &theirs) == 0 &&
         mine.st_ino == theirs.st_ino && mine.st_dev == theirs.st_dev;
}

bool write_file(const std::string &path, const std::string &text) {
  const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  const bool ok =
      fd >= 0 && write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  if (fd >= 0) {
    close(fd);
  }
  return ok;
}

// Lays a tmpfs over `run` that shows what `run` held (each entry bound back in place) and an
// empty tolvex directory: the one way to add a directory to a place the user can't write.
bool cover_run(const std::string &run) {
  const int old = open(run.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (old < 0 || mount("tessera-sim", run.c_str(), "tmpfs", 0, "mode=0755") != 0) {
    return false;
  }
  const std::string from = "/proc/self/fd/" + std::to_string(old) + "/";
  DIR *entries = fdopendir(dup(old));
  while (dirent *entry = entries != nullptr ? readdir(entries) : nullptr) {
    const std::string name = entry->d_name;
    if (name == "." || name == "..") {
      continue;
    }
    const std::string source = from + name;
    const std::string target = run + "/" + name;
    struct stat info {};
    if (fstatat(old, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
      continue;
    }
    if (S_ISLNK(info.st_mode)) {
      char link[PATH_MAX];
      const ssize_t size = readlinkat(old, name.c_str(), link, sizeof link - 1);
      if (size > 0) {
        link[size] = '\0';
        if (symlink(link, target.c_str()) != 0) {
          continue;  // a link that can't be copied is left out, like an unreadable entry
        }
      }
      continue;
    }
    const bool made = S_ISDIR(info.st_mode)
                          ? mkdir(target.c_str(), 0755) == 0
                          : close(open(target.c_str(), O_CREAT | O_WRONLY, 0644)) == 0;
    if (made) {
      (void)mount(source.c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr);
    }
  }
  if (entries != nullptr) {
    closedir(entries);
  }
  close(old);
  return mkdir((run + "/tolvex").c_str(), 0755) == 0;
}

}  // namespace

pid_t namespace_pid() {
  if (!exists(namespace_mark())) {
    return 0;
  }
  for (const auto &daemon : kDaemons) {
    if (const pid_t pid = running_pid(daemon); pid != 0) {
      return pid;
    }
  }
  return 0;
}

std::string enter_new_namespace() {
  const uid_t uid = geteuid();
  const gid_t gid = getegid();
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
    return std::string("can't make a private namespace (") + std::strerror(errno) +
           "): allow unprivileged user namespaces, or run as a user who can write /var/run/tolvex";
  }
  (void)write_file("/proc/self/setgroups", "deny");
  if (!write_file("/proc/self/uid_map", "0 " + std::to_string(uid) + " 1") ||
      !write_file("/proc/self/gid_map", "0 " + std::to_string(gid) + " 1") ||
      mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
    return std::string("can't set up the private namespace: ") + std::strerror(errno);
  }
  char run[PATH_MAX];
  if (realpath("/var/run", run) == nullptr) {
    return std::string("/var/run: ") + std::strerror(errno);
  }
  const std::string tolvex = std::string(run) + "/tolvex";
  const bool covered = exists(tolvex)
                           ? mount("tessera-sim", tolvex.c_str(), "tmpfs", 0, "mode=0755") == 0
                           : cover_run(run);
  if (!covered) {
    return "can't mount a private " + tolvex + ": " + std::strerror(errno);
  }
  return exists(sim_dir()) ? "" : "the namespace hides " + sim_dir() + ": set TESSERA_SIM_DIR";
}

bool can_write_tolvex() {
  char run[PATH_MAX];
  if (realpath("/var/run", run) == nullptr) {
    return false;
  }
  const std::string tolvex = std::string(run) + "/tolvex";
  return access(exists(tolvex) ? tolvex.c_str() : run, W_OK) == 0;
}

}  // namespace tessera_cli::sim

namespace tessera_cli {

void join_simulation() {
  using namespace sim;
  const pid_t pid = namespace_pid();
  if (pid == 0 || (same_namespace(pid, "user") && same_namespace(pid, "mnt"))) {
    return;
  }
  char cwd[PATH_MAX];
  const bool has_cwd = getcwd(cwd, sizeof cwd) != nullptr;
  const int user =
      open(("/proc/" + std::to_string(pid) + "/ns/user").c_str(), O_RDONLY | O_CLOEXEC);
  const int mnt = open(("/proc/" + std::to_string(pid) + "/ns/mnt").c_str(), O_RDONLY | O_CLOEXEC);
  if (user >= 0 && mnt >= 0 && (same_namespace(pid, "user") || setns(user, CLONE_NEWUSER) == 0) &&
      setns(mnt, CLONE_NEWNS) == 0 && has_cwd) {
    // Joining a mount namespace moves to its root; back to where we were.
    if (chdir(cwd) != 0) {
      // Left at the root: relative paths then fail, and say so themselves.
    }
  }
  for (const int fd : {user, mnt}) {
    if (fd >= 0) {
      close(fd);
    }
  }
}

}  // namespace tessera_cli
