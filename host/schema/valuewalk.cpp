#include "host/schema/valuewalk.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace velhost {

TValueWalk::TValueWalk(const TSchemaSource& source, const TQualifier& qualifier)
    : source_(source), start_(source.OffsetOf(qualifier.Location()) + qualifier.Name().size()), hasValue_(false) {
  at_ = std::min(start_, source.Text().size());
  SkipBlanks();
  hasValue_ = IsAt("(") || IsAt("{");
  start_ = at_ + (hasValue_ ? 1 : 0);
  Rewind();
}

void TValueWalk::Rewind() {
  at_ = start_;
  element_ = 0;
  SkipBlanks();
}

// Also skips comments.
void TValueWalk::SkipBlanks() {
  const std::string_view text = source_.Text();
  for (;;) {
    at_ = std::min(text.find_first_not_of(" \t\r\n\f\v", at_), text.size());
    if (IsAt("//")) {
      at_ = std::min(text.find('\n', at_), text.size());
    } else if (IsAt("/*")) {
      const std::size_t end = text.find("*/", at_ + 2);
      at_ = end == std::string_view::npos ? text.size() : end + 2;
    } else {
      return;
    }
  }
}

// A literal in quotes.
void TValueWalk::SkipPiece() {
  const std::string_view text = source_.Text();
  ++at_;
  for (;;) {
    at_ = Mof::FindStringStop(text, at_);
    if (at_ == text.size() || text[at_] != '\\') break;
    at_ += Mof::TakeCharacter(text.substr(at_)).size;
  }
  at_ = std::min(at_ + 1, text.size());
}

// Goes to the next element, or to the end of the value.
void TValueWalk::SkipElement() {
  const std::string_view text = source_.Text();
  while (at_ < text.size() && !IsAt(",") && !IsAt("}") && !IsAt(")")) {
    if (IsAt("\"")) {
      SkipPiece();
    } else {
      ++at_;
    }
    SkipBlanks();
  }
  if (IsAt(",")) ++at_;
  SkipBlanks();
  ++element_;
}

std::optional<TSourceLocation> TValueWalk::Locate(std::size_t element, std::size_t offset) {
  if (!hasValue_) return std::nullopt;
  if (element < element_) Rewind();
  while (element_ < element && at_ < source_.Text().size()) SkipElement();
  if (!IsAt("\"")) return source_.Locate(static_cast<std::uint32_t>(at_));
  const std::size_t start = at_;
  std::vector<Mof::TTextJump> jumps;
  std::string text;
  while (IsAt("\"")) {
    const auto content = static_cast<std::uint32_t>(at_ + 1);
    SkipPiece();
    jumps.push_back({static_cast<std::uint32_t>(text.size()), content});
    Mof::AppendUnescaped(text, source_.Text({content, static_cast<std::uint32_t>(at_ - 1)}), content, jumps);
    SkipBlanks();
  }
  at_ = start;
  const auto next = std::upper_bound(jumps.begin(), jumps.end(), offset,
                                     [](std::size_t place, const Mof::TTextJump& jump) { return place < jump.text; });
  const Mof::TTextJump& jump = *(next - 1);
  return source_.Locate(jump.source + static_cast<std::uint32_t>(std::min(offset, text.size()) - jump.text));
}

}  // namespace velhost
