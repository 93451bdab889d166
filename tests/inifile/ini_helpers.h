// Files and documents for the INI tests: a scratch folder, documents that close themselves, and
// a one-line-per-record dump of a document that tests compare as text.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include <unistd.h>

#include "tessera/inifile.h"

namespace tessera::test {

struct Closer {
  void operator()(InifileDocument *document) const { inifileClose(document); }
};
using Document = std::unique_ptr<InifileDocument, Closer>;

// A folder of this process for the files of its tests.
inline const std::string &scratch() {
  static const std::string dir = [] {
    std::string pattern = "/tmp/inifile_test.XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) {
      std::abort();
    }
    return pattern;
  }();
  // Registered after `dir` is made, so that it runs before `dir` goes.
  [[maybe_unused]] static const int cleanup =
      std::atexit([] { std::filesystem::remove_all(scratch()); });
  return dir;
}

inline std::string write_file(std::string_view bytes, const std::string &name = "in.ini") {
  const std::string path = scratch() + "/" + name;
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

inline std::string read_file(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// Reads `bytes` as a file; the status goes to `status` when given.
inline Document parse(std::string_view bytes, int32_t *status = nullptr) {
  InifileDocument *document = nullptr;
  const int32_t result = inifileOpen(write_file(bytes).c_str(), &document);
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
