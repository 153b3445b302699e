// A core logger that keeps every line.
#pragma once

#include <algorithm>
#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "nkrovel20/ilogger.h"
#include "tests/support/namespaces.h"

namespace tests {

/// One line as the host's core logger received it, byte for byte.
struct TLine {
  int severity;
  std::string message;
  friend bool operator==(const TLine&, const TLine&) = default;
};

inline std::ostream& operator<<(std::ostream& out, const TLine& line) {
  return out << line.severity << " \"" << line.message << "\"";
}

// The five severities, by their numbers in the contract.
inline TLine Error(const std::string& message) { return {0, message}; }
inline TLine Warning(const std::string& message) { return {1, message}; }
inline TLine Status(const std::string& message) { return {2, message}; }
inline TLine Debug(const std::string& message) { return {3, message}; }
inline TLine Verbose(const std::string& message) { return {4, message}; }

class TRecordingLogger : public NKROVEL20::ILogger {
 public:
  void Log(EVELLogSeverity severity, const std::string& message) override {
    if (!failing_.empty() && message == failing_ && --countdown_ <= 0) failure_();
    lines_.push_back({static_cast<int>(severity), message});
  }

  const std::vector<TLine>& Lines() const { return lines_; }
  void Clear() { lines_.clear(); }
  /// Makes this message throw what `failure` throws, from its nth time on (counted from 1).
  void FailAt(const std::string& message, std::function<void()> failure, int nth = 1) {
    failing_ = message;
    failure_ = std::move(failure);
    countdown_ = nth;
  }
  /// As above, with a std::runtime_error.
  void FailAt(const std::string& message) {
    FailAt(message, [] { throw std::runtime_error("the logger failed"); });
  }

  std::size_t Count(const TLine& line) const {
    return static_cast<std::size_t>(std::count(lines_.begin(), lines_.end(), line));
  }
  /// The lines whose message begins with `prefix`, in order.
  std::vector<TLine> StartingWith(const std::string& prefix) const {
    std::vector<TLine> found;
    for (const TLine& line : lines_) {
      if (line.message.starts_with(prefix)) found.push_back(line);
    }
    return found;
  }
  /// All lines of one severity, in order.
  std::vector<TLine> OfSeverity(int severity) const {
    std::vector<TLine> found;
    for (const TLine& line : lines_) {
      if (line.severity == severity) found.push_back(line);
    }
    return found;
  }

 private:
  std::vector<TLine> lines_;
  std::string failing_;
  std::function<void()> failure_;
  int countdown_ = 0;
};

}  // namespace tests
