// Arbitrary names and values through name translation, the special-row lookup and the read and
// write paths, with the in-memory store client serving values and a network record made of the
// input itself.
//
// Input: one selector byte, then the name, a line feed, and the value (the record's bytes too).
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "../harness.h"
#include "capture_sink.h"
#include "fake_store.h"
#include "orb_cfg/orb_cfg_internal.h"
#include "tessera/orb_cfg.h"

namespace {

using tessera::test::CaptureSink;
using tessera::test::FakeStore;

using tessera::fuzz::check;

// The store holds the value under the translated name, in the form the selector picks, so that
// reads meet both matching and mismatching types.
void prime_store(FakeStore &store, uint8_t selector, const char *name, const std::string &value) {
  std::array<char, 128> key{};
  convert_prop_name(name, key.data());
  switch (selector % 4) {
    case 0:
      store.set_str(key.data(), value);
      break;
    case 1:
      store.set_int(key.data(), static_cast<int32_t>(value.size()) - 3);
      break;
    case 2:
      store.set_bool(key.data(), !value.empty());
      break;
    default:
      break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size == 0) {
    return 0;
  }
  auto &store = FakeStore::instance();
  store.reset();
  CaptureSink::instance().reset();
  const uint8_t selector = data[0];
  const std::string input(reinterpret_cast<const char *>(data + 1), size - 1);
  const std::size_t split = std::min(input.find('\n'), input.size());
  const std::string name_bytes = input.substr(0, split);
  // Store values stay below the 1025 bytes that readers give.
  const std::string value = input.substr(std::min(split + 1, input.size()), 1000);
  const char *name = name_bytes.c_str();  // up to the first NUL, as a caller's text

  std::array<uint8_t, TESSERA_NETWORK_RECORD_SIZE> record{};
  for (std::size_t at = 0; at < record.size() && !input.empty(); at += input.size()) {
    std::memcpy(record.data() + at, input.data(), std::min(input.size(), record.size() - at));
  }
  store.on_function("netGetCurrentIfConfig", [&record](uint32_t *, const void *, uint32_t capacity,
                                                       void *output) {
    std::memcpy(output, record.data(), std::min<std::size_t>(capacity, record.size()));
    return 0;
  });
  store.on_function("netSetNetConfig",
                    [](uint32_t *, const void *, uint32_t, void *) { return 0; });
  prime_store(store, selector, name, value);

  std::array<char, 128> key{};
  const int32_t type = convert_prop_name(name, key.data());
  check(type >= 0 && type <= 10);
  check(std::memchr(key.data(), '\0', key.size()) != nullptr);

  std::string stem(name_bytes.size() + 1, '\0');
  int32_t number = -1;
  const int32_t ends_in_digit =
      tessera::orb_cfg::splitPropertyIndexSuffix(name, stem.data(), &number);
  check(ends_in_digit == 0 || (number >= 0 && number <= 999));

  const int32_t special = Is_Special_Prop(name);
  check(special >= -1 && special < tessera::orb_cfg::kSpecialRowCount);

  std::array<char, 1025> out{};
  const unsigned int len = 1 + selector % 64;
  if (Cfgmgr_Get_Property_ori(name, out.data(), len) == 0) {
    check(std::strlen(out.data()) < len);
  }
  out.fill('x');
  out.back() = '\0';
  static_cast<void>(Cfgmgr_Ext_Get_Property(name, out.data(), (selector & 0x80) != 0 ? 1025 : len));
  static_cast<void>(ORBGetPropertyValue(name, out.data()));
  static_cast<void>(Cfgmgr_Set_Property_ori(name, value.c_str()));
  static_cast<void>(ORBSetPropertyValue(name, value.c_str()));
  return 0;
}
