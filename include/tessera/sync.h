/* Named locks over System V semaphores. */
#ifndef TESSERA_SYNC_H
#define TESSERA_SYNC_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

/* A lock handle: one System V semaphore, found through the handle alone. */
typedef struct OSLock OSLock;

/* A new lock in the free state; `name` (at most 255 characters) may be null. Null on failure. */
TESSERA_API OSLock *OSLockInit(const char *name);
/* Removes the semaphore and releases the handle: 1, or 0 on failure. */
TESSERA_API int32_t OSLockUninit(OSLock *lock);
/* Waits, without limit, until the lock is free and takes it: 1, or 0 on failure or a signal. */
TESSERA_API int32_t OSLockAcquire(OSLock *lock);
/* Frees the lock, whoever took it: 1, or 0 on failure. */
TESSERA_API int32_t OSLockRelease(OSLock *lock);

TESSERA_END_DECLS

#endif /* TESSERA_SYNC_H */
