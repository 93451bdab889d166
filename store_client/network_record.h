// Here with the store client's declarations because it crosses to the store client, whole.
//
// The network record: the controller's DNS, NIC and IPv6 settings as "netGetCurrentIfConfig" hands
// them out and "netSetNetConfig" takes a change request. The library and the kit's store client
// lay the record out from this header alone, so its size and offsets are pinned on every target.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tessera::wire {

inline constexpr std::size_t kNetworkRecordSize = 4768;

// One extended IPv6 address: text, then its prefix length. The record holds one for each of
// IPV6/extaddr2 to IPV6/extaddr15.
struct ExtendedAddress {
  char address[46];
  uint8_t prefix;
};
inline constexpr std::size_t kExtendedAddressCount = 14;

// The record as it crosses to the store client, numbers in native byte order. Every member is a
// byte or an array of bytes, so the layout has no padding and no alignment on any target; 16- and
// 32-bit numbers are read and written with memcpy. In a change request every field but the
// target says "unchanged": empty text, 0, or the markers below.
struct NetworkRecord {
  char mir_name[255];     // source 1
  char domain_name[255];  // source 2
  uint8_t nic_selection;  // source 3, signed
  uint8_t reserved_511[3];
  uint8_t word_514[2];         // 16-bit, no property
  uint8_t word_516[2];         // 16-bit, no property
  uint8_t register_mir;        // source 4
  uint8_t dns_dhcp_enable;     // source 5
  uint8_t use_dhcp_domain;     // source 6
  char dns_server1[16];        // source 7
  char dns_server2[16];        // source 8
  uint8_t ipv6_dns_from_dhcp;  // source 15
  char ipv6_dns_server1[46];   // source 10
  char ipv6_dns_server2[46];   // source 11
  uint8_t byte_646;            // no property
  uint8_t reserved_647;
  uint8_t nic_enable;   // source 12
  uint8_t ipv4_enable;  // source 13
  uint8_t reserved_650[321];
  uint8_t byte_971;            // source 14, no property
  uint8_t ipv6_dhcp_enable;    // source 9
  uint8_t nic_auto_neg;        // source 16
  uint8_t nic_100b;            // source 17, signed
  uint8_t nic_full_duplex;     // source 18, signed
  uint8_t nic_mtu[2];          // source 19, unsigned 16-bit
  uint8_t ipv6_enable;         // source 20
  uint8_t ipv6_prefix_length;  // source 21
  uint8_t ipv6_ipsec_enable;   // source 24
  char ipv6_address[46];       // source 22
  char ipv6_gateway[46];       // source 23
  char ipv6_link_local[46];    // source 25
  char ipv6_site_local[46];    // source 26
  uint8_t ipv6_address_count;  // source 27
  // sources 40 to 53: IPV6/extaddrN for N = 2 to 15
  ExtendedAddress extended[kExtendedAddressCount];
  uint8_t clear_mask_first[4];   // unsigned 32-bit
  uint8_t clear_mask_second[4];  // unsigned 32-bit
  uint8_t reserved_1832[2936];
};

