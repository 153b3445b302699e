// Fields and findings in words, for people.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/result/instancefacts.h"
#include "host/result/resultfacts.h"

namespace velhost {

/// Safe text: "Unexpected completion", "Link speed: 2.5 GT/s", "Lanes: 4", "Device: 0x00AB", "Rank 3: 17 errors",
/// "bit 7 (not described)". `bits` is the place of the field in its register.
std::string FieldText(const TField& field, const std::string& bits, const TRegisterMeaning& meaning);

/// The fields of a register, separated by semicolons; a counter without fields is its number. Empty if there is
/// nothing to say.
std::string FieldsText(const TRegisterFacts& facts);

/// Safe text: "Malformed TLP", "Lane error: lane 3", "bit 7 (not described)".
std::string FindingText(const TFinding& finding);

/// "FATAL", "ERROR", "CORRECTED" or, whatever the severity, "MASKED".
std::string_view LabelOf(const TFinding& finding);

/// "1 fatal, 2 errors, 1 corrected; 3 masked", "none; 3 masked", "none".
std::string CountsText(const std::vector<TFinding>& findings);

}  // namespace velhost
