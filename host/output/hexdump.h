// Bytes for display: offset, hex and text, in the layout of `hexdump -C`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

namespace velhost {

/// The columns of a line with that many bytes (8 or 16).
constexpr std::size_t DumpColumns(std::size_t bytesPerLine) {
  return 8 + 2 + bytesPerLine * 3 + (bytesPerLine / 8 - 1) + 1 + bytesPerLine + 2;
}

/// Emits the lines, without newlines: offsets in hex, the bytes as pairs in groups of eight, and printable ASCII
/// between bars with a full stop for any other byte. A run of lines equal to the one before is replaced by one "*".
/// The last line is the number of bytes. Emits nothing if there are no bytes.
void DumpBytes(std::span<const std::uint8_t> bytes, std::size_t bytesPerLine,
               const std::function<void(std::string_view)>& line);

}  // namespace velhost
