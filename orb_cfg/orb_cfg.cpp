// Property access by name without the mapping daemon: translation of a legacy path or store key
// into the store's name and type, typed store reads and writes, and the choice between the store
// and the network record.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "orb_cfg/orb_cfg_internal.h"
#include "store_client/platform.h"
#include "string/number.h"
#include "tessera/orb_cfg.h"
#include "tessera/store_client.h"
#include "trace/report.h"

namespace tessera::orb_cfg {
namespace {

// Room for a 32-bit number in decimal, sign and terminator included.
inline constexpr std::size_t kNumberSize = 12;
inline constexpr std::size_t kMaxSuffixDigits = 3;

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

// Copies `length` characters of `text` and a terminator to `out`.
void copy_name(char *out, const char *text, std::size_t length) {
  std::memcpy(out, text, length);
  out[length] = '\0';
}

// A name that the Cfgmgr_* entry points take: present, not empty, at most 63 characters.
bool is_entry_name(const char *name) {
  return name != nullptr && name[0] != '\0' &&
         strnlen(name, kMaxEntryNameLength + 1) <= kMaxEntryNameLength;
}

// The row's type, or PROP_TYPE_NONE for no row.
int32_t type_of(int32_t row) {
  return row < 0 ? PROP_TYPE_NONE : property_table[row].type;
}

// The store's flag and number reads, by the type they fill.
int32_t store_read(const char *key, uint8_t *flag) {
  return orb_config_get_bool(key, flag);
}
int32_t store_read(const char *key, int32_t *number) {
  return orb_config_get_int(key, number);
}

// The line that the controller's logs carry after every store access by legacy path: its value
// is a fixed 1, not the type that was found. A store key is accessed without it.
void report_legacy_access(const char *name) {
  if (std::strchr(name, '/') != nullptr) {
    REPORT_DEBUG("prop_type = %d\n", 1);
  }
}

// A flag or number read from the store, written to `out` in decimal. The value starts at 0 and
// is written after a failed read too; the store call's result tells the caller which it was.
template <class Number>
int32_t read_decimal(const char *key, char *out) {
  Number value = 0;
  const int32_t result = store_read(key, &value);
  std::snprintf(out, kNumberSize, "%d", static_cast<int>(value));
  return result;
}

}  // namespace

int32_t read_property(const char *name, char *out, unsigned int len, bool clear_first) noexcept {
  if (!is_entry_name(name) || out == nullptr || len == 0) {
    return 2;
  }
  if (clear_first) {
    out[0] = '\0';
  }
  const int32_t index = Is_Special_Prop(name);
  int32_t status = 0;
  if (index < 0) {
    status = ORBGetPropertyValue(name, out);
  } else if (special_prop_table[index].kind == SPECIAL_PROP_KIND_NETWORK) {
    status = getNetworkProperty(name, out, index);
  } else if (special_prop_table[index].kind != SPECIAL_PROP_KIND_FIRMWARE) {
    return 1;
  }
  if (status != 0) {
    return status;
  }
  if (strnlen(out, len) >= len) {
    out[len - 1] = '\0';
  }
  return 0;
}

int32_t splitPropertyIndexSuffix(const char *name, char *stem, int32_t *number) noexcept {
  if (name == nullptr) {
    name = "";
  }
  const std::size_t length = std::strlen(name);
  std::size_t digits = 0;
  while (digits < kMaxSuffixDigits && digits < length && is_digit(name[length - 1 - digits])) {
    ++digits;
  }
  *number = 0;
  for (std::size_t i = length - digits; i < length; ++i) {
    *number = *number * 10 + (name[i] - '0');
  }
  if (stem != nullptr) {
    copy_name(stem, name, length - digits);
  }
  return digits > 0 ? 1 : 0;
}

int32_t setOrbConfigByType(const char *key, const char *value, int32_t type) noexcept {
  if (key == nullptr || value == nullptr) {
    return 0;
  }
  switch (type) {
    case PROP_TYPE_NONE:
    case PROP_TYPE_STR:
      return orb_config_set_str(key, value, store::kSetFlag);
    case PROP_TYPE_BOOL:
      return orb_config_set_bool(key, strlib::to_signed32(value, 10) != 0 ? 1 : 0, store::kSetFlag);
    case PROP_TYPE_INT:
    case PROP_TYPE_SHORT:
      return orb_config_set_int(key, strlib::to_signed32(value, 10), store::kSetFlag);
    case PROP_TYPE_STR_N:
      return orb_config_set_str_n(key, value, store::kSetFlag);
    default:
      return 0;
  }
}

}  // namespace tessera::orb_cfg

using namespace tessera::orb_cfg;  // NOLINT(google-build-using-namespace): this file's own

