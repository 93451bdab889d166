// Tag values cut out of XML-like text by plain string search: no parser, tree, attributes or
// nesting behind it.
#include "tessera/xml.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "trace/report.h"

namespace {

// Tag names longer than this are refused.
constexpr std::size_t kMaxTagName = 253;
// Tags are built in a work buffer of this size, which cuts them to 254 characters: a 252-character
// name loses the '>' of its end tag, and a 253-character one that of its start tag too.
constexpr std::size_t kTagBufferSize = 255;

// Formats `open` + name + '>' into `buffer`, cut to what the buffer holds with its terminator.
const char *format_tag(char (&buffer)[kTagBufferSize], std::string_view open,
                       std::string_view name) noexcept {
  constexpr std::size_t kLimit = kTagBufferSize - 1;
  std::size_t used = 0;
  for (const std::string_view piece : {open, name, std::string_view(">")}) {
    const std::size_t take = piece.size() < kLimit - used ? piece.size() : kLimit - used;
    std::memcpy(buffer + used, piece.data(), take);
    used += take;
  }
  buffer[used] = '\0';
  return buffer;
}

}  // namespace

int32_t XmlParseTag(const char *tag, const char *xml, char *value, unsigned int size) {
  if (!REPORT_ASSERT(tag != nullptr && xml != nullptr && value != nullptr && size != 0)) {
    return 0;
  }
  const std::size_t tag_length = strnlen(tag, kMaxTagName + 1);
  if (!REPORT_ASSERT(tag_length <= kMaxTagName)) {
    return 0;
  }
  const std::string_view name(tag, tag_length);

  char start_tag[kTagBufferSize];
  const char *found = std::strstr(xml, format_tag(start_tag, "<", name));
  if (found == nullptr) {
    REPORT_DETAIL("Failed to find XML start tag: %s : %s\n", start_tag, xml);
    return 0;
  }
  const char *start = found + std::strlen(start_tag);

  char end_tag[kTagBufferSize];
  const char *end = std::strstr(start, format_tag(end_tag, "</", name));
  if (end == nullptr) {
    REPORT_DETAIL("Failed to find XML end tag: %s : %s\n", tag, xml);
    return 0;
  }

  const auto length = static_cast<std::size_t>(end - start);
  if (size < length + 1) {
    REPORT_ERROR("buffer for XML data is too small to hold XML data value!\n");
    return 0;
  }
  std::memset(value, 0, size);
  std::memcpy(value, start, length);
  return 1;
}
