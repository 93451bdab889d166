// The message that the mapping daemon and the session daemon take over their local stream sockets:
// 1724 bytes in both directions, numbers in native byte order. A request starts all zero and each
// operation fills only its own fields. Whoever builds or reads one (the property operations, the
// session close operations, workstation daemons) includes this header, so every field offset is
// checked at compile time on each target that does.
#pragma once

#include <cstddef>
#include <cstdint>

#include <sys/socket.h>
#include <sys/un.h>

#include "tessera/orb_cfg.h"

namespace tessera::orb_cfg {

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

static_assert(sizeof(DaemonMessage) == TESSERA_DAEMON_MESSAGE_SIZE);
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

// What session_manager_ipmiextd_communicate returns.
inline constexpr int32_t kExchangeDone = 0;
inline constexpr int32_t kExchangeFailed = TESSERA_DAEMON_EXCHANGE_FAILED;  // 12307

inline constexpr const char kMappingSocketPath[] = "/var/run/tolvex/dmmappingSocket";
inline constexpr const char kSessionSocketPath[] = "/var/run/tolvex/ipmiextdSocket";

// The socket that serves an operation code.
constexpr const char *daemon_socket_path(uint8_t operation) noexcept {
  return operation >= kSetProperty && operation <= kGetDcsgenProperty ? kMappingSocketPath
                                                                      : kSessionSocketPath;
}

// The daemons' address: a zeroed 110-byte AF_UNIX address holding the family and `path`. Returns
// the length that connect takes, the path's length plus 3 (family, path, terminator), or 0 when
// the path doesn't fit.
static_assert(sizeof(sockaddr_un) == 110);
socklen_t make_daemon_address(const char *path, sockaddr_un *address) noexcept;

// The steps of a property operation, apart so that the reply handling can be driven on its own.
// fill_property_request writes direction, operation, the name cut to 320 characters and, for a
// write, the value cut to `value_limit` characters into a zeroed message. take_property_reply
// reads the reply of `operation`: 0 on success, with a read's value delivered to `out` cut to
// `len` - 1 characters; else the refusal's status (1 for a DCSGEN read), or 1 when a read's value
// has no terminator inside its field. `out` is untouched unless the result is 0.
void fill_property_request(DaemonMessage &message, DaemonOperation operation, const char *name,
                           const char *value, std::size_t value_limit) noexcept;
int32_t take_property_reply(const DaemonMessage &message, DaemonOperation operation, char *out,
                            unsigned int len) noexcept;

}  // namespace tessera::orb_cfg
