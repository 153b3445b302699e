#include "host/schema/schemaunit.h"

#include <cstddef>
#include <numeric>
#include <vector>

#include "host/base/names.h"
#include "host/schema/embeddedtext.h"
#include "host/schema/mofscan.h"
#include "host/schema/moftext.h"

namespace velhost {

std::string TSchemaUnit::Quoted(Mof::TSpan span) const { return Mof::Quoted(source->Text(span)); }

TSchemaPlace TSchemaUnit::Place(std::uint32_t offset) const {
  return embedding != nullptr ? embedding->Place(offset) : TSchemaPlace{number, offset};
}

std::string StringOf(const TSchemaUnit& unit, const Mof::TLiteral& literal) {
  const Mof::TPiece* const pieces = unit.file->pieces.data() + literal.pieces.first;
  const Mof::TPiece* const end = pieces + literal.pieces.count;
  std::string text;
  text.reserve(std::accumulate(pieces, end, std::size_t{0}, [](std::size_t sum, const Mof::TPiece& piece) {
    return sum + (piece.span.end - piece.span.begin);
  }));
  for (const Mof::TPiece* piece = pieces; piece != end; ++piece) {
    if (piece->escaped) {
      Mof::AppendUnescaped(text, unit.Text(piece->span));
    } else {
      text += unit.Text(piece->span);
    }
  }
  return text;
}

void TNameHint::Offer(std::string_view candidate) {
  if (Wants()) candidates_.push_back(candidate);
}

std::string TNameHint::Text() const { return Suggestion(NearestName(name_, candidates_, steps_)); }

void OfferProperties(const TCIMClass& cimClass, const TSchemaLog& log, TNameHint& hint) {
  for (const auto& property : cimClass.Properties()) {
    if (!hint.Wants()) return;
    if (!log.Hides(property->Definition().location.file)) hint.Offer(property->Definition().name);
  }
}

}  // namespace velhost
