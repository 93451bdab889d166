// Walking and changing an INI document: lookups by index and by name, new sections and keys,
// values, removal.
#include <cstring>

#include "inifile/records.h"
#include "memory/heap.h"
#include "trace/report.h"

namespace tessera::inifile {
namespace {

constexpr std::int32_t kNoSuchSection = 6;
constexpr std::int32_t kSectionAdded = 1;
constexpr std::uint32_t kNoLine = 0xFFFFFFFF;

bool is_document(const InifileDocument *document) noexcept {
  return tag_of(document) == kDocumentTag;
}
bool is_section(const InifileSection *section) noexcept {
  return tag_of(section) == kSectionTag;
}
bool is_key(const InifileKey *key) noexcept {
  return tag_of(key) == kKeyTag;
}

// The record `index` links along the chain from `record`, or null past its end.
template <class Record>
Record *nth(Record *record, Record *Record::*next, std::uint32_t index) noexcept {
  for (; record != nullptr && index != 0; --index) {
    record = record->*next;
  }
  return record;
}

// The first record named exactly `name` along the chain from `record`, or null.
template <class Record>
Record *named(Record *record, Record *Record::*next, const char *name) noexcept {
  while (record != nullptr && std::strcmp(record->name(), name) != 0) {
    record = record->*next;
  }
  return record;
}

// The key's value field, holding its value from now on; the value's address is then stable.
char *value_field(InifileKey *key) noexcept {
  if (key->value != key->field) {
    std::memcpy(key->field, key->value, std::strlen(key->value) + 1);
    key->value = key->field;
  }
  return key->field;
}

// Records made by editing: one heap block each, line number 0, outside any chain. Null when
// out of memory.
InifileSection *new_section(const char *name) noexcept {
  const std::size_t length = std::strlen(name);
  auto *section =
      static_cast<InifileSection *>(heap::allocate(sizeof(InifileSection) + length + 1));
  if (section != nullptr) {
    *section = InifileSection{.tag = kSectionTag, .ownBlock = 1};
    std::memcpy(section->name(), name, length + 1);
  }
  return section;
}

InifileKey *new_key(const char *name) noexcept {
  const std::size_t length = std::strlen(name);
  auto *key =
      static_cast<InifileKey *>(heap::allocate(sizeof(InifileKey) + length + 1 + kValueField));
  if (key != nullptr) {
    char *field = key->name() + length + 1;
    *key = InifileKey{.tag = kKeyTag, .value = field, .field = field, .ownBlock = 1};
    std::memcpy(key->name(), name, length + 1);
    field[0] = '\0';
  }
  return key;
}

// Appends at the end of the chain, walking it from its head.
void append_section(InifileDocument *document, InifileSection *section) noexcept {
  InifileSection **link = &document->firstSection;
  while (*link != nullptr) {
    link = &(*link)->nextSection;
  }
  *link = section;
  ++document->sectionCount;
}

void append_key(InifileSection *section, InifileKey *key) noexcept {
  InifileKey **link = &section->firstKey;
  while (*link != nullptr) {
    link = &(*link)->nextKey;
  }
  *link = key;
  ++section->keyCount;
  section->editedKeys += key->ownBlock;
}

// Copies at most kMaxValue characters of `value` into the key's field.
void set_value(InifileKey *key, const char *value) noexcept {
  const std::size_t length = ::strnlen(value, kMaxValue);
  std::memcpy(key->field, value, length);
  key->field[length] = '\0';
  key->value = key->field;
}

InifileKey *find_key(InifileSection *section, const char *name) noexcept {
  return named(section->firstKey, &InifileKey::nextKey, name);
}

}  // namespace
}  // namespace tessera::inifile

using namespace tessera;
using namespace tessera::inifile;

