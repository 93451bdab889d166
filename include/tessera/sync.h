/* Named locks over System V semaphores. */
#ifndef TESSERA_SYNC_H
#define TESSERA_SYNC_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

TESSERA_END_DECLS

#endif /* TESSERA_SYNC_H */
