// Files and documents for the INI tests: a scratch folder, documents that close themselves, and
// a one-line-per-record dump of a document that tests compare as text.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "scratch.h"
#include "tessera/inifile.h"

namespace tessera::test {

struct Closer {
  void operator()(InifileDocument *document) const { inifileClose(document); }
};
using Document = std::unique_ptr<InifileDocument, Closer>;

// A folder of this process for the files of its tests.
inline const ScratchDir &scratch() {
  static const ScratchDir dir;
  return dir;
}

// Writes `bytes` to the file `name` of that folder and returns its path.
inline std::string ini_file(std::string_view bytes, const std::string &name = "in.ini") {
  write_file(scratch().file(name), bytes);
  return scratch().file(name);
}

// Reads `bytes` as a file; the status goes to `status` when given.
inline Document parse(std::string_view bytes, int32_t *status = nullptr) {
  InifileDocument *document = nullptr;
  const int32_t result = inifileOpen(ini_file(bytes).c_str(), &document);
  if (status != nullptr) {
    *status = result;
  }
  return Document(document);
}

// "[name]@line" for each section and "name=value@line" for each of its keys, one a line.
inline std::string dump(InifileDocument *document) {
  std::string out;
  for (uint32_t s = 0; InifileSection *section = inifileGetSection(document, s); ++s) {
    out += "[" + std::string(inifileGetSectionName(section)) + "]@" +
           std::to_string(inifileGetSectionLineNumber(section)) + "\n";
    for (uint32_t k = 0; InifileKey *key = inifileGetKey(section, k); ++k) {
      out += std::string(inifileGetKeyName(key)) + "=" + inifileGetKeyValue(key) + "@" +
             std::to_string(inifileGetKeyLineNumber(key)) + "\n";
    }
  }
  return out;
}

}  // namespace tessera::test
