// String transforms: case folding and trimming in place, the clean-up of comma-separated lists,
// the copying filters for line ends and percent signs, and the display form of a time stamp.
#include <cstring>

#include "string/domains.h"
#include "tessera/strlib.h"
#include "trace/report.h"

namespace {

using tessera::strlib::flag;

// Printing characters for the trims: 0x21 to 0x7E. Blanks, controls, 0x7F and every byte above
// it are trimmed.
bool is_printing(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x21 && byte <= 0x7E;
}

bool in_set(char c, const char *set) {
  return c != '\0' && std::strchr(set, c) != nullptr;
}

// The display form "MM/DD/YYYY HH:MM:SS" of a stamp "YYYYMMDDHHMMSS" and its terminator.
constexpr std::size_t kStampLength = 14;
constexpr uint32_t kDisplaySize = 20;

}  // namespace

extern "C" {

int32_t StrToLower(char *s) {
  if (!REPORT_ASSERT(s != nullptr)) return 0;
  for (; *s != '\0'; ++s) {
    if (*s >= 'A' && *s <= 'Z') *s = static_cast<char>(*s + 0x20);
  }
  return 1;
}

int32_t StrToUpper(char *s) {
  if (!REPORT_ASSERT(s != nullptr)) return 0;
  for (; *s != '\0'; ++s) {
    if (*s >= 'a' && *s <= 'z') *s = static_cast<char>(*s - 0x20);
  }
  return 1;
}

int32_t StrTrimLeft(char *s) {
  if (!REPORT_ASSERT(s != nullptr)) return 0;
  const char *start = s;
  while (*start != '\0' && !is_printing(*start)) ++start;
  if (start != s) std::memmove(s, start, std::strlen(start) + 1);
  return 1;
}

int32_t StrTrimRight(char *s) {
  if (!REPORT_ASSERT(s != nullptr)) return 0;
  for (std::size_t length = std::strlen(s); length > 0 && !is_printing(s[length - 1]); --length) {
    s[length - 1] = '\0';
  }
  return 1;
}

int32_t StrTrim2End(char *s, const char *chars) {
  if (s == nullptr || chars == nullptr || *s == '\0') return 0;
  const std::size_t original = std::strlen(s);
  std::size_t length = original;
  // From the end, down to but never including the first character.
  while (length > 1 && in_set(s[length - 1], chars)) s[--length] = '\0';
  // From the start, unless all that is left is in the set (then it is that first character).
  std::size_t leading = 0;
  while (leading < length && in_set(s[leading], chars)) ++leading;
  if (leading > 0 && leading < length) {
    length -= leading;
    std::memmove(s, s + leading, length);
    s[length] = '\0';
  }
  return flag(length != original);
}

int32_t StrSeparatorClean(char *s) {
  if (s == nullptr || *s == '\0') return 0;
  const std::size_t original = std::strlen(s);
  // Blanks behind each comma (and at the very end); a comma followed by blanks alone ends the
  // list there.
  for (char *p = s; *p != '\0'; ++p) {
    if (*p != ',') continue;
    StrTrim2End(p + 1, " ");
    if (p[1] == ' ') {
      *p = '\0';
      break;
    }
  }
  // Blanks before each comma, from the last comma back to the first.
  for (std::size_t i = std::strlen(s); i-- > 0;) {
    if (s[i] != ',') continue;
    while (i > 0 && s[i - 1] == ' ') --i;
    StrTrim2End(s + i, " ");
  }
  // Commas at both ends, then runs of commas.
  StrTrim2End(s, ",");
  for (char *p = s; *p != '\0'; ++p) {
    if (*p == ',') StrTrim2End(p + 1, ",");
  }
  return flag(std::strlen(s) != original);
}

void StrAddLineFeed(char *dst, const char *src) {
  if (dst == nullptr || src == nullptr) return;
  for (; *src != '\0'; ++src) {
    if (*src == '\n') *dst++ = '\r';
    *dst++ = *src;
  }
  *dst = '\0';
}

void StrEscapePercent(char *dst, const char *src) {
  if (dst == nullptr || src == nullptr) return;
  for (; *src != '\0'; ++src) {
    if (*src == '%') *dst++ = '%';
    *dst++ = *src;
  }
  *dst = '\0';
}

int32_t StrToDisplayTime(const char *time, char *dst, uint32_t size) {
  if (time == nullptr || dst == nullptr) {
    REPORT_ERROR("StrToDisplayTime: Invalid parameters\n");
    return 0;
  }
  if (size < kDisplaySize) REPORT_ERROR("destination buffer too small\n");
  std::memset(dst, 0, size);
  if (std::strlen(time) != kStampLength) {
    REPORT_ERROR("time string is in unexpected format. Should be YYYYMMDDHHMMSS. [%s]\n", time);
    return 0;
  }
  // A cut display time would read as a different moment: a short buffer stays empty.
  if (size < kDisplaySize) return 0;
  // month/day/year hour:minute:second, each piece copied unchanged from its place in the stamp.
  constexpr struct {
    std::size_t from;
    std::size_t length;
    char after;
  } kPieces[] = {{4, 2, '/'}, {6, 2, '/'}, {0, 4, ' '}, {8, 2, ':'}, {10, 2, ':'}, {12, 2, '\0'}};
  char *out = dst;
  for (const auto &piece : kPieces) {
    std::memcpy(out, time + piece.from, piece.length);
    out += piece.length;
    *out++ = piece.after;
  }
  return 1;
}

}  // extern "C"
