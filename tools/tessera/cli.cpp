// The conventions that every subcommand shares: errors, numbers, JSON text and columns.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
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

std::string json(std::string_view text) {
  std::string out = "\"";
  for (const char c : text) {
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        if (static_cast<unsigned char>(c) < 0x20) {
          char escaped[8];
          std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
          out += escaped;
        } else {
          out += c;
        }
    }
  }
  return out + "\"";
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