static_assert(sizeof(ExtendedAddress) == 47);
static_assert(sizeof(NetworkRecord) == kNetworkRecordSize);
static_assert(offsetof(NetworkRecord, mir_name) == 0);
static_assert(offsetof(NetworkRecord, domain_name) == 255);
static_assert(offsetof(NetworkRecord, nic_selection) == 510);
static_assert(offsetof(NetworkRecord, reserved_511) == 511);
static_assert(offsetof(NetworkRecord, word_514) == 514);
static_assert(offsetof(NetworkRecord, word_516) == 516);
static_assert(offsetof(NetworkRecord, register_mir) == 518);
static_assert(offsetof(NetworkRecord, dns_dhcp_enable) == 519);
static_assert(offsetof(NetworkRecord, use_dhcp_domain) == 520);
static_assert(offsetof(NetworkRecord, dns_server1) == 521);
static_assert(offsetof(NetworkRecord, dns_server2) == 537);
static_assert(offsetof(NetworkRecord, ipv6_dns_from_dhcp) == 553);
static_assert(offsetof(NetworkRecord, ipv6_dns_server1) == 554);
static_assert(offsetof(NetworkRecord, ipv6_dns_server2) == 600);
static_assert(offsetof(NetworkRecord, byte_646) == 646);
static_assert(offsetof(NetworkRecord, reserved_647) == 647);
static_assert(offsetof(NetworkRecord, nic_enable) == 648);
static_assert(offsetof(NetworkRecord, ipv4_enable) == 649);
static_assert(offsetof(NetworkRecord, reserved_650) == 650);
static_assert(offsetof(NetworkRecord, byte_971) == 971);
static_assert(offsetof(NetworkRecord, ipv6_dhcp_enable) == 972);
static_assert(offsetof(NetworkRecord, nic_auto_neg) == 973);
static_assert(offsetof(NetworkRecord, nic_100b) == 974);
static_assert(offsetof(NetworkRecord, nic_full_duplex) == 975);
static_assert(offsetof(NetworkRecord, nic_mtu) == 976);
static_assert(offsetof(NetworkRecord, ipv6_enable) == 978);
static_assert(offsetof(NetworkRecord, ipv6_prefix_length) == 979);
static_assert(offsetof(NetworkRecord, ipv6_ipsec_enable) == 980);
static_assert(offsetof(NetworkRecord, ipv6_address) == 981);
static_assert(offsetof(NetworkRecord, ipv6_gateway) == 1027);
static_assert(offsetof(NetworkRecord, ipv6_link_local) == 1073);
static_assert(offsetof(NetworkRecord, ipv6_site_local) == 1119);
static_assert(offsetof(NetworkRecord, ipv6_address_count) == 1165);
static_assert(offsetof(NetworkRecord, extended) == 1166);
static_assert(offsetof(NetworkRecord, extended) + sizeof(NetworkRecord::extended) == 1824);
static_assert(offsetof(NetworkRecord, clear_mask_first) == 1824);
static_assert(offsetof(NetworkRecord, clear_mask_second) == 1828);
static_assert(offsetof(NetworkRecord, reserved_1832) == 1832);
static_assert(alignof(NetworkRecord) == 1);

// Flags are tri-state bytes: in a change request 0 leaves the flag as it is; as read, only 2 is on.
inline constexpr uint8_t kFlagUnchanged = 0;
inline constexpr uint8_t kFlagOff = 1;
inline constexpr uint8_t kFlagOn = 2;

// "Unchanged" in a change request for the signed bytes at 510, 974 and 975, the prefix length at
// 979 and the 16-bit words at 514 and 516; the byte at 646 carries 1.
inline constexpr uint8_t kUnchangedByte = 0xFF;
inline constexpr uint16_t kUnchangedWord = 0xFFFF;
inline constexpr uint8_t kRequestByte646 = 1;

// An empty text field in a change request means "unchanged"; with the field's bit set in its
// clear mask, it empties the field instead. The bits of the first mask:
inline constexpr uint32_t kClearIpv6Address = 0x20;
inline constexpr uint32_t kClearIpv6Gateway = 0x40;
inline constexpr uint32_t kClearIpv6LinkLocal = 0x80;
inline constexpr uint32_t kClearIpv6SiteLocal = 0x100;
// and those of the second:
inline constexpr uint32_t kClearMirName = 0x01;
inline constexpr uint32_t kClearDomainName = 0x02;
inline constexpr uint32_t kClearDnsServer1 = 0x04;
inline constexpr uint32_t kClearDnsServer2 = 0x08;
inline constexpr uint32_t kClearIpv6DnsServer1 = 0x10;
inline constexpr uint32_t kClearIpv6DnsServer2 = 0x20;

}  // namespace tessera::wire
