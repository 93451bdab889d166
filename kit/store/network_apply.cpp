// Change requests of "netSetNetConfig", applied field by field to the stored network record.
#include "kit/store/network_apply.h"

#include <cstddef>
#include <cstring>

namespace tessera::kit {
namespace {

using wire::ExtendedAddress;

// A text field and its bit in one of the two clear masks of a request.
struct TextField {
  std::size_t offset;
  std::size_t width;
  bool first_mask;
  uint32_t clear_bit;
};

#define TESSERA_TEXT(member, first, bit)                                       \
  TextField {                                                                  \
    offsetof(NetworkRecord, member), sizeof(NetworkRecord::member), first, bit \
  }
constexpr TextField kTextFields[] = {
    TESSERA_TEXT(mir_name, false, wire::kClearMirName),
    TESSERA_TEXT(domain_name, false, wire::kClearDomainName),
    TESSERA_TEXT(dns_server1, false, wire::kClearDnsServer1),
    TESSERA_TEXT(dns_server2, false, wire::kClearDnsServer2),
    TESSERA_TEXT(ipv6_dns_server1, false, wire::kClearIpv6DnsServer1),
    TESSERA_TEXT(ipv6_dns_server2, false, wire::kClearIpv6DnsServer2),
    TESSERA_TEXT(ipv6_address, true, wire::kClearIpv6Address),
    TESSERA_TEXT(ipv6_gateway, true, wire::kClearIpv6Gateway),
    TESSERA_TEXT(ipv6_link_local, true, wire::kClearIpv6LinkLocal),
    TESSERA_TEXT(ipv6_site_local, true, wire::kClearIpv6SiteLocal),
};
#undef TESSERA_TEXT

// Tri-state flags: 0 unchanged, 1 off, 2 on.
constexpr std::size_t kFlags[] = {
    offsetof(NetworkRecord, register_mir),     offsetof(NetworkRecord, dns_dhcp_enable),
    offsetof(NetworkRecord, use_dhcp_domain),  offsetof(NetworkRecord, ipv6_dns_from_dhcp),
    offsetof(NetworkRecord, nic_enable),       offsetof(NetworkRecord, ipv4_enable),
    offsetof(NetworkRecord, ipv6_dhcp_enable), offsetof(NetworkRecord, nic_auto_neg),
    offsetof(NetworkRecord, ipv6_enable),      offsetof(NetworkRecord, ipv6_ipsec_enable),
};

// Bytes whose "unchanged" is the 0xFF marker.
constexpr std::size_t kMarkedBytes[] = {
    offsetof(NetworkRecord, nic_selection),
    offsetof(NetworkRecord, nic_100b),
    offsetof(NetworkRecord, nic_full_duplex),
    offsetof(NetworkRecord, ipv6_prefix_length),
};

uint8_t *at(NetworkRecord &record, std::size_t offset) {
  return reinterpret_cast<uint8_t *>(&record) + offset;
}
const uint8_t *at(const NetworkRecord &record, std::size_t offset) {
  return reinterpret_cast<const uint8_t *>(&record) + offset;
}

uint32_t read_u32(const uint8_t (&field)[4]) {
  uint32_t value = 0;
  std::memcpy(&value, field, sizeof value);
  return value;
}

// Replaces a text field with `text`, cut to the field and zero-filled behind.
void put_text(uint8_t *field, std::size_t width, const void *text) {
  const std::size_t length = strnlen(static_cast<const char *>(text), width - 1);
  std::memmove(field, text, length);
  std::memset(field + length, 0, width - length);
}

}  // namespace

NetworkRecord fresh_network_record() {
  NetworkRecord record{};
  for (const std::size_t flag : kFlags) {
    *at(record, flag) = wire::kFlagOff;
  }
  return record;
}

void terminate_texts(NetworkRecord &record) {
  for (const TextField &field : kTextFields) {
    put_text(at(record, field.offset), field.width, at(record, field.offset));
  }
  for (ExtendedAddress &entry : record.extended) {
    put_text(reinterpret_cast<uint8_t *>(entry.address), sizeof entry.address, entry.address);
  }
}

void apply_change_request(NetworkRecord &stored, const NetworkRecord &request) {
  const uint32_t masks[2] = {read_u32(request.clear_mask_second),
                             read_u32(request.clear_mask_first)};
  for (const TextField &field : kTextFields) {
    const uint8_t *text = at(request, field.offset);
    if (text[0] != '\0') {
      put_text(at(stored, field.offset), field.width, text);
    } else if ((masks[field.first_mask ? 1 : 0] & field.clear_bit) != 0) {
      std::memset(at(stored, field.offset), 0, field.width);
    }
  }
  for (const std::size_t offset : kFlags) {
    const uint8_t flag = *at(request, offset);
    if (flag == wire::kFlagOff || flag == wire::kFlagOn) {
      *at(stored, offset) = flag;
    }
  }
  for (const std::size_t offset : kMarkedBytes) {
    if (*at(request, offset) != wire::kUnchangedByte) {
      *at(stored, offset) = *at(request, offset);
    }
  }
  if (request.nic_mtu[0] != 0 || request.nic_mtu[1] != 0) {
    std::memcpy(stored.nic_mtu, request.nic_mtu, sizeof stored.nic_mtu);
  }
  if (request.ipv6_address_count != 0) {
    stored.ipv6_address_count = request.ipv6_address_count;
  }
  for (std::size_t n = 0; n < std::size(stored.extended); ++n) {
    const ExtendedAddress &change = request.extended[n];
    ExtendedAddress &entry = stored.extended[n];
    if (change.address[0] != '\0') {
      put_text(reinterpret_cast<uint8_t *>(entry.address), sizeof entry.address, change.address);
    }
    if (change.prefix != 0) {
      entry.prefix = change.prefix;
    }
  }
}

}  // namespace tessera::kit
