// Name translation and store reads hold no state between calls: several threads run them at once.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "fake_store.h"
#include "tessera/orb_cfg.h"

namespace tessera::test {
namespace {

TEST(OrbCfgThreads, TranslateAndReadConcurrently) {
  auto &store = FakeStore::instance();
  store.set_int("gui_int_http_port", 8080);
  store.set_str("MIR/USER/name4", "eve");
  store.on_function("netGetCurrentIfConfig", [](uint32_t *, const void *, uint32_t, void *out) {
    std::memcpy(static_cast<char *>(out) + 521, "10.9.8.7", 9);
    return 0;
  });
  struct Case {
    const char *name, *key, *value;
    int32_t type;
  };
  static const Case kCases[] = {
      {"WEBSERVER/http_port", "gui_int_http_port", "8080", 3},
      {"MIR/USER/name004", "MIR/USER/name4", "eve", 6},
      {"DNS/server1", "DNS/server1", "10.9.8.7", 6},
  };
  std::atomic<int> mismatches{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&mismatches, t] {
      for (int i = 0; i < 300; ++i) {
        const Case &c = kCases[(i + t) % 3];
        std::array<char, 128> key{};
        std::array<char, 1025> out{};
        const bool ok = convert_prop_name(c.name, key.data()) == c.type &&
                        std::string(key.data()) == c.key &&
                        Cfgmgr_Get_Property_ori(c.name, out.data(), 1025) == 0 &&
                        std::string(out.data()) == c.value;
        mismatches += ok ? 0 : 1;
      }
    });
  }
  for (auto &thread : threads) {
    thread.join();
  }
  EXPECT_EQ(mismatches, 0);
}

}  // namespace
}  // namespace tessera::test
