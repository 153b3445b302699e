// Characters that could disturb or deceive someone reading text on a terminal, and text without them.
//
// Only this header decides what is unsafe: for messages, for the table, and for every output form, each of which
// writes the escapes in its own syntax.
#pragma once

#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

/// C0 and C1 control characters (U+0000 to U+001F, U+007F to U+009F), line and paragraph separators, and marks that
/// change the direction of writing (U+061C, U+200E, U+200F, U+202A to U+202E, U+2066 to U+2069).
constexpr bool IsUnsafe(char32_t character) {
  const bool control = character < 0x20 || (character >= 0x7F && character <= 0x9F);
  const bool mark = character == 0x061C || character == 0x200E || character == 0x200F;
  const bool direction = (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
  const bool separator = character == 0x2028 || character == 0x2029;
  return control || mark || direction || separator;
}

/// Text that is safe to show on a terminal: unsafe characters become escapes ("\n", "\x1b", "\u202e"), invalid bytes
/// U+FFFD. A backslash is not escaped.
VELHOST_API std::string SafeText(std::string_view text);

/// As SafeText, but newlines and tabs stay as they are.
VELHOST_API std::string SafeLines(std::string_view text);

/// A JSON document with its unsafe characters beyond ASCII escaped ("\u009b"). They only occur in strings, so its
/// meaning does not change; those in ASCII are escaped in every JSON document anyway.
VELHOST_API std::string SafeJson(std::string_view document);

}  // namespace velhost
