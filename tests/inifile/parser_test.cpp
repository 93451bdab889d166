// Reading files into documents: line handling, limits, statuses and memory failures.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "ini_helpers.h"

namespace tessera::test {
namespace {

using namespace std::string_literals;

struct Case {
  const char *what;
  std::string file;
  std::string document;  // as dump() gives it
};

TEST(InifileOpen, ReadsLinesIntoSectionsAndKeys) {
  const Case cases[] = {
      {"empty file", "", ""},
      {"keys before the first section are dropped", "a=1\nb=2\n[s]\nc=3\n", "[s]@3\nc=3@4\n"},
      {"blank and comment lines count", "\n   \n; c\n  # c\n[s]\nk=v\n", "[s]@5\nk=v@6\n"},
      {"a tab before '#' makes no comment", "[s]\n\t#k=v\n", "[s]@1\n#k=v@2\n"},
      {"a tab before '[' is deleted, a blank after it is not", "\t[s]\n  \t [t]\n", "[s]@1\n"},
      {"names and values are trimmed, inner blanks stay", "[ s p ]tail\n  k = v  w \n",
       "[s p]@1\nk=v  w@2\n"},
      {"split at the first '='", "[s]\na=b=c\n=v\nk=\n", "[s]@1\na=b=c@2\n=v@3\nk=@4\n"},
      {"\"\\r\\n\" is cut, a lone carriage return stays", "[s]\r\nk=v\r\nx=a\rb\nz=y\r",
       "[s]@1\nk=v@2\nx=a\rb@3\nz=y\r@4\n"},
      {"';' ends the line anywhere", "[s]\n[t;x]\nk=v;c\n[a=1;]\n", "[s]@1\nk=v@3\n[a=1@4\n"},
      {"tabs are deleted everywhere", "[s]\nk\tey=va\tl\tue\n", "[s]@1\nkey=value@2\n"},
      {"empty section names", "[]\n[  ]\nk=v\n", "[]@1\n[]@2\nk=v@3\n"},
      {"repeats give further records", "[s]\nk=1\nk=2\n[s]\n", "[s]@1\nk=1@2\nk=2@3\n[s]@4\n"},
      {"other lines are ignored", "[s]\nno equals\n[x\n", "[s]@1\n"},
      {"a NUL ends the line's text", "[s]\nk=v\0junk=x\nz=1\n"s, "[s]@1\nk=v@2\nz=1@3\n"},
      {"a long line is read in pieces of 1279",
       "[s]\n" + std::string(1279, 'x') + "k=v\n" + std::string(1279, ' ') + "[t]\nq=1",
       "[s]@1\nk=v@3\n[t]@5\nq=1@6\n"},
  };
  for (const Case &c : cases) {
    int32_t status = -1;
    Document document = parse(c.file, &status);
    EXPECT_EQ(status, 0) << c.what;
    ASSERT_NE(document, nullptr) << c.what;
    EXPECT_EQ(dump(document.get()), c.document) << c.what;
  }
}

TEST(InifileOpen, LimitsOfNamesAndValues) {
  const std::string n255(255, 'n');
  const std::string v1023(1023, 'v');
  const Case cases[] = {
      {"a long section name is cut and reading goes on", "[" + std::string(300, 's') + "]\nk=v\n",
       "[" + std::string(255, 's') + "]@1\nk=v@2\n"},
      {"255-character key name and 1023-character value", "[s]\n" + n255 + "=" + v1023 + "\n",
       "[s]@1\n" + n255 + "=" + v1023 + "@2\n"},
      {"a 256-character key name stops reading", "[s]\na=1\n" + n255 + "n=1\nb=2\n[t]\n",
       "[s]@1\na=1@2\n"},
      {"the name is measured before trimming", "[s]\n" + std::string(250, 'n') + "      =1\n[t]\n",
       "[s]@1\n"},
      {"a 1024-character value stops reading", "[s]\nk=" + v1023 + "v\n[t]\n", "[s]@1\n"},
      {"also before the first section", n255 + "n=1\n[t]\nk=v\n", ""},
  };
  for (const Case &c : cases) {
    int32_t status = -1;
    Document document = parse(c.file, &status);
    EXPECT_EQ(status, 0) << c.what;
    EXPECT_EQ(dump(document.get()), c.document) << c.what;
  }
}

TEST(InifileOpen, RefusesBadArgumentsAndUnreadableFiles) {
  InifileDocument *document = reinterpret_cast<InifileDocument *>(&document);
  EXPECT_EQ(inifileOpen(nullptr, &document), 1);
  EXPECT_EQ(document, nullptr);
  EXPECT_EQ(inifileOpen(ini_file("[s]\n").c_str(), nullptr), 1);
  EXPECT_EQ(inifileOpen(scratch().file("missing.ini").c_str(), &document), 1);
  EXPECT_EQ(document, nullptr);

  // 256 characters are accepted, 257 refused even though the file exists.
  const std::size_t room = 256 - scratch().path().size() - 1;
  const std::string path256 = ini_file("[s]\n", std::string(room, 'p'));
  const std::string path257 = ini_file("[s]\n", std::string(room + 1, 'p'));
  ASSERT_EQ(path256.size(), 256U);
  EXPECT_EQ(inifileOpen(path256.c_str(), &document), 0);
  EXPECT_EQ(dump(document), "[s]@1\n");
  EXPECT_EQ(inifileClose(document), 0);
  EXPECT_EQ(inifileOpen(path257.c_str(), &document), 1);
  EXPECT_EQ(document, nullptr);
}

TEST(InifileText, TrimAndStripInPlace) {
  struct TextCase {
    const char *in, *left, *right, *stripped;
  };
  const TextCase cases[] = {
      {"", "", "", ""},
      {"   ", "", "", "   "},
      {"  a b  ", "a b  ", "  a b", "  a b  "},
      {"\tx\t ", "\tx\t ", "\tx\t", "x "},
  };
  for (const TextCase &c : cases) {
    char left[16], right[16], stripped[16];
    std::strcpy(left, c.in);
    std::strcpy(right, c.in);
    std::strcpy(stripped, c.in);
    inifileTrimLeft(left);
    inifileTrimRight(right);
    inifileStripChar(stripped, '\t');
    EXPECT_STREQ(left, c.left);
    EXPECT_STREQ(right, c.right);
    EXPECT_STREQ(stripped, c.stripped);
  }
  char text[] = "a=b=c";
  inifileStripChar(text, '=');
  EXPECT_STREQ(text, "abc");
}

}  // namespace
}  // namespace tessera::test
