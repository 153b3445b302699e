// The core logger: hands the plugin's lines to whoever listens, unformatted.
#pragma once
#include "host/base/api.h"

#include <boost/function.hpp>
#include <string>
#include <vector>

#include "nkrovel20/ilogger.h"

namespace velhost {

class VELHOST_API TTraceLogger : public ILogger {
 public:
  using TSink = boost::function<void(EVELLogSeverity, const std::string&)>;

  /// Every line of severity `least` or more important goes to the sink, in the order of the sinks.
  void AddSink(EVELLogSeverity least, TSink sink) { sinks_.push_back({least, std::move(sink)}); }
  void Log(EVELLogSeverity severity, const std::string& message) override;

  /// "error", "warning", "status", "debug", "verbose"; "unknown" for any other number.
  static const char* SeverityName(EVELLogSeverity severity);
  /// The line as people read it: the severity's word, a blank and the message without one trailing
  /// newline, further lines indented by two blanks, and a newline at the end.
  static std::string FormatText(EVELLogSeverity severity, const std::string& message);

 private:
  struct TEntry {
    EVELLogSeverity least;
    TSink sink;
  };
  std::vector<TEntry> sinks_;
};

}  // namespace velhost
