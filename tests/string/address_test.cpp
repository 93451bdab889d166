// Address, host and mail checks, the dotted-address conversion and the mapped-address extraction.
#include <gtest/gtest.h>

#include <string>

#include "strlib_test.h"
#include "tessera/strlib.h"

namespace tessera::test {
namespace {

TEST(AddressChecks, DecideByTheirOwnRulesWithoutReports) {
  using Check = int32_t (*)(const char *);
  const Check ip = StrIsIpAddress, ipv4 = StrIsValidIPv4Address, name = StrIsDomainName,
              host = StrIsValidDomainName, mail = StrIsValidEmailAddress;
  const std::tuple<Check, const char *, int32_t> cases[] = {
      // clang-format off
      {ip, "1.2.3.4", 1}, {ip, "1.2.3", 0}, {ip, ".1.2.3", 0}, {ip, "1.2.3.", 0},
      {ip, "1.2.3.a", 0}, {ip, "", 0}, {ip, "999.999.999.999", 1}, {ip, "1...2", 1},
      {ip, "1.2.3.4.5", 0}, {ipv4, "0.0.0.0", 1}, {ipv4, "255.255.255.255", 1},
      {ipv4, "256.1.1.1", 0}, {ipv4, "1.2.3", 0}, {ipv4, "1.2.3.", 0}, {ipv4, "1..2.3", 0},
      {ipv4, "1.2.3.4.5", 0}, {ipv4, "1.2.3.4.", 0}, {ipv4, "0x1.2.3.4", 0}, {ipv4, "", 0},
      {ipv4, nullptr, 0}, {ipv4, "010.001.002.003", 1}, {ipv4, "4294967297.1.1.1", 0},
      {ipv4, "1.2.3.256", 0}, {name, "-a", 0}, {name, ".a", 0}, {name, "a_b", 0}, {name, "0x", 1},
      {name, "a", 1}, {name, "a-", 1}, {name, "a.", 1}, {name, "a..b", 1}, {name, "", 0},
      {name, nullptr, 0}, {name, "0x-", 1}, {host, "a.b", 1}, {host, "a.", 1}, {host, "1a.b", 1},
      {host, "a.1", 1}, {host, "a_b.c", 1}, {host, "ab", 0}, {host, "1.2", 0}, {host, "a..b", 0},
      {host, "-a.b", 0}, {host, "a b.c", 0}, {host, "a@b.c", 0}, {host, "", 0}, {host, nullptr, 0},
      {host, "a.b\x7F\xC3", 1}, {host, "a.b:", 0}, {mail, "a@b.c", 1}, {mail, ".a@b.c", 1},
      {mail, "a..b@c.d", 1}, {mail, "a/b@c.d", 1}, {mail, "\"a.b\"@c.d", 1}, {mail, "a", 0},
      {mail, "a@b", 0}, {mail, "@b.c", 0}, {mail, "a.@b.c", 0}, {mail, "a@.b", 0},
      {mail, "a@b.", 0}, {mail, "a@b..c", 0}, {mail, "a@b/c.d", 0}, {mail, "a@@b.c", 0},
      {mail, "a@b.c@d", 0}, {mail, "a b@c.d", 0}, {mail, "\"a b\"@c.d", 0}, {mail, "\"a@b.c", 0},
      {mail, "\"\"@b.c", 0}, {mail, "\"a@b\"@c.d", 0}, {mail, "a\"b\"@c.d", 0},
      {mail, "a@b\".c", 0}, {mail, "a;b@c.d", 0}, {mail, "a@b.c\x7F", 0},
      // clang-format on
  };
  for (const auto &[fn, s, expected] : cases) {
    EXPECT_EQ(outcome(fn, s), Outcome(expected, 0, 0, 0)) << shown(s);
  }
}

TEST(StrToIpAddress, StoresFieldsUntilTheFirstFailure) {
  // Text, size, result, the bytes stored.
  const std::tuple<const char *, uint32_t, int32_t, std::vector<uint8_t>> cases[] = {
      // clang-format off
      {"1.2.3.4", 4, 1, {1, 2, 3, 4}}, {"1.2.3.4", 16, 0, {}}, {"1.2.3.4", 0, 0, {}},
      {"a.b.c.d", 4, 1, {0, 0, 0, 0}}, {"1.2.3", 4, 0, {1, 2, 3}}, {"1..3.4", 4, 0, {1}},
      {"", 4, 0, {}}, {"300.-1.255.0", 4, 1, {44, 255, 255, 0}}, {"1.2.3.4.5", 4, 0, {1, 2, 3, 4}},
      {"1.2.3.4.", 4, 0, {1, 2, 3, 4}}, {" 7.08.009.1x", 4, 1, {7, 8, 9, 1}}, {nullptr, 4, 0, {}},
      // A field longer than its 3-character buffer ends the conversion like an empty one.
      {"1.2345.3.4", 4, 0, {1}}, {"0001.2.3.4", 4, 0, {}},
      // clang-format on
  };
  for (const auto &[s, size, expected, stored] : cases) {
    std::vector<uint8_t> out(5, 0xEE);  // the fifth byte stands for memory past `out`
    const std::size_t asserted = s == nullptr || size != 4 ? 1 : 0;
    EXPECT_EQ(outcome(StrToIpAddress, s, out.data(), size),
              Outcome(expected, asserted, 0, asserted))
        << shown(s);
    std::vector<uint8_t> expected_out = stored;
    expected_out.resize(out.size(), 0xEE);
    EXPECT_EQ(out, expected_out) << shown(s);
  }
  EXPECT_EQ(StrToIpAddress("1.2.3.4", nullptr, 4), 0);
  EXPECT_EQ(CaptureSink::instance().assertions(), 1U);
}

TEST(StrVerifyAddr, KeepsTheTailOfAMappedAddressInOneStaticBuffer) {
  const std::string longest(99, 'a');
  const std::pair<std::string, std::string> cases[] = {
      {"::ffff:10.0.0.1", "10.0.0.1"},
      {"10.0.0.1", "10.0.0.1"},
      {"fe80::1", "fe80::1"},
      {"", ""},
      {"a:b.c:", ""},
      {"1.2.3.4:8080", "8080"},
      {longest, longest},
      {"::" + longest + ".", ""},  // a tail of 100 characters doesn't fit: no address
      {longest + "b", ""},         // nor does a whole text of 100
  };
  const char *buffer = StrVerifyAddr("x");
  for (const auto &[text, expected] : cases) {
    EXPECT_EQ(StrVerifyAddr(text.c_str()), buffer);
    EXPECT_EQ(std::string(buffer), expected) << text;
  }
  EXPECT_EQ(CaptureSink::instance().reports().size(), 0U);
}

}  // namespace
}  // namespace tessera::test
