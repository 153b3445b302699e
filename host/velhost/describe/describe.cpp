// velhost describe: what a class or register is, and what it means.
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/hosterror.h"
#include "host/base/names.h"
#include "host/profile/collectorprofile.h"
#include "host/schema/collectorneeds.h"
#include "host/velhost/classchoice.h"
#include "host/velhost/declaredserver.h"
#include "host/velhost/describe/classdescription.h"
#include "host/velhost/messages.h"
#include "host/velhost/pager.h"
#include "host/velhost/schemaloading.h"
#include "host/velhost/verbs.h"

namespace velhost {

namespace {

using CollectorProfile::TServedClass;
using TClass = boost::shared_ptr<TCIMClass>;

// The machine type and the ways to its classes. Given the type, no server is looked at, and each class has a way.
struct TMachine {
  std::string machineType;
  TPlanServer server;
};

TMachine MachineOf(const TCommonOptions& options, const TInstallation& installation, TInputs& inputs,
                   const TNamespace& cimNamespace) {
  if (options.machineType) return {*options.machineType, kServerWithEveryWay};
  const TDeclaredServer declared = DeclareServer(options, installation, inputs, cimNamespace);
  return {declared.machineType, PlanServerOf(declared.discovery)};
}

// "CLASS" or "CLASS.REGISTER"; neither name can contain a full stop.
struct TNamed {
  std::string className;
  std::optional<std::string> property;
};

TNamed NamedBy(const std::string& word) {
  const std::size_t stop = word.find('.');
  if (stop == std::string::npos) return {word, std::nullopt};
  return {word.substr(0, stop), word.substr(stop + 1)};
}

std::size_t FindNamedProperty(const TCIMClass& cimClass, const std::string& name) {
  const std::size_t found = cimClass.FindProperty(name);
  if (found < cimClass.Properties().size()) return found;
  std::vector<std::string_view> names;
  for (const auto& property : cimClass.Properties()) names.push_back(property->Definition().name);
  const std::string_view nearest = NearestName(name, names);
  const std::string className = SafeText(cimClass.Name());
  throw THostError(EFailure::kInvalidArgument,
                   "the class " + className + " has no register \"" + SafeText(name) + "\"" +
                       (nearest.empty() ? "; \"velhost describe " + className + "\" lists its registers"
                                        : Suggestion(SafeText(nearest))));
}

// The subclass that is collected on this machine for a base class of the register blocks; empty for any other class,
// and if no subclass serves the machine.
TClass DelegateOf(const TNamespace& cimNamespace, const TCIMClass& cimClass, const std::string& machineType) {
  if (machineType.empty() || !IsJfrBaseClass(cimClass)) return {};
  return CollectorProfile::DelegateOf(cimNamespace, cimClass.Name(), machineType);
}

std::string WhyNotServed(const TNamespace& cimNamespace, const TClass& cimClass, const TMachine& machine) {
  if (machine.machineType.empty() && IsJfrBaseClass(*cimClass)) {
    return "the subclass that serves the machine type is collected in its place";
  }
  const auto isCollectable = [](const TCIMClass&) { return false; };  // its reads do not matter here
  const TPlan plan = MakePlan({cimNamespace, machine.machineType, machine.server, {{{cimClass}}}, true, isCollectable});
  return plan.classes.front().whyNotServed;
}

TClassDescription Describe(const TNamespace& cimNamespace, const TClass& cimClass, const TMachine& machine) {
  TServedClass entry;
  TClassDescription description;
  for (const TServedClass& candidate : CollectorProfile::CollectableClasses(cimNamespace, machine.machineType)) {
    if (candidate.cimClass == cimClass) entry = candidate;
    if (candidate.cimClass->DescendsFrom(*cimClass)) description.subclasses.push_back(candidate.cimClass->Name());
  }
  description.machineType = machine.machineType;
  if (!machine.machineType.empty()) description.servedBy = entry.servedBy;
  description.planned = PlanOfClass(cimClass, entry.path, MeetsCollectorNeeds(cimNamespace, *cimClass));
  description.planned.whyNotServed = WhyNotServed(cimNamespace, cimClass, machine);
  return description;
}

// A slip is not part of the description: the qualifier is ignored.
void WarnOfSlips(const TPlannedClass& planned, TLoadedSchema& schema) {
  TPlan plan;
  plan.classes.push_back(planned);
  SayMeaningWarnings(plan, schema);
}

}  // namespace

EExitStatus DescribeClass(const TCommandLine& commandLine, const TInstallation& installation) {
  const TStopSignal stop;
  TInputs inputs(stop);
  TLoadedSchema schema = LoadSchema(commandLine.common, installation, inputs);
  const auto& cimNamespace = schema.cimNamespace;
  const TNamed named = NamedBy(commandLine.describe.name);
  TClass cimClass = FindNamedClass(*cimNamespace, named.className);
  const TMachine machine = MachineOf(commandLine.common, installation, inputs, *cimNamespace);
  if (!machine.machineType.empty()) {
    const std::string warning = MachineTypeWarning(*cimNamespace, machine.machineType);
    if (!warning.empty()) Say("warning: " + warning);
  }
  const TClass delegate = DelegateOf(*cimNamespace, *cimClass, machine.machineType);
  TClassDescription description = Describe(*cimNamespace, delegate ? delegate : cimClass, machine);
  if (delegate) description.baseClass = cimClass->Name();
  if (named.property) description.property = FindNamedProperty(*description.planned.cimClass, *named.property);
  WarnOfSlips(description.planned, schema);
  if (commandLine.describe.json) {
    WriteToStandardOutput(DescriptionAsJson(description));
  } else {
    TStringSink text;
    WriteDescriptionAsText(description, text,
                           {TerminalWidth(STDOUT_FILENO), UseColor(commandLine.common.color, STDOUT_FILENO)});
    WriteForPeople(commandLine.common, text.Text());
  }
  return EExitStatus::kComplete;
}

}  // namespace velhost
