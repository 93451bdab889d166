// The simulated controller of a workstation: the kit's mapping and session daemons serving the
// controller's socket paths, and a store seeded like a controller in use. When the user can't
// write /var/run/tolvex, the daemons run in a private user and mount namespace of their own,
// and every later `tessera` command joins it by itself.
//
// Seeding uses the kit store's administration interface (tessera_store.h): the one place where
// this program goes past libtessera.so.1's public headers, since a real controller is seeded by
// its own firmware, not by a library call.
#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
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

#include <tessera/orb_cfg.h>
#include <tessera/session.h>

#include "cli.h"

#ifdef TESSERA_CLI_SIM
#include "tessera_store.h"
#endif

namespace tessera_cli {
namespace {

using namespace std::chrono_literals;

struct Daemon {
  const char *program;
  const char *socket;
};
constexpr Daemon kDaemons[] = {
    {"tessera-mappingd", "/var/run/tolvex/dmmappingSocket"},
    {"tessera-sessiond", "/var/run/tolvex/ipmiextdSocket"},
};
constexpr auto kStartTime = 10s;
constexpr auto kStopTime = 5s;

// Where the pid files, logs and the namespace mark live; fixed before the namespace is joined,
// where the user id reads differently.
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

std::string pid_file(const Daemon &daemon) {
  return sim_dir() + "/" + daemon.program + ".pid";
}
std::string log_file(const Daemon &daemon) {
  return sim_dir() + "/" + daemon.program + ".log";
}
std::string namespace_mark() {
  return sim_dir() + "/namespace";
}

bool exists(const std::string &path) {
  return access(path.c_str(), F_OK) == 0;
}

// The daemon's process id when it runs (not a zombie, and the program is the daemon), else 0.
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

bool same_namespace(pid_t pid, const char *kind) {
  struct stat mine {};
  struct stat theirs {};
  return stat((std::string("/proc/self/ns/") + kind).c_str(), &mine) == 0 &&
         stat(("/proc/" + std::to_string(pid) + "/ns/" + kind).c_str(), &theirs) == 0 &&
         mine.st_ino == theirs.st_ino && mine.st_dev == theirs.st_dev;
}

// The namespace's entry point: a running daemon, when the simulation runs in a namespace.
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

// Moves the calling process into a new user and mount namespace, as root inside, with an empty
// tmpfs of its own at /var/run/tolvex. Returns an empty text, or what went wrong.
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

std::string store_path() {
#ifdef TESSERA_CLI_SIM
  char path[PATH_MAX];
  if (tessera_store_path(path, sizeof path) == TESSERA_STORE_OK) {
    return path;
  }
#endif
  return "unavailable";
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

#ifdef TESSERA_CLI_SIM

// A sample controller: a lab machine with two users logged in on the web with a virtual console
// and virtual media, an SSH and a serial-over-LAN session, a local tool, a Redfish client.
constexpr tessera_store_session kSessions[] = {
    {1, 0, 0, "webgui", "admin", "192.168.10.21"},
    {2, 1, 0, "vKVM", "admin", "192.168.10.21"},
    {3, 1, 0, "vMedia", "admin", "192.168.10.21"},
    {4, 0, 0, "SSH", "operator", "10.20.0.7"},
    {5, 0, 0, "SOL", "operator", "10.20.0.7"},
    {6, 0, 0, "tolvex", "root", "localhost"},
    {7, 0, 0, "redfish", "monitor", "fe80::7a2b:cbff:fe12:3456"},
    {8, 0, 0, "Serial", "admin", ""},
};

struct User {
  const char *name;
  uint32_t privilege;
};
constexpr User kUsers[] = {{"root", 4}, {"admin", 4}, {"operator", 3}, {"monitor", 2}};

struct Sensor {
  uint8_t index;
  char kind;  // 'd' and 'e': power supplies; 't': their redundancy
  const char *name;
};
constexpr Sensor kSensors[] = {{1, 'd', "PS1 Status"},
                               {2, 'e', "PS2 Status"},
                               {3, 't', "PS Redundancy"},
                               {10, 'a', "Inlet Temp"},
                               {11, 'f', "Fan1 RPM"}};

struct Setting {
  const char *name;
  const char *value;
};
// Written through the library like any tool writes them; the network ones become change
// requests that the store applies to its network record.
constexpr Setting kSettings[] = {
    {"WEBSERVER/maxsessions", "4"},
    {"SSH/maxsessions", "4"},
    {"SNMP/enable", "1"},
    {"SMTP/ipaddr", "10.20.0.25"},
    {"EMAIL_ALERT/enable1", "1"},
    {"EMAIL_ALERT/addr1", "ops@lab.example.net"},
    {"DNS/mir_name", "mirel-lab-01"},
    {"DNS/domain_name", "lab.example.net"},
    {"DNS/register_mir", "1"},
    {"DNS/dhcp_enable", "0"},
    {"DNS/use_dhcp_domain", "0"},
    {"DNS/server1", "10.20.0.53"},
    {"DNS/server2", "10.20.0.54"},
    {"NETWORK/NIC/enable", "1"},
    {"NETWORK/IPV4/enable", "1"},
    {"NETWORK/NIC/selection", "1"},
    {"NETWORK/NIC/auto_neg", "1"},
    {"NETWORK/NIC/fullduplex", "1"},
    {"NETWORK/NIC/mtu", "1500"},
    {"IPV6/enable", "1"},
    {"IPV6/address", "2001:db8:10::21"},
    {"IPV6/gateway", "2001:db8:10::1"},
    {"IPV6/prefix_length", "64"},
    {"IPV6/dhcp_enable", "0"},
    {"IPV6/DNSServer1", "2001:db8:10::53"},
    {"IPV6/link_local_address", "fe80::7a2b:cbff:fe12:3456"},
};

// The properties the mapping daemon owns: the firmware's own values and the controller's name.
constexpr Setting kMapped[] = {
    {"MIR/FIRMWARE/version", "2.10"}, {"MIR/FIRMWARE/minor", "10"},
    {"MIR/FIRMWARE/build_num", "17"}, {"MIR/FIRMWARE/last_update", "1716940800"},
    {"MIR/name", "mirel-lab-01"},
};
constexpr Setting kDcsgen[] = {{"chassis_model", "Stratum R40"}, {"service_tag", "7QX2K42"}};

// Flags the store keeps for the controller's add-in card.
constexpr const char *kFlags[] = {"tarnstatus_bool_tarn_present",
                                  "tarnstatus_bool_tarn_sd_present"};

int seed(const Command &, const Args &) {
  const std::string where = "sim seed: " + store_path();
  if (tessera_store_check() != TESSERA_STORE_OK || tessera_store_begin() != TESSERA_STORE_OK) {
    return fail(where, "the store can't be used");
  }
  bool ok = tessera_store_reset() == TESSERA_STORE_OK;
  Cfgmgr_Restore_Defaults();  // the rows with a legacy path; then those with a store key alone
  for (const auto &row : catalogue_rows()) {
    if (row.legacy_path[0] == '\0' && row.type != PROP_TYPE_CONFIG_CHANGED) {
      ok = ok && Cfgmgr_Set_Property_ori(row.store_key, row.default_value) == 0;
    }
  }
  for (const auto &setting : kSettings) {
    if (const int32_t status = Cfgmgr_Set_Property_ori(setting.name, setting.value); status != 0) {
      tessera_store_rollback();
      return fail_status(where + ": " + setting.name, status, "the store refused the value");
    }
  }
  for (const char *flag : kFlags) {
    ok = ok && tessera_store_set_value(flag, TESSERA_STORE_BOOL, "1") == TESSERA_STORE_OK;
  }
  for (const auto &mapped : kMapped) {
    ok = ok && tessera_store_map_property(TESSERA_STORE_MAPPED, mapped.name, mapped.value) ==
                   TESSERA_STORE_OK;
  }
  for (const auto &mapped : kDcsgen) {
    ok = ok && tessera_store_map_property(TESSERA_STORE_DCSGEN, mapped.name, mapped.value) ==
                   TESSERA_STORE_OK;
  }
  for (const auto &user : kUsers) {
    ok = ok && tessera_store_set_user(user.name, user.privilege) == TESSERA_STORE_OK;
  }
  for (const auto &session : kSessions) {
    ok = ok && tessera_store_add_session(&session) == TESSERA_STORE_OK;
  }
  for (const auto &sensor : kSensors) {
    ok = ok && tessera_store_add_sensor(sensor.index, sensor.kind, sensor.name) == TESSERA_STORE_OK;
  }
  ok = ok && init_power_supply() != 0;  // notes the power supplies among the sensors
  if (!ok || tessera_store_commit() != TESSERA_STORE_OK) {
    tessera_store_rollback();
    return fail(where, "the store refused the sample controller");
  }
  std::printf(
      "Seeded %s: the catalogue's defaults, %zu settings with the network record, %zu "
      "mapping daemon properties, %zu users, %zu sessions, %zu sensors.\n",
      store_path().c_str(), std::size(kSettings), std::size(kMapped) + std::size(kDcsgen),
      std::size(kUsers), std::size(kSessions), std::size(kSensors));
  return kOk;
}

#endif

}  // namespace

void join_simulation() {
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

std::vector<Command> sim_commands() {
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
#ifdef TESSERA_CLI_SIM
  commands.push_back(
      {"sim seed",
       "",
       "fill the store with a sample controller",
       "Empties the store and fills it like a controller in use: every catalogue default, a\n"
       "few settings, the network record (DNS, NIC, IPv6), the mapping daemon's own\n"
       "properties (MIR/FIRMWARE/*, MIR/name, two DCSGEN ones), users with privileges, eight\n"
       "sessions of six types with virtual console and media children, and sensors with two\n"
       "power supplies. Works with the daemons running or not.\n",
       {},
       0,
       0,
       seed});
#endif
  return commands;
}

}  // namespace tessera_cli
