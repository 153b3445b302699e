// Decimal and hexadecimal digits, and bytes as text in both.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/api.h"

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

using THexPairTable = std::array<std::array<char, 2>, 256>;

constexpr THexPairTable HexPairTable(std::string_view digits) {
  THexPairTable pairs{};
  for (std::size_t byte = 0; byte < pairs.size(); ++byte) pairs[byte] = {digits[byte / 16], digits[byte % 16]};
  return pairs;
}

inline constexpr THexPairTable kHexPairs = HexPairTable("0123456789abcdef");
inline constexpr THexPairTable kUpperHexPairs = HexPairTable("0123456789ABCDEF");

/// The two digits of a byte, from a table because raw data is written one byte at a time.
constexpr std::string_view HexPair(std::uint8_t byte) { return {kHexPairs[byte].data(), 2}; }
constexpr std::string_view UpperHexPair(std::uint8_t byte) { return {kUpperHexPairs[byte].data(), 2}; }

/// "0x00003A": the number's low `bytes` bytes, most significant first.
VELHOST_API std::string HexNumber(std::uint64_t number, int bytes);
/// "0x0A1B": the bytes in this order.
VELHOST_API std::string HexNumber(std::span<const std::uint8_t> bytes);
/// "0x3A".
inline std::string HexByte(std::uint8_t byte) { return HexNumber(byte, 1); }

/// The value of a digit of either case; -1 for any other character.
constexpr int HexDigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

struct THexPairs {
  std::vector<std::uint8_t> bytes;
  /// Offset of the first character that is not part of a pair; npos if the whole text was read.
  std::size_t errorAt = std::string_view::npos;
};

/// Reads pairs of digits of either case. White space is allowed between pairs, but not within one.
VELHOST_API THexPairs ParseHexPairs(std::string_view text);

/// "01 20 3a": lower case, one space between pairs.
VELHOST_API std::string FormatHexPairs(std::span<const std::uint8_t> bytes);

}  // namespace velhost
