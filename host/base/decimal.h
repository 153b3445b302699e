// Decimal digits, and bytes as decimal text.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace velhost {

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

struct TByteText {
  std::array<char, 3> characters{};
  std::uint8_t size = 0;
};

inline constexpr std::array<TByteText, 256> kByteTexts = [] {
  std::array<TByteText, 256> texts{};
  for (std::size_t byte = 0; byte < texts.size(); ++byte) {
    TByteText& text = texts[byte];
    if (byte >= 100) text.characters[text.size++] = static_cast<char>('0' + byte / 100);
    if (byte >= 10) text.characters[text.size++] = static_cast<char>('0' + byte / 10 % 10);
    text.characters[text.size++] = static_cast<char>('0' + byte % 10);
  }
  return texts;
}();

/// The decimal text of a byte, from a table because register values and raw data are mostly bytes. The view always
/// points at three readable characters: copying all three is faster than copying size().
constexpr std::string_view ByteText(std::uint8_t byte) {
  return {kByteTexts[byte].characters.data(), kByteTexts[byte].size};
}

}  // namespace velhost
