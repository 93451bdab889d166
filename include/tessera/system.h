/* Operating-system services: time, files, console, commands and processes. */
#ifndef TESSERA_SYSTEM_H
#define TESSERA_SYSTEM_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

TESSERA_END_DECLS

#endif /* TESSERA_SYSTEM_H */
