// Typed store reads and writes, the entry points that choose between store and network record,
// their status codes and their debug reports.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "orb_cfg/orb_cfg_internal.h"
#include "orb_cfg_test.h"

namespace tessera::test {
namespace {

constexpr const char kPropTypeFormat[] = "DEBUG: %s [%d]: prop_type = %d\n";
constexpr const char kSplitFormat[] = "DEBUG: %s [%d]: split = %d\n";
const std::string kTooLong = "A/" + std::string(130, 'b');

// Every name with a '/' reports its type, whatever the read gives.
TEST(OrbPropertyValue, ReadsByTypeAndGives2ForWhatCannotBeRead) {
  store().set_int("gui_int_http_port", 8080);
  store().set_bool("gui_bool_gui_enabled", true);
  store().set_str("MIR/name", "Mirel");
  store().set_str("IPV6/extaddr2", "fe80::1/64");
  store().set_int("IPV6/extaddr2_prefix", 64);
  store().set_int("NETWORK/NIC/mtu", 1500);
  store().set_str("pm_int_ssh_port", "22");  // stored as text, read as a number
  store().set_str("gui_config_changed", "x");
  struct Case {
    std::string name;
    int32_t status;
    const char *value, *function;  // the store function asked, if any
  };
  const Case cases[] = {
      {"WEBSERVER/http_port", 0, "8080", "orb_config_get_int"},
      {"gui_int_http_port", 0, "8080", "orb_config_get_int"},
      {"WEBSERVER/enable", 0, "1", "orb_config_get_bool"},
      {"MIR/name", 0, "Mirel", "orb_config_get_str"},
      {"IPV6/extaddr2", 0, "fe80::1/64", "orb_config_get_str"},
      {"IPV6/extaddr2_prefix", 0, "64", "orb_config_get_int"},
      {"NETWORK/NIC/mtu", 0, "1500", "orb_config_get_int"},
      {"SSH/port", 2, "", "orb_config_get_int"},
      {"not_stored", 2, "", "orb_config_get_str"},
      {"gui_config_changed", 2, "", nullptr},
      {"IPV6/prefix_length", 2, "", nullptr},
      {"", 2, "", nullptr},
      {kTooLong, 2, "", nullptr},
  };
  std::size_t reports = 0;
  for (const auto &c : cases) {
    Buffer out{};
    store().clear_calls();
    EXPECT_EQ(ORBGetPropertyValue(c.name.c_str(), out.data()), c.status) << c.name;
    if (c.status == 0) {
      EXPECT_STREQ(out.data(), c.value) << c.name;
    }
    const auto calls = store().calls();
    EXPECT_EQ(calls.size(), c.function != nullptr ? 1U : 0U) << c.name;
    if (c.function != nullptr && !calls.empty()) {
      EXPECT_EQ(calls[0].function, c.function) << c.name;
    }
    reports += c.name.find('/') != std::string::npos ? 1 : 0;
  }
  EXPECT_EQ(sink().count(kPropTypeFormat), reports);
  EXPECT_EQ(sink().reports()[0].message, "prop_type = 1\n");
  Buffer out{};
  EXPECT_EQ(ORBGetPropertyValue(nullptr, out.data()), 2);
  EXPECT_EQ(ORBGetPropertyValue("MIR/name", nullptr), 2);
}

// Writes go to the store call of the row's type under its store name, with flag 1; flags and
// numbers are read as strtol reads them, held to 32 bits.
TEST(OrbPropertyValue, WritesByTypeUnderTheStoreName) {
  struct Case {
    std::string name;
    const char *value;
    int32_t status;
    const char *write;  // the store call made, if any
  };
  const Case cases[] = {
      {"MIR/name", "text", 0, "orb_config_set_str MIR/name = text"},
      {"unknown_key", "", 0, "orb_config_set_str unknown_key = "},
      {"MIR/USER/name007", "bob", 0, "orb_config_set_str MIR/USER/name7 = bob"},
      {"WEBSERVER/enable", "7", 0, "orb_config_set_bool gui_bool_gui_enabled = 1"},
      {"WEBSERVER/enable", "abc", 0, "orb_config_set_bool gui_bool_gui_enabled = 0"},
      {"WEBSERVER/enable", " -1x", 0, "orb_config_set_bool gui_bool_gui_enabled = 1"},
      {"WEBSERVER/http_port", " 42abc", 0, "orb_config_set_int gui_int_http_port = 42"},
      {"NETWORK/NIC/mtu", "-17", 0, "orb_config_set_int NETWORK/NIC/mtu = -17"},
      {"gui_int_http_port", "99999999999", 0, "orb_config_set_int gui_int_http_port = 2147483647"},
      {"gui_int_http_port", "-99999999999", 0,
       "orb_config_set_int gui_int_http_port = -2147483648"},
      {"gui_config_changed", "1", 1, nullptr},
      {"IPV6/prefix_length", "1", 1, nullptr},
      {"IPV6/extaddr2", "::1/64", 1, nullptr},
      {"IPV6/extaddr2_prefix", "64", 1, nullptr},
      {kTooLong, "v", 1, nullptr},
      {"", "v", 1, nullptr},
  };
  std::size_t reports = 0;
  for (const auto &c : cases) {
    store().clear_calls();
    EXPECT_EQ(ORBSetPropertyValue(c.name.c_str(), c.value), c.status) << c.name;
    const std::vector<std::string> none;
    EXPECT_EQ(store_writes(), c.write != nullptr ? std::vector<std::string>{c.write} : none)
        << c.name;
    reports += c.name.find('/') != std::string::npos ? 1 : 0;
  }
  EXPECT_EQ(sink().count(kPropTypeFormat), reports);
  EXPECT_EQ(ORBSetPropertyValue("MIR/name", nullptr), 1);
  store().fail("orb_config_set_str");
  EXPECT_EQ(ORBSetPropertyValue("MIR/name", "x"), 1);
  // No catalogue row has the counted text type: only the internal write reaches its store call.
  store().clear_calls();
  EXPECT_EQ(orb_cfg::setOrbConfigByType("k", "counted", PROP_TYPE_STR_N), 1);
  EXPECT_EQ(store_writes(), std::vector<std::string>{"orb_config_set_str_n k = counted"});
}

TEST(IsSpecialProp, FindsRowsByWholeNameOrStem) {
  for (int32_t i = 0; i < orb_cfg::kSpecialRowCount; ++i) {
    EXPECT_EQ(Is_Special_Prop(special_prop_table[i].name), i) << special_prop_table[i].name;
  }
  sink().reset();
  EXPECT_EQ(Is_Special_Prop("DNS/mir_name7"), 0);
  EXPECT_EQ(Is_Special_Prop("DNS/server1234"), 5);
  EXPECT_EQ(Is_Special_Prop("IPV6/extaddr5"), 20);
  EXPECT_EQ(sink().count(kSplitFormat), 3U);
  EXPECT_EQ(sink().reports()[0].message, "split = 1\n");
  for (const char *name :
       {"DNS/server", "IPV6/extaddr16", "dns/server1", "", static_cast<const char *>(nullptr)}) {
    EXPECT_EQ(Is_Special_Prop(name), -1) << (name != nullptr ? name : "(null)");
  }
  sink().reset();
  EXPECT_EQ(Is_Special_Prop(std::string(300, '7').c_str()), -1);
  EXPECT_EQ(sink().count(kSplitFormat), 1U) << "a name too long for any row still reports";
}

// A read that fails returns before the cut: _ori has emptied `out` first, _Ext has not. Bad
// arguments leave it alone in both.
TEST(CfgmgrGetProperty, ReadsAndCutsThroughTheStore) {
  store().set_str("MIR/name", "abcdef");
  store().set_str("MIR/USER/name3", "ann");
  const std::string name63 = "x" + std::string(62, 'y');
  struct Case {
    int32_t (*get)(const char *, char *, unsigned int);
    std::string name;
    unsigned int len;
    int32_t status;
    const char *out;
  };
  const auto ori = Cfgmgr_Get_Property_ori;
  const auto ext = Cfgmgr_Ext_Get_Property;
  const Case cases[] = {
      {ori, "MIR/name", 7, 0, "abcdef"},
      {ori, "MIR/name", 6, 0, "abcde"},
      {ext, "MIR/name", 1, 0, ""},
      {ori, "MIR/USER/name3", 1025, 0, "ann"},  // split, without a special row
      {ext, "MIR/oemdescription", 2, 2, "kept"},
      {ori, "MIR/oemdescription", 2, 2, ""},
      {ext, "MIR/FIRMWARE/version", 3, 0, "ke"},  // firmware rows read nothing
      {ori, "MIR/FIRMWARE/last_update", 3, 0, ""},
      {ori, name63, 8, 2, ""},  // 63 characters: asked for
      {ori, name63 + "z", 8, 2, "kept"},
      {ext, name63 + "z", 8, 2, "kept"},
      {ori, "", 8, 2, "kept"},
      {ori, "MIR/name", 0, 2, "kept"},
  };
  for (const auto &c : cases) {
    Buffer out{'k', 'e', 'p', 't'};
    EXPECT_EQ(c.get(c.name.c_str(), out.data(), c.len), c.status) << c.name;
    EXPECT_STREQ(out.data(), c.out) << c.name;
  }
  EXPECT_EQ(store().calls("orb_config_get_str").size(), 7U);
  EXPECT_EQ(store().calls("orb_config_get_str").back().name, name63);
  EXPECT_EQ(sink().count(kSplitFormat), 1U);
  Buffer out{};
  EXPECT_EQ(Cfgmgr_Get_Property_ori(nullptr, out.data(), 8), 2);
  EXPECT_EQ(Cfgmgr_Get_Property_ori("MIR/name", nullptr, 8), 2);
}

TEST(CfgmgrSetProperty, WritesTheStoreAndRefusesWhatCannotBeWritten) {
  EXPECT_EQ(Cfgmgr_Set_Property_ori("SSH/port", "2222"), 0);
  EXPECT_EQ(Cfgmgr_Ext_Set_Property("TELNET/enable", "5"), 0);
  EXPECT_EQ(Cfgmgr_Set_Property_ori("MIR/oemdescription", ""), 0);
  EXPECT_EQ(store().value("pm_int_ssh_port"), FakeStore::Value(int32_t{2222}));
  EXPECT_EQ(store().value("pm_bool_telnet_enabled"), FakeStore::Value(true));
  EXPECT_EQ(store().value("MIR/oemdescription"), FakeStore::Value(std::string()));
  store().clear_calls();
  EXPECT_EQ(Cfgmgr_Set_Property_ori("MIR/FIRMWARE/version", "2.00"), 1);
  EXPECT_EQ(Cfgmgr_Set_Property_ori("MIR/FIRMWARE/minor7", "1"), 1);
  EXPECT_EQ(Cfgmgr_Set_Property_ori("gui_config_changed", "1"), 1);
  EXPECT_EQ(Cfgmgr_Set_Property_ori(nullptr, "1"), 1);
  EXPECT_EQ(Cfgmgr_Set_Property_ori("SSH/port", nullptr), 1);
  EXPECT_EQ(Cfgmgr_Ext_Set_Property("", "1"), 1);
  EXPECT_EQ(Cfgmgr_Set_Property_ori(std::string(64, 'k').c_str(), "1"), 1);
  EXPECT_EQ(store().calls().size(), 0U);
  store().fail("orb_config_set_int");
  EXPECT_EQ(Cfgmgr_Set_Property_ori("SSH/port", "22"), 1);
}

}  // namespace
}  // namespace tessera::test
