// Character-domain predicates: null handling, the "0x" prefix rule and exact 0/1 results.
#include <gtest/gtest.h>

#include "strlib_test.h"
#include "tessera/strlib.h"

namespace tessera::test {
namespace {

TEST(Predicates, EveryPredicateOnEveryInputFollowsThePrefixRule) {
  // Each predicate with the assertions it makes for null.
  const std::pair<int32_t (*)(const char *), std::size_t> predicates[] = {
      {StrIsEmpty, 1},      {StrIsBoolean, 2},      {StrIsHexValue, 0},
      {StrIsOctalValue, 0}, {StrIsNumeric, 0},      {StrIsNumericDot, 0},
      {StrIsAlphabetic, 0}, {StrIsAlphanumeric, 0}, {StrIsAlphanumericUnderScore, 0}};
  // One digit per predicate above: Empty Boolean Hex Octal Numeric NumericDot Alphabetic
  // Alphanumeric AlphanumericUnderScore.
  const std::pair<const char *, const char *> cases[] = {
      // clang-format off
      {nullptr, "000000000"}, {"", "100000000"}, {"0x", "000111111"}, {"0x1F", "001000011"},
      {"0x0x1F", "001000011"}, {"0X12", "000000011"}, {"0x17", "001111011"}, {"0x18", "001011011"},
      {"017", "000111011"}, {"-0x12", "000011000"}, {"-", "000000000"}, {"--1", "000000000"},
      {"-42", "000011000"}, {"4-2", "000000000"}, {".", "000001000"}, {"1..2", "000001000"},
      {"0xabc", "001000111"}, {"a0x", "000000011"}, {"a_1", "000000001"}, {"1", "010011011"},
      {"0", "010111011"}, {"true", "000000111"}, {"Enabled", "000000111"},
      {"\xC3\xA9", "000000000"},
      // clang-format on
  };
  for (const auto &[s, expected] : cases) {
    for (std::size_t i = 0; i < std::size(predicates); ++i) {
      const auto [fn, on_null] = predicates[i];
      const std::size_t asserted = s == nullptr ? on_null : 0;
      EXPECT_EQ(outcome(fn, s), Outcome(expected[i] - '0', asserted, 0, asserted))
          << "predicate " << i << " of " << shown(s);
    }
  }
}

TEST(Predicates, TwoTextTestsAssertOnNullOnlyWhereTheyCompareOrSearch) {
  const auto equal = StrEqual, no_case = StrEqualNoCase, find = StrFind,
             domain = StrIsInCharacterDomain, absent = StrCharactersExist;
  // Function, texts, result, assertions.
  const std::tuple<int32_t (*)(const char *, const char *), const char *, const char *, int32_t,
                   std::size_t>
      cases[] = {
          // clang-format off
      {equal, "", "", 1, 0}, {equal, "ab", "aB", 0, 0}, {equal, nullptr, nullptr, 0, 1},
      {equal, "a", nullptr, 0, 1}, {no_case, "ab", "aB", 1, 0}, {no_case, "ab", "abc", 0, 0},
      {no_case, nullptr, "a", 0, 1}, {find, "abc", "bc", 1, 0}, {find, "abc", "cb", 0, 0},
      {find, "", "", 1, 0}, {find, nullptr, "a", 0, 1}, {domain, "0x", "", 1, 0},
      {domain, "0x", nullptr, 0, 0}, {domain, nullptr, "a", 0, 0}, {domain, "", "a", 0, 0},
      {domain, "a", "", 0, 0}, {domain, "0xab", "ab", 1, 0}, {domain, "0x0xab", "ab", 0, 0},
      {domain, "\xFF\x80", "\x80\xFF", 1, 0}, {absent, "abc", "xyz", 1, 0},
      {absent, "abc", "b", 0, 0}, {absent, "0xabc", "0", 1, 0}, {absent, "0x", "x", 1, 0},
      {absent, "abc", "", 1, 0}, {absent, "", "a", 0, 0}, {absent, "a", nullptr, 0, 0},
          // clang-format on
      };
  for (const auto &[fn, a, b, expected, asserted] : cases) {
    EXPECT_EQ(outcome(fn, a, b), Outcome(expected, asserted, 0, asserted))
        << shown(a) << ", " << shown(b);
  }
  EXPECT_EQ(outcome(StrLength, nullptr), Outcome(0, 0, 0, 0));
  EXPECT_EQ(StrLength("0x\xFF"), 3U);
}

}  // namespace
}  // namespace tessera::test
