// What bash completion offers for the word under the cursor, taken from the commands' own names,
// synopses and options, the property catalogue and the INI file being worked on, so that it
// can't drift from the program. The shell side is tools/tessera/tessera.bash.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <tessera/inifile.h>
#include <tessera/orb_cfg.h>

#include "cli.h"

namespace tessera_cli {
namespace {

// What `candidates` gives for a file name, which bash completes itself.
constexpr const char *kFileName = "<file>";

// The placeholders of a synopsis in order, without [OPTIONS]: "[OPTIONS] FILE [SECTION [KEY]]"
// gives FILE, SECTION, KEY. A last one that ends in "..." stands for all further arguments.
std::vector<std::string> placeholders(const char *synopsis) {
  std::vector<std::string> out;
  std::string word;
  for (const char *c = synopsis;; ++c) {
    if (*c != ' ' && *c != '\0') {
      word += *c == '[' || *c == ']' ? "" : std::string(1, *c);
      continue;
    }
    if (!word.empty() && word != "OPTIONS") {
      out.push_back(word);
    }
    word.clear();
    if (*c == '\0') {
      return out;
    }
  }
}

// The words of "a|b|c".
std::vector<std::string> choices(const std::string &alternatives) {
  std::vector<std::string> out;
  for (std::size_t start = 0;;) {
    const auto bar = alternatives.find('|', start);
    out.push_back(alternatives.substr(start, bar - start));
    if (bar == std::string::npos) {
      return out;
    }
    start = bar + 1;
  }
}

struct CloseDocument {
  void operator()(InifileDocument *document) const { inifileClose(document); }
};

// The section names of the INI file at `path`, or the key names of its section `section`.
std::vector<std::string> ini_names(std::string path, const std::string *section) {
  const char *home = std::getenv("HOME");
  if (path.starts_with("~/") && home != nullptr) {
    path = home + path.substr(1);
  }
  InifileDocument *opened = nullptr;
  std::vector<std::string> out;
  if (inifileOpen(path.c_str(), &opened) != 0) {
    return out;
  }
  const std::unique_ptr<InifileDocument, CloseDocument> document(opened);
  InifileSection *named =
      section != nullptr ? inifileGetSectionByName(document.get(), section->c_str()) : nullptr;
  for (uint32_t i = 0;; ++i) {
    const char *name = nullptr;
    if (section == nullptr) {
      InifileSection *found = inifileGetSection(document.get(), i);
      name = found != nullptr ? inifileGetSectionName(found) : nullptr;
    } else {
      InifileKey *found = inifileGetKey(named, i);
      name = found != nullptr ? inifileGetKeyName(found) : nullptr;
    }
    if (name == nullptr) {
      return out;
    }
    out.emplace_back(name);
  }
}

// What may stand for the placeholder `kind`, given the arguments before it; kFileName alone
// for a file name.
std::vector<std::string> candidates(const std::string &kind, const std::vector<std::string> &args) {
  if (kind == "NAME" || kind == "PREFIX") {
    std::vector<std::string> names;
    for (const auto &row : catalogue_rows()) {
      for (const char *name : {row.legacy_path, row.store_key}) {
        if (name[0] != '\0') {
          names.emplace_back(name);
        }
      }
    }
    return names;
  }
  if (kind == "FILE") {
    return {kFileName};
  }
  if ((kind == "SECTION" && !args.empty()) || (kind == "KEY" && args.size() > 1)) {
    return ini_names(args[0], kind == "KEY" ? &args[1] : nullptr);
  }
  if (kind == "VALUE" && !args.empty() && type_of(args[0]) == PROP_TYPE_BOOL) {
    return {"0", "1"};
  }
  return kind.find('|') != std::string::npos ? choices(kind) : std::vector<std::string>{};
}

// The candidates for the word at `cword` of the command line `words` (words[0] the program).
std::vector<std::string> complete_word(const std::vector<Command> &commands,
                                       std::vector<std::string> words, std::size_t cword) {
  if (words.size() > 2 && words[1] == "help") {
    words.erase(words.begin() + 1);
    --cword;
  }
  std::vector<std::string> out;
  if (cword == 1) {
    out = {"--help", "--version", "help"};
    for (const auto &command : commands) {
      const std::string name = command.name;
      out.push_back(name.substr(0, name.find(' ')));
    }
    return out;
  }
  std::vector<char *> argv;
  for (std::size_t i = 0; i < words.size() && i < cword; ++i) {
    argv.push_back(words[i].data());
  }
  int length = 0;
  const Command *command =
      find_command(commands, static_cast<int>(argv.size()), argv.data(), length);
  if (cword == 2) {  // a subcommand of a group ("ini", and "sessions" beside its own options)
    for (const auto &c : commands) {
      const std::string name = c.name;
      if (name.starts_with(words[1] + " ")) {
        out.push_back(name.substr(words[1].size() + 1));
      }
    }
  }
  if (command == nullptr) {
    out.emplace_back("--help");
    return out;
  }
  // The arguments before the word, and an option still waiting for its value.
  std::vector<std::string> args;
  const Option *waiting = nullptr;
  bool only_positional = false;
  for (std::size_t i = 1 + static_cast<std::size_t>(length); i < cword; ++i) {
    if (waiting != nullptr) {
      waiting = nullptr;
    } else if (!only_positional && words[i] == "--") {
      only_positional = true;
    } else if (!only_positional && is_option(words[i].c_str())) {
      const bool is_long = words[i].starts_with("--");
      const Option *option =
          find_option(*command, is_long ? words[i].substr(2) : "", is_long ? 0 : words[i][1]);
      waiting = option != nullptr && option->value != nullptr ? option : nullptr;
    } else {
      args.push_back(words[i]);
      only_positional = only_positional || command->options_first;
    }
  }
  const std::string &current = words[cword];
  if (waiting != nullptr) {
    return candidates(waiting->value, args);
  }
  if (current.starts_with("-") && !only_positional) {
    out.emplace_back("--help");
    for (const auto &option : command->options) {
      out.push_back(std::string("--") + option.name);
    }
    return out;
  }
  const auto kinds = placeholders(command->synopsis);
  std::string kind = args.size() < kinds.size()                        ? kinds[args.size()]
                     : !kinds.empty() && kinds.back().ends_with("...") ? kinds.back()
                                                                       : "";
  if (kind.ends_with("...")) {
    kind.resize(kind.size() - 3);
  }
  for (auto &candidate : candidates(kind, args)) {
    out.push_back(std::move(candidate));
  }
  return out;
}

}  // namespace

int complete(const std::vector<Command> &commands, int argc, char **argv) {
  uint32_t cword = 0;
  if (argc < 2 || !parse_u32(argv[0], cword) || cword < 1 ||
      cword >= static_cast<uint32_t>(argc - 1)) {
    std::fputs("usage: tessera __complete CWORD WORD...\n", stderr);
    return kUsage;
  }
  const std::vector<std::string> words(argv + 1, argv + argc);
  const auto found = complete_word(commands, words, cword);
  if (found.size() == 1 && found[0] == kFileName) {
    std::puts("files");
    return kOk;
  }
  std::puts("words");
  for (const auto &candidate : std::set<std::string>(found.begin(), found.end())) {
    if (candidate.starts_with(words[cword])) {
      std::puts(candidate.c_str());
    }
  }
  return kOk;
}

}  // namespace tessera_cli
