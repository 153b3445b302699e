// velhost classes: what the schema offers, and what this machine serves of it.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/hosterror.h"
#include "host/base/names.h"
#include "host/base/text.h"
#include "host/profile/collectorprofile.h"
#include "host/profile/plan.h"
#include "host/velhost/classchoice.h"
#include "host/velhost/messages.h"
#include "host/velhost/pager.h"
#include "host/velhost/schemaloading.h"
#include "host/velhost/serverconnection.h"
#include "host/velhost/verbs.h"

namespace velhost {

namespace {

namespace Profile = CollectorProfile;
using TJson = nlohmann::ordered_json;
using TEntries = std::vector<Profile::TServedClass>;

// A class, and why this machine does not serve it; empty if it does.
struct TRow {
  Profile::TServedClass entry;
  std::string whyNot;
};

struct TClassList {
  std::string machineType;
  std::vector<TRow> rows;
};

struct TMachine {
  std::string machineType;
  TPlanServer server;
};

void AddMatching(TEntries& chosen, const TEntries& all, const std::string& pattern) {
  const std::size_t before = chosen.size();
  for (const auto& entry : all) {
    if (MatchesNamePattern(entry.cimClass->Name(), pattern)) chosen.push_back(entry);
  }
  if (chosen.size() > before) return;
  throw THostError(
      EFailure::kInvalidArgument,
      "\"" + SafeText(pattern) + "\" matches no class that can be collected; \"velhost classes\" lists them");
}

// The classes that the words name, whether or not they can be collected; without words, all that can be.
TEntries ChosenEntries(const TNamespace& cimNamespace, const std::vector<std::string>& words,
                       const std::string& machineType) {
  TEntries all = Profile::CollectableClasses(cimNamespace, machineType);
  if (words.empty()) return all;
  TEntries chosen;
  for (const std::string& word : words) {
    if (IsNamePattern(word)) {
      AddMatching(chosen, all, word);
      continue;
    }
    const auto cimClass = FindNamedClass(cimNamespace, word);
    const auto known = std::find_if(all.begin(), all.end(), [&](const auto& e) { return e.cimClass == cimClass; });
    if (known != all.end()) {
      chosen.push_back(*known);
    } else {
      chosen.emplace_back().cimClass = cimClass;
    }
  }
  return chosen;
}

// The plan of a collection knows why a class is not served.
TClassList ListOf(const TNamespace& cimNamespace, const TEntries& entries, const TMachine& machine) {
  std::vector<std::vector<TAskedClass>> requests;
  for (const auto& entry : entries) requests.push_back({{entry.cimClass}});
  const auto isCollectable = [](const TCIMClass&) { return false; };  // its reads do not matter here
  const TPlan plan = MakePlan({cimNamespace, machine.machineType, machine.server, requests, true, isCollectable});
  TClassList list;
  list.machineType = machine.machineType;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    list.rows.push_back({entries[i], plan.ClassOf(plan.requests[i].turns.front()).whyNotServed});
  }
  return list;
}

std::string ServedText(const TRow& row) {
  if (!row.whyNot.empty()) return "no: " + row.whyNot;
  return row.entry.path == Profile::EPath::kCapture ? "yes, on every machine type"
                                                    : "yes, on \"" + row.entry.servedBy + "\"";
}

bool HasRegisters(const TRow& row) {
  return row.entry.path == Profile::EPath::kR8 || row.entry.path == Profile::EPath::kJfr;
}

std::string LineOf(std::size_t width, const TRow& row) {
  const bool counted = HasRegisters(row);
  return fmt::format("{:<{}}  {:<4}  {:>9}  {:>9}  {}\n", row.entry.cimClass->Name(), width,
                     Profile::NameOfPath(row.entry.path), counted ? std::to_string(row.entry.instances) : "-",
                     counted ? std::to_string(row.entry.registers) : "-", ServedText(row));
}

std::string DelegateLine(const TNamespace& cimNamespace, std::string_view base, const std::string& machineType) {
  if (!cimNamespace.FindClass(base)) return fmt::format("  {}: not in the schema\n", base);
  const auto delegate = Profile::DelegateOf(cimNamespace, base, machineType);
  return fmt::format("  {}: {}\n", base, delegate ? delegate->Name() : "no subclass serves this machine type");
}

std::string TableOf(const TNamespace& cimNamespace, const TClassList& list) {
  std::size_t width = std::string_view("CLASS").size();
  for (const TRow& row : list.rows) width = std::max(width, row.entry.cimClass->Name().size());
  std::string text =
      list.machineType.empty() ? "Machine type: unknown\n\n" : "Machine type: " + SafeText(list.machineType) + "\n\n";
  text += fmt::format("{:<{}}  {:<4}  {:>9}  {:>9}  {}\n", "CLASS", width, "PATH", "INSTANCES", "REGISTERS", "SERVED");
  for (const TRow& row : list.rows) text += LineOf(width, row);
  text += "\nSubclasses chosen for the base classes of the JFR path:\n";
  for (const std::string_view base : Profile::kJfrBaseClasses)
    text += DelegateLine(cimNamespace, base, list.machineType);
  return text;
}

TJson MachineTypesOf(const TCIMClass& cimClass) {
  TJson types = TJson::array();
  const auto qualifier = cimClass.Qualifiers().Find(std::string(Profile::kSupportedMachineTypes));
  if (!qualifier || !qualifier->GetValue().IsArray()) return types;
  const std::vector<TCIMValue>& elements = qualifier->GetValue();
  for (const TCIMValue& element : elements) types.push_back(element.ToString(10));
  return types;
}

TJson JsonOf(const TRow& row) {
  TJson json = {{"class", row.entry.cimClass->Name()}};
  if (row.entry.path != Profile::EPath::kNone) json["path"] = FoldName(Profile::NameOfPath(row.entry.path));
  json["served"] = row.whyNot.empty();
  if (row.whyNot.empty() && HasRegisters(row)) json["served_by"] = row.entry.servedBy;
  if (!row.whyNot.empty()) json["why_not"] = row.whyNot;
  if (!HasRegisters(row)) return json;
  json["instances"] = row.entry.instances;
  json["registers"] = row.entry.registers;
  json["machine_types"] = MachineTypesOf(*row.entry.cimClass);
  return json;
}

std::string JsonText(const TNamespace& cimNamespace, const TClassList& list) {
  TJson classes = TJson::array();
  for (const TRow& row : list.rows) classes.push_back(JsonOf(row));
  TJson bases = TJson::array();
  for (const std::string_view name : Profile::kJfrBaseClasses) {
    const auto delegate = Profile::DelegateOf(cimNamespace, name, list.machineType);
    bases.push_back({{"class", name}, {"subclass", delegate ? TJson(delegate->Name()) : TJson()}});
  }
  const TJson document = {{"kind", "classlist"},
                          {"format_version", 1},
                          {"machine_type", list.machineType},
                          {"classes", std::move(classes)},
                          {"base_classes", std::move(bases)}};
  // The machine type need not be UTF-8.
  return SafeJson(document.dump(-1, ' ', false, TJson::error_handler_t::replace)) + "\n";
}

// A server is opened only if its machine type is needed. Without one, every class is assumed to have a way.
TMachine MachineOf(const TCommonOptions& options, const TInstallation& installation, TInputs& inputs,
                   const TNamespace& cimNamespace) {
  if (options.machineType) return {*options.machineType, kServerWithEveryWay};
  const auto connection = ConnectServer(options, installation, inputs, cimNamespace);
  return {connection->Environment().MachineType(), PlanServerOf(connection->ServiceProcessor().Discover())};
}

}  // namespace

EExitStatus ListClasses(const TCommandLine& commandLine, const TInstallation& installation) {
  const TStopSignal stop;
  TInputs inputs(stop);
  const auto cimNamespace = LoadSchema(commandLine.common, installation, inputs).cimNamespace;
  const std::vector<std::string>& words = commandLine.classes.classes;
  CheckClassNames(*cimNamespace, words);
  const TMachine machine = MachineOf(commandLine.common, installation, inputs, *cimNamespace);
  const TEntries entries = ChosenEntries(*cimNamespace, words, machine.machineType);
  const std::string warning = MachineTypeWarning(*cimNamespace, machine.machineType);
  if (!warning.empty()) Say("warning: " + warning);
  const TClassList list = ListOf(*cimNamespace, entries, machine);
  if (commandLine.classes.json) {
    WriteToStandardOutput(JsonText(*cimNamespace, list));
  } else {
    WriteForPeople(commandLine.common, SafeLines(TableOf(*cimNamespace, list)));
  }
  return EExitStatus::kComplete;
}

}  // namespace velhost
