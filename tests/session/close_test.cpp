// Closing sessions through the session daemon, served at its real socket in the private namespace.
#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <thread>

#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "capture_sink.h"
#include "fake_daemon.h"
#include "tessera/session.h"

namespace tessera::test {
namespace {

namespace msg = daemon_message;

class SessionClose : public ::testing::Test {
 protected:
  void SetUp() override { TESSERA_REQUIRE_PRIVATE_NAMESPACE(); }
};

TEST_F(SessionClose, SendsOperation2WithTheIdAndTheOrbFlagAndNothingElse) {
  FakeDaemon session(kSessionSocket);
  FakeDaemon mapping(kMappingSocket);
  struct Case {
    int32_t (*close)(uint32_t);
    uint32_t id;
    uint32_t orb_close;
  };
  const Case cases[] = {{ssn_close, 42, 0}, {ssn_orb_close, 42, 1}, {ssn_close, 0, 0},
                        {ssn_orb_close, 0xFFFFFFFF, 1}};
  for (const auto &c : cases) {
    EXPECT_EQ(c.close(c.id), 0);
  }
  const auto requests = session.requests();
  ASSERT_EQ(requests.size(), std::size(cases));
  for (std::size_t i = 0; i < requests.size(); ++i) {
    msg::Bytes expected(msg::kSize, 0);
    expected[msg::kDirection] = 1;
    expected[msg::kOperation] = 2;
    std::memcpy(expected.data() + msg::kSessionId, &cases[i].id, 4);
    std::memcpy(expected.data() + msg::kOrbClose, &cases[i].orb_close, 4);
    EXPECT_EQ(requests[i], expected) << "request " << i;
  }
  EXPECT_EQ(mapping.request_count(), 0U);
}

TEST_F(SessionClose, AnyAnswerIsSuccessNoAnswerAndNoDaemonFailWith12307) {
  {
    FakeDaemon session(kSessionSocket);
    for (const auto &reply : {msg::refusal(7), msg::Bytes{0}, msg::success()}) {
      session.reply(reply);
      EXPECT_EQ(ssn_close(1), 0);
      EXPECT_EQ(ssn_orb_close(1), 0);
    }
    session.reply({});
    EXPECT_EQ(ssn_close(1), SSN_ERR_NO_DAEMON);
  }
  EXPECT_EQ(ssn_close(5), 12307);
  EXPECT_EQ(ssn_orb_close(5), 12307);
  EXPECT_TRUE(CaptureSink::instance().os_info_lines().empty());
}

// A daemon that hangs up before reading: the close fails, and the tool is neither killed by SIGPIPE
// (the send may meet the closed peer or not, depending on which side runs first) nor left with it
// blocked.
TEST_F(SessionClose, ADaemonThatHangsUpNeverKillsTheCaller) {
  const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, kSessionSocket);
  ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(listener, 8), 0);
  constexpr int kRounds = 50;
  std::thread hangup([listener] {
    for (int i = 0; i < kRounds; ++i) {
      ::close(::accept(listener, nullptr, nullptr));
    }
  });
  for (int i = 0; i < kRounds; ++i) {
    EXPECT_EQ(ssn_close(9), 12307);
  }
  hangup.join();
  ::close(listener);
  ::unlink(kSessionSocket);
  sigset_t mask;
  ASSERT_EQ(pthread_sigmask(SIG_SETMASK, nullptr, &mask), 0);
  EXPECT_EQ(sigismember(&mask, SIGPIPE), 0) << "the caller's signal mask is restored";
}

}  // namespace
}  // namespace tessera::test
