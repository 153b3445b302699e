// UTF-8: decoding, whatever the bytes, encoding, and the width of characters on a terminal.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "host/base/api.h"

namespace velhost {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;
inline constexpr std::string_view kReplacementText = "\xEF\xBF\xBD";

constexpr bool IsUtf8Continuation(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

struct TCodePoint {
  char32_t value;    ///< kReplacementCharacter if the bytes are not a character
  std::size_t size;  ///< bytes consumed, at least 1
  bool valid;
};

/// The number of bytes of printable ASCII at the start of the text. Nearly all text is such characters, one byte and
/// one column each, so a run of them is handled at once.
inline std::size_t PrintableAsciiSize(std::string_view text) {
  const auto end = std::find_if(text.begin(), text.end(), [](char c) { return c < 0x20 || c > 0x7E; });
  return static_cast<std::size_t>(end - text.begin());
}

/// The character that starts at `at`, which must be inside the text. Bytes that are not a character (stray, overlong,
/// cut short, surrogates, above U+10FFFF) are consumed for as long as they could have begun one, so that a truncated
/// character yields one replacement, not several.
VELHOST_API TCodePoint NextCodePoint(std::string_view text, std::size_t at);

/// The offset, at or after `start`, of the first NUL or of the first byte that is not part of a character; the text's
/// size if there is none.
VELHOST_API std::size_t FindBadByte(std::string_view text, std::size_t start);

struct TBadByte {
  std::size_t offset;
  std::uint8_t value;
};
/// Replaces all such bytes by question marks. Returns the first of them, as it was.
VELHOST_API std::optional<TBadByte> ReplaceBadBytes(std::span<char> text);

/// Appends a character; the replacement for surrogates and invalid numbers.
VELHOST_API void AppendUtf8(std::string& text, char32_t character);

/// The longest prefix of the text of at most `size` bytes that does not split a character.
VELHOST_API std::string_view WholeCharacters(std::string_view text, std::size_t size);

/// Columns that a character occupies: 0 for combining marks and other zero-width characters, 2 for wide ones, else 1.
/// A control character counts as 1, for the mark shown in its place.
VELHOST_API int ColumnsOf(char32_t character);

/// Columns that safe text occupies (see SafeText).
VELHOST_API std::size_t ColumnsOf(std::string_view safeText);

/// The longest prefix of safe text that fits in `width` columns, but at least one character.
VELHOST_API std::string_view StartThatFits(std::string_view safeText, std::size_t width);

}  // namespace velhost
