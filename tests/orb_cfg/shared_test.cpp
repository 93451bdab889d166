// The property service through libtessera.so.1's C interface alone.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <string>

#include "fake_daemon.h"
#include "fake_store.h"
#include "tessera/orb_cfg.h"

namespace tessera::test {
namespace {

FakeStore &store() {
  return FakeStore::instance();
}

TEST(OrbCfgShared, SpecialTableHasItsExportedLayout) {
  static_assert(sizeof(SpecialProp) == (sizeof(void *) == 4 ? 16 : 24));
  static_assert(offsetof(SpecialProp, clear_code) == sizeof(void *) + 8);
  int rows = 0;
  while (special_prop_table[rows].source != 0) {
    ++rows;
  }
  EXPECT_EQ(rows, 58);
  EXPECT_STREQ(special_prop_table[0].name, "DNS/mir_name");
  EXPECT_EQ(special_prop_table[15].clear_code, 0x8020);
  EXPECT_STREQ(special_prop_table[57].name, "MIR/FIRMWARE/last_update");
  EXPECT_EQ(Is_Special_Prop("IPV6/gateway"), 45);
  std::array<unsigned char, TESSERA_NETWORK_RECORD_SIZE> record{};
  EXPECT_EQ(get_src_addr(record.data(), 45), record.data() + 1027);
}

TEST(OrbCfgShared, WritesAndReadsThroughTheStore) {
  std::array<char, 128> key{};
  EXPECT_EQ(convert_prop_name("SERIAL/baudrate", key.data()), PROP_TYPE_INT);
  EXPECT_STREQ(key.data(), "ser_int_baudrate");
  EXPECT_EQ(findLegacyPropertyIndex("SERIAL/baudrate"), 260);
  EXPECT_EQ(Cfgmgr_Set_Property_ori("SERIAL/baudrate", "115200"), 0);
  EXPECT_EQ(Cfgmgr_Ext_Set_Property("SERIAL/escape_key", "^]"), 0);
  EXPECT_EQ(ORBSetPropertyValue("pm_bool_vfk_enabled", "1"), 0);
  std::array<char, 1025> out{};
  EXPECT_EQ(Cfgmgr_Get_Property_ori("SERIAL/baudrate", out.data(), 4), 0);
  EXPECT_STREQ(out.data(), "115");
  EXPECT_EQ(Cfgmgr_Ext_Get_Property("ser_str_console_quitkey", out.data(), 1025), 0);
  EXPECT_STREQ(out.data(), "^]");
  EXPECT_EQ(ORBGetPropertyValue("VM/keyenable", out.data()), 0);
  EXPECT_STREQ(out.data(), "1");
  EXPECT_EQ(FakeStore::instance().calls("orb_config_set_int").at(0).flag, 1);
}

TEST(OrbCfgShared, AsksTheMappingDaemonFirst) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  FakeDaemon mapping(kMappingSocket);
  mapping.set_handler([](const daemon_message::Bytes &request) {
    return daemon_message::name(request) == "TELNET/port" ? daemon_message::refusal(4)
                                                          : daemon_message::success("on");
  });
  store().set_int("pm_int_telnet_port", 2323);
  std::array<char, 1025> out{};
  EXPECT_EQ(Cfgmgr_Get_Property("SSH/enable", out.data(), 2), 0);
  EXPECT_STREQ(out.data(), "o");
  EXPECT_EQ(Cfgmgr_Get_Property("TELNET/port", out.data(), out.size()), 0);
  EXPECT_STREQ(out.data(), "2323");
  EXPECT_EQ(is_same_value("TELNET/port", "2323"), 1);
  EXPECT_EQ(Cfgmgr_Set_Property("TELNET/port", "24"), 0);
  EXPECT_EQ(DM_DCSGEN_Set_Property("x", "y"), 0);
  std::array<unsigned char, TESSERA_DAEMON_MESSAGE_SIZE> message{};
  message[0] = 1;
  message[1] = 11;
  EXPECT_EQ(session_manager_ipmiextd_communicate(message.data()), 0);
  EXPECT_EQ(message[0], 2);
  EXPECT_EQ(mapping.request_count(), 6U);
  message[1] = 2;  // the session daemon isn't there
  EXPECT_EQ(session_manager_ipmiextd_communicate(message.data()), TESSERA_DAEMON_EXCHANGE_FAILED);
}

TEST(OrbCfgShared, DefaultsAndStatusHelpers) {
  EXPECT_STREQ(default_list[0], "CR/enable");
  EXPECT_EQ(default_list[65], nullptr);
  EXPECT_EQ(Cfgmgr_Restore_Defaults(), 1);
  EXPECT_EQ(store().calls().size(), 230U);
  store().set_bool("pm_bool_vfk_enabled", true);
  EXPECT_EQ(is_vmkey_enabled(), 1);
  EXPECT_EQ(is_tarn_present(), 0);
  char text[] = "::/0";
  EXPECT_EQ(ipv6_extended_addr_display(text), 0);
  EXPECT_STREQ(text, "::");
  char address[8];
  char prefix[8];
  EXPECT_EQ(split_ipv6_extended_addr("a/b", address, prefix), 0);
  EXPECT_STREQ(prefix, "b");
  EXPECT_EQ(init_power_supply(), 1);  // no sensor list: the count 0 is written
  EXPECT_EQ(store().value("pm_int_max_power_supply_index"), FakeStore::Value(int32_t{0}));
  EXPECT_EQ(rp_config_changed(), 0);
}

}  // namespace
}  // namespace tessera::test
