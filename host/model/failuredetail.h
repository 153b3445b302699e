// What a failing host operation was about.
//
// TVELException carries a status number and nothing else, which is all that a plugin needs. People
// need the name of the property or class, so the host notes it beside the exception.
#pragma once

#include <cstdint>
#include <string>

#include "host/base/api.h"

namespace velhost {

/// Notes `detail` for this thread and throws TVELException with the status.
[[noreturn]] VELHOST_API void ThrowHostFailure(std::int32_t status, const std::string& detail);

/// The detail of this thread's latest host failure; empty when there was none since the last clear.
VELHOST_API std::string LastFailureDetail();
VELHOST_API void ClearFailureDetail();

}  // namespace velhost
