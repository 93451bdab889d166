// The simulated controller of a workstation: the kit's mapping and session daemons serving the
// controller's socket paths, and a store seeded like a controller in use. This file starts,
// watches and stops the daemons and holds the `sim` commands; sim_ns.cpp makes and joins the
// private namespace they run in when the user can't write /var/run/tolvex, and sim_seed.cpp
// fills the store.
#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include <tessera/session.h>

#include "sim.h"

namespace tessera_cli::sim {
namespace {

std::string pid_file(const Daemon &daemon) {
  return sim_dir() + "/" + daemon.program + ".pid";
}
std::string log_file(const Daemon &daemon) {
  return sim_dir() + "/" + daemon.program + ".log";
}

}  // namespace

const std::string &sim_dir() {
  static const std::string dir = [] {
    const char *set = std::getenv("TESSERA_SIM_DIR");
    if (set != nullptr && set[0] != '\0') {
      return std::string(set);
    }
    const char *state = std::getenv("XDG_STATE_HOME");
    const char *home = std::getenv("HOME");
    if (state != nullptr && state[0] != '\0') {
      return std::string(state) + "/tessera/sim";
    }
    return home != nullptr && home[0] != '\0' ? std::string(home) + "/.local/state/tessera/sim"
                                              : "/tmp/tessera-sim-" + std::to_string(getuid());
  }();
  return dir;
}

std::string namespace_mark() {
  return sim_dir() + "/namespace";
}

bool exists(const std::string &path) {
  return access(path.c_str(), F_OK) == 0;
}

pid_t running_pid(const Daemon &daemon) {
  pid_t pid = 0;
  std::ifstream(pid_file(daemon)) >> pid;
  if (pid <= 0) {
    return 0;
  }
  std::string stat;
  std::getline(std::ifstream("/proc/" + std::to_string(pid) + "/stat"), stat);
  const auto paren = stat.rfind(')');
  if (paren == std::string::npos || paren + 2 >= stat.size() || stat[paren + 2] == 'Z') {
    return 0;
  }
  std::string argv0;
  std::getline(std::ifstream("/proc/" + std::to_string(pid) + "/cmdline"), argv0, '\0');
  return argv0.ends_with(daemon.program) ? pid : 0;
}

namespace {

using namespace std::chrono_literals;

constexpr auto kStartTime = 10s;
constexpr auto kStopTime = 5s;

// True when something accepts connections on the socket.
bool answers(const char *path) {
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
  const bool ok =
      fd >= 0 && connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
  if (fd >= 0) {
    close(fd);
  }
  return ok;
}

// The daemon program: from $TESSERA_DAEMON_DIR, beside this program, or in the build tree.
std::string find_program(const char *program) {
  std::vector<std::string> dirs;
  if (const char *dir = std::getenv("TESSERA_DAEMON_DIR"); dir != nullptr && dir[0] != '\0') {
    dirs.emplace_back(dir);
  }
  char self[PATH_MAX];
  const ssize_t size = readlink("/proc/self/exe", self, sizeof self - 1);
  if (size > 0) {
    self[size] = '\0';
    dirs.emplace_back(std::string(self).substr(0, std::string(self).rfind('/')));
  }
#ifdef TESSERA_CLI_DAEMON_DIR
  dirs.emplace_back(TESSERA_CLI_DAEMON_DIR);
#endif
  for (const auto &dir : dirs) {
    if (access((dir + "/" + program).c_str(), X_OK) == 0) {
      return dir + "/" + program;
    }
  }
  return "";
}

// In the child that becomes the daemons' parent: the namespace if asked, both daemons in the
// foreground with their logs, and a wait until both answer. Exits with the start's status.
[[noreturn]] void launch(bool in_namespace, const std::string (&programs)[2]) {
  setsid();
  if (in_namespace) {
    const std::string error = enter_new_namespace();
    if (!error.empty()) {
      std::fprintf(stderr, "tessera: sim start: %s\n", error.c_str());
      _exit(kFailed);
    }
  }
  pid_t children[2] = {};
  for (int i = 0; i < 2; ++i) {
    children[i] = fork();
    if (children[i] == 0) {
      const int null = open("/dev/null", O_RDONLY);
      const int log = open(log_file(kDaemons[i]).c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
      if (null < 0 || log < 0 || dup2(null, 0) < 0 || dup2(log, 1) < 0 || dup2(log, 2) < 0) {
        _exit(127);
      }
      const std::string pid = pid_file(kDaemons[i]);
      execl(programs[i].c_str(), programs[i].c_str(), "--foreground", "--pid-file", pid.c_str(),
            static_cast<char *>(nullptr));
      std::fprintf(stderr, "%s: %s\n", programs[i].c_str(), std::strerror(errno));
      _exit(127);
    }
  }
  const auto deadline = std::chrono::steady_clock::now() + kStartTime;
  while (std::chrono::steady_clock::now() < deadline) {
    bool ready = true;
    for (int i = 0; i < 2; ++i) {
      int status = 0;
      if (waitpid(children[i], &status, WNOHANG) == children[i]) {
        std::fprintf(stderr, "tessera: sim start: %s stopped at once; see %s\n",
                     kDaemons[i].program, log_file(kDaemons[i]).c_str());
        kill(children[1 - i], SIGTERM);
        _exit(kFailed);
      }
      ready = ready && answers(kDaemons[i].socket) && exists(pid_file(kDaemons[i]));
    }
    if (ready) {
      _exit(kOk);
    }
    std::this_thread::sleep_for(20ms);
  }
  std::fprintf(stderr, "tessera: sim start: the daemons didn't answer within %lld s; see %s\n",
               static_cast<long long>(kStartTime.count()), sim_dir().c_str());
  kill(children[0], SIGTERM);
  kill(children[1], SIGTERM);
  _exit(kFailed);
}

void print_reach(pid_t pid, const char *why) {
  std::printf(
      "They run in a private mount namespace%s.\n"
      "tessera commands join it by themselves; to run other programs there, use\n"
      "  tessera sim shell [COMMAND...]\n"
      "or\n"
      "  nsenter --target %d --user --mount --preserve-credentials [COMMAND...]\n",
      why, static_cast<int>(pid));
}

int stop_daemons() {
  bool stopped = true;
  for (const auto &daemon : kDaemons) {
    const pid_t pid = running_pid(daemon);
    if (pid == 0) {
      continue;
    }
    kill(pid, SIGTERM);
    const auto deadline = std::chrono::steady_clock::now() + kStopTime;
    while (running_pid(daemon) == pid && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(20ms);
    }
    if (running_pid(daemon) == pid) {
      kill(pid, SIGKILL);
      std::this_thread::sleep_for(100ms);
      stopped = stopped && running_pid(daemon) != pid;
    }
    unlink(pid_file(daemon).c_str());
  }
  unlink(namespace_mark().c_str());
  return stopped ? kOk : fail("sim stop", "a daemon doesn't stop");
}

int start(const Command &, const Args &args) {
  if (running_pid(kDaemons[0]) != 0 && running_pid(kDaemons[1]) != 0) {
    std::printf("The simulated controller runs already.\n");
    return kOk;
  }
  stop_daemons();  // one of them alone: start both afresh
  const std::string programs[2] = {find_program(kDaemons[0].program),
                                   find_program(kDaemons[1].program)};
  for (int i = 0; i < 2; ++i) {
    if (programs[i].empty()) {
      return fail("sim start", std::string("can't find ") + kDaemons[i].program +
                                   " (built with the workstation kit; set TESSERA_DAEMON_DIR)");
    }
  }
  std::error_code error;
  std::filesystem::create_directories(sim_dir(), error);
  if (error) {
    return fail("sim start", sim_dir() + ": " + error.message());
  }
  const bool in_namespace = args.has("namespace") || !can_write_tolvex();
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    launch(in_namespace, programs);
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status) ||
      WEXITSTATUS(status) != kOk) {
    stop_daemons();
    return child < 0 ? fail("sim start", std::strerror(errno)) : kFailed;
  }
  if (in_namespace) {
    std::ofstream(namespace_mark()) << "1\n";
  }
  for (const auto &daemon : kDaemons) {
    std::printf("%s (pid %d) serves %s\n", daemon.program, static_cast<int>(running_pid(daemon)),
                daemon.socket);
  }
  std::printf("Store: %s; logs and pid files: %s\n", store_path().c_str(), sim_dir().c_str());
  if (in_namespace) {
    print_reach(running_pid(kDaemons[0]),
                args.has("namespace") ? "" : ", since you can't write /var/run/tolvex");
  }
  std::printf("`tessera sim seed` fills the store with a sample controller.\n");
  return kOk;
}

int stop(const Command &, const Args &) {
  return stop_daemons();
}

int status(const Command &, const Args &args) {
  int running = 0;
  std::string json_daemons;
  Table table({"DAEMON", "PID", "SOCKET", "STATE"});
  for (const auto &daemon : kDaemons) {
    const pid_t pid = running_pid(daemon);
    const bool serving = pid != 0 && answers(daemon.socket);
    running += pid != 0 ? 1 : 0;
    const std::string state = pid == 0 ? "stopped" : serving ? "serving" : "not answering";
    table.add({daemon.program, pid != 0 ? std::to_string(pid) : "-", daemon.socket, state});
    json_daemons += std::string(json_daemons.empty() ? "" : ", ") +
                    "{\"program\": " + json(daemon.program) + ", \"pid\": " + std::to_string(pid) +
                    ", \"socket\": " + json(daemon.socket) + ", \"state\": " + json(state) + "}";
  }
  const pid_t entry = namespace_pid();
  uint32_t ids[SSN_MAX_IDS];
  uint32_t sessions = 0;
  if (ssn_entry_list(nullptr, 0, 0, ids, &sessions) != 0) {
    sessions = 0;
  }
  if (args.has("json")) {
    std::printf("{\"daemons\": [%s], \"namespace_pid\": %d, \"store\": %s, \"sessions\": %u}\n",
                json_daemons.c_str(), static_cast<int>(entry), json(store_path()).c_str(),
                sessions);
  } else {
    table.print();
    std::printf("Store: %s (%u sessions)\n", store_path().c_str(), sessions);
    if (entry != 0) {
      print_reach(entry, "");
    }
  }
  return running == 2 ? kOk : running == 0 ? kNo : kFailed;
}

int shell(const Command &, const Args &args) {
  std::vector<std::string> words = args.positional;
  if (words.empty()) {
    const char *user_shell = std::getenv("SHELL");
    words.emplace_back(user_shell != nullptr && user_shell[0] != '\0' ? user_shell : "/bin/sh");
  }
  std::vector<char *> argv;
  for (auto &word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  std::fflush(nullptr);
  execvp(argv[0], argv.data());
  return fail(words[0], std::strerror(errno));
}

}  // namespace
}  // namespace tessera_cli::sim

