// Typed store reads and writes, the entry points that choose between store and network record,
// their status codes and their debug reports.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdint>
#include <string>

#include "capture_sink.h"
#include "fake_store.h"
#include "orb_cfg/orb_cfg_internal.h"
#include "tessera/orb_cfg.h"

namespace tessera::test {
namespace {

constexpr const char kPropTypeFormat[] = "DEBUG: %s [%d]: prop_type = %d\n";
constexpr const char kSplitFormat[] = "DEBUG: %s [%d]: split = %d\n";

FakeStore &store() {
  return FakeStore::instance();
}
CaptureSink &sink() {
  return CaptureSink::instance();
}

using Buffer = std::array<char, 1025>;

TEST(SetOrbConfigByType, CallsTheStoreFunctionOfTheTypeWithFlag1) {
  struct Case {
    int32_t type;
    const char *value, *function;
    int64_t number;
  };
  // clang-format off
  const Case cases[] = {
      {0, "text", "orb_config_set_str", 0}, {6, "", "orb_config_set_str", 0},
      {7, "counted", "orb_config_set_str_n", 0}, {2, "7", "orb_config_set_bool", 1},
      {2, "0", "orb_config_set_bool", 0}, {2, "abc", "orb_config_set_bool", 0},
      {2, " -1x", "orb_config_set_bool", 1}, {3, " 42abc", "orb_config_set_int", 42},
      {5, "-17", "orb_config_set_int", -17}, {3, "99999999999", "orb_config_set_int", INT32_MAX},
      {3, "-99999999999", "orb_config_set_int", INT32_MIN},
  };
  // clang-format on
  for (const auto &c : cases) {
    store().clear_calls();
    EXPECT_EQ(orb_cfg::setOrbConfigByType("k", c.value, c.type), 1) << c.type << c.value;
    const auto calls = store().calls();
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].function, c.function);
    EXPECT_EQ(calls[0].name, "k");
    EXPECT_EQ(calls[0].flag, 1);
    if (calls[0].function.find("_str") != std::string::npos) {
      EXPECT_EQ(calls[0].text, c.value);
    } else {
      EXPECT_EQ(calls[0].value, c.number) << c.value;
    }
  }
  store().clear_calls();
  for (int32_t type : {1, 4, 8, 9, 10, 11, -1}) {
    EXPECT_EQ(orb_cfg::setOrbConfigByType("k", "1", type), 0) << type;
  }
  EXPECT_EQ(store().calls().size(), 0U);
  store().fail("orb_config_set_int");
  EXPECT_EQ(orb_cfg::setOrbConfigByType("k", "1", 3), 0);
}

TEST(OrbGetPropertyValue, ReadsByTypeAndReportsForLegacyPaths) {
  store().set_int("gui_int_http_port", 8080);
  store().set_bool("gui_bool_gui_enabled", true);
  store().set_str("MIR/name", "Mirel");
  store().set_str("IPV6/extaddr2", "fe80::1/64");
  store().set_int("IPV6/extaddr2_prefix", 64);
  store().set_int("NETWORK/NIC/mtu", 1500);
  struct Case {
    const char *name, *value, *function;
  };
  // clang-format off
  const Case cases[] = {
      {"WEBSERVER/http_port", "8080", "orb_config_get_int"},
      {"gui_int_http_port", "8080", "orb_config_get_int"},
      {"WEBSERVER/enable", "1", "orb_config_get_bool"}, {"MIR/name", "Mirel", "orb_config_get_str"},
      {"IPV6/extaddr2", "fe80::1/64", "orb_config_get_str"},
      {"IPV6/extaddr2_prefix", "64", "orb_config_get_int"},
      {"NETWORK/NIC/mtu", "1500", "orb_config_get_int"},
  };
  // clang-format on
  for (const auto &c : cases) {
    Buffer out{};
    store().clear_calls();
    EXPECT_EQ(ORBGetPropertyValue(c.name, out.data()), 0) << c.name;
    EXPECT_STREQ(out.data(), c.value);
    ASSERT_EQ(store().calls().size(), 1U);
    EXPECT_EQ(store().calls()[0].function, c.function);
  }
  EXPECT_EQ(sink().count(kPropTypeFormat), 6U);  // all but the store key
  EXPECT_EQ(sink().reports()[0].message, "prop_type = 1\n");
}

TEST(OrbGetPropertyValue, RefusedTypesAndFailedReadsGiveStatus2) {
  store().set_str("gui_config_changed", "x");
  store().set_str("gui_int_http_port", "80");  // stored as text, read as a number
  Buffer out{};
  EXPECT_EQ(ORBGetPropertyValue("gui_config_changed", out.data()), 2);
  EXPECT_EQ(ORBGetPropertyValue("IPV6/prefix_length", out.data()), 2);
  EXPECT_EQ(store().calls().size(), 0U);
  EXPECT_EQ(sink().count(kPropTypeFormat), 1U);  // the refused legacy path still reports
  EXPECT_EQ(ORBGetPropertyValue("WEBSERVER/http_port", out.data()), 2);
  EXPECT_EQ(ORBGetPropertyValue("not_stored", out.data()), 2);
  EXPECT_EQ(store().calls("orb_config_get_str")[0].name, "not_stored");
  EXPECT_EQ(ORBGetPropertyValue(nullptr, out.data()), 2);
  EXPECT_EQ(ORBGetPropertyValue("", out.data()), 2);
  EXPECT_EQ(ORBGetPropertyValue("MIR/name", nullptr), 2);
  EXPECT_EQ(ORBGetPropertyValue(("A/" + std::string(130, 'b')).c_str(), out.data()), 2);
  EXPECT_EQ(store().calls().size(), 2U);
}

