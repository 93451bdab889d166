// Whole-file reads and writes, the file copy, the caller's rights and a key press.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sched.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include "capture_sink.h"
#include "tessera/system.h"
#include "tests/system/os_test_support.h"

namespace tessera::test {
namespace {

class Files : public ::testing::Test {
 protected:
  ScratchDir dir_;
  std::string file(const std::string &name) const { return dir_.file(name); }
};

TEST_F(Files, ExistsAndSizeAskForAReadableFileAndHoldTheSizeTo32Bits) {
  write_file(file("five"), "12345");
  write_file(file("empty"), "");
  const int fd = open(file("sparse").c_str(), O_WRONLY | O_CREAT | O_LARGEFILE, 0600);
  ASSERT_GE(fd, 0);
  ASSERT_EQ(ftruncate64(fd, 3LL << 30), 0);
  close(fd);
  const struct {
    std::string path;
    int32_t exists;
    int32_t size;
  } cases[] = {{file("five"), 1, 5},
               {file("empty"), 1, 0},
               {file("missing"), 0, 0},
               {file("sparse"), 1, 0x7FFFFFFF}};
  for (const auto &c : cases) {
    EXPECT_EQ(OSFileExists(c.path.c_str()), c.exists) << c.path;
    EXPECT_EQ(OSGetFileSize(c.path.c_str()), c.size) << c.path;
  }
  EXPECT_EQ(OSFileExists(nullptr), 0);
  EXPECT_EQ(OSIsAdmin(), geteuid() == 0 ? 1 : 0);
}

TEST_F(Files, AFileThatCannotBeReadCountsAsAbsent) {
  write_file(file("secret"), "12345");
  ASSERT_EQ(chmod(file("secret").c_str(), 0), 0);
  ASSERT_EQ(chmod(dir_.path().c_str(), 0755), 0);
  // Root reads anything: the check runs as an ordinary user in a child.
  EXPECT_EQ(in_child([&]() -> std::string {
              if (geteuid() == 0 && setresuid(65534, 65534, 65534) != 0) {
                return "cannot leave root";
              }
              if (OSFileExists(file("secret").c_str()) != 0 || OSIsAdmin() != 0) {
                return "unreadable file seen, or still admin";
              }
              return OSGetFileSize(file("secret").c_str()) == 0 ? "" : "size of unreadable file";
            }),
            "");
}

TEST_F(Files, WriteCreatesOrEmptiesAndReadAddsNoTerminator) {
  const std::string path = file("data");
  EXPECT_EQ(OSWriteFile(path.c_str(), "hello world", 11), 11);
  EXPECT_EQ(OSWriteFile(path.c_str(), "hi", 2), 2);
  EXPECT_EQ(read_file(path), "hi");
  char buffer[8] = "#######";
  EXPECT_EQ(OSReadFile(path.c_str(), buffer, 7), 2);  // shorter than the count
  EXPECT_EQ(std::string(buffer, 7), "hi#####");
  EXPECT_EQ(OSReadFile(path.c_str(), buffer, 1), 1);
  // Nothing that can be done gives -1 and leaves the file alone.
  const std::string nowhere = file("no/such/file");
  EXPECT_EQ(OSWriteFile(nowhere.c_str(), "x", 1), -1);
  EXPECT_EQ(OSReadFile(nowhere.c_str(), buffer, 4), -1);
  EXPECT_EQ(OSWriteFile(path.c_str(), "x", -1), -1);
  EXPECT_EQ(OSWriteFile(path.c_str(), nullptr, 1), -1);
  EXPECT_EQ(OSReadFile(path.c_str(), buffer, -1), -1);
  EXPECT_EQ(OSReadFile(path.c_str(), nullptr, 1), -1);
  EXPECT_EQ(OSWriteFile(nullptr, "x", 1), -1);
  EXPECT_EQ(read_file(path), "hi");
  EXPECT_EQ(OSWriteFile(path.c_str(), nullptr, 0), 0);
  EXPECT_EQ(read_file(path), "");
  EXPECT_EQ(OSReadFile(path.c_str(), buffer, 7), 0);
}

// The copy reports each piece written and does not truncate: an older, longer target keeps its
// tail. Its result tells only whether both files opened.
TEST_F(Files, CopyReportsEachPieceAndKeepsAnOlderLongerTail) {
  std::string source(1300, '\0');
  for (std::size_t i = 0; i < source.size(); ++i) {
    source[i] = static_cast<char>('a' + i % 26);
  }
  write_file(file("source"), source);
  write_file(file("target"), std::string(1400, '-'));
  EXPECT_EQ(OSFileCopy(file("source").c_str(), file("target").c_str()), 0);
  EXPECT_EQ(read_file(file("target")), source + std::string(100, '-'));
  write_file(file("small"), "abc");  // a failed write goes unnoticed but for its report
  EXPECT_EQ(OSFileCopy(file("small").c_str(), "/dev/full"), 0);
  std::vector<std::string> messages;
  for (const auto &report : CaptureSink::instance().reports()) {
    EXPECT_EQ(report.format, "DEBUG: %s [%d]: rv = %d\n");
    EXPECT_EQ(report.level, 5);
    messages.push_back(report.message);
  }
  EXPECT_EQ(messages,
            (std::vector<std::string>{"rv = 512\n", "rv = 512\n", "rv = 276\n", "rv = -1\n"}));

  write_file(file("empty"), "");
  EXPECT_EQ(OSFileCopy(file("empty").c_str(), file("created").c_str()), 0);
  EXPECT_EQ(read_file(file("created")), "");
  struct stat info {};
  ASSERT_EQ(stat(file("created").c_str(), &info), 0);
  const mode_t mask = umask(0);
  umask(mask);
  EXPECT_EQ(info.st_mode & 0777, 0666 & ~mask);
  EXPECT_EQ(OSFileCopy(file("missing").c_str(), file("other").c_str()), 1);
  EXPECT_NE(access(file("other").c_str(), F_OK), 0);
  EXPECT_EQ(OSFileCopy(file("empty").c_str(), file("no/dir").c_str()), 1);
  EXPECT_EQ(CaptureSink::instance().reports().size(), 4U);
}

// A pseudo-terminal whose slave side serves as standard input.
class Terminal : public ::testing::Test {
 protected:
  void SetUp() override {
    master_ = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(master_, 0);
    ASSERT_EQ(grantpt(master_), 0);
    ASSERT_EQ(unlockpt(master_), 0);
    slave_ = open(ptsname(master_), O_RDWR | O_NOCTTY);
    ASSERT_GE(slave_, 0);
    ASSERT_EQ(tcgetattr(slave_, &initial_), 0);
    ASSERT_NE(initial_.c_lflag & ICANON, 0U);
    ASSERT_NE(initial_.c_lflag & ECHO, 0U);
  }
  void TearDown() override {
    close(slave_);
    if (master_ >= 0) {
      close(master_);
    }
  }
  termios current() const {
    termios now{};
    tcgetattr(slave_, &now);
    return now;
  }

