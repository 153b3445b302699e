// The strings of TOML: basic and literal, on one line and on several.
#pragma once

#include <string_view>

#include "host/bmc/sim/tomlcursor.h"

namespace velhost {

/// Reads the string whose opening quote the cursor is at. What it says is the document's: a piece of
/// its text, or one of its decoded texts. A key is on one line.
std::string_view ReadTomlString(TTomlCursor& at, TTomlDocument& document, bool isKey);

}  // namespace velhost
