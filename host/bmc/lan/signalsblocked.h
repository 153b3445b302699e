// Blocks signals in threads that are started within a scope.
#pragma once

#include <pthread.h>
#include <signal.h>

namespace velhost {

/// Signals are handled by the thread that runs the collection; new threads inherit the mask.
class TSignalsBlocked {
 public:
  TSignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~TSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  TSignalsBlocked(const TSignalsBlocked&) = delete;
  TSignalsBlocked& operator=(const TSignalsBlocked&) = delete;

 private:
  sigset_t before_;
};

}  // namespace velhost
