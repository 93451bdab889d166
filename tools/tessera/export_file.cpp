// Settings exports: written as JSON or INI, read back from either. The INI form is read with the
// library's own parser.
#include "export_file.h"

#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include <tessera/inifile.h>

namespace tessera_cli {
namespace {

constexpr const char *kFormat = "tessera export";
constexpr const char *kVersion = "1";
constexpr std::size_t kIniValueWidth = 1023;  // the most an INI key's value holds
constexpr std::size_t kIniPathWidth = 256;    // the longest path inifileOpen takes
constexpr std::size_t kQuotedPiece = 250;     // bytes of a long value per quoted value key

// A parsed JSON value. An object keeps its members in order: keys[i] names items[i].
struct Json {
  enum Kind { kNull, kBool, kNumber, kString, kArray, kObject } kind = kNull;
  std::string text;  // a string's contents, or a number or literal as written
  std::vector<std::string> keys;
  std::vector<Json> items;

  [[nodiscard]] const Json *member(std::string_view name) const {
    for (std::size_t i = 0; kind == kObject && i < keys.size(); ++i) {
      if (keys[i] == name) {
        return &items[i];
      }
    }
    return nullptr;
  }
  [[nodiscard]] const std::string *string(std::string_view name) const {
    const Json *found = member(name);
    return found != nullptr && found->kind == kString ? &found->text : nullptr;
  }
};

// A JSON parser (RFC 8259), nested at most 64 deep.
class JsonReader {
 public:
  explicit JsonReader(std::string_view text) : text_(text) {}

  bool parse(Json &out) {
    if (!value(out, 0)) {
      return false;
    }
    blanks();
    return pos_ == text_.size() || fail("text after the end");
  }
  [[nodiscard]] std::string error() const {
    return error_ + " at byte " + std::to_string(pos_ + 1);
  }

 private:
  bool fail(const char *what) {
    error_ = what;
    return false;
  }
  void blanks() {
    while (pos_ < text_.size() && std::strchr(" \t\r\n", text_[pos_]) != nullptr) {
      ++pos_;
    }
  }
  bool take(char c) {
    blanks();
    if (pos_ < text_.size() && text_[pos_] == c) {
      ++pos_;
      return true;
    }
    return false;
  }
  bool word(std::string_view literal, Json::Kind kind, Json &out) {
    if (text_.substr(pos_, literal.size()) != literal) {
      return fail("unexpected text");
    }
    pos_ += literal.size();
    out.kind = kind;
    out.text = literal;
    return true;
  }
  // A number is taken as written: a run of the characters a JSON number is made of.
  bool number(Json &out) {
    const std::size_t start = pos_;
    while (pos_ < text_.size() && std::strchr("+-.0123456789eE", text_[pos_]) != nullptr) {
      ++pos_;
    }
    out.kind = Json::kNumber;
    out.text = text_.substr(start, pos_ - start);
    return true;
  }
  bool hex4(uint32_t &code) {
    if (pos_ + 4 > text_.size()) {
      return fail("a \\u escape cut short");
    }
    code = 0;
    for (int i = 0; i < 4; ++i) {
      const char c = text_[pos_++];
      const char *digit = std::strchr("0123456789abcdef", c | 0x20);
      if (c == '\0' || digit == nullptr) {
        return fail("a \\u escape with no four hexadecimal digits");
      }
      code = code * 16 + static_cast<uint32_t>(digit - "0123456789abcdef");
    }
    return true;
  }
  bool unicode(std::string &out) {
    uint32_t code = 0;
    if (!hex4(code)) {
      return false;
    }
    if (code >= 0xD800 && code <= 0xDBFF) {
      uint32_t low = 0;
      if (text_.substr(pos_, 2) != "\\u" || (pos_ += 2, !hex4(low)) || low < 0xDC00 ||
          low > 0xDFFF) {
        return fail("a lone UTF-16 surrogate");
      }
      code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
    } else if (code >= 0xDC00 && code <= 0xDFFF) {
      return fail("a lone UTF-16 surrogate");
    } else if (code == 0) {
      return fail("a NUL character, which no setting holds");
    }
    const int extra = code < 0x80 ? 0 : code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;  // UTF-8
    out += static_cast<char>((extra == 0 ? 0 : (0xF0 << (3 - extra)) & 0xFF) | code >> (6 * extra));
    for (int i = extra - 1; i >= 0; --i) {
      out += static_cast<char>(0x80 | ((code >> (6 * i)) & 0x3F));
    }
    return true;
  }
  // A string after its opening quote.
  bool string(std::string &out) {
    while (pos_ < text_.size()) {
      const char c = text_[pos_++];
      if (c == '"') {
        return true;
      }
      if (static_cast<unsigned char>(c) < 0x20) {
        return fail("a control character in a string");
      }
      if (c != '\\') {
        out += c;
        continue;
      }
      const char escape = pos_ < text_.size() ? text_[pos_++] : '\0';
      const char *from = "\"\\/bfnrt";
      const char *to = "\"\\/\b\f\n\r\t";
      if (escape == 'u') {
        if (!unicode(out)) {
          return false;
        }
      } else if (escape != '\0' && std::strchr(from, escape) != nullptr) {
        out += to[std::strchr(from, escape) - from];
      } else {
        return fail("an unknown escape in a string");
      }
    }
    return fail("a string without its closing quote");
  }
  bool value(Json &out, int depth) {
    blanks();
    if (pos_ >= text_.size()) {
      return fail("a value expected");
    }
    if (depth > 64) {
      return fail("nested too deep");
    }
    const char c = text_[pos_];
    if (c == '"') {
      ++pos_;
      out.kind = Json::kString;
      return string(out.text);
    }
    if (c == '[' || c == '{') {
      ++pos_;
      const bool object = c == '{';
      out.kind = object ? Json::kObject : Json::kArray;
      if (take(object ? '}' : ']')) {
        return true;
      }
      do {
        if (object) {
          if (!take('"')) {
            return fail("a member name expected");
          }
          out.keys.emplace_back();
          if (!string(out.keys.back()) || !take(':')) {
            return error_.empty() ? fail("':' expected") : false;
          }
        }
        out.items.emplace_back();
        if (!value(out.items.back(), depth + 1)) {
          return false;
        }
      } while (take(','));
      return take(object ? '}' : ']') ||
             fail(object ? "',' or '}' expected" : "',' or ']' expected");
    }
    if (c == 't' || c == 'f') {
      return word(c == 't' ? "true" : "false", Json::kBool, out);
    }
    if (c == 'n') {
      return word("null", Json::kNull, out);
    }
    return c == '-' || (c >= '0' && c <= '9') ? number(out) : fail("a value expected");
  }

