#include "host/output/hexdump.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "host/base/hex.h"
#include "host/output/valuetext.h"

namespace velhost {

namespace {

constexpr std::size_t kGroup = 8;

static_assert(DumpColumns(16) == 78 && DumpColumns(8) == 45);

std::string DumpLine(std::size_t offset, std::span<const std::uint8_t> bytes, std::size_t bytesPerLine) {
  std::string line = fmt::format("{:08x}  ", offset);
  for (std::size_t i = 0; i < bytesPerLine; ++i) {
    if (i > 0 && i % kGroup == 0) line += ' ';
    line += i < bytes.size() ? HexPair(bytes[i]) : "  ";
    line += ' ';
  }
  line += " |";
  for (const std::uint8_t byte : bytes) line += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
  line += '|';
  return line;
}

}  // namespace

void DumpBytes(std::span<const std::uint8_t> bytes, std::size_t bytesPerLine,
               const std::function<void(std::string_view)>& line) {
  bool starred = false;
  for (std::size_t offset = 0; offset < bytes.size(); offset += bytesPerLine) {
    const auto part = bytes.subspan(offset, std::min(bytesPerLine, bytes.size() - offset));
    const bool repeats =
        offset > 0 && part.size() == bytesPerLine &&
        std::equal(part.begin(), part.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset - bytesPerLine));
    if (repeats && !starred) line("*");
    starred = repeats;
    if (!repeats) line(DumpLine(offset, part, bytesPerLine));
  }
  if (!bytes.empty()) line(fmt::format("{:08x}", bytes.size()));
}

}  // namespace velhost
