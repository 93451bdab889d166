// The properties that live outside the store's single values: the fields of the network record
// and the firmware values. Is_Special_Prop walks the table in this order.
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "orb_cfg/orb_cfg_internal.h"
#include "store_client/network_record.h"
#include "tessera/orb_cfg.h"

namespace {

using namespace tessera::wire;  // NOLINT(google-build-using-namespace): the record's clear bits

constexpr int32_t kNetwork = SPECIAL_PROP_KIND_NETWORK;
constexpr int32_t kFirmware = SPECIAL_PROP_KIND_FIRMWARE;

// The clear_code of a text field whose clear bit stands in the record's first or second mask.
constexpr uint16_t first(uint32_t bit) {
  return static_cast<uint16_t>(tessera::orb_cfg::kClearCodeFirstMask | bit);
}
constexpr uint16_t second(uint32_t bit) {
  return static_cast<uint16_t>(bit);
}

// The row layout is part of the exported interface: a text pointer, two 32-bit numbers and a
// 16-bit code, 16 bytes on the controller.
static_assert(offsetof(SpecialProp, name) == 0);
static_assert(offsetof(SpecialProp, kind) == sizeof(void *));
static_assert(offsetof(SpecialProp, source) == sizeof(void *) + 4);
static_assert(offsetof(SpecialProp, clear_code) == sizeof(void *) + 8);
static_assert(sizeof(SpecialProp) == (sizeof(void *) == 4 ? 16 : 24));

}  // namespace

// clang-format off
extern "C" constinit const SpecialProp special_prop_table[] = {
    {"DNS/mir_name", kNetwork, 1, second(kClearMirName)},
    {"DNS/domain_name", kNetwork, 2, second(kClearDomainName)},
    {"DNS/register_mir", kNetwork, 4, 0},
    {"DNS/dhcp_enable", kNetwork, 5, 0},
    {"DNS/use_dhcp_domain", kNetwork, 6, 0},
    {"DNS/server1", kNetwork, 7, second(kClearDnsServer1)},
    {"DNS/server2", kNetwork, 8, second(kClearDnsServer2)},
    {"NETWORK/NIC/enable", kNetwork, 12, 0},
    {"NETWORK/IPV4/enable", kNetwork, 13, 0},
    {"NETWORK/NIC/selection", kNetwork, 3, 0},
    {"NETWORK/NIC/auto_neg", kNetwork, 16, 0},
    {"NETWORK/NIC/100B", kNetwork, 17, 0},
    {"NETWORK/NIC/fullduplex", kNetwork, 18, 0},
    {"NETWORK/NIC/mtu", kNetwork, 19, 0},
    {"IPV6/enable", kNetwork, 20, 0},
    {"IPV6/address", kNetwork, 22, first(kClearIpv6Address)},
    {"IPV6/valid_address_number", kNetwork, 27, 0},
    {"IPV6/extaddr2", kNetwork, 40, 0},
    {"IPV6/extaddr3", kNetwork, 41, 0},
    {"IPV6/extaddr4", kNetwork, 42, 0},
    {"IPV6/extaddr5", kNetwork, 43, 0},
    {"IPV6/extaddr6", kNetwork, 44, 0},
    {"IPV6/extaddr7", kNetwork, 45, 0},
    {"IPV6/extaddr8", kNetwork, 46, 0},
    {"IPV6/extaddr9", kNetwork, 47, 0},
    {"IPV6/extaddr10", kNetwork, 48, 0},
    {"IPV6/extaddr11", kNetwork, 49, 0},
    {"IPV6/extaddr12", kNetwork, 50, 0},
    {"IPV6/extaddr13", kNetwork, 51, 0},
    {"IPV6/extaddr14", kNetwork, 52, 0},
    {"IPV6/extaddr15", kNetwork, 53, 0},
    {"IPV6/extaddr2_prefix", kNetwork, 40, 0},
    {"IPV6/extaddr3_prefix", kNetwork, 41, 0},
    {"IPV6/extaddr4_prefix", kNetwork, 42, 0},
    {"IPV6/extaddr5_prefix", kNetwork, 43, 0},
    {"IPV6/extaddr6_prefix", kNetwork, 44, 0},
    {"IPV6/extaddr7_prefix", kNetwork, 45, 0},
    {"IPV6/extaddr8_prefix", kNetwork, 46, 0},
    {"IPV6/extaddr9_prefix", kNetwork, 47, 0},
    {"IPV6/extaddr10_prefix", kNetwork, 48, 0},
    {"IPV6/extaddr11_prefix", kNetwork, 49, 0},
    {"IPV6/extaddr12_prefix", kNetwork, 50, 0},
    {"IPV6/extaddr13_prefix", kNetwork, 51, 0},
    {"IPV6/extaddr14_prefix", kNetwork, 52, 0},
    {"IPV6/extaddr15_prefix", kNetwork, 53, 0},
    {"IPV6/gateway", kNetwork, 23, first(kClearIpv6Gateway)},
    {"IPV6/prefix_length", kNetwork, 21, 0},
    {"IPV6/dhcp_enable", kNetwork, 9, 0},
    {"IPV6/DNS_from_DHCP", kNetwork, 15, 0},
    {"IPV6/DNSServer1", kNetwork, 10, second(kClearIpv6DnsServer1)},
    {"IPV6/DNSServer2", kNetwork, 11, second(kClearIpv6DnsServer2)},
    {"IPV6/IP_sec_enable", kNetwork, 24, 0},
    {"IPV6/link_local_address", kNetwork, 25, first(kClearIpv6LinkLocal)},
    {"IPV6/site_local_address", kNetwork, 26, first(kClearIpv6SiteLocal)},
    {"MIR/FIRMWARE/version", kFirmware, 54, 0},
    {"MIR/FIRMWARE/minor", kFirmware, 55, 0},
    {"MIR/FIRMWARE/build_num", kFirmware, 56, 0},
    {"MIR/FIRMWARE/last_update", kFirmware, 57, 0},
    {"", 0, 0, 0},
};
// clang-format on

static_assert(std::size(special_prop_table) == tessera::orb_cfg::kSpecialRowCount + 1);
