// The tokenizer: its tokens, the one-block layout the caller frees with free(), cut tokens, and
// what the vector keeps when memory runs out. Its fuzzer compares it with the reference splitter
// on arbitrary text.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "heap_seam.h"
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

TEST(StrTokenize, KeepsWhatItHasWhenALaterBlockCannotBeMade) {
  const std::string text = "one two three";
  const Tokens all{"one", "two", "three"};
  const auto allocations = allocations_of([&] { std::free(StrTokenize(text.c_str())); });
  ASSERT_EQ(allocations, 1 + all.size());  // the empty vector, then one block per token
  {
    FailNthAllocation fail(1);
    EXPECT_EQ(StrTokenize(text.c_str()), nullptr);
  }
  for (std::uint32_t n = 2; n <= allocations; ++n) {
    FailNthAllocation fail(n);
    Tokens expected = all;
    expected.erase(expected.begin() + (n - 2));
    EXPECT_EQ(tokenize(text), expected) << "allocation " << n << " failed";
  }
}

}  // namespace
}  // namespace tessera::test
