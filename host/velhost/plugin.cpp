// velhost plugin: prints the identity of the collector.
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "host/base/text.h"
#include "host/plugins/pluginloader.h"
#include "host/velhost/messages.h"
#include "host/velhost/trace.h"
#include "host/velhost/verbs.h"

namespace velhost {

namespace {

struct TFoundPlugin {
  TPluginIdentity identity;
  bool answersRequests = false;
  std::string library;
};

std::string TextOf(const TFoundPlugin& plugin) {
  const TPluginIdentity& identity = plugin.identity;
  return "Name:              " + SafeText(identity.name) + "\nVersion:           " + SafeText(identity.version) +
         "\nInterface version: " + SafeText(identity.interfaceVersion) +
         "\nType:              " + std::to_string(identity.type) +
         "\nAnswers requests:  " + (plugin.answersRequests ? "yes" : "no") +
         "\nLibrary:           " + SafeText(plugin.library) + "\n";
}

std::string JsonOf(const TFoundPlugin& plugin) {
  using TJson = nlohmann::ordered_json;
  const TJson document = {{"kind", "plugin"},
                          {"format_version", 1},
                          {"name", plugin.identity.name},
                          {"version", plugin.identity.version},
                          {"interface_version", plugin.identity.interfaceVersion},
                          {"type", plugin.identity.type},
                          {"answers_requests", plugin.answersRequests},
                          {"library", plugin.library}};
  // What a plugin says of itself need not be UTF-8.
  return SafeJson(document.dump(-1, ' ', false, TJson::error_handler_t::replace)) + "\n";
}

// The plugin is unloaded before its identity is printed, so that a failure to unload is an error in any case.
TFoundPlugin LoadAndUnload(const TCommandLine& commandLine, const TInstallation& installation, TTrace& trace) {
  TDynamicLibraryLoader libraries;
  TPluginLoader loader(libraries);
  loader.SetFatalHandler(&SayAndEndAtOnce);
  const std::string& named = commandLine.common.plugin;
  const auto plugin = loader.Load(named.empty() ? installation.Plugin() : named);
  trace.OpenFile();
  TFoundPlugin found = {plugin->Identity(), plugin->Query() != nullptr, plugin->Path()};
  plugin->Unload();
  return found;
}

}  // namespace

EExitStatus ShowPlugin(const TCommandLine& commandLine, const TInstallation& installation) {
  TTrace trace(commandLine.common);
  const TFoundPlugin plugin = LoadAndUnload(commandLine, installation, trace);
  WriteToStandardOutput(commandLine.plugin.json ? JsonOf(plugin) : TextOf(plugin));
  trace.Finish();
  return EExitStatus::kComplete;
}

}  // namespace velhost
