// Fields and findings in words, for people.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/result/instancefacts.h"
#include "host/result/resultfacts.h"

namespace velhost {

/// Safe text: "Unexpected completion", "Link speed: 2.5 GT/s", "Lanes: 4", "Device: 0x00AB", "Rank 3: 17 errors",
/// "bit 7 (not described)". `bits` is the place of the field in its register.
std::string FieldText(const TField& field, const std::string& bits, const TRegisterMeaning& meaning);

/// The fields of a register; the role comes before those of a mask or severity register, which are not errors. A
/// counter without fields is its number. Empty if there is nothing to say.
std::vector<std::string> FieldTexts(const TRegisterFacts& facts);

/// A value and its fields, in lines of at most `width` columns: "0x00150000  Unexpected completion; Malformed TLP". A
/// field that does not fit begins a new line; one that is longer than a line is left to be wrapped.
std::vector<std::string> LinesOf(const std::string& value, const std::vector<std::string>& fields, std::size_t width);

/// Safe text: "Malformed TLP", "Lane error: lane 3", "bit 7 (not described)".
std::string FindingText(const TFinding& finding);

/// "FATAL", "ERROR", "CORRECTED" or, whatever the severity, "MASKED".
std::string_view LabelOf(const TFinding& finding);

/// "1 fatal, 2 errors, 1 corrected; 1 known; 3 masked", "none; 3 masked", "none". The one known is among the four.
std::string CountsText(const std::vector<TFinding>& findings);

}  // namespace velhost
