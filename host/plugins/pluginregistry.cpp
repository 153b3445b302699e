#include "host/plugins/pluginregistry.h"

#include <utility>

namespace NKROVEL20 {

TPluginManagerNamespace::~TPluginManagerNamespace() = default;

}  // namespace NKROVEL20

namespace velhost {

TPluginRegistry::TPluginRegistry() = default;
TPluginRegistry::~TPluginRegistry() = default;

TPluginManagerProvider* TPluginRegistry::RegisterPlugin(IPluginCallbacks* plugin) {
  if (!loading_) {
    outcome_.refusals.emplace_back("a plugin registered while no library was being loaded");
  } else if (plugin == nullptr) {
    outcome_.refusals.emplace_back("it registered a null plugin object");
  } else if (outcome_.provider) {
    outcome_.refusals.emplace_back("it registered a second plugin object");
  } else {
    outcome_.provider = std::make_unique<TPluginManagerProvider>(path_, plugin);
    return outcome_.provider.get();
  }
  return nullptr;
}

boost::shared_ptr<ICIMClass> TPluginRegistry::GetClass(const std::string&, const TPropertyMap&) { return {}; }

void TPluginRegistry::BeginLoading(const std::string& path) {
  loading_ = true;
  path_ = path;
  outcome_ = TOutcome();
}

TPluginRegistry::TOutcome TPluginRegistry::EndLoading() {
  loading_ = false;
  return std::exchange(outcome_, TOutcome());
}

}  // namespace velhost
