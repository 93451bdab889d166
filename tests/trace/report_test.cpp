// TraceFileName and the report helper that every family uses.
#include <gtest/gtest.h>

#include "capture_sink.h"
#include "tessera/trace.h"
#include "trace/report.h"

namespace tessera::test {
namespace {

TEST(TraceFileName, GivesThePartBehindTheLastSlashAsAPointerIntoThePath) {
  struct Case {
    const char *path;
    std::size_t offset;
  };
  // clang-format off
  const Case cases[] = {
      {"orb_cfg/orb_cfg.cpp", 8}, {"/a/b/c.cpp", 5}, {"plain.cpp", 0}, {"dir/", 4}, {"", 0},
      {"/", 1},
  };
  // clang-format on
  for (const auto &c : cases) {
    EXPECT_EQ(TraceFileName(c.path), c.path + c.offset) << c.path;
  }
}

TEST(Report, ErrorAndDebugLevelsCarryFacility3AndTheFileAndLinePrefix) {
  const int line = __LINE__ + 1;
  REPORT_ERROR("value = %d, name = %s\n", 7, "x");
  REPORT_DEBUG("Status = %d\n", 6);
  REPORT_DETAIL("Failed to find XML start tag: %s : %s\n", "<a>", "doc");
  const auto reports = CaptureSink::instance().reports();
  ASSERT_EQ(reports.size(), 3U);
  EXPECT_EQ(reports[0].level, 2);
  EXPECT_EQ(reports[0].facility, 3);
  EXPECT_EQ(reports[0].format, "ERROR: %s [%d]: value = %d, name = %s\n");
  EXPECT_EQ(reports[0].text,
            "ERROR: report_test.cpp [" + std::to_string(line) + "]: value = 7, name = x\n");
  EXPECT_EQ(reports[1].level, 5);
  EXPECT_EQ(reports[1].format, "DEBUG: %s [%d]: Status = %d\n");
  EXPECT_EQ(reports[2].level, 6);
  EXPECT_EQ(reports[2].facility, 3);
  EXPECT_EQ(reports[2].text, "DEBUG: report_test.cpp [" + std::to_string(line + 2) +
                                 "]: Failed to find XML start tag: <a> : doc\n");
}

TEST(Report, AssertionReportsOnceAndLetsTheCallerGoOn) {
  int reached = 0;
  if (!REPORT_ASSERT(reached == 1)) {
    ++reached;
  }
  EXPECT_TRUE(REPORT_ASSERT(reached == 1));
  EXPECT_EQ(reached, 1);
  const auto reports = CaptureSink::instance().reports();
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].format, kAssertFormat);
  EXPECT_EQ(reports[0].level, 2);
  EXPECT_EQ(reports[0].message, "** ASSERT FAILED\n");
}

}  // namespace
}  // namespace tessera::test
