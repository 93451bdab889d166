// Session records from a broken or hostile store, and the address and keyword texts that tools
// pass in. The input's first 480 bytes are the record of session 1 (zero-padded), the rest is a
// text. Outputs must stay inside their buffers, terminated, and agree with the listing filters.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "fake_store.h"
#include "tessera/session.h"

namespace {

using tessera::test::FakeStore;

void require(bool condition) {
  if (!condition) {
    std::abort();
  }
}

// The privilege function hands back the request, so the name reaches the privilege offset.
int32_t echo(uint32_t * /*length*/, const void *input, uint32_t capacity, void *output) {
  std::memcpy(output, input, capacity);
  return 0;
}

bool lists_session_1(const char *user, uint32_t type) {
  uint32_t ids[SSN_MAX_IDS];
  uint32_t count = 0;
  require(ssn_entry_list(user, type, 0, ids, &count) == 0 && count <= 2);
  return std::find(ids, ids + count, 1U) != ids + count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  const std::size_t record_bytes = std::min(size, tessera::test::kSessionRecordSize);
  // Exactly sized, so that a read past the text's terminator is caught.
  const std::size_t text_length = size - record_bytes;
  const std::unique_ptr<char[]> text(new char[text_length + 1]);
  std::memcpy(text.get(), data + record_bytes, text_length);
  text[text_length] = '\0';
  static_cast<void>(ssn_atoip(text.get()));
  require(str2ssntype(text.get()) < SSN_TYPE_COUNT);

  auto &store = FakeStore::instance();
  store.reset();
  tessera::test::SessionRecord record{};
  std::memcpy(record.data(), data, record_bytes);
  store.add_session(1, record, {1, 2});  // its own child, and one that can't be read
  store.set_type_listing("", {1, 2});
  store.on_function("osi_function_getuser", echo);

  std::vector<char> user(SSN_USER_SIZE, 'X');
  std::vector<char> address_text(SSN_ADDRESS_TEXT_SIZE, 'X');
  uint32_t out[10] = {};
  uint8_t type = 0;
  require(ssn_entry_getinfo(1, user.data(), &out[0], &out[1], address_text.data(), &type, &out[2],
                            &out[3], &out[4], &out[5], &out[6], &out[7], &out[8]) == 0);
  require(std::memchr(user.data(), '\0', user.size()) != nullptr);
  require(std::memchr(address_text.data(), '\0', address_text.size()) != nullptr);
  require(std::strncmp(user.data(), reinterpret_cast<const char *>(record.data() + 68),
                       std::strlen(user.data())) == 0);
  require(type < SSN_TYPE_COUNT && type != SSN_TYPE_SERIAL_NOAUTH);
  // The name and type that were read find the session again.
  require(lists_session_1(user.data(), type));
  return 0;
}