  int master_ = -1;
  int slave_ = -1;
  termios initial_{};
};

TEST_F(Terminal, ReadsOneKeyWithoutLineModeOrEchoAndRestoresTheTerminal) {
  // The typist waits until the line mode is off, as seen from the master side, then types.
  std::thread typist([this] {
    termios seen{};
    while (tcgetattr(master_, &seen) == 0 && (seen.c_lflag & ICANON) != 0) {
      sched_yield();
    }
    EXPECT_EQ(seen.c_lflag & ECHO, 0U);
    EXPECT_EQ(write(master_, "x", 1), 1);
  });
  int key = 0;
  {
    const StdinFrom input(slave_);
    key = getch();
  }
  typist.join();
  EXPECT_EQ(key, 'x');
  const termios after = current();
  EXPECT_EQ(after.c_lflag, initial_.c_lflag);
  EXPECT_EQ(after.c_cc[VMIN], initial_.c_cc[VMIN]);
}

TEST_F(Terminal, GivesEndOfFileWhenNothingComesAndRestoresTheTerminal) {
  termios polling = initial_;  // without line mode, a read returns at once with no input
  polling.c_cc[VMIN] = 0;
  polling.c_cc[VTIME] = 0;
  ASSERT_EQ(tcsetattr(slave_, TCSANOW, &polling), 0);
  {
    const StdinFrom input(slave_);
    EXPECT_EQ(getch(), EOF);
  }
  const termios after = current();
  EXPECT_EQ(after.c_lflag, initial_.c_lflag);
  EXPECT_EQ(after.c_cc[VMIN], 0);

  close(master_);  // hung up: end of input
  master_ = -1;
  const StdinFrom input(slave_);
  EXPECT_EQ(getch(), EOF);
}

TEST(Console, ReadsAPipeOneCharacterAtATime) {
  int pipe_fds[2];
  ASSERT_EQ(pipe(pipe_fds), 0);
  ASSERT_EQ(write(pipe_fds[1], "ab", 2), 2);
  close(pipe_fds[1]);
  {
    const StdinFrom input(pipe_fds[0]);
    EXPECT_EQ(getch(), 'a');
    EXPECT_EQ(getch(), 'b');
    EXPECT_EQ(getch(), EOF);
  }
  close(pipe_fds[0]);
}

}  // namespace
}  // namespace tessera::test
