// The five XML/HTML entities, encoded and decoded by table in one pass each.
#include "tessera/http.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "trace/report.h"

namespace {

struct Entity {
  char character;
  std::string_view text;
};

constexpr std::array<Entity, 5> kEntities = {{
    {'<', "&lt;"},
    {'>', "&gt;"},
    {'&', "&amp;"},
    {'"', "&quot;"},
    {'\'', "&apos;"},
}};

// The encoder writes a character only while this many bytes are free: the longest entity and the
// terminator.
constexpr std::size_t kEncodeReserve = 7;
static_assert(kEncodeReserve == std::string_view("&apos;").size() + 1);

// The entity of each byte, or null for a byte written as it is.
constexpr std::array<const Entity *, 256> kEntityOf = [] {
  std::array<const Entity *, 256> table{};
  for (const Entity &entity : kEntities) {
    table[static_cast<unsigned char>(entity.character)] = &entity;
  }
  return table;
}();

// Whether `text` has more than `limit` characters; reads at most limit + 1 of them.
bool longer_than(const char *text, unsigned int limit) noexcept {
  return strnlen(text, limit) == limit && text[limit] != '\0';
}

}  // namespace

int32_t HttpEncodeSpecialCharacters(const char *source, char *destination, unsigned int size) {
  if (!REPORT_ASSERT(source != nullptr && destination != nullptr && !longer_than(source, size))) {
    return 0;
  }
  std::memset(destination, 0, size);
  std::size_t used = 0;
  for (const char *p = source; *p != '\0'; ++p) {
    if (!REPORT_ASSERT(size - used >= kEncodeReserve)) {
      return 1;  // what fits stays, terminated by the zeroing above
    }
    const Entity *entity = kEntityOf[static_cast<unsigned char>(*p)];
    if (entity == nullptr) {
      destination[used++] = *p;
    } else {
      std::memcpy(destination + used, entity->text.data(), entity->text.size());
      used += entity->text.size();
    }
  }
  return 1;
}

int32_t HttpDecodeSpecialCharacters(const char *source, char *destination, unsigned int size) {
  if (!REPORT_ASSERT(source != nullptr && destination != nullptr && !longer_than(source, size))) {
    return 0;
  }
  char *out = destination;
  const char *in = source;
  while (*in != '\0') {
    const Entity *match = nullptr;
    if (*in == '&') {
      for (const Entity &entity : kEntities) {
        // strncmp stops at the terminator, so a cut entity at the end is never read past.
        if (std::strncmp(in, entity.text.data(), entity.text.size()) == 0) {
          match = &entity;
          break;
        }
      }
    }
    if (match != nullptr) {
      *out++ = match->character;
      in += match->text.size();
    } else {
      *out++ = *in++;
    }
  }
  *out = '\0';
  return 1;
}
