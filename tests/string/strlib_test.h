// Helpers of the string library's tests: the reports of one call, a plain reading of the
// tokenizer's rules with standard containers to check StrTokenize against, and the layout of the
// block StrTokenize returns.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "capture_sink.h"

namespace tessera::test {

inline constexpr const char kTooLongFormat[] = "DEBUG: %s [%d]: Value is too long for datatype\n";

// What one call gives and reports: its result, its assertions, its too-long reports, and all
// of its reports.
using Outcome = std::tuple<int64_t, std::size_t, std::size_t, std::size_t>;

template <class Fn, class... Args>
Outcome outcome(Fn &&fn, Args &&...args) {
  auto &sink = CaptureSink::instance();
  sink.reset();
  const auto result = static_cast<int64_t>(std::invoke(fn, std::forward<Args>(args)...));
  return {result, sink.assertions(), sink.count(kTooLongFormat), sink.reports().size()};
}

inline std::string shown(const char *s) {
  return s != nullptr ? "'" + std::string(s) + "'" : "NULL";
}

inline std::vector<std::string> reference_tokens(std::string_view s) {
  std::vector<std::string> tokens;
  std::optional<std::string> word;  // engaged from a token's first character or quote on
  for (std::size_t i = 0; i < s.size(); ++i) {
    const char c = s[i];
    if (c == ' ') {
      if (word) tokens.push_back(*std::exchange(word, std::nullopt));
      continue;
    }
    if (!word) word.emplace();
    if (c != '\'' && c != '"') {
      word->push_back(c);
      continue;
    }
    std::size_t j = i + 1;
    for (; j < s.size() && s[j] != c; ++j) {
      if (s[j] == '\\' && ++j == s.size()) break;
      word->push_back(s[j]);
    }
    i = j;  // on the closing quote, or at the end of the text
  }
  if (word && !word->empty()) tokens.push_back(*word);
  if (!word) tokens.emplace_back();  // nothing at all, or a blank at the end
  for (auto &token : tokens) token.resize(std::min<std::size_t>(token.size(), 1027));
  return tokens;
}

// The tokens of a vector from StrTokenize.
inline std::vector<std::string> tokens_of(char **argv) {
  std::vector<std::string> tokens;
  for (; *argv != nullptr; ++argv) tokens.emplace_back(*argv);
  return tokens;
}

// Whether the block of a vector from StrTokenize holds the pointer array, its null and then the
// texts of `tokens` back to back, each pointer at its own text.
inline bool texts_follow_pointers(char *const *argv, const std::vector<std::string> &tokens) {
  const char *next = reinterpret_cast<const char *>(argv + tokens.size() + 1);
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (argv[i] != next) return false;
    next += tokens[i].size() + 1;
  }
  return true;
}

}  // namespace tessera::test
