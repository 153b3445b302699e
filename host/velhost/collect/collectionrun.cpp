#include "host/velhost/collect/collectionrun.h"

#include <string_view>

#include "host/base/hosterror.h"
#include "host/base/text.h"
#include "host/base/unsafetext.h"
#include "host/velhost/messages.h"

namespace velhost {

namespace {

std::string NameOf(const std::vector<boost::shared_ptr<TCIMClass>>& request) {
  std::vector<std::string_view> names;
  for (const auto& cimClass : request) names.push_back(cimClass->Name());
  return Listed(names, ", ");
}

// Removes the commit callback on destruction, because it refers to the run.
class TCommitGuard {
 public:
  TCommitGuard(TNamespace& cimNamespace, TNamespace::TCommitCallback callback) : namespace_(cimNamespace) {
    namespace_.SetCommitCallback(std::move(callback));
  }
  ~TCommitGuard() { namespace_.SetCommitCallback({}); }
  TCommitGuard(const TCommitGuard&) = delete;
  TCommitGuard& operator=(const TCommitGuard&) = delete;

 private:
  TNamespace& namespace_;
};

}  // namespace

TCollectionRun::TCollectionRun(TSettings settings, boost::shared_ptr<TNamespace> cimNamespace, TExchangeLedger& ledger,
                               const TStopSignal& stop)
    : settings_(std::move(settings)), namespace_(std::move(cimNamespace)), ledger_(ledger), stop_(stop) {}

void TCollectionRun::Load(const std::string& pluginPath) {
  loader_.SetFatalHandler(&SayAndEndAtOnce);
  plugin_ = loader_.Load(pluginPath);
  if (plugin_->Query() != nullptr) return;
  throw THostError(EFailure::kAbsent,
                   "plugin " + SafeText(plugin_->Path()) + " does not support requests for instances");
}

TCollectionSummary TCollectionRun::Run(const TClasses& classes, IInstanceWriter& writer) {
  const auto start = std::chrono::steady_clock::now();
  writer_ = &writer;
  const TCommitGuard guard(*namespace_, [this](const boost::shared_ptr<const TInstance>& i) { OnCommit(i); });
  Begin();
  plugin_->Init();
  RunAll(*plugin_->Query(), RequestsFor(classes));
  Unload();
  Summarise(start);
  writer.End(summary_);
  return summary_;
}

std::vector<TCollectionRun::TClasses> TCollectionRun::RequestsFor(const TClasses& classes) const {
  if (settings_.singleRequest) return {classes};
  std::vector<TClasses> requests;
  for (const auto& cimClass : classes) requests.push_back({cimClass});
  return requests;
}

void TCollectionRun::Begin() {
  const TPluginIdentity identity = plugin_->Identity();
  writer_->Begin({settings_.machineType, identity.name, identity.version, identity.interfaceVersion});
}

void TCollectionRun::Unload() {
  try {
    plugin_->DeInit();
    plugin_->Unload();
  } catch (const THostError& failure) {
    failureToUnload_ = failure;
  }
}

void TCollectionRun::RunAll(IPluginBasicQueryCallbacks& plugin, const std::vector<TClasses>& requests) {
  for (std::size_t i = 0; i < requests.size(); ++i) {
    const std::string name = NameOf(requests[i]);
    if (stop_.IsStopped()) {
      summary_.failures.push_back({name, "not collected: " + StopReason(), false});
      continue;
    }
    if (observer_ != nullptr) observer_->OnRequest(i, requests.size(), name);
    RunOne(plugin, requests[i], name);
  }
}

void TCollectionRun::RunOne(IPluginBasicQueryCallbacks& plugin, const TClasses& request, const std::string& name) {
  ledger_.BeginRequest(name);
  if (sizeLimit_ != nullptr) sizeLimit_->BeginRequest();
  std::string failure = RunRequest(plugin, namespace_, request);
  WritePending();
  const std::string mismatch = mismatch_ && !mismatched_ ? mismatch_() : std::string();
  mismatched_ = mismatched_ || !mismatch.empty();
  if (failure.empty()) failure = mismatch;
  if (sizeLimit_ != nullptr) {
    for (const std::string& refusal : sizeLimit_->TakeRefusals()) summary_.failures.push_back({name, refusal});
  }
  if (!failure.empty()) summary_.failures.push_back({name, failure});
}

void TCollectionRun::OnCommit(const boost::shared_ptr<const TInstance>& instance) {
  if (onInstance_) onInstance_(instance);
  if (settings_.writeAtCommit) {
    writer_->Instance(*instance, ledger_.RequestHadFailures());
  } else {
    pending_.push_back(instance);
  }
}

// Only at the end of a request is it known whether one of its exchanges failed.
void TCollectionRun::WritePending() {
  const bool incomplete = ledger_.RequestHadFailures();
  for (const auto& instance : pending_) writer_->Instance(*instance, incomplete);
  pending_.clear();
}

std::string TCollectionRun::StopReason() const { return stop_.WasRequested() ? "interrupted" : "deadline reached"; }

void TCollectionRun::Summarise(std::chrono::steady_clock::time_point start) {
  summary_.exchanges = ledger_.Total();
  summary_.failedExchanges = ledger_.Failed();
  if (stop_.IsStopped()) {
    summary_.partialReason = StopReason();
  } else if (wasLost_ && wasLost_()) {
    summary_.partialReason = "the connection to the service processor was lost";
  } else if (mismatched_) {
    summary_.partialReason = "the collection differs from the recorded one";
  } else if (!summary_.failures.empty()) {
    summary_.partialReason = "a request failed";
  }
  summary_.partial = !summary_.partialReason.empty();
  summary_.elapsedMs =
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace velhost
