/* Controller settings by name: catalogue, store and daemon access, defaults, status helpers. */
#ifndef TESSERA_ORB_CFG_H
#define TESSERA_ORB_CFG_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

TESSERA_END_DECLS

#endif /* TESSERA_ORB_CFG_H */
