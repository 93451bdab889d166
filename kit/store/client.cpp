// The store client of a workstation: the orb_* functions over the kit's SQLite store, with the
// argument orders and success senses that libtessera.so.1 relies on. orb_config_* and
// orb_session_get_info give non-zero for success; the session lists, the remote functions and
// the event give 0. Every bad argument gets the failure sense and leaves outputs untouched.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "kit/store/database.h"
#include "kit/store/operations.h"
#include "kit/store/tessera_store.h"
#include "store_client/platform.h"
#include "store_client/session_record.h"
#include "tessera/store_client.h"

namespace tessera::kit {
namespace {

// The administration's session carries the record's texts whole.
static_assert(sizeof(tessera_store_session::type) == sizeof(wire::SessionRecord::type) &&
              sizeof(tessera_store_session::user) == sizeof(wire::SessionRecord::user) &&
              sizeof(tessera_store_session::address) == sizeof(wire::SessionRecord::address));

constexpr int32_t kConfigFailed = 0;
constexpr int32_t kConfigDone = 1;
constexpr int32_t kCallDone = 0;
constexpr int32_t kCallFailed = -1;

// The value under `key` when it has `type`.
std::optional<StoredValue> typed_value(const char *key, int type) {
  if (!valid_key(key, TESSERA_STORE_KEY_MAX)) {
    return std::nullopt;
  }
  Database *db = Database::current();
  auto value = db != nullptr ? read_value(*db, key) : std::nullopt;
  return value && value->type == type ? value : std::nullopt;
}

int32_t store_value(const char *key, const StoredValue &value) {
  if (!valid_key(key, TESSERA_STORE_KEY_MAX)) {
    return kConfigFailed;
  }
  Database *db = Database::current();
  return db != nullptr && write_value(*db, key, value) ? kConfigDone : kConfigFailed;
}

int32_t get_text(const char *key, char *out, std::size_t capacity) {
  const auto value =
      out != nullptr && capacity > 0 ? typed_value(key, TESSERA_STORE_TEXT) : std::nullopt;
  return value && put_text(value->text, out, capacity) ? kConfigDone : kConfigFailed;
}

int32_t set_text(const char *key, const char *text) {
  if (text == nullptr) {
    return kConfigFailed;
  }
  return store_value(
      key, {.type = TESSERA_STORE_TEXT, .text = std::string(cut(text, TESSERA_STORE_TEXT_MAX))});
}

// Lists ids into the caller's array: at most the capacity that `count` brings, and the whole
// number back in `count`, which may exceed it.
int32_t list_ids(const std::optional<std::vector<uint32_t>> &ids, int32_t *count, uint32_t *out) {
  if (!ids) {
    return kCallFailed;
  }
  const auto room = static_cast<std::size_t>(std::max(*count, 0));
  const std::size_t written = std::min(room, ids->size());
  std::copy_n(ids->begin(), written, out);
  *count = static_cast<int32_t>(std::min<std::size_t>(ids->size(), INT32_MAX));
  return kCallDone;
}

bool can_list(const int32_t *count, const uint32_t *ids) {
  return count != nullptr && (ids != nullptr || *count <= 0);
}

// "netGetCurrentIfConfig": the stored record.
int32_t get_network(uint32_t *length, uint32_t capacity, void *output) {
  Database *db = Database::current();
  if (output == nullptr || capacity < sizeof(NetworkRecord) || db == nullptr) {
    return kCallFailed;
  }
  const auto record = read_network(*db);
  if (!record) {
    return kCallFailed;
  }
  std::memcpy(output, &*record, sizeof *record);
  *length = sizeof *record;
  return kCallDone;
}

// "netSetNetConfig": one change request, applied in one transaction.
int32_t set_network(const uint32_t *length, const void *input) {
  Database *db = Database::current();
  if (input == nullptr || *length < sizeof(NetworkRecord) || db == nullptr) {
    return kCallFailed;
  }
  NetworkRecord request;
  std::memcpy(&request, input, sizeof request);
  Transaction transaction(*db);
  auto stored = transaction.ok() ? read_network(*db) : std::nullopt;
  if (!stored) {
    return kCallFailed;
  }
  apply_change_request(*stored, request);
  return write_network(*db, *stored) && transaction.commit() ? kCallDone : kCallFailed;
}

// "GetActiveSensors": the records that fit, a zero record behind them when there is room, and
// their number in the length word.
int32_t get_sensors(uint32_t *length, uint32_t capacity, void *output) {
  Database *db = Database::current();
  if (output == nullptr || db == nullptr) {
    return kCallFailed;
  }
  const auto sensors = read_sensors(*db);
  if (!sensors) {
    return kCallFailed;
  }
  const std::size_t room = capacity / sizeof(SensorRecord);
  const std::size_t count = std::min(room, sensors->size());
  auto *out = static_cast<uint8_t *>(output);
  if (count > 0) {
    std::memcpy(out, sensors->data(), count * sizeof(SensorRecord));
  }
  if (count < room) {
    std::memset(out + count * sizeof(SensorRecord), 0, sizeof(SensorRecord));
  }
  *length = static_cast<uint32_t>(count);
  return kCallDone;
}

// "osi_function_getuser": the privilege of the user named at the start of the request, at
// offset 516 of the response. An unknown user fails.
int32_t get_user(uint32_t *length, const void *input, uint32_t capacity, void *output) {
  using wire::PrivilegeResponse;
  Database *db = Database::current();
  if (input == nullptr || *length == 0 || output == nullptr ||
      capacity < sizeof(PrivilegeResponse) || db == nullptr) {
    return kCallFailed;
  }
  const std::size_t limit = std::min<std::size_t>(*length, wire::kPrivilegeBlockSize) - 1;
  const std::string_view user = cut(static_cast<const char *>(input), limit);
  const auto privilege = user.empty() ? std::nullopt : read_privilege(*db, user);
  if (!privilege) {
    return kCallFailed;
  }
  PrivilegeResponse response{};
  response.privilege = *privilege;
  std::memcpy(output, &response, sizeof response);
  *length = sizeof response;
  return kCallDone;
}

}  // namespace
}  // namespace tessera::kit

