// Registers one plugin object that does not answer requests.
#include "tests/plugins/plugins/testplugin.h"

namespace {
const testplugin::TUnloadMark mark("good");
[[maybe_unused]] const auto* const handle = testplugin::Register(new testplugin::TTestPlugin("good"));
}  // namespace
