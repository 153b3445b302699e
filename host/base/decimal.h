// Decimal digits, groups of them, and bytes as decimal text.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace velhost {

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// The runs of digits that are exactly `length` long, in order: of length 4, "Server 62035 -[6203AC1]-" has only
/// "6203".
inline std::vector<std::string_view> DigitGroups(std::string_view text, std::size_t length) {
  std::vector<std::string_view> groups;
  auto begin = std::find_if(text.begin(), text.end(), IsDigit);
  while (begin != text.end()) {
    const auto end = std::find_if_not(begin, text.end(), IsDigit);
    const auto size = static_cast<std::size_t>(end - begin);
    if (size == length) groups.push_back(text.substr(static_cast<std::size_t>(begin - text.begin()), size));
    begin = std::find_if(end, text.end(), IsDigit);
  }
  return groups;
}

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
