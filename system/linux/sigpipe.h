// Keeps a write to a peer that has gone away from killing the process with SIGPIPE. While the
// guard lives, SIGPIPE is blocked for the calling thread; when it goes, a SIGPIPE raised in the
// meantime is discarded (one that was pending before stays pending) and the mask is restored.
// The write itself keeps its own flags, and learns of the broken pipe from its result.
#pragma once

#include <cerrno>
#include <csignal>
#include <ctime>

#include <pthread.h>

namespace tessera {

class SigpipeGuard {
 public:
  SigpipeGuard() noexcept {
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    sigset_t pending;
    sigemptyset(&pending);
    was_pending_ = sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1;
    blocked_ = pthread_sigmask(SIG_BLOCK, &pipe_, &saved_) == 0;
  }
  ~SigpipeGuard() {
    if (!blocked_) {
      return;
    }
    if (!was_pending_) {
      const timespec now{};
      while (sigtimedwait(&pipe_, nullptr, &now) < 0 && errno == EINTR) {
      }
    }
    pthread_sigmask(SIG_SETMASK, &saved_, nullptr);
  }
  SigpipeGuard(const SigpipeGuard &) = delete;
  SigpipeGuard &operator=(const SigpipeGuard &) = delete;

 private:
  sigset_t pipe_;
  sigset_t saved_;
  bool was_pending_ = false;
  bool blocked_ = false;
};

}  // namespace tessera
