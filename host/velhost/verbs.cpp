#include "host/velhost/verbs.h"

#include "host/base/unsafetext.h"
#include "host/plugins/pluginloader.h"
#include "host/schema/schemacheck.h"
#include "host/velhost/classes.h"
#include "host/velhost/collect.h"
#include "host/velhost/messages.h"
#include "host/velhost/schemaloading.h"
#include "host/velhost/serverconnection.h"
#include "host/velhost/simulate.h"
#include "host/velhost/standardstreams.h"
#include "host/velhost/trace.h"

namespace velhost {

namespace {

class TTextSink : public ITextSink {
 public:
  void Write(std::string_view text) override { text_ += text; }
  const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

EExitStatus ListClasses(const TCommonOptions& options, const TInstallation& installation) {
  const TStopSignal stop;
  TInputs inputs(stop);
  const auto cimNamespace = LoadSchema(options, installation, inputs);
  std::string machineType;
  if (options.machineType) {
    machineType = *options.machineType;
  } else {
    machineType = ConnectServer(options, installation, inputs)->Environment().MachineType();
  }
  WriteToStandardOutput(SafeLines(FormatClasses(*cimNamespace, machineType)));
  return EExitStatus::kComplete;
}

EExitStatus ShowPlugin(const TCommonOptions& options, const TInstallation& installation) {
  TTrace trace(options);
  std::string text;
  {
    TDynamicLibraryLoader libraries;
    TPluginLoader loader(libraries);
    const auto plugin = loader.Load(options.plugin.empty() ? installation.Plugin() : options.plugin);
    trace.OpenFile();
    const TPluginIdentity identity = plugin->Identity();
    text = "Name:              " + SafeText(identity.name) + "\nVersion:           " + SafeText(identity.version) +
           "\nInterface version: " + SafeText(identity.interfaceVersion) +
           "\nType:              " + std::to_string(identity.type) +
           "\nAnswers requests:  " + (plugin->Query() != nullptr ? "yes" : "no") +
           "\nLibrary:           " + SafeText(plugin->Path()) + "\n";
    plugin->Unload();
  }
  WriteToStandardOutput(text);
  trace.Finish();
  return EExitStatus::kComplete;
}

EExitStatus CheckSchemaFiles(const TCommandLine& commandLine, const TInstallation& installation) {
  const auto& mofs = commandLine.check.mofs;
  const std::vector<std::string> paths = mofs.empty() ? SchemaPaths(commandLine.common, installation) : mofs;
  const TStopSignal stop;
  TInputs inputs(stop);
  TInputReader reader(inputs, {"the schema", "check", EFileKind::kSchema}, paths);
  const TSchemaFindings findings = CheckSchema(paths, reader);
  TTextSink text;
  if (commandLine.check.json) {
    WriteFindingsAsJson(findings, text);
  } else {
    WriteFindingsAsText(findings, text);
  }
  WriteToStandardOutput(commandLine.check.json ? text.Text() : SafeLines(text.Text()));
  return StatusOf(findings);
}

}  // namespace

EExitStatus RunVerb(const TCommandLine& commandLine, const TInstallation& installation) {
  for (const std::string& text : commandLine.warnings) Say("warning: " + text);
  switch (commandLine.verb) {
    case EVerb::kCollect: return Collect(commandLine, installation);
    case EVerb::kClasses: return ListClasses(commandLine.common, installation);
    case EVerb::kPlugin: return ShowPlugin(commandLine.common, installation);
    case EVerb::kSimulate: return SimulateCommand(commandLine.simulate, installation);
    case EVerb::kCheck: return CheckSchemaFiles(commandLine, installation);
  }
  throw THostError(EExitStatus::kInternal, "unknown command");
}

}  // namespace velhost
