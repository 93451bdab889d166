// ObjectPathInit and the lookup on untrusted paths, in buffers of 0 to 4096 bytes at any
// alignment. Input: two size bytes, one offset byte, then the path. The buffer is a heap block
// ending exactly at `size`, so any write past it stops the sanitizer.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "../harness.h"
#include "capture_sink.h"
#include "tessera/objpath.h"

namespace {

using tessera::fuzz::check;

template <class T>
T field(const unsigned char *at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

// A string of the record: it starts in the text area and ends inside the buffer.
void check_string(const char *text, const unsigned char *record, std::size_t size) {
  const auto *start = reinterpret_cast<const unsigned char *>(text);
  check(start >= record + sizeof(ObjectPath) && start < record + size);
  check(std::memchr(start, '\0', static_cast<std::size_t>(record + size - start)) != nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 3) return 0;
  tessera::test::CaptureSink::instance().reset();
  const std::size_t capacity = (data[0] | data[1] << 8U) % 4097U;
  const std::size_t offset = data[2] % 8U;
  const std::string text = tessera::fuzz::text_of(data + 3, size - 3);

  auto *block = static_cast<unsigned char *>(std::malloc(offset + capacity + 1));
  unsigned char *record = block + offset;
  auto *path = reinterpret_cast<ObjectPath *>(reinterpret_cast<std::uintptr_t>(record));
  const int32_t result = ObjectPathInit(path, static_cast<int32_t>(capacity), text.c_str());
  if (capacity == 0) {
    check(result == 4);
  } else if (capacity <= sizeof(ObjectPath)) {
    check(result == 504);
  } else if (result != 0) {
    check(result == 4 || result == 504);
    check(field<uint32_t>(record) == 0);
  } else {
    check(field<uint32_t>(record) == OBJECTPATH_MAGIC);
    check_string(field<char *>(record + offsetof(ObjectPath, host)), record, capacity);
    const char *name_space = field<char *>(record + offsetof(ObjectPath, nameSpace));
    check_string(name_space, record, capacity);
    check(std::strncmp(name_space, "root", 4) == 0);
    check_string(field<char *>(record + offsetof(ObjectPath, className)), record, capacity);
    const auto count = field<uint16_t>(record + offsetof(ObjectPath, pairCount));
    const auto *table = field<unsigned char *>(record + offsetof(ObjectPath, pairs));
    check(table >= record + sizeof(ObjectPath) &&
          table + count * sizeof(ObjectPathPair) <= record + capacity);
    for (std::size_t i = 0; i < count; ++i) {
      const unsigned char *entry = table + i * sizeof(ObjectPathPair);
      const char *name = field<char *>(entry + offsetof(ObjectPathPair, name));
      check_string(name, record, capacity);
      check_string(field<char *>(entry + offsetof(ObjectPathPair, value)), record, capacity);
      check(ObjectPathGetPropertyValue(path, name) != nullptr);
    }
    check(tessera::test::CaptureSink::instance().reports().empty());
  }
  std::free(block);
  return 0;
}
