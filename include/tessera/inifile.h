/* INI files: documents of sections and keys, read, walked, edited and saved. */
#ifndef TESSERA_INIFILE_H
#define TESSERA_INIFILE_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

/* Opaque handles. Every operation checks a handle's tag before it uses it, so a null or stale
 * handle, or one of the wrong kind, gives the operation's failure result. */
typedef struct InifileDocument InifileDocument;
typedef struct InifileSection InifileSection;
typedef struct InifileKey InifileKey;

/* Reads the file at `path` (at most 256 characters) into a new document stored in *out.
 * Returns 0 (also when reading stopped early at an over-long key name or value), 1 for a null
 * argument, a too-long path or an unreadable file, 3 when out of memory; *out is null unless 0. */
TESSERA_API int32_t inifileOpen(const char *path, InifileDocument **out);

/* Removes the leading blanks (spaces, not tabs) of `text` in place. */
TESSERA_API void inifileTrimLeft(char *text);

/* Removes the trailing blanks (spaces, not tabs) of `text` in place. */
TESSERA_API void inifileTrimRight(char *text);

/* Deletes every byte `ch` from `text` in place, keeping the order of the others. */
TESSERA_API void inifileStripChar(char *text, char ch);

/* Returns a new empty document, or null when out of memory. */
TESSERA_API InifileDocument *inifileCreate(void);

/* Frees the document with all its sections and keys. Returns 0, 2 for null, 4 for a wrong tag. */
TESSERA_API int32_t inifileClose(InifileDocument *document);

/* Returns the section at `index` (from 0), or null past the end. */
TESSERA_API InifileSection *inifileGetSection(InifileDocument *document, uint32_t index);

/* Returns the first section named exactly `name`, or null. */
TESSERA_API InifileSection *inifileGetSectionByName(InifileDocument *document, const char *name);

/* Returns the section's name (possibly empty), or null for a bad handle. */
TESSERA_API const char *inifileGetSectionName(InifileSection *section);

/* Returns the number of keys of the section, 0 for a bad handle. */
TESSERA_API uint32_t inifileGetNumKeys(InifileSection *section);

/* Returns the file line of the section's header, 0 for a section added by editing,
 * 0xFFFFFFFF for a bad handle. */
TESSERA_API uint32_t inifileGetSectionLineNumber(InifileSection *section);

/* Returns the key at `index` (from 0) of the section, or null past the end. */
TESSERA_API InifileKey *inifileGetKey(InifileSection *section, uint32_t index);

/* Returns the first key of the section named exactly `name`, or null. */
TESSERA_API InifileKey *inifileGetKeyByName(InifileSection *section, const char *name);

/* Returns the key's name (possibly empty), or null for a bad handle. */
TESSERA_API const char *inifileGetKeyName(InifileKey *key);

/* Returns the key's value (possibly empty), or null for a bad handle. The pointer stays valid,
 * and shows later changes made by inifileSetKeyValueByName, until the key is removed or the
 * document closed. */
TESSERA_API const char *inifileGetKeyValue(InifileKey *key);

/* Returns the file line of the key, 0 for a key added by editing, 0xFFFFFFFF for a bad
 * handle. */
TESSERA_API uint32_t inifileGetKeyLineNumber(InifileKey *key);

/* Returns the value of the first key `keyName` in the first section `sectionName`, or null. */
TESSERA_API const char *inifileGetKeyValueByName(InifileDocument *document, const char *sectionName,
                                                 const char *keyName);

/* Appends a section named `name` (at most 255 characters, may be empty) and returns it; null
 * for a bad document or name. Sections of the same name may coexist. */
TESSERA_API InifileSection *inifileAddNewSection(InifileDocument *document, const char *name);

/* Appends the key `keyName` with `value` to the section; an existing key is left alone.
 * Returns 0, 1 if the key exists, 2 for a null text, 3 when out of memory, 4 for a bad section,
 * 9 for a key name over 255 characters. Values are kept to their first 1023 characters. */
TESSERA_API int32_t inifileSetKeyValueByHandle(InifileSection *section, const char *keyName,
                                               const char *value);

/* Sets the value of key `keyName` in section `sectionName`, adding the section and the key when
 * missing. Returns 0, 2 for a null document or text, 3 when out of memory, 4 for a wrong tag,
 * 8 or 9 for a section or key name over 255 characters. Values are kept to their first 1023
 * characters. */
TESSERA_API int32_t inifileSetKeyValueByName(InifileDocument *document, const char *sectionName,
                                             const char *keyName, const char *value);

/* Removes the key from the section and frees it. Returns 0, or 1 when there is nothing to
 * remove (bad handle, empty section, or a key of another section). */
TESSERA_API int32_t inifileRemoveKey(InifileSection *section, InifileKey *key);

/* Writes the document to `path` in the normal form. Returns 0, 2 for null, 4 for a wrong tag,
 * 11 when the file can't be opened for writing. */
TESSERA_API int32_t inifileSave(InifileDocument *document, const char *path);

TESSERA_END_DECLS

#endif /* TESSERA_INIFILE_H */
