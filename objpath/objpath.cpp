// CIM object paths: '//host/root/cimv2:CIM_Foo.Key=1,Other=2' parsed into a record that lives
// wholly in the caller's buffer, and key properties looked up in it.
//
// The buffer may stand at any address and the pair table lies unaligned behind the class name, so
// every field of the record and of the table is written and read with memcpy through byte
// pointers, never through the record types.
#include "tessera/objpath.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "tessera/strlib.h"
#include "trace/report.h"

namespace {

constexpr int32_t kOk = 0;
constexpr int32_t kInvalid = 4;
constexpr int32_t kNoRoom = 504;

constexpr std::string_view kDefaultNameSpace = "root/cimv2";

// The records' layout, which tools read: 32-bit pointers on the controller, 64-bit on
// workstations. The text area begins at sizeof(ObjectPath).
static_assert(offsetof(ObjectPath, magic) == 0);
static_assert(offsetof(ObjectPathPair, name) == 0);
#if UINTPTR_MAX == 0xFFFFFFFFU
static_assert(sizeof(ObjectPath) == 24 && sizeof(ObjectPathPair) == 8);
static_assert(offsetof(ObjectPath, host) == 4 && offsetof(ObjectPath, nameSpace) == 8);
static_assert(offsetof(ObjectPath, className) == 12 && offsetof(ObjectPath, pairCount) == 16);
static_assert(offsetof(ObjectPath, pairs) == 20 && offsetof(ObjectPathPair, value) == 4);
#else
static_assert(sizeof(ObjectPath) == 48 && sizeof(ObjectPathPair) == 16);
static_assert(offsetof(ObjectPath, host) == 8 && offsetof(ObjectPath, nameSpace) == 16);
static_assert(offsetof(ObjectPath, className) == 24 && offsetof(ObjectPath, pairCount) == 32);
static_assert(offsetof(ObjectPath, pairs) == 40 && offsetof(ObjectPathPair, value) == 8);
#endif

// The address as bytes. Going through an integer keeps the compiler from assuming the record
// type's alignment, which neither the caller's buffer nor the pair table needs to have.
unsigned char *bytes_at(const void *address) noexcept {
  return reinterpret_cast<unsigned char *>(reinterpret_cast<std::uintptr_t>(address));
}

template <class T>
void store(unsigned char *at, T field) noexcept {
  std::memcpy(at, &field, sizeof field);
}

template <class T>
T load(const unsigned char *at) noexcept {
  T field;
  std::memcpy(&field, at, sizeof field);
  return field;
}

// Lays the text area out behind the record, piece by piece, in a zeroed buffer of `size` bytes.
class TextArea {
 public:
  TextArea(unsigned char *base, std::size_t size) noexcept
      : base_(base), size_(size), used_(sizeof(ObjectPath)) {}

  // Copies `text` to the next free byte, followed by `zeros` zero bytes (already there from the
  // zeroing). Null when the piece and its terminators do not fit.
  char *place(std::string_view text, std::size_t zeros) noexcept {
    unsigned char *at = reserve(text.size() + zeros);
    if (at != nullptr && !text.empty()) {
      std::memcpy(at, text.data(), text.size());
    }
    return reinterpret_cast<char *>(at);
  }

  // The next `bytes` bytes, or null when they do not fit.
  unsigned char *reserve(std::size_t bytes) noexcept {
    if (bytes > size_ - used_) {
      return nullptr;
    }
    unsigned char *at = base_ + used_;
    used_ += bytes;
    return at;
  }

 private:
  unsigned char *base_;
  std::size_t size_;
  std::size_t used_;
};

// `length` characters of `text` from `start`, both inside it. (substr would check them and could
// throw, which this library never does.)
std::string_view piece_of(std::string_view text, std::size_t start, std::size_t length) noexcept {
  return {text.data() + start, length};
}

// The text of `rest` up to `stop` or its end; `rest` moves behind it and behind the stop.
std::string_view take_until(std::string_view &rest, char stop) noexcept {
  const std::size_t end = rest.find(stop);
  if (end == std::string_view::npos) {
    const std::string_view piece = rest;
    rest.remove_prefix(rest.size());
    return piece;
  }
  const std::string_view piece = piece_of(rest, 0, end);
  rest.remove_prefix(end + 1);
  return piece;
}

bool has_blank(std::string_view name) noexcept {
  return name.find_first_of(" \t") != std::string_view::npos;
}

}  // namespace

