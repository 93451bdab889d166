// The string library as a tool sees it: through libtessera.so.1's C ABI.
#include <gtest/gtest.h>

#include <cstdlib>

#include "capture_sink.h"
#include "tessera/tessera.h"

namespace {

TEST(SharedStrlib, ServesEachGroupThroughTheCAbi) {
  EXPECT_EQ(StrIsHexValue("0x0x1F"), 1);
  EXPECT_EQ(StrToINT32("0xFFFFFFFF"), -1);
  EXPECT_EQ(StrToUINT64("5000000000"), 4294967295U);  // asserts: no text is a 64-bit value
  EXPECT_EQ(StrIsValidEmailAddress("a@b.c"), 1);
  EXPECT_STREQ(StrVerifyAddr("::ffff:10.0.0.1"), "10.0.0.1");
  char list[] = "a , b ,c";
  EXPECT_EQ(StrSeparatorClean(list), 1);
  EXPECT_STREQ(list, "a,b,c");
  char when[20];
  EXPECT_EQ(StrToDisplayTime("20240131235959", when, sizeof when), 1);
  EXPECT_STREQ(when, "01/31/2024 23:59:59");
  char **argv = StrTokenize("ls -l 'my dir'");
  ASSERT_NE(argv, nullptr);
  EXPECT_STREQ(argv[2], "my dir");
  EXPECT_EQ(argv[3], nullptr);
  std::free(static_cast<void *>(argv));  // one free() for the whole vector
  EXPECT_EQ(StrEqual(nullptr, "a"), 0);
  EXPECT_EQ(tessera::test::CaptureSink::instance().assertions(), 2U);  // through the program's sink
}

}  // namespace
