// The tools' entry points: the mapping daemon first, the store or the network record only on its
// status 4, and the comparison built on the same read.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "fake_daemon.h"
#include "orb_cfg_test.h"

namespace tessera::test {
namespace {

namespace dm = daemon_message;

// A mapping daemon that serves the names under "daemon/" and leaves the rest to the library.
void serve_own_names(FakeDaemon &daemon) {
  daemon.set_handler([](const dm::Bytes &request) {
    const std::string name = dm::name(request);
    return name.rfind("daemon/", 0) == 0 ? dm::success("served:" + name) : dm::refusal(4);
  });
}

TEST(CfgmgrDaemonFirst, NamesTheDaemonServesNeverReachTheStore) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  FakeDaemon mapping(kMappingSocket);
  mapping.reply(dm::success("10.0.0.1"));
  const std::string long_name = "daemon/" + std::string(100, 'k');  // over the store paths' 63
  for (const char *name :
       {"DNS/server1", "IPV6/extaddr5", "MIR/FIRMWARE/version", long_name.c_str()}) {
    Buffer out{};
    EXPECT_EQ(Cfgmgr_Get_Property(name, out.data(), 5), 0) << name;
    EXPECT_STREQ(out.data(), "10.0") << name;
    EXPECT_EQ(Cfgmgr_Set_Property(name, "v"), 0) << name;
    EXPECT_EQ(is_same_value(name, "10.0.0.1"), 1) << name;
  }
  EXPECT_EQ(store().calls().size(), 0U);
  EXPECT_EQ(sink().reports().size(), 0U) << "no special-row lookup was made";
  const auto requests = mapping.requests();
  ASSERT_EQ(requests.size(), 12U);
  EXPECT_EQ(requests[1][dm::kOperation], 10);
  EXPECT_EQ(dm::value(requests[1]), "v");
  EXPECT_EQ(dm::name(requests[9]), long_name);
}

TEST(CfgmgrDaemonFirst, Status4ReadsFallBackToTheStoreOrTheNetworkRecord) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  FakeDaemon mapping(kMappingSocket);
  mapping.reply(dm::refusal(4));
  store().set_int("gui_int_http_port", 8080);
  Record record{};
  put(record, 521, "10.1.2.3");
  serve_record(record);
  struct Case {
    std::string name;
    unsigned int len;
    int32_t status;
    const char *out;
  };
  const Case cases[] = {
      {"WEBSERVER/http_port", 1025, 0, "8080"},
      {"gui_int_http_port", 3, 0, "80"},
      {"DNS/server1", 6, 0, "10.1."},
      {"MIR/FIRMWARE/version", 1025, 0, ""},
      {"MIR/oemdescription", 1025, 2, nullptr},    // not stored
      {"x/" + std::string(62, 'y'), 1025, 2, ""},  // the store paths' limit of 63 binds here
  };
  for (const Case &c : cases) {
    Buffer out{'o', 'l', 'd'};
    EXPECT_EQ(Cfgmgr_Get_Property(c.name.c_str(), out.data(), c.len), c.status) << c.name;
    if (c.out != nullptr) {
      EXPECT_STREQ(out.data(), c.out) << c.name;
    }
  }
  EXPECT_EQ(mapping.request_count(), std::size(cases));
  store().fail("orb_function_execute", "netGetCurrentIfConfig");
  Buffer out{};
  EXPECT_EQ(Cfgmgr_Get_Property("DNS/server2", out.data(), out.size()), 1);
}

TEST(CfgmgrDaemonFirst, Status4WritesFallBackToTheStoreOrTheNetworkRecord) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  FakeDaemon mapping(kMappingSocket);
  serve_own_names(mapping);
  store().on_function("netSetNetConfig",
                      [](uint32_t *, const void *, uint32_t, void *) { return 9; });
  EXPECT_EQ(Cfgmgr_Set_Property("SSH/port", "2222"), 0);
  EXPECT_EQ(Cfgmgr_Set_Property("DNS/server1", "10.0.0.9"), 9);
  EXPECT_EQ(store().value("pm_int_ssh_port"), FakeStore::Value(int32_t{2222}));
  EXPECT_EQ(store().calls("orb_function_execute").size(), 1U);
  store().clear_calls();
  EXPECT_EQ(Cfgmgr_Set_Property("MIR/FIRMWARE/version", "2.00"), 1);
  EXPECT_EQ(Cfgmgr_Set_Property(("x/" + std::string(62, 'y')).c_str(), "1"), 1);
  EXPECT_EQ(store().calls().size(), 0U);
  EXPECT_EQ(Cfgmgr_Set_Property("daemon/own", "22"), 0);
  const auto requests = mapping.requests();
  ASSERT_EQ(requests.size(), 5U) << "every write asked the daemon first";
  for (const auto &request : requests) {
    EXPECT_EQ(request[dm::kOperation], 10);
  }
}

TEST(IsSameValue, ComparesTheWholeTextAsReadWithCase) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  FakeDaemon mapping(kMappingSocket);
  serve_own_names(mapping);
  EXPECT_EQ(is_same_value("daemon/a", "served:daemon/a"), 1);
  EXPECT_EQ(is_same_value("daemon/a", "Served:daemon/a"), 0);
  EXPECT_EQ(is_same_value("daemon/a", "served:daemon/"), 0);
  EXPECT_EQ(is_same_value("MIR/FIRMWARE/version", ""), 1);  // status 4, then a firmware row
  EXPECT_EQ(is_same_value("MIR/oemdescription", ""), 0);    // status 4, then not stored
  mapping.reply(dm::success(std::string(1100, 'a')));       // read into 1025 bytes
  EXPECT_EQ(is_same_value("n", std::string(1024, 'a').c_str()), 1);
  EXPECT_EQ(is_same_value("n", std::string(1100, 'a').c_str()), 0);
  mapping.reply(dm::refusal(7));
  EXPECT_EQ(is_same_value("n", ""), 0);
}

}  // namespace
}  // namespace tessera::test
