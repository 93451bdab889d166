// INI documents: the memory of their records, the parser, making and freeing a document, and the
// three text helpers of the C interface.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "inifile/records.h"
#include "memory/heap.h"
#include "system/linux/handles.h"

namespace tessera::inifile {
namespace {

constexpr std::size_t kRecordAlign = std::max(alignof(InifileKey), alignof(InifileSection));
// Record blocks grow from 4 KiB to 64 KiB; field blocks from 16 to 1024 fields (1 MiB), so that a
// large file needs few blocks and a small one reserves little.
constexpr std::size_t kFirstRecordBlock = 4 * 1024;
constexpr std::size_t kLastRecordBlock = 64 * 1024;
constexpr std::size_t kFirstFieldBlock = 16;
constexpr std::size_t kLastFieldBlock = 1024;

constexpr std::size_t round_up(std::size_t bytes) {
  return (bytes + kRecordAlign - 1) & ~(kRecordAlign - 1);
}

// A new block of `bytes` usable bytes put at the head of the arena's chain, or null.
char *add_block(Arena &arena, std::size_t bytes) noexcept {
  auto *block = static_cast<Block *>(heap::allocate(sizeof(Block) + bytes));
  if (block == nullptr) {
    return nullptr;
  }
  block->next = arena.blocks;
  block->bytes = bytes;
  arena.blocks = block;
  return reinterpret_cast<char *>(block + 1);
}

}  // namespace

void *Arena::take(std::size_t bytes) noexcept {
  bytes = round_up(bytes);
  if (static_cast<std::size_t>(end - next) < bytes) {
    const std::size_t size =
        std::max(recordBlockBytes == 0 ? kFirstRecordBlock
                                       : std::min(2 * recordBlockBytes, kLastRecordBlock),
                 bytes);
    char *room = add_block(*this, size);
    if (room == nullptr) {
      return nullptr;
    }
    recordBlockBytes = size;
    next = room;
    end = room + size;
  }
  void *record = next;
  next += bytes;
  return record;
}

char *Arena::take_field() noexcept {
  if (nextField == endField) {
    const std::size_t count =
        fieldsPerBlock == 0 ? kFirstFieldBlock : std::min(2 * fieldsPerBlock, kLastFieldBlock);
    char *room = add_block(*this, count * kValueField);
    if (room == nullptr) {
      return nullptr;
    }
    fieldsPerBlock = count;
    nextField = room;
    endField = room + count * kValueField;
  }
  char *field = nextField;
  nextField += kValueField;
  return field;
}

void Arena::release() noexcept {
  while (blocks != nullptr) {
    heap::release(std::exchange(blocks, blocks->next));
  }
  *this = Arena{};
}

bool longer_than(const char *text, std::size_t limit) noexcept {
  return ::strnlen(text, limit + 1) > limit;
}

namespace {

InifileDocument *make_document(const char *path) noexcept {
  auto *document = static_cast<InifileDocument *>(heap::allocate_zeroed(sizeof(InifileDocument)));
  if (document != nullptr) {
    document->tag = kDocumentTag;
    std::memcpy(document->path, path, std::strlen(path) + 1);
  }
  return document;
}

// Drops the blanks at both ends of [begin, end).
void trim(const char *&begin, const char *&end) noexcept {
  while (begin != end && *begin == ' ') {
    ++begin;
  }
  while (end != begin && end[-1] == ' ') {
    --end;
  }
}

// Builds a document line by line. Each step returns false when reading must stop.
class Parser {
 public:
  explicit Parser(InifileDocument *document) noexcept : document_(document) {}

  // One read of at most 1279 characters, terminated.
  bool line(char *text) noexcept {
    ++lineNumber_;
    while (*text == ' ') {
      ++text;
    }
    if (*text == ';' || *text == '#') {
      return true;
    }
    // A read ends at its line feed, so a "\r\n" or a line feed can only stand at its end.
    std::size_t length = std::strlen(text);
    if (length != 0 && text[length - 1] == '\n') {
      --length;
      if (length != 0 && text[length - 1] == '\r') {
        --length;
      }
    }
    if (const void *semicolon = std::memchr(text, ';', length)) {
      length = static_cast<std::size_t>(static_cast<const char *>(semicolon) - text);
    }
    if (std::memchr(text, '\t', length) != nullptr) {
      text[length] = '\0';
      inifileStripChar(text, '\t');
      length = std::strlen(text);
    }
    const char *end = text + length;
    if (length != 0 && text[0] == '[') {
      if (const void *close = std::memchr(text, ']', length)) {
        return header(text + 1, static_cast<const char *>(close));
      }
    }
    if (const void *equals = std::memchr(text, '=', length)) {
      return key(text, static_cast<const char *>(equals), end);
    }
    return true;
  }

