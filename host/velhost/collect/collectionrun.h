// One collection from a connected server: loads the plugin, makes the requests, passes on the committed instances,
// unloads the plugin.
#pragma once

#include <boost/shared_ptr.hpp>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/base/hosterror.h"
#include "host/bmc/sizelimit.h"
#include "host/bmc/stopsignal.h"
#include "host/model/cimnamespace.h"
#include "host/output/iresultwriter.h"
#include "host/plugins/pluginloader.h"
#include "host/velhost/collect/requests.h"

namespace velhost {

/// Notified as each request begins; used for the progress line.
class IRequestObserver {
 public:
  virtual ~IRequestObserver() = default;
  /// Request `index` (from 0) of `count` begins; `name` is its class or classes.
  virtual void OnRequest(std::size_t index, std::size_t count, const std::string& name) = 0;
};

class TCollectionRun {
 public:
  struct TSettings {
    std::string machineType;
    bool singleRequest = false;
  };

  /// Nothing is owned. The ledger already observes the service processor.
  TCollectionRun(TSettings settings, boost::shared_ptr<TNamespace> cimNamespace, TExchangeLedger& ledger,
                 const TStopSignal& stop);
  void SetRequestObserver(IRequestObserver& observer) { observer_ = &observer; }
  /// A request fails if the limit refuses one of its exchanges.
  void SetSizeLimit(TSizeLimit& limit) { sizeLimit_ = &limit; }
  /// Called at the end: whether the service processor was lost during the run.
  void SetLossQuery(std::function<bool()> wasLost) { wasLost_ = std::move(wasLost); }
  /// Called after each request: what is wrong with the answers themselves, empty if nothing is. The first request
  /// after which it is not empty has failed.
  void SetMismatchQuery(std::function<std::string()> mismatch) { mismatch_ = std::move(mismatch); }
  /// Called with each instance at its commit, before it is written.
  void SetInstanceCallback(TNamespace::TCommitCallback callback) { onInstance_ = std::move(callback); }

  /// Loads the plugin. Throws THostError if it cannot be used.
  void Load(const std::string& pluginPath);
  /// Call once, after Load: makes the requests, unloads the plugin, and writes the whole document. Throws THostError
  /// if the output or the plugin fails; the plugin is unloaded in every case.
  TResultSummary Run(const std::vector<boost::shared_ptr<TCIMClass>>& classes, IResultWriter& writer);
  /// Set if the plugin failed after everything was collected: the document is complete, but the command has failed.
  const std::optional<THostError>& FailureToUnload() const { return failureToUnload_; }

 private:
  using TClasses = std::vector<boost::shared_ptr<TCIMClass>>;

  void Begin(const std::vector<TClasses>& requests);
  void Unload();
  std::vector<TClasses> RequestsFor(const TClasses& classes) const;
  void RunAll(IPluginBasicQueryCallbacks& plugin, const std::vector<TClasses>& requests);
  void RunOne(IPluginBasicQueryCallbacks& plugin, const TClasses& request, const std::string& name);
  void AddReason(EReason code, const std::string& className, const std::string& message);
  std::string RunReason() const;
  void OnCommit(const boost::shared_ptr<const TInstance>& instance);
  void Summarise(std::chrono::steady_clock::time_point start);
  std::string StopReason() const;

  TSettings settings_;
  boost::shared_ptr<TNamespace> namespace_;
  TExchangeLedger& ledger_;
  const TStopSignal& stop_;
  TDynamicLibraryLoader libraries_;
  TPluginLoader loader_{libraries_};
  std::unique_ptr<TLoadedPlugin> plugin_;
  IResultWriter* writer_ = nullptr;
  IRequestObserver* observer_ = nullptr;
  TSizeLimit* sizeLimit_ = nullptr;
  TNamespace::TCommitCallback onInstance_;
  std::function<bool()> wasLost_;
  std::function<std::string()> mismatch_;
  bool mismatched_ = false;
  TPlan plan_;  // names the classes of the summary
  TResultSummary summary_;
  std::optional<THostError> failureToUnload_;
};

}  // namespace velhost
