// Character domains of the string library's predicates and the 0/1 result they share.
#pragma once

#include <cstdint>

namespace tessera::strlib {

inline constexpr char kHexDigits[] = "0123456789abcdefABCDEF";
inline constexpr char kOctalDigits[] = "01234567";
inline constexpr char kDecimalDigits[] = "0123456789";
inline constexpr char kDigitsAndDot[] = "0123456789.";
inline constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
inline constexpr char kLettersAndDigits[] =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
inline constexpr char kLettersDigitsUnderscore[] =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
inline constexpr char kDomainNameCharacters[] =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-.";

// A predicate's result: exactly 1 or 0.
constexpr std::int32_t flag(bool value) {
  return value ? 1 : 0;
}

}  // namespace tessera::strlib
