#include "tests/result/collectorplugin.h"

namespace tests {

TLoadedPlugin& Collector() {
  static auto* const libraries = new TDynamicLibraryLoader();
  static auto* const loader = new TPluginLoader(*libraries);
  static auto* const plugin = loader->Load(COLLECTOR_PLUGIN).release();
  return *plugin;
}

}  // namespace tests
