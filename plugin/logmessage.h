// The one path by which the collector writes log lines.
#pragma once

#include <string>

#include "nkrovel20/ilogger.h"
#include "nkrovel20/tpluginmanagernamespace.h"

namespace torgareg {

/// Forwards lines to the host's core logger, which is fetched anew for each. Lines written before
/// the plugin is registered, and empty lines, are dropped. What the host's logger throws passes.
/// The singleton is never deleted: a log line may be written while anything else goes away.
class LogMessage {
 public:
  virtual ~LogMessage();

  /// The singleton, created on the first call. Not guarded: loading the library makes that call.
  static LogMessage* getInstance();
  /// Notes the registration; null drops all lines again. Not owned.
  static void setPluginInstance(NKROVEL20::TPluginManagerProvider* provider);

  void write(const std::string& message, NKROVEL20::ILogger::EVELLogSeverity severity) const;
  void writeError(const std::string& message) const;
  void writeWarning(const std::string& message) const;
  void writeStatus(const std::string& message) const;
  void writeDebug(const std::string& message) const;
  void writeVerbose(const std::string& message) const;

  /// The text of a platform error code: empty for every code on this platform.
  std::string lookupWin32Error(int code) const;
  /// Writes that text as a verbose line, and nothing where it is empty.
  void writeWin32Error(int code) const;

 private:
  LogMessage() = default;

  static LogMessage* pLogMsg;
  static NKROVEL20::TPluginManagerProvider* pluginInstance;
};

/// The plain decimal text of a number. Instantiated for int and unsigned short.
template <typename T>
std::string dataToString(T value);

extern template std::string dataToString<int>(int value);
extern template std::string dataToString<unsigned short>(unsigned short value);

}  // namespace torgareg
