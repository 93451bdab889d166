// The trace log of the tools: formatted messages to standard output and a log file under a level
// mask, and hexadecimal dumps of memory. Independent of the reports of the diagnostics sink.
#include <algorithm>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "memory/heap.h"
#include "system/linux/handles.h"
#include "tessera/system.h"
#include "tessera/trace.h"
#include "trace/trace_log.h"

namespace tessera::trace {

uint32_t traceLevel = 0;
uint32_t traceComponent = 0xFFFFFFFF;
uint32_t traceTarget = kToStandardOutput;
uint8_t traceTimestamps = 1;
char traceLogFile[kLogFileSize] = "/tmp/tracelog.txt";

namespace {

constexpr int32_t kBytesPerLine = 16;
// One dump line behind its address, with the columns of each byte as hexadecimal and as text.
constexpr char kLineBody[] = "  __ __ __ __ __ __ __ __-__ __ __ __ __ __ __ __|        -        |";
static_assert(sizeof kLineBody - 1 == 68);
constexpr std::size_t hex_column(int32_t byte) {
  return byte < 8 ? 2 + 3 * byte : 26 + 3 * (byte - 8);
}
constexpr std::size_t text_column(int32_t byte) {
  return byte < 8 ? 50 + byte : 59 + (byte - 8);
}
static_assert(hex_column(7) == 23 && hex_column(15) == 47 && text_column(15) == 66);

bool gate(uint32_t level) {
  return traceLevel != 0 && traceComponent != 0 && traceTarget != 0 && (traceLevel & level) != 0;
}

void append_to_log_file(const char *text, std::size_t length) {
  if (traceLogFile[0] == '\0') {
    return;
  }
  // Opened per message, appending; one write keeps a message whole beside other writers.
  const UniqueFd file(::open(traceLogFile, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
  if (file.valid()) {
    static_cast<void>(!::write(file.get(), text, length));
  }
}

// The address as the controller prints it, eight digits: its low 32 bits on a 64-bit host too,
// so that a dump has the same columns on every target.
uint32_t low_address(const void *data) {
  return static_cast<uint32_t>(reinterpret_cast<std::uintptr_t>(data));
}

// "%08X" of the address, then the line body.
void format_line(const unsigned char *bytes, int32_t count, char *line, std::size_t size) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  const int digits = std::snprintf(line, size, "%08" PRIX32, low_address(bytes));
  char *body = line + digits;
  std::memcpy(body, kLineBody, sizeof kLineBody);
  for (int32_t i = 0; i < count; ++i) {
    const unsigned char byte = bytes[i];
    body[hex_column(i)] = kDigits[byte >> 4];
    body[hex_column(i) + 1] = kDigits[byte & 0x0F];
    body[text_column(i)] = byte >= 0x20 && byte <= 0x7E ? static_cast<char>(byte) : '.';
  }
}

}  // namespace
}  // namespace tessera::trace

using namespace tessera;
using namespace tessera::trace;

extern "C" void TraceLogEnableTimestamps(int32_t enable) {
  traceTimestamps = static_cast<uint8_t>(enable);
}
extern "C" void TraceLogSetLevel(uint32_t level) {
  traceLevel = level;
}
extern "C" void TraceLogSetComponent(uint32_t component) {
  traceComponent = component;
}
extern "C" void TraceLogSetTarget(uint32_t target) {
  traceTarget = target;
}

extern "C" void TraceLogSetLogFile(const char *path) {
  if (path == nullptr) {
    return;
  }
  const std::size_t length = strnlen(path, kLongestLogFile + 1);
  if (length <= kLongestLogFile) {
    std::memcpy(traceLogFile, path, length + 1);
  }
}

extern "C" void TraceLogMessage(uint32_t level, const char *format, ...) {
  if (!gate(level) || format == nullptr) {
    return;
  }
  const heap::Owned<char> buffer(static_cast<char *>(heap::allocate_zeroed(kMessageSize)));
  if (!buffer) {
    return;
  }
  char *text = buffer.get();
  int stamp = 0;
  if (traceTimestamps != 0) {
    stamp = std::snprintf(text, kMessageSize, "%08u ", GetTickCount());
  }
  // A message too long for the buffer is cut at its last byte.
  std::va_list args;
  va_start(args, format);
  std::vsnprintf(text + stamp, kMessageSize - static_cast<std::size_t>(stamp), format, args);
  va_end(args);
  const std::size_t length = std::strlen(text);
  if ((traceTarget & kToStandardOutput) != 0) {
    std::printf("%s", text);
    std::fflush(stdout);
  }
  if ((traceTarget & kToLogFile) != 0) {
    append_to_log_file(text, length);
  }
}

extern "C" void TraceHexDump(uint32_t level, const char *title, const void *data, int32_t length) {
  if (!gate(level) || data == nullptr || length <= 0) {
    return;
  }
  const auto *bytes = static_cast<const unsigned char *>(data);
  std::printf("%s", title != nullptr ? title : "");
  std::printf("             Starting Address: 0x%08" PRIX32 "   Length: %d(0x%02X)\n",
              low_address(data), static_cast<int>(length),
              static_cast<unsigned int>(length));
  char line[8 + sizeof kLineBody];
  for (int32_t start = 0; start < length; start += kBytesPerLine) {
    format_line(bytes + start, std::min(kBytesPerLine, length - start), line, sizeof line);
    std::printf("   %s\n", line);
  }
  std::printf("\n");
  std::fflush(stdout);
}
