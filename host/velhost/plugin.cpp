// velhost plugin: prints the identity of the collector.
#include "host/base/unsafetext.h"

#include <memory>
#include <string>
#include "host/plugins/pluginloader.h"
#include "host/velhost/messages.h"
#include "host/velhost/standardstreams.h"
#include "host/velhost/trace.h"
#include "host/velhost/verbs.h"

namespace velhost {

EExitStatus ShowPlugin(const TCommandLine& commandLine, const TInstallation& installation) {
  const TCommonOptions& options = commandLine.common;
  TTrace trace(options);
  std::string text;
  {
    TDynamicLibraryLoader libraries;
    TPluginLoader loader(libraries);
    loader.SetFatalHandler(&SayAndEndAtOnce);
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

}  // namespace velhost
