// The network record: the special rows, field addresses, reads formatted by type, and the change
// request that a write sends, decoded byte by byte.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "orb_cfg/orb_cfg_internal.h"
#include "orb_cfg_test.h"

namespace tessera::test {
namespace {

struct Special {
  std::string name;
  int32_t kind, source;
  uint16_t clear_code;
};

std::vector<Special> expected_special_rows() {
  // clang-format off
  std::vector<Special> rows = {
      {"DNS/mir_name", 0, 1, 0x0001}, {"DNS/domain_name", 0, 2, 0x0002},
      {"DNS/register_mir", 0, 4, 0}, {"DNS/dhcp_enable", 0, 5, 0}, {"DNS/use_dhcp_domain", 0, 6, 0},
      {"DNS/server1", 0, 7, 0x0004}, {"DNS/server2", 0, 8, 0x0008},
      {"NETWORK/NIC/enable", 0, 12, 0}, {"NETWORK/IPV4/enable", 0, 13, 0},
      {"NETWORK/NIC/selection", 0, 3, 0}, {"NETWORK/NIC/auto_neg", 0, 16, 0},
      {"NETWORK/NIC/100B", 0, 17, 0}, {"NETWORK/NIC/fullduplex", 0, 18, 0},
      {"NETWORK/NIC/mtu", 0, 19, 0}, {"IPV6/enable", 0, 20, 0}, {"IPV6/address", 0, 22, 0x8020},
      {"IPV6/valid_address_number", 0, 27, 0},
  };
  // clang-format on
  for (const char *suffix : {"", "_prefix"}) {
    for (int32_t n = 2; n <= 15; ++n) {
      rows.push_back({"IPV6/extaddr" + std::to_string(n) + suffix, 0, 38 + n, 0});
    }
  }
  // clang-format off
  const std::vector<Special> rest = {
      {"IPV6/gateway", 0, 23, 0x8040}, {"IPV6/prefix_length", 0, 21, 0},
      {"IPV6/dhcp_enable", 0, 9, 0}, {"IPV6/DNS_from_DHCP", 0, 15, 0},
      {"IPV6/DNSServer1", 0, 10, 0x0010}, {"IPV6/DNSServer2", 0, 11, 0x0020},
      {"IPV6/IP_sec_enable", 0, 24, 0}, {"IPV6/link_local_address", 0, 25, 0x8080},
      {"IPV6/site_local_address", 0, 26, 0x8100}, {"MIR/FIRMWARE/version", 3, 54, 0},
      {"MIR/FIRMWARE/minor", 3, 55, 0}, {"MIR/FIRMWARE/build_num", 3, 56, 0},
      {"MIR/FIRMWARE/last_update", 3, 57, 0},
  };
  // clang-format on
  rows.insert(rows.end(), rest.begin(), rest.end());
  return rows;
}

// Offset of each field by source, as the record lays them out.
std::size_t offset_of_source(int32_t source) {
  static const std::array<int, 28> kOffsets = {-1,  0,   255, 510,  518, 519,  520,  521, 537, 972,
                                               554, 600, 648, 649,  971, 553,  973,  974, 975, 976,
                                               978, 979, 981, 1027, 980, 1073, 1119, 1165};
  if (source >= 40 && source <= 53) {
    return 1166 + 47 * (source - 40);
  }
  if (source >= 54 && source <= 57) {
    return std::array<std::size_t, 4>{64, 128, 192, 448}[source - 54];
  }
  return static_cast<std::size_t>(kOffsets.at(source));
}

TEST(SpecialPropTable, HoldsTheRowsInOrderAndGetSrcAddrPointsAtTheirFields) {
  const auto rows = expected_special_rows();
  ASSERT_EQ(rows.size(), 58U);
  Record record{};
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(special_prop_table[i].name, rows[i].name) << i;
    EXPECT_EQ(special_prop_table[i].kind, rows[i].kind) << i;
    EXPECT_EQ(special_prop_table[i].source, rows[i].source) << i;
    EXPECT_EQ(special_prop_table[i].clear_code, rows[i].clear_code) << i;
    EXPECT_EQ(get_src_addr(record.data(), static_cast<int32_t>(i)),
              record.data() + offset_of_source(rows[i].source))
        << i;
  }
  EXPECT_STREQ(special_prop_table[58].name, "");
  EXPECT_EQ(special_prop_table[58].kind, 0);
  EXPECT_EQ(special_prop_table[58].source, 0);
  EXPECT_EQ(special_prop_table[58].clear_code, 0);
  for (const int32_t index : {58, -1, 1000}) {
    EXPECT_EQ(get_src_addr(record.data(), index), nullptr);
  }
  EXPECT_EQ(get_src_addr(nullptr, 0), nullptr);
}

std::string read(const char *name) {
  Buffer out{};
  const int32_t status = Cfgmgr_Get_Property_ori(name, out.data(), 1025);
  return status == 0 ? std::string(out.data()) : "status " + std::to_string(status);
}

template <class Number>
std::vector<uint8_t> bytes_of(Number number) {
  std::vector<uint8_t> bytes(sizeof number);
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

TEST(GetNetworkProperty, FormatsEachFieldByTypeWithOneFetchPerRead) {
  Record record{};
  put(record, 0, "mirel");
  put(record, 255, "example.com");
  put(record, 521, "10.0.0.53");
  put(record, 1119, "fec0::2");
  record[510] = 0xFF;
  record[519] = 2;
  record[520] = 1;
  record[974] = 100;
  record[979] = 255;
  const auto mtu = bytes_of(uint16_t{1500});
  std::copy(mtu.begin(), mtu.end(), record.begin() + 976);
  put(record, 1166, "fe80::1");
  record[1166 + 46] = 64;
  put(record, 1777, "2001:db8::f");
  record[1777 + 46] = 128;
  serve_record(record);
  // clang-format off
  const std::pair<const char *, const char *> cases[] = {
      {"DNS/mir_name", "mirel"}, {"DNS/domain_name", "example.com"}, {"DNS/server1", "10.0.0.53"},
      {"DNS/server2", ""}, {"IPV6/site_local_address", "fec0::2"}, {"NETWORK/NIC/selection", "-1"},
      {"DNS/dhcp_enable", "1"}, {"DNS/use_dhcp_domain", "0"}, {"DNS/register_mir", "0"},
      {"NETWORK/NIC/100B", "100"}, {"IPV6/prefix_length", "255"}, {"NETWORK/NIC/mtu", "1500"},
      {"IPV6/extaddr2", "fe80::1/64"}, {"IPV6/extaddr2_prefix", "64"},
      {"IPV6/extaddr15", "2001:db8::f/128"}, {"IPV6/extaddr3", "/0"},
  };
  // clang-format on
  for (const auto &[name, value] : cases) {
    EXPECT_EQ(read(name), value) << name;
  }
  const auto fetches = store().calls("orb_function_execute");
  ASSERT_EQ(fetches.size(), std::size(cases));
  EXPECT_EQ(fetches[0].name, "netGetCurrentIfConfig");
  EXPECT_EQ(fetches[0].length_in, 0U);
  EXPECT_TRUE(fetches[0].input_null);
  EXPECT_EQ(fetches[0].capacity, 4768U);

  // Text without a terminator stops at its field's width less one.
  std::memset(record.data(), 'a', 600);
  serve_record(record);
  EXPECT_EQ(read("DNS/mir_name"), std::string(254, 'a'));
  EXPECT_EQ(read("DNS/server1"), std::string(15, 'a'));
  EXPECT_EQ(read("IPV6/DNSServer1"), std::string(45, 'a'));
}

TEST(GetNetworkProperty, FailedFetchAndStemOnlyNamesGiveStatus1) {
  std::array<char, 8> out{'k', 'e', 'p', 't'};
  EXPECT_EQ(Cfgmgr_Ext_Get_Property("DNS/server1", out.data(), 8), 1);  // no function served
  EXPECT_STREQ(out.data(), "kept");
  serve_record(Record{});
  store().clear_calls();
  EXPECT_EQ(Cfgmgr_Ext_Get_Property("DNS/mir_name7", out.data(), 8), 1);
  EXPECT_EQ(orb_cfg::getNetworkProperty("DNS/server1", out.data(), 58), 1);
  EXPECT_EQ(orb_cfg::getNetworkProperty("DNS/server1", out.data(), -1), 1);
  EXPECT_EQ(orb_cfg::getNetworkProperty("MIR/FIRMWARE/version", out.data(), 54), 1);
  EXPECT_STREQ(out.data(), "kept");
  EXPECT_EQ(store().calls().size(), 0U);
}

// A request that changes nothing: markers at 510, 514, 516, 646, 974, 975 and 979.
Record blank_request() {
  Record record{};
  record[510] = record[974] = record[975] = record[979] = 0xFF;
  record[514] = record[515] = record[516] = record[517] = 0xFF;
  record[646] = 1;
  return record;
}

// Writes and returns the request that reached "netSetNetConfig".
Record write(const char *name, const char *value) {
  store().clear_calls();
  store().on_function("netSetNetConfig",
                      [](uint32_t *, const void *, uint32_t, void *) { return 0; });
  EXPECT_EQ(Cfgmgr_Set_Property_ori(name, value), 0) << name;
  const auto calls = store().calls("orb_function_execute");
  Record request{};
  if (calls.size() != 1 || calls[0].input.size() != request.size()) {
    ADD_FAILURE() << name << ": " << calls.size() << " requests";
    return request;
  }
  EXPECT_EQ(calls[0].name, "netSetNetConfig");
  EXPECT_EQ(calls[0].length_in, 4768U);
  EXPECT_EQ(calls[0].capacity, 0U);
  EXPECT_EQ(calls[0].output, nullptr);
  std::copy(calls[0].input.begin(), calls[0].input.end(), request.begin());
  return request;
}

// Each write changes its own field alone; an empty text sets the clear bit of its mask instead.
TEST(SetNetworkProperty, SendsAChangeRequestForTheTargetAlone) {
  struct Case {
    const char *name, *value;
    std::size_t offset;
    std::vector<uint8_t> bytes;
  };
  const std::vector<uint8_t> address = {'1', '0', '.', '1', '.', '2', '.', '3'};
  // clang-format off
  const Case cases[] = {
      {"DNS/dhcp_enable", "1", 519, {2}}, {"DNS/dhcp_enable", "0", 519, {1}},
      {"DNS/dhcp_enable", "abc", 519, {1}}, {"IPV6/IP_sec_enable", "9", 980, {2}},
      {"NETWORK/NIC/mtu", "1500", 976, bytes_of(uint16_t{1500})},
      {"NETWORK/NIC/mtu", "70000", 976, bytes_of(uint16_t{4464})},
      {"IPV6/prefix_length", "255", 979, {0xFF}}, {"IPV6/prefix_length", "-1", 979, {0xFF}},
      {"IPV6/prefix_length", "64", 979, {64}}, {"NETWORK/NIC/selection", "2", 510, {2}},
      {"NETWORK/NIC/fullduplex", "0", 975, {0}}, {"IPV6/valid_address_number", "258", 1165, {2}},
      {"DNS/server1", "10.1.2.3", 521, address},
      {"DNS/mir_name", "", 1828, bytes_of(0x01U)}, {"DNS/domain_name", "", 1828, bytes_of(0x02U)},
      {"DNS/server1", "", 1828, bytes_of(0x04U)}, {"DNS/server2", "", 1828, bytes_of(0x08U)},
      {"IPV6/DNSServer1", "", 1828, bytes_of(0x10U)},
      {"IPV6/DNSServer2", "", 1828, bytes_of(0x20U)}, {"IPV6/address", "", 1824, bytes_of(0x20U)},
      {"IPV6/gateway", "", 1824, bytes_of(0x40U)},
      {"IPV6/link_local_address", "", 1824, bytes_of(0x80U)},
      {"IPV6/site_local_address", "", 1824, bytes_of(0x100U)},
  };
  // clang-format on
  for (const auto &c : cases) {
    Record expected = blank_request();
    std::copy(c.bytes.begin(), c.bytes.end(), expected.begin() + c.offset);
    EXPECT_EQ(write(c.name, c.value), expected) << c.name << " = " << c.value;
  }
}

// Text that would run into the next field is refused, as are the extended address entries and
// names that met their special row through the stem alone. The apply's result is handed on.
TEST(SetNetworkProperty, RefusesWhatTheRecordCannotCarry) {
  Record expected = blank_request();
  put(expected, 0, std::string(254, 'm'));
  EXPECT_EQ(write("DNS/mir_name", std::string(254, 'm').c_str()), expected);
  expected = blank_request();
  put(expected, 1119, std::string(45, 'f'));
  EXPECT_EQ(write("IPV6/site_local_address", std::string(45, 'f').c_str()), expected);
  store().clear_calls();
  EXPECT_EQ(Cfgmgr_Set_Property_ori("DNS/mir_name", std::string(255, 'm').c_str()), 1);
  EXPECT_EQ(Cfgmgr_Set_Property_ori("DNS/server2", "255.255.255.2550"), 1);
  EXPECT_EQ(Cfgmgr_Set_Property_ori("IPV6/DNSServer2", std::string(46, 'f').c_str()), 1);
  EXPECT_EQ(Cfgmgr_Set_Property_ori("IPV6/extaddr2", "fe80::1/64"), 1);
  EXPECT_EQ(Cfgmgr_Set_Property_ori("IPV6/extaddr2_prefix", "64"), 1);
  EXPECT_EQ(Cfgmgr_Set_Property_ori("DNS/mir_name7", "x"), 1);
  EXPECT_EQ(Cfgmgr_Set_Property_ori("DNS/server1234", "x"), 1);
  EXPECT_EQ(orb_cfg::setNetworkProperty("DNS/server1", "x", 58), 1);
  EXPECT_EQ(orb_cfg::setNetworkProperty("MIR/FIRMWARE/minor", "x", 55), 1);
  EXPECT_EQ(store().calls().size(), 0U);
  store().fail("orb_function_execute", "netSetNetConfig", 8193);
  EXPECT_EQ(Cfgmgr_Set_Property_ori("DNS/server1", "1.1.1.1"), 8193);
  EXPECT_EQ(Cfgmgr_Set_Property_ori("IPV6/enable", "1"), 8193);
}

}  // namespace
}  // namespace tessera::test
