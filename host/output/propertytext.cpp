#include "host/output/propertytext.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "host/base/cimdatetime.h"
#include "host/base/digits.h"
#include "host/base/names.h"
#include "host/base/text.h"
#include "host/base/utf8.h"
#include "host/output/fieldtext.h"
#include "host/output/resulttext.h"
#include "host/output/tablefindings.h"
#include "host/profile/collectorprofile.h"

namespace velhost {

namespace {

using CollectorProfile::EPath;
using TType = TCIMValue::TCIMType;

template <typename TNames>
bool Contains(const TNames& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::string ScalarText(const TCIMValue& value) {
  if (value.IsNull()) return "(null)";
  switch (value.GetType().GetCode()) {
    case TType::kDateTime: return value.ToDateTime().ToIso8601();
    case TType::kChar16: {
      std::string character;
      AppendUtf8(character, static_cast<char32_t>(value.ToInteger()));
      return SafeText(character);
    }
    default: return SafeText(value.ToString(10));
  }
}

std::string ElementText(const TCIMValue& element) {
  const bool quoted = element.GetType() == TType::kString && !element.IsNull();
  return quoted ? '"' + ScalarText(element) + '"' : ScalarText(element);
}

// The path of an instance whose place is unknown, as far as it determines how its values are to be read: kJfr for a
// class below one of the JFR base classes, kR8 for one of the R8 classes, otherwise kNone.
EPath PathOfClass(const TCIMClass& cimClass) {
  for (const TCIMClass* above = cimClass.SuperClass().get(); above != nullptr; above = above->SuperClass().get()) {
    if (Contains(CollectorProfile::kJfrBaseClasses, above->Name())) return EPath::kJfr;
  }
  return Contains(CollectorProfile::kR8Classes, cimClass.Name()) ? EPath::kR8 : EPath::kNone;
}

// A value without facts about it: of a register only the collector's bytes are known.
std::string ValueText(const TCIMValue& value, EPath path) {
  if (value.IsNull() || !value.IsArray()) return ScalarText(value);
  if (const auto parts = CollectorProfile::SplitRegisterValue(path, value)) {
    return HexNumber(parts->identification) + "  (collector " + HexNumber(parts->value) + ")";
  }
  std::string text;
  for (const TCIMValue& element : static_cast<const std::vector<TCIMValue>&>(value)) {
    if (!text.empty()) text += ", ";
    text += ElementText(element);
  }
  return text.empty() ? "(empty)" : text;
}

// "06:08:56, date unknown". The service processor's clock counts from an unknown day.
std::string TimeOfDay(const TCIMValue& value) {
  const std::string text = value.ToString(10);
  if (!IsCimDateTime(text)) return ScalarText(value);
  return fmt::format("{}:{}:{}, date unknown", text.substr(8, 2), text.substr(10, 2), text.substr(12, 2));
}

bool IsTimeOfDay(std::string_view name, const TCIMValue& value, EPath path) {
  return path == EPath::kR8 && name == "StatisticTime" && value.GetType() == TType::kDateTime && !value.IsArray() &&
         !value.IsNull();
}

std::string PlaceOf(const TRegisterFacts& facts) {
  TWhere where;
  if (facts.isIndex) {
    where.index = static_cast<std::uint16_t>(facts.place);
  } else {
    where.address = facts.place;
  }
  return WhereText(where);
}

std::string RegisterText(const TRegisterFacts& facts) {
  std::string text = HexNumber(facts.value, facts.isNarrow ? 4 : 8);
  std::vector<std::string> notes;
  if (facts.upper) notes.push_back("upper " + HexNumber(*facts.upper, 4));
  if (facts.folded) notes.push_back("collector " + HexNumber(*facts.folded, 4));
  return notes.empty() ? text : text + "  (" + Listed(notes, ", ") + ")";
}

std::string MissingValueText(const TMissing& missing) {
  return IsAbsent(missing) ? WhyText(missing) : "missing: " + WhyText(missing);
}

std::string CaptureText(const TCaptureFile& capture, const TMissing* missing) {
  std::string size = Counted(capture.data.size(), "byte");
  if (missing == nullptr) return size;
  return size + "; incomplete from " + WhereText(missing->where) + " on: " + WhyText(*missing);
}

// What is known of the properties of one instance.
class TKnown {
 public:
  TKnown(const TInstance& instance, const TInstanceFacts& facts)
      : instance_(instance), path_(facts.origin ? facts.origin->path : PathOfClass(instance.Class())) {
    for (const TMissing& missing : facts.missing) {
      missing_[missing.property] = &missing;
      if (!missing.where.addresses) Widen(WhereText(missing.where));
    }
    for (const TFinding& finding : facts.findings) {
      if (finding.isMasked) continue;
      ESeverity& worst = worst_.try_emplace(finding.place->name, finding.severity).first->second;
      worst = std::max(worst, finding.severity);
    }
    if (!facts.registers) return;
    for (const TRegisterFacts& one : *facts.registers) {
      registers_[one.property] = &one;
      Widen(PlaceOf(one));
    }
  }

  const TMissing* MissingOf(const std::string& name) const {
    const auto found = missing_.find(name);
    return found == missing_.end() ? nullptr : found->second;
  }

  EEmphasis EmphasisOf(std::size_t property) const {
    const std::string& name = instance_.Class().Properties()[property]->Definition().name;
    if (const TMissing* missing = MissingOf(name)) return IsAbsent(*missing) ? EEmphasis::kDim : EEmphasis::kFailure;
    if (const auto worst = worst_.find(name); worst != worst_.end()) return velhost::EmphasisOf(worst->second);
    const auto known = registers_.find(property);
    const bool isZero = known != registers_.end() && known->second->value == 0 && !known->second->upper;
    return isZero ? EEmphasis::kDim : EEmphasis::kNone;
  }

  std::vector<std::string> FieldsOf(std::size_t property) const {
    const auto known = registers_.find(property);
    return known == registers_.end() ? std::vector<std::string>() : FieldTexts(*known->second);
  }

  std::string TextOf(std::size_t property) const {
    const std::string& name = instance_.Class().Properties()[property]->Definition().name;
    if (const TMissing* missing = MissingOf(name)) return At(WhereText(missing->where), MissingValueText(*missing));
    const auto known = registers_.find(property);
    if (known != registers_.end()) return At(PlaceOf(*known->second), RegisterText(*known->second));
    const TCIMValue& value = instance_.Value(property);
    return IsTimeOfDay(name, value, path_) ? TimeOfDay(value) : ValueText(value, path_);
  }

 private:
  void Widen(const std::string& place) { width_ = std::max(width_, place.size()); }
  std::string At(const std::string& place, const std::string& text) const {
    return place.empty() ? text : fmt::format("{:<{}}  {}", place, width_, text);
  }

  const TInstance& instance_;
  EPath path_;
  std::map<std::string_view, const TMissing*> missing_;
  std::map<std::size_t, const TRegisterFacts*> registers_;
  std::map<std::string_view, ESeverity> worst_;  // of the findings of a register that are not masked
  std::size_t width_ = 0;                        // of addresses and indexes
};

}  // namespace

std::vector<TPropertyText> PropertyTexts(const TInstance& instance, const TInstanceFacts& facts,
                                         const TCaptureFile* capture) {
  const TKnown known(instance, facts);
  std::vector<TPropertyText> texts;
  const auto& properties = instance.Class().Properties();
  for (std::size_t i = 0; i < properties.size(); ++i) {
    const std::string& name = properties[i]->Definition().name;
    const TMissing* const missing = known.MissingOf(name);
    if (!instance.IsSet(i) && missing == nullptr) continue;
    TPropertyText& text = texts.emplace_back();
    text.name = SafeText(name);
    text.emphasis = known.EmphasisOf(i);
    text.isCapture = capture != nullptr && EqualNames(name, kCaptureDataProperty);
    text.text = text.isCapture ? CaptureText(*capture, missing) : known.TextOf(i);
    text.fields = known.FieldsOf(i);
  }
  return texts;
}

}  // namespace velhost
