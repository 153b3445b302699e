#include "tests/robustness/sweephost.h"

#include <boost/make_shared.hpp>

#include "host/bmc/iserviceprocessor.h"
#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"
#include "plugin/logmessage.h"

namespace sweep {

using namespace NKROVEL20;
using namespace velhost;

namespace {

class TManager : public TPluginManagerNamespace {
 public:
  TPluginManagerProvider* RegisterPlugin(IPluginCallbacks*) override {
    return reinterpret_cast<TPluginManagerProvider*>(this);  // any handle but null enables logging
  }
  boost::shared_ptr<ICIMClass> GetClass(const std::string&, const TPropertyMap&) override { return {}; }
  std::string GetMachineType() const override { return {}; }
};

bool StartsWith(const std::string& text, const char* prefix) { return text.rfind(prefix, 0) == 0; }

}  // namespace

bool TTamperer::IsRefused(std::size_t place, int serviceProcessor) const {
  if (place < limit_) return false;
  if (onFault) onFault(serviceProcessor, true);
  return true;
}

std::optional<TIpmiAnswer> TTamperer::SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) {
  const std::size_t place = count_++;
  if (IsRefused(place, -1)) return std::nullopt;
  auto answer = TForwardingServiceProcessor::SendIpmi(request, stop);
  const auto tamper = ipmi_.find(place);
  if (tamper != ipmi_.end()) {
    if (onFault) onFault(-1, false);
    if (answer && !tamper->second(*answer)) answer.reset();
  }
  if (onExchange) onExchange(false, answer ? answer->Length() : 0);
  return answer;
}

std::optional<TDotAnswer> TTamperer::SendDot(const TDotRequest& request, const TStopSignal& stop) {
  const std::size_t place = count_++;
  if (IsRefused(place, request.serviceProcessor)) return std::nullopt;
  const auto tamper = dot_.find(place);
  auto answer = TForwardingServiceProcessor::SendDot(request, stop);
  if (onExchange) onExchange(true, answer ? answer->Length() : 0);
  if (tamper == dot_.end()) return answer;
  if (onFault) onFault(request.serviceProcessor, false);
  if (answer && !tamper->second(*answer)) answer.reset();
  return answer;
}

THost::THost(const std::string& machineType)
    : machineType_(machineType),
      server_(MakeServer(machineType)),
      tamperer_(server_),
      schema_(MakeSchema(machineType)) {
  THostServices::SetPluginManager(boost::make_shared<TManager>());
  THostServices::SetCoreLogger(this);
  THostServices::SetEnvironment(this);
  TServiceProcessorHub::Install(&tamperer_, nullptr);
  plugin_ = new torgareg::TTORGARegPluginCallbacks();
  NoteExchanges();
}

THost::~THost() {
  plugin_->PrepareForUnload();
  torgareg::LogMessage::setPluginInstance(nullptr);
  TServiceProcessorHub::Install(nullptr, nullptr);
  THostServices::SetEnvironment(nullptr);
  THostServices::SetCoreLogger(nullptr);
  THostServices::SetPluginManager({});
}

void THost::NoteExchanges() {
  tamperer_.onExchange = [this](bool isDot, int length) { exchanges_.push_back({isDot, length}); };
  Run();
  tamperer_.onExchange = nullptr;
}

// Follows in the trace which instance or file is being collected, because an exchange does not show it.
void THost::Log(EVELLogSeverity, const std::string& message) {
  const allocation::TPause pause;
  if (StartsWith(message, "Entering collection for requested class ")) {
    ++begun_;
    class_ = message.substr(message.rfind(' ') + 1);
    part_ = class_;
  } else if (StartsWith(message, "Current instance index ")) {
    part_ = class_ + " " + message.substr(message.rfind(' ') + 1);
  } else if (StartsWith(message, "Enter ReadErrFFDC")) {
    ++files_;
  } else if (StartsWith(message, "The system has")) {
    static const char* const names[] = {"cpu_err", "ioh_err", "zyn_err"};
    part_ = std::string(names[(files_ - 1) % 3]) + " " + std::to_string(message.back() - '0' + 1);
  } else if (StartsWith(message, "Unable to create chip instance")) {
    blocksWereDropped_ = true;
  } else if (message == "Completed buildCIMInstances." || message == "Complete to collect KROSG_DCAPFile") {
    ++ended_;
  }
}

TOutcome THost::Run() { return Collect(AllClasses()); }
TOutcome THost::RunRegisterBlocks() { return Collect({kJfrClass}); }

std::vector<boost::shared_ptr<const TInstance>> THost::Instances() {
  std::vector<boost::shared_ptr<const TInstance>> instances;
  schema_->SetCommitCallback([&](const boost::shared_ptr<const TInstance>& taken) { instances.push_back(taken); });
  std::vector<boost::shared_ptr<ICIMClass>> classes;
  for (const std::string& name : AllClasses()) classes.push_back(schema_->FindClass(name));
  plugin_->GetData(schema_, classes);
  schema_->SetCommitCallback({});
  return instances;
}

void THost::GetData(std::vector<boost::shared_ptr<ICIMClass>>& classes, TOutcome& outcome) {
  try {
    allocation::Begin(plan_);
    plugin_->GetData(schema_, classes);
    outcome.allocations = allocation::End();
  } catch (const std::exception& exception) {
    outcome.allocations = allocation::End();
    outcome.exception = exception.what();
  }
}

TOutcome THost::Collect(const std::vector<std::string>& names) {
  TOutcome outcome;
  files_ = begun_ = ended_ = 0;
  blocksWereDropped_ = false;
  schema_->SetCommitCallback([&outcome](const boost::shared_ptr<const TInstance>& instance) {
    const allocation::TPause pause;
    outcome.instances[KeyOf(*instance)].push_back(TextOf(*instance));
  });
  tamperer_.onFault = [this, &outcome](int serviceProcessor, bool isRefused) {
    ++outcome.faultedExchanges;
    outcome.reachedLimit = outcome.reachedLimit || isRefused;
    if (serviceProcessor >= 0) outcome.faultedBlocks.insert(serviceProcessor);
    outcome.faulted.insert(serviceProcessor >= 0 ? class_ : part_);
  };
  plugin_->Init();
  std::vector<boost::shared_ptr<ICIMClass>> classes;
  for (const std::string& name : names) classes.push_back(schema_->FindClass(name));
  GetData(classes, outcome);
  plugin_->DeInit();
  schema_->SetCommitCallback({});
  const int requests = static_cast<int>(names.size());
  outcome.traceIsWhole = begun_ == requests && ended_ == requests;
  outcome.blocksWereDropped = blocksWereDropped_;
  tamperer_.Reset();
  tamperer_.onFault = nullptr;
  std::string().swap(class_);  // nothing of this run must remain, so that memory can be compared
  std::string().swap(part_);
  return outcome;
}

}  // namespace sweep
