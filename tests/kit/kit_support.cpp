#include "kit_support.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <thread>

namespace tessera::kit::test {

ScratchStore::ScratchStore() {
  ::setenv("TESSERA_STORE_DB", path().c_str(), 1);
}

ScratchStore::~ScratchStore() {
  ::unsetenv("TESSERA_STORE_DB");
}

namespace {

template <typename Function>
void resolve(void *library, const char *name, Function &function) {
  function = reinterpret_cast<Function>(::dlsym(library, name));
  if (function == nullptr) {
    throw std::runtime_error(std::string("libtessera-store.so has no ") + name);
  }
}

Orb load_orb() {
  void *library = ::dlopen(TESSERA_KIT_STORE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    throw std::runtime_error(::dlerror());
  }
  Orb orb{};
  resolve(library, "orb_config_get_bool", orb.get_bool);
  resolve(library, "orb_config_get_int", orb.get_int);
  resolve(library, "orb_config_get_str", orb.get_str);
  resolve(library, "orb_config_get_str_n", orb.get_str_n);
  resolve(library, "orb_config_set_int", orb.set_int);
  resolve(library, "orb_config_set_str", orb.set_str);
  resolve(library, "orb_config_set_str_n", orb.set_str_n);
  resolve(library, "orb_session_get_info", orb.session_info);
  resolve(library, "orb_session_get_children_info", orb.children_info);
  resolve(library, "orb_session_get_type_info", orb.type_info);
  resolve(library, "orb_function_execute", orb.execute);
  resolve(library, "orb_event_occurred", orb.event);
  return orb;
}

}  // namespace

const Orb &orb() {
  static const Orb functions = load_orb();
  return functions;
}

tessera_store_session session(uint32_t id, const char *type, const char *user, const char *address,
                              uint32_t parent) {
  tessera_store_session out{.id = id, .parent = parent, .word = id * 10};
  std::strncpy(out.type, type, sizeof out.type - 1);
  std::strncpy(out.user, user, sizeof out.user - 1);
  std::strncpy(out.address, address, sizeof out.address - 1);
  return out;
}

Child::Child(std::vector<std::string> argv, bool errors) {
  int pipe_fds[2];
  if (::pipe2(pipe_fds, O_CLOEXEC) != 0) {
    throw std::runtime_error("pipe failed");
  }
  std::vector<char *> args;
  for (auto &arg : argv) {
    args.push_back(arg.data());
  }
  args.push_back(nullptr);
  pid_ = ::fork();
  if (pid_ == 0) {
    ::dup2(pipe_fds[1], STDOUT_FILENO);
    if (errors) {
      ::dup2(pipe_fds[1], STDERR_FILENO);
    }
    ::execv(args[0], args.data());
    ::_exit(127);
  }
  ::close(pipe_fds[1]);
  out_ = pipe_fds[0];
}

Child::~Child() {
  if (pid_ > 0) {
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
  }
  if (out_ >= 0) {
    ::close(out_);
  }
}

std::string Child::line() {
  for (;;) {
    const std::size_t end = output_.find('\n', taken_);
    if (end != std::string::npos) {
      std::string next = output_.substr(taken_, end - taken_);
      taken_ = end + 1;
      return next;
    }
    pollfd ready{out_, POLLIN, 0};
    char buffer[4096];
    const ssize_t got = ::poll(&ready, 1, 60'000) == 1 ? ::read(out_, buffer, sizeof buffer) : 0;
    if (got <= 0) {
      return {};
    }
    output_.append(buffer, static_cast<std::size_t>(got));
  }
}

int Child::wait() {
  char buffer[4096];
  ssize_t got = 0;
  while ((got = ::read(out_, buffer, sizeof buffer)) > 0) {
    output_.append(buffer, static_cast<std::size_t>(got));
  }
  int status = 0;
  ::waitpid(pid_, &status, 0);
  pid_ = -1;
  return status;
}

void Child::signal(int number) {
  ::kill(pid_, number);
}

Outcome run(std::vector<std::string> argv) {
  Child child(std::move(argv));
  const int status = child.wait();
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), child.output()};
}

std::vector<std::unique_ptr<Child>> start_load(const std::string &base, int clients, int count,
                                               const std::string &mode) {
  std::vector<std::unique_ptr<Child>> children;
  for (int c = 0; c < clients; ++c) {
    std::vector<std::string> argv{kClient, "load", base + std::to_string(c), std::to_string(count)};
    if (!mode.empty()) {
      argv.push_back(mode);
    }
    children.push_back(std::make_unique<Child>(argv));
  }
  return children;
}

bool own_half(const std::string &base, int clients, int count) {
  bool ok = tessera_store_begin() == TESSERA_STORE_OK;
  for (int c = 0; c < clients; ++c) {
    for (int i = 0; i < count; i += 2) {
      const std::string name = base + std::to_string(c) + "." + std::to_string(i);
      ok = ok && tessera_store_map_property(TESSERA_STORE_MAPPED, name.c_str(), "") == 0;
    }
  }
  return ok && tessera_store_commit() == TESSERA_STORE_OK;
}

int connect_to(const char *socket) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, socket, sizeof address.sun_path - 1);
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (::connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) {
    ::close(fd);
    return -1;
  }
  return fd;
}

bool wait_for_socket(const char *socket, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (std::chrono::steady_clock::now() < deadline) {
    if (const int fd = connect_to(socket); fd >= 0) {
      ::close(fd);
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

Daemon::Daemon(const std::string &program, const char *socket)
    : program_(program), socket_(socket) {
  restart();
}

Daemon::~Daemon() {
  if (child_ && child_->pid() > 0) {
    stop(SIGTERM);
  }
}

int Daemon::stop(int number) {
  child_->signal(number);
  return child_->wait();
}

void Daemon::restart() {
  child_ = std::make_unique<Child>(
      std::vector<std::string>{program_, "--foreground", "--socket", socket_}, true);
  if (!wait_for_socket(socket_.c_str(), std::chrono::seconds(20))) {
    throw std::runtime_error(program_ + " did not start listening");
  }
}

std::string Daemon::log_line_with(const std::string &text) {
  for (std::string line = child_->line(); !line.empty(); line = child_->line()) {
    if (line.find(text) != std::string::npos) {
      return line;
    }
  }
  return {};
}

}  // namespace tessera::kit::test
