// Arbitrary sensor lists through the power supply walk, and arbitrary texts through the IPv6
// address helpers.
//
// Input: four bytes of length word, then the sensor buffer as the store client fills it; the same
// bytes after the length word, up to the first NUL, are the address text.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "../harness.h"
#include "capture_sink.h"
#include "fake_store.h"
#include "tessera/orb_cfg.h"

using tessera::fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 4) {
    return 0;
  }
  auto &store = tessera::test::FakeStore::instance();
  store.reset();
  tessera::test::CaptureSink::instance().reset();
  uint32_t length = 0;
  std::memcpy(&length, data, sizeof length);
  const std::vector<uint8_t> records(data + 4, data + size);
  store.on_function("GetActiveSensors", [&records, length](uint32_t *word, const void *,
                                                           uint32_t capacity, void *output) {
    if (!records.empty()) {
      std::memcpy(output, records.data(), std::min<std::size_t>(records.size(), capacity));
    }
    *word = length;
    return 0;
  });
  check(init_power_supply() == 1);
  const auto writes = store.calls("orb_config_set_int");
  check(!writes.empty() && writes.size() <= 257);
  check(writes.back().name == "pm_int_max_power_supply_index");
  check(writes.back().value >= 0 && writes.back().value <= 256);

  const std::string text(reinterpret_cast<const char *>(data + 4),
                         strnlen(reinterpret_cast<const char *>(data + 4), size - 4));
  std::vector<char> address(text.size() + 1);
  std::vector<char> prefix(text.size() + 1);
  check(split_ipv6_extended_addr(text.c_str(), address.data(), prefix.data()) == 0);
  const std::size_t slash = text.find('/');
  check(address.data() == text.substr(0, slash));
  check(prefix.data() == (slash == std::string::npos ? "" : text.substr(slash + 1)));
  std::vector<char> shown(text.begin(), text.end());
  shown.resize(std::max<std::size_t>(shown.size() + 1, 3), '\0');
  check(ipv6_extended_addr_display(shown.data()) == 0);
  const std::string head = address.data();
  check(std::string(shown.data()) == (head.empty() || head == "::" ? "::" : text));
  return 0;
}
