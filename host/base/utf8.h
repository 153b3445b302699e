// UTF-8: texts taken apart, whatever bytes they hold, and written.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;
inline constexpr std::string_view kReplacementText = "\xEF\xBF\xBD";

constexpr bool IsUtf8Continuation(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

struct TCodePoint {
  char32_t value;    ///< kReplacementCharacter where the bytes are no character
  std::size_t size;  ///< bytes taken, at least 1
  bool valid;
};

/// How many bytes at the start of the text are printable ASCII: characters of one byte and one column,
/// of which hardly any text has others, so that a run of them is taken at once.
inline std::size_t PrintableAsciiSize(std::string_view text) {
  const auto end = std::find_if(text.begin(), text.end(), [](char c) { return c < 0x20 || c > 0x7E; });
  return static_cast<std::size_t>(end - text.begin());
}

/// The character that starts at `at`, which must be inside the text. Bytes that are no character
/// (stray, overlong, cut short, surrogates, above U+10FFFF) are taken as far as they could have
/// begun one, so that a cut character gives one replacement and not several.
VELHOST_API TCodePoint NextCodePoint(std::string_view text, std::size_t at);

/// Appends a character; surrogates and numbers that are no character give the replacement.
VELHOST_API void AppendUtf8(std::string& text, char32_t character);

/// The longest start of the text that has at most `size` bytes and cuts no character.
VELHOST_API std::string_view WholeCharacters(std::string_view text, std::size_t size);

}  // namespace velhost
