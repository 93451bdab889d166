// The daemons' answers. A reply is the request as it came, with the direction and status set and,
// for a read, the value; whatever arrives, the reply is a whole message.
#include "kit/daemons/requests.h"

#include <algorithm>
#include <cstring>

#include "kit/store/tessera_store.h"

namespace tessera::kit {
namespace {

using namespace wire;

// The request, zero-filled behind the bytes that came; `complete` when a whole message came.
DaemonMessage received(std::span<const uint8_t> bytes, bool *complete) {
  DaemonMessage message{};
  const std::size_t size = std::min(bytes.size(), sizeof message);
  if (size > 0) {
    std::memcpy(&message, bytes.data(), size);
  }
  *complete = size == sizeof message && message.direction == kDirectionRequest;
  return message;
}

DaemonMessage refuse(DaemonMessage message, uint32_t status) {
  message.direction = kDirectionRefused;
  message.status = status;
  return message;
}

DaemonMessage accept(DaemonMessage message) {
  message.direction = kDirectionSuccess;
  message.status = 0;
  return message;
}

uint32_t status_of(Found found, uint32_t not_found) {
  return found == Found::no ? not_found : kStatusStoreFailed;
}

template <std::size_t N>
bool terminated(const char (&field)[N]) {
  return std::memchr(field, '\0', N) != nullptr;
}

}  // namespace

Found found_of(int store_result) {
  return store_result == TESSERA_STORE_OK          ? Found::yes
         : store_result == TESSERA_STORE_NOT_FOUND ? Found::no
                                                   : Found::failed;
}

DaemonMessage answer_mapping(std::span<const uint8_t> request, PropertyStore &store) {
  bool complete = false;
  DaemonMessage message = received(request, &complete);
  if (!complete || !terminated(message.name) || !terminated(message.value) ||
      message.operation < kSetProperty || message.operation > kGetDcsgenProperty) {
    return refuse(message, kStatusMalformed);
  }
  // Properties the daemon doesn't own go back to the caller's own fallback; DCSGEN properties
  // are all the daemon's, and a write adds one.
  const bool dcsgen =
      message.operation == kSetDcsgenProperty || message.operation == kGetDcsgenProperty;
  const int space = dcsgen ? TESSERA_STORE_DCSGEN : TESSERA_STORE_MAPPED;
  const uint32_t not_found = dcsgen ? kStatusUnknown : kStatusNotServed;
  if (message.name[0] == '\0') {
    return refuse(message, not_found);
  }
  Found found = Found::failed;
  switch (message.operation) {
    case kSetProperty:
    case kSetDcsgenProperty:
      if (dcsgen) {
        message.value[kMaxDcsgenValue] = '\0';
      }
      found = store.write(space, message.name, message.value, dcsgen);
      break;
    default: {  // the reads
      char value[sizeof message.value];
      found = store.read(space, message.name, value, sizeof value);
      if (found == Found::yes) {
        std::memset(message.value, 0, sizeof message.value);
        std::memcpy(message.value, value, strnlen(value, sizeof value - 1));
      }
      break;
    }
  }
  return found == Found::yes ? accept(message) : refuse(message, status_of(found, not_found));
}

DaemonMessage answer_session(std::span<const uint8_t> request, SessionStore &store) {
  bool complete = false;
  const DaemonMessage message = received(request, &complete);
  if (!complete || message.operation != kCloseSession) {
    return refuse(message, kStatusMalformed);
  }
  const Found found = store.close(message.session_id, message.orb_close != 0);
  return found == Found::yes ? accept(message) : refuse(message, status_of(found, kStatusUnknown));
}

}  // namespace tessera::kit
