// libtessera.so.1 as a tool sees it: through the public headers and the C ABI, with the
// platform components resolved from the program that loads it.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <string>

#include "tessera/tessera.h"

namespace {

TEST(SharedLibrary, ServesCallsThroughTheCAbi) {
  const char *path = "trace/report.cpp";
  EXPECT_EQ(TraceFileName(path), path + 6);
}

TEST(SharedLibrary, IsTheLibraryTheProgramLoaded) {
  Dl_info info{};
  ASSERT_NE(dladdr(reinterpret_cast<void *>(&TraceFileName), &info), 0);
  EXPECT_NE(std::string(info.dli_fname).find("libtessera.so.1"), std::string::npos)
      << info.dli_fname;
}

}  // namespace
