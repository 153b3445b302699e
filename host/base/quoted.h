// A text of an input as messages repeat it.
#pragma once

#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

/// In double quotes, cut when long, a question mark for each control character.
VELHOST_API std::string Quoted(std::string_view text);

}  // namespace velhost
