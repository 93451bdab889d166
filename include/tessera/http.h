/* Encoding and decoding of the five XML/HTML entities. */
#ifndef TESSERA_HTTP_H
#define TESSERA_HTTP_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

TESSERA_END_DECLS

#endif /* TESSERA_HTTP_H */
