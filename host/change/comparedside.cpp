#include "host/change/comparedside.h"

#include <algorithm>
#include <utility>

#include "host/base/digits.h"
#include "host/base/hosterror.h"
#include "host/base/names.h"
#include "host/base/sha256.h"
#include "host/base/text.h"
#include "host/output/resulttext.h"
#include "host/readback/readparts.h"

namespace velhost {

namespace {

// "#2" of ".../instance0#2"; empty for a first collection.
std::string_view TimeIn(std::string_view key) {
  const std::size_t sign = key.rfind('#');
  if (sign == std::string_view::npos || sign + 1 == key.size()) return {};
  const std::string_view digits = key.substr(sign + 1);
  return std::all_of(digits.begin(), digits.end(), IsDigit) ? key.substr(sign) : std::string_view();
}

bool IsOfCollection(EReason code) { return code == EReason::kNotServed || code == EReason::kNotCollected; }

bool EndsRun(const TReason& reason) {
  const bool isEnd = reason.code == EReason::kStopped || reason.code == EReason::kSessionLost ||
                     reason.code == EReason::kRequestFailed;
  return isEnd && reason.className.empty();
}

// Everything that is compared goes into it, each part with its length or an end.
std::string Fingerprint(const TReadInstance& instance) {
  std::string all;
  const auto add = [&all](std::string_view text) { all.append(std::to_string(text.size())).append(":").append(text); };
  for (const TMissing& missing : instance.facts.missing) {
    if (!IsAbsent(missing)) return {};
    add(FoldName(missing.property));
  }
  all += ';';
  if (instance.registers) {
    for (const TReadRegister& one : *instance.registers) {
      add(FoldName(one.name));
      all.append(std::to_string(one.value)).append(",");
    }
  }
  all += ';';
  for (const TReadProperty& property : instance.properties) add(property.value.ToString(10));
  TSha256 hash;
  hash.Add(all);
  return hash.HexDigest();
}

}  // namespace

std::string FoldedKey(std::string_view key) {
  const std::size_t slash = std::min(key.find('/'), key.size());
  return FoldName(key.substr(0, slash)).append(key.substr(slash));
}

std::string TurnOf(std::string_view foldedKey) {
  return std::string(foldedKey.substr(0, foldedKey.find('/'))).append(TimeIn(foldedKey));
}

TComparedSide::TComparedSide(const std::string& path, TStoredBytes text, ISourceReader* reader)
    : path_(path),
      reader_(path, std::move(text), EReadDetail::kCompared, reader,
              [this](const TReadInstance& instance, const TJsonPlace& place) { Add(instance, place); }) {
  if (Result().isFiltered) {
    throw THostError(EFailure::kMalformed,
                     SafeText(path) +
                         " has only findings and what belongs to them, so it cannot be compared; compare a "
                         "result that was collected without --only-findings, or its recording");
  }
  AddSummary();
}

void TComparedSide::NoteTurn(const std::string& className, std::string_view key) {
  turns_.emplace(FoldName(className).append(TimeIn(key)), className + std::string(TimeIn(key)));
}

void TComparedSide::Add(const TReadInstance& instance, const TJsonPlace& place) {
  const std::size_t number = entries_.size();
  entries_.push_back({place, nullptr, {}});
  NoteTurn(instance.className, instance.facts.key);
  if (HasUnknownPlace(instance.facts.key)) {
    unknownPlaces_.insert(FoldName(instance.className));
    return;
  }
  const auto [known, isNew] = delivered_.emplace(FoldedKey(instance.facts.key), number);
  if (!isNew) {
    throw THostError(EFailure::kMalformed, SafeText(path_) + ": found a second instance with the key " +
                                               Quoted(instance.facts.key) + ", expected each key once");
  }
  entries_.back().foldedKey = &known->first;
  entries_.back().fingerprint = Fingerprint(instance);
}

void TComparedSide::AddSummary() {
  const TReadResult& result = Result();
  for (const TReadUnread& unread : result.unread) {
    NoteTurn(unread.className, unread.key);
    unread_.emplace(FoldedKey(unread.key), unread.code);
  }
  for (const TReason& reason : result.reasons) {
    isUnfinished_ = isUnfinished_ || EndsRun(reason);
    if (reason.className.empty()) continue;
    NoteTurn(reason.className, {});
    if (IsOfCollection(reason.code)) uncollected_.insert(FoldName(reason.className));
  }
  isUnfinished_ =
      isUnfinished_ || result.status == EResultStatus::kUnreachable || result.status == EResultStatus::kFailed;
}

EKeyState TComparedSide::StateOf(const std::string& foldedKey) const {
  if (delivered_.count(foldedKey) != 0) return EKeyState::kDelivered;
  if (const auto unread = unread_.find(foldedKey); unread != unread_.end()) {
    return unread->second == EUnread::kAbsent ? EKeyState::kAbsent : EKeyState::kUnread;
  }
  const std::string turn = TurnOf(foldedKey);
  const std::string className = turn.substr(0, turn.find('#'));
  if (unknownPlaces_.count(className) != 0) return EKeyState::kUnknownPlace;
  if (Result().isCut) return EKeyState::kCut;
  if (uncollected_.count(className) != 0) return EKeyState::kNotCollected;
  if (turns_.count(turn) != 0) return EKeyState::kNotThere;
  return isUnfinished_ ? EKeyState::kNotCollected : EKeyState::kNotAskedFor;
}

std::optional<std::size_t> TComparedSide::Find(const std::string& foldedKey) const {
  const auto found = delivered_.find(foldedKey);
  return found == delivered_.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace velhost
