// The store's tables: typed values, the network record, sessions, users, sensors and events.
#include "kit/store/operations.h"

#include <algorithm>
#include <cstring>
#include <ctime>

namespace tessera::kit {
namespace {

std::optional<std::vector<uint32_t>> ids_of(Statement &query) {
  std::vector<uint32_t> ids;
  while (query.row()) {
    ids.push_back(static_cast<uint32_t>(query.integer(0)));
  }
  return query.ok() ? std::optional(std::move(ids)) : std::nullopt;
}

template <std::size_t N>
void copy_text(char (&field)[N], std::string_view text) {
  const std::size_t length = std::min(text.size(), N - 1);
  std::memcpy(field, text.data(), length);
  std::memset(field + length, 0, N - length);
}

}  // namespace

std::optional<StoredValue> read_value(Database &db, std::string_view key) {
  Statement query = db.prepare("SELECT type, value FROM config WHERE key = ?");
  if (!query.bind(key).row()) {
    return std::nullopt;
  }
  StoredValue value{.type = static_cast<int>(query.integer(0))};
  if (value.type == TESSERA_STORE_TEXT) {
    value.text = query.text(1);
  } else {
    value.number = query.integer(1);
  }
  return value;
}

bool write_value(Database &db, std::string_view key, const StoredValue &value) {
  Statement update = db.prepare("REPLACE INTO config(key, type, value) VALUES (?, ?, ?)");
  update.bind(key).bind(value.type);
  if (value.type == TESSERA_STORE_TEXT) {
    update.bind(std::string_view(value.text).substr(0, TESSERA_STORE_TEXT_MAX));
  } else {
    update.bind(value.number);
  }
  return update.run();
}

std::optional<NetworkRecord> read_network(Database &db) {
  Statement query = db.prepare("SELECT record FROM network WHERE id = 1");
  NetworkRecord record{};
  if (!query.row()) {
    return std::nullopt;
  }
  const auto blob = query.blob(0);
  std::memcpy(&record, blob.data(), std::min(blob.size(), sizeof record));
  return record;
}

bool write_network(Database &db, const NetworkRecord &record) {
  Statement update = db.prepare("REPLACE INTO network(id, record) VALUES (1, ?)");
  return update.bind(bytes_of(record)).run();
}

std::optional<std::vector<uint32_t>> sessions_of_type(Database &db, std::string_view type) {
  Statement query = db.prepare("SELECT id FROM sessions WHERE ?1 = '' OR type = ?1 ORDER BY id");
  query.bind(type);
  return ids_of(query);
}

std::optional<std::vector<uint32_t>> children_of(Database &db, uint32_t id) {
  Statement query = db.prepare("SELECT id FROM sessions WHERE parent = ? ORDER BY id");
  query.bind(id);
  return ids_of(query);
}

std::optional<tessera_store_session> read_session(Database &db, uint32_t id, int *result) {
  Statement query =
      db.prepare("SELECT parent, word, type, user, address FROM sessions WHERE id = ?");
  if (!query.bind(id).row()) {
    *result = query.ok() ? TESSERA_STORE_NOT_FOUND : TESSERA_STORE_ERROR;
    return std::nullopt;
  }
  tessera_store_session session{.id = id,
                                .parent = static_cast<uint32_t>(query.integer(0)),
                                .word = static_cast<uint32_t>(query.integer(1))};
  copy_text(session.type, query.text(2));
  copy_text(session.user, query.text(3));
  copy_text(session.address, query.text(4));
  *result = TESSERA_STORE_OK;
  return session;
}

std::optional<uint32_t> read_privilege(Database &db, std::string_view user) {
  Statement query = db.prepare("SELECT privilege FROM users WHERE name = ?");
  if (!query.bind(user).row()) {
    return std::nullopt;
  }
  return static_cast<uint32_t>(query.integer(0));
}

std::optional<std::vector<SensorRecord>> read_sensors(Database &db) {
  Statement query = db.prepare("SELECT sensor, kind, name FROM sensors ORDER BY position");
  std::vector<SensorRecord> sensors;
  while (sensors.size() < wire::kMaxSensorRecords && query.row()) {
    SensorRecord record{.index = static_cast<uint8_t>(query.integer(0)),
                        .kind = static_cast<uint8_t>(query.integer(1)),
                        .more = 1};  // 0 there would end the list
    const std::string_view name = query.text(2).substr(0, kSensorNameMax);
    std::memcpy(record.name, name.data(), name.size());
    sensors.push_back(record);
  }
  return query.ok() ? std::optional(std::move(sensors)) : std::nullopt;
}

bool log_event(Database &db, std::string_view name, int32_t arg1, int32_t arg2) {
  Statement insert = db.prepare("INSERT INTO events(time, name, arg1, arg2) VALUES (?, ?, ?, ?)");
  return insert.bind(static_cast<int64_t>(std::time(nullptr)))
      .bind(name.substr(0, sizeof(tessera_store_event::name) - 1))
      .bind(arg1)
      .bind(arg2)
      .run();
}

}  // namespace tessera::kit
