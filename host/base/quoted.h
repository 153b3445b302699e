// A text of an input as messages repeat it.
#pragma once

#include <string>
#include <string_view>

namespace NKROVEL20 {

/// In double quotes, cut when long, a question mark for each control character.
std::string Quoted(std::string_view text);

}  // namespace NKROVEL20
