// How an exchange ended, as the collector sees it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "host/bmc/exchange.h"
#include "host/bmc/supervision.h"
#include "host/result/instancefacts.h"

namespace velhost {

/// What SPLibrary passes on of an exchange. A recording may have false lengths, and the collector looks at one of them
/// or the other.
struct TOutcome {
  bool isAnswered = false;
  ENoAnswer noAnswer = ENoAnswer::kLost;  ///< meaningful without an answer
  std::uint8_t completionCode = 0;        ///< not for dot commands
  std::size_t dataLength = 0;             ///< byte 5; for a dot command the bytes of the block
  int length = 0;                         ///< as handed back
  std::span<const std::uint8_t> data =
      {};  ///< the bytes received; indexed by TCommandData, they read as zero past the end

  /// False: refused because the run was stopped.
  bool WasAttempted() const { return isAnswered || noAnswer != ENoAnswer::kNotSent; }
};

/// The outcome refers to the exchange's answer.
TOutcome OutcomeOf(const TIpmiExchange& exchange);
TOutcome OutcomeOf(const TDotExchange& exchange);

/// How an exchange of this kind failed, judged by itself; empty if the collector accepts the answer. A register
/// takes 14 data bytes by byte 5, a timestamp a length of 13, a block any length whose low 16 bits are not zero.
std::optional<THow> FailureOf(EExchangeKind kind, const TOutcome& outcome);

/// Whether that failure says that the service processor does not have what was asked for: a register or the time
/// (0xCB), or a storage area when it is opened (0xCB, 0xC1). Once an area is open, no answer makes it absent.
bool IsAbsent(EExchangeKind kind, const THow& failure);

}  // namespace velhost
