// Details of a failed host operation.
//
// TVELException carries only a status code, which is all that a plugin needs. People need the name of the
// property or class as well, so the host stores it separately.
#pragma once

#include <cstdint>
#include <string>

#include "host/base/api.h"

namespace velhost {

/// Stores `detail` for this thread and throws TVELException with the status.
[[noreturn]] VELHOST_API void ThrowHostFailure(std::int32_t status, const std::string& detail);

/// The detail of this thread's latest host failure; empty if there was none since the last clear.
VELHOST_API std::string LastFailureDetail();
VELHOST_API void ClearFailureDetail();

}  // namespace velhost
