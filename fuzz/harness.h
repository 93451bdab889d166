// What the fuzz harnesses share: the entry point's declaration, the check that stops a run, and
// the texts an input carries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "capture_sink.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size);

namespace tessera::fuzz {

// Stops the run when a property fails, so that the fuzzer keeps the input; `what` names the
// property on stderr.
inline void check(bool condition, const char *what = nullptr) {
  if (!condition) {
    if (what != nullptr) {
      std::fprintf(stderr, "fuzz: %s\n", what);
    }
    std::abort();
  }
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

struct FreeDeleter {
  void operator()(void *block) const { std::free(block); }
};
using Block = std::unique_ptr<char[], FreeDeleter>;

// The bytes up to the first NUL, as a text in a heap block of exactly its length plus one, so
// that AddressSanitizer sees any read or write past the terminator.
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
