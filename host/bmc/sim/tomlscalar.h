// TOML values that are a single word: numbers, dates, times, true and false.
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
  std::string moment;        ///< the CIM text of a date-time with an offset
  bool isTooLarge = false;   ///< an integer that does not fit in 64 bits
};

/// Empty if the word is not a scalar.
std::optional<TTomlScalar> ReadTomlScalar(std::string_view word);

/// Whether the word is a date, which a time may follow after a blank.
bool IsTomlDate(std::string_view word);

}  // namespace velhost