using namespace tessera::kit;

extern "C" {

TESSERA_STORE_API int32_t orb_config_get_bool(const char *key, uint8_t *value) {
  const auto stored = value != nullptr ? typed_value(key, TESSERA_STORE_BOOL) : std::nullopt;
  if (!stored) {
    return kConfigFailed;
  }
  *value = stored->number != 0 ? 1 : 0;
  return kConfigDone;
}

TESSERA_STORE_API int32_t orb_config_get_int(const char *key, int32_t *value) {
  const auto stored = value != nullptr ? typed_value(key, TESSERA_STORE_INT) : std::nullopt;
  if (!stored) {
    return kConfigFailed;
  }
  *value = static_cast<int32_t>(stored->number);
  return kConfigDone;
}

// No capacity comes with the buffer: the tools pass at least 1025 bytes, the room of the
// longest text the store keeps.
TESSERA_STORE_API int32_t orb_config_get_str(const char *key, char *value) {
  return get_text(key, value, TESSERA_STORE_TEXT_MAX + 1);
}

TESSERA_STORE_API int32_t orb_config_get_str_n(const char *key, char *value, uint32_t capacity) {
  return get_text(key, value, capacity);
}

// The constant third argument of the set calls asks for nothing that a workstation store does
// differently: every write is committed before the call returns.
TESSERA_STORE_API int32_t orb_config_set_bool(const char *key, int32_t value, int32_t) {
  return store_value(key, {.type = TESSERA_STORE_BOOL, .number = value != 0 ? 1 : 0});
}

TESSERA_STORE_API int32_t orb_config_set_int(const char *key, int32_t value, int32_t) {
  return store_value(key, {.type = TESSERA_STORE_INT, .number = value});
}

TESSERA_STORE_API int32_t orb_config_set_str(const char *key, const char *value, int32_t) {
  return set_text(key, value);
}

TESSERA_STORE_API int32_t orb_config_set_str_n(const char *key, const char *value, int32_t) {
  return set_text(key, value);
}

TESSERA_STORE_API int32_t orb_session_get_info(uint32_t id, void *record) {
  Database *db = Database::current();
  if (record == nullptr || db == nullptr) {
    return kConfigFailed;
  }
  int result = 0;
  const auto session = read_session(*db, id, &result);
  const auto children = session ? children_of(*db, id) : std::nullopt;
  if (!children) {
    return kConfigFailed;
  }
  tessera::wire::SessionRecord out{};
  std::memcpy(out.type, session->type, sizeof out.type);
  std::memcpy(out.user, session->user, sizeof out.user);
  std::memcpy(out.address, session->address, sizeof out.address);
  out.word = session->word;
  out.children = static_cast<int32_t>(children->size());
  std::memcpy(record, &out, sizeof out);
  return kConfigDone;
}

TESSERA_STORE_API int32_t orb_session_get_children_info(uint32_t id, int32_t *count,
                                                        uint32_t *ids) {
  Database *db = Database::current();
  if (!can_list(count, ids) || db == nullptr) {
    return kCallFailed;
  }
  int result = 0;
  if (!read_session(*db, id, &result)) {
    return kCallFailed;
  }
  return list_ids(children_of(*db, id), count, ids);
}

TESSERA_STORE_API int32_t orb_session_get_type_info(const char *type, int32_t *count,
                                                    uint32_t *ids) {
  Database *db = Database::current();
  if (type == nullptr || !can_list(count, ids) || db == nullptr) {
    return kCallFailed;
  }
  return list_ids(sessions_of_type(*db, cut(type, sizeof(tessera_store_session::type))), count,
                  ids);
}

TESSERA_STORE_API int32_t orb_function_execute(const char *name, uint32_t *length,
                                               const void *input, uint32_t capacity, void *output) {
  if (name == nullptr || length == nullptr) {
    return kCallFailed;
  }
  namespace store = tessera::store;
  const std::string_view function = cut(name, TESSERA_STORE_KEY_MAX);
  if (function == store::kNetGetCurrentIfConfig) {
    return get_network(length, capacity, output);
  }
  if (function == store::kNetSetNetConfig) {
    return set_network(length, input);
  }
  if (function == store::kGetActiveSensors) {
    return get_sensors(length, capacity, output);
  }
  if (function == store::kGetUser) {
    return get_user(length, input, capacity, output);
  }
  return kCallFailed;
}

TESSERA_STORE_API int32_t orb_event_occurred(const char *name, int32_t arg1, int32_t arg2) {
  Database *db = Database::current();
  if (!valid_key(name, TESSERA_STORE_KEY_MAX) || db == nullptr) {
    return kCallFailed;
  }
  return log_event(*db, name, arg1, arg2) ? kCallDone : kCallFailed;
}

}  // extern "C"
