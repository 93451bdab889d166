// The kit under faults: the store's database on a full, read-only, vanished or corrupt file
// system, a daemon killed in the middle of a request, a client that sends half a message and
// hangs, and more connections than the daemon has workers. In each case the caller gets a failure
// status, the daemon logs a clear line, no committed setting is lost or half-written, and the
// daemon goes on serving. The test talks to the mapping daemon through the library's own exchange;
// the database lives on a small tmpfs of this test's namespace.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "fake_daemon.h"
#include "kit_support.h"
#include "tessera/orb_cfg.h"

namespace tessera::kit::test {
namespace {

using tessera::test::kMappingSocket;

constexpr int32_t kStoreFailed = 5;  // the daemon's refusal when its store can't be used

std::string dcs_get(const std::string &name) {
  char value[1280] = "";
  const int32_t status = DM_DCSGEN_Get_Property(name.c_str(), value, sizeof value);
  return status == 0 ? value : "(status " + std::to_string(status) + ")";
}

int32_t dcs_set(const std::string &name, const std::string &value) {
  return DM_DCSGEN_Set_Property(name.c_str(), value.c_str());
}

class StoreFaults : public ::testing::Test {
 protected:
  void SetUp() override {
    TESSERA_REQUIRE_PRIVATE_NAMESPACE();
    ASSERT_EQ(::mount("tessera-store", dir_.path().c_str(), "tmpfs", 0, "size=256k,mode=0700"), 0)
        << std::strerror(errno);
    ::setenv("TESSERA_STORE_DB", db().c_str(), 1);
    daemon_ = std::make_unique<Daemon>(kMappingd, kMappingSocket);
    ASSERT_EQ(dcs_set("dcs/kept", "committed"), 0);
  }
  void TearDown() override {
    daemon_.reset();
    ::umount2(dir_.path().c_str(), MNT_DETACH);
    ::unsetenv("TESSERA_STORE_DB");
  }
  std::string db() const { return dir_.file("store.db"); }
  void remount(unsigned long flags) {
    ASSERT_EQ(::mount(nullptr, dir_.path().c_str(), "tmpfs", MS_REMOUNT | flags, "size=256k"), 0)
        << std::strerror(errno);
  }
  // The daemon is still there for the next client, and the committed setting still reads.
  void expect_serving() { EXPECT_EQ(dcs_get("dcs/kept"), "committed"); }

