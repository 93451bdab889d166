/* Diagnostics: source file names for reports. */
#ifndef TESSERA_TRACE_H
#define TESSERA_TRACE_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

/* The base name of a source path: a pointer behind its last '/', or to its start without one.
 * `path` must not be null. */
TESSERA_API const char *TraceFileName(const char *path);

TESSERA_END_DECLS

#endif /* TESSERA_TRACE_H */
