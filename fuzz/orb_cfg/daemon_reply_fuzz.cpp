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
#include "orb_cfg/daemon_message.h"

namespace {

using tessera::orb_cfg::DaemonMessage;
using tessera::orb_cfg::DaemonOperation;

using tessera::fuzz::check;

constexpr DaemonOperation kOperations[] = {
    tessera::orb_cfg::kGetProperty, tessera::orb_cfg::kGetDcsgenProperty,
    tessera::orb_cfg::kSetProperty, tessera::orb_cfg::kSetDcsgenProperty};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2) {
    return 0;
  }
  const uint8_t selector = data[0];
  const DaemonOperation operation = kOperations[selector & 3];
  const unsigned int len = 1 + (selector >> 2) * 23;  // 1 to 1450: below and above the value
  const bool read = operation == tessera::orb_cfg::kGetProperty ||
                    operation == tessera::orb_cfg::kGetDcsgenProperty;

  const auto message = tessera::heap::make_zeroed<DaemonMessage>();
  if (!message) {
    return 0;
  }
  tessera::orb_cfg::fill_property_request(*message, operation, "WEBSERVER/http_port",
                                          read ? nullptr : "8080",
                                          tessera::orb_cfg::kMaxDaemonValue);
  const std::size_t reply = std::min(size - 1, sizeof(DaemonMessage));
  std::memcpy(message.get(), data + 1, reply);

  std::vector<char> out(len, '#');
  const int32_t result =
      tessera::orb_cfg::take_property_reply(*message, operation, out.data(), len);
  const bool success = message->direction == tessera::orb_cfg::kDirectionSuccess;
  if (read && success && result == 0) {
    const std::size_t length = strnlen(out.data(), len);
    check(length < len);
    check(std::memcmp(out.data(), message->value, length) == 0);
  } else if (read) {
    check(std::all_of(out.begin(), out.end(), [](char c) { return c == '#'; }));
  }
  if (success) {
    check(result == 0 || (read && result == 1));
  } else if (operation == tessera::orb_cfg::kGetDcsgenProperty) {
    check(result == 1);
  } else {
    check(result == static_cast<int32_t>(message->status));
  }
  return 0;
}
