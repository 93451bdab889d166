// Name/value list readers, separator escapes and the multi-line cleaner.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "capture_sink.h"
#include "tessera/nvpair.h"

namespace tessera::test {
namespace {

constexpr uint32_t kNoName = 0x0FFFFFFF;

// A reader's result and the whole output buffer, which starts full of 'x' so that the zeroing
// and every byte written show.
struct Read {
  uint32_t result;
  std::string text;   // up to the first NUL
  std::string bytes;  // all `size` bytes
};

template <class Reader, class Key>
Read read(Reader reader, const char *list, Key key, unsigned size) {
  std::vector<char> out(size + 1, 'x');
  const uint32_t result = reader(list, key, size, out.data());
  EXPECT_EQ(out[size], 'x') << "wrote past size for " << list;
  return {result, std::string(out.data(), strnlen(out.data(), size)),
          std::string(out.data(), size)};
}

TEST(NvPairListGetName, WalksByUnescapedCommasAndStopsAtSeparators) {
  struct Case {
    const char *list;
    int32_t index;
    unsigned size;
    uint32_t result;
    const char *name;
  };
  const Case cases[] = {
      {"", 0, 8, kNoName, ""},
      {"", 1, 8, 2, ""},
      {"a=1,b=2", 0, 8, 0, "a"},
      {"a=1,b=2", 1, 8, 0, "b"},
      {"a=1,b=2", 2, 8, 2, ""},
      {"a=1,b=2,", 2, 8, kNoName, ""},
      {",a=1", 0, 8, 0, ""},
      {"=1", 0, 8, 0, ""},
      {"a,b", -1, 8, 2, ""},
      {"abc", 0, 4, 0, "abc"},
      {"abcd", 0, 4, 3, "abc"},
      {"abc", 0, 0, 3, ""},
      {" a =1", 0, 8, 0, " a "},
      // Escapes: skipped when counting, taken literally when copying, and needing room.
      {"a\\,b=1,c=2", 0, 8, 0, "a,b"},
      {"a\\,b=1,c=2", 1, 8, 0, "c"},
      {"a\\=b\\\\", 0, 8, 0, "a=b\\"},
      {"a,\\,b", 1, 8, 0, ",b"},
      {"a,\\,b", 2, 8, 2, ""},
      {"ab\\c", 0, 3, 3, "ab"},
      {"a\\bc", 0, 3, 3, "ab"},
      // A trailing backslash escapes nothing: the walk and the name end at the terminator.
      {"a\\", 0, 8, 0, "a"},
      {"\\", 0, 8, kNoName, ""},
      {"x,\\", 1, 8, kNoName, ""},
  };
  for (const auto &c : cases) {
    const Read r = read(NvPairListGetName, c.list, c.index, c.size);
    EXPECT_EQ(r.result, c.result) << c.list << " #" << c.index;
    EXPECT_EQ(r.text, c.name) << c.list << " #" << c.index;
    EXPECT_EQ(r.bytes.find_first_not_of('\0', r.text.size()), std::string::npos) << c.list;
  }
}

TEST(NvPairListGetValue, FollowsTheNameSkipCopyWalkAndTheLongReaderResolvesItsValue) {
  struct Case {
    const char *list;
    const char *name;
    unsigned size;
    uint32_t result;
    const char *value;
    const char *resolved = nullptr;  // from NvPairListGetLongValue, when not `value`
  };
  const Case cases[] = {
      {"a=1,b=2", "b", 8, 0, "2"},
      {"a=1,b=2", "c", 8, 4, ""},
      {"", "a", 8, 4, ""},
      {"a", "a", 8, 4, ""},
      {"a,b=2", "b", 8, 1, ""},
      {",a=1", "a", 8, 1, ""},
      {"a=", "a", 8, 0, ""},
      {"a==1", "a", 8, 1, ""},
      {"a=1=2", "a", 8, 1, "1"},
      {"x=1=2,a=3", "a", 8, 1, ""},
      {"a=1,,b=2", "b", 8, 1, ""},
      {"a=123,b=1", "a", 4, 0, "123"},
      {"a=1234", "a", 4, 3, "123"},
      {"a=", "a", 1, 0, ""},
      {"a=1", "a", 1, 3, ""},
      {"a=1", "a", 0, 3, ""},
      // The pair's name need only be a prefix of the searched name; the first match wins.
      {"ab=1,abc=2", "abc", 8, 0, "1"},
      {"abc=1", "ab", 8, 4, ""},
      {"=1,a=2", "a", 8, 0, "1"},
      {"A=1", "a", 8, 4, ""},
      // Blanks and backslashes are ordinary characters; nothing is trimmed.
      {" a=1", "a", 8, 4, ""},
      {"a= 1 ", "a", 8, 0, " 1 "},
      {"a\\=1", "a\\", 8, 0, "1"},
      {"a\\,b=1", "b", 8, 1, ""},
      // Escapes: resolved by the long reader only, after the walk, whatever its result; the limit
      // binds the raw value, and names are compared raw.
      {"a=#EQU#x#CMT#y", "a", 16, 0, "#EQU#x#CMT#y", "=x,y"},
      {"a=#EQU#", "a", 5, 3, "#EQU"},
      {"a=#EQU#", "a", 6, 0, "#EQU#", "="},
      {"a=#CMT#=", "a", 16, 1, "#CMT#", ","},
      {"#EQU#=1", "=", 8, 4, ""},
  };
  for (const auto &c : cases) {
    const Read raw = read(NvPairListGetValue, c.list, c.name, c.size);
    EXPECT_EQ(raw.result, c.result) << c.list << " / " << c.name;
    EXPECT_EQ(raw.text, c.value) << c.list << " / " << c.name;
    EXPECT_EQ(raw.bytes.find_first_not_of('\0', raw.text.size()), std::string::npos) << c.list;
    const Read resolved = read(NvPairListGetLongValue, c.list, c.name, c.size);
    EXPECT_EQ(resolved.result, c.result) << c.list << " / " << c.name;
    EXPECT_EQ(resolved.text, c.resolved != nullptr ? c.resolved : c.value) << c.list;
  }
  EXPECT_EQ(CaptureSink::instance().reports().size(), 0U);
}

TEST(NvPairListReaders, NullArgumentsGiveOneAndTouchNothing) {
  char out[4] = "abc";
  EXPECT_EQ(NvPairListGetName(nullptr, 0, sizeof out, out), 1U);
  EXPECT_EQ(NvPairListGetName("a", 0, sizeof out, nullptr), 1U);
  for (auto *reader : {NvPairListGetValue, NvPairListGetLongValue}) {
    EXPECT_EQ(reader(nullptr, "a", sizeof out, out), 1U);
    EXPECT_EQ(reader("a=1", nullptr, sizeof out, out), 1U);
    EXPECT_EQ(reader("a=1", "a", sizeof out, nullptr), 1U);
  }
  EXPECT_STREQ(out, "abc");
}

TEST(NvPairEscapeSep, EscapesSeparatorsIntoItsOneZeroedBuffer) {
  char *first = NvPairEscapeSep(std::string(1199, 'x').c_str());
  EXPECT_EQ(std::strlen(first), 1199U);
  EXPECT_STREQ(NvPairEscapeSep("a=b,c#d"), "a#EQU#b#CMT#c#d");
  EXPECT_EQ(NvPairEscapeSep(""), first);
  EXPECT_EQ(std::string(first, 1200), std::string(1200, '\0'));
  EXPECT_STREQ(NvPairEscapeSep("#EQU#"), "#EQU#");
  EXPECT_STREQ(NvPairEscapeSep(nullptr), "");
}

TEST(NvPairEscapeSep, CutsOverlongTextBeforeThePieceThatDoesNotFit) {
  const std::string x1194(1194, 'x');
  EXPECT_EQ(std::string(NvPairEscapeSep((x1194 + "=").c_str())), x1194 + "#EQU#");
  EXPECT_EQ(std::string(NvPairEscapeSep((x1194 + "x,").c_str())), x1194 + "x");
  EXPECT_EQ(std::string(NvPairEscapeSep(std::string(5000, 'y').c_str())), std::string(1199, 'y'));
  const std::string commas(300, ',');
  std::string expected;
  for (int i = 0; i < 239; ++i) expected += "#CMT#";
  EXPECT_EQ(std::string(NvPairEscapeSep(commas.c_str())), expected);
}

// The text after an in-place rewrite, which gives the text back.
template <char *(*Rewrite)(char *)>
std::string rewritten(std::string text) {
  EXPECT_EQ(Rewrite(text.data()), text.data());
  return text.c_str();
}
constexpr auto unescaped = rewritten<NvPairUnescapeSep>;
constexpr auto cleaned = rewritten<NvPairCleanValue>;

TEST(NvPairUnescapeSep, ResolvesInOnePassWithoutRescanning) {
  EXPECT_EQ(unescaped("##EQU#"), "#=");
  EXPECT_EQ(unescaped("#EQU"), "#EQU");
  EXPECT_EQ(unescaped("#EQU#EQU#"), "=EQU#");
  EXPECT_EQ(unescaped("#CMT##EQU#a#"), ",=a#");
  EXPECT_EQ(unescaped("#equ##Cmt#"), "#equ##Cmt#");
  EXPECT_EQ(unescaped(NvPairEscapeSep("#EQU#")), "=");
  EXPECT_EQ(unescaped(NvPairEscapeSep("a=b,c")), "a=b,c");
  // Beyond 1199 characters the text is still resolved whole.
  std::string many;
  for (int i = 0; i < 2000; ++i) many += "#CMT#";
  EXPECT_EQ(unescaped(many), std::string(2000, ','));
  EXPECT_EQ(NvPairUnescapeSep(nullptr), nullptr);
}

TEST(NvPairCleanValue, EndsLinesWithBareLineFeedsAndTrimsTheirEnds) {
  EXPECT_EQ(cleaned("a=1 \r\nb=2\t\r\r\n  \nc=3  "), "a=1\nb=2\n\n\nc=3");
  EXPECT_EQ(cleaned("   "), "");
  EXPECT_EQ(cleaned("\r"), "\n");
  EXPECT_EQ(cleaned("x\ry"), "x\ny");
  EXPECT_EQ(cleaned("a\r\r"), "a\n\n");
  EXPECT_EQ(cleaned("  x \x01\x1f\n"), "  x\n");
  EXPECT_EQ(cleaned("x\x7f\x80 \xff \n"), "x\x7f\x80 \xff\n");
  EXPECT_EQ(cleaned("a\n \t"), "a\n");
  EXPECT_EQ(cleaned(""), "");
  EXPECT_EQ(NvPairCleanValue(nullptr), nullptr);
}

TEST(NvPairCleanValue, CleansLongLinesAndTextsWhole) {
  const std::string line(400, 'l');
  std::string text;
  std::string expected;
  for (int i = 0; i < 10; ++i) {
    text += line + " \t\r\n";
    expected += line + "\n";
  }
  EXPECT_EQ(cleaned(text + line + "  "), expected + line);
}

}  // namespace
}  // namespace tessera::test