namespace tessera_cli {

std::vector<Command> sim_commands() {
  using namespace sim;
  std::vector<Command> commands = {
      {"sim start",
       "[OPTIONS]",
       "start the simulated controller's daemons",
       "Starts the workstation kit's mapping daemon and session daemon on the controller's\n"
       "sockets in /var/run/tolvex, over the store at $TESSERA_STORE_DB. When you can't\n"
       "write /var/run/tolvex they run in a private user and mount namespace, which later\n"
       "tessera commands join by themselves; `tessera sim shell` runs other programs in\n"
       "it. Logs and pid files go to $TESSERA_SIM_DIR.\n",
       {{"namespace", 'n', nullptr,
         "use a private namespace even when /var/run/tolvex is "
         "writable"}},
       0,
       0,
       start},
      {"sim stop",
       "",
       "stop the simulated controller's daemons",
       "Stops both daemons (SIGTERM, then SIGKILL after 5 s). Prints nothing.\n",
       {},
       0,
       0,
       stop},
      {"sim status",
       "[OPTIONS]",
       "show whether the daemons run and answer",
       "Shows each daemon's process and whether it answers on its socket, the store and how\n"
       "many sessions it holds. Exit status 0 when both run, 3 when neither does, 1 when\n"
       "only one does.\n",
       {kJsonOption},
       0,
       0,
       status},
      {"sim shell",
       "[COMMAND [ARGUMENT...]]",
       "run a command where the daemons are reachable",
       "Runs COMMAND, or your $SHELL, in the simulated controller's namespace (or as it is\n"
       "when the daemons need none), so that other programs reach their sockets.\n",
       {},
       0,
       -1,
       shell,
       true},
  };
  for (auto &command : seed_commands()) {
    commands.push_back(std::move(command));
  }
  return commands;
}

}  // namespace tessera_cli
