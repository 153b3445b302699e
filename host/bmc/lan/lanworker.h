// Runs blocking calls on a separate thread, so that the caller can stop waiting.
#pragma once

#include <functional>
#include <memory>

#include "host/base/api.h"
#include "host/bmc/stopsignal.h"

namespace velhost {

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
