// Loads a plugin as the host does, prints its identity, and requests one class.
#include <cstdio>
#include <exception>

#include "host/model/ciminstance.h"
#include "host/model/cimnamespace.h"
#include "host/plugins/pluginloader.h"

namespace {

using namespace NKROVEL20;
using namespace velhost;

boost::shared_ptr<TNamespace> MakeNamespace() {
  TClassDefinition sample;
  sample.name = "KROSG_Sample";
  TPropertyDefinition identifier;
  identifier.name = "InstanceID";
  identifier.type = TCIMValue::TCIMType::kString;
  sample.properties.push_back(identifier);
  auto cimNamespace = TNamespace::Create();
  cimNamespace->AddClass(sample);
  cimNamespace->SetCommitCallback([](const boost::shared_ptr<const TInstance>& instance) {
    std::printf("instance %s %s\n", instance->Class().Name().c_str(),
                instance->Find("InstanceID")->ToString(10).c_str());
  });
  return cimNamespace;
}

void Use(TLoadedPlugin& plugin) {
  IPluginCallbacks& callbacks = plugin.Callbacks();
  std::printf("plugin %s %s %s\n", callbacks.GetName().c_str(), callbacks.GetVersion().c_str(),
              callbacks.GetInterfaceVersion().c_str());
  callbacks.Init();
  const auto cimNamespace = MakeNamespace();
  std::vector<boost::shared_ptr<ICIMClass>> classes = {cimNamespace->FindClass("KROSG_Sample")};
  if (plugin.Query() != nullptr) plugin.Query()->GetData(cimNamespace, classes);
  callbacks.DeInit();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 64;
  try {
    TDynamicLibraryLoader libraries;
    TPluginLoader loader(libraries);
    Use(*loader.Load(argv[1]));
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "%s\n", exception.what());
    return 1;
  }
  return 0;
}
