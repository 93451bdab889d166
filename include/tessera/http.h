/* Encoding and decoding of the five XML/HTML entities. */
#ifndef TESSERA_HTTP_H
#define TESSERA_HTTP_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

/* Writes `source` into `destination` (size bytes, zeroed first) with < > & " ' as "&lt;",
 * "&gt;", "&amp;", "&quot;", "&apos;". Stops, reporting an assertion, at the first character met
 * with fewer than 7 bytes free, and still returns 1. Returns 0 for a null text or a source longer
 * than size characters. */
TESSERA_API int32_t HttpEncodeSpecialCharacters(const char *source, char *destination,
                                                unsigned int size);
/* Writes `source` into `destination` with the five entities turned back into their characters,
 * in one pass, and terminates it; destination needs room for the source and its NUL. Returns 1;
 * 0 for a null text or a source longer than size characters. */
TESSERA_API int32_t HttpDecodeSpecialCharacters(const char *source, char *destination,
                                                unsigned int size);

TESSERA_END_DECLS

#endif /* TESSERA_HTTP_H */
