#include "host/meaning/fieldlist.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>
#include <variant>

#include "host/base/text.h"

namespace velhost {

namespace {

constexpr std::size_t kShown = 40;  // bytes of a name or number that a message quotes

std::uint64_t LargestValue(TBits bits) { return ~std::uint64_t{0} >> (63U - (bits.high - bits.low)); }

bool Overlap(TBits a, TBits b) { return a.low <= b.high && b.low <= a.high; }

std::optional<TFieldBreach> CheckValue(const TWrittenValue& value, TBits bits) {
  const std::uint64_t largest = LargestValue(bits);
  if (value.value && *value.value <= largest) return std::nullopt;
  return TFieldBreach{
      value.at, "found the value " + SingleQuoted(value.text, kShown) + ", expected 0 to " + std::to_string(largest)};
}

}  // namespace

std::optional<TFieldBreach> TFieldList::Add(std::string_view element) {
  auto parsed = ParseFieldElement(element);
  if (auto* const breach = std::get_if<TFieldBreach>(&parsed)) return std::move(*breach);
  const auto& field = std::get<TFieldElement>(parsed);
  auto bits = BitsOf(field.bits, width_, isMsb0_);
  if (auto* const breach = std::get_if<TFieldBreach>(&bits)) return std::move(*breach);
  return field.values ? AddText(field, std::get<TBits>(bits)) : AddField(field, std::get<TBits>(bits));
}

std::optional<TFieldBreach> TFieldList::AddField(const TFieldElement& element, TBits bits) {
  for (const TDraft& other : fields_) {
    if (Overlap(other.bits, bits)) {
      return TFieldBreach{element.bits.firstAt, "found bits of the field " + SingleQuoted(other.name, kShown) +
                                                    ", expected bits that no earlier field has"};
    }
    if (other.name == element.text) {
      return TFieldBreach{element.textAt, "found the name " + SingleQuoted(other.name, kShown) +
                                              " again, expected one that no earlier field has"};
    }
  }
  fields_.push_back({bits, element.isHex, std::string(element.text), {}});
  return std::nullopt;
}

std::optional<TFieldBreach> TFieldList::AddText(const TFieldElement& element, TBits bits) {
  const auto field =
      std::find_if(fields_.begin(), fields_.end(), [bits](const TDraft& other) { return other.bits == bits; });
  if (field == fields_.end()) {
    return TFieldBreach{element.bits.firstAt,
                        "found bits that match no earlier field, expected those of the field that the text is for"};
  }
  const TWrittenValues& values = *element.values;
  if (auto breach = CheckValue(values.first, bits)) return breach;
  if (auto breach = CheckValue(values.last, bits)) return breach;
  const std::uint64_t first = *values.first.value;
  const std::uint64_t last = *values.last.value;
  if (first > last) {
    return TFieldBreach{values.first.at, "found a range that ends before it starts, expected the smaller value first"};
  }
  const auto above = field->texts.upper_bound(last);
  if (above != field->texts.begin() && std::prev(above)->second.last >= first) {
    const std::uint64_t given = std::max(first, std::prev(above)->first);
    return TFieldBreach{values.first.at,
                        "found a second text for the value " + std::to_string(given) + ", expected one for each value"};
  }
  field->texts.emplace_hint(above, first, TText{last, std::string(element.text)});
  return std::nullopt;
}

std::vector<TFieldMeaning> TFieldList::Take() {
  std::sort(fields_.begin(), fields_.end(), [](const TDraft& a, const TDraft& b) { return a.bits.low < b.bits.low; });
  std::vector<TFieldMeaning> meanings;
  meanings.reserve(fields_.size());
  for (TDraft& field : fields_) {
    TFieldMeaning meaning{field.bits, field.isHex, std::move(field.name), {}};
    meaning.texts.reserve(field.texts.size());
    for (auto& [first, text] : field.texts) meaning.texts.push_back({first, text.last, std::move(text.text)});
    meanings.push_back(std::move(meaning));
  }
  return meanings;
}

}  // namespace velhost
