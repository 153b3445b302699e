// The collector's trace: on standard error as far as it was asked for, and into a file whole.
#pragma once

#include <memory>
#include <string>

#include "host/model/tracelogger.h"
#include "host/output/iinstancewriter.h"
#include "host/velhost/commandline.h"

namespace velhost {

/// {"severity":3,"level":"debug","message":"..."} and a newline; bytes that are no UTF-8 show as U+FFFD.
std::string FormatTraceJson(ILogger::EVELLogSeverity severity, const std::string& message);

/// The least important severity that -v shows: 0 warning, 1 status, 2 debug, 3 and more verbose.
ILogger::EVELLogSeverity ShownSeverity(int verbosity);

/// Installs itself as the core logger while it lives. The collector writes nothing but its own lines
/// there, from its loading to its unloading.
class TTrace {
 public:
  /// The file is not there before OpenFile; lines wait for it.
  explicit TTrace(const TCommonOptions& options);
  ~TTrace();
  TTrace(const TTrace&) = delete;
  TTrace& operator=(const TTrace&) = delete;

  /// Creates the file, or empties it. Throws THostError (kNotCreated).
  void OpenFile();
  /// Writes what is still buffered. Throws THostError (kNotWritten).
  void Finish();

 private:
  class TFile;
  TTraceLogger logger_;
  std::unique_ptr<TFile> file_;
};

}  // namespace velhost
