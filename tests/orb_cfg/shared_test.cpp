// The property service through libtessera.so.1's C interface alone.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>

#include "fake_daemon.h"
#include "fake_store.h"
#include "tessera/orb_cfg.h"

namespace tessera::test {
namespace {

TEST(OrbCfgShared, TablesStoreAndStatusHelpers) {
  static_assert(sizeof(SpecialProp) == (sizeof(void *) == 4 ? 16 : 24));
  static_assert(offsetof(SpecialProp, clear_code) == sizeof(void *) + 8);
  EXPECT_EQ(special_prop_table[15].clear_code, 0x8020);
  EXPECT_EQ(Is_Special_Prop("IPV6/gateway"), 45);
  EXPECT_STREQ(default_list[0], "CR/enable");
  std::array<char, 128> key{};
  EXPECT_EQ(convert_prop_name("SERIAL/baudrate", key.data()), PROP_TYPE_INT);
  EXPECT_STREQ(key.data(), "ser_int_baudrate");
  EXPECT_EQ(Cfgmgr_Set_Property_ori("SERIAL/baudrate", "115200"), 0);
  std::array<char, 1025> out{};
  EXPECT_EQ(Cfgmgr_Get_Property_ori("SERIAL/baudrate", out.data(), 4), 0);
  EXPECT_STREQ(out.data(), "115");
  EXPECT_EQ(Cfgmgr_Restore_Defaults(), 1);
  EXPECT_EQ(FakeStore::instance().calls().size(), 232U);
  EXPECT_EQ(is_vmkey_enabled(), 0);
}

TEST(OrbCfgShared, AsksTheMappingDaemonFirst) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  FakeDaemon mapping(kMappingSocket);
  mapping.set_handler([](const daemon_message::Bytes &request) {
    return daemon_message::name(request) == "TELNET/port" ? daemon_message::refusal(4)
                                                          : daemon_message::success("on");
  });
  FakeStore::instance().set_int("pm_int_telnet_port", 2323);
  std::array<char, 1025> out{};
  EXPECT_EQ(Cfgmgr_Get_Property("SSH/enable", out.data(), 2), 0);
  EXPECT_STREQ(out.data(), "o");
  EXPECT_EQ(Cfgmgr_Get_Property("TELNET/port", out.data(), out.size()), 0);
  EXPECT_STREQ(out.data(), "2323");
  std::array<unsigned char, TESSERA_DAEMON_MESSAGE_SIZE> message{1, 2};
  EXPECT_EQ(session_manager_ipmiextd_communicate(message.data()), TESSERA_DAEMON_EXCHANGE_FAILED);
  EXPECT_EQ(mapping.request_count(), 2U);
}

}  // namespace
}  // namespace tessera::test
