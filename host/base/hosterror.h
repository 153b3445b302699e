// Failures that end a host command, with the exit status that tells a script what happened.
#pragma once

#include <stdexcept>
#include <string>

#include "host/base/api.h"

namespace velhost {

/// Exit statuses of velhost; from 64 on those of sysexits.h.
enum class EExitStatus : int {
  kComplete = 0,
  kPartial = 3,        ///< a request ended in an exception, or the run was stopped early
  kUsage = 64,         ///< the command line
  kBadData = 65,       ///< a schema, server file or recording does not say what it should
  kNoInput = 66,       ///< an input cannot be opened
  kUnavailable = 69,   ///< the service processor cannot be reached
  kInternal = 70,      ///< a defect of the host or of a plugin
  kCannotCreate = 73,  ///< an output cannot be created
  kWriteFailed = 74,   ///< a write failed
  kNoPermission = 77,  ///< permission denied or authentication refused
};

/// Ends the command with the status. The message says what happened, where, and what to do next;
/// it has no trailing newline and no program name, and may have several lines.
class VELHOST_API THostError : public std::runtime_error {
 public:
  THostError(EExitStatus status, const std::string& message);
  THostError(const THostError&) = default;
  THostError& operator=(const THostError&) = default;
  ~THostError() override;
  EExitStatus Status() const noexcept { return status_; }

 private:
  EExitStatus status_;
};

}  // namespace velhost
