// What tells one run from every other: a random identifier, and when it started.
#pragma once

#include <chrono>
#include <string>

#include "host/base/api.h"

namespace velhost {

/// A UUID of version 4 (RFC 4122) in lower case: "f81d4fae-7dec-41d0-a765-00a0c91e6bf6".
VELHOST_API std::string NewUuid();

/// A date and time of RFC 3339 with milliseconds, "2026-01-31T12:34:56.789+01:00", in a zone that many minutes ahead of
/// UTC. What is left below a millisecond is cut off.
VELHOST_API std::string WallTimeText(std::chrono::system_clock::time_point time, std::chrono::minutes offset);

/// The same in the time zone of the process. Seconds in its offset, which only times before 1972 have, are cut off.
VELHOST_API std::string LocalWallTimeText(std::chrono::system_clock::time_point time);

}  // namespace velhost
