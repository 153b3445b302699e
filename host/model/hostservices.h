// The services behind the static functions of the contract. The host installs them before it loads a plugin
// and removes them afterwards. One set per process, without locking, since the host and its plugin share one
// thread.
#pragma once

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>
#include <string>
#include <utility>
#include <vector>

#include "host/base/api.h"
#include "nkrovel20/icimobjects.h"
#include "nkrovel20/ilogger.h"
#include "nkrovel20/tcimdatetime.h"

namespace velhost {

/// What the host knows about the server it runs on.
class VELHOST_API IHostEnvironment {
 public:
  virtual ~IHostEnvironment();
  /// The machine type; empty if unknown.
  virtual std::string MachineType() = 0;
  /// The local time with its offset from UTC.
  virtual TCIMDateTime LocalTime() = 0;
};

/// The operating system's clock in the process's time zone, and an unknown machine type.
class VELHOST_API TSystemEnvironment : public IHostEnvironment {
 public:
  std::string MachineType() override { return {}; }
  TCIMDateTime LocalTime() override;
};

class VELHOST_API THostServices {
 public:
  /// Null removes the service; the defaults are no plugin manager, a logger that drops every line, and
  /// TSystemEnvironment. Logger and environment are not owned.
  static void SetPluginManager(boost::shared_ptr<ICIMNamespace> pluginManager);
  static void SetCoreLogger(ILogger* logger);
  static void SetEnvironment(IHostEnvironment* environment);
};

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
