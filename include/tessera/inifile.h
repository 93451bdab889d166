/* INI files: documents of sections and keys, read, walked, edited and saved. */
#ifndef TESSERA_INIFILE_H
#define TESSERA_INIFILE_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

TESSERA_END_DECLS

#endif /* TESSERA_INIFILE_H */
