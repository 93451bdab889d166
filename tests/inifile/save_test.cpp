// Writing documents: the exact bytes of the normal form, and failures to open the file.
#include <gtest/gtest.h>

#include <string>

#include "ini_helpers.h"

namespace tessera::test {
namespace {

std::string saved(InifileDocument *document) {
  const std::string path = scratch().file("saved.ini");
  EXPECT_EQ(inifileSave(document, path.c_str()), 0);
  return read_file(path);
}

TEST(InifileSave, WritesTheNormalForm) {
  Document document(inifileCreate());
  EXPECT_EQ(saved(document.get()), "");
  InifileDocument *d = document.get();
  inifileAddNewSection(d, "");  // blank line at the start, keys never written
  inifileSetKeyValueByName(d, "", "hidden", "1");
  inifileSetKeyValueByName(d, "one", "k", "v");
  inifileSetKeyValueByName(d, "one", "", "no name");
  inifileSetKeyValueByName(d, "one", "empty", "");
  inifileSetKeyValueByName(d, "one", "raw", " a;b\nc=d ");
  inifileAddNewSection(d, "");
  inifileAddNewSection(d, "two");
  inifileSetKeyValueByHandle(inifileAddNewSection(d, "one"), "k", "again");
  inifileAddNewSection(d, "");
  EXPECT_EQ(saved(d), "\n[one]\nk=v\nempty=\nraw= a;b\nc=d \n\n\n[two]\n\n[one]\nk=again\n\n");
}

TEST(InifileSave, ReadAndSavedKeepsSectionsKeysAndValuesOnly) {
  Document document = parse(
      "; header\r\n[ net ]  ; comment\r\n  addr = 10.0.0.1\r\n\tmask\t=\t255.0.0.0\r\n\r\n"
      "[]\r\nlost=1\r\n[x]\r\n=no name\r\n\t#hash=dropped on reading back\r\nk=v w\r\n");
  const std::string bytes = saved(document.get());
  EXPECT_EQ(bytes,
            "[net]\naddr=10.0.0.1\nmask=255.0.0.0\n\n\n[x]\n#hash=dropped on reading back\n"
            "k=v w\n");
  Document again = parse(bytes);
  EXPECT_EQ(dump(again.get()), "[net]@1\naddr=10.0.0.1@2\nmask=255.0.0.0@3\n[x]@6\nk=v w@8\n");
  // Saving doesn't end the document, and an existing file is emptied first.
  inifileSetKeyValueByName(document.get(), "net", "addr", "1");
  EXPECT_EQ(saved(document.get()).substr(0, 17), "[net]\naddr=1\nmask");
}

TEST(InifileSave, AFileThatCannotBeWrittenGives11) {
  Document document(inifileCreate());
  EXPECT_EQ(inifileSave(document.get(), scratch().file("no/such/dir.ini").c_str()), 11);
  EXPECT_EQ(inifileSave(document.get(), scratch().path().c_str()), 11);
  EXPECT_EQ(inifileSave(document.get(), nullptr), 11);
}

}  // namespace
}  // namespace tessera::test
