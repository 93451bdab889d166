// The tokenizer: splits a command line into an argument vector that lives in one heap block, so
// that the caller releases it with one free(). The block holds the null-terminated pointer array
// and, directly behind it, the token texts the pointers point at.
#include "string/tokenize.h"

#include <cstring>

#include "memory/heap.h"
#include "tessera/strlib.h"

namespace {

using tessera::strlib::kMaxTokenCharacters;

// The token being collected: at most 1027 characters; further ones are dropped.
class Token {
 public:
  void add(char c) {
    if (length_ < kMaxTokenCharacters) text_[length_++] = c;
  }
  [[nodiscard]] bool empty() const { return length_ == 0; }
  // The token as a text; the collected characters stay until clear().
  const char *text() {
    text_[length_] = '\0';
    return text_;
  }
  void clear() { length_ = 0; }

 private:
  char text_[kMaxTokenCharacters + 1];
  std::size_t length_ = 0;
};

bool is_quote(char c) {
  return c == '\'' || c == '"';
}

}  // namespace

extern "C" char **strArgvAppend(char **argv, const char *text, std::size_t *size) {
  const std::size_t text_size = std::strlen(text) + 1;
  *size += text_size + sizeof(char *);
  auto *grown = static_cast<char **>(tessera::heap::allocate_zeroed(*size));
  if (grown == nullptr) return argv;
  std::size_t count = 0;
  while (argv[count] != nullptr) ++count;
  // The texts begin behind the old pointers, the new one and the null.
  char *texts = reinterpret_cast<char *>(grown + count + 2);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t length = std::strlen(argv[i]) + 1;
    std::memcpy(texts, argv[i], length);
    grown[i] = texts;
    texts += length;
  }
  std::memcpy(texts, text, text_size);
  grown[count] = texts;
  tessera::heap::release(argv);
  return grown;
}

extern "C" char **StrTokenize(const char *s) {
  std::size_t size = sizeof(char *);
  auto *argv = static_cast<char **>(tessera::heap::allocate_zeroed(size));
  if (argv == nullptr || s == nullptr) return argv;

  Token token;
  bool in_token = false;
  while (*s != '\0') {
    const char c = *s++;
    if (is_quote(c)) {
      // A quoted section: blanks and the other quote are plain characters, a backslash takes the
      // next character literally; the closing quote or the end of the text ends it.
      while (*s != '\0' && *s != c) {
        if (*s == '\\') {
          ++s;
          if (*s == '\0') break;
        }
        token.add(*s++);
      }
      if (*s == c) ++s;
      in_token = true;
    } else if (c == ' ') {
      if (in_token) {
        argv = strArgvAppend(argv, token.text(), &size);
        token.clear();
        in_token = false;
      }
    } else {
      token.add(c);
      in_token = true;
    }
  }
  if (!token.empty()) argv = strArgvAppend(argv, token.text(), &size);
  // Empty of tokens, or ended by a blank: an empty last argument.
  if (!in_token) argv = strArgvAppend(argv, "", &size);
  return argv;
}
