// tessera: a controller's settings, sessions and files from a shell, through libtessera.so.1.
// This file finds the subcommand, parses its command line, prints the help and runs batches; the
// commands themselves live with their area (properties, backup, sessions, ini, utilities, sim).
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <tessera/tessera.h>

#include "cli.h"

namespace tessera_cli {
namespace {

constexpr Option kHelpOption{"help", 'h', nullptr, "show this help and exit"};

constexpr const char *kAbout =
    "Works a remote management controller from a shell through libtessera.so.1: settings by\n"
    "legacy path or store key, management sessions, INI files and a few checks. On a\n"
    "workstation, `tessera sim start` runs a simulated controller to work against.\n"
    "\n"
    "Back up a controller's settings before a firmware update, and put them back after:\n"
    "  tessera export > settings.json           every setting, in a fixed order\n"
    "  tessera diff settings.json               what differs on the controller now\n"
    "  tessera import --dry-run settings.json   what an import would write\n"
    "  tessera import settings.json             write back each setting that differs\n"
    "`tessera diff A B` compares two controllers' exports.\n";

constexpr const char *kExitCodes =
    "Exit status:\n"
    "  0  success, or the answer is yes\n"
    "  1  an operation failed: standard error gives the library's status code and what it means\n"
    "  2  the command line is wrong, or a value doesn't fit its setting's type\n"
    "  3  the answer is no: a text fails a check, a section, key, name or session isn't there,\n"
    "     or `diff` finds a difference\n";

constexpr const char *kEnvironment =
    "Environment:\n"
    "  TESSERA_STORE_DB    the workstation store's database (default\n"
    "                      ~/.local/state/tessera/store.db)\n"
    "  TESSERA_SIM_DIR     where `tessera sim` keeps its pid files and logs (default\n"
    "                      ~/.local/state/tessera/sim)\n"
    "  TESSERA_DAEMON_DIR  where `tessera sim start` finds the daemons (default: beside\n"
    "                      tessera)\n"
    "  TESSERA_SINK_LEVEL  the highest level of the library's reports shown on standard error\n";

// Lists the commands whose name starts with `group` ("" for all) with their synopses.
void print_commands(std::FILE *out, const std::vector<Command> &commands,
                    const std::string &group) {
  std::fputs("Commands:\n", out);
  int width = 0;
  for (const auto &command : commands) {
    width = std::max(
        width, static_cast<int>(std::strlen(command.name) + 1 + std::strlen(command.synopsis)));
  }
  for (const auto &command : commands) {
    const std::string head = std::string(command.name) + " " + command.synopsis;
    if (head.starts_with(group)) {
      std::fprintf(out, "  %-*s  %s\n", width, head.c_str(), command.summary);
    }
  }
}

void print_global_help(std::FILE *out, const std::vector<Command> &commands) {
  std::fprintf(out, "usage: tessera COMMAND [ARGUMENTS]\n       tessera COMMAND --help\n\n%s\n",
               kAbout);
  print_commands(out, commands, "");
  std::fprintf(out,
               "\nOptions:\n  -h, --help     show this help and exit\n"
               "  --version      show the version and exit\n\n%s\n%s",
               kExitCodes, kEnvironment);
}

std::string option_head(const Option &option) {
  std::string head = option.letter != 0 ? std::string("-") + option.letter + ", " : "    ";
  head += std::string("--") + option.name;
  if (option.value != nullptr) {
    head += std::string(" ") + option.value;
  }
  return head;
}

void print_command_help(const Command &command) {
  std::printf("usage: tessera %s%s%s\n\n%s\n", command.name, command.synopsis[0] != '\0' ? " " : "",
              command.synopsis, command.details.c_str());
  std::puts("Options:");
  for (const auto &option : command.options) {
    std::printf("  %-22s %s\n", option_head(option).c_str(), option.help);
  }
  std::printf("  %-22s %s\n\n%s", option_head(kHelpOption).c_str(), kHelpOption.help, kExitCodes);
}

int run(const Command &command, int argc, char **argv) {
  Args args;
  bool only_positional = false;
  for (int i = 0; i < argc; ++i) {
    const std::string arg = argv[i];
    if (only_positional || !is_option(argv[i])) {
      args.positional.push_back(arg);
      only_positional = only_positional || command.options_first;
      continue;
    }
    if (arg == "--") {
      only_positional = true;
      continue;
    }
    if (arg == "--help" || arg == "-h") {
      print_command_help(command);
      return kOk;
    }
    const bool is_long = arg.starts_with("--");
    const auto equals = arg.find('=');
    const std::string name = is_long ? arg.substr(2, equals - 2) : "";
    if (!is_long && arg.size() != 2) {
      return usage_error(command, "unknown option " + arg);
    }
    const Option *option = find_option(command, name, is_long ? '\0' : arg[1]);
    if (option == nullptr) {
      return usage_error(command, "unknown option " + arg);
    }
    std::string value;
    if (option->value == nullptr) {
      if (is_long && equals != std::string::npos) {
        return usage_error(command, "option --" + name + " takes no value");
      }
    } else if (is_long && equals != std::string::npos) {
      value = arg.substr(equals + 1);
    } else if (i + 1 < argc) {
      value = argv[++i];
    } else {
      return usage_error(command, std::string("option --") + option->name + " needs a value");
    }
    args.options[option->name] = value;
  }
  const int count = static_cast<int>(args.positional.size());
  if (count < command.min_args) {
    return usage_error(command, "missing arguments");
  }
  if (command.max_args >= 0 && count > command.max_args) {
    return usage_error(command, "too many arguments");
  }
  return command.run(command, args);
}

// Runs the command line `argv` (argv[0] the program); `top` for the process's own, which joins
// the simulated controller's namespace first.
int dispatch(const std::vector<Command> &commands, int argc, char **argv, bool top) {
  if (argc < 2) {
    print_global_help(stderr, commands);
    return kUsage;
  }
  const std::string first = argv[1];
  if (first == "--help" || first == "-h" || (first == "help" && argc == 2)) {
    print_global_help(stdout, commands);
    return kOk;
  }
  if (first == "--version") {
    std::printf("tessera %d.%d.%d (libtessera.so.%d)\n", TESSERA_VERSION_MAJOR,
                TESSERA_VERSION_MINOR, TESSERA_VERSION_PATCH, TESSERA_VERSION_MAJOR);
    return kOk;
  }
  const bool help = first == "help";
  if (help) {  // "tessera help sessions show" is "tessera sessions show --help"
    --argc;
    ++argv;
  }
  int words = 0;
  const Command *command = find_command(commands, argc, argv, words);
  if (command == nullptr) {
    const std::string prefix = std::string(argv[1]) + " ";
    std::string group;  // "ini" alone: name its subcommands
    for (const auto &c : commands) {
      const std::string name = c.name;
      if (name.starts_with(prefix)) {
        group += (group.empty() ? "" : ", ") + name.substr(prefix.size());
      }
    }
    if (group.empty()) {
      std::fprintf(stderr, "tessera: unknown command '%s'\nTry 'tessera --help'.\n", argv[1]);
      return kUsage;
    }
    if (help ||
        (argc == 3 && (std::strcmp(argv[2], "--help") == 0 || std::strcmp(argv[2], "-h") == 0))) {
      std::printf("usage: tessera %sCOMMAND [ARGUMENTS]\n       tessera %sCOMMAND --help\n\n",
                  prefix.c_str(), prefix.c_str());
      print_commands(stdout, commands, prefix);
      std::printf("\n%s", kExitCodes);
      return kOk;
    }
    std::fprintf(stderr, "tessera: %s: expected one of: %s\nTry 'tessera %s--help'.\n", argv[1],
                 group.c_str(), prefix.c_str());
    return kUsage;
  }
  if (help) {
    char help_flag[] = "--help";
    char *help_argv[] = {help_flag};
    return run(*command, 1, help_argv);
  }
  if (top && std::strcmp(command->name, "sim start") != 0) {
    join_simulation();  // a new simulation starts from outside any old one
  }
  return run(*command, argc - 1 - words, argv + 1 + words);
}

// Splits a batch line into words as a shell would, without expansions: blanks part words, quotes
// ('...', "..." with \" and \\) and backslashes keep blanks, quotes and '#' in a word, and a '#'
// that begins a word begins a comment. False when a quote isn't closed.
bool split_line(const std::string &line, std::vector<std::string> &words) {
  std::string word;
  bool in_word = false;
  char quote = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    const bool escapable =
        i + 1 < line.size() && (quote == 0 || line[i + 1] == '"' || line[i + 1] == '\\');
    if (quote != 0 && c == quote) {
      quote = 0;
    } else if (c == '\\' && quote != '\'' && escapable) {
      word += line[++i];
      in_word = true;
    } else if (quote != 0) {
      word += c;
    } else if (c == ' ' || c == '\t' || c == '\r') {
      if (in_word) {
        words.push_back(word);
      }
      word.clear();
      in_word = false;
    } else if (c == '#' && !in_word) {
      break;
    } else {
      quote = c == '\'' || c == '"' ? c : 0;
      word += quote == 0 ? std::string(1, c) : "";
      in_word = true;
    }
  }
  if (in_word) {
    words.push_back(word);
  }
  return quote == 0;
}

int batch(const Command &, const Args &args) {
  const std::string path = args.positional.empty() ? "-" : args.positional[0];
  std::FILE *file = path == "-" ? stdin : std::fopen(path.c_str(), "r");
  if (file == nullptr) {
    return fail(path, std::strerror(errno));
  }
  const std::string where = path == "-" ? "standard input" : path;
  const bool keep_going = args.has("keep-going");
  const auto commands = all_commands();
  int exit = kOk;
  char *line = nullptr;
  std::size_t size = 0;
  ssize_t length = 0;
  for (int number = 1; (length = getline(&line, &size, file)) >= 0; ++number) {
    const std::string at = where + ":" + std::to_string(number);
    std::vector<std::string> words;
    int status = kOk;
    if (!split_line(std::string(line, length - (length > 0 && line[length - 1] == '\n')), words)) {
      std::fprintf(stderr, "tessera: %s: a quote isn't closed\n", at.c_str());
      status = kUsage;
    } else if (!words.empty() && words[0] == "tessera") {
      words.erase(words.begin());  // the program's name is allowed, and not needed
    }
    if (status == kOk && !words.empty() &&
        (words[0] == "batch" || (words[0] == "sim" && words.size() > 1 && words[1] == "shell"))) {
      std::fprintf(stderr, "tessera: %s: '%s' can't run in a batch\n", at.c_str(),
                   words[0] == "batch" ? "batch" : "sim shell");
      status = kUsage;
    } else if (status == kOk && !words.empty()) {
      words.insert(words.begin(), "tessera");
      std::vector<char *> argv;
      for (auto &word : words) {
        argv.push_back(word.data());
      }
      argv.push_back(nullptr);
      status = dispatch(commands, static_cast<int>(words.size()), argv.data(), false);
      std::fflush(stdout);
    }
    if (status != kOk) {
      exit = exit == kOk ? status : exit;
      std::fprintf(stderr, "tessera: %s: exit status %d%s\n", at.c_str(), status,
                   keep_going ? "" : "; the lines after it are not run");
      if (!keep_going) {
        break;
      }
    }
  }
  std::free(line);
  if (file != stdin) {
    std::fclose(file);
  }
  return exit;
}

std::vector<Command> batch_commands() {
  return {
      {"batch",
       "[OPTIONS] [FILE]",
       "run tessera commands from a file, one a line",
       "Runs the commands of FILE, or of standard input without FILE or with -, one a line\n"
       "and in one process: each line is a command line as after `tessera` (which may\n"
       "stand in front), with words parted by blanks and held together by '...', \"...\"\n"
       "and backslashes as in a shell, but nothing expanded. A '#' that begins a word\n"
       "begins a comment; blank lines are skipped. It stops at the first command that\n"
       "doesn't exit with 0, naming its line, unless --keep-going. The exit status is that\n"
       "of the first command that didn't succeed, or 0.\n",
       {{"keep-going", 'k', nullptr, "run the lines after a failing one too"}},
       0,
       1,
       batch},
  };
}

}  // namespace

std::vector<Command> all_commands() {
  std::vector<Command> commands;
  for (auto area : {property_commands, backup_commands, session_commands, ini_commands,
                    codec_commands, utility_commands, batch_commands, sim_commands}) {
    for (auto &command : area()) {
      commands.push_back(std::move(command));
    }
  }
  return commands;
}

}  // namespace tessera_cli

int main(int argc, char **argv) {
  using namespace tessera_cli;
  const auto commands = all_commands();
  if (argc > 1 && std::strcmp(argv[1], "__complete") == 0) {
    return complete(commands, argc - 2, argv + 2);
  }
  const int status = dispatch(commands, argc, argv, true);
  return std::fflush(stdout) == 0 ? status : fail("standard output", std::strerror(errno));
}
