// The text of a CIM datetime: a point in time, "yyyymmddhhmmss.mmmmmmsutc" with the offset from UTC in minutes, or an
// interval, "ddddddddhhmmss.mmmmmm:000". Asterisks take the place of what is not significant, from the start of a field
// (or a digit of the microseconds) up to the sign.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

inline constexpr std::size_t kCimDateTimeSize = 25;
inline constexpr std::size_t kCimDateTimePoint = 14;  ///< the full stop before the microseconds
inline constexpr std::size_t kCimDateTimeSign = 21;   ///< '+' or '-' of a point in time, ':' of an interval

/// What keeps the text from being one that exists, as "found ..., expected ..."; empty when nothing does.
VELHOST_API std::string CimDateTimeProblem(std::string_view text);

/// Whether the text is one. That of a TCIMDateTime need not be: its fields may be anything that a service processor
/// sent.
inline bool IsCimDateTime(std::string_view text) { return CimDateTimeProblem(text).empty(); }

}  // namespace velhost
