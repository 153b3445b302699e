#include "host/velhost/collect/requests.h"

#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "host/base/hosterror.h"
#include "host/base/unsafetext.h"
#include "host/model/assertionfailure.h"
#include "host/model/failuredetail.h"
#include "host/profile/collectionsize.h"
#include "host/profile/collectorprofile.h"
#include "nkrovel20/tvelexception.h"

namespace velhost {

namespace {

std::string DescribeAssertion(const TAssertionFailure& failure) {
  std::string missing = "host object";
  if (failure.GetPointee() == "ICIMClass") {
    missing = "base class or superclass";
  } else if (failure.GetPointee().find("ICIMQualifier") != std::string::npos) {
    missing = "qualifier";
  } else if (!failure.GetPointee().empty()) {
    missing = failure.GetPointee();
  }
  return "the collector did not find a " + missing +
         " that it needs; \"velhost check\" shows what the schema lacks (assertion " + failure.GetExpression() + ")";
}

}  // namespace

std::vector<std::string> UnservedTexts(const TNamespace& cimNamespace,
                                       const std::vector<boost::shared_ptr<TCIMClass>>& classes,
                                       const std::string& machineType) {
  const std::string onType = " on machine type " + SafeText(machineType);
  const std::string hint = "; \"velhost classes\" shows what it serves";
  if (classes.empty()) return {"there is no class to collect" + hint};
  std::map<std::string, bool> served;  // the classes that have a path
  for (const auto& entry : CollectorProfile::CollectableClasses(cimNamespace, machineType)) {
    served[entry.cimClass->Name()] = entry.served;
  }
  std::vector<std::string> texts;
  for (const auto& cimClass : classes) {
    const auto found = served.find(cimClass->Name());
    if (found != served.end() && found->second) continue;
    const std::string where = found == served.end() ? " on any machine type" : onType;
    texts.push_back("the collector does not serve " + cimClass->Name() + where + hint);
  }
  return texts;
}

void RefuseTooLarge(const TNamespace& cimNamespace, const std::vector<boost::shared_ptr<TCIMClass>>& classes,
                    const std::string& machineType, bool singleRequest, int serviceProcessors) {
  using namespace CollectorProfile;
  const auto refuse = [](const std::string& subject, const std::string& problem) {
    if (!problem.empty()) throw THostError(EFailure::kTooLarge, subject + problem);
  };
  refuse("", MachineTypesProblemOf(cimNamespace));
  std::map<const TCIMClass*, EPath> paths;
  for (const auto& entry : CollectableClasses(cimNamespace, machineType)) paths[entry.cimClass.get()] = entry.path;
  TCollectionSize all;
  for (const auto& cimClass : classes) {
    const auto path = paths.find(cimClass.get());
    if (path == paths.end()) continue;
    for (const auto& property : RegistersOf(*cimClass, path->second)) {
      const std::string problem = path->second == EPath::kR8 ? AddressProblemOf(*property) : std::string();
      refuse("the register " + property->Definition().name + " of the class " + cimClass->Name() + " ", problem);
    }
    // The collector keeps only eight bits of the number.
    const TCollectionSize size = SizeOf(*cimClass, path->second, static_cast<std::uint8_t>(serviceProcessors));
    refuse("the class " + cimClass->Name() + " with a MaxInstanceCount of " +
               std::to_string(InstanceCountOf(*cimClass)) + " ",
           ProblemOf(size));
    all += size;
  }
  if (singleRequest) refuse("the single request for all classes ", ProblemOf(all));
}

std::vector<std::string> ClassesBehindCapture(const std::vector<boost::shared_ptr<TCIMClass>>& classes) {
  std::vector<std::string> behind;
  bool seen = false;
  for (const auto& cimClass : classes) {
    if (seen) behind.push_back(cimClass->Name());
    seen = seen || cimClass->Name() == CollectorProfile::kCaptureClass;
  }
  return behind;
}

void TExchangeLedger::OnIpmi(const TIpmiExchange& exchange) {
  Count(exchange.attempted, exchange.answer != nullptr, exchange.request.Node(), KindOfRequest(exchange.request),
        exchange.answer != nullptr ? exchange.answer->completionCode : wire::TCommandBuffer::kSuccess);
}

void TExchangeLedger::OnDot(const TDotExchange& exchange) {
  Count(exchange.attempted, exchange.answer != nullptr, exchange.request.serviceProcessor, EExchangeKind::kDot,
        wire::TCommandBuffer::kSuccess);
}

void TExchangeLedger::BeginRequest(std::uint32_t turn) { turn_ = turn; }

// An exchange that a stopped run refuses never took place: it is not a failure of the service processor.
void TExchangeLedger::Count(bool attempted, bool answered, int node, EExchangeKind kind, std::uint8_t completionCode) {
  const bool succeeded = answered && completionCode == wire::TCommandBuffer::kSuccess;
  if (!attempted) return;
  ++total_;
  if (succeeded) return;
  TExchangeFailure failure;
  failure.turn = turn_;
  failure.kind = kind;
  failure.owner = node;
  if (answered) failure.how = {EHow::kCompletionCode, completionCode};
  failed_.push_back(failure);
}

std::string RunRequest(IPluginBasicQueryCallbacks& plugin, const boost::shared_ptr<TNamespace>& cimNamespace,
                       const std::vector<boost::shared_ptr<TCIMClass>>& classes) {
  std::vector<boost::shared_ptr<ICIMClass>> requested(classes.begin(), classes.end());
  ClearFailureDetail();
  try {
    plugin.GetData(cimNamespace, requested);
    return {};
  } catch (const THostError&) {
    throw;  // the host's own output failed while an instance was committed
  } catch (const TAssertionFailure& failure) {
    return DescribeAssertion(failure);
  } catch (const TVELException& exception) {
    const std::string detail = LastFailureDetail();
    return std::string(exception.what()) + (detail.empty() ? "" : " " + detail);
  } catch (const std::exception& exception) {
    return std::string("the collector failed: ") + exception.what();
  } catch (...) {
    return "the collector failed with an exception of unknown type";
  }
}

}  // namespace velhost
