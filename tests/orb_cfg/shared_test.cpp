// The property service through libtessera.so.1's C interface alone.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <string>

#include "fake_store.h"
#include "tessera/orb_cfg.h"

namespace tessera::test {
namespace {

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

}  // namespace
}  // namespace tessera::test
