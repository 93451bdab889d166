// tessera: a controller's settings, sessions and files from a shell, through libtessera.so.1.
// This file finds the subcommand, parses its command line and prints the help; the commands
// themselves live with their area (properties, sessions, ini, utilities, sim).
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
    "workstation, `tessera sim start` runs a simulated controller to work against.\n";

constexpr const char *kExitCodes =
    "Exit status:\n"
    "  0  success, or the answer is yes\n"
    "  1  an operation failed: standard error gives the library's status code and what it means\n"
    "  2  the command line is wrong\n"
    "  3  the answer is no: a text fails a check, or a section, key, name or session isn't there\n";

constexpr const char *kEnvironment =
    "Environment:\n"
    "  TESSERA_STORE_DB    the workstation store's database (default\n"
    "                      ~/.local/state/tessera/store.db)\n"
    "  TESSERA_SIM_DIR     where `tessera sim` keeps its pid files and logs (default\n"
    "                      ~/.local/state/tessera/sim)\n"
    "  TESSERA_DAEMON_DIR  where `tessera sim start` finds the daemons (default: beside\n"
    "                      tessera)\n"
    "  TESSERA_SINK_LEVEL  the highest level of the library's reports shown on standard error\n";

std::vector<Command> all_commands() {
  std::vector<Command> commands;
  for (auto area : {property_commands, session_commands, ini_commands, codec_commands,
                    utility_commands, sim_commands}) {
    for (auto &command : area()) {
      commands.push_back(std::move(command));
    }
  }
  return commands;
}

void print_global_help(std::FILE *out, const std::vector<Command> &commands) {
  std::fprintf(out, "usage: tessera COMMAND [ARGUMENTS]\n       tessera COMMAND --help\n\n%s\n",
               kAbout);
  std::fputs("Commands:\n", out);
  int width = 0;
  for (const auto &command : commands) {
    width = std::max(
        width, static_cast<int>(std::strlen(command.name) + 1 + std::strlen(command.synopsis)));
  }
  for (const auto &command : commands) {
    const std::string head = std::string(command.name) + " " + command.synopsis;
    std::fprintf(out, "  %-*s  %s\n", width, head.c_str(), command.summary);
  }
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

// The command named by the first one or two words of the command line, and how many words.
const Command *find_command(const std::vector<Command> &commands, int argc, char **argv,
                            int &words) {
  const Command *found = nullptr;
  for (const auto &command : commands) {
    const std::string name = command.name;
    const auto space = name.find(' ');
    if (space == std::string::npos) {
      if (found == nullptr && name == argv[1]) {
        found = &command;
        words = 1;
      }
    } else if (argc > 2 && name.substr(0, space) == argv[1] && name.substr(space + 1) == argv[2]) {
      words = 2;
      return &command;
    }
  }
  return found;
}

const Option *find_option(const Command &command, std::string_view name, char letter) {
  for (const auto &option : command.options) {
    if ((!name.empty() && name == option.name) || (letter != 0 && letter == option.letter)) {
      return &option;
    }
  }
  return nullptr;
}

// An argument that is an option rather than a value: "-x" or "--name", but not "-" or "-1".
bool is_option(const char *arg) {
  return arg[0] == '-' && arg[1] != '\0' && (arg[1] < '0' || arg[1] > '9');
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

}  // namespace
}  // namespace tessera_cli

int main(int argc, char **argv) {
  using namespace tessera_cli;
  const auto commands = all_commands();
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
    std::string group;  // "ini" alone: name its subcommands
    for (const auto &c : commands) {
      const std::string name = c.name;
      if (name.starts_with(std::string(argv[1]) + " ")) {
        group += (group.empty() ? "" : ", ") + name.substr(name.find(' ') + 1);
      }
    }
    if (!group.empty()) {
      std::fprintf(stderr, "tessera: %s: expected one of: %s\nTry 'tessera --help'.\n", argv[1],
                   group.c_str());
    } else {
      std::fprintf(stderr, "tessera: unknown command '%s'\nTry 'tessera --help'.\n", argv[1]);
    }
    return kUsage;
  }
  if (help) {
    char help_flag[] = "--help";
    char *help_argv[] = {help_flag};
    return run(*command, 1, help_argv);
  }
  if (std::strcmp(command->name, "sim start") != 0) {
    join_simulation();  // a new simulation starts from outside any old one
  }
  const int status = run(*command, argc - 1 - words, argv + 1 + words);
  return std::fflush(stdout) == 0 ? status : fail("standard output", std::strerror(errno));
}
