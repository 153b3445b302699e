#include "host/change/instancediff.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/base/names.h"
#include "host/change/textdiff.h"
#include "host/meaning/field.h"
#include "host/output/capturefiles.h"
#include "host/output/resulttext.h"

namespace velhost {

namespace {

// What an instance says of one of its properties.
enum class EState {
  kNotPlanned,
  kValue,
  kAbsent,
  kUnread,
};

/// The registers, the file and what is missing of one instance, by name without regard to case.
class TDelivered {
 public:
  explicit TDelivered(const TReadInstance& instance) : instance_(instance) {
    if (instance.registers) {
      for (const TReadRegister& one : *instance.registers) names_.push_back(FoldName(one.name));
    }
    for (const TMissing& missing : instance.facts.missing) missing_[FoldName(missing.property)] = &missing;
  }

  const TReadInstance& Instance() const { return instance_; }
  std::size_t Registers() const { return names_.size(); }
  const std::string& FoldedName(std::size_t i) const { return names_[i]; }
  const TReadRegister& At(std::size_t i) const { return (*instance_.registers)[i]; }

  /// `likely` is where it is if both sides have the same registers. Null if there is none.
  const TReadRegister* Find(const std::string& foldedName, std::size_t likely) const {
    if (likely < names_.size() && names_[likely] == foldedName) return &At(likely);
    const auto found = std::find(names_.begin(), names_.end(), foldedName);
    return found == names_.end() ? nullptr : &At(static_cast<std::size_t>(found - names_.begin()));
  }

  const std::map<std::string, const TMissing*>& Missing() const { return missing_; }
  const TMissing* FindMissing(const std::string& foldedName) const {
    const auto found = missing_.find(foldedName);
    return found == missing_.end() ? nullptr : found->second;
  }

  EState StateOf(const std::string& foldedName, const TMissing& ofOther) const {
    if (const TMissing* const missing = FindMissing(foldedName))
      return IsAbsent(*missing) ? EState::kAbsent : EState::kUnread;
    const bool isRegister = ofOther.where.address || ofOther.where.addresses || ofOther.where.index;
    // Every instance has a time, and every capture file its bytes.
    return !isRegister || Find(foldedName, 0) != nullptr ? EState::kValue : EState::kNotPlanned;
  }

 private:
  const TReadInstance& instance_;
  std::vector<std::string> names_;
  std::map<std::string, const TMissing*> missing_;
};

std::uint64_t BitsIn(std::uint64_t value, TBits bits) { return (value & MaskOf(bits)) >> bits.low; }

// The bytes of a capture file; empty for any other instance. Text that is not pairs of digits is compared as it is.
std::optional<std::string> BytesOf(const TReadInstance& instance) {
  if (!instance.facts.file) return std::nullopt;
  for (const TReadProperty& property : instance.properties) {
    if (!EqualNames(property.name, kCaptureDataProperty)) continue;
    const std::string text = property.value.ToString(10);
    const auto bytes = DecodeHexPairs(text);
    return bytes ? std::string(bytes->begin(), bytes->end()) : text;
  }
  return std::string();
}

// A pair of deliveries of one register.
class TRegisterPair {
 public:
  TRegisterPair(const TReadRegister& before, const TReadRegister& after) : before_(before), after_(after) {}

  std::vector<TFieldChange> Fields() const {
    struct TSides {
      const TReadField* before = nullptr;
      const TReadField* after = nullptr;
    };
    const auto isLower = [](TBits a, TBits b) { return a.low != b.low ? a.low < b.low : a.high < b.high; };
    std::map<TBits, TSides, decltype(isLower)> sides(isLower);
    for (const TReadField& field : before_.fields) sides[field.bits].before = &field;
    for (const TReadField& field : after_.fields) sides[field.bits].after = &field;
    std::vector<TFieldChange> changes;
    for (const auto& [bits, side] : sides) {
      const std::uint64_t before = BitsIn(before_.value, bits);
      const std::uint64_t after = BitsIn(after_.value, bits);
      if (before == after) continue;
      const TReadRegister& listing = side.after != nullptr ? after_ : before_;
      TFieldChange& change = changes.emplace_back();
      change.bits = BitsText(bits, listing.Width(), listing.isMsb0);
      change.name = side.after != nullptr ? side.after->name : side.before->name;
      change.width = WidthOf(bits);
      change.before = before;
      change.after = after;
      if (side.before != nullptr) change.beforeText = side.before->text;
      if (side.after != nullptr) change.afterText = side.after->text;
    }
    return changes;
  }

