// A wrapper for every exchange of a run: refuses exchanges once the run is stopped, and notifies observers.
#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "host/base/api.h"
#include "host/bmc/exchange.h"
#include "host/bmc/iserviceprocessor.h"

namespace velhost {

struct TIpmiExchange {
  const TIpmiRequest& request;
  bool attempted;             ///< false: refused because the run was stopped already
  const TIpmiAnswer* answer;  ///< null when there was none
  std::chrono::microseconds duration;
  ENoAnswer noAnswer = ENoAnswer::kLost;  ///< why there was none; without meaning if there was one
};

struct TDotExchange {
  const TDotRequest& request;
  bool attempted;            ///< false: refused because the run was stopped already
  const TDotAnswer* answer;  ///< null when there was none
  std::chrono::microseconds duration;
  ENoAnswer noAnswer = ENoAnswer::kLost;  ///< why there was none; without meaning if there was one
};

/// Called after each exchange, in order, on the thread that made it.
class VELHOST_API IExchangeObserver {
 public:
  virtual ~IExchangeObserver();
  virtual void OnIpmi(const TIpmiExchange& exchange) = 0;
  virtual void OnDot(const TDotExchange& exchange) = 0;
};

/// Passes exchanges on, refuses them once the run is stopped, and notifies the observers of each.
class VELHOST_API TSupervisedServiceProcessor : public TForwardingServiceProcessor {
 public:
  using TForwardingServiceProcessor::TForwardingServiceProcessor;
  /// Not owned. Observers are notified in the order in which they were added.
  void AddObserver(IExchangeObserver& observer) { observers_.push_back(&observer); }

  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;
  std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop) override;
  /// kNotSent for an exchange that was refused because the run was stopped.
  ENoAnswer WhyNoAnswer() const override;

 private:
  bool attempted_ = true;  ///< whether the latest exchange was passed on
  std::vector<IExchangeObserver*> observers_;
};

}  // namespace velhost
