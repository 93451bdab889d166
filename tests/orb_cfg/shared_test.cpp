// The property service through libtessera.so.1's C interface alone.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>

#include "fake_daemon.h"
#include "tessera/orb_cfg.h"

namespace tessera::test {
namespace {

TEST(OrbCfgShared, TablesStoreAndTheMappingDaemonFirst) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
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

  FakeDaemon mapping(kMappingSocket);
  mapping.set_handler([](const daemon_message::Bytes &request) {
    return daemon_message::name(request) == "SERIAL/baudrate" ? daemon_message::refusal(4)
                                                              : daemon_message::success("on");
  });
  EXPECT_EQ(Cfgmgr_Get_Property("SSH/enable", out.data(), 2), 0);
  EXPECT_STREQ(out.data(), "o");
  EXPECT_EQ(Cfgmgr_Get_Property("SERIAL/baudrate", out.data(), out.size()), 0);
  EXPECT_STREQ(out.data(), "115200");
  std::array<unsigned char, TESSERA_DAEMON_MESSAGE_SIZE> message{1, 2};
  EXPECT_EQ(session_manager_ipmiextd_communicate(message.data()), TESSERA_DAEMON_EXCHANGE_FAILED);
  EXPECT_EQ(mapping.request_count(), 2U);
}

}  // namespace
}  // namespace tessera::test
