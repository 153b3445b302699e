#include "plugin/logmessage.h"

#include "nkrovel20/trootobject.h"

namespace torgareg {

using NKROVEL20::ILogger;

LogMessage* LogMessage::pLogMsg = nullptr;
NKROVEL20::TPluginManagerProvider* LogMessage::pluginInstance = nullptr;

LogMessage::~LogMessage() = default;

LogMessage* LogMessage::getInstance() {
  if (pLogMsg == nullptr) pLogMsg = new LogMessage();
  return pLogMsg;
}

void LogMessage::setPluginInstance(NKROVEL20::TPluginManagerProvider* provider) { pluginInstance = provider; }

void LogMessage::write(const std::string& message, ILogger::EVELLogSeverity severity) const {
  if (pluginInstance == nullptr) return;
  if (message.empty()) return;
  NKROVEL20::TRootObject::GetCoreLogger()->Log(severity, message);
}

void LogMessage::writeError(const std::string& message) const { write(message, ILogger::kError); }
void LogMessage::writeWarning(const std::string& message) const { write(message, ILogger::kWarning); }
void LogMessage::writeStatus(const std::string& message) const { write(message, ILogger::kStatus); }
void LogMessage::writeDebug(const std::string& message) const { write(message, ILogger::kDebug); }
void LogMessage::writeVerbose(const std::string& message) const { write(message, ILogger::kVerbose); }

std::string LogMessage::lookupWin32Error(int /*code*/) const { return {}; }

void LogMessage::writeWin32Error(int code) const {
  const std::string text = lookupWin32Error(code);
  if (!text.empty()) writeVerbose(text);
}

// Not a stream: the process's locale must not insert digit separators.
template <typename T>
std::string dataToString(T value) {
  return std::to_string(value);
}

template std::string dataToString<int>(int value);
template std::string dataToString<unsigned short>(unsigned short value);

}  // namespace torgareg
