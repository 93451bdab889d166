// A daemon for tests: a real AF_UNIX stream server at one of the controller's daemon sockets.
// It reads each connection's request whole (1724 bytes, or what came before the client shut its
// side), keeps it, and answers with what the test scripted. It binds the real paths, so it only
// runs inside the private mount namespace that tools/ns-run sets up for such tests.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace tessera::test {

inline constexpr const char kMappingSocket[] = "/var/run/tolvex/dmmappingSocket";
inline constexpr const char kSessionSocket[] = "/var/run/tolvex/ipmiextdSocket";

// The daemon message as the daemons see it.
namespace daemon_message {
inline constexpr std::size_t kSize = 1724;
inline constexpr std::size_t kDirection = 0;
inline constexpr std::size_t kOperation = 1;
inline constexpr std::size_t kSessionId = 4;
inline constexpr std::size_t kStatus = 8;
inline constexpr std::size_t kName = 12;
inline constexpr std::size_t kNameSize = 321;
inline constexpr std::size_t kValue = 333;
inline constexpr std::size_t kValueSize = 1280;
inline constexpr std::size_t kOrbClose = 1656;

using Bytes = std::vector<uint8_t>;
// A full reply: direction 2 (success) and the value.
Bytes success(std::string_view value = "");
// A full reply: direction 3 (refused) and the status.
Bytes refusal(uint32_t status);
// Fields of a message, read within their bounds.
std::string name(const Bytes &message);
std::string value(const Bytes &message);
}  // namespace daemon_message

// True inside the namespace of tools/ns-run, where the daemon sockets are ours to bind.
bool in_private_namespace();

class FakeDaemon {
 public:
  using Bytes = daemon_message::Bytes;
  // Reply to a request; an empty reply closes the connection without sending anything.
  using Handler = std::function<Bytes(const Bytes &request)>;

  // Binds `path` (removing a stale socket) and serves until destroyed. Answers success with an
  // empty value until told otherwise. Aborts the test program outside the private namespace.
  explicit FakeDaemon(const char *path);
  ~FakeDaemon();
  FakeDaemon(const FakeDaemon &) = delete;
  FakeDaemon &operator=(const FakeDaemon &) = delete;

  void set_handler(Handler handler);
  void reply(Bytes bytes);  // the same reply to every request

  [[nodiscard]] std::vector<Bytes> requests() const;
  [[nodiscard]] std::size_t request_count() const;

 private:
  void serve();
  void answer(int connection);

  std::string path_;
  int listener_ = -1;
  mutable std::mutex mutex_;
  Handler handler_;
  std::vector<Bytes> requests_;
  std::thread thread_;
};

}  // namespace tessera::test

// Skips a test that needs the private namespace when it runs outside one (for instance when the
// test program is started by hand instead of through ctest).
#define TESSERA_REQUIRE_PRIVATE_NAMESPACE()                                                  \
  do {                                                                                        \
    if (!::tessera::test::in_private_namespace()) {                                          \
      GTEST_SKIP() << "needs the private mount namespace: run it through ctest or tools/ns-run"; \
    }                                                                                         \
  } while (0)
