// Bytes for people: offset, hex, text, in the layout of `hexdump -C`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

namespace velhost {

/// Columns that a line of so many bytes (8 or 16) takes.
constexpr std::size_t DumpColumns(std::size_t bytesPerLine) {
  return 8 + 2 + bytesPerLine * 3 + (bytesPerLine / 8 - 1) + 1 + bytesPerLine + 2;
}

/// Hands out the lines, without newlines: offsets in hex, the bytes as pairs in groups of eight, and
/// printable ASCII between bars with a full stop for everything else. Lines equal to the one before
/// are given once as "*"; the last line is the number of bytes. No bytes give no line.
void DumpBytes(std::span<const std::uint8_t> bytes, std::size_t bytesPerLine,
               const std::function<void(std::string_view)>& line);

}  // namespace velhost
