// Character-domain predicates: null-safe length, equality and substring tests, and the checks
// that a text lies in a set of characters. The typed checks, address checks and transforms of
// the string library are built on these.
#include "tessera/strlib.h"

#include <strings.h>

#include <cstring>

#include "string/domains.h"
#include "trace/report.h"

namespace {

using tessera::strlib::flag;

// The text behind a leading "0x" (lower-case x only), which every domain test skips.
const char *skip_hex_prefix(const char *s) {
  return s[0] == '0' && s[1] == 'x' ? s + 2 : s;
}

// The scan shared by StrIsInCharacterDomain and StrCharactersExist: 1 if each character of `s`
// behind the prefix is (`wanted` true) or is not (`wanted` false) a member of `set`.
int32_t scan(const char *s, const char *set, bool wanted) {
  if (s == nullptr || set == nullptr || *s == '\0') return 0;
  const std::size_t set_length = std::strlen(set);
  for (const char *p = skip_hex_prefix(s); *p != '\0'; ++p) {
    const bool member = std::memchr(set, *p, set_length) != nullptr;
    if (member != wanted) return 0;
  }
  return 1;
}

// A text with its optional leading '-' skipped.
const char *skip_minus(const char *s) {
  return *s == '-' ? s + 1 : s;
}

}  // namespace

extern "C" {

unsigned int StrLength(const char *s) {
  return s == nullptr ? 0U : static_cast<unsigned int>(std::strlen(s));
}

int32_t StrIsEmpty(const char *s) {
  if (!REPORT_ASSERT(s != nullptr)) return 0;
  return flag(*s == '\0');
}

int32_t StrEqual(const char *a, const char *b) {
  if (!REPORT_ASSERT(a != nullptr && b != nullptr)) return 0;
  return flag(std::strcmp(a, b) == 0);
}

int32_t StrEqualNoCase(const char *a, const char *b) {
  if (!REPORT_ASSERT(a != nullptr && b != nullptr)) return 0;
  return flag(strcasecmp(a, b) == 0);
}

int32_t StrFind(const char *haystack, const char *needle) {
  if (!REPORT_ASSERT(haystack != nullptr && needle != nullptr)) return 0;
  return flag(std::strstr(haystack, needle) != nullptr);
}

int32_t StrIsInCharacterDomain(const char *s, const char *domain) {
  return scan(s, domain, true);
}

int32_t StrCharactersExist(const char *s, const char *chars) {
  return scan(s, chars, false);
}

int32_t StrIsHexValue(const char *s) {
  if (s == nullptr || s[0] != '0' || s[1] != 'x') return 0;
  return StrIsInCharacterDomain(s + 2, tessera::strlib::kHexDigits);
}

int32_t StrIsOctalValue(const char *s) {
  if (s == nullptr || s[0] != '0') return 0;
  return StrIsInCharacterDomain(s, tessera::strlib::kOctalDigits);
}

int32_t StrIsNumeric(const char *s) {
  if (s == nullptr) return 0;
  return StrIsInCharacterDomain(skip_minus(s), tessera::strlib::kDecimalDigits);
}

int32_t StrIsNumericDot(const char *s) {
  if (s == nullptr) return 0;
  return StrIsInCharacterDomain(skip_minus(s), tessera::strlib::kDigitsAndDot);
}

int32_t StrIsAlphabetic(const char *s) {
  return StrIsInCharacterDomain(s, tessera::strlib::kLetters);
}

int32_t StrIsAlphanumeric(const char *s) {
  return StrIsInCharacterDomain(s, tessera::strlib::kLettersAndDigits);
}

int32_t StrIsAlphanumericUnderScore(const char *s) {
  return StrIsInCharacterDomain(s, tessera::strlib::kLettersDigitsUnderscore);
}

int32_t StrIsBoolean(const char *s) {
  return flag(StrEqualNoCase(s, "1") == 1 || StrEqualNoCase(s, "0") == 1);
}

}  // extern "C"
