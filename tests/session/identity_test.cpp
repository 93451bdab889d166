// Session type keywords, address texts and the session id from the environment.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tessera/session.h"

namespace {

TEST(SessionTypes, KeywordsGiveCodesWholeAndCaseSensitive) {
  const std::pair<const char *, uint32_t> cases[] = {
      {"Serial", 1}, {"Telnet", 2},        {"SSH", 3},    {"webgui", 4},  {"tolvex", 5},
      {"Local", 6},  {"SM-SP", 7},         {"CLP", 8},    {"vMedia", 10}, {"vKVM", 11},
      {"SOL", 12},   {"redfish", 13},      {"SM-CLP", 0}, {"GUI", 0},     {"TOLVEX", 0},
      {"ssh", 0},    {"SERIAL", 0},        {"", 0},       {"SSH ", 0},    {" SSH", 0},
      {"SS", 0},     {"Serial-NoAuth", 0}, {nullptr, 0}};
  for (const auto &[keyword, code] : cases) {
    EXPECT_EQ(str2ssntype(keyword), code) << (keyword ? keyword : "(null)");
  }
  const char *labels[] = {"Unknown",       "Serial",          "Telnet", "SSH",    "GUI",
                          "TOLVEX",        "Local",           "SM-SP",  "SM-CLP", "Serial-NoAuth",
                          "Virtual Media", "Virtual Console", "SOL",    "REDFISH"};
  for (uint32_t code = 0; code < SSN_TYPE_COUNT; ++code) {
    EXPECT_STREQ(SsnTypeString[code], labels[code]);
  }
}

TEST(SessionAddress, TextsAndAddressesConvertWithTheFirstOctetLow) {
  char text[SSN_IP_TEXT_SIZE];
  for (uint32_t address : {0x0100007FU, 0x0100A8C0U, 0xFFFFFFFFU, 0x00000001U}) {
    EXPECT_EQ(ssn_atoip(ssn_iptostr(text, address)), address) << text;
  }
  EXPECT_STREQ(ssn_iptostr(text, 0x0100A8C0), "192.168.0.1");
  EXPECT_STREQ(ssn_iptostr(text, 0), "serial");
  EXPECT_EQ(ssn_iptostr(nullptr, 1), nullptr);
  // Numbers count by their low eight bits once saturated to 32 bits, as the controller reads
  // them; octets that no number fills are 0.
  // clang-format off
  const std::pair<const char *, uint32_t> cases[] = {
      {"300.1.1.1", 0x0101012C}, {"-1.0.0.1", 0x010000FF}, {"+5.6.7.8", 0x08070605},
      {"1.2.3.4junk", 0x04030201}, {" 1. 2.\t3.4", 0x04030201}, {"10.1", 0x0000010A},
      {"1 .2.3.4", 1}, {"1..2.3", 1}, {"", 0}, {"-", 0}, {"localhost", 0}, {"fe80::1", 0},
      {"2001:db8::1", 0xD1}, {"4294967596.0.0.1", 0x010000FF}, {"2147483948.0.0.1", 0x010000FF},
      {"-4294967596.0.0.1", 0x01000000}, {"123456789012345678901234567890.0.0.0", 0xFF},
      {nullptr, 0}};
  // clang-format on
  for (const auto &[input, address] : cases) {
    EXPECT_EQ(ssn_atoip(input), address) << (input ? input : "(null)");
  }
}

TEST(SessionIdentity, IdsFollowTheirVariablesAtEachCall) {
  const auto put = [](const char *name, const char *value) {
    value != nullptr ? setenv(name, value, 1) : unsetenv(name);
  };
  struct Case {
    const char *orb, *session;
    uint32_t sid, orbsid;
  };
  // clang-format off
  const Case cases[] = {
      {nullptr, nullptr, 0, 0}, {nullptr, "42", 42, 42}, {nullptr, "12abc", 12, 12},
      {nullptr, "abc", 0, 0}, {nullptr, "", 0, 0}, {"", "7", 7, 0}, {"9", "7", 7, 9},
      {"9", nullptr, 0, 9}, {"x", "7", 7, 0}, {nullptr, " 42", 42, 42}, {nullptr, "+8", 8, 8},
      {nullptr, "-5", 4294967291U, 4294967291U},
      {nullptr, "4294967295", 4294967295U, 4294967295U},
      {nullptr, "4294967296", 4294967295U, 4294967295U}};
  // clang-format on
  for (const auto &c : cases) {
    put("ORB_SESSION_ID", c.orb);
    put("SESSION_ID", c.session);
    const std::string row = std::string(c.orb ? c.orb : "-") + " " + (c.session ? c.session : "-");
    EXPECT_EQ(ssn_get_sid(), c.sid) << row;
    EXPECT_EQ(ssn_get_orbsid(), c.orbsid) << row;
  }
  put("ORB_SESSION_ID", nullptr);
  put("SESSION_ID", nullptr);
}

}  // namespace
