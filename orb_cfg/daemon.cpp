// The daemon exchange: one request carried to the mapping or session daemon over a short-lived
// local stream connection and the reply put over it, and the four property operations that
// read and write through the mapping daemon with it.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>

#include "memory/heap.h"
#include "orb_cfg/orb_cfg_internal.h"
#include "store_client/daemon_message.h"
#include "system/linux/handles.h"
#include "system/linux/sigpipe.h"
#include "tessera/orb_cfg.h"

namespace tessera::orb_cfg {

using namespace wire;  // NOLINT(google-build-using-namespace): the message is this file's subject

namespace {

static_assert(sizeof(DaemonMessage) == TESSERA_DAEMON_MESSAGE_SIZE);

// What session_manager_ipmiextd_communicate returns.
inline constexpr int32_t kExchangeDone = 0;
inline constexpr int32_t kExchangeFailed = TESSERA_DAEMON_EXCHANGE_FAILED;  // 12307

// Copies at most `limit` characters of `text` into a zeroed field; the rest of it stays zero.
void put_text(char *field, const char *text, std::size_t limit) {
  std::memcpy(field, text, strnlen(text, limit));
}

bool is_read(DaemonOperation operation) {
  return operation == kGetProperty || operation == kGetDcsgenProperty;
}

// One property operation: allocate a zeroed message, fill it, exchange, read the reply.
int32_t property_exchange(DaemonOperation operation, const char *name, const char *value,
                          std::size_t value_limit, char *out, unsigned int len) {
  const heap::Owned<DaemonMessage> message = heap::make_zeroed<DaemonMessage>();
  if (!message) {
    return 1;  // as a failed exchange: nothing was asked
  }
  fill_property_request(*message, operation, name, value, value_limit);
  if (session_manager_ipmiextd_communicate(message.get()) != kExchangeDone) {
    return 1;
  }
  return take_property_reply(*message, operation, out, len);
}

int32_t read_through_daemon(DaemonOperation operation, const char *name, char *out,
                            unsigned int len) {
  if (name == nullptr || out == nullptr || len == 0) {
    return 1;
  }
  return property_exchange(operation, name, nullptr, 0, out, len);
}

int32_t write_through_daemon(DaemonOperation operation, const char *name, const char *value,
                             std::size_t value_limit) {
  if (name == nullptr || value == nullptr) {
    return 1;
  }
  return property_exchange(operation, name, value, value_limit, nullptr, 0);
}

}  // namespace

void fill_property_request(DaemonMessage &message, DaemonOperation operation, const char *name,
                           const char *value, std::size_t value_limit) noexcept {
  message.direction = kDirectionRequest;
  message.operation = operation;
  put_text(message.name, name, kMaxDaemonName);
  if (value != nullptr) {
    put_text(message.value, value, value_limit);
  }
}

int32_t take_property_reply(const DaemonMessage &message, DaemonOperation operation, char *out,
                            unsigned int len) noexcept {
  if (message.direction != kDirectionSuccess) {
    return operation == kGetDcsgenProperty ? 1 : static_cast<int32_t>(message.status);
  }
  if (!is_read(operation)) {
    return 0;
  }
  const std::size_t length = strnlen(message.value, sizeof message.value);
  if (length == sizeof message.value) {
    return 1;  // no terminator in the field: the reply breaks the format, its value is no value
  }
  const std::size_t delivered = length < len ? length : len - 1;
  std::memcpy(out, message.value, delivered);
  out[delivered] = '\0';
  return 0;
}

}  // namespace tessera::orb_cfg

using namespace tessera::orb_cfg;  // NOLINT(google-build-using-namespace): this file's own

int32_t session_manager_ipmiextd_communicate(void *message) {
  if (message == nullptr) {
    return kExchangeFailed;
  }
  auto *bytes = static_cast<uint8_t *>(message);
  const tessera::UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket.valid()) {
    return kExchangeFailed;
  }
  sockaddr_un address;
  const socklen_t length =
      make_daemon_address(daemon_socket_path(bytes[offsetof(DaemonMessage, operation)]), &address);
  if (::connect(socket.get(), reinterpret_cast<const sockaddr *>(&address), length) != 0) {
    return kExchangeFailed;
  }
  {
    // A daemon that closes before reading must not take the tool down with SIGPIPE: the
    // exchange then fails at the receive like any other broken one.
    const tessera::SigpipeGuard guard;
    static_cast<void>(::send(socket.get(), bytes, sizeof(DaemonMessage), 0));
  }
  if (::recv(socket.get(), bytes, sizeof(DaemonMessage), 0) <= 0) {
    return kExchangeFailed;
  }
  return kExchangeDone;
}

int32_t DM_ORB_Get_Property(const char *name, char *out, unsigned int len) {
  return read_through_daemon(kGetProperty, name, out, len);
}

int32_t DM_DCSGEN_Get_Property(const char *name, char *out, unsigned int len) {
  return read_through_daemon(kGetDcsgenProperty, name, out, len);
}

int32_t DM_ORB_Set_Property(const char *name, const char *value) {
  return write_through_daemon(kSetProperty, name, value, kMaxDaemonValue);
}

int32_t DM_DCSGEN_Set_Property(const char *name, const char *value) {
  return write_through_daemon(kSetDcsgenProperty, name, value, kMaxDcsgenValue);
}
