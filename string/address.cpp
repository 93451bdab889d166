// Address, host and mail checks: purely textual tests of IPv4 addresses, domain names and mail
// addresses, the conversion of a dotted IPv4 text into four bytes, and the extraction of the
// IPv4 part of an IPv4-mapped IPv6 address. Nothing here looks a name up.
#include <cctype>
#include <cstring>
#include <string_view>

#include "string/domains.h"
#include "string/number.h"
#include "tessera/strlib.h"
#include "trace/report.h"

namespace {

using tessera::strlib::flag;

bool is_digit(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) != 0;
}
bool is_alpha(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) != 0;
}
bool is_alnum(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

// A field of StrToIpAddress holds at most this many characters (a buffer of 4 with terminator).
constexpr std::size_t kIpFieldCharacters = 3;

// The result buffer of StrVerifyAddr: at most 99 characters and the terminator.
char g_verified_address[100];

// A character that a part of a mail address may hold: printable, not a blank, and not one of
// `refused`.
bool mail_character(char c, const char *refused) {
  return c >= '!' && c <= '~' && std::strchr(refused, c) == nullptr;
}

// The local part of a mail address, the text before its first '@'.
bool valid_local_part(std::string_view local) {
  if (local.empty() || local.back() == '.') return false;
  std::size_t quotes = 0;
  for (const char c : local) {
    if (!mail_character(c, "()<>@,;:\\[]")) return false;
    quotes += c == '"' ? 1 : 0;
  }
  // A double quote makes the whole local part one quoted word, which must not be empty.
  if (quotes == 0) return true;
  return quotes == 2 && local.front() == '"' && local.back() == '"' && local.size() > 2;
}

// The domain part of a mail address, the text behind its first '@'.
bool valid_mail_domain(std::string_view domain) {
  if (domain.find('.') == std::string_view::npos) return false;
  if (domain.front() == '.' || domain.back() == '.') return false;
  if (domain.find("..") != std::string_view::npos) return false;
  for (const char c : domain) {
    if (c != '.' && !mail_character(c, "/()<>@,;:\\\"[]")) return false;
  }
  return true;
}

}  // namespace

extern "C" {

int32_t StrIsIpAddress(const char *s) {
  if (s == nullptr || *s == '\0') return 0;
  const std::size_t length = std::strlen(s);
  if (s[0] == '.' || s[length - 1] == '.') return 0;
  int dots = 0;
  for (const char *p = s; *p != '\0'; ++p) {
    if (*p == '.') {
      ++dots;
    } else if (!is_digit(*p)) {
      return 0;
    }
  }
  return flag(dots == 3);
}

// Four decimal fields of at least one digit, joined by single dots, each at most 255. This is
// what a "%d.%d.%d.%d" scan with a 32-bit int accepts once the text is known to hold only digits
// and dots (past a "0x" prefix, which the scan then refuses) and at most three dots.
int32_t StrIsValidIPv4Address(const char *s) {
  if (StrIsInCharacterDomain(s, tessera::strlib::kDigitsAndDot) == 0) return 0;
  const char *p = s;
  for (int field = 0; field < 4; ++field) {
    if (field > 0 && *p++ != '.') return 0;
    if (!is_digit(*p)) return 0;
    uint32_t value = 0;
    for (; is_digit(*p); ++p) {
      value = value * 10 + static_cast<uint32_t>(*p - '0');
      if (value > 255) return 0;
    }
  }
  return flag(*p == '\0');
}

int32_t StrToIpAddress(const char *s, uint8_t *out, uint32_t size) {
  if (!REPORT_ASSERT(s != nullptr && out != nullptr && size == 4)) return 0;
  uint32_t stored = 0;
  const char *field = s;
  for (;;) {
    const char *end = std::strchr(field, '.');
    if (end == nullptr) end = field + std::strlen(field);
    const auto length = static_cast<std::size_t>(end - field);
    // An empty field, a field too long for the field buffer, or a fifth field ends the text.
    if (length == 0 || length > kIpFieldCharacters || stored == 4) return 0;
    char text[kIpFieldCharacters + 1] = {};
    std::memcpy(text, field, length);
    out[stored++] = static_cast<uint8_t>(tessera::strlib::to_signed32(text, 10));
    if (*end == '\0') return flag(stored == 4);
    field = end + 1;
  }
}

const char *StrVerifyAddr(const char *s) {
  g_verified_address[0] = '\0';
  if (s == nullptr) return g_verified_address;
  const char *colon = std::strrchr(s, ':');
  const char *address = colon != nullptr && std::strchr(s, '.') != nullptr ? colon + 1 : s;
  const std::size_t length = std::strlen(address);
  // A text that doesn't fit is no address: the result stays empty rather than a cut address.
  if (length < sizeof g_verified_address) std::memcpy(g_verified_address, address, length + 1);
  return g_verified_address;
}

int32_t StrIsDomainName(const char *s) {
  if (StrIsInCharacterDomain(s, tessera::strlib::kDomainNameCharacters) == 0) return 0;
  return flag(is_alnum(s[0]));
}

int32_t StrIsValidDomainName(const char *s) {
  if (s == nullptr || *s == '\0' || !is_alnum(s[0])) return 0;
  bool dot = false;
  bool letter = false;
  for (const char *p = s; *p != '\0'; ++p) {
    const char c = *p;
    if (c >= ' ' && c <= '@' && !is_digit(c) && c != '-' && c != '.') return 0;
    if (c == '.') {
      if (p[1] == '.') return 0;
      dot = true;
    }
    letter = letter || is_alpha(c);
  }
  return flag(dot && letter);
}

int32_t StrIsValidEmailAddress(const char *s) {
  if (s == nullptr) return 0;
  const char *at = std::strchr(s, '@');
  if (at == nullptr) return 0;
  const std::string_view local(s, static_cast<std::size_t>(at - s));
  return flag(valid_local_part(local) && valid_mail_domain(at + 1));
}

}  // extern "C"
