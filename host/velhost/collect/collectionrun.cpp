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

TResultSummary TCollectionRun::Run(const TClasses& classes, IResultWriter& writer) {
  const auto start = std::chrono::steady_clock::now();
  writer_ = &writer;
  const TCommitGuard guard(*namespace_, [this](const boost::shared_ptr<const TInstance>& i) { OnCommit(i); });
  const std::vector<TClasses> requests = RequestsFor(classes);
  Begin(requests);
  plugin_->Init();
  RunAll(*plugin_->Query(), requests);
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

void TCollectionRun::Begin(const std::vector<TClasses>& requests) {
  for (const TClasses& request : requests) {
    TPlannedRequest planned;
    for (const auto& cimClass : request) {
      planned.turns.emplace_back().planClass = plan_.classes.size();
      plan_.classes.emplace_back().cimClass = cimClass;
    }
    plan_.requests.push_back(planned);
  }
  const TPluginIdentity identity = plugin_->Identity();
  TResultHeader header;
  header.machineType = settings_.machineType;
  header.plugin = {identity.name, identity.version, identity.interfaceVersion};
  writer_->Begin(header);
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
      AddReason(EReason::kNotCollected, name, "not collected: " + StopReason());
      continue;
    }
    if (observer_ != nullptr) observer_->OnRequest(i, requests.size(), name);
    // A single request begins with turn 0; otherwise each request has one turn.
    ledger_.BeginRequest(static_cast<std::uint32_t>(i));
    RunOne(plugin, requests[i], name);
  }
}

void TCollectionRun::RunOne(IPluginBasicQueryCallbacks& plugin, const TClasses& request, const std::string& name) {
  if (sizeLimit_ != nullptr) sizeLimit_->BeginRequest();
  std::string failure = RunRequest(plugin, namespace_, request);
  const std::string mismatch = mismatch_ && !mismatched_ ? mismatch_() : std::string();
  mismatched_ = mismatched_ || !mismatch.empty();
  if (failure.empty()) failure = mismatch;
  if (sizeLimit_ != nullptr) {
    for (const std::string& refusal : sizeLimit_->TakeRefusals()) AddReason(EReason::kFileUnread, name, refusal);
  }
  if (!failure.empty()) AddReason(EReason::kRequestFailed, name, failure);
}

void TCollectionRun::OnCommit(const boost::shared_ptr<const TInstance>& instance) {
  if (onInstance_) onInstance_(instance);
  writer_->Instance(*instance, {});
}

void TCollectionRun::AddReason(EReason code, const std::string& className, const std::string& message) {
  summary_.reasons.push_back({code, className, 1, message});
}

std::string TCollectionRun::StopReason() const { return stop_.WasRequested() ? "interrupted" : "deadline reached"; }

std::string TCollectionRun::RunReason() const {
  if (stop_.IsStopped()) return StopReason();
  if (wasLost_ && wasLost_()) return "the connection to the service processor was lost";
  if (mismatched_) return "the collection differs from the recorded one";
  return summary_.reasons.empty() ? std::string() : "a request failed";
}

void TCollectionRun::Summarise(std::chrono::steady_clock::time_point start) {
  summary_.plan = &plan_;
  summary_.exchanges = ledger_.Total();
  summary_.failed = ledger_.Failed();
  summary_.message = RunReason();
  if (stop_.IsStopped()) {
    AddReason(EReason::kStopped, "", summary_.message);
  } else if (wasLost_ && wasLost_()) {
    AddReason(EReason::kSessionLost, "", summary_.message);
  }
  if (!summary_.message.empty()) {
    summary_.status = EResultStatus::kPartial;
    summary_.exitStatus = 3;
  }
  summary_.elapsedMs =
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace velhost
