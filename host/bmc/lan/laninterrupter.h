// Ends blocking calls of a stopped run on the thread that makes them.
#pragma once

#include <pthread.h>
#include <signal.h>

#include <chrono>
#include <mutex>
#include <thread>

#include "host/base/api.h"
#include "host/base/descriptor.h"
#include "host/bmc/stopsignal.h"

namespace velhost {

/// From the moment at which the run is stopped, or it has been inside for the longest time that is
/// allowed, a thread inside a TScope gets a signal every few milliseconds, so that a system call that it
/// waits in ends with EINTR. Again and again, because one signal alone could come just before the thread
/// begins to wait. The signal is SIGURG, which
/// otherwise does nothing; its handler is put back on destruction. One interrupter at a time.
///
/// The LAN exchanges of a run go this way and not by way of TLanWorker: on one processor handing a
/// call to another thread and its result back costs a tenth of the exchange itself.
class VELHOST_API TLanInterrupter {
 public:
  /// `stop` outlives it, and has its deadline already. A scope that lasts `longest` is noticed at most
  /// a second later.
  TLanInterrupter(const TStopSignal& stop, std::chrono::milliseconds longest);
  ~TLanInterrupter();
  TLanInterrupter(const TLanInterrupter&) = delete;
  TLanInterrupter& operator=(const TLanInterrupter&) = delete;

  /// Marks the calling thread as one to be interrupted. One at a time, and not nested.
  class VELHOST_API TScope {
   public:
    explicit TScope(TLanInterrupter& interrupter);
    ~TScope();
    TScope(const TScope&) = delete;
    TScope& operator=(const TScope&) = delete;

   private:
    TLanInterrupter& interrupter_;
  };

 private:
  using TClock = std::chrono::steady_clock;

  void Watch();
  bool WaitForQuit(std::chrono::milliseconds time) const;
  std::chrono::milliseconds TimeToNextLook() const;
  bool InterruptCall();

  const TStopSignal& stop_;
  const std::chrono::milliseconds longest_;
  TEvent quit_;  // set when the watching thread shall end
  struct sigaction before_ = {};
  std::mutex mutex_;
  bool calling_ = false;  // with the next two under the mutex
  pthread_t caller_{};
  TClock::time_point began_;
  std::thread watcher_;
};

}  // namespace velhost
