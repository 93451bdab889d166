// The test kit's replacements behave as the tests of every family rely on.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "capture_sink.h"
#include "fake_daemon.h"
#include "fake_execve.h"
#include "fake_store.h"
#include "tessera/store_client.h"

namespace tessera::test {
namespace {

FakeStore &store() {
  return FakeStore::instance();
}

TEST(FakeStore, KeepsTypedValuesRecordsEachCallAndFailsOnRequest) {
  ASSERT_NE(orb_config_set_int("port", 8080, 1), 0);
  ASSERT_NE(orb_config_set_bool("on", 7, 1), 0);
  ASSERT_NE(orb_config_set_str("name", "mirel-controller", 1), 0);
  int32_t number = 0;
  uint8_t flag = 0;
  char text[8] = "keep";
  EXPECT_NE(orb_config_get_int("port", &number), 0);
  EXPECT_EQ(number, 8080);
  EXPECT_NE(orb_config_get_bool("on", &flag), 0);
  EXPECT_EQ(flag, 1);
  EXPECT_EQ(orb_config_get_str("port", text), 0) << "a get of another type fails";
  EXPECT_EQ(orb_config_get_bool("missing", &flag), 0);
  EXPECT_STREQ(text, "keep");
  EXPECT_NE(orb_config_get_str_n("name", text, sizeof text), 0);
  EXPECT_STREQ(text, "mirel-c");

  const auto calls = store().calls();
  ASSERT_EQ(calls.size(), 8U);
  EXPECT_EQ(calls[1].function, "orb_config_set_bool");
  EXPECT_EQ(calls[1].name, "on");
  EXPECT_EQ(calls[1].value, 1);
  EXPECT_EQ(calls[1].flag, 1);
  EXPECT_EQ(calls[7].capacity, sizeof text);
  EXPECT_EQ(calls[7].output, text);

  store().fail("orb_config_get_int", "port");
  EXPECT_EQ(orb_config_get_int("port", &number), 0);
  store().fail("orb_config_set_int");
  EXPECT_EQ(orb_config_set_int("other", 3, 1), 0);
  EXPECT_EQ(store().value("other"), std::nullopt) << "a failed write changes nothing";
  store().fail("orb_function_execute", "netSetNetConfig", 7);
  uint32_t length = 0;
  EXPECT_EQ(orb_function_execute("netSetNetConfig", &length, nullptr, 0, nullptr), 7);
  EXPECT_EQ(orb_function_execute("unknown", &length, nullptr, 0, nullptr), -1);
}

// Remote functions and events are shown at work by the property service's tests.
TEST(FakeStore, ListsSessionsByTypeAndHandsBackTheFullCount) {
  store().add_session(7, make_session_record({.type = "SSH", .user = "root", .children = 2}),
                      {8, 9});
  store().add_session(8, make_session_record({.type = "vKVM"}));
  store().add_session(9, make_session_record({.type = "vMedia"}));
  uint32_t ids[4] = {};
  int32_t count = 4;
  EXPECT_EQ(orb_session_get_type_info("", &count, ids), 0);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(ids[2], 9U);
  count = 0;
  EXPECT_EQ(orb_session_get_type_info("vKVM", &count, ids), 0);
  EXPECT_EQ(count, 1) << "the number is handed back even when nothing fits";
  count = 1;
  EXPECT_EQ(orb_session_get_children_info(7, &count, ids), 0);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(ids[0], 8U);
  unsigned char record[kSessionRecordSize] = {};
  ASSERT_NE(orb_session_get_info(7, record), 0);
  EXPECT_STREQ(reinterpret_cast<char *>(record + 68), "root");
  EXPECT_EQ(orb_session_get_info(99, record), 0);
}

TEST(CaptureSink, KeepsLevelFacilityFormatAndSplitText) {
  velaprintf(5, 3, "DEBUG: %s [%d]: prop_type = %d\n", "orb_cfg.cpp", 42, 1);
  os_info("%s", "ssn_close: No Resources\n");
  const std::string big(5000, 'x');
  velaprintf(2, 3, "ERROR: %s [%d]: %s\n", "f", 1, big.c_str());
  const auto reports = CaptureSink::instance().reports();
  ASSERT_EQ(reports.size(), 2U);
  EXPECT_EQ(reports[0].level, 5);
  EXPECT_EQ(reports[0].facility, 3);
  EXPECT_EQ(reports[0].format, "DEBUG: %s [%d]: prop_type = %d\n");
  EXPECT_EQ(reports[0].text, "DEBUG: orb_cfg.cpp [42]: prop_type = 1\n");
  EXPECT_EQ(reports[0].kind, "DEBUG");
  EXPECT_EQ(reports[0].file, "orb_cfg.cpp");
  EXPECT_EQ(reports[0].line, 42);
  EXPECT_EQ(reports[0].message, "prop_type = 1\n");
  EXPECT_EQ(reports[1].message, big + "\n");
  EXPECT_EQ(CaptureSink::instance().os_info_lines(),
            std::vector<std::string>{"ssn_close: No Resources\n"});
  EXPECT_EQ(CaptureSink::instance().count("DEBUG: %s [%d]: prop_type = %d\n"), 1U);
}

// A client that speaks to a daemon as the library does: one send, one recv. Returns the bytes
// received, or nothing with -1 in `received` when no daemon listens.
std::vector<uint8_t> exchange(const char *path, const std::vector<uint8_t> &request,
                              ssize_t *received) {
  std::vector<uint8_t> reply(daemon_message::kSize, 0xAA);
  const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, path);
  *received = -1;
  if (::connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0) {
    ::send(fd, request.data(), request.size(), 0);
    *received = ::recv(fd, reply.data(), reply.size(), 0);
  }
  ::close(fd);
  return reply;
}

TEST(FakeDaemon, KeepsWholeRequestsAndAnswersAsScripted) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  std::vector<uint8_t> request(daemon_message::kSize, 0);
  request[daemon_message::kOperation] = 11;
  std::strcpy(reinterpret_cast<char *>(request.data() + daemon_message::kName), "SSH/port");
  ssize_t received = 0;
  {
    FakeDaemon daemon(kMappingSocket);
    daemon.reply(daemon_message::success("80"));
    auto reply = exchange(kMappingSocket, request, &received);
    EXPECT_EQ(received, static_cast<ssize_t>(daemon_message::kSize));
    EXPECT_EQ(reply[daemon_message::kDirection], 2);
    EXPECT_EQ(daemon_message::value(reply), "80");
    daemon.reply(daemon_message::refusal(7));
    reply = exchange(kMappingSocket, request, &received);
    EXPECT_EQ(reply[daemon_message::kDirection], 3);
    EXPECT_EQ(daemon_message::u32(reply, daemon_message::kStatus), 7U);
    daemon.reply({2});
    reply = exchange(kMappingSocket, request, &received);
    EXPECT_EQ(received, 1);
    EXPECT_EQ(reply[0], 2);
    daemon.reply({});
    exchange(kMappingSocket, request, &received);
    EXPECT_EQ(received, 0) << "the daemon closes without answering";
    EXPECT_EQ(daemon.requests(), std::vector<std::vector<uint8_t>>(4, request));
    EXPECT_EQ(daemon_message::name(daemon.requests()[0]), "SSH/port");
  }
  exchange(kMappingSocket, request, &received);
  EXPECT_EQ(received, -1) << "the socket is gone once the daemon stops";
  FakeDaemon session(kSessionSocket);
  exchange(kSessionSocket, request, &received);
  EXPECT_EQ(session.request_count(), 1U);
}

TEST(FakeExecve, FailsWithTheErrorTheEnvironmentNames) {
  ::setenv(kExecveFailVariable, "13", 1);
  char sh[] = "/bin/true";
  char *argv[] = {sh, nullptr};
  errno = 0;
  EXPECT_EQ(tattletale_standin1_execve("/bin/true", argv, environ), -1);
  EXPECT_EQ(errno, 13);
  ::unsetenv(kExecveFailVariable);
}

}  // namespace
}  // namespace tessera::test
