// Reports to the diagnostics sink. Every report of the library goes through these macros, which
// build the "ERROR: %s [%d]: " or "DEBUG: %s [%d]: " prefix from the reporting file's base name
// and line, with facility 3. The format must be a string literal ending in "\n".
#pragma once

#include <cstdint>

#include "tessera/store_client.h"
#include "tessera/trace.h"

namespace tessera::report {

inline constexpr int32_t kFacility = 3;
inline constexpr int32_t kError = 2;   // failed assertions and errors
inline constexpr int32_t kDebug = 5;   // status values, steps, results
inline constexpr int32_t kDetail = 6;  // the missing-tag messages of XmlParseTag

}  // namespace tessera::report

#define TESSERA_REPORT_(level, prefix, fmt, ...)                                               \
  static_cast<void>(::velaprintf((level), ::tessera::report::kFacility, prefix fmt,           \
                                 ::TraceFileName(__FILE__), __LINE__ __VA_OPT__(, ) __VA_ARGS__))

#define REPORT_ERROR(fmt, ...) \
  TESSERA_REPORT_(::tessera::report::kError, "ERROR: %s [%d]: ", fmt __VA_OPT__(, ) __VA_ARGS__)
#define REPORT_DEBUG(fmt, ...) \
  TESSERA_REPORT_(::tessera::report::kDebug, "DEBUG: %s [%d]: ", fmt __VA_OPT__(, ) __VA_ARGS__)
#define REPORT_DETAIL(fmt, ...) \
  TESSERA_REPORT_(::tessera::report::kDetail, "DEBUG: %s [%d]: ", fmt __VA_OPT__(, ) __VA_ARGS__)

// A check of the caller's contract: reports "** ASSERT FAILED" when `cond` is false and never
// stops the process. Evaluates to the truth of `cond`, so that callers can go on or return:
//   if (!REPORT_ASSERT(text != nullptr)) return 0;
#define REPORT_ASSERT(cond) \
  (static_cast<bool>(cond) ? true : (REPORT_ERROR("** ASSERT FAILED\n"), false))
