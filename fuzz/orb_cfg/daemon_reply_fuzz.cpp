// Arbitrary daemon replies through the reply handling of the four property operations, exactly as
// a single receive leaves them: the reply's bytes over the request, the request's bytes behind a
// short reply. The value lands in an output of exactly `len` bytes, so a write past it shows.
//
// Input: one selector byte (operation and len), then the reply (only its first 1724 bytes count).
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "../harness.h"
#include "memory/heap.h"
#include "orb_cfg/orb_cfg_internal.h"
#include "store_client/daemon_message.h"

namespace {

using tessera::wire::DaemonMessage;
using tessera::wire::DaemonOperation;

using tessera::fuzz::check;

constexpr DaemonOperation kOperations[] = {
    tessera::wire::kGetProperty, tessera::wire::kGetDcsgenProperty,
    tessera::wire::kSetProperty, tessera::wire::kSetDcsgenProperty};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2) {
    return 0;
  }
  const uint8_t selector = data[0];
  const DaemonOperation operation = kOperations[selector & 3];
  const unsigned int len = 1 + (selector >> 2) * 23;  // 1 to 1450: below and above the value
  const bool read = operation == tessera::wire::kGetProperty ||
                    operation == tessera::wire::kGetDcsgenProperty;

  const auto message = tessera::heap::make_zeroed<DaemonMessage>();
  if (!message) {
    return 0;
  }
  tessera::orb_cfg::fill_property_request(*message, operation, "WEBSERVER/http_port",
                                          read ? nullptr : "8080",
                                          tessera::wire::kMaxDaemonValue);
  const std::size_t reply = std::min(size - 1, sizeof(DaemonMessage));
  std::memcpy(message.get(), data + 1, reply);

  std::vector<char> out(len, '#');
  const int32_t result =
      tessera::orb_cfg::take_property_reply(*message, operation, out.data(), len);
  const bool success = message->direction == tessera::wire::kDirectionSuccess;
  if (read && success && result == 0) {
    const std::size_t length = strnlen(out.data(), len);
    check(length < len);
    check(std::memcmp(out.data(), message->value, length) == 0);
  } else if (read) {
    check(std::all_of(out.begin(), out.end(), [](char c) { return c == '#'; }));
  }
  if (success) {
    check(result == 0 || (read && result == 1));
  } else if (operation == tessera::wire::kGetDcsgenProperty) {
    check(result == 1);
  } else {
    check(result == static_cast<int32_t>(message->status));
  }
  return 0;
}
