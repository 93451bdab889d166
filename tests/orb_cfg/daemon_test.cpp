// The daemon exchange and the four property operations against real daemons at the controller's
// socket paths: what each daemon receives byte for byte, the results of every kind of reply, and
// replies that break the format.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "fake_daemon.h"
#include "fake_store.h"
#include "store_client/daemon_message.h"
#include "tessera/orb_cfg.h"

namespace tessera::test {
namespace {

namespace dm = daemon_message;
using Bytes = dm::Bytes;
// The request that a property operation should send: zero but for the fields it fills.
Bytes request(uint8_t operation, const std::string &name, const std::string &value = "") {
  Bytes bytes(dm::kSize, 0);
  bytes[dm::kDirection] = 1;
  bytes[dm::kOperation] = operation;
  std::memcpy(bytes.data() + dm::kName, name.data(), name.size());
  std::memcpy(bytes.data() + dm::kValue, value.data(), value.size());
  return bytes;
}

std::size_t open_fds() {
  const std::filesystem::directory_iterator fds("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(fds), end(fds)));
}

// An output buffer of exactly `len` bytes on the heap, so that a write past it is caught by the
// address sanitizer, filled with a marker that shows whether it was touched.
struct Out {
  explicit Out(unsigned int size) : bytes(size - 1, '#') { bytes.push_back('\0'); }
  char *data() { return bytes.data(); }
  [[nodiscard]] unsigned int len() const { return static_cast<unsigned int>(bytes.size()); }
  [[nodiscard]] std::string text() const { return bytes.data(); }
  [[nodiscard]] bool untouched() const {
    return std::string(bytes.begin(), bytes.end() - 1) == std::string(bytes.size() - 1, '#');
  }
  std::vector<char> bytes;
};

TEST(DaemonAddress, IsAZeroed110ByteAddressWithThePathLengthPlus3) {
  for (const char *path : {wire::kMappingSocketPath, wire::kSessionSocketPath}) {
    sockaddr_un address;
    std::memset(&address, 0xAB, sizeof address);
    EXPECT_EQ(wire::make_daemon_address(path, &address), std::strlen(path) + 3);
    EXPECT_EQ(address.sun_family, AF_UNIX);
    EXPECT_STREQ(address.sun_path, path);
    const std::string tail(address.sun_path + std::strlen(path),
                           sizeof address.sun_path - std::strlen(path));
    EXPECT_EQ(tail, std::string(tail.size(), '\0'));
  }
  sockaddr_un address;
  EXPECT_EQ(wire::make_daemon_address(std::string(108, 'p').c_str(), &address), 0U);
  EXPECT_EQ(wire::make_daemon_address(std::string(107, 'p').c_str(), &address), 110U);
  EXPECT_STREQ(wire::daemon_socket_path(11), "/var/run/tolvex/dmmappingSocket");
  EXPECT_STREQ(wire::daemon_socket_path(2), "/var/run/tolvex/ipmiextdSocket");
}

TEST(DaemonExchange, GoesToTheSocketOfItsOperationCodeAndPutsTheReplyOverTheMessage) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  FakeDaemon mapping(kMappingSocket);
  FakeDaemon session(kSessionSocket);
  mapping.reply(dm::success("from mapping"));
  session.reply(dm::success("from session"));
  for (const int operation : {0, 1, 2, 9, 10, 11, 12, 13, 14, 255}) {
    const bool to_mapping = operation >= 10 && operation <= 13;
    Bytes message = request(static_cast<uint8_t>(operation), "some/name", "v");
    std::memcpy(message.data() + dm::kSessionId, "\x04\x03\x02\x01", 4);
    message[1660] = 0x5A;
    const Bytes sent = message;
    EXPECT_EQ(session_manager_ipmiextd_communicate(message.data()), 0) << operation;
    FakeDaemon &served = to_mapping ? mapping : session;
    EXPECT_EQ(served.requests().back(), sent) << operation;
    EXPECT_EQ(message, dm::success(to_mapping ? "from mapping" : "from session")) << operation;
  }
  EXPECT_EQ(mapping.request_count(), 4U);
  EXPECT_EQ(session.request_count(), 6U);
}

TEST(DaemonExchange, Fails12307WithoutADaemonOrAReplyAndClosesItsSocketOnEveryPath) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  const Bytes sent = request(2, "");
  Bytes message = sent;
  const std::size_t fds = open_fds();
  EXPECT_EQ(session_manager_ipmiextd_communicate(message.data()), 12307);  // nobody listens
  EXPECT_EQ(message, sent);
  EXPECT_EQ(session_manager_ipmiextd_communicate(nullptr), 12307);
  {
    FakeDaemon session(kSessionSocket);
    session.reply({});  // closes without an answer
    EXPECT_EQ(session_manager_ipmiextd_communicate(message.data()), 12307);
    EXPECT_EQ(message, sent);
    EXPECT_EQ(session.request_count(), 1U) << "one attempt, no retry";
    session.reply({7});  // one byte is a reply; the rest of the message stays the request's
    EXPECT_EQ(session_manager_ipmiextd_communicate(message.data()), 0);
    EXPECT_EQ(message[0], 7);
    EXPECT_TRUE(std::equal(message.begin() + 1, message.end(), sent.begin() + 1));
    Bytes long_reply(3000, 0x11);  // more than a message: only the message is taken
    session.reply(long_reply);
    EXPECT_EQ(session_manager_ipmiextd_communicate(message.data()), 0);
    EXPECT_EQ(message, Bytes(dm::kSize, 0x11));
  }
  EXPECT_EQ(open_fds(), fds) << "every connection was closed";
}

TEST(DaemonProperties, SendTheirRequestsByteForByteWithNameAndValueCut) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  FakeDaemon mapping(kMappingSocket);
  const std::string name(330, 'n');
  const std::string value(1400, 'v');
  Out out(8);
  EXPECT_EQ(DM_ORB_Get_Property("WEBSERVER/http_port", out.data(), out.len()), 0);
  EXPECT_EQ(DM_DCSGEN_Get_Property(name.substr(0, 321).c_str(), out.data(), out.len()), 0);
  EXPECT_EQ(DM_ORB_Set_Property("SSH/port", "2222"), 0);
  EXPECT_EQ(DM_ORB_Set_Property(name.c_str(), value.substr(0, 1280).c_str()), 0);
  EXPECT_EQ(DM_DCSGEN_Set_Property("d", ""), 0);
  EXPECT_EQ(DM_DCSGEN_Set_Property("d", value.substr(0, 321).c_str()), 0);
  const std::string name320 = name.substr(0, 320);
  const std::vector<Bytes> expected = {request(11, "WEBSERVER/http_port"),
                                       request(13, name320),
                                       request(10, "SSH/port", "2222"),
                                       request(10, name320, value.substr(0, 1279)),
                                       request(12, "d"),
                                       request(12, "d", value.substr(0, 320))};
  EXPECT_EQ(mapping.requests(), expected);
}

