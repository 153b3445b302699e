#include "host/result/resultreasons.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <tuple>
#include <utility>

#include "host/base/text.h"

namespace velhost {

namespace {

using TSize = std::uint64_t;

constexpr std::size_t kReasonsInMessage = 3;

// "1 of 24 registers was not read", "2 of 24 registers were not read"; "2 registers were not read" if the plan does not
// know of as many.
std::string Share(TSize count, TSize total, std::string_view noun, std::string_view one, std::string_view several,
                  std::string_view what) {
  std::string text =
      (total < count ? "" : std::to_string(count) + " of ") + Counted(std::max(count, total), noun) + " ";
  text += count == 1 ? one : several;
  text += what;
  return text;
}

std::string Joined(const std::vector<std::string>& texts) {
  std::string joined;
  for (const std::string& text : texts) joined += (joined.empty() ? "" : "; ") + text;
  return joined;
}

std::string TimeText(TSize count) {
  if (count == 1) return "the time of 1 instance was not read";
  return "the times of " + std::to_string(count) + " instances were not read";
}

// Which blocks have no valid time, and what was lost with them.
std::string UndecodableText(const std::vector<std::string>& serviceProcessors, TSize dropped) {
  const bool isOne = serviceProcessors.size() == 1;
  std::string text = isOne ? "the register block of service processor " : "the register blocks of service processors ";
  text += Listed(serviceProcessors, " and ") + (isOne ? " has no valid time" : " have no valid time");
  if (dropped == 0) return text;
  text += "; " + Counted(dropped, "instance") + " from other service processors " + (dropped == 1 ? "was" : "were");
  return text + (isOne ? " discarded with it" : " discarded with them");
}

bool IsRepeat(const TExchangeFailure& failure, const TExchangeFailure& before) {
  const auto tell = [](const TExchangeFailure& of) {
    return std::tie(of.turn, of.kind, of.isPlaced, of.owner, of.place.owner, of.place.number, of.registerIndex,
                    of.address);
  };
  return failure.how == before.how && tell(failure) == tell(before);
}

// The status that a failure of the command gives a result; empty if what was collected decides.
std::optional<EResultStatus> StatusBy(EFailure failure) {
  switch (failure) {
    case EFailure::kMalformed:
    case EFailure::kTooLarge:
    case EFailure::kAbsent:
    case EFailure::kDefect: return EResultStatus::kFailed;
    case EFailure::kDenied:
    case EFailure::kRefused:
    case EFailure::kUnreachable: return EResultStatus::kUnreachable;
    default: return std::nullopt;
  }
}

// A time that was not read makes a result no less complete.
bool IsPartial(const std::vector<TReason>& reasons) {
  return std::any_of(reasons.begin(), reasons.end(), [](const TReason& r) { return r.code != EReason::kTimeUnread; });
}

std::string MessageOf(const std::vector<TReason>& reasons) {
  std::vector<const TReason*> ordered;
  for (const TReason& reason : reasons) ordered.push_back(&reason);
  std::stable_partition(ordered.begin(), ordered.end(),
                        [](const TReason* r) { return r->code != EReason::kTimeUnread; });
  std::vector<std::string> texts;
  for (const TReason* reason : ordered) {
    if (texts.size() == kReasonsInMessage) {
      texts.push_back("and " + std::to_string(ordered.size() - kReasonsInMessage) + " more");
      break;
    }
    texts.push_back((reason->className.empty() ? "" : reason->className + ": ") + reason->message);
  }
  return Joined(texts);
}

}  // namespace

TResultReasons::TResultReasons(const TPlan& plan) : plan_(plan) {
  for (const TPlannedRequest& request : plan_.requests) {
    for (const TPlannedTurn& turn : request.turns) {
      const bool isServed = plan_.ClassOf(turn).whyNotServed.empty();
      turns_.push_back({.planClass = turn.planClass, .isNotServed = turn.isNamed && !isServed});
      if (turns_.back().isNotServed) Add(ofClasses_[turn.planClass], EReason::kNotServed, 1, {});
    }
  }
}

void TResultReasons::AddFailure(const TExchangeFailure& failure) {
  if (!failed_.empty() && IsRepeat(failure, failed_.back())) {
    ++failed_.back().repeat;
  } else {
    failed_.push_back(failure);
  }
}

void TResultReasons::Add(TEntries& entries, EReason code, TSize count, const std::string& detail) {
  TEntry& entry = entries[code];
  entry.count += count;
  const bool isNew = std::find(entry.details.begin(), entry.details.end(), detail) == entry.details.end();
  if (!detail.empty() && isNew) entry.details.push_back(detail);
}

void TResultReasons::AddReason(std::uint32_t turn, EReason code, TSize count, const std::string& detail) {
  if (count == 0) return;
  TTurn& about = turns_[turn];
  if (code == EReason::kNotCollected) about.isCollected = false;
  if (about.isCollected || !about.isNotServed) Add(ofClasses_[about.planClass], code, count, detail);
}

void TResultReasons::AddReasonOfRun(EReason code, const std::string& detail) { Add(ofRun_, code, 1, detail); }

bool TResultReasons::IsNothingRead() const { return turns_.empty() || (plan_.Total() > 0 && instances_ == 0); }

TSize TResultReasons::CollectedTurns(std::size_t planClass) const {
  return static_cast<TSize>(std::count_if(turns_.begin(), turns_.end(), [&](const TTurn& turn) {
    return turn.planClass == planClass && turn.isCollected;
  }));
}

TSize TResultReasons::Discarded(std::size_t planClass) const {
  return static_cast<TSize>(std::count_if(unread_.begin(), unread_.end(), [&](const TUnread& unread) {
    return unread.code == EUnread::kDiscarded && turns_[unread.turn].planClass == planClass;
  }));
}

std::string TResultReasons::FileText(const TEntry& entry, TSize turns) const {
  const TSize files = turns * kCaptureAreas.size() * static_cast<TSize>(std::max(plan_.server.bmcNodes, 0));
  std::string text = Share(entry.count, files, "capture file", "is", "are", " missing or incomplete");
  if (!entry.details.empty()) text += "; " + Joined(entry.details);
  return text + (plan_.server.ipmiDriver ? "" : "; the IPMI driver is not present");
}

std::string TResultReasons::BlockText(const TEntry& entry, TSize turns) const {
  if (!plan_.server.communicates) return "the communication check of the service processor failed";
  return Share(entry.count, turns * plan_.blocks, "register block", "was", "were", " not received");
}

std::string TResultReasons::MessageOfClass(std::size_t planClass, EReason code, const TEntry& entry) const {
  const TPlannedClass& planned = plan_.classes[planClass];
  const TSize turns = CollectedTurns(planClass);
  switch (code) {
    case EReason::kSessionLost: return "the connection to the service processor was lost";
    case EReason::kRegisterUnread:
      return Share(entry.count, turns * planned.instances * planned.registers.size(), "register", "was", "were",
                   " not read");
    case EReason::kTimeUnread: return TimeText(entry.count);
    case EReason::kFileUnread: return FileText(entry, turns);
    case EReason::kBlockUnread: return BlockText(entry, turns);
    case EReason::kBlockShort:
      return Share(entry.count, turns * plan_.blocks, "register block", "was", "were", " too short");
    case EReason::kBlockUndecodable: return UndecodableText(entry.details, Discarded(planClass));
    case EReason::kNotServed: return "not served: " + planned.whyNotServed;
    default: return Joined(entry.details);
  }
}

std::vector<TReason> TResultReasons::Reasons() const {
  std::vector<TReason> reasons;
  for (const auto& [code, entry] : ofRun_) {
    const bool isLoss = code == EReason::kSessionLost;
    reasons.push_back(
        {code, {}, entry.count, isLoss ? "the connection to the service processor was lost" : Joined(entry.details)});
  }
  if (IsNothingRead()) {
    reasons.push_back({EReason::kNothingRead,
                       {},
                       1,
                       turns_.empty() ? "there are no classes to collect" : "no instance was delivered"});
  }
  std::vector<bool> isTold(plan_.classes.size());
  for (const TTurn& turn : turns_) {
    if (isTold[turn.planClass]) continue;
    isTold[turn.planClass] = true;
    const auto found = ofClasses_.find(turn.planClass);
    if (found == ofClasses_.end()) continue;
    const std::string& name = plan_.classes[turn.planClass].cimClass->Name();
    for (const auto& [code, entry] : found->second) {
      reasons.push_back({code, name, entry.count, MessageOfClass(turn.planClass, code, entry)});
    }
  }
  return reasons;
}

TResultSummary TResultReasons::Close(const std::optional<THostError>& failure) {
  TResultSummary summary;
  summary.plan = &plan_;
  summary.exchanges = exchanges_;
  summary.reasons = Reasons();
  summary.failed = std::move(failed_);
  summary.unread = std::move(unread_);
  const auto byFailure = failure ? StatusBy(failure->Kind()) : std::nullopt;
  const EResultStatus byReasons = IsPartial(summary.reasons) ? EResultStatus::kPartial : EResultStatus::kComplete;
  summary.status = byFailure.value_or(byReasons);
  if (byFailure) {
    const std::string text = failure->what();
    summary.message = text.substr(0, text.find('\n'));
  } else if (summary.status == EResultStatus::kPartial) {
    summary.message = MessageOf(summary.reasons);
  }
  return summary;
}

}  // namespace velhost
