#include "host/change/resultdiff.h"

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "host/base/names.h"
#include "host/change/instancediff.h"
#include "host/readback/readparts.h"

namespace velhost {

namespace {

TComparedRun RunOf(const TReadResult& result) {
  const TResultHeader& header = result.header;
  const std::string sha256 = result.isServerKnown ? header.schema.sha256 : std::string();
  return {header.run, header.source, header.machineType, sha256, result.status, result.isCut};
}

// Why an instance in that state cannot be compared; kNot if it can.
EUncompared WhyNot(EKeyState state) {
  switch (state) {
    case EKeyState::kUnread: return EUncompared::kUnread;
    case EKeyState::kUnknownPlace: return EUncompared::kUnknownPlace;
    case EKeyState::kNotCollected: return EUncompared::kNotCollected;
    case EKeyState::kCut: return EUncompared::kCut;
    default: return EUncompared::kNot;
  }
}

class TComparison {
 public:
  TComparison(TComparedSide& before, TComparedSide& after) : before_(before), after_(after) {
    found_.before = RunOf(before.Result());
    found_.after = RunOf(after.Result());
  }

  TDifferences Compare() {
    if (found_.before.isCut || found_.after.isCut) AddWhole();
    CompareClasses();
    CompareDelivered();
    CompareUnread();
    CompareFindings();
    return std::move(found_);
  }

 private:
  // All that is unknown because a result was cut is one entry.
  void AddWhole() {
    const auto why = [](const TComparedRun& run) { return run.isCut ? EUncompared::kCut : EUncompared::kNot; };
    found_.uncompared.push_back({"", "", "", why(found_.before), why(found_.after)});
  }

  // The classes that a side was not asked for, and those of which some places are unknown.
  void CompareClasses() {
    for (const bool isBefore : {true, false}) {
      const TComparedSide& own = isBefore ? before_ : after_;
      const TComparedSide& other = isBefore ? after_ : before_;
      for (const auto& [turn, name] : own.Turns()) {
        if (other.StateOf(turn + "/") != EKeyState::kNotAskedFor) continue;
        found_.unasked.push_back({name, isBefore ? ESide::kBefore : ESide::kAfter});
      }
      for (const std::string& folded : own.UnknownPlaces()) {
        AddOfClass(own.Turns().at(folded), isBefore ? EUncompared::kUnknownPlace : EUncompared::kNot,
                   isBefore ? EUncompared::kNot : EUncompared::kUnknownPlace);
      }
    }
  }

  void CompareDelivered() {
    std::vector<bool> isMatched(before_.Instances());
    for (std::size_t i = 0; i < after_.Instances(); ++i) {
      const std::string* const key = after_.FoldedKeyOf(i);
      if (key == nullptr) continue;
      const auto number = before_.Find(*key);
      if (number) {
        isMatched[*number] = true;
        CompareBoth(*number, i);
      } else {
        AddAlone(after_.ReadAt(i), before_.StateOf(*key), ESide::kAfter);
      }
    }
    for (std::size_t i = 0; i < before_.Instances(); ++i) {
      const std::string* const key = before_.FoldedKeyOf(i);
      if (key == nullptr || isMatched[i]) continue;
      AddAlone(before_.ReadAt(i), after_.StateOf(*key), ESide::kBefore);
    }
  }

  // Most instances have not changed, and are not read again.
  void CompareBoth(std::size_t before, std::size_t after) {
    const std::string& fingerprint = before_.FingerprintOf(before);
    if (!fingerprint.empty() && fingerprint == after_.FingerprintOf(after)) return;
    CompareInstances(before_.ReadAt(before), after_.ReadAt(after), found_);
  }

  // An instance that only `side` delivered; `other` is what the other side says of it.
  void AddAlone(const TReadInstance& instance, EKeyState other, ESide side) {
    const std::string& className = instance.className;
    const std::string& key = instance.facts.key;
    if (other == EKeyState::kNotAskedFor) return;
    const bool hasAppeared = side == ESide::kAfter;
    const EUncompared why = WhyNot(other);
    if (why == EUncompared::kNot) {
      found_.keys.push_back({className, key, hasAppeared, other == EKeyState::kAbsent});
    } else {
      AddUncompared(className, key, hasAppeared ? why : EUncompared::kNot, hasAppeared ? EUncompared::kNot : why);
    }
  }

  void AddUncompared(const std::string& className, const std::string& key, EUncompared before, EUncompared after) {
    const bool isOfKey = before == EUncompared::kUnread || after == EUncompared::kUnread;
    const bool isOfCut = before == EUncompared::kCut || after == EUncompared::kCut;
    if (isOfKey) {
      found_.uncompared.push_back({className, key, "", before, after});
    } else if (!isOfCut) {
      AddOfClass(className, before, after);
    }
  }

