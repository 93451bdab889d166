// The tokenizer: its tokens, the one-block layout the caller frees with free(), and cut tokens.
// Its fuzzer compares it with the reference splitter on arbitrary text.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "strlib_test.h"
#include "tessera/strlib.h"

namespace tessera::test {
namespace {

using Tokens = std::vector<std::string>;

// Tokenizes `text`, checks that the block holds the pointer array, its null and then the texts
// back to back, and releases it with free().
Tokens tokenize(const std::string &text) {
  char **argv = StrTokenize(text.c_str());
  EXPECT_NE(argv, nullptr);
  if (argv == nullptr) return {};
  Tokens tokens = tokens_of(argv);
  EXPECT_TRUE(texts_follow_pointers(argv, tokens)) << "'" << text << "'";
  std::free(static_cast<void *>(argv));
  return tokens;
}

TEST(StrTokenize, SplitsAtBlanksWithQuotedSections) {
  const std::pair<std::string, Tokens> cases[] = {
      // clang-format off
      {"", {""}}, {"   ", {""}}, {"a b", {"a", "b"}}, {"a  b", {"a", "b"}}, {"a ", {"a", ""}},
      {" a", {"a"}}, {"''", {}}, {"'' a", {"", "a"}}, {"a ''", {"a"}}, {"x'a b'y", {"xa by"}},
      {"'a\"b'", {"a\"b"}}, {R"('it\'s')", {"it's"}}, {R"('a\\b')", {"a\\b"}},
      {R"(a\ b)", {"a\\", "b"}}, {"'a' 'b'", {"a", "b"}}, {"\"unclosed a  b", {"unclosed a  b"}},
      {"a\tb", {"a\tb"}}, {"'a\\", {"a"}}, {"\"\" \"\" ", {"", "", ""}},
      // clang-format on
  };
  for (const auto &[text, expected] : cases) {
    EXPECT_EQ(tokenize(text), expected) << "'" << text << "'";
    EXPECT_EQ(reference_tokens(text), expected) << "reference: '" << text << "'";
  }
  const std::string long_token(2000, 'x'), cut = long_token.substr(0, 1027);
  EXPECT_EQ(tokenize(long_token + " b"), (Tokens{cut, "b"}));
  EXPECT_EQ(tokenize("'" + long_token + "'"), Tokens{cut});
  EXPECT_EQ(tokenize(cut), Tokens{cut});
  EXPECT_EQ(CaptureSink::instance().reports().size(), 0U);
}

}  // namespace
}  // namespace tessera::test
