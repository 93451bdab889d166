// Number parsing of the string library, 32 bits wide on every target. The tools were written
// where `long` has 32 bits: strtoul saturates at 4294967295 and gives the two's complement of a
// negative text, strtol saturates at 2147483647 and -2147483648. These parsers give the same
// values where `long` is wider, so that a text converts alike on the controller and elsewhere.
#pragma once

#include <cstdint>

namespace tessera::strlib {

// What strtoul and strtol read from a text, before either decides its result.
struct ParsedNumber {
  std::uint32_t magnitude = 0;  // meaningless when `overflow` is set
  bool negative = false;
  bool overflow = false;  // the digits exceed 32 bits
};

constexpr bool is_space(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// The value of `c` as a digit of any base up to 36, or 36 when it is none.
constexpr unsigned digit_value(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'z') return static_cast<unsigned>(c - 'a') + 10;
  if (c >= 'A' && c <= 'Z') return static_cast<unsigned>(c - 'A') + 10;
  return 36;
}

// Reads like the C library's strto* family: blanks, an optional sign, then digits of `base`
// (0, 8, 10 or 16; 0 chooses by a "0x" or "0" prefix), stopping at the first other character.
constexpr ParsedNumber parse_number(const char *s, unsigned base) {
  ParsedNumber result;
  while (is_space(*s)) ++s;
  if (*s == '-' || *s == '+') {
    result.negative = *s == '-';
    ++s;
  }
  const bool hex_prefix = s[0] == '0' && (s[1] == 'x' || s[1] == 'X') && digit_value(s[2]) < 16;
  if ((base == 0 || base == 16) && hex_prefix) {
    s += 2;
    base = 16;
  } else if (base == 0) {
    base = s[0] == '0' ? 8 : 10;
  }
  std::uint64_t value = 0;
  for (unsigned digit = digit_value(*s); digit < base; digit = digit_value(*++s)) {
    value = value * base + digit;
    if (value > UINT32_MAX) {
      result.overflow = true;
      value = UINT32_MAX;  // keeps the product small; the digits still count as read
    }
  }
  result.magnitude = static_cast<std::uint32_t>(value);
  return result;
}

// strtoul(s, NULL, base) with a 32-bit unsigned long.
constexpr std::uint32_t to_unsigned32(const char *s, unsigned base) {
  const ParsedNumber n = parse_number(s, base);
  if (n.overflow) return UINT32_MAX;
  return n.negative ? 0U - n.magnitude : n.magnitude;
}

// strtol(s, NULL, base) with a 32-bit long.
constexpr std::int32_t to_signed32(const char *s, unsigned base) {
  const ParsedNumber n = parse_number(s, base);
  constexpr std::uint32_t kMaxMagnitude = 0x7FFFFFFFU;
  if (n.negative) {
    if (n.overflow || n.magnitude > kMaxMagnitude + 1) return INT32_MIN;
    return static_cast<std::int32_t>(-static_cast<std::int64_t>(n.magnitude));
  }
  if (n.overflow || n.magnitude > kMaxMagnitude) return INT32_MAX;
  return static_cast<std::int32_t>(n.magnitude);
}

}  // namespace tessera::strlib