  tessera::test::ScratchDir dir_;
  std::unique_ptr<Daemon> daemon_;
};

TEST_F(StoreFaults, AFullFileSystemRefusesWritesWholeAndTakesThemAgainOnceThereIsRoom) {
  {  // full, then 32 KiB given back: some writes pass before one fails
    std::ofstream filler(dir_.file("filler"), std::ios::binary);
    const std::string block(4096, 'f');
    while (filler.write(block.data(), block.size())) {
    }
  }
  ASSERT_EQ(::truncate(dir_.file("filler").c_str(),
                       std::filesystem::file_size(dir_.file("filler")) - 32768),
            0);
  // Writes go on until one needs room that isn't there; those that said yes must all be kept.
  const std::string value(320, 'v');  // the most a DCSGEN value holds
  int written = 0;
  int32_t status = 0;
  while (written < 500 && (status = dcs_set("dcs/" + std::to_string(written), value)) == 0) {
    ++written;
  }
  ASSERT_EQ(status, kStoreFailed) << "after " << written << " writes";
  ASSERT_GT(written, 0);
  EXPECT_NE(daemon_->log_line_with("database or disk is full"), "");
  expect_serving();
  const std::string refused = "dcs/" + std::to_string(written);
  EXPECT_EQ(dcs_get(refused), "(status 1)") << "the refused write left nothing behind";

  ASSERT_EQ(::unlink(dir_.file("filler").c_str()), 0);
  EXPECT_EQ(dcs_set(refused, value), 0);
  for (int i = 0; i <= written; ++i) {
    ASSERT_EQ(dcs_get("dcs/" + std::to_string(i)), value) << i;
  }
  EXPECT_EQ(tessera_store_check(), TESSERA_STORE_OK);
}

TEST_F(StoreFaults, AReadOnlyFileSystemServesReadsAndRefusesWrites) {
  EXPECT_EQ(daemon_->stop(SIGTERM), 0);  // nothing may hold the file open for writing
  remount(MS_RDONLY);
  daemon_->restart();
  expect_serving();
  EXPECT_EQ(dcs_set("dcs/kept", "changed"), kStoreFailed);
  EXPECT_EQ(dcs_set("dcs/new", "value"), kStoreFailed);
  EXPECT_NE(daemon_->log_line_with("readonly database"), "");
  expect_serving();

  EXPECT_EQ(daemon_->stop(SIGTERM), 0);
  remount(0);
  daemon_->restart();
  EXPECT_EQ(dcs_set("dcs/new", "value"), 0);
  EXPECT_EQ(dcs_get("dcs/new"), "value");
  expect_serving();
}

// A database removed under a running daemon must not take its writes where nobody else sees
// them: the daemon opens the one at the path, which every other process sees too.
TEST_F(StoreFaults, ADatabaseRemovedWhileInUseIsOpenedAfreshAtItsPath) {
  for (const char *suffix : {"", "-wal", "-shm"}) {
    ::unlink((db() + suffix).c_str());
  }
  EXPECT_EQ(dcs_get("dcs/kept"), "(status 1)") << "gone with the file";
  EXPECT_NE(daemon_->log_line_with("was removed or replaced while in use"), "");
  EXPECT_EQ(dcs_set("dcs/after", "seen"), 0);
  char value[16] = "";
  EXPECT_EQ(tessera_store_get_mapped(TESSERA_STORE_DCSGEN, "dcs/after", value, sizeof value),
            TESSERA_STORE_OK);
  EXPECT_STREQ(value, "seen");
}

// A corrupt database is never used and never replaced: the daemon refuses to start and says
// why, the tools' own store calls fail, and the file stays as it was for whoever mends it.
TEST_F(StoreFaults, ACorruptDatabaseIsNeitherUsedNorReplaced) {
  EXPECT_EQ(daemon_->stop(SIGTERM), 0);
  for (const char *suffix : {"-wal", "-shm"}) {
    ::unlink((db() + suffix).c_str());
  }
  std::string garbage(8192, '\0');
  for (std::size_t i = 0; i < garbage.size(); ++i) {
    garbage[i] = static_cast<char>(i * 7919 % 251);
  }
  tessera::test::write_file(db(), garbage);

  Child start({kMappingd, "--foreground"}, true);
  EXPECT_EQ(start.wait(), 1 << 8);
  EXPECT_NE(start.output().find("file is not a database"), std::string::npos) << start.output();
  EXPECT_NE(start.output().find("cannot be used"), std::string::npos) << start.output();
  int32_t number = 0;
  EXPECT_EQ(orb().get_int("gui_int_http_port", &number), 0);
  EXPECT_EQ(orb().set_int("gui_int_http_port", 1, 1), 0);
  EXPECT_EQ(tessera::test::read_file(db()), garbage);
}

class DaemonFaults : public ::testing::Test {
 protected:
  void SetUp() override {
    TESSERA_REQUIRE_PRIVATE_NAMESPACE();
    daemon_ = std::make_unique<Daemon>(kMappingd, kMappingSocket);
    ASSERT_EQ(tessera_store_map_property(TESSERA_STORE_MAPPED, "TELNET/port", "23"), 0);
  }
  static std::string get(const char *name) {
    char value[64] = "";
    const int32_t status = DM_ORB_Get_Property(name, value, sizeof value);
    return status == 0 ? value : "(status " + std::to_string(status) + ")";
  }

