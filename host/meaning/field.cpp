#include "host/meaning/field.h"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace velhost {

namespace {

// Whether a set bit that no field describes is shown, too. In a plain number, such as an address, it says nothing.
bool TellsEveryBit(const TRegisterMeaning& meaning) {
  const bool isOfBits =
      meaning.role == ERole::kErrors || meaning.role == ERole::kMask || meaning.role == ERole::kSeverity;
  return isOfBits || !meaning.fields.empty();
}

std::uint64_t DescribedBits(const TRegisterMeaning& meaning) {
  std::uint64_t described = 0;
  for (const TFieldMeaning& field : meaning.fields) described |= MaskOf(field.bits);
  return described;
}

std::optional<std::string_view> TextOf(const TFieldMeaning& field, std::uint64_t value) {
  for (const TValueText& text : field.texts) {
    if (value >= text.first && value <= text.last) return text.text;
  }
  return std::nullopt;
}

// Moves the lowest of the bits to the fields.
void AddLowestBit(std::uint64_t& bits, std::vector<TField>& fields) {
  const auto bit = static_cast<unsigned>(std::countr_zero(bits));
  bits &= bits - 1;
  fields.push_back({.bits = {bit, bit}, .name = {}, .value = 1, .text = {}});
}

}  // namespace

std::vector<TField> DecodeFields(const TRegisterMeaning& meaning, std::uint64_t value) {
  std::vector<TField> fields;
  if (!TellsEveryBit(meaning)) return fields;
  std::uint64_t rest = value & ~DescribedBits(meaning);
  const auto most = meaning.fields.size() + static_cast<std::size_t>(std::popcount(rest));
  fields.reserve(std::min(most, static_cast<std::size_t>(std::popcount(value))));
  for (const TFieldMeaning& field : meaning.fields) {
    const std::uint64_t found = (value & MaskOf(field.bits)) >> field.bits.low;
    const auto text = TextOf(field, found);
    if (found == 0 && !text) continue;
    while (rest != 0 && static_cast<unsigned>(std::countr_zero(rest)) < field.bits.low) AddLowestBit(rest, fields);
    fields.push_back({field.bits, field.name, found, text, field.isHex});
  }
  while (rest != 0) AddLowestBit(rest, fields);
  return fields;
}

std::string BitsText(TBits bits, unsigned width, bool isMsb0) {
  const unsigned last = width - 1;
  const unsigned high = isMsb0 ? last - bits.high : bits.high;
  const unsigned low = isMsb0 ? last - bits.low : bits.low;
  return high == low ? std::to_string(high) : std::to_string(high) + ":" + std::to_string(low);
}

}  // namespace velhost
