#include "fake_daemon.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tessera::test {

namespace daemon_message {

Bytes success(std::string_view text) {
  Bytes reply(kSize, 0);
  reply[kDirection] = 2;
  std::memcpy(reply.data() + kValue, text.data(), std::min(text.size(), kValueSize - 1));
  return reply;
}

Bytes refusal(uint32_t status) {
  Bytes reply(kSize, 0);
  reply[kDirection] = 3;
  std::memcpy(reply.data() + kStatus, &status, sizeof status);
  return reply;
}

namespace {
std::string field(const Bytes &message, std::size_t offset, std::size_t width) {
  if (message.size() <= offset) {
    return {};
  }
  const auto *begin = reinterpret_cast<const char *>(message.data() + offset);
  return {begin, strnlen(begin, std::min(width, message.size() - offset))};
}
}  // namespace

std::string name(const Bytes &message) { return field(message, kName, kNameSize); }
std::string value(const Bytes &message) { return field(message, kValue, kValueSize); }

}  // namespace daemon_message

bool in_private_namespace() {
  const char *flag = std::getenv("TESSERA_TEST_NS");
  return flag != nullptr && std::strcmp(flag, "1") == 0;
}

FakeDaemon::FakeDaemon(const char *path) : path_(path) {
  if (!in_private_namespace()) {
    std::fprintf(stderr, "FakeDaemon: refusing to bind %s outside the private namespace\n", path);
    std::abort();
  }
  handler_ = [](const Bytes &) { return daemon_message::success(); };
  listener_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
  ::unlink(path);
  if (listener_ < 0 ||
      ::bind(listener_, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 ||
      ::listen(listener_, 128) != 0) {
    std::fprintf(stderr, "FakeDaemon: cannot serve %s: %s\n", path, std::strerror(errno));
    std::abort();
  }
  thread_ = std::thread([this] { serve(); });
}

FakeDaemon::~FakeDaemon() {
  ::shutdown(listener_, SHUT_RDWR);  // the accept below then fails with EINVAL
  thread_.join();
  ::close(listener_);
  ::unlink(path_.c_str());
}

void FakeDaemon::set_handler(Handler handler) {
  std::lock_guard lock(mutex_);
  handler_ = std::move(handler);
}

void FakeDaemon::reply(Bytes bytes) {
  set_handler([bytes = std::move(bytes)](const Bytes &) { return bytes; });
}

std::vector<FakeDaemon::Bytes> FakeDaemon::requests() const {
  std::lock_guard lock(mutex_);
  return requests_;
}

std::size_t FakeDaemon::request_count() const {
  std::lock_guard lock(mutex_);
  return requests_.size();
}

void FakeDaemon::serve() {
  for (;;) {
    const int connection = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection >= 0) {
      answer(connection);
      ::close(connection);
    } else if (errno == EINVAL) {
      return;
    }
  }
}

void FakeDaemon::answer(int connection) {
  Bytes request(daemon_message::kSize, 0);
  std::size_t got = 0;
  while (got < request.size()) {
    const ssize_t n = ::recv(connection, request.data() + got, request.size() - got, 0);
    if (n < 0 && errno == EINTR) {
      continue;
    }
    if (n <= 0) {
      break;
    }
    got += static_cast<std::size_t>(n);
  }
  request.resize(got);
  Handler handler;
  {
    std::lock_guard lock(mutex_);
    requests_.push_back(request);
    handler = handler_;
  }
  const Bytes reply = handler(request);
  std::size_t sent = 0;
  while (sent < reply.size()) {
    const ssize_t n = ::send(connection, reply.data() + sent, reply.size() - sent, MSG_NOSIGNAL);
    if (n < 0 && errno == EINTR) {
      continue;
    }
    if (n <= 0) {
      break;
    }
    sent += static_cast<std::size_t>(n);
  }
}

}  // namespace tessera::test
