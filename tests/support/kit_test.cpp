// The test kit's replacements behave as the tests of every family rely on.
#include <gtest/gtest.h>

#include <cstring>
#include <thread>

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

FakeStore &store() { return FakeStore::instance(); }

TEST(FakeStore, KeepsTypedValuesAndRecordsEachCall) {
  ASSERT_NE(orb_config_set_int("port", 8080, 1), 0);
  ASSERT_NE(orb_config_set_bool("on", 7, 1), 0);
  ASSERT_NE(orb_config_set_str("name", "mirel", 1), 0);

  int32_t number = 0;
  uint8_t flag = 0;
  char text[16] = {};
  EXPECT_NE(orb_config_get_int("port", &number), 0);
  EXPECT_EQ(number, 8080);
  EXPECT_NE(orb_config_get_bool("on", &flag), 0);
  EXPECT_EQ(flag, 1);
  EXPECT_NE(orb_config_get_str("name", text), 0);
  EXPECT_STREQ(text, "mirel");

  const auto sets = store().calls("orb_config_set_bool");
  ASSERT_EQ(sets.size(), 1U);
  EXPECT_EQ(sets[0].name, "on");
  EXPECT_EQ(sets[0].value, 1);
  EXPECT_EQ(sets[0].flag, 1);
  const auto gets = store().calls("orb_config_get_str");
  ASSERT_EQ(gets.size(), 1U);
  EXPECT_EQ(gets[0].output, text);
  EXPECT_EQ(store().calls().size(), 6U);
}

TEST(FakeStore, GetFailsForMissingKeysAndOtherTypes) {
  store().set_int("n", 5);
  char text[8] = "keep";
  uint8_t flag = 9;
  EXPECT_EQ(orb_config_get_str("n", text), 0);
  EXPECT_STREQ(text, "keep");
  EXPECT_EQ(orb_config_get_bool("missing", &flag), 0);
  EXPECT_EQ(flag, 9);
}

TEST(FakeStore, CountedReadHonoursAndRecordsItsCapacity) {
  store().set_str("long", "abcdefghij");
  char text[8] = {};
  EXPECT_NE(orb_config_get_str_n("long", text, sizeof text), 0);
  EXPECT_STREQ(text, "abcdefg");
  EXPECT_EQ(store().calls("orb_config_get_str_n").at(0).capacity, sizeof text);
}

TEST(FakeStore, FailsPerFunctionOrPerName) {
  store().set_int("a", 1);
  store().set_int("b", 2);
  int32_t number = 0;
  store().fail("orb_config_get_int", "a");
  EXPECT_EQ(orb_config_get_int("a", &number), 0);
  EXPECT_NE(orb_config_get_int("b", &number), 0);
  store().fail("orb_config_set_int");
  EXPECT_EQ(orb_config_set_int("b", 3, 1), 0);
  EXPECT_EQ(std::get<int32_t>(*store().value("b")), 2) << "a failed write changes nothing";
  store().fail("orb_function_execute", "netSetNetConfig", 7);
  uint32_t length = 0;
  EXPECT_EQ(orb_function_execute("netSetNetConfig", &length, nullptr, 0, nullptr), 7);
  EXPECT_EQ(orb_function_execute("unknown", &length, nullptr, 0, nullptr), -1);
}

TEST(FakeStore, RunsRemoteFunctionsAndRecordsTheirInput) {
  store().on_function("echo", [](uint32_t *length, const void *input, uint32_t capacity,
                                 void *output) {
    std::memcpy(output, input, std::min(*length, capacity));
    *length = 3;
    return 0;
  });
  uint32_t length = 4;
  char out[8] = {};
  EXPECT_EQ(orb_function_execute("echo", &length, "abcd", sizeof out, out), 0);
  EXPECT_STREQ(out, "abcd");
  EXPECT_EQ(length, 3U);
  const auto call = store().calls("orb_function_execute").at(0);
  EXPECT_EQ(call.length_in, 4U);
  EXPECT_FALSE(call.input_null);
  EXPECT_EQ(std::string(call.input.begin(), call.input.end()), "abcd");
  EXPECT_EQ(call.capacity, sizeof out);
}

TEST(FakeStore, ListsSessionsByTypeWithinTheCapacityAndCountsAll) {
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
  uint32_t child[1] = {};
  EXPECT_EQ(orb_session_get_children_info(7, &count, child), 0);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(child[0], 8U);

  unsigned char record[kSessionRecordSize] = {};
  ASSERT_NE(orb_session_get_info(7, record), 0);
  EXPECT_STREQ(reinterpret_cast<char *>(record + 68), "root");
  EXPECT_EQ(orb_session_get_info(99, record), 0);

  store().set_type_listing("", std::vector<uint32_t>(150, 1));
  count = 100;
  uint32_t many[100] = {};
  EXPECT_EQ(orb_session_get_type_info("", &count, many), 0);
  EXPECT_EQ(count, 150);
}

TEST(FakeStore, RecordsEvents) {
  store().set_event_result(5);
  EXPECT_EQ(orb_event_occurred("gui_event_rp_config_changed", 0, 0), 5);
  ASSERT_EQ(store().calls("orb_event_occurred").size(), 1U);
  EXPECT_EQ(store().calls()[0].name, "gui_event_rp_config_changed");
}

