// The width of text on a terminal.
#pragma once

#include <cstddef>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

/// Columns that a character occupies: 0 for combining marks and other zero-width characters, 2 for wide ones, else 1.
/// A control character counts as 1, for the mark shown in its place.
VELHOST_API int ColumnsOf(char32_t character);

/// Columns that safe text occupies (see SafeText).
VELHOST_API std::size_t ColumnsOf(std::string_view safeText);

/// The longest prefix of safe text that fits in `width` columns, but at least one character.
VELHOST_API std::string_view StartThatFits(std::string_view safeText, std::size_t width);

}  // namespace velhost
