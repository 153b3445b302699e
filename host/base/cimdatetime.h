// The text of a CIM datetime: a point in time, "yyyymmddhhmmss.mmmmmmsutc" with the offset from UTC in minutes, or an
// interval, "ddddddddhhmmss.mmmmmm:000". Asterisks replace insignificant digits, from the start of a field (or any
// digit of the microseconds) up to the sign.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

inline constexpr std::size_t kCimDateTimeSize = 25;
inline constexpr std::size_t kCimDateTimePoint = 14;  ///< the full stop before the microseconds
inline constexpr std::size_t kCimDateTimeSign = 21;   ///< '+' or '-' in a point in time, ':' in an interval

/// Why the text is not a valid CIM datetime, as "found ..., expected ..."; empty if it is valid.
VELHOST_API std::string CimDateTimeProblem(std::string_view text);

/// Whether the text is a valid CIM datetime. The text of a TCIMDateTime need not be: its fields may hold anything
/// that a service processor sent.
inline bool IsCimDateTime(std::string_view text) { return CimDateTimeProblem(text).empty(); }

}  // namespace velhost
