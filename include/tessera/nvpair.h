/* Name/value list strings such as 'a=1,b=2'. */
#ifndef TESSERA_NVPAIR_H
#define TESSERA_NVPAIR_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

/* Results of the list readers. */
#define NVPAIR_OK 0U
#define NVPAIR_INVALID 1U          /* null argument, or (value readers) a malformed list */
#define NVPAIR_NO_INDEX 2U         /* NvPairListGetName: index beyond the list */
#define NVPAIR_TOO_SMALL 3U        /* the name or value does not fit into size - 1 characters */
#define NVPAIR_NOT_FOUND 4U        /* value readers: empty list or no such name */
#define NVPAIR_NO_NAME 0x0FFFFFFFU /* NvPairListGetName: the list ended where a name begins */

/* Copies the name of pair `index` (from 0) of `list` into `name` (size bytes, zeroed first). A
 * backslash takes the next character literally; the name ends at ',' or '='. Returns a result
 * above: 0, 1 for a null list or name, 2, 3 (the first size - 1 characters kept) or 0x0FFFFFFF. */
TESSERA_API uint32_t NvPairListGetName(const char *list, int32_t index, unsigned int size,
                                       char *name);
/* Copies the raw value of the first pair whose name is a prefix of `name` into `value` (size
 * bytes, zeroed first). Returns 0, 1 for a malformed list or a null argument, 3 or 4. */
TESSERA_API uint32_t NvPairListGetValue(const char *list, const char *name, unsigned int size,
                                        char *value);
/* As NvPairListGetValue, and resolves "#EQU#" and "#CMT#" in the value delivered. */
TESSERA_API uint32_t NvPairListGetLongValue(const char *list, const char *name, unsigned int size,
                                            char *value);
/* The text with '=' written as "#EQU#" and ',' as "#CMT#", in the library's one static buffer:
 * at most 1199 characters, cut before the first character or escape that does not fit. The next
 * call overwrites it; not thread-safe. */
TESSERA_API char *NvPairEscapeSep(const char *text);
/* Resolves "#EQU#" to '=' and "#CMT#" to ',' in place, in one pass. Returns text. */
TESSERA_API char *NvPairUnescapeSep(char *text);
/* Tidies line ends in place: CR LF and lone CR become LF, and bytes of value 32 and below are
 * trimmed from the end of every line. Returns text. */
TESSERA_API char *NvPairCleanValue(char *text);

TESSERA_END_DECLS

#endif /* TESSERA_NVPAIR_H */
