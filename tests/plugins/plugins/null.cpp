// Registers a null pointer.
#include "tests/plugins/plugins/testplugin.h"

namespace {
const testplugin::TUnloadMark mark("null");
[[maybe_unused]] const auto* const handle = testplugin::Register(nullptr);
}  // namespace