TEST(OrbSetPropertyValue, WritesByTypeUnderTheStoreName) {
  EXPECT_EQ(ORBSetPropertyValue("WEBSERVER/http_port", "81"), 0);
  EXPECT_EQ(ORBSetPropertyValue("unknown_key", "v"), 0);
  EXPECT_EQ(ORBSetPropertyValue("MIR/USER/name007", "bob"), 0);
  EXPECT_EQ(store().value("gui_int_http_port"), FakeStore::Value(int32_t{81}));
  EXPECT_EQ(store().value("unknown_key"), FakeStore::Value(std::string("v")));
  EXPECT_EQ(store().value("MIR/USER/name7"), FakeStore::Value(std::string("bob")));
  EXPECT_EQ(sink().count(kPropTypeFormat), 2U);
  EXPECT_EQ(ORBSetPropertyValue("gui_config_changed", "1"), 1);
  EXPECT_EQ(ORBSetPropertyValue("IPV6/extaddr2", "::1/64"), 1);
  EXPECT_EQ(ORBSetPropertyValue(("A/" + std::string(130, 'b')).c_str(), "v"), 1);
  EXPECT_EQ(ORBSetPropertyValue("MIR/name", nullptr), 1);
  EXPECT_EQ(ORBSetPropertyValue("", "v"), 1);
  EXPECT_EQ(store().calls().size(), 3U);
  store().fail("orb_config_set_str");
  EXPECT_EQ(ORBSetPropertyValue("MIR/name", "x"), 1);
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
  EXPECT_EQ(Is_Special_Prop("DNS/server"), -1);
  EXPECT_EQ(Is_Special_Prop("IPV6/extaddr16"), -1);
  EXPECT_EQ(Is_Special_Prop("dns/server1"), -1);
  EXPECT_EQ(Is_Special_Prop(""), -1);
  EXPECT_EQ(Is_Special_Prop(nullptr), -1);
  EXPECT_EQ(Is_Special_Prop(std::string(300, '7').c_str()), -1);
}

TEST(CfgmgrGetProperty, ReadsCutsAndLeavesOutAloneOnBadArguments) {
  store().set_str("MIR/name", "abcdef");
  Buffer out{};
  EXPECT_EQ(Cfgmgr_Get_Property_ori("MIR/name", out.data(), 7), 0);
  EXPECT_STREQ(out.data(), "abcdef");
  EXPECT_EQ(Cfgmgr_Get_Property_ori("MIR/name", out.data(), 6), 0);
  EXPECT_STREQ(out.data(), "abcde");
  EXPECT_EQ(Cfgmgr_Ext_Get_Property("MIR/name", out.data(), 1), 0);
  EXPECT_STREQ(out.data(), "");
  // A failed read is returned before the cut; _ori has emptied out first, _Ext has not.
  out = Buffer{'k', 'e', 'p', 't'};
  EXPECT_EQ(Cfgmgr_Ext_Get_Property("MIR/oemdescription", out.data(), 2), 2);
  EXPECT_STREQ(out.data(), "kept");
  EXPECT_EQ(Cfgmgr_Get_Property_ori("MIR/oemdescription", out.data(), 2), 2);
  EXPECT_STREQ(out.data(), "");
  const std::string name63 = "x" + std::string(62, 'y');
  out = Buffer{'k', 'e', 'p', 't'};
  EXPECT_EQ(Cfgmgr_Get_Property_ori(nullptr, out.data(), 8), 2);
  EXPECT_EQ(Cfgmgr_Get_Property_ori("", out.data(), 8), 2);
  EXPECT_EQ(Cfgmgr_Get_Property_ori("MIR/name", nullptr, 8), 2);
  EXPECT_EQ(Cfgmgr_Get_Property_ori("MIR/name", out.data(), 0), 2);
  EXPECT_EQ(Cfgmgr_Get_Property_ori((name63 + "z").c_str(), out.data(), 8), 2);
  EXPECT_EQ(Cfgmgr_Ext_Get_Property((name63 + "z").c_str(), out.data(), 8), 2);
  EXPECT_STREQ(out.data(), "kept");
  store().clear_calls();
  EXPECT_EQ(Cfgmgr_Get_Property_ori(name63.c_str(), out.data(), 8), 2);
  EXPECT_EQ(store().calls("orb_config_get_str").size(), 1U);
}

TEST(CfgmgrGetProperty, FirmwareRowsReadNothingWithStatus0) {
  Buffer out{'o', 'l', 'd'};
  EXPECT_EQ(Cfgmgr_Ext_Get_Property("MIR/FIRMWARE/version", out.data(), 3), 0);
  EXPECT_STREQ(out.data(), "ol");
  EXPECT_EQ(Cfgmgr_Get_Property_ori("MIR/FIRMWARE/last_update", out.data(), 3), 0);
  EXPECT_STREQ(out.data(), "");
  EXPECT_EQ(store().calls().size(), 0U);
}

TEST(CfgmgrGetProperty, SplitNamesWithoutSpecialRowGoToTheStore) {
  store().set_str("MIR/USER/name3", "ann");
  Buffer out{};
  EXPECT_EQ(Cfgmgr_Get_Property_ori("MIR/USER/name3", out.data(), 1025), 0);
  EXPECT_STREQ(out.data(), "ann");
  ASSERT_EQ(sink().reports().size(), 2U);
  EXPECT_EQ(sink().reports()[0].format, kSplitFormat);
  EXPECT_EQ(sink().reports()[1].format, kPropTypeFormat);
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
