#include "host/result/findings.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace velhost {

namespace {

constexpr TBits kUpperBits = {63, 32};

// The registers of one instance.
class TJudge {
 public:
  TJudge(const TClassMeaning& meaning, const TCIMClass& cimClass, TInstanceFacts& facts)
      : meaning_(meaning), cimClass_(cimClass), facts_(facts), read_(meaning.registers.size()) {
    // Both are in the order of the class.
    auto next = facts.registers->begin();
    for (std::size_t i = 0; i < read_.size() && next != facts.registers->end(); ++i) {
      if (next->property != meaning.registers[i].property) continue;
      next->meaning = &meaning.registers[i];
      read_[i] = &*next++;
    }
  }

  void AddFindings() const {
    for (const TRegisterFacts& one : *facts_.registers) {
      if (one.meaning != nullptr && one.meaning->role == ERole::kErrors) AddFindingsOf(one);
    }
  }

 private:
  using TPlace = std::shared_ptr<const TErrorRegister>;

  // The value of a register that another one names; empty if it names none or that was not read.
  std::optional<std::uint64_t> ValueOf(const std::optional<std::size_t>& index) const {
    if (!index || read_[*index] == nullptr) return std::nullopt;
    return read_[*index]->value;
  }
  const std::string& NameOf(std::size_t index) const {
    return cimClass_.Properties()[meaning_.registers[index].property]->Definition().name;
  }

  void AddFindingsOf(const TRegisterFacts& one) const;
  TPlace PlaceOf(const TRegisterFacts& one) const;
  std::vector<std::string> UnknownOf(const TRegisterMeaning& meaning) const;
  std::vector<TEvidence> EvidenceOf(const TRegisterMeaning& meaning) const;
  std::optional<unsigned> FirstBitOf(const TRegisterMeaning& meaning) const;
  bool ShowsEvidence(const TRegisterMeaning& meaning, bool isFirst) const;
  void Judge(const TRegisterMeaning& meaning, std::uint64_t bits, TFinding& finding) const;
  void AddField(const TRegisterFacts& one, const TField& field, const TPlace& place) const;
  void AddUpper(const TRegisterFacts& one, const TPlace& place) const;

