// Helpers of the property service's tests: the kit's store and sink, the store writes made, and
// a network record that the store hands out.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "capture_sink.h"
#include "fake_store.h"
#include "tessera/orb_cfg.h"

namespace tessera::test {

inline FakeStore &store() {
  return FakeStore::instance();
}
inline CaptureSink &sink() {
  return CaptureSink::instance();
}

using Buffer = std::array<char, 1025>;
using Record = std::array<uint8_t, TESSERA_NETWORK_RECORD_SIZE>;

// Each store write as "function name = value", with the flag when it is not 1.
inline std::vector<std::string> store_writes() {
  std::vector<std::string> writes;
  for (const StoreCall &call : store().calls()) {
    const bool text =
        call.function == "orb_config_set_str" || call.function == "orb_config_set_str_n";
    writes.push_back(call.function + " " + call.name + " = " +
                     (text ? call.text : std::to_string(call.value)) +
                     (call.flag == 1 ? "" : " flag " + std::to_string(call.flag)));
  }
  return writes;
}

// Puts `text` and its terminator at `offset` of the record.
inline void put(Record &record, std::size_t offset, const std::string &text) {
  std::memcpy(record.data() + offset, text.c_str(), text.size() + 1);
}

// Answers "netGetCurrentIfConfig" with `record`.
inline void serve_record(const Record &record) {
  store().on_function("netGetCurrentIfConfig",
                      [record](uint32_t *, const void *, uint32_t capacity, void *output) {
                        std::memcpy(output, record.data(), std::min<std::size_t>(capacity, 4768));
                        return 0;
                      });
}

}  // namespace tessera::test
