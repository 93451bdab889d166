#include "capture_sink.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <regex>

#include "tessera/store_client.h"

namespace tessera::test {
namespace {

__attribute__((format(printf, 1, 0))) std::string vformat(const char *format, std::va_list args) {
  std::va_list copy;
  va_copy(copy, args);
  const int size = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  std::string text(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, args);
  return text;
}

}  // namespace

CaptureSink &CaptureSink::instance() {
  static CaptureSink sink;
  return sink;
}

void CaptureSink::reset() {
  std::lock_guard lock(mutex_);
  reports_.clear();
  os_info_.clear();
}

std::vector<Report> CaptureSink::reports() const {
  std::lock_guard lock(mutex_);
  return reports_;
}

std::vector<std::string> CaptureSink::os_info_lines() const {
  std::lock_guard lock(mutex_);
  return os_info_;
}

std::size_t CaptureSink::count(std::string_view format) const {
  std::lock_guard lock(mutex_);
  return static_cast<std::size_t>(std::count_if(
      reports_.begin(), reports_.end(), [&](const Report &r) { return r.format == format; }));
}

std::size_t CaptureSink::assertions() const { return count(kAssertFormat); }

void CaptureSink::add(int32_t level, int32_t facility, const char *format, std::string text) {
  Report report{.level = level, .facility = facility, .format = format, .text = std::move(text)};
  static const std::regex prefix(R"(^(ERROR|DEBUG): [^ ]* \[-?[0-9]+\]: )");
  std::smatch match;
  if (std::regex_search(report.text, match, prefix)) {
    report.message = match.suffix();
  }
  std::lock_guard lock(mutex_);
  reports_.push_back(std::move(report));
}

void CaptureSink::add_os_info(std::string text) {
  std::lock_guard lock(mutex_);
  os_info_.push_back(std::move(text));
}

}  // namespace tessera::test

extern "C" int32_t velaprintf(int32_t level, int32_t facility, const char *format, ...) {
  std::va_list args;
  va_start(args, format);
  std::string text = tessera::test::vformat(format, args);
  va_end(args);
  tessera::test::CaptureSink::instance().add(level, facility, format, std::move(text));
  return 0;
}

extern "C" int32_t os_info(const char *format, ...) {
  std::va_list args;
  va_start(args, format);
  std::string text = tessera::test::vformat(format, args);
  va_end(args);
  tessera::test::CaptureSink::instance().add_os_info(std::move(text));
  return 0;
}
