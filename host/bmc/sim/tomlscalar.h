// TOML values that have no parts: words (numbers, dates, times, true and false) and strings.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/bmc/sim/tomlcursor.h"
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

/// Reads the string whose opening quote is at the cursor. The result is a view into the document: into its text, or
/// into one of its decoded texts. A key must be on one line.
std::string_view ReadTomlString(TTomlCursor& at, TTomlDocument& document, bool isKey);

}  // namespace velhost