  // One entry for each class.
  void AddOfClass(const std::string& className, EUncompared before, EUncompared after) {
    const auto [known, isNew] = ofClass_.emplace(FoldName(className), found_.uncompared.size());
    if (isNew) found_.uncompared.push_back({className, "", "", EUncompared::kNot, EUncompared::kNot});
    TUncompared& entry = found_.uncompared[known->second];
    if (before != EUncompared::kNot) entry.before = before;
    if (after != EUncompared::kNot) entry.after = after;
  }

  // Instances that neither side delivered, and that one of them or both could not read.
  void CompareUnread() {
    for (const TReadUnread& unread : before_.Result().unread) {
      CompareUnread(unread, unread.code == EUnread::kAbsent ? EKeyState::kAbsent : EKeyState::kUnread,
                    after_.StateOf(FoldedKey(unread.key)));
    }
    for (const TReadUnread& unread : after_.Result().unread) {
      const EKeyState before = before_.StateOf(FoldedKey(unread.key));
      if (before == EKeyState::kAbsent || before == EKeyState::kUnread) continue;
      CompareUnread(unread, before, unread.code == EUnread::kAbsent ? EKeyState::kAbsent : EKeyState::kUnread);
    }
  }

  void CompareUnread(const TReadUnread& unread, EKeyState before, EKeyState after) {
    const auto isDecided = [](EKeyState state) {
      return state == EKeyState::kDelivered || state == EKeyState::kNotAskedFor;
    };
    if (isDecided(before) || isDecided(after)) return;
    const EUncompared whyBefore = WhyNot(before);
    const EUncompared whyAfter = WhyNot(after);
    if (whyBefore == EUncompared::kNot && whyAfter == EUncompared::kNot) return;
    AddUncompared(unread.className, unread.key, whyBefore, whyAfter);
  }

  using TFindingName = std::tuple<std::string, std::string, std::string>;
  static TFindingName NameOf(const TReadFinding& finding) {
    return {FoldedKey(finding.key), FoldName(finding.registerName), finding.bits};
  }

  void CompareFindings() {
    if (found_.before.isCut || found_.after.isCut) return;
    for (const TUncompared& entry : found_.uncompared) {
      if (!entry.what.empty()) unreadRegisters_.emplace(FoldedKey(entry.key), FoldName(entry.what));
    }
    std::map<TFindingName, const TReadFinding*> known;
    for (const TReadFinding& finding : before_.Result().findings) known.emplace(NameOf(finding), &finding);
    for (const TReadFinding& finding : after_.Result().findings) {
      const auto same = known.find(NameOf(finding));
      if (same == known.end()) {
        if (IsDecided(finding, before_)) found_.findings.push_back({std::nullopt, finding});
      } else {
        CompareFinding(*same->second, finding);
        known.erase(same);
      }
    }
    for (const TReadFinding& finding : before_.Result().findings) {
      if (known.count(NameOf(finding)) == 0) continue;
      if (IsDecided(finding, after_)) found_.findings.push_back({finding, std::nullopt});
    }
  }

  // Whether the other side is sure not to have the finding.
  bool IsDecided(const TReadFinding& finding, const TComparedSide& other) const {
    const std::string key = FoldedKey(finding.key);
    const EKeyState state = other.StateOf(key);
    if (state == EKeyState::kDelivered) return unreadRegisters_.count({key, FoldName(finding.registerName)}) == 0;
    return state == EKeyState::kAbsent || state == EKeyState::kNotThere;
  }

  void CompareFinding(const TReadFinding& before, const TReadFinding& after) {
    const bool isSameValue = before.value == after.value;
    const bool isSameJudgement =
        before.severity == after.severity && before.isMasked == after.isMasked && before.isFirst == after.isFirst;
    if (isSameValue && isSameJudgement) return;
    const bool isSure = before.unknown.empty() && after.unknown.empty();
    if (!isSameValue || isSure) return found_.findings.push_back({before, after});
    const auto why = [](const TReadFinding& finding) {
      return finding.unknown.empty() ? EUncompared::kNot : EUncompared::kUnknownRegister;
    };
    found_.uncompared.push_back({after.className, after.key, after.registerName, why(before), why(after), after.bits});
  }

  TComparedSide& before_;
  TComparedSide& after_;
  TDifferences found_;
  std::map<std::string, std::size_t> ofClass_;
  std::set<std::pair<std::string, std::string>> unreadRegisters_;
};

}  // namespace

std::size_t TDifferences::Count() const {
  return keys.size() + registers.size() + counters.size() + files.size() + missing.size() + findings.size() +
         (HasOtherMachineType() ? 1 : 0) + (HasOtherSchema() ? 1 : 0);
}

TDifferences CompareResults(TComparedSide& before, TComparedSide& after) {
  return TComparison(before, after).Compare();
}

}  // namespace velhost
