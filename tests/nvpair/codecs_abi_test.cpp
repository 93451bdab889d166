// The text codecs as a tool reaches them: through libtessera.so.1's C interface.
#include <gtest/gtest.h>

#include <cstring>

#include "capture_sink.h"
#include "tessera/tessera.h"

namespace {

TEST(CodecsSharedLibrary, ToolReadsAndBuildsAList) {
  const char *list = "user=root,note=a#EQU#b#CMT#c,flag";
  char text[32];
  EXPECT_EQ(NvPairListGetName(list, 1, sizeof text, text), NVPAIR_OK);
  EXPECT_STREQ(text, "note");
  EXPECT_EQ(NvPairListGetLongValue(list, "note", sizeof text, text), NVPAIR_OK);
  EXPECT_STREQ(text, "a=b,c");
  EXPECT_EQ(NvPairListGetValue(list, "flag", sizeof text, text), NVPAIR_NOT_FOUND);
  EXPECT_STREQ(NvPairEscapeSep("a=b,c"), "a#EQU#b#CMT#c");
  char value[] = "line one  \r\nline two\t";
  EXPECT_STREQ(NvPairCleanValue(value), "line one\nline two");
}

TEST(CodecsSharedLibrary, ToolCutsATagAndCodesEntities) {
  char value[16];
  EXPECT_EQ(XmlParseTag("name", "<name>a &amp; b</name>", value, sizeof value), 1);
  char decoded[16];
  EXPECT_EQ(HttpDecodeSpecialCharacters(value, decoded, sizeof decoded - 1), 1);
  EXPECT_STREQ(decoded, "a & b");
  char encoded[16];
  EXPECT_EQ(HttpEncodeSpecialCharacters(decoded, encoded, sizeof encoded), 1);
  EXPECT_STREQ(encoded, value);
  EXPECT_EQ(XmlParseTag("id", "<name/>", value, sizeof value), 0);
  EXPECT_EQ(tessera::test::CaptureSink::instance().reports().size(), 1U);
}

TEST(CodecsSharedLibrary, ToolParsesAnObjectPathIntoItsOwnBuffer) {
  union {
    ObjectPath record;
    char bytes[256];
  } buffer;
  ASSERT_EQ(ObjectPathInit(&buffer.record, sizeof buffer, "//mc/root/cimv2:CIM_Port.ID=\"eth0\""),
            0);
  EXPECT_STREQ(buffer.record.host, "//mc");
  EXPECT_STREQ(buffer.record.className, "CIM_Port");
  EXPECT_EQ(buffer.record.pairCount, 1U);
  EXPECT_STREQ(ObjectPathGetPropertyValue(&buffer.record, "ID"), "\"eth0\"");
  EXPECT_EQ(ObjectPathInit(&buffer.record, static_cast<int32_t>(sizeof(ObjectPath)), "C.K=1"), 504);
}

}  // namespace
