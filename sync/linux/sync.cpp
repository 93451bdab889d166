// Named locks: a handle over one System V semaphore of one element, looked up afresh by its key
// at every operation. The semaphore serialises callers; the library adds no lock of its own.
#include <cstdint>
#include <cstring>

#include <sys/ipc.h>
#include <sys/sem.h>

#include "memory/heap.h"
#include "sync/linux/lock.h"
#include "trace/report.h"

namespace tessera::sync {
namespace {

constexpr int kCreateFlags = IPC_CREAT | 0666;  // takes over a semaphore that has the key
static_assert(kCreateFlags == 950);

// The fourth argument of semctl, which the C library leaves to its callers to declare.
union SemArgument {
  int val;
  semid_ds *buf;
  unsigned short *array;
};

bool sound(const OSLock *lock) {
  return lock != nullptr && lock->tag == kLockTag;
}

int find_semaphore(const OSLock &lock) {
  return ::semget(lock.key, 1, 0);
}

// The operation lives on this call's stack, so calls sharing a handle never see each other's.
bool change(int id, short delta) {
  sembuf operation{.sem_num = 0, .sem_op = delta, .sem_flg = 0};
  return ::semop(id, &operation, 1) != -1;
}

}  // namespace
}  // namespace tessera::sync

using namespace tessera;
using namespace tessera::sync;

extern "C" OSLock *OSLockInit(const char *name) {
  if (!REPORT_ASSERT(name == nullptr || ::strnlen(name, kNameSize) < kNameSize)) {
    return nullptr;
  }
  heap::Owned<OSLock> lock = heap::make_zeroed<OSLock>();
  if (!REPORT_ASSERT(lock != nullptr)) {
    return nullptr;
  }
  const auto key = static_cast<key_t>(reinterpret_cast<uintptr_t>(lock.get()));
  const int id = ::semget(key, 1, kCreateFlags);
  if (id == -1 || ::semctl(id, 0, SETVAL, SemArgument{.val = 1}) == -1) {
    return nullptr;
  }
  lock->key = key;
  lock->tag = kLockTag;
  if (name != nullptr) {
    std::strcpy(lock->name, name);
  }
  return lock.release();
}

extern "C" int32_t OSLockUninit(OSLock *lock) {
  if (!sound(lock)) {
    return 0;
  }
  const heap::Owned<OSLock> record(lock);  // released whatever the outcome
  const int id = find_semaphore(*record);
  return id != -1 && ::semctl(id, 0, IPC_RMID) != -1 ? 1 : 0;
}

extern "C" int32_t OSLockAcquire(OSLock *lock) {
  if (!REPORT_ASSERT(sound(lock))) {
    return 0;
  }
  const int id = find_semaphore(*lock);
  return id != -1 && change(id, -1) ? 1 : 0;
}

extern "C" int32_t OSLockRelease(OSLock *lock) {
  if (!REPORT_ASSERT(sound(lock))) {
    return 0;
  }
  const int id = find_semaphore(*lock);
  if (!REPORT_ASSERT(id != -1)) {
    return 0;
  }
  return change(id, +1) ? 1 : 0;
}
