// What the host knows about the server and its operating system.
#pragma once

#include <string>

#include "nkrovel20/api.h"
#include "nkrovel20/tcimdatetime.h"

namespace NKROVEL20 {

class NKROVEL20_API TOSSpecific {
 public:
  /// The server's machine type, usually four decimal digits; empty if unknown.
  static std::string GetMachineTypeFromID();
  /// The current local time with its offset from UTC.
  static TCIMDateTime GetLocalTime();
};

}  // namespace NKROVEL20
