// Writing an INI document in the normal form: sections apart by one blank line, "name=value"
// lines, nothing for empty names.
#include <cstdio>

#include "inifile/records.h"
#include "system/linux/handles.h"

namespace tessera::inifile {
namespace {

void write_section(InifileSection *section, std::FILE *file) noexcept {
  ::fputc_unlocked('[', file);
  ::fputs_unlocked(section->name(), file);
  ::fputs_unlocked("]\n", file);
  for (InifileKey *key = section->firstKey; key != nullptr; key = key->nextKey) {
    if (key->name()[0] != '\0') {
      ::fputs_unlocked(key->name(), file);
      ::fputc_unlocked('=', file);
      ::fputs_unlocked(key->value, file);
      ::fputc_unlocked('\n', file);
    }
  }
}

}  // namespace
}  // namespace tessera::inifile

using namespace tessera;
using namespace tessera::inifile;

extern "C" int32_t inifileSave(InifileDocument *document, const char *path) {
  if (document == nullptr) {
    return 2;
  }
  if (tag_of(document) != kDocumentTag) {
    return 4;
  }
  if (path == nullptr) {
    return 11;
  }
  // Written in place: results of the writes and of the close are not looked at.
  UniqueFile file(std::fopen(path, "we"));
  if (!file) {
    return 11;
  }
  for (InifileSection *section = document->firstSection; section != nullptr;
       section = section->nextSection) {
    if (section != document->firstSection) {
      ::fputc_unlocked('\n', file.get());
    }
    if (section->name()[0] != '\0') {
      write_section(section, file.get());
    }
  }
  return 0;
}