 private:
  bool header(const char *begin, const char *end) noexcept {
    trim(begin, end);
    const std::size_t length = std::min(static_cast<std::size_t>(end - begin), kMaxName);
    auto *section =
        static_cast<InifileSection *>(document_->arena.take(sizeof(InifileSection) + length + 1));
    if (section == nullptr) {
      return false;
    }
    *section = InifileSection{.tag = kSectionTag, .lineNumber = lineNumber_};
    std::memcpy(section->name(), begin, length);
    section->name()[length] = '\0';
    (lastSection_ != nullptr ? lastSection_->nextSection : document_->firstSection) = section;
    lastSection_ = section;
    ++document_->sectionCount;
    section_ = section;
    lastKey_ = nullptr;
    return true;
  }

  bool key(const char *begin, const char *equals, const char *end) noexcept {
    if (static_cast<std::size_t>(equals - begin) > kMaxName ||
        static_cast<std::size_t>(end - equals - 1) > kMaxValue) {
      return false;
    }
    if (section_ == nullptr) {
      return true;  // keys before the first section are not part of the document
    }
    const char *nameEnd = equals;
    const char *value = equals + 1;
    trim(begin, nameEnd);
    trim(value, end);
    const auto nameLength = static_cast<std::size_t>(nameEnd - begin);
    const auto valueLength = static_cast<std::size_t>(end - value);
    auto *key = static_cast<InifileKey *>(
        document_->arena.take(sizeof(InifileKey) + nameLength + valueLength + 2));
    char *field = key != nullptr ? document_->arena.take_field() : nullptr;
    if (field == nullptr) {
      return false;
    }
    char *text = key->name();
    std::memcpy(text, begin, nameLength);
    text[nameLength] = '\0';
    text += nameLength + 1;
    std::memcpy(text, value, valueLength);
    text[valueLength] = '\0';
    *key = InifileKey{.tag = kKeyTag, .lineNumber = lineNumber_, .value = text, .field = field};
    (lastKey_ != nullptr ? lastKey_->nextKey : section_->firstKey) = key;
    lastKey_ = key;
    ++section_->keyCount;
    return true;
  }

  InifileDocument *document_;
  InifileSection *section_ = nullptr;  // the current section
  InifileSection *lastSection_ = nullptr;
  InifileKey *lastKey_ = nullptr;  // the last key of the current section
  std::uint32_t lineNumber_ = 0;
};

}  // namespace
}  // namespace tessera::inifile

using namespace tessera;
using namespace tessera::inifile;

extern "C" {

int32_t inifileOpen(const char *path, InifileDocument **out) {
  if (out != nullptr) {
    *out = nullptr;
  }
  if (path == nullptr || out == nullptr || longer_than(path, kMaxPath)) {
    return 1;
  }
  UniqueFile file(std::fopen(path, "re"));
  if (!file) {
    return 1;
  }
  heap::Owned<char> line(static_cast<char *>(heap::allocate(kLineBuffer)));
  if (!line) {
    return 3;
  }
  InifileDocument *document = make_document(path);
  if (document == nullptr) {
    return 3;
  }
  Parser parser(document);
  // A read error ends the file like its end does.
  while (::fgets_unlocked(line.get(), kLineBuffer, file.get()) != nullptr &&
         parser.line(line.get())) {
  }
  *out = document;
  return 0;
}

InifileDocument *inifileCreate(void) {
  return make_document("");
}

int32_t inifileClose(InifileDocument *document) {
  if (document == nullptr) {
    return 2;
  }
  if (tag_of(document) != kDocumentTag) {
    return 4;
  }
  for (InifileSection *section = document->firstSection; section != nullptr;) {
    for (InifileKey *key = section->firstKey; section->editedKeys != 0 && key != nullptr;) {
      InifileKey *next = key->nextKey;
      if (key->ownBlock != 0) {
        --section->editedKeys;
        heap::release(key);
      }
      key = next;
    }
    InifileSection *next = section->nextSection;
    if (section->ownBlock != 0) {
      heap::release(section);
    }
    section = next;
  }
  document->arena.release();
  document->tag = 0;
  heap::release(document);
  return 0;
}

void inifileTrimLeft(char *text) {
  if (text == nullptr) {
    return;
  }
  std::size_t blanks = 0;
  while (text[blanks] == ' ') {
    ++blanks;
  }
  if (blanks != 0) {
    std::memmove(text, text + blanks, std::strlen(text + blanks) + 1);
  }
}

void inifileTrimRight(char *text) {
  if (text == nullptr) {
    return;
  }
  for (std::size_t length = std::strlen(text); length != 0 && text[length - 1] == ' ';) {
    text[--length] = '\0';
  }
}

void inifileStripChar(char *text, char ch) {
  if (text == nullptr) {
    return;
  }
  char *to = text;
  for (const char *from = text; *from != '\0'; ++from) {
    if (*from != ch) {
      *to++ = *from;
    }
  }
  *to = '\0';
}

}  // extern "C"
