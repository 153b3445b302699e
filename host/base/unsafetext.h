// Characters that could disturb or deceive whoever reads a text on a terminal, and texts without them.
//
// What is unsafe is decided here alone: for messages, for the table, and for every output form, each of
// which spells its escapes as its grammar has them.
#pragma once

#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

/// Control characters of both sets (U+0000 to U+001F, U+007F to U+009F), line and paragraph separator,
/// and the marks that turn the direction of writing (U+061C, U+200E, U+200F, U+202A to U+202E,
/// U+2066 to U+2069).
constexpr bool IsUnsafe(char32_t character) {
  const bool control = character < 0x20 || (character >= 0x7F && character <= 0x9F);
  const bool mark = character == 0x061C || character == 0x200E || character == 0x200F;
  const bool direction = (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
  const bool separator = character == 0x2028 || character == 0x2029;
  return control || mark || direction || separator;
}

/// The text as a terminal can show it without harm: unsafe characters become escapes ("\n", "\x1b",
/// "\u202e"), bytes that are no character U+FFFD. A backslash stays one.
VELHOST_API std::string SafeText(std::string_view text);

/// The same for a text of several lines: newlines and tabs stay as they are.
VELHOST_API std::string SafeLines(std::string_view text);

/// A JSON document with its unsafe characters beyond ASCII as "\u009b". They occur in strings only, so
/// that it reads as before; those of ASCII are escaped in any JSON document.
VELHOST_API std::string SafeJson(std::string_view document);

}  // namespace velhost
