// The two daemons as processes at their real sockets, driven through libtessera.so.1 by the
// client program, with the SQLite store behind them.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "fake_daemon.h"
#include "kit_support.h"
#include "tessera/session.h"

namespace tessera::kit::test {
namespace {

using tessera::test::kMappingSocket;
using tessera::test::kSessionSocket;

class Daemons : public ::testing::Test {
 protected:
  void SetUp() override {
    TESSERA_REQUIRE_PRIVATE_NAMESPACE();
    mapping = std::make_unique<Daemon>(kMappingd, kMappingSocket);
    session_daemon = std::make_unique<Daemon>(kSessiond, kSessionSocket);
  }

  // Runs the client with `commands` (split at blanks) and then `more`; its output lines.
  static std::vector<std::string> client_lines(const std::string &commands,
                                               const std::vector<std::string> &more = {}) {
    std::vector<std::string> argv{kClient};
    std::istringstream words(commands);
    for (std::string word; words >> word;) {
      argv.push_back(word);
    }
    argv.insert(argv.end(), more.begin(), more.end());
    const Outcome result = run(std::move(argv));
    EXPECT_EQ(result.code, 0) << result.output;
    std::vector<std::string> lines;
    std::istringstream output(result.output);
    for (std::string line; std::getline(output, line);) {
      lines.push_back(line);
    }
    return lines;
  }

