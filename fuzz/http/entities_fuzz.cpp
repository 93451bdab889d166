// Entity encoding and decoding on untrusted text and sizes. Input: two size bytes, then the text.
// Destinations are heap blocks of exactly the bytes the caller is told to provide.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "../harness.h"
#include "capture_sink.h"
#include "tessera/http.h"

using tessera::fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2) return 0;
  auto &sink = tessera::test::CaptureSink::instance();
  sink.reset();
  const unsigned capacity = data[0] | (data[1] & 0x1FU) << 8U;
  const std::string source = tessera::fuzz::text_of(data + 2, size - 2);
  const bool fits = source.size() <= capacity;

  const auto encoded = std::make_unique<char[]>(capacity);
  const int32_t encode_result =
      HttpEncodeSpecialCharacters(source.c_str(), encoded.get(), capacity);
  check(encode_result == (fits ? 1 : 0));
  check(!fits || capacity == 0 || std::memchr(encoded.get(), '\0', capacity) != nullptr);
  const bool whole = fits && sink.assertions() == 0;

  // Decoding never grows the text, so the source's length and a NUL are room enough.
  const auto decoded = std::make_unique<char[]>(source.size() + 1);
  const auto limit = static_cast<unsigned>(source.size());
  check(HttpDecodeSpecialCharacters(source.c_str(), decoded.get(), limit) == 1);
  check(std::strlen(decoded.get()) <= source.size());
  if (limit > 0) {
    check(HttpDecodeSpecialCharacters(source.c_str(), decoded.get(), limit - 1) == 0);
  }

  // A whole encoding decodes back to the source.
  if (whole && capacity > 0) {
    const std::size_t length = std::strlen(encoded.get());
    const auto round_trip = std::make_unique<char[]>(length + 1);
    check(HttpDecodeSpecialCharacters(encoded.get(), round_trip.get(),
                                      static_cast<unsigned>(length)) == 1);
    check(source == round_trip.get());
  }
  return 0;
}
