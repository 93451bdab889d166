/* Tag values cut out of XML-like text. */
#ifndef TESSERA_XML_H
#define TESSERA_XML_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

TESSERA_END_DECLS

#endif /* TESSERA_XML_H */
