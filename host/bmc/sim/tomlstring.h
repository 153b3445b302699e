// TOML strings: basic and literal, single-line and multi-line.
#pragma once

#include <string_view>

#include "host/bmc/sim/tomlcursor.h"

namespace velhost {

/// Reads the string whose opening quote is at the cursor. The result is a view into the document: into its text, or
/// into one of its decoded texts. A key must be on one line.
std::string_view ReadTomlString(TTomlCursor& at, TTomlDocument& document, bool isKey);

}  // namespace velhost
