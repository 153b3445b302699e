// Failures of the host, by kind. Only the command maps a kind to an exit status.
#pragma once

#include <stdexcept>
#include <string>

#include "host/base/api.h"

namespace velhost {

enum class EFailure {
  kInvalidArgument,  ///< an argument names nothing that exists or can be used
  kMalformed,        ///< a schema, server file or recording is invalid
  kTooLarge,         ///< an input, or what it requires, exceeds a limit
  kAbsent,           ///< an input does not exist or cannot be read
  kDenied,           ///< the system denies permission
  kRefused,          ///< the service processor refuses the user or the password
  kUnreachable,      ///< the service processor, or a required program, cannot be reached
  kStopped,          ///< interrupted, or out of time
  kNotCreated,       ///< an output cannot be created
  kNotWritten,       ///< a write failed
  kDefect,           ///< a defect of the host or of a plugin
};

/// Ends the command. The message says what happened, where, and what to do next; it has no trailing newline and no
/// program name, and may have several lines.
class VELHOST_API THostError : public std::runtime_error {
 public:
  THostError(EFailure kind, const std::string& message) : std::runtime_error(message), kind_(kind) {}
  EFailure Kind() const noexcept { return kind_; }

 private:
  EFailure kind_;
};

}  // namespace velhost
