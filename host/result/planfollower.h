// Follows a run along its plan: attributes each exchange to what it reads, and each instance to its place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/bmc/supervision.h"
#include "host/model/ciminstance.h"
#include "host/profile/plan.h"
#include "host/result/instancefacts.h"
#include "host/result/resultreasons.h"
#include "host/result/turnwalk.h"

namespace velhost {

/// Nothing is guessed: from the first exchange or instance that is not the planned one, up to the end of the request,
/// exchanges have no place, instances have the key "CLASS/?K", and nothing counts as missing.
class TPlanFollower : public IExchangeObserver {
 public:
  /// Neither is owned.
  TPlanFollower(const TPlan& plan, TResultReasons& reasons);

  /// Request `index` of the plan begins.
  void BeginRequest(std::size_t index);
  void OnIpmi(const TIpmiExchange& exchange) override;
  void OnDot(const TDotExchange& exchange) override;
  /// The size limit keeps the answer to the last exchange from the collector; `sentence` says why.
  void OnSizeRefused(const std::string& sentence);
  /// An instance is committed.
  TInstanceFacts OnCommit(const TInstance& instance);
  /// The request has ended, in an exception if the text is not empty.
  void EndRequest(const std::string& exception);

  /// The turn being collected, counted over all requests; the first of the request before its first exchange.
  std::uint32_t Turn() const;
  /// How many of the plan's register reads and dot commands were made.
  std::uint64_t PlannedMade() const { return plannedMade_; }

 private:
  const TPlannedTurn* CurrentTurn() const;
  bool IsAtUnknown() const;
  void StartTurn();
  void FinishTurn();
  bool Advance();
  void Take(const TExpected& found, bool isKnown, const TOutcome& outcome);
  void TakeUnplaced(const TExpected& found, const TOutcome& outcome);
  void Depart(const std::string& found);
  std::string ExpectedText() const;
  TInstanceFacts Commit(const TInstance& instance);
  bool IsUnknownNext() const;
  void EndDeparted(const std::string& exception);
  void EndInException(const std::string& exception);
  void EndNormally();
  std::string EarlyReturnText() const;
  bool IsUnfinished() const;
  void SkipFinished();
  void AddUnreached();

  const TPlan& plan_;
  TResultReasons& reasons_;
  const std::vector<TPlannedTurn>* turns_;  ///< of the request
  std::uint32_t firstTurn_ = 0;             ///< number of the request's first turn
  std::size_t turn_ = 0;                    ///< within the request
  std::unique_ptr<ITurnWalk> walk_;
  bool isDeparted_ = false;
  std::string departure_;       ///< empty if nothing was known of the turn
  bool hasFailedRead_ = false;  ///< of a storage area, in this request
  std::uint64_t madeInRequest_ = 0;
  std::uint64_t plannedMade_ = 0;
  std::uint64_t unplacedInstances_ = 0;
};

}  // namespace velhost
