// XmlParseTag on untrusted tags, documents and sizes. Input: two size bytes, the tag name up to
// the first 0x01, then the document. The value lives in a heap block of exactly `size` bytes.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "../harness.h"
#include "capture_sink.h"
#include "tessera/xml.h"

using tessera::fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2) return 0;
  tessera::test::CaptureSink::instance().reset();
  const unsigned capacity = data[0] | (data[1] & 0x0FU) << 8U;
  const auto [tag, xml] = tessera::fuzz::texts_split_at_01(data + 2, size - 2);

  const auto value = std::make_unique<char[]>(capacity);
  std::memset(value.get(), 'x', capacity);
  const int32_t result = XmlParseTag(tag.c_str(), xml.c_str(), value.get(), capacity);
  check(result == 0 || result == 1);
  check(tessera::test::CaptureSink::instance().reports().size() == (result == 1 ? 0U : 1U));
  if (result == 1) {
    // A piece of the document, terminated inside the buffer.
    check(std::memchr(value.get(), '\0', capacity) != nullptr);
    check(xml.find(value.get()) != std::string::npos);
  } else {
    check(capacity == 0 || value[0] == 'x');
  }
  return 0;
}
