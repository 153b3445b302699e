// velhost collect --dry-run: prints what a collection would read.
#include <unistd.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/hosterror.h"
#include "host/bmc/record/recording.h"
#include "host/model/cimnamespace.h"
#include "host/output/planwriter.h"
#include "host/output/writers.h"
#include "host/plugins/pluginloader.h"
#include "host/profile/collectorprofile.h"
#include "host/profile/plan.h"
#include "host/schema/collectorneeds.h"
#include "host/velhost/classchoice.h"
#include "host/velhost/collect/fileclash.h"
#include "host/velhost/collect/outputtarget.h"
#include "host/velhost/collect/requests.h"
#include "host/velhost/commandline.h"
#include "host/velhost/declaredserver.h"
#include "host/velhost/inputs.h"
#include "host/velhost/installation.h"
#include "host/velhost/messages.h"
#include "host/velhost/pager.h"
#include "host/velhost/recordedconnection.h"
#include "host/velhost/schemaloading.h"
#include "host/velhost/signals.h"
#include "host/velhost/trace.h"
#include "host/velhost/verbs.h"

namespace velhost {

namespace {

// Without a machine type nothing can be planned.
TDeclaredServer DeclareForPlan(const TCommonOptions& options, const TInstallation& installation, TInputs& inputs,
                               const TNamespace& cimNamespace) {
  TDeclaredServer server = DeclareServer(options, installation, inputs, cimNamespace);
  if (!server.machineType.empty()) return server;
  throw THostError(EFailure::kInvalidArgument,
                   "without the machine type nothing can be planned; give it with --machine-type NNNN");
}

void SetDeadline(TStopSignal& stop, const TCollectOptions& options) {
  if (!options.timeoutSeconds) return;
  const std::chrono::duration<double> limit(*options.timeoutSeconds);
  stop.SetDeadline(TStopSignal::TClock::now() + std::chrono::duration_cast<TStopSignal::TClock::duration>(limit));
}

// The plan says nothing about any plugin other than the collector.
bool IsCollector(const TCommonOptions& options, const TInstallation& installation) {
  TDynamicLibraryLoader libraries;
  TPluginLoader loader(libraries);
  loader.SetFatalHandler(&SayAndEndAtOnce);
  const auto plugin = loader.Load(options.plugin.empty() ? installation.Plugin() : options.plugin);
  const bool isCollector = plugin->Identity().name == CollectorProfile::kCollectorName;
  plugin->Unload();
  return isCollector;
}

TPlan PlanOf(const TCommandLine& commandLine, const TInstallation& installation, TInputs& inputs) {
  const TCollectOptions& options = commandLine.collect;
  TLoadedSchema schema = LoadSchema(commandLine.common, installation, inputs);
  const auto& cimNamespace = schema.cimNamespace;
  CheckClassNames(*cimNamespace, options.classes);
  const TDeclaredServer declared = DeclareForPlan(commandLine.common, installation, inputs, *cimNamespace);
  const TPlanServer server = PlanServerOf(declared.discovery);
  const TRecordingHeader* const recording = declared.recording ? &*declared.recording : nullptr;
  for (const std::string& text : AnotherSchemaWarnings(recording, schema.facts.sha256)) Say("warning: " + text);
  const auto collected = ClassesToCollect(*cimNamespace, options, declared.machineType, server, recording);
  RefuseTooLarge(*cimNamespace, collected, declared.machineType, server.serviceProcessors);
  const std::string unserved = MachineTypeWarning(*cimNamespace, declared.machineType);
  if (!unserved.empty()) Say("warning: " + unserved);
  const auto isCollectable = [&](const TCIMClass& cimClass) { return MeetsCollectorNeeds(*cimNamespace, cimClass); };
  TPlan plan = MakePlan({*cimNamespace, declared.machineType, server, RequestsOf(collected),
                         IsCollector(commandLine.common, installation), isCollectable});
  for (const std::string& text : PlanWarnings(plan)) Say("warning: " + text);
  SayMeaningWarnings(plan, schema);
  return plan;
}

void Print(const TPlan& plan, const TCommandLine& commandLine) {
  const TCollectOptions& options = commandLine.collect;
  const bool isShown = IsStandardOutput(options.output);
  const bool isTable = options.format.empty() ? isShown && IsTerminal(STDOUT_FILENO) : options.format == "table";
  TPager pager(commandLine.common);
  TOutputTarget target(options.output, isTable ? &pager : nullptr);
  if (isTable) {
    const bool useColor = UseColor(commandLine.common.color, isShown ? STDOUT_FILENO : kNoTerminal);
    WritePlanAsTable(plan, target.Sink(), {TerminalWidth(STDOUT_FILENO), useColor});
  } else {
    WritePlanAsJson(plan, target.Sink());
  }
  target.Finish();
  pager.Close();
}

}  // namespace

EExitStatus DryRun(const TCommandLine& commandLine, const TInstallation& installation) {
  RefuseClashingFiles(commandLine, installation);
  TStopSignal stop;
  const TSignalGuard guard(stop);
  SetDeadline(stop, commandLine.collect);
  TInputs inputs(stop);
  TTrace trace(commandLine.common);
  const TPlan plan = PlanOf(commandLine, installation, inputs);
  RefuseClashWithInputs(commandLine, inputs.Files());
  trace.OpenFile();
  Print(plan, commandLine);
  trace.Finish();
  return EExitStatus::kComplete;
}

}  // namespace velhost
