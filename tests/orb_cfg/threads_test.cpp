// Several threads at once: name translation and store reads hold no state between calls, and
// every daemon exchange has its own connection and message, so each thread gets the answer to its
// own request.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "fake_daemon.h"
#include "orb_cfg_test.h"

namespace tessera::test {
namespace {

namespace dm = daemon_message;

// Each thread translates a name and reads it from the store; then it reads, writes and compares
// through the daemon, which answers a read with its name and refuses a write with the number the
// value holds, so that every answer is derived from its own request. Store keys and names under
// "store/" are left to the library.
TEST(OrbCfgThreads, TranslateReadAndAskTheDaemonConcurrently) {
  TESSERA_REQUIRE_PRIVATE_NAMESPACE();
  FakeDaemon mapping(kMappingSocket);
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
  store().set_int("gui_int_http_port", 8080);
  store().set_int("pm_int_ssh_port", 22);
  store().set_str("MIR/USER/name4", "eve");
  Record record{};
  put(record, 521, "10.9.8.7");
  serve_record(record);
  struct Case {
    const char *name, *key, *value;
    int32_t type;
  };
  static const Case kCases[] = {
      {"WEBSERVER/http_port", "gui_int_http_port", "8080", 3},
      {"MIR/USER/name004", "MIR/USER/name4", "eve", 6},
      {"DNS/server1", "DNS/server1", "10.9.8.7", 6},
  };
  const auto round = [](int t, int i) {
    const Case &c = kCases[(i + t) % 3];
    std::array<char, 128> key{};
    Buffer out{};
    bool ok = convert_prop_name(c.name, key.data()) == c.type && std::string(key.data()) == c.key &&
              Cfgmgr_Get_Property_ori(c.name, out.data(), 1025) == 0 &&
              std::string(out.data()) == c.value;
    const std::string name = "T" + std::to_string(t) + "/p" + std::to_string(i);
    const int32_t number = 1000 * (t + 1) + i;
    ok = ok && Cfgmgr_Get_Property(name.c_str(), out.data(), out.size()) == 0 &&
         std::string(out.data()) == "value of " + name;
    ok = ok && Cfgmgr_Set_Property(name.c_str(), std::to_string(number).c_str()) == number;
    ok = ok && DM_DCSGEN_Get_Property(name.c_str(), out.data(), 12) == 0 &&
         std::string(out.data()) == ("value of " + name).substr(0, 11);
    // Status 4: the read falls back to the store.
    return ok && Cfgmgr_Get_Property("store/x", out.data(), out.size()) == 2 &&
           is_same_value("pm_int_ssh_port", "22") == 1;
  };
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&failures, &round, t] {
      for (int i = 0; i < 100; ++i) {
        failures += round(t, i) ? 0 : 1;
      }
    });
  }
  for (auto &thread : threads) {
    thread.join();
  }
  EXPECT_EQ(failures.load(), 0);
  EXPECT_EQ(mapping.request_count(), 4U * 100U * 5U);
}

}  // namespace
}  // namespace tessera::test
