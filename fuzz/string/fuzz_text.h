// Fuzz input as a text in a heap block of exactly its size, so that AddressSanitizer sees any
// read or write past the terminator.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "capture_sink.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size);

namespace tessera::fuzz {

struct FreeDeleter {
  void operator()(void *block) const { std::free(block); }
};
using Block = std::unique_ptr<char[], FreeDeleter>;

// The bytes up to the first NUL, as a text in a block of its length plus one.
inline Block exact_text(const uint8_t *data, std::size_t size) {
  const auto *nul = static_cast<const uint8_t *>(std::memchr(data, 0, size));
  const std::size_t length = nul != nullptr ? static_cast<std::size_t>(nul - data) : size;
  Block text(static_cast<char *>(std::malloc(length + 1)));
  std::memcpy(text.get(), data, length);
  text[length] = '\0';
  return text;
}

// Reports pile up in the capture sink; a long fuzzing run empties it on every input.
inline void forget_reports() {
  test::CaptureSink::instance().reset();
}

}  // namespace tessera::fuzz
