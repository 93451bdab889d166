// Name/value list strings: 'a=1,b=2' read by position and by name, separator escapes inside
// values, and tidying of multi-line values.
#include "tessera/nvpair.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace {

// The separators and their escapes, which are all of one length.
struct Separator {
  char character;
  std::string_view escape;
};
constexpr Separator kSeparators[] = {{'=', "#EQU#"}, {',', "#CMT#"}};
constexpr std::size_t kEscapeLength = 5;
static_assert(kSeparators[0].escape.size() == kEscapeLength &&
              kSeparators[1].escape.size() == kEscapeLength);

// The static result of NvPairEscapeSep: at most 1199 characters and the terminator.
constexpr std::size_t kEscapeBufferSize = 1200;
char escape_buffer[kEscapeBufferSize];

// Room for one more character in an output of `size` bytes that holds `used` characters,
// keeping a byte for the terminator.
constexpr bool has_room(std::size_t used, unsigned int size) noexcept {
  return used + 1 < size;
}

// Whether the pair name `pair` equals the first pair.size() bytes of `wanted`. The wanted name
// need not end there, so the pair's name only has to be a prefix of it. Stops at wanted's
// terminator, since no byte of a pair name is NUL.
bool pair_name_is_prefix(std::string_view pair, const char *wanted) noexcept {
  for (std::size_t i = 0; i < pair.size(); ++i) {
    if (wanted[i] != pair[i]) {
      return false;
    }
  }
  return true;
}

// The value readers' one walk over the list: states Name, Skip and Copy.
uint32_t find_value(const char *list, const char *name, unsigned int size, char *value) noexcept {
  std::memset(value, 0, size);
  enum class State { kName, kSkip, kCopy } state = State::kName;
  const char *pair_start = list;
  std::size_t copied = 0;
  for (const char *p = list;; ++p) {
    const char c = *p;
    if (c == '\0') {
      return state == State::kCopy ? NVPAIR_OK : NVPAIR_NOT_FOUND;
    }
    switch (state) {
      case State::kName:
        if (c == '=') {
          const std::string_view pair(pair_start, static_cast<std::size_t>(p - pair_start));
          state = pair_name_is_prefix(pair, name) ? State::kCopy : State::kSkip;
        } else if (c == ',') {
          return NVPAIR_INVALID;
        }
        break;
      case State::kSkip:
        if (c == '=') {
          return NVPAIR_INVALID;
        }
        if (c == ',') {
          state = State::kName;
          pair_start = p + 1;
        }
        break;
      case State::kCopy:
        if (c == '=') {
          return NVPAIR_INVALID;
        }
        if (c == ',') {
          return NVPAIR_OK;
        }
        if (!has_room(copied, size)) {
          return NVPAIR_TOO_SMALL;
        }
        value[copied++] = c;
        break;
    }
  }
}

// The separator `c` is, or null.
constexpr const Separator *separator_of(char c) noexcept {
  for (const Separator &separator : kSeparators) {
    if (separator.character == c) {
      return &separator;
    }
  }
  return nullptr;
}

}  // namespace

uint32_t NvPairListGetName(const char *list, int32_t index, unsigned int size, char *name) {
  if (list == nullptr || name == nullptr) {
    return NVPAIR_INVALID;
  }
  std::memset(name, 0, size);

  // The name's start: behind the index-th unescaped ','. An escape is skipped whole, unless the
  // backslash ends the text.
  const char *p = list;
  int32_t count = 0;
  while (count != index && index >= 0 && *p != '\0') {
    if (*p == '\\') {
      p += p[1] == '\0' ? 1 : 2;
    } else {
      count += *p == ',' ? 1 : 0;
      ++p;
    }
  }
  if (count != index) {
    return NVPAIR_NO_INDEX;
  }

  std::size_t copied = 0;
  for (;;) {
    char c = *p;
    if (c == '\\') {
      c = *++p;  // taken literally, whatever it is; a trailing backslash escapes nothing
    } else if (c == ',' || c == '=') {
      return NVPAIR_OK;
    }
    if (c == '\0') {
      return copied > 0 ? NVPAIR_OK : NVPAIR_NO_NAME;
    }
    if (!has_room(copied, size)) {
      return NVPAIR_TOO_SMALL;
    }
    name[copied++] = c;
    ++p;
  }
}

uint32_t NvPairListGetValue(const char *list, const char *name, unsigned int size, char *value) {
  if (list == nullptr || name == nullptr || value == nullptr) {
    return NVPAIR_INVALID;
  }
  return find_value(list, name, size, value);
}

uint32_t NvPairListGetLongValue(const char *list, const char *name, unsigned int size,
                                char *value) {
  if (list == nullptr || name == nullptr || value == nullptr) {
    return NVPAIR_INVALID;
  }
  const uint32_t result = find_value(list, name, size, value);
  if (size > 0) {
    NvPairUnescapeSep(value);
  }
  return result;
}

char *NvPairEscapeSep(const char *text) {
  std::memset(escape_buffer, 0, sizeof escape_buffer);
  if (text == nullptr) {
    return escape_buffer;
  }
  // Whole characters and escapes only, while they fit before the terminator.
  std::size_t used = 0;
  for (const char *p = text; *p != '\0'; ++p) {
    const Separator *separator = separator_of(*p);
    const std::string_view piece =
        separator != nullptr ? separator->escape : std::string_view(p, 1);
    if (used + piece.size() >= kEscapeBufferSize) {
      break;
    }
    std::memcpy(escape_buffer + used, piece.data(), piece.size());
    used += piece.size();
  }
  return escape_buffer;
}

char *NvPairUnescapeSep(char *text) {
  if (text == nullptr) {
    return nullptr;
  }
  // Resolving only shrinks the text, so it is rewritten in place: the write position never
  // passes the read position, and a text of any length is resolved whole.
  char *out = text;
  const char *in = text;
  while (*in != '\0') {
    const Separator *match = nullptr;
    if (*in == '#') {
      for (const Separator &separator : kSeparators) {
        // strncmp stops at the terminator, so a short tail is never read past.
        if (std::strncmp(in, separator.escape.data(), kEscapeLength) == 0) {
          match = &separator;
          break;
        }
      }
    }
    if (match != nullptr) {
      *out++ = match->character;
      in += kEscapeLength;
    } else {
      *out++ = *in++;
    }
  }
  *out = '\0';
  return text;
}

char *NvPairCleanValue(char *text) {
  if (text == nullptr) {
    return nullptr;
  }
  // Rewritten in place: every step keeps or drops bytes, or turns a CR into a LF, so the output
  // never overtakes the input and lines and texts of any length are cleaned whole.
  char *out = text;
  char *line_start = text;
  // Trims the line that begins at line_start: bytes of value 32 and below go from its end.
  const auto trim_line = [&out, &line_start]() noexcept {
    while (out > line_start && static_cast<unsigned char>(out[-1]) <= 32) {
      --out;
    }
  };
  for (const char *in = text; *in != '\0'; ++in) {
    char c = *in;
    if (c == '\r') {
      if (in[1] == '\n') {
        continue;  // dropped; the LF ends the line
      }
      c = '\n';  // a lone CR ends the line
    }
    if (c == '\n') {
      trim_line();
      *out++ = '\n';
      line_start = out;
    } else {
      *out++ = c;
    }
  }
  trim_line();
  *out = '\0';
  return text;
}