TEST(FakeStore, ServesManyThreadsAtOnce) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < 200; ++i) {
        const std::string key = "k" + std::to_string(t);
        orb_config_set_int(key.c_str(), i, 1);
        int32_t out = 0;
        orb_config_get_int(key.c_str(), &out);
      }
    });
  }
  for (auto &thread : threads) {
    thread.join();
  }
  EXPECT_EQ(store().calls().size(), 1600U);
  EXPECT_EQ(std::get<int32_t>(*store().value("k3")), 199);
}

TEST(CaptureSink, KeepsLevelFacilityFormatAndSplitText) {
  velaprintf(5, 3, "DEBUG: %s [%d]: prop_type = %d\n", "orb_cfg.cpp", 42, 1);
  os_info("%s", "ssn_close: No Resources\n");
  const auto reports = CaptureSink::instance().reports();
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].level, 5);
  EXPECT_EQ(reports[0].facility, 3);
  EXPECT_EQ(reports[0].format, "DEBUG: %s [%d]: prop_type = %d\n");
  EXPECT_EQ(reports[0].text, "DEBUG: orb_cfg.cpp [42]: prop_type = 1\n");
  EXPECT_EQ(reports[0].kind, "DEBUG");
  EXPECT_EQ(reports[0].file, "orb_cfg.cpp");
  EXPECT_EQ(reports[0].line, 42);
  EXPECT_EQ(reports[0].message, "prop_type = 1\n");
  EXPECT_EQ(CaptureSink::instance().os_info_lines(),
            std::vector<std::string>{"ssn_close: No Resources\n"});
  EXPECT_EQ(CaptureSink::instance().count("DEBUG: %s [%d]: prop_type = %d\n"), 1U);
}

TEST(CaptureSink, KeepsLongTextsWhole) {
  const std::string big(5000, 'x');
  velaprintf(2, 3, "ERROR: %s [%d]: %s\n", "f", 1, big.c_str());
  EXPECT_EQ(CaptureSink::instance().reports().at(0).message, big + "\n");
}

// A client that speaks to a daemon as the library does: one send, one recv.
std::vector<uint8_t> exchange(const char *path, const std::vector<uint8_t> &request,
                              ssize_t *received) {
  std::vector<uint8_t> reply(daemon_message::kSize, 0xAA);
  const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, path);
  if (::connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) {
    ::close(fd);
    *received = -1;
    return {};
  }
  ::send(fd, request.data(), request.size(), 0);
  *received = ::recv(fd, reply.data(), reply.size(), 0);
  ::close(fd);
  return reply;
}

class FakeDaemonTest : public ::testing::Test {
 protected:
  void SetUp() override { TESSERA_REQUIRE_PRIVATE_NAMESPACE(); }
};

TEST_F(FakeDaemonTest, ReceivesWholeRequestsAndAnswersAsScripted) {
  FakeDaemon daemon(kMappingSocket);
  std::vector<uint8_t> request(daemon_message::kSize, 0);
  request[daemon_message::kDirection] = 1;
  request[daemon_message::kOperation] = 11;
  std::strcpy(reinterpret_cast<char *>(request.data() + daemon_message::kName),
              "WEBSERVER/http_port");

  daemon.reply(daemon_message::success("80"));
  ssize_t received = 0;
  auto reply = exchange(kMappingSocket, request, &received);
  EXPECT_EQ(received, static_cast<ssize_t>(daemon_message::kSize));
  EXPECT_EQ(reply[daemon_message::kDirection], 2);
  EXPECT_EQ(daemon_message::value(reply), "80");

  daemon.reply(daemon_message::refusal(7));
  reply = exchange(kMappingSocket, request, &received);
  EXPECT_EQ(reply[daemon_message::kDirection], 3);
  EXPECT_EQ(daemon_message::u32(reply, daemon_message::kStatus), 7U);

  const auto requests = daemon.requests();
  ASSERT_EQ(requests.size(), 2U);
  EXPECT_EQ(requests[0], request);
  EXPECT_EQ(daemon_message::name(requests[1]), "WEBSERVER/http_port");
}

TEST_F(FakeDaemonTest, SendsShortRepliesAndNoReplyAtAll) {
  FakeDaemon daemon(kSessionSocket);
  const std::vector<uint8_t> request(daemon_message::kSize, 1);
  ssize_t received = 0;

  daemon.reply({2});
  auto reply = exchange(kSessionSocket, request, &received);
  EXPECT_EQ(received, 1);
  EXPECT_EQ(reply[0], 2);

  daemon.reply({});
  exchange(kSessionSocket, request, &received);
  EXPECT_EQ(received, 0) << "the daemon closes without answering";
}

TEST_F(FakeDaemonTest, SocketIsGoneOnceTheDaemonStops) {
  { FakeDaemon daemon(kMappingSocket); }
  ssize_t received = 0;
  exchange(kMappingSocket, std::vector<uint8_t>(daemon_message::kSize, 0), &received);
  EXPECT_EQ(received, -1);
}

}  // namespace
}  // namespace tessera::test

namespace tessera::test {
namespace {

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
