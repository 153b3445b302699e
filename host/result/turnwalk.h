// One class being collected once: what the collector asks for next, and the outcome.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/bmc/exchange.h"
#include "host/model/ciminstance.h"
#include "host/profile/plan.h"
#include "host/result/exchangeoutcome.h"
#include "host/result/instancefacts.h"
#include "host/result/resultreasons.h"
#include "wire/commandbuffer.h"

namespace velhost {

/// A request as the collector makes it. All of it is compared, so that an exchange is never taken for another one.
struct TExpected {
  EExchangeKind kind = EExchangeKind::kOther;
  int owner = 0;                   ///< BMC node; service processor for a dot command
  wire::TCommandBuffer request{};  ///< the whole buffer; not for dot commands
  bool operator==(const TExpected&) const = default;
};
/// "the register read of chip 1 at 0x0D0100".
std::string Described(const TExpected& exchange);

/// A turn of the plan that is being followed. The plan outlives it.
struct TWalkedTurn {
  const TPlan& plan;
  const TPlannedClass& planned;
  std::uint32_t number = 0;  ///< counted over all requests of the plan
  unsigned time = 1;

  std::string Key(TPlace place) const { return KeyOf(planned, time, place); }
  /// A failed exchange of this turn, and the place of its instance if it was for one.
  TExchangeFailure FailureOf(EExchangeKind kind, const THow& how, int owner,
                             const std::optional<TPlace>& place = {}) const;
};

/// Follows the collector through one turn of a planned class, exchange by exchange.
class ITurnWalk {
 public:
  virtual ~ITurnWalk();

  /// The next exchange; null when there is none left.
  virtual const TExpected* Next() const = 0;
  /// Whether the collector may make this exchange in place of the next one.
  virtual bool Accepts(const TExpected& /*other*/) const { return false; }
  /// The next exchange, or one that is accepted in its place, was made.
  virtual void OnMade(EExchangeKind kind, const TOutcome& outcome, TResultReasons& reasons) = 0;
  /// The size of a storage area, which was the last exchange, was kept from the collector.
  virtual void OnSizeRefused(const std::string& /*sentence*/, TResultReasons& /*reasons*/) {}

  /// The number of instances that the collector must commit before it makes the next exchange.
  virtual std::size_t CandidatesDue() const = 0;
  /// Call only if candidates are due, with an instance of the turn's class.
  virtual TInstanceFacts Commit(const TInstance& instance) = 0;

  /// The turn has ended: what was planned and not delivered is reported. Exchanges that were never made are not
  /// a reason of their own.
  virtual void Finish(TResultReasons& reasons) = 0;
};

/// The walk of a planned class; null for a class that is idle or unknown.
std::unique_ptr<ITurnWalk> MakeTurnWalk(const TWalkedTurn& turn);

}  // namespace velhost
