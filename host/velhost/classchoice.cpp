#include "host/velhost/classchoice.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "host/base/digits.h"
#include "host/base/hosterror.h"
#include "host/base/names.h"
#include "host/base/text.h"
#include "host/profile/collectorprofile.h"

namespace velhost {

namespace {

using CollectorProfile::EPath;
using CollectorProfile::TServedClass;
using TClass = boost::shared_ptr<TCIMClass>;

std::vector<TClass> DefaultClasses(const TNamespace& cimNamespace, const std::string& machineType,
                                   const TPlanServer& server) {
  std::vector<TClass> classes;
  for (const TServedClass& entry : CollectorProfile::CollectableClasses(cimNamespace, machineType)) {
    if (entry.served && HasWay(entry.path, server)) classes.push_back(entry.cimClass);
  }
  return classes;
}

// The list under construction.
class TChosenClasses {
 public:
  void AddNamed(const TClass& cimClass) {
    named_.insert(cimClass.get());
    const auto yielded = yielded_.find(cimClass.get());
    if (yielded == yielded_.end()) {
      chosen_.push_back({cimClass, true});
    } else {  // it takes the place of the one that a pattern or base class gave
      chosen_[yielded->second].isNamed = true;
      yielded_.erase(yielded);
    }
  }

  void AddYielded(const TClass& cimClass, bool isNamed) {
    if (named_.count(cimClass.get()) != 0) return;
    const auto [place, isNew] = yielded_.emplace(cimClass.get(), chosen_.size());
    if (isNew) chosen_.push_back({cimClass, isNamed});
    chosen_[place->second].isNamed |= isNamed;
  }

  std::vector<TAskedClass> Take() { return std::move(chosen_); }

 private:
  std::vector<TAskedClass> chosen_;
  std::unordered_set<const TCIMClass*> named_;
  std::unordered_map<const TCIMClass*, std::size_t> yielded_;  // the place of each that was not named
};

[[noreturn]] void RefusePattern(const std::string& pattern) {
  throw THostError(EFailure::kInvalidArgument, "\"" + SafeText(pattern) +
                                                   "\" matches no class that this machine serves; \"velhost classes\" "
                                                   "shows what it serves");
}

void AddMatching(TChosenClasses& chosen, const std::vector<TClass>& defaults, const std::string& pattern) {
  bool isFound = false;
  for (const TClass& cimClass : defaults) {
    if (!MatchesNamePattern(cimClass->Name(), pattern)) continue;
    chosen.AddYielded(cimClass, false);
    isFound = true;
  }
  if (!isFound) RefusePattern(pattern);
}

void AddClass(TChosenClasses& chosen, const TNamespace& cimNamespace, const TClass& cimClass,
              const std::string& machineType) {
  const TClass delegate =
      IsJfrBaseClass(*cimClass) ? CollectorProfile::DelegateOf(cimNamespace, cimClass->Name(), machineType) : TClass();
  if (delegate) {
    chosen.AddYielded(delegate, true);
  } else {
    chosen.AddNamed(cimClass);
  }
}

bool IsWordCharacter(char c) { return IsDigit(c) || (FoldCase(c) >= 'a' && FoldCase(c) <= 'z'); }

// The words of an element of "SupportedMachineTypes", which may list several machine types.
void AddWords(std::vector<std::string>& words, const std::string& element) {
  std::string word;
  for (const char c : element + " ") {
    if (IsWordCharacter(c)) {
      word += c;
    } else if (!word.empty()) {
      words.push_back(std::exchange(word, {}));
    }
  }
}

std::string NearestMachineType(const std::vector<TServedClass>& classes, const std::string& machineType) {
  std::vector<std::string> words;
  for (const TServedClass& entry : classes) {
    const auto qualifier = entry.cimClass->Qualifiers().Find(std::string(CollectorProfile::kSupportedMachineTypes));
    if (!qualifier || !qualifier->GetValue().IsArray()) continue;
    const std::vector<TCIMValue>& elements = qualifier->GetValue();
    for (const TCIMValue& element : elements) AddWords(words, element.ToString(10));
  }
  const std::vector<std::string_view> candidates(words.begin(), words.end());
  return std::string(NearestName(machineType, candidates));
}

}  // namespace

TPlanServer PlanServerOf(const TDiscovery& discovery) {
  return {discovery.bmcNodes, discovery.ipmiDriver, discovery.dotCommands, discovery.communicates,
          discovery.serviceProcessors};
}

bool IsJfrBaseClass(const TCIMClass& cimClass) {
  const auto& bases = CollectorProfile::kJfrBaseClasses;
  return std::any_of(bases.begin(), bases.end(),
                     [&cimClass](std::string_view base) { return EqualNames(base, cimClass.Name()); });
}

boost::shared_ptr<TCIMClass> FindNamedClass(const TNamespace& cimNamespace, const std::string& name) {
  if (auto found = cimNamespace.FindClass(name)) return found;
  std::vector<std::string_view> names;
  for (const auto& candidate : cimNamespace.Classes()) names.push_back(candidate->Name());
  const std::string_view nearest = NearestName(name, names);
  throw THostError(
      EFailure::kInvalidArgument,
      "the schema has no class \"" + SafeText(name) + "\"" +
          (nearest.empty() ? "; \"velhost classes\" lists those that can be collected" : Suggestion(nearest)));
}

void CheckClassNames(const TNamespace& cimNamespace, const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    if (!IsNamePattern(word)) FindNamedClass(cimNamespace, word);
  }
}

std::vector<TAskedClass> ChooseClasses(const TNamespace& cimNamespace, const std::vector<std::string>& words,
                                       const std::string& machineType, const TPlanServer& server) {
  TChosenClasses chosen;
  std::vector<TClass> defaults;
  if (words.empty() || std::any_of(words.begin(), words.end(), IsNamePattern)) {
    defaults = DefaultClasses(cimNamespace, machineType, server);
  }
  for (const std::string& word : words) {
    if (IsNamePattern(word)) {
      AddMatching(chosen, defaults, word);
    } else {
      AddClass(chosen, cimNamespace, FindNamedClass(cimNamespace, word), machineType);
    }
  }
  if (words.empty()) {
    for (const TClass& cimClass : defaults) chosen.AddYielded(cimClass, false);
  }
  return chosen.Take();
}

std::string MachineTypeWarning(const TNamespace& cimNamespace, const std::string& machineType) {
  auto classes = CollectorProfile::CollectableClasses(cimNamespace, machineType);
  std::erase_if(classes, [](const TServedClass& entry) { return entry.path == EPath::kCapture; });
  const bool isServed =
      std::any_of(classes.begin(), classes.end(), [](const TServedClass& entry) { return entry.served; });
  if (isServed || classes.empty()) return {};
  return "no register class serves the machine type " + SafeText(machineType) +
         Suggestion(NearestMachineType(classes, machineType));
}

}  // namespace velhost
