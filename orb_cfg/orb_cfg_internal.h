// Internal interface of the property service: the catalogue, the name helpers, the typed store
// write and the network record access that the exported entry points are built from.
//
// Names marked [system name] are the controller's own, spelled as its other components and its
// documentation spell them (hence the mixed case); every other name here is this project's.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "store_client/daemon_message.h"
#include "tessera/orb_cfg.h"

namespace tessera::orb_cfg {

// Catalogue rows, the end row not counted.
inline constexpr int32_t kPropertyRowCount = 288;
// special_prop_table rows, the end row not counted.
inline constexpr int32_t kSpecialRowCount = 58;
// A row's clear_code: this bit set, the low 15 bits go into the network record's first clear
// mask; not set, the whole code goes into the second.
inline constexpr uint16_t kClearCodeFirstMask = 0x8000;

// The store name buffer of convert_prop_name, and the longest name it translates.
inline constexpr std::size_t kKeySize = 128;
inline constexpr std::size_t kMaxNameLength = kKeySize - 1;
// The longest name that the Cfgmgr_* entry points take.
inline constexpr std::size_t kMaxEntryNameLength = 63;

// One catalogue row. Its texts live in one constant character pool and are held as offsets into
// it, so that the table needs no load-time relocation; the accessors give them as C texts.
struct PropertyRow {
  int32_t group;  // [system name] -1 in the end row
  int32_t id;     // [system name] 0 exactly when the row has no store key
  int32_t type;   // [system name] PROP_TYPE_*
  uint16_t store_key_at;
  uint16_t legacy_path_at;
  uint16_t default_value_at;
  uint8_t store_key_size;    // length of the store key, without terminator
  uint8_t legacy_path_size;  // length of the legacy path, without terminator

  // [system name] The texts; null for the store key and legacy path of the end row.
  [[nodiscard]] const char *store_key() const noexcept;
  [[nodiscard]] const char *legacy_path() const noexcept;
  [[nodiscard]] const char *default_value() const noexcept;
};

// [system name] The catalogue in lookup order: row 0 is all empty, the last row is the end row.
extern const std::array<PropertyRow, kPropertyRowCount + 1> property_table;

// [system name] Index of the first row whose store key is `key`, or -1.
int32_t findOrbPropertyIndex(const char *key) noexcept;

// [system name] Splits up to three trailing digits off `name`: `stem` (room for the name; null
// when only the answer and the number are wanted) gets the rest and `number` their value. Returns
// 1 when the name ends in a digit, else 0 (stem = name, number 0).
int32_t splitPropertyIndexSuffix(const char *name, char *stem, int32_t *number) noexcept;

// [system name] Writes `value` under the store name `key` by type code. Returns the store call's
// result (non-zero for success), or 0 when the type has no store write.
int32_t setOrbConfigByType(const char *key, const char *value, int32_t type) noexcept;

// The store-or-network read behind every Cfgmgr_* read: checks the arguments (status 2, `out`
// untouched), empties `out` when `clear_first`, reads through the special row or the store, and
// cuts a delivered value to `len` - 1 characters. Returns a read status (0, 1 or 2).
int32_t read_property(const char *name, char *out, unsigned int len, bool clear_first) noexcept;

// [system name] Read and write one field of the network record, for special_prop_table[index]
// of kind 0. getNetworkProperty returns 0, or 1 when the field can't be read; setNetworkProperty
// the result of the network apply (0 for success), or 1 when the value can't be written.
int32_t getNetworkProperty(const char *name, char *out, int32_t index) noexcept;
int32_t setNetworkProperty(const char *name, const char *value, int32_t index) noexcept;

// The steps of a property operation through the mapping daemon, apart so that the reply handling
// can be driven on its own. fill_property_request writes direction, operation, the name cut to 320
// characters and, for a write, the value cut to `value_limit` characters into a zeroed message.
// take_property_reply reads the reply of `operation`: 0 on success, with a read's value delivered
// to `out` cut to `len` - 1 characters; else the refusal's status (1 for a DCSGEN read), or 1 when
// a read's value has no terminator inside its field. `out` is untouched unless the result is 0.
void fill_property_request(wire::DaemonMessage &message, wire::DaemonOperation operation,
                           const char *name, const char *value, std::size_t value_limit) noexcept;
int32_t take_property_reply(const wire::DaemonMessage &message, wire::DaemonOperation operation,
                            char *out, unsigned int len) noexcept;

}  // namespace tessera::orb_cfg
