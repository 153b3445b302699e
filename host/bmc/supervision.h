// The wrappers for every exchange of a run. One refuses exchanges once the run is stopped, and notifies observers; the
// other bounds the memory of a collection, whatever sizes storage areas report.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/base/api.h"
#include "host/bmc/exchange.h"
#include "host/bmc/iserviceprocessor.h"

namespace velhost {

template <typename TRequest, typename TAnswer>
struct TExchange {
  const TRequest& request;
  const TAnswer* answer;  ///< null when there was none
  std::chrono::microseconds duration;
  ENoAnswer noAnswer = ENoAnswer::kLost;  ///< why there was none; without meaning if there was one

  /// False: refused because the run was stopped already.
  bool WasAttempted() const { return answer != nullptr || noAnswer != ENoAnswer::kNotSent; }
};

using TIpmiExchange = TExchange<TIpmiRequest, TIpmiAnswer>;
using TDotExchange = TExchange<TDotRequest, TDotAnswer>;

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
  bool isRefused_ = false;  ///< the latest exchange
  std::vector<IExchangeObserver*> observers_;
};

// The collector allocates a buffer of the reported size, then a text of three characters per byte, which passes
// through trace, instance and output: 7 to 14 bytes of memory per byte, depending on the options. Instances, with
// three bytes per byte, live until their request has ended.
inline constexpr std::int64_t kLargestArea = std::int64_t{32} << 20U;
inline constexpr std::int64_t kLargestAreasOfRequest = std::int64_t{40} << 20U;

/// The outermost wrapper: observers are inside it, so they see the true answer. If a size is over a limit, the
/// collector gets no answer to its size query, skips the area and goes on. All other exchanges pass through.
class VELHOST_API TSizeLimit : public TForwardingServiceProcessor {
 public:
  using TForwardingServiceProcessor::TForwardingServiceProcessor;

  /// Starts a new request: the sizes accepted so far no longer count.
  void BeginRequest() { accepted_ = 0; }
  /// Called with a sentence about each refused area, before the collector learns that its query has no answer: "node
  /// 0, storage area cpu_err reports 2147483647 bytes, over the limit of 32 MiB: not read".
  void SetRefusalCallback(std::function<void(const std::string&)> callback) { onRefusal_ = std::move(callback); }

  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;

 private:
  bool Accept(const TIpmiRequest& request, std::int64_t size);

  std::int64_t accepted_ = 0;
  std::function<void(const std::string&)> onRefusal_;
};

}  // namespace velhost
