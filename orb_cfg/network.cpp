// The network record: the controller's DNS, NIC and IPv6 settings, fetched and applied as a whole
// through two remote functions of the store client, and the read and write of one field of it.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "orb_cfg/orb_cfg_internal.h"
#include "store_client/network_record.h"
#include "store_client/platform.h"
#include "string/number.h"
#include "tessera/orb_cfg.h"
#include "tessera/store_client.h"

namespace tessera::orb_cfg {

using namespace wire;  // NOLINT(google-build-using-namespace): the record is this file's subject

namespace {

static_assert(sizeof(NetworkRecord) == TESSERA_NETWORK_RECORD_SIZE);

// Where a special row's `source` points: a field of the network record (1 to 27, 40 to 53), or,
// for the firmware rows (54 to 57), a field of the firmware record, which nothing here fetches.
struct Field {
  bool present;
  uint16_t offset;
  uint16_t width;
};

// Sources 40 to 53 are the extended addresses, one entry each; 54 to 57 the firmware rows.
inline constexpr int32_t kFirstExtendedSource = 40;
inline constexpr int32_t kExtendedEntries = static_cast<int32_t>(kExtendedAddressCount);
inline constexpr int32_t kFirstFirmwareSource = kFirstExtendedSource + kExtendedEntries;

// Where the firmware rows' values stand in the firmware record, which nothing in the library
// fetches; in the order of their sources.
inline constexpr uint16_t kFirmwareVersionAt = 64;
inline constexpr uint16_t kFirmwareMinorAt = 128;
inline constexpr uint16_t kFirmwareBuildNumAt = 192;
inline constexpr uint16_t kFirmwareLastUpdateAt = 448;
inline constexpr uint16_t kFirmwareOffsets[] = {kFirmwareVersionAt, kFirmwareMinorAt,
                                                kFirmwareBuildNumAt, kFirmwareLastUpdateAt};
inline constexpr int32_t kSourceCount =
    kFirstFirmwareSource + static_cast<int32_t>(std::size(kFirmwareOffsets));
static_assert(kFirstFirmwareSource == 54 && kSourceCount == 58);

consteval std::array<Field, kSourceCount> make_fields() {
  std::array<Field, kSourceCount> fields{};
  auto set = [&fields](int32_t source, std::size_t offset, std::size_t width) consteval {
    fields[source] = {true, static_cast<uint16_t>(offset), static_cast<uint16_t>(width)};
  };
#define TESSERA_FIELD(source, member) \
  set(source, offsetof(NetworkRecord, member), sizeof(NetworkRecord::member))
  TESSERA_FIELD(1, mir_name);
  TESSERA_FIELD(2, domain_name);
  TESSERA_FIELD(3, nic_selection);
  TESSERA_FIELD(4, register_mir);
  TESSERA_FIELD(5, dns_dhcp_enable);
  TESSERA_FIELD(6, use_dhcp_domain);
  TESSERA_FIELD(7, dns_server1);
  TESSERA_FIELD(8, dns_server2);
  TESSERA_FIELD(9, ipv6_dhcp_enable);
  TESSERA_FIELD(10, ipv6_dns_server1);
  TESSERA_FIELD(11, ipv6_dns_server2);
  TESSERA_FIELD(12, nic_enable);
  TESSERA_FIELD(13, ipv4_enable);
  TESSERA_FIELD(14, byte_971);
  TESSERA_FIELD(15, ipv6_dns_from_dhcp);
  TESSERA_FIELD(16, nic_auto_neg);
  TESSERA_FIELD(17, nic_100b);
  TESSERA_FIELD(18, nic_full_duplex);
  TESSERA_FIELD(19, nic_mtu);
  TESSERA_FIELD(20, ipv6_enable);
  TESSERA_FIELD(21, ipv6_prefix_length);
  TESSERA_FIELD(22, ipv6_address);
  TESSERA_FIELD(23, ipv6_gateway);
  TESSERA_FIELD(24, ipv6_ipsec_enable);
  TESSERA_FIELD(25, ipv6_link_local);
  TESSERA_FIELD(26, ipv6_site_local);
  TESSERA_FIELD(27, ipv6_address_count);
#undef TESSERA_FIELD
  for (int32_t entry = 0; entry < kExtendedEntries; ++entry) {
    set(kFirstExtendedSource + entry,
        offsetof(NetworkRecord, extended) + entry * sizeof(ExtendedAddress),
        sizeof(ExtendedAddress));
  }
  for (int32_t row = 0; row < static_cast<int32_t>(std::size(kFirmwareOffsets)); ++row) {
    set(kFirstFirmwareSource + row, kFirmwareOffsets[row], 0);
  }
  return fields;
}

inline constexpr std::array<Field, kSourceCount> kFields = make_fields();
static_assert(kFields[14].offset == 971 && kFields[27].offset == 1165);
static_assert(kFields[53].offset == 1777 && kFields[53].width == 47);

// Every value read from the record fits in this many bytes, terminator included.
inline constexpr std::size_t kValueSize = 255;

// The field of a kind-0 row, or null.
uint8_t *network_field(NetworkRecord &record, int32_t index, uint16_t *width) {
  if (index < 0 || index >= kSpecialRowCount ||
      special_prop_table[index].kind != SPECIAL_PROP_KIND_NETWORK) {
    return nullptr;
  }
  const int32_t source = special_prop_table[index].source;
  *width = kFields[source].width;
  return static_cast<uint8_t *>(get_src_addr(&record, index));
}

// The catalogue type of a network property, or -1 when the name has no catalogue row (a name
// that met its special row through its stem alone, such as "DNS/mir_name7").
int32_t network_type(const char *name) {
  const int32_t row = findLegacyPropertyIndex(name);
  return row < 0 ? -1 : property_table[row].type;
}

// Copies a text field to `out`, at most width - 1 characters even when the field is unterminated.
void copy_text(char *out, const uint8_t *field, std::size_t width) {
  const std::size_t length = strnlen(reinterpret_cast<const char *>(field), width - 1);
  std::memcpy(out, field, length);
  out[length] = '\0';
}

void put_u32_or(uint8_t (&field)[4], uint32_t bits) {
  uint32_t mask = 0;
  std::memcpy(&mask, field, sizeof mask);
  mask |= bits;
  std::memcpy(field, &mask, sizeof mask);
}

// A change request that changes nothing yet.
void start_change_request(NetworkRecord &record) {
  std::memset(&record, 0, sizeof record);
  record.byte_646 = kRequestByte646;
  record.nic_selection = kUnchangedByte;
  record.nic_100b = kUnchangedByte;
  record.nic_full_duplex = kUnchangedByte;
  record.ipv6_prefix_length = kUnchangedByte;
  std::memcpy(record.word_514, &kUnchangedWord, sizeof kUnchangedWord);
  std::memcpy(record.word_516, &kUnchangedWord, sizeof kUnchangedWord);
}

}  // namespace

int32_t getNetworkProperty(const char *name, char *out, int32_t index) noexcept {
  if (name == nullptr || out == nullptr) {
    return 1;
  }
  const int32_t type = network_type(name);
  NetworkRecord record{};
  uint16_t width = 0;
  const uint8_t *field = network_field(record, index, &width);
  if (type < 0 || field == nullptr) {
    return 1;
  }
  uint32_t length = 0;
  if (orb_function_execute(store::kNetGetCurrentIfConfig, &length, nullptr, sizeof record,
                           &record) != 0) {
    return 1;
  }
  switch (type) {
    case PROP_TYPE_STR:
      copy_text(out, field, width);
      break;
    case PROP_TYPE_BOOL:
      std::snprintf(out, kValueSize, "%s", field[0] == kFlagOn ? "1" : "0");
      break;
    case PROP_TYPE_SHORT: {
      uint16_t number = 0;
      std::memcpy(&number, field, sizeof number);
      std::snprintf(out, kValueSize, "%d", number);
      break;
    }
    case PROP_TYPE_BYTE:
      std::snprintf(out, kValueSize, "%d", field[0]);
      break;
    case PROP_TYPE_ADDR_PREFIX: {
      const auto *entry = reinterpret_cast<const ExtendedAddress *>(field);
      char address[sizeof entry->address];
      copy_text(address, field, sizeof entry->address);
      std::snprintf(out, kValueSize, "%s/%d", address, entry->prefix);
      break;
    }
    case PROP_TYPE_PREFIX:
      std::snprintf(out, kValueSize, "%d",
                    reinterpret_cast<const ExtendedAddress *>(field)->prefix);
      break;
    default:  // PROP_TYPE_INT: a signed byte
      std::snprintf(out, kValueSize, "%d", static_cast<int8_t>(field[0]));
      break;
  }
  return 0;
}

int32_t setNetworkProperty(const char *name, const char *value, int32_t index) noexcept {
  if (name == nullptr || value == nullptr) {
    return 1;
  }
  const int32_t type = network_type(name);
  NetworkRecord record;
  start_change_request(record);
  uint16_t width = 0;
  uint8_t *field = network_field(record, index, &width);
  if (type < 0 || field == nullptr) {
    return 1;
  }
  switch (type) {
    case PROP_TYPE_STR: {
      const std::size_t length = strnlen(value, width);
      if (length >= width) {
        return 1;  // would run into the next field
      }
      if (length == 0) {
        const uint16_t code = special_prop_table[index].clear_code;
        if ((code & kClearCodeFirstMask) != 0) {
          put_u32_or(record.clear_mask_first, static_cast<uint32_t>(code & ~kClearCodeFirstMask));
        } else {
          put_u32_or(record.clear_mask_second, code);
        }
      }
      std::memcpy(field, value, length + 1);
      break;
    }
    case PROP_TYPE_BOOL:
      field[0] = strlib::to_signed32(value, 10) != 0 ? kFlagOn : kFlagOff;
      break;
    case PROP_TYPE_SHORT: {
      const auto number = static_cast<uint16_t>(strlib::to_signed32(value, 10));
      std::memcpy(field, &number, sizeof number);
      break;
    }
    case PROP_TYPE_INT:
    case PROP_TYPE_BYTE:
      field[0] = static_cast<uint8_t>(strlib::to_signed32(value, 10));
      break;
    default:  // an extended address and its prefix share one entry: no single-field write
      return 1;
  }
  uint32_t length = sizeof record;
  return orb_function_execute(store::kNetSetNetConfig, &length, &record, 0, nullptr);
}

}  // namespace tessera::orb_cfg

void *get_src_addr(void *record, int32_t index) {
  using tessera::orb_cfg::kFields;
  if (record == nullptr || index < 0 || index >= tessera::orb_cfg::kSpecialRowCount) {
    return nullptr;
  }
  const int32_t source = special_prop_table[index].source;
  if (source <= 0 || source >= tessera::orb_cfg::kSourceCount || !kFields[source].present) {
    return nullptr;
  }
  return static_cast<uint8_t *>(record) + kFields[source].offset;
}
