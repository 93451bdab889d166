// Many client processes at once through the daemons and the store, and the mapping daemon killed
// in the middle of that. The throughput is bench_kit's to report.
#include <gtest/gtest.h>

#include <signal.h>

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

class Load : public ::testing::Test {
 protected:
  void SetUp() override {
    TESSERA_REQUIRE_PRIVATE_NAMESPACE();
    mapping = std::make_unique<Daemon>(kMappingd, kMappingSocket);
  }

  static constexpr const char *kBase = "load.c";  // client c's properties: load.cC.N
  static std::string prefix(int c) { return kBase + std::to_string(c); }

  // Waits for every client to exit 0 and adds up the counts of their reports ("halfway", then
  // "ops N failed N wrong N").
  struct Totals {
    long ops = 0;
    long failed = 0;
  };
  static Totals wait_for_all(std::vector<std::unique_ptr<Child>> &children) {
    Totals totals;
    for (auto &child : children) {
      EXPECT_EQ(child->wait(), 0) << child->output();
      Totals one;
      EXPECT_EQ(std::sscanf(child->output().c_str(), "halfway\nops %ld failed %ld", &one.ops,
                            &one.failed),
                2);
      totals = {totals.ops + one.ops, totals.failed + one.failed};
    }
    return totals;
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
  ASSERT_TRUE(own_half(kBase, kClients, kCount));
  auto children = start_load(kBase, kClients, kCount, "");
  EXPECT_EQ(wait_for_all(children).ops, kClients * kCount * 3L)
      << "a write and two reads per property";
  expect_all_there(kClients, kCount);
}

TEST_F(Load, ClientsFailWithoutHangingWhileTheMappingDaemonIsDownAndGoOnAfter) {
  constexpr int kClients = 4;
  constexpr int kCount = 400;
  ASSERT_TRUE(own_half(kBase, kClients, kCount));
  auto children = start_load(kBase, kClients, kCount, "retry");
  for (auto &child : children) {
    ASSERT_EQ(child->line(), "halfway");
  }
  EXPECT_EQ(mapping->stop(SIGKILL) & 0x7f, SIGKILL);
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  mapping->restart();  // over the socket the killed one left behind
  EXPECT_GT(wait_for_all(children).failed, 0) << "the clients saw the daemon gone";
  expect_all_there(kClients, kCount);
}

}  // namespace
}  // namespace tessera::kit::test
