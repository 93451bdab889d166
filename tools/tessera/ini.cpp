// INI files: show a file, a section or a value; set or delete a key, writing the file back in the
// library's normal form.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include <tessera/inifile.h>

#include "cli.h"

namespace tessera_cli {
namespace {

constexpr std::size_t kMaxPath = 256;    // what inifileOpen takes
constexpr std::size_t kMaxValue = 1023;  // what a key's value holds

struct CloseDocument {
  void operator()(InifileDocument *document) const { inifileClose(document); }
};
using Document = std::unique_ptr<InifileDocument, CloseDocument>;

// The meaning of an INI status other than 1, whose meaning depends on the operation.
std::string ini_meaning(int32_t status) {
  switch (status) {
    case 2:
      return "a name or value is missing";
    case 3:
      return "out of memory";
    case 4:
      return "not a document";
    case 8:
      return "section name longer than 255 characters";
    case 9:
      return "key name longer than 255 characters";
    case 11:
      return "the file can't be opened for writing";
    default:
      return "unexpected status";
  }
}

// Reads `path` into `document`; a missing file gives an empty document when `create`.
// Returns kOk or the exit code of the failure, reported.
int open_document(const std::string &path, bool create, Document &document) {
  if (path.size() > kMaxPath) {
    return fail_status(path, 1, "path longer than 256 characters");
  }
  struct stat file {};
  if (stat(path.c_str(), &file) != 0 && errno == ENOENT && create) {
    document.reset(inifileCreate());
    return document ? kOk : fail(path, ini_meaning(3));
  }
  if (S_ISDIR(file.st_mode)) {
    return fail(path, strerror(EISDIR));
  }
  InifileDocument *opened = nullptr;
  const int32_t status = inifileOpen(path.c_str(), &opened);
  document.reset(opened);
  if (status == 1) {
    const int error = access(path.c_str(), R_OK) == 0 ? EIO : errno;
    return fail_status(path, status, std::string("the file can't be read: ") + strerror(error));
  }
  return status == 0 ? kOk : fail_status(path, status, ini_meaning(status));
}

// Writes the document over `path` through a temporary file beside it, so that a failed write
// leaves the old file whole. Keeps the file's permissions; follows a symbolic link.
int save_document(InifileDocument *document, const std::string &path) {
  char resolved[PATH_MAX];
  const std::string target = realpath(path.c_str(), resolved) != nullptr ? resolved : path;
  struct stat old {};
  mode_t mode = 0;
  if (stat(target.c_str(), &old) == 0) {
    mode = old.st_mode & 07777;
  } else {
    const mode_t mask = umask(0);
    umask(mask);
    mode = 0666 & ~mask;
  }
  std::string temporary = target + ".tessera-XXXXXX";
  const int fd = mkstemp(temporary.data());
  if (fd < 0) {
    return fail(path, std::string("can't write beside the file: ") + strerror(errno));
  }
  fchmod(fd, mode);
  ::close(fd);
  const int32_t status = inifileSave(document, temporary.c_str());
  if (status != 0) {
    unlink(temporary.c_str());
    return fail_status(path, status, ini_meaning(status));
  }
  if (rename(temporary.c_str(), target.c_str()) != 0) {
    const int error = errno;
    unlink(temporary.c_str());
    return fail(path, std::string("can't replace the file: ") + strerror(error));
  }
  return kOk;
}

std::string key_json(InifileKey *key) {
  return "{\"name\": " + json(inifileGetKeyName(key)) +
         ", \"value\": " + json(inifileGetKeyValue(key)) +
         ", \"line\": " + std::to_string(inifileGetKeyLineNumber(key)) + "}";
}

std::string section_json(InifileSection *section) {
  std::string keys;
  for (uint32_t i = 0; InifileKey *key = inifileGetKey(section, i); ++i) {
    keys += (keys.empty() ? "" : ", ") + key_json(key);
  }
  return "{\"name\": " + json(inifileGetSectionName(section)) +
         ", \"line\": " + std::to_string(inifileGetSectionLineNumber(section)) + ", \"keys\": [" +
         keys + "]}";
}

// The keys of a section as the normal form writes them: NAME=VALUE, nameless keys left out.
void print_keys(InifileSection *section) {
  for (uint32_t i = 0; InifileKey *key = inifileGetKey(section, i); ++i) {
    if (inifileGetKeyName(key)[0] != '\0') {
      std::printf("%s=%s\n", inifileGetKeyName(key), inifileGetKeyValue(key));
    }
  }
}

int show(const Command &, const Args &args) {
  const auto &path = args.positional[0];
  Document document;
  if (const int exit = open_document(path, false, document); exit != kOk) {
    return exit;
  }
  const bool as_json = args.has("json");
  if (args.positional.size() == 1) {  // the whole file, as a save would write it
    std::vector<std::string> sections;
    for (uint32_t i = 0; InifileSection *section = inifileGetSection(document.get(), i); ++i) {
      sections.push_back(section_json(section));
      if (i > 0 && !as_json) {
        std::putchar('\n');
      }
      if (inifileGetSectionName(section)[0] != '\0' && !as_json) {
        std::printf("[%s]\n", inifileGetSectionName(section));
        print_keys(section);
      }
    }
    if (as_json) {
      std::printf("%s\n", json_array(sections).c_str());
    }
    return kOk;
  }
  const auto &name = args.positional[1];
  InifileSection *section = inifileGetSectionByName(document.get(), name.c_str());
  if (section == nullptr) {
    fail(path, "no section [" + name + "]");
    return kNo;
  }
  if (args.positional.size() == 2) {
    if (as_json) {
      std::printf("%s\n", section_json(section).c_str());
    } else {
      print_keys(section);
    }
    return kOk;
  }
  InifileKey *key = inifileGetKeyByName(section, args.positional[2].c_str());
  if (key == nullptr) {
    fail(path, "no key " + args.positional[2] + " in section [" + name + "]");
    return kNo;
  }
  std::printf("%s\n", as_json ? key_json(key).c_str() : inifileGetKeyValue(key));
  return kOk;
}

int set(const Command &, const Args &args) {
  const auto &path = args.positional[0];
  const auto &value = args.positional[3];
  if (value.size() > kMaxValue) {
    return fail(path, "value longer than 1023 characters, the most a key holds");
  }
  Document document;
  if (const int exit = open_document(path, true, document); exit != kOk) {
    return exit;
  }
  const int32_t status = inifileSetKeyValueByName(document.get(), args.positional[1].c_str(),
                                                  args.positional[2].c_str(), value.c_str());
  if (status != 0) {
    return fail_status(path, status, ini_meaning(status));
  }
  return save_document(document.get(), path);
}

int del(const Command &, const Args &args) {
  const auto &path = args.positional[0];
  const auto &name = args.positional[1];
  Document document;
  if (const int exit = open_document(path, false, document); exit != kOk) {
    return exit;
  }
  InifileSection *section = inifileGetSectionByName(document.get(), name.c_str());
  InifileKey *key = inifileGetKeyByName(section, args.positional[2].c_str());
  if (key == nullptr) {
    fail(path, "no key " + args.positional[2] + " in section [" + name + "]");
    return kNo;
  }
  const int32_t status = inifileRemoveKey(section, key);
  if (status != 0) {
    return fail_status(path, status, "nothing to remove");
  }
  return save_document(document.get(), path);
}

}  // namespace

std::vector<Command> ini_commands() {
  constexpr const char *kNormalForm =
      "The file is written back in the library's normal form: one blank line between\n"
      "sections, NAME=VALUE lines, no comments, no keys before the first section. It is\n"
      "replaced through a temporary file, so a failed write leaves it whole.\n";
  return {
      {"ini show",
       "[OPTIONS] FILE [SECTION [KEY]]",
       "show an INI file, a section or a value",
       "Shows the whole file in the library's normal form, the NAME=VALUE lines of one\n"
       "section, or one key's value. Exit status 3 when the section or key isn't there.\n"
       "With --json, sections and keys carry their line numbers.\n",
       {kJsonOption},
       1,
       3,
       show},
      {"ini set",
       "FILE SECTION KEY VALUE",
       "set a key in an INI file",
       std::string("Sets KEY in SECTION to VALUE, adding the section, the key or the file when\n"
                   "missing. Prints nothing on success.\n") +
           kNormalForm,
       {},
       4,
       4,
       set},
      {"ini del",
       "FILE SECTION KEY",
       "delete a key from an INI file",
       std::string("Deletes KEY from SECTION. Exit status 3 when it isn't there.\n") + kNormalForm,
       {},
       3,
       3,
       del},
  };
}

}  // namespace tessera_cli
