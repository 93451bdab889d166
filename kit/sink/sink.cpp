// Diagnostics sink for workstations: reports go to standard error, or to syslog when
// TESSERA_SINK=syslog. TESSERA_SINK_LEVEL sets the highest level shown (default 2: errors only;
// 5 adds the debug detail, 7 shows everything).
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <syslog.h>

#include "kit/number.h"
#include "tessera/store_client.h"

namespace {

int32_t max_level() {
  const char *text = std::getenv("TESSERA_SINK_LEVEL");
  return text != nullptr && *text != '\0' ? tessera::kit::decimal_int32(text) : 2;
}

bool to_syslog() {
  const char *target = std::getenv("TESSERA_SINK");
  return target != nullptr && std::strcmp(target, "syslog") == 0;
}

__attribute__((format(printf, 2, 0))) void emit(int priority, const char *format,
                                                std::va_list args) {
  if (to_syslog()) {
    vsyslog(LOG_USER | priority, format, args);
  } else {
    std::vfprintf(stderr, format, args);
  }
}

}  // namespace

extern "C" int32_t velaprintf(int32_t level, int32_t /*facility*/, const char *format, ...) {
  if (format == nullptr || level > max_level()) {
    return 0;
  }
  std::va_list args;
  va_start(args, format);
  emit(level < 0 ? LOG_EMERG : (level > LOG_DEBUG ? LOG_DEBUG : level), format, args);
  va_end(args);
  return 0;
}

extern "C" int32_t os_info(const char *format, ...) {
  if (format == nullptr) {
    return 0;
  }
  std::va_list args;
  va_start(args, format);
  emit(LOG_INFO, format, args);
  va_end(args);
  return 0;
}
