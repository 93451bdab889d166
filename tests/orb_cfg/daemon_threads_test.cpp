// Property reads and writes through one mapping daemon from several threads at once: every
// exchange has its own connection and message, so each thread gets the answer to its own request.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "fake_daemon.h"
#include "fake_store.h"
#include "tessera/orb_cfg.h"

namespace tessera::test {
namespace {

namespace dm = daemon_message;

TEST(DaemonThreads, RepliesNeverCross) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  FakeDaemon mapping(kMappingSocket);
  // Reads get the name back; writes are refused with the number that the value holds, so every
  // answer is derived from its own request. Store keys and names under "store/" are left to the
  // library.
  mapping.set_handler([](const dm::Bytes &request) {
    const std::string name = dm::name(request);
    if (name.rfind("store/", 0) == 0 || name.find('/') == std::string::npos) {
      return dm::refusal(4);
    }
    if (request[dm::kOperation] == 10) {
      return dm::refusal(static_cast<uint32_t>(std::stoul(dm::value(request))));
    }
    return dm::success("value of " + name);
  });
  FakeStore::instance().set_int("pm_int_ssh_port", 22);
  constexpr int kThreads = 4;
  constexpr int kRounds = 60;
  std::atomic<int> crossed{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &crossed] {
      for (int i = 0; i < kRounds; ++i) {
        const std::string name = "T" + std::to_string(t) + "/p" + std::to_string(i);
        std::array<char, 1025> out{};
        bool ok = Cfgmgr_Get_Property(name.c_str(), out.data(), out.size()) == 0 &&
                  std::string(out.data()) == "value of " + name;
        const int32_t number = 1000 * (t + 1) + i;
        ok = ok && Cfgmgr_Set_Property(name.c_str(), std::to_string(number).c_str()) == number;
        ok = ok && DM_DCSGEN_Get_Property(name.c_str(), out.data(), 12) == 0 &&
             std::string(out.data()) == ("value of " + name).substr(0, 11);
        // Status 4: the read falls back to the store, concurrently with the others.
        ok = ok && Cfgmgr_Get_Property("store/x", out.data(), out.size()) == 2 &&
             is_same_value("pm_int_ssh_port", "22") == 1;
        crossed += ok ? 0 : 1;
      }
    });
  }
  for (auto &thread : threads) {
    thread.join();
  }
  EXPECT_EQ(crossed, 0);
  EXPECT_EQ(mapping.request_count(), static_cast<std::size_t>(kThreads * kRounds * 5));
}

}  // namespace
}  // namespace tessera::test
