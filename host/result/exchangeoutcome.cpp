#include "host/result/exchangeoutcome.h"

#include <algorithm>
#include <vector>

#include "wire/commandbuffer.h"
#include "wire/registerread.h"

namespace velhost {

namespace {

using wire::kInvalidCommand;
using wire::kNotPresent;
using wire::TCommandBuffer;

// A length of which the collector looks at the low 16 bits only.
constexpr unsigned kLowBits = 0xFFFF;
constexpr int kTimestampEnd = static_cast<int>(wire::RegisterRead::kTimestamp + wire::RegisterRead::kTimestampSize);
static_assert(kTimestampEnd == 13);

THow WithoutAnswer(ENoAnswer why) {
  switch (why) {
    case ENoAnswer::kNotSent: return {EHow::kNotSent, 0};
    case ENoAnswer::kNotRecorded: return {EHow::kNotRecorded, 0};
    case ENoAnswer::kLost: break;
  }
  return {EHow::kLost, 0};
}

bool IsTooShort(EExchangeKind kind, const TOutcome& outcome) {
  switch (kind) {
    case EExchangeKind::kRegister: return outcome.dataLength < wire::RegisterRead::kResponseSize;
    case EExchangeKind::kTimestamp: return outcome.length < kTimestampEnd;
    case EExchangeKind::kDot: return (static_cast<unsigned>(outcome.length) & kLowBits) == 0;
    default: return false;
  }
}

// What exchanges of all kinds have.
template <typename TExchange>
TOutcome WithoutData(const TExchange& exchange) {
  TOutcome outcome;
  outcome.isAnswered = exchange.answer != nullptr;
  outcome.noAnswer = exchange.noAnswer;
  return outcome;
}

}  // namespace

TOutcome OutcomeOf(const TIpmiExchange& exchange) {
  TOutcome outcome = WithoutData(exchange);
  if (!outcome.isAnswered) return outcome;
  const TIpmiAnswer& answer = *exchange.answer;
  outcome.completionCode = answer.completionCode;
  outcome.dataLength = std::min<std::size_t>(answer.DataLength(), TCommandBuffer::kMaxData);
  outcome.length = std::min(answer.Length(), static_cast<int>(TCommandBuffer::kSize));
  outcome.data = std::span(answer.data).first(std::min(answer.data.size(), TCommandBuffer::kMaxData));
  return outcome;
}

TOutcome OutcomeOf(const TDotExchange& exchange) {
  TOutcome outcome = WithoutData(exchange);
  if (!outcome.isAnswered) return outcome;
  const TDotAnswer& answer = *exchange.answer;
  outcome.data = std::span(answer.data).first(std::min(answer.data.size(), exchange.request.capacity));
  outcome.dataLength = outcome.data.size();
  outcome.length = answer.claimedLength.value_or(static_cast<int>(outcome.data.size()));
  return outcome;
}

std::optional<THow> FailureOf(EExchangeKind kind, const TOutcome& outcome) {
  if (!outcome.isAnswered) return WithoutAnswer(outcome.noAnswer);
  if (outcome.completionCode != TCommandBuffer::kSuccess) return THow{EHow::kCompletionCode, outcome.completionCode};
  if (!IsTooShort(kind, outcome)) return std::nullopt;
  // A block then counts as empty, whatever was received.
  return THow{EHow::kShort, kind == EExchangeKind::kDot ? 0 : static_cast<std::uint32_t>(outcome.dataLength)};
}

bool IsAbsent(EExchangeKind kind, const THow& failure) {
  if (failure.how != EHow::kCompletionCode) return false;
  switch (kind) {
    case EExchangeKind::kRegister:
    case EExchangeKind::kTimestamp: return failure.number == kNotPresent;
    case EExchangeKind::kOpen: return failure.number == kNotPresent || failure.number == kInvalidCommand;
    default: return false;
  }
}

}  // namespace velhost
