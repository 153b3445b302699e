#include "host/velhost/collect/requests.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "host/base/hosterror.h"
#include "host/base/text.h"
#include "host/model/failures.h"
#include "host/profile/collectionsize.h"
#include "host/profile/collectorprofile.h"
#include "host/velhost/classchoice.h"
#include "nkrovel20/tvelexception.h"

namespace velhost {

namespace {

constexpr char kHint[] = "; \"velhost classes\" shows what is served";

std::vector<TAskedClass> RecordedClasses(const TNamespace& cimNamespace, const std::vector<std::string>& names) {
  std::vector<TAskedClass> classes;
  for (const std::string& name : names) {
    const auto cimClass = cimNamespace.FindClass(name);
    if (!cimClass) {
      throw THostError(EFailure::kInvalidArgument,
                       "the recording was made of the class \"" + SafeText(name) +
                           "\", which the schema does not have; name the classes to collect");
    }
    classes.push_back({cimClass, true});  // a class that is not served was named then
  }
  return classes;
}

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

TCollectedClasses ClassesToCollect(const TNamespace& cimNamespace, const TCollectOptions& options,
                                   const std::string& machineType, const TPlanServer& server,
                                   const TRecordingHeader* recording) {
  if (!options.classes.empty() || recording == nullptr || !recording->run) {
    return {ChooseClasses(cimNamespace, options.classes, machineType, server), options.singleRequest};
  }
  return {RecordedClasses(cimNamespace, recording->run->classes),
          options.singleRequest || recording->run->singleRequest};
}

std::vector<std::vector<TAskedClass>> RequestsOf(const TCollectedClasses& collected) {
  if (collected.singleRequest) return {collected.classes};
  std::vector<std::vector<TAskedClass>> requests;
  for (const TAskedClass& asked : collected.classes) requests.push_back({asked});
  return requests;
}

std::vector<std::string> PlanWarnings(const TPlan& plan) {
  std::vector<std::string> texts;
  std::set<std::size_t> told;
  std::string uncollected;
  std::size_t turns = 0;
  for (const TPlannedRequest& request : plan.requests) {
    for (const TPlannedTurn& turn : request.turns) {
      ++turns;
      const TPlannedClass& planned = plan.ClassOf(turn);
      const std::string& name = planned.cimClass->Name();
      if (!turn.isReached) uncollected += " " + name;
      if (!turn.isNamed || planned.whyNotServed.empty() || !told.insert(turn.planClass).second) continue;
      texts.push_back(name + " is not served: " + planned.whyNotServed + kHint);
    }
  }
  if (turns == 0) texts.push_back(std::string("there are no classes to collect") + kHint);
  if (!uncollected.empty()) {
    texts.push_back("the collector ends the request after " + std::string(CollectorProfile::kCaptureClass) +
                    "; not collected in a single request:" + uncollected);
  }
  return texts;
}

void RefuseTooLarge(const TNamespace& cimNamespace, const TCollectedClasses& collected, const std::string& machineType,
                    int serviceProcessors) {
  using namespace CollectorProfile;
  const auto refuse = [](const std::string& subject, const std::string& problem) {
    if (!problem.empty()) throw THostError(EFailure::kTooLarge, subject + problem);
  };
  refuse("", MachineTypesProblemOf(cimNamespace));
  std::map<const TCIMClass*, EPath> paths;
  for (const auto& entry : CollectableClasses(cimNamespace, machineType)) paths[entry.cimClass.get()] = entry.path;
  TCollectionSize all;
  for (const TAskedClass& asked : collected.classes) {
    const auto& cimClass = asked.cimClass;
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
  if (collected.singleRequest) refuse("the single request for all classes ", ProblemOf(all));
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
