/* libtessera: every public declaration of the library. */
#ifndef TESSERA_TESSERA_H
#define TESSERA_TESSERA_H

#define TESSERA_VERSION_MAJOR 1
#define TESSERA_VERSION_MINOR 2
#define TESSERA_VERSION_PATCH 3

#include "tessera/http.h"
#include "tessera/inifile.h"
#include "tessera/mempool.h"
#include "tessera/nvpair.h"
#include "tessera/objpath.h"
#include "tessera/orb_cfg.h"
#include "tessera/session.h"
#include "tessera/strlib.h"
#include "tessera/sync.h"
#include "tessera/system.h"
#include "tessera/trace.h"
#include "tessera/xml.h"

#endif /* TESSERA_TESSERA_H */
