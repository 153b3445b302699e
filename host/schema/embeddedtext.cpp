#include "host/schema/embeddedtext.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "host/base/utf8.h"
#include "host/schema/mofscan.h"

namespace velhost {

TEmbeddedText::TEmbeddedText(const TSchemaUnit& outer, const Mof::TLiteral& literal, const TSchemaLimits& limits,
                             TSchemaLog& log)
    : outer_(outer), source_(outer.source->Name(), TakeText(literal)), unit_{outer.number, &source_, &file_, this} {
  RefuseNul(log);
  file_ = Mof::ParseMof(source_, unit_, limits, log);
}

std::string TEmbeddedText::TakeText(const Mof::TLiteral& literal) {
  std::string text;
  for (std::uint32_t i = 0; i < literal.pieces.count; ++i) {
    const Mof::TPiece& piece = outer_.file->pieces[literal.pieces.first + i];
    const auto start = static_cast<std::uint32_t>(text.size());
    jumps_.push_back({start, piece.span.begin});
    Mof::AppendUnescaped(text, outer_.Text(piece.span), piece.span.begin, jumps_);
  }
  // TSchemaSource would drop a byte order mark and so shift every place.
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0) text[0] = ' ', text[1] = ' ', text[2] = ' ';
  return text;
}

// A NUL can only come from an escape; no other byte of a string can be bad, because its file was checked.
void TEmbeddedText::RefuseNul(TSchemaLog& log) {
  const auto bad = ReplaceBadBytes(source_.Characters());
  if (!bad) return;
  log.Error(Place(static_cast<std::uint32_t>(bad->offset)), "found a NUL character in an embedded string");
}

TSchemaPlace TEmbeddedText::Place(std::uint32_t offset) const {
  const auto next = std::upper_bound(jumps_.begin(), jumps_.end(), offset,
                                     [](std::uint32_t place, const Mof::TTextJump& jump) { return place < jump.text; });
  const Mof::TTextJump& jump = *(next - 1);
  return outer_.Place(jump.source + (offset - jump.text));
}

}  // namespace velhost
