// The five process-wide settings of the trace log, set by the TraceLog* setters and never reset.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tessera::trace {

inline constexpr std::size_t kLogFileSize = 256;
inline constexpr std::size_t kLongestLogFile = 254;  // characters that TraceLogSetLogFile takes
inline constexpr std::size_t kMessageSize = 65536;   // buffer of one message, terminator included
inline constexpr uint32_t kToStandardOutput = 1;
inline constexpr uint32_t kToLogFile = 2;

extern uint32_t traceLevel;      // mask of the levels that are on; 0 traces nothing
extern uint32_t traceComponent;  // 0 silences everything; any other value lets through
extern uint32_t traceTarget;     // kToStandardOutput | kToLogFile
extern uint8_t traceTimestamps;  // non-zero: tick count before each message
extern char traceLogFile[kLogFileSize];

}  // namespace tessera::trace
