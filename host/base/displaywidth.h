// How wide a terminal shows a text.
#pragma once

#include <cstddef>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

/// Columns of a character: 0 for combining marks and other characters that take no room, 2 for wide ones, else 1. A
/// control character counts as 1, for the mark that is shown in its place.
VELHOST_API int ColumnsOf(char32_t character);

/// Columns of safe text (see SafeText).
VELHOST_API std::size_t ColumnsOf(std::string_view safeText);

/// The longest start of safe text that takes no more than `width` columns (but at least one character).
VELHOST_API std::string_view StartThatFits(std::string_view safeText, std::size_t width);

}  // namespace velhost
