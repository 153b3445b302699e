// The collector's trace: on standard error as far as -v asks for it, and complete in a file.
#pragma once

#include <memory>
#include <string>

#include "host/model/hostservices.h"
#include "host/velhost/commandline.h"

namespace velhost {

/// {"severity":3,"level":"debug","message":"..."} and a newline; bytes that are not UTF-8 become U+FFFD.
std::string FormatTraceJson(ILogger::EVELLogSeverity severity, const std::string& message);

/// The least important severity that -v shows: 0 warning, 1 status, 2 debug, 3 and more verbose.
ILogger::EVELLogSeverity ShownSeverity(int verbosity);

/// Installs itself as the core logger while it lives. Only the collector writes lines there, from when it is loaded
/// until it is unloaded.
class TTrace {
 public:
  /// The file does not exist before OpenFile; lines are buffered until then.
  explicit TTrace(const TCommonOptions& options);
  ~TTrace();
  TTrace(const TTrace&) = delete;
  TTrace& operator=(const TTrace&) = delete;

  /// Creates or truncates the file. Throws THostError (kNotCreated).
  void OpenFile();
  /// Writes what is still buffered. Throws THostError (kNotWritten).
  void Finish();

 private:
  class TFile;
  TTraceLogger logger_;
  std::unique_ptr<TFile> file_;
};

}  // namespace velhost
