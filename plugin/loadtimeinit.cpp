// Runs while the library is loaded: creates the plugin object, which registers itself.
#include "plugin/torgaplugin.h"

namespace {

// Keeps no pointer: the host reaches the object through its registration and has it deleted.
void TTORGAPluginCallbacksInit() {
  new torgareg::TTORGARegPluginCallbacks();
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): it deletes itself

[[maybe_unused]] const bool initialised = (TTORGAPluginCallbacksInit(), true);

}  // namespace
