// The test kit's replacements behave as the tests of every family rely on. Remote functions,
// events and the session listings are shown at work by the family tests that use them.
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

TEST(FakeStore, KeepsTypedValuesRecordsEachCallAndFailsOnRequest) {
  FakeStore &store = FakeStore::instance();
  ASSERT_NE(orb_config_set_bool("on", 7, 1), 0);
  char text[8] = "keep";
  EXPECT_EQ(orb_config_get_str("on", text), 0) << "a get of another type fails";
  EXPECT_STREQ(text, "keep");
  const auto calls = store.calls();
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_EQ(calls[0].function, "orb_config_set_bool");
  EXPECT_EQ(calls[0].name, "on");
  EXPECT_EQ(calls[0].value, 1);
  EXPECT_EQ(calls[1].output, text);
  store.fail("orb_config_set_int", "port");
  EXPECT_EQ(orb_config_set_int("port", 3, 1), 0);
  EXPECT_EQ(store.value("port"), std::nullopt) << "a failed write changes nothing";
  EXPECT_NE(orb_config_set_int("other", 3, 1), 0);
}

TEST(CaptureSink, KeepsLevelFacilityFormatAndText) {
  velaprintf(5, 3, "DEBUG: %s [%d]: prop_type = %d\n", "orb_cfg.cpp", 42, 1);
  os_info("%s", "ssn_close: No Resources\n");
  const auto reports = CaptureSink::instance().reports();
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].level, 5);
  EXPECT_EQ(reports[0].facility, 3);
  EXPECT_EQ(reports[0].text, "DEBUG: orb_cfg.cpp [42]: prop_type = 1\n");
  EXPECT_EQ(reports[0].message, "prop_type = 1\n");
  EXPECT_EQ(CaptureSink::instance().count("DEBUG: %s [%d]: prop_type = %d\n"), 1U);
  EXPECT_EQ(CaptureSink::instance().os_info_lines(),
            std::vector<std::string>{"ssn_close: No Resources\n"});
}

// One exchange as the library makes it: one send, one recv. The bytes received, or -1 in
// `received` when no daemon listens.
std::vector<uint8_t> ask(const std::vector<uint8_t> &request, ssize_t *received) {
  std::vector<uint8_t> reply(daemon_message::kSize, 0xAA);
  const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, kMappingSocket);
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
  std::strcpy(reinterpret_cast<char *>(request.data() + daemon_message::kName), "SSH/port");
  ssize_t received = 0;
  {
    FakeDaemon daemon(kMappingSocket);
    daemon.reply(daemon_message::success("80"));
    EXPECT_EQ(daemon_message::value(ask(request, &received)), "80");
    EXPECT_EQ(received, static_cast<ssize_t>(daemon_message::kSize));
    daemon.reply({});
    ask(request, &received);
    EXPECT_EQ(received, 0) << "the daemon closes without answering";
    EXPECT_EQ(daemon.requests(), std::vector<std::vector<uint8_t>>(2, request));
  }
  ask(request, &received);
  EXPECT_EQ(received, -1) << "the socket is gone once the daemon stops";
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