int32_t ObjectPathInit(ObjectPath *path, int32_t size, const char *text) {
  if (path == nullptr || text == nullptr || size <= 0) {
    return kInvalid;
  }
  unsigned char *const base = bytes_at(path);
  std::memset(base, 0, static_cast<std::size_t>(size));
  if (static_cast<std::size_t>(size) <= sizeof(ObjectPath)) {
    return kNoRoom;
  }

  TextArea area(base, static_cast<std::size_t>(size));
  char *const empty = area.place({}, 1);
  store(base + offsetof(ObjectPath, host), empty);
  store(base + offsetof(ObjectPath, nameSpace), empty);
  store(base + offsetof(ObjectPath, className), empty);

  // The tail behind the last ':' names the class and its keys, and must hold a '.'.
  const std::string_view whole(text);
  const std::size_t colon = whole.rfind(':');
  const std::string_view tail = colon == std::string_view::npos
                                    ? whole
                                    : piece_of(whole, colon + 1, whole.size() - colon - 1);
  const std::size_t dot = tail.find('.');
  if (dot == std::string_view::npos) {
    return kInvalid;
  }

  // The prefix speaks only from its first "root" on; the text before it, less the separator
  // character, is the host.
  const std::size_t root = whole.find("root");
  char *name_space = nullptr;
  if (colon == std::string_view::npos || root == std::string_view::npos || root > colon) {
    name_space = area.place(kDefaultNameSpace, 1);
  } else {
    if (root > 0) {
      char *host = area.place(piece_of(whole, 0, root - 1), 2);
      if (host == nullptr) {
        return kNoRoom;
      }
      store(base + offsetof(ObjectPath, host), host);
    }
    name_space = area.place(piece_of(whole, root, colon - root), 2);
  }
  if (name_space == nullptr) {
    return kNoRoom;
  }
  store(base + offsetof(ObjectPath, nameSpace), name_space);

  char *class_name = area.place(piece_of(tail, 0, dot), 1);
  if (class_name == nullptr) {
    return kNoRoom;
  }
  store(base + offsetof(ObjectPath, className), class_name);

  // One pair for every '=' of the key list, counted in 16 bits. A value holding '=' leaves
  // entries over at the end, which take the empty name and value that the text's end gives.
  std::string_view keys = piece_of(tail, dot + 1, tail.size() - dot - 1);
  const auto pair_count = static_cast<uint16_t>(std::count(keys.begin(), keys.end(), '='));
  store(base + offsetof(ObjectPath, pairCount), pair_count);
  unsigned char *table = area.reserve(std::size_t{pair_count} * sizeof(ObjectPathPair));
  if (table == nullptr) {
    return kNoRoom;
  }
  store(base + offsetof(ObjectPath, pairs), table);

  for (uint16_t i = 0; i < pair_count; ++i) {
    const std::string_view key = take_until(keys, '=');
    if (has_blank(key)) {
      return kInvalid;
    }
    char *name = area.place(key, 1);
    if (name == nullptr) {
      return kNoRoom;
    }
    char *value = area.place(take_until(keys, ','), 1);
    if (value == nullptr) {
      return kNoRoom;
    }
    unsigned char *entry = table + std::size_t{i} * sizeof(ObjectPathPair);
    store(entry + offsetof(ObjectPathPair, name), name);
    store(entry + offsetof(ObjectPathPair, value), value);
  }

  store(base + offsetof(ObjectPath, magic), OBJECTPATH_MAGIC);
  return kOk;
}

char *ObjectPathGetPropertyValue(const ObjectPath *path, const char *name) {
  const unsigned char *base = bytes_at(path);
  if (path == nullptr || name == nullptr ||
      load<uint32_t>(base + offsetof(ObjectPath, magic)) != OBJECTPATH_MAGIC) {
    REPORT_ERROR("Invalid parameter\n");
    return nullptr;
  }
  const auto pair_count = load<uint16_t>(base + offsetof(ObjectPath, pairCount));
  const unsigned char *table = bytes_at(load<ObjectPathPair *>(base + offsetof(ObjectPath, pairs)));
  for (uint16_t i = 0; i < pair_count; ++i) {
    const unsigned char *entry = table + std::size_t{i} * sizeof(ObjectPathPair);
    if (StrEqual(name, load<char *>(entry + offsetof(ObjectPathPair, name))) == 1) {
      return load<char *>(entry + offsetof(ObjectPathPair, value));
    }
  }
  return nullptr;
}
