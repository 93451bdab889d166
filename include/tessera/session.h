/* Management sessions: identity, listing, inspection and closing. */
#ifndef TESSERA_SESSION_H
#define TESSERA_SESSION_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

TESSERA_END_DECLS

#endif /* TESSERA_SESSION_H */
