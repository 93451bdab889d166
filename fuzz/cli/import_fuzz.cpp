// Settings exports from anywhere, as `tessera import` and `tessera diff` read them: any file
// either gives the settings or says what is wrong with it, and settings read from a file write
// out to JSON and to INI and read back from each as they were.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "../harness.h"
#include "export_file.h"

namespace {

using tessera::fuzz::check;
using tessera_cli::Entry;

bool same(const std::vector<Entry> &a, const std::vector<Entry> &b) {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i].name != b[i].name || a[i].type != b[i].type || a[i].value != b[i].value ||
        a[i].error != b[i].error) {
      return false;
    }
  }
  return true;
}

// A file of this run's own, rewritten for each read and removed at the end.
struct ScratchFile {
  std::string path;
  ScratchFile() {
    const char *tmp = std::getenv("TMPDIR");
    path = std::string(tmp != nullptr && tmp[0] != '\0' ? tmp : "/tmp") + "/tessera-import-fuzz-" +
           std::to_string(::getpid());
  }
  ~ScratchFile() { ::unlink(path.c_str()); }
};

std::string read_text(const std::string &text, std::vector<Entry> &entries) {
  static const ScratchFile scratch;
  std::FILE *file = std::fopen(scratch.path.c_str(), "wb");
  check(file != nullptr && std::fwrite(text.data(), 1, text.size(), file) == text.size() &&
        std::fclose(file) == 0);
  return tessera_cli::read_export(scratch.path, entries);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  std::vector<Entry> entries;
  const std::string problem =
      read_text(std::string(reinterpret_cast<const char *>(data), size), entries);
  if (!problem.empty()) {
    return 0;
  }
  for (const std::string &written :
       {tessera_cli::export_json(entries), tessera_cli::export_ini(entries)}) {
    std::vector<Entry> again;
    check(read_text(written, again).empty(), "an export of read settings can't be read");
    check(same(entries, again), "settings changed on their way out and back");
  }
  return 0;
}
