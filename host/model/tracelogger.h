// The core logger: passes the plugin's messages, unformatted, to the sinks.
#pragma once
#include "host/base/api.h"

#include <boost/function.hpp>
#include <string>
#include <utility>
#include <vector>

#include "nkrovel20/ilogger.h"

namespace velhost {

class VELHOST_API TTraceLogger : public ILogger {
 public:
  using TSink = boost::function<void(EVELLogSeverity, const std::string&)>;

  /// The sink receives every message of severity `least` or higher. Sinks are called in the order they were
  /// added.
  void AddSink(EVELLogSeverity least, TSink sink) { sinks_.push_back({least, std::move(sink)}); }
  void Log(EVELLogSeverity severity, const std::string& message) override;

  /// "error", "warning", "status", "debug", "verbose"; "unknown" for any other number.
  static const char* SeverityName(EVELLogSeverity severity);
  /// The line as people read it: the severity's name, a space, the message without one trailing newline
  /// (continuation lines are indented by two spaces), and a newline.
  static std::string FormatText(EVELLogSeverity severity, const std::string& message);

 private:
  struct TEntry {
    EVELLogSeverity least;
    TSink sink;
  };
  std::vector<TEntry> sinks_;
};

}  // namespace velhost
