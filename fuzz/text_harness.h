// What the harnesses of the text families share: the entry point's declaration, the check that
// stops a run, and the texts an input carries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size);

namespace tessera::fuzz {

// Stops the run when a property fails, so that the fuzzer keeps the input.
inline void check(bool condition) {
  if (!condition) std::abort();
}

// The bytes up to the first NUL, as a text.
inline std::string text_of(const uint8_t *data, std::size_t size) {
  return std::string(reinterpret_cast<const char *>(data), size).c_str();
}

// Two texts: the bytes up to the first 0x01 and those behind it (none without one), each cut at
// its first NUL.
inline std::pair<std::string, std::string> texts_split_at_01(const uint8_t *data,
                                                             std::size_t size) {
  const std::string bytes(reinterpret_cast<const char *>(data), size);
  const std::size_t split = bytes.find('\x01');
  return {bytes.substr(0, split).c_str(),
          split == std::string::npos ? "" : bytes.substr(split + 1).c_str()};
}

}  // namespace tessera::fuzz
