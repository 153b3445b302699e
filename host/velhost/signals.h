// Ctrl-C, SIGTERM and SIGHUP: the first one asks the run to stop, the second one ends the process.
#pragma once

#include "host/bmc/stopsignal.h"

namespace velhost {

/// While it lives, SIGINT, SIGTERM and SIGHUP each request the stop once and then have their default effect again. An
/// ignored SIGHUP stays ignored. After a Ctrl-C that a terminal has echoed, a newline is written to standard error.
/// Only one may exist at a time.
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
