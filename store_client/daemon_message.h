// Here beside the store client because the daemons are, like it, components outside the library.
//
// The message that the mapping daemon and the session daemon take over their local stream
// sockets: 1724 bytes in both directions, numbers in native byte order. A request starts all zero
// and each operation fills only its own fields. The property service, the session close, the
// kit's daemons and the tests all build and read it from this header alone, which needs nothing
// of the library to compile or link, so every field offset is checked on each target.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>

namespace tessera::wire {

inline constexpr std::size_t kDaemonMessageSize = 1724;

struct DaemonMessage {
  uint8_t direction;  // request 1; a reply of 2 is success, any other value a refusal
  uint8_t operation;  // DaemonOperation of the request; not read in a reply
  uint8_t reserved_2[2];
  uint32_t session_id;  // session to close (operation 2), else 0
  uint32_t status;      // request 0; a refusal's reason
  char name[321];       // property name, at most 320 characters and a terminator
  char value[1280];     // value to write, or the value of a read in the reply
  uint8_t reserved_1613[43];
  uint32_t orb_close;  // 1 when the close comes from ssn_orb_close, else 0
  uint8_t reserved_1660[64];
};

static_assert(sizeof(DaemonMessage) == kDaemonMessageSize);
static_assert(offsetof(DaemonMessage, direction) == 0);
static_assert(offsetof(DaemonMessage, operation) == 1);
static_assert(offsetof(DaemonMessage, reserved_2) == 2);
static_assert(offsetof(DaemonMessage, session_id) == 4);
static_assert(offsetof(DaemonMessage, status) == 8);
static_assert(offsetof(DaemonMessage, name) == 12);
static_assert(offsetof(DaemonMessage, value) == 333);
static_assert(offsetof(DaemonMessage, reserved_1613) == 1613);
static_assert(offsetof(DaemonMessage, orb_close) == 1656);
static_assert(offsetof(DaemonMessage, reserved_1660) == 1660);
static_assert(sizeof(DaemonMessage::session_id) == 4 && sizeof(DaemonMessage::status) == 4 &&
              sizeof(DaemonMessage::orb_close) == 4);

// Values of `direction`.
inline constexpr uint8_t kDirectionRequest = 1;
inline constexpr uint8_t kDirectionSuccess = 2;

// Values of `operation`. Codes 10 to 13 go to the mapping daemon, every other to the session one.
enum DaemonOperation : uint8_t {
  kCloseSession = 2,
  kSetProperty = 10,
  kGetProperty = 11,
  kSetDcsgenProperty = 12,
  kGetDcsgenProperty = 13,
};

// Longest texts a request carries: the name, and the value of each write.
inline constexpr std::size_t kMaxDaemonName = sizeof(DaemonMessage::name) - 1;    // 320
inline constexpr std::size_t kMaxDaemonValue = sizeof(DaemonMessage::value) - 1;  // 1279
inline constexpr std::size_t kMaxDcsgenValue = kMaxDaemonName;                    // 320

inline constexpr const char kMappingSocketPath[] = "/var/run/tolvex/dmmappingSocket";
inline constexpr const char kSessionSocketPath[] = "/var/run/tolvex/ipmiextdSocket";

// The socket that serves an operation code.
constexpr const char *daemon_socket_path(uint8_t operation) noexcept {
  return operation >= kSetProperty && operation <= kGetDcsgenProperty ? kMappingSocketPath
                                                                      : kSessionSocketPath;
}

// The daemons' address: a zeroed 110-byte AF_UNIX address holding the family and `path`. Returns
// the length that connect and bind take, the path's length plus 3 (family, path, terminator), or
// 0 when the path doesn't fit.
static_assert(sizeof(sockaddr_un) == 110);
inline socklen_t make_daemon_address(const char *path, sockaddr_un *address) noexcept {
  constexpr socklen_t kOverhead = sizeof(sa_family_t) + 1;  // the family, the terminator
  static_assert(kOverhead == 3);
  std::memset(address, 0, sizeof *address);
  const std::size_t length = strnlen(path, sizeof address->sun_path);
  if (length >= sizeof address->sun_path) {
    return 0;
  }
  address->sun_family = AF_UNIX;
  std::memcpy(address->sun_path, path, length);
  return static_cast<socklen_t>(length) + kOverhead;
}

}  // namespace tessera::wire
