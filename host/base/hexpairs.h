// Bytes written as pairs of hexadecimal digits, as server files and recordings have them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/api.h"

namespace velhost {

struct THexPairs {
  std::vector<std::uint8_t> bytes;
  /// Where the text stops being hex pairs; npos where all of it is read.
  std::size_t errorAt = std::string_view::npos;
};

/// Reads pairs of digits of either case. White space may stand between pairs, never within one.
VELHOST_API THexPairs ParseHexPairs(std::string_view text);

/// "01 20 3a": lower case, one blank between pairs.
VELHOST_API std::string FormatHexPairs(std::span<const std::uint8_t> bytes);

}  // namespace velhost
