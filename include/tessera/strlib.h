/* String library: predicates, typed validation, address checks, transforms, tokenizer. */
#ifndef TESSERA_STRLIB_H
#define TESSERA_STRLIB_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

TESSERA_END_DECLS

#endif /* TESSERA_STRLIB_H */
