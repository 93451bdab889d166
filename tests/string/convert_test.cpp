// Typed validation and conversion. Numbers are parsed 32 bits wide: these tables must pass alike
// on x86-64 and on armhf, where the parser is also compared with the C library's own.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "string/number.h"
#include "strlib_test.h"
#include "tessera/strlib.h"

namespace tessera::test {
namespace {

TEST(ValidateType, IntegerCodesReadBaseZeroWithinTenCharacters) {
  const std::pair<int32_t (*)(const char *), uint32_t> wrappers[] = {
      {StrIsUINT8, 2}, {StrIsINT8, 3},   {StrIsUINT16, 4},
      {StrIsINT16, 5}, {StrIsUINT32, 6}, {StrIsINT32, 7}};
  // The results of the wrappers above, in their order.
  const std::pair<const char *, const char *> cases[] = {
      // clang-format off
      {"255", "101111"}, {"256", "001111"}, {"0xFF", "101111"}, {"0x100", "001111"},
      {"-1", "010111"}, {"-128", "010111"}, {"127", "111111"}, {"-129", "000111"},
      {"128", "101111"}, {"0400", "001111"}, {"0377", "101111"}, {"09", "111111"}, {"0x", "111111"},
      {"-", "000000"}, {"", "000000"}, {nullptr, "000000"}, {"-0x10", "010111"}, {" 12", "000000"},
      {"+5", "000000"}, {"65535", "001011"}, {"65536", "000011"}, {"-32768", "000111"},
      {"-32769", "000011"}, {"0x0x1F", "111111"}, {"4294967295", "010111"},
      {"9999999999", "010111"}, {"0xFFFFFFFF", "010111"}, {"0X1F", "000000"}, {"1.5", "000000"},
      // Over 10 characters: refused with the too-long report.
      {"-2147483648", "000000"}, {"12345678901", "000000"}, {"0x1FFFFFFFF", "000000"},
      // clang-format on
  };
  for (const auto &[s, expected] : cases) {
    const std::size_t too_long = s != nullptr && std::strlen(s) > 10 ? 1 : 0;
    for (const auto &[wrapper, code] : wrappers) {
      const int32_t valid = expected[code - 2] - '0';
      EXPECT_EQ(outcome(StrValidateType, s, code), Outcome(valid, 0, too_long, too_long))
          << shown(s) << " code " << code;
      EXPECT_EQ(wrapper(s), valid) << shown(s) << " code " << code;
    }
  }
}

TEST(ValidateType, OtherCodesAndTheWrappers) {
  const std::tuple<const char *, uint32_t, int32_t, std::size_t> cases[] = {
      // ..., assertions
      // clang-format off
      {nullptr, 0, 1, 0}, {"x", 0, 1, 0}, {"1", 1, 0, 0}, {nullptr, 1, 0, 0}, {"1", 10, 1, 0},
      {"0", 10, 1, 0}, {"Enabled", 10, 0, 0}, {nullptr, 10, 0, 2}, {"1", 8, 0, 0}, {"1", 9, 0, 0},
      {"12345678901", 8, 0, 0}, {"1", 11, 0, 0}, {"1", 13, 0, 0}, {"1", 15, 0, 0},
      {"1", 0xFFFFFFFF, 0, 0}, {"1.2.3.4", 14, 1, 0}, {"1.2.3", 14, 0, 0}, {"999.1.1.1", 14, 1, 0},
      // clang-format on
  };
  for (const auto &[s, code, expected, asserted] : cases) {
    EXPECT_EQ(outcome(StrValidateType, s, code), Outcome(expected, asserted, 0, asserted))
        << shown(s) << " code " << code;
  }
  EXPECT_EQ(StrIsUINT64("1") + StrIsINT64("1") + StrIsUINT64("0x10") + StrIsINT64("-1"), 0);
}

TEST(Conversions, ConvertWhatFailsTheirCheckAfterOneAssertion) {
  using Convert = int64_t (*)(const char *);
  const Convert u8 = [](const char *s) -> int64_t { return StrToUINT8(s); };
  const Convert u16 = [](const char *s) -> int64_t { return StrToUINT16(s); };
  const Convert u32 = [](const char *s) -> int64_t { return StrToUINT32(s); };
  const Convert u64 = [](const char *s) { return static_cast<int64_t>(StrToUINT64(s)); };
  const Convert i8 = [](const char *s) -> int64_t { return StrToINT8(s); };
  const Convert i16 = [](const char *s) -> int64_t { return StrToINT16(s); };
  const Convert i32 = [](const char *s) -> int64_t { return StrToINT32(s); };
  const Convert i64 = StrToINT64;
  const Convert boolean = [](const char *s) -> int64_t { return StrToBoolean(s); };
  const std::tuple<Convert, const char *, int64_t, std::size_t> cases[] = {
      // ..., assertions
      // clang-format off
      {u8, "300", 44, 1}, {u8, "abc", 0, 1}, {u8, "0377", 121, 0}, {u8, "0xFF", 255, 0},
      {u8, nullptr, 0, 1}, {u8, "12345678901", 255, 1}, {u16, "70000", 4464, 1},
      {u16, "0xFFFF", 65535, 0}, {u32, "-1", 4294967295, 0}, {u32, " 12", 12, 1}, {u32, "+5", 5, 1},
      {u32, "0x", 0, 0}, {u32, "010", 10, 0}, {u32, "0xFFFFFFFF", 4294967295, 0},
      {u64, "5000000000", 4294967295, 1}, {u64, "0x10", 16, 1}, {u64, "-1", 4294967295, 1},
      {u64, nullptr, 0, 1}, {i8, "200", -56, 1}, {i8, "0xFF", -1, 1}, {i8, "-0x10", 0, 0},
      {i8, "-128", -128, 0}, {i16, "40000", -25536, 1}, {i16, "-32768", -32768, 0},
      {i32, "0xFFFFFFFF", -1, 0}, {i32, "4294967295", 2147483647, 0},
      {i32, "-2147483648", INT32_MIN, 1}, {i32, "-99999999999", INT32_MIN, 1}, {i64, "-5", -5, 1},
      {i64, "0x10", 0, 1}, {i64, "9999999999", INT32_MAX, 1}, {boolean, "ENABLED", 1, 1},
      {boolean, "disabled", 0, 1}, {boolean, "2", 1, 1}, {boolean, "1", 1, 0}, {boolean, "0", 0, 0},
      {boolean, "", 0, 1}, {boolean, nullptr, 0, 1}, {boolean, "abc", 0, 1}, {boolean, "-7", 1, 1},
      // clang-format on
  };
  for (const auto &[fn, s, expected, asserted] : cases) {
    // A text over 10 characters fails its check with the too-long report before the assertion.
    const std::size_t too_long =
        fn != boolean && fn != u64 && fn != i64 && s != nullptr && std::strlen(s) > 10;
    EXPECT_EQ(outcome(fn, s), Outcome(expected, asserted, too_long, asserted + too_long))
        << shown(s);
  }
}

// The 32-bit readings of strtoul and strtol; where long has 32 bits, the C library's too.
TEST(NumberParsing, SaturatesAndWrapsAsA32BitLongDoes) {
  const std::tuple<const char *, unsigned, uint32_t, int32_t> cases[] = {
      // text, base, results
      // clang-format off
      {"4294967295", 10, 4294967295U, INT32_MAX}, {"4294967296", 10, 4294967295U, INT32_MAX},
      {"-1", 10, 4294967295U, -1}, {"-4294967295", 10, 1, INT32_MIN},
      {"-4294967296", 10, 4294967295U, INT32_MIN}, {"2147483647", 10, 2147483647U, INT32_MAX},
      {"2147483648", 10, 2147483648U, INT32_MAX}, {"-2147483648", 10, 2147483648U, INT32_MIN},
      {"-2147483649", 10, 2147483647U, INT32_MIN},
      {"99999999999999999999", 10, 4294967295U, INT32_MAX}, {"0x1F", 0, 31, 31},
      {"0x1F", 16, 31, 31}, {"1F", 16, 31, 31}, {"0x1F", 10, 0, 0}, {"017", 0, 15, 15},
      {"09", 0, 0, 0}, {"0x", 0, 0, 0}, {"0xg", 16, 0, 0}, {" \t\n+12z", 10, 12, 12},
      {"- 1", 10, 0, 0}, {"-0x10", 0, 4294967280U, -16}, {"0XfFfFfFfF", 16, 4294967295U, INT32_MAX},
      {"", 10, 0, 0}, {"z", 0, 0, 0},
      // clang-format on
  };
  constexpr bool kLong32 = sizeof(long) == 4;  // NOLINT(google-runtime-int): the C library's long
  for (const auto &[s, base, as_unsigned, as_signed] : cases) {
    EXPECT_EQ(strlib::to_unsigned32(s, base), as_unsigned) << s << " base " << base;
    EXPECT_EQ(strlib::to_signed32(s, base), as_signed) << s << " base " << base;
    if (kLong32) {
      EXPECT_EQ(std::strtoul(s, nullptr, static_cast<int>(base)), as_unsigned) << s;
      EXPECT_EQ(std::strtol(s, nullptr, static_cast<int>(base)), as_signed) << s;
    }
  }
  std::mt19937 rng(7);
  const std::string alphabet = "0123456789abcdefxX+- ";
  for (int i = 0; kLong32 && i < 20000; ++i) {
    std::string text(rng() % 14, ' ');
    for (char &c : text) c = alphabet[rng() % alphabet.size()];
    for (const unsigned base : {0U, 8U, 10U, 16U}) {
      const int b = static_cast<int>(base);
      ASSERT_EQ(strlib::to_unsigned32(text.c_str(), base), std::strtoul(text.c_str(), nullptr, b))
          << "'" << text << "' base " << base;
      ASSERT_EQ(strlib::to_signed32(text.c_str(), base), std::strtol(text.c_str(), nullptr, b))
          << "'" << text << "' base " << base;
    }
  }
}

}  // namespace
}  // namespace tessera::test
