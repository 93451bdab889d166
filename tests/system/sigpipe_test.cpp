// The guard that keeps a write to a vanished peer from killing the process.
#include <gtest/gtest.h>

#include <csignal>

#include <pthread.h>

#include "system/linux/sigpipe.h"

namespace tessera {
namespace {

bool pending_sigpipe() {
  sigset_t pending;
  sigemptyset(&pending);
  sigpending(&pending);
  return sigismember(&pending, SIGPIPE) == 1;
}

bool blocked_sigpipe() {
  sigset_t mask;
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  return sigismember(&mask, SIGPIPE) == 1;
}

// A SIGPIPE raised while the guard lives is swallowed and the mask restored; one that was pending
// before stays the caller's.
TEST(SigpipeGuard, SwallowsItsOwnSigpipeOnly) {
  {
    const SigpipeGuard guard;
    EXPECT_TRUE(blocked_sigpipe());
    pthread_kill(pthread_self(), SIGPIPE);  // would end the test program if delivered
    EXPECT_TRUE(pending_sigpipe());
  }
  EXPECT_FALSE(pending_sigpipe());
  EXPECT_FALSE(blocked_sigpipe());

  sigset_t pipe;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
  pthread_kill(pthread_self(), SIGPIPE);
  { const SigpipeGuard guard; }
  EXPECT_TRUE(pending_sigpipe());
  EXPECT_TRUE(blocked_sigpipe());
  const timespec now{};
  sigtimedwait(&pipe, nullptr, &now);
  pthread_sigmask(SIG_UNBLOCK, &pipe, nullptr);
}

}  // namespace
}  // namespace tessera
