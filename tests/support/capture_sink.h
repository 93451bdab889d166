// A diagnostics sink for tests: defines velaprintf and os_info and keeps every report, with its
// level, facility, format and formatted text. The test main clears it before every test.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace tessera::test {

struct Report {
  int32_t level = 0;
  int32_t facility = 0;
  std::string format;   // as passed, e.g. "DEBUG: %s [%d]: prop_type = %d\n"
  std::string text;     // formatted
  std::string message;  // what follows "ERROR: file [line]: " or "DEBUG: file [line]: "
};

class CaptureSink {
 public:
  static CaptureSink &instance();
  void reset();

  [[nodiscard]] std::vector<Report> reports() const;
  [[nodiscard]] std::vector<std::string> os_info_lines() const;
  // Reports whose format is exactly `format`.
  [[nodiscard]] std::size_t count(std::string_view format) const;
  // Reports of the assertion "ERROR: %s [%d]: ** ASSERT FAILED\n".
  [[nodiscard]] std::size_t assertions() const;

  void add(int32_t level, int32_t facility, const char *format, std::string text);
  void add_os_info(std::string text);

 private:
  mutable std::mutex mutex_;
  std::vector<Report> reports_;
  std::vector<std::string> os_info_;
};

inline constexpr const char kAssertFormat[] = "ERROR: %s [%d]: ** ASSERT FAILED\n";

}  // namespace tessera::test
