// XmlParseTag on untrusted tags, documents and sizes. Input: two size bytes, the tag name up to
// the first 0x01, then the document. The value lives in a heap block of exactly `size` bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "capture_sink.h"
#include "tessera/xml.h"

namespace {

void check(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2) return 0;
  tessera::test::CaptureSink::instance().reset();
  const unsigned capacity = data[0] | (data[1] & 0x0FU) << 8U;
  const std::string rest(reinterpret_cast<const char *>(data + 2), size - 2);
  const std::size_t split = rest.find('\x01');
  const std::string tag = rest.substr(0, split).c_str();
  const std::string xml = split == std::string::npos ? "" : rest.substr(split + 1).c_str();

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
