// The only path by which the collector writes log lines.
#pragma once

#include <string>

#include "nkrovel20/ilogger.h"
#include "nkrovel20/tpluginmanagernamespace.h"

namespace torgareg {

/// Forwards lines to the host's core logger, which it looks up again for each line. Empty lines, and lines
/// written before the plugin is registered, are dropped. Exceptions from the host's logger propagate.
///
/// The singleton is never deleted: a line may still be logged while everything else is being destroyed.
class LogMessage {
 public:
  virtual ~LogMessage();

  /// The singleton, created on the first call. Not synchronised: the first call is made while the library is
  /// loaded.
  static LogMessage* getInstance();
  /// Sets the registration; with null, lines are dropped again. Not owned.
  static void setPluginInstance(NKROVEL20::TPluginManagerProvider* provider);

  void write(const std::string& message, NKROVEL20::ILogger::EVELLogSeverity severity) const;
  void writeError(const std::string& message) const;
  void writeWarning(const std::string& message) const;
  void writeStatus(const std::string& message) const;
  void writeDebug(const std::string& message) const;
  void writeVerbose(const std::string& message) const;

  /// The text of a platform error code: empty for every code on this platform.
  std::string lookupWin32Error(int code) const;
  /// Writes that text as a verbose line, or nothing if it is empty.
  void writeWin32Error(int code) const;

 private:
  friend struct TTestPeer;

  LogMessage() = default;

  static LogMessage* pLogMsg;
  static NKROVEL20::TPluginManagerProvider* pluginInstance;
};

/// The number as plain decimal text. Instantiated for int and unsigned short.
template <typename T>
std::string dataToString(T value);

extern template std::string dataToString<int>(int value);
extern template std::string dataToString<unsigned short>(unsigned short value);

}  // namespace torgareg
