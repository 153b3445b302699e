// One collection from a connected server: loads the plugin, plans and makes the requests, passes on the committed
// instances with what is known of them, unloads the plugin, and says how it ended.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/base/hosterror.h"
#include "host/bmc/stopsignal.h"
#include "host/bmc/supervision.h"
#include "host/model/cimnamespace.h"
#include "host/output/writers.h"
#include "host/plugins/pluginloader.h"
#include "host/profile/plan.h"
#include "host/result/planfollower.h"
#include "host/result/resultreasons.h"

namespace velhost {

/// Notified as each request begins; used for the progress line.
class IRequestObserver {
 public:
  virtual ~IRequestObserver() = default;
  /// Request `index` (from 0) of `count` begins; `name` is its class or classes.
  virtual void OnRequest(std::size_t index, std::size_t count, const std::string& name) = 0;
};

class TCollectionRun : private IExchangeObserver {
 public:
  using TInstanceCallback = std::function<void(const TInstance&, const TInstanceFacts&)>;

  /// Nothing is owned.
  TCollectionRun(boost::shared_ptr<TNamespace> cimNamespace, const TStopSignal& stop);
  void SetRequestObserver(IRequestObserver& observer) { observer_ = &observer; }
  /// Called after each exchange until it says that the service processor was lost.
  void SetLossQuery(std::function<bool()> wasLost) { wasLost_ = std::move(wasLost); }
  /// Called with each instance at its commit, before it is written.
  void SetInstanceCallback(TInstanceCallback callback) { onInstance_ = std::move(callback); }

  /// Loads the plugin. Throws THostError if it cannot be used.
  void Load(const std::string& pluginPath);
  /// After Load.
  TPluginFacts Plugin() const;
  /// After Load: makes the plan of these requests, and follows the exchanges from now on.
  const TPlan& MakePlan(const TPlanServer& server, std::vector<std::vector<TAskedClass>> requests,
                        TSupervisedServiceProcessor& supervised, TSizeLimit& sizeLimit);
  /// Call once, with a plan: makes the requests, writes the instances as they are committed, and unloads the plugin.
  /// Throws THostError if the output or the plugin fails; the plugin is unloaded in every case.
  void Collect(IResultWriter& writer);
  /// How many of the plan's reads have been made.
  std::uint64_t PlannedMade() const { return follower_->PlannedMade(); }
  /// Set if the plugin failed after everything was collected.
  const std::optional<THostError>& FailureToUnload() const { return failureToUnload_; }
  /// The outcome of the run. `failure` is one of the command itself.
  TResultSummary Close(const std::optional<THostError>& failure);

 private:
  void OnIpmi(const TIpmiExchange& exchange) override { Watch(exchange.answer != nullptr); }
  void OnDot(const TDotExchange& exchange) override { Watch(exchange.answer != nullptr); }
  void Watch(bool wasAnswered);
  void Unload();
  void CollectAll();
  void CollectRequest();
  void SkipRequest();
  void AddReasonNow(EReason code, const std::string& detail);
  void OnCommit(const TInstance& instance);
  std::string StopReason() const;

  boost::shared_ptr<TNamespace> namespace_;
  const TStopSignal& stop_;
  IResultWriter* writer_ = nullptr;
  IRequestObserver* observer_ = nullptr;
  TSizeLimit* sizeLimit_ = nullptr;
  TInstanceCallback onInstance_;
  std::function<bool()> wasLost_;
  TPlan plan_;
  std::optional<TResultReasons> reasons_;
  std::optional<TPlanFollower> follower_;
  std::vector<TFinding> findings_;
  std::size_t request_ = 0;  ///< the current one
  bool isStopTold_ = false;
  bool isLossTold_ = false;
  std::optional<THostError> failureToUnload_;
  // Last, so that whatever a plugin does while it is unloaded finds the others still alive.
  TDynamicLibraryLoader libraries_;
  TPluginLoader loader_{libraries_};
  std::unique_ptr<TLoadedPlugin> plugin_;
};

}  // namespace velhost
