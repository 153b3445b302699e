// Ctrl-C, SIGTERM and a terminal that is gone: the first asks the run to stop, the second ends the process.
#pragma once

#include "host/bmc/stopsignal.h"

namespace velhost {

/// While it lives, SIGINT, SIGTERM and SIGHUP request the stop once and then have their default effect
/// again. A SIGHUP that is ignored stays so. After a Ctrl-C that a terminal has echoed, standard error goes to the next
/// line. One at a time.
class TSignalGuard {
 public:
  explicit TSignalGuard(TStopSignal& stop);
  ~TSignalGuard();
  TSignalGuard(const TSignalGuard&) = delete;
  TSignalGuard& operator=(const TSignalGuard&) = delete;

 private:
  bool hangUp_ = false;
};

}  // namespace velhost