extern "C" {

InifileSection *inifileGetSection(InifileDocument *document, uint32_t index) {
  if (!is_document(document)) {
    return nullptr;
  }
  InifileSection *section = nth(document->firstSection, &InifileSection::nextSection, index);
  if (section == nullptr) {
    REPORT_DEBUG("Status = %d\n", kNoSuchSection);
  }
  return section;
}

InifileSection *inifileGetSectionByName(InifileDocument *document, const char *name) {
  if (!is_document(document) || name == nullptr) {
    return nullptr;
  }
  InifileSection *section = named(document->firstSection, &InifileSection::nextSection, name);
  if (section == nullptr) {
    REPORT_DEBUG("Status = %d\n", kNoSuchSection);
  }
  return section;
}

const char *inifileGetSectionName(InifileSection *section) {
  return is_section(section) ? section->name() : nullptr;
}

uint32_t inifileGetNumKeys(InifileSection *section) {
  return is_section(section) ? section->keyCount : 0;
}

uint32_t inifileGetSectionLineNumber(InifileSection *section) {
  return is_section(section) ? section->lineNumber : kNoLine;
}

InifileKey *inifileGetKey(InifileSection *section, uint32_t index) {
  return is_section(section) ? nth(section->firstKey, &InifileKey::nextKey, index) : nullptr;
}

InifileKey *inifileGetKeyByName(InifileSection *section, const char *name) {
  return is_section(section) && name != nullptr ? find_key(section, name) : nullptr;
}

const char *inifileGetKeyName(InifileKey *key) {
  return is_key(key) ? key->name() : nullptr;
}

const char *inifileGetKeyValue(InifileKey *key) {
  return is_key(key) ? value_field(key) : nullptr;
}

uint32_t inifileGetKeyLineNumber(InifileKey *key) {
  return is_key(key) ? key->lineNumber : kNoLine;
}

const char *inifileGetKeyValueByName(InifileDocument *document, const char *sectionName,
                                     const char *keyName) {
  if (keyName == nullptr) {
    return nullptr;
  }
  return inifileGetKeyValue(
      inifileGetKeyByName(inifileGetSectionByName(document, sectionName), keyName));
}

InifileSection *inifileAddNewSection(InifileDocument *document, const char *name) {
  if (name == nullptr || longer_than(name, kMaxName) || !is_document(document)) {
    return nullptr;
  }
  // The lookup comes first: should the new record be out of reach, the caller still gets a
  // section of that name when there is one.
  InifileSection *found = inifileGetSectionByName(document, name);
  InifileSection *section = new_section(name);
  if (section == nullptr) {
    return found;
  }
  append_section(document, section);
  REPORT_DEBUG("Status = %d\n", kSectionAdded);
  return section;
}

int32_t inifileSetKeyValueByHandle(InifileSection *section, const char *keyName,
                                   const char *value) {
  if (!is_section(section)) {
    return 4;
  }
  if (keyName == nullptr || value == nullptr) {
    return 2;
  }
  if (longer_than(keyName, kMaxName)) {
    return 9;
  }
  if (find_key(section, keyName) != nullptr) {
    return 1;
  }
  InifileKey *key = new_key(keyName);
  if (key == nullptr) {
    return 3;
  }
  set_value(key, value);
  append_key(section, key);
  return 0;
}

int32_t inifileSetKeyValueByName(InifileDocument *document, const char *sectionName,
                                 const char *keyName, const char *value) {
  if (document == nullptr || sectionName == nullptr || keyName == nullptr || value == nullptr) {
    return 2;
  }
  if (longer_than(sectionName, kMaxName)) {
    return 8;
  }
  if (longer_than(keyName, kMaxName)) {
    return 9;
  }
  if (!is_document(document)) {
    return 4;
  }
  InifileSection *section = inifileGetSectionByName(document, sectionName);
  if (section == nullptr) {
    section = new_section(sectionName);
    if (section == nullptr) {
      return 3;
    }
    append_section(document, section);
  }
  InifileKey *key = find_key(section, keyName);
  if (key == nullptr) {
    key = new_key(keyName);
    if (key == nullptr) {
      return 3;
    }
    append_key(section, key);
  }
  set_value(key, value);
  return 0;
}

int32_t inifileRemoveKey(InifileSection *section, InifileKey *key) {
  if (!is_key(key) || !is_section(section) || section->keyCount == 0) {
    return 1;
  }
  InifileKey **link = &section->firstKey;
  while (*link != nullptr && *link != key) {
    link = &(*link)->nextKey;
  }
  if (*link == nullptr) {
    return 1;  // a key of another section: nothing of this one to remove
  }
  *link = key->nextKey;
  --section->keyCount;
  key->tag = 0;
  if (key->ownBlock != 0) {
    --section->editedKeys;
    heap::release(key);
  }
  return 0;
}

}  // extern "C"
