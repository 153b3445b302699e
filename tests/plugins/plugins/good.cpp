// Registers one plugin object without requests.
#include "tests/plugins/plugins/testplugin.h"

namespace {
const testplugin::TUnloadMark mark("good");
[[maybe_unused]] const auto* const handle = testplugin::Register(new testplugin::TTestPlugin("good"));
}  // namespace