// Every kind of answer, well-formed or not, through the four operations and the two entry points
// built on them, with outputs of exactly `len` bytes.
TEST(DaemonProperties, AnswerEveryKindOfReplyWithinBounds) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  Bytes unterminated = dm::success();
  std::fill(unterminated.begin() + dm::kValue, unterminated.end(), 'u');
  Bytes unterminated_field = unterminated;  // a terminator behind the field is not the value's
  unterminated_field[1613] = '\0';
  Bytes cut_success = dm::success(std::string(1279, 'x'));
  cut_success.resize(500);  // cut inside the value: the request's zeros stand behind it
  const std::string cut_value(500 - dm::kValue, 'x');
  struct Case {
    const char *what;
    std::optional<Bytes> reply;  // none: no daemon at all
    int32_t orb_get, dcsgen_get, orb_set, dcsgen_set, cfgmgr_get, cfgmgr_set;
    const char *value;  // what a read delivers; null: `out` untouched
  };
  // clang-format off
  const Case cases[] = {
      {"success",               dm::success("abcdef"),  0, 0, 0, 0, 0, 0, "abcdef"},
      {"status 4",              dm::refusal(4),         4, 1, 4, 4, 2, 0, nullptr},
      {"status 7",              dm::refusal(7),         7, 1, 7, 7, 1, 7, nullptr},
      {"one byte, 2",           Bytes{2},               0, 0, 0, 0, 0, 0, ""},
      {"no reply",              Bytes{},                1, 1, 1, 1, 1, 1, nullptr},
      {"no daemon",             std::nullopt,           1, 1, 1, 1, 1, 1, nullptr},
      {"value unterminated",    unterminated,           1, 1, 0, 0, 1, 0, nullptr},
      {"terminator past field", unterminated_field,     1, 1, 0, 0, 1, 0, nullptr},
      {"1724 bytes of 0xFF",    Bytes(dm::kSize, 0xFF), -1, 1, -1, -1, 1, -1, nullptr},
      {"0xFF cut after 500",    Bytes(500, 0xFF),       -1, 1, -1, -1, 1, -1, nullptr},
      {"success cut after 500", cut_success,            0, 0, 0, 0, 0, 0, cut_value.c_str()},
  };
  // clang-format on
  for (const Case &c : cases) {
    std::optional<FakeDaemon> daemon;
    if (c.reply) {
      daemon.emplace(kMappingSocket);
      daemon->reply(*c.reply);
    }
    FakeStore::instance().clear_calls();
    for (const unsigned int len : {1U, 5U, 1025U}) {
      Out orb(len);
      Out dcsgen(len);
      Out cfgmgr(len);
      EXPECT_EQ(DM_ORB_Get_Property("n", orb.data(), len), c.orb_get) << c.what;
      EXPECT_EQ(DM_DCSGEN_Get_Property("n", dcsgen.data(), len), c.dcsgen_get) << c.what;
      EXPECT_EQ(Cfgmgr_Get_Property("n", cfgmgr.data(), len), c.cfgmgr_get) << c.what;
      const std::string delivered =
          std::string(c.value != nullptr ? c.value : "").substr(0, len - 1);
      EXPECT_EQ(cfgmgr.text(), delivered) << c.what;
      EXPECT_TRUE(c.value != nullptr ? orb.text() == delivered : orb.untouched()) << c.what;
      EXPECT_TRUE(c.value != nullptr && c.dcsgen_get == 0 ? dcsgen.text() == delivered
                                                          : dcsgen.untouched())
          << c.what;
    }
    EXPECT_EQ(DM_ORB_Set_Property("n", "v"), c.orb_set) << c.what;
    EXPECT_EQ(DM_DCSGEN_Set_Property("n", "v"), c.dcsgen_set) << c.what;
    EXPECT_EQ(Cfgmgr_Set_Property("n", "v"), c.cfgmgr_set) << c.what;
    EXPECT_EQ(FakeStore::instance().calls().empty(), c.orb_get != 4)
        << c.what << ": only status 4 leads to the store";
  }
}

