// The list readers on untrusted lists, names and sizes. Input: a size byte, an index byte, the
// searched name up to the first 0x01, then the list. Outputs live in heap blocks of exactly `size`
// bytes, so any write past them stops the sanitizer.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "../harness.h"
#include "tessera/nvpair.h"

namespace {

using tessera::fuzz::check;

// A reader's output: terminated inside the buffer unless the buffer is empty.
void check_output(const char *out, unsigned size) {
  check(size == 0 || std::memchr(out, '\0', size) != nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2) return 0;
  const unsigned capacity = data[0];
  const auto index = static_cast<int32_t>(static_cast<int8_t>(data[1]));
  const auto [name, list] = tessera::fuzz::texts_split_at_01(data + 2, size - 2);

  const auto out = std::make_unique<char[]>(capacity);
  const uint32_t by_index = NvPairListGetName(list.c_str(), index, capacity, out.get());
  check(by_index <= 3 || by_index == 0x0FFFFFFF);
  check(by_index != 1);
  check_output(out.get(), capacity);

  const uint32_t raw = NvPairListGetValue(list.c_str(), name.c_str(), capacity, out.get());
  check(raw == 0 || raw == 1 || raw == 3 || raw == 4);
  check_output(out.get(), capacity);
  const std::string raw_value(out.get(), strnlen(out.get(), capacity));

  const uint32_t resolved = NvPairListGetLongValue(list.c_str(), name.c_str(), capacity, out.get());
  check(resolved == raw);
  check_output(out.get(), capacity);
  // The long reader delivers the same raw value, resolved.
  std::string expected = raw_value;
  NvPairUnescapeSep(expected.data());
  check(capacity == 0 || std::strcmp(out.get(), expected.c_str()) == 0);
  return 0;
}
