// Escape, unescape and clean on untrusted text of any length.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "../harness.h"
#include "tessera/nvpair.h"

using tessera::fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string text = tessera::fuzz::text_of(data, size);

  const char *escaped = NvPairEscapeSep(text.c_str());
  const std::size_t escaped_length = std::strlen(escaped);
  check(escaped_length <= 1199);
  check(std::strpbrk(escaped, "=,") == nullptr);
  // Without '#' in the text, unescaping undoes escaping exactly. An overlong text is cut just
  // before the first character whose escape would pass 1199 characters.
  std::string round_trip = escaped;
  NvPairUnescapeSep(round_trip.data());
  round_trip = round_trip.c_str();
  if (text.find('#') == std::string::npos) {
    check(text.compare(0, round_trip.size(), round_trip) == 0);
    if (round_trip.size() < text.size()) {
      const char next = text[round_trip.size()];
      check(escaped_length + (next == '=' || next == ',' ? 5 : 1) > 1199);
    }
  }

  std::string unescaped = text;
  check(NvPairUnescapeSep(unescaped.data()) == unescaped.data());
  check(std::strlen(unescaped.c_str()) <= text.size());

  std::string cleaned = text;
  check(NvPairCleanValue(cleaned.data()) == cleaned.data());
  const std::string result = cleaned.c_str();
  check(result.size() <= text.size());
  check(result.find('\r') == std::string::npos);
  for (std::size_t lf = result.find('\n'); lf != std::string::npos;
       lf = result.find('\n', lf + 1)) {
    check(lf == 0 || result[lf - 1] == '\n' || static_cast<unsigned char>(result[lf - 1]) > 32);
  }
  check(result.empty() || result.back() == '\n' || static_cast<unsigned char>(result.back()) > 32);
  return 0;
}
