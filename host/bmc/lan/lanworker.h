// Runs blocking calls on a thread of its own, so that whoever waits for them can stop waiting.
#pragma once

#include <functional>
#include <memory>

#include "host/base/api.h"
#include "host/bmc/stopsignal.h"

namespace velhost {

/// One thread, one job at a time. Opening a session cannot be interrupted everywhere; a run that is
/// stopped leaves the thread behind in its call instead. It ends by itself when the call does, which
/// the session's time bounds, and whatever the job uses must be owned by the job until then.
class VELHOST_API TLanWorker {
 public:
  TLanWorker();
  /// Waits for the thread to end unless it was left behind.
  ~TLanWorker();
  TLanWorker(const TLanWorker&) = delete;
  TLanWorker& operator=(const TLanWorker&) = delete;

  /// Runs `job` and waits for it: true once it is over. False when the run was stopped before: then,
  /// and for every later job, nobody waits any more, and later jobs are not run. `job` must not throw.
  bool Run(std::function<void()> job, const TStopSignal& stop);

 private:
  struct TShared;
  static void Serve(const std::shared_ptr<TShared>& shared);

  std::shared_ptr<TShared> shared_;
  bool leftBehind_ = false;
};

}  // namespace velhost
