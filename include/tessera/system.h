/* Operating-system services: time, files, console, commands and processes. */
#ifndef TESSERA_SYSTEM_H
#define TESSERA_SYSTEM_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

/* Sleeps `milliseconds`; a signal shortens the sleep only after ten retries of what was left. */
TESSERA_API void OSSleep(uint32_t milliseconds);
/* Clock ticks since an arbitrary start, counted as 10 ms each, modulo 2^32. */
TESSERA_API uint32_t GetTickCount(void);
/* The same count as GetTickCount. */
TESSERA_API uint32_t OSGetTickCount(void);
/* Milliseconds since the tick count `earlier`; across a wrap, one less than the true difference. */
TESSERA_API uint32_t OSGetTimeDiff(uint32_t earlier);
/* Offset of local standard time from UTC in minutes, positive east of Greenwich. */
TESSERA_API int32_t OSGetTimezoneOffset(void);
/* 60 if the local timezone has a daylight saving rule at all, else 0. */
TESSERA_API int32_t OSGetDaylightOffset(void);

/* 1 if the calling process may read the file at `path`, else 0. */
TESSERA_API int32_t OSFileExists(const char *path);
/* 1 if the effective user id is 0, else 0. */
TESSERA_API int32_t OSIsAdmin(void);
/* Size of a readable file in bytes (at most INT32_MAX), or 0 if it can't be read. */
TESSERA_API int32_t OSGetFileSize(const char *path);
/* Creates or empties the file and writes `count` bytes: the count written, or -1. */
TESSERA_API int32_t OSWriteFile(const char *path, const void *buffer, int32_t count);
/* Reads up to `count` bytes, without a terminator: the count read, or -1. */
TESSERA_API int32_t OSReadFile(const char *path, void *buffer, int32_t count);
/* Copies `source` over the start of `destination` (not truncated): 0, or 1 if either won't open. */
TESSERA_API int32_t OSFileCopy(const char *source, const char *destination);
/* The next character of standard input, read without echo or line editing, or EOF. */
TESSERA_API int32_t getch(void);

/* Runs `command` through /bin/sh. With `out`, captures up to out_size - 1 bytes of its output as
 * text and returns 0 (1 if it can't start). Without, runs it and returns its exit code when `wait`
 * is non-zero (127 if the shell can't start, 1 on a signal or failure), or 0 at once when `wait`
 * is 0, which leaves SIGCHLD ignored for the whole process. */
TESSERA_API int32_t OSExecuteCommand(const char *command, unsigned int wait, char *out,
                                     int32_t out_size);
/* Runs "shutdown -h now": 0 if it exited with 0, else 1. */
TESSERA_API int32_t OSShutdownSystem(void);
/* Runs "shutdown -r now": 0 if it exited with 0, else 1. */
TESSERA_API int32_t OSRestartSystem(void);
/* 1 if `name` occurs anywhere in the first 4095 bytes of the /bin/ps listing, else 0. */
TESSERA_API int32_t OSProcessRunning(const char *name);
/* The lowest process id below 99999 whose program has the base name `name`, or -1. */
TESSERA_API int32_t OSGetAppPid(const char *name);

TESSERA_END_DECLS

#endif /* TESSERA_SYSTEM_H */
