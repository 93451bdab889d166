// What the two daemons answer to one request: the mapping daemon's property operations (10 to
// 13) and the session daemon's close (2). A handler takes the bytes that arrived, at most one
// message, and always gives a whole reply; the store stands behind an interface, so the handlers
// can be driven without one.
#pragma once

#include <cstdint>
#include <span>

#include "store_client/daemon_message.h"

namespace tessera::kit {

using wire::DaemonMessage;

// Statuses of a refusal.
inline constexpr uint32_t kStatusMalformed = 1;    // short, not a request, unknown operation,
                                                   // a text without terminator in its field
inline constexpr uint32_t kStatusNotServed = 4;    // not one of this daemon's properties
inline constexpr uint32_t kStatusStoreFailed = 5;  // the store could not be used
inline constexpr uint32_t kStatusUnknown = 6;      // no such DCSGEN property or session

// A refusal's direction in a reply.
inline constexpr uint8_t kDirectionRefused = 3;

// Results of the stores below.
enum class Found { yes, no, failed };
// The Found of a tessera_store_* result: OK, NOT_FOUND, or anything else.
Found found_of(int store_result);

class PropertyStore {
 public:
  virtual ~PropertyStore() = default;
  // The value of `name` in `space` (TESSERA_STORE_MAPPED or TESSERA_STORE_DCSGEN), written
  // into `value` of `size` bytes.
  virtual Found read(int space, const char *name, char *value, std::size_t size) = 0;
  // Replaces the value of an existing property, or with `create` adds it.
  virtual Found write(int space, const char *name, const char *value, bool create) = 0;
};

class SessionStore {
 public:
  virtual ~SessionStore() = default;
  virtual Found close(uint32_t id, bool orb_close) = 0;
};

DaemonMessage answer_mapping(std::span<const uint8_t> request, PropertyStore &store);
DaemonMessage answer_session(std::span<const uint8_t> request, SessionStore &store);

}  // namespace tessera::kit
