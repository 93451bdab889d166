// Writing documents: the exact bytes of the normal form, and failures to open the file.
#include <gtest/gtest.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

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

// The descriptor that this process holds on `path` beside `own`, -1 until there is one.
int other_descriptor_on(const std::string &path, int own) {
  DIR *fds = opendir("/proc/self/fd");
  int found = -1;
  while (const dirent *entry = fds != nullptr ? readdir(fds) : nullptr) {
    char target[4096];
    const int fd = std::atoi(entry->d_name);
    const std::string link = "/proc/self/fd/" + std::string(entry->d_name);
    const ssize_t n = readlink(link.c_str(), target, sizeof target - 1);
    if (fd != own && n > 0 && std::string(target, static_cast<size_t>(n)) == path) {
      found = fd;
    }
  }
  if (fds != nullptr) closedir(fds);
  return found;
}

// Files that the library opens don't reach programs that the tool starts. A FIFO holds the
// library inside its read or write while the test looks at the descriptor's flags.
TEST(InifileFiles, OpenAndSaveAreCloseOnExec) {
  const std::string fifo = scratch().file("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  // More than a pipe holds, so that the save waits for the test to read.
  Document document(inifileCreate());
  for (int i = 0; i < 100; ++i) {
    inifileSetKeyValueByName(document.get(), "s", std::to_string(i).c_str(),
                             std::string(1000, 'v').c_str());
  }
  const std::pair<int, std::function<void()>> cases[] = {
      {O_WRONLY, [&] {
         InifileDocument *read = nullptr;
         EXPECT_EQ(inifileOpen(fifo.c_str(), &read), 0);
         inifileClose(read);
       }},
      {O_RDONLY, [&] { EXPECT_EQ(inifileSave(document.get(), fifo.c_str()), 0); }},
  };
  for (const auto &[end, operation] : cases) {
    std::thread library(operation);
    const int own = open(fifo.c_str(), end);  // meets the library's open
    int theirs = -1;
    for (int i = 0; i < 2000 && theirs < 0; ++i) {
      theirs = other_descriptor_on(fifo, own);
      if (theirs < 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const std::string info = read_file("/proc/self/fdinfo/" + std::to_string(theirs));
    const auto flags = std::strtoul(info.substr(info.find("flags:") + 6).c_str(), nullptr, 8);
    EXPECT_NE(flags & O_CLOEXEC, 0U) << end;
    char drain[4096];
    while (end == O_RDONLY && read(own, drain, sizeof drain) > 0) {
    }
    close(own);  // end of file for the library's read
    library.join();
  }
}

}  // namespace
}  // namespace tessera::test
