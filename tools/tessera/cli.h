// What every subcommand of `tessera` shares: its description for the dispatcher and the help,
// the parsed command line, exit codes, error messages and the two output forms (aligned columns
// for people, JSON for scripts).
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tessera_cli {

// Exit codes, documented in `tessera --help`.
enum Exit : int {
  kOk = 0,      // done, or the answer is yes
  kFailed = 1,  // an operation failed; standard error gives the library's status and meaning
  kUsage = 2,   // the command line is wrong
  kNo = 3,      // the answer is no: a text that doesn't pass, a name or entry that isn't there
};

struct Option {
  const char *name;   // long name without the dashes
  char letter;        // short name, or 0
  const char *value;  // name of the option's value, or null for a flag
  const char *help;
};

// A parsed command line: positional arguments in order, options by long name ("" for a flag).
struct Args {
  std::vector<std::string> positional;
  std::map<std::string, std::string, std::less<>> options;

  [[nodiscard]] bool has(std::string_view name) const { return options.contains(name); }
  [[nodiscard]] std::string get(std::string_view name, std::string fallback = "") const;
};

struct Command {
  const char *name;      // "get", "sessions show", ...
  const char *synopsis;  // arguments after the name, as the usage shows them
  const char *summary;   // one line for the command list
  std::string details;   // paragraphs for `tessera NAME --help`
  std::vector<Option> options;
  int min_args;
  int max_args;  // -1: no limit
  int (*run)(const Command &command, const Args &args);
  bool options_first = false;  // options end at the first argument (a command line to run)
};

// The commands of each area, in the order `tessera --help` lists them.
std::vector<Command> property_commands();
std::vector<Command> session_commands();
std::vector<Command> ini_commands();
std::vector<Command> utility_commands();
std::vector<Command> codec_commands();
std::vector<Command> sim_commands();

// One row of the library's property catalogue, as the build extracted it ("" for no text).
struct CatalogueRow {
  const char *legacy_path;
  const char *store_key;
  int type;
  const char *default_value;
};
std::span<const CatalogueRow> catalogue_rows();

// The option every listing command has.
extern const Option kJsonOption;

// Prints "tessera: <command>: <message>" and the hint to --help on standard error; returns kUsage.
int usage_error(const Command &command, const std::string &message);
// Prints "tessera: <what>: <message>" on standard error; returns kFailed.
int fail(const std::string &what, const std::string &message);
// Prints "tessera: <what>: status <status>: <meaning>" on standard error; returns kFailed.
int fail_status(const std::string &what, int64_t status, const std::string &meaning);

// Reads a whole decimal number into `out`; false when the text is no number or out of range.
bool parse_u32(const std::string &text, uint32_t &out);

// A JSON string literal of `text` (bytes above 0x7F pass as they are).
std::string json(std::string_view text);

// Rows of text printed in columns padded to the widest cell, the last column unpadded.
class Table {
 public:
  explicit Table(std::vector<std::string> header) { rows_.push_back(std::move(header)); }
  void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }
  void print() const;

 private:
  std::vector<std::vector<std::string>> rows_;
};

// The simulated controller's namespace: joins it when the daemons run in one that this process
// isn't in, so that every command reaches them from the user's shell. Called once, before any
// thread exists.
void join_simulation();

}  // namespace tessera_cli
