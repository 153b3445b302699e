// Hexadecimal digits, and bytes as pairs of them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/api.h"

namespace velhost {

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
