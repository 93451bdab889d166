// Many client processes at once through the daemons and the store, and the mapping daemon killed
// in the middle of that. The throughput is bench_kit's to report.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "fake_daemon.h"
#include "kit_support.h"

namespace tessera::kit::test {
namespace {

using tessera::test::kMappingSocket;
using tessera::test::kSessionSocket;

class Load : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!tessera::test::in_private_namespace()) {
      GTEST_SKIP() << "needs the private mount namespace: run it through ctest or tools/ns-run";
    }
    mapping = std::make_unique<Daemon>(kMappingd, kMappingSocket);
  }

  // Client c's properties: the even ones belong to the mapping daemon, the odd ones to the store.
  static std::string prefix(int c) { return "load.c" + std::to_string(c); }
  static void own_half(int clients, int count) {
    ASSERT_EQ(tessera_store_begin(), 0);
    for (int c = 0; c < clients; ++c) {
      for (int i = 0; i < count; i += 2) {
        const std::string name = prefix(c) + "." + std::to_string(i);
        ASSERT_EQ(tessera_store_map_property(TESSERA_STORE_MAPPED, name.c_str(), ""), 0);
      }
    }
    ASSERT_EQ(tessera_store_commit(), 0);
  }

  static std::vector<std::unique_ptr<Child>> start(int clients, int count, bool retry) {
    std::vector<std::unique_ptr<Child>> children;
    for (int c = 0; c < clients; ++c) {
      std::vector<std::string> argv{kClient, "load", prefix(c), std::to_string(count)};
      if (retry) {
        argv.push_back("retry");
      }
      children.push_back(std::make_unique<Child>(argv));
    }
    return children;
  }

  // Every value where it belongs, none crossed into another client's.
  static void expect_all_there(int clients, int count) {
    char value[128];
    for (int c = 0; c < clients; ++c) {
      for (int i = 0; i < count; ++i) {
        const std::string name = prefix(c) + "." + std::to_string(i);
        const std::string expected = prefix(c) + "-value-" + std::to_string(i * 7919);
        const int found =
            i % 2 == 0
                ? tessera_store_get_mapped(TESSERA_STORE_MAPPED, name.c_str(), value, sizeof value)
                : tessera_store_get_value(name.c_str(), nullptr, value, sizeof value);
        ASSERT_EQ(found, TESSERA_STORE_OK) << name;
        ASSERT_EQ(value, expected) << name;
      }
    }
    EXPECT_EQ(tessera_store_check(), TESSERA_STORE_OK);
  }

  ScratchStore scratch;
  std::unique_ptr<Daemon> mapping;
};

TEST_F(Load, EightClientsEachWriteAndReadBackAThousandProperties) {
  constexpr int kClients = 8;
  constexpr int kCount = 1000;
  own_half(kClients, kCount);
  auto children = start(kClients, kCount, false);
  long ops = 0;
  for (auto &child : children) {
    EXPECT_EQ(child->wait(), 0) << child->output();
    long client_ops = 0;
    std::sscanf(child->output().c_str(), "halfway\nops %ld", &client_ops);
    ops += client_ops;
  }
  EXPECT_EQ(ops, kClients * kCount * 3L) << "a write and two reads per property";
  expect_all_there(kClients, kCount);
}

TEST_F(Load, ClientsFailWithoutHangingWhileTheMappingDaemonIsDownAndGoOnAfter) {
  constexpr int kClients = 4;
  constexpr int kCount = 400;
  own_half(kClients, kCount);
  auto children = start(kClients, kCount, true);
  for (auto &child : children) {
    ASSERT_EQ(child->line(), "halfway");
  }
  EXPECT_EQ(mapping->stop(SIGKILL) & 0x7f, SIGKILL);
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  mapping->restart();  // over the socket the killed one left behind
  int failures = 0;
  for (auto &child : children) {
    EXPECT_EQ(child->wait(), 0) << child->output();
    int failed = 0;
    std::sscanf(child->output().c_str(), "halfway\nops %*d failed %d", &failed);
    failures += failed;
  }
  EXPECT_GT(failures, 0) << "the clients saw the daemon gone";
  expect_all_there(kClients, kCount);
}

}  // namespace
}  // namespace tessera::kit::test
