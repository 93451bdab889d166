// Null pointers and out-of-range arguments where a function's contract excludes them, through
// libtessera.so.1 as a tool calls it: each gives the plain failure value that docs/decisions.md
// records, and nothing is read through the null pointer or written behind it.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

#include "capture_sink.h"
#include "scratch.h"
#include "tessera/inifile.h"
#include "tessera/mempool.h"
#include "tessera/orb_cfg.h"
#include "tessera/strlib.h"
#include "tessera/system.h"
#include "tessera/trace.h"

namespace tessera::test {
namespace {

constexpr int64_t kSome = 1;  // a handle or text that is not null

int64_t given(const void *pointer) {
  return pointer != nullptr ? kSome : 0;
}

TEST(BadArguments, GiveTheFailureValueWithoutAReport) {
  InifileDocument *document = inifileCreate();
  ASSERT_NE(document, nullptr);
  InifileSection *section = inifileAddNewSection(document, "s");
  ASSERT_EQ(inifileSetKeyValueByName(document, "s", "k", "v"), 0);
  void *payload = &document;
  ListNode node{payload, nullptr};
  const ScratchDir dir;
  const std::string file = dir.file("file");
  write_file(file, "12345");
  char buffer[8] = "#######";
  unsigned char record[4768] = {};

  struct Case {
    const char *call;
    std::function<int64_t()> run;
    int64_t result;
  };
  const Case cases[] = {
      {"inifileGetSectionByName(doc, null)",
       [&] { return given(inifileGetSectionByName(document, nullptr)); }, 0},
      {"inifileGetKeyByName(section, null)",
       [&] { return given(inifileGetKeyByName(section, nullptr)); }, 0},
      {"inifileGetKeyValueByName(doc, s, null)",
       [&] { return given(inifileGetKeyValueByName(document, "s", nullptr)); }, 0},
      {"inifileAddNewSection(doc, null)",
       [&] { return given(inifileAddNewSection(document, nullptr)); }, 0},
      {"inifileSetKeyValueByName(doc, s, null, v)",
       [&] { return inifileSetKeyValueByName(document, "s", nullptr, "v"); }, 2},
      {"inifileSetKeyValueByName(doc, s, k, null)",
       [&] { return inifileSetKeyValueByName(document, "s", "k", nullptr); }, 2},
      {"inifileSave(doc, null)", [&] { return inifileSave(document, nullptr); }, 11},
      {"inifile trims and strip of null",
       [] {
         inifileTrimLeft(nullptr);
         inifileTrimRight(nullptr);
         inifileStripChar(nullptr, ' ');
         return 0;
       },
       0},
      {"ListGetNext(null)", [] { return given(ListGetNext(nullptr)); }, 0},
      {"ListGetObjectByData(list, null)",
       [&] { return given(ListGetObjectByData(&node, nullptr)); }, 0},
      {"ListGetObjectByData(list, payload)",
       [&] { return ListGetObjectByData(&node, payload) == &node ? kSome : 0; }, kSome},
      {"ListLock() and ListUnlock()", [] { return ListLock() + ListUnlock(); }, 0},
      {"StrIsIpAddress(null)", [] { return StrIsIpAddress(nullptr); }, 0},
      {"StrIsValidEmailAddress(null)", [] { return StrIsValidEmailAddress(nullptr); }, 0},
      {"StrVerifyAddr(null)", [] { return std::strlen(StrVerifyAddr(nullptr)); }, 0},
      {"StrTrim2End(text, null)",
       [] {
         char text[] = " a ";
         return StrTrim2End(text, nullptr) * 10 + (std::strcmp(text, " a ") == 0 ? 1 : 0);
       },
       1},
      {"StrAddLineFeed and StrEscapePercent with null",
       [&] {
         StrAddLineFeed(buffer, nullptr);
         StrAddLineFeed(nullptr, "a\n");
         StrEscapePercent(buffer, nullptr);
         StrEscapePercent(nullptr, "%");
         return std::strcmp(buffer, "#######") == 0;
       },
       1},
      {"StrTokenize(null)",
       [] {
         char **tokens = StrTokenize(nullptr);
         const int64_t empty = tokens != nullptr && tokens[0] == nullptr ? kSome : 0;
         std::free(tokens);
         return empty;
       },
       kSome},
      {"get_src_addr(null, 1)", [] { return given(get_src_addr(nullptr, 1)); }, 0},
      {"get_src_addr(record, 58)", [&] { return given(get_src_addr(record, 58)); }, 0},
      {"ORBSetPropertyValue(null, v)", [] { return ORBSetPropertyValue(nullptr, "v"); }, 1},
      {"OSGetFileSize(null)", [] { return OSGetFileSize(nullptr); }, 0},
      {"OSReadFile(null, buffer, 4)", [&] { return OSReadFile(nullptr, buffer, 4); }, -1},
      {"OSReadFile(file, null, 0)", [&] { return OSReadFile(file.c_str(), nullptr, 0); }, 0},
      {"OSFileCopy(null, file)", [&] { return OSFileCopy(nullptr, file.c_str()); }, 1},
      {"OSFileCopy(file, null)", [&] { return OSFileCopy(file.c_str(), nullptr); }, 1},
  };
  for (const auto &c : cases) {
    CaptureSink::instance().reset();
    EXPECT_EQ(c.run(), c.result) << c.call;
    EXPECT_TRUE(CaptureSink::instance().reports().empty()) << c.call;
  }
  EXPECT_EQ(std::string(buffer), "#######");
  EXPECT_EQ(read_file(file), "12345");
  EXPECT_EQ(inifileGetNumKeys(section), 1U);
  EXPECT_EQ(inifileClose(document), 0);
}

// A null log file path keeps the one set before, and a message without a format is dropped.
TEST(BadArguments, TraceKeepsItsLogFileAndDropsANullFormat) {
  const ScratchDir dir;
  const std::string log = dir.file("trace.log");
  TraceLogSetLogFile(log.c_str());
  TraceLogSetLogFile(nullptr);
  TraceLogSetTarget(2);
  TraceLogEnableTimestamps(0);
  TraceLogSetLevel(1);
  TraceLogMessage(1, nullptr);
  TraceLogMessage(1, "%s", "kept");
  TraceLogSetLevel(0);
  TraceLogSetTarget(1);
  TraceLogEnableTimestamps(1);
  TraceLogSetLogFile("/tmp/tracelog.txt");
  EXPECT_EQ(read_file(log), "kept");
}

}  // namespace
}  // namespace tessera::test
