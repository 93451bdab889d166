// The INI operations as a tool reaches them: through libtessera.so.1 and its C ABI.
#include <gtest/gtest.h>

#include <string>

#include "ini_helpers.h"

namespace tessera::test {
namespace {

TEST(InifileShared, ReadsEditsSavesAndReadsBack) {
  InifileDocument *document = nullptr;
  ASSERT_EQ(inifileOpen(ini_file("[s]\nk = v\n").c_str(), &document), 0);
  EXPECT_STREQ(inifileGetKeyValueByName(document, "s", "k"), "v");
  EXPECT_EQ(inifileSetKeyValueByName(document, "t", "n", "1"), 0);
  InifileSection *first = inifileGetSection(document, 0);
  EXPECT_EQ(inifileRemoveKey(first, inifileGetKey(first, 0)), 0);
  const std::string path = scratch().file("shared.ini");
  EXPECT_EQ(inifileSave(document, path.c_str()), 0);
  EXPECT_EQ(inifileClose(document), 0);
  EXPECT_EQ(read_file(path), "[s]\n\n[t]\nn=1\n");

  EXPECT_EQ(inifileClose(nullptr), 2);
}

}  // namespace
}  // namespace tessera::test
