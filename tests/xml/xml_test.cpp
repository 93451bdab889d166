// XmlParseTag: first start tag, first end tag behind it, raw value, and the reports of each miss.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "capture_sink.h"
#include "tessera/xml.h"

namespace tessera::test {
namespace {

constexpr const char kStartFormat[] = "DEBUG: %s [%d]: Failed to find XML start tag: %s : %s\n";
constexpr const char kEndFormat[] = "DEBUG: %s [%d]: Failed to find XML end tag: %s : %s\n";
constexpr const char kTooSmallFormat[] =
    "ERROR: %s [%d]: buffer for XML data is too small to hold XML data value!\n";

struct Parsed {
  int32_t result;
  std::string value;  // all `size` bytes, trailing NULs cut
};

Parsed parse(const std::string &tag, const std::string &xml, unsigned size = 16) {
  std::vector<char> value(size + 1, 'x');
  const int32_t result = XmlParseTag(tag.c_str(), xml.c_str(), value.data(), size);
  EXPECT_EQ(value[size], 'x') << "wrote past size";
  std::string bytes(value.data(), size);
  if (result == 1) {
    EXPECT_EQ(bytes.find_first_not_of('\0', bytes.find('\0')), std::string::npos) << "not zeroed";
  }
  return {result, bytes.substr(0, bytes.find('\0'))};
}

TEST(XmlParseTag, CutsTheRawTextBetweenTheFirstStartTagAndTheEndTagBehindIt) {
  struct Case {
    const char *tag;
    const char *xml;
    const char *value;
  };
  const Case cases[] = {
      {"a", "<a>1</a>", "1"},     {"a", "x<a>1</a>y<a>2</a>", "1"},
      {"a", "<a></a>", ""},       {"a", "<a><a>1</a></a>", "<a>1"},
      {"a", "</a><a>1</a>", "1"}, {"a", "<a>&lt; <b/></a>", "&lt; <b/>"},
      {"", "<>v</>", "v"},
  };
  for (const auto &c : cases) {
    const Parsed p = parse(c.tag, c.xml);
    EXPECT_EQ(p.result, 1) << c.xml;
    EXPECT_EQ(p.value, c.value) << c.xml;
  }
  EXPECT_TRUE(CaptureSink::instance().reports().empty());
}

TEST(XmlParseTag, ReportsAMissingTagAtLevel6AndLeavesTheValue) {
  const std::tuple<const char *, const char *, std::string> cases[] = {
      {"<A>1</A>", kStartFormat, "Failed to find XML start tag: <a> : <A>1</A>\n"},
      {"<a x=1>1</a>", kStartFormat, "Failed to find XML start tag: <a> : <a x=1>1</a>\n"},
      {"</a><a>1", kEndFormat, "Failed to find XML end tag: a : </a><a>1\n"},
  };
  for (const auto &[xml, format, message] : cases) {
    CaptureSink::instance().reset();
    const Parsed p = parse("a", xml);
    EXPECT_EQ(p.result, 0);
    EXPECT_EQ(p.value, std::string(16, 'x'));
    const auto reports = CaptureSink::instance().reports();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].format, format);
    EXPECT_EQ(reports[0].level, 6);
    EXPECT_EQ(reports[0].message, message);
  }
}

TEST(XmlParseTag, NeedsRoomForTheValueAndItsTerminator) {
  EXPECT_EQ(parse("a", "<a>abc</a>", 4).value, "abc");
  const Parsed p = parse("a", "<a>abcd</a>", 4);
  EXPECT_EQ(p.result, 0);
  EXPECT_EQ(p.value, "xxxx");
  EXPECT_EQ(CaptureSink::instance().count(kTooSmallFormat), 1U);
  EXPECT_EQ(CaptureSink::instance().reports()[0].level, 2);
}

TEST(XmlParseTag, RefusesNullArgumentsZeroSizeAndNamesOver253Characters) {
  char value[4] = "abc";
  EXPECT_EQ(XmlParseTag(nullptr, "<a>1</a>", value, 4), 0);
  EXPECT_EQ(XmlParseTag("a", nullptr, value, 4), 0);
  EXPECT_EQ(XmlParseTag("a", "<a>1</a>", nullptr, 4), 0);
  EXPECT_EQ(XmlParseTag("a", "<a>1</a>", value, 0), 0);
  const std::string long_name(254, 'n');
  EXPECT_EQ(XmlParseTag(long_name.c_str(), ("<" + long_name + ">1</" + long_name + ">").c_str(),
                        value, 4),
            0);
  EXPECT_STREQ(value, "abc");
  EXPECT_EQ(CaptureSink::instance().assertions(), 5U);
  EXPECT_EQ(CaptureSink::instance().reports().size(), 5U);
}

TEST(XmlParseTag, CutsTheTagsOfNamesOf252And253Characters) {
  const std::string n251(251, 'n');
  EXPECT_EQ(parse(n251, "<" + n251 + ">v</" + n251 + ">").value, "v");
  EXPECT_EQ(parse(n251, "<" + n251 + ">v</" + n251 + "x").result, 0);
  // 252: the end tag loses its '>'.
  const std::string n252(252, 'n');
  EXPECT_EQ(parse(n252, "<" + n252 + ">v</" + n252 + "x").value, "v");
  // 253: the start tag loses its '>', which opens the value; the end tag keeps 252 characters.
  const std::string n253(253, 'n');
  EXPECT_EQ(parse(n253, "<" + n253 + ">v</" + n253 + ">").value, ">v");
  EXPECT_EQ(parse(n253, "<" + n253 + "v</" + n252 + "x").value, "v");
  EXPECT_EQ(CaptureSink::instance().count(kEndFormat), 1U);  // the 251-character miss
  EXPECT_EQ(CaptureSink::instance().reports().size(), 1U);
}

}  // namespace
}  // namespace tessera::test