TEST(DaemonProperties, RefuseMissingArgumentsWithoutAsking) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  FakeDaemon mapping(kMappingSocket);
  Out out(8);
  EXPECT_EQ(DM_ORB_Get_Property(nullptr, out.data(), 8), 1);
  EXPECT_EQ(DM_ORB_Get_Property("n", nullptr, 8), 1);
  EXPECT_EQ(DM_DCSGEN_Get_Property("n", out.data(), 0), 1);
  EXPECT_EQ(DM_ORB_Set_Property("n", nullptr), 1);
  EXPECT_EQ(DM_DCSGEN_Set_Property(nullptr, "v"), 1);
  EXPECT_EQ(Cfgmgr_Get_Property(nullptr, out.data(), 8), 2);
  EXPECT_EQ(Cfgmgr_Get_Property("", out.data(), 8), 2);
  EXPECT_EQ(Cfgmgr_Get_Property("n", nullptr, 8), 2);
  EXPECT_EQ(Cfgmgr_Get_Property("n", out.data(), 0), 2);
  EXPECT_TRUE(out.untouched());
  EXPECT_EQ(Cfgmgr_Set_Property(nullptr, "1"), 1);
  EXPECT_EQ(Cfgmgr_Set_Property("", "1"), 1);
  EXPECT_EQ(Cfgmgr_Set_Property("n", nullptr), 1);
  EXPECT_EQ(is_same_value(nullptr, ""), 0);
  EXPECT_EQ(is_same_value("n", nullptr), 0);
  EXPECT_EQ(mapping.request_count(), 0U);
}

}  // namespace
}  // namespace tessera::test
