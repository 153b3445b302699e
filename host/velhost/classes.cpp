// velhost classes: what the schema offers, and what this machine serves of it.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/unsafetext.h"
#include "host/profile/collectorprofile.h"
#include "host/velhost/schemaloading.h"
#include "host/velhost/serverconnection.h"
#include "host/velhost/standardstreams.h"
#include "host/velhost/verbs.h"

namespace velhost {

namespace {

namespace Profile = CollectorProfile;

std::string ServedText(const Profile::TServedClass& entry) {
  if (!entry.served) return "no";
  return entry.path == Profile::EPath::kCapture ? "yes, on every machine type" : "yes, on \"" + entry.servedBy + "\"";
}

std::string Row(std::size_t width, const Profile::TServedClass& entry) {
  const bool counted = entry.path != Profile::EPath::kCapture;
  return fmt::format("{:<{}}  {:<4}  {:>9}  {:>9}  {}\n", entry.cimClass->Name(), width,
                     Profile::NameOfPath(entry.path), counted ? std::to_string(entry.instances) : "-",
                     counted ? std::to_string(entry.registers) : "-", ServedText(entry));
}

std::string DelegateRow(const TNamespace& cimNamespace, std::string_view base, const std::string& machineType) {
  if (!cimNamespace.FindClass(base)) return fmt::format("  {}: not in the schema\n", base);
  const auto delegate = Profile::DelegateOf(cimNamespace, base, machineType);
  return fmt::format("  {}: {}\n", base, delegate ? delegate->Name() : "no subclass serves this machine type");
}

// Lists class, path, instances, registers, and whether the machine type is served and by which element of
// "SupportedMachineTypes"; then, for each JFR base class, the subclass chosen for the machine type.
std::string FormatClasses(const TNamespace& cimNamespace, const std::string& machineType) {
  const auto classes = Profile::CollectableClasses(cimNamespace, machineType);
  std::size_t width = std::string_view("CLASS").size();
  for (const auto& entry : classes) width = std::max(width, entry.cimClass->Name().size());
  std::string text =
      machineType.empty() ? "Machine type: unknown\n\n" : "Machine type: " + SafeText(machineType) + "\n\n";
  text += fmt::format("{:<{}}  {:<4}  {:>9}  {:>9}  {}\n", "CLASS", width, "PATH", "INSTANCES", "REGISTERS", "SERVED");
  for (const auto& entry : classes) text += Row(width, entry);
  text += "\nSubclasses chosen for the base classes of the JFR path:\n";
  for (const std::string_view base : Profile::kJfrBaseClasses) text += DelegateRow(cimNamespace, base, machineType);
  return text;
}

}  // namespace

EExitStatus ListClasses(const TCommandLine& commandLine, const TInstallation& installation) {
  const TCommonOptions& options = commandLine.common;
  const TStopSignal stop;
  TInputs inputs(stop);
  const auto cimNamespace = LoadSchema(options, installation, inputs).cimNamespace;
  std::string machineType;
  if (options.machineType) {
    machineType = *options.machineType;
  } else {
    machineType = ConnectServer(options, installation, inputs, *cimNamespace)->Environment().MachineType();
  }
  WriteToStandardOutput(SafeLines(FormatClasses(*cimNamespace, machineType)));
  return EExitStatus::kComplete;
}

}  // namespace velhost
