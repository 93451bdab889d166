// Arbitrary bytes read as an INI file: the document is walked by index and by name, saved, and
// the saved file read back must give the same document, less what a save leaves out.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include "../harness.h"
#include "capture_sink.h"
#include "tessera/inifile.h"

namespace {

struct Key {
  std::string name, value;
  bool operator==(const Key &) const = default;
};
struct Section {
  std::string name;
  std::vector<Key> keys;
  bool operator==(const Section &) const = default;
};
using Model = std::vector<Section>;

using tessera::fuzz::check;

// An in-memory file reachable by path.
struct MemoryFile {
  int fd = ::memfd_create("inifile_fuzz", 0);
  std::string path = "/proc/self/fd/" + std::to_string(fd);

  void write(const uint8_t *data, size_t size) const {
    check(::ftruncate(fd, 0) == 0 && ::pwrite(fd, data, size, 0) == static_cast<ssize_t>(size),
          "writing the input");
  }
};

// The document as walked, with the lookups by name checked against the walk.
Model walk(InifileDocument *document) {
  Model model;
  uint32_t previous_line = 0;
  for (uint32_t s = 0; InifileSection *section = inifileGetSection(document, s); ++s) {
    Section &out = model.emplace_back(Section{inifileGetSectionName(section), {}});
    check(inifileGetSectionLineNumber(section) > previous_line, "section lines ascend");
    previous_line = inifileGetSectionLineNumber(section);
    InifileSection *first = inifileGetSectionByName(document, out.name.c_str());
    check(first != nullptr && std::strcmp(inifileGetSectionName(first), out.name.c_str()) == 0,
          "section lookup by name");
    for (uint32_t k = 0; InifileKey *key = inifileGetKey(section, k); ++k) {
      out.keys.push_back({inifileGetKeyName(key), inifileGetKeyValue(key)});
      check(inifileGetKeyLineNumber(key) > previous_line, "key lines ascend");
      previous_line = inifileGetKeyLineNumber(key);
      InifileKey *same = inifileGetKeyByName(section, out.keys.back().name.c_str());
      check(same != nullptr && std::strcmp(inifileGetKeyName(same), inifileGetKeyName(key)) == 0,
            "key lookup by name");
    }
    check(inifileGetNumKeys(section) == out.keys.size(), "key count");
  }
  return model;
}

void trim_right(std::string &text) {
  while (!text.empty() && text.back() == ' ') {
    text.pop_back();
  }
}

void trim(std::string &text) {
  trim_right(text);
  text.erase(0, std::min(text.find_first_not_of(' '), text.size()));
}

// What reading back a saved document gives: no sections or keys without a name, no keys that
// read as comments; a key whose saved line opens with '[' and holds a ']' reads back as the
// header of a section that takes the keys behind it, its name trimmed and then cut at 255
// characters; a section name cut at 255 characters loses blanks at its end; a value that ends in
// a carriage return loses it to the line's "\r\n", and then its blanks, unless the line fills a
// whole read of 1279 characters, which leaves the line feed to the next read.
Model after_save(const Model &model) {
  Model out;
  for (const Section &section : model) {
    if (section.name.empty()) {
      continue;
    }
    out.push_back(Section{section.name, {}});
    trim_right(out.back().name);
    for (const Key &key : section.keys) {
      if (key.name.empty() || key.name[0] == '#') {
        continue;
      }
      const std::string line = key.name + "=" + key.value;
      if (line[0] == '[' && line.find(']') != std::string::npos) {
        std::string name = line.substr(1, line.find(']') - 1);
        trim(name);
        name.resize(std::min<std::size_t>(name.size(), 255));
        out.push_back(Section{name, {}});
        continue;
      }
      Key &copy = out.back().keys.emplace_back(key);
      if (!copy.value.empty() && copy.value.back() == '\r' &&
          copy.name.size() + 1 + copy.value.size() < 1279) {
        copy.value.pop_back();
        trim_right(copy.value);
      }
    }
  }
  return out;
}

// Names the first place where two documents differ, to stderr.
void show_difference(const Model &expected, const Model &got) {
  for (std::size_t s = 0; s < std::max(expected.size(), got.size()); ++s) {
    const Section *a = s < expected.size() ? &expected[s] : nullptr;
    const Section *b = s < got.size() ? &got[s] : nullptr;
    if (a == nullptr || b == nullptr || a->name != b->name) {
      std::fprintf(stderr, "section %zu: expected [%s], read back [%s]\n", s,
                   a ? a->name.c_str() : "(none)", b ? b->name.c_str() : "(none)");
      return;
    }
    for (std::size_t k = 0; k < std::max(a->keys.size(), b->keys.size()); ++k) {
      const Key *x = k < a->keys.size() ? &a->keys[k] : nullptr;
      const Key *y = k < b->keys.size() ? &b->keys[k] : nullptr;
      if (x == nullptr || y == nullptr || !(*x == *y)) {
        std::fprintf(stderr, "[%s] key %zu: expected '%s'='%s', read back '%s'='%s'\n",
                     a->name.c_str(), k, x ? x->name.c_str() : "(none)",
                     x ? x->value.c_str() : "", y ? y->name.c_str() : "(none)",
                     y ? y->value.c_str() : "");
        return;
      }
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const MemoryFile input;
  static const MemoryFile output;
  tessera::test::CaptureSink::instance().reset();
  input.write(data, size);

  InifileDocument *first = nullptr;
  check(inifileOpen(input.path.c_str(), &first) == 0 && first != nullptr, "opening the input");
  const Model expected = after_save(walk(first));
  check(inifileSave(first, output.path.c_str()) == 0, "saving");
  InifileDocument *second = nullptr;
  check(inifileOpen(output.path.c_str(), &second) == 0, "opening the saved file");
  const Model got = walk(second);
  if (got != expected) {
    show_difference(expected, got);
  }
  check(got == expected, "the saved file reads back to the same document");
  check(inifileClose(first) == 0 && inifileClose(second) == 0, "closing");
  return 0;
}
