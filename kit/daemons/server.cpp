// The daemons' server. The main thread accepts connections and watches for SIGTERM and SIGINT;
// a fixed set of workers serves the connections, one request and one reply each. A request must
// arrive within a short time of its connection, so a client that sends too little, or nothing,
// costs a worker that long at most, and connections that waited past it are answered at once
// with what they sent; whatever arrives gets a whole reply. Beyond what can wait, a connection is
// closed unanswered, which its caller sees as a failed exchange. The faults of clients and of the
// store are logged, those that can come in floods at most once a second.
#include "kit/daemons/server.h"

#include <fcntl.h>
#include <getopt.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "kit/daemons/requests.h"
#include "kit/directories.h"
#include "kit/store/tessera_store.h"

namespace tessera::kit {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kWorkers = 16;
constexpr std::size_t kMostWaiting = 1024;     // connections queued for a worker; beyond, dropped
constexpr rlim_t kDescriptorsWanted = 4096;    // room for them all, when the hard limit allows
constexpr std::size_t kDescriptorsSpare = 64;  // the listener, the store, the log, ...
constexpr int kRequestSeconds = 2;
constexpr auto kRequestTime = std::chrono::seconds(kRequestSeconds);
constexpr std::size_t kMessageSize = sizeof(DaemonMessage);

const char *log_program = "tessera";
bool log_to_stderr = true;

struct DaemonOptions {
  const char *program = "";
  std::string socket;    // the path to serve
  std::string pid_file;  // written once serving, removed at the end; none when empty
  bool foreground = false;
  bool verbose = false;  // log every request
};

// A line to standard error in the foreground, to syslog as a daemon.
void log_line(int priority, const char *format, ...) __attribute__((format(printf, 2, 3)));

// A message that can come in floods: logged at once, then at most once a second, with the
// number of those held back in between.
class ThrottledLog {
 public:
  void log(int priority, const char *format, ...) __attribute__((format(printf, 3, 4))) {
    const auto now = Clock::now();
    std::lock_guard lock(mutex_);
    if (now < next_) {
      ++held_;
      return;
    }
    next_ = now + std::chrono::seconds(1);
    char text[1024];
    std::va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    if (held_ > 0) {
      log_line(priority, "%s (and %zu more like it since the last)", text, held_);
    } else {
      log_line(priority, "%s", text);
    }
    held_ = 0;
  }

 private:
  std::mutex mutex_;
  Clock::time_point next_{};
  std::size_t held_ = 0;
};

ThrottledLog short_requests;
ThrottledLog store_failures;
ThrottledLog dropped_connections;
ThrottledLog accept_failures;

// A connection and the time by which its request must have arrived.
struct Connection {
  int fd;
  Clock::time_point deadline;
};

class ConnectionQueue {
 public:
  explicit ConnectionQueue(std::size_t most) : most_(most) {}
  bool push(int fd) {
    std::size_t waiting = 0;
    {
      std::lock_guard lock(mutex_);
      waiting = waiting_.size();
      if (waiting < most_) {
        waiting_.push_back({fd, Clock::now() + kRequestTime});
      }
    }
    if (waiting >= most_) {
      dropped_connections.log(
          LOG_WARNING, "%zu connections wait for a worker: closed a new one unanswered", waiting);
      return false;
    }
    ready_.notify_one();
    return true;
  }
  // The next connection; fd -1 once closed and empty.
  Connection pop() {
    std::unique_lock lock(mutex_);
    ready_.wait(lock, [this] { return !waiting_.empty() || closed_; });
    if (waiting_.empty()) {
      return {-1, {}};
    }
    const Connection next = waiting_.front();
    waiting_.pop_front();
    return next;
  }
  void close() {
    {
      std::lock_guard lock(mutex_);
      closed_ = true;
    }
    ready_.notify_all();
  }

 private:
  const std::size_t most_;
  std::mutex mutex_;
  std::condition_variable ready_;
  std::deque<Connection> waiting_;
  bool closed_ = false;
};

// Reads one request: until a whole message is there, the client stops sending, or the deadline
// passes (`timed_out`); past it, what has arrived already is still taken.
std::size_t read_request(const Connection &connection, uint8_t *buffer, bool *timed_out) {
  std::size_t got = 0;
  *timed_out = false;
  while (got < kMessageSize) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(connection.deadline - Clock::now())
            .count();
    pollfd readable{connection.fd, POLLIN, 0};
    const int ready = ::poll(&readable, 1, static_cast<int>(std::max<decltype(left)>(left, 0)));
    if (ready < 0 && errno == EINTR) {
      continue;
    }
    if (ready == 0) {
      *timed_out = left <= 0 || Clock::now() >= connection.deadline;
      if (*timed_out) {
        break;
      }
      continue;
    }
    const ssize_t n =
        ready > 0 ? ::recv(connection.fd, buffer + got, kMessageSize - got, MSG_DONTWAIT) : 0;
    if (n < 0 && (errno == EINTR || errno == EAGAIN)) {
      continue;
    }
    if (n <= 0) {
      break;
    }
    got += static_cast<std::size_t>(n);
  }
  return got;
}

