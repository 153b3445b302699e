// Ctrl-C and SIGTERM: the first asks the run to stop, the second ends the process.
#pragma once

#include "host/serviceprocessor/stopsignal.h"

namespace NKROVEL20 {

/// While it lives, SIGINT and SIGTERM request the stop once and then have their default effect
/// again, and a closed pipe is an error of the write instead of a signal. One at a time.
class TSignalGuard {
 public:
  explicit TSignalGuard(TStopSignal& stop);
  ~TSignalGuard();
  TSignalGuard(const TSignalGuard&) = delete;
  TSignalGuard& operator=(const TSignalGuard&) = delete;
};

}  // namespace NKROVEL20
