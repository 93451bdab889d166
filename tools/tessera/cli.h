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
std::vector<Command> backup_commands();
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
// Whether the row's legacy path or store key starts with one of `prefixes` (all rows for none).
bool row_matches(const CatalogueRow &row, const std::vector<std::string> &prefixes);

// Every command, in the order `tessera --help` lists them.
std::vector<Command> all_commands();
// The command named by argv[1], or argv[1] and argv[2], and how many words its name has; null
// when none is.
const Command *find_command(const std::vector<Command> &commands, int argc, char **argv,
                            int &words);
// The command's option of that long name or that letter, or null.
const Option *find_option(const Command &command, std::string_view name, char letter);
// An argument that is an option rather than a value: "-x" or "--name", but not "-" or "-1".
bool is_option(const char *arg);

// `tessera __complete CWORD WORD...`, the bash completion's helper: prints "files" when the word
// COMP_WORDS[CWORD] is a file name, else "words" and the candidates for it, one a line.
int complete(const std::vector<Command> &commands, int argc, char **argv);

// How a setting is reached: through the mapping daemon first (as the tools do), straight to the
// store or network record, or as one of the mapping daemon's DCSGEN properties.
enum class Route { kDaemonFirst, kDirect, kDcsgen };

// Reads or writes a setting by its route; 0 or the library's status.
int32_t read_setting(const std::string &name, Route route, std::string &value);
int32_t write_setting(const std::string &name, const std::string &value, Route route);
// What a failed read's or write's status means for this setting, in words.
std::string read_failure(const std::string &name, int32_t status, Route route);
std::string write_failure(const std::string &name, int32_t status, Route route);

// The library's type code of a name (convert_prop_name) and its word: "int", "str", ...
int32_t type_of(const std::string &name);
std::string type_name(int type);
// Why `value` can't be the setting's value by its type, as "takes ..., not ..." ("" when it
// can): a setting takes a decimal number in the signed 32-bit range (the field's range in the
// network record), 0 or 1 for a flag, an address where it is one, a text no wider than its field.
std::string value_problem(const std::string &name, const std::string &value);
// False for the settings the library never writes: firmware values, extended IPv6 entries,
// change markers.
bool writable(const std::string &name);

// One setting as `get --json` and the exports carry it: its name (legacy path or store key), its
// type word ("" when unknown) and either its value or, when it can't be read, what went wrong.
struct Entry {
  std::string name;
  std::string type;
  std::string value;
  std::string error;
};
// {"name": ..., "type": ..., "value" or "error": ...} and `more_fields` (", \"key\": value").
std::string entry_json(const Entry &entry, const std::string &more_fields = "");
// The setting read by the route; a failure's status and meaning go to `error`.
Entry read_entry(const std::string &name, Route route = Route::kDaemonFirst);

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

// `text` in double quotes, with '"', '\\', tab, line feed and carriage return escaped by a
// backslash, and the other control characters and those in `more` as a backslash,
// `hex_escape` and two hexadecimal digits.
std::string quote(std::string_view text, const char *hex_escape, const char *more = "");
// A JSON string literal of `text` (bytes above 0x7F pass as they are).
std::string json(std::string_view text);

// A JSON array of `items`, one a line, indented `indent` blanks deeper than the brackets' line;
// "[]" when empty.
std::string json_array(const std::vector<std::string> &items, int indent = 0);

// A progress line on standard error, "tessera WHAT: DONE/TOTAL NAME", shown only while
// standard error is a terminal.
class Progress {
 public:
  Progress(const char *what, std::size_t total);
  ~Progress() { clear(); }
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;
  void step(std::size_t done, const std::string &name);
  void clear();  // before any other message on standard error

 private:
  const char *what_;
  std::size_t total_;
  bool terminal_;
  bool shown_ = false;
};

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
