// Runs while the library is being loaded: creates the plugin object, which registers itself.
#include "plugin/torgaplugin.h"

namespace {

// Keeps no pointer: the host reaches the object through its registration and tells it when to delete itself.
void TTORGAPluginCallbacksInit() {
  new torgareg::TTORGARegPluginCallbacks();
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): it deletes itself

[[maybe_unused]] const bool initialised = (TTORGAPluginCallbacksInit(), true);

}  // namespace
