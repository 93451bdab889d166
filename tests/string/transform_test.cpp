// In-place transforms, the list clean-up, the copying filters and the display time.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "strlib_test.h"
#include "tessera/strlib.h"

namespace tessera::test {
namespace {

// Runs an in-place transform on a copy of `text`: its result and the text after it.
template <class Transform>
std::pair<int32_t, std::string> in_place(const std::string &text, Transform transform) {
  std::vector<char> buffer(text.begin(), text.end());
  buffer.push_back('\0');
  const int32_t result = transform(buffer.data());
  return {result, std::string(buffer.data())};
}

TEST(Transforms, CaseAndTrimsWorkInPlaceAndAssertOnNull) {
  using Transform = int32_t (*)(char *);
  const Transform lower = StrToLower, upper = StrToUpper, left = StrTrimLeft, right = StrTrimRight;
  const std::tuple<Transform, std::string, std::string> cases[] = {
      // clang-format off
      {lower, "AbZ@[`{\xC3", "abz@[`{\xC3"}, {upper, "aBz@[`{\xE3", "ABZ@[`{\xE3"},
      {left, " \t\r\n\x7F\xC3x y ", "x y "}, {left, "", ""}, {left, " \t ", ""}, {left, "x", "x"},
      {right, " x y \t\n\xC3", " x y"}, {right, "", ""}, {right, "\x01 \x7F", ""},
      {right, "!~", "!~"},
      // clang-format on
  };
  for (const auto &[fn, text, expected] : cases) {
    EXPECT_EQ(in_place(text, fn), std::pair(1, expected)) << "'" << text << "'";
  }
  for (const Transform fn : {lower, upper, left, right}) {
    EXPECT_EQ(outcome(fn, nullptr), Outcome(0, 1, 0, 1));
  }
}

TEST(Transforms, Trim2EndKeepsTheFirstCharacter) {
  const std::tuple<std::string, const char *, std::string, int32_t> cases[] = {
      // clang-format off
      {"  ab  c  ", " ", "ab  c", 1}, {"ab", " ", "ab", 0}, {"ab ", "", "ab ", 0},
      {"xxx", "x", "x", 1}, {"x", "x", "x", 0}, {"", "x", "", 0}, {"xyaxy", "yx", "a", 1},
      {"xa", "x", "a", 1}, {"ax", "x", "a", 1}, {"ab", nullptr, "ab", 0},
      // clang-format on
  };
  for (const auto &[text, chars, expected, result] : cases) {
    const char *set = chars;
    EXPECT_EQ(in_place(text, [set](char *s) { return StrTrim2End(s, set); }),
              std::pair(result, expected))
        << "'" << text << "'";
  }
  EXPECT_EQ(StrTrim2End(nullptr, " "), 0);
}

TEST(Transforms, SeparatorCleanNormalisesCommaLists) {
  const std::tuple<std::string, std::string, int32_t> cases[] = {
      // clang-format off
      {"a , b ,c", "a,b,c", 1}, {",a,,b,", "a,b", 1}, {"a , , b", "a,b", 1}, {" a , b ", " a,b", 1},
      {" a b ", " a b ", 0}, {"a, ", "a", 1}, {"a,b", "a,b", 0}, {",", ",", 0}, {",,", ",", 1},
      {", ", "", 1}, {" , ", " ", 1}, {"", "", 0}, {"a,,,,b , ,c", "a,b,c", 1}, {"a ,  ", "a ", 1},
      {" ,a", "a", 1}, {"a b , c d", "a b,c d", 1},
      // clang-format on
  };
  for (const auto &[text, expected, result] : cases) {
    EXPECT_EQ(in_place(text, StrSeparatorClean), std::pair(result, expected)) << "'" << text << "'";
  }
  EXPECT_EQ(StrSeparatorClean(nullptr), 0);
  EXPECT_EQ(CaptureSink::instance().reports().size(), 0U);
}

TEST(Transforms, CopyingFiltersDoubleWhatTheyEscape) {
  const std::tuple<void (*)(char *, const char *), std::string, std::string> cases[] = {
      // clang-format off
      {StrAddLineFeed, "", ""}, {StrAddLineFeed, "a\nb", "a\r\nb"},
      {StrAddLineFeed, "a\r\n", "a\r\r\n"}, {StrAddLineFeed, "\n\n", "\r\n\r\n"},
      {StrEscapePercent, "", ""}, {StrEscapePercent, "100%", "100%%"},
      {StrEscapePercent, "%%", "%%%%"},
      // clang-format on
  };
  for (const auto &[fn, src, expected] : cases) {
    std::vector<char> dst(2 * src.size() + 1, 'Z');  // the worst case the caller provides
    fn(dst.data(), src.c_str());
    EXPECT_EQ(std::string(dst.data()), expected);
  }
}

TEST(Transforms, DisplayTimeReportsEachFailureAndNeverWritesPastTheBuffer) {
  const std::string small = "destination buffer too small\n";
  const std::string format = "time string is in unexpected format. Should be YYYYMMDDHHMMSS. [";
  using Messages = std::vector<std::string>;
  const std::tuple<const char *, uint32_t, int32_t, std::string, Messages> cases[] = {
      // clang-format off
      {"20240131235959", 20, 1, "01/31/2024 23:59:59", {}},
      {"abcdefghijklmn", 32, 1, "ef/gh/abcd ij:kl:mn", {}},
      {"2024013123595", 20, 0, "", {format + "2024013123595]\n"}},
      {"202401312359590", 20, 0, "", {format + "202401312359590]\n"}},
      // A buffer below 20 bytes stays empty: a cut time would name another moment.
      {"20240131235959", 19, 0, "", {small}}, {"20240131235959", 0, 0, "########", {small}},
      {"2024", 5, 0, "", {small, format + "2024]\n"}},
      {nullptr, 20, 0, std::string(28, '#'), {"StrToDisplayTime: Invalid parameters\n"}},
      // clang-format on
  };
  for (const auto &[time, size, result, expected, messages] : cases) {
    std::string buffer(size + 8, '#');  // '#' marks the bytes behind `size`
    CaptureSink::instance().reset();
    EXPECT_EQ(StrToDisplayTime(time, buffer.data(), size), result) << shown(time);
    EXPECT_EQ(std::string(buffer.c_str()), expected) << shown(time);
    EXPECT_EQ(buffer.substr(size), std::string(8, '#'));
    std::vector<std::string> sent;
    for (const auto &report : CaptureSink::instance().reports()) {
      sent.push_back(report.level == 2 ? report.message : "wrong level");
    }
    EXPECT_EQ(sent, messages) << shown(time);
  }
  EXPECT_EQ(StrToDisplayTime("1", nullptr, 20), 0);
}

}  // namespace
}  // namespace tessera::test
