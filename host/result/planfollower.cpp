#include "host/result/planfollower.h"

#include <algorithm>
#include <array>
#include <boost/endian/conversion.hpp>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "host/result/findings.h"
#include "nkrovel20/dotcmd.h"
#include "wire/registerblock.h"
#include "wire/registerread.h"

namespace velhost {

namespace {

// Whether it is the dot command that the collector reads register blocks with.
bool ReadsBlock(const dotCmd& command) {
  namespace Block = wire::RegisterBlockCommand;
  std::vector<std::uint8_t> parameters(Block::kParameterSize);
  parameters[Block::kParameterBufferSize] = static_cast<std::uint8_t>(Block::kBlockSize & 0xFFU);
  parameters[Block::kParameterBufferSize + 1] = static_cast<std::uint8_t>(Block::kBlockSize >> 8U);
  const auto& identifier = command.GetIdentifier();
  return command.GetCommand() == Block::kCommand && command.GetParameters() == parameters &&
         std::equal(identifier.begin(), identifier.end(), Block::kIdentifier.begin(), Block::kIdentifier.end());
}

bool IsPlannedRead(EExchangeKind kind) { return kind == EExchangeKind::kRegister || kind == EExchangeKind::kDot; }

std::uint32_t AddressIn(const wire::TCommandBuffer& request) {
  return boost::endian::load_big_u24(request.Data() + wire::RegisterRead::kAddress);
}

// What is missing when an exchange of this kind, for which no register or file is known, fails.
std::optional<EReason> UnreadReasonOf(EExchangeKind kind) {
  switch (kind) {
    case EExchangeKind::kRegister: return EReason::kRegisterUnread;
    case EExchangeKind::kTimestamp: return EReason::kTimeUnread;
    case EExchangeKind::kOpen:
    case EExchangeKind::kSize:
    case EExchangeKind::kRead: return EReason::kFileUnread;
    case EExchangeKind::kDot: return EReason::kBlockUnread;
    default: return std::nullopt;
  }
}

// Of exchanges outside of a request, which a plugin may make when it starts or ends.
const std::vector<TPlannedTurn> kNoTurns;

std::string InstanceText(const std::string& className) { return "an instance of " + className; }

}  // namespace

TPlanFollower::TPlanFollower(const TPlan& plan, TResultReasons& reasons)
    : plan_(plan), reasons_(reasons), turns_(&kNoTurns) {}

void TPlanFollower::BeginRequest(std::size_t index) {
  turns_ = &plan_.requests[index].turns;
  firstTurn_ = plan_.FirstTurn(index);
  turn_ = 0;
  isDeparted_ = false;
  departure_.clear();
  hasFailedRead_ = false;
  madeInRequest_ = 0;
  StartTurn();
}

void TPlanFollower::OnIpmi(const TIpmiExchange& exchange) {
  const TExpected found = {KindOfRequest(exchange.request), exchange.request.Node(), exchange.request.Buffer()};
  Take(found, true, OutcomeOf(exchange));
}

void TPlanFollower::OnDot(const TDotExchange& exchange) {
  const TExpected found = {EExchangeKind::kDot, exchange.request.serviceProcessor, {}};
  Take(found, ReadsBlock(exchange.request.command), OutcomeOf(exchange));
}

void TPlanFollower::Take(const TExpected& found, bool isKnown, const TOutcome& outcome) {
  if (outcome.WasAttempted()) reasons_.CountExchange();
  if (found.kind == EExchangeKind::kRead && FailureOf(found.kind, outcome)) hasFailedRead_ = true;
  if (!isDeparted_) {
    const bool isPlanned =
        Advance() && walk_->CandidatesDue() == 0 && isKnown && (found == *walk_->Next() || walk_->Accepts(found));
    if (!isPlanned) Depart(Described(found));
  }
  if (isDeparted_) {
    TakeUnplaced(found, outcome);
    return;
  }
  walk_->OnMade(found.kind, outcome, reasons_);
  if (!IsPlannedRead(found.kind)) return;
  ++madeInRequest_;
  ++plannedMade_;
}

// To the turn that the next exchange belongs to; false if there is none, or nothing is known of it. Turns that are
// over, or have no exchange, are finished.
bool TPlanFollower::Advance() {
  while (CurrentTurn() != nullptr && !IsAtUnknown()) {
    if (IsUnfinished()) return true;
    FinishTurn();
  }
  return false;
}

void TPlanFollower::TakeUnplaced(const TExpected& found, const TOutcome& outcome) {
  const auto how = FailureOf(found.kind, outcome);
  if (!how || !outcome.WasAttempted() || turns_->empty()) return;
  TExchangeFailure failure;
  failure.turn = Turn();
  failure.kind = found.kind;
  failure.how = *how;
  failure.owner = found.owner;
  if (found.kind == EExchangeKind::kRegister) failure.address = AddressIn(found.request);
  reasons_.AddFailure(failure);
  // A class without a way is not served, and nothing else.
  const TPlannedClass& planned = plan_.ClassOf((*turns_)[Turn() - firstTurn_]);
  const bool isWayless = planned.path != CollectorProfile::EPath::kNone && !planned.hasWay;
  const auto reason = UnreadReasonOf(found.kind);
  if (reason && !isWayless && !IsAbsent(found.kind, *how)) reasons_.AddReason(Turn(), *reason);
}

void TPlanFollower::OnSizeRefused(const std::string& sentence) {
  if (!isDeparted_ && walk_) {
    walk_->OnSizeRefused(sentence, reasons_);
  } else if (!turns_->empty()) {
    reasons_.AddReason(Turn(), EReason::kFileUnread, 1, sentence);
  }
}

TInstanceFacts TPlanFollower::OnCommit(const TInstance& instance) {
  reasons_.CountInstance();
  if (!isDeparted_) {
    const bool isDue = walk_ && walk_->CandidatesDue() > 0;
    if (isDue && &instance.Class() == plan_.ClassOf(*CurrentTurn()).cimClass.get()) return Commit(instance);
    if (!isDue && IsUnknownNext()) Advance();
    Depart(InstanceText(instance.Class().Name()));
  }
  TInstanceFacts facts;
  facts.key = instance.Class().Name() + "/?" + std::to_string(++unplacedInstances_);
  facts.isCut = hasFailedRead_ && instance.Class().Name() == CollectorProfile::kCaptureClass;
  return facts;
}

TInstanceFacts TPlanFollower::Commit(const TInstance& instance) {
  TInstanceFacts facts = walk_->Commit(instance);
  if (const auto& meaning = plan_.ClassOf(*CurrentTurn()).meaning) AddMeaning(*meaning, instance.Class(), facts);
  return facts;
}

// Whether the current turn is over and the next one that is not idle is unknown.
bool TPlanFollower::IsUnknownNext() const {
  if (walk_ && walk_->Next() != nullptr) return false;
  const std::size_t first = turn_ + (walk_ ? 1 : 0);
  const auto next =
      std::find_if(turns_->begin() + static_cast<std::ptrdiff_t>(std::min(first, turns_->size())), turns_->end(),
                   [this](const auto& turn) { return plan_.ClassOf(turn).turn != ETurn::kIdle; });
  return next != turns_->end() && next->isReached && plan_.ClassOf(*next).turn == ETurn::kUnknown;
}

void TPlanFollower::Depart(const std::string& found) {
  isDeparted_ = true;
  if (IsAtUnknown()) return;
  departure_ = "the collector did not follow the plan: found " + found + ", expected " + ExpectedText();
}

std::string TPlanFollower::ExpectedText() const {
  if (walk_ && walk_->CandidatesDue() > 0) return InstanceText(plan_.ClassOf(*CurrentTurn()).cimClass->Name());
  return walk_ && walk_->Next() != nullptr ? Described(*walk_->Next()) : "the end of the request";
}

// Null after the last turn that is reached.
const TPlannedTurn* TPlanFollower::CurrentTurn() const {
  return turn_ < turns_->size() && (*turns_)[turn_].isReached ? &(*turns_)[turn_] : nullptr;
}

bool TPlanFollower::IsAtUnknown() const {
  return CurrentTurn() != nullptr && plan_.ClassOf(*CurrentTurn()).turn == ETurn::kUnknown;
}

void TPlanFollower::StartTurn() {
  const TPlannedTurn* const turn = CurrentTurn();
  const auto number = static_cast<std::uint32_t>(firstTurn_ + turn_);
  walk_ = turn == nullptr ? nullptr : MakeTurnWalk({plan_, plan_.ClassOf(*turn), number, turn->time});
}

void TPlanFollower::FinishTurn() {
  if (walk_) walk_->Finish(reasons_);
  ++turn_;
  StartTurn();
}

std::uint32_t TPlanFollower::Turn() const {
  const bool isAfterTheLast = CurrentTurn() == nullptr && turn_ > 0;
  return static_cast<std::uint32_t>(firstTurn_ + turn_ - (isAfterTheLast ? 1 : 0));
}

void TPlanFollower::EndRequest(const std::string& exception) {
  if (turns_->empty()) {
    if (!exception.empty()) reasons_.AddReasonOfRun(EReason::kRequestFailed, exception);
  } else if (isDeparted_) {
    EndDeparted(exception);
  } else if (exception.empty()) {
    EndNormally();
  } else {
    EndInException(exception);
  }
  turn_ = Turn() - firstTurn_ + 1;
  turns_ = &kNoTurns;
  walk_.reset();
  isDeparted_ = false;
}

// What happened after the departure is unknown, except that the collector did not reach these turns.
void TPlanFollower::EndDeparted(const std::string& exception) {
  const std::string& text = exception.empty() ? departure_ : exception;
  if (!text.empty()) reasons_.AddReason(Turn(), EReason::kRequestFailed, 1, text);
  AddUnreached();
}

void TPlanFollower::EndNormally() {
  for (bool isTold = false; CurrentTurn() != nullptr; FinishTurn()) {
    if (!IsUnfinished() || std::exchange(isTold, true)) continue;
    reasons_.AddReason(Turn(), EReason::kRequestFailed, 1, EarlyReturnText());
  }
  AddUnreached();
}

// The first turn that is not finished, or else the last one, ended in the exception.
void TPlanFollower::EndInException(const std::string& exception) {
  SkipFinished();
  const std::uint32_t failed = Turn();
  reasons_.AddReason(failed, EReason::kRequestFailed, 1, exception);
  if (CurrentTurn() != nullptr) FinishTurn();
  for (std::size_t i = failed - firstTurn_ + 1; i < turns_->size() && (*turns_)[i].isReached; ++i) {
    reasons_.AddReason(static_cast<std::uint32_t>(firstTurn_ + i), EReason::kNotCollected, 1,
                       "the request ended before this class");
  }
  AddUnreached();
}

// To the first turn of which something is left, or may be.
void TPlanFollower::SkipFinished() {
  while (CurrentTurn() != nullptr && !IsAtUnknown() && !IsUnfinished()) FinishTurn();
}

bool TPlanFollower::IsUnfinished() const { return walk_ && (walk_->Next() != nullptr || walk_->CandidatesDue() > 0); }

void TPlanFollower::AddUnreached() {
  for (std::size_t i = 0; i < turns_->size(); ++i) {
    if ((*turns_)[i].isReached) continue;
    const std::string text = "the collector ends the request after " + std::string(CollectorProfile::kCaptureClass);
    reasons_.AddReason(static_cast<std::uint32_t>(firstTurn_ + i), EReason::kNotCollected, 1, text);
  }
}

std::string TPlanFollower::EarlyReturnText() const {
  std::uint64_t planned = 0;
  for (const TPlannedTurn& turn : *turns_) {
    if (turn.isReached) planned += plan_.ReadsOf(turn);
  }
  const std::string text = "the collector returned ";
  if (planned > madeInRequest_) {
    return text + "before making " + std::to_string(planned - madeInRequest_) + " of " + std::to_string(planned) +
           " planned exchanges";
  }
  return text + "before " + ExpectedText();
}

}  // namespace velhost