  bool IsCounter() const { return before_.role == ERole::kCounter && after_.role == ERole::kCounter; }
  /// Whether each of the fields is a counter; otherwise the whole register is one. A side whose value is zero may list
  /// none of them.
  bool HasFields() const {
    const auto mayHave = [](const TReadRegister& one) { return !one.fields.empty() || one.value == 0; };
    return (!before_.fields.empty() || !after_.fields.empty()) && mayHave(before_) && mayHave(after_);
  }

 private:
  const TReadRegister& before_;
  const TReadRegister& after_;
};

class TInstancePair {
 public:
  TInstancePair(const TReadInstance& before, const TReadInstance& after, TDifferences& differences)
      : before_(before), after_(after), className_(after.className), key_(after.facts.key), differences_(differences) {}

  void Compare() {
    CompareRegisters();
    CompareMissing();
    CompareFiles();
  }

 private:
  void CompareRegisters() {
    for (std::size_t i = 0; i < after_.Registers(); ++i) {
      const TReadRegister* const before = before_.Find(after_.FoldedName(i), i);
      if (before != nullptr) {
        CompareValues(*before, after_.At(i));
      } else if (before_.FindMissing(after_.FoldedName(i)) == nullptr) {
        AddUncompared(after_.At(i).name, EUncompared::kNotPlanned, EUncompared::kNot);
      }
    }
    for (std::size_t i = 0; i < before_.Registers(); ++i) {
      const std::string& name = before_.FoldedName(i);
      if (after_.Find(name, i) != nullptr || after_.FindMissing(name) != nullptr) continue;
      AddUncompared(before_.At(i).name, EUncompared::kNot, EUncompared::kNotPlanned);
    }
  }

  void CompareValues(const TReadRegister& before, const TReadRegister& after) {
    if (before.value == after.value) return;
    const TRegisterPair pair(before, after);
    TRegisterChange change{className_,  key_,           after.name,    before.value,
                           after.value, before.Width(), after.Width(), pair.Fields()};
    if (!pair.IsCounter()) return differences_.registers.push_back(std::move(change));
    if (!pair.HasFields()) {
      TFieldChange whole;
      whole.width = after.Width();
      whole.before = before.value;
      whole.after = after.value;
      return AddCounter(change, after, whole);
    }
    std::vector<TFieldChange> undescribed;
    for (TFieldChange& field : change.fields) {
      if (field.name) {
        AddCounter(change, after, field);
      } else {
        undescribed.push_back(std::move(field));
      }
    }
    if (undescribed.empty()) return;
    change.fields = std::move(undescribed);
    differences_.registers.push_back(std::move(change));
  }

  void AddCounter(const TRegisterChange& change, const TReadRegister& after, const TFieldChange& field) {
    differences_.counters.push_back({className_, key_, change.registerName, field.bits,
                                     field.name.value_or(std::string()), after.unit, field.width, field.before,
                                     field.after});
  }

  void CompareMissing() {
    std::set<std::string> names;
    for (const TDelivered* const side : {&before_, &after_}) {
      for (const auto& [name, missing] : side->Missing()) {
        if (names.insert(name).second) CompareMissing(name, *missing);
      }
    }
  }

  void CompareMissing(const std::string& name, const TMissing& missing) {
    const EState before = before_.StateOf(name, missing);
    const EState after = after_.StateOf(name, missing);
    const bool isUnread = before == EState::kUnread || after == EState::kUnread;
    if (isUnread) return AddUncompared(missing.property, WhyNot(before), WhyNot(after));
    const bool hasChanged = before != after && (before == EState::kValue || after == EState::kValue);
    if (hasChanged) differences_.missing.push_back({className_, key_, missing.property, after == EState::kValue});
  }

  static EUncompared WhyNot(EState state) {
    if (state == EState::kUnread) return EUncompared::kUnread;
    return state == EState::kNotPlanned ? EUncompared::kNotPlanned : EUncompared::kNot;
  }

  void AddUncompared(const std::string& what, EUncompared before, EUncompared after) {
    differences_.uncompared.push_back({className_, key_, what, before, after});
  }

  void CompareFiles() {
    const std::string name = FoldName(kCaptureDataProperty);
    if (before_.FindMissing(name) != nullptr || after_.FindMissing(name) != nullptr) return;
    const auto before = BytesOf(before_.Instance());
    const auto after = BytesOf(after_.Instance());
    if (!before || !after || *before == *after) return;
    TFileChange change = CompareBytes(*before, *after);
    change.className = className_;
    change.key = key_;
    differences_.files.push_back(std::move(change));
  }

  TDelivered before_;
  TDelivered after_;
  const std::string& className_;
  const std::string& key_;
  TDifferences& differences_;
};

}  // namespace

void CompareInstances(const TReadInstance& before, const TReadInstance& after, TDifferences& differences) {
  TInstancePair(before, after, differences).Compare();
}

}  // namespace velhost
