// What a failing host operation was about.
//
// TVELException carries a status number and nothing else, which is all that a plugin needs. People
// need the name of the property or class, so the host notes it beside the exception.
#pragma once

#include <cstdint>
#include <string>

#include "nkrovel20/api.h"

namespace NKROVEL20 {

/// Notes `detail` for this thread and throws TVELException with the status.
[[noreturn]] NKROVEL20_API void ThrowHostFailure(std::int32_t status, const std::string& detail);

/// The detail of this thread's latest host failure; empty when there was none since the last clear.
NKROVEL20_API std::string LastFailureDetail();
NKROVEL20_API void ClearFailureDetail();

}  // namespace NKROVEL20
