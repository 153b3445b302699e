#include "host/velhost/collect/collectionrun.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "host/base/text.h"
#include "host/profile/collectorprofile.h"
#include "host/result/findings.h"
#include "host/schema/collectorneeds.h"
#include "host/velhost/collect/requests.h"
#include "host/velhost/messages.h"

namespace velhost {

namespace {

std::vector<boost::shared_ptr<TCIMClass>> ClassesOf(const TPlan& plan, const TPlannedRequest& request) {
  std::vector<boost::shared_ptr<TCIMClass>> classes;
  for (const TPlannedTurn& turn : request.turns) classes.push_back(plan.ClassOf(turn).cimClass);
  return classes;
}

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

TCollectionRun::TCollectionRun(boost::shared_ptr<TNamespace> cimNamespace, const TStopSignal& stop)
    : namespace_(std::move(cimNamespace)), stop_(stop) {}

void TCollectionRun::Load(const std::string& pluginPath) {
  loader_.SetFatalHandler(&SayAndEndAtOnce);
  plugin_ = loader_.Load(pluginPath);
  if (plugin_->Query() != nullptr) return;
  throw THostError(EFailure::kAbsent,
                   "plugin " + SafeText(plugin_->Path()) + " does not support requests for instances");
}

TPluginFacts TCollectionRun::Plugin() const {
  const TPluginIdentity identity = plugin_->Identity();
  return {identity.name, identity.version, identity.interfaceVersion};
}

const TPlan& TCollectionRun::MakePlan(const TPlanServer& server, std::vector<std::vector<TAskedClass>> requests,
                                      TSupervisedServiceProcessor& supervised, TSizeLimit& sizeLimit) {
  const auto isCollectable = [this](const TCIMClass& cimClass) { return MeetsCollectorNeeds(*namespace_, cimClass); };
  const bool isCollector = plugin_->Identity().name == CollectorProfile::kCollectorName;
  plan_ = velhost::MakePlan({.cimNamespace = *namespace_,
                             .machineType = namespace_->GetMachineType(),
                             .server = server,
                             .requests = std::move(requests),
                             .isCollector = isCollector,
                             .isCollectable = isCollectable});
  reasons_.emplace(plan_);
  follower_.emplace(plan_, *reasons_);
  sizeLimit_ = &sizeLimit;
  sizeLimit.SetRefusalCallback([this](const std::string& sentence) { follower_->OnSizeRefused(sentence); });
  supervised.AddObserver(*follower_);
  supervised.AddObserver(*this);  // asks the follower which turn an exchange was of
  return plan_;
}

void TCollectionRun::Collect(IResultWriter& writer) {
  writer_ = &writer;
  const TCommitGuard guard(*namespace_, [this](const boost::shared_ptr<const TInstance>& i) { OnCommit(*i); });
  plugin_->Init();
  CollectAll();
  Unload();
}

void TCollectionRun::Unload() {
  try {
    plugin_->DeInit();
    plugin_->Unload();
  } catch (const THostError& failure) {
    failureToUnload_ = failure;
  }
}

void TCollectionRun::CollectAll() {
  for (request_ = 0; request_ < plan_.requests.size(); ++request_) {
    if (stop_.IsStopped()) {
      SkipRequest();
    } else {
      CollectRequest();
    }
  }
}

void TCollectionRun::CollectRequest() {
  const auto classes = ClassesOf(plan_, plan_.requests[request_]);
  if (observer_ != nullptr) observer_->OnRequest(request_, plan_.requests.size(), NameOf(classes));
  sizeLimit_->BeginRequest();
  follower_->BeginRequest(request_);
  follower_->EndRequest(RunRequest(*plugin_->Query(), namespace_, classes));
}

void TCollectionRun::SkipRequest() {
  if (!std::exchange(isStopTold_, true)) reasons_->AddReasonOfRun(EReason::kStopped, StopReason());
  const std::uint32_t end = plan_.FirstTurn(request_ + 1);
  for (std::uint32_t turn = plan_.FirstTurn(request_); turn < end; ++turn) {
    reasons_->AddReason(turn, EReason::kNotCollected, 1, "the run was stopped before this class");
  }
}

// A stop counts from the first exchange that it cost, so a stop after the last one does not count.
void TCollectionRun::Watch(bool wasAnswered) {
  if (!wasAnswered && !isStopTold_ && stop_.IsStopped()) {
    isStopTold_ = true;
    AddReasonNow(EReason::kStopped, StopReason());
  }
  if (!isLossTold_ && wasLost_ && wasLost_()) {
    isLossTold_ = true;
    AddReasonNow(EReason::kSessionLost, {});
  }
}

// Of the class being collected. The plugin may make exchanges when there is none: while it is loaded, or in a request
// without classes.
void TCollectionRun::AddReasonNow(EReason code, const std::string& detail) {
  if (request_ < plan_.requests.size() && !plan_.requests[request_].turns.empty()) {
    reasons_->AddReason(follower_->Turn(), code, 1, detail);
  } else {
    reasons_->AddReasonOfRun(code, detail);
  }
}

void TCollectionRun::OnCommit(const TInstance& instance) {
  TInstanceFacts facts = follower_->OnCommit(instance);
  if (onInstance_) onInstance_(instance, facts);
  writer_->Instance(instance, facts);
  std::move(facts.findings.begin(), facts.findings.end(), std::back_inserter(findings_));
}

TResultSummary TCollectionRun::Close(const std::optional<THostError>& failure) {
  TResultSummary summary = reasons_->Close(failure);
  summary.findings = std::move(findings_);
  SortFindings(summary.findings);
  return summary;
}

std::string TCollectionRun::StopReason() const { return stop_.WasRequested() ? "interrupted" : "deadline reached"; }

}  // namespace velhost
