// The store's operations on its tables, shared by the store client (orb_*) and the
// administration interface (tessera_store_*). Each takes the caller's connection.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/store/database.h"
#include "kit/store/network_apply.h"
#include "kit/store/tessera_store.h"
#include "store_client/sensor_record.h"

namespace tessera::kit {

// A typed value: a number for BOOL and INT, a text for TEXT.
struct StoredValue {
  int type = 0;
  int64_t number = 0;
  std::string text;
};
std::optional<StoredValue> read_value(Database &db, std::string_view key);
bool write_value(Database &db, std::string_view key, const StoredValue &value);

// The stored network record; none when the database fails.
std::optional<NetworkRecord> read_network(Database &db);
bool write_network(Database &db, const NetworkRecord &record);

// Session ids in rising order: every session of `type` ("" for all), or the children of one.
std::optional<std::vector<uint32_t>> sessions_of_type(Database &db, std::string_view type);
std::optional<std::vector<uint32_t>> children_of(Database &db, uint32_t id);
// One session; NOT_FOUND or ERROR in `result` when there is none.
std::optional<tessera_store_session> read_session(Database &db, uint32_t id, int *result);

std::optional<uint32_t> read_privilege(Database &db, std::string_view user);

// The active sensors' records, in the order configured, at most wire::kMaxSensorRecords.
using wire::SensorRecord;
inline constexpr std::size_t kSensorNameMax = sizeof(SensorRecord::name) - 1;
std::optional<std::vector<SensorRecord>> read_sensors(Database &db);

bool log_event(Database &db, std::string_view name, int32_t arg1, int32_t arg2);

}  // namespace tessera::kit
