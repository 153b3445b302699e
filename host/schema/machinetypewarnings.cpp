#include "host/schema/machinetypewarnings.h"

#include <algorithm>
#include <boost/shared_ptr.hpp>
#include <utility>

#include "host/base/digits.h"
#include "host/base/text.h"
#include "host/profile/collectorprofile.h"

namespace velhost {

namespace {

constexpr std::size_t kMachineTypeDigits = 4;
constexpr std::size_t kSteps = std::size_t{8} << 20U;  // parts of elements looked up; takes less than a second
constexpr std::size_t kBytesOfAStep = 16;

using TElements = std::vector<TCIMValue>;

// Null unless there is one with a list.
boost::shared_ptr<const TQualifier> MachineTypesQualifier(const TCIMClass& cimClass) {
  const auto qualifier = cimClass.Qualifiers().Find(std::string(CollectorProfile::kSupportedMachineTypes));
  return qualifier && qualifier->GetValue().IsArray() ? qualifier : nullptr;
}

void InsertMachineTypes(std::set<std::string>& machineTypes, const TElements& elements) {
  for (const TCIMValue& element : elements) {
    const std::string text = element.ToString(10);
    const std::vector<std::string_view> groups = DigitGroups(text, kMachineTypeDigits);
    machineTypes.insert(groups.begin(), groups.end());
    if (groups.empty() && !text.empty()) machineTypes.insert(text);
  }
}

}  // namespace

TDelegates::TDelegates(const TNamespace& cimNamespace, const TCIMClass& base, std::size_t& steps) : base_(&base) {
  std::set<const TElements*> known;  // of a list that classes share, only the first class matters
  std::vector<std::pair<const TCIMClass*, const TElements*>> lists;
  for (const auto& cimClass : cimNamespace.Classes()) {
    const auto qualifier = cimClass->DescendsFrom(base) ? MachineTypesQualifier(*cimClass) : nullptr;
    if (!qualifier) continue;
    const TElements& elements = qualifier->GetValue();
    if (!known.insert(&elements).second) continue;
    lists.emplace_back(cimClass.get(), &elements);
    InsertMachineTypes(machineTypes_, elements);
  }
  for (const std::string& machineType : machineTypes_) {
    lengths_.insert(machineType.size());
    delegates_.emplace(machineType, nullptr);
  }
  for (const auto& [cimClass, elements] : lists) {
    for (const TCIMValue& element : *elements) AddElement(*cimClass, element.ToString(10), steps);
  }
}

// A machine type is served by every element that contains it. There are only a few different lengths, so that looking
// up each part of that length is faster than searching for each machine type.
void TDelegates::AddElement(const TCIMClass& cimClass, std::string_view text, std::size_t& steps) {
  for (const std::size_t length : lengths_) {
    if (length > text.size()) return;
    const std::size_t parts = text.size() - length + 1;
    const std::size_t cost = parts * (length / kBytesOfAStep + 1);
    if (cost > steps) {
      steps = 0;
      return;
    }
    steps -= cost;
    for (std::size_t at = 0; at < parts; ++at) {
      const auto found = delegates_.find(text.substr(at, length));
      if (found != delegates_.end() && found->second == nullptr) found->second = &cimClass;
    }
  }
}

const TCIMClass* TDelegates::Of(const std::string& machineType) const {
  const auto found = delegates_.find(machineType);
  return found == delegates_.end() ? nullptr : found->second;
}

TMachineTypeWarnings::TMachineTypeWarnings(const TNamespace& cimNamespace, const TClassPaths& paths,
                                           TNeedFindings& findings)
    : findings_(findings), steps_(kSteps) {
  for (const auto& base : paths.Bases()) bases_.emplace_back(cimNamespace, *base, steps_);
}

// Of the first base class for which the collector reads another class; null if it reads this one for any of them.
const TDelegates* TMachineTypeWarnings::HidingDelegates(const TCIMClass& cimClass,
                                                        const std::string& machineType) const {
  const TDelegates* hiding = nullptr;
  for (const TDelegates& delegates : bases_) {
    if (!cimClass.DescendsFrom(delegates.Base())) continue;
    const TCIMClass* const chosen = delegates.Of(machineType);
    if (chosen == &cimClass || chosen == nullptr) return nullptr;
    if (hiding == nullptr) hiding = &delegates;
  }
  return hiding;
}

void TMachineTypeWarnings::Warn(const TCIMClass& cimClass) {
  const auto isAbove = [&cimClass](const TDelegates& delegates) { return cimClass.DescendsFrom(delegates.Base()); };
  const bool isR8 = TClassPaths::IsR8(cimClass);
  const bool isJfr = std::any_of(bases_.begin(), bases_.end(), isAbove);
  const auto qualifier = isR8 || isJfr ? MachineTypesQualifier(cimClass) : nullptr;
  if (!qualifier || qualifier->GetValue().IsNull()) return;
  WarnOfEmptyOnes(cimClass, *qualifier);
  if (!isR8) WarnOfHidingClasses(cimClass, *qualifier);  // an R8 class is read on the R8 path then
}

void TMachineTypeWarnings::WarnOfEmptyOnes(const TCIMClass& cimClass, const TQualifier& qualifier) {
  const TElements& elements = qualifier.GetValue();
  const std::string name = SingleQuoted(CollectorProfile::kSupportedMachineTypes);
  if (elements.empty()) {
    findings_.Warning(qualifier.Location(), "no machine is served by " + Named(cimClass) + ": found an empty list in " +
                                                name + ", expected at least one machine type");
  }
  const auto isEmpty = [](const TCIMValue& element) { return element.ToString(10).empty(); };
  const auto empty = std::find_if(elements.begin(), elements.end(), isEmpty);
  if (empty == elements.end()) return;
  findings_.Warning(qualifier.Location(), "element " + std::to_string(empty - elements.begin() + 1) + " of " + name +
                                              " of " + Named(cimClass) + " is empty, expected a machine type");
}

void TMachineTypeWarnings::WarnOfHidingClasses(const TCIMClass& cimClass, const TQualifier& qualifier) {
  std::set<std::string> machineTypes;
  InsertMachineTypes(machineTypes, qualifier.GetValue());
  for (const std::string& machineType : machineTypes) {
    const TDelegates* const hiding = HidingDelegates(cimClass, machineType);
    if (hiding == nullptr) continue;
    const TCIMClass& delegate = *hiding->Of(machineType);
    const std::string other = findings_.MayQuote(delegate.Location()) ? Named(delegate) : "another class";
    findings_.Warning(qualifier.Location(), Named(cimClass) + " is hidden for the machine type " +
                                                SingleQuoted(machineType) + " by " + other +
                                                ", which is declared before it, expected one subclass of " +
                                                SingleQuoted(hiding->Base().Name()) + " for each machine type");
  }
}

void TMachineTypeWarnings::Finish(const TSourceLocation& nowhere) {
  if (steps_ > 0) return;
  findings_.Warning(nowhere, "there are too many machine types to find all classes that hide each other");
}

}  // namespace velhost
