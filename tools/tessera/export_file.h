// The two forms of a settings export, which `tessera export` writes and `import` and `diff` read:
// JSON, and INI in the library's normal form with one section per setting.
#pragma once

#include <string>
#include <vector>

#include "cli.h"

namespace tessera_cli {

// The export of `entries` as JSON: {"format": "tessera export", "version": 1, "settings": [...]}.
std::string export_json(const std::vector<Entry> &entries);
// The export of `entries` as INI: a [tessera export] section, then one section per setting with
// its type and its value or error. A value the INI parser wouldn't give back as it is (a ';', a
// tab, a line break, a blank at either end, a '"' in front) is written in double quotes with
// backslash escapes; one longer than a key holds is split over several value keys.
std::string export_ini(const std::vector<Entry> &entries);
// Reads an export of either form from `path` ("-": standard input) into `entries`. Returns "",
// or what is wrong with the file.
std::string read_export(const std::string &path, std::vector<Entry> &entries);

}  // namespace tessera_cli