  ScratchStore scratch_;
  std::unique_ptr<Daemon> daemon_;
};

// The daemon's write waits for the store's write lock, which this test holds, when the daemon is
// killed: the caller's exchange fails, and the setting keeps its committed value.
TEST_F(DaemonFaults, ADaemonKilledInTheMiddleOfAWriteFailsItsCallerAndChangesNothing) {
  ASSERT_EQ(tessera_store_begin(), TESSERA_STORE_OK);
  int32_t status = -1;
  std::thread caller([&status] { status = DM_ORB_Set_Property("TELNET/port", "2323"); });
  std::this_thread::sleep_for(std::chrono::milliseconds(300));  // the request on its way
  EXPECT_EQ(daemon_->stop(SIGKILL) & 0x7f, SIGKILL);
  caller.join();
  EXPECT_EQ(status, 1) << "the exchange failed";
  ASSERT_EQ(tessera_store_rollback(), TESSERA_STORE_OK);

  daemon_->restart();
  EXPECT_NE(daemon_->log_line_with("replaced the stale socket"), "");
  EXPECT_EQ(get("TELNET/port"), "23");
  EXPECT_EQ(tessera_store_check(), TESSERA_STORE_OK);
}

// Half a request and then silence: the client gets a whole refusal once the daemon stops
// waiting, the daemon says why, and other clients are served meanwhile.
TEST_F(DaemonFaults, AClientThatSendsHalfAMessageAndHangsIsRefusedAndOthersAreServed) {
  const int stalled = connect_to(kMappingSocket);
  ASSERT_GE(stalled, 0);
  const std::vector<uint8_t> half(862, 1);
  ASSERT_EQ(::send(stalled, half.data(), half.size(), MSG_NOSIGNAL), 862);
  EXPECT_EQ(get("TELNET/port"), "23");

  std::vector<uint8_t> reply(1724);
  std::size_t got = 0;
  for (ssize_t n; got < reply.size() &&
                  (n = ::recv(stalled, reply.data() + got, reply.size() - got, 0)) > 0;) {
    got += static_cast<std::size_t>(n);
  }
  ::close(stalled);
  ASSERT_EQ(got, 1724U);
  EXPECT_EQ(reply[0], 3) << "refused";
  EXPECT_EQ(reply[8], 1) << "status 1: malformed";
  EXPECT_NE(daemon_->log_line_with("refused a request of 862 bytes, short of 1724"), "");
  EXPECT_EQ(get("TELNET/port"), "23");
}

// Connections that send nothing, first more than the daemon's 16 workers, then more than can
// wait for them. The first kind delays other clients, who are served; past the second, a new
// connection is closed unanswered, so its caller fails at once instead of waiting, and the daemon
// says so. Once the flood is gone, everybody is served again.
TEST_F(DaemonFaults, AFloodOfConnectionsBeyondTheWorkersFailsClearlyAndPasses) {
  rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
  limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 2048);
  ::setrlimit(RLIMIT_NOFILE, &limit);
  if (limit.rlim_cur < 2048) {
    GTEST_SKIP() << "no room for 1100 connections: at most " << limit.rlim_cur << " descriptors";
  }
  std::vector<int> flood;
  for (int i = 0; i < 100; ++i) {
    flood.push_back(connect_to(kMappingSocket));
  }
  EXPECT_EQ(get("TELNET/port"), "23");
  for (int i = 0; i < 1100; ++i) {
    flood.push_back(connect_to(kMappingSocket));
  }
  const std::string beyond = get("TELNET/port");
  EXPECT_TRUE(beyond == "23" || beyond == "(status 1)") << beyond;
  EXPECT_NE(daemon_->log_line_with("connections wait for a worker: closed a new one unanswered"),
            "");
  for (const int fd : flood) {
    ::close(fd);
  }
  EXPECT_EQ(get("TELNET/port"), "23");
}

}  // namespace
}  // namespace tessera::kit::test
