// The record behind an OSLock handle. Unlike the other handle records it bears its tag last.
#pragma once

#include <cstddef>
#include <cstdint>

#include <sys/sem.h>
#include <sys/types.h>

#include "tessera/sync.h"

namespace tessera::sync {

inline constexpr uint32_t kLockTag = 0x13517537;
inline constexpr std::size_t kNameSize = 256;  // up to 255 characters and the terminator

}  // namespace tessera::sync

struct OSLock {
  key_t key;                            // the semaphore's IPC key: the record's own address
  char name[tessera::sync::kNameSize];  // kept for the caller's eyes; never read again
  sembuf operation;                     // left zero: each call builds its own operation
  uint32_t tag;                         // tessera::sync::kLockTag
};

static_assert(sizeof(key_t) == 4 && sizeof(sembuf) == 6);
static_assert(offsetof(OSLock, key) == 0 && offsetof(OSLock, name) == 4);
static_assert(offsetof(OSLock, operation) == 260 && offsetof(OSLock, tag) == 268);
static_assert(sizeof(OSLock) == 272);
