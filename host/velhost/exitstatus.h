// The exit statuses of velhost, and which failure leads to which.
#pragma once

#include "host/base/hosterror.h"

namespace velhost {

/// Values from 64 on are those of sysexits.h.
enum class EExitStatus : int {
  kComplete = 0,
  kFound = 1,          ///< --fail-on: such findings; diff: there are differences
  kPartial = 3,        ///< something that was asked for is missing from the result
  kUsage = 64,         ///< the command line is wrong
  kBadData = 65,       ///< a schema, server file or recording is malformed or too large
  kNoInput = 66,       ///< an input cannot be opened
  kUnavailable = 69,   ///< the service processor cannot be reached
  kInternal = 70,      ///< a defect of the host or of a plugin
  kCannotCreate = 73,  ///< an output cannot be created
  kWriteFailed = 74,   ///< a write failed
  kNoPermission = 77,  ///< permission denied or authentication refused
};

/// The only mapping from failures to exit statuses.
constexpr EExitStatus StatusOf(EFailure failure) {
  switch (failure) {
    case EFailure::kInvalidArgument: return EExitStatus::kUsage;
    case EFailure::kMalformed:
    case EFailure::kTooLarge: return EExitStatus::kBadData;
    case EFailure::kAbsent: return EExitStatus::kNoInput;
    case EFailure::kDenied:
    case EFailure::kRefused: return EExitStatus::kNoPermission;
    case EFailure::kUnreachable: return EExitStatus::kUnavailable;
    case EFailure::kStopped: return EExitStatus::kPartial;
    case EFailure::kNotCreated: return EExitStatus::kCannotCreate;
    case EFailure::kNotWritten: return EExitStatus::kWriteFailed;
    case EFailure::kDefect: return EExitStatus::kInternal;
  }
  return EExitStatus::kInternal;
}

}  // namespace velhost
