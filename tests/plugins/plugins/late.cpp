// Registers a plugin object while being loaded, and tries to register it again in Init.
#include "tests/plugins/plugins/testplugin.h"

namespace {

class TLatePlugin : public testplugin::TTestPlugin {
 public:
  TLatePlugin() : TTestPlugin("late") {}
  void Init() override { testplugin::Say(testplugin::Register(this) == nullptr ? "late refused" : "late taken"); }
};

[[maybe_unused]] const auto* const handle = testplugin::Register(new TLatePlugin());

}  // namespace
