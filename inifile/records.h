// Records of an INI document, shared by the parser, the editing operations and the writer.
//
// Every record starts with its 32-bit tag. A record's name text lies right behind its fixed part.
// A key's value has a field of 1024 bytes that never moves, so that a value pointer handed to a
// caller stays valid and shows later changes. Records read from a file are carved out of large
// blocks that the document owns: there, the value is first kept beside the name and copied into
// its field only when a caller asks for its address or changes it, so that the fields of a large
// file stay untouched, reserved address space. Records made by editing are one heap block each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tessera/inifile.h"

namespace tessera::inifile {

inline constexpr std::uint32_t kDocumentTag = 0x6378;
inline constexpr std::uint32_t kSectionTag = 0x6532;
inline constexpr std::uint32_t kKeyTag = 0x1235;

inline constexpr std::size_t kMaxPath = 256;    // characters of a document's path
inline constexpr std::size_t kMaxName = 255;    // characters of a section or key name
inline constexpr std::size_t kMaxValue = 1023;  // characters of a key's value
inline constexpr std::size_t kValueField = kMaxValue + 1;
inline constexpr std::size_t kLineBuffer = 1280;  // a read takes at most 1279 characters

// A block of the document's arena; its usable bytes follow.
struct Block {
  Block *next;
  std::size_t bytes;
};

// Room for the records of a file: record bytes are handed out from one block at a time, value
// fields from another; blocks grow as the file does and are all released with the document.
struct Arena {
  Block *blocks;  // every block, newest first
  char *next;     // free record bytes of the current block
  char *end;
  char *nextField;  // unused value fields of the current field block
  char *endField;
  std::size_t recordBlockBytes;  // size of the last record block, 0 before the first
  std::size_t fieldsPerBlock;    // fields of the last field block, 0 before the first

  // `bytes` of record room aligned for any record, or null when out of memory.
  [[nodiscard]] void *take(std::size_t bytes) noexcept;
  // One value field of kValueField bytes, or null when out of memory.
  [[nodiscard]] char *take_field() noexcept;
  // Releases every block.
  void release() noexcept;
};

}  // namespace tessera::inifile

struct InifileKey {
  std::uint32_t tag;
  std::uint32_t lineNumber;
  InifileKey *nextKey;
  char *value;  // the value text: in `field`, or beside the name until the field is first used
  char *field;  // the value field, kValueField bytes
  std::uint32_t ownBlock;  // 1: a heap block of its own, made by editing; 0: in the arena

  char *name() noexcept { return reinterpret_cast<char *>(this + 1); }
};

struct InifileSection {
  std::uint32_t tag;
  std::uint32_t lineNumber;
  std::uint32_t keyCount;
  std::uint32_t ownBlock;    // as for keys
  std::uint32_t editedKeys;  // keys of the chain that are blocks of their own
  InifileKey *firstKey;
  InifileSection *nextSection;

  char *name() noexcept { return reinterpret_cast<char *>(this + 1); }
};

struct InifileDocument {
  std::uint32_t tag;
  std::uint32_t sectionCount;
  InifileSection *firstSection;
  tessera::inifile::Arena arena;
  char path[tessera::inifile::kMaxPath + 1];  // as given to inifileOpen; empty when created
};

namespace tessera::inifile {

static_assert(offsetof(InifileKey, tag) == 0 && offsetof(InifileSection, tag) == 0 &&
              offsetof(InifileDocument, tag) == 0);
static_assert(sizeof(InifileKey) == (sizeof(void *) == 8 ? 40 : 24));
static_assert(sizeof(InifileSection) == (sizeof(void *) == 8 ? 40 : 28));
static_assert(sizeof(Block) % alignof(InifileKey) == 0);

// The handle's tag, read without trusting the handle's type. Null gives 0.
inline std::uint32_t tag_of(const void *handle) noexcept {
  std::uint32_t tag = 0;
  if (handle != nullptr) {
    std::memcpy(&tag, handle, sizeof tag);
  }
  return tag;
}

// True when `text` has more than `limit` characters; reads no further than it needs.
bool longer_than(const char *text, std::size_t limit) noexcept;

}  // namespace tessera::inifile