void send_reply(int fd, const DaemonMessage &reply) {
  const auto *bytes = reinterpret_cast<const uint8_t *>(&reply);
  std::size_t sent = 0;
  while (sent < sizeof reply) {
    const ssize_t n = ::send(fd, bytes + sent, sizeof reply - sent, MSG_NOSIGNAL);
    if (n < 0 && errno == EINTR) {
      continue;
    }
    if (n <= 0) {
      return;  // the client is gone
    }
    sent += static_cast<std::size_t>(n);
  }
}

void serve_connection(const Connection &connection, const RequestHandler &handler, bool verbose) {
  const int fd = connection.fd;
  const timeval send_limit{kRequestSeconds, 0};
  ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &send_limit, sizeof send_limit);
  uint8_t request[kMessageSize] = {};
  bool timed_out = false;
  const std::size_t got = read_request(connection, request, &timed_out);
  DaemonMessage reply;
  try {
    reply = handler(std::span(request, got));
  } catch (...) {  // out of memory, most likely: refuse, and go on serving
    std::memcpy(&reply, request, sizeof reply);
    reply.direction = kDirectionRefused;
    reply.status = kStatusStoreFailed;
  }
  send_reply(fd, reply);
  ::close(fd);
  // A connection closed without a byte is a probe (is a daemon there?), not a fault.
  if (got < kMessageSize && (got > 0 || timed_out)) {
    short_requests.log(LOG_WARNING, "refused a request of %zu bytes, short of %zu: %s", got,
                       kMessageSize,
                       timed_out ? "no more came in time" : "the client stopped sending");
  } else if (reply.direction != wire::kDirectionSuccess && reply.status == kStatusStoreFailed) {
    store_failures.log(LOG_ERR,
                       "operation %u (session %u, name \"%.*s\") refused with status %u: the "
                       "store could not be used",
                       reply.operation, reply.session_id,
                       static_cast<int>(strnlen(reply.name, sizeof reply.name)), reply.name,
                       reply.status);
  }
  if (verbose) {
    log_line(LOG_DEBUG, "%zu bytes, operation %u, session %u, name \"%.*s\": %s, status %u", got,
             reply.operation, reply.session_id,
             static_cast<int>(strnlen(reply.name, sizeof reply.name)), reply.name,
             reply.direction == wire::kDirectionSuccess ? "done" : "refused", reply.status);
  }
}

// Clears the way for a new socket at `path`: a stale socket goes, a live one (another daemon
// answering) or anything that is no socket stays, and the start fails.
bool claim_path(const std::string &path, const sockaddr_un &address, socklen_t length) {
  struct stat info {};
  if (::lstat(path.c_str(), &info) != 0) {
    if (errno == ENOENT) {
      return true;
    }
    log_line(LOG_ERR, "%s: %s", path.c_str(), std::strerror(errno));
    return false;
  }
  if (!S_ISSOCK(info.st_mode)) {
    log_line(LOG_ERR, "%s exists and is not a socket", path.c_str());
    return false;
  }
  const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool live = ::connect(probe, reinterpret_cast<const sockaddr *>(&address), length) == 0;
  ::close(probe);
  if (live) {
    log_line(LOG_ERR, "another daemon is serving %s", path.c_str());
    return false;
  }
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) {
    log_line(LOG_ERR, "cannot remove the stale socket %s: %s", path.c_str(), std::strerror(errno));
    return false;
  }
  log_line(LOG_INFO, "replaced the stale socket %s of a daemon that did not stop cleanly",
           path.c_str());
  return true;
}

