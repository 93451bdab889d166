/* Tag values cut out of XML-like text. */
#ifndef TESSERA_XML_H
#define TESSERA_XML_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

/* Copies the raw text between the first "<tag>" of `xml` and the first "</tag>" behind it into
 * `value` (size bytes, zeroed first). Tags are matched as exact text; `tag` has at most 253
 * characters. Returns 1 when the value was delivered, 0 otherwise with `value` untouched. */
TESSERA_API int32_t XmlParseTag(const char *tag, const char *xml, char *value, unsigned int size);

TESSERA_END_DECLS

#endif /* TESSERA_XML_H */
