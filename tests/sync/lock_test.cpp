// Named locks on real System V semaphores.
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include <pthread.h>
#include <sched.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include "capture_sink.h"
#include "sync/linux/lock.h"
#include "tessera/sync.h"

namespace tessera::test {
namespace {

int semaphore_of(const OSLock *lock) {
  return semget(lock->key, 1, 0);
}
int value_of(const OSLock *lock) {
  return semctl(semaphore_of(lock), 0, GETVAL);
}

// Waits, without a time limit, until `count` callers wait on the lock's semaphore.
void await_waiters(const OSLock *lock, int count) {
  while (semctl(semaphore_of(lock), 0, GETNCNT) != count) {
    sched_yield();
  }
}

TEST(Lock, InitMakesAFreeLockWithItsOwnKeyAndNameWhoseTagComesLast) {
  const std::string longest(255, 'n');
  OSLock *first = OSLockInit(longest.c_str());
  OSLock *second = OSLockInit(longest.c_str());
  OSLock *unnamed = OSLockInit(nullptr);
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  ASSERT_NE(unnamed, nullptr);
  EXPECT_EQ(first->key, static_cast<key_t>(reinterpret_cast<uintptr_t>(first)));
  EXPECT_NE(first->key, second->key);
  EXPECT_EQ(first->name, longest);
  EXPECT_STREQ(unnamed->name, "");
  EXPECT_EQ(first->tag, 0x13517537U);
  for (OSLock *lock : {first, second, unnamed}) {
    EXPECT_EQ(value_of(lock), 1);
  }
  // Equal names don't tie locks together: both can be held at once.
  EXPECT_EQ(OSLockAcquire(first), 1);
  EXPECT_EQ(OSLockAcquire(second), 1);
  EXPECT_EQ(OSLockAcquire(unnamed), 1);
  for (OSLock *lock : {first, second, unnamed}) {
    const key_t key = lock->key;
    EXPECT_EQ(OSLockRelease(lock), 1);
    EXPECT_EQ(OSLockUninit(lock), 1);
    EXPECT_EQ(semget(key, 1, 0), -1) << "the semaphore is removed";
  }
  EXPECT_TRUE(CaptureSink::instance().reports().empty());
}

TEST(Lock, InitFailsForALongNameOrWithoutMemory) {
  EXPECT_EQ(OSLockInit(std::string(256, 'n').c_str()), nullptr);
  EXPECT_EQ(CaptureSink::instance().assertions(), 1U);
}

// Release raises the value, with or without an acquire before, and fails silently beyond the
// semaphore's largest value.
TEST(Lock, ReleaseRaisesTheValueUpToTheLargest) {
  OSLock *lock = OSLockInit(nullptr);
  ASSERT_NE(lock, nullptr);
  EXPECT_EQ(OSLockRelease(lock), 1);
  EXPECT_EQ(value_of(lock), 2);
  EXPECT_EQ(OSLockAcquire(lock), 1);
  EXPECT_EQ(OSLockAcquire(lock), 1);
  EXPECT_EQ(value_of(lock), 0);
  ASSERT_EQ(semctl(semaphore_of(lock), 0, SETVAL, 32767), 0);  // SEMVMX
  EXPECT_EQ(OSLockRelease(lock), 0);
  EXPECT_TRUE(CaptureSink::instance().reports().empty());
  EXPECT_EQ(OSLockUninit(lock), 1);
}

// Null and forged handles fail with the assertion, but OSLockUninit stays silent. A semaphore
// removed behind a handle fails each operation, with the assertion on release only; the record is
// released all the same.
TEST(Lock, BadHandlesAndRemovedSemaphoresFail) {
  OSLock forged{};
  forged.tag = 0x13517538;
  for (OSLock *lock : {static_cast<OSLock *>(nullptr), &forged}) {
    CaptureSink::instance().reset();
    EXPECT_EQ(OSLockAcquire(lock), 0);
    EXPECT_EQ(OSLockRelease(lock), 0);
    EXPECT_EQ(CaptureSink::instance().assertions(), 2U);
    EXPECT_EQ(OSLockUninit(lock), 0);
    EXPECT_EQ(CaptureSink::instance().reports().size(), 2U);
  }
  CaptureSink::instance().reset();
  OSLock *lock = OSLockInit("lock");
  ASSERT_NE(lock, nullptr);
  ASSERT_EQ(semctl(semaphore_of(lock), 0, IPC_RMID), 0);
  EXPECT_EQ(OSLockAcquire(lock), 0);
  EXPECT_TRUE(CaptureSink::instance().reports().empty());
  EXPECT_EQ(OSLockRelease(lock), 0);
  EXPECT_EQ(CaptureSink::instance().assertions(), 1U);
  EXPECT_EQ(OSLockUninit(lock), 0);
  EXPECT_EQ(CaptureSink::instance().reports().size(), 1U);
}

void ignore_signal(int /*signal*/) {}

// A signal breaks a wait off with 0, without retry even under SA_RESTART; a thread that waits
// on gets the lock when this thread releases it.
TEST(LockThreads, ASignalBreaksAWaitOffAndAReleaseEndsIt) {
  OSLock *lock = OSLockInit("lock");
  ASSERT_NE(lock, nullptr);
  ASSERT_EQ(OSLockAcquire(lock), 1);
  struct sigaction action {};
  struct sigaction previous {};
  action.sa_handler = ignore_signal;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  ASSERT_EQ(sigaction(SIGUSR1, &action, &previous), 0);
  std::atomic<int> result{-1};
  std::thread interrupted([&] { result = OSLockAcquire(lock); });
  await_waiters(lock, 1);
  while (result.load() == -1) {
    pthread_kill(interrupted.native_handle(), SIGUSR1);
    sched_yield();
  }
  interrupted.join();
  sigaction(SIGUSR1, &previous, nullptr);
  EXPECT_EQ(result.load(), 0);
  EXPECT_EQ(value_of(lock), 0);  // still held by this thread

  result = -1;
  std::thread waiter([&] { result = OSLockAcquire(lock); });
  await_waiters(lock, 1);
  EXPECT_EQ(OSLockRelease(lock), 1);
  waiter.join();
  EXPECT_EQ(result.load(), 1);
  EXPECT_EQ(value_of(lock), 0);
  EXPECT_TRUE(CaptureSink::instance().reports().empty());
  EXPECT_EQ(OSLockUninit(lock), 1);
}

// Threads sharing one handle: each call's operation is its own, so the handle is only read, and
// the lock lets one holder in at a time.
TEST(LockSharing, SerialisesThreadsSharingOneHandle) {
  OSLock *lock = OSLockInit("shared");
  ASSERT_NE(lock, nullptr);
  std::atomic<int> inside{0};
  std::atomic<int> overlaps{0};
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 200; ++i) {
        failures += 1 - OSLockAcquire(lock);
        if (inside.fetch_add(1) != 0) {
          ++overlaps;
        }
        sched_yield();
        inside.fetch_sub(1);
        failures += 1 - OSLockRelease(lock);
      }
    });
  }
  for (auto &thread : threads) {
    thread.join();
  }
  EXPECT_EQ(failures.load(), 0);
  EXPECT_EQ(overlaps.load(), 0);
  EXPECT_EQ(value_of(lock), 1);
  EXPECT_EQ(OSLockUninit(lock), 1);
}

TEST(LockProcesses, AChildWaitsUntilTheParentReleases) {
  OSLock *lock = OSLockInit("lock");
  ASSERT_NE(lock, nullptr);
  ASSERT_EQ(OSLockAcquire(lock), 1);
  const pid_t child = fork();
  if (child == 0) {  // the handle crossed fork: same key, same semaphore
    const int acquired = OSLockAcquire(lock);
    const int released = OSLockRelease(lock);
    _exit(acquired == 1 && released == 1 ? 0 : 1);
  }
  ASSERT_GT(child, 0);
  await_waiters(lock, 1);
  EXPECT_EQ(OSLockRelease(lock), 1);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  EXPECT_EQ(value_of(lock), 1);
  EXPECT_EQ(OSLockUninit(lock), 1);
}

}  // namespace
}  // namespace tessera::test