// The listening socket at `path`, or -1. `inode` identifies the socket file, so that only ours
// is removed at the end.
int listen_at(const std::string &path, ino_t *inode) {
  sockaddr_un address;
  const socklen_t length = path.empty() ? 0 : wire::make_daemon_address(path.c_str(), &address);
  if (length == 0) {
    log_line(LOG_ERR, "no socket path, or one too long: %s", path.c_str());
    return -1;
  }
  if (!make_parent_directories(path)) {
    log_line(LOG_ERR, "cannot create the directory of %s: %s", path.c_str(), std::strerror(errno));
    return -1;
  }
  if (!claim_path(path, address, length)) {
    return -1;
  }
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  struct stat info {};
  if (fd < 0 || ::bind(fd, reinterpret_cast<sockaddr *>(&address), length) != 0 ||
      ::listen(fd, SOMAXCONN) != 0 || ::stat(path.c_str(), &info) != 0) {
    log_line(LOG_ERR, "cannot listen at %s: %s", path.c_str(), std::strerror(errno));
    if (fd >= 0) {
      ::close(fd);
    }
    return -1;
  }
  *inode = info.st_ino;
  return fd;
}

bool write_pid_file(const std::string &path) {
  if (path.empty()) {
    return true;
  }
  FILE *file = std::fopen(path.c_str(), "we");
  if (file != nullptr && std::fprintf(file, "%d\n", static_cast<int>(::getpid())) > 0 &&
      std::fclose(file) == 0) {
    return true;
  }
  log_line(LOG_ERR, "cannot write %s", path.c_str());
  return false;
}

// Goes to the background: the caller's process exits 0 once the daemon has written its pid
// file, or 1 when it couldn't.
bool daemonise(const DaemonOptions &options) {
  int ready[2];
  if (::pipe2(ready, O_CLOEXEC) != 0) {
    return false;
  }
  const pid_t child = ::fork();
  if (child < 0) {
    return false;
  }
  if (child > 0) {
    ::close(ready[1]);
    char byte = 0;
    ssize_t n = 0;
    while ((n = ::read(ready[0], &byte, 1)) < 0 && errno == EINTR) {
    }
    ::_exit(n == 1 ? 0 : 1);
  }
  ::close(ready[0]);
  ::setsid();
  if (::chdir("/") != 0) {
    return false;
  }
  const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  for (int fd = 0; fd <= 2 && null >= 0; ++fd) {
    ::dup2(null, fd);
  }
  log_to_stderr = false;
  ::openlog(options.program, LOG_PID, LOG_DAEMON);
  if (!write_pid_file(options.pid_file)) {
    return false;
  }
  const char byte = 1;
  const bool told = ::write(ready[1], &byte, 1) == 1;
  ::close(ready[1]);
  return told;
}

void log_line(int priority, const char *format, ...) {
  std::va_list args;
  va_start(args, format);
  if (log_to_stderr) {
    char line[2048];
    std::vsnprintf(line, sizeof line, format, args);
    std::fprintf(stderr, "%s: %s\n", log_program, line);
  } else {
    ::vsyslog(priority, format, args);
  }
  va_end(args);
}

// The command line; prints the usage and exits on --help (0) and on a bad option (2).
DaemonOptions parse_options(int argc, char **argv, const char *program, const char *socket,
                            const char *purpose) {
  DaemonOptions options{.program = program, .socket = socket};
  log_program = program;
  static const option longs[] = {
      {"foreground", no_argument, nullptr, 'f'},     {"socket", required_argument, nullptr, 's'},
      {"pid-file", required_argument, nullptr, 'p'}, {"verbose", no_argument, nullptr, 'v'},
      {"help", no_argument, nullptr, 'h'},           {nullptr, 0, nullptr, 0}};
  for (int c; (c = ::getopt_long(argc, argv, "fs:p:vh", longs, nullptr)) != -1;) {
    switch (c) {
      case 'f':
        options.foreground = true;
        break;
      case 's':
        options.socket = optarg;
        break;
      case 'p':
        options.pid_file = optarg;
        break;
      case 'v':
        options.verbose = true;
        break;
      default:
        std::fprintf(c == 'h' ? stdout : stderr,
                     "usage: %s [-f|--foreground] [-s|--socket PATH] [-p|--pid-file PATH] "
                     "[-v|--verbose]\n"
                     "%s\n"
                     "Listens on %s (or PATH), creating its directory and replacing a stale "
                     "socket.\nRuns in the background, logging to syslog, unless --foreground "
                     "(log to standard error);\n--verbose logs every request. Stops on SIGTERM "
                     "or SIGINT.\nThe store is the database of TESSERA_STORE_DB, or "
                     "~/.local/state/tessera/store.db.\nExit status: 0 after a clean stop, 1 "
                     "when it cannot start, 2 for a bad option.\n",
                     program, purpose, socket);
        std::exit(c == 'h' ? 0 : 2);
    }
  }
  if (optind < argc) {
    std::fprintf(stderr, "%s: unexpected argument %s\n", program, argv[optind]);
    std::exit(2);
  }
  return options;
}

