/* Diagnostics: source file names for reports; the trace log and hex dump. */
#ifndef TESSERA_TRACE_H
#define TESSERA_TRACE_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

/* The base name of a source path: a pointer behind its last '/', or to its start without one.
 * `path` must not be null. */
TESSERA_API const char *TraceFileName(const char *path);

/* Trace settings, process-wide. A message goes out only when the level, component and target
 * are non-zero and its level shares a bit with the level set. */
/* Puts a tick-count timestamp before each message when the low 8 bits of `enable` aren't 0. */
TESSERA_API void TraceLogEnableTimestamps(int32_t enable);
/* The mask of levels that are traced; 0 (the default) traces nothing. */
TESSERA_API void TraceLogSetLevel(uint32_t level);
/* 0 silences the trace; any other value lets it through. */
TESSERA_API void TraceLogSetComponent(uint32_t component);
/* Bit 0: standard output (the default); bit 1: the log file. 0 silences the trace. */
TESSERA_API void TraceLogSetTarget(uint32_t target);
/* The log file, "/tmp/tracelog.txt" by default; a path over 254 characters is ignored, an empty
 * path turns the file target off. */
TESSERA_API void TraceLogSetLogFile(const char *path);
/* Formats a message (at most 65535 bytes with its timestamp, cut beyond) and writes it to each
 * target, standard output first; the log file is opened for appending per message. */
TESSERA_API void TraceLogMessage(uint32_t level, const char *format, ...) TESSERA_PRINTF(2, 3);
/* Prints `title` and `length` bytes at `data` in hexadecimal and as characters, 16 a line, on
 * standard output alone. */
TESSERA_API void TraceHexDump(uint32_t level, const char *title, const void *data, int32_t length);

TESSERA_END_DECLS

#endif /* TESSERA_TRACE_H */
