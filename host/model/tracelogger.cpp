#include "host/model/tracelogger.h"

#include <array>
#include <cstddef>

namespace velhost {

void TTraceLogger::Log(EVELLogSeverity severity, const std::string& message) {
  for (const TEntry& entry : sinks_) {
    if (severity <= entry.least) entry.sink(severity, message);
  }
}

const char* TTraceLogger::SeverityName(EVELLogSeverity severity) {
  static constexpr std::array<const char*, 5> kNames = {"error", "warning", "status", "debug", "verbose"};
  const auto index = static_cast<std::size_t>(severity);
  return index < kNames.size() ? kNames[index] : "unknown";
}

std::string TTraceLogger::FormatText(EVELLogSeverity severity, const std::string& message) {
  std::string line = SeverityName(severity);
  line.reserve(line.size() + message.size() + 2);
  line += ' ';
  const std::size_t size = message.empty() || message.back() != '\n' ? message.size() : message.size() - 1;
  for (std::size_t i = 0; i < size; ++i) {
    line += message[i];
    if (message[i] == '\n') line += "  ";
  }
  line += '\n';
  return line;
}

}  // namespace velhost
