// The conventions that every subcommand shares: errors, numbers, JSON text, columns and
// progress.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "cli.h"

namespace tessera_cli {

const Option kJsonOption{"json", 0, nullptr, "print JSON for scripts instead of columns"};

std::string Args::get(std::string_view name, std::string fallback) const {
  const auto found = options.find(name);
  return found == options.end() ? fallback : found->second;
}

int usage_error(const Command &command, const std::string &message) {
  std::fprintf(stderr, "tessera %s: %s\nTry 'tessera %s --help'.\n", command.name, message.c_str(),
               command.name);
  return kUsage;
}

int fail(const std::string &what, const std::string &message) {
  std::fprintf(stderr, "tessera: %s: %s\n", what.c_str(), message.c_str());
  return kFailed;
}

int fail_status(const std::string &what, int64_t status, const std::string &meaning) {
  return fail(what, "status " + std::to_string(status) + ": " + meaning);
}

bool parse_u32(const std::string &text, uint32_t &out) {
  if (text.empty() || text.size() > 10 ||
      text.find_first_not_of("0123456789") != std::string::npos) {
    return false;
  }
  const unsigned long long value = std::strtoull(text.c_str(), nullptr, 10);
  if (value > UINT32_MAX) {
    return false;
  }
  out = static_cast<uint32_t>(value);
  return true;
}

std::string quote(std::string_view text, const char *hex_escape, const char *more) {
  constexpr const char *kShort = "\"\\\t\n\r";  // written as \", \\, \t, \n, \r
  std::string out = "\"";
  for (const char c : text) {
    const char *short_escape = c != '\0' ? std::strchr(kShort, c) : nullptr;
    if (short_escape != nullptr) {
      out += '\\';
      out += "\"\\tnr"[short_escape - kShort];
    } else if (static_cast<unsigned char>(c) < 0x20 ||
               (c != '\0' && std::strchr(more, c) != nullptr)) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\%s%02x", hex_escape, static_cast<unsigned>(c));
      out += escaped;
    } else {
      out += c;
    }
  }
  return out + "\"";
}

std::string json(std::string_view text) {
  return quote(text, "u00");
}

std::string entry_json(const Entry &entry, const std::string &more_fields) {
  return "{\"name\": " + json(entry.name) +
         (entry.type.empty() ? "" : ", \"type\": " + json(entry.type)) +
         (entry.error.empty() ? ", \"value\": " + json(entry.value)
                              : ", \"error\": " + json(entry.error)) +
         more_fields + "}";
}

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

std::string json_array(const std::vector<std::string> &items, int indent) {
  std::string out = "[";
  for (std::size_t i = 0; i < items.size(); ++i) {
    out += "\n" + std::string(indent + 2, ' ') + items[i] + (i + 1 < items.size() ? "," : "");
  }
  return out + (items.empty() ? "]" : "\n" + std::string(indent, ' ') + "]");
}

Progress::Progress(const char *what, std::size_t total)
    : what_(what), total_(total), terminal_(isatty(STDERR_FILENO) == 1) {}

void Progress::step(std::size_t done, const std::string &name) {
  if (terminal_) {
    std::fprintf(stderr, "\rtessera %s: %zu/%zu %s\033[K", what_, done, total_, name.c_str());
    shown_ = true;
  }
}

void Progress::clear() {
  if (shown_) {
    std::fputs("\r\033[K", stderr);
    shown_ = false;
  }
}

void Table::print() const {
  std::vector<std::size_t> widths;
  for (const auto &row : rows_) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], row[i].size());
    }
  }
  for (const auto &row : rows_) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += row[i];
      if (i + 1 < row.size()) {
        line.append(widths[i] - row[i].size() + 2, ' ');
      }
    }
    while (!line.empty() && line.back() == ' ') {
      line.pop_back();
    }
    std::puts(line.c_str());
  }
}

}  // namespace tessera_cli
