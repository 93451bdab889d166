/* CIM object paths parsed into a record inside the caller's buffer. */
#ifndef TESSERA_OBJPATH_H
#define TESSERA_OBJPATH_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

/* The magic of a parsed record. */
#define OBJECTPATH_MAGIC 0xA2175D71U

/* One key property: name and value, both inside the record's buffer. */
typedef struct ObjectPathPair {
  char *name;
  char *value;
} ObjectPathPair;

/* A parsed object path, at the start of the caller's buffer, followed there by all its strings.
 * The pair table stands directly behind the class name's terminator without alignment, so on
 * targets that fault on unaligned access copy its entries out with memcpy before use. The library
 * itself takes a buffer of any alignment; a tool that reads the record's fields directly aligns
 * the buffer for ObjectPath. The record lasts as long as the buffer and cannot be moved: parse
 * again instead. */
typedef struct ObjectPath {
  uint32_t magic;        /* OBJECTPATH_MAGIC once parsed; anything else: not valid */
  char *host;            /* host text, or the empty string */
  char *nameSpace;       /* namespace, beginning with "root"; "root/cimv2" by default */
  char *className;       /* class name, possibly empty */
  uint16_t pairCount;    /* entries in pairs */
  ObjectPathPair *pairs; /* the key properties, in the order of the path */
} ObjectPath;

/* Parses `text`, such as '//host/root/cimv2:CIM_Foo.Key=1,Other=2', into the buffer `path` of
 * `size` bytes, record included. Returns 0; 4 for a null argument, a size of 0 or below, a path
 * without '.' behind its last ':' or a blank in a key name; 504 for a buffer too small. */
TESSERA_API int32_t ObjectPathInit(ObjectPath *path, int32_t size, const char *text);
/* The value of the first key property named exactly `name` (case-sensitive), pointing into the
 * record's buffer; null when there is none, or, with a report, for a null argument or a record
 * that is not parsed. */
TESSERA_API char *ObjectPathGetPropertyValue(const ObjectPath *path, const char *name);

TESSERA_END_DECLS

#endif /* TESSERA_OBJPATH_H */
