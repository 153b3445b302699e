// Blocking calls of a run that may be stopped: one class interrupts them on the thread that makes them, the other makes
// them on a thread of its own, which a stopped run leaves behind.
#pragma once

#include <pthread.h>
#include <signal.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "host/base/api.h"
#include "host/base/descriptor.h"
#include "host/bmc/stopsignal.h"

namespace velhost {

/// Once the run is stopped, or a thread has been inside a TScope for longer than allowed, that thread gets a signal
/// every few milliseconds, so that a system call that it waits in ends with EINTR. The signal is repeated because a
/// single one could arrive just before the thread begins to wait. It is SIGURG, which otherwise does nothing; the
/// previous handler is restored on destruction. One interrupter at a time.
///
/// A run's LAN exchanges use this rather than TLanWorker: on a single processor, handing a call to another thread and
/// its result back costs a tenth of the exchange itself.
class VELHOST_API TLanInterrupter {
 public:
  /// `stop` must outlive this object and already have its deadline. A scope that lasts longer than `longest` is
  /// noticed at most a second late.
  TLanInterrupter(const TStopSignal& stop, std::chrono::milliseconds longest);
  ~TLanInterrupter();
  TLanInterrupter(const TLanInterrupter&) = delete;
  TLanInterrupter& operator=(const TLanInterrupter&) = delete;

  /// Marks the calling thread as interruptible. One at a time; not nested.
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
  TEvent quit_;  // set to end the watching thread
  struct sigaction before_ = {};
  std::mutex mutex_;
  bool calling_ = false;  // guarded by mutex_, as are the next two
  pthread_t caller_{};
  TClock::time_point began_;
  std::thread watcher_;
};

/// One thread, one job at a time. Opening a session cannot be interrupted everywhere, so a stopped run abandons the
/// thread in its call instead. The thread ends with the call, which the session's time bounds; until then the job
/// must own everything that it uses.
class VELHOST_API TLanWorker {
 public:
  TLanWorker();
  /// Waits for the thread to end unless it was abandoned.
  ~TLanWorker();
  TLanWorker(const TLanWorker&) = delete;
  TLanWorker& operator=(const TLanWorker&) = delete;

  /// Runs `job` and waits for it; returns true when it is over. Returns false if the run is stopped first: then
  /// nobody waits for this or any later job, and later jobs are not run. `job` must not throw.
  bool Run(std::function<void()> job, const TStopSignal& stop);

 private:
  struct TShared;
  static void Serve(const std::shared_ptr<TShared>& shared);

  std::shared_ptr<TShared> shared_;
  bool leftBehind_ = false;
};

}  // namespace velhost