  std::string_view text_;
  std::size_t pos_ = 0;
  std::string error_;
};

std::string read_json(const std::string &text, std::vector<Entry> &entries) {
  Json root;
  JsonReader reader(text);
  if (!reader.parse(root)) {
    return "not JSON: " + reader.error();
  }
  const std::string *format = root.string("format");
  if (format == nullptr || *format != kFormat) {
    return "not a tessera export: no \"format\": \"tessera export\"";
  }
  const Json *version = root.member("version");
  if (version == nullptr || version->kind != Json::kNumber || version->text != kVersion) {
    return "an export of another version than 1";
  }
  const Json *settings = root.member("settings");
  if (settings == nullptr || settings->kind != Json::kArray) {
    return "no \"settings\" list";
  }
  for (std::size_t i = 0; i < settings->items.size(); ++i) {
    const Json &item = settings->items[i];
    const std::string *name = item.string("name");
    const std::string *type = item.string("type");
    const std::string *value = item.string("value");
    const std::string *error = item.string("error");
    if (name == nullptr || name->empty() || (value == nullptr) == (error == nullptr)) {
      return "setting " + std::to_string(i + 1) +
             ": not an object with a \"name\" and either a \"value\" or an \"error\"";
    }
    entries.push_back({*name, type != nullptr ? *type : "", value != nullptr ? *value : "",
                       error != nullptr ? *error : ""});
  }
  return "";
}

// Whether the INI parser gives `value` back as it stands.
bool plain(std::string_view value) {
  if (value.size() > kIniValueWidth ||
      (!value.empty() && (value.front() == ' ' || value.back() == ' ' || value.front() == '"'))) {
    return false;
  }
  for (const char c : value) {
    if (c == ';' || static_cast<unsigned char>(c) < 0x20) {
      return false;
    }
  }
  return true;
}

std::string quoted(std::string_view value) {
  return quote(value, "x", ";");  // a ';' anywhere ends the INI parser's line
}

// The value keys that hold `value`: itself, quoted, or quoted in pieces when too long for one.
std::vector<std::string> ini_values(std::string_view value) {
  if (plain(value)) {
    return {std::string(value)};
  }
  if (std::string whole = quoted(value); whole.size() <= kIniValueWidth) {
    return {whole};
  }
  std::vector<std::string> pieces;
  for (std::size_t at = 0; at < value.size(); at += kQuotedPiece) {
    pieces.push_back(quoted(value.substr(at, kQuotedPiece)));
  }
  return pieces;
}

// The value an INI key holds, its quotes and escapes resolved; false for a bad escape.
bool unquote(std::string_view text, std::string &out) {
  if (text.size() < 2 || text.front() != '"' || text.back() != '"') {
    out += text;
    return true;
  }
  text = text.substr(1, text.size() - 2);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      out += text[i];
      continue;
    }
    const char escape = ++i < text.size() ? text[i] : '\0';
    const char *from = "\"\\tnr";
    if (escape != '\0' && std::strchr(from, escape) != nullptr) {
      out += "\"\\\t\n\r"[std::strchr(from, escape) - from];
    } else if (escape == 'x' && i + 2 < text.size() &&
               std::isxdigit(static_cast<unsigned char>(text[i + 1])) != 0 &&
               std::isxdigit(static_cast<unsigned char>(text[i + 2])) != 0 &&
               text.substr(i + 1, 2) != "00") {
      out +=
          static_cast<char>(std::strtol(std::string(text.substr(i + 1, 2)).c_str(), nullptr, 16));
      i += 2;
    } else {
      return false;
    }
  }
  return true;
}

