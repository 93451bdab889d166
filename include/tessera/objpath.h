/* CIM object paths parsed into a record inside the caller's buffer. */
#ifndef TESSERA_OBJPATH_H
#define TESSERA_OBJPATH_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

TESSERA_END_DECLS

#endif /* TESSERA_OBJPATH_H */