  ScratchStore scratch;
  std::unique_ptr<Daemon> mapping;
  std::unique_ptr<Daemon> session_daemon;
};

std::string stored(const char *key) {
  char text[64] = "(none)";
  tessera_store_get_value(key, nullptr, text, sizeof text);
  return text;
}

TEST_F(Daemons, ServeOwnedPropertiesAndSendTheRestToTheStore) {
  ASSERT_EQ(tessera_store_map_property(TESSERA_STORE_MAPPED, "TELNET/port", "23"), 0);
  ASSERT_EQ(tessera_store_set_value("gui_int_http_port", TESSERA_STORE_INT, "80"), 0);

  const auto lines = client_lines(
      "get TELNET/port set TELNET/port 2323 get TELNET/port get WEBSERVER/http_port "
      "set WEBSERVER/http_port 8080 get WEBSERVER/http_port dcs-set x/y hello dcs-get x/y "
      "dcs-get x/z");
  EXPECT_EQ(lines, (std::vector<std::string>{"0 23", "0", "0 2323", "0 80", "0", "0 8080", "0",
                                             "0 hello", "1 "}));
  char value[16];
  EXPECT_EQ(stored("pm_int_telnet_port"), "(none)") << "the daemon's property stays its own";
  EXPECT_EQ(
      tessera_store_get_mapped(TESSERA_STORE_MAPPED, "WEBSERVER/http_port", value, sizeof value),
      TESSERA_STORE_NOT_FOUND)
      << "a fallback write doesn't make the daemon own the property";
}

TEST_F(Daemons, NetworkWritesReadBackFieldByField) {
  const std::vector<std::pair<std::string, std::string>> fields = {
      {"DNS/mir_name", "mir-7"},          {"DNS/server1", "10.0.0.53"},
      {"DNS/server2", "10.0.0.54"},       {"DNS/dhcp_enable", "1"},
      {"NETWORK/NIC/mtu", "1500"},        {"NETWORK/NIC/selection", "2"},
      {"IPV6/prefix_length", "64"},       {"IPV6/address", "fe80::5"},
      {"IPV6/DNSServer2", "2001:db8::53"}};
  std::string commands;
  std::vector<std::string> expected;
  for (const auto &[name, value] : fields) {
    commands += "set " + name + " " + value + " ";
    expected.push_back("0");
  }
  for (const auto &[name, value] : fields) {  // every write kept the others
    commands += "get " + name + " ";
    expected.push_back("0 " + value);
  }
  // -1 is the marker of "unchanged", so it changes nothing; the empty text clears.
  commands +=
      "set DNS/dhcp_enable 0 get DNS/dhcp_enable set NETWORK/NIC/selection -1 "
      "get NETWORK/NIC/selection set DNS/server1";
  expected.insert(expected.end(), {"0", "0 0", "0", "0 2", "0", "0 ", "0 10.0.0.54"});
  EXPECT_EQ(client_lines(commands, {"", "get", "DNS/server1", "get", "DNS/server2"}), expected);
}

TEST_F(Daemons, ListInspectAndCloseSessions) {
  ASSERT_EQ(add_session(session(10, "webgui", "root", "192.168.1.5")), 0);
  ASSERT_EQ(add_session(session(11, "vKVM", "root", "192.168.1.5", 10)), 0);
  ASSERT_EQ(add_session(session(12, "vMedia", "root", "192.168.1.5", 10)), 0);
  ASSERT_EQ(add_session(session(20, "SSH", "operator", "localhost")), 0);
  ASSERT_EQ(tessera_store_set_user("root", 0x1FF), 0);

  const std::string webgui = std::to_string(str2ssntype("webgui"));
  const std::string ssh = std::to_string(str2ssntype("SSH"));
  const auto lines = client_lines(
      "sessions sessions-of operator info 10 info 20 close 10 sessions info 11 orb-close 20 "
      "close 20");
  ASSERT_EQ(lines.size(), 9U);
  EXPECT_EQ(lines[0], "0 10 11 12 20");
  EXPECT_EQ(lines[1], "0 20");
  EXPECT_EQ(lines[2], "0 root 0501a8c0 192.168.1.5 " + webgui + " 1 1 511 100");
  EXPECT_EQ(lines[3], "0 operator 0100007f 127.0.0.1 " + ssh + " 0 0 0 200");
  EXPECT_EQ(lines[4], "0");
  EXPECT_EQ(lines[5], "0 20") << "closed with its children";
  EXPECT_EQ(lines[6].substr(0, 5), "8198 ");
  EXPECT_EQ(lines[7], "0");
  EXPECT_EQ(lines[8], "0") << "a refusal is still an answer";

  tessera_store_event events[3]{};
  size_t count = 0;
  ASSERT_EQ(tessera_store_read_events(0, events, 3, &count), 0);
  ASSERT_EQ(count, 2U);
  EXPECT_STREQ(events[0].name, "session_closed");
  EXPECT_EQ(events[0].arg1, 10);
  EXPECT_EQ(events[0].arg2, 0);
  EXPECT_EQ(events[1].arg1, 20);
  EXPECT_EQ(events[1].arg2, 1) << "closed by ssn_orb_close";
}

// One exchange over a raw connection: sends `bytes`, optionally shuts the sending side, and reads
// the reply until the daemon closes.
std::vector<uint8_t> raw_exchange(const char *socket, const std::vector<uint8_t> &bytes,
                                  bool shut) {
  const int fd = connect_to(socket);
  EXPECT_GE(fd, 0) << socket;
  if (!bytes.empty()) {
    ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
  }
  if (shut) {
    ::shutdown(fd, SHUT_WR);
  }
  std::vector<uint8_t> reply;
  uint8_t buffer[4096];
  for (ssize_t n; (n = ::recv(fd, buffer, sizeof buffer, 0)) > 0;) {
    reply.insert(reply.end(), buffer, buffer + n);
  }
  ::close(fd);
  return reply;
}

TEST_F(Daemons, AnswerGarbageWholeAndKeepServing) {
  ASSERT_EQ(tessera_store_map_property(TESSERA_STORE_MAPPED, "TELNET/port", "23"), 0);
  std::mt19937 random(11);
  std::vector<uint8_t> noise(5000);
  for (auto &byte : noise) {
    byte = static_cast<uint8_t>(random());
  }
  noise[0] = 0x55;  // never a request's direction
  for (const char *socket : {kMappingSocket, kSessionSocket}) {
    for (const std::size_t size : {0UL, 5UL, 1723UL, 1724UL, 5000UL}) {
      const std::vector<uint8_t> request(noise.begin(), noise.begin() + static_cast<long>(size));
      const auto reply = raw_exchange(socket, request, true);
      ASSERT_EQ(reply.size(), 1724U) << socket << " " << size;
      EXPECT_EQ(reply[0], 3) << "refused";
    }
  }
  EXPECT_EQ(client_lines("get TELNET/port"), std::vector<std::string>{"0 23"});
  ASSERT_EQ(add_session(session(5, "SSH")), 0);
  EXPECT_EQ(client_lines("close 5 sessions"), (std::vector<std::string>{"0", "0"}));
}

bool exists(const char *path) {
  struct stat info {};
  return ::lstat(path, &info) == 0;
}

TEST_F(Daemons, StartOverStaleSocketsRefuseLiveOnesAndStopCleanly) {
  const Outcome second = run({kMappingd, "--foreground"});
  EXPECT_EQ(second.code, 1) << "the socket is live";
  EXPECT_EQ(mapping->stop(SIGINT), 0);
  EXPECT_FALSE(exists(kMappingSocket)) << "removed at the stop";

  EXPECT_EQ(session_daemon->stop(SIGKILL) & 0x7f, SIGKILL);
  ASSERT_TRUE(exists(kSessionSocket)) << "left behind";
  // In the background, with a pid file: the start returns once it serves.
  const std::string pid_file = scratch.path() + ".pid";
  ASSERT_EQ(run({kSessiond, "--pid-file", pid_file}).code, 0);
  ASSERT_TRUE(wait_for_socket(kSessionSocket, std::chrono::seconds(5)));
  pid_t pid = 0;
  std::ifstream(pid_file) >> pid;
  ASSERT_GT(pid, 0);
  ASSERT_EQ(::kill(pid, SIGTERM), 0);
  for (int i = 0; i < 2000 && exists(pid_file.c_str()); ++i) {
    ::usleep(5000);
  }
  EXPECT_FALSE(exists(pid_file.c_str()));
  EXPECT_FALSE(exists(kSessionSocket));
  EXPECT_EQ(run({kSessiond, "--bogus"}).code, 2);
}

}  // namespace
}  // namespace tessera::kit::test