int32_t convert_prop_name(const char *name, char *key) {
  if (key == nullptr) {
    return PROP_TYPE_RESERVED;
  }
  const std::size_t length = name == nullptr ? kKeySize : strnlen(name, kKeySize);
  if (length > kMaxNameLength) {
    key[0] = '\0';
    return PROP_TYPE_RESERVED;  // no name, or one that the store name can't hold
  }
  if (std::memchr(name, '/', length) == nullptr) {
    copy_name(key, name, length);  // store keys are never split
    return type_of(findOrbPropertyIndex(name));
  }
  if (const int32_t row = findLegacyPropertyIndex(name); row >= 0) {
    if (property_table[row].id != 0) {
      copy_name(key, property_table[row].store_key(), property_table[row].store_key_size);
    } else {
      copy_name(key, name, length);
    }
    return property_table[row].type;
  }
  char stem[kKeySize];
  int32_t number = 0;
  if (splitPropertyIndexSuffix(name, stem, &number) == 0) {
    copy_name(key, name, length);  // the stem is the name itself, already looked up
    return PROP_TYPE_NONE;
  }
  // An indexed name takes its type from the stem's row, and keeps the legacy stem as its name.
  // The result is never longer than the name, since the number has at most the suffix's digits.
  if (std::snprintf(key, kKeySize, "%s%d", stem, number) < 0) {
    key[0] = '\0';
  }
  return type_of(findLegacyPropertyIndex(stem));
}

int32_t ORBSetPropertyValue(const char *name, const char *value) {
  if (name == nullptr || value == nullptr || name[0] == '\0') {
    return 1;
  }
  char key[kKeySize];
  const int32_t type = convert_prop_name(name, key);
  const int32_t written = setOrbConfigByType(key, value, type);
  report_legacy_access(name);
  return written != 0 ? 0 : 1;
}

int32_t ORBGetPropertyValue(const char *name, char *out) {
  if (name == nullptr || out == nullptr || name[0] == '\0') {
    return 2;
  }
  char key[kKeySize];
  const int32_t type = convert_prop_name(name, key);
  int32_t result = 0;
  switch (type) {
    case PROP_TYPE_NONE:
    case PROP_TYPE_STR:
    case PROP_TYPE_ADDR_PREFIX:
      result = orb_config_get_str(key, out);
      break;
    case PROP_TYPE_BOOL:
      result = read_decimal<uint8_t>(key, out);
      break;
    case PROP_TYPE_INT:
    case PROP_TYPE_SHORT:
    case PROP_TYPE_PREFIX:
      result = read_decimal<int32_t>(key, out);
      break;
    case PROP_TYPE_STR_N:
      result = orb_config_get_str_n(key, out, tessera::store::kStrNCapacity);
      break;
    default:
      break;
  }
  report_legacy_access(name);  // a type that can't be read too
  return result != 0 ? 0 : 2;
}

int32_t Is_Special_Prop(const char *name) {
  if (name == nullptr) {
    return -1;
  }
  // Room for the stem of any name that the Cfgmgr_* paths take. A longer name is longer than
  // every special name and every stem of one: it is split for the report alone.
  char stem[kMaxEntryNameLength + 1];
  const bool fits = strnlen(name, sizeof stem) < sizeof stem;
  int32_t number = 0;
  if (splitPropertyIndexSuffix(name, fits ? stem : nullptr, &number) != 0) {
    REPORT_DEBUG("split = %d\n", 1);  // the logs' line for every indexed name, matched or not
  }
  if (!fits) {
    return -1;
  }
  for (int32_t i = 0; special_prop_table[i].source != 0; ++i) {
    const char *row = special_prop_table[i].name;
    if (std::strcmp(row, name) == 0 || std::strcmp(row, stem) == 0) {
      return i;
    }
  }
  return -1;
}

int32_t Cfgmgr_Get_Property_ori(const char *name, char *out, unsigned int len) {
  return read_property(name, out, len, true);
}

int32_t Cfgmgr_Ext_Get_Property(const char *name, char *out, unsigned int len) {
  return read_property(name, out, len, false);
}

int32_t Cfgmgr_Set_Property_ori(const char *name, const char *value) {
  if (value == nullptr || !is_entry_name(name)) {
    return 1;
  }
  const int32_t index = Is_Special_Prop(name);
  if (index < 0) {
    return ORBSetPropertyValue(name, value);
  }
  if (special_prop_table[index].kind == SPECIAL_PROP_KIND_NETWORK) {
    return setNetworkProperty(name, value, index);
  }
  return 1;
}

int32_t Cfgmgr_Ext_Set_Property(const char *name, const char *value) {
  return Cfgmgr_Set_Property_ori(name, value);
}
