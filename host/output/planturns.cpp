#include "host/output/planturns.h"

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <tuple>

#include "host/output/capturefiles.h"

namespace velhost {

namespace {

using CollectorProfile::EPath;

template <typename TCode, std::size_t kCount>
const char* NameIn(const std::array<const char*, kCount>& names, TCode code) {
  return names.at(static_cast<std::size_t>(code));
}

constexpr std::array<const char*, 4> kStatuses = {"complete", "partial", "unreachable", "failed"};
constexpr std::array<const char*, 12> kReasons = {
    "stopped",      "session-lost", "request-failed",    "register-unread", "time-unread",   "file-unread",
    "block-unread", "block-short",  "block-undecodable", "not-served",      "not-collected", "nothing-read"};
constexpr std::array<const char*, 6> kUnread = {"absent",       "register-unread",   "file-unread",
                                                "block-unread", "block-undecodable", "discarded"};

}  // namespace

const char* NameOfOriginPath(EPath path) {
  switch (path) {
    case EPath::kR8: return "r8";
    case EPath::kJfr: return "jfr";
    case EPath::kCapture: return "ffdc";
    case EPath::kNone: break;
  }
  return "none";
}

const char* NameOfStatus(EResultStatus status) { return NameIn(kStatuses, status); }
const char* NameOfReason(EReason reason) { return NameIn(kReasons, reason); }
const char* NameOfUnread(EUnread unread) { return NameIn(kUnread, unread); }

TPlanTurns::TPlanTurns(const TPlan* plan) {
  if (plan == nullptr) return;
  for (const TPlannedRequest& request : plan->requests) {
    for (const TPlannedTurn& turn : request.turns) turns_.push_back({&plan->ClassOf(turn), turn.time});
  }
}

std::string TPlanTurns::Key(std::uint32_t turn, TPlace place) const {
  const TTurn& found = At(turn);
  return KeyOf(*found.planned, found.time, place);
}

TOrigin TPlanTurns::Origin(std::uint32_t turn, TPlace place) const {
  const TPlannedClass& planned = *At(turn).planned;
  TOrigin origin;
  origin.path = planned.path;
  origin.owner = place.owner;
  if (planned.path == EPath::kR8) origin.chip = planned.isBridge ? (place.number + 1) & 0xFF : 0;
  if (planned.path != EPath::kCapture) origin.instance = place.number;
  return origin;
}

std::string_view TPlanTurns::PropertyOf(const TExchangeFailure& failure) const {
  if (!failure.isPlaced) return {};
  if (failure.kind == EExchangeKind::kTimestamp) return "StatisticTime";
  if (failure.kind == EExchangeKind::kRead) return kCaptureDataProperty;
  if (failure.registerIndex < 0) return {};
  const TPlannedClass& planned = *At(failure.turn).planned;
  const std::size_t property = planned.registers.at(static_cast<std::size_t>(failure.registerIndex)).property;
  return planned.cimClass->Properties().at(property)->Definition().name;
}

}  // namespace velhost
