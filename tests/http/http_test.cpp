// Entity encoding with its 7-free-bytes rule, and single-pass decoding.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "capture_sink.h"
#include "tessera/http.h"

namespace tessera::test {
namespace {

struct Coded {
  int32_t result;
  std::string text;
  std::string bytes;  // the whole buffer given
};

// Runs a coder on `source` with a destination of `room` bytes that starts full of 'x'.
template <class Coder>
Coded code(Coder coder, const std::string &source, unsigned size, std::size_t room) {
  std::vector<char> out(room + 1, 'x');
  const int32_t result = coder(source.c_str(), out.data(), size);
  EXPECT_EQ(out[room], 'x') << "wrote past the destination";
  const std::string bytes(out.data(), room);
  return {result, bytes.substr(0, bytes.find('\0')), bytes};
}

Coded encode(const std::string &source, unsigned size) {
  return code(HttpEncodeSpecialCharacters, source, size, size);
}

Coded decode(const std::string &source) {
  return code(HttpDecodeSpecialCharacters, source, static_cast<unsigned>(source.size()),
              source.size() + 2);
}

TEST(HttpEncodeSpecialCharacters, WritesTheFiveEntitiesIntoAZeroedDestination) {
  const Coded all = encode("<a>&\"'\xff", 40);
  EXPECT_EQ(all.result, 1);
  EXPECT_EQ(all.text, "&lt;a&gt;&amp;&quot;&apos;\xff");
  EXPECT_EQ(all.bytes.find_first_not_of('\0', all.text.size()), std::string::npos);
  EXPECT_EQ(encode("&amp;", 16).text, "&amp;amp;");
  const Coded empty = encode("", 4);
  EXPECT_EQ(empty.result, 1);
  EXPECT_EQ(empty.bytes, std::string(4, '\0'));
  EXPECT_EQ(CaptureSink::instance().assertions(), 0U);
}

TEST(HttpEncodeSpecialCharacters, StopsAtTheFirstCharacterWithFewerThan7BytesFree) {
  struct Case {
    std::string source;
    unsigned size;
    std::string text;
    std::size_t assertions;
  };
  const Case cases[] = {
      {"abcd", 10, "abcd", 0},
      {"abcd", 9, "abc", 1},
      {"\"\"", 13, "&quot;&quot;", 0},
      {"\"\"", 12, "&quot;", 1},
      {"a", 6, "", 1},
      {std::string(64, 'p'), 64, std::string(58, 'p'), 1},
  };
  for (const auto &c : cases) {
    CaptureSink::instance().reset();
    const Coded coded = encode(c.source, c.size);
    EXPECT_EQ(coded.result, 1) << c.source << " in " << c.size;
    EXPECT_EQ(coded.text, c.text) << c.source << " in " << c.size;
    EXPECT_EQ(CaptureSink::instance().assertions(), c.assertions) << c.source << " in " << c.size;
  }
}

TEST(HttpCoders, RefuseNullTextsAndSourcesLongerThanSize) {
  for (auto *coder : {HttpEncodeSpecialCharacters, HttpDecodeSpecialCharacters}) {
    CaptureSink::instance().reset();
    char out[4] = "abc";
    EXPECT_EQ(coder(nullptr, out, 4), 0);
    EXPECT_EQ(coder("a", nullptr, 4), 0);
    EXPECT_EQ(coder("abcde", out, 4), 0);
    EXPECT_EQ(coder("abcd", out, 3), 0);
    EXPECT_STREQ(out, "abc");
    EXPECT_EQ(CaptureSink::instance().assertions(), 4U);
    EXPECT_EQ(CaptureSink::instance().reports().size(), 4U);
  }
  EXPECT_EQ(code(HttpEncodeSpecialCharacters, std::string(65, 'p'), 64, 64).result, 0);
}

TEST(HttpDecodeSpecialCharacters, DecodesInOnePassAndLeavesOtherTextAlone) {
  struct Case {
    const char *source;
    const char *text;
  };
  const Case cases[] = {
      {"&lt;a&gt;&amp;&quot;&apos;", "<a>&\"'"},
      {"&#39;", "&#39;"},
      {"&LT;", "&LT;"},
      {"&lt", "&lt"},
      {"a&b&amp;c", "a&b&c"},
      {"&amp;lt;", "&lt;"},
      {"&&lt;", "&<"},
      {"", ""},
  };
  for (const auto &c : cases) {
    const Coded decoded = decode(c.source);
    EXPECT_EQ(decoded.result, 1) << c.source;
    EXPECT_EQ(decoded.text, c.text) << c.source;
  }
  EXPECT_EQ(CaptureSink::instance().assertions(), 0U);
}

TEST(HttpDecodeSpecialCharacters, TakesSourcesUpToSizeAndKeepsBytesBehindTheTerminator) {
  const Coded decoded = code(HttpDecodeSpecialCharacters, "&lt;", 4, 6);
  EXPECT_EQ(decoded.result, 1);
  EXPECT_EQ(decoded.bytes, std::string("<\0xxxx", 6));
  EXPECT_EQ(code(HttpDecodeSpecialCharacters, "&lt;", 3, 6).result, 0);
}

}  // namespace
}  // namespace tessera::test
