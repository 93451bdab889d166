/* Name/value list strings such as 'a=1,b=2'. */
#ifndef TESSERA_NVPAIR_H
#define TESSERA_NVPAIR_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

TESSERA_END_DECLS

#endif /* TESSERA_NVPAIR_H */
