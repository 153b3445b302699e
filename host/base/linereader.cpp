#include "host/base/linereader.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace velhost {

namespace {

constexpr std::size_t kPiece = 65536;

}  // namespace

bool TLineReader::ReadMore() {
  buffer_.erase(0, std::exchange(start_, 0));
  const std::vector<std::uint8_t> piece = text_.Read(offset_, kPiece);
  offset_ += piece.size();
  buffer_.append(piece.begin(), piece.end());
  return !piece.empty();
}

std::optional<TLineReader::TLine> TLineReader::Next() {
  std::size_t seen = 0;  // bytes already searched for a newline
  while (true) {
    const std::size_t end = buffer_.find('\n', start_ + seen);
    const std::size_t size = std::min(end, buffer_.size()) - start_;
    if (end != std::string::npos || size > longest_) {
      const std::string_view line = std::string_view(buffer_).substr(start_, std::min(size, longest_ + 1));
      start_ += line.size() + (size <= longest_ ? 1 : 0);
      return TLine{line, true};
    }
    seen = size;
    if (ReadMore()) continue;
    if (size == 0) return std::nullopt;
    start_ = buffer_.size();
    return TLine{std::string_view(buffer_).substr(buffer_.size() - size), false};
  }
}

}  // namespace velhost
