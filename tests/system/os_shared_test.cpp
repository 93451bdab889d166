// Operating-system services, locks and the trace log as a tool sees them: through
// libtessera.so.1's C ABI, with the program starter and the sink of the test kit.
#include <gtest/gtest.h>

#include <string>

#include "tessera/tessera.h"
#include "tests/system/os_test_support.h"

namespace tessera::test {
namespace {

TEST(SharedOS, FilesCommandsTicksLocksAndTrace) {
  const ScratchDir dir;
  const std::string path = dir.file("f");
  EXPECT_EQ(OSWriteFile(path.c_str(), "abc", 3), 3);
  EXPECT_EQ(OSFileCopy(path.c_str(), dir.file("g").c_str()), 0);
  char text[8] = {};
  EXPECT_EQ(OSReadFile(dir.file("g").c_str(), text, 7), 3);
  EXPECT_STREQ(text, "abc");
  EXPECT_EQ(OSExecuteCommand("printf hello", 0, text, sizeof text), 0);
  EXPECT_STREQ(text, "hello");
  EXPECT_EQ(OSExecuteCommand("exit 7", 1, nullptr, 0), 7);
  const uint32_t start = OSGetTickCount();
  OSSleep(25);  // spans at least two 10 ms ticks
  EXPECT_GE(OSGetTimeDiff(start), 20U);

  OSLock *lock = OSLockInit("shared");
  ASSERT_NE(lock, nullptr);
  EXPECT_EQ(OSLockAcquire(lock), 1);
  EXPECT_EQ(OSLockRelease(lock), 1);
  EXPECT_EQ(OSLockUninit(lock), 1);

  TraceLogSetLevel(4);
  TraceLogSetTarget(2);
  TraceLogEnableTimestamps(0);
  TraceLogSetLogFile(dir.file("log").c_str());
  TraceLogMessage(4, "%s=%d\n", "value", 42);
  EXPECT_EQ(read_file(dir.file("log")), "value=42\n");
}

}  // namespace
}  // namespace tessera::test
