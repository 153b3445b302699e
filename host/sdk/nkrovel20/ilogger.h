// The host's core logger.
#pragma once

#include <string>

#include "nkrovel20/api.h"

namespace NKROVEL20 {

class NKROVEL20_API ILogger {
 public:
  enum EVELLogSeverity : int {
    kError = 0,
    kWarning = 1,
    kStatus = 2,
    kDebug = 3,
    kVerbose = 4,
  };

  virtual ~ILogger();
  /// Logs one message, which may contain newlines. The host does the formatting.
  virtual void Log(EVELLogSeverity severity, const std::string& message) = 0;
};

}  // namespace NKROVEL20