// How many connections may wait for a worker: the descriptors allow, after raising the soft limit
// as far as the hard one lets it go.
std::size_t most_waiting() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) {
    return kMostWaiting;
  }
  const rlim_t wanted = std::min(limit.rlim_max, kDescriptorsWanted);
  if (limit.rlim_cur < wanted) {
    limit.rlim_cur = wanted;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    ::getrlimit(RLIMIT_NOFILE, &limit);
  }
  const auto room = static_cast<std::size_t>(limit.rlim_cur);
  return room > kWorkers + kDescriptorsSpare
             ? std::min(kMostWaiting, room - kWorkers - kDescriptorsSpare)
             : 1;
}

// Serves `options.socket` until SIGTERM or SIGINT; returns the exit code.
int serve(const DaemonOptions &options, const RequestHandler &handler) {
  ::signal(SIGPIPE, SIG_IGN);
  sigset_t stop_signals;
  sigemptyset(&stop_signals);
  sigaddset(&stop_signals, SIGTERM);
  sigaddset(&stop_signals, SIGINT);
  ::pthread_sigmask(SIG_BLOCK, &stop_signals, nullptr);  // workers inherit the mask

  ino_t inode = 0;
  const int listener = listen_at(options.socket, &inode);
  if (listener < 0 ||
      !(options.foreground ? write_pid_file(options.pid_file) : daemonise(options))) {
    return 1;
  }
  const int signals = ::signalfd(-1, &stop_signals, SFD_CLOEXEC);
  if (signals < 0) {
    log_line(LOG_ERR, "signalfd: %s", std::strerror(errno));
    return 1;
  }
  log_line(LOG_INFO, "serving %s", options.socket.c_str());

  ConnectionQueue queue(most_waiting());
  std::vector<std::thread> workers;
  for (std::size_t i = 0; i < kWorkers; ++i) {
    workers.emplace_back([&] {
      for (Connection next; (next = queue.pop()).fd >= 0;) {
        serve_connection(next, handler, options.verbose);
      }
    });
  }

  pollfd watched[2] = {{listener, POLLIN, 0}, {signals, POLLIN, 0}};
  for (;;) {
    if (::poll(watched, 2, -1) < 0) {
      continue;  // EINTR
    }
    if (watched[1].revents != 0) {
      signalfd_siginfo info{};
      const bool read_one = ::read(signals, &info, sizeof info) == sizeof info;
      log_line(LOG_INFO, "stopping on %s",
               read_one ? strsignal(static_cast<int>(info.ssi_signo)) : "a signal");
      break;
    }
    for (;;) {
      const int connection = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
      if (connection >= 0) {
        if (!queue.push(connection)) {
          ::close(connection);  // too many waiting: this client sees no reply
        }
        continue;
      }
      if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED) {
        accept_failures.log(LOG_ERR, "cannot accept a connection: %s", std::strerror(errno));
        std::this_thread::sleep_for(std::chrono::milliseconds(10));  // out of descriptors
      }
      break;
    }
  }

  // No new connections; those accepted are still answered.
  ::close(listener);
  struct stat info {};
  if (::stat(options.socket.c_str(), &info) == 0 && info.st_ino == inode) {
    ::unlink(options.socket.c_str());
  }
  queue.close();
  for (auto &worker : workers) {
    worker.join();
  }
  ::close(signals);
  if (!options.pid_file.empty()) {
    ::unlink(options.pid_file.c_str());
  }
  log_line(LOG_INFO, "stopped");
  return 0;
}

}  // namespace

int run_daemon(int argc, char **argv, const char *program, const char *socket, const char *purpose,
               const RequestHandler &handler) {
  const DaemonOptions options = parse_options(argc, argv, program, socket, purpose);
  tessera_store_set_log([](const char *message) { log_line(LOG_ERR, "store: %s", message); });
  if (tessera_store_check() != TESSERA_STORE_OK) {
    char path[4096] = "(no home directory)";
    tessera_store_path(path, sizeof path);
    log_line(LOG_ERR, "the store at %s cannot be used", path);
    return 1;
  }
  return serve(options, handler);
}

}  // namespace tessera::kit