struct CloseDocument {
  void operator()(InifileDocument *document) const { inifileClose(document); }
};

std::string read_ini(const std::string &path, const std::string &text,
                     std::vector<Entry> &entries) {
  // The library reads a file by its path: standard input, or a file with a longer path than it
  // takes, goes through a temporary copy.
  std::string copy;
  if (path == "-" || path.size() > kIniPathWidth) {
    const char *tmp = std::getenv("TMPDIR");
    copy = std::string(tmp != nullptr && tmp[0] != '\0' ? tmp : "/tmp") + "/tessera-XXXXXX";
    const int fd = mkstemp(copy.data());
    const bool written =
        fd >= 0 && write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    if (fd >= 0) {
      close(fd);
    }
    if (!written || copy.size() > kIniPathWidth) {
      unlink(copy.c_str());
      return std::string("can't make a temporary copy: ") + std::strerror(errno);
    }
  }
  InifileDocument *opened = nullptr;
  const int32_t status = inifileOpen(copy.empty() ? path.c_str() : copy.c_str(), &opened);
  std::unique_ptr<InifileDocument, CloseDocument> document(opened);
  if (!copy.empty()) {
    unlink(copy.c_str());
  }
  if (status != 0) {
    return "the INI file can't be read: status " + std::to_string(status);
  }
  InifileSection *header = inifileGetSection(document.get(), 0);
  if (header == nullptr || std::strcmp(inifileGetSectionName(header), kFormat) != 0) {
    return "not a tessera export: neither JSON nor INI that begins with [tessera export]";
  }
  InifileKey *version = inifileGetKeyByName(header, "version");
  if (version == nullptr || std::strcmp(inifileGetKeyValue(version), kVersion) != 0) {
    return "an export of another version than 1";
  }
  for (uint32_t i = 1; InifileSection *section = inifileGetSection(document.get(), i); ++i) {
    Entry entry{inifileGetSectionName(section), "", "", ""};
    bool has_value = false;
    for (uint32_t k = 0; InifileKey *key = inifileGetKey(section, k); ++k) {
      const std::string_view name = inifileGetKeyName(key);
      const std::string_view value = inifileGetKeyValue(key);
      has_value = has_value || name == "value";
      const bool ok = name == "type"    ? unquote(value, entry.type)
                      : name == "value" ? unquote(value, entry.value)
                      : name == "error" ? unquote(value, entry.error)
                                        : true;
      if (!ok) {
        return "[" + entry.name + "] " + std::string(name) + ": a bad escape in " +
               std::string(value);
      }
    }
    if (entry.name.empty() || has_value == !entry.error.empty()) {
      return "[" + entry.name + "]: no name, or not either a value or an error";
    }
    entries.push_back(std::move(entry));
  }
  return "";
}

}  // namespace

std::string export_json(const std::vector<Entry> &entries) {
  std::vector<std::string> items;
  for (const auto &entry : entries) {
    items.push_back(entry_json(entry));
  }
  return std::string("{\n  \"format\": ") + json(kFormat) + ",\n  \"version\": " + kVersion +
         ",\n  \"settings\": " + json_array(items, 2) + "\n}\n";
}

std::string export_ini(const std::vector<Entry> &entries) {
  std::string out = std::string("[") + kFormat + "]\nversion=" + kVersion + "\n";
  for (const auto &entry : entries) {
    out += "\n[" + entry.name + "]\n";
    if (!entry.type.empty()) {
      out += "type=" + ini_values(entry.type).front() + "\n";
    }
    if (!entry.error.empty()) {
      out += "error=" + ini_values(entry.error).front() + "\n";
      continue;
    }
    for (const auto &piece : ini_values(entry.value)) {
      out += "value=" + piece + "\n";
    }
  }
  return out;
}

std::string read_export(const std::string &path, std::vector<Entry> &entries) {
  std::FILE *file = path == "-" ? stdin : std::fopen(path.c_str(), "rb");
  if (file == nullptr) {
    return std::strerror(errno);
  }
  std::string text;
  char chunk[65536];
  for (std::size_t got = 0; (got = std::fread(chunk, 1, sizeof chunk, file)) > 0;) {
    text.append(chunk, got);
  }
  const int error = std::ferror(file) != 0 ? errno : 0;
  if (file != stdin) {
    std::fclose(file);
  }
  if (error != 0) {
    return std::strerror(error);
  }
  const auto first = text.find_first_not_of(" \t\r\n");
  return first != std::string::npos && text[first] == '{' ? read_json(text, entries)
                                                          : read_ini(path, text, entries);
}

}  // namespace tessera_cli
