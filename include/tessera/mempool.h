/* Fixed-size memory pools, the process-wide manager, memory blocks and lists. */
#ifndef TESSERA_MEMPOOL_H
#define TESSERA_MEMPOOL_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

TESSERA_END_DECLS

#endif /* TESSERA_MEMPOOL_H */
