// Reads text and data inputs.
#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/base/api.h"
#include "host/base/hosterror.h"

namespace velhost {

/// Reading ended early because the run was stopped (kStopped). Code that turns other read failures into diagnostics
/// lets this one pass.
class VELHOST_API TEndedReading : public THostError {
 public:
  using THostError::THostError;
  TEndedReading(const TEndedReading&) = default;
  TEndedReading& operator=(const TEndedReading&) = default;
  ~TEndedReading() override;
};

/// What every reader throws if the system refuses an input: "cannot open a.mof: Permission denied", as kDenied or
/// kAbsent.
[[noreturn]] VELHOST_API void ThrowUnreadable(const std::string& path, const char* action, int error);
/// What every reader throws (kTooLarge) for an input larger than `limit` bytes.
[[noreturn]] VELHOST_API void ThrowTooLarge(const std::string& path, std::size_t limit);

class VELHOST_API ISourceReader {
 public:
  virtual ~ISourceReader();
  /// Returns the whole content. Throws THostError with a message that names the input: kAbsent or kDenied if it
  /// cannot be read, kTooLarge if it is larger than `limit` bytes.
  virtual std::string Read(const std::string& path, std::size_t limit) = 0;
  /// Whether the input read last is in the folder or below it, with all links resolved; the empty path is the current
  /// folder. A pipe counts as being in every folder: whoever names one already has its content. A reader that cannot
  /// tell returns false.
  virtual bool LiesIn(const std::string& folder);
  /// Throws TEndedReading once the run is stopped; by default, never. Code that processes potentially large texts
  /// calls it at intervals.
  virtual void CheckStop();
};

/// Reads regular files. Folders, devices and pipes are refused: a path that comes from a file rather than from the
/// user must not make its reader wait.
class VELHOST_API TFileReader : public ISourceReader {
 public:
  TFileReader() = default;
  /// These paths, which the user named, may be pipes. Each can be read once, until its writers have closed it. A pipe
  /// that delivers nothing for `patience` throws THostError (kAbsent). CheckStop is called during the wait, and at
  /// once after a signal.
  explicit TFileReader(std::vector<std::string> pipes, std::chrono::milliseconds patience = std::chrono::minutes(1))
      : pipes_(std::move(pipes)), patience_(patience) {}
  std::string Read(const std::string& path, std::size_t limit) override;
  bool LiesIn(const std::string& folder) override;

 private:
  std::string ReadPipe(int descriptor, const std::string& path, std::size_t limit);

  std::vector<std::string> pipes_;
  std::chrono::milliseconds patience_{0};
  std::string realPath_;                          // of the file read last; empty if unknown
  bool readPipe_ = false;                         // whether that was a pipe
  std::map<std::string, std::string> realPaths_;  // of the folders passed to LiesIn
};

}  // namespace velhost
