// The trace log and hex dump: the gate, the targets, the timestamp, the log file path and the
// exact lines of a dump. Standard output is captured by pointing descriptor 1 at a file.
#include <gtest/gtest.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "heap_seam.h"
#include "tessera/trace.h"
#include "tests/system/os_test_support.h"
#include "trace/trace_log.h"

namespace tessera::test {
namespace {

namespace settings = tessera::trace;

// Every test starts from the defaults and puts them back: the settings are process-wide.
class TraceLog : public ::testing::Test {
 protected:
  void TearDown() override {
    settings::traceLevel = 0;
    settings::traceComponent = 0xFFFFFFFF;
    settings::traceTarget = 1;
    settings::traceTimestamps = 1;
    std::strcpy(settings::traceLogFile, "/tmp/tracelog.txt");
  }
  // Level 1 on, no timestamps, the log file in the scratch directory.
  void trace_to(uint32_t target) {
    TraceLogSetLevel(1);
    TraceLogEnableTimestamps(0);
    TraceLogSetTarget(target);
    TraceLogSetLogFile(log_.c_str());
  }

  ScratchDir dir_;
  std::string log_ = dir_.file("trace.log");
};

// The defaults trace nothing and ask for no buffer. A message passes the gate only when level,
// component and target are all set and the message shares a bit with the level.
TEST_F(TraceLog, GateNeedsEverySettingAndOneSharedLevelBit) {
  EXPECT_EQ(settings::traceLevel, 0U);
  EXPECT_EQ(settings::traceComponent, 0xFFFFFFFFU);
  EXPECT_EQ(settings::traceTarget, 1U);
  EXPECT_EQ(settings::traceTimestamps, 1);
  EXPECT_STREQ(settings::traceLogFile, "/tmp/tracelog.txt");
  EXPECT_EQ(allocations_of([] { TraceLogMessage(0xFFFFFFFF, "never\n"); }), 0U);
  struct Case {
    uint32_t level, component, target, message_level;
    bool traced;
  };
  const Case cases[] = {
      {0, 0xFFFFFFFF, 1, 0xFFFFFFFF, false},
      {0x6, 1, 1, 0x2, true},
      {0x6, 1, 1, 0x9, false},
      {0x6, 0, 1, 0x2, false},
      {0x6, 1, 0, 0x2, false},
      {0x6, 0x80, 1, 0x4, true},
      {0xFFFFFFFF, 7, 1, 0x80000000, true},
  };
  for (const auto &c : cases) {
    TraceLogSetLevel(c.level);
    TraceLogSetComponent(c.component);
    TraceLogSetTarget(c.target);
    TraceLogEnableTimestamps(0);
    const CaptureFd out(STDOUT_FILENO);
    TraceLogMessage(c.message_level, "m%d", 1);
    const uint8_t byte = 0x41;
    TraceHexDump(c.message_level, "", &byte, 1);
    EXPECT_EQ(!out.text().empty(), c.traced) << c.level << "/" << c.message_level;
    EXPECT_EQ(out.text().rfind("m1", 0) == 0, c.traced);
  }
}

TEST_F(TraceLog, TargetsAreStandardOutputFirstThenTheFileAppendedPerMessage) {
  write_file(log_, "old\n");
  trace_to(2);
  {
    const CaptureFd out(STDOUT_FILENO);
    TraceLogMessage(1, "one %s\n", "file");
    EXPECT_EQ(out.text(), "");
  }
  EXPECT_EQ(read_file(log_), "old\none file\n");
  std::remove(log_.c_str());  // opened anew for each message
  TraceLogMessage(1, "two\n");
  EXPECT_EQ(read_file(log_), "two\n");

  trace_to(3);
  std::remove(log_.c_str());
  {
    const CaptureFd out(STDOUT_FILENO);  // appends to the log file too: the order shows
    TraceLogSetLogFile(out.path().c_str());
    TraceLogMessage(1, "one\n");
    TraceLogMessage(1, "two\n");
    EXPECT_EQ(out.text(), "one\none\ntwo\ntwo\n");
  }
  TraceLogSetLogFile(dir_.file("no/such/dir/log").c_str());
  const CaptureFd out(STDOUT_FILENO);  // an unopenable file skips that target alone
  TraceLogMessage(1, "still\n");
  EXPECT_EQ(out.text(), "still\n");
}

TEST_F(TraceLog, TimestampIsTheTickCountInAtLeastEightDigitsAndABlank) {
  trace_to(1);
  const CaptureFd out(STDOUT_FILENO);
  TraceLogEnableTimestamps(1);
  TraceLogMessage(1, "a\n");
  TraceLogEnableTimestamps(0x100);  // only the low 8 bits count
  TraceLogMessage(1, "b\n");
  TraceLogEnableTimestamps(0x80);
  TraceLogMessage(1, "c\n");
  EXPECT_TRUE(std::regex_match(out.text(), std::regex("[0-9]{8,10} a\nb\n[0-9]{8,10} c\n")))
      << out.text();
}

TEST_F(TraceLog, LogFilePathTakesAtMost254Characters) {
  const std::string longest = "/" + std::string(253, 'p');
  TraceLogSetLogFile(longest.c_str());
  EXPECT_EQ(std::string(settings::traceLogFile), longest);
  TraceLogSetLogFile(("/" + std::string(254, 'q')).c_str());
  EXPECT_EQ(std::string(settings::traceLogFile), longest);
}

TEST_F(TraceLog, AMessageTooLongForTheBufferIsCutAtItsLastByte) {
  const std::string huge(70000, 'h');
  for (const int stamp : {0, 1}) {
    trace_to(3);
    TraceLogEnableTimestamps(stamp);
    std::remove(log_.c_str());
    const CaptureFd out(STDOUT_FILENO);
    TraceLogMessage(1, "%s", huge.c_str());
    const std::string text = out.text();
    EXPECT_EQ(text.size(), 65535U);
    EXPECT_EQ(text.substr(text.size() - 10), std::string(10, 'h'));
    EXPECT_EQ(read_file(log_), text);
  }
}

// Eight digits on every target: the low 32 bits of the address.
std::string address(const void *data) {
  char text[32];
  std::snprintf(text, sizeof text, "%08" PRIX32, static_cast<uint32_t>(reinterpret_cast<uintptr_t>(data)));
  return text;
}

// The lines of a dump: a head with title, address and length, then per 16 bytes their address,
// hex and character columns.
std::string head(const char *title, const void *data, const char *length) {
  return title + std::string("             Starting Address: 0x") + address(data) +
         "   Length: " + length + "\n";
}
std::string line(const void *data, const char *columns) {
  return "   " + address(data) + "  " + columns + "\n";
}

TEST_F(TraceLog, HexDumpPrintsExactLines) {
  alignas(16) uint8_t bytes[34];
  for (std::size_t i = 0; i < sizeof bytes; ++i) {
    bytes[i] = static_cast<uint8_t>(0x41 + i);
  }
  std::memcpy(bytes, "Hello", 5);
  bytes[16] = 0x1F, bytes[17] = 0x20, bytes[18] = 0x7E, bytes[19] = 0x7F, bytes[20] = 0xFF;
  const std::string first =
      line(bytes, "48 65 6C 6C 6F 46 47 48-49 4A 4B 4C 4D 4E 4F 50|HelloFGH-IJKLMNOP|");
  // clang-format off
  const std::pair<int32_t, std::string> cases[] = {
      {5, head("T", bytes, "5(0x05)") +
          line(bytes, "48 65 6C 6C 6F __ __ __-__ __ __ __ __ __ __ __|Hello   -        |")},
      {16, head("T", bytes, "16(0x10)") + first},
      {17, head("T", bytes, "17(0x11)") + first +
           line(bytes + 16, "1F __ __ __ __ __ __ __-__ __ __ __ __ __ __ __|.       -        |")},
      {25, head("T", bytes, "25(0x19)") + first +
           line(bytes + 16, "1F 20 7E 7F FF 56 57 58-59 __ __ __ __ __ __ __|. ~..VWX-Y       |")},
  };
  // clang-format on
  TraceLogSetLevel(2);
  TraceLogSetTarget(2);  // the dump goes to standard output whatever the target bits
  for (const auto &[length, expected] : cases) {
    const CaptureFd out(STDOUT_FILENO);
    TraceHexDump(2, "T", bytes, length);
    EXPECT_EQ(out.text(), expected + "\n") << length;
  }
  const std::vector<uint8_t> many(300, 0x2E);
  const CaptureFd out(STDOUT_FILENO);
  TraceHexDump(2, "", many.data(), 300);
  const std::string text = out.text();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1 + 19 + 1);  // head, 18 lines and 12 bytes
  // Every line has the controller's 76 columns behind its three blanks, on any host.
  EXPECT_EQ(text.find('\n', text.find('\n') + 1) - text.find('\n') - 1, 3U + 76U);
  EXPECT_EQ(text.rfind(head("", many.data(), "300(0x12C)"), 0), 0U);
  EXPECT_NE(text.find(line(many.data() + 288,
                           "2E 2E 2E 2E 2E 2E 2E 2E-2E 2E 2E 2E __ __ __ __|"
                           "........-....    |") +
                      "\n"),
            std::string::npos);
}

TEST_F(TraceLog, HexDumpSkipsNoDataAndNeverReachesTheFile) {
  trace_to(2);
  TraceLogEnableTimestamps(1);
  const uint8_t byte = 0;
  const CaptureFd out(STDOUT_FILENO);
  TraceHexDump(1, "none", nullptr, 4);
  TraceHexDump(1, "none", &byte, 0);
  TraceHexDump(1, "none", &byte, -1);
  EXPECT_EQ(out.text(), "");
  TraceHexDump(1, "", &byte, 1);
  EXPECT_EQ(out.text().rfind("             Starting Address: 0x", 0), 0U);  // no timestamp
  EXPECT_EQ(read_file(log_), "");
}

// Messages from several threads each have their own buffer and reach the file whole.
TEST_F(TraceLog, ConcurrentMessagesReachTheFileWhole) {
  trace_to(2);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < 50; ++i) {
        TraceLogMessage(1, "thread %d message %02d %s\n", t, i, std::string(200, 'a' + t).c_str());
      }
    });
  }
  for (auto &thread : threads) {
    thread.join();
  }
  const std::string text = read_file(log_);
  const std::regex line("thread ([0-3]) message [0-9]{2} (a{200}|b{200}|c{200}|d{200})\n");
  std::size_t lines = 0;
  for (auto it = std::sregex_iterator(text.begin(), text.end(), line); it != std::sregex_iterator();
       ++it) {
    ++lines;
  }
  EXPECT_EQ(lines, 200U);
  EXPECT_EQ(text.size(), 200U * 221U);
}

}  // namespace
}  // namespace tessera::test
