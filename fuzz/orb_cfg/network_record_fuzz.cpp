// Network records from a broken or hostile store, decoded field by field: every network row reads
// with status 0 into the 255 bytes its values need, stays inside the caller's length, and what is
// read writes back unchanged where the row can be written.
//
// Input: one byte that picks the lengths, then the record (repeated until it is full).
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "../harness.h"
#include "fake_store.h"
#include "orb_cfg/orb_cfg_internal.h"
#include "tessera/orb_cfg.h"

namespace {

using tessera::fuzz::check;
using Record = std::array<uint8_t, TESSERA_NETWORK_RECORD_SIZE>;

constexpr std::size_t kValueRoom = 255;  // what a value of the network record needs

// Reads `name` into an exact block of the room its values need; its text, or "(failed)".
std::string read(const char *name, unsigned int len) {
  const tessera::fuzz::Block out(static_cast<char *>(std::malloc(kValueRoom)));
  if (Cfgmgr_Get_Property_ori(name, out.get(), len) != 0) {
    return "(failed)";
  }
  check(std::strlen(out.get()) < len, "a value longer than the caller's length");
  return out.get();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2) {
    return 0;
  }
  auto &store = tessera::test::FakeStore::instance();
  store.reset();
  Record stored{};
  for (std::size_t at = 0; at < stored.size(); at += size - 1) {
    std::memcpy(stored.data() + at, data + 1, std::min(size - 1, stored.size() - at));
  }
  Record request{};
  const Record *source = &stored;
  store.on_function("netGetCurrentIfConfig",
                    [&source](uint32_t *, const void *, uint32_t capacity, void *output) {
                      std::memcpy(output, source->data(), std::min<std::size_t>(capacity, 4768));
                      return 0;
                    });
  store.on_function("netSetNetConfig",
                    [&request](uint32_t *length, const void *input, uint32_t, void *) {
                      std::memcpy(request.data(), input, std::min<std::size_t>(*length, 4768));
                      return 0;
                    });

  for (int32_t row = 0; row < tessera::orb_cfg::kSpecialRowCount; ++row) {
    const SpecialProp &special = special_prop_table[row];
    if (special.kind != SPECIAL_PROP_KIND_NETWORK) {
      continue;
    }
    source = &stored;
    const auto len = static_cast<unsigned int>(1 + (data[0] * 31U + row * 17U) % kValueRoom);
    check(read(special.name, len) != "(failed)", "a network row failed to read");
    const std::string value = read(special.name, kValueRoom);
    if (Cfgmgr_Set_Property_ori(special.name, value.c_str()) == 0) {
      source = &request;
      check(read(special.name, kValueRoom) == value, "a value read did not write back unchanged");
    }
  }
  tessera::fuzz::forget_reports();
  return 0;
}
