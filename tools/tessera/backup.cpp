// Back up, restore and compare a controller's settings: export, import and diff.
#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <tessera/orb_cfg.h>

#include "cli.h"
#include "export_file.h"

namespace tessera_cli {
namespace {

// The settings an export holds, in catalogue order: each legacy path, or store key where a row
// has no path, once; the change markers, which hold no setting, left out.
std::vector<std::string> export_names(const std::vector<std::string> &prefixes) {
  std::vector<std::string> names;
  std::set<std::string, std::less<>> seen;
  for (const auto &row : catalogue_rows()) {
    const std::string name = row.legacy_path[0] != '\0' ? row.legacy_path : row.store_key;
    if (row.type != PROP_TYPE_CONFIG_CHANGED && row_matches(row, prefixes) &&
        seen.insert(name).second) {
      names.push_back(name);
    }
  }
  return names;
}

// One side of a change or difference: the value as a JSON text, "(unreadable)" or "(absent)".
std::string side(const Entry *entry) {
  return entry == nullptr        ? "(absent)"
         : !entry->error.empty() ? "(unreadable)"
                                 : json(entry->value);
}

bool same(const Entry *a, const Entry *b) {
  return a != nullptr && b != nullptr && a->error.empty() == b->error.empty() &&
         (!a->error.empty() || a->value == b->value);
}

void print_change(const std::string &name, const Entry *from, const Entry *to) {
  std::printf("%s: %s -> %s\n", name.c_str(), side(from).c_str(), side(to).c_str());
}

int export_settings(const Command &command, const Args &args) {
  const std::string format = args.get("format", "json");
  if (format != "json" && format != "ini") {
    return usage_error(command, "unknown format '" + format + "' (json or ini)");
  }
  const auto names = export_names(args.positional);
  std::vector<Entry> entries;
  Progress progress("export", names.size());
  int exit = kOk;
  for (const auto &name : names) {
    progress.step(entries.size() + 1, name);
    entries.push_back(read_entry(name));
    if (!entries.back().error.empty()) {
      progress.clear();
      exit = fail(name, entries.back().error);
    }
  }
  progress.clear();
  std::fputs((format == "json" ? export_json(entries) : export_ini(entries)).c_str(), stdout);
  return exit;
}

// The session counters are the controller's live state, not settings: an old backup's counts
// must not be written over the current ones.
bool restorable(const std::string &name) {
  constexpr std::string_view kCounter = "_session_count";
  return writable(name) && !std::string_view(name).ends_with(kCounter);
}

int import_settings(const Command &, const Args &args) {
  const auto &path = args.positional[0];
  std::vector<Entry> entries;
  if (const std::string problem = read_export(path, entries); !problem.empty()) {
    return fail(path, problem);
  }
  Progress progress("import", entries.size());
  int exit = kOk;
  std::size_t done = 0;
  for (const auto &entry : entries) {
    progress.step(++done, entry.name);
    if (!entry.error.empty() || !restorable(entry.name)) {
      continue;  // nothing to put back, or nothing an import writes
    }
    const Entry live = read_entry(entry.name);
    if (same(&live, &entry)) {
      continue;
    }
    std::string problem = args.has("raw") ? "" : value_problem(entry.name, entry.value);
    if (problem.empty() && !args.has("dry-run")) {
      const int32_t status = write_setting(entry.name, entry.value, Route::kDaemonFirst);
      problem = status == 0 ? ""
                            : "status " + std::to_string(status) + ": " +
                                  write_failure(entry.name, status, Route::kDaemonFirst);
    }
    progress.clear();
    if (problem.empty()) {
      print_change(entry.name, &live, &entry);
    } else {
      exit = fail(entry.name, problem);
    }
  }
  return exit;
}

int diff(const Command &, const Args &args) {
  std::vector<Entry> sides[2];
  for (std::size_t i = 0; i < args.positional.size(); ++i) {
    const auto &path = args.positional[i];
    if (const std::string problem = read_export(path, sides[i]); !problem.empty()) {
      return fail(path, problem);
    }
  }
  if (args.positional.size() == 1) {  // against the controller, setting by setting
    Progress progress("diff", sides[0].size());
    for (const auto &entry : sides[0]) {
      progress.step(sides[1].size() + 1, entry.name);
      sides[1].push_back(read_entry(entry.name));
    }
  }
  std::map<std::string, const Entry *, std::less<>> second;
  for (const auto &entry : sides[1]) {
    second.emplace(entry.name, &entry);
  }
  std::set<std::string, std::less<>> first;
  bool differ = false;
  for (const auto &entry : sides[0]) {
    const auto found = second.find(entry.name);
    const Entry *other = found != second.end() ? found->second : nullptr;
    if (first.insert(entry.name).second && !same(&entry, other)) {
      print_change(entry.name, &entry, other);
      differ = true;
    }
  }
  for (const auto &entry : sides[1]) {
    if (!first.contains(entry.name) && second.at(entry.name) == &entry) {
      print_change(entry.name, nullptr, &entry);
      differ = true;
    }
  }
  return differ ? kNo : kOk;
}

}  // namespace

std::vector<Command> backup_commands() {
  return {
      {"export",
       "[OPTIONS] [PREFIX...]",
       "write every setting to standard output, for a backup",
       "Reads every setting of the catalogue, as `get` does (the mapping daemon first), and\n"
       "writes them to standard output: each legacy path, or store key where a setting has\n"
       "none, with its type and its value, network settings and firmware values included.\n"
       "With PREFIX, only the settings whose legacy path or store key starts with one of\n"
       "them. The order is the catalogue's, so two exports compare line by line. The INI\n"
       "form has a section per setting, in the library's INI form, values that it wouldn't\n"
       "read back as they are written in double quotes with backslash escapes.\n"
       "\n"
       "A setting that can't be read is named on standard error with the library's status\n"
       "and marked in the export with \"error\" in place of its value; the exit status is\n"
       "then 1. While standard error is a terminal it shows the progress.\n",
       {{"format", 'f', "json|ini", "JSON (the default) or INI"}},
       0,
       -1,
       export_settings},
      {"import",
       "[OPTIONS] FILE",
       "write back the settings of an export that differ",
       "Reads an export (JSON or INI; - for standard input) and writes each setting whose\n"
       "value differs from the controller's, through the same path and checks as `set`,\n"
       "printing NAME: \"OLD\" -> \"NEW\" for each. Settings marked unreadable in the export,\n"
       "those the library never writes (the firmware values, the extended IPv6 addresses\n"
       "IPV6/extaddrN and their prefixes) and the live session counters (*_session_count)\n"
       "are left alone. A write that fails is reported and the others still made; the\n"
       "exit status is then 1. While standard error is a terminal it shows the progress.\n",
       {{"dry-run", 'n', nullptr, "print what would change and write nothing"},
        {"raw", 'r', nullptr, "write the values without checking them against their types"}},
       1,
       1,
       import_settings},
      {"diff",
       "FILE [FILE]",
       "compare two exports, or an export with the controller",
       "Compares two exports (each JSON or INI), or with one FILE, that export with the\n"
       "controller's settings now. Prints NAME: \"A\" -> \"B\" for each setting that differs,\n"
       "with (absent) for one that only one side has and (unreadable) for one that couldn't\n"
       "be read. Exit status 0 when they are the same, 3 when they differ.\n",
       {},
       1,
       2,
       diff},
  };
}

}  // namespace tessera_cli
