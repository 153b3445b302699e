// Keeps signals away from threads that are started meanwhile.
#pragma once

#include <pthread.h>
#include <signal.h>

namespace velhost {

/// Signals are for the thread that runs the collection; a new thread inherits the mask.
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