  const TClassMeaning& meaning_;
  const TCIMClass& cimClass_;
  TInstanceFacts& facts_;
  std::vector<const TRegisterFacts*> read_;  // parallel to the registers of the meaning; null: not read
};

void TJudge::AddFindingsOf(const TRegisterFacts& one) const {
  if (one.value == 0 && !one.upper) return;
  const TPlace place = PlaceOf(one);
  for (const TField& field : one.fields) {
    if (field.value != 0) AddField(one, field, place);
  }
  if (one.upper) AddUpper(one, place);
}

TJudge::TPlace TJudge::PlaceOf(const TRegisterFacts& one) const {
  TErrorRegister place;
  place.className = cimClass_.Name();
  place.key = facts_.key;
  place.origin = facts_.origin.value_or(TOrigin{});
  place.name = cimClass_.Properties()[one.property]->Definition().name;
  place.value = one.value;
  place.isNarrow = one.isNarrow;
  place.unknown = UnknownOf(*one.meaning);
  place.evidence = EvidenceOf(*one.meaning);
  return std::make_shared<const TErrorRegister>(std::move(place));
}

// Each register once, although it may both mask and enable.
std::vector<std::string> TJudge::UnknownOf(const TRegisterMeaning& meaning) const {
  std::optional<std::size_t> first;
  if (meaning.firstError) first = meaning.firstError->registerIndex;
  std::vector<std::string> unknown;
  for (const auto& index : {meaning.maskedBy, meaning.enabledBy, meaning.fatalBy, first}) {
    if (!index || read_[*index] != nullptr) continue;
    const std::string& name = NameOf(*index);
    if (std::find(unknown.begin(), unknown.end(), name) == unknown.end()) unknown.push_back(name);
  }
  return unknown;
}

std::vector<TEvidence> TJudge::EvidenceOf(const TRegisterMeaning& meaning) const {
  std::vector<TEvidence> evidence;
  for (const std::size_t index : meaning.evidence) {
    evidence.push_back({NameOf(index), ValueOf(index), meaning_.registers[index].width == 32});
  }
  return evidence;
}

// The bit that was set first, 0 being the least significant; empty if that was not read or is not a bit of the
// register.
std::optional<unsigned> TJudge::FirstBitOf(const TRegisterMeaning& meaning) const {
  if (!meaning.firstError) return std::nullopt;
  const auto value = ValueOf(meaning.firstError->registerIndex);
  if (!value) return std::nullopt;
  const TBits bits = meaning.firstError->bits;
  const std::uint64_t number = (*value & MaskOf(bits)) >> bits.low;
  if (number >= meaning.width) return std::nullopt;
  const auto bit = static_cast<unsigned>(number);
  return meaning.isMsb0 ? meaning.width - 1 - bit : bit;
}

// What was logged belongs to the first error, if it is known which that was.
bool TJudge::ShowsEvidence(const TRegisterMeaning& meaning, bool isFirst) const {
  return isFirst || !meaning.firstError || !ValueOf(meaning.firstError->registerIndex);
}

// A masked finding has the severity that it would have without the mask.
void TJudge::Judge(const TRegisterMeaning& meaning, std::uint64_t bits, TFinding& finding) const {
  const std::uint64_t mask =
      ValueOf(meaning.maskedBy).value_or(0) | ~ValueOf(meaning.enabledBy).value_or(~std::uint64_t{0});
  finding.isMasked = (bits & ~mask) == 0;
  finding.severity = meaning.severity;
  if (!meaning.fatalBy) return;
  const std::uint64_t counted = finding.isMasked ? bits : bits & ~mask;
  const bool isFatal = (counted & ValueOf(meaning.fatalBy).value_or(0)) != 0;
  finding.severity = isFatal ? ESeverity::kFatal : ESeverity::kError;
}

void TJudge::AddField(const TRegisterFacts& one, const TField& field, const TPlace& place) const {
  const TRegisterMeaning& meaning = *one.meaning;
  const std::uint64_t bits = field.value << field.bits.low;
  const auto firstBit = FirstBitOf(meaning);
  TFinding finding;
  finding.place = place;
  finding.bits = BitsText(field.bits, meaning.width, meaning.isMsb0);
  finding.name = field.name;
  finding.value = field.value;
  finding.width = WidthOf(field.bits);
  finding.isHex = field.isHex;
  finding.text = field.text;
  Judge(meaning, bits, finding);
  finding.isFirst = firstBit && (bits & MaskOf({*firstBit, *firstBit})) != 0;
  finding.showsEvidence = ShowsEvidence(meaning, finding.isFirst);
  facts_.findings.push_back(std::move(finding));
}

// Nothing masks these bits, which the register does not have.
void TJudge::AddUpper(const TRegisterFacts& one, const TPlace& place) const {
  TFinding finding;
  finding.place = place;
  finding.bits = BitsText(kUpperBits, 64, false);
  finding.value = *one.upper;
  finding.width = WidthOf(kUpperBits);
  finding.severity = one.meaning->severity;
  finding.showsEvidence = ShowsEvidence(*one.meaning, false);
  facts_.findings.push_back(std::move(finding));
}

}  // namespace

void AddMeaning(const TClassMeaning& meaning, const TCIMClass& cimClass, TInstanceFacts& facts) {
  if (!facts.registers) return;
  const TJudge judge(meaning, cimClass, facts);
  for (TRegisterFacts& one : *facts.registers) {
    if (one.meaning != nullptr) one.fields = DecodeFields(*one.meaning, one.value);
  }
  judge.AddFindings();
}

void SortFindings(std::vector<TFinding>& findings) {
  std::stable_sort(findings.begin(), findings.end(), [](const TFinding& one, const TFinding& other) {
    return std::pair(one.isMasked, other.severity) < std::pair(other.isMasked, one.severity);
  });
}

}  // namespace velhost
