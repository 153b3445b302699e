// The values of TOML that are one word: numbers, dates, times, true and false.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/bmc/sim/tomldocument.h"

namespace velhost {

struct TTomlScalar {
  TTomlValue::EKind kind = TTomlValue::EKind::kInteger;
  std::int64_t integer = 0;  ///< 1 for true
  std::string moment;        ///< of a date-time with an offset, its CIM text
  bool isTooLarge = false;   ///< an integer that 64 bits do not hold
};

/// Empty for anything else.
std::optional<TTomlScalar> ReadTomlScalar(std::string_view word);

/// Whether a date-time may go on after a blank: the word is a date.
bool IsTomlDate(std::string_view word);

}  // namespace velhost
